#include "Angles.h"

#include <cmath>
#include <initializer_list>

namespace zx_scene {

namespace {

constexpr double kPi = 3.141592653589793;

// The Taylor polynomials for at most an eighth of a turn: the first term left out is below 2^-58.
double _Sin(double x) {
  const double s = x * x;
  double sum = -1.0 / 1307674368000.0;
  for (const double factorial : {6227020800.0, -39916800.0, 362880.0, -5040.0, 120.0, -6.0}) {
    sum = sum * s + 1.0 / factorial;
  }
  return x + x * (s * sum);
}

double _Cos(double x) {
  const double s = x * x;
  double sum = 1.0 / 20922789888000.0;
  for (const double factorial :
       {-87178291200.0, 479001600.0, -3628800.0, 40320.0, -720.0, 24.0, -2.0}) {
    sum = sum * s + 1.0 / factorial;
  }
  return 1 + s * sum;
}

// The sine of a not negative angle and of `more` right angles beside it.
double _SinOf(double degrees, int more) {
  // The remainder and the difference are exact.
  const double rest = std::fmod(degrees, 360);
  const int quarters = static_cast<int>((rest + 45) / 90);
  const double x = (rest - 90.0 * quarters) * (kPi / 180);
  switch ((quarters + more) % 4) {
  case 0:
    return _Sin(x);
  case 1:
    return _Cos(x);
  case 2:
    return -_Sin(x);
  default:
    return -_Cos(x);
  }
}

} // namespace

double SinOfDegrees(double degrees) {
  return degrees < 0 ? -_SinOf(-degrees, 0) : _SinOf(degrees, 0);
}

double CosOfDegrees(double degrees) { return _SinOf(std::abs(degrees), 1); }

double TanOfRadians(double radians) {
  if (radians <= kPi / 4) {
    return _Sin(radians) / _Cos(radians);
  }
  const double rest = kPi / 2 - radians;
  return _Cos(rest) / _Sin(rest);
}

} // namespace zx_scene
