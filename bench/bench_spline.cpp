// The growth of the splines with the number of points, and the one-dimensional one against the
// dense inversion that it gives the bits of.

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

#include <ZxCore3D/math/CubeSpline.h>

#include "../tests/math/ReferenceSpline.h"

namespace {

using Clock = std::chrono::steady_clock;

/// Milliseconds of one call, the best of `turns` of as many calls as take long enough for the
/// clock.
template <class Work> double Milliseconds(int turns, Work work) {
  double best = 1e30;
  int calls = 1;
  for (int i = 0; i < turns; ++i) {
    const auto start = Clock::now();
    for (int call = 0; call < calls; ++call) {
      work();
    }
    const std::chrono::duration<double, std::milli> time = Clock::now() - start;
    best = std::min(best, time.count() / calls);
    if (time.count() < 0.5) {
      calls *= 2;
    }
  }
  return best;
}

} // namespace

int main() {
  double before[2] = {0.0, 0.0};
  double beforeXY = 0.0;
  for (const unsigned long n : {5ul, 10ul, 20ul, 50ul, 100ul, 200ul, 400ul, 800ul, 1000ul}) {
    std::vector<double> y(n);
    std::vector<vec_t_<double, 2>> p(n);
    for (unsigned long i = 0; i < n; ++i) {
      y[i] = std::sin(0.37 * static_cast<double>(i)) + 2.0;
      p[i] = {0.01 * static_cast<double>(i), y[i]};
    }
    std::vector<POLYNOM3> out(n);
    const int turns = n <= 200 ? 40 : 3;
    for (const bool closed : {false, true}) {
      const double ours =
          Milliseconds(turns, [&] { CalcCubeSpline1D(y.data(), 0, n, closed, out.data()); });
      const double dense = Milliseconds(1, [&] {
        if (n <= 400) {
          reference::CalcCubeSpline1D(y.data(), 0, n, closed, out.data());
        }
      });
      std::printf("1D %-6s n %4lu  %9.4f ms", closed ? "closed" : "open", n, ours);
      if (before[closed] > 0.0) {
        std::printf("  %5.2f times the line before", ours / before[closed]);
      }
      if (n <= 400) {
        std::printf("  dense loops %10.4f ms, ratio %6.1f", dense, dense / ours);
      }
      std::printf("\n");
      before[closed] = ours;
    }
    std::vector<vec_t_<double, 3>> space(n);
    for (unsigned long i = 0; i < n; ++i) {
      space[i] = {y[i], 3.0 - y[i], 0.5 * y[i]};
    }
    std::vector<POLYNOM3> outSpace(3 * n);
    std::printf("3D open   n %4lu  %9.4f ms\n", n, Milliseconds(turns, [&] {
                  CalcCubeSpline3D(space.data(), sizeof space[0], n, false, outSpace.data());
                }));
    const double xy =
        Milliseconds(turns, [&] { CalcCubeSplineXY(p.data(), n, 2, 0.0, 2, 0.0, out.data()); });
    std::printf("XY        n %4lu  %9.4f ms", n, xy);
    if (beforeXY > 0.0) {
      std::printf("  %5.2f times the line before", xy / beforeXY);
    }
    std::printf("\n");
    beforeXY = xy;
  }
}
