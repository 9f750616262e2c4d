// Tiles of dense matrices held in registers, once per instruction set. Every element keeps its own
// sequence of operations: a product and a sum are two roundings, and the sum runs in ascending t.

#include <cstddef>
#include <utility>

#if defined(ZX_MATH_DENSE_TILES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_MATH_DENSE_TILES_INL_H
#undef ZX_MATH_DENSE_TILES_INL_H
#else
#define ZX_MATH_DENSE_TILES_INL_H
#endif

#include <ZxCore3D/types/InstructionSets-inl.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using DOUBLES = hn::ScalableTag<double>;

/// Rows of a tile: as many as the registers hold beside the operands.
constexpr size_t TileRows = ZX_HAS_MASK_REGISTERS ? 8 : 4;

/// The widest tile of any instruction set.
constexpr size_t MaxTileColumns = 2 * HWY_MAX_BYTES / sizeof(double);

struct ADD {
  template <class V> HWY_INLINE V operator()(V sum, V a, V b) const {
    return hn::Add(sum, hn::Mul(a, b));
  }
};

struct SUBTRACT {
  template <class V> HWY_INLINE V operator()(V rest, V a, V b) const {
    return hn::Sub(rest, hn::Mul(b, a));
  }
};

/// Where the vectors of a tile's rows lie: the rows `stride` apart, the second vector of a row
/// `second` doubles behind the first. Vectors that overlap hold the same values where they do.
struct VECTOR_ROWS {
  size_t stride;
  size_t second;
};

/// tile(i, j) = op(tile(i, j), m(i, t), right(t, j)) for t ascending below `count`, in rows of
/// `Vectors` vectors. With `fresh` the tile starts at 0.0 instead of at its old value.
template <size_t Rows, size_t Vectors, class D, class Op>
HWY_INLINE void UpdateTile(D d, double* HWY_RESTRICT tile, VECTOR_ROWS tileRows,
                           const double* HWY_RESTRICT m, size_t rowStride, size_t stepStride,
                           const double* HWY_RESTRICT right, VECTOR_ROWS rightRows, size_t count,
                           bool fresh, Op op) {
  hn::Vec<D> sums[Rows][Vectors];
  HWY_UNROLL(8)
  for (size_t i = 0; i < Rows; ++i) {
    HWY_UNROLL(2)
    for (size_t v = 0; v < Vectors; ++v) {
      sums[i][v] =
          fresh ? hn::Zero(d) : hn::LoadU(d, tile + i * tileRows.stride + v * tileRows.second);
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
      const hn::Vec<D> factor = hn::Set(d, m[i * rowStride + t * stepStride]);
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
      hn::StoreU(sums[i][v], d, tile + i * tileRows.stride + v * tileRows.second);
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
  size_t j = 0;
  for (; j + lanes <= count; j += lanes) {
    const hn::Vec<DOUBLES> kept = hn::LoadU(d, a + j);
    hn::StoreU(hn::LoadU(d, b + j), d, a + j);
    hn::StoreU(kept, d, b + j);
  }
  for (; j < count; ++j) {
    std::swap(a[j], b[j]);
  }
}

/// `UpdateTile` for 1 to `TileRows` rows.
template <size_t Vectors, class D, class Op>
HWY_INLINE void UpdateTileRows(D d, size_t rows, double* tile, VECTOR_ROWS tileRows,
                               const double* m, size_t rowStride, size_t stepStride,
                               const double* right, VECTOR_ROWS rightRows, size_t count, bool fresh,
                               Op op) {
  switch (rows) {
#define ZX_TILE_ROWS(r)                                                                            \
  case r:                                                                                          \
    if constexpr (r <= TileRows) {                                                                 \
      UpdateTile<r, Vectors>(d, tile, tileRows, m, rowStride, stepStride, right, rightRows, count, \
                             fresh, op);                                                           \
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
      for (const size_t i : {0, 1, 4, 5}) {
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

/// row[j] -= pivot[j] * m
HWY_INLINE void SubtractRow(double* HWY_RESTRICT row, const double* HWY_RESTRICT pivot, double m,
                            size_t count) {
  const DOUBLES d;
  const size_t lanes = hn::Lanes(d);
  const hn::Vec<DOUBLES> factor = hn::Set(d, m);
  size_t j = 0;
  for (; j + lanes <= count; j += lanes) {
    hn::StoreU(hn::Sub(hn::LoadU(d, row + j), hn::Mul(hn::LoadU(d, pivot + j), factor)), d,
               row + j);
  }
  for (; j < count; ++j) {
    row[j] -= pivot[j] * m;
  }
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
