#include <ZxCore3D/types/MAT4.h>

#include <random>

#include <gtest/gtest.h>

#include <ZxCore3D/types/MAT3.h>

namespace {

/// Row r, column c of a column-major matrix.
double At(const MAT4<double>& m, int r, int c) { return m[static_cast<std::size_t>(c * 4 + r)]; }

TEST(Mat4, Element12IsRow0Column3) {
  MAT4<double> m = g_M4Ed;
  m[12] = 5;
  EXPECT_EQ(At(m, 0, 3), 5);
  m[1] = 7;
  EXPECT_EQ(At(m, 1, 0), 7);
}

TEST(Mat4, ExportedIdentities) {
  for (std::size_t i = 0; i < 16; ++i) {
    EXPECT_EQ(g_M4Ed[i], i % 5 == 0 ? 1.0 : 0.0);
    EXPECT_EQ(g_M4Ef[i], i % 5 == 0 ? 1.0f : 0.0f);
  }
}

TEST(Mat4, ProductOfTranslationAndScaleScalesTheTranslation) {
  MAT4<double> translation = g_M4Ed;
  translation[12] = 1;
  translation[13] = 2;
  translation[14] = 3;
  MAT4<double> scale = g_M4Ed;
  scale[0] = 10;
  scale[5] = 100;
  scale[10] = 1000;
  MAT4<double> product;
  Mat4_Mul_Mat4<double>(translation.m, scale.m, product.m);
  // scale * translation: its translation column is scaled.
  const MAT4<double> expected = {{10, 0, 0, 0, 0, 100, 0, 0, 0, 0, 1000, 0, 10, 200, 3000, 1}};
  for (std::size_t i = 0; i < 16; ++i) {
    EXPECT_EQ(product[i], expected[i]) << i;
  }
}

TEST(Mat4, ProductIsBTimesAInRowsAndColumns) {
  std::mt19937 random(3);
  std::uniform_int_distribution<int> digit(-9, 9);
  MAT4<double> a;
  MAT4<double> b;
  MAT4<double> out;
  for (std::size_t i = 0; i < 16; ++i) {
    a[i] = digit(random);
    b[i] = digit(random);
  }
  Mat4_Mul_Mat4(a.m, b.m, out.m);
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      double sum = 0;
      for (int k = 0; k < 4; ++k) {
        sum += At(b, r, k) * At(a, k, c);
      }
      EXPECT_EQ(At(out, r, c), sum);
    }
  }
}

} // namespace
