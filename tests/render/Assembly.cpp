// What the mode routines make of a stream of vertices.

#include <ZxCore3D/render/TRenderCPU.h>

#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;
using TCell = std::pair<int, int>;

/// A frame of 16 by 16 under a shader pair that keeps every fragment.
class Assembly : public testing::Test {
protected:
  Assembly() : m_Scene(16, 16) {
    m_Scene->_SetVertexShader(m_Vertex.Get());
    m_Scene->_SetFragmentShader(m_Fragment.Get());
  }

  void Draw(unsigned int mode, const std::vector<TCell>& vertices) {
    m_Fragment->Seen.clear();
    m_Scene->Begin(mode);
    for (const TCell& v : vertices) {
      m_Scene->Vertex2d(Clip(v.first, 16), Clip(v.second, 16));
    }
    m_Scene->End();
  }

  /// The pixels in the order in which they came.
  std::vector<TCell> Pixels() const {
    std::vector<TCell> pixels;
    for (const TSeenFragment& f : m_Fragment->Seen) {
      pixels.emplace_back(f.X, f.Y);
    }
    return pixels;
  }

  int Count() const { return static_cast<int>(m_Fragment->Seen.size()); }

  THeld<TPassVertexShader> m_Vertex;
  THeld<TSeeingFragmentShader> m_Fragment;
  TScene m_Scene;
};

TEST_F(Assembly, PointsComeOneByOne) {
  m_Scene->Begin(GL_POINTS);
  for (int i = 0; i < 4; ++i) {
    m_Scene->Vertex2d(Clip(i, 16), Clip(2 * i, 16));
    EXPECT_EQ(i + 1, Count());
    EXPECT_EQ(0, m_Scene->m_Pending);
  }
  m_Scene->End();
  EXPECT_EQ((std::vector<TCell>{{0, 0}, {1, 2}, {2, 4}, {3, 6}}), Pixels());
}

TEST_F(Assembly, LinesTakeTwoAndDropTheOdd) {
  Draw(GL_LINES, {{1, 1}, {3, 1}, {5, 5}, {5, 7}, {9, 9}});
  EXPECT_EQ((std::vector<TCell>{{1, 1}, {2, 1}, {5, 5}, {5, 6}}), Pixels());
}

TEST_F(Assembly, LineStripsGoOnFromTheLastVertex) {
  Draw(GL_LINE_STRIP, {{2, 2}, {5, 2}, {5, 6}});
  EXPECT_EQ((std::vector<TCell>{{2, 2}, {3, 2}, {4, 2}, {5, 2}, {5, 3}, {5, 4}, {5, 5}}), Pixels());
  Draw(GL_LINE_STRIP, {{2, 2}});
  EXPECT_EQ(0, Count());
}

TEST_F(Assembly, LineLoopsCloseAtTheEnd) {
  Draw(GL_LINE_LOOP, {{2, 2}, {5, 2}, {5, 5}});
  // The closing segment starts at the last vertex and leaves out the first one.
  EXPECT_EQ(
      (std::vector<TCell>{{2, 2}, {3, 2}, {4, 2}, {5, 2}, {5, 3}, {5, 4}, {5, 5}, {4, 4}, {3, 3}}),
      Pixels());
}

TEST_F(Assembly, ALineLoopOfOneVertexIsOnePixel) {
  Draw(GL_LINE_LOOP, {{4, 7}});
  EXPECT_EQ((std::vector<TCell>{{4, 7}}), Pixels());
}

TEST_F(Assembly, ALineLoopOfTwoVerticesGoesThereAndBack) {
  Draw(GL_LINE_LOOP, {{2, 2}, {5, 2}});
  EXPECT_EQ((std::vector<TCell>{{2, 2}, {3, 2}, {4, 2}, {5, 2}, {4, 2}, {3, 2}}), Pixels());
}

TEST_F(Assembly, ALineLoopWithoutVerticesIsNothing) {
  Draw(GL_LINE_LOOP, {});
  EXPECT_EQ(0, Count());
  EXPECT_EQ(0, m_Vertex->Executes);
}

TEST_F(Assembly, TrianglesTakeThreeAndDropTheRest) {
  Draw(GL_TRIANGLES, {{0, 0}, {4, 0}, {0, 4}, {15, 15}, {8, 8}});
  const int one = Count();
  EXPECT_GT(one, 0);
  EXPECT_EQ(5, m_Vertex->Executes);
  Draw(GL_TRIANGLES, {{0, 0}, {4, 0}, {0, 4}});
  EXPECT_EQ(one, Count());
}

TEST_F(Assembly, QuadsTakeFourAndDropTheRest) {
  Draw(GL_QUADS, {{0, 0}, {4, 0}, {4, 4}, {0, 4}, {8, 8}, {12, 8}, {12, 12}});
  EXPECT_EQ(16, Count()); // columns and rows 0 to 3
  for (const TCell& p : Pixels()) {
    EXPECT_LT(p.first, 4);
    EXPECT_LT(p.second, 4);
  }
}

TEST_F(Assembly, QuadsAreSplitFromTheFirstToTheThirdVertex) {
  // A kite whose halves along the other diagonal would be different: the fourth vertex lies inside
  // the triangle of the first three's hull.
  Draw(GL_QUADS, {{0, 0}, {12, 0}, {12, 12}, {10, 1}});
  std::vector<TCell> quad = Pixels();
  Draw(GL_TRIANGLES, {{0, 0}, {12, 0}, {12, 12}, {0, 0}, {12, 12}, {10, 1}});
  EXPECT_EQ(Pixels(), quad);
}

TEST_F(Assembly, QuadHalvesAreCulledEachForItself) {
  // A bow tie: the first half turns counter-clockwise, the second clockwise.
  m_Scene->EnableCullFace(true);
  Draw(GL_QUADS, {{0, 0}, {12, 0}, {12, 12}, {12, 4}});
  const auto tie = Pixels();
  Draw(GL_TRIANGLES, {{0, 0}, {12, 0}, {12, 12}});
  EXPECT_EQ(Pixels(), tie);
}

TEST_F(Assembly, StripsFollowTheirTable) {
  // 0, 1, 2, 3, 4 give (0, 1, 2), (2, 1, 3), (2, 3, 4).
  const std::vector<TCell> v = {{0, 0}, {8, 1}, {1, 7}, {9, 8}, {2, 15}, {11, 14}, {14, 15}};
  Draw(GL_TRIANGLE_STRIP, v);
  const auto strip = m_Fragment->Seen;
  std::vector<TCell> separate;
  const int order[5][3] = {{0, 1, 2}, {2, 1, 3}, {2, 3, 4}, {4, 3, 5}, {4, 5, 6}};
  for (const auto& t : order) {
    for (const int i : t) {
      separate.push_back(v[static_cast<std::size_t>(i)]);
    }
  }
  Draw(GL_TRIANGLES, separate);
  ASSERT_EQ(strip.size(), m_Fragment->Seen.size());
  for (std::size_t i = 0; i < strip.size(); ++i) {
    EXPECT_EQ(strip[i].X, m_Fragment->Seen[i].X);
    EXPECT_EQ(strip[i].Y, m_Fragment->Seen[i].Y);
    EXPECT_TRUE(strip[i].FrontFacing);
  }
  EXPECT_GT(strip.size(), 60u);
}

TEST_F(Assembly, FansTurnAroundTheirHub) {
  // 0, 1, 2, 3, 4 give (0, 1, 2), (0, 2, 3), (0, 3, 4).
  const std::vector<TCell> v = {{7, 7}, {15, 5}, {13, 13}, {6, 15}, {1, 10}, {1, 2}};
  Draw(GL_TRIANGLE_FAN, v);
  const auto fan = m_Fragment->Seen;
  std::vector<TCell> separate;
  for (std::size_t i = 1; i + 1 < v.size(); ++i) {
    separate.insert(separate.end(), {v[0], v[i], v[i + 1]});
  }
  Draw(GL_TRIANGLES, separate);
  ASSERT_EQ(fan.size(), m_Fragment->Seen.size());
  for (std::size_t i = 0; i < fan.size(); ++i) {
    EXPECT_EQ(fan[i].X, m_Fragment->Seen[i].X);
    EXPECT_EQ(fan[i].Y, m_Fragment->Seen[i].Y);
    EXPECT_TRUE(fan[i].FrontFacing);
  }
  EXPECT_GT(fan.size(), 60u);
}

TEST_F(Assembly, StripsCountTheirRing) {
  m_Scene->Begin(GL_TRIANGLE_STRIP);
  const int expected[] = {0, 1, 2, 0, 1, 2, 0};
  const int pending[] = {1, 2, 2, 2, 2, 2, 2};
  for (int i = 0; i < 7; ++i) {
    m_Scene->Vertex2d(i * 0.1, i % 2 * 0.1);
    EXPECT_EQ(expected[i], m_Scene->m_StripIndex) << i;
    EXPECT_EQ(pending[i], m_Scene->m_Pending) << i;
    EXPECT_EQ(i, m_Scene->m_VertexIndex);
  }
  m_Scene->End();
}

TEST_F(Assembly, ATriangleCutInTheMiddleLeavesTheOthersAlone) {
  // The middle vertex lies far outside, so that three triangles of the strip are clipped.
  const double x[] = {-0.9, -0.8, -0.2, 3.5, 0.1, 0.6, 0.8};
  const double y[] = {-0.9, 0.9, -0.8, 4.0, -0.9, 0.9, -0.7};
  const auto draw = [&](unsigned int mode, const std::vector<int>& order) {
    m_Fragment->Seen.clear();
    m_Scene->Begin(mode);
    for (const int i : order) {
      m_Scene->Color3d(i * 0.1, 0.5, 1 - i * 0.1);
      m_Scene->Vertex4d(x[i], y[i], i == 3 ? 1.5 : 0.1 * i, 1.0);
    }
    m_Scene->End();
    return std::move(m_Fragment->Seen);
  };
  const auto compare = [](const std::vector<TSeenFragment>& a,
                          const std::vector<TSeenFragment>& b) {
    ASSERT_EQ(a.size(), b.size());
    ASSERT_GT(a.size(), 50u);
    for (std::size_t i = 0; i < a.size(); ++i) {
      EXPECT_EQ(a[i].X, b[i].X);
      EXPECT_EQ(a[i].Y, b[i].Y);
      EXPECT_SAME_BITS(a[i].Depth, b[i].Depth);
      EXPECT_SAME_BITS(a[i].Slots[1].x, b[i].Slots[1].x);
    }
  };
  compare(draw(GL_TRIANGLE_STRIP, {0, 1, 2, 3, 4, 5, 6}),
          draw(GL_TRIANGLES, {0, 1, 2, 2, 1, 3, 2, 3, 4, 4, 3, 5, 4, 5, 6}));
  compare(draw(GL_TRIANGLE_FAN, {3, 0, 1, 2, 4, 5}),
          draw(GL_TRIANGLES, {3, 0, 1, 3, 1, 2, 3, 2, 4, 3, 4, 5}));
  compare(draw(GL_LINE_STRIP, {0, 1, 2, 3, 4, 5, 6, 0, 4, 1, 5}),
          draw(GL_LINES, {0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 0, 0, 4, 4, 1, 1, 5}));
  compare(draw(GL_LINE_LOOP, {3, 1, 5, 2, 6, 1, 4}),
          draw(GL_LINES, {3, 1, 1, 5, 5, 2, 2, 6, 6, 1, 1, 4, 4, 3}));
}

TEST_F(Assembly, StateSetInsideHoldsFromTheNextPiece) {
  m_Scene->Begin(GL_TRIANGLES);
  for (int k = 0; k < 2; ++k) {
    if (k == 1) {
      m_Scene->ColorMask(1, 0, 0, 0);
    }
    const double x = k == 0 ? -1.0 : 0.0;
    m_Scene->Vertex2d(x, -1);
    m_Scene->Vertex2d(x + 1, -1);
    m_Scene->Vertex2d(x, 1);
  }
  m_Scene->End();
  EXPECT_EQ((TPixel{255, 255, 255, 255}), m_Scene.Color(0, 0));
  EXPECT_EQ((TPixel{255, 0, 0, 0}), m_Scene.Color(8, 0));
}

} // namespace
