#include <ZxCore3D/render/TRenderCPU.h>

#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;
using TVec4 = vec_t_<double, 4>;
using TCell = std::pair<int, int>;

std::array<double, 2> AtWindow(const TRenderCPU::VAR_DATA& v) {
  return {v.Slots[0].x, v.Slots[0].y};
}

class PointsAndLines : public testing::Test {
protected:
  PointsAndLines() : m_Scene(16, 8) {
    m_Scene->_SetVertexShader(m_Vertex.Get());
    m_Scene->_SetFragmentShader(m_Fragment.Get());
  }

  void Line(double x0, double y0, double x1, double y1, double z = 0.0) {
    m_Scene->Begin(GL_LINES);
    m_Scene->Vertex3d(Clip(x0, 16), Clip(y0, 8), z);
    m_Scene->Vertex3d(Clip(x1, 16), Clip(y1, 8), z);
    m_Scene->End();
  }

  void Point(double x, double y, double z = 0.0, double w = 1.0) {
    m_Scene->Begin(GL_POINTS);
    m_Scene->Vertex4d(x, y, z, w);
    m_Scene->End();
  }

  std::vector<TCell> Take() {
    std::vector<TCell> pixels;
    for (const TSeenFragment& f : m_Fragment->Seen) {
      pixels.emplace_back(f.X, f.Y);
    }
    m_Fragment->Seen.clear();
    return pixels;
  }

  THeld<TPassVertexShader> m_Vertex{3};
  THeld<TSeeingFragmentShader> m_Fragment;
  TScene m_Scene;
};

using TCells = std::vector<TCell>;

// --- Points

TEST_F(PointsAndLines, APointFallsInTheSquareThatHoldsIt) {
  // No shift by half a pixel: window x = 16 * (x / 2 + 0.5).
  Point(0, 0);
  EXPECT_EQ((TCells{{8, 4}}), Take());
  Point(std::nextafter(0.0, -1.0), 0);
  EXPECT_EQ((TCells{{8, 4}}), Take()); // the sum with 0.5 rounds to 0.5
  Point(-1e-9, -1e-9);
  EXPECT_EQ((TCells{{7, 3}}), Take());
  Point(0.1249999, 0.2499999);
  EXPECT_EQ((TCells{{8, 4}}), Take());
  Point(0.125, 0.25);
  EXPECT_EQ((TCells{{9, 5}}), Take());
}

TEST_F(PointsAndLines, APointAtTheRightOrTopEdgeIsDropped) {
  Point(2, 0, 0, 2);
  Point(0, 1);
  Point(1, 1);
  EXPECT_EQ(0u, m_Fragment->Seen.size());
  Point(-2, -2, 0, 2);
  EXPECT_EQ((TCells{{0, 0}}), Take());
  Point(std::nextafter(1.0, 0.0) - 1e-12, 0.999);
  EXPECT_EQ((TCells{{15, 7}}), Take());
}

TEST_F(PointsAndLines, APointKeepsItsSlots) {
  m_Scene->Begin(GL_POINTS);
  m_Scene->Color4d(0.25, 0.5, 0.75, 1.0);
  m_Scene->TexCoord4d(3, 5, 7, 9);
  m_Scene->Vertex4d(1, -1, 2, 4);
  m_Scene->End();
  ASSERT_EQ(1u, m_Fragment->Seen.size());
  const TSeenFragment& f = m_Fragment->Seen[0];
  EXPECT_EQ((TVec4{0.25, 0.5, 0.75, 1.0}), f.Slots[1]); // no perspective step
  EXPECT_EQ((TVec4{3, 5, 7, 9}), f.Slots[2]);
  EXPECT_EQ((TVec4{10, 3, 0.75, 0.25}), f.Slots[0]); // 16 * (1/8 + 1/2), 8 * (-1/8 + 1/2)
  EXPECT_EQ(0.75f, f.Depth);
}

TEST_F(PointsAndLines, APointRunsTheShaderOnTheRecordItself) {
  struct TWriting : TSeeingFragmentShader {
    bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
      Record = v;
      f->Color = {1, 1, 1, 1};
      return true;
    }
    TRenderCPU::VAR_DATA* Record = nullptr;
  };
  THeld<TWriting> writing;
  m_Scene->_SetFragmentShader(writing.Get());
  Point(0, 0);
  EXPECT_EQ(&m_Scene->m_VarCur[0], writing->Record);
  Line(1, 1, 4, 1);
  EXPECT_EQ(&m_Scene->m_VarFragment, writing->Record);
}

TEST_F(PointsAndLines, APointWithoutAShaderTakesTheCurrentColour) {
  auto* const shader = m_Scene->m_FragmentShader;
  TRenderCPU::VAR_DATA v = {};
  v[0] = {0, 0, 0, 1};
  m_Scene->Color4d(1.0, 0.5, 0.0, 1.0);
  m_Scene->Begin(GL_POINTS);
  m_Scene->m_FragmentShader = nullptr;
  m_Scene->ClipAndRasterizePoint(&v);
  m_Scene->m_FragmentShader = shader;
  m_Scene->End();
  EXPECT_EQ((TPixel{255, 128, 0, 255}), m_Scene.Color(8, 4));
}

TEST_F(PointsAndLines, SizesChangeNothing) {
  m_Scene->PointSize(10.0f);
  m_Scene->LineWidth(3.0f);
  EXPECT_EQ(10.0f, m_Scene->m_PointSize);
  EXPECT_EQ(3.0f, m_Scene->m_LineWidth);
  Point(0, 0);
  EXPECT_EQ((TCells{{8, 4}}), Take());
  Line(2, 2, 5, 2);
  EXPECT_EQ((TCells{{2, 2}, {3, 2}, {4, 2}}), Take());
}

TEST_F(PointsAndLines, PolygonModeStoresByFace) {
  m_Scene->PolygonMode(GL_FRONT_AND_BACK, 0x1B01);
  EXPECT_EQ(0x1B01u, m_Scene->m_PolygonModeFront);
  EXPECT_EQ(0x1B02u, m_Scene->m_PolygonModeBack);
  m_Scene->PolygonMode(GL_BACK, 0x1B00);
  EXPECT_EQ(0x1B01u, m_Scene->m_PolygonModeFront);
  EXPECT_EQ(0x1B00u, m_Scene->m_PolygonModeBack);
  m_Scene->PolygonMode(GL_FRONT, 77);
  EXPECT_EQ(77u, m_Scene->m_PolygonModeFront);
  m_Scene->PolygonMode(0, 5);
  EXPECT_EQ(77u, m_Scene->m_PolygonModeFront);
  EXPECT_EQ(0x1B00u, m_Scene->m_PolygonModeBack);
  EXPECT_EQ(0u, m_Scene->GetError());
}

// --- Lines

TEST_F(PointsAndLines, ALineLeavesOutItsLastPixel) {
  Line(2, 3, 5, 3);
  EXPECT_EQ((TCells{{2, 3}, {3, 3}, {4, 3}}), Take());
  Line(5, 3, 2, 3);
  EXPECT_EQ((TCells{{5, 3}, {4, 3}, {3, 3}}), Take());
  Line(2, 1, 2, 4);
  EXPECT_EQ((TCells{{2, 1}, {2, 2}, {2, 3}}), Take());
  Line(2, 4, 2, 1);
  EXPECT_EQ((TCells{{2, 4}, {2, 3}, {2, 2}}), Take());
  Line(2, 1, 5, 4);
  EXPECT_EQ((TCells{{2, 1}, {3, 2}, {4, 3}}), Take());
  Line(5, 4, 2, 1);
  EXPECT_EQ((TCells{{5, 4}, {4, 3}, {3, 2}}), Take());
}

TEST_F(PointsAndLines, ALineToTheNeighbourIsOnePixel) {
  Line(2, 3, 3, 3);
  EXPECT_EQ((TCells{{2, 3}}), Take());
  Line(2, 3, 2.4, 3.4);
  EXPECT_EQ((TCells{{2, 3}}), Take());
  Line(2.6, 2.6, 3.4, 3.4);
  EXPECT_EQ((TCells{{3, 3}}), Take());
}

TEST_F(PointsAndLines, TheStepAsideFallsWhereTheSumFirstReachesZero) {
  // ay = 1, ax = 4: after the second pixel.
  Line(2, 1, 6, 2);
  EXPECT_EQ((TCells{{2, 1}, {3, 1}, {4, 2}, {5, 2}}), Take());
  Line(6, 2, 2, 1);
  EXPECT_EQ((TCells{{6, 2}, {5, 2}, {4, 1}, {3, 1}}), Take());
  // ax = 3: the sum goes -3, -1, 1.
  Line(2, 1, 5, 2);
  EXPECT_EQ((TCells{{2, 1}, {3, 1}, {4, 2}}), Take());
  // ax = 2: the sum reaches 0 after the first.
  Line(2, 1, 4, 2);
  EXPECT_EQ((TCells{{2, 1}, {3, 2}}), Take());
  // Along y.
  Line(2, 1, 3, 5);
  EXPECT_EQ((TCells{{2, 1}, {2, 2}, {3, 3}, {3, 4}}), Take());
  Line(3, 5, 2, 1);
  EXPECT_EQ((TCells{{3, 5}, {3, 4}, {2, 3}, {2, 2}}), Take());
  // 7 by 3: -7, -1, 5 (step, -9), -3, 3 (step, -11), -5, 1 (step).
  Line(1, 1, 8, 4);
  EXPECT_EQ((TCells{{1, 1}, {2, 1}, {3, 2}, {4, 2}, {5, 3}, {6, 3}, {7, 4}}), Take());
}

TEST_F(PointsAndLines, StripsDrawEachJointOnce) {
  m_Scene->Begin(GL_LINE_STRIP);
  const double v[3][2] = {{2, 2}, {5, 2}, {5, 6}};
  for (const auto& p : v) {
    m_Scene->Vertex2d(Clip(p[0], 16), Clip(p[1], 8));
  }
  m_Scene->End();
  EXPECT_EQ((TCells{{2, 2}, {3, 2}, {4, 2}, {5, 2}, {5, 3}, {5, 4}, {5, 5}}), Take());
}

TEST_F(PointsAndLines, TheLastPixelIsSkippedWithinOneBegin) {
  m_Scene->Begin(GL_LINES);
  const double v[4][2] = {
      {2, 2}, {5, 2}, {4, 2}, {4, 5}}; // the second begins where the first ended
  for (const auto& p : v) {
    m_Scene->Vertex2d(Clip(p[0], 16), Clip(p[1], 8));
  }
  m_Scene->End();
  EXPECT_EQ((TCells{{2, 2}, {3, 2}, {4, 2}, {4, 3}, {4, 4}}), Take());
  EXPECT_EQ(4, m_Scene->m_LastPixelX);
  EXPECT_EQ(4, m_Scene->m_LastPixelY);
  // A new Begin forgets it.
  Line(4, 4, 6, 4);
  EXPECT_EQ((TCells{{4, 4}, {5, 4}}), Take());
}

TEST_F(PointsAndLines, ADegenerateLineIsSkippedOnTheLastPixel) {
  m_Scene->Begin(GL_LINES);
  for (int i = 0; i < 4; ++i) {
    m_Scene->Vertex2d(Clip(3, 16), Clip(3, 8));
  }
  m_Scene->End();
  EXPECT_EQ((TCells{{3, 3}}), Take());
}

/// Notes where the last pixel is while a shader runs.
class TLastPixelShader : public Zx3D::TFragmentShaderCPU {
public:
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool Execute(Zx3D::TRenderCPU::VAR_DATA*, Zx3D::TRenderCPU::FS_DATA* f) override {
    Last.emplace_back(m_Render->m_LastPixelX, m_Render->m_LastPixelY);
    f->Color = {1, 1, 1, 1};
    return !Discard;
  }
  bool IsCalcDepth() const override { return false; }

  bool Discard = false;
  TCells Last;
};

TEST_F(PointsAndLines, APixelIsTheLastOneOnceItsShaderHasRun) {
  const THeld<TLastPixelShader> shader;
  m_Scene->_SetFragmentShader(shader.Get());
  for (const bool discard : {false, true}) {
    shader->Discard = discard;
    shader->Last.clear();
    m_Scene->Begin(GL_LINE_STRIP);
    m_Scene->Vertex2d(Clip(2, 16), Clip(2, 8));
    m_Scene->Vertex2d(Clip(5, 16), Clip(2, 8)); // (2, 2), (3, 2), (4, 2)
    m_Scene->Vertex2d(Clip(5, 16), Clip(4, 8)); // (5, 2), (5, 3)
    m_Scene->Vertex2d(Clip(5, 16), Clip(4, 8)); // (5, 4), a line of one pixel
    m_Scene->End();
    EXPECT_EQ((TCells{{-1, -1}, {2, 2}, {3, 2}, {4, 2}, {5, 2}, {5, 3}}), shader->Last);
    EXPECT_EQ(5, m_Scene->m_LastPixelX);
    EXPECT_EQ(4, m_Scene->m_LastPixelY);
  }
}

TEST_F(PointsAndLines, ADegenerateLineOffTheSurfaceIsNothing) {
  // At the very right and top edge the window position rounds to the column or row past the last.
  m_Scene->Begin(GL_LINES);
  for (const auto& p : {TVec4{1, 0, 0, 1}, TVec4{0, 1, 0, 1}, TVec4{1, 1, 0, 1}}) {
    m_Scene->Vertex4dv(&p.x);
    m_Scene->Vertex4dv(&p.x);
  }
  m_Scene->End();
  EXPECT_EQ(0u, m_Fragment->Seen.size());
  EXPECT_EQ(-1, m_Scene->m_LastPixelX);
}

TEST_F(PointsAndLines, ALineAtTheEdgeIsCutPixelByPixel) {
  // From the right edge (column 16) leftwards: the first pixel is off the surface.
  m_Scene->Begin(GL_LINES);
  m_Scene->Vertex2d(1, Clip(3, 8));
  m_Scene->Vertex2d(Clip(12, 16), Clip(3, 8));
  // The top edge rounds to row 8: nothing of it shows.
  m_Scene->Vertex2d(-1, 1);
  m_Scene->Vertex2d(1, 1);
  m_Scene->End();
  EXPECT_EQ((TCells{{15, 3}, {14, 3}, {13, 3}}), Take());
}

TEST_F(PointsAndLines, ParametersAreClamped) {
  m_Scene->SetPerspectiveCorrectionHint(GL_FASTEST);
  m_Scene->Begin(GL_LINES);
  m_Scene->Color4d(0, 0, 0, 0);
  m_Scene->Vertex3d(Clip(2.25, 16), Clip(3, 8), -1); // its pixel lies before it
  m_Scene->Color4d(1, 1, 1, 1);
  m_Scene->Vertex3d(Clip(4.25, 16), Clip(3, 8), 1);
  m_Scene->End();
  ASSERT_EQ(2u, m_Fragment->Seen.size());
  EXPECT_EQ(0.0, m_Fragment->Seen[0].Slots[1].x); // t = -0.125 becomes 0
  EXPECT_EQ(0.0f, m_Fragment->Seen[0].Depth);
  EXPECT_NEAR(0.375, m_Fragment->Seen[1].Slots[1].x, 1e-14);
  EXPECT_NEAR(0.375, m_Fragment->Seen[1].Depth, 1e-7);
}

TEST_F(PointsAndLines, InterpolationIsPerspectiveUnlessFastest) {
  for (const unsigned int hint : {0x1102u, 0x1101u}) {
    m_Scene->SetPerspectiveCorrectionHint(hint);
    m_Scene->Begin(GL_LINES);
    m_Scene->Color4d(0, 0, 0, 0);
    m_Scene->Vertex4d(-1, 0, -1, 1);
    m_Scene->Color4d(1, 1, 1, 1);
    m_Scene->Vertex4d(2, 0, 2, 2);
    m_Scene->End();
    ASSERT_EQ(16u, m_Fragment->Seen.size());
    for (const TSeenFragment& f : m_Fragment->Seen) {
      const double s = (f.X + 0.5) / 16;
      const double expected = hint == 0x1101 ? s : s / 2 / (1 - s / 2);
      EXPECT_NEAR(expected, f.Slots[1].x, 1e-14);
      EXPECT_NEAR(hint == 0x1101 ? 1 - s / 2 : 1.0, f.Slots[0].w, 1e-15);
      EXPECT_NEAR(s, f.Depth, 1e-7); // linear under every hint
    }
    m_Fragment->Seen.clear();
  }
}

// By the standard shaders, which kernels draw for, and by the caller's own.
TEST_F(PointsAndLines, TheSpanIsTheLineInItsOwnDirection) {
  const auto check = [](const TRenderCPU& r) {
    ASSERT_NE(nullptr, r.m_Span.Begin);
    EXPECT_EQ((std::array<double, 2>{10, 6}), AtWindow(*r.m_Span.Begin));
    EXPECT_EQ((std::array<double, 2>{3, 2}), AtWindow(*r.m_Span.End));
    EXPECT_EQ((std::array<double, 2>{-7, -4}), AtWindow(r.m_Span.Delta));
  };
  Line(10, 6, 3, 2);
  check(*m_Scene);
  TScene standard(16, 8);
  standard->Begin(GL_LINES);
  standard->Vertex2d(Clip(10, 16), Clip(6, 8));
  standard->Vertex2d(Clip(3, 16), Clip(2, 8));
  standard->End();
  EXPECT_EQ(7, standard.Painted());
  check(*standard);
}

TEST_F(PointsAndLines, PolygonOffsetIsForTrianglesOnly) {
  m_Scene->EnablePolygonOffsetFill(true);
  m_Scene->PolygonOffset(0.25f, 1.0f);
  Line(2, 2, 5, 2);
  EXPECT_EQ(0.5f, m_Scene.Depth(3, 2));
  Point(0, 0);
  EXPECT_EQ(0.5f, m_Scene.Depth(8, 4));
  // A line's pixel within GL_TRIANGLES would get it.
  m_Scene->Begin(GL_TRIANGLES);
  TRenderCPU::VAR_DATA v[2] = {};
  v[0][0] = {0, 0, 0.5, 1};
  TRenderCPU::EDGE e = {};
  e.Begin = &v[0];
  e.End = &v[1];
  m_Scene->RasterizePixel(6, 6, &e, 0.0);
  m_Scene->End();
  EXPECT_EQ(0.75f, m_Scene.Depth(6, 6));
}

TEST_F(PointsAndLines, SeeTheFacingOfTheLastTriangle) {
  for (const bool front : {true, false}) {
    m_Scene->Begin(GL_TRIANGLES);
    m_Scene->Vertex2d(-1, -1);
    m_Scene->Vertex2d(front ? 1 : -1, front ? -1 : 1);
    m_Scene->Vertex2d(front ? -1 : 1, front ? 1 : -1);
    m_Scene->End();
    m_Fragment->Seen.clear();
    Point(0, 0);
    Line(1, 1, 3, 1);
    for (const TSeenFragment& f : m_Fragment->Seen) {
      EXPECT_EQ(front, f.FrontFacing);
    }
    Take();
  }
}

// --- The fragment's order of tests, for both kinds

/// Draws the pixel (8, 4) as a point or as a line.
using TDraw = void (*)(TScene& s, double z);

void DrawAsPoint(TScene& s, double z) {
  s->Begin(GL_POINTS);
  s->Vertex3d(0, 0, z);
  s->End();
}

void DrawAsLine(TScene& s, double z) {
  s->Begin(GL_LINES);
  s->Vertex3d(Clip(8, 16), Clip(4, 8), z);
  s->Vertex3d(Clip(9, 16), Clip(4, 8), z);
  s->End();
}

class OnePixel : public testing::TestWithParam<TDraw> {
protected:
  OnePixel() : m_Scene(16, 8) {
    m_Scene->_SetVertexShader(m_Vertex.Get());
    m_Scene->_SetFragmentShader(m_Fragment.Get());
    m_Scene.Reset(1.0f);
  }
  void Draw(double z) { GetParam()(m_Scene, z); }

  THeld<TPassVertexShader> m_Vertex;
  THeld<TSeeingFragmentShader> m_Fragment;
  TScene m_Scene;
};

TEST_P(OnePixel, IsWrittenOnce) {
  Draw(0.0);
  EXPECT_EQ(1, m_Scene.Painted());
  EXPECT_EQ((TPixel{255, 255, 255, 255}), m_Scene.Color(8, 4));
  EXPECT_EQ(0.5f, m_Scene.Depth(8, 4)); // with the depth test off
  EXPECT_EQ(0, m_Scene.Stencil(8, 4));
  ASSERT_EQ(1u, m_Fragment->Seen.size());
  EXPECT_EQ(8, m_Fragment->Seen[0].X);
  EXPECT_EQ(4, m_Fragment->Seen[0].Y);
}

TEST_P(OnePixel, HeedsTheDepthMask) {
  m_Scene->DepthMask(0);
  Draw(0.0);
  EXPECT_EQ(1.0f, m_Scene.Depth(8, 4));
  EXPECT_EQ(1, m_Scene.Painted());
}

TEST_P(OnePixel, RunsStencilThenDepthThenShader) {
  m_Scene->EnableDepthTest(true);
  m_Scene->Enable(GL_STENCIL_TEST);
  m_Scene->StencilOp(GL_REPLACE, GL_INCR, GL_INVERT);
  m_Scene->StencilFunc(GL_NEVER, 5, 0xFF);
  Draw(0.0);
  EXPECT_EQ(5, m_Scene.Stencil(8, 4));
  m_Scene->StencilFunc(GL_ALWAYS, 5, 0xFF);
  m_Scene->DepthFunc(GL_GREATER);
  Draw(0.0);
  EXPECT_EQ(6, m_Scene.Stencil(8, 4));
  EXPECT_EQ(1.0f, m_Scene.Depth(8, 4));
  EXPECT_EQ(0u, m_Fragment->Seen.size());
  m_Scene->DepthFunc(GL_LESS);
  m_Fragment->Discard = true;
  Draw(0.0);
  EXPECT_EQ(6, m_Scene.Stencil(8, 4)); // a discard runs no operation
  EXPECT_EQ(1.0f, m_Scene.Depth(8, 4));
  EXPECT_EQ(1u, m_Fragment->Seen.size());
  m_Fragment->Discard = false;
  Draw(0.0);
  EXPECT_EQ(6 ^ 255, m_Scene.Stencil(8, 4));
  EXPECT_EQ(0.5f, m_Scene.Depth(8, 4));
  EXPECT_EQ(1, m_Scene.Painted());
}

TEST_P(OnePixel, IsTestedLateIfTheShaderGivesDepth) {
  THeld<TSeeingFragmentShader> own(true);
  m_Scene->_SetFragmentShader(own.Get());
  m_Scene->EnableDepthTest(true);
  m_Scene->Enable(GL_STENCIL_TEST);
  m_Scene->StencilFunc(GL_ALWAYS, 9, 0xFF);
  m_Scene->StencilOp(GL_KEEP, GL_REPLACE, GL_INVERT);
  own->OwnDepth = 1.0f;
  Draw(-1.0);
  EXPECT_EQ(1u, own->Seen.size());
  EXPECT_EQ(9, m_Scene.Stencil(8, 4));
  EXPECT_EQ(0, m_Scene.Painted());
  own->OwnDepth = 0.125f;
  Draw(1.0);
  EXPECT_EQ(0.125f, m_Scene.Depth(8, 4));
  EXPECT_EQ(9 ^ 255, m_Scene.Stencil(8, 4));
  EXPECT_EQ(1, m_Scene.Painted());
}

TEST_P(OnePixel, GoesOnWithoutSurfacesForTheTests) {
  TDataSurface* const stencil = m_Scene->m_StencilSurface;
  TDataSurface* const depth = m_Scene->m_DepthSurface;
  m_Scene->m_StencilSurface = nullptr;
  m_Scene->m_DepthSurface = nullptr;
  m_Scene->Enable(GL_STENCIL_TEST);
  m_Scene->EnableDepthTest(true);
  m_Scene->DepthFunc(GL_NEVER);
  m_Scene->StencilOp(GL_INVERT, GL_INVERT, GL_INVERT);
  m_Scene->StencilFunc(GL_NOTEQUAL, 0, 0xFF);
  Draw(0.0);
  EXPECT_EQ(0, m_Scene.Painted());
  m_Scene->StencilFunc(GL_EQUAL, 0, 0xFF);
  Draw(0.0);
  EXPECT_EQ(1, m_Scene.Painted());
  m_Scene->m_StencilSurface = stencil;
  m_Scene->m_DepthSurface = depth;
  EXPECT_EQ(1.0f, m_Scene.Depth(8, 4));
}

TEST_P(OnePixel, StandsWhereTheStridesOfABoundSurfaceSay) {
  TDataSurface wide; // eight bytes a pixel by its stride
  ASSERT_TRUE(wide.Create(16, 8, DATA_FORMAT(6), DATA_TYPE(5), 4));
  m_Scene->BindColorSurface(&wide);
  Draw(0.0);
  const std::uint8_t* const pixel = wide.Data + 8 * 8 + 4 * wide.RowStride;
  int painted = 0;
  for (const std::uint8_t byte : BytesOf(&wide)) {
    painted += byte != 0;
  }
  EXPECT_EQ(4, painted);
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(255, pixel[i]);
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, OnePixel, testing::Values(&DrawAsPoint, &DrawAsLine),
                         [](const testing::TestParamInfo<TDraw>& info) {
                           return info.index == 0 ? "Point" : "Line";
                         });

} // namespace
