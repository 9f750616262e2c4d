#include <ZxCore3D/math/TriangleIntersection.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace {

using TPoint = vec_t_<double, 3>;
using TPoints = std::vector<TPoint>;

constexpr double kEps = 1e-9;

struct TTriangle {
  TPoint v[3];
};

/// The common part by the first form, after checking that all four forms agree and that nothing
/// behind the result is written.
TPoints Common(const TTriangle& a, const TTriangle& b, double eps = kEps) {
  const TPoint mark = {-77, -78, -79};
  TPoint out[7] = {mark, mark, mark, mark, mark, mark, mark};
  TPoint same[7] = {mark, mark, mark, mark, mark, mark, mark};
  const unsigned long count = GetIntersectTriangles(a.v, b.v, out, eps);
  EXPECT_EQ(GetIntersectTriangles(a.v[0], a.v[1], a.v[2], b.v[0], b.v[1], b.v[2], same, eps),
            count);
  EXPECT_LE(count, 6u);
  for (unsigned long i = 0; i < 7; ++i) {
    if (i >= count) {
      EXPECT_EQ(out[i], mark);
    }
    if (!std::isnan(out[i].x)) {
      EXPECT_EQ(out[i], same[i]);
    }
  }
  const bool meets = IsIntersectTriangles(a.v, b.v, eps);
  EXPECT_EQ(IsIntersectTriangles(a.v[0], a.v[1], a.v[2], b.v[0], b.v[1], b.v[2], eps), meets);
  if (count != 0) {
    EXPECT_TRUE(meets);
  }
  return TPoints(out, out + std::min(count, 7ul));
}

bool Meets(const TTriangle& a, const TTriangle& b, double eps = kEps) {
  return IsIntersectTriangles(a.v, b.v, eps);
}

bool IsNear(const TPoint& a, const TPoint& b) { return length(a - b) < 1e-12; }

/// Whether the points are those of `expected`, in that cyclic order from any start.
bool IsCycle(const TPoints& points, const TPoints& expected) {
  if (points.size() != expected.size()) {
    return false;
  }
  for (std::size_t shift = 0; shift < points.size(); ++shift) {
    bool matches = true;
    for (std::size_t i = 0; i < points.size(); ++i) {
      matches = matches && IsNear(points[(i + shift) % points.size()], expected[i]);
    }
    if (matches) {
      return true;
    }
  }
  return false;
}

// In the plane z = 0, counter-clockwise seen from above, so its normal is +z.
const TTriangle s_Floor = {{{0, 0, 0}, {8, 0, 0}, {0, 8, 0}}};

TTriangle Turned(const TTriangle& t) { return {{t.v[0], t.v[2], t.v[1]}}; }

TTriangle Rotated(const TTriangle& t, int by) {
  return {{t.v[by % 3], t.v[(by + 1) % 3], t.v[(by + 2) % 3]}};
}

TEST(TriangleIntersection, CrossingTrianglesGiveTheEndsOfTheirSegment) {
  // In the plane y = 2, crossing z = 0 from x = 1 to x = 3.
  const TTriangle wall = {{{2, 2, 2}, {0, 2, -2}, {4, 2, -2}}};
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) {
      for (const TTriangle& w : {Rotated(wall, i), Turned(Rotated(wall, i))}) {
        const TPoints points = Common(Rotated(s_Floor, j), w);
        ASSERT_EQ(points.size(), 2u);
        const bool isForward = points[0].x < points[1].x;
        EXPECT_TRUE(IsNear(points[isForward ? 0 : 1], {1, 2, 0}));
        EXPECT_TRUE(IsNear(points[isForward ? 1 : 0], {3, 2, 0}));
      }
    }
  }
}

TEST(TriangleIntersection, PartialOverlapOnTheCommonLineIsClamped) {
  // Crosses z = 0 from x = 3 to x = 11 at y = 2; the floor ends at x = 6 there.
  const TTriangle wall = {{{7, 2, 4}, {-1, 2, -4}, {15, 2, -4}}};
  const TPoints points = Common(s_Floor, wall);
  ASSERT_EQ(points.size(), 2u);
  EXPECT_NEAR(std::min(points[0].x, points[1].x), 3, 1e-12);
  EXPECT_NEAR(std::max(points[0].x, points[1].x), 6, 1e-12);
}

TEST(TriangleIntersection, SegmentsApartOnTheCommonLineDoNotMeet) {
  const TTriangle wall = {{{20, 2, 4}, {16, 2, -4}, {24, 2, -4}}};
  EXPECT_FALSE(Meets(s_Floor, wall));
  EXPECT_TRUE(Common(s_Floor, wall).empty());
}

TEST(TriangleIntersection, TouchingEndsOnTheCommonLineMeet) {
  // At y = 0 the floor reaches to x = 8, and the wall crosses from x = 8 to x = 12. An edge of the
  // floor lies on the wall's plane, so the wall must turn its back on the floor's third vertex.
  const TTriangle wall = {{{10, 0, 2}, {6, 0, -2}, {14, 0, -2}}};
  for (const TTriangle& w : {wall, Turned(wall)}) {
    const TPoints points = Common(s_Floor, w);
    // (w.v[1] - w.v[0]) x (w.v[2] - w.v[0]) points along y.
    const bool isFloorBelow = cross(w.v[1] - w.v[0], w.v[2] - w.v[0]).y < 0;
    if (isFloorBelow) {
      ASSERT_EQ(points.size(), 1u);
      EXPECT_EQ(points[0], (TPoint{8, 0, 0}));
    } else {
      EXPECT_TRUE(points.empty());
    }
    EXPECT_EQ(Meets(s_Floor, w), isFloorBelow);
  }
}

TEST(TriangleIntersection, OneVertexOnThePlaneFromBelowGivesAPoint) {
  const TTriangle below = {{{2, 2, 0}, {1, 2, -3}, {3, 2, -3}}};
  for (int i = 0; i < 3; ++i) {
    const TPoints points = Common(Rotated(below, i), s_Floor);
    ASSERT_EQ(points.size(), 1u);
    EXPECT_EQ(points[0], (TPoint{2, 2, 0}));
  }
  // "Below" is the side that the normal points away from.
  EXPECT_TRUE(Common(below, Turned(s_Floor)).empty());
}

TEST(TriangleIntersection, OneVertexOnThePlaneFromAboveMisses) {
  const TTriangle above = {{{2, 2, 0}, {1, 2, 3}, {3, 2, 3}}};
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(Common(Rotated(above, i), s_Floor).empty());
    EXPECT_FALSE(Meets(Rotated(above, i), s_Floor));
  }
  EXPECT_EQ(Common(above, Turned(s_Floor)).size(), 1u);
}

TEST(TriangleIntersection, AnEdgeOnThePlaneFollowsTheSameRule) {
  const TTriangle below = {{{1, 2, 0}, {3, 2, 0}, {2, 2, -3}}};
  const TTriangle above = {{{1, 2, 0}, {3, 2, 0}, {2, 2, 3}}};
  EXPECT_EQ(Common(s_Floor, below).size(), 2u);
  EXPECT_TRUE(Common(s_Floor, above).empty());
}

TEST(TriangleIntersection, TwoSinglePointsOnTheLineGiveANan) {
  // The floor's corner (0, 0, 0) stands on the plane of `a`, and a corner of `a` on the floor's.
  const TTriangle floor = {{{0, 0, 0}, {4, -4, 0}, {4, -8, 0}}};
  for (const double x : {0.0, 3.0}) {
    TTriangle a = {{{x, 0, 0}, {x + 1, 0, -3}, {x - 1, 0, -3}}};
    if (cross(a.v[1] - a.v[0], a.v[2] - a.v[0]).y < 0) {
      a = Turned(a);
    }
    const TTriangle up =
        cross(floor.v[1] - floor.v[0], floor.v[2] - floor.v[0]).z > 0 ? floor : Turned(floor);
    const TPoints points = Common(a, up);
    ASSERT_EQ(points.size(), 1u) << x;
    EXPECT_TRUE(std::isnan(points[0].x));
    EXPECT_TRUE(std::isnan(points[0].z));
  }
}

TEST(TriangleIntersection, ParallelPlanesApartDoNotMeet) {
  const TTriangle higher = {{{0, 0, 1}, {8, 0, 1}, {0, 8, 1}}};
  EXPECT_TRUE(Common(s_Floor, higher).empty());
  EXPECT_FALSE(Meets(s_Floor, higher));
  EXPECT_TRUE(Common(s_Floor, Turned(higher)).empty());
  EXPECT_FALSE(Meets(s_Floor, Turned(higher)));
}

TEST(TriangleIntersection, EpsDecidesWhenParallelPlanesAreOne) {
  const auto at = [](double z) { return TTriangle{{{0, 0, z}, {8, 0, z}, {0, 8, z}}}; };
  EXPECT_TRUE(Meets(at(1), at(1.25), 0.25));
  EXPECT_FALSE(Meets(at(1), at(1.25), 0.125));
  // With the normals opposite, the offsets -1.25 and 1 are compared with the sign turned.
  EXPECT_TRUE(Meets(at(1), Turned(at(1.25)), 0.25));
  EXPECT_FALSE(Meets(at(1), Turned(at(1.25)), 0.125));
  EXPECT_FALSE(Meets(at(1), Turned(at(-1)), 0.25));
  // What is found lies in the plane of the first.
  const TPoints points = Common(at(1), at(1.25), 0.25);
  ASSERT_EQ(points.size(), 3u);
  EXPECT_EQ(points[0].z, 1);
}

TEST(TriangleIntersection, EpsOf1LeavesOnlyRightAnglesToTheGeneralCase) {
  // At a right angle, and crossing.
  const TTriangle wall = {{{2, 2, 2}, {0, 2, -2}, {4, 2, -2}}};
  EXPECT_EQ(Common(s_Floor, wall, 1).size(), 2u);
  // Tilted, and crossing: with offsets apart by more than 1 there is no contact any more.
  const TTriangle tilted = {{{2, 2, 2}, {0, 1, -2}, {4, 1, -2}}};
  EXPECT_EQ(Common(s_Floor, tilted, kEps).size(), 2u);
  EXPECT_NE(dot(cross(tilted.v[1] - tilted.v[0], tilted.v[2] - tilted.v[0]), TPoint{0, 0, 1}), 0);
  EXPECT_TRUE(Common(s_Floor, tilted, 1).empty());
  // Far apart in the general case, but with offsets within 1 of each other: decided as coplanar.
  const TTriangle flat = {{{1, 1, 0.5}, {3, 1, 0.75}, {1, 3, 0.5}}};
  EXPECT_FALSE(Meets(s_Floor, flat, kEps));
  EXPECT_TRUE(Meets(s_Floor, flat, 1));
}

TEST(TriangleIntersection, TheBoundOfTheGeneralCaseBelongsToIt) {
  // The cosine of the angle is exactly 0.6 and -0.6.
  const TTriangle tilted = {{{2, 1, -4}, {3, 1, -4}, {2, 7, 4}}};
  const double c =
      dot(cross(tilted.v[1] - tilted.v[0], tilted.v[2] - tilted.v[0]), TPoint{0, 0, 1}) /
      length(cross(tilted.v[1] - tilted.v[0], tilted.v[2] - tilted.v[0]));
  ASSERT_EQ(c, 0.6);
  const double bound = 0.4;
  ASSERT_EQ(1 - bound, 0.6);
  EXPECT_EQ(Common(s_Floor, tilted, bound).size(), 2u);
  EXPECT_EQ(Common(s_Floor, Turned(tilted), bound).size(), 2u);
  // A little more and the pair counts as parallel; the offsets 0 and 3.2 are too far apart.
  EXPECT_TRUE(Common(s_Floor, tilted, 0.41).empty());
  EXPECT_TRUE(Common(s_Floor, Turned(tilted), 0.41).empty());
}

TEST(TriangleIntersection, CollinearVerticesMeetNothing) {
  const TTriangle line = {{{1, 1, -1}, {1, 1, 0}, {1, 1, 1}}};
  const TTriangle point = {{{1, 1, 0}, {1, 1, 0}, {1, 1, 0}}};
  for (const TTriangle& t : {line, point}) {
    EXPECT_TRUE(Common(s_Floor, t).empty());
    EXPECT_TRUE(Common(t, s_Floor).empty());
    EXPECT_FALSE(Meets(t, t));
  }
}

TEST(TriangleIntersection, IdenticalTrianglesGiveTheTriangle) {
  const TPoints expected(s_Floor.v, s_Floor.v + 3);
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(IsCycle(Common(s_Floor, Rotated(s_Floor, i)), expected));
  }
  // The vertices come in the order of the second triangle.
  const TTriangle turned = Turned(s_Floor);
  EXPECT_TRUE(IsCycle(Common(s_Floor, turned), TPoints(turned.v, turned.v + 3)));
}

TEST(TriangleIntersection, StarOfDavidGivesSixPoints) {
  const TTriangle up = {{{-6, -3, 5}, {6, -3, 5}, {0, 9, 5}}};
  const TTriangle down = {{{6, 5, 5}, {-6, 5, 5}, {0, -7, 5}}};
  // At y = 5 the sides of `up` stand at x = -2 and 2, at y = -3 those of `down`; the slanted sides
  // cross at y = 1, x = -4 and 4.
  const TPoints expected = {{2, 5, 5}, {-2, 5, 5}, {-4, 1, 5}, {-2, -3, 5}, {2, -3, 5}, {4, 1, 5}};
  EXPECT_TRUE(IsCycle(Common(up, down), expected));
}

/// A vertex in the plane, from its two coordinates.
TPoint Flat(double x, double y) { return {x, y, 0}; }

/// The polygon that is left of `b`, clipped by the three edges of `a`, in the order in which the
/// definition makes it and of any number of vertices. For pairs in the plane z = 0 whose `a` begins
/// at the origin with an edge along x, where the plane's own coordinates are x and y themselves.
TPoints ClippedByDefinition(const TTriangle& a, const TTriangle& b) {
  TPoints polygon(b.v, b.v + 3);
  for (int t = 0; t < 3; ++t) {
    const TPoint& p = a.v[t];
    const TPoint& q = a.v[(t + 1) % 3];
    std::vector<double> s;
    for (const TPoint& w : polygon) {
      s.push_back((q.x - p.x) * (w.y - p.y) - (q.y - p.y) * (w.x - p.x));
    }
    TPoints clipped;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
      const std::size_t before = (i + polygon.size() - 1) % polygon.size();
      if ((s[i] < 0 && s[before] > 0) || (s[i] > 0 && s[before] < 0)) {
        const double part = s[before] / (s[before] - s[i]);
        clipped.push_back(Flat(polygon[before].x + (polygon[i].x - polygon[before].x) * part,
                               polygon[before].y + (polygon[i].y - polygon[before].y) * part));
      }
      if (s[i] >= 0) {
        clipped.push_back(polygon[i]);
      }
    }
    polygon = clipped;
  }
  return polygon;
}

// By rounding a crossing comes out on the wrong side of a line that it nearly lies on, and the
// polygon bends inwards there: the last edge then cuts it four times. There is room for six points,
// and the first six are given; `Common` sees to it that nothing stands behind them.
TEST(TriangleIntersection, OfSevenPointsTheFirstSixAreGiven) {
  const TTriangle pairs[][2] = {
      {{{Flat(0, 0), Flat(0x1.d465210b58529p-1, 0),
         Flat(0x1.0a2c89199d1ecp-2, 0x1.31fdb87a44a0cp-1)}},
       {{Flat(0x1.94f2f6c7d007cp+0, -0x1.37a4febd79ef3p-1),
         Flat(0x1.487d19ddad0cp-1, 0x1.feb21d7c7bc7ep-3),
         Flat(0x1.da8fc3a97f28ap-3, 0x1.3f2cb11f082a1p-1)}}},
      {{{Flat(0, 0), Flat(0x1.37b686bc8badep-1, 0),
         Flat(0x1.673f317180614p-2, 0x1.3b8e64fded362p-1)}},
       {{Flat(0x1.59e17a1d35713p-2, 0x1.4b858f561f29ep-1),
         Flat(0x1.640beb4b704a4p-1, -0x1.a7a4d20fdafcdp-3),
         Flat(0x1.7fe455dfdd1d6p-2, 0x1.1e1e42eacac39p-1)}}},
      {{{Flat(0, 0), Flat(0x1.165821c0d3833p-1, 0),
         Flat(-0x1.4c5f5fbb35b5fp-1, 0x1.fff42cb14a042p-1)}},
       {{Flat(-0x1.d3ee9674e30ep-1, 0x1.6860c946be29bp+0),
         Flat(-0x1.1fb790f039c76p-1, 0x1.bb2bbfa5cce65p-1),
         Flat(0x1.aca20dadea71p-3, -0x1.4a1ca9089d9d9p-2)}}},
  };
  for (const auto& pair : pairs) {
    const TPoints all = ClippedByDefinition(pair[0], pair[1]);
    ASSERT_EQ(all.size(), 7u);
    const TPoints common = Common(pair[0], pair[1]);
    ASSERT_EQ(common.size(), 6u);
    for (std::size_t i = 0; i < 6; ++i) {
      EXPECT_EQ(common[i], all[i]) << i;
    }
  }
}

TEST(TriangleIntersection, CoplanarTrianglesApartDoNotMeet) {
  const TTriangle apart = {{{0, -1, 0}, {8, -1, 0}, {0, -9, 0}}};
  EXPECT_TRUE(Common(s_Floor, apart).empty());
  EXPECT_FALSE(Meets(s_Floor, apart));
}

TEST(TriangleIntersection, ContainedTriangleComesOutWhole) {
  const TTriangle inner = {{{1, 1, 0}, {3, 1, 0}, {1, 3, 0}}};
  EXPECT_TRUE(IsCycle(Common(s_Floor, inner), TPoints(inner.v, inner.v + 3)));
}

TEST(TriangleIntersection, TheRunningCountRejectsPairsThatOverlap) {
  const TTriangle a = {{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}};
  const TTriangle b = {{{-1, -1, 0}, {3, -1, 0}, {-1, 3, 0}}};
  // Edge 0 of `a` (y >= 0): two vertices of `b` outside, total 2 of 3. The clip leaves the triangle
  // (2, 0), (-1, 3), (-1, 0). Edge 1 (x + y <= 4): none outside, total 2 of 3, clipped to itself.
  // Edge 2 (x >= 0): two outside, total 4 of 3: clipped to (2, 0), (0, 2), (0, 0).
  EXPECT_TRUE(IsCycle(Common(a, b), {{2, 0, 0}, {0, 2, 0}, {0, 0, 0}}));
  // One vertex outside each of two edges, and none outside the third: totals 1 of 3 and 2 of 4,
  // then 2 of whatever is left.
  const TTriangle c = {{{1, -1, 0}, {2, 1, 0}, {-1, 1, 0}}};
  EXPECT_EQ(Common(a, c).size(), 4u);
  // Two outside the first edge, one outside the second, where three vertices are left: 3 of 3.
  const TTriangle d = {{{-1, -1, 0}, {9, -1, 0}, {1, 2, 0}}};
  // Clipped by y >= 0: (17/3, 0), (1, 2), (-1/3, 0); of these one lies outside x + y <= 4.
  EXPECT_FALSE(Meets(a, d));
  EXPECT_TRUE(Common(a, d).empty());
  // The same pair with `a` starting at another vertex: 1 of 3, 2 of 4, 4 of 5.
  EXPECT_TRUE(IsCycle(Common(Rotated(a, 1), d),
                      {{0, 0, 0}, {4, 0, 0}, {2.6, 1.4, 0}, {1, 2, 0}, {0, 0.5, 0}}));
}

TEST(TriangleIntersection, TheYesCanStandWhereNothingIsLeft) {
  const TTriangle a = {{{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}};
  // Outside of the first edge twice (2 of 3, three are left), of the second not at all, of the
  // third with all that is left: 5 of 3. Clipped to nothing, but not rejected.
  const TTriangle b = {{{-3, -1, 0}, {-2, -1, 0}, {-3, 1, 0}}};
  EXPECT_TRUE(Meets(a, b));
  EXPECT_TRUE(Common(a, b).empty());
}

TEST(TriangleIntersection, NanVerticesEndQuietly) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  for (int i = 0; i < 3; ++i) {
    for (std::size_t k = 0; k < 3; ++k) {
      TTriangle t = s_Floor;
      t.v[i][k] = nan;
      TPoint out[6];
      EXPECT_LE(GetIntersectTriangles(s_Floor.v, t.v, out, kEps), 6u);
      EXPECT_LE(GetIntersectTriangles(t.v, s_Floor.v, out, kEps), 6u);
      EXPECT_LE(GetIntersectTriangles(t.v, t.v, out, kEps), 6u);
    }
  }
}

} // namespace
