#pragma once

// The eliminations and products as plain loops, one operation after the other in the order that the
// library keeps. Every faster way is held against these, bit by bit.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <utility>
#include <vector>

namespace reference {

using Index = unsigned long;

inline bool SolveGaussInplace(double* a, Index n, double* b, double tol, double* x, Index* rank) {
  if (n == 0) {
    if (rank)
      *rank = 0;
    return true;
  }
  std::vector<Index> perm(n);
  std::iota(perm.begin(), perm.end(), Index(0));
  for (Index k = 0; k < n; ++k) {
    Index p = k;
    double largest = std::fabs(a[perm[k] * n + k]);
    for (Index i = k + 1; i < n; ++i) {
      const double v = std::fabs(a[perm[i] * n + k]);
      if (v > largest) {
        largest = v;
        p = i;
      }
    }
    if (tol > static_cast<double>(p)) {
      if (rank)
        *rank = k;
      return false;
    }
    if (p != k)
      std::swap(perm[k], perm[p]);
    const Index r = perm[k];
    for (Index i = k + 1; i < n; ++i) {
      const Index q = perm[i];
      if (a[q * n + k] == 0.0)
        continue;
      const double m = a[q * n + k] / a[r * n + k];
      a[q * n + k] = 0.0;
      for (Index j = k + 1; j < n; ++j)
        a[q * n + j] -= a[r * n + j] * m;
      b[q] -= m * b[r];
    }
  }
  for (Index i = n; i-- > 0;) {
    const Index r = perm[i];
    double sum = b[r];
    for (Index j = i + 1; j < n; ++j)
      sum -= a[r * n + j] * x[j];
    x[i] = sum / a[r * n + i];
  }
  if (rank)
    *rank = n;
  return true;
}

inline bool InverseEx(double* a, Index n, double* inv, double tol, bool destroy, Index* rank) {
  if (n == 1) {
    if (a[0] == 0.0) {
      if (rank)
        *rank = 0;
      return false;
    }
    inv[0] = 1.0 / a[0];
    if (rank)
      *rank = 1;
    return true;
  }
  std::vector<double> copy;
  double* w = a;
  if (!destroy) {
    copy.assign(a, a + n * n);
    w = copy.data();
  }
  for (Index i = 0; i < n; ++i)
    for (Index j = 0; j < n; ++j)
      inv[i * n + j] = i == j ? 1.0 : 0.0;
  for (Index k = 0; k < n; ++k) {
    Index p = k;
    double v = std::fabs(w[k * n + k]);
    for (Index i = k + 1; i < n; ++i)
      if (std::fabs(w[i * n + k]) > v) {
        v = std::fabs(w[i * n + k]);
        p = i;
      }
    if (tol >= v) {
      if (rank)
        *rank = k;
      return false;
    }
    if (p != k) {
      for (Index j = k; j < n; ++j)
        std::swap(w[k * n + j], w[p * n + j]);
      for (Index j = 0; j < n; ++j)
        std::swap(inv[k * n + j], inv[p * n + j]);
    }
    const double f = 1.0 / w[k * n + k];
    w[k * n + k] = 1.0;
    for (Index j = k + 1; j < n; ++j)
      w[k * n + j] *= f;
    for (Index j = 0; j < n; ++j)
      inv[k * n + j] *= f;
    for (Index i = k + 1; i < n; ++i) {
      const double m = w[i * n + k];
      if (m == 0.0)
        continue;
      w[i * n + k] = 0.0;
      for (Index j = k + 1; j < n; ++j)
        w[i * n + j] -= w[k * n + j] * m;
      for (Index j = 0; j < n; ++j)
        inv[i * n + j] -= inv[k * n + j] * m;
    }
  }
  for (Index c = n - 1; c >= 1; --c)
    for (Index i = c; i-- > 0;) {
      const double m = w[i * n + c];
      if (m == 0.0)
        continue;
      w[i * n + c] = 0.0;
      for (Index j = 0; j < n; ++j)
        inv[i * n + j] -= inv[c * n + j] * m;
    }
  if (rank)
    *rank = n;
  return true;
}

/// What both eliminations with rescaled rows do once the pivot of step k stands in row r.
inline void ScaleAndEliminate(double* a, Index n, double* b, Index k, const Index* perm) {
  const Index r = perm[k];
  const double f = 1.0 / a[r * n + k];
  a[r * n + k] = 1.0;
  for (Index j = k + 1; j < n; ++j)
    a[r * n + j] *= f;
  b[r] *= f;
  for (Index i = k + 1; i < n; ++i) {
    const Index q = perm[i];
    const double m = a[q * n + k];
    if (m == 0.0)
      continue;
    const double g = 1.0 / m;
    a[q * n + k] = 0.0;
    for (Index j = k + 1; j < n; ++j)
      a[q * n + j] = a[q * n + j] * g - a[r * n + j];
    b[q] = g * b[q] - b[r];
  }
}

inline void SubstituteByColumns(const double* a, Index n, double* b, const Index* perm) {
  for (Index c = n - 1; c >= 1; --c) {
    const double t = b[perm[c]];
    for (Index i = 0; i < c; ++i) {
      const Index q = perm[i];
      if (a[q * n + c] != 0.0)
        b[q] -= a[q * n + c] * t;
    }
  }
}

inline bool LineSysGauss1(double* a, Index n, double* b, double* x) {
  std::vector<Index> perm(n);
  std::iota(perm.begin(), perm.end(), Index(0));
  for (Index k = 0; k < n; ++k) {
    double largest = 0.0;
    Index p = k;
    for (Index i = k; i < n; ++i)
      if (std::fabs(a[perm[i] * n + k]) > largest) {
        largest = std::fabs(a[perm[i] * n + k]);
        p = i;
      }
    if (largest == 0.0)
      return false;
    if (p != k)
      std::swap(perm[k], perm[p]);
    ScaleAndEliminate(a, n, b, k, perm.data());
  }
  SubstituteByColumns(a, n, b, perm.data());
  for (Index i = 0; i < n; ++i)
    x[i] = b[perm[i]];
  return true;
}

inline bool LineSysGauss2(double* a, Index n, double* b, double* x) {
  std::vector<Index> perm(n), cperm(n);
  std::iota(perm.begin(), perm.end(), Index(0));
  std::iota(cperm.begin(), cperm.end(), Index(0));
  for (Index k = 0; k < n; ++k) {
    double largest = 0.0;
    Index p = k, c = k;
    for (Index i = k; i < n; ++i)
      for (Index j = k; j < n; ++j)
        if (std::fabs(a[perm[i] * n + j]) > largest) {
          largest = std::fabs(a[perm[i] * n + j]);
          p = i;
          c = j;
        }
    if (largest == 0.0)
      return false;
    if (p != k)
      std::swap(perm[k], perm[p]);
    if (c != k) {
      for (Index i = 0; i < n; ++i)
        std::swap(a[i * n + k], a[i * n + c]);
      std::swap(cperm[k], cperm[c]);
    }
    ScaleAndEliminate(a, n, b, k, perm.data());
  }
  SubstituteByColumns(a, n, b, perm.data());
  for (Index i = 0; i < n; ++i)
    x[cperm[i]] = b[perm[i]];
  return true;
}

/// l is rows by inner, r is inner by columns.
inline void Mul(const double* l, const double* r, double* res, Index rows, Index inner,
                Index columns) {
  for (Index y = 0; y < rows; ++y)
    for (Index x = 0; x < columns; ++x) {
      double sum = 0.0;
      for (Index k = 0; k < inner; ++k)
        sum += l[y * inner + k] * r[k * columns + x];
      res[y * columns + x] = sum;
    }
}

/// a is rows by columns; res is columns by columns.
inline void MulMtm(const double* a, double* res, Index rows, Index columns) {
  std::fill(res, res + columns * columns, 0.0);
  for (Index r = 0; r < rows; ++r)
    for (Index i = 0; i < columns; ++i)
      for (Index j = 0; j < columns; ++j)
        res[i * columns + j] += a[r * columns + i] * a[r * columns + j];
}

inline void MulMtv(const double* a, const double* v, double* res, Index rows, Index columns) {
  std::fill(res, res + columns, 0.0);
  for (Index r = 0; r < rows; ++r)
    for (Index x = 0; x < columns; ++x)
      res[x] += a[r * columns + x] * v[r];
}

inline bool Lsm(const double* a, const double* b, double* x, Index rows, Index columns) {
  std::vector<double> normal(columns * columns), inv(columns * columns), atb(columns);
  MulMtm(a, normal.data(), rows, columns);
  if (columns == 1) {
    if (normal[0] == 0.0)
      return false;
    inv[0] = 1.0 / normal[0];
  } else if (!InverseEx(normal.data(), columns, inv.data(), 1e-9, false, nullptr)) {
    return false;
  }
  MulMtv(a, b, atb.data(), rows, columns);
  for (Index i = 0; i < columns; ++i) {
    double sum = 0.0;
    for (Index j = 0; j < columns; ++j)
      sum += inv[i * columns + j] * atb[j];
    x[i] = sum;
  }
  return true;
}

inline void Transpose(const double* m, double* res, Index sizeX, Index sizeY, Index resSizeX) {
  for (Index y = 0; y < sizeY; ++y)
    for (Index x = 0; x < sizeX; ++x)
      res[x * resSizeX + y] = m[y * sizeX + x];
}

} // namespace reference
