#include <ZxCore3D/math/InverseEx-inl.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include <ZxCore3D/math/Malloced-inl.h>

namespace {

bool Finish(unsigned long* rank, unsigned long steps, bool result) {
  if (rank) {
    *rank = steps;
  }
  return result;
}

void Identity(double* inv, unsigned long n) {
  std::fill_n(inv, n * n, 0.0);
  for (unsigned long i = 0; i < n; ++i) {
    inv[i * n + i] = 1.0;
  }
}

void SubtractRow(double* row, const double* pivotRow, double m, unsigned long count) {
  for (unsigned long j = 0; j < count; ++j) {
    row[j] -= pivotRow[j] * m;
  }
}

bool InvertByRows(double* w, unsigned long n, double* inv, double tol, unsigned long* rank) {
  for (unsigned long k = 0; k < n; ++k) {
    unsigned long p = k;
    double v = std::fabs(w[k * n + k]);
    for (unsigned long i = k + 1; i < n; ++i) {
      if (std::fabs(w[i * n + k]) > v) {
        v = std::fabs(w[i * n + k]);
        p = i;
      }
    }
    if (tol >= v) {
      return Finish(rank, k, false);
    }
    double* pivotRow = w + k * n;
    double* pivotInv = inv + k * n;
    if (p != k) {
      std::swap_ranges(pivotRow + k, pivotRow + n, w + p * n + k);
      std::swap_ranges(pivotInv, pivotInv + n, inv + p * n);
    }
    const double f = 1.0 / pivotRow[k];
    pivotRow[k] = 1.0;
    for (unsigned long j = k + 1; j < n; ++j) {
      pivotRow[j] *= f;
    }
    for (unsigned long j = 0; j < n; ++j) {
      pivotInv[j] *= f;
    }
    for (unsigned long i = k + 1; i < n; ++i) {
      const double m = w[i * n + k];
      if (m != 0.0) {
        w[i * n + k] = 0.0;
        SubtractRow(w + i * n + k + 1, pivotRow + k + 1, m, n - k - 1);
        SubtractRow(inv + i * n, pivotInv, m, n);
      }
    }
  }
  for (unsigned long c = n - 1; c >= 1; --c) {
    for (unsigned long i = c; i-- > 0;) {
      const double m = w[i * n + c];
      if (m != 0.0) {
        w[i * n + c] = 0.0;
        SubtractRow(inv + i * n, inv + c * n, m, n);
      }
    }
  }
  return Finish(rank, n, true);
}

} // namespace

template <>
bool InverseEx<double>(double* a, unsigned long n, double* inv, double tol, bool destroy,
                       unsigned long* rank) {
  if (n == 0) {
    return false;
  }
  if (n == 1) {
    if (a[0] == 0.0) {
      return Finish(rank, 0, false);
    }
    inv[0] = 1.0 / a[0];
    return Finish(rank, 1, true);
  }
  zx_math::MALLOCED<double> copy;
  if (!destroy) {
    copy = zx_math::MallocArray<double>(n, n);
    if (!copy) {
      return false;
    }
    std::copy_n(a, n * n, copy.get());
  }
  Identity(inv, n);
  return InvertByRows(destroy ? a : copy.get(), n, inv, tol, rank);
}
