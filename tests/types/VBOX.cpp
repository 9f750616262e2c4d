#include <ZxCore3D/types/VBOX.h>

#include <cstdint>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include <ZxCore3D/types/VRECT.h>
#include <ZxCore3D/types/VSPHERE.h>

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

double FromBits(std::uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}

std::uint64_t BitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof(bits));
  return bits;
}

template <class T> class Bounds : public testing::Test {};
using BoundsTypes = testing::Types<VBOX<double>, VRECT<double>>;
TYPED_TEST_SUITE(Bounds, BoundsTypes);

template <class T> decltype(T::Min) AllOf(double value) {
  decltype(T::Min) point = {};
  for (std::size_t i = 0; i < sizeof(point) / sizeof(double); ++i) {
    point[i] = value;
  }
  return point;
}

TYPED_TEST(Bounds, StartsAtTheLimitsWithAClearFlag) {
  const TypeParam bounds;
  EXPECT_EQ(bounds.Min, AllOf<TypeParam>(std::numeric_limits<double>::max()));
  EXPECT_EQ(bounds.Max, AllOf<TypeParam>(std::numeric_limits<double>::lowest()));
  EXPECT_FALSE(bounds.Flag);
  EXPECT_FALSE(bounds.IsEmpty());
}

TYPED_TEST(Bounds, SetEmptyWritesTheFirstValueOnly) {
  TypeParam bounds(AllOf<TypeParam>(1), AllOf<TypeParam>(2));
  bounds.Flag = true;
  bounds.SetEmpty();
  EXPECT_TRUE(bounds.IsEmpty());
  EXPECT_EQ(BitsOf(bounds.Min.x), ~0ull);
  EXPECT_EQ(bounds.Min.y, 1);
  EXPECT_EQ(bounds.Max, AllOf<TypeParam>(2));
  EXPECT_TRUE(bounds.Flag);
}

TYPED_TEST(Bounds, EmptinessIsTheBitPatternAndNoOtherNan) {
  TypeParam bounds(AllOf<TypeParam>(1), AllOf<TypeParam>(2));
  EXPECT_FALSE(bounds.IsEmpty());
  for (const std::uint64_t bits : {0x7ff8000000000000ull, 0xfff8000000000000ull,
                                   0x7fffffffffffffffull, 0xfffffffffffffffeull, 0ull}) {
    bounds.Min.x = FromBits(bits);
    EXPECT_FALSE(bounds.IsEmpty()) << std::hex << bits;
  }
  bounds.Min.x = FromBits(~0ull);
  EXPECT_TRUE(bounds.IsEmpty());
  bounds.Min.x = 0;
  bounds.Min.y = FromBits(~0ull);
  bounds.Max.x = FromBits(~0ull);
  EXPECT_FALSE(bounds.IsEmpty());
}

TYPED_TEST(Bounds, ExpandOfAnEmptyOneIsThePoint) {
  TypeParam bounds(AllOf<TypeParam>(5), AllOf<TypeParam>(6));
  bounds.Flag = true;
  bounds.SetEmpty();
  bounds.Expand(AllOf<TypeParam>(1));
  EXPECT_EQ(bounds.Min, AllOf<TypeParam>(1));
  EXPECT_EQ(bounds.Max, AllOf<TypeParam>(1));
  EXPECT_TRUE(bounds.Flag);
  bounds.Flag = false;
  bounds.SetEmpty();
  bounds.Expand(AllOf<TypeParam>(1));
  EXPECT_FALSE(bounds.Flag);
}

TYPED_TEST(Bounds, ExpandGoesAxisByAxis) {
  TypeParam bounds(AllOf<TypeParam>(0), AllOf<TypeParam>(10));
  auto p = AllOf<TypeParam>(5);
  p.x = -1;
  p.y = 11;
  bounds.Expand(p);
  EXPECT_EQ(bounds.Min.x, -1);
  EXPECT_EQ(bounds.Max.x, 10);
  EXPECT_EQ(bounds.Min.y, 0);
  EXPECT_EQ(bounds.Max.y, 11);
}

TYPED_TEST(Bounds, ExpandMovesOneEndOnly) {
  // From the limits, where the minimum is above the maximum, a point moves the minimum alone.
  TypeParam bounds;
  bounds.Expand(AllOf<TypeParam>(3));
  EXPECT_EQ(bounds.Min, AllOf<TypeParam>(3));
  EXPECT_EQ(bounds.Max, AllOf<TypeParam>(std::numeric_limits<double>::lowest()));
}

TYPED_TEST(Bounds, NanCoordinatesLeaveTheirAxis) {
  TypeParam bounds(AllOf<TypeParam>(0), AllOf<TypeParam>(10));
  auto p = AllOf<TypeParam>(kNan);
  p.y = 20;
  bounds.Expand(p);
  EXPECT_EQ(bounds.Min, AllOf<TypeParam>(0));
  EXPECT_EQ(bounds.Max.x, 10);
  EXPECT_EQ(bounds.Max.y, 20);
  TypeParam nans(AllOf<TypeParam>(kNan), AllOf<TypeParam>(kNan));
  nans.Expand(AllOf<TypeParam>(1));
  EXPECT_EQ(BitsOf(nans.Min.x), BitsOf(kNan));
  EXPECT_EQ(BitsOf(nans.Max.x), BitsOf(kNan));
}

TEST(Box, ExpandReachesTheThirdAxis) {
  VBOX<double> box({0, 0, 0}, {1, 1, 1});
  box.Expand({0.5, 0.5, 2});
  box.Expand({0.5, 0.5, -2});
  EXPECT_EQ(box.Min, (vec_t_<double, 3>{0, 0, -2}));
  EXPECT_EQ(box.Max, (vec_t_<double, 3>{1, 1, 2}));
}

TEST(Sphere, IsEmptyByTheBitsOfItsRadius) {
  VSPHERE<double> sphere = {{1, 2, 3}, 4};
  EXPECT_FALSE(sphere.IsEmpty());
  sphere.Radius = kNan;
  EXPECT_FALSE(sphere.IsEmpty());
  sphere.Center.x = FromBits(~0ull);
  EXPECT_FALSE(sphere.IsEmpty());
  sphere = {{1, 2, 3}, 4};
  sphere.SetEmpty();
  EXPECT_TRUE(sphere.IsEmpty());
  EXPECT_EQ(BitsOf(sphere.Radius), ~0ull);
  EXPECT_EQ(sphere.Center, (vec_t_<double, 3>{1, 2, 3}));
}

} // namespace
