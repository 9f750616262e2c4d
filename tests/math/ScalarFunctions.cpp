#include <ZxCore3D/math/ScalarFunctions.h>

#include "Fixture.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr unsigned long Top = 1UL << 63;

TEST(ScalarFunctions, FloorPow2) {
  EXPECT_EQ(FloorPow2(0), 1u);
  EXPECT_EQ(FloorPow2(1), 1u);
  EXPECT_EQ(FloorPow2(5), 4u);
  EXPECT_EQ(FloorPow2(8), 8u);
  EXPECT_EQ(FloorPow2(~0UL), Top);
  for (unsigned bit = 1; bit < 64; ++bit) {
    EXPECT_EQ(FloorPow2(1UL << bit), 1UL << bit);
    EXPECT_EQ(FloorPow2((1UL << bit) - 1), 1UL << (bit - 1));
  }
}

TEST(ScalarFunctions, CeilPow2) {
  EXPECT_EQ(CeilPow2(0), 1u);
  EXPECT_EQ(CeilPow2(1), 1u);
  EXPECT_EQ(CeilPow2(5), 8u);
  EXPECT_EQ(CeilPow2(8), 8u);
  EXPECT_EQ(CeilPow2(Top), Top);
  EXPECT_EQ(CeilPow2(Top - 1), Top);
  EXPECT_EQ(CeilPow2(Top + 1), 1u);
  EXPECT_EQ(CeilPow2(~0UL), 1u);
}

TEST(ScalarFunctions, RoundPow2) {
  EXPECT_EQ(RoundPow2(0), 0u);
  EXPECT_EQ(RoundPow2(1), 1u);
  EXPECT_EQ(RoundPow2(3), 4u);
  EXPECT_EQ(RoundPow2(5), 4u);
  EXPECT_EQ(RoundPow2(6), 8u);
  EXPECT_EQ(RoundPow2(7), 8u);
  EXPECT_EQ(RoundPow2(8), 8u);
  EXPECT_EQ(RoundPow2(11), 8u);
  EXPECT_EQ(RoundPow2(12), 16u);
  EXPECT_EQ(RoundPow2(Top + 1), Top);
  EXPECT_EQ(RoundPow2(Top + Top / 2), 1u);
}

TEST(ScalarFunctions, FloorPow10) {
  EXPECT_EQ(FloorPow10(0.0), 1.0);
  EXPECT_EQ(FloorPow10(-0.0), 1.0);
  EXPECT_EQ(FloorPow10(0.5), 0.1);
  EXPECT_EQ(FloorPow10(0.1), 0.1);
  EXPECT_EQ(FloorPow10(1.0), 1.0);
  EXPECT_EQ(FloorPow10(9.5), 1.0);
  EXPECT_EQ(FloorPow10(10.0), 1.0);
  EXPECT_EQ(FloorPow10(std::nextafter(10.0, 11.0)), 10.0);
  EXPECT_EQ(FloorPow10(100.0), 10.0);
  EXPECT_EQ(FloorPow10(101.0), 99.99999999999999);
  EXPECT_EQ(FloorPow10(150.0), 99.99999999999999);
  EXPECT_EQ(FloorPow10(1000.0), 999.9999999999998);
  EXPECT_EQ(FloorPow10(0.05), 0.01);
}

TEST(ScalarFunctions, FloorPow10AlwaysEnds) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(std::isnan(FloorPow10(-1.0)));
  EXPECT_TRUE(std::isnan(FloorPow10(-5e-324)));
  EXPECT_TRUE(std::isnan(FloorPow10(-inf)));
  EXPECT_EQ(FloorPow10(DefaultNaN()), 1.0);
  EXPECT_EQ(FloorPow10(inf), inf);
  EXPECT_NEAR(FloorPow10(1e308) / 1e308, 1.0, 1e-12);
  EXPECT_EQ(FloorPow10(5e-324), 0.0);
}

TEST(ScalarFunctions, Sinex) {
  EXPECT_EQ(Sinex(0.0), 0.0);
  EXPECT_EQ(Sinex(kPi / 2), 1.0);
  EXPECT_EQ(Sinex(-kPi / 2), -1.0);
  EXPECT_EQ(Sinex(3.0), 2.0 - std::sin(3.0));
  EXPECT_EQ(Sinex(-3.0), -2.0 - std::sin(-3.0));
  EXPECT_EQ(Sinex(0.5), std::sin(0.5));
  EXPECT_NEAR(Sinex(-kPi), -2.0, 1e-15);
  // Pi itself is one period on and wraps to the lower end.
  EXPECT_NEAR(Sinex(kPi), -2.0, 1e-15);
  EXPECT_NEAR(Sinex(kPi - 1e-9), 2.0 - 1e-9, 1e-15);
  double before = Sinex(-kPi);
  for (int i = -313; i < 314; ++i) {
    const double v = Sinex(0.01 * i);
    EXPECT_GT(v, before) << i;
    before = v;
    for (const int periods : {-100, -1, 1, 7}) {
      EXPECT_NEAR(Sinex(0.01 * i + periods * 2 * kPi), v, 1e-12);
    }
  }
}

TEST(ScalarFunctions, SinexTakesAnyValue) {
  EXPECT_TRUE(std::isnan(Sinex(DefaultNaN())));
  Sinex(1e300);
  Sinex(-1e300);
  EXPECT_TRUE(std::isnan(Sinex(std::numeric_limits<double>::infinity())));
}

TEST(ScalarFunctions, SinCos) {
  double s, c;
  _SinCos(0.7, &s, &c);
  EXPECT_EQ(s, std::sin(0.7));
  EXPECT_EQ(c, std::cos(0.7));
  float fs, fc;
  _SinCos(0.7f, &fs, &fc);
  EXPECT_EQ(fs, std::sin(0.7f));
  EXPECT_EQ(fc, std::cos(0.7f));
  // The sine first: with both in one place the cosine stays.
  _SinCos(0.7, &s, &s);
  EXPECT_EQ(s, std::cos(0.7));
}

} // namespace
