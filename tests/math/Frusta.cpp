#include <ZxCore3D/math/Frusta.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "math/AllocationCount.h"

namespace {

using TPoint = vec_t_<double, 3>;
using TFrustum = TFrustum_T<double>;

/// Counts and keeps what it is asked to map.
class TMap : public TZx3DTransform {
public:
  explicit TMap(std::function<TPoint(const TPoint&)> map = [](const TPoint& p) { return p; })
      : m_Map(std::move(map)) {}

  TPoint TransformPoint(const TPoint& point) const override {
    Asked.push_back(point);
    return m_Map(point);
  }

  mutable std::vector<TPoint> Asked;

private:
  std::function<TPoint(const TPoint&)> m_Map;
};

/// The box from (-1, -2, -3) to (1, 2, 3) with outward normals.
const TFrustum s_Box = {
    {{-1, 0, 0, -1}, {1, 0, 0, -1}, {0, -1, 0, -2}, {0, 1, 0, -2}, {0, 0, -1, -3}, {0, 0, 1, -3}},
    0x05};

const TPoint s_BoxCorners[8] = {{-1, -2, -3}, {1, -2, -3}, {1, 2, -3}, {-1, 2, -3},
                                {-1, -2, 3},  {1, -2, 3},  {1, 2, 3},  {-1, 2, 3}};

void ExpectPlain(const UPLAIN<double>& plain, double a, double b, double c, double d) {
  EXPECT_DOUBLE_EQ(plain.a, a);
  EXPECT_DOUBLE_EQ(plain.b, b);
  EXPECT_DOUBLE_EQ(plain.c, c);
  EXPECT_DOUBLE_EQ(plain.d, d);
}

double Distance(const UPLAIN<double>& plain, const TPoint& p) {
  return plain.a * p.x + plain.b * p.y + plain.c * p.z + plain.d;
}

TEST(CrossPlains, GivesTheCommonPoint) {
  TPoint out;
  ASSERT_TRUE(CrossPlains<double>({1, 0, 0, -2}, {0, 1, 0, -3}, {0, 0, 1, -5}, &out));
  EXPECT_EQ(out, (TPoint{2, 3, 5}));
  // x + y = 3, y + z = 5, x + z = 4: the point is (1, 2, 3). Normals need not be units.
  ASSERT_TRUE(CrossPlains<double>({1, 1, 0, -3}, {0, 1, 1, -5}, {1, 0, 1, -4}, &out));
  EXPECT_EQ(out, (TPoint{1, 2, 3}));
  // The same with two planes exchanged, which turns the sign of the determinant.
  ASSERT_TRUE(CrossPlains<double>({0, 1, 1, -5}, {1, 1, 0, -3}, {1, 0, 1, -4}, &out));
  EXPECT_EQ(out, (TPoint{1, 2, 3}));
}

TEST(CrossPlains, ADeterminantOfExactlyZeroLeavesTheOutputAlone) {
  TPoint out = {7, 8, 9};
  EXPECT_FALSE(CrossPlains<double>({1, 0, 0, 0}, {1, 0, 0, -1}, {0, 0, 1, 0}, &out));
  EXPECT_FALSE(CrossPlains<double>({1, 0, 0, 0}, {0, 1, 0, 0}, {1, 1, 0, 0}, &out));
  EXPECT_EQ(out, (TPoint{7, 8, 9}));
  // There is no tolerance.
  EXPECT_TRUE(CrossPlains<double>({1, 0, 0, 0}, {1, 1e-150, 0, 0}, {0, 0, 1, 0}, &out));
}

TEST(Frusta, GetConeGivesTheCornersInOrder) {
  TPoint corners[8];
  s_Box.GetCone(corners);
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(corners[i], s_BoxCorners[i]) << i;
  }
}

TEST(Frusta, GetConeLeavesCornersWithoutAPointAtTheOrigin) {
  TFrustum f = s_Box;
  f.Plains[5] = f.Plains[2]; // corners 4 and 5 take plane 2 twice
  TPoint corners[8];
  for (TPoint& corner : corners) {
    corner = {9, 9, 9};
  }
  f.GetCone(corners);
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(corners[i], i < 4 ? s_BoxCorners[i] : TPoint{}) << i;
  }
}

TEST(Frusta, SetConePutsPlanesThroughTheirCorners) {
  TFrustum f = {};
  f.Flags = 0x33;
  SetCone(f, s_BoxCorners);
  EXPECT_EQ(f.Flags, 0x33);
  // (q - p) x (r - p) of the triples 045, 125, 014, 236, 031, 457.
  ExpectPlain(f.Plains[0], 0, 1, 0, 2);   // (0, 0, 6) x (2, 0, 6) is along +y: on plane 2, turned
  ExpectPlain(f.Plains[1], 1, 0, 0, -1);  // (0, 4, 0) x (0, 0, 6)
  ExpectPlain(f.Plains[2], 0, -1, 0, -2); // (2, 0, 0) x (0, 0, 6)
  ExpectPlain(f.Plains[3], 0, 1, 0, -2);  // (-2, 0, 0) x (0, 0, 6)
  ExpectPlain(f.Plains[4], 0, 0, -1, -3); // (0, 4, 0) x (2, 0, 0)
  ExpectPlain(f.Plains[5], 0, 0, 1, -3);  // (2, 0, 0) x (0, 4, 0)
}

TEST(Frusta, SetConeOfCornersInOnePlaceIsNotFinite) {
  const TPoint corners[8] = {};
  TFrustum f = s_Box;
  SetCone(f, corners);
  for (const UPLAIN<double>& plain : f.Plains) {
    EXPECT_FALSE(std::isfinite(plain.a));
    EXPECT_FALSE(std::isfinite(plain.d));
  }
}

TEST(Frusta, TransformByTheIdentityKeepsAllPlanesButTheFirst) {
  const TMap identity;
  TFrustum out = {};
  Transform(s_Box, identity, &out);
  ASSERT_EQ(identity.Asked.size(), 8u);
  for (int i = 0; i < 8; ++i) {
    EXPECT_EQ(identity.Asked[static_cast<std::size_t>(i)], s_BoxCorners[i]);
  }
  EXPECT_EQ(out.Flags, 0x45);
  constexpr int through[6][4] = {{0, 1, 4, 5}, {1, 2, 5, 6}, {0, 1, 4, 5},
                                 {2, 3, 6, 7}, {0, 1, 2, 3}, {4, 5, 6, 7}};
  for (int i = 0; i < 6; ++i) {
    for (const int corner : through[i]) {
      EXPECT_NEAR(Distance(out.Plains[i], s_BoxCorners[corner]), 0, 1e-15) << i;
    }
  }
  EXPECT_EQ(out.Plains[0].b, -out.Plains[2].b);
  EXPECT_EQ(out.Plains[0].d, -out.Plains[2].d);
}

TEST(Frusta, TransformMapsInPlaceToo) {
  const TMap shift([](const TPoint& p) { return p + TPoint{10, 20, 30}; });
  TFrustum f = s_Box;
  Transform(f, shift, &f);
  EXPECT_EQ(f.Flags, 0x45);
  ExpectPlain(f.Plains[1], 1, 0, 0, -11);
  ExpectPlain(f.Plains[3], 0, 1, 0, -22);
  ExpectPlain(f.Plains[5], 0, 0, 1, -33);
}

TEST(TransformBox, MapsTheCornersInOrder) {
  const VBOX<double> box({1, 2, 3}, {4, 5, 6});
  const TMap identity;
  VBOX<double> out;
  out.Flag = true;
  Transform(box, identity, &out);
  EXPECT_EQ(out.Min, box.Min);
  EXPECT_EQ(out.Max, box.Max);
  EXPECT_TRUE(out.Flag);
  const std::vector<TPoint> corners = {{1, 2, 3}, {4, 2, 3}, {1, 5, 3}, {4, 5, 3},
                                       {1, 2, 6}, {4, 2, 6}, {1, 5, 6}, {4, 5, 6}};
  EXPECT_EQ(identity.Asked, corners);
}

TEST(TransformBox, HoldsTheMappedCorners) {
  const TMap turn([](const TPoint& p) { return TPoint{-p.y, p.x, p.z * p.z}; });
  VBOX<double> box({1, 2, -3}, {4, 5, 6});
  Transform(box, turn, &box);
  EXPECT_EQ(box.Min, (TPoint{-5, 1, 9}));
  EXPECT_EQ(box.Max, (TPoint{-2, 4, 36}));
}

TEST(TransformBox, AnEmptyBoxStaysEmptyAndAsksNothing) {
  VBOX<double> box({1, 2, 3}, {4, 5, 6});
  box.SetEmpty();
  VBOX<double> out({1, 1, 1}, {2, 2, 2});
  const TMap identity;
  Transform(box, identity, &out);
  EXPECT_TRUE(out.IsEmpty());
  EXPECT_EQ(out.Max, (TPoint{2, 2, 2}));
  EXPECT_TRUE(identity.Asked.empty());
}

VSPHERE<double> TransformSphere(const VSPHERE<double>& s, unsigned long steps, const TMap& map) {
  VSPHERE<double> out = {{0, 0, 0}, 0};
  Transform(s, steps, map, &out);
  return out;
}

TEST(TransformSphere, SampleCountFollowsTheSteps) {
  const VSPHERE<double> sphere = {{1, 2, 3}, 4};
  const auto count = [&](unsigned long steps) {
    const TMap map;
    TransformSphere(sphere, steps, map);
    return map.Asked.size();
  };
  EXPECT_EQ(count(0), 26u);
  EXPECT_EQ(count(8), 26u);
  EXPECT_EQ(count(7), 26u);
  EXPECT_EQ(count(9), (2u * 2 - 1) * 9 + 2);   // (9 + 2) / 4 = 2 rings
  EXPECT_EQ(count(10), (2u * 3 - 1) * 10 + 2); // 3 rings
  EXPECT_EQ(count(16), (2u * 4 - 1) * 16 + 2);
}

TEST(TransformSphere, SamplesLieOnRingsInOrder) {
  const VSPHERE<double> sphere = {{1, 2, 3}, 4};
  const TMap map;
  TransformSphere(sphere, 8, map);
  std::vector<TPoint> expected;
  const double longitude = 6.283185307179586 / 8;
  const double latitude = 3.141592653589793 / 4;
  for (int i = 0; i < 2; ++i) {
    const double ring = std::cos(i * latitude) * 4;
    for (int j = 0; j < 8; ++j) {
      const double x = 1 + std::cos(j * longitude) * ring;
      const double y = 2 + std::sin(j * longitude) * ring;
      expected.push_back({x, y, 3 - std::sin(i * latitude) * 4});
      if (i != 0) {
        expected.push_back({x, y, 3 + std::sin(i * latitude) * 4});
      }
    }
  }
  expected.push_back({1, 2, -1});
  expected.push_back({1, 2, 7});
  EXPECT_EQ(map.Asked, expected);
  for (const TPoint& p : map.Asked) {
    EXPECT_NEAR(length(p - TPoint{1, 2, 3}), 4, 1e-14);
  }
}

TEST(TransformSphere, ASimilarityGivesTheMappedSphere) {
  const TMap map([](const TPoint& p) { return TPoint{p.y * 2 + 1, p.x * 2, p.z * 2 - 5}; });
  const VSPHERE<double> out = TransformSphere({{1, 2, 3}, 4}, 8, map);
  EXPECT_NEAR(out.Center.x, 5, 1e-13);
  EXPECT_NEAR(out.Center.y, 2, 1e-13);
  EXPECT_NEAR(out.Center.z, 1, 1e-13);
  EXPECT_NEAR(out.Radius, 8, 1e-13);
}

TEST(TransformSphere, HoldsEveryMappedSample) {
  const TMap map([](const TPoint& p) { return TPoint{p.x * p.x, p.y * 3, std::exp(p.z)}; });
  const VSPHERE<double> out = TransformSphere({{0.5, -1, 0.25}, 1.5}, 20, map);
  double farthest = 0;
  for (const TPoint& p : map.Asked) {
    const TPoint mapped = {p.x * p.x, p.y * 3, std::exp(p.z)};
    farthest = std::max(farthest, length(mapped - out.Center));
  }
  EXPECT_DOUBLE_EQ(farthest, out.Radius);
}

TEST(TransformSphere, MapsInPlace) {
  const TMap map;
  VSPHERE<double> sphere = {{1, 2, 3}, 4};
  Transform(sphere, 8, map, &sphere);
  EXPECT_NEAR(sphere.Radius, 4, 1e-14);
}

TEST(TransformSphere, AnEmptySphereStaysEmptyAndAsksNothing) {
  VSPHERE<double> sphere = {{1, 2, 3}, 4};
  sphere.SetEmpty();
  VSPHERE<double> out = {{7, 8, 9}, 1};
  const TMap map;
  Transform(sphere, 8, map, &out);
  EXPECT_TRUE(out.IsEmpty());
  EXPECT_EQ(out.Center, (TPoint{7, 8, 9}));
  EXPECT_TRUE(map.Asked.empty());
}

TEST(TransformSphere, NoRoomForTheSamplesThrows) {
  const VSPHERE<double> sphere = {{1, 2, 3}, 4};
  VSPHERE<double> out = {{7, 8, 9}, 1};
  const TMap map;
  SetAllocationLimit(25 * 24);
  EXPECT_THROW(Transform(sphere, 8, map, &out), std::bad_alloc);
  SetAllocationLimit(0);
  EXPECT_THROW(Transform(sphere, ~0ul, map, &out), std::bad_alloc);
  EXPECT_THROW(Transform(sphere, 1ul << 33, map, &out), std::bad_alloc);
  EXPECT_EQ(out.Radius, 1);
  EXPECT_TRUE(map.Asked.empty());
}

TEST(TransformSphere, TheSamplesAreAllocatedOnce) {
  struct TPlain : TZx3DTransform {
    TPoint TransformPoint(const TPoint& point) const override { return point; }
  };
  const TPlain map;
  VSPHERE<double> out = {{0, 0, 0}, 0};
  const std::size_t before = AllocationCount();
  Transform(VSPHERE<double>{{1, 2, 3}, 4}, 50, map, &out);
  EXPECT_EQ(AllocationCount() - before, 1u);
}

} // namespace
