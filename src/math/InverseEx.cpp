#include <ZxCore3D/math/InverseEx-inl.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include <ZxCore3D/math/Malloced-inl.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/InverseEx.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/DenseTiles-inl.h>

#ifndef ZX_MATH_INVERSE_EX_ONCE
#define ZX_MATH_INVERSE_EX_ONCE

namespace zx_math {

/// Pivot steps that are made together before the columns to the right see them.
constexpr size_t PanelPivots = 32;

/// The work arrays of an inversion: rows of whole tiles for any instruction set. Columns from n on
/// are padding, and what stands there is never read back.
struct INVERSION {
  size_t n;
  size_t stride;
  double* w;
  double* inv;
  /// n rows of `PanelPivots` multipliers.
  double* panel;
  /// For each row of `panel`: whether one of its multipliers is exactly 0, so that its step must be
  /// left out (subtracting a product with 0 can change the sign of a zero, or make a NaN).
  unsigned char* skips;
  double tol;
  size_t steps;
};

} // namespace zx_math

#endif

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

bool InvertByRows(INVERSION& job) {
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
    const size_t group = std::min(TileRows, rows - i);
    if (std::find(skips + i, skips + i + group, 1) == skips + i + group) {
      UpdateTileRows<2>(group, tile + i * stride, stride, multipliers + i * PanelPivots,
                        PanelPivots, 1, pivots, count, false, SUBTRACT());
      i += group;
      continue;
    }
    for (const size_t end = i + group; i < end; ++i) {
      for (size_t t = 0; t < count; ++t) {
        const double m = multipliers[i * PanelPivots + t];
        if (m != 0.0) {
          SubtractRow(tile + i * stride, pivots + t * width, m, width);
        }
      }
    }
  }
}

/// Makes the pivot steps from `k0` on within the columns of the panel, which are taken out of `w`.
/// A multiplier stays where its element was. `swaps[t]` is the row that step k0 + t took.
bool FactorPanel(INVERSION& job, size_t k0, size_t count, size_t* swaps, double* scales) {
  const size_t rows = job.n - k0;
  for (size_t i = 0; i < rows; ++i) {
    CopyRow(job.w + (k0 + i) * job.stride + k0, PanelPivots, job.panel + i * PanelPivots);
  }
  for (size_t t = 0; t < count; ++t) {
    double* pivot = job.panel + t * PanelPivots;
    size_t p = t;
    double largest = std::fabs(pivot[t]);
    for (size_t i = t + 1; i < rows; ++i) {
      const double v = std::fabs(job.panel[i * PanelPivots + t]);
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
      SwapRows(pivot, job.panel + p * PanelPivots, PanelPivots);
    }
    scales[t] = 1.0 / pivot[t];
    ScaleRow(pivot + t + 1, scales[t], PanelPivots - t - 1);
    for (size_t i = t + 1; i < rows; ++i) {
      double* row = job.panel + i * PanelPivots;
      const double m = row[t];
      if (m == 0.0) {
        continue;
      }
      size_t j = t + 1;
      for (; j % hn::Lanes(DOUBLES()) != 0; ++j) {
        row[j] -= pivot[j] * m;
      }
      SubtractRow(row + j, pivot + j, m, PanelPivots - j);
    }
  }
  for (size_t i = 0; i < rows; ++i) {
    const double* row = job.panel + i * PanelPivots;
    job.skips[i] = std::find(row, row + std::min(i, count), 0.0) != row + std::min(i, count);
    CopyRow(row, PanelPivots, job.w + (k0 + i) * job.stride + k0);
  }
  return true;
}

/// Carries the steps of a panel over a strip of columns, two vectors wide, from row k0 on.
void EliminateStrip(const INVERSION& job, double* strip, size_t k0, size_t count,
                    const double* scales) {
  const size_t width = 2 * hn::Lanes(DOUBLES());
  HWY_ALIGN double pivots[PanelPivots * MaxTileColumns];
  for (size_t t = 0; t < count; ++t) {
    CopyRow(strip + (k0 + t) * job.stride, width, pivots + t * width);
  }
  for (size_t t = 0; t < count; ++t) {
    ScaleRow(pivots + t * width, scales[t], width);
    for (size_t i = t + 1; i < count; ++i) {
      const double m = job.panel[i * PanelPivots + t];
      if (m != 0.0) {
        SubtractRow(pivots + i * width, pivots + t * width, m, width);
      }
    }
  }
  for (size_t t = 0; t < count; ++t) {
    CopyRow(pivots + t * width, width, strip + (k0 + t) * job.stride);
  }
  SubtractPivots(strip + (k0 + count) * job.stride, job.stride, job.n - k0 - count,
                 job.panel + count * PanelPivots, job.skips + count, pivots, count);
}

/// The columns from `c0` on of the second phase: row c0 + count - 1 first, since the steps go down.
void SubstituteBlock(const INVERSION& job, size_t c0, size_t count) {
  const size_t width = 2 * hn::Lanes(DOUBLES());
  const size_t last = c0 + count - 1;
  for (size_t i = 0; i < last; ++i) {
    double* row = job.panel + i * PanelPivots;
    for (size_t t = 0; t < count; ++t) {
      row[t] = job.w[i * job.stride + last - t];
    }
    job.skips[i] = std::find(row, row + count, 0.0) != row + count;
  }
  HWY_ALIGN double pivots[PanelPivots * MaxTileColumns];
  for (size_t x = 0; x < job.n; x += width) {
    double* strip = job.inv + x;
    for (size_t t = 0; t < count; ++t) {
      CopyRow(strip + (last - t) * job.stride, width, pivots + t * width);
    }
    for (size_t t = 0; t < count; ++t) {
      for (size_t u = t + 1; u < count; ++u) {
        const double m = job.panel[(last - u) * PanelPivots + t];
        if (m != 0.0) {
          SubtractRow(pivots + u * width, pivots + t * width, m, width);
        }
      }
    }
    for (size_t t = 0; t < count; ++t) {
      CopyRow(pivots + t * width, width, strip + (last - t) * job.stride);
    }
    SubtractPivots(strip, job.stride, c0, job.panel, job.skips, pivots, count);
  }
}

bool InvertByPanels(INVERSION& job) {
  const size_t width = 2 * hn::Lanes(DOUBLES());
  for (size_t k0 = 0; k0 < job.n; k0 += PanelPivots) {
    const size_t count = std::min(PanelPivots, job.n - k0);
    size_t swaps[PanelPivots];
    double scales[PanelPivots];
    if (!FactorPanel(job, k0, count, swaps, scales)) {
      return false;
    }
    const size_t right = k0 + PanelPivots;
    for (size_t t = 0; t < count; ++t) {
      if (swaps[t] != t) {
        double* row = job.w + (k0 + t) * job.stride;
        double* other = job.w + (k0 + swaps[t]) * job.stride;
        SwapRows(row + right, other + right, job.n > right ? job.n - right : 0);
        row = job.inv + (k0 + t) * job.stride;
        other = job.inv + (k0 + swaps[t]) * job.stride;
        SwapRows(row, other, job.n);
      }
    }
    for (size_t x = right; x < job.n; x += width) {
      EliminateStrip(job, job.w + x, k0, count, scales);
    }
    for (size_t x = 0; x < job.n; x += width) {
      EliminateStrip(job, job.inv + x, k0, count, scales);
    }
  }
  const size_t blocks = (job.n + PanelPivots - 1) / PanelPivots;
  for (size_t block = blocks; block-- > 0;) {
    const size_t c0 = block * PanelPivots;
    SubstituteBlock(job, c0, std::min(PanelPivots, job.n - c0));
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
  const unsigned long unit = n < PanelSize ? CacheLine : PanelPivots;
  const unsigned long stride = (n + unit - 1) / unit * unit;
  return stride % 128 == 0 ? stride + PanelPivots : stride;
}

/// Doubles for each row of a matrix that `InvertPadded` wants as its work space, beside a cache
/// line to align it.
constexpr unsigned long RowSpace(unsigned long n) {
  return 2 * RowStride(n) + (n < PanelSize ? 0 : PanelPivots + 1);
}

bool InvertPadded(const double* a, unsigned long n, double* inv, double tol, unsigned long* rank,
                  double* space) {
  INVERSION job;
  job.n = n;
  job.stride = RowStride(n);
  job.w = space;
  job.inv = job.w + n * job.stride;
  job.panel = job.inv + n * job.stride;
  job.skips = reinterpret_cast<unsigned char*>(job.panel + n * PanelPivots);
  job.tol = tol;
  job.steps = 0;
  for (unsigned long i = 0; i < n; ++i) {
    std::fill(std::copy_n(a + i * n, n, job.w + i * job.stride), job.w + (i + 1) * job.stride, 0.0);
  }
  SetIdentity(job.inv, n, job.stride);
  const bool done = n < PanelSize ? HWY_DYNAMIC_DISPATCH(InvertByRows)(job)
                                  : HWY_DYNAMIC_DISPATCH(InvertByPanels)(job);
  for (unsigned long i = 0; i < n; ++i) {
    std::copy_n(job.inv + i * job.stride, n, inv + i * n);
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
