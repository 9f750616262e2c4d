#include <ZxPixelKit/Image.h>

#include <string>

#include <gtest/gtest.h>

#include "ImageFiles.h"

// Headers of unusual length, and the last and the first impossible value of their fields.

namespace {

// The decoder gets the header in parts of 128 bytes; one that fills a part leaves none of it for
// the pixels.
TEST(Hdr, HeaderOfEveryLength) {
  for (int filler = 0; filler < 200; ++filler) {
    const TLoaded image(Text("#?RGBE\nA=" + std::string(static_cast<std::size_t>(filler), 'a') +
                             "\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 1\n") +
                        TBytes{128, 64, 32, 129});
    ASSERT_TRUE(image.Done) << filler;
    EXPECT_EQ(Float(image.Surface, 0), 1.0f) << filler;
    EXPECT_EQ(Float(image.Surface, 1), 0.5f) << filler;
    EXPECT_EQ(Float(image.Surface, 2), 0.25f) << filler;
  }
}

TEST(Hdr, SizesBelowOneAreRefused) {
  for (const char* sizes : {"-Y 0 +X 1", "-Y 1 +X 0", "-Y -1 +X 1", "-Y 1 +X -1",
                            "-Y -2147483648 +X 1", "-Y 1 +X -2147483648"}) {
    EXPECT_FALSE(TLoaded(Text(std::string("#?RGBE\nFORMAT=32-bit_rle_rgbe\n\n") + sizes + "\n") +
                         TBytes(64, 1))
                     .Done)
        << sizes;
  }
}

// 65535 entries are the most that a palette has, those below its first among them.
TEST(Tga, PaletteBeyondItsLastEntryIsRefused) {
  TBytes file = TgaHeader(1, 1, 1, 16, 0);
  file[1] = 1;
  file[3] = 0xFE; // the first entry: 65534
  file[4] = 0xFF;
  file[5] = 1; // entries
  file[7] = 24;
  const TBytes pixel = {0xFE, 0xFF};
  const TLoaded last(file + TBytes{1, 2, 3} + pixel);
  ASSERT_TRUE(last.Done);
  EXPECT_EQ(last.Pixels(), (TBytes{3, 2, 1}));
  file[5] = 2;
  EXPECT_FALSE(TLoaded(file + TBytes{1, 2, 3, 4, 5, 6} + pixel).Done);
}

TEST(Bmp, OldestHeaderHasNeither16Nor32Bits) {
  for (const std::uint32_t bits : {16u, 24u, 32u}) {
    TBytes file = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0};
    Put32(file, 26);
    Put32(file, 12);
    Put16(file, 1);
    Put16(file, 1);
    Put16(file, 1);
    Put16(file, bits);
    EXPECT_EQ(TLoaded(file + TBytes{1, 2, 3, 4}).Done, bits == 24) << bits;
  }
}

TEST(Tga, IndicesWithoutAPaletteAreRefused) {
  TBytes file = TgaHeader(1, 1, 1, 8, 0);
  file[1] = 1;
  file[7] = 24;
  EXPECT_FALSE(TLoaded(file + TBytes{0}).Done);
  file[5] = 1; // entries
  EXPECT_TRUE(TLoaded(file + TBytes{1, 2, 3} + TBytes{0}).Done);
}

} // namespace
