#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include <array>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LevelTest.h"
#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;
using TVec4 = vec_t_<double, 4>;

class Triangles : public testing::Test {
protected:
  Triangles() : m_Scene(8, 8) {
    m_Scene->_SetVertexShader(m_Vertex.Get());
    m_Scene->_SetFragmentShader(m_Fragment.Get());
  }

  /// A triangle through window points (pixel centres at whole numbers) at depth 0.
  void Window(double x0, double y0, double x1, double y1, double x2, double y2) {
    m_Scene->Begin(GL_TRIANGLES);
    m_Scene->Vertex2d(Clip(x0, 8), Clip(y0, 8));
    m_Scene->Vertex2d(Clip(x1, 8), Clip(y1, 8));
    m_Scene->Vertex2d(Clip(x2, 8), Clip(y2, 8));
    m_Scene->End();
  }

  /// How often each pixel came up.
  std::array<int, 64> Hits() const {
    std::array<int, 64> hits{};
    for (const TSeenFragment& f : m_Fragment->Seen) {
      ++hits[static_cast<std::size_t>(f.Y * 8 + f.X)];
    }
    return hits;
  }

  std::size_t Count() const { return m_Fragment->Seen.size(); }

  THeld<TPassVertexShader> m_Vertex;
  THeld<TSeeingFragmentShader> m_Fragment;
  TScene m_Scene;
};

// --- Edges

TEST_F(Triangles, SetEdgeSortsByYAndSetSpanByX) {
  m_Scene->m_VarCount = 2;
  TRenderCPU::VAR_DATA low = {};
  TRenderCPU::VAR_DATA high = {};
  low[0] = {5, 1, 2, 3};
  low[1] = {1, 2, 3, 4};
  high[0] = {4, 9, 4, 3};
  high[1] = {5, 7, 9, 11};
  TRenderCPU::EDGE e = {};
  e.Delta[2] = {7, 7, 7, 7};
  m_Scene->SetEdge(&e, &low, &high);
  EXPECT_EQ(&low, e.Begin);
  EXPECT_EQ(&high, e.End);
  EXPECT_EQ((TVec4{-1, 8, 2, 0}), e.Delta[0]);
  EXPECT_EQ((TVec4{4, 5, 6, 7}), e.Delta[1]);
  EXPECT_EQ((TVec4{7, 7, 7, 7}), e.Delta[2]); // not live
  m_Scene->SetEdge(&e, &high, &low);
  EXPECT_EQ(&low, e.Begin);
  EXPECT_EQ(&high, e.End);
  m_Scene->SetSpan(&e, &low, &high);
  EXPECT_EQ(&high, e.Begin);
  EXPECT_EQ(&low, e.End);
  EXPECT_EQ((TVec4{1, -8, -2, 0}), e.Delta[0]);
  // Equal ends keep their order.
  high[0] = low[0];
  m_Scene->SetEdge(&e, &high, &low);
  EXPECT_EQ(&high, e.Begin);
  m_Scene->SetSpan(&e, &low, &high);
  EXPECT_EQ(&low, e.Begin);
  // A NaN compares false: the reverse.
  high[0].y = std::numeric_limits<double>::quiet_NaN();
  m_Scene->SetEdge(&e, &low, &high);
  EXPECT_EQ(&high, e.Begin);
}

TEST_F(Triangles, ValueIsDeltaTimesTPlusBegin) {
  m_Scene->m_VarCount = 2;
  TRenderCPU::VAR_DATA begin = {};
  begin[0] = {1, 2, 3, 4};
  begin[1] = {0.1, 0.2, 0.3, 0.4};
  TRenderCPU::EDGE e = {};
  e.Begin = &begin;
  e.Delta[0] = {8, 4, -8, 0};
  e.Delta[1] = {0.7, 0.7, 0.7, 0.7};
  TRenderCPU::VAR_DATA out = {};
  out[2] = {7, 7, 7, 7};
  m_Scene->Value(e, 0.25, &out);
  EXPECT_EQ((TVec4{3, 3, 1, 4}), out[0]);
  volatile double product = 0.7 * 0.25;
  EXPECT_SAME_BITS(product + 0.1, out[1].x);
  EXPECT_SAME_BITS(product + 0.4, out[1].w);
  EXPECT_EQ((TVec4{7, 7, 7, 7}), out[2]);
}

// --- Coverage

TEST_F(Triangles, CoverHalfOpenIntervals) {
  Window(1, 1, 5, 1, 1, 5);
  // Row y holds the columns 1 to 5 - y, the last left out: x < 6 - y.
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) {
      const bool covered = y >= 1 && y < 5 && x >= 1 && x < 6 - y;
      EXPECT_EQ(covered ? 1 : 0, Hits()[static_cast<std::size_t>(y * 8 + x)]) << x << ", " << y;
    }
  }
}

TEST_F(Triangles, PixelsAreSampledAtTheirCentres) {
  // Pixel (3, 3) alone: a small triangle around its centre, and one beside it.
  Window(2.9, 2.9, 3.2, 2.9, 2.9, 3.3);
  ASSERT_EQ(1u, Count());
  EXPECT_EQ(3, m_Fragment->Seen[0].X);
  EXPECT_EQ(3, m_Fragment->Seen[0].Y);
  Window(3.1, 3.1, 3.9, 3.1, 3.1, 3.9);
  EXPECT_EQ(1u, Count());
  // A column wide, but between the centres.
  Window(3.1, 0, 3.9, 0, 3.5, 7);
  EXPECT_EQ(1u, Count());
}

TEST_F(Triangles, OfNoHeightOrNoWidthDrawNothing) {
  Window(0, 3, 7, 3, 4, 3);
  Window(3, 0, 3, 7, 3, 4);
  Window(0, 0, 7, 7, 3, 3);
  Window(2, 2, 2, 2, 2, 2);
  EXPECT_EQ(0u, Count());
}

TEST_F(Triangles, WithAHorizontalEdgeDrawNormally) {
  Window(0, 0, 4, 0, 0, 4);
  EXPECT_EQ(10u, Count()); // 4 + 3 + 2 + 1
  m_Fragment->Seen.clear();
  Window(0, 4, 4, 4, 0, 0);
  // Rows 0 to 3; row y holds x < y.
  EXPECT_EQ(6u, Count());
}

TEST_F(Triangles, AWholeClipSquareWritesEachPixelOnce) {
  DrawFullQuad(*m_Scene);
  for (const int hits : Hits()) {
    EXPECT_EQ(1, hits);
  }
  EXPECT_EQ(64u, Count());
  EXPECT_EQ(64, m_Scene.Painted());
}

TEST_F(Triangles, AQuadLeavesOutItsLastRowAndColumn) {
  m_Scene->Begin(GL_QUADS);
  m_Scene->Vertex2d(Clip(1, 8), Clip(2, 8));
  m_Scene->Vertex2d(Clip(6, 8), Clip(2, 8));
  m_Scene->Vertex2d(Clip(6, 8), Clip(7, 8));
  m_Scene->Vertex2d(Clip(1, 8), Clip(7, 8));
  m_Scene->End();
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 8; ++x) {
      EXPECT_EQ(x >= 1 && x < 6 && y >= 2 && y < 7 ? 1 : 0,
                Hits()[static_cast<std::size_t>(y * 8 + x)]);
    }
  }
}

TEST_F(Triangles, RowsComeFromTheBottomAndPixelsFromTheLeft) {
  Window(0, 0, 7, 0, 0, 7);
  int last = -1;
  for (const TSeenFragment& f : m_Fragment->Seen) {
    EXPECT_GT(f.Y * 8 + f.X, last);
    last = f.Y * 8 + f.X;
  }
}

TEST_F(Triangles, RowsOfTheFirstShortEdgeComeFirst) {
  // The long edge is the first; the first short edge is the upper one.
  Window(1, 0, 1, 7, 6, 4);
  ASSERT_GT(Count(), 10u);
  EXPECT_EQ(4, m_Fragment->Seen.front().Y);
  std::vector<int> rows;
  for (const TSeenFragment& f : m_Fragment->Seen) {
    if (rows.empty() || rows.back() != f.Y) {
      rows.push_back(f.Y);
    }
  }
  EXPECT_EQ((std::vector<int>{4, 5, 6, 1, 2, 3}), rows); // row 0 has no width
}

TEST_F(Triangles, ShortEdgesFollowTheLongOneAround) {
  const auto firstRow = [&] {
    const int row = m_Fragment->Seen.front().Y;
    m_Fragment->Seen.clear();
    return row;
  };
  // All three have a corner at row 0 where they have no width, a middle one at row 3, and the last
  // at row 7. The long edge is the third: the short ones are 0 (lower rows) and 1.
  Window(0, 0, 7, 3, 0, 7);
  EXPECT_EQ(1, firstRow());
  // The long edge is the second: the short ones are 2 (lower rows) and 0.
  Window(7, 3, 0, 7, 0, 0);
  EXPECT_EQ(1, firstRow());
  // The same the other way round: 2 holds the upper rows.
  Window(7, 3, 0, 0, 0, 7);
  EXPECT_EQ(3, firstRow());
}

// --- The window transform

TEST_F(Triangles, WindowTransformOfEachVertex) {
  m_Scene->SetPerspectiveCorrectionHint(GL_FASTEST);
  m_Scene->Begin(GL_TRIANGLES);
  TRenderCPU::VAR_DATA v[3] = {};
  v[0][0] = {-1, -0.5, 0.5, 2};
  v[1][0] = {2, 0, 2, 4};
  v[2][0] = {0, 0.5, -0.25, 0.5};
  v[0][1] = {3, 5, 7, 9};
  m_Scene->RasterizeTriangle(v);
  m_Scene->End();
  EXPECT_EQ((TVec4{1.5, 2.5, 0.625, 0.5}), v[0][0]); // (-0.5 * 0.5 + 0.5) * 8 - 0.5
  EXPECT_EQ((TVec4{5.5, 3.5, 0.75, 0.25}), v[1][0]);
  EXPECT_EQ((TVec4{3.5, 7.5, 0.25, 2}), v[2][0]);
  EXPECT_EQ((TVec4{3, 5, 7, 9}), v[0][1]); // GL_FASTEST leaves the slots
}

TEST_F(Triangles, PerspectivePreparationMultipliesTheSlots) {
  for (const unsigned int hint : {0x1102u, 0x1100u, 0u, 77u, 0x1101u}) {
    m_Scene->SetPerspectiveCorrectionHint(hint);
    EXPECT_EQ(hint, m_Scene->GetPerspectiveCorrectionHint());
    m_Scene->Begin(GL_TRIANGLES);
    TRenderCPU::VAR_DATA v[3] = {};
    for (auto& record : v) {
      record[0] = {0, 0, 0, 4};
      record[1] = {4, 8, 12, 16};
      record[2] = {4, 8, 12, 16}; // not live
    }
    m_Scene->RasterizeTriangle(v);
    m_Scene->End();
    EXPECT_EQ(hint == 0x1101 ? (TVec4{4, 8, 12, 16}) : (TVec4{1, 2, 3, 4}), v[0][1]) << hint;
    EXPECT_EQ((TVec4{4, 8, 12, 16}), v[0][2]);
    EXPECT_EQ(0.25, v[0][0].w);
  }
  EXPECT_EQ(0u, m_Scene->GetError());
}

/// A quad over the whole frame whose w goes from 1 at the left to 2 at the right.
void DrawSlanted(TScene& s) {
  s->Begin(GL_QUADS);
  s->Color4d(0, 0, 0, 0);
  s->Vertex4d(-1, -1, -1, 1);
  s->Color4d(1, 1, 1, 1);
  s->Vertex4d(2, -2, 2, 2);
  s->Vertex4d(2, 2, 2, 2);
  s->Color4d(0, 0, 0, 0);
  s->Vertex4d(-1, 1, -1, 1);
  s->End();
}

TEST_F(Triangles, InterpolationIsPerspectiveUnlessFastest) {
  DrawSlanted(m_Scene);
  ASSERT_EQ(64u, Count());
  for (const TSeenFragment& f : m_Fragment->Seen) {
    // With s from 0 to 1 along the frame, 1/w is 1 - s/2 and colour/w is s/2.
    const double s = (f.X + 0.5) / 8;
    EXPECT_NEAR(s / 2 / (1 - s / 2), f.Slots[1].x, 1e-14);
    EXPECT_NEAR(1.0, f.Slots[0].w, 1e-15);
    EXPECT_NEAR(f.X / (1 - s / 2), f.Slots[0].x, 1e-13); // window x, times the fragment's w
    EXPECT_NEAR(f.Y / (1 - s / 2), f.Slots[0].y, 1e-13);
    // Depth stays linear in the window.
    EXPECT_NEAR(s, f.Depth, 1e-7);
  }
  m_Fragment->Seen.clear();
  m_Scene->SetPerspectiveCorrectionHint(GL_FASTEST);
  DrawSlanted(m_Scene);
  ASSERT_EQ(64u, Count());
  for (const TSeenFragment& f : m_Fragment->Seen) {
    const double s = (f.X + 0.5) / 8;
    EXPECT_NEAR(s, f.Slots[1].x, 1e-15);
    EXPECT_NEAR(1 - s / 2, f.Slots[0].w, 1e-15);
    EXPECT_NEAR(f.X, f.Slots[0].x, 1e-13);
    EXPECT_NEAR(s, f.Depth, 1e-7);
  }
}

TEST_F(Triangles, HintForwardsToThePerspectiveCorrection) {
  m_Scene->Hint(GL_PERSPECTIVE_CORRECTION_HINT, 0x1101);
  EXPECT_EQ(0x1101u, m_Scene->GetPerspectiveCorrectionHint());
}

// --- Facing and culling

TEST_F(Triangles, FacingFollowsTheWinding) {
  for (const bool ccw : {true, false}) {
    m_Scene->FrontFace(ccw ? 0x901 : 0x900);
    EXPECT_EQ(ccw, m_Scene->m_FrontFaceCCW);
    m_Fragment->Seen.clear();
    Window(0, 0, 7, 0, 0, 7);
    ASSERT_FALSE(m_Fragment->Seen.empty());
    EXPECT_EQ(ccw, m_Fragment->Seen[0].FrontFacing);
    m_Fragment->Seen.clear();
    Window(0, 0, 0, 7, 7, 0);
    EXPECT_EQ(!ccw, m_Fragment->Seen[0].FrontFacing);
  }
}

TEST_F(Triangles, ZeroAreaIsFrontForCounterClockwise) {
  for (const bool ccw : {true, false}) {
    m_Scene->FrontFace(ccw ? GL_CCW : GL_CW);
    m_Scene->m_Fragment.FrontFacing = !ccw;
    Window(0, 0, 4, 4, 7, 7);
    EXPECT_EQ(ccw, m_Scene->m_Fragment.FrontFacing);
  }
}

TEST_F(Triangles, FrontFaceTakesTwoModes) {
  m_Scene->FrontFace(0x900);
  m_Scene->FrontFace(0);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, m_Scene->GetError());
  EXPECT_FALSE(m_Scene->m_FrontFaceCCW);
  m_Scene->FrontFace(0x901);
  m_Scene->FrontFace(0x902);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, m_Scene->GetError());
  EXPECT_TRUE(m_Scene->m_FrontFaceCCW);
}

TEST_F(Triangles, CullingTakesTheFacesOfItsMode) {
  const struct {
    unsigned int Mode;
    bool FrontShown, BackShown;
  } rows[] = {{0x405, true, false},
              {0x404, false, true},
              {0x408, false, false},
              {0, true, true},
              {77, true, true}};
  for (const auto& row : rows) {
    for (const bool on : {true, false}) {
      m_Scene->EnableCullFace(on);
      m_Scene->CullFace(row.Mode);
      EXPECT_EQ(row.Mode, m_Scene->m_CullFaceMode);
      m_Fragment->Seen.clear();
      Window(0, 0, 7, 0, 0, 7);
      EXPECT_EQ(row.FrontShown || !on, Count() > 0) << row.Mode;
      EXPECT_TRUE(m_Scene->m_Fragment.FrontFacing); // set even when culled
      m_Fragment->Seen.clear();
      Window(0, 0, 0, 7, 7, 0);
      EXPECT_EQ(row.BackShown || !on, Count() > 0) << row.Mode;
      EXPECT_FALSE(m_Scene->m_Fragment.FrontFacing);
    }
  }
  EXPECT_EQ(0u, m_Scene->GetError());
}

TEST_F(Triangles, CullingLeavesPointsAndLines) {
  m_Scene->EnableCullFace(true);
  m_Scene->CullFace(GL_FRONT_AND_BACK);
  m_Scene->Begin(GL_LINES);
  m_Scene->Vertex2d(-1, 0);
  m_Scene->Vertex2d(1, 0);
  m_Scene->End();
  EXPECT_EQ(8u, Count());
  m_Scene->Begin(GL_POINTS);
  m_Scene->Vertex2d(0, 0);
  m_Scene->End();
  EXPECT_EQ(9u, Count());
}

// --- The fragment's order of tests

TEST_F(Triangles, DepthIsWrittenWithTheTestOff) {
  m_Scene->EnableDepthTest(false);
  DrawFullQuad(*m_Scene, 0.5);
  EXPECT_EQ(0.75f, m_Scene.Depth(3, 3));
  DrawFullQuad(*m_Scene, -0.5);
  EXPECT_EQ(0.25f, m_Scene.Depth(3, 3));
  m_Scene->DepthMask(0);
  DrawFullQuad(*m_Scene, 0.0);
  EXPECT_EQ(0.25f, m_Scene.Depth(3, 3));
}

TEST_F(Triangles, DepthTestComesBeforeTheShader) {
  m_Scene.Reset(0.5f);
  m_Scene->EnableDepthTest(true);
  DrawFullQuad(*m_Scene, 0.5);
  EXPECT_EQ(0u, Count());
  DrawFullQuad(*m_Scene, -0.5);
  EXPECT_EQ(64u, Count());
}

TEST_F(Triangles, AShaderWithADepthOfItsOwnIsTestedLate) {
  THeld<TSeeingFragmentShader> own(true);
  m_Scene->_SetFragmentShader(own.Get());
  EXPECT_TRUE(m_Scene->m_CalcDepth);
  m_Scene.Reset(0.5f);
  m_Scene->EnableDepthTest(true);
  m_Scene->EnablePolygonOffsetFill(true); // plays no part here
  m_Scene->PolygonOffset(0.1f, 0);
  own->OwnDepth = 0.75f;
  DrawFullQuad(*m_Scene, -0.5);
  EXPECT_EQ(64u, own->Seen.size());
  EXPECT_EQ(0, m_Scene.Painted());
  EXPECT_EQ(0.5f, m_Scene.Depth(0, 0));
  own->OwnDepth = 0.25f;
  DrawFullQuad(*m_Scene, 0.5);
  EXPECT_EQ(64, m_Scene.Painted());
  EXPECT_EQ(0.25f, m_Scene.Depth(0, 0));
}

TEST_F(Triangles, ADiscardedFragmentLeavesEverything) {
  m_Scene.Reset(1.0f);
  m_Scene->EnableDepthTest(true);
  m_Scene->Enable(GL_STENCIL_TEST);
  m_Scene->StencilOp(GL_INVERT, GL_INVERT, GL_INVERT);
  m_Fragment->Discard = true;
  const auto before = AllBytes(*m_Scene);
  DrawFullQuad(*m_Scene, 0.0);
  EXPECT_EQ(64u, Count());
  EXPECT_EQ(before, AllBytes(*m_Scene));
}

TEST_F(Triangles, StencilComesBeforeDepth) {
  m_Scene.Reset(1.0f);
  m_Scene->EnableDepthTest(true);
  m_Scene->Enable(GL_STENCIL_TEST);
  m_Scene->StencilOp(GL_REPLACE, GL_INCR, GL_INVERT);
  // Fails: the fail operation, nothing else.
  m_Scene->StencilFunc(GL_NEVER, 5, 0xFF);
  DrawFullQuad(*m_Scene, 0.0);
  EXPECT_EQ(0u, Count());
  EXPECT_EQ(5, m_Scene.Stencil(2, 2));
  EXPECT_EQ(1.0f, m_Scene.Depth(2, 2));
  // Passes, fails on depth: the depth-fail operation, before the shader.
  m_Scene->StencilFunc(GL_ALWAYS, 5, 0xFF);
  m_Scene->DepthFunc(GL_NEVER);
  DrawFullQuad(*m_Scene, 0.0);
  EXPECT_EQ(0u, Count());
  EXPECT_EQ(6, m_Scene.Stencil(2, 2));
  EXPECT_EQ(1.0f, m_Scene.Depth(2, 2));
  // Passes both.
  m_Scene->DepthFunc(GL_LESS);
  DrawFullQuad(*m_Scene, 0.0);
  EXPECT_EQ(64u, Count());
  EXPECT_EQ(6 ^ 255, m_Scene.Stencil(2, 2));
  EXPECT_EQ(0.5f, m_Scene.Depth(2, 2));
  EXPECT_EQ(64, m_Scene.Painted());
}

TEST_F(Triangles, LateDepthFailureRunsTheDepthFailOperation) {
  THeld<TSeeingFragmentShader> own(true);
  own->OwnDepth = 2.0f;
  m_Scene->_SetFragmentShader(own.Get());
  m_Scene.Reset(1.0f);
  m_Scene->EnableDepthTest(true);
  m_Scene->Enable(GL_STENCIL_TEST);
  m_Scene->StencilFunc(GL_ALWAYS, 9, 0xFF);
  m_Scene->StencilOp(GL_KEEP, GL_REPLACE, GL_INVERT);
  DrawFullQuad(*m_Scene);
  EXPECT_EQ(9, m_Scene.Stencil(1, 1));
  EXPECT_EQ(0, m_Scene.Painted());
}

TEST_F(Triangles, WithoutTheStencilTestTheStencilStays) {
  m_Scene->StencilFunc(GL_ALWAYS, 9, 0xFF);
  m_Scene->StencilOp(GL_REPLACE, GL_REPLACE, GL_REPLACE);
  DrawFullQuad(*m_Scene);
  EXPECT_EQ(0, m_Scene.Stencil(1, 1));
  EXPECT_EQ(64, m_Scene.Painted());
}

TEST_F(Triangles, WithoutSurfacesTheTestsGoOn) {
  TDataSurface* const stencil = m_Scene->m_StencilSurface;
  TDataSurface* const depth = m_Scene->m_DepthSurface;
  m_Scene->m_StencilSurface = nullptr;
  m_Scene->m_DepthSurface = nullptr;
  m_Scene->Enable(GL_STENCIL_TEST);
  m_Scene->EnableDepthTest(true);
  m_Scene->DepthFunc(GL_NEVER); // no surface, no test
  m_Scene->StencilOp(GL_INVERT, GL_INVERT, GL_INVERT);
  m_Scene->StencilFunc(GL_EQUAL, 1, 0xFF); // the value is 0
  DrawFullQuad(*m_Scene);
  EXPECT_EQ(0u, Count());
  m_Scene->StencilFunc(GL_EQUAL, 0, 0xFF);
  DrawFullQuad(*m_Scene);
  EXPECT_EQ(64u, Count());
  EXPECT_EQ(64, m_Scene.Painted());
  m_Scene->m_StencilSurface = stencil;
  m_Scene->m_DepthSurface = depth;
  EXPECT_EQ(0, m_Scene.Stencil(1, 1));
}

TEST_F(Triangles, PolygonOffsetAddsItsFactor) {
  m_Scene->EnablePolygonOffsetFill(true);
  m_Scene->PolygonOffset(0.125f, 100.0f);
  EXPECT_EQ(0.125f, m_Scene->m_PolygonOffsetFactor);
  EXPECT_EQ(100.0f, m_Scene->m_PolygonOffsetUnits);
  DrawFullQuad(*m_Scene, 0.0);
  EXPECT_EQ(0.625f, m_Scene.Depth(3, 3));
  EXPECT_EQ(0.625f, m_Fragment->Seen[0].Depth);
  // A slope plays no part.
  m_Scene->PolygonOffset(0.5f, 0);
  m_Fragment->Seen.clear();
  DrawSlanted(m_Scene);
  for (const TSeenFragment& f : m_Fragment->Seen) {
    EXPECT_NEAR((f.X + 0.5) / 8 + 0.5, f.Depth, 2e-7);
  }
  m_Scene->EnablePolygonOffsetFill(false);
  DrawFullQuad(*m_Scene, 0.0);
  EXPECT_EQ(0.5f, m_Scene.Depth(3, 3));
}

TEST_F(Triangles, PolygonModeChangesNoDrawing) {
  DrawFullQuad(*m_Scene);
  const auto filled = AllBytes(*m_Scene);
  m_Scene.Reset(0.0f);
  m_Scene->PolygonMode(GL_FRONT_AND_BACK, 0x1B01);
  m_Scene->PolygonMode(GL_BACK, 0x1B01);
  DrawFullQuad(*m_Scene);
  EXPECT_EQ(filled, AllBytes(*m_Scene));
}

TEST_F(Triangles, FragmentsCarryTheirPixel) {
  Window(2, 3, 6, 3, 2, 6);
  for (const TSeenFragment& f : m_Fragment->Seen) {
    EXPECT_NEAR(f.X, f.Slots[0].x, 1e-12);
    EXPECT_NEAR(f.Y, f.Slots[0].y, 1e-12);
    EXPECT_EQ(0.5f, f.Depth);
  }
}

TEST_F(Triangles, ABoundSurfaceIsSteppedByFourBytesInASpan) {
  // Eight bytes a pixel by its stride: a span takes four all the same, rows go by the row stride.
  TDataSurface wide;
  ASSERT_TRUE(wide.Create(8, 8, DATA_FORMAT(6), DATA_TYPE(5), 4));
  ASSERT_EQ(8, wide.PixelStride);
  m_Scene->BindColorSurface(&wide);
  // Every span starts at column 0; row y holds the columns below 7 - y.
  m_Scene->Begin(GL_TRIANGLES);
  m_Scene->Vertex2d(-1, -1);
  m_Scene->Vertex2d(1, -1);
  m_Scene->Vertex2d(-1, 1);
  m_Scene->End();
  for (int y = 0; y < 8; ++y) {
    for (int i = 0; i < 64; ++i) {
      EXPECT_EQ(i < 4 * (7 - y) ? 255 : 0, wide.Data[y * 64 + i]) << i << ", " << y;
    }
  }
}

TEST_F(Triangles, VerticesAtNoPlaceDrawNothing) {
  const double inf = std::numeric_limits<double>::infinity();
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (const double odd : {inf, -inf, nan}) {
    TRenderCPU::VAR_DATA v[3] = {};
    m_Scene->Begin(GL_TRIANGLES);
    v[0][0] = {odd, 0, 0, 1};
    v[1][0] = {0.5, -0.5, 0, 1};
    v[2][0] = {0, odd, 0, 1};
    m_Scene->RasterizeTriangle(v);
    v[0][0] = {0, 0, 0, 0};
    v[1][0] = {0, 0, 0, 0};
    v[2][0] = {0.5, 0.5, 0, 1};
    m_Scene->RasterizeTriangle(v);
    m_Scene->End();
  }
  EXPECT_EQ(0, m_Scene.Painted());
}

TEST_F(Triangles, BeyondTheFrameAreCutToIt) {
  // Straight to the rasteriser, without clipping.
  m_Scene->Begin(GL_TRIANGLES);
  TRenderCPU::VAR_DATA v[3] = {};
  v[0][0] = {-1e6, -1e6, 0, 1};
  v[1][0] = {1e6, -1e6, 0, 1};
  v[2][0] = {0, 1e6, 0, 1};
  for (auto& record : v) {
    record[1] = {1, 1, 1, 1};
  }
  m_Scene->RasterizeTriangle(v);
  m_Scene->End();
  for (const int hits : Hits()) {
    EXPECT_EQ(1, hits);
  }
}

// --- Each far from the one before, on a surface so tall that pixels are asked for ahead

class FarTriangles : public zx_test::TLevelTest {
protected:
  FarTriangles() : TLevelTest(64, 4096) {}

  /// The same numbers for each run.
  static unsigned int Next(unsigned int* state) {
    *state = *state * 1664525u + 1013904223u;
    return *state >> 16;
  }

  static void Test(TRenderCPU& gl) {
    gl.Enable(GL_DEPTH_TEST);
    gl.Enable(GL_STENCIL_TEST);
    gl.StencilFunc(GL_ALWAYS, 0, 255);
    gl.StencilOp(GL_KEEP, GL_KEEP, GL_INCR);
  }
};

// In all modes, by calls and by arrays: small ones, up to the first and the last row and column.
TEST_F(FarTriangles, AreDrawnAsAnyOthers) {
  for (const unsigned int mode : {GL_TRIANGLES, GL_QUADS, GL_TRIANGLE_STRIP, GL_TRIANGLE_FAN}) {
    for (const bool arrays : {false, true}) {
      Expect(std::to_string(mode) + (arrays ? " by arrays" : " by calls"), [&](TRenderCPU& gl) {
        Test(gl);
        constexpr int kVertices = 4 * 3 * 20;
        std::vector<double> at;
        unsigned int state = 1;
        for (int i = 0; i < kVertices; ++i) {
          const int shape = i / (mode == GL_QUADS ? 4 : 3);
          const double x = std::sin(shape * 1.7) + (Next(&state) % 64) / 320.0 - 0.1;
          const double y = std::cos(shape * 2.9) + (Next(&state) % 64) / 6400.0 - 0.005;
          at.insert(at.end(), {x, y, (Next(&state) % 100) / 100.0});
        }
        if (arrays) {
          gl.VertexPointer(3, GL_DOUBLE, 0, at.data());
          gl.EnableClientState(GL_VERTEX_ARRAY);
          gl.DrawArrays(mode, 0, kVertices);
          return;
        }
        gl.Begin(mode);
        for (int i = 0; i < kVertices; ++i) {
          gl.Color3d(i / 240.0, 0.5, 1.0 - i / 240.0);
          gl.Vertex3dv(at.data() + 3 * i);
        }
        gl.End();
      });
    }
  }
}

// Straight to the rasteriser, without clipping: corners that are no numbers, or far outside.
TEST_F(FarTriangles, CornersMayLieAnywhere) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kPlaces[] = {0.0,  -0.99, 0.97,   0.5,       -0.5,       1.01,
                                -3.0, 1e9,   -1e300, kInfinity, -kInfinity, kNaN};
  Expect("any corners", [&](TRenderCPU& gl) {
    Test(gl);
    unsigned int state = 1;
    gl.Begin(GL_TRIANGLES);
    for (int i = 0; i < 200; ++i) {
      TRenderCPU::VAR_DATA v[3] = {};
      for (auto& record : v) {
        const double x = kPlaces[Next(&state) % std::size(kPlaces)];
        const double y = kPlaces[Next(&state) % std::size(kPlaces)];
        record[0] = {x, y, 0.0, 1.0};
        record[1] = {0.25, 0.5, 0.75, 1.0};
      }
      gl.RasterizeTriangle(v);
    }
    gl.End();
  });
}

} // namespace
