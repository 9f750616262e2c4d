#include <ZxCore3D/math/CubeSpline.h>

#include <algorithm>

#include <eigen3/Eigen/Dense>

#include "Fixture.h"

namespace {

using Values = std::vector<double>;
using Point = vec_t_<double, 2>;

void ExpectPolynom(const POLYNOM3& p, double a, double b, double c, double d,
                   double tolerance = 1e-14) {
  EXPECT_NEAR(p.a, a, tolerance);
  EXPECT_NEAR(p.b, b, tolerance);
  EXPECT_NEAR(p.c, c, tolerance);
  EXPECT_NEAR(p.d, d, tolerance);
}

/// Second derivatives at the points of an open spline with knots x, by the tridiagonal equations of
/// the textbooks. Type 1 gives the first derivative at an end, type 2 the second.
Values SecondDerivatives(const Values& x, const Values& y, unsigned long startType, double start,
                         unsigned long endType, double end) {
  const std::size_t n = x.size();
  Values low(n, 0.0), diag(n, 1.0), up(n, 0.0), right(n, 0.0);
  for (std::size_t i = 1; i + 1 < n; ++i) {
    const double h = x[i] - x[i - 1], k = x[i + 1] - x[i];
    low[i] = h / 6;
    diag[i] = (h + k) / 3;
    up[i] = k / 6;
    right[i] = (y[i + 1] - y[i]) / k - (y[i] - y[i - 1]) / h;
  }
  if (startType == 2) {
    right[0] = start;
  } else {
    const double h = x[1] - x[0];
    diag[0] = h / 3;
    up[0] = h / 6;
    right[0] = (y[1] - y[0]) / h - start;
  }
  if (endType == 2) {
    right[n - 1] = end;
  } else {
    const double h = x[n - 1] - x[n - 2];
    low[n - 1] = h / 6;
    diag[n - 1] = h / 3;
    right[n - 1] = end - (y[n - 1] - y[n - 2]) / h;
  }
  for (std::size_t i = 1; i < n; ++i) {
    const double m = low[i] / diag[i - 1];
    diag[i] -= m * up[i - 1];
    right[i] -= m * right[i - 1];
  }
  Values second(n);
  second[n - 1] = right[n - 1] / diag[n - 1];
  for (std::size_t i = n - 1; i-- > 0;) {
    second[i] = (right[i] - up[i] * second[i + 1]) / diag[i];
  }
  return second;
}

/// The segment from 0 to h in a parameter that begins at its left point.
POLYNOM3 Segment(double h, double y0, double y1, double m0, double m1) {
  return {y0, (y1 - y0) / h - h * (2 * m0 + m1) / 6, m0 / 2, (m1 - m0) / (6 * h)};
}

double At(const POLYNOM3& p, double t) { return p.a + t * (p.b + t * (p.c + t * p.d)); }

TEST(CubeSpline1D, SmallCases) {
  const double y[] = {3, 10};
  POLYNOM3 out[2] = {{9, 9, 9, 9}, {9, 9, 9, 9}};
  EXPECT_FALSE(CalcCubeSpline1D(y, 0, 0, false, out));
  EXPECT_FALSE(CalcCubeSpline1D(y, 0, 1, false, out));
  EXPECT_FALSE(CalcCubeSpline1D(y, 0, 1, true, out));
  EXPECT_EQ(out[0].a, 9.0);
  EXPECT_TRUE(CalcCubeSpline1D(y, 0, 2, false, out));
  ExpectPolynom(out[0], 3, 7, 0, 0);
  EXPECT_EQ(out[1].a, 9.0);
  EXPECT_TRUE(CalcCubeSpline1D(y, 0, 2, true, out));
  ExpectPolynom(out[0], 3, 0, 21, -14);
  ExpectPolynom(out[1], 10, 0, -21, 14);
}

TEST(CubeSpline1D, Strides) {
  const double y[] = {1, 50, 4, 60, 2, 70};
  POLYNOM3 tight[2], wide[2], eight[2];
  const double plain[] = {1, 4, 2};
  EXPECT_TRUE(CalcCubeSpline1D(plain, 0, 3, false, tight));
  EXPECT_TRUE(CalcCubeSpline1D(plain, 8, 3, false, eight));
  EXPECT_TRUE(CalcCubeSpline1D(y, 16, 3, false, wide));
  EXPECT_TRUE(SameBits(&tight[0].a, &wide[0].a, 8));
  EXPECT_TRUE(SameBits(&tight[0].a, &eight[0].a, 8));
}

TEST(CubeSpline1D, NaturalAgainstTridiagonal) {
  std::mt19937_64 random(1);
  for (const std::size_t n : {3u, 4u, 9u, 40u, 300u}) {
    const Values y = RandomValues(n, Fill::Plain, random);
    Values x(n);
    for (std::size_t i = 0; i < n; ++i) {
      x[i] = static_cast<double>(i);
    }
    const Values m = SecondDerivatives(x, y, 2, 0.0, 2, 0.0);
    std::vector<POLYNOM3> out(n - 1);
    ASSERT_TRUE(CalcCubeSpline1D(y.data(), 0, n, false, out.data()));
    for (std::size_t i = 0; i + 1 < n; ++i) {
      const POLYNOM3 e = Segment(1.0, y[i], y[i + 1], m[i], m[i + 1]);
      ExpectPolynom(out[i], e.a, e.b, e.c, e.d, 1e-12);
    }
  }
}

TEST(CubeSpline1D, PeriodicAgainstTheCyclicSystem) {
  std::mt19937_64 random(2);
  for (const Eigen::Index n : {3, 4, 9, 40}) {
    const Values y = RandomValues(static_cast<std::size_t>(n), Fill::Plain, random);
    // m(i-1) + 4 m(i) + m(i+1) = 6 (y(i+1) - 2 y(i) + y(i-1)), round the circle.
    Eigen::MatrixXd system = Eigen::MatrixXd::Zero(n, n);
    Eigen::VectorXd right(n);
    const auto at = [&](Eigen::Index i) { return y[static_cast<std::size_t>((i + n) % n)]; };
    for (Eigen::Index i = 0; i < n; ++i) {
      system(i, i) += 4;
      system(i, (i + 1) % n) += 1;
      system(i, (i + n - 1) % n) += 1;
      right[i] = 6 * (at(i + 1) - 2 * at(i) + at(i - 1));
    }
    const Eigen::VectorXd m = system.partialPivLu().solve(right);
    std::vector<POLYNOM3> out(static_cast<std::size_t>(n));
    ASSERT_TRUE(CalcCubeSpline1D(y.data(), 0, y.size(), true, out.data()));
    for (Eigen::Index i = 0; i < n; ++i) {
      const POLYNOM3 e = Segment(1.0, at(i), at(i + 1), m[i], m[(i + 1) % n]);
      ExpectPolynom(out[static_cast<std::size_t>(i)], e.a, e.b, e.c, e.d, 1e-12);
    }
  }
}

TEST(CubeSpline1D, OneThousandPointsInterpolate) {
  const std::size_t n = 1000;
  Values y(n);
  for (std::size_t i = 0; i < n; ++i) {
    y[i] = std::sin(0.1 * static_cast<double>(i * i % 977));
  }
  for (const bool closed : {false, true}) {
    std::vector<POLYNOM3> out(n);
    ASSERT_TRUE(CalcCubeSpline1D(y.data(), 0, n, closed, out.data()));
    for (std::size_t i = 0; i < (closed ? n : n - 1); ++i) {
      EXPECT_NEAR(out[i].a, y[i], 1e-12);
      EXPECT_NEAR(At(out[i], 1.0), y[(i + 1) % n], 1e-12);
    }
  }
}

TEST(CubeSpline2D, CoordinatesFollowEachOther) {
  const Point p[] = {{1, 10}, {4, 30}, {2, 20}, {5, 0}};
  const double x[] = {1, 4, 2, 5}, y[] = {10, 30, 20, 0};
  for (const bool closed : {false, true}) {
    const unsigned long segments = closed ? 4 : 3;
    POLYNOM3 out[8], ex[4], ey[4];
    EXPECT_TRUE(CalcCubeSpline2D(p, 16, 4, closed, out));
    EXPECT_TRUE(CalcCubeSpline1D(x, 0, 4, closed, ex));
    EXPECT_TRUE(CalcCubeSpline1D(y, 0, 4, closed, ey));
    EXPECT_TRUE(SameBits(&out[0].a, &ex[0].a, 4 * segments));
    EXPECT_TRUE(SameBits(&out[segments].a, &ey[0].a, 4 * segments));
  }
  POLYNOM3 untouched[1] = {{9, 9, 9, 9}};
  EXPECT_FALSE(CalcCubeSpline2D(p, 16, 1, true, untouched));
  EXPECT_EQ(untouched[0].a, 9.0);
}

TEST(CubeSpline2D, StrideZeroIsEight) {
  const Point p[] = {{1, 10}, {4, 30}, {2, 20}};
  const double x[] = {1, 10, 4}, y[] = {10, 4, 30};
  POLYNOM3 out[4], ex[2], ey[2];
  EXPECT_TRUE(CalcCubeSpline2D(p, 0, 3, false, out));
  EXPECT_TRUE(CalcCubeSpline1D(x, 0, 3, false, ex));
  EXPECT_TRUE(CalcCubeSpline1D(y, 0, 3, false, ey));
  EXPECT_TRUE(SameBits(&out[0].a, &ex[0].a, 8));
  EXPECT_TRUE(SameBits(&out[2].a, &ey[0].a, 8));
}

TEST(CubeSpline3D, CoordinatesFollowEachOther) {
  const vec_t_<double, 3> p[] = {{1, 10, -1}, {4, 30, 7}, {2, 20, 3}};
  const Values coordinates[3] = {{1, 4, 2}, {10, 30, 20}, {-1, 7, 3}};
  for (const bool closed : {false, true}) {
    const unsigned long segments = closed ? 3 : 2;
    POLYNOM3 out[9], e[3];
    EXPECT_TRUE(CalcCubeSpline3D(p, 24, 3, closed, out));
    for (unsigned long c = 0; c < 3; ++c) {
      EXPECT_TRUE(CalcCubeSpline1D(coordinates[c].data(), 0, 3, closed, e));
      EXPECT_TRUE(SameBits(&out[c * segments].a, &e[0].a, 4 * segments));
    }
  }
  POLYNOM3 untouched[1] = {{9, 9, 9, 9}};
  EXPECT_FALSE(CalcCubeSpline3D(p, 24, 1, false, untouched));
  EXPECT_EQ(untouched[0].a, 9.0);
}

TEST(CubeSplineXY, Refusals) {
  const Point p[] = {{0, 1}, {1, 2}, {1, 3}};
  POLYNOM3 out[2] = {{9, 9, 9, 9}, {9, 9, 9, 9}};
  for (const unsigned long bad : {0ul, 3ul, ~0ul}) {
    EXPECT_FALSE(CalcCubeSplineXY(p, 2, bad, 0, 2, 0, out));
    EXPECT_FALSE(CalcCubeSplineXY(p, 2, 2, 0, bad, 0, out));
  }
  EXPECT_FALSE(CalcCubeSplineXY(p, 1, 2, 0, 2, 0, out));
  EXPECT_FALSE(CalcCubeSplineXY(p, 0, 2, 0, 2, 0, out));
  const Point equal[] = {{0, 1}, {0, 2}};
  EXPECT_FALSE(CalcCubeSplineXY(equal, 2, 2, 0, 2, 0, out));
  EXPECT_EQ(out[0].a, 9.0);
}

// Two neighbours with the same x, at any place of the row, make the system singular.
TEST(CubeSplineXY, EqualNeighboursInXAreRefused) {
  std::mt19937_64 random(11);
  for (unsigned long n = 3; n <= 9; ++n) {
    for (unsigned long at = 0; at + 1 < n; ++at) {
      for (const bool sameY : {false, true}) {
        for (const unsigned long types : {0ul, 1ul, 2ul, 3ul}) {
          std::vector<vec_t_<double, 2>> p(n);
          const std::vector<double> values = RandomValues(2 * n, Fill::Plain, random);
          double x = values[0];
          for (unsigned long i = 0; i < n; ++i) {
            x += 0.25 + std::fabs(values[i]);
            p[i] = {x, values[n + i]};
          }
          p[at + 1].x = p[at].x;
          if (sameY) {
            p[at + 1].y = p[at].y;
          }
          const POLYNOM3 mark = {5, 5, 5, 5};
          std::vector<POLYNOM3> out(n - 1, mark);
          EXPECT_FALSE(
              CalcCubeSplineXY(p.data(), n, 1 + types % 2, 0.5, 1 + types / 2, -0.5, out.data()))
              << n << " points, " << at;
          for (const POLYNOM3& polynom : out) {
            EXPECT_TRUE(SameBits(&polynom.a, &mark.a, 4)) << "untouched";
          }
        }
      }
    }
  }
}

TEST(CubeSplineXY, TwoPoints) {
  const Point p[] = {{0, 1}, {2, 5}};
  POLYNOM3 out[1];
  EXPECT_TRUE(CalcCubeSplineXY(p, 2, 2, 0, 2, 0, out));
  ExpectPolynom(out[0], 1, 2, 0, 0);
  // Slopes 0 at both ends: 1 + 3 x^2 - x^3.
  EXPECT_TRUE(CalcCubeSplineXY(p, 2, 1, 0, 1, 0, out));
  ExpectPolynom(out[0], 1, 0, 3, -1);
}

/// `out` is in absolute x; a shift to the left point of each segment makes it comparable.
void CheckXY(const std::vector<Point>& p, unsigned long startType, double start,
             unsigned long endType, double end, double tolerance) {
  Values x, y;
  for (const Point& point : p) {
    x.push_back(point.x);
    y.push_back(point.y);
  }
  const Values m = SecondDerivatives(x, y, startType, start, endType, end);
  std::vector<POLYNOM3> out(p.size() - 1);
  ASSERT_TRUE(CalcCubeSplineXY(p.data(), p.size(), startType, start, endType, end, out.data()));
  for (std::size_t i = 0; i + 1 < p.size(); ++i) {
    const double h = x[i + 1] - x[i];
    const POLYNOM3 e = Segment(h, y[i], y[i + 1], m[i], m[i + 1]);
    for (const double t : {0.0, 0.25 * h, 0.5 * h, h}) {
      EXPECT_NEAR(At(out[i], x[i] + t), At(e, t), tolerance) << i;
    }
  }
}

TEST(CubeSplineXY, AgainstTridiagonal) {
  const std::vector<Point> three = {{-1, 2}, {0.5, 0}, {2, 3}};
  const std::vector<Point> six = {{-2, 1}, {-1.5, 4}, {-0.25, 0}, {0.5, 0.5}, {1.5, -2}, {2, 1}};
  for (const unsigned long startType : {1ul, 2ul}) {
    for (const unsigned long endType : {1ul, 2ul}) {
      for (const double value : {0.0, 1.5}) {
        CheckXY(three, startType, value, endType, -value, 1e-11);
        CheckXY(six, startType, -value, endType, 2 * value, 1e-10);
      }
    }
  }
}

TEST(CubeSplineXY, LosesDigitsFarFromTheOrigin) {
  const auto error = [](double shift) {
    std::vector<Point> p;
    for (int i = 0; i < 8; ++i) {
      p.push_back({shift + i, std::sin(1.3 * i)});
    }
    std::vector<POLYNOM3> out(7);
    EXPECT_TRUE(CalcCubeSplineXY(p.data(), 8, 2, 0, 2, 0, out.data()));
    double worst = 0.0;
    for (std::size_t i = 0; i < 7; ++i) {
      worst = std::max(worst, std::fabs(At(out[i], p[i].x) - p[i].y));
    }
    return worst;
  };
  EXPECT_LT(error(0.0), 1e-11);
  EXPECT_GT(error(10000.0), 1e-7);
  EXPECT_LT(error(100.0), 1e-5);
}

TEST(Polynom3, TransX) {
  POLYNOM3 p = {0, 0, 1, 0};
  Polynom3_TransX(p, 1.0);
  ExpectPolynom(p, 1, -2, 1, 0, 0.0);
  POLYNOM3 q = {1, 2, 3, 4};
  Polynom3_TransX(q, 2.0);
  // 1 + 2 (x-2) + 3 (x-2)^2 + 4 (x-2)^3
  ExpectPolynom(q, 1 - 4 + 12 - 32, 2 - 12 + 48, 3 - 24, 4, 0.0);
}

} // namespace
