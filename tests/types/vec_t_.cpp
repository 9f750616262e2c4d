#include <ZxCore3D/types/vec_t_.h>

#include <cmath>
#include <limits>

#include <gtest/gtest.h>

#include <ZxCore3D/types/UPLAIN.h>

namespace {

using TVec2 = vec_t_<double, 2>;
using TVec3 = vec_t_<double, 3>;
using TVec4 = vec_t_<double, 4>;

TEST(Vector, NamesAndIndicesAreTheSameElements) {
  TVec4 v = {1, 2, 3, 4};
  EXPECT_EQ(v[0], v.x);
  EXPECT_EQ(v[1], v.y);
  EXPECT_EQ(v[2], v.z);
  EXPECT_EQ(v[3], v.w);
  v[2] = 7;
  EXPECT_EQ(v.z, 7);
  v.w = 8;
  EXPECT_EQ(v[3], 8);
  vec_t_<int, 2> size = {640, 480};
  EXPECT_EQ(size[0], size.x);
  EXPECT_EQ(size[1], size.y);
  TVec3 t = {1, 2, 3};
  t[1] = 5;
  EXPECT_EQ(t.y, 5);
}

TEST(Vector, SumDifferenceAndScalingGoElementByElement) {
  EXPECT_EQ((TVec3{1, 2, 3} + TVec3{10, 20, 30}), (TVec3{11, 22, 33}));
  EXPECT_EQ((TVec3{1, 2, 3} - TVec3{10, 20, 40}), (TVec3{-9, -18, -37}));
  EXPECT_EQ((TVec4{1, 2, 3, 4} * 2.0), (TVec4{2, 4, 6, 8}));
  EXPECT_EQ((0.5 * TVec2{1, 2}), (TVec2{0.5, 1}));
  EXPECT_EQ((vec_t_<int, 3>{1, 2, 3} - vec_t_<int, 3>{3, 2, 1}), (vec_t_<int, 3>{-2, 0, 2}));
  EXPECT_EQ((vec_t_<float, 4>{1, 2, 3, 4} + vec_t_<float, 4>{1, 1, 1, 1}),
            (vec_t_<float, 4>{2, 3, 4, 5}));
}

TEST(Vector, ComparesEveryElement) {
  EXPECT_TRUE((TVec3{1, 2, 3} == TVec3{1, 2, 3}));
  EXPECT_FALSE((TVec3{1, 2, 3} == TVec3{1, 2, 4}));
  EXPECT_TRUE((TVec3{1, 2, 3} != TVec3{0, 2, 3}));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE((TVec2{nan, 0} != TVec2{nan, 0}));
}

TEST(Vector, DotSumsInTheOrderXYZ) {
  EXPECT_EQ(dot(TVec3{1, 2, 3}, TVec3{4, 5, 6}), 32);
  EXPECT_EQ(dot(TVec4{1, 2, 3, 4}, TVec4{5, 6, 7, 8}), 70);
  EXPECT_EQ(dot(TVec2{3, 4}, TVec2{5, 6}), 39);
  // (1e16 + 1) - 1e16 is 0, since 1e16 + 1 rounds to 1e16; any other order gives 1.
  EXPECT_EQ(dot(TVec3{1e16, 1, -1e16}, TVec3{1, 1, 1}), 0.0);
  EXPECT_EQ(dot(TVec3{1e16, -1e16, 1}, TVec3{1, 1, 1}), 1.0);
}

TEST(Vector, CrossHasItsSigns) {
  EXPECT_EQ(cross(TVec3{1, 0, 0}, TVec3{0, 1, 0}), (TVec3{0, 0, 1}));
  EXPECT_EQ(cross(TVec3{0, 1, 0}, TVec3{0, 0, 1}), (TVec3{1, 0, 0}));
  EXPECT_EQ(cross(TVec3{2, 3, 5}, TVec3{7, 11, 13}), (TVec3{39 - 55, 35 - 26, 22 - 21}));
}

TEST(Vector, LengthIsTheRootOfTheSumOfSquares) {
  EXPECT_EQ(length(TVec2{3, 4}), 5);
  EXPECT_EQ(length(TVec3{2, 3, 6}), 7);
  EXPECT_EQ(length(TVec4{2, 4, 5, 6}), 9);
  // No scaling: the square of 1e200 is beyond the range.
  EXPECT_EQ(length(TVec2{1e200, 0}), std::numeric_limits<double>::infinity());
}

TEST(Plane, ThroughThreePointsHasAUnitNormal) {
  const UPLAIN<double> plain = PlainThrough<double>({0, 0, 2}, {4, 0, 2}, {0, 4, 2});
  EXPECT_EQ(plain.a, 0);
  EXPECT_EQ(plain.b, 0);
  EXPECT_EQ(plain.c, 1);
  EXPECT_EQ(plain.d, -2);
  const UPLAIN<double> back = PlainThrough<double>({0, 0, 2}, {0, 4, 2}, {4, 0, 2});
  EXPECT_EQ(back.c, -1);
  EXPECT_EQ(back.d, 2);
}

TEST(Plane, AllFourValuesAreMultipliedByOneOverTheLength) {
  const TVec3 p = {0.3, -1.7, 2.9};
  const TVec3 q = {4.1, 0.2, -0.6};
  const TVec3 r = {-2.2, 3.3, 1.1};
  const UPLAIN<double> plain = PlainThrough(p, q, r);
  const double ux = q.x - p.x, uy = q.y - p.y, uz = q.z - p.z;
  const double vx = r.x - p.x, vy = r.y - p.y, vz = r.z - p.z;
  const double nx = uy * vz - uz * vy;
  const double ny = uz * vx - ux * vz;
  const double nz = ux * vy - uy * vx;
  const double d = -(p.x * nx + p.y * ny + p.z * nz);
  const double factor = 1.0 / std::sqrt(nx * nx + ny * ny + nz * nz);
  EXPECT_EQ(plain.a, nx * factor);
  EXPECT_EQ(plain.b, ny * factor);
  EXPECT_EQ(plain.c, nz * factor);
  EXPECT_EQ(plain.d, d * factor);
  for (const TVec3& point : {p, q, r}) {
    EXPECT_NEAR(plain.a * point.x + plain.b * point.y + plain.c * point.z + plain.d, 0, 1e-14);
  }
}

TEST(Plane, ADegenerateTripleIsNotTested) {
  const UPLAIN<double> onePoint = PlainThrough<double>({1, 1, 1}, {1, 1, 1}, {1, 1, 1});
  EXPECT_TRUE(std::isnan(onePoint.a));
  EXPECT_TRUE(std::isnan(onePoint.d));
  const UPLAIN<double> line = PlainThrough<double>({0, 0, 0}, {1, 1, 1}, {2, 2, 2});
  EXPECT_FALSE(std::isfinite(line.b));
}

} // namespace
