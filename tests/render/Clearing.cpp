// Clearing surfaces whose rows go down in memory, as drawing takes them.

#include <cstdint>
#include <cstring>
#include <vector>

#include "Scene.h"

using namespace zx_test;

namespace {

constexpr int kWidth = 5;
constexpr int kHeight = 4;
constexpr int kRow = 32; // bytes, of which 20 are pixels

/// A colour surface whose first row stands last in its block.
struct TDownward {
  TDownward() : Block(kRow * kHeight, 0xEE) {
    EXPECT_TRUE(Surface.Create(kWidth, kHeight, DATA_FORMAT(6), DATA_TYPE(3), 4, Block.data()));
    Surface.Data = Block.data() + kRow * (kHeight - 1);
    Surface.RowStride = -kRow;
    Surface.DataSize = Block.size();
  }

  /// The pixel in row `y` of the picture, found by hand.
  const std::uint8_t* At(int x, int y) const {
    return Block.data() + kRow * (kHeight - 1 - y) + 4 * x;
  }

  std::vector<std::uint8_t> Block;
  TDataSurface Surface;
};

TEST(ClearDownward, FillsTheColoursByAnyMask) {
  for (const int mask : {15, 5, 8}) {
    TDownward down;
    const TScene s(kWidth, kHeight);
    s->BindColorSurface(&down.Surface);
    ASSERT_EQ(0u, s->GetError());
    s->ClearColor(1.0f, 0.0f, 1.0f, 1.0f);
    s->ColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
    s->Clear(true, false, false);
    EXPECT_EQ(0u, s->GetError()) << mask;
    const std::uint8_t cleared[4] = {255, 0, 255, 255};
    for (int y = 0; y < kHeight; ++y) {
      for (int x = 0; x < kWidth; ++x) {
        for (int i = 0; i < 4; ++i) {
          EXPECT_EQ((mask >> i & 1) != 0 ? cleared[i] : 0xEE, down.At(x, y)[i])
              << mask << ": " << x << ", " << y;
        }
      }
      for (int i = 4 * kWidth; i < kRow; ++i) { // between the rows
        EXPECT_EQ(0xEE, down.At(0, y)[i]);
      }
    }
  }
}

// As a tightly packed block, of which nothing is left out.
TEST(ClearDownward, FillsATightBlockWhole) {
  std::vector<std::uint8_t> block(4 * kWidth * kHeight, 0xEE);
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(kWidth, kHeight, DATA_FORMAT(6), DATA_TYPE(3), 4, block.data()));
  surface.Data = block.data() + 4 * kWidth * (kHeight - 1);
  surface.RowStride = -4 * kWidth;
  const TScene s(kWidth, kHeight);
  s->BindColorSurface(&surface);
  s->ClearColor(0.0f, 1.0f, 0.0f, 0.0f);
  s->Clear(GL_COLOR_BUFFER_BIT);
  EXPECT_EQ(0u, s->GetError());
  for (std::size_t i = 0; i < block.size(); ++i) {
    EXPECT_EQ(i % 4 == 1 ? 255 : 0, block[i]);
  }
}

TEST(ClearDownward, DrawingFindsTheSamePixels) {
  TDownward down;
  const TScene s(kWidth, kHeight);
  s->BindColorSurface(&down.Surface);
  s->Clear(true, true, true);
  s->_Color4d(1, 1, 1, 1);
  s->Begin(GL_POINTS);
  s->Vertex2d(Clip(1, kWidth), Clip(0, kHeight));
  s->End();
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      const std::uint8_t expected = x == 1 && y == 0 ? 255 : 0;
      EXPECT_EQ(expected, down.At(x, y)[0]) << x << ", " << y;
    }
  }
}

// The context's own surfaces, turned over where they stand.
TEST(ClearDownward, FillsDepthAndStencil) {
  const TScene s(kWidth, kHeight);
  for (TDataSurface* const surface : {s->m_DepthSurface, s->m_StencilSurface}) {
    surface->Data += std::ptrdiff_t{surface->RowStride} * (kHeight - 1);
    surface->RowStride = -surface->RowStride;
  }
  s->ClearDepth(0.25);
  s->ClearStencil(7);
  s->Clear(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  EXPECT_EQ(0u, s->GetError());
  for (int y = 0; y < kHeight; ++y) {
    for (int x = 0; x < kWidth; ++x) {
      EXPECT_EQ(0.25f, s.Depth(x, y));
      EXPECT_EQ(7, s.Stencil(x, y));
    }
  }
  for (TDataSurface* const surface : {s->m_DepthSurface, s->m_StencilSurface}) {
    surface->RowStride = -surface->RowStride;
    surface->Data -= std::ptrdiff_t{surface->RowStride} * (kHeight - 1);
  }
}

// --- Masks

// Every byte of a block, those between pixels and rows included, for pixels of any layout.
TEST(ClearMasked, EveryMaskInEveryLayout) {
  struct TLayout {
    int Channels;
    int Stride; ///< from one pixel to the next
    int Row;
  };
  constexpr int kColumns = 37;
  constexpr TLayout kLayouts[] = {{4, 4, 148}, {4, 4, 161}, {4, 7, 259}, {3, 4, 148}, {3, 3, 111}};
  for (const TLayout& layout : kLayouts) {
    for (int mask = 1; mask < 15; ++mask) {
      SCOPED_TRACE(testing::Message() << "layout " << &layout - kLayouts << ", mask " << mask);
      std::vector<std::uint8_t> block(static_cast<std::size_t>(layout.Row * kHeight));
      for (std::size_t i = 0; i < block.size(); ++i) {
        block[i] = static_cast<std::uint8_t>(7 * i + 1);
      }
      std::vector<std::uint8_t> expected = block;
      const std::uint8_t color[4] = {255, 0, 51, 102};
      for (int y = 0; y < kHeight; ++y) {
        for (int x = 0; x < kColumns; ++x) {
          for (int c = 0; c < 4 && c < layout.Stride; ++c) {
            if ((mask >> c & 1) != 0) {
              expected[static_cast<std::size_t>(layout.Row * y + layout.Stride * x + c)] = color[c];
            }
          }
        }
      }
      TDataSurface surface;
      ASSERT_TRUE(surface.Create(kColumns, kHeight, DATA_FORMAT_RGBA, DATA_TYPE_UINT8,
                                 layout.Channels, block.data()));
      surface.PixelStride = layout.Stride;
      surface.RowStride = layout.Row;
      const TScene s(kColumns, kHeight);
      s->BindColorSurface(&surface);
      s->ClearColor(1.0f, 0.0f, 0.2f, 0.4f);
      s->ColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
      s->Clear(true, false, false);
      EXPECT_EQ(0u, s->GetError());
      EXPECT_EQ(expected, block);
    }
  }
}

TEST(ClearMasked, EveryMaskOfTheStencil) {
  constexpr int kColumns = 37;
  for (unsigned int mask = 0; mask < 256; ++mask) {
    const TScene s(kColumns, kHeight);
    for (unsigned long i = 0; i < s->m_StencilSurface->DataSize; ++i) {
      s->m_StencilSurface->Data[i] = static_cast<unsigned char>(11 * i + mask);
    }
    s->ClearStencil(0xC5);
    s->StencilMask(mask);
    s->Clear(GL_STENCIL_BUFFER_BIT);
    for (unsigned long i = 0; i < s->m_StencilSurface->DataSize; ++i) {
      const auto before = static_cast<unsigned char>(11 * i + mask);
      ASSERT_EQ((before & ~mask) | (0xC5 & mask), s->m_StencilSurface->Data[i]) << mask;
    }
  }
}

// --- A surface without pixels, as one that was moved into a texture leaves it

TEST(ClearEmpty, PartialMasksFindNothingToClear) {
  const TScene s(kWidth, kHeight);
  TDataSurface taken;
  for (TDataSurface* const surface : {s->m_ColorSurface, s->m_StencilSurface}) {
    surface->Swap(taken);
    s->ColorMask(1, 0, 1, 0);
    s->StencilMask(0x0F);
    s->Clear(true, false, true);
    EXPECT_EQ(0u, s->GetError());
    surface->Swap(taken);
  }
}

TEST(ClearEmpty, AFullMaskReportsIt) {
  const TScene s(kWidth, kHeight);
  TDataSurface taken;
  for (TDataSurface* const surface : {s->m_ColorSurface, s->m_DepthSurface, s->m_StencilSurface}) {
    surface->Swap(taken);
    s->Clear(true, true, true);
    EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
    surface->Swap(taken);
  }
}

// The targets are cleared in the order colour, depth, stencil, and the first that cannot be filled
// ends the call.
TEST(ClearEmpty, TheTargetsBeforeItAreClearedAndThoseBehindItAreNot) {
  for (int empty = 0; empty < 3; ++empty) {
    SCOPED_TRACE(empty);
    TScene s(kWidth, kHeight);
    s->ClearColor(1.0f, 1.0f, 1.0f, 1.0f);
    s->ClearDepth(0.5);
    s->ClearStencil(9);
    s.Reset(0.25f);
    TDataSurface* const surfaces[] = {s->m_ColorSurface, s->m_DepthSurface, s->m_StencilSurface};
    TDataSurface taken;
    surfaces[empty]->Swap(taken);
    s->Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
    EXPECT_EQ(unsigned{GL_NO_ERROR}, s->GetError()) << "reported once";
    surfaces[empty]->Swap(taken);
    for (const int x : {0, kWidth - 1}) {
      EXPECT_EQ(empty > 0 ? (TPixel{255, 255, 255, 255}) : kClear, s.Color(x, kHeight - 1));
      EXPECT_EQ(empty > 1 ? 0.5f : 0.25f, s.Depth(x, kHeight - 1));
      EXPECT_EQ(0, s.Stencil(x, kHeight - 1));
    }
  }
}

// A colour surface of fewer bytes a pixel than the colour has cannot be filled.
TEST(ClearEmpty, APixelThatIsTooSmall) {
  const TScene s(kWidth, kHeight);
  TDataSurface bytes;
  ASSERT_TRUE(bytes.Create(kWidth, kHeight, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1));
  s->BindColorSurface(&bytes);
  s->ClearDepth(0.5);
  s->Clear(true, true, true);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
  for (unsigned long i = 0; i < bytes.DataSize; ++i) {
    EXPECT_EQ(0, bytes.Data[i]);
  }
  EXPECT_NE(0.5f, s.Depth(0, 0));
}

} // namespace
