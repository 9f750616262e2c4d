#include <ZxCore3D/types/COLORRGBA.h>

#include <limits>

#include <gtest/gtest.h>

namespace {

using TWeights = vec_t_<double, 3>;

COLORRGBA Mix(COLORRGBA c0, COLORRGBA c1, COLORRGBA c2, const TWeights& w) {
  COLORRGBA out = {1, 2, 3, 4};
  Zx3D::mix(c0, c1, c2, w, &out);
  return out;
}

/// The red that the weights give to three reds.
int Red(int r0, int r1, int r2, const TWeights& w) {
  const auto byte = [](int value) { return static_cast<unsigned char>(value); };
  return Mix({byte(r0), 0, 0, 0}, {byte(r1), 0, 0, 0}, {byte(r2), 0, 0, 0}, w).r;
}

TEST(Mix, SumsAboveTheRangeBecome255) {
  const COLORRGBA white = {255, 255, 255, 255};
  const COLORRGBA out = Mix(white, white, white, {0.5, 0.5, 0.5});
  EXPECT_EQ(out.r, 255);
  EXPECT_EQ(out.g, 255);
  EXPECT_EQ(out.b, 255);
  EXPECT_EQ(out.a, 255);
}

TEST(Mix, EveryChannelHasItsOwnSumAndAlphaIsMixedLikeTheOthers) {
  const COLORRGBA out =
      Mix({10, 20, 30, 40}, {100, 110, 120, 130}, {200, 210, 220, 230}, {0.5, 0.25, 0.25});
  EXPECT_EQ(out.r, 80);  // 5 + 25 + 50
  EXPECT_EQ(out.g, 90);  // 10 + 27.5 + 52.5
  EXPECT_EQ(out.b, 100); // 15 + 30 + 55
  EXPECT_EQ(out.a, 110); // 20 + 32.5 + 57.5
}

TEST(Mix, WeightsGoToTheirColours) {
  EXPECT_EQ(Red(10, 20, 30, {1, 0, 0}), 10);
  EXPECT_EQ(Red(10, 20, 30, {0, 1, 0}), 20);
  EXPECT_EQ(Red(10, 20, 30, {0, 0, 1}), 30);
}

TEST(Mix, RoundsHalvesAwayFromZero) {
  EXPECT_EQ(Red(1, 0, 0, {0.5, 0, 0}), 1);
  EXPECT_EQ(Red(5, 0, 0, {0.5, 0, 0}), 3);
  EXPECT_EQ(Red(1, 0, 0, {0.4999, 0, 0}), 0);
}

TEST(Mix, SumsBelowTheRangeBecome0) {
  EXPECT_EQ(Red(255, 0, 0, {-1, 0, 0}), 0);
  EXPECT_EQ(Red(1, 0, 0, {-0.5, 0, 0}), 0);
  EXPECT_EQ(Red(255, 0, 0, {-1e300, 0, 0}), 0);
  EXPECT_EQ(Red(255, 0, 0, {1e300, 0, 0}), 255);
}

TEST(Mix, SumsTheFirstTwoBeforeTheThird) {
  // 1 + 1e17 - 1e17: the first two sum to 1e17, so nothing is left. The other order leaves 1.
  EXPECT_EQ(Red(1, 1, 1, {1, 1e17, -1e17}), 0);
  EXPECT_EQ(Red(1, 1, 1, {1e17, -1e17, 1}), 1);
}

TEST(Mix, ANanIsWrittenAsZero) {
  EXPECT_EQ(Red(1, 1, 1, {std::numeric_limits<double>::quiet_NaN(), 0, 0}), 0);
}

} // namespace
