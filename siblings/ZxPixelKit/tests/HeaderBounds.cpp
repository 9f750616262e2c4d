#include <ZxPixelKit/Image.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>
#include <png.h>

#include <ZxBaseKit/TZxMessage.h>

#include "ImageFiles.h"
#include "LargestAllocation.h"

// Headers at the bounds of what makes sense, told apart by why they are refused.

namespace {

constexpr char kUnknown[] = "of no known image kind";
constexpr char kNonsense[] = "has a header that makes no sense";
constexpr char kTruncated[] = "ends inside its picture";

// The oldest header knows neither 16 nor 32 bits.
TEST(BmpHeader, TheOldestHasFewDepths) {
  const auto file = [](std::uint32_t bits) {
    TBytes bytes = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0};
    Put32(bytes, 26);
    Put32(bytes, 12);
    Put16(bytes, 1);
    Put16(bytes, 1);
    Put16(bytes, 1);
    Put16(bytes, bits);
    return bytes + TBytes{1, 2, 3, 4};
  };
  EXPECT_EQ(WhyItDoesNotLoad(file(24)), "loads");
  EXPECT_EQ(WhyItDoesNotLoad(file(16)), kNonsense);
  EXPECT_EQ(WhyItDoesNotLoad(file(32)), kNonsense);
}

// From 56 bytes on a header has a mask for alpha.
TEST(BmpHeader, TheMaskOfAlphaStandsInAHeaderOf56Bytes) {
  TBytes bytes = BmpHeader(1, 1, 32, 3, 16);
  bytes[14] = 56;
  for (const std::uint32_t mask : {0xFF0000u, 0xFF00u, 0xFFu, 0xFF000000u}) {
    Put32(bytes, mask);
  }
  const TLoaded image(bytes + TBytes{1, 2, 3, 4});
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 1, 1, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
  EXPECT_EQ(image.Pixels(), (TBytes{3, 2, 1, 4}));
}

// It has no mark: a header that makes no sense is that of another file.
TEST(TgaHeader, ThatMakesNoSenseIsNone) {
  EXPECT_EQ(WhyItDoesNotLoad(TgaHeader(2, 1, 1, 24, 0) + TBytes{1, 2, 3}), "loads");
  EXPECT_EQ(WhyItDoesNotLoad(TgaHeader(2, 0, 1, 24, 0) + TBytes{1, 2, 3}), kUnknown);
  EXPECT_EQ(WhyItDoesNotLoad(TgaHeader(2, 1, 0, 24, 0) + TBytes{1, 2, 3}), kUnknown);
  EXPECT_EQ(WhyItDoesNotLoad(TgaHeader(2, 1, 1, 24, 0x40) + TBytes{1, 2, 3}), kUnknown);
  EXPECT_EQ(WhyItDoesNotLoad(TgaHeader(2, 1, 1, 23, 0) + TBytes{1, 2, 3}), kUnknown);
  EXPECT_EQ(WhyItDoesNotLoad(TgaHeader(4, 1, 1, 24, 0) + TBytes{1, 2, 3}), kUnknown);
}

// The entries that a palette's first leaves out count, too, and 16 bits have to hold all of them.
TEST(TgaHeader, APaletteHasFewerThan65536Entries) {
  const auto file = [](std::uint32_t first, std::uint32_t entries) {
    TBytes bytes = TgaHeader(1, 1, 1, 16, 0);
    bytes[1] = 1;
    bytes[3] = static_cast<std::uint8_t>(first);
    bytes[4] = static_cast<std::uint8_t>(first >> 8);
    bytes[5] = static_cast<std::uint8_t>(entries);
    bytes[6] = static_cast<std::uint8_t>(entries >> 8);
    bytes[7] = 24;
    bytes = bytes + TBytes(std::size_t{entries} * 3, 7);
    bytes[bytes.size() - 3] = 1; // the last entry: blue, green, red
    bytes[bytes.size() - 2] = 2;
    bytes[bytes.size() - 1] = 3;
    return bytes + TBytes{0xFE, 0xFF}; // the pixel: entry 65534
  };
  for (const std::uint32_t first : {1u, 32768u, 65534u}) {
    const TLoaded last(file(first, 65535 - first));
    ASSERT_TRUE(last.Done) << first;
    EXPECT_EQ(last.Pixels(), (TBytes{3, 2, 1})) << first;
    EXPECT_EQ(WhyItDoesNotLoad(file(first, 65536 - first)), kUnknown) << first;
  }
}

TEST(TgaHeader, IndicesWithoutAPaletteAreRefused) {
  TBytes file = TgaHeader(1, 1, 1, 8, 0);
  file[1] = 1;
  file[7] = 24;
  EXPECT_FALSE(TLoaded(file + TBytes{0}).Done);
  file[5] = 1; // entries
  EXPECT_TRUE(TLoaded(file + TBytes{1, 2, 3} + TBytes{0}).Done);
}

// A pixel of 8 bits takes its byte: nothing is allocated for pixels that are not there.
TEST(TgaHeader, OfPlainBytesNeedsAllOfThem) {
  const std::size_t size = std::size_t{4000} * 4000;
  const TBytes tga = TgaHeader(3, 4000, 4000, 8, 0) + TBytes(size / 64, 1);
  const TLargestAllocation watch;
  EXPECT_EQ(WhyItDoesNotLoad(tga), kTruncated);
  EXPECT_LT(watch.Get(), 2 * tga.size());
}

// The decoder gets the header in parts of 128 bytes; one that fills a part leaves none of it for
// the pixels.
TEST(HdrHeader, OfEveryLength) {
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

TEST(HdrHeader, SizesBelowOneAreRefused) {
  for (const char* sizes : {"-Y 0 +X 1", "-Y 1 +X 0", "-Y -1 +X 1", "-Y 1 +X -1",
                            "-Y -2147483648 +X 1", "-Y 1 +X -2147483648"}) {
    EXPECT_FALSE(TLoaded(Text(std::string("#?RGBE\nFORMAT=32-bit_rle_rgbe\n\n") + sizes + "\n") +
                         TBytes(64, 1))
                     .Done)
        << sizes;
  }
}

// Two bytes a sample from a greatest value of 256 on: 128 of 256 is half of 65535, rounded up.
TEST(PnmHeader, SamplesAreWideAbove255) {
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 1 1 255\n") + TBytes{1}), "loads");
  EXPECT_EQ(WhyItDoesNotLoad(Text("P5 1 1 256\n") + TBytes{1}), kTruncated);
  const TLoaded image(Text("P5 2 1 256\n") + TBytes{0, 128, 1, 0});
  ASSERT_TRUE(image.Done);
  ExpectRecord(image.Surface, 2, 1, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT16, 1);
  EXPECT_EQ(Wide(image.Surface, 0), 32768);
  EXPECT_EQ(Wide(image.Surface, 1), 65535);
}

TEST(PngHeader, TheMarkAloneIsACutPng) {
  EXPECT_EQ(WhyItDoesNotLoad({0x89, 'P', 'N', 'G', 13, 10, 26, 10}), kTruncated);
  EXPECT_EQ(WhyItDoesNotLoad({0x89, 'P', 'N', 'G', 13, 10, 26}), kUnknown);
}

// A chunk that the picture could do without is damage like any other.
TEST(PngHeader, EveryChunkIsGuarded) {
  TPngSpec spec;
  spec.Width = 1;
  spec.Height = 1;
  spec.ColorType = PNG_COLOR_TYPE_RGB;
  spec.Rows = {1, 2, 3};
  spec.Exif = ExifOf("II", 1);
  TBytes bytes = MakePng(spec);
  ASSERT_EQ(WhyItDoesNotLoad(bytes), "loads");
  for (const char* name : {"IHDR", "eXIf", "IDAT"}) {
    std::size_t at = 0;
    while (at + 4 < bytes.size() && std::memcmp(bytes.data() + at, name, 4) != 0) {
      ++at;
    }
    ASSERT_LT(at + 4, bytes.size()) << name;
    const std::size_t sum = at + 4 + bytes[at - 1]; // lengths here are below 256
    bytes[sum] = static_cast<std::uint8_t>(bytes[sum] ^ 1);
    EXPECT_FALSE(TLoaded(bytes).Done) << name;
    bytes[sum] = static_cast<std::uint8_t>(bytes[sum] ^ 1);
  }
}

} // namespace
