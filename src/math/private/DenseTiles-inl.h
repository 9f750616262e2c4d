// Tiles of dense matrices held in registers, once per instruction set. Every element keeps its own
// sequence of operations: a product and a sum are two roundings, and the sum runs in ascending t.

#include <algorithm>
#include <cstddef>
#include <utility>

#if defined(ZX_MATH_DENSE_TILES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_MATH_DENSE_TILES_INL_H
#undef ZX_MATH_DENSE_TILES_INL_H
#else
#define ZX_MATH_DENSE_TILES_INL_H
#endif

#include <ZxCore3D/types/private/InstructionSets.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using DOUBLES = hn::ScalableTag<double>;

/// Rows of a tile: as many as the registers hold beside the operands.
constexpr size_t kTileRows = ZX_HAS_MASK_REGISTERS ? 8 : 4;

/// The widest tile of any instruction set.
constexpr size_t kMaxTileColumns = 2 * HWY_MAX_BYTES / sizeof(double);

struct TAdd {
  template <class V> HWY_INLINE V operator()(V sum, V a, V b) const {
    return hn::Add(sum, hn::Mul(a, b));
  }
};

/// Takes a multiple of the pivot's row away from a row.
struct TSubtract {
  template <class V> HWY_INLINE V operator()(V row, V factor, V pivot) const {
    return hn::Sub(row, hn::Mul(pivot, factor));
  }
  double operator()(double row, double factor, double pivot) const { return row - pivot * factor; }
};

/// Takes the pivot's row away from a multiple of a row.
struct TRescale {
  template <class V> HWY_INLINE V operator()(V row, V factor, V pivot) const {
    return hn::Sub(hn::Mul(row, factor), pivot);
  }
  double operator()(double row, double factor, double pivot) const { return row * factor - pivot; }
};

/// Rows of a matrix, one as far behind the other.
template <class T> struct TStridedRows {
  T* first;
  size_t stride;
  HWY_INLINE T* operator()(size_t i) const { return first + i * stride; }
};

/// Rows by pointers to them, from a column on.
struct TListedRows {
  double* const* rows;
  size_t column;
  HWY_INLINE double* operator()(size_t i) const { return rows[i] + column; }
};

/// Where the vectors of the right operand lie: its rows `stride` apart, the second vector of a row
/// `second` doubles behind the first. Vectors that overlap hold the same values where they do.
struct TVectorRows {
  size_t stride;
  size_t second;
};

/// tile(i, j) = op(tile(i, j), m(i, t), right(t, j)) for t ascending below `count`, in rows of
/// `Vectors` vectors, which are `second` doubles apart in the tile. `tile` and `m` give the rows,
/// and the elements of a row of m are `stepStride` apart. With `fresh` the tile starts at 0.0
/// instead of at its old value.
template <size_t Rows, size_t Vectors, class D, class Tile, class Factors, class Op>
HWY_INLINE void UpdateTile(D d, Tile tile, size_t second, Factors m, size_t stepStride,
                           const double* HWY_RESTRICT right, TVectorRows rightRows, size_t count,
                           bool fresh, Op op) {
  hn::Vec<D> sums[Rows][Vectors];
  HWY_UNROLL(8)
  for (size_t i = 0; i < Rows; ++i) {
    HWY_UNROLL(2)
    for (size_t v = 0; v < Vectors; ++v) {
      sums[i][v] = fresh ? hn::Zero(d) : hn::LoadU(d, tile(i) + v * second);
    }
  }
  for (size_t t = 0; t < count; ++t) {
    hn::Vec<D> p[Vectors];
    HWY_UNROLL(2)
    for (size_t v = 0; v < Vectors; ++v) {
      p[v] = hn::LoadU(d, right + t * rightRows.stride + v * rightRows.second);
    }
    HWY_UNROLL(8)
    for (size_t i = 0; i < Rows; ++i) {
      const hn::Vec<D> factor = hn::Set(d, m(i)[t * stepStride]);
      HWY_UNROLL(2)
      for (size_t v = 0; v < Vectors; ++v) {
        sums[i][v] = op(sums[i][v], factor, p[v]);
      }
    }
  }
  HWY_UNROLL(8)
  for (size_t i = 0; i < Rows; ++i) {
    HWY_UNROLL(2)
    for (size_t v = 0; v < Vectors; ++v) {
      hn::StoreU(sums[i][v], d, tile(i) + v * second);
    }
  }
}

/// Copies a short row. (The library's copies call the block move of the processor, which is slow to
/// start.)
HWY_INLINE void CopyRow(const double* HWY_RESTRICT from, size_t count, double* HWY_RESTRICT to) {
  const DOUBLES d;
  const size_t lanes = hn::Lanes(d);
  size_t j = 0;
  for (; j + lanes <= count; j += lanes) {
    hn::StoreU(hn::LoadU(d, from + j), d, to + j);
  }
  for (; j < count; ++j) {
    to[j] = from[j];
  }
}

/// Copies `count` (at least 1) values and repeats the last of them up to `total`: unused lanes then
/// do what a used one does, and raise no floating point exception of their own.
HWY_INLINE void CopyRowRepeating(const double* HWY_RESTRICT from, size_t count,
                                 double* HWY_RESTRICT to, size_t total) {
  CopyRow(from, count, to);
  for (size_t j = count; j < total; ++j) {
    to[j] = from[count - 1];
  }
}

/// Exchanges two rows.
HWY_INLINE void SwapRows(double* HWY_RESTRICT a, double* HWY_RESTRICT b, size_t count) {
  const DOUBLES d;
  const size_t lanes = hn::Lanes(d);
  const size_t whole = count / lanes * lanes;
  for (size_t j = 0; j < whole; j += lanes) {
    const hn::Vec<DOUBLES> kept = hn::LoadU(d, a + j);
    hn::StoreU(hn::LoadU(d, b + j), d, a + j);
    hn::StoreU(kept, d, b + j);
  }
  for (size_t j = whole; j < count; ++j) {
    std::swap(a[j], b[j]);
  }
}

/// `UpdateTile` for 1 to `kTileRows` rows.
template <size_t Vectors, class D, class Tile, class Factors, class Op>
HWY_INLINE void UpdateTileRows(D d, size_t rows, Tile tile, size_t second, Factors m,
                               size_t stepStride, const double* right, TVectorRows rightRows,
                               size_t count, bool fresh, Op op) {
  switch (rows) {
#define ZX_TILE_ROWS(r)                                                                            \
  case r:                                                                                          \
    if constexpr (r <= kTileRows) {                                                                \
      UpdateTile<r, Vectors>(d, tile, second, m, stepStride, right, rightRows, count, fresh, op);  \
    }                                                                                              \
    return
    ZX_TILE_ROWS(1);
    ZX_TILE_ROWS(2);
    ZX_TILE_ROWS(3);
    ZX_TILE_ROWS(4);
    ZX_TILE_ROWS(5);
    ZX_TILE_ROWS(6);
    ZX_TILE_ROWS(7);
    ZX_TILE_ROWS(8);
#undef ZX_TILE_ROWS
  }
}

/// The width of the next strip of one or two vectors where `left` columns, at least one vector, are
/// left. What doesn't fill its vectors lets the two of a strip overlap, where each column gets the
/// same value from both.
HWY_INLINE size_t StripWidth(size_t left, size_t lanes) {
  return left > 2 * lanes && left < 3 * lanes ? lanes : std::min(left, 2 * lanes);
}

/// A square block of `from`, whose rows are `stride` apart, with its columns as the vectors: as
/// many of both as a vector has lanes.
template <class D, class V>
HWY_INLINE void LoadTransposed(D d, const double* HWY_RESTRICT from, [[maybe_unused]] size_t stride,
                               V* columns) {
  constexpr size_t lanes = hn::MaxLanes(D());
#if HWY_TARGET != HWY_SCALAR // which has no operation on pairs
  if constexpr (lanes == 2) {
    const V a = hn::LoadU(d, from);
    const V b = hn::LoadU(d, from + stride);
    columns[0] = hn::InterleaveLower(d, a, b);
    columns[1] = hn::InterleaveUpper(d, a, b);
  } else if constexpr (lanes > 2) {
    // Halves that are joined as they are loaded: four rows of two lanes, or eight of four.
    const hn::Half<D> half;
    V rows[lanes];
    HWY_UNROLL(4)
    for (size_t i = 0; i < lanes / 2; ++i) {
      HWY_UNROLL(2)
      for (size_t j = 0; j < lanes; j += lanes / 2) {
        rows[i + j] = hn::Combine(d, hn::LoadU(half, from + (i + lanes / 2) * stride + j),
                                  hn::LoadU(half, from + i * stride + j));
      }
    }
    if constexpr (lanes == 8) {
      HWY_UNROLL(4)
      for (const size_t i : {0u, 1u, 4u, 5u}) {
        const V a = rows[i];
        const V b = rows[i + 2];
        rows[i] = hn::OddEvenBlocks(hn::SwapAdjacentBlocks(b), a);
        rows[i + 2] = hn::OddEvenBlocks(b, hn::SwapAdjacentBlocks(a));
      }
    }
    HWY_UNROLL(4)
    for (size_t i = 0; i < lanes; i += 2) {
      columns[i] = hn::InterleaveLower(d, rows[i], rows[i + 1]);
      columns[i + 1] = hn::InterleaveUpper(d, rows[i], rows[i + 1]);
    }
  }
#endif
  if constexpr (lanes == 1) {
    columns[0] = hn::LoadU(d, from);
  }
}

/// row[j] = op(row[j], factor, pivot[j])
template <class Op>
HWY_INLINE void ApplyToRow(double* HWY_RESTRICT row, double factor,
                           const double* HWY_RESTRICT pivot, size_t count, Op op) {
  const DOUBLES d;
  const size_t lanes = hn::Lanes(d);
  const hn::Vec<DOUBLES> factors = hn::Set(d, factor);
  size_t j = 0;
  for (; j + lanes <= count; j += lanes) {
    hn::StoreU(op(hn::LoadU(d, row + j), factors, hn::LoadU(d, pivot + j)), d, row + j);
  }
  for (; j < count; ++j) {
    row[j] = op(row[j], factor, pivot[j]);
  }
}

/// row[j] -= pivot[j] * m
HWY_INLINE void SubtractRow(double* row, const double* pivot, double m, size_t count) {
  ApplyToRow(row, m, pivot, count, TSubtract());
}

/// row[j] *= f
HWY_INLINE void ScaleRow(double* row, double f, size_t count) {
  const DOUBLES d;
  const size_t lanes = hn::Lanes(d);
  const hn::Vec<DOUBLES> factor = hn::Set(d, f);
  size_t j = 0;
  for (; j + lanes <= count; j += lanes) {
    hn::StoreU(hn::Mul(hn::LoadU(d, row + j), factor), d, row + j);
  }
  for (; j < count; ++j) {
    row[j] *= f;
  }
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
} // namespace HWY_NAMESPACE
} // namespace zx_math
HWY_AFTER_NAMESPACE();

#endif
