#include <ZxCore3D/math/Solvers.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include <ZxCore3D/math/private/Malloced.h>

#include <ZxCore3D/types/InstructionSets-inl.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/SolveGauss.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/DenseTiles-inl.h>

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

// NOLINTNEXTLINE(google-readability-namespace-comments)
} // namespace HWY_NAMESPACE
} // namespace zx_math
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zx_math {
namespace {

HWY_EXPORT(EliminateBelow);

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
  for (unsigned long k = 0; k < n; ++k) {
    unsigned long p = k;
    double largest = std::fabs(a[perm[k] * n + k]);
    for (unsigned long i = k + 1; i < n; ++i) {
      const double v = std::fabs(a[perm[i] * n + k]);
      if (v > largest) {
        largest = v;
        p = i;
      }
    }
    if (tol > static_cast<double>(p)) {
      if (rank) {
        *rank = k;
      }
      return false;
    }
    std::swap(perm[k], perm[p]);
    HWY_DYNAMIC_DISPATCH(EliminateBelow)(a, n, b, k, perm);
  }
  for (unsigned long i = n; i-- > 0;) {
    const double* row = a + perm[i] * n;
    double sum = b[perm[i]];
    for (unsigned long j = i + 1; j < n; ++j) {
      sum -= row[j] * x[j];
    }
    x[i] = sum / row[i];
  }
  if (rank) {
    *rank = n;
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
