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

/// res[x] = the sum of row[x] * v[r] over the rows in order, `Vectors` vectors at a time.
template <size_t Vectors, class D>
HWY_INLINE void AddRowsStrip(D d, const double* a, const double* v, double* res, size_t rows,
                             size_t columns) {
  const size_t lanes = hn::Lanes(d);
  hn::Vec<D> sums[Vectors];
  HWY_UNROLL(16)
  for (size_t i = 0; i < Vectors; ++i) {
    sums[i] = hn::Zero(d);
  }
  for (size_t r = 0; r < rows; ++r) {
    const hn::Vec<D> factor = hn::Set(d, v[r]);
    HWY_UNROLL(16)
    for (size_t i = 0; i < Vectors; ++i) {
      sums[i] = hn::Add(sums[i], hn::Mul(hn::LoadU(d, a + r * columns + i * lanes), factor));
    }
  }
  HWY_UNROLL(16)
  for (size_t i = 0; i < Vectors; ++i) {
    hn::StoreU(sums[i], d, res + i * lanes);
  }
}

void AddRows(const double* a, const double* v, double* res, size_t rows, size_t columns) {
  WithLanesUpTo(columns, [&](auto d) {
    const size_t lanes = hn::Lanes(d);
    size_t x = 0;
    for (; x + kWideSums * lanes <= columns; x += kWideSums * lanes) {
      AddRowsStrip<kWideSums>(d, a + x, v, res + x, rows, columns);
    }
    for (; x + 4 * lanes <= columns; x += 4 * lanes) {
      AddRowsStrip<4>(d, a + x, v, res + x, rows, columns);
    }
    for (; x < columns; x += lanes) {
      // The last columns may be done once more, with the same sums.
      x = std::min(x, columns - lanes);
      AddRowsStrip<1>(d, a + x, v, res + x, rows, columns);
    }
  });
}

/// res[y + i] = the dot products of `Groups` times as many rows from y on as a vector of `d` has
/// lanes with `v`: each lane is a row's sum. There must be at least as many columns as lanes.
template <size_t Groups, class D>
HWY_INLINE void MultiplyRowGroups(D d, const double* HWY_RESTRICT rows,
                                  const double* HWY_RESTRICT v, double* HWY_RESTRICT res,
                                  size_t columns) {
  constexpr size_t lanes = hn::MaxLanes(D());
  hn::Vec<D> sums[Groups];
  for (size_t g = 0; g < Groups; ++g) {
    sums[g] = hn::Zero(d);
  }
  size_t x = 0;
  for (; x + lanes <= columns; x += lanes) {
    HWY_UNROLL(4)
    for (size_t g = 0; g < Groups; ++g) {
      hn::Vec<D> block[lanes];
      LoadTransposed(d, rows + g * lanes * columns + x, columns, block);
      HWY_UNROLL(8)
      for (size_t c = 0; c < lanes; ++c) {
        sums[g] = hn::Add(sums[g], hn::Mul(block[c], hn::Set(d, v[x + c])));
      }
    }
  }
  for (size_t g = 0; g < Groups; ++g) {
    if (x < columns) {
      hn::Vec<D> block[lanes];
      LoadTransposed(d, rows + g * lanes * columns + columns - lanes, columns, block);
      for (size_t c = lanes - (columns - x); c < lanes; ++c) {
        sums[g] = hn::Add(sums[g], hn::Mul(block[c], hn::Set(d, v[columns - lanes + c])));
      }
    }
    hn::StoreU(sums[g], d, res + g * lanes);
  }
}

/// There must be at least as many rows and columns as a vector has lanes.
void MultiplyRows(const double* m, const double* v, double* res, size_t rows, size_t columns) {
  // Sums wait for themselves, so that several vectors of them go side by side.
  const DOUBLES d;
  constexpr size_t lanes = hn::MaxLanes(DOUBLES());
  constexpr size_t groups = lanes == 8 ? 2 : 4;
  size_t y = 0;
  for (; y + groups * lanes <= rows; y += groups * lanes) {
    MultiplyRowGroups<groups>(d, m + y * columns, v, res + y, columns);
  }
  for (; y < rows; y += lanes) {
    // The last rows may be done once more, with the same sums.
    y = std::min(y, rows - lanes);
    MultiplyRowGroups<1>(d, m + y * columns, v, res + y, columns);
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

/// Below so many rows or columns plain loops win against turning blocks.
constexpr unsigned long SmallMap = 24;

/// res[y] = the dot product of row y and v.
void MapVector(const double* m, const double* v, double* res, unsigned long rows,
               unsigned long columns) {
  if (rows >= SmallMap && columns >= SmallMap) {
    HWY_DYNAMIC_DISPATCH(MultiplyRows)(m, v, res, rows, columns);
    return;
  }
  // Each sum waits for itself, so that several rows go side by side.
  constexpr unsigned long side = 8;
  unsigned long y = 0;
  for (; y + side <= rows; y += side, m += side * columns) {
    double sums[side] = {};
    for (unsigned long x = 0; x < columns; ++x) {
      for (unsigned long i = 0; i < side; ++i) {
        sums[i] += m[i * columns + x] * v[x];
      }
    }
    std::copy_n(sums, side, res + y);
  }
  for (; y < rows; ++y, m += columns) {
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
