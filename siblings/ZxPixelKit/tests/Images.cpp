#include <ZxPixelKit/Image.h>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>
#include <png.h>
#include <turbojpeg.h>
#include <unistd.h>

#include "ImageFiles.h"
#include "object/FailingMalloc.h"

namespace {

TPngSpec Spec(int width, int height, int colorType, int bitDepth, TBytes rows) {
  TPngSpec spec;
  spec.Width = width;
  spec.Height = height;
  spec.ColorType = colorType;
  spec.BitDepth = bitDepth;
  spec.Rows = std::move(rows);
  return spec;
}

TEST(Png, EightBitKindsBottomRowFirst) {
  {
    const TLoaded image(MakePng(Spec(2, 2, PNG_COLOR_TYPE_GRAY, 8, {1, 2, 3, 4})));
    ASSERT_TRUE(image.Done);
    ExpectRecord(image.Surface, 2, 2, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1);
    EXPECT_EQ(image.Pixels(), (TBytes{3, 4, 1, 2}));
  }
  {
    const TLoaded image(MakePng(Spec(1, 2, PNG_COLOR_TYPE_GRAY_ALPHA, 8, {1, 2, 3, 4})));
    ASSERT_TRUE(image.Done);
    ExpectRecord(image.Surface, 1, 2, DATA_FORMAT_LUMINANCE_ALPHA, DATA_TYPE_UINT8, 2);
    EXPECT_EQ(image.Pixels(), (TBytes{3, 4, 1, 2}));
  }
  {
    const TLoaded image(MakePng(Spec(1, 2, PNG_COLOR_TYPE_RGB, 8, {1, 2, 3, 4, 5, 6})));
    ASSERT_TRUE(image.Done);
    ExpectRecord(image.Surface, 1, 2, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
    EXPECT_EQ(image.Pixels(), (TBytes{4, 5, 6, 1, 2, 3}));
  }
  {
    const TLoaded image(MakePng(Spec(1, 2, PNG_COLOR_TYPE_RGB_ALPHA, 8, {1, 2, 3, 4, 5, 6, 7, 8})));
    ASSERT_TRUE(image.Done);
    ExpectRecord(image.Surface, 1, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
    EXPECT_EQ(image.Pixels(), (TBytes{5, 6, 7, 8, 1, 2, 3, 4}));
  }
}

TEST(Png, SixteenBitsInNativeOrder) {
  const TLoaded image(MakePng(
      Spec(1, 2, PNG_COLOR_TYPE_RGB, 16, {0x12, 0x34, 0, 1, 1, 0, 0xFF, 0xFE, 0, 0, 0x80, 0})));
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 1, 2, DATA_FORMAT_RGB, DATA_TYPE_UINT16, 3);
  const int expected[] = {0xFFFE, 0, 0x8000, 0x1234, 1, 0x100};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(Wide(image.Surface, i), expected[i]) << i;
  }
}

TEST(Png, FewBitsSpreadOverTheFullRange) {
  // 1 0 1 0 0 0 0 0; 2 bits: 0 1 2 3; 4 bits: 0 15 8 1.
  const TLoaded one(MakePng(Spec(3, 1, PNG_COLOR_TYPE_GRAY, 1, {0xA0})));
  ASSERT_TRUE(one.Done);
  EXPECT_EQ(one.Pixels(), (TBytes{255, 0, 255}));
  const TLoaded two(MakePng(Spec(4, 1, PNG_COLOR_TYPE_GRAY, 2, {0x1B})));
  ASSERT_TRUE(two.Done);
  EXPECT_EQ(two.Pixels(), (TBytes{0, 85, 170, 255}));
  const TLoaded four(MakePng(Spec(4, 1, PNG_COLOR_TYPE_GRAY, 4, {0x0F, 0x81})));
  ASSERT_TRUE(four.Done);
  EXPECT_EQ(four.Pixels(), (TBytes{0, 255, 136, 17}));
}

TEST(Png, PaletteExpands) {
  TPngSpec spec = Spec(3, 1, PNG_COLOR_TYPE_PALETTE, 8, {2, 0, 1});
  spec.Palette = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  const TLoaded plain(MakePng(spec));
  ASSERT_TRUE(plain.Done);
  ExpectRecord(plain.Surface, 3, 1, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(plain.Pixels(), (TBytes{7, 8, 9, 1, 2, 3, 4, 5, 6}));

  spec.Transparency = {0, 128};
  const TLoaded clear(MakePng(spec));
  ASSERT_TRUE(clear.Done);
  ExpectRecord(clear.Surface, 3, 1, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
  EXPECT_EQ(clear.Pixels(), (TBytes{7, 8, 9, 255, 1, 2, 3, 0, 4, 5, 6, 128}));
}

TEST(Png, TransparentGreyBecomesAlpha) {
  TPngSpec spec = Spec(2, 1, PNG_COLOR_TYPE_GRAY, 8, {7, 8});
  spec.TransparentGrey = 7;
  const TLoaded image(MakePng(spec));
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 2, 1, DATA_FORMAT_LUMINANCE_ALPHA, DATA_TYPE_UINT8, 2);
  EXPECT_EQ(image.Pixels(), (TBytes{7, 0, 8, 255}));
}

TEST(Png, InterlacedIsTheSamePicture) {
  TBytes rows;
  for (int i = 0; i < 11 * 9; ++i) {
    rows.push_back(static_cast<std::uint8_t>(i));
  }
  TPngSpec spec = Spec(11, 9, PNG_COLOR_TYPE_GRAY, 8, rows);
  spec.Interlaced = true;
  const TLoaded image(MakePng(spec));
  ASSERT_TRUE(image.Done);
  for (int y = 0; y < 9; ++y) {
    for (int x = 0; x < 11; ++x) {
      EXPECT_EQ(image.Surface.Data[y * 11 + x], (8 - y) * 11 + x);
    }
  }
}

TEST(Jpeg, FlatBlocksExactAndBottomRowFirst) {
  // Each block of 8 by 8 is of one value, which its first coefficient alone holds.
  TBytes pixels(8 * 16, 255);
  std::fill(pixels.begin() + 8 * 8, pixels.end(), std::uint8_t{0});
  const TLoaded image(MakeJpeg(8, 16, TJPF_GRAY, TJSAMP_GRAY, pixels));
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 8, 16, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1);
  for (int i = 0; i < 8 * 16; ++i) {
    ASSERT_EQ(image.Surface.Data[i], i < 64 ? 0 : 255) << i;
  }
}

TEST(Jpeg, ColourInOrderRedGreenBlue) {
  TBytes pixels;
  for (int i = 0; i < 64; ++i) {
    pixels = pixels + TBytes{200, 100, 50};
  }
  for (int flags : {0, TJFLAG_PROGRESSIVE}) {
    const TLoaded image(MakeJpeg(8, 8, TJPF_RGB, TJSAMP_444, pixels, flags));
    ASSERT_TRUE(image.Done);
    ExpectRecord(image.Surface, 8, 8, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
    for (int i = 0; i < 64; ++i) {
      EXPECT_NEAR(image.Surface.Data[3 * i], 200, 1);
      EXPECT_NEAR(image.Surface.Data[3 * i + 1], 100, 1);
      EXPECT_NEAR(image.Surface.Data[3 * i + 2], 50, 1);
    }
  }
}

TEST(Jpeg, FourColoursBecomeRGB) {
  // As such files hold it, 255 is no ink: full cyan, magenta and yellow light and half the black.
  TBytes pixels;
  for (int i = 0; i < 64; ++i) {
    pixels = pixels + TBytes{255, 0, 128, 128};
  }
  const TLoaded image(MakeJpeg(8, 8, TJPF_CMYK, TJSAMP_444, pixels));
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 8, 8, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  for (int i = 0; i < 64; ++i) {
    EXPECT_NEAR(image.Surface.Data[3 * i], 128, 2);
    EXPECT_NEAR(image.Surface.Data[3 * i + 1], 0, 2);
    EXPECT_NEAR(image.Surface.Data[3 * i + 2], 64, 2);
  }
}

TEST(Tga, TrueColourFromEitherEnd) {
  const TBytes pixels = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}; // blue, green, red
  const TLoaded up(TgaHeader(2, 2, 2, 24, 0) + pixels);
  ASSERT_TRUE(up.Done);
  ExpectRecord(up.Surface, 2, 2, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(up.Pixels(), (TBytes{3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10}));
  const TLoaded down(TgaHeader(2, 2, 2, 24, 0x20) + pixels);
  ASSERT_TRUE(down.Done);
  EXPECT_EQ(down.Pixels(), (TBytes{9, 8, 7, 12, 11, 10, 3, 2, 1, 6, 5, 4}));
  const TLoaded left(TgaHeader(2, 2, 2, 24, 0x10) + pixels);
  ASSERT_TRUE(left.Done);
  EXPECT_EQ(left.Pixels(), (TBytes{6, 5, 4, 3, 2, 1, 12, 11, 10, 9, 8, 7}));
}

TEST(Tga, OtherDepths) {
  const TLoaded alpha(TgaHeader(2, 1, 1, 32, 8) + TBytes{1, 2, 3, 4});
  ASSERT_TRUE(alpha.Done);
  ExpectRecord(alpha.Surface, 1, 1, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
  EXPECT_EQ(alpha.Pixels(), (TBytes{3, 2, 1, 4}));
  const TLoaded grey(TgaHeader(3, 2, 1, 8, 0) + TBytes{7, 9});
  ASSERT_TRUE(grey.Done);
  ExpectRecord(grey.Surface, 2, 1, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1);
  EXPECT_EQ(grey.Pixels(), (TBytes{7, 9}));
  const TLoaded greyAlpha(TgaHeader(3, 1, 1, 16, 8) + TBytes{7, 9});
  ASSERT_TRUE(greyAlpha.Done);
  ExpectRecord(greyAlpha.Surface, 1, 1, DATA_FORMAT_LUMINANCE_ALPHA, DATA_TYPE_UINT8, 2);
  EXPECT_EQ(greyAlpha.Pixels(), (TBytes{7, 9}));
  // Five bits each: red 31, green 0, blue 1, which is 1 * 255 / 31.
  const TLoaded few(TgaHeader(2, 1, 1, 16, 0) + TBytes{0x01, 0x7C});
  ASSERT_TRUE(few.Done);
  EXPECT_EQ(few.Pixels(), (TBytes{255, 0, 8}));
}

TEST(Tga, PacketsOfBothKinds) {
  const TLoaded image(TgaHeader(11, 5, 2, 8, 0) + TBytes{0x86, 9, 0x02, 1, 2, 3});
  ASSERT_TRUE(image.Done);
  EXPECT_EQ(image.Pixels(), (TBytes{9, 9, 9, 9, 9, 9, 9, 1, 2, 3}));
}

TEST(Tga, PaletteWithAFirstEntryAndAnIdentification) {
  TBytes file = TgaHeader(1, 4, 1, 8, 0);
  file[0] = 2;
  file[1] = 1;
  file[3] = 10; // first entry
  file[5] = 2;  // entries
  file[7] = 24;
  const TLoaded image(file + TBytes{'i', 'd'} + TBytes{1, 2, 3, 4, 5, 6} + TBytes{11, 10, 9, 11});
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 4, 1, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(image.Pixels(), (TBytes{6, 5, 4, 3, 2, 1, 0, 0, 0, 6, 5, 4}));
}

TEST(Tga, PaletteThatThePixelsDoNotNeed) {
  for (const int kind : {2, 10}) {
    TBytes file = TgaHeader(kind, 2, 1, 24, 0);
    file[0] = 2;
    file[1] = 1;
    file[3] = 7;  // first entry
    file[5] = 2;  // entries
    file[7] = 32; // bits of one
    const TBytes pixels = kind == 2 ? TBytes{1, 2, 3, 4, 5, 6} : TBytes{1, 1, 2, 3, 4, 5, 6};
    const TLoaded image(file + TBytes{'i', 'd'} + TBytes(8, 99) + pixels);
    ASSERT_TRUE(image.Done) << kind;
    ExpectRecord(image.Surface, 2, 1, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
    EXPECT_EQ(image.Pixels(), (TBytes{3, 2, 1, 6, 5, 4})) << kind;
  }
  TBytes grey = TgaHeader(3, 2, 1, 8, 0);
  grey[1] = 1;
  grey[5] = 1;
  grey[7] = 16;
  const TLoaded image(grey + TBytes{99, 99} + TBytes{7, 9});
  ASSERT_TRUE(image.Done);
  EXPECT_EQ(image.Pixels(), (TBytes{7, 9}));
}

TEST(Bmp, TrueColourFromEitherEnd) {
  const TBytes pixels = {1, 2, 3, 0, 4, 5, 6, 0}; // one pixel a row, padded to four bytes
  const TLoaded up(BmpHeader(1, 2, 24, 0, 0) + pixels);
  ASSERT_TRUE(up.Done);
  ExpectRecord(up.Surface, 1, 2, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(up.Pixels(), (TBytes{3, 2, 1, 6, 5, 4}));
  const TLoaded down(BmpHeader(1, -2, 24, 0, 0) + pixels);
  ASSERT_TRUE(down.Done);
  ExpectRecord(down.Surface, 1, 2, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(down.Pixels(), (TBytes{6, 5, 4, 3, 2, 1}));
}

TEST(Bmp, AlphaAndMasks) {
  const TLoaded alpha(BmpHeader(1, 1, 32, 0, 0) + TBytes{1, 2, 3, 4});
  ASSERT_TRUE(alpha.Done);
  ExpectRecord(alpha.Surface, 1, 1, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
  EXPECT_EQ(alpha.Pixels(), (TBytes{3, 2, 1, 4}));
  // An alpha that is 0 everywhere was never meant.
  const TLoaded none(BmpHeader(1, 1, 32, 0, 0) + TBytes{1, 2, 3, 0});
  ASSERT_TRUE(none.Done);
  EXPECT_EQ(none.Pixels(), (TBytes{3, 2, 1, 255}));
  // Five, six and five bits.
  const TBytes masks = {0x00, 0xF8, 0, 0, 0xE0, 0x07, 0, 0, 0x1F, 0, 0, 0};
  const TLoaded few(BmpHeader(3, 1, 16, 3, 12) + masks +
                    TBytes{0x00, 0xF8, 0xE0, 0x07, 0x1F, 0, 0, 0});
  ASSERT_TRUE(few.Done);
  ExpectRecord(few.Surface, 3, 1, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(few.Pixels(), (TBytes{255, 0, 0, 0, 255, 0, 0, 0, 255}));
  // The same with the masks inside a header of 56 bytes.
  TBytes longer = BmpHeader(3, 1, 16, 3, 16) + masks + TBytes{0, 0, 0, 0};
  longer[14] = 56;
  const TLoaded inside(longer + TBytes{0x00, 0xF8, 0xE0, 0x07, 0x1F, 0, 0, 0});
  ASSERT_TRUE(inside.Done);
  EXPECT_EQ(inside.Pixels(), few.Pixels());
}

TEST(Bmp, PalettesOfEveryDepth) {
  const TBytes palette = {1, 2, 3, 0, 4, 5, 6, 0};
  const TBytes expected = {6, 5, 4, 3, 2, 1, 6, 5, 4};
  const TLoaded one(BmpHeader(3, 1, 1, 0, 8) + palette + TBytes{0xA0, 0, 0, 0});
  ASSERT_TRUE(one.Done);
  ExpectRecord(one.Surface, 3, 1, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(one.Pixels(), expected);
  const TLoaded four(BmpHeader(3, 1, 4, 0, 8) + palette + TBytes{0x10, 0x10, 0, 0});
  ASSERT_TRUE(four.Done);
  EXPECT_EQ(four.Pixels(), expected);
  const TLoaded eight(BmpHeader(3, 1, 8, 0, 8) + palette + TBytes{1, 0, 1, 0});
  ASSERT_TRUE(eight.Done);
  EXPECT_EQ(eight.Pixels(), expected);
  // A colour that the palette does not have is black.
  const TLoaded beyond(BmpHeader(1, 1, 8, 0, 8) + palette + TBytes{200, 0, 0, 0});
  ASSERT_TRUE(beyond.Done);
  EXPECT_EQ(beyond.Pixels(), (TBytes{0, 0, 0}));
}

TEST(Bmp, OldestHeader) {
  TBytes file = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0};
  Put32(file, 26 + 6);
  Put32(file, 12);
  Put16(file, 2);
  Put16(file, 1);
  Put16(file, 1);
  Put16(file, 1);
  const TLoaded image(file + TBytes{1, 2, 3, 4, 5, 6} + TBytes{0x40, 0, 0, 0});
  ASSERT_TRUE(image.Done);
  EXPECT_EQ(image.Pixels(), (TBytes{3, 2, 1, 6, 5, 4}));
}

// Four colours: blue, green, red and one that is unused.
const TBytes kPackedPalette = {10, 11, 12, 0, 20, 21, 22, 0, 30, 31, 32, 0, 40, 41, 42, 0};

TBytes PackedBmp(int width, int height, int bits, const TBytes& codes) {
  return BmpHeader(width, height, bits, bits == 8 ? 1 : 2, 16) + kPackedPalette + codes;
}

// The colours that the pixels have, by their number, row 0 first.
TBytes Colors(const TBytes& numbers) {
  TBytes made;
  for (const std::uint8_t number : numbers) {
    const std::size_t at = number * 4u;
    made = made + TBytes{kPackedPalette[at + 2], kPackedPalette[at + 1], kPackedPalette[at]};
  }
  return made;
}

TEST(Bmp, PackedBytes) {
  const TBytes codes = {3, 1, 2, 2, 0, 0,       // 1 1 1 2 2
                        0, 5, 0, 1, 2, 3, 1, 0, // 0 1 2 3 1, one byte to be even
                        0, 0, 0, 2, 2, 1, 1, 3, // nothing; two to the right, one up: 3
                        0, 1};
  const TLoaded image(PackedBmp(5, 4, 8, codes));
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 5, 4, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(image.Pixels(), Colors({1, 1, 1, 2, 2, 0, 1, 2, 3, 1, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0}));
}

TEST(Bmp, PackedHalfBytes) {
  const TBytes codes = {5, 0x12, 0,    0,             // 1 2 1 2 1
                        0, 5,    0x01, 0x23, 0x10, 0, // 0 1 2 3 1
                        0, 0,    0,    1};
  const TLoaded image(PackedBmp(5, 3, 4, codes));
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 5, 3, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(image.Pixels(), Colors({1, 2, 1, 2, 1, 0, 1, 2, 3, 1, 0, 0, 0, 0, 0}));
}

TEST(Bmp, PackedWithoutTheMarkOfTheEndBehindTheLastPixel) {
  const TBytes expected = Colors({1, 1, 2, 2});
  for (const TBytes& codes : {TBytes{2, 1, 0, 0, 2, 2}, TBytes{2, 1, 0, 0, 2, 2, 0, 0},
                              TBytes{2, 1, 0, 0, 2, 2, 0, 0, 0}}) {
    const TLoaded image(PackedBmp(2, 2, 8, codes));
    ASSERT_TRUE(image.Done);
    EXPECT_EQ(image.Pixels(), expected);
  }
}

TEST(Bmp, PackedThatLeavesThePictureIsRefused) {
  for (const TBytes& codes :
       {TBytes{3, 1, 0, 1}, TBytes{2, 1, 1, 1, 0, 1}, TBytes{0, 0, 0, 0, 1, 1, 0, 1},
        TBytes{0, 3, 1, 1, 1, 1, 0, 1}, TBytes{0, 2, 3, 0, 1, 1, 0, 1},
        TBytes{0, 2, 0, 2, 1, 1, 0, 1}, TBytes{2, 1}, TBytes{2, 1, 0, 0, 1, 1}, TBytes{0, 2, 1},
        TBytes{0, 4, 1, 1}, TBytes{}}) {
    EXPECT_FALSE(TLoaded(PackedBmp(2, 2, 8, codes)).Done);
  }
  // From the top, or with another depth than the packing is for.
  const TBytes end = {0, 1};
  EXPECT_TRUE(TLoaded(PackedBmp(2, 2, 8, end)).Done);
  EXPECT_FALSE(TLoaded(PackedBmp(2, -2, 8, end)).Done);
  EXPECT_FALSE(TLoaded(BmpHeader(2, 2, 4, 1, 16) + kPackedPalette + end).Done);
  EXPECT_FALSE(TLoaded(BmpHeader(2, 2, 8, 2, 16) + kPackedPalette + end).Done);
}

TEST(Pnm, GreyAndColour) {
  const TLoaded grey(Text("P5\n# a comment\n2 2\n255\n") + TBytes{1, 2, 3, 4});
  ASSERT_TRUE(grey.Done);
  ExpectRecord(grey.Surface, 2, 2, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1);
  EXPECT_EQ(grey.Pixels(), (TBytes{3, 4, 1, 2}));
  const TLoaded color(Text("P6 1 2 255 ") + TBytes{1, 2, 3, 4, 5, 6});
  ASSERT_TRUE(color.Done);
  ExpectRecord(color.Surface, 1, 2, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(color.Pixels(), (TBytes{4, 5, 6, 1, 2, 3}));
}

TEST(Pnm, SixteenBitsInNativeOrder) {
  const TLoaded image(Text("P5 1 2 65535\n") + TBytes{0x12, 0x34, 0xFF, 0xFE});
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 1, 2, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT16, 1);
  EXPECT_EQ(Wide(image.Surface, 0), 0xFFFE);
  EXPECT_EQ(Wide(image.Surface, 1), 0x1234);
}

TEST(Pnm, OtherGreatestValuesSpreadOverTheFullRange) {
  // 7 / 15 * 255 is 119; above the greatest value is the greatest value.
  const TLoaded narrow(Text("P5 4 1 15\n") + TBytes{0, 7, 15, 16});
  ASSERT_TRUE(narrow.Done);
  EXPECT_EQ(narrow.Pixels(), (TBytes{0, 119, 255, 255}));
  // 1 / 1023 * 65535 is 64.06.
  const TLoaded wide(Text("P5 2 1 1023\n") + TBytes{0, 1, 3, 255});
  ASSERT_TRUE(wide.Done);
  EXPECT_EQ(Wide(wide.Surface, 0), 64);
  EXPECT_EQ(Wide(wide.Surface, 1), 65535);
}

TEST(Pnm, Bits) {
  // 1 is black. Ten columns take two bytes a row, of which six bits mean nothing.
  const TBytes expected = {255, 0,   255, 0,   0,   255, 0,   255, 0,   255, // 5A 80: 01011010 10
                           0,   255, 0,   255, 255, 0,   255, 0,   255, 0};  // A5 40: 10100101 01
  const TLoaded binary(Text("P4\n10 2\n") + TBytes{0xA5, 0x7F, 0x5A, 0xBF});
  ASSERT_TRUE(binary.Done);
  ExpectRecord(binary.Surface, 10, 2, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1);
  EXPECT_EQ(binary.Pixels(), expected);
  for (const char* text : {"P1\n10 2\n1010010101\n0101101010\n", "P1 10 2 10100101010101101010",
                           "P1 # c\n10 2\n1 0 1 0 0 1 0 1 0 1 # row\n0 1 0 1 1 0 1 0 1 0"}) {
    const TLoaded plain(Text(text));
    ASSERT_TRUE(plain.Done) << text;
    ExpectRecord(plain.Surface, 10, 2, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1);
    EXPECT_EQ(plain.Pixels(), expected) << text;
  }
}

TEST(Pnm, TextKinds) {
  const TLoaded grey(Text("P2\n2 2\n# greatest\n15\n0 7\r\n15\t16"));
  ASSERT_TRUE(grey.Done);
  ExpectRecord(grey.Surface, 2, 2, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1);
  EXPECT_EQ(grey.Pixels(), (TBytes{255, 255, 0, 119}));
  const TLoaded color(Text("P3 1 2 255\n1 2 3\n4 5 6\n"));
  ASSERT_TRUE(color.Done);
  ExpectRecord(color.Surface, 1, 2, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3);
  EXPECT_EQ(color.Pixels(), (TBytes{4, 5, 6, 1, 2, 3}));
  // 1 / 1023 * 65535 is 64.06.
  const TLoaded wide(Text("P2 2 1 1023 1 1023"));
  ASSERT_TRUE(wide.Done);
  ExpectRecord(wide.Surface, 2, 1, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT16, 1);
  EXPECT_EQ(Wide(wide.Surface, 0), 64);
  EXPECT_EQ(Wide(wide.Surface, 1), 65535);
}

TEST(Pnm, WhatMakesNoSenseIsRefused) {
  for (const char* text :
       {"P0 1 1\n1\n", "P7 1 1 255\n1", "P5 1 1 0\n1", "P5 1 1 65536\n11", "P5 -1 1 255\n1",
        "P5 1 99999999999999999999 255\n1", "P5 0 1 255\n1", "P5 1 0 255\n1", "P2 2 1 255\n1 x",
        "P2 2 1 255\n1 -1", "P1 2 1\n12", "P1 2 1\n1", "P3 1 1 255\n1 2", "P4 9 1\n1",
        "P2 1 1 255\n99999999999999999999"}) {
    EXPECT_FALSE(TLoaded(Text(text)).Done) << text;
  }
}

TEST(Hdr, FlatAndPacked) {
  // A component is m * 2^(e - 136): 128 * 2^-7 with e 129.
  const TLoaded flat(Text("#?RGBE\nFORMAT=32-bit_rle_rgbe\n\n-Y 2 +X 1\n") +
                     TBytes{128, 64, 32, 129, 1, 2, 3, 136});
  ASSERT_TRUE(flat.Done);
  ExpectRecord(flat.Surface, 1, 2, DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3);
  const float expected[] = {1, 2, 3, 1, 0.5f, 0.25f};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(Float(flat.Surface, i), expected[i]) << i;
  }
  // Eight pixels: a run of three and five single ones; red, green 0, blue 0, exponent 136.
  const TLoaded packed(Text("#?RADIANCE\n# made by hand\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 8\n") +
                       TBytes{2, 2, 0, 8} + TBytes{0x83, 9, 5, 1, 2, 3, 4, 5} + TBytes{0x88, 0} +
                       TBytes{0x88, 0} + TBytes{0x88, 136});
  ASSERT_TRUE(packed.Done);
  ExpectRecord(packed.Surface, 8, 1, DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3);
  const float reds[] = {9, 9, 9, 1, 2, 3, 4, 5};
  for (int x = 0; x < 8; ++x) {
    EXPECT_EQ(Float(packed.Surface, 3 * x), reds[x]) << x;
    EXPECT_EQ(Float(packed.Surface, 3 * x + 1), 0.0f) << x;
  }
}

TEST(Hdr, LinesThatEndInCarriageReturnAndLineFeed) {
  // Bytes 13 and 10 among the pixels stay as they are.
  const TLoaded image(Text("#?RADIANCE\r\n# c\r\nFORMAT=32-bit_rle_rgbe\r\n\r\n-Y 2 +X 1\r\n") +
                      TBytes{128, 64, 32, 129, 13, 10, 13, 136});
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 1, 2, DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3);
  const float expected[] = {13, 10, 13, 1, 0.5f, 0.25f};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(Float(image.Surface, i), expected[i]) << i;
  }
}

TEST(LoadImage, FromAFileAndFromTheRestOfAStream) {
  const TTemporary file("_load.pgm");
  const TBytes bytes = Text("P5 2 1 255\n") + TBytes{7, 9};
  std::ofstream(file.Name, std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<long>(bytes.size()));
  DATASURFACE surface = {};
  ASSERT_TRUE(LoadImage(file.Name, nullptr, &surface));
  ExpectRecord(surface, 2, 1, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1);
  EXPECT_EQ(surface.Data[0], 7);
  FreeDataSurfaceData(surface);

  const TBytes behind = Text("skipped") + bytes;
  TBytesStream stream(behind, 3);
  stream.Position = 7;
  ASSERT_TRUE(LoadImage(&stream, nullptr, &surface));
  EXPECT_EQ(surface.Data[1], 9);
  EXPECT_EQ(stream.Position, behind.size());
  FreeDataSurfaceData(surface);
}

TEST(LoadImage, LargerThanTheFirstRead) {
  TBytes pixels(700 * 300);
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    pixels[i] = static_cast<std::uint8_t>(i * i >> 7);
  }
  const TLoaded image(Text("P5 700 300 255\n") + pixels);
  ASSERT_TRUE(image.Done);
  for (std::size_t y = 0; y < 300; ++y) {
    ASSERT_EQ(std::memcmp(image.Surface.Data + y * 700, pixels.data() + (299 - y) * 700, 700), 0);
  }
}

class TFailingStream : public TZxStream {
public:
  unsigned long Read(void*, unsigned long) override { return ~0ul; }
  operator bool() override { return true; }
};

class TThrowingStream : public TZxStream {
public:
  unsigned long Read(void* data, unsigned long) override {
    if (Done) {
      throw 5;
    }
    Done = true;
    std::memcpy(data, "P5 9", 4);
    return 4;
  }
  operator bool() override { return true; }
  bool Done = false;
};

// Bytes without end that look like nothing.
class TEndlessStream : public TZxStream {
public:
  unsigned long Read(void* data, unsigned long size) override {
    std::memset(data, 0, size);
    Total += size;
    return size;
  }
  operator bool() override { return true; }
  unsigned long Total = 0;
};

TEST(LoadImage, FalseLeavesTheTargetAlone) {
  std::uint8_t pixel = 5;
  DATASURFACE target;
  ASSERT_TRUE(ds::Set(&target, 1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, &pixel));
  const DATASURFACE before = target;
  EXPECT_FALSE(LoadImage(std::string("/nonexistent/file.png"), nullptr, &target));
  EXPECT_FALSE(LoadImage(std::string("/"), nullptr, &target));
  EXPECT_FALSE(LoadImage(std::string(), nullptr, &target));
  EXPECT_FALSE(LoadImage(static_cast<TZxStream*>(nullptr), nullptr, &target));
  TZxStream none;
  EXPECT_FALSE(LoadImage(&none, nullptr, &target));
  TFailingStream failing;
  EXPECT_FALSE(LoadImage(&failing, nullptr, &target));
  const TBytes empty;
  TBytesStream emptyStream(empty);
  EXPECT_FALSE(LoadImage(&emptyStream, nullptr, &target));
  const TBytes damaged = Text("P5 2 2 255\n123");
  TBytesStream damagedStream(damaged);
  EXPECT_FALSE(LoadImage(&damagedStream, nullptr, &target));
  TThrowingStream throwing;
  EXPECT_THROW(LoadImage(&throwing, nullptr, &target), int);
  EXPECT_EQ(std::memcmp(&before, &target, sizeof target), 0);
}

TEST(LoadImage, ReadsNoFurtherThanTheHeadOfWhatIsNoImage) {
  TEndlessStream stream;
  DATASURFACE target = {};
  EXPECT_FALSE(LoadImage(&stream, nullptr, &target));
  EXPECT_LE(stream.Total, 1ul << 16);
}

// A picture of one pixel, and after it whatever the memory held: none of it is touched, so that the
// pages of it never come into being.
class TEndlessPicture : public TZxStream {
public:
  unsigned long Read(void* data, unsigned long size) override {
    if (Total == 0) {
      std::memcpy(data, "P4 1 1\n\x7F", 8); // white
    }
    Total += size;
    return size;
  }
  operator bool() override { return true; }
  unsigned long Total = 0;
};

// The largest picture, of 2^28 pixels in four components of 16 bits, stored plainly is 2 GiB; 64
// MiB are for what stands around it.
TEST(LoadImage, ReadsNoFurtherThanTheLargestPictureNeeds) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer moves blocks that grow by touching all of them";
  }
  TEndlessPicture stream;
  DATASURFACE image = {};
  ASSERT_TRUE(LoadImage(&stream, nullptr, &image));
  EXPECT_EQ(stream.Total, (1ul << 31) + (1ul << 26));
  EXPECT_EQ(image.Data[0], 255);
  FreeDataSurfaceData(image);
}

} // namespace
