#include "Angles.h"

#include <cmath>

#include <gtest/gtest.h>

namespace {

using namespace zx_scene;

constexpr double kUnit = 0x1p-52;

TEST(Angles, AreWithinTwoUnitsOfTheLastPlace) {
  for (int i = -7200; i <= 7200; ++i) {
    const double degrees = i / 10.0;
    const long double radians = degrees * (std::acos(-1.0L) / 180);
    EXPECT_NEAR(SinOfDegrees(degrees), static_cast<double>(std::sin(radians)), kUnit) << degrees;
    EXPECT_NEAR(CosOfDegrees(degrees), static_cast<double>(std::cos(radians)), kUnit) << degrees;
  }
  for (int i = 1; i < 1570; ++i) {
    const double radians = i / 1000.0;
    const double tangent = std::tan(radians);
    EXPECT_NEAR(TanOfRadians(radians), tangent, 4 * kUnit * std::max(1.0, tangent * tangent));
  }
}

TEST(Angles, AreExactAtRightAngles) {
  const double sines[] = {0, 1, 0, -1};
  for (int i = -8; i <= 8; ++i) {
    EXPECT_EQ(SinOfDegrees(90.0 * i), sines[(i + 8) % 4]) << i;
    EXPECT_EQ(CosOfDegrees(90.0 * i), sines[(i + 9) % 4]) << i;
  }
  EXPECT_NEAR(SinOfDegrees(30), 0.5, kUnit / 2);
  EXPECT_NEAR(CosOfDegrees(1e6), std::cos(280 * std::acos(-1.0) / 180), 1e-15);
}

} // namespace
