#include <ZxCore3D/math/Solvers.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include <ZxCore3D/math/private/Malloced.h>

#include <ZxCore3D/types/InstructionSets-inl.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/SolveGauss.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/PanelElimination-inl.h>

#ifndef ZX_MATH_SOLVE_GAUSS_ONCE
#define ZX_MATH_SOLVE_GAUSS_ONCE

namespace zx_math {

/// Brings the row with the largest magnitude in `column`, the first of them, to perm[k]. False when
/// `tol` is greater than its position.
inline bool FindPivotByPosition(const double* column, unsigned long n, unsigned long k,
                                unsigned long* perm, double tol) {
  unsigned long p = k;
  double largest = std::fabs(column[perm[k] * n]);
  for (unsigned long i = k + 1; i < n; ++i) {
    const double v = std::fabs(column[perm[i] * n]);
    if (v > largest) {
      largest = v;
      p = i;
    }
  }
  if (tol > static_cast<double>(p)) {
    return false;
  }
  std::swap(perm[k], perm[p]);
  return true;
}

} // namespace zx_math

#endif

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

/// Eliminates below the pivot row of step k.
void EliminateBelow(double* a, unsigned long n, double* b, unsigned long k,
                    const unsigned long* perm) {
  const double* pivotRow = a + perm[k] * n;
  for (unsigned long i = k + 1; i < n; ++i) {
    double* row = a + perm[i] * n;
    if (row[k] == 0.0) {
      continue;
    }
    const double m = row[k] / pivotRow[k];
    row[k] = 0.0;
    SubtractRow(row + k + 1, pivotRow + k + 1, m, n - k - 1);
    b[perm[i]] -= m * b[perm[k]];
  }
}

struct BY_QUOTIENTS {
  double tol;
  SUBTRACT op;
  static constexpr bool ScalesPivots = false;

  bool FindPivot(const double* column, size_t n, size_t k, unsigned long* perm) const {
    return FindPivotByPosition(column, n, k, perm, tol);
  }
  double Factor(double element, double pivot) const { return element / pivot; }
};

unsigned long EliminateByPanels(double* a, unsigned long n, double* b, unsigned long* perm,
                                double tol) {
  return TPanelElimination<BY_QUOTIENTS>(a, n, b, perm, {tol, {}}).Run();
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
} // namespace HWY_NAMESPACE
} // namespace zx_math
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zx_math {
namespace {

HWY_EXPORT(EliminateBelow);
HWY_EXPORT(EliminateByPanels);

constexpr unsigned long LocalUnknowns = 128;
/// From here on panels win.
constexpr unsigned long PanelUnknowns = 40;

/// The number of steps that were made.
unsigned long Eliminate(double* a, unsigned long n, double* b, double tol, unsigned long* perm) {
  if (n >= PanelUnknowns) {
    return HWY_DYNAMIC_DISPATCH(EliminateByPanels)(a, n, b, perm, tol);
  }
  for (unsigned long k = 0; k < n; ++k) {
    if (!FindPivotByPosition(a + k, n, k, perm, tol)) {
      return k;
    }
    HWY_DYNAMIC_DISPATCH(EliminateBelow)(a, n, b, k, perm);
  }
  return n;
}

} // namespace
} // namespace zx_math

// Dispatching to a single instruction set names its namespace, within zx_math.
using namespace zx_math;

bool SolveGaussInplace(double* a, unsigned long n, double* b, double tol, double* x,
                       unsigned long* rank) {
  unsigned long local[zx_math::LocalUnknowns];
  zx_math::MALLOCED<unsigned long> block;
  unsigned long* perm = local;
  if (n > zx_math::LocalUnknowns) {
    block = zx_math::MallocArray<unsigned long>(n, 1);
    perm = block.get();
    if (!perm) {
      return false;
    }
  }
  std::iota(perm, perm + n, 0UL);
  const unsigned long steps = zx_math::Eliminate(a, n, b, tol, perm);
  if (rank) {
    *rank = steps;
  }
  if (steps < n) {
    return false;
  }
  for (unsigned long i = n; i-- > 0;) {
    const double* row = a + perm[i] * n;
    double sum = b[perm[i]];
    for (unsigned long j = i + 1; j < n; ++j) {
      sum -= row[j] * x[j];
    }
    x[i] = sum / row[i];
  }
  return true;
}

bool SolveGauss(const double* a, unsigned long n, const double* b, double tol, double* x,
                unsigned long* rank) {
  const zx_math::MALLOCED<double> block = zx_math::MallocArray<double>(n, n, n);
  if (!block && n != 0) {
    return false;
  }
  const unsigned long count = n * n;
  std::copy_n(a, count, block.get());
  std::copy_n(b, n, block.get() + count);
  return SolveGaussInplace(block.get(), n, block.get() + count, tol, x, rank);
}
#endif // HWY_ONCE
