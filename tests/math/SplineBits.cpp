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
    for (unsigned long n = 2; n <= 40; ++n)
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

template <unsigned long Coordinates, class Calc>
void CheckCoordinates(Calc calc, unsigned long n, unsigned long stride, bool closed, Fill kind,
                      std::mt19937_64& random) {
  const unsigned long step = stride == 0 ? 1 : stride / sizeof(double);
  std::vector<double> values = RandomValues(n * step + Coordinates, kind, random);
  const unsigned long segments = closed ? n : n - 1;
  std::vector<POLYNOM3> mine(Coordinates * segments), theirs(Coordinates * segments);
  for (unsigned long k = 0; k < Coordinates; ++k) {
    ASSERT_TRUE(reference::CalcCubeSpline1D(values.data() + k, stride, n, closed,
                                            theirs.data() + k * segments));
  }
  const auto* points = reinterpret_cast<const vec_t_<double, Coordinates>*>(values.data());
  ASSERT_TRUE(calc(points, stride, n, closed, mine.data()));
  ASSERT_TRUE(SameBits(&mine[0].a, &theirs[0].a, 4 * mine.size()))
      << Coordinates << " coordinates, n " << n << ", stride " << stride
      << (closed ? ", closed" : "") << ", " << Name(kind);
}

/// Coordinates that are made together, one of which may have a zero or a value that isn't finite
/// where the others have none, give what each gives alone.
TEST(SplineBits, CoordinatesTogether) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(3);
    for (unsigned long n = 2; n <= 40; n += n < 12 ? 1 : 7) {
      for (const bool closed : {false, true}) {
        for (const Fill kind : AllFills) {
          for (const unsigned long stride : {0ul, 16ul, 24ul, 40ul}) {
            ASSERT_NO_FATAL_FAILURE(
                CheckCoordinates<2>(CalcCubeSpline2D, n, stride, closed, kind, random));
            ASSERT_NO_FATAL_FAILURE(
                CheckCoordinates<3>(CalcCubeSpline3D, n, stride, closed, kind, random));
          }
        }
      }
    }
  });
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
