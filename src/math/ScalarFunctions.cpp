#include <ZxCore3D/math/ScalarFunctions.h>

#include <bit>
#include <cmath>
#include <limits>

unsigned long FloorPow2(unsigned long n) { return n == 0 ? 1 : std::bit_floor(n); }

unsigned long CeilPow2(unsigned long n) {
  if (n == 0) {
    return 1;
  }
  return std::has_single_bit(n) ? n : 1UL << (std::bit_width(n) & 63);
}

unsigned long RoundPow2(unsigned long n) {
  if (n == 0 || std::has_single_bit(n)) {
    return n;
  }
  const unsigned long low = FloorPow2(n);
  // 3/2 of the lower power is the middle, without the upper one, which may not fit.
  return n - low < low / 2 ? low : CeilPow2(n);
}

double FloorPow10(double v) {
  if (v == 0.0) {
    return 1.0;
  }
  if (v < 0.0) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  double scale = 1.0;
  if (v > 10.0) {
    do {
      scale *= 0.1;
    } while (scale * v > 10.0);
  }
  if (v < 1.0) {
    do {
      scale *= 10.0;
    } while (scale * v < 1.0);
  }
  return 1.0 / scale;
}

double Sinex(double x) {
  constexpr double pi = 3.141592653589793;
  constexpr double halfPi = 1.5707963267948966;
  constexpr double twoPi = 6.283185307179586;
  const double periods = std::floor((x + pi) / twoPi);
  // What the processor's own conversion gives for a value that doesn't fit.
  int k = std::numeric_limits<int>::min();
  if (std::fabs(periods) < 2147483648.0) {
    k = static_cast<int>(periods);
  }
  if (k != 0) {
    x = x + k * -twoPi;
  }
  if (x < -halfPi) {
    return -2.0 - std::sin(x);
  }
  if (x > halfPi) {
    return 2.0 - std::sin(x);
  }
  return std::sin(x);
}

void _SinCos(float x, float* s, float* c) {
  *s = std::sin(x);
  *c = std::cos(x);
}

void _SinCos(double x, double* s, double* c) {
  *s = std::sin(x);
  *c = std::cos(x);
}
