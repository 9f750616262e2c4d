#include <ZxCore3D/math/TNewtonSolver.h>

#include <functional>

#include "Fixture.h"

namespace {

/// Writes down where it was asked.
class TRecorded : public TFunc1 {
public:
  std::function<double(double)> F;
  std::function<double(double)> D;
  std::vector<double> Asked;
  std::vector<double> Steps;
  int Left = 1000;

  bool Value(double x, double* y) override {
    Asked.push_back(x);
    if (Left-- <= 0) {
      return false;
    }
    *y = F(x);
    return true;
  }
  bool Deriv(double x, double h, double* d) override {
    Steps.push_back(h);
    if (!D) {
      return TFunc1::Deriv(x, h, d);
    }
    *d = D(x);
    return !std::isnan(*d);
  }
};

TEST(TFunc1, CentralDifference) {
  TRecorded f;
  f.F = [](double x) { return x * x; };
  double d = 0;
  EXPECT_TRUE(f.TFunc1::Deriv(3.0, 0.5, &d));
  EXPECT_EQ(d, 6.0);
  EXPECT_EQ(f.Asked, std::vector<double>({2.5, 3.5}));
  f.Left = 1;
  d = 77;
  EXPECT_FALSE(f.TFunc1::Deriv(3.0, 0.5, &d));
  f.Left = 0;
  EXPECT_FALSE(f.TFunc1::Deriv(3.0, 0.5, &d));
  EXPECT_EQ(d, 77.0);
}

TEST(TNewtonSolver, Defaults) {
  static_assert(sizeof(TNewtonSolver) == 4);
  EXPECT_EQ(TNewtonSolver().MaxHalvings, 8);
}

TEST(TNewtonSolver, SquareRootOfTwo) {
  TRecorded f;
  f.F = [](double x) { return x * x - 2.0; };
  double root = 0;
  EXPECT_TRUE(TNewtonSolver().Solve(&f, 1.0, 1e-12, 50, &root));
  EXPECT_NEAR(root, 1.4142135623730951, 1e-12);
  // The tolerance is the difference step.
  for (const double h : f.Steps) {
    EXPECT_EQ(h, 1e-12);
  }
}

TEST(TNewtonSolver, StartWithinToleranceNeedsNoDerivative) {
  TRecorded f;
  f.F = [](double x) { return x; };
  double root = 9;
  EXPECT_TRUE(TNewtonSolver().Solve(&f, 0.25, 0.25, 50, &root));
  EXPECT_EQ(root, 0.25);
  EXPECT_TRUE(f.Steps.empty());
  EXPECT_EQ(f.Asked.size(), 1u);
  // A NaN isn't above the tolerance either.
  f.F = [](double) { return DefaultNaN(); };
  EXPECT_TRUE(TNewtonSolver().Solve(&f, 5.0, 0.25, 50, &root));
  EXPECT_EQ(root, 5.0);
}

TEST(TNewtonSolver, FailuresLeaveTheRoot) {
  TRecorded f;
  f.F = [](double x) { return x * x - 2.0; };
  f.D = [](double x) { return 2 * x; };
  for (const int left : {0, 1, 2}) {
    f.Left = left;
    double root = 9;
    EXPECT_FALSE(TNewtonSolver().Solve(&f, 1.0, 1e-12, 50, &root)) << left;
    EXPECT_EQ(root, 9.0);
  }
  f.Left = 1000;
  f.D = [](double) { return DefaultNaN(); };
  double root = 9;
  EXPECT_FALSE(TNewtonSolver().Solve(&f, 1.0, 1e-12, 50, &root));
  EXPECT_EQ(root, 9.0);
  // In the halvings too: the full step from 1 goes to 3, where |f| is larger.
  f.D = [](double) { return 0.5; };
  f.Left = 2;
  EXPECT_FALSE(TNewtonSolver().Solve(&f, 1.0, 1e-12, 50, &root));
  EXPECT_EQ(root, 9.0);
}

TEST(TNewtonSolver, HalvesUntilTheValueFalls) {
  TRecorded f;
  f.F = [](double x) { return x * x - 2.0; };
  f.D = [](double) { return 0.25; };
  double root = 0;
  // dx is 4: f(5) = 23, f(3) = 7, f(2) = 2, f(1.5) = 0.25, from |f(1)| = 1.
  EXPECT_TRUE(TNewtonSolver().Solve(&f, 1.0, 1e-12, 1, &root));
  EXPECT_EQ(f.Asked, std::vector<double>({1, 5, 3, 2, 1.5}));
  EXPECT_EQ(root, 1.5);
}

TEST(TNewtonSolver, HalvingsAreLimited) {
  TRecorded f;
  f.F = [](double x) { return x == 0.0 ? 1.0 : 2.0; };
  f.D = [](double) { return -1.0; };
  for (const int limit : {-1, 0, 1, 2, 3}) {
    TNewtonSolver solver;
    solver.MaxHalvings = limit;
    f.Asked.clear();
    double root = 0;
    EXPECT_TRUE(solver.Solve(&f, 0.0, 0.5, 1, &root));
    const int halvings = limit < 1 ? 1 : limit;
    EXPECT_EQ(f.Asked.size(), 2u + static_cast<unsigned>(halvings)) << limit;
    EXPECT_EQ(root, std::ldexp(1.0, -halvings)) << limit;
  }
  f.Asked.clear();
  double root = 0;
  EXPECT_TRUE(TNewtonSolver().Solve(&f, 0.0, 0.5, 1, &root));
  EXPECT_EQ(f.Asked.size(), 10u);
  EXPECT_EQ(root, 1.0 / 256);
}

TEST(TNewtonSolver, EqualMagnitudeIsHalved) {
  TRecorded f;
  f.F = [](double x) { return 1.0 - x; };
  f.D = [](double) { return -0.5; };
  double root = 0;
  // From 0 the step is 2 and |f| is 1 again; half of it is the root.
  EXPECT_TRUE(TNewtonSolver().Solve(&f, 0.0, 1e-9, 5, &root));
  EXPECT_EQ(root, 1.0);
  EXPECT_EQ(f.Asked, std::vector<double>({0, 2, 1}));
}

TEST(TNewtonSolver, AtLeastOneStep) {
  for (const int maxIter : {-5, 0, 1}) {
    TRecorded f;
    f.F = [](double x) { return x * x - 2.0; };
    f.D = [](double x) { return 2 * x; };
    double root = 0;
    EXPECT_TRUE(TNewtonSolver().Solve(&f, 1.0, 1e-12, maxIter, &root));
    EXPECT_EQ(root, 1.5);
    EXPECT_EQ(f.Steps.size(), 1u);
  }
}

TEST(TNewtonSolver, NotConvergedIsNotReported) {
  TRecorded f;
  f.F = [](double x) { return x * x + 1.0; };
  double root = 0;
  EXPECT_TRUE(TNewtonSolver().Solve(&f, 3.0, 1e-6, 20, &root));
  EXPECT_GE(std::fabs(f.F(root)), 1.0);
}

TEST(TNewtonSolver, ZeroDerivativeFlowsOn) {
  TRecorded f;
  f.F = [](double x) { return std::isinf(x) ? DefaultNaN() : 1.0; };
  f.D = [](double) { return 0.0; };
  double root = 0;
  // -1 / 0 is -infinity; the NaN there ends the step and the search.
  EXPECT_TRUE(TNewtonSolver().Solve(&f, 0.0, 1e-6, 20, &root));
  EXPECT_EQ(root, -std::numeric_limits<double>::infinity());
  EXPECT_EQ(f.Asked.size(), 2u);
}

} // namespace
