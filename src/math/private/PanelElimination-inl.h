// Elimination with partial pivoting in panels of columns, once per instruction set, for solvers
// whose rows stay where they are and are exchanged in an index vector. Every element sees the steps
// that it sees in elimination row by row, in the same order.

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>

#if defined(ZX_MATH_PANEL_ELIMINATION_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_MATH_PANEL_ELIMINATION_INL_H
#undef ZX_MATH_PANEL_ELIMINATION_INL_H
#else
#define ZX_MATH_PANEL_ELIMINATION_INL_H
#endif

#include <ZxCore3D/math/private/DenseTiles-inl.h>

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

/// Columns whose steps are made one after the other, within these columns alone: the widest vector.
constexpr size_t NarrowSteps = 8;
/// Steps that the columns to the right see together.
constexpr size_t WideSteps = 32;
/// Rows that see one packed strip after the other.
constexpr size_t EliminatedRows = 128;

/// Below, whole rows are as fast.
constexpr size_t PanelUnknowns = 48;
/// Rows of narrow columns that find room on the stack, 32 KiB.
constexpr size_t CopiedRows = 512;
/// Columns in which the pivot rows see each other's steps, so that all of them stay in the first
/// cache.
constexpr size_t PivotColumns = 64;

/// Until the steps of a panel are over, the factor of a row's step stands in the element that the
/// step clears. An exact zero there means that the row omits the step, so that a factor which is 0
/// itself, of an element that isn't, stands as a signalling NaN of its sign: no operation results
/// in one.
constexpr std::uint64_t ZeroFactor = 0x7FF4000000000000u;

HWY_INLINE std::uint64_t Magnitude(double factor) {
  return std::bit_cast<std::uint64_t>(factor) & (~std::uint64_t{0} >> 1);
}
HWY_INLINE double FromFactor(double factor) {
  return factor == 0.0 ? std::copysign(std::bit_cast<double>(ZeroFactor), factor) : factor;
}
HWY_INLINE double ToFactor(double stored) {
  return Magnitude(stored) == ZeroFactor ? std::copysign(0.0, stored) : stored;
}

/// The elimination of `a`, n by n, and of the right side `b`. `perm` names the rows, those that
/// have been pivots first. `Way` finds the pivots and says what a step does:
///   bool FindPivot(at, k, n, &p)   the position of the pivot among `at(k)` to `at(n - 1)`, the
///                                  elements of column k; false if there is none
///   bool ScalesPivots              whether the pivot's row is multiplied with its reciprocal first
///   double Factor(element, pivot)  the factor that a row of the step takes
///   op(row, factor, pivot)         what becomes of an element of that row
template <class Way> class TElimination {
public:
  TElimination(double* a, size_t n, double* b, unsigned long* perm, Way way)
      : m_A(a), m_N(n), m_B(b), m_Perm(perm), m_Way(way) {}

  /// The number of steps that were made: n, or the first without a pivot.
  size_t Run() { return m_N < PanelUnknowns || _IsSparse() ? _RunByRows() : _RunByPanels(); }

  /// Makes step k, whose pivot is in place.
  void StepByRows(size_t k) {
    double* pivotRow = _Row(k);
    const double pivot = pivotRow[k];
    _ScalePivot(k, pivotRow + k, m_N - k);
    for (size_t i = k + 1; i < m_N; ++i) {
      double* row = _Row(i);
      if (row[k] != 0.0) {
        const double factor = m_Way.Factor(row[k], pivot);
        row[k] = 0.0;
        ApplyToRow(row + k + 1, factor, pivotRow + k + 1, m_N - k - 1, m_Way.op);
        _ApplyToRight(i, k, factor);
      }
    }
  }

private:
  HWY_INLINE double* _Row(size_t i) const { return m_A + m_Perm[i] * m_N; }

  HWY_INLINE void _ApplyToRight(size_t i, size_t k, double factor) {
    m_B[m_Perm[i]] = m_Way.op(m_B[m_Perm[i]], factor, m_B[m_Perm[k]]);
  }

  /// Multiplies the row of pivot k and its right side with the pivot's reciprocal, which is the
  /// result. `pivot` is followed by the elements of the row, `count` with it.
  HWY_INLINE double _ScalePivot(size_t k, double* pivot, size_t count) {
    if (!Way::ScalesPivots) {
      return 1.0;
    }
    const double scale = 1.0 / *pivot;
    *pivot = 1.0;
    ScaleRow(pivot + 1, scale, count - 1);
    m_B[m_Perm[k]] *= scale;
    return scale;
  }

  /// Whether more than three elements of four are 0, going by every eighth row: most steps are then
  /// omitted, and panels gain nothing.
  bool _IsSparse() const {
    size_t zeros = 0;
    size_t seen = 0;
    for (size_t i = 0; i < m_N; i += 8, seen += m_N) {
      for (size_t j = 0; j < m_N; ++j) {
        zeros += Magnitude(m_A[i * m_N + j]) == 0 ? 1 : 0;
      }
    }
    return zeros > seen - seen / 4;
  }

  size_t _RunByRows() {
    for (size_t k = 0; k < m_N; ++k) {
      size_t p = k;
      if (!m_Way.FindPivot([&](size_t i) { return _Row(i)[k]; }, k, m_N, &p)) {
        return k;
      }
      std::swap(m_Perm[k], m_Perm[p]);
      StepByRows(k);
    }
    return m_N;
  }

  size_t _RunByPanels() {
    for (size_t k0 = 0; k0 < m_N; k0 += WideSteps) {
      const size_t wideEnd = std::min(k0 + WideSteps, m_N);
      for (size_t k1 = k0; k1 < wideEnd; k1 += NarrowSteps) {
        const size_t narrowEnd = std::min(k1 + NarrowSteps, wideEnd);
        const size_t made = _Narrow(k1, narrowEnd, &m_Scales[k1 - k0]);
        if (made < narrowEnd) {
          return made;
        }
        _CarryOver(k1, narrowEnd, wideEnd, &m_Scales[k1 - k0]);
      }
      _CarryOver(k0, wideEnd, m_N, m_Scales);
      _ClearFactors(k0, wideEnd);
    }
    return m_N;
  }

  /// Makes the steps from k0 to `end` within their columns, on a copy of these where there is room.
  size_t _Narrow(size_t k0, size_t end, double* scales) {
    const size_t window = std::min(k0, m_N - NarrowSteps);
    if (m_N - k0 > CopiedRows) {
      return _NarrowSteps(
          k0, end, window, [&](size_t i) { return _Row(i) + window; },
          [&](size_t k, size_t p) { std::swap(m_Perm[k], m_Perm[p]); }, scales);
    }
    HWY_ALIGN double copy[CopiedRows * NarrowSteps];
    const auto row = [&](size_t i) { return copy + (i - k0) * NarrowSteps; };
    for (size_t i = k0; i < m_N; ++i) {
      CopyRow(_Row(i) + window, NarrowSteps, row(i));
    }
    const size_t made = _NarrowSteps(
        k0, end, window, row,
        [&](size_t k, size_t p) {
          if (k != p) {
            std::swap(m_Perm[k], m_Perm[p]);
            SwapRows(row(k), row(p), NarrowSteps);
          }
        },
        scales);
    for (size_t i = k0; i < m_N; ++i) {
      CopyRow(row(i), NarrowSteps, _Row(i) + window);
    }
    return made;
  }

  /// `_Narrow` in the columns from `window` on, whose rows `row` gives. `exchange` swaps two rows.
  template <class Row, class Exchange>
  HWY_INLINE size_t _NarrowSteps(size_t k0, size_t end, size_t window, Row row, Exchange exchange,
                                 double* scales) {
    for (size_t k = k0; k < end; ++k) {
      const size_t c = k - window;
      size_t p = k;
      if (!m_Way.FindPivot([&](size_t i) { return row(i)[c]; }, k, m_N, &p)) {
        return k;
      }
      exchange(k, p);
      double* pivotRow = row(k);
      const double pivot = pivotRow[c];
      scales[k - k0] = _ScalePivot(k, pivotRow + c, NarrowSteps - c);
      _NarrowStep(k, c, row, pivotRow, pivot);
    }
    return end;
  }

  template <class Row>
  HWY_INLINE void _NarrowStep(size_t k, size_t c, Row rowOf, const double* pivotRow, double pivot) {
    const DOUBLES d;
    const size_t lanes = hn::Lanes(d);
    // Elements up to column c stay; ones take part for them, which raise no exception.
    HWY_ALIGN double columns[NarrowSteps];
    for (size_t j = 0; j < NarrowSteps; ++j) {
      columns[j] = static_cast<double>(j);
    }
    const hn::Vec<DOUBLES> last = hn::Set(d, static_cast<double>(c));
    const hn::Vec<DOUBLES> one = hn::Set(d, 1.0);
    for (size_t i = k + 1; i < m_N; ++i) {
      double* row = rowOf(i);
      if (row[c] == 0.0) {
        continue;
      }
      const double factor = m_Way.Factor(row[c], pivot);
      const hn::Vec<DOUBLES> factors = hn::Set(d, factor);
      for (size_t j = c / lanes * lanes; j < NarrowSteps; j += lanes) {
        const auto behind = hn::Gt(hn::Load(d, columns + j), last);
        const hn::Vec<DOUBLES> old = hn::LoadU(d, row + j);
        const hn::Vec<DOUBLES> pivots = hn::LoadU(d, pivotRow + j);
        const hn::Vec<DOUBLES> changed = m_Way.op(hn::IfThenElse(behind, old, one), factors,
                                                  hn::IfThenElse(behind, pivots, one));
        hn::StoreU(hn::IfThenElse(behind, changed, old), d, row + j);
      }
      row[c] = FromFactor(factor);
      _ApplyToRight(i, k, factor);
    }
  }

  /// Carries the steps from `k0` to `x` over the columns from `x` to `end`.
  void _CarryOver(size_t k0, size_t x, size_t end, const double* scales) {
    if (x == end) {
      return;
    }
    for (size_t left = x; left < end; left += PivotColumns) {
      const size_t width = std::min(PivotColumns, end - left);
      for (size_t t = k0; t < x; ++t) {
        double* pivot = _Row(t) + left;
        if (Way::ScalesPivots) {
          ScaleRow(pivot, scales[t - k0], width);
        }
        for (size_t i = t + 1; i < x; ++i) {
          _Apply(_Row(i), t, pivot, left, width);
        }
      }
    }
    for (size_t top = x; top < m_N; top += EliminatedRows) {
      _CarryOverRows(k0, x, end, top, std::min(top + EliminatedRows, m_N));
    }
  }

  /// Applies step t to `width` columns of a row from `x` on, unless the row omits it.
  HWY_INLINE void _Apply(double* row, size_t t, const double* pivot, size_t x, size_t width) {
    if (Magnitude(row[t]) != 0) {
      ApplyToRow(row + x, ToFactor(row[t]), pivot, width, m_Way.op);
    }
  }

  void _CarryOverRows(size_t k0, size_t x, size_t end, size_t top, size_t bottom) {
    const DOUBLES d;
    const size_t lanes = hn::Lanes(d);
    double* dense[EliminatedRows];
    size_t denseCount = 0;
    for (size_t i = top; i < bottom; ++i) {
      double* row = _Row(i);
      size_t omitted = 0;
      size_t zeroFactors = 0;
      for (size_t t = k0; t < x; ++t) {
        omitted += Magnitude(row[t]) == 0 ? 1 : 0;
        zeroFactors += Magnitude(row[t]) == ZeroFactor ? 1 : 0;
      }
      if (omitted + zeroFactors == 0 && end - x >= lanes) {
        dense[denseCount++] = row;
        continue;
      }
      for (size_t t = k0; t < x && omitted < x - k0; ++t) {
        _Apply(row, t, _Row(t) + x, x, end - x);
      }
    }
    for (size_t left = x; left < end && denseCount != 0;) {
      const size_t width = StripWidth(end - left, lanes);
      if (width == lanes) {
        _CarryOverStrip<1>(k0, x, left, lanes, dense, denseCount);
      } else {
        _CarryOverStrip<2>(k0, x, left, width - lanes, dense, denseCount);
      }
      left += width;
    }
  }

  /// Carries the steps over a strip of `Vectors` vectors of the rows that omit none of them.
  template <size_t Vectors>
  HWY_INLINE void _CarryOverStrip(size_t k0, size_t x, size_t left, size_t second,
                                  double* const* rows, size_t count) {
    const DOUBLES d;
    const size_t lanes = hn::Lanes(d);
    HWY_ALIGN double pivots[WideSteps * MaxTileColumns];
    for (size_t t = k0; t < x; ++t) {
      for (size_t v = 0; v < Vectors; ++v) {
        hn::Store(hn::LoadU(d, _Row(t) + left + v * second), d,
                  pivots + ((t - k0) * Vectors + v) * lanes);
      }
    }
    for (size_t i = 0; i < count; i += TileRows) {
      UpdateTileRows<Vectors>(d, std::min(TileRows, count - i), LISTED_ROWS{rows + i, left}, second,
                              LISTED_ROWS{rows + i, k0}, 1, pivots, {Vectors * lanes, lanes},
                              x - k0, false, m_Way.op);
    }
  }

  /// Clears the elements whose steps were made; a zero that omitted its step keeps its sign.
  void _ClearFactors(size_t k0, size_t end) {
    for (size_t i = k0 + 1; i < m_N; ++i) {
      double* row = _Row(i);
      const size_t stop = std::min(i, end);
      for (size_t k = k0; k < stop; ++k) {
        row[k] = Magnitude(row[k]) == 0 ? row[k] : 0.0;
      }
    }
  }

  double* m_A;
  size_t m_N;
  double* m_B;
  unsigned long* m_Perm;
  Way m_Way;
  /// What the pivot row of each step of the panel is multiplied with.
  double m_Scales[WideSteps];
};

// NOLINTNEXTLINE(google-readability-namespace-comments)
} // namespace HWY_NAMESPACE
} // namespace zx_math
HWY_AFTER_NAMESPACE();

#endif
