#include <ZxPixelKit/Image.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <string>

#include <gtest/gtest.h>
#include <png.h>

#include <ZxPixelKit/Surface.h>
#include <ZxPixelKit/TDataSurface.h>

#include "ImageFiles.h"
#include "object/FailingMalloc.h"

// What loading and saving take while they work, besides the result: what their docstrings say, and
// no more.

namespace {

using zx_test::TMallocWatch;

constexpr long kSmall = 1 << 20;
constexpr int kWidth = 1024;
constexpr int kHeight = 768;
constexpr long kPixels = long{kWidth} * kHeight;

class TPeakMemory : public testing::Test {
protected:
  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the sanitizer has malloc to itself";
    }
  }

  /// The most bytes that there were while a picture was loaded, less the picture.
  static long PeakOfLoading(const TBytes& bytes) {
    TBytesStream stream(bytes);
    DATASURFACE image = {};
    const TMallocWatch watch;
    EXPECT_TRUE(LoadImage(&stream, nullptr, &image));
    const long peak = watch.PeakBytes() - static_cast<long>(image.DataSize);
    FreeDataSurfaceData(image);
    EXPECT_EQ(watch.LiveBlocks(), 0);
    return peak;
  }

  static long PeakOfSaving(const char* ending, DATA_TYPE type, int channels) {
    TDataSurface surface;
    EXPECT_TRUE(surface.Create(kWidth, kHeight, DATA_FORMAT_NONE, type, channels));
    const TTemporary file(ending);
    const TMallocWatch watch;
    EXPECT_TRUE(SaveImage(file.Name, nullptr, surface)) << ending;
    const long peak = watch.PeakBytes();
    EXPECT_EQ(watch.LiveBlocks(), 0);
    return peak;
  }
};

TBytes Noise(long size) {
  TBytes made(static_cast<std::size_t>(size));
  std::uint32_t state = 1;
  for (std::uint8_t& byte : made) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<std::uint8_t>(state >> 24);
  }
  return made;
}

TEST_F(TPeakMemory, LoadingTakesTheFileAndThePictureASecondTime) {
  TPngSpec png;
  png.Width = kWidth;
  png.Height = kHeight;
  png.ColorType = PNG_COLOR_TYPE_RGB;
  png.Rows = Noise(kPixels * 3);
  TJpegSpec jpeg;
  jpeg.Width = kWidth;
  jpeg.Height = kHeight;
  jpeg.Pixels = png.Rows;
  TJpegSpec scans = jpeg;
  scans.Progressive = true;
  const std::string size = std::to_string(kWidth) + " " + std::to_string(kHeight);
  // The HDR's rows are flat: no run is announced in front of them.
  TBytes hdr = Noise(kPixels * 4);
  for (std::size_t i = 0; i < hdr.size(); i += 4) {
    hdr[i] |= 0x80;
    hdr[i + 3] = 128;
  }
  const struct {
    const char* Name;
    TBytes Bytes;
    long PixelBytes;
    long More; ///< for each pixel
  } files[] = {
      {"PNG", MakePng(png), 3, 0},
      {"JPEG", MakeJpeg(jpeg), 3, 0},
      {"JPEG in several scans", MakeJpeg(scans), 3, 6},
      {"TGA", TgaHeader(2, kWidth, kHeight, 24, 0) + png.Rows, 3, 0},
      {"BMP", BmpHeader(kWidth, kHeight, 24, 0, 0) + png.Rows, 3, 0},
      {"packed BMP",
       [] {
         TBytes rows = BmpHeader(kWidth, kHeight, 8, 1, 8) + TBytes(8, 77);
         for (int i = 0; i < kHeight; ++i) {
           for (int x = 0; x < kWidth; x += 128) {
             rows.push_back(128);
             rows.push_back(1);
           }
           rows.push_back(0);
           rows.push_back(0);
         }
         return rows;
       }(),
       3, 1},
      {"PNM", Text("P6 " + size + " 255\n") + png.Rows, 3, 0},
      {"PNM in 16 bits", Text("P5 " + size + " 65535\n") + Noise(kPixels * 2), 2, 0},
      {"HDR",
       Text("#?RGBE\nFORMAT=32-bit_rle_rgbe\n\n-Y " + std::to_string(kHeight) + " +X " +
            std::to_string(kWidth) + "\n") +
           hdr,
       12, 0},
  };
  for (const auto& file : files) {
    const long bytes = static_cast<long>(file.Bytes.size());
    const long peak = PeakOfLoading(file.Bytes);
    const long picture = kPixels * file.PixelBytes;
    EXPECT_GE(peak, bytes + picture) << file.Name;
    EXPECT_LE(peak, bytes + bytes / 2 + picture + kPixels * file.More + kSmall) << file.Name;
  }
}

TEST_F(TPeakMemory, SavingTakesARowOrThePictureASecondTime) {
  EXPECT_LE(PeakOfSaving(".png", DATA_TYPE_UINT16, 4), kSmall);
  EXPECT_LE(PeakOfSaving(".jpg", DATA_TYPE_UINT8, 3), kSmall);
  EXPECT_LE(PeakOfSaving(".tga", DATA_TYPE_UINT8, 4), kPixels * 4 + kSmall);
  EXPECT_LE(PeakOfSaving(".bmp", DATA_TYPE_UINT8, 1), kPixels * 4 + kSmall);
  EXPECT_LE(PeakOfSaving(".bmp", DATA_TYPE_UINT8, 4), kPixels * 5 + kSmall);
  EXPECT_LE(PeakOfSaving(".hdr", DATA_TYPE_FLOAT, 4), kPixels * 12 + kSmall);
}

TEST_F(TPeakMemory, CopyingTakesNothingUnlessStridesOfWhatOverlapsDiffer) {
  TBytes block(100000);
  DATASURFACE from, to;
  ASSERT_TRUE(ds::Set(&from, 100, 100, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, block.data()));
  ASSERT_TRUE(ds::Set(&to, 100, 100, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, block.data() + 4));
  {
    const TMallocWatch watch;
    EXPECT_TRUE(ds::Copy(from, to));
    EXPECT_EQ(watch.PeakBytes(), 0);
  }
  to.RowStride = 404;
  const TMallocWatch watch;
  EXPECT_TRUE(ds::Copy(from, to));
  EXPECT_GE(watch.PeakBytes(), 40000);
  EXPECT_LE(watch.PeakBytes(), 40000 + 64);
}

} // namespace
