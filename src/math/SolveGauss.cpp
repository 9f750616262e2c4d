#include <ZxCore3D/math/Solvers.h>

#include <algorithm>
#include <cmath>
#include <numeric>

#include <ZxCore3D/math/Malloced-inl.h>

namespace {

constexpr unsigned long LocalUnknowns = 128;

} // namespace

bool SolveGaussInplace(double* a, unsigned long n, double* b, double tol, double* x,
                       unsigned long* rank) {
  unsigned long local[LocalUnknowns];
  zx_math::MALLOCED<unsigned long> block;
  unsigned long* perm = local;
  if (n > LocalUnknowns) {
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
    const double* pivotRow = a + perm[k] * n;
    for (unsigned long i = k + 1; i < n; ++i) {
      double* row = a + perm[i] * n;
      if (row[k] == 0.0) {
        continue;
      }
      const double m = row[k] / pivotRow[k];
      row[k] = 0.0;
      for (unsigned long j = k + 1; j < n; ++j) {
        row[j] -= pivotRow[j] * m;
      }
      b[perm[i]] -= m * b[perm[k]];
    }
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
