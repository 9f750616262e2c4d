#include <ZxCore3D/util/TextNumbers.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "CommaLocale.h"

namespace {

std::uint64_t Bits(double value) { return std::bit_cast<std::uint64_t>(value); }

double Read(const char* text) {
  double out = 77.0;
  EXPECT_TRUE(StringToFloat(text, &out));
  return out;
}

float ReadNarrow(const char* text) {
  float out = 77.0F;
  EXPECT_TRUE(StringToFloat(text, &out));
  return out;
}

TEST(StringToFloat, NeverFails) {
  EXPECT_EQ(Bits(Read("abc")), Bits(0.0));
  EXPECT_EQ(Bits(Read("")), Bits(0.0));
  EXPECT_EQ(Bits(Read("-")), Bits(0.0));
  EXPECT_EQ(Bits(Read("-abc")), Bits(0.0));
  EXPECT_EQ(Bits(Read(".")), Bits(0.0));
  EXPECT_EQ(Bits(Read("-.")), Bits(0.0));
  EXPECT_EQ(Bits(Read("+-5")), Bits(0.0));
  EXPECT_EQ(Bits(Read("e5")), Bits(0.0));
  EXPECT_EQ(ReadNarrow("abc"), 0.0F);
}

TEST(StringToFloat, IgnoresTrailingText) {
  EXPECT_EQ(Read("1.5)"), 1.5);
  EXPECT_EQ(Read("12abc"), 12.0);
  EXPECT_EQ(Read("1e"), 1.0);
  EXPECT_EQ(Read("1e+"), 1.0);
  EXPECT_EQ(Read("1.2.3"), 1.2);
  EXPECT_EQ(Read("1-2"), 1.0);
  EXPECT_EQ(Read("3 4"), 3.0);
  EXPECT_EQ(Read("1,5"), 1.0);
}

TEST(StringToFloat, TakesWhatTheCLibraryTakes) {
  EXPECT_EQ(Read(" \t\n\v\f\r2.5"), 2.5);
  EXPECT_EQ(Read("+2.5"), 2.5);
  EXPECT_EQ(Bits(Read("-0")), Bits(-0.0));
  EXPECT_EQ(Read("1e3"), 1000.0);
  EXPECT_EQ(Read("1E-2"), 0.01);
  EXPECT_EQ(Read(".5"), 0.5);
  EXPECT_EQ(Read("5."), 5.0);
  EXPECT_EQ(Read("0x1p4"), 16.0);
  EXPECT_EQ(Read("-0X.8"), -0.5);
  EXPECT_EQ(Read("0x"), 0.0);
  EXPECT_EQ(Read("inf"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(Read("-INFINITY"), -std::numeric_limits<double>::infinity());
  EXPECT_TRUE(std::isnan(Read("nan")));
  EXPECT_EQ(Read("1e999"), std::numeric_limits<double>::infinity());
  EXPECT_EQ(Read("-1e999"), -std::numeric_limits<double>::infinity());
  EXPECT_EQ(Bits(Read("-1e-999")), Bits(-0.0));
  EXPECT_EQ(Read("4.9406564584124654e-324"), std::numeric_limits<double>::denorm_min());
}

// 1 + 2^-24 + 2^-60 lies above the middle between two floats, and its double is that middle, which
// rounds to even: the float must be the twice rounded one.
TEST(StringToFloat, NarrowsTheDouble) {
  const char* const text = "1.000000059604644776257340446524";
  EXPECT_EQ(Read(text), 1.0 + std::ldexp(1.0, -24));
  EXPECT_EQ(ReadNarrow(text), 1.0F);
  EXPECT_NE(strtof(text, nullptr), 1.0F);
  EXPECT_EQ(ReadNarrow("1e300"), std::numeric_limits<float>::infinity());
}

TEST(StringToFloat, WideFormsHaveSinglePrecision) {
  float narrow = 77.0F;
  EXPECT_TRUE(StringToFloat(L"0.1x", &narrow));
  EXPECT_EQ(narrow, 0.1F);
  double out = 77.0;
  EXPECT_TRUE(StringToFloat(L"0.1", &out));
  EXPECT_EQ(out, static_cast<double>(0.1F));
  EXPECT_NE(out, 0.1);
  EXPECT_TRUE(StringToFloat(L"abc", &out));
  EXPECT_EQ(out, 0.0);
  EXPECT_TRUE(StringToFloat(L" -1e2", &out));
  EXPECT_EQ(out, -100.0);
  EXPECT_TRUE(StringToFloat(L"1.000000059604644776257340446524", &narrow));
  EXPECT_EQ(narrow, std::nextafter(1.0F, 2.0F)) << "rounded once";
}

TEST(StringToFloat, WithALengthPutsTheCharacterBack) {
  char text[] = "1.2345";
  double out = 0.0;
  EXPECT_TRUE(StringToFloat(text, 3, &out));
  EXPECT_EQ(out, 1.2);
  EXPECT_STREQ(text, "1.2345");
  EXPECT_TRUE(StringToFloat(text, 0, &out));
  EXPECT_EQ(out, 0.0);
  EXPECT_STREQ(text, "1.2345");
  EXPECT_TRUE(StringToFloat(text, 6, &out));
  EXPECT_EQ(out, 1.2345);
}

TEST(StringToFloat, DoesNotFollowTheHostsLocale) {
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  EXPECT_EQ(Read("1.5"), 1.5);
  EXPECT_EQ(Read("0x1.8"), 1.5);
  EXPECT_EQ(Read("1,5"), 1.0);
  float wide = 0.0F;
  StringToFloat(L"1.5", &wide);
  EXPECT_EQ(wide, 1.5F);
}

// A number longer than any double needs, and one ahead of a long text.
TEST(StringToFloat, KnowsNoLengths) {
  const std::string zeros(300, '0');
  EXPECT_EQ(Read((zeros + "12.5").c_str()), 12.5);
  EXPECT_EQ(Read(("0." + zeros + "1e301").c_str()), 1.0);
  EXPECT_EQ(Read(("1" + zeros).c_str()), 1e300);
  EXPECT_EQ(Read(("1" + zeros + "e-300x").c_str()), 1.0);
  for (std::size_t tail = 0; tail < 140; ++tail) {
    EXPECT_EQ(Read(("-1.5 " + std::string(tail, '7')).c_str()), -1.5);
  }
  // Half way between 1 and the next double, told apart by the 800th digit.
  const std::string half = "1.00000000000000011102230246251565404236316680908203125";
  EXPECT_EQ(Read((half + zeros + zeros + "0").c_str()), 1.0);
  EXPECT_EQ(Read((half + zeros + zeros + "1").c_str()), 1.0 + std::ldexp(1.0, -52));
}

// Bit by bit the C library's result, for numbers written in many ways and for noise.
TEST(StringToFloat, IsTheCLibrarysConversion) {
  std::mt19937_64 random(7);
  char text[512];
  for (int round = 0; round < 20000; ++round) {
    const double value = std::bit_cast<double>(random());
    const char* const formats[] = {"%.17g", "%.5g", "%a", "%e", "%.0f", "%.30e"};
    std::snprintf(text, sizeof text, formats[round % 6], value);
    ASSERT_EQ(Bits(Read(text)), Bits(std::strtod(text, nullptr))) << text;
  }
  const char alphabet[] = "0123456789012345678900..eE+-xX pPinfa";
  for (int round = 0; round < 50000; ++round) {
    std::string noise(random() % (round % 10 == 0 ? 200 : 24), ' ');
    for (char& c : noise) {
      c = alphabet[random() % (sizeof alphabet - 1)];
    }
    ASSERT_EQ(Bits(Read(noise.c_str())), Bits(std::strtod(noise.c_str(), nullptr))) << noise;
  }
}

} // namespace
