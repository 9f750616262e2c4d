#pragma once

// The one-dimensional spline by a dense inversion, as plain loops.

#include <cstring>
#include <vector>

#include <ZxCore3D/types/POLYNOM3.h>

#include "ReferenceSolvers.h"

namespace reference {

inline bool CalcCubeSpline1D(const double* y, Index stride, Index n, bool closed, POLYNOM3* out) {
  if (n < 2)
    return false;
  if (stride == 0)
    stride = 8;
  const Index S = closed ? n : n - 1;
  const Index N = 4 * S;
  std::vector<double> A(N * N, 0.0), inv(N * N), right(N), solution(N);
  auto value = [&](Index i) {
    double v;
    std::memcpy(&v, reinterpret_cast<const char*>(y) + i * stride, sizeof v);
    return v;
  };
  Index row = 0;
  auto put = [&](Index column, double v) { A[row * N + column] = v; };
  for (Index i = 0; i < S; ++i) {
    const Index j = i + 1 == S && closed ? 0 : i + 1;
    put(4 * i, 1.0);
    right[row++] = value(i);
    put(4 * i, 1.0);
    put(4 * i + 1, 1.0);
    put(4 * i + 2, 1.0);
    put(4 * i + 3, 1.0);
    right[row++] = value(i + 1 == n ? 0 : i + 1);
    if (!closed && i + 1 == S)
      continue;
    put(4 * i + 1, 1.0);
    put(4 * i + 2, 2.0);
    put(4 * i + 3, 3.0);
    put(4 * j + 1, -1.0);
    right[row++] = 0.0;
    put(4 * i + 2, 2.0);
    put(4 * i + 3, 6.0);
    put(4 * j + 2, -2.0);
    right[row++] = 0.0;
  }
  if (!closed) {
    put(2, 2.0);
    right[row++] = 0.0;
    put(4 * (S - 1) + 2, 2.0);
    put(4 * (S - 1) + 3, 6.0);
    right[row++] = 0.0;
  }
  if (!InverseEx(A.data(), N, inv.data(), 1e-6, true, nullptr))
    return false;
  for (Index i = 0; i < N; ++i) {
    double sum = 0.0;
    for (Index j = 0; j < N; ++j)
      sum += inv[i * N + j] * right[j];
    solution[i] = sum;
  }
  std::memcpy(out, solution.data(), N * sizeof(double));
  return true;
}

} // namespace reference
