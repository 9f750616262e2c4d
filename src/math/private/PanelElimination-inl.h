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

/// Columns in which the pivot rows see each other's steps, so that all of them stay in the first
/// cache.
constexpr size_t PivotColumns = 64;

/// Until the steps of a panel are over, the factor of a row's step stands in the element that the
/// step clears. An element that is exactly 0 omits its step, which isn't the same as a factor of 0:
/// it is marked by a signalling NaN of the zero's sign, which no operation results in.
HWY_INLINE double Omitted(double zero) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(zero) | 0x7FF4000000000000u);
}
HWY_INLINE bool IsOmitted(double factor) {
  return (std::bit_cast<std::uint64_t>(factor) << 1) == 0x7FF4000000000000u << 1;
}

HWY_INLINE bool OmitsAny(const double* factors, size_t count) {
  bool any = false;
  for (size_t t = 0; t < count; ++t) {
    any |= IsOmitted(factors[t]);
  }
  return any;
}

/// The elimination of `a`, n by n, and of the right side `b`. `perm` names the rows, those that
/// have been pivots first. `Way` finds the pivots and says what a step does:
///   bool FindPivot(a, n, k, perm)  brings the row of pivot k to perm[k]; false if there is none
///   bool ScalesPivots              whether the pivot's row is multiplied with its reciprocal first
///   double Factor(element, pivot)  the factor that a row of the step takes
///   op(row, factor, pivot)         what becomes of an element of that row
template <class Way> class TPanelElimination {
public:
  TPanelElimination(double* a, size_t n, double* b, unsigned long* perm, Way way)
      : m_A(a), m_N(n), m_B(b), m_Perm(perm), m_Way(way) {}

  /// The number of steps that were made: n, or the first without a pivot. n must be at least
  /// `NarrowSteps`.
  size_t Run() {
    for (size_t k0 = 0; k0 < m_N; k0 += WideSteps) {
      const size_t wideEnd = std::min(k0 + WideSteps, m_N);
      for (size_t k1 = k0; k1 < wideEnd; k1 += NarrowSteps) {
        const size_t narrowEnd = std::min(k1 + NarrowSteps, wideEnd);
        for (size_t k = k1; k < narrowEnd; ++k) {
          if (!m_Way.FindPivot(m_A + k, m_N, k, m_Perm)) {
            return k;
          }
          _Step(k, std::min(k1, m_N - NarrowSteps), &m_Scales[k - k0]);
        }
        _CarryOver(k1, narrowEnd, wideEnd, &m_Scales[k1 - k0]);
      }
      _CarryOver(k0, wideEnd, m_N, m_Scales);
      _ClearFactors(k0, wideEnd);
    }
    return m_N;
  }

private:
  HWY_INLINE double* _Row(size_t i) const { return m_A + m_Perm[i] * m_N; }

  /// Makes step k in the columns from `window` to `window + NarrowSteps` and on the right side.
  void _Step(size_t k, size_t window, double* scale) {
    const DOUBLES d;
    const size_t lanes = hn::Lanes(d);
    double* pivotRow = _Row(k);
    const double pivot = pivotRow[k];
    if (Way::ScalesPivots) {
      *scale = 1.0 / pivot;
      pivotRow[k] = 1.0;
      for (size_t j = k + 1; j < window + NarrowSteps; ++j) {
        pivotRow[j] *= *scale;
      }
      m_B[m_Perm[k]] *= *scale;
    }
    const double right = m_B[m_Perm[k]];
    // Elements up to column k stay; ones take part for them, which raise no exception.
    HWY_ALIGN double columns[NarrowSteps];
    for (size_t j = 0; j < NarrowSteps; ++j) {
      columns[j] = static_cast<double>(window + j);
    }
    const hn::Vec<DOUBLES> last = hn::Set(d, static_cast<double>(k));
    const hn::Vec<DOUBLES> one = hn::Set(d, 1.0);
    for (size_t i = k + 1; i < m_N; ++i) {
      double* row = _Row(i);
      const double element = row[k];
      if (element == 0.0) {
        row[k] = Omitted(element);
        continue;
      }
      const double factor = m_Way.Factor(element, pivot);
      const hn::Vec<DOUBLES> factors = hn::Set(d, factor);
      for (size_t j = (k - window) / lanes * lanes; j < NarrowSteps; j += lanes) {
        const auto behind = hn::Gt(hn::Load(d, columns + j), last);
        const hn::Vec<DOUBLES> old = hn::LoadU(d, row + window + j);
        const hn::Vec<DOUBLES> pivots = hn::LoadU(d, pivotRow + window + j);
        const hn::Vec<DOUBLES> changed = m_Way.op(hn::IfThenElse(behind, old, one), factors,
                                                  hn::IfThenElse(behind, pivots, one));
        hn::StoreU(hn::IfThenElse(behind, changed, old), d, row + window + j);
      }
      row[k] = factor;
      m_B[m_Perm[i]] = m_Way.op(m_B[m_Perm[i]], factor, right);
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
    if (!IsOmitted(row[t])) {
      ApplyToRow(row + x, row[t], pivot, width, m_Way.op);
    }
  }

  void _CarryOverRows(size_t k0, size_t x, size_t end, size_t top, size_t bottom) {
    const DOUBLES d;
    const size_t lanes = hn::Lanes(d);
    double* dense[EliminatedRows];
    size_t denseCount = 0;
    for (size_t i = top; i < bottom; ++i) {
      double* row = _Row(i);
      if (end - x >= lanes && !OmitsAny(row + k0, x - k0)) {
        dense[denseCount++] = row;
        continue;
      }
      for (size_t t = k0; t < x; ++t) {
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

  /// The elements that the steps have cleared.
  void _ClearFactors(size_t k0, size_t end) {
    for (size_t i = k0 + 1; i < m_N; ++i) {
      double* row = _Row(i);
      for (size_t k = k0; k < std::min(i, end); ++k) {
        row[k] = IsOmitted(row[k]) ? std::copysign(0.0, row[k]) : 0.0;
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
