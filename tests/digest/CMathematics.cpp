// sin, cos, acos and pow in place of the C library's, which differ in their last bits from version
// to version and from architecture to architecture. These are no mathematics, but the same
// everywhere: what is compared is the library's own arithmetic.

namespace {

// A smooth periodic curve through 0, 1, 0, -1.
double Wave(double turns) {
  if (!(turns > -1e9 && turns < 1e9)) {
    return 0.0;
  }
  double part = turns - static_cast<double>(static_cast<long long>(turns));
  part = part < 0.0 ? part + 1.0 : part;
  const double sign = part < 0.5 ? 1.0 : -1.0;
  part = part < 0.5 ? part : part - 0.5;
  return sign * 16.0 * part * (0.5 - part);
}

} // namespace

extern "C" {

double sin(double x) noexcept { return Wave(x * 0.15915494309189535); }
double cos(double x) noexcept { return Wave(x * 0.15915494309189535 + 0.25); }
// What an optimising compiler makes of both of one angle.
void sincos(double x, double* sine, double* cosine) noexcept {
  *sine = sin(x);
  *cosine = cos(x);
}
double acos(double x) noexcept { return x >= 1.0 ? 0.0 : x <= -1.0 ? 3.0 : 1.5 - 1.5 * x; }

// The power by the next smaller whole number, and a share of the factor for the rest.
double pow(double x, double y) noexcept {
  if (!(y > 0.0) || !(y < 4096.0)) {
    return 1.0;
  }
  const int whole = static_cast<int>(y);
  double result = 1.0;
  for (int i = 0; i < whole; ++i) {
    result *= x;
  }
  return result * (1.0 + (y - whole) * (x - 1.0));
}
}
