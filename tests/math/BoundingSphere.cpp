#include <ZxCore3D/math/private/BoundingSphere.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace {

using TPoint = vec_t_<double, 3>;

VSPHERE<double> Bounding(const std::vector<TPoint>& points) {
  VSPHERE<double> out = {{7, 8, 9}, 5};
  GetBoundingSphere(points.data(), 24, points.size(), &out);
  return out;
}

TEST(BoundingSphere, OfNoPointsIsEmpty) {
  const VSPHERE<double> out = Bounding({});
  EXPECT_TRUE(out.IsEmpty());
  EXPECT_EQ(out.Center, (TPoint{7, 8, 9}));
}

TEST(BoundingSphere, OfOnePointIsThePoint) {
  const VSPHERE<double> out = Bounding({{1e308, 2, 3}});
  EXPECT_EQ(out.Center, (TPoint{1e308, 2, 3}));
  EXPECT_EQ(out.Radius, 0);
}

TEST(BoundingSphere, OfTwoPointsIsTheirMidpointAndHalfTheirDistance) {
  const VSPHERE<double> out = Bounding({{1, 2, 3}, {3, 8, 12}});
  EXPECT_EQ(out.Center, (TPoint{2, 5, 7.5}));
  EXPECT_EQ(out.Radius, 5.5); // half of sqrt(4 + 36 + 81)
}

TEST(BoundingSphere, IsAroundTheCentreOfTheBoxAndNotTheSmallest) {
  // An equilateral triangle: the smallest sphere has its centre lower.
  const double h = std::sqrt(3.0);
  const VSPHERE<double> out = Bounding({{-1, 0, 0}, {1, 0, 0}, {0, h, 0}});
  EXPECT_EQ(out.Center, (TPoint{0, h / 2, 0}));
  EXPECT_DOUBLE_EQ(out.Radius, std::sqrt(1 + 3.0 / 4));
  EXPECT_GT(out.Radius, 2 / h);
}

TEST(BoundingSphere, StrideIsInBytes) {
  // Points seven bytes apart more than their size, so most are not aligned.
  unsigned char bytes[4 * 31];
  const TPoint points[4] = {{0, 0, 0}, {2, 0, 0}, {0, 4, 0}, {2, 4, 4}};
  for (int i = 0; i < 4; ++i) {
    std::memcpy(bytes + i * 31, &points[i], sizeof(TPoint));
  }
  VSPHERE<double> out;
  GetBoundingSphere(reinterpret_cast<const TPoint*>(bytes), 31, 4, &out);
  EXPECT_EQ(out.Center, (TPoint{1, 2, 2}));
  EXPECT_EQ(out.Radius, 3);
}

TEST(BoundingSphere, StrideOfZeroReadsTheFirstPoint) {
  const TPoint points[2] = {{1, 2, 3}, {9, 9, 9}};
  VSPHERE<double> out;
  GetBoundingSphere(points, 0, 5, &out);
  EXPECT_EQ(out.Center, points[0]);
  EXPECT_EQ(out.Radius, 0);
}

TEST(BoundingSphere, NanCoordinatesDoNotMoveTheBox) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const VSPHERE<double> out = Bounding({{0, 0, 0}, {nan, 4, 0}, {2, 0, 0}});
  EXPECT_EQ(out.Center, (TPoint{1, 2, 0}));
  EXPECT_EQ(out.Radius, std::sqrt(5.0)); // of the points that have a distance
}

} // namespace
