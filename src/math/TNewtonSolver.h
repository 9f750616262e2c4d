#pragma once

#include <ZxCore3D/types/Export.h>

/// A function of one variable, for `TNewtonSolver`. Derive from it and give `Value`.
class ZX_CORE3D_API TFunc1 {
public:
  /// Stores f(x) in `*y` and returns true, or returns false where f has no value.
  virtual bool Value(double x, double* y) = 0;

  /// Stores the derivative at `x` in `*d`; false when the function failed. This one is the central
  /// difference (f(x + h) - f(x - h)) / (h + h), with f(x - h) evaluated first. Override it where
  /// the derivative is known.
  virtual bool Deriv(double x, double h, double* d);

  virtual ~TFunc1() = default;
};

/// Newton's iteration with step halving (Dennis and Schnabel, Numerical Methods for Unconstrained
/// Optimization and Nonlinear Equations, section 6.3).
class ZX_CORE3D_API TNewtonSolver {
public:
  /// The largest number of halvings in one step. At least one is made once a full step hasn't
  /// brought |f| down.
  int MaxHalvings;

  /// Sets `MaxHalvings` to 8.
  TNewtonSolver();

  /// Looks for a root of `f` from `x0` on, until |f| isn't above `eps`, for `maxIter` steps or,
  /// with a `maxIter` of 0 or below, one.
  ///
  /// True means only that `f` could be evaluated all along and that `*root` was stored: a search
  /// that hasn't converged isn't told apart, nor one that ended in a NaN, which a zero derivative
  /// gives. Check f(*root). False, with `*root` unchanged, when `Value` or `Deriv` failed.
  ///
  /// `eps` is also the step of the difference that `Deriv` makes: with an `eps` of 1e-12 about four
  /// digits of the derivative are right, and one below the spacing of doubles at x gives a
  /// derivative of 0.
  bool Solve(TFunc1* f, double x0, double eps, int maxIter, double* root);
};
