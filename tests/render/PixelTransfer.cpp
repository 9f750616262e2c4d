#include <algorithm>
#include <functional>
#include <vector>

#include "StateChecks.h"
#include <ZxCore3D/render/kernels/SpanJob.h>

using namespace Zx3D;
using namespace zx_test;

namespace {

using TBytes = std::vector<std::uint8_t>;

TBytes Noise(std::size_t size, std::uint64_t seed) {
  TRandom random(seed);
  TBytes bytes(size);
  for (std::uint8_t& b : bytes) {
    b = static_cast<std::uint8_t>(random.Below(256));
  }
  return bytes;
}

void Paint(TScene& s, const TBytes& bytes) {
  std::copy(bytes.begin(), bytes.begin() + static_cast<long>(s->m_ColorSurface->DataSize),
            s->m_ColorSurface->Data);
}

struct TSteps {
  long Pixel, Row, Start;
};

/// The caller's steps, by the rounding up of 4 to a multiple of the alignment.
TSteps StepsOf(const TRenderCPU::TPixelStore& store, long width) {
  TSteps steps;
  steps.Pixel = (4 + store.Alignment - 1) / store.Alignment * store.Alignment;
  steps.Row = steps.Pixel * (store.RowLength != 0 ? store.RowLength : width);
  steps.Start =
      steps.Row * store.SkipRows + (store.SkipPixels != 0 ? store.SkipRows * steps.Pixel : 0);
  return steps;
}

/// What a draw makes of the surface's bytes; pixels outside of them are not written.
TBytes DrawnBytes(TRenderCPU& r, TBytes surface, long width, long height, const TBytes& source) {
  const long x = r.m_WindowPos.x, y = r.m_WindowPos.y, w = r.m_Width, h = r.m_Height;
  if (width < 1 || height < 1 || x + width <= 0 || y + height <= 0 || x >= w || y >= h) {
    return surface;
  }
  const TSteps steps = StepsOf(r.m_PixelUnpack, width);
  const long columns = std::min(width + std::min(x, 0l), w),
             rows = std::min(height + std::min(y, 0l), h);
  for (long j = 0; j < rows; ++j) {
    for (long i = 0; i < columns; ++i) {
      const long to = (std::max(x, 0l) + i) * 4 + (std::max(y, 0l) + j) * w * 4;
      const std::uint8_t* from = &source[static_cast<std::size_t>(
          steps.Start + (std::max(-x, 0l) + i) * steps.Pixel + (std::max(-y, 0l) + j) * steps.Row)];
      if (to + 4 > static_cast<long>(surface.size())) {
        continue;
      }
      for (long c = 0; c < 4; ++c) {
        if (r.m_ColorMask >> c & 1) {
          std::uint8_t& d = surface[static_cast<std::size_t>(to + c)];
          d = r.m_BlendFunc != nullptr
                  ? static_cast<std::uint8_t>((d * (255 - from[3]) + from[c] * from[3]) / 255)
                  : from[c];
        }
      }
    }
  }
  return surface;
}

int s_Called;
void CountingBlend(const void* source, void* target) {
  ++s_Called;
  static_cast<std::uint8_t*>(target)[0] =
      static_cast<std::uint8_t>(static_cast<const std::uint8_t*>(source)[0] + 1);
}
unsigned int s_Masks;
void CountingBlendM(const void*, void* target, unsigned char mask) {
  ++s_Called;
  s_Masks |= 1u << mask;
  static_cast<std::uint8_t*>(target)[0] = 99;
}

} // namespace

TEST(PixelTransfer, Defaults) {
  THeld<TRenderCPU> r;
  for (const TRenderCPU::TPixelStore* store : {&r->m_PixelPack, &r->m_PixelUnpack}) {
    EXPECT_FALSE(store->SwapBytes);
    EXPECT_FALSE(store->LsbFirst);
    EXPECT_EQ(0, store->RowLength);
    EXPECT_EQ(0, store->SkipPixels);
    EXPECT_EQ(0, store->SkipRows);
    EXPECT_EQ(1, store->Alignment);
  }
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, r->m_RasterPos));
  EXPECT_EQ(0, r->m_WindowPos.x);
  EXPECT_EQ(0, r->m_WindowPos.y);
}

TEST(PixelTransfer, PixelStoreHasSixNamesADirection) {
  using TStore = TRenderCPU::TPixelStore;
  for (const bool pack : {false, true}) {
    THeld<TRenderCPU> r;
    const unsigned int first = pack ? 3328 : 3312;
    TStore& store = pack ? r->m_PixelPack : r->m_PixelUnpack;
    const TStore& other = pack ? r->m_PixelUnpack : r->m_PixelPack;
    r->PixelStorei(first, -7);
    EXPECT_TRUE(store.SwapBytes);
    r->PixelStorei(first, 0);
    EXPECT_FALSE(store.SwapBytes);
    r->PixelStorei(first + 1, 2);
    EXPECT_TRUE(store.LsbFirst);
    EXPECT_FALSE(store.SwapBytes);
    r->PixelStorei(first + 2, 12);
    r->PixelStorei(first + 3, -13);
    r->PixelStorei(first + 4, 14);
    r->PixelStorei(first + 5, 0);
    EXPECT_EQ(12, store.RowLength);
    EXPECT_EQ(-13, store.SkipRows) << "unchecked";
    EXPECT_EQ(14, store.SkipPixels);
    EXPECT_EQ(0, store.Alignment);
    EXPECT_EQ(0u, r->GetError());
    EXPECT_EQ(1, other.Alignment);
    EXPECT_EQ(0, other.RowLength);
    EXPECT_FALSE(other.LsbFirst);
  }
  THeld<TRenderCPU> r;
  for (const unsigned int name : {0u, 3311u, 3318u, 3327u, 3334u, 32877u, 32878u}) {
    r->PixelStorei(name, 3);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
  }
}

TEST(PixelTransfer, RasterPositionsAreStoredAndMoveNothing) {
  THeld<TRenderCPU> r;
  r->WindowPos2i(3, 4);
  const int i[3] = {1, -2, 3};
  const float f[3] = {0.1f, 0.2f, 0.3f};
  const double d[3] = {0.1, 0.2, 0.3};
  const double fx = static_cast<double>(f[0]), fy = static_cast<double>(f[1]),
               fz = static_cast<double>(f[2]);
  const std::vector<std::pair<std::function<void()>, V4>> forms = {
      {[&] { r->RasterPos2i(1, -2); }, {1, -2, 0, 1}},
      {[&] { r->RasterPos2iv(i); }, {1, -2, 0, 1}},
      {[&] { r->RasterPos2f(f[0], f[1]); }, {fx, fy, 0, 1}},
      {[&] { r->RasterPos2fv(f); }, {fx, fy, 0, 1}},
      {[&] { r->RasterPos2d(d[0], d[1]); }, {0.1, 0.2, 0, 1}},
      {[&] { r->RasterPos2dv(d); }, {0.1, 0.2, 0, 1}},
      {[&] {
         r->RasterPos(V2{0.1, 0.2});
       },
       {0.1, 0.2, 0, 1}},
      {[&] { r->RasterPos3i(1, -2, 3); }, {1, -2, 3, 1}},
      {[&] { r->RasterPos3f(f[0], f[1], f[2]); }, {fx, fy, fz, 1}},
      {[&] { r->RasterPos3fv(f); }, {fx, fy, fz, 1}},
      {[&] { r->RasterPos3d(d[0], d[1], d[2]); }, {0.1, 0.2, 0.3, 1}},
      {[&] { r->RasterPos3dv(d); }, {0.1, 0.2, 0.3, 1}}};
  r->Translated(5, 5, 5); // plays no part
  for (const auto& [call, expected] : forms) {
    r->m_RasterPos = {-9, -9, -9, -9};
    call();
    EXPECT_TRUE(SameVec(expected, r->m_RasterPos));
    EXPECT_EQ(3, r->m_WindowPos.x);
    EXPECT_EQ(4, r->m_WindowPos.y);
  }
}

TEST(PixelTransfer, DrawingIsPlacedByTheWindowPosition) {
  TScene s(8, 8);
  s->RasterPos2i(5, 5);
  s->PixelZoom(2, 2); // does nothing
  s->WindowPos2i(2, 1);
  const std::uint8_t pixel[4] = {1, 2, 3, 4};
  s->DrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  EXPECT_EQ((TPixel{1, 2, 3, 4}), s.Color(2, 1));
  EXPECT_EQ(1, s.Painted());
  EXPECT_EQ(0u, s->GetError());
}

TEST(PixelTransfer, WhatWasNotBuiltReports) {
  THeld<TRenderCPU> r;
  const unsigned char bits[8] = {};
  r->Bitmap(8, 8, 0, 0, 0, 0, bits);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  r->Bitmap(TZxGLBitmap{}, 0, 0);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  r->DrawBuffer(GL_BACK);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  r->ReadBuffer(GL_BACK);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
  EXPECT_EQ("@virtual void Zx3D::TRenderCPU::CopyTexImage2D(GLenum, GLint, GLenum, GLint, GLint, "
            "GLsizei, GLsizei, GLint): TODO",
            Thrown([&] { r->CopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0, 0, 1, 1, 0); }));
  EXPECT_EQ(0u, r->GetError());
}

TEST(PixelTransfer, OneFormatOnly) {
  TScene s(4, 4);
  const TBytes source = Noise(4096, 1), before = BytesOf(s->m_ColorSurface);
  const std::pair<unsigned int, unsigned int> refused[] = {
      {6407, 5121}, {6409, 5121}, {0, 5121},    {32993, 5121}, {6408, 5120},
      {6408, 5122}, {6408, 5126}, {6408, 5130}, {6408, 33639}};
  for (const auto& [format, type] : refused) {
    s->DrawPixels(4, 4, format, type, source.data());
    EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError()) << format << " " << type;
    TBytes target(64, 77);
    s->ReadPixels(0, 0, 4, 4, format, type, target.data());
    EXPECT_EQ(0u, s->GetError()) << "the read says nothing";
    EXPECT_EQ(TBytes(64, 77), target);
  }
  EXPECT_EQ(before, BytesOf(s->m_ColorSurface));
}

TEST(PixelTransfer, OneKindOfColourSurfaceOnly) {
  const struct {
    DATA_FORMAT Format;
    DATA_TYPE Type;
    bool Fits;
  } rows[] = {{DATA_FORMAT_RGBA, DATA_TYPE_UINT8, true},
              {DATA_FORMAT_RGB, DATA_TYPE_UINT8, false},
              {DATA_FORMAT(7), DATA_TYPE_UINT8, false},
              {DATA_FORMAT_RGBA, DATA_TYPE_INT8, false},
              {DATA_FORMAT_RGBA, DATA_TYPE_FLOAT, false}};
  for (const auto& row : rows) {
    TScene s(2, 2);
    TDataSurface surface;
    surface.Create(2, 2, row.Format, row.Type, 4);
    s->BindColorSurface(&surface);
    const TBytes source(256, 5);
    s->DrawPixels(2, 2, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
    EXPECT_EQ(row.Fits ? 0u : unsigned{GL_INVALID_OPERATION}, s->GetError());
    EXPECT_EQ(row.Fits ? 5 : 0, surface.Data[0]);
    TBytes target(256, 77);
    s->ReadPixels(0, 0, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, target.data());
    EXPECT_EQ(0u, s->GetError());
    EXPECT_EQ(row.Fits ? 5 : 77, target[0]);
    s->BindColorSurface(nullptr);
  }
  THeld<TRenderCPU> r; // no surface at all
  TBytes target(16, 77);
  r->DrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, target.data());
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r->GetError());
  r->ReadPixels(0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, target.data());
  EXPECT_EQ(0u, r->GetError());
  EXPECT_EQ(77, target[0]);
}

TEST(PixelTransfer, AStartLeftOfTheSurfaceSkipsSourceColumns) {
  TScene s(20, 2);
  const TBytes source = Noise(10 * 4, 2);
  s->WindowPos2i(-2, 0);
  s->DrawPixels(10, 1, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
  for (int x = 0; x < 20; ++x) {
    const std::size_t at = static_cast<std::size_t>(x + 2) * 4;
    const TPixel expected =
        x < 8 ? TPixel{source[at], source[at + 1], source[at + 2], source[at + 3]} : kClear;
    EXPECT_EQ(expected, s.Color(x, 0)) << x;
  }
}

TEST(PixelTransfer, EachPixelIsAligned) {
  for (int alignment = 1; alignment <= 20; ++alignment) {
    TScene s(3, 2);
    s->PixelStorei(GL_UNPACK_ALIGNMENT, alignment);
    const std::size_t step = alignment == 1 || alignment == 2 || alignment == 4 ? 4
                             : alignment == 3                                   ? 6
                                              : static_cast<std::size_t>(alignment);
    const TBytes source = Noise(step * 6, 3);
    s->DrawPixels(3, 2, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
    for (std::size_t i = 0; i < 6; ++i) {
      EXPECT_EQ(source[i * step], s.Color(static_cast<int>(i % 3), static_cast<int>(i / 3)).r)
          << alignment << " " << i;
    }
  }
}

TEST(PixelTransfer, SkippedPixelsCountSkippedRows) {
  const TBytes source = Noise(4096, 4);
  const struct {
    int Pixels, Rows, Length;
    std::size_t Start;
  } rows[] = {{3, 0, 0, 0}, {0, 2, 0, 16}, {3, 2, 0, 24}, {1, 2, 5, 48}, {-1, 1, 7, 32}};
  for (const auto& row : rows) {
    TScene s(2, 1);
    s->PixelStorei(GL_UNPACK_SKIP_PIXELS, row.Pixels);
    s->PixelStorei(GL_UNPACK_SKIP_ROWS, row.Rows);
    s->PixelStorei(GL_UNPACK_ROW_LENGTH, row.Length);
    s->DrawPixels(2, 1, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
    EXPECT_EQ(TBytes(source.begin() + static_cast<long>(row.Start),
                     source.begin() + static_cast<long>(row.Start) + 8),
              BytesOf(s->m_ColorSurface))
        << row.Pixels << " " << row.Rows;
  }
}

TEST(PixelTransfer, AnAlignmentBelowOneTransfersNothing) {
  for (const int alignment : {0, -1, -8, -0x7FFFFFFF}) {
    TScene s(2, 2);
    TBytes bytes(64, 9);
    s->PixelStorei(GL_UNPACK_ALIGNMENT, alignment);
    s->PixelStorei(GL_PACK_ALIGNMENT, alignment);
    s->DrawPixels(2, 2, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    EXPECT_EQ(0, s.Painted());
    s->ReadPixels(0, 0, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data());
    EXPECT_EQ(TBytes(64, 9), bytes);
  }
}

TEST(PixelTransfer, TheOtherDirectionsStoreAndTheByteOrderPlayNoPart) {
  TScene s(3, 3);
  const TBytes source = Noise(36, 5);
  for (unsigned int name = 3328; name < 3334; ++name) {
    s->PixelStorei(name, 3);
  }
  s->PixelStorei(GL_UNPACK_SWAP_BYTES, 1);
  s->PixelStorei(GL_UNPACK_LSB_FIRST, 1);
  s->DrawPixels(3, 3, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
  EXPECT_EQ(source, BytesOf(s->m_ColorSurface)) << "row 0 is row 0";
}

TEST(PixelTransfer, EveryMaskWithAndWithoutBlending) {
  for (const bool blend : {false, true}) {
    for (unsigned int mask = 0; mask < 16; ++mask) {
      TScene s(5, 4);
      const TBytes before = Noise(80, 6), source = Noise(80, 7 + mask);
      Paint(s, before);
      s->ColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
      s->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
      s->EnableBlend(blend);
      s->DrawPixels(5, 4, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
      EXPECT_EQ(DrawnBytes(*s, before, 5, 4, source), BytesOf(s->m_ColorSurface)) << mask << blend;
    }
  }
}

TEST(PixelTransfer, AMaskOfRedAloneByHand) {
  TScene s(1, 1);
  s.SetColor(0, 0, {10, 20, 30, 40});
  s->ColorMask(1, 0, 0, 0);
  const std::uint8_t pixel[4] = {1, 2, 3, 4};
  s->DrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
  EXPECT_EQ((TPixel{1, 20, 30, 40}), s.Color(0, 0));
  s->ColorMask(0, 0, 0, 0);
  s->DrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel + 0);
  EXPECT_EQ((TPixel{1, 20, 30, 40}), s.Color(0, 0));
}

TEST(PixelTransfer, TheBlendRoutinesInForceAreCalledForEachPixel) {
  TScene s(3, 2);
  const TBytes source = Noise(24, 8);
  s->m_BlendFunc = CountingBlend;
  s->m_BlendFuncM = CountingBlendM;
  s_Called = 0;
  s->DrawPixels(3, 2, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
  EXPECT_EQ(6, s_Called);
  EXPECT_EQ((source[8] + 1) & 255, s.Color(2, 0).r);
  s_Called = 0;
  s_Masks = 0;
  s->ColorMask(1, 0, 1, 0);
  s->DrawPixels(3, 2, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
  EXPECT_EQ(6, s_Called);
  EXPECT_EQ(1u << 5, s_Masks);
  EXPECT_EQ(99, s.Color(0, 1).r);
  s_Called = 0;
  s->ColorMask(0, 0, 0, 0);
  s->DrawPixels(3, 2, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
  EXPECT_EQ(0, s_Called);
}

TEST(PixelTransfer, NoOtherStageTouchesADraw) {
  TScene s(3, 3);
  const TBytes source = Noise(36, 9);
  s->Enable(GL_DEPTH_TEST);
  s->DepthFunc(GL_NEVER);
  s->Enable(GL_STENCIL_TEST);
  s->StencilFunc(GL_NEVER, 0, 255);
  s->Enable(GL_TEXTURE_2D);
  const TBytes depth = BytesOf(s->m_DepthSurface), stencil = BytesOf(s->m_StencilSurface);
  s->DrawPixels(3, 3, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
  EXPECT_EQ(source, BytesOf(s->m_ColorSurface));
  EXPECT_EQ(depth, BytesOf(s->m_DepthSurface));
  EXPECT_EQ(stencil, BytesOf(s->m_StencilSurface));
}

TEST(PixelTransfer, DrawsAtRandomPlacesAndSteps) {
  TRandom random(71);
  const TBytes source = Noise(1 << 16, 10);
  for (int round = 0; round < 2000; ++round) {
    const int w = 1 + random.Below(12), h = 1 + random.Below(9);
    TScene s(w, h);
    const TBytes before = Noise(static_cast<std::size_t>(w * h * 4), 11);
    Paint(s, before);
    s->m_PixelUnpack.Alignment = 1 + random.Below(9);
    s->m_PixelUnpack.RowLength = random.Below(3) == 0 ? 0 : random.Below(20);
    s->m_PixelUnpack.SkipRows = random.Below(4);
    s->m_PixelUnpack.SkipPixels = random.Below(3);
    s->WindowPos2i(random.Below(2 * w + 4) - w - 2, random.Below(2 * h + 4) - h - 2);
    const int width = random.Below(16) - 1, height = random.Below(12) - 1;
    s->DrawPixels(width, height, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
    ASSERT_EQ(DrawnBytes(*s, before, width, height, source), BytesOf(s->m_ColorSurface))
        << round << ": " << w << "x" << h << " at " << s->m_WindowPos.x << ", " << s->m_WindowPos.y
        << " " << width << "x" << height;
  }
}

TEST(PixelTransfer, ARectangleOverTheRightEdgeRunsOnIntoTheNextRow) {
  TScene s(4, 3);
  const std::uint8_t source[12] = {1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
  s->WindowPos2i(3, 0);
  s->DrawPixels(3, 1, GL_RGBA, GL_UNSIGNED_BYTE, source);
  EXPECT_EQ(1, s.Color(3, 0).r);
  EXPECT_EQ(2, s.Color(0, 1).r) << "not cut at the edge";
  EXPECT_EQ(3, s.Color(1, 1).r);
  EXPECT_EQ(3, s.Painted());
  s->WindowPos2i(3, 2);
  s->DrawPixels(3, 3, GL_RGBA, GL_UNSIGNED_BYTE, Noise(64, 1).data()); // the sanitizers look on
}

TEST(PixelTransfer, RectanglesOutsideReturnQuietly) {
  TScene s(4, 4);
  const int big = 0x7FFFFFFF, small = -big - 1;
  const int places[][4] = {{4, 0, 9, 9},        {0, 4, 9, 9},       {-9, 0, 9, 9},
                           {0, -9, 9, 9},       {0, 0, 0, 4},       {0, 0, 4, 0},
                           {0, 0, -1, 4},       {0, 0, 4, small},   {small, 0, big, 4},
                           {0, small, 4, big},  {big, 0, big, big}, {4, small, big, big},
                           {0, 0, small, small}};
  for (const auto& p : places) {
    s->WindowPos2i(p[0], p[1]);
    s->DrawPixels(p[2], p[3], GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
    s->ReadPixels(p[0], p[1], p[2], p[3], GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  }
  EXPECT_EQ(0, s.Painted());
  EXPECT_EQ(0u, s->GetError());
}

TEST(PixelTransfer, AFullWidthReadIsACopy) {
  for (const int w : {1, 3, 8, 17, 33}) {
    TScene s(w, 5);
    const TBytes pixels = Noise(static_cast<std::size_t>(w * 20), 12);
    Paint(s, pixels);
    TBytes target(pixels.size(), 0);
    s->ReadPixels(0, 0, w, 5, GL_RGBA, GL_UNSIGNED_BYTE, target.data());
    EXPECT_EQ(pixels, target);
    TBytes two(static_cast<std::size_t>(w * 8), 0);
    s->ReadPixels(0, 3, w, 9, GL_RGBA, GL_UNSIGNED_BYTE, two.data());
    EXPECT_EQ(TBytes(pixels.begin() + w * 12, pixels.end()), two) << "the rows that there are";
  }
}

TEST(PixelTransfer, APartialReadExchangesTheSteps) {
  TScene s(4, 4);
  TBytes pixels(64);
  for (std::size_t i = 0; i < 16; ++i) {
    pixels[4 * i] = static_cast<std::uint8_t>(i + 1);
  }
  Paint(s, pixels);
  TBytes target(64, 0);
  s->ReadPixels(1, 1, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, target.data());
  // P = 4, R = 8: the surface is read from byte 1 * 4 + 1 * 8, its rows 8 bytes apart; the
  // caller's rows are 16 bytes apart.
  EXPECT_EQ(4, target[0]);
  EXPECT_EQ(5, target[4]);
  EXPECT_EQ(6, target[16]);
  EXPECT_EQ(7, target[20]);
  EXPECT_EQ(0, target[8]);
}

TEST(PixelTransfer, ReadsAtRandomPlacesAndSteps) {
  TRandom random(73);
  int inside = 0;
  for (int round = 0; round < 3000; ++round) {
    const long w = 1 + random.Below(12), h = 1 + random.Below(9);
    TScene s(static_cast<int>(w), static_cast<int>(h));
    const TBytes pixels = Noise(static_cast<std::size_t>(w * h * 4), 13);
    Paint(s, pixels);
    s->m_PixelPack.Alignment = 1 + random.Below(5);
    s->m_PixelPack.RowLength = random.Below(2) == 0 ? 0 : random.Below(14);
    s->m_PixelPack.SkipRows = random.Below(3);
    s->m_PixelPack.SkipPixels = random.Below(2);
    long x = random.Below(static_cast<int>(2 * w)) - w,
         y = random.Below(static_cast<int>(2 * h)) - h;
    const long width = random.Below(14) - 1, height = random.Below(11) - 1;
    TBytes target(8192, 77), expected = target;
    s->ReadPixels(static_cast<int>(x), static_cast<int>(y), static_cast<int>(width),
                  static_cast<int>(height), GL_RGBA, GL_UNSIGNED_BYTE, target.data());
    bool within = true;
    if (width > 0 && height > 0 && x + width > 0 && y + height > 0 && x < w && y < h) {
      const TSteps steps = StepsOf(s->m_PixelPack, width);
      const long to = steps.Start + std::max(-x, 0l) * 4 + std::max(-y, 0l) * w * 4;
      const long from = std::max(x, 0l) * steps.Pixel + std::max(y, 0l) * steps.Row;
      const long columns = std::min(width + std::min(x, 0l), w - std::max(x, 0l));
      const long rows = std::min(height + std::min(y, 0l), h - std::max(y, 0l));
      for (long r = 0; r < rows; ++r) {
        for (long c = 0; c < columns; ++c) {
          const long at = from + r * steps.Row + c * steps.Pixel;
          within = within && at + 4 <= w * h * 4;
          if (at + 4 <= w * h * 4) {
            std::copy_n(&pixels[static_cast<std::size_t>(at)], 4,
                        &expected[static_cast<std::size_t>(to + r * w * 4 + c * 4)]);
          }
        }
      }
    }
    if (within) { // what lies outside the surface's block has no value to compare
      ++inside;
      ASSERT_EQ(expected, target) << round;
    }
  }
  EXPECT_GT(inside, 1000);
}

// Rows that begin before the surface, as a row length below 0 makes them: what lies before its
// first pixel is not read, and what should have received it keeps what it held.
TEST(PixelTransfer, AReadByANegativeRowLength) {
  constexpr int kW = 8, kH = 4;
  for (const int length : {-1, -2, -3, -7, -8, -9, -40}) {
    for (const int x : {0, 1, 5}) {
      for (const int y : {0, 1, 3}) {
        for (const int alignment : {1, 8}) {
          SCOPED_TRACE(testing::Message() << "row length " << length << ", (" << x << ", " << y
                                          << "), alignment " << alignment);
          TScene s(kW, kH);
          for (int i = 0; i < kW * kH; ++i) {
            s.SetColor(i % kW, i / kW, {i + 1, 100 - i, 3 * i, 255 - i});
          }
          s->PixelStorei(GL_PACK_ROW_LENGTH, length);
          s->PixelStorei(GL_PACK_ALIGNMENT, alignment);
          TBytes out(4 * kW * kH, 0xC7);
          TBytes expected = out;
          const int step = alignment == 8 ? 2 : 1; // pixels from column to column
          for (int row = 0; row < kH - y; ++row) {
            for (int column = 0; column < kW - x; ++column) {
              const int from = (y + row) * length * step + (x + column) * step;
              if (from >= 0 && from < kW * kH) {
                std::copy_n(s->m_ColorSurface->Data + 4 * from, 4,
                            expected.begin() + 4 * (row * kW + column));
              }
            }
          }
          s->ReadPixels(x, y, kW, kH, GL_RGBA, GL_UNSIGNED_BYTE, out.data());
          EXPECT_EQ(expected, out);
        }
      }
    }
  }
}

TEST(PixelTransfer, ABoundSurfaceThatDoesNotFitIsNotLeft) {
  TScene s(16, 16);
  TDataSurface small;
  small.Create(3, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
  s->BindColorSurface(&small);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
  TBytes bytes = Noise(1024, 14);
  s->DrawPixels(16, 16, GL_RGBA, GL_UNSIGNED_BYTE, bytes.data()); // the sanitizers look on
  EXPECT_EQ(bytes[0], small.Data[0]);
  TBytes target(1024, 0);
  s->ReadPixels(0, 0, 16, 16, GL_RGBA, GL_UNSIGNED_BYTE, target.data());
  EXPECT_EQ(bytes[0], target[0]);
  s->BindColorSurface(nullptr);
}

// --- Rows of blended or masked pixels, at each instruction set

namespace {

class PixelRows : public testing::Test {
protected:
  ~PixelRows() override { LimitSpanLevel(nullptr); }

  static void SetOutput(TRenderCPU& r, bool blend, unsigned int mask) {
    r.ColorMask(mask & 1, mask & 2, mask & 4, mask & 8);
    r.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    r.EnableBlend(blend);
  }
};

} // namespace

TEST_F(PixelRows, EveryMaskAndWidth) {
  const TBytes before = Noise(45 * 3 * 4, 21), source = Noise(45 * 2 * 4 + 3, 22);
  for (const char* const level : kSpanPaths) {
    if (!LimitSpanLevel(level)) {
      continue;
    }
    for (int at = 0; at < 2 * 16 * 42; ++at) {
      const bool blend = at % 2 != 0;
      const auto mask = static_cast<unsigned int>(at / 2 % 16);
      const int width = at / 32 + 1;
      TScene s(45, 3);
      Paint(s, before);
      SetOutput(*s, blend, mask);
      s->WindowPos2i(2, 1);
      const TBytes pixels(source.begin() + at % 4, source.begin() + at % 4 + width * 2 * 4);
      s->DrawPixels(width, 2, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
      ASSERT_EQ(DrawnBytes(*s, before, width, 2, pixels), BytesOf(s->m_ColorSurface))
          << level << ", mask " << mask << ", width " << width << ", blend " << blend;
    }
  }
}

TEST_F(PixelRows, EverySourceTargetAndAlpha) {
  std::vector<const TSpanKernels*> kernels;
  for (const char* const level : kSpanLevels) {
    if (LimitSpanLevel(level)) {
      kernels.push_back(GetSpanKernels());
    }
  }
  TSpanJob job;
  job.Draw.ColorMask = 15;
  job.Draw.Blend = TBlend::SourceAlpha;
  TBytes source(256 * 4), before(256 * 4), expected(256 * 4), target;
  for (int alpha = 0; alpha < 256; ++alpha) {
    for (int value = 0; value < 256; ++value) {
      for (int pixel = 0; pixel < 256; ++pixel) {
        const int to[4] = {pixel, 255 - pixel, pixel ^ 0x55, pixel};
        const int from[4] = {value, 255 - value, value ^ 0xAA, alpha};
        for (std::size_t c = 0; c < 4; ++c) {
          const std::size_t at = static_cast<std::size_t>(pixel) * 4 + c;
          source[at] = static_cast<std::uint8_t>(from[c]);
          before[at] = static_cast<std::uint8_t>(to[c]);
          expected[at] = static_cast<std::uint8_t>((to[c] * (255 - alpha) + from[c] * alpha) / 255);
        }
      }
      for (const TSpanKernels* const k : kernels) {
        target = before;
        k->DrawPixelRow(job, source.data(), target.data(), 256);
        ASSERT_TRUE(expected == target) << k->Level << ", " << value << ", alpha " << alpha;
      }
    }
  }
}

// In blocks of their own size, at all places within a word, so that the sanitizers see every byte
// that is read or written beside them.
TEST_F(PixelRows, RowsMayStandAtAnyAddress) {
  for (const char* const level : kSpanLevels) {
    if (!LimitSpanLevel(level)) {
      continue;
    }
    TSpanJob job;
    job.Draw.ColorMask = 7;
    job.Draw.Blend = TBlend::SourceAlpha;
    for (std::size_t at = 0; at < 16 * 40; ++at) {
      const std::size_t fromStart = at % 4, toStart = at / 4 % 4, count = at / 16 + 1;
      const TBytes source = Noise(fromStart + 4 * count, 31);
      TBytes target = Noise(toStart + 4 * count, 32), expected = target;
      for (std::size_t i = 0; i < 4 * count; ++i) {
        const int alpha = source[fromStart + (i | 3)];
        std::uint8_t& to = expected[toStart + i];
        if (i % 4 != 3) {
          to =
              static_cast<std::uint8_t>((to * (255 - alpha) + source[fromStart + i] * alpha) / 255);
        }
      }
      GetSpanKernels()->DrawPixelRow(job, source.data() + fromStart, target.data() + toStart,
                                     static_cast<std::ptrdiff_t>(count));
      ASSERT_EQ(expected, target) << level << ", " << fromStart << " to " << toStart;
    }
  }
}

// A pixel that was drawn may be the source of one that follows.
TEST_F(PixelRows, OverlappingRowsAreDrawnPixelByPixel) {
  constexpr int kWidth = 37;
  constexpr long kFirst = 4 * 100;
  for (const char* const level : kSpanPaths) {
    if (!LimitSpanLevel(level)) {
      continue;
    }
    for (const unsigned int mask : {15u, 5u}) {
      for (long offset = -4 * kWidth - 4; offset <= 4 * kWidth + 4; ++offset) {
        TScene s(100, 3);
        TBytes expected = Noise(100 * 3 * 4, 41);
        Paint(s, expected);
        SetOutput(*s, true, mask);
        s->WindowPos2i(0, 1);
        s->DrawPixels(kWidth, 1, GL_RGBA, GL_UNSIGNED_BYTE,
                      s->m_ColorSurface->Data + kFirst + offset);
        for (long i = 0; i < kWidth; ++i) {
          std::uint8_t* const to = &expected[static_cast<std::size_t>(kFirst + 4 * i)];
          const std::uint8_t* const from = to + offset;
          const int alpha = from[3];
          for (int c = 0; c < 4; ++c) {
            if ((mask >> c & 1) != 0) {
              to[c] = static_cast<std::uint8_t>((to[c] * (255 - alpha) + from[c] * alpha) / 255);
            }
          }
        }
        ASSERT_EQ(expected, BytesOf(s->m_ColorSurface)) << level << ", " << offset;
      }
    }
  }
}
