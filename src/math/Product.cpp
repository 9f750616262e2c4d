#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>

#include <algorithm>

#include <ZxBaseKit/TZxMessage.h>

#include <ZxCore3D/types/private/InstructionSets.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/Product.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/DenseTiles-inl.h>

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

/// Calls `call` with the widest vectors that have at most `count` (at least 1) lanes.
template <class Call> HWY_INLINE void WithLanesUpTo(size_t count, Call call) {
  if (count >= hn::MaxLanes(DOUBLES())) {
    call(DOUBLES());
  } else if (count >= 4) {
    call(hn::CappedTag<double, 4>());
  } else if (count >= 2) {
    call(hn::CappedTag<double, 2>());
  } else {
    call(hn::CappedTag<double, 1>());
  }
}

/// Steps of the sum that one packed strip holds: 16 KiB with the widest vectors, so that the rows
/// on the left find room beside it in the first cache.
constexpr size_t kPanelSteps = 128;
/// Rows of the left matrix that all strips see one after the other: with `kPanelSteps` of their
/// steps they stay in the second cache.
constexpr size_t kBlockRows = 256;
/// Up to so many elements the right matrix is read where it stands.
constexpr size_t kUnpackedElements = 1024;

/// The operands of res(y, x), the sum over k of l[y * rowStride + k * stepStride] * r(k, x).
struct TProduct {
  const double* l;
  size_t rowStride;
  size_t stepStride;
  const double* r;
  double* res;
  size_t rows;
  size_t inner;
  size_t columns;
  /// Only elements on and above the diagonal are certain to be written.
  bool upper;
};

/// The rows from `top` to `bottom` of a strip of columns from `x` on, and of the sums the steps
/// from `k` on. `second` is the distance of the two vectors that the strip consists of.
template <size_t Vectors, class D>
HWY_INLINE void ProductStrip(D d, const TProduct& p, size_t top, size_t bottom, size_t k,
                             size_t steps, size_t x, size_t second) {
  const size_t lanes = hn::Lanes(d);
  HWY_ALIGN double panel[kPanelSteps * kMaxTileColumns];
  const double* right = p.r + k * p.columns + x;
  TVectorRows rightRows = {p.columns, second};
  if (p.inner * p.columns > kUnpackedElements) {
    for (size_t t = 0; t < steps; ++t) {
      for (size_t v = 0; v < Vectors; ++v) {
        hn::Store(hn::LoadU(d, right + t * p.columns + v * second), d,
                  panel + (t * Vectors + v) * lanes);
      }
    }
    right = panel;
    rightRows = {Vectors * lanes, lanes};
  }
  for (size_t y = top; y < bottom; y += kTileRows) {
    const TStridedRows<double> tile = {p.res + y * p.columns + x, p.columns};
    const TStridedRows<const double> left = {p.l + y * p.rowStride + k * p.stepStride, p.rowStride};
    UpdateTileRows<Vectors>(d, std::min(kTileRows, bottom - y), tile, second, left, p.stepStride,
                            right, rightRows, steps, k == 0, TAdd());
  }
}

/// A product whose result has at least as many columns as a vector of `d` has lanes.
template <class D> HWY_INLINE void ProductByVectors(D d, const TProduct& p) {
  const size_t lanes = hn::Lanes(d);
  for (size_t top = 0; top < p.rows; top += kBlockRows) {
    const size_t blockBottom = std::min(p.rows, top + kBlockRows);
    for (size_t k = 0; k < p.inner; k += kPanelSteps) {
      const size_t steps = std::min(kPanelSteps, p.inner - k);
      for (size_t x = 0; x < p.columns;) {
        const size_t width = StripWidth(p.columns - x, lanes);
        const size_t bottom = p.upper ? std::min(blockBottom, x + width) : blockBottom;
        if (width == lanes) {
          ProductStrip<1>(d, p, top, bottom, k, steps, x, lanes);
        } else {
          ProductStrip<2>(d, p, top, bottom, k, steps, x, width - lanes);
        }
        x += width;
      }
    }
  }
}

/// The product of two n by n matrices with all sizes known to the compiler, as one tile. False,
/// with nothing done, for any n but a few small ones.
HWY_INLINE bool SquareProduct(size_t n, const double* l, size_t rowStride, size_t stepStride,
                              const double* r, double* res) {
  const TStridedRows<const double> left = {l, rowStride};
  switch (n) {
#define ZX_SQUARE_PRODUCT(size)                                                                    \
  case size: {                                                                                     \
    using D = hn::CappedTag<double, (size < 4 ? 2 : 4)>;                                           \
    constexpr size_t lanes = hn::MaxLanes(D());                                                    \
    constexpr size_t vectors = (size + lanes - 1) / lanes;                                         \
    if constexpr (vectors <= 2) {                                                                  \
      constexpr size_t second = size - lanes;                                                      \
      UpdateTile<size, vectors>(D(), TStridedRows<double>{res, size}, second, left, stepStride, r, \
                                {size, second}, size, true, TAdd());                               \
      return true;                                                                                 \
    }                                                                                              \
    return false;                                                                                  \
  }
    ZX_SQUARE_PRODUCT(2)
    ZX_SQUARE_PRODUCT(3)
    ZX_SQUARE_PRODUCT(4)
    ZX_SQUARE_PRODUCT(5)
    ZX_SQUARE_PRODUCT(6)
#undef ZX_SQUARE_PRODUCT
  default:
    return false;
  }
}

void Product(const double* l, size_t rowStride, size_t stepStride, const double* r, double* res,
             size_t rows, size_t inner, size_t columns, bool upper) {
  if (rows == inner && rows == columns && SquareProduct(rows, l, rowStride, stepStride, r, res)) {
    return;
  }
  const TProduct p = {l, rowStride, stepStride, r, res, rows, inner, columns, upper};
  WithLanesUpTo(columns, [&](auto d) { ProductByVectors(d, p); });
}

/// Vectors of sums that the registers hold: the longer the part of a row that is read at once, the
/// better the processor reads ahead.
constexpr size_t kWideSums = ZX_HAS_MASK_REGISTERS ? 16 : 8;
/// Rows of at least so many columns are added in blocks of `kBlockedRows`, which prefetching
/// follows where single strips of all rows jump from page to page.
constexpr size_t kLongRow = 256;
/// The same for rows that are multiples of a vector, since their vectors can all be aligned.
constexpr size_t kAlignableRow = 72;
constexpr size_t kBlockedRows = 32;

/// Adds a(r, x) * v[r] to res[x] over the rows in order, for `Vectors` vectors of columns side by
/// side, of which the last begins at column `last`. With `fresh` the sums start at 0.0 instead of
/// at their old values.
template <size_t Vectors, class D>
HWY_INLINE void AddRowsStrip(D d, const double* a, const double* v, double* res, size_t rows,
                             size_t columns, size_t last, bool fresh) {
  const auto column = [last](size_t i) { return i + 1 == Vectors ? last : i * hn::MaxLanes(D()); };
  hn::Vec<D> sums[Vectors];
  HWY_UNROLL(16)
  for (size_t i = 0; i < Vectors; ++i) {
    sums[i] = fresh ? hn::Zero(d) : hn::LoadU(d, res + column(i));
  }
  for (size_t r = 0; r < rows; ++r) {
    const hn::Vec<D> factor = hn::Set(d, v[r]);
    HWY_UNROLL(16)
    for (size_t i = 0; i < Vectors; ++i) {
      sums[i] = hn::Add(sums[i], hn::Mul(hn::LoadU(d, a + r * columns + column(i)), factor));
    }
  }
  HWY_UNROLL(16)
  for (size_t i = 0; i < Vectors; ++i) {
    hn::StoreU(sums[i], d, res + column(i));
  }
}

/// `AddRowsStrip` for the columns from `x` to `end`: strips of `Vectors` vectors, and then of eight
/// or fewer. Columns that don't fill the last vector share it with columns before them: these are
/// summed twice, which needs `fresh`.
template <size_t Vectors, class D>
HWY_INLINE void AddRowsStrips(D d, const double* a, const double* v, double* res, size_t rows,
                              size_t columns, size_t x, size_t end, bool fresh) {
  constexpr size_t lanes = hn::MaxLanes(D());
  for (; x + Vectors * lanes <= end; x += Vectors * lanes) {
    AddRowsStrip<Vectors>(d, a + x, v, res + x, rows, columns, (Vectors - 1) * lanes, fresh);
  }
  if constexpr (Vectors > 8) {
    AddRowsStrips<8>(d, a, v, res, rows, columns, x, end, fresh);
  } else {
    switch ((end - x + lanes - 1) / lanes) {
#define ZX_LAST_STRIP(count)                                                                       \
  case count:                                                                                      \
    AddRowsStrip<count>(d, a + x, v, res + x, rows, columns, end - x - lanes, fresh);              \
    break
      ZX_LAST_STRIP(8);
      ZX_LAST_STRIP(7);
      ZX_LAST_STRIP(6);
      ZX_LAST_STRIP(5);
      ZX_LAST_STRIP(4);
      ZX_LAST_STRIP(3);
      ZX_LAST_STRIP(2);
#undef ZX_LAST_STRIP
    case 1:
      AddRowsStrip<1>(d, a + end - lanes, v, res + end - lanes, rows, columns, 0, fresh);
      break;
    default:
      break;
    }
  }
}

/// Long rows, of at least two vectors: in blocks, and in aligned vectors where all rows can be.
void AddLongRows(const double* a, const double* v, double* res, size_t rows, size_t columns) {
  const DOUBLES d;
  const size_t lanes = hn::Lanes(d);
  const size_t beforeAligned = (0 - reinterpret_cast<uintptr_t>(a)) / sizeof(double) % lanes;
  const size_t begin = columns % lanes == 0 ? beforeAligned : 0;
  const size_t end = columns - (columns - begin) % lanes;
  if (end != columns) {
    // What whole vectors leave at both ends. The columns next to it are started afresh below.
    AddRowsStrip<2>(d, a, v, res, rows, columns, columns - lanes, true);
  }
  for (size_t top = 0; top < rows; top += kBlockedRows) {
    AddRowsStrips<kWideSums>(d, a + top * columns, v + top, res, std::min(kBlockedRows, rows - top),
                             columns, begin, end, top == 0);
  }
}

void AddRows(const double* a, const double* v, double* res, size_t rows, size_t columns) {
  const bool isAlignable = columns % hn::Lanes(DOUBLES()) == 0;
  if (columns >= (isAlignable ? kAlignableRow : kLongRow)) {
    AddLongRows(a, v, res, rows, columns);
    return;
  }
  // With few columns the latency of an addition counts, which is half as long in vectors of four.
  const size_t widest = columns < 32 ? std::min<size_t>(columns, 4) : columns;
  WithLanesUpTo(
      widest, [=](auto d) __attribute__((always_inline)) {
        AddRowsStrips<8>(d, a, v, res, rows, columns, 0, columns, true);
      });
}

/// res[y] = the dot product of row y of m and v.
struct TRowSums {
  const double* m;
  const double* v;
  double* res;
  size_t rows;
  size_t columns;
};

/// The sums of as many rows from `top` on as `Groups` vectors have lanes: each lane is a row's sum.
/// Rows that don't fill the last vector share it with rows before them, whose sums are made twice.
template <size_t Groups, class D>
HWY_INLINE void MultiplyRowGroups(D d, const TRowSums& p, size_t top) {
  constexpr size_t lanes = hn::MaxLanes(D());
  const size_t last = std::min(top + (Groups - 1) * lanes, p.rows - lanes);
  const double* blocks[Groups];
  hn::Vec<D> sums[Groups];
  HWY_UNROLL(4)
  for (size_t g = 0; g < Groups; ++g) {
    blocks[g] = p.m + (g + 1 == Groups ? last : top + g * lanes) * p.columns;
    sums[g] = hn::Zero(d);
  }
  size_t x = 0;
  for (; x + lanes <= p.columns; x += lanes) {
    HWY_UNROLL(4)
    for (size_t g = 0; g < Groups; ++g) {
      hn::Vec<D> block[lanes];
      LoadTransposed(d, blocks[g], p.columns, block);
      blocks[g] += lanes;
      HWY_UNROLL(4)
      for (size_t c = 0; c < lanes; ++c) {
        sums[g] = hn::Add(sums[g], hn::Mul(block[c], hn::Set(d, p.v[x + c])));
      }
    }
  }
  // The last columns come in a block that repeats some before them.
  const size_t first = p.columns - lanes;
  HWY_UNROLL(4)
  for (size_t g = 0; g < Groups; ++g) {
    if (x < p.columns) {
      hn::Vec<D> block[lanes];
      LoadTransposed(d, blocks[g] + first - x, p.columns, block);
      HWY_UNROLL(4)
      for (size_t c = 1; c < lanes; ++c) {
        if (first + c >= x) {
          sums[g] = hn::Add(sums[g], hn::Mul(block[c], hn::Set(d, p.v[first + c])));
        }
      }
    }
    hn::StoreU(sums[g], d, p.res + (g + 1 == Groups ? last : top + g * lanes));
  }
}

/// There must be at least as many rows and columns as a vector of `d` has lanes.
template <class D> HWY_INLINE void MultiplyRowsBy(D d, const TRowSums& p) {
  constexpr size_t lanes = hn::MaxLanes(D());
  size_t top = 0;
  // Four vectors of sums side by side hide the latency of their additions.
  for (; top + 3 * lanes < p.rows; top += 4 * lanes) {
    MultiplyRowGroups<4>(d, p, top);
  }
  if (top + 2 * lanes < p.rows) {
    MultiplyRowGroups<3>(d, p, top);
  } else if (top + lanes < p.rows) {
    MultiplyRowGroups<2>(d, p, top);
  } else if (top < p.rows) {
    MultiplyRowGroups<1>(d, p, top);
  }
}

/// There must be a row and a column.
void MultiplyRows(const double* m, const double* v, double* res, size_t rows, size_t columns) {
  if (columns == 1) {
    AddRows(m, v, res, 1, rows);
    return;
  }
  const TRowSums p = {m, v, res, rows, columns};
  const size_t least = std::min(rows, columns);
  // Vectors of eight would need two thirds of the operations, but have two ports for them where
  // vectors of four have three.
  if (least >= 4) {
    MultiplyRowsBy(hn::CappedTag<double, 4>(), p);
  } else if (least >= 2) {
    MultiplyRowsBy(hn::CappedTag<double, 2>(), p);
  } else {
    MultiplyRowsBy(hn::CappedTag<double, 1>(), p);
  }
}

/// res(x, y) = m(y, x) in blocks of as many rows and columns as a vector of `d` has lanes; there
/// are at least as many of both.
template <class D>
HWY_INLINE void TransposeBy(D d, const double* HWY_RESTRICT m, double* HWY_RESTRICT res,
                            size_t rows, size_t columns, size_t stride) {
  constexpr size_t lanes = hn::MaxLanes(D());
  // A few rows of the result at a time: a line of it that leaves the cache half written is fetched
  // again.
  constexpr size_t together = 16;
  for (size_t first = 0; first < columns; first += together) {
    for (size_t top = 0; top < rows; top += lanes) {
      const size_t y = std::min(top, rows - lanes);
      for (size_t left = first; left < std::min(first + together, columns); left += lanes) {
        const size_t x = std::min(left, columns - lanes);
        hn::Vec<D> block[lanes];
        LoadTransposed(d, m + y * columns + x, columns, block);
        HWY_UNROLL(8)
        for (size_t c = 0; c < lanes; ++c) {
          hn::StoreU(block[c], d, res + (x + c) * stride + y);
        }
      }
    }
  }
}

void Transpose(const double* m, double* res, size_t rows, size_t columns, size_t stride) {
  WithLanesUpTo(std::min(rows, columns),
                [&](auto d) { TransposeBy(d, m, res, rows, columns, stride); });
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
} // namespace HWY_NAMESPACE
} // namespace zx_math
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zx_math {
namespace {

HWY_EXPORT(Product);
HWY_EXPORT(AddRows);
HWY_EXPORT(MultiplyRows);
HWY_EXPORT(Transpose);

/// Up to so many elements a plain loop is done before the vectors have started.
constexpr unsigned long kPlainElements = 25;

/// res[y] = the dot product of row y and v.
void MapVector(const double* m, const double* v, double* res, unsigned long rows,
               unsigned long columns) {
  if (rows * columns > kPlainElements) {
    HWY_DYNAMIC_DISPATCH(MultiplyRows)(m, v, res, rows, columns);
    return;
  }
  for (unsigned long y = 0; y < rows; ++y, m += columns) {
    double sum = 0.0;
    for (unsigned long x = 0; x < columns; ++x) {
      sum += m[x] * v[x];
    }
    res[y] = sum;
  }
}

} // namespace
} // namespace zx_math

// Dispatching to a single instruction set names its namespace, within zx_math.
using namespace zx_math;

void mul(const TMatrixD& l, const TMatrixD& r, TMatrixD& res) {
  if (l.SizeX != r.SizeY) {
    throw TZxMessage("l.SizeX != r.SizeY");
  }
  if (res.SizeX != r.SizeX) {
    throw TZxMessage("res.SizeX != r.SizeX");
  }
  if (res.SizeY != l.SizeY) {
    throw TZxMessage("res.SizeY != l.SizeY");
  }
  const unsigned long inner = l.SizeX;
  const unsigned long columns = r.SizeX;
  if (inner == 0) {
    fill(res, 0.0);
    return;
  }
  if (columns == 0 || l.SizeY == 0) {
    return;
  }
  if (columns == 1) {
    zx_math::MapVector(l.Data, r.Data, res.Data, l.SizeY, inner);
    return;
  }
  if (l.SizeY == 1) {
    HWY_DYNAMIC_DISPATCH(AddRows)(r.Data, l.Data, res.Data, inner, columns);
    return;
  }
  HWY_DYNAMIC_DISPATCH(Product)
  (l.Data, inner, 1, r.Data, res.Data, l.SizeY, inner, columns, false);
}

void mul(const TMatrixD& m, const TVectorD& v, TVectorD* res) {
  if (v.Size < m.SizeX || res->Size < m.SizeY) {
    return;
  }
  zx_math::MapVector(m.Data, v.Data, res->Data, m.SizeY, m.SizeX);
}

void transpose(const TMatrixD& m, TMatrixD& res) {
  if (m.SizeX == 0 || m.SizeY == 0 || (m.SizeX - 1) * res.SizeX + m.SizeY > res.SizeX * res.SizeY) {
    return;
  }
  HWY_DYNAMIC_DISPATCH(Transpose)(m.Data, res.Data, m.SizeY, m.SizeX, res.SizeX);
}

void mul_mtm(const TMatrixD& a, TMatrixD* res) {
  const unsigned long n = a.SizeX;
  if (res->SizeX * res->SizeY < n * n) {
    return;
  }
  fill(*res, 0.0);
  if (a.SizeY == 0 || n == 0) {
    return;
  }
  HWY_DYNAMIC_DISPATCH(Product)(a.Data, 1, n, a.Data, res->Data, n, a.SizeY, n, true);
  for (unsigned long i = 1; i < n; ++i) {
    for (unsigned long j = 0; j < i; ++j) {
      res->Data[i * n + j] = res->Data[j * n + i];
    }
  }
}

void mul_mtv(const TMatrixD& a, const TVectorD& v, TVectorD* res) {
  if (v.Size < a.SizeY || res->Size < a.SizeX) {
    return;
  }
  res->Fill(0.0);
  HWY_DYNAMIC_DISPATCH(AddRows)(a.Data, v.Data, res->Data, a.SizeY, a.SizeX);
}
#endif // HWY_ONCE
