#include <ZxCore3D/math/Solvers.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include <ZxCore3D/math/private/Malloced.h>

#include <ZxCore3D/types/private/InstructionSets.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/SolveGauss.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/PanelElimination-inl.h>

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

struct TByQuotients {
  double tol;
  TSubtract op;
  static constexpr bool kScalesPivots = false;

  /// The first of the largest magnitudes; false when `tol` is greater than its position.
  template <class At> HWY_INLINE bool FindPivot(At at, size_t k, size_t n, size_t* p) const {
    double largest = std::fabs(at(k));
    for (size_t i = k + 1; i < n; ++i) {
      const double v = std::fabs(at(i));
      if (v > largest) {
        largest = v;
        *p = i;
      }
    }
    return !(tol > static_cast<double>(*p));
  }

  double Factor(double element, double pivot) const { return element / pivot; }
};

/// The number of steps that were made.
unsigned long EliminateByQuotients(double* a, unsigned long n, double* b, unsigned long* perm,
                                   double tol) {
  return TElimination<TByQuotients>(a, n, b, perm, {tol, {}}).Run();
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
} // namespace HWY_NAMESPACE
} // namespace zx_math
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zx_math {
namespace {

HWY_EXPORT(EliminateByQuotients);

constexpr unsigned long LocalUnknowns = 128;

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
  const unsigned long steps = HWY_DYNAMIC_DISPATCH(EliminateByQuotients)(a, n, b, perm, tol);
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
