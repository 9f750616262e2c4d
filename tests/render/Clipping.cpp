#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/stages/ClipPlanes.h>

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;
using TVec4 = vec_t_<double, 4>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

/// Records go straight to the clipper. Interpolation is linear, so that the slots behind the
/// position show what clipping made of them.
class Clipping : public testing::Test {
protected:
  Clipping() : m_Scene(8, 8) {
    m_Scene->SetPerspectiveCorrectionHint(GL_FASTEST);
    m_Scene->_SetVertexShader(m_Vertex.Get());
    m_Scene->_SetFragmentShader(m_Fragment.Get());
    m_Scene->Begin(GL_TRIANGLES);
  }

  static TRenderCPU::VAR_DATA Record(const TVec4& position, double tag) {
    TRenderCPU::VAR_DATA v = {};
    v[0] = position;
    v[1] = {tag, tag + 16, tag + 32, tag + 48};
    v[2] = {9, 9, 9, 9}; // not live
    return v;
  }

  static void ExpectVec(const TVec4& expected, const TVec4& actual) {
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_SAME_BITS(expected[i], actual[i]) << "component " << i;
    }
  }

  /// Window position of the clip position (x, y, z, w) by the triangle's and line's transform.
  static TVec4 Window(const TVec4& p) {
    const double r = 1.0 / p.w;
    return {((p.x * r) * 0.5 + 0.5) * 8 - 0.5, ((p.y * r) * 0.5 + 0.5) * 8 - 0.5,
            (p.z * r) * 0.5 + 0.5, r};
  }

  THeld<TPassVertexShader> m_Vertex;
  THeld<TSeeingFragmentShader> m_Fragment;
  TScene m_Scene;
};

TEST_F(Clipping, MixBlendsTheLiveSlots) {
  TRenderCPU::VAR_DATA a = Record({0, 2, 4, 1}, 8);
  const TRenderCPU::VAR_DATA b = Record({4, 0, 4, 3}, 16);
  m_Scene->Mix(a, b, 0.25);
  ExpectVec({1, 1.5, 4, 1.5}, a[0]);
  ExpectVec({10, 26, 42, 58}, a[1]);
  ExpectVec({9, 9, 9, 9}, a[2]);
  // (b - a) * t + a, not a * (1 - t) + b * t.
  a = Record({0.1, 0, 0, 0}, 0);
  TRenderCPU::VAR_DATA c = Record({0.3, 0, 0, 0}, 0);
  m_Scene->Mix(a, c, 1.0 / 3.0);
  volatile double difference = 0.3 - 0.1;
  volatile double product = difference * (1.0 / 3.0);
  EXPECT_SAME_BITS(product + 0.1, a[0].x);
}

TEST_F(Clipping, APointOutsideAnyPlaneIsDropped) {
  for (int axis = 0; axis < 3; ++axis) {
    for (const double sign : {-1.0, 1.0}) {
      TRenderCPU::VAR_DATA v = Record({0, 0, 0, 2}, 0);
      v[0][static_cast<std::size_t>(axis)] = sign * std::nextafter(2.0, 3.0);
      const TRenderCPU::VAR_DATA before = v;
      m_Scene->ClipAndRasterizePoint(&v);
      EXPECT_EQ(0u, m_Fragment->Seen.size()) << axis;
      EXPECT_EQ(0, std::memcmp(&before, &v, sizeof(v)));
    }
  }
}

TEST_F(Clipping, APointOnAPlaneIsKept) {
  const TVec4 kept[] = {{-2, 0, 0, 2}, {0, -2, 0, 2}, {0, 0, -2, 2}, {0, 0, 2, 2}};
  std::size_t count = 0;
  for (const TVec4& p : kept) {
    TRenderCPU::VAR_DATA v = Record(p, 0);
    m_Scene->ClipAndRasterizePoint(&v);
    EXPECT_EQ(++count, m_Fragment->Seen.size());
  }
}

TEST_F(Clipping, APointWithNanStays) {
  TRenderCPU::VAR_DATA v = Record({0, 0, kNan, 1}, 0);
  m_Scene->ClipAndRasterizePoint(&v);
  ASSERT_EQ(1u, m_Fragment->Seen.size());
  EXPECT_EQ(4, m_Fragment->Seen[0].X);
  EXPECT_TRUE(std::isnan(m_Scene.Depth(4, 4)));
}

TEST_F(Clipping, APointNowhereIsNoPixel) {
  const TVec4 nowhere[] = {{kNan, 0, 0, 1}, {0, kNan, 0, 1},    {0, 0, 0, kNan}, {0, 0, 0, 0},
                           {0, 0, 0, -1},   {kInf, 0, 0, kInf}, {0, 0, 0, -0.0}};
  for (const TVec4& p : nowhere) {
    TRenderCPU::VAR_DATA v = Record(p, 0);
    m_Scene->ClipAndRasterizePoint(&v);
  }
  EXPECT_EQ(0, m_Scene.Painted());
}

/// A position with `u` on one axis, zero on the others.
TVec4 OnAxis(int plane, double u, double w) {
  TVec4 p = {0, 0, 0, w};
  // Even planes are those of -w: the same picture mirrored.
  p[static_cast<std::size_t>(plane / 2)] = plane % 2 == 0 ? -u : u;
  return p;
}

TEST_F(Clipping, ALineIsCutAtEachPlane) {
  for (int plane = 0; plane < 6; ++plane) {
    for (const int outside : {0, 1}) {
      // u from 5 (w 1) to 1 (w 5): d = 4, the denominator is ((5 - 1) - 1) + 5 = 8, t = 1/2.
      TRenderCPU::VAR_DATA v[2];
      v[outside] = Record(OnAxis(plane, 5, 1), 8);
      v[1 - outside] = Record(OnAxis(plane, 1, 5), 16);
      m_Scene->ClipAndRasterizeLine(v, 0);
      ExpectVec(Window(OnAxis(plane, 3, 3)), v[outside][0]);
      ExpectVec({12, 28, 44, 60}, v[outside][1]);
      ExpectVec({9, 9, 9, 9}, v[outside][2]);
      ExpectVec(Window(OnAxis(plane, 1, 5)), v[1 - outside][0]);
      ExpectVec({16, 32, 48, 64}, v[1 - outside][1]);
    }
  }
}

TEST_F(Clipping, ALineStartsAtTheGivenPlane) {
  // Outside the left plane only; from plane 1 on nothing cuts it.
  TRenderCPU::VAR_DATA v[2] = {Record({-3, 0, 0, 1}, 0), Record({1, 0, 0, 1}, 8)};
  m_Scene->ClipAndRasterizeLine(v, 1);
  ExpectVec(Window({-3, 0, 0, 1}), v[0][0]);
  v[0] = Record({-3, 0, 0, 1}, 0);
  v[1] = Record({1, 0, 0, 1}, 8);
  m_Scene->ClipAndRasterizeLine(v, 0);
  ExpectVec(Window({-1, 0, 0, 1}), v[0][0]);
  ExpectVec({4, 20, 36, 52}, v[0][1]);
}

TEST_F(Clipping, APlaneOfSixRasterisesAndAboveNothingHappens) {
  TRenderCPU::VAR_DATA line[2] = {Record({-1, 0, 0, 1}, 0), Record({1, 0, 0, 1}, 8)};
  const TRenderCPU::VAR_DATA lineBefore[2] = {line[0], line[1]};
  TRenderCPU::VAR_DATA triangle[3] = {Record({-1, -1, 0, 1}, 0), Record({1, -1, 0, 1}, 8),
                                      Record({-1, 1, 0, 1}, 16)};
  const TRenderCPU::VAR_DATA triangleBefore[3] = {triangle[0], triangle[1], triangle[2]};
  for (const int plane : {-1000, -1, 7, 8, 1000}) {
    m_Scene->ClipAndRasterizeLine(line, plane);
    m_Scene->ClipAndRasterizeTriangle(triangle, plane);
  }
  EXPECT_EQ(0, std::memcmp(line, lineBefore, sizeof(line)));
  EXPECT_EQ(0, std::memcmp(triangle, triangleBefore, sizeof(triangle)));
  EXPECT_TRUE(m_Fragment->Seen.empty());

  m_Scene->ClipAndRasterizeLine(line, 6);
  EXPECT_EQ(8u, m_Fragment->Seen.size());
  ExpectVec(Window({-1, 0, 0, 1}), line[0][0]);
  m_Scene->ClipAndRasterizeTriangle(triangle, 6);
  EXPECT_GT(m_Fragment->Seen.size(), 30u);
  ExpectVec(Window({-1, -1, 0, 1}), triangle[0][0]);
}

TEST_F(Clipping, ALineOutsideOnePlaneIsDropped) {
  for (int plane = 0; plane < 6; ++plane) {
    TRenderCPU::VAR_DATA v[2] = {Record(OnAxis(plane, 1.5, 1), 0), Record(OnAxis(plane, 3, 1), 8)};
    m_Scene->ClipAndRasterizeLine(v, 0);
    ExpectVec(OnAxis(plane, 1.5, 1), v[0][0]); // left as it was
    EXPECT_TRUE(m_Fragment->Seen.empty());
  }
}

TEST_F(Clipping, ALineBehindTheEyeIsDropped) {
  TRenderCPU::VAR_DATA v[2] = {Record({0, 0, 0, -1}, 0), Record({0.5, 0, 0, -2}, 8)};
  m_Scene->ClipAndRasterizeLine(v, 0);
  EXPECT_TRUE(m_Fragment->Seen.empty());
}

TEST_F(Clipping, ALineCutAtBothEndsKeepsItsDirection) {
  TRenderCPU::VAR_DATA v[2] = {Record({3, 0.5, 0, 1}, 0), Record({-3, 0.5, 0, 1}, 48)};
  m_Scene->ClipAndRasterizeLine(v, 0);
  // The left plane cuts the end at t = 1/3 from its side, then the right plane the start.
  EXPECT_DOUBLE_EQ(7.5, v[0][0].x);
  EXPECT_DOUBLE_EQ(-0.5, v[1][0].x);
  EXPECT_DOUBLE_EQ(16.0, v[0][1].x);
  EXPECT_DOUBLE_EQ(32.0, v[1][1].x);
  ASSERT_FALSE(m_Fragment->Seen.empty());
  EXPECT_GT(m_Fragment->Seen.front().X, m_Fragment->Seen.back().X);
}

TEST_F(Clipping, ANanMakesALineOrTriangleVertexOutside) {
  for (int component = 0; component < 4; ++component) {
    TRenderCPU::VAR_DATA line[2] = {Record({0, 0, 0, 1}, 0), Record({0.5, 0.5, 0, 1}, 8)};
    line[0][0][static_cast<std::size_t>(component)] = kNan;
    line[1][0][static_cast<std::size_t>(component)] = kNan;
    m_Scene->ClipAndRasterizeLine(line, 0);
    TRenderCPU::VAR_DATA triangle[3] = {Record({0, 0, 0, 1}, 0), Record({0.5, 0, 0, 1}, 8),
                                        Record({0, 0.5, 0, 1}, 8)};
    for (auto& v : triangle) {
      v[0][static_cast<std::size_t>(component)] = kNan;
    }
    m_Scene->ClipAndRasterizeTriangle(triangle, 0);
    ExpectVec({0, 0.5, 0, 1}, [&] {
      TVec4 p = triangle[2][0];
      p[static_cast<std::size_t>(component)] =
          TVec4{0, 0.5, 0, 1}[static_cast<std::size_t>(component)];
      return p;
    }());
  }
  EXPECT_EQ(0, m_Scene.Painted());
}

TEST_F(Clipping, ATriangleInsideIsHandedOnUnchanged) {
  const TRenderCPU::VAR_DATA before[3] = {Record({-0.3, -0.7, 0.1, 1.1}, 0.1),
                                          Record({0.9, -0.5, 0.3, 1.3}, 0.2),
                                          Record({0.1, 0.8, -0.4, 0.9}, 0.3)};
  TRenderCPU::VAR_DATA clipped[3] = {before[0], before[1], before[2]};
  TRenderCPU::VAR_DATA direct[3] = {before[0], before[1], before[2]};
  m_Scene->ClipAndRasterizeTriangle(clipped, 0);
  m_Scene->RasterizeTriangle(direct);
  EXPECT_EQ(0, std::memcmp(clipped, direct, sizeof(direct)));
}

TEST_F(Clipping, ATriangleOnThePlanesIsNotCut) {
  const TRenderCPU::VAR_DATA before[3] = {Record({-1, -1, -1, 1}, 0.1), Record({1, -1, 1, 1}, 0.2),
                                          Record({0, 1, 0, 1}, 0.3)};
  TRenderCPU::VAR_DATA clipped[3] = {before[0], before[1], before[2]};
  TRenderCPU::VAR_DATA direct[3] = {before[0], before[1], before[2]};
  m_Scene->ClipAndRasterizeTriangle(clipped, 0);
  m_Scene->RasterizeTriangle(direct);
  EXPECT_EQ(0, std::memcmp(clipped, direct, sizeof(direct)));
}

TEST_F(Clipping, ATriangleOutsideOnePlaneIsDropped) {
  for (int plane = 0; plane < 6; ++plane) {
    TRenderCPU::VAR_DATA v[3] = {Record(OnAxis(plane, 1.5, 1), 0), Record(OnAxis(plane, 3, 1), 8),
                                 Record(OnAxis(plane, 2, 1), 8)};
    m_Scene->ClipAndRasterizeTriangle(v, 0);
    ExpectVec(OnAxis(plane, 1.5, 1), v[0][0]);
    EXPECT_TRUE(m_Fragment->Seen.empty());
  }
}

TEST_F(Clipping, ATriangleWithTwoOutsideKeepsItsIndices) {
  for (int plane = 0; plane < 6; ++plane) {
    for (int i = 0; i < 3; ++i) {
      const int j = (i + 1) % 3;
      const int k = (i + 2) % 3;
      TRenderCPU::VAR_DATA v[3];
      v[i] = Record(OnAxis(plane, -1, 1), 16);
      v[j] = Record(OnAxis(plane, 3, 1), 8);  // t = 2 / (3 + 1) = 1/2
      v[k] = Record(OnAxis(plane, 7, 1), 32); // t = 6 / (7 + 1) = 3/4
      m_Scene->ClipAndRasterizeTriangle(v, 0);
      ExpectVec(Window(OnAxis(plane, -1, 1)), v[i][0]);
      ExpectVec(Window(OnAxis(plane, 1, 1)), v[j][0]);
      ExpectVec(Window(OnAxis(plane, 1, 1)), v[k][0]);
      ExpectVec({16, 32, 48, 64}, v[i][1]);
      ExpectVec({12, 28, 44, 60}, v[j][1]);
      ExpectVec({20, 36, 52, 68}, v[k][1]); // 32 + (16 - 32) * 3/4
    }
  }
}

TEST_F(Clipping, ATriangleWithOneOutsideIsDrawnAsTwo) {
  for (int o = 0; o < 3; ++o) {
    const int a = (o + 1) % 3;
    const int b = (o + 2) % 3;
    TRenderCPU::VAR_DATA v[3];
    v[o] = Record({3, 0.5, 0, 1}, 0);
    v[a] = Record({-1, 0.75, 0, 1}, 16); // t = 2 / (3 + 1) = 1/2
    v[b] = Record({-1, -0.75, 0, 1}, 32);
    // P_a, a, b and P_b, P_a, b, each at the index that it stems from.
    TRenderCPU::VAR_DATA first[3];
    first[o] = Record({1, 0.625, 0, 1}, 8);
    first[a] = v[a];
    first[b] = v[b];
    TRenderCPU::VAR_DATA second[3];
    second[o] = Record({1, -0.125, 0, 1}, 16);
    second[a] = first[o];
    second[b] = v[b];

    m_Fragment->Seen.clear();
    m_Scene->ClipAndRasterizeTriangle(v, 0);
    const auto whole = m_Fragment->Seen;
    m_Fragment->Seen.clear();
    m_Scene->RasterizeTriangle(first);
    EXPECT_EQ(0, std::memcmp(first, v, sizeof(first)));
    const std::size_t split = m_Fragment->Seen.size();
    m_Scene->RasterizeTriangle(second);
    const auto pieces = m_Fragment->Seen;
    ASSERT_GT(split, 10u);
    ASSERT_GT(pieces.size(), split);
    // The first piece is wholly drawn before the second is begun.
    ASSERT_EQ(pieces.size(), whole.size());
    for (std::size_t i = 0; i < whole.size(); ++i) {
      EXPECT_EQ(pieces[i].X, whole[i].X);
      EXPECT_EQ(pieces[i].Y, whole[i].Y);
      EXPECT_SAME_BITS(pieces[i].Depth, whole[i].Depth);
      ExpectVec(pieces[i].Slots[1], whole[i].Slots[1]);
      EXPECT_EQ(pieces[i].FrontFacing, whole[i].FrontFacing);
    }
  }
}

TEST_F(Clipping, ATriangleWhoseCornersLieOutsideDifferentPlanesShows) {
  TRenderCPU::VAR_DATA v[3] = {Record({-9, -9, 0, 1}, 0), Record({9, -9, 0, 1}, 0),
                               Record({0, 18, 0, 1}, 0)};
  m_Scene->ClipAndRasterizeTriangle(v, 0);
  EXPECT_EQ(64u, m_Fragment->Seen.size()); // every pixel once
  std::array<int, 64> hits{};
  for (const TSeenFragment& f : m_Fragment->Seen) {
    ++hits[static_cast<std::size_t>(f.Y * 8 + f.X)];
    EXPECT_TRUE(f.FrontFacing);
  }
  for (const int h : hits) {
    EXPECT_EQ(1, h);
  }
}

TEST_F(Clipping, PiecesKeepTheirWinding) {
  for (const bool ccw : {true, false}) {
    TRenderCPU::VAR_DATA v[3] = {Record({-3, -2, 0.5, 1}, 0), Record({2, -3, 2, 1}, 0),
                                 Record({0.5, 3, -2, 1}, 0)};
    if (!ccw) {
      std::swap(v[0], v[1]);
    }
    m_Fragment->Seen.clear();
    m_Scene->ClipAndRasterizeTriangle(v, 0);
    ASSERT_GT(m_Fragment->Seen.size(), 10u);
    for (const TSeenFragment& f : m_Fragment->Seen) {
      EXPECT_EQ(ccw, f.FrontFacing);
    }
  }
}

TEST_F(Clipping, WildRecordsStayInsideTheTargets) {
  const double wild[] = {0.0, -0.0, 1.0, -1.0, 1e308, -1e308, 1e-308, kInf, -kInf, kNan};
  unsigned int n = 1;
  const auto next = [&] {
    n = n * 1664525u + 1013904223u;
    return wild[(n >> 16) % std::size(wild)];
  };
  for (int i = 0; i < 20000; ++i) {
    TRenderCPU::VAR_DATA v[3];
    for (auto& record : v) {
      record = Record({next(), next(), next(), next()}, next());
    }
    TRenderCPU::VAR_DATA w[3] = {v[0], v[1], v[2]};
    TRenderCPU::VAR_DATA p = v[0];
    m_Scene->ClipAndRasterizeTriangle(v, i % 7);
    m_Scene->ClipAndRasterizeLine(w, i % 7);
    m_Scene->ClipAndRasterizePoint(&p);
    m_Fragment->Seen.clear();
  }
  const auto ends = {m_Scene->m_ColorSurface, m_Scene->m_DepthSurface, m_Scene->m_StencilSurface};
  for (const TDataSurface* s : ends) {
    for (int i = 0; i < s->RowStride + s->PixelStride; ++i) {
      ASSERT_EQ(0, s->Data[s->DataSize + static_cast<std::uint64_t>(i)]);
    }
  }
}

// --- The recursion, plane by plane

bool IsOutside(const TVec4& at, int plane) {
  const double u = at[static_cast<std::size_t>(plane / 2)];
  return !(plane % 2 == 0 ? u >= -at.w : u <= at.w);
}

// `o` mixed towards `i`, of which the plane cuts off the first.
TRenderCPU::VAR_DATA Cut(const TRenderCPU::VAR_DATA& o, const TRenderCPU::VAR_DATA& i, int plane) {
  const auto axis = static_cast<std::size_t>(plane / 2);
  const double u = o[0][axis];
  const double w = o[0].w;
  const double t = plane % 2 == 0 ? (u + w) / (((u - i[0][axis]) + w) - i[0].w)
                                  : (u - w) / (((u - i[0][axis]) - w) + i[0].w);
  TRenderCPU::VAR_DATA mixed = o;
  for (std::size_t s = 0; s < 2; ++s) {
    for (std::size_t c = 0; c < 4; ++c) {
      mixed[s][c] = (i[s][c] - o[s][c]) * t + o[s][c];
    }
  }
  return mixed;
}

// Draws the pieces of a triangle, one plane a level; returns how many there are.
int DrawPieces(TRenderCPU* gl, TRenderCPU::VAR_DATA* v, int plane) {
  if (plane == 6) {
    gl->RasterizeTriangle(v);
    return 1;
  }
  std::vector<int> outside;
  std::vector<int> inside;
  for (int i = 0; i < 3; ++i) {
    (IsOutside(v[i][0], plane) ? outside : inside).push_back(i);
  }
  if (inside.empty()) {
    return 0;
  }
  if (outside.size() == 2) {
    for (const int o : outside) {
      v[o] = Cut(v[o], v[inside[0]], plane);
    }
  } else if (outside.size() == 1) {
    const int o = outside[0];
    const int a = (o + 1) % 3;
    const int b = (o + 2) % 3;
    TRenderCPU::VAR_DATA second[3];
    second[o] = Cut(v[o], v[b], plane);
    v[o] = Cut(v[o], v[a], plane);
    second[a] = v[o];
    second[b] = v[b];
    const int count = DrawPieces(gl, v, plane + 1);
    return count + DrawPieces(gl, second, plane + 1);
  }
  return DrawPieces(gl, v, plane + 1);
}

bool IsSameNumber(double a, double b) {
  return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}

// Corners all round, on the planes, and next to what is none: all fragments in order, and what the
// clipper leaves in the records.
TEST_F(Clipping, PiecesAreThoseOfTheRecursion) {
  const double odd[] = {kNan, kInf, -kInf, 0.0, -0.0, 1e-310};
  std::mt19937 random(23);
  const auto real = [&random](double reach) { return reach * (random() / 2147483648.0 - 1.0); };
  int pieces[5] = {};
  for (int i = 0; i < 12000; ++i) {
    const bool onGrid = i % 3 == 0; // where many corners lie on planes
    TRenderCPU::VAR_DATA v[3];
    for (auto& record : v) {
      TVec4 at = {real(2.5), real(2.5), real(1.8), 1.2 + real(1.0)};
      for (std::size_t c = 0; c < 4; ++c) {
        at[c] = onGrid ? std::round(at[c] * 2) / 2 : at[c];
        at[c] = random() % 300 == 0 ? odd[random() % std::size(odd)] : at[c];
      }
      record = Record(at, real(4.0));
    }
    const int plane = i % 4 == 0 ? i / 4 % 7 : 0;
    TRenderCPU::VAR_DATA expected[3] = {v[0], v[1], v[2]};
    m_Fragment->Seen.clear();
    const int count = DrawPieces(&*m_Scene, expected, plane);
    ++pieces[std::min(count, 4)];
    const auto fragments = m_Fragment->Seen;
    m_Fragment->Seen.clear();
    m_Scene->ClipAndRasterizeTriangle(v, plane);
    ASSERT_EQ(fragments.size(), m_Fragment->Seen.size()) << "triangle " << i;
    for (std::size_t k = 0; k < fragments.size(); ++k) {
      const TSeenFragment& a = fragments[k];
      const TSeenFragment& b = m_Fragment->Seen[k];
      ASSERT_TRUE(a.X == b.X && a.Y == b.Y && a.FrontFacing == b.FrontFacing) << "triangle " << i;
      ASSERT_TRUE(IsSameNumber(a.Depth, b.Depth)) << "triangle " << i;
      for (std::size_t c = 0; c < 4; ++c) {
        ASSERT_TRUE(IsSameNumber(a.Slots[1][c], b.Slots[1][c])) << "triangle " << i;
      }
    }
    for (std::size_t c = 0; c < 24 && count != 0;
         ++c) { // a triangle that is dropped may stay uncut
      const double kept = expected[c / 8][c / 4 % 2][c % 4];
      ASSERT_TRUE(IsSameNumber(kept, v[c / 8][c / 4 % 2][c % 4])) << "triangle " << i;
    }
  }
  for (const int triangles : pieces) { // of none, one, two, three, and more
    EXPECT_GT(triangles, 200);
  }
}

// --- The planes of three corners at once

TEST(OutsidePlanes, OfATriangleAreThoseOfItsCornersJoined) {
  const double values[] = {
      0.0,  -0.0,  1.0,  -1.0, std::nextafter(1.0, 2.0), std::nextafter(-1.0, -2.0),
      kInf, -kInf, kNan, -kNan};
  const std::size_t count = std::size(values);
  std::vector<TVec4> corners;
  for (std::size_t i = 0; i < count * count; ++i) { // every coordinate with every w
    const double u = values[i / count];
    corners.push_back({u, values[(i + 3) % count], values[(i / 3) % count], values[i % count]});
    corners.push_back({values[(i / 7) % count], u, values[(i + 1) % count], values[i % count]});
    corners.push_back({values[(i + 5) % count], values[(i / 9) % count], u, values[i % count]});
  }
  const auto bitsOf = [](const TVec4& at) {
    unsigned int bits = 0;
    const double u[3] = {at.x, at.y, at.z};
    for (int axis = 0; axis < 3; ++axis) { // inside: at least -w, at most w
      bits |= u[axis] >= -at.w ? 0u : 1u << (2 * axis);
      bits |= u[axis] <= at.w ? 0u : 2u << (2 * axis);
    }
    return bits;
  };
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const TVec4& a = corners[i];
    const TVec4& b = corners[(i * 7 + 1) % corners.size()];
    const TVec4& c = corners[(i * 31 + 5) % corners.size()];
    const Zx3D::TJoinedPlanes planes = Zx3D::OutsidePlanes({&a, &b, &c});
    EXPECT_EQ(bitsOf(a) | bitsOf(b) | bitsOf(c), planes.Any) << "corners " << i;
    EXPECT_EQ(bitsOf(a) & bitsOf(b) & bitsOf(c), planes.All) << "corners " << i;
  }
}

} // namespace
