#include "SmallStack.h"

#include <cmath>
#include <vector>

#include <ZxCore3D/math/CubeSpline.h>
#include <ZxCore3D/math/Polygons.h>
#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TransformEstimation.h>
#include <ZxCore3D/math/TriangleIntersection.h>

// The sizes up to which work space lies on the stack are the largest that it has to hold.
TEST(SmallStack, HoldsTheNumerics) {
  zx_test::OnASmallStack([] {
    for (const unsigned long n : {1ul, 16ul, 17ul, 47ul, 48ul, 128ul, 129ul}) {
      TMatrixD m(n, n);
      TMatrixD inv(n, n);
      fill(m, 0.5);
      for (unsigned long i = 0; i < n; ++i) {
        m.Data[i * n + i] = 2.0 + static_cast<double>(n);
      }
      EXPECT_TRUE(inverse(m, inv));
      TMatrixD product(n, n);
      mul(m, inv, product);
      EXPECT_NEAR(1, product.Data[0], 1e-9);
      std::vector<double> b(n, 1.0);
      std::vector<double> x(n);
      EXPECT_TRUE(SolveGauss(m.Data, n, b.data(), 0, x.data(), nullptr));
      TMatrixD work = m;
      EXPECT_TRUE(SolveGaussInplace(work.Data, n, b.data(), 0, x.data(), nullptr));
      work = m;
      b.assign(n, 1.0);
      EXPECT_TRUE(LineSysGauss1(work.Data, n, b.data(), x.data()));
      work = m;
      b.assign(n, 1.0);
      EXPECT_TRUE(LineSysGauss2(work.Data, n, b.data(), x.data()));
      TVectorD right(n);
      right.Fill(1);
      TVectorD found(n);
      EXPECT_TRUE(lsm(m, right, &found));
    }
    std::vector<double> y(300);
    for (std::size_t i = 0; i < y.size(); ++i) {
      y[i] = std::sin(0.3 * static_cast<double>(i));
    }
    std::vector<POLYNOM3> out(300);
    EXPECT_TRUE(CalcCubeSpline1D(y.data(), 0, 300, true, out.data()));
    std::vector<vec_t_<double, 2>> ring;
    for (int i = 0; i < 9; ++i) {
      ring.push_back({std::cos(0.7 * i), std::sin(0.7 * i)});
    }
    EXPECT_FALSE(IsSelfIntersected(ring.data(), 8));
    MAT3<double> map = {};
    EXPECT_TRUE(GetProjectiveTransform(ring.data(), ring.data(), 9, &map));
    const vec_t_<double, 3> a[3] = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}};
    const vec_t_<double, 3> b[3] = {{1, 1, -1}, {1.5, 1, 1}, {1, 1.5, 1}};
    vec_t_<double, 3> cut[6];
    EXPECT_TRUE(IsIntersectTriangles(a, b, 1e-9));
    GetIntersectTriangles(a, b, cut, 1e-9);
  });
}
