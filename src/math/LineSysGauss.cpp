#include <ZxCore3D/math/Solvers.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

#include <ZxCore3D/types/private/InstructionSets.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/LineSysGauss.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/PanelElimination-inl.h>

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

struct TByReciprocals {
  TRescale op;
  static constexpr bool kScalesPivots = true;

  /// The first of the largest magnitudes; false when none is above 0. A NaN never is.
  template <class At> HWY_INLINE bool FindPivot(At at, size_t k, size_t n, size_t* p) const {
    double largest = 0.0;
    for (size_t i = k; i < n; ++i) {
      const double v = std::fabs(at(i));
      if (v > largest) {
        largest = v;
        *p = i;
      }
    }
    return largest != 0.0;
  }

  double Factor(double element, double) const { return 1.0 / element; }
};

/// False when a step has no pivot.
bool EliminateByReciprocals(double* a, unsigned long n, double* b, unsigned long* perm) {
  return TElimination<TByReciprocals>(a, n, b, perm, {}).Run() == n;
}

/// Normalises the pivot row of step k and eliminates below it.
void StepByReciprocals(double* a, unsigned long n, double* b, unsigned long k,
                       unsigned long* perm) {
  TElimination<TByReciprocals>(a, n, b, perm, {}).StepByRows(k);
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

HWY_EXPORT(EliminateByReciprocals);
HWY_EXPORT(StepByReciprocals);
HWY_EXPORT(FindPivot);

/// Columns that a row sees together in the substitution: a cache line.
constexpr unsigned long ColumnsTogether = 8;

void SubstituteByColumns(const double* a, unsigned long n, double* b, const unsigned long* perm) {
  const auto subtract = [&](unsigned long i, unsigned long from, unsigned long end) {
    const double* row = a + perm[i] * n;
    double rest = b[perm[i]];
    for (unsigned long c = end; c-- > from;) {
      if (row[c] != 0.0) {
        rest -= row[c] * b[perm[c]];
      }
    }
    b[perm[i]] = rest;
  };
  for (unsigned long end = n; end > 0;) {
    const unsigned long begin = end - std::min(end, ColumnsTogether);
    for (unsigned long i = end; i-- > 0;) {
      subtract(i, std::max(begin, i + 1), end);
    }
    end = begin;
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
  if (!HWY_DYNAMIC_DISPATCH(EliminateByReciprocals)(a, n, b, perm.get())) {
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
    HWY_DYNAMIC_DISPATCH(StepByReciprocals)(a, n, b, k, perm);
  }
  zx_math::SubstituteByColumns(a, n, b, perm);
  for (unsigned long i = 0; i < n; ++i) {
    x[cperm[i]] = b[perm[i]];
  }
  return true;
}
#endif // HWY_ONCE
