#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>

#include <algorithm>

#include <ZxBaseKit/TZxMessage.h>

#include <ZxCore3D/types/InstructionSets-inl.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/Product.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/DenseTiles-inl.h>

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

/// Steps of the sum that one packed panel holds: 16 KiB with the widest vectors, so that the rows
/// on the left find room beside it in the first cache.
constexpr size_t PanelSteps = 128;

/// res(y, x) is the sum over k of l[y * rowStride + k * stepStride] * r(k, x). With `upper` only
/// elements on and above the diagonal are certain to be written.
template <size_t Vectors>
HWY_INLINE void ProductStrip(const double* l, size_t rowStride, size_t stepStride, const double* r,
                             double* res, size_t rows, size_t inner, size_t columns, size_t x,
                             size_t width) {
  const DOUBLES d;
  const size_t stripColumns = Vectors * hn::Lanes(d);
  HWY_ALIGN double panel[PanelSteps * MaxTileColumns];
  HWY_ALIGN double edge[TileRows * MaxTileColumns];
  for (size_t k = 0; k < inner; k += PanelSteps) {
    const size_t steps = std::min(PanelSteps, inner - k);
    for (size_t t = 0; t < steps; ++t) {
      const double* from = r + (k + t) * columns + x;
      double* to = panel + t * stripColumns;
      CopyRowRepeating(from, width, to, stripColumns);
    }
    for (size_t y = 0; y < rows; y += TileRows) {
      const size_t count = std::min(TileRows, rows - y);
      const double* m = l + y * rowStride + k * stepStride;
      double* tile = res + y * columns + x;
      if (width == stripColumns) {
        UpdateTileRows<Vectors>(count, tile, columns, m, rowStride, stepStride, panel, steps,
                                k == 0, ADD());
        continue;
      }
      for (size_t i = 0; i < count && k != 0; ++i) {
        CopyRowRepeating(tile + i * columns, width, edge + i * stripColumns, stripColumns);
      }
      UpdateTileRows<Vectors>(count, edge, stripColumns, m, rowStride, stepStride, panel, steps,
                              k == 0, ADD());
      for (size_t i = 0; i < count; ++i) {
        CopyRow(edge + i * stripColumns, width, tile + i * columns);
      }
    }
  }
}

void Product(const double* l, size_t rowStride, size_t stepStride, const double* r, double* res,
             size_t rows, size_t inner, size_t columns, bool upper) {
  const size_t lanes = hn::Lanes(DOUBLES());
  // The last strip may go over columns that are done, which gives them the same values again; a sum
  // that is made in several parts would get the last of them twice.
  const bool again = inner <= PanelSteps;
  for (size_t x = 0; x < columns;) {
    const size_t left = columns - x;
    const bool single = left <= lanes || (left < 2 * lanes && columns < 2 * lanes);
    const size_t whole = single ? lanes : 2 * lanes;
    const size_t width = std::min(left, whole);
    const size_t begin = again && columns >= whole ? x + width - whole : x;
    const size_t stripRows = upper ? std::min(rows, x + width) : rows;
    if (single) {
      ProductStrip<1>(l, rowStride, stepStride, r, res, stripRows, inner, columns, begin,
                      x + width - begin);
    } else {
      ProductStrip<2>(l, rowStride, stepStride, r, res, stripRows, inner, columns, begin,
                      x + width - begin);
    }
    x += width;
  }
}

/// res[x] += row[x] * v[r] for the rows in order, `Vectors` vectors at a time.
template <size_t Vectors>
HWY_INLINE void AddRowsStrip(const double* a, const double* v, double* res, size_t rows,
                             size_t columns) {
  const DOUBLES d;
  const size_t lanes = hn::Lanes(d);
  hn::Vec<DOUBLES> sums[Vectors];
  HWY_UNROLL(4)
  for (size_t i = 0; i < Vectors; ++i) {
    sums[i] = hn::LoadU(d, res + i * lanes);
  }
  for (size_t r = 0; r < rows; ++r) {
    const hn::Vec<DOUBLES> factor = hn::Set(d, v[r]);
    HWY_UNROLL(4)
    for (size_t i = 0; i < Vectors; ++i) {
      sums[i] = hn::Add(sums[i], hn::Mul(hn::LoadU(d, a + r * columns + i * lanes), factor));
    }
  }
  HWY_UNROLL(4)
  for (size_t i = 0; i < Vectors; ++i) {
    hn::StoreU(sums[i], d, res + i * lanes);
  }
}

void AddRows(const double* a, const double* v, double* res, size_t rows, size_t columns) {
  const size_t lanes = hn::Lanes(DOUBLES());
  size_t x = 0;
  for (; x + 4 * lanes <= columns; x += 4 * lanes) {
    AddRowsStrip<4>(a + x, v, res + x, rows, columns);
  }
  for (; x + lanes <= columns; x += lanes) {
    AddRowsStrip<1>(a + x, v, res + x, rows, columns);
  }
  for (size_t r = 0; r < rows; ++r) {
    for (size_t j = x; j < columns; ++j) {
      res[j] += a[r * columns + j] * v[r];
    }
  }
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

/// Up to so many columns and so many products plain loops win against packing.
constexpr unsigned long SmallColumns = 7;
constexpr unsigned long SmallProducts = 256;

template <unsigned long Columns>
void SmallProduct(const double* l, const double* r, double* res, unsigned long rows,
                  unsigned long inner) {
  for (unsigned long y = 0; y < rows; ++y) {
    double sums[Columns] = {};
    for (unsigned long k = 0; k < inner; ++k) {
      for (unsigned long x = 0; x < Columns; ++x) {
        sums[x] += l[y * inner + k] * r[k * Columns + x];
      }
    }
    for (unsigned long x = 0; x < Columns; ++x) {
      res[y * Columns + x] = sums[x];
    }
  }
}

using SMALL_PRODUCT = void (*)(const double*, const double*, double*, unsigned long, unsigned long);

constexpr SMALL_PRODUCT SmallProducts1To7[SmallColumns] = {
    SmallProduct<1>, SmallProduct<2>, SmallProduct<3>, SmallProduct<4>,
    SmallProduct<5>, SmallProduct<6>, SmallProduct<7>};

constexpr unsigned long TransposeTile = 8;

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
  if (columns == 0) {
    return;
  }
  if (columns <= zx_math::SmallColumns && l.SizeY * inner * columns <= zx_math::SmallProducts) {
    zx_math::SmallProducts1To7[columns - 1](l.Data, r.Data, res.Data, l.SizeY, inner);
    return;
  }
  HWY_DYNAMIC_DISPATCH(Product)
  (l.Data, inner, 1, r.Data, res.Data, l.SizeY, inner, columns, false);
}

void mul(const TMatrixD& m, const TVectorD& v, TVectorD* res) {
  if (v.Size < m.SizeX || res->Size < m.SizeY) {
    return;
  }
  // Each sum waits for itself, so that several rows go side by side.
  constexpr unsigned long side = 8;
  const double* row = m.Data;
  unsigned long y = 0;
  for (; y + side <= m.SizeY; y += side, row += side * m.SizeX) {
    double sums[side] = {};
    for (unsigned long x = 0; x < m.SizeX; ++x) {
      for (unsigned long i = 0; i < side; ++i) {
        sums[i] += row[i * m.SizeX + x] * v.Data[x];
      }
    }
    std::copy_n(sums, side, res->Data + y);
  }
  for (; y < m.SizeY; ++y, row += m.SizeX) {
    double sum = 0.0;
    for (unsigned long x = 0; x < m.SizeX; ++x) {
      sum += row[x] * v.Data[x];
    }
    res->Data[y] = sum;
  }
}

void transpose(const TMatrixD& m, TMatrixD& res) {
  if (m.SizeX == 0 || m.SizeY == 0 || (m.SizeX - 1) * res.SizeX + m.SizeY > res.SizeX * res.SizeY) {
    return;
  }
  for (unsigned long top = 0; top < m.SizeY; top += zx_math::TransposeTile) {
    const unsigned long bottom = std::min(top + zx_math::TransposeTile, m.SizeY);
    for (unsigned long x = 0; x < m.SizeX; ++x) {
      for (unsigned long y = top; y < bottom; ++y) {
        res.Data[x * res.SizeX + y] = m.Data[y * m.SizeX + x];
      }
    }
  }
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
