// The memory that callers hand in and out, by offset.

#include <cstddef>
#include <cstring>
#include <type_traits>

#include <gtest/gtest.h>

#include <ZxCore3D/types/COLORRGBA.h>
#include <ZxCore3D/types/MAT3.h>
#include <ZxCore3D/types/MAT4.h>
#include <ZxCore3D/types/POLYNOM3.h>
#include <ZxCore3D/types/SYMMAT4.h>
#include <ZxCore3D/types/TFrustum_T.h>
#include <ZxCore3D/types/TZx3DTransform.h>
#include <ZxCore3D/types/UPLAIN.h>
#include <ZxCore3D/types/VBOX.h>
#include <ZxCore3D/types/VRECT.h>
#include <ZxCore3D/types/VSPHERE.h>
#include <ZxCore3D/types/vec_t_.h>

namespace {

template <class T> class Plain : public testing::Test {};

using PlainTypes =
    testing::Types<vec_t_<double, 2>, vec_t_<double, 3>, vec_t_<double, 4>, vec_t_<float, 2>,
                   vec_t_<float, 3>, vec_t_<float, 4>, vec_t_<int, 2>, vec_t_<int, 3>, MAT3<double>,
                   MAT4<double>, MAT4<float>, SYMMAT4<double>, UPLAIN<double>, VSPHERE<double>,
                   TFrustum_T<double>, COLORRGBA, COLORRGBA_F, POLYNOM3, VBOX<double>,
                   VRECT<double>>;
TYPED_TEST_SUITE(Plain, PlainTypes);

TYPED_TEST(Plain, IsCopiedByItsBytes) {
  EXPECT_TRUE(std::is_trivially_copyable_v<TypeParam>);
  EXPECT_TRUE(std::is_standard_layout_v<TypeParam>);
  EXPECT_FALSE(std::is_polymorphic_v<TypeParam>);
}

/// Whether the object's bytes are `N` values of `T` counting up from 1, and nothing else.
template <class T, std::size_t N, class TObject> void ExpectCounting(const TObject& object) {
  ASSERT_EQ(sizeof(TObject), N * sizeof(T));
  T values[N];
  std::memcpy(values, &object, sizeof(values));
  for (std::size_t i = 0; i < N; ++i) {
    EXPECT_EQ(values[i], static_cast<T>(i + 1));
  }
}

TEST(Layout, VectorsAreTheirElements) {
  ExpectCounting<double, 2>(vec_t_<double, 2>{1, 2});
  ExpectCounting<double, 3>(vec_t_<double, 3>{1, 2, 3});
  ExpectCounting<double, 4>(vec_t_<double, 4>{1, 2, 3, 4});
  ExpectCounting<float, 2>(vec_t_<float, 2>{1, 2});
  ExpectCounting<float, 3>(vec_t_<float, 3>{1, 2, 3});
  ExpectCounting<float, 4>(vec_t_<float, 4>{1, 2, 3, 4});
  ExpectCounting<int, 2>(vec_t_<int, 2>{1, 2});
  ExpectCounting<int, 3>(vec_t_<int, 3>{1, 2, 3});
  ExpectCounting<double, 5>(vec_t_<double, 5>{{1, 2, 3, 4, 5}});
}

TEST(Layout, AnArrayOfVectorsIsAFlatArray) {
  const vec_t_<double, 3> points[2] = {{1, 2, 3}, {4, 5, 6}};
  ExpectCounting<double, 6>(points);
}

TEST(Layout, MatricesAreTheirValues) {
  ExpectCounting<double, 9>(MAT3<double>{{1, 2, 3, 4, 5, 6, 7, 8, 9}});
  ExpectCounting<double, 16>(MAT4<double>{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}});
  ExpectCounting<float, 16>(MAT4<float>{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16}});
  ExpectCounting<double, 10>(SYMMAT4<double>{{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}});
}

TEST(Layout, IndexIsMemoryOrder) {
  MAT4<double> m4 = {};
  m4[12] = 5;
  EXPECT_EQ(reinterpret_cast<const double*>(&m4)[12], 5);
  MAT3<double> m3 = {};
  m3[7] = 5;
  EXPECT_EQ(reinterpret_cast<const double*>(&m3)[7], 5);
  SYMMAT4<double> s = {};
  s[9] = 5;
  EXPECT_EQ(reinterpret_cast<const double*>(&s)[9], 5);
}

TEST(Layout, PlanesSpheresAndPolynomials) {
  ExpectCounting<double, 4>(UPLAIN<double>{1, 2, 3, 4});
  ExpectCounting<double, 4>(VSPHERE<double>{{1, 2, 3}, 4});
  ExpectCounting<double, 4>(POLYNOM3{1, 2, 3, 4});
  const POLYNOM3 p = {1, 2, 3, 4};
  EXPECT_EQ(p.a, 1);
  EXPECT_EQ(p.d, 4);
  const UPLAIN<double> plain = {1, 2, 3, 4};
  EXPECT_EQ(plain.a, 1);
  EXPECT_EQ(plain.d, 4);
}

TEST(Layout, BoxIsSixValuesThenAFlagByte) {
  EXPECT_EQ(offsetof(VBOX<double>, Min), 0u);
  EXPECT_EQ(offsetof(VBOX<double>, Max), 24u);
  EXPECT_EQ(offsetof(VBOX<double>, Flag), 48u);
  EXPECT_EQ(sizeof(VBOX<double>::Flag), 1u);
  EXPECT_EQ(sizeof(VBOX<double>), 56u);
}

TEST(Layout, RectangleIsFourValuesThenAFlagByte) {
  EXPECT_EQ(offsetof(VRECT<double>, Min), 0u);
  EXPECT_EQ(offsetof(VRECT<double>, Max), 16u);
  EXPECT_EQ(offsetof(VRECT<double>, Flag), 32u);
  EXPECT_EQ(sizeof(VRECT<double>::Flag), 1u);
  EXPECT_EQ(sizeof(VRECT<double>), 40u);
}

TEST(Layout, FrustumIsSixPlanesThenAFlagsByte) {
  EXPECT_EQ(offsetof(TFrustum_T<double>, Plains), 0u);
  EXPECT_EQ(offsetof(TFrustum_T<double>, Flags), 192u);
  EXPECT_EQ(sizeof(TFrustum_T<double>::Flags), 1u);
}

TEST(Layout, ColourIsAWordWithRedInTheLowByte) {
  const COLORRGBA colour = {0x11, 0x22, 0x33, 0x44};
  unsigned int word;
  ASSERT_EQ(sizeof(colour), sizeof(word));
  std::memcpy(&word, &colour, sizeof(word));
  EXPECT_EQ(word, 0x44332211u);
  ExpectCounting<float, 4>(COLORRGBA_F{1, 2, 3, 4});
}

struct TMirror : TZx3DTransform {
  vec_t_<double, 3> TransformPoint(const vec_t_<double, 3>& point) const override {
    return {-point.x, point.y, point.z};
  }
};

TEST(Layout, ACallerSuppliesAPointMap) {
  const TMirror mirror;
  const TZx3DTransform& transform = mirror;
  EXPECT_EQ(transform.TransformPoint({1, 2, 3}), (vec_t_<double, 3>{-1, 2, 3}));
  EXPECT_TRUE(std::has_virtual_destructor_v<TZx3DTransform>);
}

} // namespace
