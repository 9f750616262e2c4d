// The forms of double and float that stand in the library, and those that its own sources inline:
// the operations as they are defined, product by product, and the same bits from either.

#include <cmath>
#include <cstring>
#include <random>

#include <gtest/gtest.h>

#include <ZxCore3D/types/MAT4.h>
#include <ZxCore3D/types/UPLAIN.h>
#include <ZxCore3D/types/private/VectorForms.h>

namespace {

template <class T> bool SameBits(const T* a, const T* b, std::size_t count) {
  return std::memcmp(a, b, count * sizeof(T)) == 0;
}

template <class T> class TLibraryForms : public testing::Test {
protected:
  T Next() { return static_cast<T>(m_Value(m_Random)); }
  template <std::size_t N> vec_t_<T, N> Vector() {
    vec_t_<T, N> v;
    for (std::size_t i = 0; i < N; ++i) {
      v[i] = Next();
    }
    return v;
  }
  /// One rounding an operation, whatever this test is compiled with.
  static T Rounded(T value) {
    volatile T stored = value;
    return stored;
  }
  template <std::size_t N> void CheckDotAndLength() {
    for (int round = 0; round < 1000; ++round) {
      const vec_t_<T, N> a = Vector<N>();
      const vec_t_<T, N> b = Vector<N>();
      T sum = Rounded(a[0] * b[0]);
      T square = Rounded(a[0] * a[0]);
      for (std::size_t i = 1; i < N; ++i) {
        sum = Rounded(sum + Rounded(a[i] * b[i]));
        square = Rounded(square + Rounded(a[i] * a[i]));
      }
      EXPECT_EQ((dot<T, N>(a, b)), sum);
      EXPECT_EQ((length<T, N>(a)), std::sqrt(square));
    }
  }

private:
  std::mt19937_64 m_Random{5};
  std::uniform_real_distribution<double> m_Value{-10.0, 10.0};
};

using Types = testing::Types<double, float>;
TYPED_TEST_SUITE(TLibraryForms, Types);

TYPED_TEST(TLibraryForms, DotAndLengthOfAnyNumberOfElements) {
  this->template CheckDotAndLength<1>();
  this->template CheckDotAndLength<2>();
  this->template CheckDotAndLength<3>();
  this->template CheckDotAndLength<4>();
  this->template CheckDotAndLength<5>();
  this->template CheckDotAndLength<9>();
}

TYPED_TEST(TLibraryForms, MatricesAreSummedLeftToRight) {
  for (int round = 0; round < 200; ++round) {
    const auto a = this->template Vector<16>();
    const auto b = this->template Vector<16>();
    TypeParam out[16];
    Mat4_Mul_Mat4(&a[0], &b[0], out);
    for (std::size_t i = 0; i < 4; ++i) {
      for (std::size_t j = 0; j < 4; ++j) {
        TypeParam sum = this->Rounded(a[4 * i] * b[j]);
        for (std::size_t k = 1; k < 4; ++k) {
          sum = this->Rounded(sum + this->Rounded(a[4 * i + k] * b[4 * k + j]));
        }
        EXPECT_EQ(out[4 * i + j], sum);
      }
    }
  }
}

TYPED_TEST(TLibraryForms, APlaneIsMadeOfTheOthers) {
  using T = TypeParam;
  for (int round = 0; round < 200; ++round) {
    const auto p = this->template Vector<3>();
    const auto q = this->template Vector<3>();
    const auto r = this->template Vector<3>();
    const vec_t_<T, 3> normal = cross<T>(q - p, r - p);
    const T scale = T(1) / length<T, 3>(normal);
    const UPLAIN<T> plane = PlainThrough<T>(p, q, r);
    EXPECT_EQ(plane.a, normal.x * scale);
    EXPECT_EQ(plane.b, normal.y * scale);
    EXPECT_EQ(plane.c, normal.z * scale);
    EXPECT_EQ(plane.d, (-dot<T, 3>(p, normal) * scale));
  }
}

using TInlinedForms = TLibraryForms<double>;

TEST_F(TInlinedForms, HaveTheSameBits) {
  for (int round = 0; round < 1000; ++round) {
    const auto a = Vector<3>();
    const auto b = Vector<3>();
    const auto c = Vector<2>();
    const auto d = Vector<2>();
    const vec_t_<double, 3> inlined = cross(a, b);
    const vec_t_<double, 3> exported = cross<double>(a, b);
    EXPECT_TRUE(SameBits(&inlined.x, &exported.x, 3));
    EXPECT_EQ(dot(a, b), (dot<double, 3>(a, b)));
    EXPECT_EQ(dot(c, d), (dot<double, 2>(c, d)));
    EXPECT_EQ(length(a), (length<double, 3>(a)));
    EXPECT_EQ(length(c), (length<double, 2>(c)));
  }
}

// Other types stay templates of the header.
TEST(OtherTypes, AreComputedByTheHeader) {
  EXPECT_EQ(dot(vec_t_<int, 3>{1, 2, 3}, vec_t_<int, 3>{4, 5, 6}), 32);
  EXPECT_EQ(cross(vec_t_<int, 3>{1, 0, 0}, vec_t_<int, 3>{0, 1, 0}), (vec_t_<int, 3>{0, 0, 1}));
  EXPECT_EQ(length(vec_t_<long double, 2>{3, 4}), 5.0L);
  const int a[16] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  int out[16];
  Mat4_Mul_Mat4(a, a, out);
  EXPECT_EQ(out[0], 1 * 1 + 2 * 5 + 3 * 9 + 4 * 13);
  EXPECT_EQ(out[15], 13 * 4 + 14 * 8 + 15 * 12 + 16 * 16);
}

} // namespace
