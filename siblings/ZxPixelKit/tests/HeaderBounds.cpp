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
  const auto file = [](std::uint32_t first) {
    TBytes bytes = TgaHeader(1, 1, 1, 16, 0);
    bytes[1] = 1;
    bytes[3] = static_cast<std::uint8_t>(first);
    bytes[5] = 0xFE; // 65,534 entries
    bytes[6] = 0xFF;
    bytes[7] = 24;
    return bytes + TBytes(std::size_t{65534} * 3, 7) + TBytes{0xFE, 0xFF};
  };
  EXPECT_EQ(WhyItDoesNotLoad(file(1)), "loads");
  EXPECT_EQ(WhyItDoesNotLoad(file(2)), kUnknown);
}

// A pixel of 8 bits takes its byte: nothing is allocated for pixels that are not there.
TEST(TgaHeader, OfPlainBytesNeedsAllOfThem) {
  const std::size_t size = std::size_t{4000} * 4000;
  const TBytes tga = TgaHeader(3, 4000, 4000, 8, 0) + TBytes(size / 64, 1);
  const TLargestAllocation watch;
  EXPECT_EQ(WhyItDoesNotLoad(tga), kTruncated);
  EXPECT_LT(watch.Get(), 2 * tga.size());
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
