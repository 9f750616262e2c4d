#include <ZxCore3D/math/private/InverseEx.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

#include <ZxCore3D/math/private/Malloced.h>

#include <ZxCore3D/types/private/InstructionSets.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/InverseEx.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/DenseTiles-inl.h>

#ifndef ZX_MATH_INVERSE_EX_ONCE
#define ZX_MATH_INVERSE_EX_ONCE

namespace zx_math {

/// Pivot steps that are made together before the columns to the right see them.
constexpr size_t kPanelPivots = 32;
/// Pivot rows that see each other's steps one by one, before the rest of the panel's see them.
constexpr size_t kNarrowPivots = 8;

/// The work arrays of an inversion: rows of whole tiles for any instruction set. Columns from n on
/// are padding, and what stands there is never read back.
struct TInversion {
  size_t n;
  size_t stride;
  double* w;
  double* inv;
  double tol;
  size_t steps = 0;
  // From here on for `InvertByPanels` alone.
  /// n rows of the columns that the pivot steps are made in.
  double* panel = nullptr;
  /// n rows of `kPanelPivots` multipliers.
  double* multipliers = nullptr;
  /// For each row of `multipliers`: whether one of its multipliers is exactly 0, so that its step
  /// must be left out (subtracting a product with 0 can change the sign of a zero, or make a NaN).
  unsigned char* skips = nullptr;
  /// The column of the inverse that column t of `inv` is. See `InvertByPanels`.
  size_t* order = nullptr;
  /// The reciprocals of the pivots.
  double* scales = nullptr;
};

} // namespace zx_math

#endif

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

bool InvertByRows(TInversion& job) {
  const size_t n = job.n;
  const size_t stride = job.stride;
  double* w = job.w;
  double* inv = job.inv;
  const size_t columns = hwy::RoundUpTo(n, hn::Lanes(DOUBLES()));
  for (size_t k = 0; k < n; ++k) {
    size_t p = k;
    double largest = std::fabs(w[k * stride + k]);
    for (size_t i = k + 1; i < n; ++i) {
      const double v = std::fabs(w[i * stride + k]);
      if (v > largest) {
        largest = v;
        p = i;
      }
    }
    job.steps = k;
    if (job.tol >= largest) {
      return false;
    }
    double* pivotRow = w + k * stride;
    double* pivotInv = inv + k * stride;
    if (p != k) {
      SwapRows(pivotRow, w + p * stride, columns);
      SwapRows(pivotInv, inv + p * stride, columns);
    }
    // Columns up to k are never read again, so that whole vectors may go over them.
    const size_t start = (k + 1) / hn::Lanes(DOUBLES()) * hn::Lanes(DOUBLES());
    const double f = 1.0 / pivotRow[k];
    ScaleRow(pivotRow + start, f, columns - start);
    ScaleRow(pivotInv, f, columns);
    for (size_t i = k + 1; i < n; ++i) {
      const double m = w[i * stride + k];
      if (m != 0.0) {
        SubtractRow(w + i * stride + start, pivotRow + start, m, columns - start);
        SubtractRow(inv + i * stride, pivotInv, m, columns);
      }
    }
  }
  for (size_t c = n - 1; c >= 1; --c) {
    for (size_t i = c; i-- > 0;) {
      const double m = w[i * stride + c];
      if (m != 0.0) {
        SubtractRow(inv + i * stride, inv + c * stride, m, columns);
      }
    }
  }
  job.steps = n;
  return true;
}

/// Subtracts from `rows` rows of `tile`, two vectors wide, the packed pivot rows times the
/// multipliers of each row, in ascending order of the pivots.
HWY_INLINE void SubtractPivots(double* tile, size_t stride, size_t rows, const double* multipliers,
                               const unsigned char* skips, const double* pivots, size_t count) {
  const size_t width = 2 * hn::Lanes(DOUBLES());
  for (size_t i = 0; i < rows;) {
    const size_t group = std::min(kTileRows, rows - i);
    if (std::find(skips + i, skips + i + group, 1) == skips + i + group) {
      UpdateTileRows<2>(DOUBLES(), group, TStridedRows<double>{tile + i * stride, stride},
                        width / 2,
                        TStridedRows<const double>{multipliers + i * kPanelPivots, kPanelPivots}, 1,
                        pivots, {width, width / 2}, count, false, TSubtract());
      i += group;
      continue;
    }
    for (const size_t end = i + group; i < end; ++i) {
      for (size_t t = 0; t < count; ++t) {
        const double m = multipliers[i * kPanelPivots + t];
        if (m != 0.0) {
          SubtractRow(tile + i * stride, pivots + t * width, m, width);
        }
      }
    }
  }
}

/// The steps of a panel, or of a part of it: `multipliers` and `skips` of the rows from the first
/// pivot's on, `scales` of the pivots.
struct TPivotSteps {
  const double* multipliers;
  const unsigned char* skips;
  const double* scales;
  size_t count;
};

/// Carries steps over their packed pivot rows, a few at a time over themselves and then over the
/// rest. Without `scales` the rows are scaled already.
void EliminatePivots(double* pivots, const TPivotSteps& steps) {
  const size_t width = 2 * hn::Lanes(DOUBLES());
  for (size_t first = 0; first < steps.count; first += kNarrowPivots) {
    const size_t end = std::min(first + kNarrowPivots, steps.count);
    for (size_t t = first; t < end; ++t) {
      if (steps.scales) {
        ScaleRow(pivots + t * width, steps.scales[t], width);
      }
      for (size_t i = t + 1; i < end; ++i) {
        const double m = steps.multipliers[i * kPanelPivots + t];
        if (m != 0.0) {
          SubtractRow(pivots + i * width, pivots + t * width, m, width);
        }
      }
    }
    SubtractPivots(pivots + end * width, width, steps.count - end,
                   steps.multipliers + end * kPanelPivots + first, steps.skips + end,
                   pivots + first * width, end - first);
  }
}

/// Carries steps over a strip of columns, two vectors wide, of `rows` rows from the first pivot's
/// on.
void EliminateStrip(double* strip, size_t stride, size_t rows, const TPivotSteps& steps) {
  const size_t width = 2 * hn::Lanes(DOUBLES());
  HWY_ALIGN double pivots[kPanelPivots * kMaxTileColumns];
  for (size_t t = 0; t < steps.count; ++t) {
    CopyRow(strip + t * stride, width, pivots + t * width);
  }
  EliminatePivots(pivots, steps);
  for (size_t t = 0; t < steps.count; ++t) {
    CopyRow(pivots + t * width, width, strip + t * stride);
  }
  SubtractPivots(strip + steps.count * stride, stride, rows - steps.count,
                 steps.multipliers + steps.count * kPanelPivots, steps.skips + steps.count, pivots,
                 steps.count);
}

/// Makes step t of the panel that begins at row k0 in its columns up to `end`. Elements on and
/// below the diagonal are never read again once their step is over, so that whole vectors may go
/// over them. False if the pivot won't do.
bool FactorStep(TInversion& job, size_t k0, size_t t, size_t end, size_t* swaps) {
  const size_t lanes = hn::Lanes(DOUBLES());
  const size_t rows = job.n - k0;
  double* pivot = job.panel + t * kPanelPivots;
  size_t p = t;
  double largest = std::fabs(pivot[t]);
  for (size_t i = t + 1; i < rows; ++i) {
    const double v = std::fabs(job.panel[i * kPanelPivots + t]);
    if (v > largest) {
      largest = v;
      p = i;
    }
  }
  job.steps = k0 + t;
  if (job.tol >= largest) {
    return false;
  }
  swaps[t] = p;
  if (p != t) {
    SwapRows(pivot, job.panel + p * kPanelPivots, kPanelPivots);
    SwapRows(job.multipliers + t * kPanelPivots, job.multipliers + p * kPanelPivots, kPanelPivots);
    std::swap(job.skips[t], job.skips[p]);
  }
  const double f = 1.0 / pivot[t];
  job.scales[k0 + t] = f;
  const size_t start = (t + 1) / lanes * lanes;
  ScaleRow(pivot + start, f, end - start);
  for (size_t i = t + 1; i < rows; ++i) {
    double* row = job.panel + i * kPanelPivots;
    const double m = row[t];
    job.multipliers[i * kPanelPivots + t] = m;
    if (m == 0.0) {
      job.skips[i] = 1;
      continue;
    }
    SubtractRow(row + start, pivot + start, m, end - start);
  }
  return true;
}

/// Makes the pivot steps from `k0` on within the columns of the panel, which are taken out of `w`,
/// and writes down the multipliers. `swaps[t]` is the row that step k0 + t took.
bool FactorPanel(TInversion& job, size_t k0, size_t count, size_t* swaps) {
  const size_t width = 2 * hn::Lanes(DOUBLES());
  const size_t rows = job.n - k0;
  for (size_t i = 0; i < rows; ++i) {
    CopyRow(job.w + (k0 + i) * job.stride + k0, kPanelPivots, job.panel + i * kPanelPivots);
    job.skips[i] = 0;
  }
  for (size_t t0 = 0; t0 < count; t0 += width) {
    const size_t end = std::min(t0 + width, count);
    for (size_t t = t0; t < end; ++t) {
      if (!FactorStep(job, k0, t, t0 + width, swaps)) {
        return false;
      }
    }
    const TPivotSteps steps = {job.multipliers + t0 * kPanelPivots + t0, job.skips + t0,
                               job.scales + k0 + t0, end - t0};
    for (size_t x = t0 + width; x < kPanelPivots && end < rows; x += width) {
      EliminateStrip(job.panel + t0 * kPanelPivots + x, kPanelPivots, rows - t0, steps);
    }
  }
  for (size_t i = 0; i < count; ++i) {
    CopyRow(job.panel + i * kPanelPivots, kPanelPivots, job.w + (k0 + i) * job.stride + k0);
  }
  return true;
}

/// The columns from `c0` on of the second phase: row c0 + count - 1 first, since the steps go down.
void SubstituteBlock(const TInversion& job, size_t c0, size_t count) {
  const size_t width = 2 * hn::Lanes(DOUBLES());
  const size_t last = c0 + count - 1;
  for (size_t i = 0; i < last; ++i) {
    double* row = job.multipliers + i * kPanelPivots;
    for (size_t t = 0; t < count; ++t) {
      row[t] = job.w[i * job.stride + last - t];
    }
    job.skips[i] = std::find(row, row + count, 0.0) != row + count;
  }
  double reversed[kPanelPivots * kPanelPivots];
  unsigned char reversedSkips[kPanelPivots];
  for (size_t u = 0; u < count; ++u) {
    CopyRow(job.multipliers + (last - u) * kPanelPivots, kPanelPivots, reversed + u * kPanelPivots);
    reversedSkips[u] = std::find(reversed + u * kPanelPivots, reversed + u * kPanelPivots + u,
                                 0.0) != reversed + u * kPanelPivots + u;
  }
  const TPivotSteps steps = {reversed, reversedSkips, nullptr, count};
  HWY_ALIGN double pivots[kPanelPivots * kMaxTileColumns];
  for (size_t x = 0; x < job.n; x += width) {
    double* strip = job.inv + x;
    for (size_t t = 0; t < count; ++t) {
      CopyRow(strip + (last - t) * job.stride, width, pivots + t * width);
    }
    EliminatePivots(pivots, steps);
    for (size_t t = 0; t < count; ++t) {
      CopyRow(pivots + t * width, width, strip + (last - t) * job.stride);
    }
    SubtractPivots(strip, job.stride, c0, job.multipliers, job.skips, pivots, count);
  }
}

/// Whether every factor of the steps in the panel is a finite number.
bool FiniteFactors(const TInversion& job, size_t k0, size_t count) {
  bool finite = true;
  for (size_t t = 0; t < count; ++t) {
    finite = finite && std::isfinite(job.scales[k0 + t]);
    for (size_t i = t + 1; i < job.n - k0; ++i) {
      finite = finite && std::isfinite(job.multipliers[i * kPanelPivots + t]);
    }
  }
  return finite;
}

void SwapPanelRows(double* columns, size_t stride, size_t k0, size_t count, const size_t* swaps,
                   size_t length) {
  for (size_t t = 0; t < count; ++t) {
    if (swaps[t] != t) {
      SwapRows(columns + (k0 + t) * stride, columns + (k0 + swaps[t]) * stride, length);
    }
  }
}

/// The columns of `inv` stand in the order in which the rows of the identity become pivot rows, so
/// that while the pivots go down `inv` is a lower triangle with the identity still right of it.
/// There nothing is to be done: with finite factors its zeros stay 0.0 below the pivot row, and
/// take the sign of the pivot in it. With the first factor that isn't finite the order is left as
/// it is, and from then on all columns take part.
bool InvertByPanels(TInversion& job) {
  const size_t width = 2 * hn::Lanes(DOUBLES());
  bool triangle = true;
  for (size_t k0 = 0; k0 < job.n; k0 += kPanelPivots) {
    const size_t count = std::min(kPanelPivots, job.n - k0);
    size_t swaps[kPanelPivots];
    if (!FactorPanel(job, k0, count, swaps)) {
      return false;
    }
    const size_t right = std::min(k0 + kPanelPivots, job.n);
    const TPivotSteps steps = {job.multipliers, job.skips, job.scales + k0, count};
    SwapPanelRows(job.w + right, job.stride, k0, count, swaps, job.n - right);
    for (size_t x = right; x < job.n; x += width) {
      EliminateStrip(job.w + k0 * job.stride + x, job.stride, job.n - k0, steps);
    }
    triangle = triangle && FiniteFactors(job, k0, count);
    SwapPanelRows(job.inv, job.stride, k0, count, swaps, triangle ? k0 : job.n);
    for (size_t t = 0; t < count && triangle; ++t) {
      std::swap(job.order[k0 + t], job.order[k0 + swaps[t]]);
    }
    for (size_t x = 0; x < (triangle ? right : job.n); x += width) {
      EliminateStrip(job.inv + k0 * job.stride + x, job.stride, job.n - k0, steps);
    }
    for (size_t i = k0; i < right && triangle; ++i) {
      double* row = job.inv + i * job.stride;
      std::fill(row + right, row + job.n, std::copysign(0.0, job.scales[i]));
    }
  }
  const size_t blocks = (job.n + kPanelPivots - 1) / kPanelPivots;
  for (size_t block = blocks; block-- > 0;) {
    const size_t c0 = block * kPanelPivots;
    SubstituteBlock(job, c0, std::min(kPanelPivots, job.n - c0));
  }
  job.steps = job.n;
  return true;
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
} // namespace HWY_NAMESPACE
} // namespace zx_math
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zx_math {
namespace {

HWY_EXPORT(InvertByRows);
HWY_EXPORT(InvertByPanels);

/// Below it the rows are too short for vectors.
constexpr unsigned long SmallSize = 6;
/// From here on the rows of the whole matrix leave the first cache too often.
constexpr unsigned long PanelSize = 48;
/// Doubles in a cache line, which is also the widest vector.
constexpr unsigned long CacheLine = 8;

bool Finish(unsigned long* rank, unsigned long steps, bool result) {
  if (rank) {
    *rank = steps;
  }
  return result;
}

bool InvertPlain(double* w, unsigned long n, double* inv, double tol, unsigned long* rank) {
  const auto subtract = [](double* row, const double* pivotRow, double m, unsigned long count) {
    for (unsigned long j = 0; j < count; ++j) {
      row[j] -= pivotRow[j] * m;
    }
  };
  for (unsigned long k = 0; k < n; ++k) {
    unsigned long p = k;
    double largest = std::fabs(w[k * n + k]);
    for (unsigned long i = k + 1; i < n; ++i) {
      if (std::fabs(w[i * n + k]) > largest) {
        largest = std::fabs(w[i * n + k]);
        p = i;
      }
    }
    if (tol >= largest) {
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
        subtract(w + i * n + k + 1, pivotRow + k + 1, m, n - k - 1);
        subtract(inv + i * n, pivotInv, m, n);
      }
    }
  }
  for (unsigned long c = n - 1; c >= 1; --c) {
    for (unsigned long i = c; i-- > 0;) {
      const double m = w[i * n + c];
      if (m != 0.0) {
        w[i * n + c] = 0.0;
        subtract(inv + i * n, inv + c * n, m, n);
      }
    }
  }
  return Finish(rank, n, true);
}

void SetIdentity(double* inv, unsigned long n, unsigned long stride) {
  std::fill_n(inv, n * stride, 0.0);
  for (unsigned long i = 0; i < n; ++i) {
    inv[i * stride + i] = 1.0;
  }
}

/// The length of a padded row. Rows that are a multiple of 4 KiB apart would all fall into the same
/// few lines of the first cache.
constexpr unsigned long RowStride(unsigned long n) {
  const unsigned long unit = n < PanelSize ? CacheLine : kPanelPivots;
  const unsigned long stride = (n + unit - 1) / unit * unit;
  return stride % 128 == 0 ? stride + kPanelPivots : stride;
}

/// Doubles for each row of a matrix that `InvertPadded` wants as its work space, beside a cache
/// line to align it.
constexpr unsigned long RowSpace(unsigned long n) {
  return 2 * RowStride(n) + (n < PanelSize ? 0 : 2 * kPanelPivots + 3);
}

bool InvertPadded(const double* a, unsigned long n, double* inv, double tol, unsigned long* rank,
                  double* space) {
  const size_t stride = RowStride(n);
  TInversion job = {n, stride, space, space + n * stride, tol};
  for (unsigned long i = 0; i < n; ++i) {
    std::fill(std::copy_n(a + i * n, n, job.w + i * job.stride), job.w + (i + 1) * job.stride, 0.0);
  }
  SetIdentity(job.inv, n, job.stride);
  if (n < PanelSize) {
    const bool done = HWY_DYNAMIC_DISPATCH(InvertByRows)(job);
    for (unsigned long i = 0; i < n; ++i) {
      std::copy_n(job.inv + i * job.stride, n, inv + i * n);
    }
    return Finish(rank, job.steps, done);
  }
  job.panel = job.inv + n * stride;
  job.multipliers = job.panel + n * kPanelPivots;
  job.scales = job.multipliers + n * kPanelPivots;
  job.order = reinterpret_cast<size_t*>(job.scales + n);
  job.skips = reinterpret_cast<unsigned char*>(job.order + n);
  std::iota(job.order, job.order + n, size_t{0});
  const bool done = HWY_DYNAMIC_DISPATCH(InvertByPanels)(job);
  for (unsigned long i = 0; i < n; ++i) {
    for (unsigned long t = 0; t < n; ++t) {
      inv[i * n + job.order[t]] = job.inv[i * job.stride + t];
    }
  }
  return Finish(rank, job.steps, done);
}

} // namespace
} // namespace zx_math

template <>
bool InverseEx<double>(double* a, unsigned long n, double* inv, double tol, bool destroy,
                       unsigned long* rank) {
  using namespace zx_math;
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
  if (n < SmallSize) {
    double copy[SmallSize * SmallSize];
    if (!destroy) {
      a = std::copy_n(a, n * n, copy) - n * n;
    }
    SetIdentity(inv, n, n);
    return InvertPlain(a, n, inv, tol, rank);
  }
  constexpr unsigned long localSize = 16;
  if (n <= localSize) {
    alignas(64) double space[localSize * RowSpace(localSize)];
    return InvertPadded(a, n, inv, tol, rank, space);
  }
  const MALLOCED<double> block = MallocArray<double>(n, RowSpace(n), CacheLine);
  if (block) {
    const auto address = reinterpret_cast<std::uintptr_t>(block.get());
    return InvertPadded(a, n, inv, tol, rank, block.get() + (64 - address % 64) % 64 / 8);
  }
  if (!destroy) {
    return false;
  }
  SetIdentity(inv, n, n);
  return InvertPlain(a, n, inv, tol, rank);
}
#endif // HWY_ONCE
