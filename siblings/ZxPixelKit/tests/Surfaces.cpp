#include <ZxPixelKit/Surface.h>

#include <climits>
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxPixelKit/TDataSurface.h>

namespace {

TEST(TypeSize, OfEveryBaseCode) {
  const unsigned long sizes[16] = {0, 1, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8, 8, 16, 0, 0};
  for (unsigned int code = 0; code < 16; ++code) {
    EXPECT_EQ(GetTypeSize(DATA_TYPE(code)), sizes[code]) << code;
  }
}

TEST(TypeSize, CodesWithFlagsHaveNone) {
  EXPECT_EQ(GetTypeSize(DATA_TYPE(3 | 1 << 5)), 0u);
  EXPECT_EQ(GetTypeSize(DATA_TYPE(3 | 1 << 8)), 0u);
  EXPECT_EQ(GetTypeSize(DATA_TYPE(16)), 0u);
}

struct TGLType {
  unsigned int GL;
  unsigned int Type;
  unsigned long Size;
};

TEST(Mapping, TypesOfOpenGL) {
  const TGLType types[] = {{0x1400, 2, 1}, {0x1401, 3, 1}, {0x1402, 4, 2},  {0x1403, 5, 2},
                           {0x1404, 6, 4}, {0x1405, 7, 4}, {0x1406, 10, 4}, {0x140A, 11, 8}};
  for (const TGLType& type : types) {
    EXPECT_EQ(DataTypeFromGL(type.GL), type.Type) << std::hex << type.GL;
    EXPECT_EQ(GetTypeSize(type.GL), type.Size) << std::hex << type.GL;
  }
  for (unsigned int gl : {0u, 0x13FFu, 0x1407u, 0x1408u, 0x1409u, 0x140Bu, 0xFFFFFFFFu}) {
    EXPECT_EQ(DataTypeFromGL(gl), DATA_TYPE_NONE) << std::hex << gl;
    EXPECT_EQ(GetTypeSize(gl), 0u) << std::hex << gl;
  }
}

struct TGLFormat {
  unsigned int GL;
  DATA_FORMAT Format;
  int Components;
};

TEST(Mapping, FormatsOfOpenGL) {
  const TGLFormat formats[] = {
      {0x1909, DATA_FORMAT_LUMINANCE, 1}, {0x190A, DATA_FORMAT_LUMINANCE_ALPHA, 2},
      {0x1903, DATA_FORMAT_RED, 1},       {0x8227, DATA_FORMAT_RG, 2},
      {0x1907, DATA_FORMAT_RGB, 3},       {0x1908, DATA_FORMAT_RGBA, 4}};
  for (const TGLFormat& format : formats) {
    EXPECT_EQ(DataFormatFromGL(format.GL), format.Format) << std::hex << format.GL;
    EXPECT_EQ(GetFormatComponents(format.GL), format.Components) << std::hex << format.GL;
  }
  for (unsigned int gl : {0u, 0x1902u, 0x1904u, 0x1906u, 0x190Bu, 0x8226u, 0x8228u}) {
    EXPECT_EQ(DataFormatFromGL(gl), DATA_FORMAT_NONE) << std::hex << gl;
    EXPECT_EQ(GetFormatComponents(gl), 0) << std::hex << gl;
  }
  EXPECT_EQ(DATA_FORMAT_RGBA, 6u);
  EXPECT_EQ(DATA_FORMAT_DEPTH, 13u);
  EXPECT_EQ(DATA_FORMAT_STENCIL, 14u);
}

TEST(Block, IsZeroedWithItsSlack) {
  std::uint8_t* block = AllocateSurfaceBlock(24, 12, 3);
  ASSERT_NE(block, nullptr);
  for (int i = 0; i < 24 + 12 + 3; ++i) {
    EXPECT_EQ(block[i], 0) << i;
  }
  std::free(block);
}

TEST(Block, SizesThatOverflowGiveNone) {
  EXPECT_EQ(AllocateSurfaceBlock(~0ull, 1, 0), nullptr);
  EXPECT_EQ(AllocateSurfaceBlock(~0ull - 8, 4, 5), nullptr);
  EXPECT_EQ(AllocateSurfaceBlock(1ull << 63, 4, 4), nullptr);
  EXPECT_EQ(AllocateSurfaceBlock(1ull << 39, 0, 1), nullptr);
  EXPECT_EQ(AllocateSurfaceBlock(0, 0, 0), nullptr);
}

TEST(Set, TightRecordOverCallersPixels) {
  std::uint8_t pixels[4 * 3 * 6] = {};
  DATASURFACE surface;
  ASSERT_TRUE(ds::Set(&surface, 4, 3, DATA_FORMAT_RGB, DATA_TYPE_UINT16, 3, pixels));
  EXPECT_EQ(surface.Width, 4);
  EXPECT_EQ(surface.Height, 3);
  EXPECT_EQ(surface.Depth, 1);
  EXPECT_EQ(surface.PixelStride, 6);
  EXPECT_EQ(surface.RowStride, 24);
  EXPECT_EQ(surface.SliceStride, 72);
  EXPECT_EQ(surface.Format, DATA_FORMAT_RGB);
  EXPECT_EQ(surface.Type, DATA_TYPE_UINT16);
  EXPECT_EQ(surface.Channels, 3);
  EXPECT_EQ(surface.Data, pixels);
  EXPECT_EQ(surface.DataSize, 72u);
}

struct TBadSet {
  int Width;
  int Height;
  DATA_TYPE Type;
  int Components;
};

TEST(Set, RefusesWhatHasNoSize) {
  const TBadSet bads[] = {
      {0, 1, DATA_TYPE_UINT8, 1},
      {1, 0, DATA_TYPE_UINT8, 1},
      {-1, 1, DATA_TYPE_UINT8, 1},
      {1, -1, DATA_TYPE_UINT8, 1},
      {1, 1, DATA_TYPE_UINT8, 0},
      {1, 1, DATA_TYPE_UINT8, -1},
      {1, 1, DATA_TYPE_UINT8, 256},
      {1, 1, DATA_TYPE_NONE, 1},
      {1, 1, DATA_TYPE_STRING, 1},
      {INT_MAX, 1, DATA_TYPE_UINT8, 2},
      {INT_MAX / 8 + 1, 1, DATA_TYPE_DOUBLE, 1},
  };
  std::uint8_t pixel = 0;
  for (const TBadSet& bad : bads) {
    DATASURFACE surface;
    std::memset(&surface, 0xAA, sizeof surface);
    EXPECT_FALSE(ds::Set(&surface, bad.Width, bad.Height, DATA_FORMAT_RGBA, bad.Type,
                         bad.Components, &pixel));
    EXPECT_EQ(surface.Width, 0);
    EXPECT_EQ(surface.Height, 0);
    EXPECT_EQ(surface.Data, nullptr);
    EXPECT_EQ(surface.DataSize, 0u);
  }
}

TEST(Set, RowOfExactlyTheGreatestStride) {
  DATASURFACE surface;
  EXPECT_TRUE(ds::Set(&surface, INT_MAX, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, nullptr));
  EXPECT_EQ(surface.RowStride, INT_MAX);
  EXPECT_EQ(surface.DataSize, 2ull * INT_MAX);
}

TEST(Fill, EveryPixelAndNoByteMore) {
  std::vector<std::uint8_t> bytes(5 * 3 * 3 + 2, 9);
  DATASURFACE surface;
  ASSERT_TRUE(ds::Set(&surface, 5, 3, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3, bytes.data() + 1));
  const std::uint8_t color[] = {1, 2, 3};
  ASSERT_TRUE(ds::Fill(surface, color, 3));
  EXPECT_EQ(bytes.front(), 9);
  EXPECT_EQ(bytes.back(), 9);
  for (int i = 0; i < 45; ++i) {
    EXPECT_EQ(bytes[static_cast<std::size_t>(1 + i)], i % 3 + 1) << i;
  }
}

// Short and long runs, of sizes that go into a word and of one that does not.
TEST(Fill, RunsOfEverySizeAndLength) {
  constexpr unsigned char kValue[] = {11, 12, 13, 14, 15, 16, 17, 18};
  constexpr unsigned char kGuard = 0xEE;
  for (const unsigned long size : {1ul, 2ul, 3ul, 4ul, 8ul}) {
    for (const unsigned long count :
         {0ul, 1ul, 2ul, 5ul, 127ul, 255ul, 256ul, 511ul, 1025ul, 1027ul, 4099ul}) {
      for (const std::size_t shift : {0, 1, 3}) {
        std::vector<unsigned char> bytes(shift + size * count + 9, kGuard);
        ds::FillRun(bytes.data() + shift, kValue, size, count);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
          const bool inside = i >= shift && i < shift + size * count;
          ASSERT_EQ(bytes[i], inside ? kValue[(i - shift) % size] : kGuard)
              << size << " bytes, " << count << " values, byte " << i;
        }
      }
    }
  }
}

TEST(Fill, KeepsBytesBetweenPixelsAndRows) {
  std::vector<std::uint8_t> bytes(2 * 10, 9);
  DATASURFACE surface;
  ASSERT_TRUE(ds::Set(&surface, 2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, bytes.data()));
  surface.PixelStride = 3;
  surface.RowStride = 10;
  const std::uint8_t value[] = {7, 8};
  ASSERT_TRUE(ds::Fill(surface, value, 2));
  const std::vector<std::uint8_t> expected = {7, 8, 9, 7, 8, 9, 9, 9, 9, 9,
                                              7, 8, 9, 7, 8, 9, 9, 9, 9, 9};
  EXPECT_EQ(bytes, expected);
}

TEST(Fill, RefusesWhatFitsNoPixel) {
  std::uint8_t bytes[4] = {9, 9, 9, 9};
  DATASURFACE surface;
  ASSERT_TRUE(ds::Set(&surface, 2, 1, DATA_FORMAT_RG, DATA_TYPE_UINT8, 2, bytes));
  const std::uint8_t value[4] = {};
  EXPECT_FALSE(ds::Fill(surface, value, 0));
  EXPECT_FALSE(ds::Fill(surface, value, 3));
  EXPECT_FALSE(ds::Fill(surface, nullptr, 2));
  EXPECT_FALSE(ds::Fill(DATASURFACE{}, value, 1));
  for (std::uint8_t byte : bytes) {
    EXPECT_EQ(byte, 9);
  }
}

struct TCut {
  int X, Y, Width, Height;
  int FirstPixel, CutWidth, CutHeight; // what remains; a width of 0: nothing
};

TEST(GetSubSurface, CutsTheRectangle) {
  std::uint8_t pixels[4 * 3 * 2] = {};
  DATASURFACE surface;
  ASSERT_TRUE(ds::Set(&surface, 4, 3, DATA_FORMAT_RG, DATA_TYPE_UINT8, 2, pixels));
  const TCut cuts[] = {
      {0, 0, 4, 3, 0, 4, 3},
      {1, 1, 2, 1, 5, 2, 1},
      {-1, -1, 3, 3, 0, 2, 2},
      {2, 1, 9, 9, 6, 2, 2},
      {INT_MIN, INT_MIN, INT_MAX, INT_MAX, 0, 0, 0},
      {3, 2, INT_MAX, INT_MAX, 11, 1, 1},
      {-2, 0, INT_MAX, 1, 0, 4, 1},
      {4, 0, 1, 1, 0, 0, 0},
      {0, 3, 1, 1, 0, 0, 0},
      {-1, 0, 1, 1, 0, 0, 0},
      {1, 1, 0, 1, 0, 0, 0},
      {1, 1, 1, -5, 0, 0, 0},
      {INT_MAX, INT_MAX, INT_MAX, INT_MAX, 0, 0, 0},
  };
  for (const TCut& cut : cuts) {
    DATASURFACE part;
    std::memset(&part, 0xAA, sizeof part);
    const bool done = ds::GetSubSurface(surface, cut.X, cut.Y, cut.Width, cut.Height, &part);
    EXPECT_EQ(done, cut.CutWidth > 0) << cut.X << " " << cut.Y;
    EXPECT_EQ(part.Width, cut.CutWidth);
    EXPECT_EQ(part.Height, cut.CutHeight);
    if (!done) {
      EXPECT_EQ(part.Data, nullptr);
      continue;
    }
    EXPECT_EQ(part.Data, pixels + cut.FirstPixel * 2);
    EXPECT_EQ(part.PixelStride, 2);
    EXPECT_EQ(part.RowStride, 8);
    EXPECT_EQ(part.Channels, 2);
    EXPECT_LE(part.Data + part.DataSize, pixels + sizeof pixels);
  }
  DATASURFACE part;
  EXPECT_FALSE(ds::GetSubSurface(DATASURFACE{}, 0, 0, 1, 1, &part));
}

TEST(Copy, WhatBothHave) {
  std::uint8_t from[3 * 2] = {1, 2, 3, 4, 5, 6};
  std::uint8_t to[2 * 3] = {9, 9, 9, 9, 9, 9};
  DATASURFACE source, target;
  ASSERT_TRUE(ds::Set(&source, 3, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, from));
  ASSERT_TRUE(ds::Set(&target, 2, 3, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, to));
  ASSERT_TRUE(ds::Copy(source, target));
  const std::uint8_t expected[] = {1, 2, 4, 5, 9, 9};
  EXPECT_EQ(std::memcmp(to, expected, 6), 0);
}

TEST(Copy, AcrossDifferentStrides) {
  std::uint8_t from[2 * 2] = {1, 2, 3, 4};
  std::uint8_t to[12] = {};
  DATASURFACE source, target;
  ASSERT_TRUE(ds::Set(&source, 2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, from));
  ASSERT_TRUE(ds::Set(&target, 2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, to));
  target.PixelStride = 3;
  target.RowStride = 6;
  ASSERT_TRUE(ds::Copy(source, target));
  const std::uint8_t expected[] = {1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0};
  EXPECT_EQ(std::memcmp(to, expected, 12), 0);
}

// A part of a surface onto another part of it, compared with a copy by way of other memory.
void ExpectMoved(const DATASURFACE& from, const DATASURFACE& to, std::vector<std::uint8_t>& block) {
  for (std::size_t i = 0; i < block.size(); ++i) {
    block[i] = static_cast<std::uint8_t>(i % 251);
  }
  std::vector<std::uint8_t> expected = block;
  const int width = std::min(from.Width, to.Width);
  const int height = std::min(from.Height, to.Height);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const auto offset = [&](const DATASURFACE& s) {
        return static_cast<std::size_t>(s.Data - block.data() + y * s.RowStride +
                                        x * s.PixelStride);
      };
      for (std::size_t i = 0; i < from.Channels; ++i) {
        expected[offset(to) + i] = block[offset(from) + i];
      }
    }
  }
  ASSERT_TRUE(ds::Copy(from, to));
  ASSERT_EQ(block, expected);
}

TEST(Copy, OverlappingRowsInEveryDirection) {
  std::vector<std::uint8_t> block(9 * 9 * 3);
  DATASURFACE whole, from, to;
  ASSERT_TRUE(ds::Set(&whole, 9, 9, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3, block.data()));
  for (int dx = -3; dx <= 3; ++dx) {
    for (int dy = -3; dy <= 3; ++dy) {
      SCOPED_TRACE(std::to_string(dx) + " " + std::to_string(dy));
      ASSERT_TRUE(ds::GetSubSurface(whole, 3, 3, 3, 3, &from));
      ASSERT_TRUE(ds::GetSubSurface(whole, 3 + dx, 3 + dy, 3, 3, &to));
      ExpectMoved(from, to, block);
      // One component of each pixel, so that pixels are moved one by one.
      from.Channels = to.Channels = 1;
      ExpectMoved(from, to, block);
    }
  }
}

TEST(Copy, OverlappingWithOtherStrides) {
  std::vector<std::uint8_t> block(400);
  for (int fromAt = 0; fromAt <= 40; ++fromAt) {
    for (const int toStride : {1, 2, 3}) {
      for (const int toRow : {12, 17, 20, 31}) {
        SCOPED_TRACE(std::to_string(fromAt) + " " + std::to_string(toStride) + " " +
                     std::to_string(toRow));
        DATASURFACE from, to;
        ASSERT_TRUE(
            ds::Set(&from, 4, 5, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, block.data() + fromAt));
        ASSERT_TRUE(ds::Set(&to, 4, 5, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, block.data() + 20));
        from.PixelStride = 2;
        from.RowStride = 17;
        to.PixelStride = toStride;
        to.RowStride = toRow;
        ExpectMoved(from, to, block);
      }
    }
  }
}

TEST(Copy, RefusesAnotherKindOfPixel) {
  std::uint8_t from[8] = {1, 1, 1, 1, 1, 1, 1, 1};
  std::uint8_t to[8] = {};
  DATASURFACE source, target;
  ASSERT_TRUE(ds::Set(&source, 2, 1, DATA_FORMAT_RG, DATA_TYPE_UINT8, 2, from));
  ASSERT_TRUE(ds::Set(&target, 2, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, to));
  EXPECT_FALSE(ds::Copy(source, target));
  ASSERT_TRUE(ds::Set(&target, 2, 1, DATA_FORMAT_RG, DATA_TYPE_INT8, 2, to));
  EXPECT_FALSE(ds::Copy(source, target));
  EXPECT_FALSE(ds::Copy(source, DATASURFACE{}));
  EXPECT_FALSE(ds::Copy(DATASURFACE{}, source));
  source.Type = target.Type = DATA_TYPE_REF; // which has no size
  EXPECT_FALSE(ds::Copy(source, target));
  EXPECT_EQ(to[0], 0);
}

TEST(TDataSurface, CreateGivesZeroedTightRows) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(7, 5, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3));
  EXPECT_EQ(surface.PixelStride, 3);
  EXPECT_EQ(surface.RowStride, 21);
  EXPECT_EQ(surface.DataSize, 105u);
  EXPECT_TRUE(surface.IsOwner());
  // One row and one pixel behind the data belong to the block, and are 0.
  for (int i = 0; i < 105 + 21 + 3; ++i) {
    EXPECT_EQ(surface.Data[i], 0) << i;
  }
  // The pixel one column and one row past the end.
  const std::uint8_t* past =
      surface.Data + surface.Height * surface.RowStride + surface.PixelStride * 0;
  EXPECT_EQ(past[0] + past[surface.RowStride + 2], 0);
}

TEST(TDataSurface, FailedCreateEmptiesIt) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(2, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
  EXPECT_FALSE(surface.Create(0, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
  EXPECT_EQ(surface.Data, nullptr);
  EXPECT_EQ(surface.Width, 0);
  EXPECT_FALSE(surface.IsOwner());
  EXPECT_FALSE(surface.Create(INT_MAX, INT_MAX, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
  EXPECT_FALSE(surface.Create(INT_MAX / 4, INT_MAX, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
  EXPECT_EQ(surface.Data, nullptr);
}

TEST(TDataSurface, CallersBlockIsUsedAndLeft) {
  std::uint8_t pixels[4] = {1, 2, 3, 4};
  {
    TDataSurface surface;
    ASSERT_TRUE(surface.Create(2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, pixels));
    EXPECT_EQ(surface.Data, pixels);
    EXPECT_FALSE(surface.IsOwner());
  }
  EXPECT_EQ(pixels[3], 4);
}

TEST(TDataSurface, SwapAndAdopt) {
  TDataSurface left, right;
  ASSERT_TRUE(left.Create(2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  const std::uint8_t* block = left.Data;
  left.Swap(right);
  EXPECT_EQ(left.Data, nullptr);
  EXPECT_FALSE(left.IsOwner());
  EXPECT_EQ(right.Data, block);
  EXPECT_TRUE(right.IsOwner());

  DATASURFACE record;
  ASSERT_TRUE(
      ds::Set(&record, 3, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, AllocateSurfaceBlock(3, 3, 1)));
  right.Adopt(record);
  EXPECT_EQ(right.Width, 3);
  EXPECT_TRUE(right.IsOwner());
  EXPECT_EQ(record.Data, nullptr);
  EXPECT_EQ(record.Width, 0);
}

TEST(FreeDataSurfaceData, EmptiesTheRecord) {
  DATASURFACE record;
  ASSERT_TRUE(
      ds::Set(&record, 3, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, AllocateSurfaceBlock(6, 3, 1)));
  FreeDataSurfaceData(record);
  const DATASURFACE empty = {};
  EXPECT_EQ(std::memcmp(&record, &empty, sizeof record), 0);
  FreeDataSurfaceData(record);
  EXPECT_EQ(record.Data, nullptr);
}

TEST(HasPixels, EachSizeAndStrideCounts) {
  std::uint8_t bytes[4] = {9, 9, 9, 9};
  DATASURFACE sound;
  ASSERT_TRUE(ds::Set(&sound, 2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, bytes));
  const std::uint8_t value = 1;
  for (std::int32_t DATASURFACE::*const field :
       {&DATASURFACE::Width, &DATASURFACE::Height, &DATASURFACE::PixelStride,
        &DATASURFACE::RowStride}) {
    for (const int none : {0, -1}) {
      DATASURFACE surface = sound;
      surface.*field = none;
      EXPECT_FALSE(ds::Fill(surface, &value, 1));
      EXPECT_FALSE(ds::Copy(surface, sound));
      EXPECT_FALSE(ds::Copy(sound, surface));
    }
  }
  EXPECT_EQ(bytes[0], 9);
}

TEST(Fill, WholePixelsOfRowsThatLieApart) {
  std::uint8_t bytes[12] = {};
  DATASURFACE whole, part;
  ASSERT_TRUE(ds::Set(&whole, 3, 2, DATA_FORMAT_RG, DATA_TYPE_UINT8, 2, bytes));
  ASSERT_TRUE(ds::GetSubSurface(whole, 0, 0, 2, 2, &part));
  const std::uint8_t value[2] = {3, 4};
  ASSERT_TRUE(ds::Fill(part, value, 2));
  const std::uint8_t expected[12] = {3, 4, 3, 4, 0, 0, 3, 4, 3, 4, 0, 0};
  EXPECT_EQ(std::memcmp(bytes, expected, 12), 0);
}

// Pixels closer than their components are long: what lies between would have rows of more than 2
// GiB.
TEST(Copy, OverlappingWithoutRoomForACopyInBetween) {
  double values[8] = {};
  DATASURFACE from, to;
  ASSERT_TRUE(ds::Set(&from, 1, 1, DATA_FORMAT_RGBA, DATA_TYPE_DOUBLE, 4, values));
  to = from;
  from.Width = to.Width = 1 << 27;
  from.PixelStride = from.RowStride = to.RowStride = 1;
  to.PixelStride = 2;
  EXPECT_FALSE(ds::Copy(from, to));
}

} // namespace
