// The growth of the splines with the number of points, and the one-dimensional one against the
// dense inversion that it gives the bits of.

#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

#include <ZxCore3D/math/CubeSpline.h>

#include "../tests/math/ReferenceSpline.h"

namespace {

using Clock = std::chrono::steady_clock;

/// Milliseconds of one call, the best of `turns`.
template <class Work> double Milliseconds(int turns, Work work) {
  double best = 1e30;
  for (int i = 0; i < turns; ++i) {
    const auto start = Clock::now();
    work();
    const std::chrono::duration<double, std::milli> time = Clock::now() - start;
    best = time.count() < best ? time.count() : best;
  }
  return best;
}

} // namespace

int main() {
  double before[2] = {0.0, 0.0};
  double beforeXY = 0.0;
  for (const unsigned long n : {50ul, 100ul, 200ul, 400ul, 800ul, 1000ul}) {
    std::vector<double> y(n);
    std::vector<vec_t_<double, 2>> p(n);
    for (unsigned long i = 0; i < n; ++i) {
      y[i] = std::sin(0.37 * static_cast<double>(i)) + 2.0;
      p[i] = {0.01 * static_cast<double>(i), y[i]};
    }
    std::vector<POLYNOM3> out(n);
    const int turns = n <= 200 ? 20 : 3;
    for (const bool closed : {false, true}) {
      const double ours =
          Milliseconds(turns, [&] { CalcCubeSpline1D(y.data(), 0, n, closed, out.data()); });
      const double dense = Milliseconds(1, [&] {
        if (n <= 400) {
          reference::CalcCubeSpline1D(y.data(), 0, n, closed, out.data());
        }
      });
      std::printf("1D %-6s n %4lu  %9.3f ms", closed ? "closed" : "open", n, ours);
      if (before[closed] > 0.0) {
        std::printf("  %5.2f times the line before", ours / before[closed]);
      }
      if (n <= 400) {
        std::printf("  dense loops %10.3f ms, ratio %6.1f", dense, dense / ours);
      }
      std::printf("\n");
      before[closed] = ours;
    }
    const double xy =
        Milliseconds(turns, [&] { CalcCubeSplineXY(p.data(), n, 2, 0.0, 2, 0.0, out.data()); });
    std::printf("XY        n %4lu  %9.3f ms", n, xy);
    if (beforeXY > 0.0) {
      std::printf("  %5.2f times the line before", xy / beforeXY);
    }
    std::printf("\n");
    beforeXY = xy;
  }
}
