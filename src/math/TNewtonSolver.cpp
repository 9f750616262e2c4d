#include <ZxCore3D/math/TNewtonSolver.h>

#include <cmath>

bool TFunc1::Deriv(double x, double h, double* d) {
  double below = 0.0;
  double above = 0.0;
  if (!Value(x - h, &below) || !Value(x + h, &above)) {
    return false;
  }
  *d = (above - below) / (h + h);
  return true;
}

TNewtonSolver::TNewtonSolver() : MaxHalvings(8) {}

bool TNewtonSolver::Solve(TFunc1* f, double x0, double eps, int maxIter, double* root) {
  double x = x0;
  double fx = 0.0;
  if (!f->Value(x, &fx)) {
    return false;
  }
  if (!(std::fabs(fx) > eps)) {
    *root = x;
    return true;
  }
  for (int i = 0;; ++i) {
    double d = 0.0;
    if (!f->Deriv(x, eps, &d)) {
      return false;
    }
    const double dx = -fx / d;
    double next = x + dx;
    double fNext = 0.0;
    if (!f->Value(next, &fNext)) {
      return false;
    }
    double scale = 1.0;
    int halvings = 0;
    while (std::fabs(fNext) >= std::fabs(fx)) {
      scale *= 0.5;
      next = dx * scale + x;
      if (!f->Value(next, &fNext)) {
        return false;
      }
      if (++halvings >= MaxHalvings) {
        break;
      }
    }
    fx = fNext;
    x = next;
    if (i + 1 >= maxIter || !(std::fabs(fx) > eps)) {
      *root = x;
      return true;
    }
  }
}
