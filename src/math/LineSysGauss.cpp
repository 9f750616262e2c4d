#include <ZxCore3D/math/Solvers.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

#include <ZxCore3D/types/InstructionSets-inl.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/LineSysGauss.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/PanelElimination-inl.h>

#ifndef ZX_MATH_LINE_SYS_GAUSS_ONCE
#define ZX_MATH_LINE_SYS_GAUSS_ONCE

namespace zx_math {

/// Brings the row with the largest magnitude in `column`, the first of them, to perm[k]. False when
/// no magnitude is above 0; a NaN is not.
inline bool FindPivotInColumn(const double* column, unsigned long n, unsigned long k,
                              unsigned long* perm) {
  double largest = 0.0;
  unsigned long p = k;
  for (unsigned long i = k; i < n; ++i) {
    const double v = std::fabs(column[perm[i] * n]);
    if (v > largest) {
      largest = v;
      p = i;
    }
  }
  std::swap(perm[k], perm[p]);
  return largest != 0.0;
}

} // namespace zx_math

#endif

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

/// Normalises the pivot row of step k and eliminates below it.
void EliminateRescaled(double* a, unsigned long n, double* b, unsigned long k,
                       const unsigned long* perm) {
  double* pivotRow = a + perm[k] * n;
  const double f = 1.0 / pivotRow[k];
  pivotRow[k] = 1.0;
  ScaleRow(pivotRow + k + 1, f, n - k - 1);
  b[perm[k]] *= f;
  for (unsigned long i = k + 1; i < n; ++i) {
    double* row = a + perm[i] * n;
    if (row[k] == 0.0) {
      continue;
    }
    const double g = 1.0 / row[k];
    row[k] = 0.0;
    ApplyToRow(row + k + 1, g, pivotRow + k + 1, n - k - 1, RESCALE());
    b[perm[i]] = g * b[perm[i]] - b[perm[k]];
  }
}

struct BY_RECIPROCALS {
  RESCALE op;
  static constexpr bool ScalesPivots = true;

  bool FindPivot(const double* column, size_t n, size_t k, unsigned long* perm) const {
    return FindPivotInColumn(column, n, k, perm);
  }
  double Factor(double element, double) const { return 1.0 / element; }
};

unsigned long EliminateRescaledByPanels(double* a, unsigned long n, double* b,
                                        unsigned long* perm) {
  return TPanelElimination<BY_RECIPROCALS>(a, n, b, perm, {}).Run();
}

/// The largest magnitude of a row above `floor`, or `floor`. A NaN is never larger.
HWY_INLINE double LargestOfRow(const double* row, size_t count, double floor) {
  const DOUBLES d;
  const size_t lanes = hn::Lanes(d);
  double largest = floor;
  size_t j = 0;
  if (count >= lanes) {
    hn::Vec<DOUBLES> best = hn::Set(d, floor);
    for (; j + lanes <= count; j += lanes) {
      const hn::Vec<DOUBLES> v = hn::Abs(hn::LoadU(d, row + j));
      best = hn::IfThenElse(hn::Gt(v, best), v, best);
    }
    largest = hn::GetLane(hn::MaxOfLanes(d, best));
  }
  for (; j < count; ++j) {
    const double v = std::fabs(row[j]);
    if (v > largest) {
      largest = v;
    }
  }
  return largest;
}

/// The first of the largest magnitudes of the rows and columns from k on, rows in the order of
/// `perm`: its position in `*p`, its column in `*c`. 0.0 if nothing is above it.
double FindPivot(const double* a, unsigned long n, unsigned long k, const unsigned long* perm,
                 unsigned long* p, unsigned long* c) {
  double largest = 0.0;
  for (unsigned long i = k; i < n; ++i) {
    const double* row = a + perm[i] * n;
    const double v = LargestOfRow(row + k, n - k, largest);
    if (v > largest) {
      largest = v;
      *p = i;
      *c = k;
      while (std::fabs(row[*c]) != v) {
        ++*c;
      }
    }
  }
  return largest;
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
} // namespace HWY_NAMESPACE
} // namespace zx_math
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zx_math {
namespace {

HWY_EXPORT(EliminateRescaled);
HWY_EXPORT(EliminateRescaledByPanels);
HWY_EXPORT(FindPivot);

/// From here on panels win.
constexpr unsigned long PanelUnknowns = 40;

/// False when a step has no pivot.
bool Eliminate(double* a, unsigned long n, double* b, unsigned long* perm) {
  if (n >= PanelUnknowns) {
    return HWY_DYNAMIC_DISPATCH(EliminateRescaledByPanels)(a, n, b, perm) == n;
  }
  for (unsigned long k = 0; k < n; ++k) {
    if (!FindPivotInColumn(a + k, n, k, perm)) {
      return false;
    }
    HWY_DYNAMIC_DISPATCH(EliminateRescaled)(a, n, b, k, perm);
  }
  return true;
}

void SubstituteByColumns(const double* a, unsigned long n, double* b, const unsigned long* perm) {
  for (unsigned long c = n - 1; c >= 1; --c) {
    const double t = b[perm[c]];
    for (unsigned long i = 0; i < c; ++i) {
      const double m = a[perm[i] * n + c];
      if (m != 0.0) {
        b[perm[i]] -= m * t;
      }
    }
  }
}

} // namespace
} // namespace zx_math

// Dispatching to a single instruction set names its namespace, within zx_math.
using namespace zx_math;

bool LineSysGauss1(double* a, unsigned long n, double* b, double* x) {
  if (n == 0) {
    return false;
  }
  const std::unique_ptr<unsigned long[]> perm(new unsigned long[n]);
  std::iota(perm.get(), perm.get() + n, 0UL);
  if (!zx_math::Eliminate(a, n, b, perm.get())) {
    return false;
  }
  zx_math::SubstituteByColumns(a, n, b, perm.get());
  for (unsigned long i = 0; i < n; ++i) {
    x[i] = b[perm[i]];
  }
  return true;
}

bool LineSysGauss2(double* a, unsigned long n, double* b, double* x) {
  if (n == 0) {
    return false;
  }
  const std::unique_ptr<unsigned long[]> block(new unsigned long[2 * n]);
  unsigned long* perm = block.get();
  unsigned long* cperm = perm + n;
  std::iota(perm, perm + n, 0UL);
  std::iota(cperm, cperm + n, 0UL);
  for (unsigned long k = 0; k < n; ++k) {
    unsigned long p = k;
    unsigned long c = k;
    const double largest = HWY_DYNAMIC_DISPATCH(FindPivot)(a, n, k, perm, &p, &c);
    if (largest == 0.0) {
      return false;
    }
    std::swap(perm[k], perm[p]);
    if (c != k) {
      for (unsigned long i = 0; i < n; ++i) {
        std::swap(a[i * n + k], a[i * n + c]);
      }
      std::swap(cperm[k], cperm[c]);
    }
    HWY_DYNAMIC_DISPATCH(EliminateRescaled)(a, n, b, k, perm);
  }
  zx_math::SubstituteByColumns(a, n, b, perm);
  for (unsigned long i = 0; i < n; ++i) {
    x[cperm[i]] = b[perm[i]];
  }
  return true;
}
#endif // HWY_ONCE
