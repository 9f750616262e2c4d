#include <ZxPixelKit/Image.h>

#include <random>

#include <gtest/gtest.h>
#include <png.h>
#include <turbojpeg.h>

#include "ImageFiles.h"
#include "LargestAllocation.h"

namespace {

// Whether loading gave an image whose record agrees with itself; touches every byte of its block.
// Without an image the target must be as it was.
bool LoadsSoundly(const TBytes& bytes) {
  const TLoaded image(bytes);
  const DATASURFACE& s = image.Surface;
  if (!image.Done) {
    EXPECT_EQ(s.Data, nullptr);
    EXPECT_EQ(s.Width, 0);
    return false;
  }
  EXPECT_GE(s.Width, 1);
  EXPECT_GE(s.Height, 1);
  EXPECT_EQ(s.Depth, 1);
  EXPECT_GE(s.Channels, 1);
  EXPECT_LE(s.Channels, 4);
  EXPECT_TRUE(s.Type == DATA_TYPE_UINT8 || s.Type == DATA_TYPE_UINT16 || s.Type == DATA_TYPE_FLOAT);
  EXPECT_EQ(s.PixelStride, static_cast<int>(s.Channels * GetTypeSize(s.Type)));
  EXPECT_EQ(s.RowStride, s.PixelStride * s.Width);
  EXPECT_EQ(s.DataSize,
            static_cast<std::uint64_t>(s.RowStride) * static_cast<std::uint64_t>(s.Height));
  std::uint64_t sum = 0;
  const std::uint64_t all = s.DataSize + static_cast<std::uint64_t>(s.RowStride + s.PixelStride);
  for (std::uint64_t i = 0; i < all; ++i) {
    sum += s.Data[i];
  }
  EXPECT_LE(sum, 255 * all);
  return true;
}

TEST(DamagedImage, WholeFilesLoad) {
  for (const TNamedFile& file : SmallFiles()) {
    EXPECT_TRUE(LoadsSoundly(file.Bytes)) << file.Name;
  }
}

TEST(DamagedImage, EveryTruncationThatLosesAPixelIsRefused) {
  for (const TNamedFile& file : SmallFiles()) {
    for (std::size_t size = 0; size + file.Spare < file.Bytes.size(); ++size) {
      const TBytes part(file.Bytes.begin(), file.Bytes.begin() + static_cast<long>(size));
      EXPECT_FALSE(LoadsSoundly(part))
          << file.Name << ": " << size << " of " << file.Bytes.size() << " bytes";
    }
  }
}

TEST(DamagedImage, BytesThatHoldNoPixelMayBeMissing) {
  for (const TNamedFile& file : SmallFiles()) {
    const TLoaded whole(file.Bytes);
    for (std::size_t missing = 1; missing <= file.Spare; ++missing) {
      const TLoaded image(
          TBytes(file.Bytes.begin(), file.Bytes.end() - static_cast<long>(missing)));
      ASSERT_TRUE(image.Done) << file.Name << ": " << missing;
      EXPECT_EQ(image.Pixels(), whole.Pixels()) << file.Name << ": " << missing;
    }
  }
}

TEST(DamagedImage, BytesBehindTheEndDoNotMatter) {
  for (const TNamedFile& file : SmallFiles()) {
    const TLoaded whole(file.Bytes);
    const TLoaded longer(file.Bytes + TBytes(300, 0xFF));
    ASSERT_TRUE(whole.Done && longer.Done) << file.Name;
    EXPECT_EQ(whole.Pixels(), longer.Pixels()) << file.Name;
  }
}

TEST(DamagedImage, RandomBytesChanged) {
  std::mt19937 random(20260101);
  for (const TNamedFile& file : SmallFiles()) {
    int images = 0;
    for (int round = 0; round < 3000; ++round) {
      TBytes bytes = file.Bytes;
      const int changes = 1 + static_cast<int>(random() % 4);
      for (int i = 0; i < changes; ++i) {
        // Half of the changes go into the first 64 bytes, where the headers are.
        const std::size_t range =
            random() % 2 == 0 ? std::min<std::size_t>(64, bytes.size()) : bytes.size();
        bytes[random() % range] = static_cast<std::uint8_t>(random());
      }
      if (random() % 8 == 0) {
        bytes.resize(random() % bytes.size());
      }
      images += LoadsSoundly(bytes) ? 1 : 0;
    }
    RecordProperty(file.Name, images);
  }
}

TEST(DamagedImage, TheSameBytesGiveTheSamePixels) {
  std::mt19937 random(7);
  for (const TNamedFile& file : SmallFiles()) {
    for (int round = 0; round < 200; ++round) {
      TBytes bytes = file.Bytes;
      bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
      const TLoaded first(bytes);
      const TLoaded second(bytes);
      ASSERT_EQ(first.Done, second.Done) << file.Name;
      if (first.Done) {
        ASSERT_EQ(first.Pixels(), second.Pixels()) << file.Name;
      }
    }
  }
}

// The sums that PNG chunks carry.
std::uint32_t Crc(const std::uint8_t* bytes, std::size_t size) {
  std::uint32_t crc = 0xFFFFFFFF;
  for (std::size_t i = 0; i < size; ++i) {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit) {
      crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
  }
  return ~crc;
}

void PutBig32(std::uint8_t* to, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) {
    to[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
  }
}

TBytes PngThatPromises(std::uint32_t width, std::uint32_t height) {
  TPngSpec spec;
  spec.Width = 1;
  spec.Height = 1;
  spec.ColorType = PNG_COLOR_TYPE_RGB;
  spec.Rows = {1, 2, 3};
  TBytes png = MakePng(spec);
  PutBig32(&png[16], width);
  PutBig32(&png[20], height);
  PutBig32(&png[29], Crc(&png[12], 17));
  return png;
}

// A PNG whose next chunk after the header is of a kind and promises many bytes.
TBytes PngWithAChunkThatPromises(const char* kind, std::uint32_t size) {
  TBytes png = PngThatPromises(1, 1);
  TBytes chunk = TBytes(4, 0) + Text(kind) + Text("a\0bc");
  PutBig32(chunk.data(), size);
  png.insert(png.begin() + 33, chunk.begin(), chunk.end());
  return png;
}

TBytes JpegThatPromises(int width, int height) {
  TBytes jpeg = MakeJpeg(8, 8, TJPF_GRAY, TJSAMP_GRAY, TBytes(64, 9));
  for (std::size_t i = 0; i + 9 < jpeg.size(); ++i) {
    if (jpeg[i] == 0xFF && jpeg[i + 1] == 0xC0) {
      jpeg[i + 5] = static_cast<std::uint8_t>(height >> 8);
      jpeg[i + 6] = static_cast<std::uint8_t>(height);
      jpeg[i + 7] = static_cast<std::uint8_t>(width >> 8);
      jpeg[i + 8] = static_cast<std::uint8_t>(width);
      break;
    }
  }
  return jpeg;
}

TEST(DamagedImage, AbsurdHeadersAreRefusedBeforeAnythingIsAllocated) {
  const std::string hdr = "#?RGBE\nFORMAT=32-bit_rle_rgbe\n\n";
  const TNamedFile absurd[] = {
      {"png of all", PngThatPromises(0x7FFFFFFF, 0x7FFFFFFF)},
      {"png above the budget", PngThatPromises(1 << 14, (1 << 14) + 1)},
      {"png within the budget", PngThatPromises(1 << 14, 1 << 14)},
      {"png with a long text", PngWithAChunkThatPromises("tEXt", 7000000)},
      {"png with a long packed text", PngWithAChunkThatPromises("zTXt", 7000000)},
      {"png with a long profile", PngWithAChunkThatPromises("iCCP", 7000000)},
      {"png with long EXIF data", PngWithAChunkThatPromises("eXIf", 7000000)},
      {"png without columns", PngThatPromises(0, 5)},
      {"png of a sign", PngThatPromises(0x80000000, 1)},
      {"jpeg", JpegThatPromises(65500, 65500)},
      {"jpeg within the budget", JpegThatPromises(16000, 16000)},
      {"tga", TgaHeader(2, 65535, 65535, 32, 0) + TBytes(100, 1)},
      {"tga packed", TgaHeader(10, 16000, 16000, 32, 0) + TBytes(100, 0xFF)},
      {"bmp", BmpHeader(0x7FFFFFFF, 0x7FFFFFFF, 24, 0, 0) + TBytes(100, 1)},
      {"bmp of a sign", BmpHeader(-5, 5, 24, 0, 0) + TBytes(200, 1)},
      {"bmp of the lowest", BmpHeader(1, -0x7FFFFFFF - 1, 24, 0, 0) + TBytes(200, 1)},
      {"bmp within the budget", BmpHeader(16000, 16000, 24, 0, 0) + TBytes(200, 1)},
      {"bmp packed", BmpHeader(16000, 16000, 8, 1, 8) + TBytes(8, 1) + TBytes{0, 1}},
      {"pnm", Text("P6 16000 16000 255\n1234")},
      {"pnm of all", Text("P6 999999999 999999999 65535\n1234")},
      {"pbm", Text("P4 16000 16000\n1234")},
      {"pbm text", Text("P1 16000 16000\n1 1")},
      {"pgm text", Text("P2 16000 16000 255\n1 1")},
      {"ppm text", Text("P3 16000 16000 65535\n1 1")},
      {"hdr", Text(hdr + "-Y 999999999999 +X 999999999999\n1234")},
      {"hdr within the budget", Text(hdr + "-Y 16000 +X 16000\n1234")},
      {"hdr of a sign", Text(hdr + "-Y -3 +X -3\n1234")},
      {"hdr of nothing", Text(hdr + "-Y 0 +X 0\n1234")},
  };
  for (const TNamedFile& file : absurd) {
    const TLargestAllocation watch;
    EXPECT_FALSE(LoadsSoundly(file.Bytes)) << file.Name;
    // The file is read in a block of 64 KiB; a decoder's own tables stay below 1 MiB.
    EXPECT_GT(watch.Get(), 0u);
    EXPECT_LT(watch.Get(), std::size_t{1} << 20) << file.Name;
  }
}

TEST(DamagedImage, HeaderLinesWithoutEnd) {
  EXPECT_FALSE(LoadsSoundly(Text("#?RADIANCE\n") + TBytes(5000, 'x')));
  EXPECT_FALSE(LoadsSoundly(Text("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n") + TBytes(2000, 'x')));
  EXPECT_FALSE(LoadsSoundly(Text("P5 #") + TBytes(5000, 'x')));
  EXPECT_FALSE(LoadsSoundly(Text("P5 ") + TBytes(5000, '1')));
}

TEST(DamagedImage, PacketsOfNothing) {
  // Counts of 0 make no progress; the end of the file must.
  EXPECT_FALSE(LoadsSoundly(Text("#?RGBE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 8\n") +
                            TBytes{2, 2, 0, 8} + TBytes(500, 0)));
}

} // namespace
