#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <ZxPixelKit/Surface.h>

#include "StateChecks.h"
#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/KernelCounters.h>
#include <ZxCore3D/render/common/TypeSizes.h>
#include <ZxCore3D/render/kernels/SpanJob.h>

// What the pieces do that a host can reach by themselves, called with what the whole never hands
// them: places outside of the surfaces, targets that were taken away by hand, samplers without
// texels.

using namespace Zx3D;
using namespace zx_test;

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

std::vector<std::uint8_t> Everything(const TScene& s) {
  std::vector<std::uint8_t> bytes;
  for (const TDataSurface* const surface :
       {s->m_ColorSurface, s->m_DepthSurface, s->m_StencilSurface}) {
    bytes.insert(bytes.end(), surface->Data, surface->Data + surface->DataSize);
  }
  return bytes;
}

} // namespace

TEST(Guards, PixelsAndSpansOutsideAreNone) {
  TScene s(8, 6);
  s->Color4d(1, 1, 1, 1);
  s->Begin(GL_POINTS);
  const std::vector<std::uint8_t> before = Everything(s);
  TRenderCPU::EDGE edge = {};
  TRenderCPU::VAR_DATA ends[2] = {};
  ends[0][0] = {0, 0, 0, 1};
  ends[1][0] = {8, 0, 0, 1};
  edge.Begin = &ends[0];
  edge.End = &ends[1];
  edge.Delta[0] = {8, 0, 0, 0};
  for (const auto& [x, y] : {std::pair(-1, 0), {8, 0}, {0, -1}, {0, 6}, {-1000000, 1000000}}) {
    s->RasterizePixel(x, y, &edge, 0.5);
  }
  TRenderCPU::FS_DATA fragment = {};
  for (const int y : {-1, 6, -1000000, 1000000}) {
    s->DrawSpan(&edge, y, &fragment);
  }
  s->End();
  EXPECT_EQ(before, Everything(s));
}

TEST(Guards, ClearingWithoutATargetLeavesItOut) {
  for (int missing = 0; missing < 3; ++missing) {
    SCOPED_TRACE(missing);
    TScene s(3, 2);
    s.Reset(0.25f);
    s->ClearColor(1.0f, 1.0f, 1.0f, 1.0f);
    s->ClearDepth(0.5);
    s->ClearStencil(9);
    TDataSurface** const targets[] = {&s->m_ColorSurface, &s->m_DepthSurface, &s->m_StencilSurface};
    TDataSurface* const taken = *targets[missing];
    *targets[missing] = nullptr;
    s->Clear(true, true, true);
    *targets[missing] = taken;
    EXPECT_EQ(0u, s->GetError());
    EXPECT_EQ(missing == 0 ? kClear : (TPixel{255, 255, 255, 255}), s.Color(2, 1));
    EXPECT_EQ(missing == 1 ? 0.25f : 0.5f, s.Depth(2, 1));
    EXPECT_EQ(missing == 2 ? 0 : 9, s.Stencil(2, 1));
  }
}

TEST(Guards, AContextThatCannotBecomeCurrentIsNot) {
  class TStubborn : public TRenderCPU {
  public:
    bool DoMakeCurrent(TZxGLSurface*) override { return Willing; }
    bool Willing = false;
  };
  THeld<TStubborn> r;
  EXPECT_FALSE(r->MakeCurrent(nullptr));
  EXPECT_FALSE(r->IsCurrent());
  r->Willing = true;
  EXPECT_TRUE(r->MakeCurrent(nullptr));
  EXPECT_TRUE(r->IsCurrent());
}

TEST(Guards, SamplersWithoutTexelsGiveTheBorder) {
  const vec_t_<double, 4> border = {0.1, 0.2, 0.3, 0.4};
  using TSampler = TRenderCPU::TTexSampler;
  using TFunction = void (TSampler::*)(const vec_t_<double, 4>&, vec_t_<double, 4>*);
  std::uint8_t pixels[16] = {};
  DATASURFACE none = {};
  DATASURFACE narrow;
  DATASURFACE sound;
  ASSERT_TRUE(ds::Set(&narrow, 2, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, pixels));
  ASSERT_TRUE(ds::Set(&sound, 2, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, pixels));
  for (const TFunction function :
       {&TSampler::GetValueClampToBorderNearest4ub2D, &TSampler::GetValueClampToEdgeNearest4ub2D,
        &TSampler::GetValueClampToBorderNearest1f2D, &TSampler::GetValueClampToEdgeNearest1f2D}) {
    for (DATASURFACE* const surface :
         {static_cast<DATASURFACE*>(nullptr), static_cast<DATASURFACE*>(&none),
          static_cast<DATASURFACE*>(&narrow)}) {
      TSampler sampler;
      sampler.m_BorderColor = border;
      sampler.m_Surface = surface;
      sampler.m_SurfaceWidth = sampler.m_SurfaceHeight = 2;
      vec_t_<double, 4> out = {9, 9, 9, 9};
      (sampler.*function)({0.5, 0.5, 0, 1}, &out);
      EXPECT_TRUE(SameVec(border, out));
    }
  }
  // Where the sizes that were noted are none.
  for (const auto& [width, height] : {std::pair(0.0, 2.0), {2.0, 0.0}, {kNan, 2.0}, {2.0, kNan}}) {
    TSampler sampler;
    sampler.m_BorderColor = border;
    sampler.m_Surface = &sound;
    sampler.m_SurfaceWidth = width;
    sampler.m_SurfaceHeight = height;
    vec_t_<double, 4> out = {9, 9, 9, 9};
    sampler.GetValueClampToEdgeNearest4ub2D({0.5, 0.5, 0, 1}, &out);
    EXPECT_TRUE(SameVec(border, out));
  }
}

TEST(Guards, ASamplerOutsideItsTableSamplesTheBorder) {
  using TSampler = TRenderCPU::TTexSampler;
  std::uint8_t pixels[64] = {};
  DATASURFACE sound;
  ASSERT_TRUE(ds::Set(&sound, 2, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, pixels));
  const auto expect = [](const char* what, bool known, DATASURFACE& surface, const auto& change) {
    TSampler sampler;
    sampler.m_Surface = &surface;
    sampler.m_FilterMin = GL_NEAREST;
    sampler.m_WrapS = sampler.m_WrapT = GL_REPEAT;
    change(sampler);
    EXPECT_EQ(known, sampler.UpdateGetValueFunc()) << what;
    EXPECT_EQ(!known, sampler.m_GetValue == &TSampler::GetValueBorder) << what;
  };
  expect("sound", true, sound, [](TSampler&) {});
  expect("filter", false, sound, [](TSampler& s) { s.m_FilterMin = 0; });
  expect("wrap of s", false, sound, [](TSampler& s) { s.m_WrapS = 0; });
  expect("wrap of t", false, sound, [](TSampler& s) { s.m_WrapT = 0; });
  const auto of = [&](const char* what, const auto& change) {
    DATASURFACE surface = sound;
    change(surface);
    expect(what, false, surface, [](TSampler&) {});
  };
  of("type", [](DATASURFACE& s) { s.Type = DATA_TYPE_UINT16; });
  of("no channels", [](DATASURFACE& s) { s.Channels = 0; });
  of("five channels", [](DATASURFACE& s) { s.Channels = 5; });
  of("no pixels", [](DATASURFACE& s) { s.Data = nullptr; });
  of("no width", [](DATASURFACE& s) { s.Width = 0; });
  of("no height", [](DATASURFACE& s) { s.Height = 0; });
}

TEST(Guards, SizesOfTypes) {
  EXPECT_EQ(1u, SizeOfType(GL_UNSIGNED_BYTE));
  EXPECT_EQ(2u, SizeOfType(GL_UNSIGNED_SHORT));
  EXPECT_EQ(4u, SizeOfType(GL_UNSIGNED_INT));
  EXPECT_EQ(4u, SizeOfType(GL_FLOAT));
  EXPECT_EQ(8u, SizeOfType(GL_DOUBLE));
  for (const unsigned int type : {0u, unsigned{GL_BYTE}, unsigned{GL_SHORT}, ~0u}) {
    EXPECT_EQ(0u, SizeOfType(type)) << type;
  }
}

TEST(Guards, RangesOfPixels) {
  // As it is called where it is not inlined.
  bool (*volatile const range)(double, double, int, int*, int*) = PixelRange;
  const double inf = std::numeric_limits<double>::infinity();
  const struct {
    double From, To;
    int First, Last; ///< First above Last: none
  } rows[] = {{0, 7, 0, 7},      {0.9, 7.9, 0, 7},    {-5, 3, 0, 3},      {2, 99, 2, 7},
              {-inf, inf, 0, 7}, {8, 9, 1, 0},        {-3, -1, 1, 0},     {5, 4, 1, 0},
              {kNan, 4, 1, 0},   {0, kNan, 1, 0},     {kNan, kNan, 1, 0}, {-0.5, -0.5, 0, 0},
              {7.999, 8, 7, 7},  {1e300, 1e301, 1, 0}};
  for (const auto& row : rows) {
    int first = 0;
    int last = 0;
    const bool some = range(row.From, row.To, 8, &first, &last);
    EXPECT_EQ(row.First <= row.Last, some) << row.From << " " << row.To;
    if (some) {
      EXPECT_EQ(row.First, first) << row.From << " " << row.To;
      EXPECT_EQ(row.Last, last) << row.From << " " << row.To;
    }
  }
}

// --- Counters

TEST(Guards, CountersOfLinesOnTheReferencePath) {
  ASSERT_TRUE(LimitSpanLevel("reference"));
  {
    const TScene s(16, 16);
    StartKernelCounters();
    s->Begin(GL_LINES);
    s->Vertex3d(-0.9, 0, 0);
    s->Vertex3d(0.9, 0, 0);
    s->End();
    StopKernelCounters();
    const TKernelCounters::TCounts counts = KernelCounters().Of(TKernel::Reference);
    EXPECT_EQ(1u, counts.Primitives);
    int drawn = 0;
    for (int x = 0; x < 16; ++x) {
      for (int y = 0; y < 16; ++y) {
        drawn += s.Color(x, y) != kClear ? 1 : 0;
      }
    }
    EXPECT_GT(drawn, 10);
    EXPECT_LE(static_cast<std::uint64_t>(drawn), counts.Pixels);
    EXPECT_GE(static_cast<std::uint64_t>(drawn) + 1, counts.Pixels);
  }
  LimitSpanLevel(nullptr);
}

TEST(Guards, CountersOfPixelRows) {
  if (GetSpanKernels() == nullptr) {
    GTEST_SKIP() << "at this level there are none";
  }
  const TScene s(8, 8);
  const std::vector<std::uint8_t> pixels(4 * 5 * 3, 200);
  s->ColorMask(1, 0, 1, 0);
  StartKernelCounters();
  s->DrawPixels(5, 3, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
  StopKernelCounters();
  const TKernelCounters::TCounts counts = KernelCounters().Of(TKernel::PixelRows);
  EXPECT_EQ(3u, counts.Rows);
  EXPECT_EQ(15u, counts.Pixels);
  EXPECT_EQ((TPixel{200, 0, 200, 0}), s.Color(4, 2));
}

// --- Pixels to and from surfaces that are not as the context made them

TEST(Guards, PixelTransferWithoutASurface) {
  TScene s(4, 4);
  const std::vector<std::uint8_t> source(64, 200);
  std::vector<std::uint8_t> target(64, 77);
  TDataSurface* const color = s->m_ColorSurface;
  const auto nothing = [&](unsigned int error) {
    s->DrawPixels(4, 4, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
    EXPECT_EQ(error, s->GetError());
    s->ReadPixels(0, 0, 4, 4, GL_RGBA, GL_UNSIGNED_BYTE, target.data());
    s->_DrawPixels_RGBAub_RGBAub(4, 4, source.data());
    s->_ReadPixels_RGBAub_RGBAub(0, 0, 4, 4, target.data());
    EXPECT_EQ(0u, s->GetError());
    EXPECT_EQ(std::vector<std::uint8_t>(64, 77), target);
  };
  s->m_ColorSurface = nullptr;
  nothing(GL_INVALID_OPERATION);
  s->m_ColorSurface = color;
  std::uint8_t* const data = color->Data;
  color->Data = nullptr;
  nothing(GL_INVALID_OPERATION);
  color->Data = data;
  EXPECT_EQ(kClear, s.Color(0, 0));
}

TEST(Guards, PixelTransferOfOtherStrides) {
  std::vector<std::uint8_t> block(256);
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(3, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, block.data()));
  surface.PixelStride = 8; // a pixel, and four bytes of something else
  surface.RowStride = 24;
  surface.DataSize = 48;
  TScene s(3, 2);
  s->BindColorSurface(&surface);
  std::vector<std::uint8_t> source(24);
  for (std::size_t i = 0; i < source.size(); ++i) {
    source[i] = static_cast<std::uint8_t>(i + 1);
  }
  s->DrawPixels(3, 2, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
  EXPECT_EQ(0u, s->GetError());
  for (std::size_t i = 0; i < 48; ++i) {
    EXPECT_EQ(i % 8 < 4 ? source[i / 8 * 4 + i % 8] : 0, block[i]) << i;
  }
  // Pixels that have no room for a colour.
  std::fill(block.begin(), block.end(), std::uint8_t{7});
  surface.PixelStride = 3;
  s->DrawPixels(3, 2, GL_RGBA, GL_UNSIGNED_BYTE, source.data());
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
  s->_DrawPixels_RGBAub_RGBAub(3, 2, source.data());
  EXPECT_EQ(std::vector<std::uint8_t>(256, 7), block);
  s->BindColorSurface(nullptr);
}

TEST(Guards, PixelTransferWithoutMemoryOfTheCallers) {
  TScene s(2, 2);
  s->DrawPixels(2, 2, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  s->ReadPixels(0, 0, 2, 2, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
  EXPECT_EQ(0u, s->GetError());
  EXPECT_EQ(kClear, s.Color(1, 1));
}
