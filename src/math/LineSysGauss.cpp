#include <ZxCore3D/math/Solvers.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <numeric>

namespace {

void EliminateRescaled(double* a, unsigned long n, double* b, unsigned long k,
                       const unsigned long* perm) {
  double* pivotRow = a + perm[k] * n;
  const double f = 1.0 / pivotRow[k];
  pivotRow[k] = 1.0;
  for (unsigned long j = k + 1; j < n; ++j) {
    pivotRow[j] *= f;
  }
  b[perm[k]] *= f;
  for (unsigned long i = k + 1; i < n; ++i) {
    double* row = a + perm[i] * n;
    if (row[k] == 0.0) {
      continue;
    }
    const double g = 1.0 / row[k];
    row[k] = 0.0;
    for (unsigned long j = k + 1; j < n; ++j) {
      row[j] = row[j] * g - pivotRow[j];
    }
    b[perm[i]] = g * b[perm[i]] - b[perm[k]];
  }
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

bool LineSysGauss1(double* a, unsigned long n, double* b, double* x) {
  if (n == 0) {
    return false;
  }
  const std::unique_ptr<unsigned long[]> perm(new unsigned long[n]);
  std::iota(perm.get(), perm.get() + n, 0UL);
  for (unsigned long k = 0; k < n; ++k) {
    double largest = 0.0;
    unsigned long p = k;
    for (unsigned long i = k; i < n; ++i) {
      const double v = std::fabs(a[perm[i] * n + k]);
      if (v > largest) {
        largest = v;
        p = i;
      }
    }
    if (largest == 0.0) {
      return false;
    }
    std::swap(perm[k], perm[p]);
    EliminateRescaled(a, n, b, k, perm.get());
  }
  SubstituteByColumns(a, n, b, perm.get());
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
    double largest = 0.0;
    unsigned long p = k;
    unsigned long c = k;
    for (unsigned long i = k; i < n; ++i) {
      for (unsigned long j = k; j < n; ++j) {
        const double v = std::fabs(a[perm[i] * n + j]);
        if (v > largest) {
          largest = v;
          p = i;
          c = j;
        }
      }
    }
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
    EliminateRescaled(a, n, b, k, perm);
  }
  SubstituteByColumns(a, n, b, perm);
  for (unsigned long i = 0; i < n; ++i) {
    x[cperm[i]] = b[perm[i]];
  }
  return true;
}
