// The spline that leaves out what is zero against the dense inversion, bit by bit.

#include <ZxCore3D/math/CubeSpline.h>

#include "Fixture.h"
#include "ReferenceSpline.h"

namespace {

void CheckSpline(std::vector<double> y, bool closed, bool anyNaN = false) {
  const std::size_t segments = closed ? y.size() : y.size() - 1;
  std::vector<POLYNOM3> mine(segments), theirs(segments);
  ASSERT_TRUE(reference::CalcCubeSpline1D(y.data(), 0, y.size(), closed, theirs.data()));
  ASSERT_TRUE(CalcCubeSpline1D(y.data(), 0, y.size(), closed, mine.data()));
  ASSERT_TRUE(SameBits(&mine[0].a, &theirs[0].a, 4 * segments, anyNaN))
      << y.size() << (closed ? " closed" : " open");
}

TEST(SplineBits, EverySmallSize) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(1);
    for (unsigned long n = 2; n <= 24; ++n)
      for (const bool closed : {false, true})
        for (const Fill kind : AllFills)
          ASSERT_NO_FATAL_FAILURE(CheckSpline(RandomValues(n, kind, random), closed));
  });
}

TEST(SplineBits, LargerSizes) {
  std::mt19937_64 random(2);
  for (const unsigned long n : {40ul, 77ul, 130ul})
    for (const bool closed : {false, true})
      ASSERT_NO_FATAL_FAILURE(CheckSpline(RandomValues(n, Fill::Plain, random), closed));
}

/// With 210 points and more the far elements of the inverse are tiny; none may be lost or gained.
TEST(SplineBits, TinyElementsOfTheInverse) {
  for (const bool closed : {false, true}) {
    std::vector<double> y(210, 0.0);
    y[0] = 1.0;
    ASSERT_NO_FATAL_FAILURE(CheckSpline(y, closed));
    y[0] = 1e-200;
    ASSERT_NO_FATAL_FAILURE(CheckSpline(y, closed));
    y[0] = 1e308;
    ASSERT_NO_FATAL_FAILURE(CheckSpline(y, closed));
  }
}

/// Across 600 segments the elements of the inverse fall through the denormals to zero.
TEST(SplineBits, ElementsThatUnderflow) {
  std::vector<double> y(600, 0.0);
  y[0] = 1.0;
  y[599] = -3.0;
  ASSERT_NO_FATAL_FAILURE(CheckSpline(y, false));
}

TEST(SplineBits, ZerosOfBothSigns) {
  for (const bool closed : {false, true}) {
    ASSERT_NO_FATAL_FAILURE(CheckSpline(std::vector<double>(9, 0.0), closed));
    ASSERT_NO_FATAL_FAILURE(CheckSpline(std::vector<double>(9, -0.0), closed));
    ASSERT_NO_FATAL_FAILURE(CheckSpline({-0.0, 1.0, -1.0, 0.0, -0.0, 2.0}, closed));
  }
}

TEST(SplineBits, ValuesThatAreNotFinite) {
  const double inf = std::numeric_limits<double>::infinity();
  for (const bool closed : {false, true}) {
    for (const double bad : {inf, -inf, DefaultNaN()}) {
      for (unsigned long at = 0; at < 7; ++at) {
        std::vector<double> y = {1.0, 0.0, 3.0, -0.0, 2.0, 5.0, 0.0};
        y[at] = bad;
        ASSERT_NO_FATAL_FAILURE(CheckSpline(y, closed));
      }
    }
    ASSERT_NO_FATAL_FAILURE(CheckSpline({inf, inf, -inf, 1.0}, closed));
    ASSERT_NO_FATAL_FAILURE(
        CheckSpline({1.0, std::bit_cast<double>(0x7FF8000000000321u), inf}, closed, true));
  }
}

} // namespace
