#include <ZxCore3D/object/TImageSurface.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxBaseKit/TZxStream.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>

#include "VirtualSlot.h"
#include "object/FailingMalloc.h"

namespace {

using Zx3D::TImageSurface;
using zx_test::SlotOf;

void ExpectEmpty(const DATASURFACE& s) {
  EXPECT_EQ(s.Width, 0);
  EXPECT_EQ(s.Height, 0);
  EXPECT_EQ(s.Depth, 0);
  EXPECT_EQ(s.PixelStride, 0);
  EXPECT_EQ(s.RowStride, 0);
  EXPECT_EQ(s.SliceStride, 0);
  EXPECT_EQ(s.Format, DATA_FORMAT_NONE);
  EXPECT_EQ(s.Type, DATA_TYPE_NONE);
  EXPECT_EQ(s.Channels, 0);
  EXPECT_EQ(s.Data, nullptr);
  EXPECT_EQ(s.DataSize, 0u);
}

DATASURFACE Record(int width, int height) {
  DATASURFACE made;
  EXPECT_TRUE(ds::Set(&made, width, height, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, nullptr));
  made.Data = static_cast<std::uint8_t*>(std::malloc(made.DataSize));
  for (std::uint64_t i = 0; i < made.DataSize; ++i) {
    made.Data[i] = static_cast<std::uint8_t>(i + 1);
  }
  return made;
}

TEST(TImageSurface, StartsEmptyWithOneReference) {
  TImageSurface* image = new TImageSurface;
  EXPECT_EQ(image->GetRefCount(), 1u);
  ExpectEmpty(image->m_Surface);
  EXPECT_EQ(image->m_ExtraSize, 0u);
  EXPECT_EQ(image->AddRef(), 2u);
  EXPECT_EQ(image->Release(), 1u);
  EXPECT_EQ(image->Release(), 0u);
}

TEST(TImageSurface, FieldsStandBehindTheBase) {
  TImageSurface image;
  const auto* start = reinterpret_cast<const char*>(&image);
  EXPECT_EQ(reinterpret_cast<const char*>(&image.m_ExtraSize) -
                reinterpret_cast<const char*>(&image.m_Surface),
            static_cast<std::ptrdiff_t>(sizeof(DATASURFACE)));
  EXPECT_GT(reinterpret_cast<const char*>(&image.m_Surface), start);
}

TEST(TImageSurface, OrderOfTheVirtualOperations) {
  using TLong = bool (TImageSurface::*)(unsigned long, unsigned long, unsigned long, unsigned long,
                                        DATA_FORMAT, DATA_TYPE, int, void*);
  EXPECT_EQ(SlotOf(&TImageSurface::AddRef), 2u);
  EXPECT_EQ(SlotOf(&TImageSurface::Release), 3u);
  EXPECT_EQ(SlotOf(&TImageSurface::QueryInterface), 4u);
  EXPECT_EQ(SlotOf(&TImageSurface::SetDataSize), 5u);
  EXPECT_EQ(SlotOf(static_cast<TLong>(&TImageSurface::SetImage2D)), 6u);
}

TEST(TImageSurface, SetDataSize) {
  TImageSurface image;
  EXPECT_TRUE(image.SetDataSize(0));
  ExpectEmpty(image.m_Surface);
  ASSERT_TRUE(image.SetDataSize(10));
  EXPECT_EQ(image.m_Surface.DataSize, 10u);
  ASSERT_NE(image.m_Surface.Data, nullptr);
  std::memcpy(image.m_Surface.Data, "abcdefghij", 10);
  const std::uint8_t* block = image.m_Surface.Data;
  EXPECT_TRUE(image.SetDataSize(10));
  EXPECT_EQ(image.m_Surface.Data, block);
  ASSERT_TRUE(image.SetDataSize(5000));
  EXPECT_EQ(std::memcmp(image.m_Surface.Data, "abcdefghij", 10), 0);
  ASSERT_TRUE(image.SetDataSize(3));
  EXPECT_EQ(image.m_Surface.DataSize, 3u);
  EXPECT_EQ(std::memcmp(image.m_Surface.Data, "abc", 3), 0);
  image.m_Surface.Width = 3;
  EXPECT_TRUE(image.SetDataSize(0));
  ExpectEmpty(image.m_Surface);
}

TEST(TImageSurface, FailedSetDataSizeKeepsAll) {
  TImageSurface image;
  ASSERT_TRUE(image.SetDataSize(4));
  std::memcpy(image.m_Surface.Data, "abcd", 4);
  image.m_ExtraSize = 2;
  const std::uint8_t* block = image.m_Surface.Data;
  // The sum with the extra size overflows.
  EXPECT_FALSE(image.SetDataSize(~0ul));
  EXPECT_FALSE(image.SetImage2D(1, 2, 1, ~0ul / 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, nullptr));
  EXPECT_EQ(image.m_Surface.Data, block);
  EXPECT_EQ(image.m_Surface.DataSize, 4u);
  EXPECT_EQ(image.m_Surface.Width, 0);
  EXPECT_EQ(image.m_ExtraSize, 2u);
  EXPECT_EQ(std::memcmp(block, "abcd", 4), 0);
}

TEST(TImageSurface, ImageOfFourByTwo) {
  std::uint8_t pixels[24];
  for (std::uint8_t i = 0; i < 24; ++i) {
    pixels[i] = i;
  }
  TImageSurface image;
  ASSERT_TRUE(image.SetImage2D(4, 2, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3, pixels));
  const DATASURFACE& s = image.m_Surface;
  EXPECT_EQ(s.Width, 4);
  EXPECT_EQ(s.Height, 2);
  EXPECT_EQ(s.Depth, 1);
  EXPECT_EQ(s.PixelStride, 3);
  EXPECT_EQ(s.RowStride, 12);
  EXPECT_EQ(s.SliceStride, 24);
  EXPECT_EQ(s.Format, DATA_FORMAT_RGB);
  EXPECT_EQ(s.Type, DATA_TYPE_UINT8);
  EXPECT_EQ(s.Channels, 3);
  EXPECT_EQ(s.DataSize, 24u);
  EXPECT_NE(s.Data, pixels);
  EXPECT_EQ(std::memcmp(s.Data, pixels, 24), 0);
}

// The bytes from `offset` on of a block of 0, 1, 2, ... as an image of `w` by 1 pixels in its
// place.
void ExpectPartOfItself(TImageSurface& image, unsigned long offset, unsigned long w) {
  SCOPED_TRACE(std::to_string(offset) + " " + std::to_string(w));
  for (std::uint64_t i = 0; i < image.m_Surface.DataSize; ++i) {
    image.m_Surface.Data[i] = static_cast<std::uint8_t>(i % 251);
  }
  ASSERT_TRUE(
      image.SetImage2D(w, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, image.m_Surface.Data + offset));
  ASSERT_EQ(image.m_Surface.DataSize, w);
  for (unsigned long i = 0; i < w; ++i) {
    ASSERT_EQ(image.m_Surface.Data[i], (offset + i) % 251) << i;
  }
}

TEST(TImageSurface, DataInsideItsOwnBlock) {
  constexpr unsigned long kSize = 1 << 20; // cut short, such a block goes back to the system
  for (const unsigned long offset : {0ul, 1ul, 1000ul, kSize - 5}) {
    for (const unsigned long w : {1ul, 5ul, kSize / 2, kSize - 5}) {
      if (offset + w <= kSize) {
        TImageSurface image;
        ASSERT_TRUE(image.SetDataSize(kSize));
        ExpectPartOfItself(image, offset, w);
      }
    }
  }
  TImageSurface image;
  ASSERT_TRUE(image.SetDataSize(kSize));
  ExpectPartOfItself(image, 0, kSize);
}

// What was allocated on top may be used as well: there a larger image can lie inside the block.
TEST(TImageSurface, DataInsideTheExtraSizeOfItsOwnBlock) {
  TImageSurface image;
  image.m_ExtraSize = 100000;
  ASSERT_TRUE(image.SetDataSize(8));
  for (int i = 0; i < 100008; ++i) {
    image.m_Surface.Data[i] = static_cast<std::uint8_t>(i % 251);
  }
  ASSERT_TRUE(
      image.SetImage2D(100000, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, image.m_Surface.Data + 8));
  for (int i = 0; i < 100000; ++i) {
    ASSERT_EQ(image.m_Surface.Data[i], (i + 8) % 251) << i;
  }
}

TEST(TImageSurface, StridesAsGiven) {
  std::uint8_t pixels[40] = {5};
  TImageSurface image;
  ASSERT_TRUE(image.SetImage2D(3, 2, 6, 20, DATA_FORMAT_RG, DATA_TYPE_UINT16, 2, pixels));
  EXPECT_EQ(image.m_Surface.PixelStride, 6);
  EXPECT_EQ(image.m_Surface.RowStride, 20);
  EXPECT_EQ(image.m_Surface.SliceStride, 40);
  EXPECT_EQ(image.m_Surface.DataSize, 40u);
  EXPECT_EQ(image.m_Surface.Data[0], 5);
  // A channel count is stored in a byte.
  ASSERT_TRUE(image.SetImage2D(1, 1, 1, 40, DATA_FORMAT_RED, DATA_TYPE_UINT8, 257, nullptr));
  EXPECT_EQ(image.m_Surface.Channels, 1);
}

TEST(TImageSurface, WithoutDataTheBlockKeepsItsContent) {
  std::uint8_t pixels[4] = {1, 2, 3, 4};
  TImageSurface image;
  ASSERT_TRUE(image.SetImage2D(2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, nullptr));
  ASSERT_NE(image.m_Surface.Data, nullptr);
  EXPECT_EQ(image.m_Surface.DataSize, 4u);
  ASSERT_TRUE(image.SetImage2D(2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, pixels));
  ASSERT_TRUE(image.SetImage2D(4, 1, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1, nullptr));
  EXPECT_EQ(image.m_Surface.Width, 4);
  EXPECT_EQ(image.m_Surface.Height, 1);
  EXPECT_EQ(std::memcmp(image.m_Surface.Data, pixels, 4), 0);
}

TEST(TImageSurface, ImageWithoutRowsHasNoBlock) {
  TImageSurface image;
  std::uint8_t pixel = 1;
  ASSERT_TRUE(image.SetImage2D(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, &pixel));
  ASSERT_TRUE(image.SetImage2D(5, 0, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, &pixel));
  EXPECT_EQ(image.m_Surface.Data, nullptr);
  EXPECT_EQ(image.m_Surface.Width, 5);
  EXPECT_EQ(image.m_Surface.Height, 0);
  EXPECT_EQ(image.m_Surface.DataSize, 0u);
}

TEST(TImageSurface, AttachFormsTakeTheBlockAndLeaveTheRecord) {
  TImageSurface image;
  ASSERT_TRUE(image.SetDataSize(100));
  DATASURFACE first = Record(3, 2);
  image.Attach(first);
  EXPECT_EQ(image.m_Surface.Data, first.Data);
  EXPECT_NE(first.Data, nullptr);
  EXPECT_EQ(image.m_Surface.Width, 3);
  EXPECT_EQ(image.m_ExtraSize, 6u);

  const DATASURFACE second = Record(5, 1);
  image.AttachDataSurface(second);
  EXPECT_EQ(image.m_Surface.Data, second.Data);
  EXPECT_EQ(image.m_Surface.DataSize, 5u);
  EXPECT_EQ(image.m_ExtraSize, 0u);
}

TEST(TImageSurface, ExtraSizeIsAllocatedOnTop) {
  TImageSurface image;
  DATASURFACE record = Record(64, 1);
  image.Attach(record);
  ASSERT_TRUE(image.SetDataSize(10));
  EXPECT_EQ(image.m_Surface.DataSize, 10u);
  // 64 + 10 bytes belong to the block now.
  std::memset(image.m_Surface.Data, 7, 74);
  EXPECT_EQ(image.m_Surface.Data[73], 7);
  EXPECT_EQ(image.m_ExtraSize, 64u);
  // Releasing the block leaves the extra size.
  ASSERT_TRUE(image.SetDataSize(0));
  EXPECT_EQ(image.m_ExtraSize, 64u);
}

TEST(TImageSurface, AttachingItsOwnRecordKeepsTheBlock) {
  TImageSurface image;
  const DATASURFACE record = Record(3, 1);
  image.AttachDataSurface(record);
  image.AttachDataSurface(image.m_Surface);
  ASSERT_EQ(image.m_Surface.Data, record.Data);
  EXPECT_EQ(image.m_Surface.Data[2], 3);
}

class TTextStream : public TZxStream {
public:
  explicit TTextStream(std::string text) : m_Text(std::move(text)) {}
  unsigned long Read(void* data, unsigned long size) override {
    const std::string part = m_Text.substr(0, size);
    std::memcpy(data, part.data(), part.size());
    m_Text.erase(0, part.size());
    return part.size();
  }
  operator bool() override { return true; }

private:
  std::string m_Text;
};

TEST(LoadImageObject, FromAStream) {
  TTextStream stream("P5 2 2 255\nabcd");
  TImageSurface* image = nullptr;
  ASSERT_TRUE(Zx3D::LoadImage(&stream, nullptr, &image));
  ASSERT_NE(image, nullptr);
  EXPECT_EQ(image->GetRefCount(), 1u);
  EXPECT_EQ(image->m_ExtraSize, 0u);
  EXPECT_EQ(image->m_Surface.Width, 2);
  EXPECT_EQ(std::memcmp(image->m_Surface.Data, "cdab", 4), 0); // row 0 is the bottom row
  EXPECT_EQ(image->Release(), 0u);
}

TEST(LoadImageObject, FromAFile) {
  const std::string name = (std::filesystem::temp_directory_path() /
                            ("zx_image_surface_" + std::to_string(getpid()) + ".ppm"))
                               .string();
  std::ofstream(name, std::ios::binary) << "P6 1 2 255\nabcdef";
  TSaveImageHint hint;
  TImageSurface* image = nullptr;
  ASSERT_TRUE(Zx3D::LoadImage(name, &hint, &image));
  EXPECT_EQ(image->GetRefCount(), 1u);
  EXPECT_EQ(image->m_Surface.Height, 2);
  EXPECT_EQ(image->m_Surface.Format, DATA_FORMAT_RGB);
  EXPECT_EQ(std::memcmp(image->m_Surface.Data, "defabc", 6), 0);
  image->Release();
  std::filesystem::remove(name);
}

TEST(LoadImageObject, FalseLeavesTheTarget) {
  TImageSurface* const before = reinterpret_cast<TImageSurface*>(0x10);
  TImageSurface* image = before;
  EXPECT_FALSE(Zx3D::LoadImage(std::string("/nonexistent.png"), nullptr, &image));
  EXPECT_EQ(image, before);
  TTextStream damaged("P5 2 2 255\nabc");
  EXPECT_FALSE(Zx3D::LoadImage(&damaged, nullptr, &image));
  EXPECT_EQ(image, before);
}

TEST(LoadImageObject, SaysWhyItFailed) {
  TImageSurface* image = nullptr;
  TZxMessage reason("as it was");
  EXPECT_FALSE(Zx3D::LoadImage(std::string("/nonexistent.png"), nullptr, &image, &reason));
  EXPECT_EQ(reason.GetText(), std::strerror(ENOENT));
  TTextStream damaged("P5 2 2 255\nabc");
  EXPECT_FALSE(Zx3D::LoadImage(&damaged, nullptr, &image, &reason));
  EXPECT_STREQ(reason.what(), "ends inside its picture");
  TTextStream sound("P5 1 1 255\na");
  ASSERT_TRUE(Zx3D::LoadImage(&sound, nullptr, &image, &reason));
  EXPECT_STREQ(reason.what(), "ends inside its picture"); // left alone
  image->Release();
}

TEST(TImageSurface, ExhaustedMemoryKeepsAll) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP();
  }
  std::uint8_t pixels[4] = {1, 2, 3, 4};
  TImageSurface image;
  ASSERT_TRUE(image.SetImage2D(2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, pixels));
  const DATASURFACE before = image.m_Surface;
  bool sized, imaged;
  {
    const zx_test::TMallocWatch watch(1);
    sized = image.SetDataSize(1000000);
  }
  {
    const zx_test::TMallocWatch watch(1);
    imaged = image.SetImage2D(30, 30, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3, nullptr);
  }
  bool inside[2];
  for (unsigned long failAt = 1; failAt <= 2; ++failAt) { // the copy apart, then the block
    const zx_test::TMallocWatch watch(failAt);
    inside[failAt - 1] =
        image.SetImage2D(2, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, image.m_Surface.Data + 1);
  }
  EXPECT_FALSE(inside[0]);
  EXPECT_FALSE(inside[1]);
  EXPECT_FALSE(sized);
  EXPECT_FALSE(imaged);
  EXPECT_EQ(std::memcmp(&before, &image.m_Surface, sizeof before), 0);
  EXPECT_EQ(std::memcmp(image.m_Surface.Data, pixels, 4), 0);
}

TEST(LoadImageObject, EveryFailingAllocationGivesFalseAndLeaksNothing) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP();
  }
  const std::string png = (std::filesystem::temp_directory_path() /
                           ("zx_image_surface_" + std::to_string(getpid()) + ".png"))
                              .string();
  const std::string pgm = png + ".pgm";
  DATASURFACE saved = Record(6, 5);
  ASSERT_TRUE(SaveImage(png, nullptr, saved));
  FreeDataSurfaceData(saved);
  std::ofstream(pgm, std::ios::binary) << "P5 2 2 255\nabcd";
  for (const std::string& name : {png, pgm}) {
    unsigned long failAt = 0;
    for (bool failed = true; failed;) {
      ++failAt;
      TImageSurface* image = nullptr;
      bool done;
      long blocks;
      {
        const zx_test::TMallocWatch watch(failAt);
        done = Zx3D::LoadImage(name, nullptr, &image);
        failed = watch.Failed();
        blocks = watch.LiveBlocks();
      }
      ASSERT_LT(failAt, 1000u);
      if (image != nullptr) {
        image->Release();
      }
      ASSERT_EQ(done, image != nullptr);
      // A failure that a decoder can do without, or none: the object and its block.
      ASSERT_EQ(blocks, done ? 2 : 0) << name << ", allocation " << failAt;
      ASSERT_TRUE(failed || done);
    }
    EXPECT_GT(failAt, 4u);
    std::filesystem::remove(name);
  }
}

} // namespace

TEST(TImageSurface, SizesThatWrapAreRefused) {
  std::uint8_t pixels[4] = {1, 2, 3, 4};
  TImageSurface image;
  ASSERT_TRUE(image.SetImage2D(2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, pixels));
  const DATASURFACE before = image.m_Surface;
  EXPECT_FALSE(
      image.SetImage2D(1, 1UL << 33, 1, 1UL << 31, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, nullptr));
  EXPECT_FALSE(image.SetImage2D(1UL << 61, 1, DATA_FORMAT_RED, DATA_TYPE_DOUBLE, 1, nullptr));
  EXPECT_EQ(std::memcmp(&before, &image.m_Surface, sizeof before), 0);
  EXPECT_EQ(std::memcmp(image.m_Surface.Data, pixels, 4), 0);
}

TEST(LoadImageObject, WithoutMemoryForTheObjectSaysSo) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const std::string pgm = "P5 2 2 255\nabcd";
  int told = 0;
  for (unsigned long at = 1;; ++at) {
    ASSERT_LT(at, 100u);
    TTextStream stream(pgm);
    TImageSurface* image = nullptr;
    TZxMessage reason("none");
    bool failed = false;
    bool loaded = false;
    {
      const zx_test::TMallocWatch watch(at);
      loaded = Zx3D::LoadImage(&stream, nullptr, &image, &reason);
      failed = watch.Failed();
    }
    if (!failed) {
      ASSERT_TRUE(loaded);
      EXPECT_STREQ(reason.what(), "none");
      image->Release();
      break;
    }
    if (loaded) {
      image->Release();
      continue;
    }
    EXPECT_EQ(image, nullptr);
    told += std::string(reason.what()) == "out of memory" ? 1 : 0;
  }
  EXPECT_GT(told, 1);
}
