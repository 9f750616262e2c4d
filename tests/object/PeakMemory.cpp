// What operations take while they work, beside their results: as their docstrings say.

#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/object/TImageSurface.h>

#include "object/FailingMalloc.h"

namespace {

using Zx3D::TImageSurface;

constexpr unsigned long kSide = 256;
constexpr unsigned long kRowBytes = kSide * 4;
constexpr long kBytes = kSide * kRowBytes;
constexpr long kRounding = 4096 + 256; // what the allocator rounds blocks up by

class TImageSurfacePeakMemory : public testing::Test {
protected:
  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the sanitizer has malloc to itself";
    }
    ASSERT_TRUE(m_Image.SetImage2D(kSide, kSide, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, nullptr));
    for (long i = 0; i < kBytes; ++i) {
      m_Image.m_Surface.Data[i] = static_cast<std::uint8_t>(i * 7 + i / 251);
    }
  }

  /// The most bytes that there were on top of the block of before, while the image was given `rows`
  /// rows of `data`.
  long PeakOf(unsigned long rows, const void* data) {
    const zx_test::TMallocWatch watch;
    EXPECT_TRUE(m_Image.SetImage2D(kSide, rows, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4,
                                   const_cast<void*>(data)));
    return watch.PeakBytes();
  }

  TImageSurface m_Image;
};

TEST_F(TImageSurfacePeakMemory, OfPixelsFromElsewhereIsTheImageAlone) {
  const std::vector<std::uint8_t> apart(2 * kBytes, 9);
  EXPECT_EQ(PeakOf(kSide, apart.data()), 0);
  EXPECT_LE(PeakOf(2 * kSide, apart.data()), kBytes + kRounding);
  EXPECT_LE(PeakOf(kSide / 2, apart.data()), kRounding);
}

// One size, one block: rows that overlap what they are copied to need no other.
TEST_F(TImageSurfacePeakMemory, OfItsOwnPixelsInTheSameSizeIsNothing) {
  EXPECT_EQ(PeakOf(kSide, m_Image.m_Surface.Data), 0);
}

TEST_F(TImageSurfacePeakMemory, OfItsOwnPixelsInAnotherSizeIsTheNewOnesASecondTime) {
  constexpr unsigned long kRows = kSide / 4;
  const std::uint8_t* const from = m_Image.m_Surface.Data + kBytes / 2;
  const std::vector<std::uint8_t> expected(from, from + kRows * kRowBytes);
  const long peak = PeakOf(kRows, from);
  EXPECT_GE(peak, static_cast<long>(kRows * kRowBytes));
  EXPECT_LE(peak, static_cast<long>(kRows * kRowBytes) + kRounding);
  EXPECT_EQ(std::memcmp(m_Image.m_Surface.Data, expected.data(), expected.size()), 0);
}

} // namespace
