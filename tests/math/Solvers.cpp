#include <ZxCore3D/math/Solvers.h>

#include <ZxCore3D/math/private/InverseEx.h>
#include <eigen3/Eigen/Dense>

#include "Fixture.h"
#include "ReferenceSolvers.h"

namespace {

using Values = std::vector<double>;
using Matrix = Eigen::Matrix<double, -1, -1, Eigen::RowMajor>;

constexpr double kInf = std::numeric_limits<double>::infinity();

/// Random and far from singular, with the largest elements off the diagonal.
Matrix WellConditioned(Eigen::Index n, unsigned seed) {
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  Matrix m(n, n);
  for (Eigen::Index i = 0; i < n; ++i) {
    for (Eigen::Index j = 0; j < n; ++j) {
      m(i, j) = uniform(random) + ((i + 1) % n == j ? static_cast<double>(n) : 0.0);
    }
  }
  return m;
}

TEST(SolveGauss, IdentityFailsWithAToleranceAndSucceedsWithout) {
  const double a[] = {1, 0, 0, 1}, b[] = {3, 4};
  double x[] = {9, 9};
  unsigned long rank = 7;
  EXPECT_FALSE(SolveGauss(a, 2, b, 1e-9, x, &rank));
  EXPECT_EQ(rank, 0u);
  EXPECT_EQ(x[0], 9.0);
  EXPECT_TRUE(SolveGauss(a, 2, b, 0.0, x, &rank));
  EXPECT_EQ(rank, 2u);
  EXPECT_EQ(x[0], 3.0);
  EXPECT_EQ(x[1], 4.0);
}

TEST(SolveGauss, ToleranceIsHeldAgainstThePosition) {
  const double a[] = {0, 1, 1, 0}, b[] = {5, 6};
  double x[2];
  unsigned long rank = 7;
  EXPECT_TRUE(SolveGauss(a, 2, b, 0.5, x, &rank));
  EXPECT_EQ(rank, 2u);
  EXPECT_EQ(x[0], 6.0);
  EXPECT_EQ(x[1], 5.0);
  EXPECT_TRUE(SolveGauss(a, 2, b, 1.0, x, nullptr));
  // Above 1 the position 1 isn't enough.
  EXPECT_FALSE(SolveGauss(a, 2, b, 1.5, x, &rank));
  EXPECT_EQ(rank, 0u);
  // Positions 2, 1, 2: the second step fails for 1.5.
  const double c[] = {0, 0, 1, 0, 1, 0, 1, 0, 0}, d[] = {1, 2, 3};
  double y[3] = {9, 9, 9};
  EXPECT_FALSE(SolveGauss(c, 3, d, 1.5, y, &rank));
  EXPECT_EQ(rank, 1u);
  EXPECT_EQ(y[0], 9.0);
  EXPECT_TRUE(SolveGauss(c, 3, d, 1.0, y, &rank));
  EXPECT_EQ(y[0], 3.0);
  EXPECT_EQ(y[1], 2.0);
  EXPECT_EQ(y[2], 1.0);
}

TEST(SolveGauss, SingularMatrixIsReportedAsSuccess) {
  const double a[] = {0, 0, 0, 0}, b[] = {1, 1};
  double x[] = {0, 0};
  unsigned long rank = 7;
  EXPECT_TRUE(SolveGauss(a, 2, b, 0.0, x, &rank));
  EXPECT_EQ(rank, 2u);
  EXPECT_FALSE(std::isfinite(x[0]) && std::isfinite(x[1]));
  EXPECT_TRUE(SolveGauss(a, 2, b, -1.0, x, &rank));
}

TEST(SolveGauss, NoUnknowns) {
  unsigned long rank = 7;
  EXPECT_TRUE(SolveGaussInplace(nullptr, 0, nullptr, 5.0, nullptr, &rank));
  EXPECT_EQ(rank, 0u);
  rank = 7;
  EXPECT_TRUE(SolveGauss(nullptr, 0, nullptr, 5.0, nullptr, &rank));
  EXPECT_EQ(rank, 0u);
  EXPECT_TRUE(SolveGauss(nullptr, 0, nullptr, 5.0, nullptr, nullptr));
}

TEST(SolveGauss, CopiesItsInput) {
  double a[] = {2, 1, 1, 3}, b[] = {3, 5}, x[2];
  EXPECT_TRUE(SolveGauss(a, 2, b, 0.0, x, nullptr));
  EXPECT_EQ(a[2], 1.0);
  EXPECT_EQ(b[1], 5.0);
  EXPECT_TRUE(SolveGaussInplace(a, 2, b, 0.0, x, nullptr));
  EXPECT_EQ(a[2], 0.0);
  EXPECT_EQ(b[1], 3.5);
}

TEST(SolveGauss, EarliestOfEqualPivotsWins) {
  // Both rows have magnitude 1 in column 0: position 0 is taken, and any tolerance refuses it.
  const double a[] = {1, 2, -1, 3}, b[] = {1, 1};
  double x[2];
  unsigned long rank;
  EXPECT_FALSE(SolveGauss(a, 2, b, 0.5, x, &rank));
  EXPECT_EQ(rank, 0u);
}

TEST(Solvers, AgainstEigen) {
  for (const Eigen::Index n : {1, 2, 3, 5, 8, 20, 127, 128, 129, 150}) {
    const Matrix a = WellConditioned(n, static_cast<unsigned>(n));
    const Eigen::VectorXd b = Eigen::VectorXd::LinSpaced(n, -1.0, 2.0);
    const Eigen::VectorXd expected = a.partialPivLu().solve(b);
    const auto size = static_cast<unsigned long>(n);
    Eigen::VectorXd x(n);
    EXPECT_TRUE(SolveGauss(a.data(), size, b.data(), 0.0, x.data(), nullptr));
    EXPECT_LT((x - expected).cwiseAbs().maxCoeff(), 1e-12) << n;
    Matrix work = a;
    Eigen::VectorXd right = b;
    EXPECT_TRUE(LineSysGauss1(work.data(), size, right.data(), x.data()));
    EXPECT_LT((x - expected).cwiseAbs().maxCoeff(), 1e-9) << n;
    work = a;
    right = b;
    EXPECT_TRUE(LineSysGauss2(work.data(), size, right.data(), x.data()));
    EXPECT_LT((x - expected).cwiseAbs().maxCoeff(), 1e-9) << n;
    TMatrixD inv(size, size);
    EXPECT_TRUE(inverse(TMatrixD(size, size, const_cast<double*>(a.data())), inv));
    const Matrix expectedInv = a.inverse();
    for (unsigned long i = 0; i < size * size; ++i) {
      ASSERT_NEAR(inv.Data[i], expectedInv.data()[i], 1e-12) << n;
    }
  }
}

TEST(InverseEx, OneElement) {
  double a[] = {4}, inv[] = {9};
  unsigned long rank = 7;
  // The tolerance has no say here.
  EXPECT_TRUE(InverseEx<double>(a, 1, inv, 100.0, true, &rank));
  EXPECT_EQ(inv[0], 0.25);
  EXPECT_EQ(rank, 1u);
  EXPECT_EQ(a[0], 4.0);
  a[0] = 0.0;
  inv[0] = 9;
  EXPECT_FALSE(InverseEx<double>(a, 1, inv, 0.0, false, &rank));
  EXPECT_EQ(rank, 0u);
  EXPECT_EQ(inv[0], 9.0);
  EXPECT_FALSE(InverseEx<double>(a, 0, inv, 0.0, false, &rank));
  EXPECT_EQ(inv[0], 9.0);
}

TEST(InverseEx, PivotEqualToTheToleranceFails) {
  // The second pivot is 3 - 1 * 2 * (1/2) = 2, exactly.
  const double a[] = {2, 2, 1, 3};
  double inv[4];
  unsigned long rank = 7;
  Values work(a, a + 4);
  EXPECT_FALSE(InverseEx<double>(work.data(), 2, inv, 2.0, false, &rank));
  EXPECT_EQ(rank, 0u);
  const double b[] = {4, 4, 1, 3};
  work.assign(b, b + 4);
  EXPECT_FALSE(InverseEx<double>(work.data(), 2, inv, 2.0, false, &rank));
  EXPECT_EQ(rank, 1u);
  EXPECT_EQ(work, Values(b, b + 4));
  EXPECT_TRUE(InverseEx<double>(work.data(), 2, inv, std::nextafter(2.0, 0.0), false, &rank));
  EXPECT_EQ(rank, 2u);
  EXPECT_FALSE(InverseEx<double>(work.data(), 2, inv, 4.0, false, nullptr));
}

TEST(InverseEx, ZeroToleranceFailsOnlyForAnExactZero) {
  double a[] = {1e-300, 0, 0, 1e-300}, inv[4];
  EXPECT_TRUE(InverseEx<double>(a, 2, inv, 0.0, false, nullptr));
  EXPECT_EQ(inv[0], 1.0 / 1e-300);
  double zero[] = {1, 1, 1, 1};
  unsigned long rank = 7;
  EXPECT_FALSE(InverseEx<double>(zero, 2, inv, 0.0, false, &rank));
  EXPECT_EQ(rank, 1u);
}

TEST(InverseEx, FailingStepIsReportedInEverySize) {
  std::mt19937_64 random(5);
  for (const unsigned long n : {6ul, 20ul, 60ul, 100ul}) {
    for (const unsigned long step : {0ul, n / 2, n - 1}) {
      // Unit lower times unit upper, integers; a zero on the upper diagonal ends the elimination.
      Values a(n * n, 0.0);
      for (unsigned long i = 0; i < n; ++i) {
        a[i * n + i] = i == step ? 0.0 : 1.0;
        if (i + 1 < n) {
          a[i * n + i + 1] = 1.0;
        }
      }
      Values inv(n * n);
      unsigned long rank = 777;
      EXPECT_FALSE(InverseEx<double>(a.data(), n, inv.data(), 0.0, false, &rank));
      EXPECT_EQ(rank, step);
    }
  }
}

TEST(Inverse, Edges) {
  TMatrixD res(1, 1);
  double two[] = {2}, zero[] = {0}, tiny[] = {1e-300};
  EXPECT_TRUE(inverse(TMatrixD(1, 1, two), res));
  EXPECT_EQ(res.Data[0], 0.5);
  EXPECT_FALSE(inverse(TMatrixD(1, 1, zero), res));
  EXPECT_EQ(res.Data[0], 0.5);
  EXPECT_TRUE(inverse(TMatrixD(1, 1, tiny), res));
  EXPECT_FALSE(inverse(TMatrixD(), res));
  TMatrixD m(2, 2), res2(2, 2);
  m.SetIdentity();
  mul(m, 1e-9);
  EXPECT_FALSE(inverse(m, res2));
  m.SetIdentity();
  mul(m, 1.1e-9);
  EXPECT_TRUE(inverse(m, res2));
  EXPECT_DOUBLE_EQ(res2.Data[0], 1.0 / 1.1e-9);
  // Large numbers pass however near to singular they are.
  double near[] = {1e12, 1e12, 1e12, 1e12 + 1e-3};
  EXPECT_TRUE(inverse(TMatrixD(2, 2, near), res2));
  // In place: the copy is taken before anything is written.
  double own[] = {0, 2, 4, 0};
  TMatrixD self(2, 2, own);
  EXPECT_TRUE(inverse(self, self));
  EXPECT_EQ(Values(own, own + 4), Values({0, 0.25, 0.5, 0}));
  fill(res, 3.0);
  EXPECT_FALSE(inverse(m, res));
  EXPECT_EQ(res.Data[0], 3.0);
}

TEST(LineSysGauss, ZeroLeadingElement) {
  for (auto* solve : {LineSysGauss1, LineSysGauss2}) {
    double a[] = {0, 2, 4, 0}, b[] = {6, 8}, x[2];
    EXPECT_TRUE(solve(a, 2, b, x));
    EXPECT_EQ(x[0], 2.0);
    EXPECT_EQ(x[1], 3.0);
    double zero[] = {0, 0, 0, 0}, c[] = {1, 1}, y[] = {9, 9};
    EXPECT_FALSE(solve(zero, 2, c, y));
    EXPECT_EQ(y[0], 9.0);
    EXPECT_FALSE(solve(zero, 0, c, y));
    double nan[] = {DefaultNaN()}, d[] = {1};
    EXPECT_FALSE(solve(nan, 1, d, y));
    double one[] = {-0.5}, e[] = {1};
    EXPECT_TRUE(solve(one, 1, e, y));
    EXPECT_EQ(y[0], -2.0);
  }
}

TEST(LineSysGauss, NaNIsNeverAPivotWhileThereIsANumber) {
  double a[] = {DefaultNaN(), 1, 2, 1}, b[] = {1, 1}, x[2];
  // Row 1 is the pivot row of step 0 and is normalised; the NaN then fills row 0, where no pivot is
  // left.
  EXPECT_FALSE(LineSysGauss1(a, 2, b, x));
  EXPECT_EQ(a[2], 1.0);
  EXPECT_EQ(a[3], 0.5);
}

TEST(LineSysGauss, LowerRowsAreRescaled) {
  // Row 1 divided by its leading 2, then row 0 taken off: 3/2 - 1/4 = 5/4 and 5/2 - 1/2 = 2.
  double a[] = {4, 1, 2, 3}, b[] = {2, 5}, x[2];
  EXPECT_TRUE(LineSysGauss1(a, 2, b, x));
  EXPECT_EQ(a[0], 1.0);
  EXPECT_EQ(a[1], 0.25);
  EXPECT_EQ(a[2], 0.0);
  EXPECT_EQ(b[1], 2.0 * (1.0 / 1.25));
  EXPECT_EQ(x[1], 1.6);
}

TEST(LineSysGauss, FullPivotingGivesUnknownsInTheCallersOrder) {
  // 9 stands in row 1, column 2; the solution is (1, 2, 3).
  double a[] = {1, 2, 1, 0, 1, 9, 3, 0, 1}, b[] = {8, 29, 6}, x[3];
  EXPECT_TRUE(LineSysGauss2(a, 3, b, x));
  EXPECT_NEAR(x[0], 1.0, 1e-14);
  EXPECT_NEAR(x[1], 2.0, 1e-14);
  EXPECT_NEAR(x[2], 3.0, 1e-14);
}

TEST(LineSysGauss, SingularOnlyWhenNothingIsLeft) {
  // The second column is empty below the first pivot: partial pivoting stops, and so does full.
  double a[] = {1, 1, 1, 1}, b[] = {1, 1}, x[2];
  EXPECT_FALSE(LineSysGauss1(a, 2, b, x));
  double c[] = {1, 1, 1, 1}, d[] = {1, 1};
  EXPECT_FALSE(LineSysGauss2(c, 2, d, x));
}

TEST(NormalEquations, ProductsByHand) {
  double values[] = {1, 2, 3, 4, 5, 6};
  const TMatrixD a(2, 3, values);
  TMatrixD res(2, 2);
  fill(res, 100.0);
  mul_mtm(a, &res);
  EXPECT_EQ(Values(res.Data, res.Data + 4), Values({35, 44, 44, 56}));
  TVectorD v(3), product(3);
  v.Data[0] = 1;
  v.Data[1] = 10;
  v.Data[2] = 100;
  product.Fill(7.0);
  mul_mtv(a, v, &product);
  // Cleared over its own size, also where the matrix has no column for it.
  EXPECT_EQ(Values(product.Data, product.Data + 3), Values({531, 642, 0}));
  TMatrixD small(1, 1);
  fill(small, 5.0);
  mul_mtm(a, &small);
  EXPECT_EQ(small.Data[0], 5.0);
  TVectorD shortOne(1);
  shortOne.Fill(5.0);
  mul_mtv(a, v, &shortOne);
  EXPECT_EQ(shortOne.Data[0], 5.0);
}

TEST(NormalEquations, LeastSquaresAgainstEigen) {
  std::mt19937_64 random(11);
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  for (const unsigned long n : {1ul, 2ul, 5ul, 12ul, 40ul}) {
    const unsigned long rows = 3 * n + 2;
    Matrix a(rows, n);
    Eigen::VectorXd b(rows);
    for (Eigen::Index i = 0; i < a.size(); ++i) {
      a.data()[i] = uniform(random);
    }
    for (Eigen::Index i = 0; i < b.size(); ++i) {
      b[i] = uniform(random);
    }
    TVectorD x(n), right;
    right.Create(rows, b.data());
    ASSERT_TRUE(lsm(TMatrixD(n, rows, a.data()), right, &x));
    const Eigen::VectorXd expected = a.colPivHouseholderQr().solve(b);
    for (unsigned long i = 0; i < n; ++i) {
      EXPECT_NEAR(x.Data[i], expected[static_cast<Eigen::Index>(i)], 1e-12) << n;
    }
  }
}

TEST(NormalEquations, LeastSquaresRefusals) {
  // The third column is the sum of the others.
  double values[] = {1, 2, 3, 4, 5, 9, 7, 8, 15, 1, 0, 1};
  TVectorD b(4), x(3);
  b.Fill(1.0);
  x.Fill(9.0);
  EXPECT_FALSE(lsm(TMatrixD(3, 4, values), b, &x));
  EXPECT_EQ(x.Data[0], 9.0);
  // One unknown: only an exact zero is refused.
  double column[] = {1e-100, 1e-100, 0, 0};
  TVectorD one(1);
  EXPECT_TRUE(lsm(TMatrixD(1, 4, column), b, &one));
  EXPECT_DOUBLE_EQ(one.Data[0], 1e100);
  double zeros[] = {0, 0, 0, 0};
  one.Fill(9.0);
  EXPECT_FALSE(lsm(TMatrixD(1, 4, zeros), b, &one));
  EXPECT_EQ(one.Data[0], 9.0);
  // Small coefficients fall below the absolute tolerance, well conditioned as they are.
  double small[] = {3e-5, 0, 0, 3e-5};
  TVectorD two(2), b2(2);
  b2.Fill(1.0);
  EXPECT_FALSE(lsm(TMatrixD(2, 2, small), b2, &two));
  small[0] = small[3] = 3.2e-5;
  EXPECT_TRUE(lsm(TMatrixD(2, 2, small), b2, &two));
  EXPECT_FALSE(lsm(TMatrixD(0, 2), b2, &two));
  EXPECT_FALSE(lsm(TMatrixD(2, 4, values), b2, &two));
}

} // namespace
