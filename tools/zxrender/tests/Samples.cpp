#include "Samples.h"

#include <gtest/gtest.h>

#include <boost/multiprecision/cpp_int.hpp>

#include <ZxPixelKit/Surface.h>

#include "SrgbTables.h"

namespace {

using namespace zx_scene;
using TInt = boost::multiprecision::cpp_int;

// Whether v / scale <= linear(x / y), by whole numbers: above the straight part the curve is
// ((x / y + 0.055) / 1.055)^(12 / 5), and the fifth powers of both sides are compared.
bool IsAtMostLinear(const TInt& v, const TInt& scale, const TInt& x, const TInt& y) {
  if (x * 100000 <= y * 4045) {
    return v * 1292 * y <= scale * 100 * x; // x / y / 12.92
  }
  const TInt numerator = 1000 * x + 55 * y; // of (x / y + 0.055) / 1.055 over 1055 y
  const TInt denominator = 1055 * y;
  return pow(v, 5) * pow(denominator, 12) <= pow(scale, 5) * pow(numerator, 12);
}

TEST(SrgbTables, LinearIsTheNearestOfSixteenBits) {
  for (int i = 0; i < 256; ++i) {
    const TInt twice = 2 * TInt(kSrgbToLinear[i]);
    if (i > 0) {
      EXPECT_TRUE(IsAtMostLinear(twice - 1, 2 * 65535, i, 255)) << i;
    }
    EXPECT_TRUE(i == 255 || !IsAtMostLinear(twice + 1, 2 * 65535, i, 255)) << i;
  }
  EXPECT_EQ(kSrgbToLinear[0], 0);
  EXPECT_EQ(kSrgbToLinear[255], 65535);
}

TEST(SrgbTables, StepsLieHalfwayBetweenBytes) {
  for (int i = 0; i < 255; ++i) {
    // The least integer not below: itself not below, the one before it below.
    const TInt step = kSrgbSteps[i];
    EXPECT_TRUE(IsAtMostLinear(step - 1, 16 * 65535, 2 * i + 1, 510)) << i;
    EXPECT_FALSE(IsAtMostLinear(step, 16 * 65535, 2 * i + 1, 510)) << i;
  }
}

// One pixel out of `samples`, which stand in rows.
std::array<int, 4> Average(const std::vector<std::array<std::uint8_t, 4>>& samples, int side) {
  DATASURFACE surface = {};
  EXPECT_TRUE(ds::Set(&surface, side, side, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, samples.data()));
  std::uint8_t out[4] = {};
  AverageSamples(surface, side, out);
  return {out[0], out[1], out[2], out[3]};
}

TEST(Samples, EqualSamplesKeepTheirBytes) {
  for (int i = 0; i < 256; ++i) {
    const auto b = static_cast<std::uint8_t>(i);
    // The alpha differs, so that the means are worked out.
    const std::array<int, 4> mean =
        Average({{b, b, b, 255}, {b, b, b, 255}, {b, b, b, 255}, {b, b, b, 254}}, 2);
    EXPECT_EQ(mean, (std::array<int, 4>{i, i, i, 255}));
  }
}

TEST(Samples, HalfTheLightIsByte188) {
  // sRGB of one half: 1.055 * 0.5^(1 / 2.4) - 0.055 = 0.73536, times 255 = 187.5.
  const std::array<int, 4> half =
      Average({{0, 0, 0, 255}, {255, 0, 255, 255}, {255, 0, 255, 255}, {0, 255, 0, 255}}, 2);
  EXPECT_EQ(half, (std::array<int, 4>{188, 137, 188, 255}));
  // A quarter: 1.055 * 0.25^(1 / 2.4) - 0.055 = 0.53710, times 255 = 136.96.
}

TEST(Samples, SixteenSamplesCountAlike) {
  std::vector<std::array<std::uint8_t, 4>> samples(16, {0, 0, 0, 255});
  samples[5] = {255, 255, 255, 255};
  // A sixteenth: 1.055 * 0.0625^(1 / 2.4) - 0.055 = 0.27730, times 255 = 70.71.
  EXPECT_EQ(Average(samples, 4), (std::array<int, 4>{71, 71, 71, 255}));
  samples[15] = {255, 255, 255, 255};
  // An eighth: 1.055 * 0.125^(1 / 2.4) - 0.055 = 0.38857, times 255 = 99.09.
  EXPECT_EQ(Average(samples, 4), (std::array<int, 4>{99, 99, 99, 255}));
}

TEST(Samples, WhatIsTransparentHasNoColour) {
  EXPECT_EQ(Average({{255, 0, 0, 255}, {0, 0, 0, 0}, {0, 0, 0, 0}, {255, 0, 0, 255}}, 2),
            (std::array<int, 4>{255, 0, 0, 128}));
  EXPECT_EQ(Average({{255, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {255, 0, 0, 0}}, 2),
            (std::array<int, 4>{188, 0, 0, 0}));
  // Alpha is rounded: 255 / 4 = 63.75.
  EXPECT_EQ(Average({{9, 9, 9, 255}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}, 2),
            (std::array<int, 4>{9, 9, 9, 64}));
}

TEST(Samples, BlocksGoToTheirPixels) {
  std::vector<std::uint8_t> bytes;
  for (int y = 0; y < 4; ++y) {
    for (int x = 0; x < 6; ++x) {
      bytes.insert(bytes.end(),
                   {static_cast<std::uint8_t>(x / 2), static_cast<std::uint8_t>(y / 2), 0, 255});
    }
  }
  DATASURFACE surface = {};
  ASSERT_TRUE(ds::Set(&surface, 6, 4, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, bytes.data()));
  std::uint8_t out[24] = {};
  AverageSamples(surface, 2, out);
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(out[4 * i], i % 3);
    EXPECT_EQ(out[4 * i + 1], i / 3);
  }
}

} // namespace
