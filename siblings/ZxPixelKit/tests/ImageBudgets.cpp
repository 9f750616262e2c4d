#include <ZxPixelKit/Image.h>

#include <algorithm>
#include <string>

#include <gtest/gtest.h>
#include <png.h>

#include <ZxBaseKit/TZxMessage.h>

#include "ImageFiles.h"
#include "LargestAllocation.h"

// What a header may promise, at its very bounds: the last that is believed, the first that is not.

namespace {

constexpr char kTooMany[] = "has more than 2^28 pixels";
constexpr char kUnlikely[] = "promises more pixels than its bytes can hold";

TEST(ImageBudget, AcceptsTwoToTheTwentyEighthPixelsAndNoneMore) {
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 16384 16384 255\n1234")), kUnlikely);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 16384 16385 255\n1234")), kTooMany);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 16385 16384 255\n1234")), kTooMany);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 268435456 1 255\n1234")), kUnlikely);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 268435457 1 255\n1234")), kTooMany);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 1 268435456 255\n1234")), kUnlikely);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 1 268435457 255\n1234")), kTooMany);
}

TEST(ImageBudget, APictureOfTwoToTheTwentyEighthPixelsLoads) {
  // Black but for the last pixel in the file, which is the last of row 0.
  TBytes bits = Text("P4 16384 16384\n") + TBytes(std::size_t{16384} * 16384 / 8, 0xFF);
  bits.back() = 0xFE;
  const TLoaded image(bits);
  ASSERT_TRUE(image.Done);
  EXPECT_EQ(image.Surface.Width, 16384);
  EXPECT_EQ(image.Surface.Height, 16384);
  EXPECT_EQ(image.Surface.Data[16382], 0);
  EXPECT_EQ(image.Surface.Data[16383], 255);
  EXPECT_EQ(image.Surface.Data[16384], 0);
}

// Deflate codes at most 1032 bytes in one. The components count: 2048 by 2048 pixels of RGB are
// 12 MiB, which less than 12,193 bytes can't code, though 4 MiB of grey could be in 4,065.
TEST(ImageBudget, OfAPngCountsItsComponents) {
  const struct {
    int ColorType;
    std::size_t Components;
    int BitDepth;
  } kinds[] = {{PNG_COLOR_TYPE_GRAY, 1, 8},
               {PNG_COLOR_TYPE_GRAY_ALPHA, 2, 8},
               {PNG_COLOR_TYPE_RGB, 3, 8},
               {PNG_COLOR_TYPE_RGB_ALPHA, 4, 8},
               {PNG_COLOR_TYPE_RGB_ALPHA, 4, 16}};
  for (const auto& kind : kinds) {
    TPngSpec spec;
    spec.Width = 2048;
    spec.Height = 2048;
    spec.ColorType = kind.ColorType;
    spec.BitDepth = kind.BitDepth;
    const std::size_t size =
        std::size_t{2048} * 2048 * kind.Components * static_cast<unsigned int>(kind.BitDepth / 8);
    spec.Rows.assign(size, 0);
    TBytes png = MakePng(spec);
    ASSERT_GT(png.size(), size / 1032);
    EXPECT_EQ(WhyItDoesNotLoad(png), "loads") << kind.Components;

    // The same header in front of fewer bytes: the pixels' chunk is emptied, its neighbours stay.
    const std::string mark = "IDAT";
    const auto at = std::search(png.begin(), png.end(), mark.begin(), mark.end()) - 4;
    const TBytes end(png.end() - 12, png.end());
    TBytes shorter(png.begin(), at);
    const std::size_t filler = size / 1032 - 1 - shorter.size() - end.size() - 12;
    TBytes chunk =
        TBytes{static_cast<std::uint8_t>(filler >> 24), static_cast<std::uint8_t>(filler >> 16),
               static_cast<std::uint8_t>(filler >> 8), static_cast<std::uint8_t>(filler)} +
        Text(mark) + TBytes(filler + 4, 0);
    shorter = shorter + chunk + end;
    ASSERT_EQ(shorter.size(), size / 1032 - 1);
    const TLargestAllocation watch;
    EXPECT_EQ(WhyItDoesNotLoad(shorter), kUnlikely) << kind.Components;
    EXPECT_LT(watch.Get(), std::size_t{1} << 20) << kind.Components;
  }
}

TEST(ImageBudget, APngMayBeWiderThanAMillion) {
  TPngSpec spec;
  spec.Width = 1000001;
  spec.Height = 2;
  spec.ColorType = PNG_COLOR_TYPE_GRAY;
  spec.BitDepth = 1;
  const std::size_t rowBytes = (1000001 + 7) / 8;
  spec.Rows.assign(2 * rowBytes, 0);
  spec.Rows[rowBytes - 1] = 0x80; // the last pixel of the upper row
  const TLoaded wide(MakePng(spec));
  ASSERT_TRUE(wide.Done);
  EXPECT_EQ(wide.Surface.Width, 1000001);
  EXPECT_EQ(wide.Surface.Data[1000000], 0);
  EXPECT_EQ(wide.Surface.Data[2 * 1000001 - 1], 255);

  std::swap(spec.Width, spec.Height);
  spec.Rows.assign(1000001, 0);
  spec.Rows.back() = 0x40; // the last pixel of the last row
  const TLoaded high(MakePng(spec));
  ASSERT_TRUE(high.Done);
  EXPECT_EQ(high.Surface.Height, 1000001);
  EXPECT_EQ(high.Surface.Data[1], 255);
  EXPECT_EQ(high.Surface.Data[0], 0);
}

// The decoder itself would take such a header for a packed picture's, of which a byte may hold 64
// pixels.
TEST(ImageBudget, AnUnpackedTgaNeedsAllItsBytes) {
  const std::size_t size = std::size_t{4000} * 4000 * 3;
  TBytes tga = TgaHeader(2, 4000, 4000, 24, 0) + TBytes(size / 64, 1);
  {
    const TLargestAllocation watch;
    EXPECT_EQ(WhyItDoesNotLoad(tga), "ends inside its picture");
    EXPECT_LT(watch.Get(), 2 * tga.size());
  }
  tga.resize(18 + size - 1, 1);
  EXPECT_EQ(WhyItDoesNotLoad(tga), "ends inside its picture");
  tga.resize(18 + size, 1);
  EXPECT_EQ(WhyItDoesNotLoad(tga), "loads");
}

// Numbers that 32 bits would wrap to a small one.
TEST(ImageBudget, NumbersOfAPnmDoNotWrap) {
  constexpr char kNonsense[] = "has a header that makes no sense";
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 1 1 255\nx")), "loads");
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 4294967297 1 255\nx")), kNonsense);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 1 4294967297 255\nx")), kNonsense);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 1 1 4294967551\nx")), kNonsense);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 18446744073709551617 1 255\nx")), kNonsense);
  EXPECT_EQ(WhyItDoesNotLoad(Text("P2 1 1 255\n4294967297 ")), "holds text that is no number");
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 0000000001 1 255\nx")), "loads");
}

// A bit for each block is the least that Huffman coding can do: 512 pixels a byte.
TEST(ImageBudget, AFlatJpegOfTheFewestBitsLoads) {
  TJpegSpec spec;
  spec.Width = 8192;
  spec.Height = 4096;
  spec.Channels = 1;
  spec.MeansFirst = true;
  spec.Pixels.assign(std::size_t{8192} * 4096, 77);
  const TBytes jpeg = MakeJpeg(spec);
  ASSERT_LT(jpeg.size(), std::size_t{8192} * 4096 / 500); // near the bound, or it shows nothing
  const TLoaded image(jpeg);
  ASSERT_TRUE(image.Done);
  const std::uint8_t* const pixels = image.Surface.Data;
  EXPECT_EQ(std::count(pixels, pixels + spec.Pixels.size(), 77), 8192 * 4096);
}

// Arithmetic coding goes far below a bit a block, and has 2^20 pixels to do so.
TEST(ImageBudget, AFlatArithmeticJpegHasTheFreeSize) {
  TJpegSpec spec;
  spec.Width = 1024;
  spec.Height = 1024;
  spec.Channels = 1;
  spec.Arithmetic = true;
  spec.Pixels.assign(1024 * 1024, 77);
  const TBytes jpeg = MakeJpeg(spec);
  ASSERT_LT(jpeg.size(), 1024u * 1024 / 512);
  EXPECT_EQ(WhyItDoesNotLoad(jpeg), "loads");
  spec.Height = 1025;
  spec.Pixels.assign(1024 * 1025, 77);
  EXPECT_EQ(WhyItDoesNotLoad(MakeJpeg(spec)), kUnlikely);
}

} // namespace
