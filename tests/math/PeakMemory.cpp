// What operations take while they work, beside their results: as their docstrings say.

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/math/CubeSpline.h>
#include <ZxCore3D/math/Frusta.h>
#include <ZxCore3D/math/Polygons.h>
#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>
#include <ZxCore3D/math/TVectorD.h>

#include "object/FailingMalloc.h"

using zx_test::TMallocWatch;

namespace {

// What the allocator rounds a block up by, and a little for what grows beside it.
constexpr long kRounding = 4096 + 256;

class PeakMemory : public testing::Test {
protected:
  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the sanitizer has malloc to itself";
    }
  }

  template <class TCall> static long PeakOf(const TCall& call) {
    const TMallocWatch watch;
    call();
    EXPECT_EQ(watch.LiveBlocks(), 0);
    return watch.PeakBytes();
  }
};

TEST_F(PeakMemory, LeastSquares) {
  constexpr unsigned long n = 40;
  TMatrixD a(n, 2 * n);
  TVectorD b(2 * n);
  TVectorD x(n);
  for (unsigned long row = 0; row < 2 * n; ++row) {
    for (unsigned long column = 0; column < n; ++column) {
      a.Data[row * n + column] = row % n == column ? 2.0 : 0.01;
    }
    b.Data[row] = 1.0;
  }
  TMatrixD m(n, n);
  TMatrixD res(n, n);
  for (unsigned long i = 0; i < n * n; ++i) {
    m.Data[i] = i % (n + 1) == 0 ? 1.0 : 0.0;
  }
  const long work = PeakOf([&] { EXPECT_TRUE(inverse(m, res)); });
  const long peak = PeakOf([&] { EXPECT_TRUE(lsm(a, b, &x)); });
  EXPECT_GE(peak, static_cast<long>(16 * n * n) + work);
  EXPECT_LE(peak, static_cast<long>(16 * n * n) + work + kRounding);
}

TEST_F(PeakMemory, SelfIntersection) {
  std::vector<vec_t_<double, 2>> circle;
  for (int i = 0; i < 1000; ++i) {
    circle.push_back({std::cos(0.00628 * i), std::sin(0.00628 * i)});
  }
  for (const unsigned long n : {3ul, 8ul, 9ul, 1000ul}) {
    const long peak = PeakOf([&] { IsSelfIntersected(circle.data(), n); });
    const long bytes = n > 8 ? static_cast<long>(24 * n) : 0;
    EXPECT_GE(peak, bytes) << n;
    EXPECT_LE(peak, bytes + (n > 8 ? kRounding : 0)) << n;
  }
}

TEST_F(PeakMemory, TransformOfASphere) {
  struct TSame : TZx3DTransform {
    vec_t_<double, 3> TransformPoint(const vec_t_<double, 3>& p) const override { return p; }
  };
  VSPHERE<double> sphere;
  sphere.Center = {1, 2, 3};
  sphere.Radius = 2;
  for (const unsigned long m : {8ul, 30ul, 500ul}) {
    const unsigned long samples = (2 * ((m + 2) / 4) - 1) * m + 2;
    const long peak = PeakOf([&] {
      VSPHERE<double> out;
      Transform(sphere, m, TSame(), &out);
    });
    EXPECT_GE(peak, static_cast<long>(24 * samples)) << m;
    EXPECT_LE(peak, static_cast<long>(24 * samples) + kRounding) << m;
  }
}

TEST_F(PeakMemory, Splines) {
  for (const unsigned long n : {10ul, 100ul, 400ul, 1600ul}) {
    std::vector<vec_t_<double, 3>> points;
    for (unsigned long i = 0; i < n; ++i) {
      const auto t = static_cast<double>(i);
      points.push_back({std::sin(t), std::cos(t), t});
    }
    std::vector<POLYNOM3> out(3 * n);
    for (const bool closed : {false, true}) {
      const auto most = static_cast<long>(2000 * n) + kRounding;
      EXPECT_LE(
          PeakOf([&] { EXPECT_TRUE(CalcCubeSpline1D(&points[0].x, 24, n, closed, out.data())); }),
          most)
          << n;
      EXPECT_LE(
          PeakOf([&] { EXPECT_TRUE(CalcCubeSpline3D(points.data(), 24, n, closed, out.data())); }),
          most)
          << n;
    }
  }
}

TEST_F(PeakMemory, SplinesOfPoints) {
  for (const unsigned long n : {10ul, 200ul}) {
    std::vector<vec_t_<double, 2>> points;
    for (unsigned long i = 0; i < n; ++i) {
      points.push_back({static_cast<double>(i) / 100, std::sin(static_cast<double>(i))});
    }
    std::vector<POLYNOM3> out(n);
    const long peak =
        PeakOf([&] { CalcCubeSplineXY(points.data(), n, 2, 0.0, 2, 0.0, out.data()); });
    EXPECT_GE(peak, static_cast<long>(120 * n * n) - kRounding) << n;
    EXPECT_LE(peak, static_cast<long>(128 * n * n) + kRounding) << n;
  }
}

} // namespace
