#include <ZxCore3D/math/private/SplineElimination.h>

#include <algorithm>
#include <cmath>
#include <memory_resource>

namespace zx_math {

namespace {

/// The many short lists take their memory from one resource, which asks for it in a few blocks.
template <class T> using LIST = std::pmr::vector<T>;

/// The elements of a row that aren't 0, by ascending columns.
using ROW = LIST<SPLINE_ELEMENT>;

class TSparseMatrix {
public:
  TSparseMatrix(unsigned long segments, bool closed) : m_Holders(4 * segments, &m_Memory) {
    m_Rows.reserve(4 * segments);
    ForEachSplineRow(segments, closed, [this](auto row) { _Add(row); });
  }

  ROW& operator[](std::uint32_t row) { return m_Rows[row]; }
  std::uint32_t Size() const { return static_cast<std::uint32_t>(m_Rows.size()); }

  /// The rows that have, or had, an element in `column`.
  const LIST<std::uint32_t>& Holders(std::uint32_t column) const { return m_Holders[column]; }

  double Value(std::uint32_t row, std::uint32_t column) const {
    const ROW& elements = m_Rows[row];
    const auto at = _Find(elements, column);
    return at != elements.end() && at->column == column ? at->value : 0.0;
  }

  /// Row `target` -= row `pivot` * m beyond `column`; the element in `column` becomes 0.
  void Subtract(std::uint32_t target, std::uint32_t pivot, std::uint32_t column, double m) {
    m_Merged.clear();
    const ROW& t = m_Rows[target];
    const ROW& p = m_Rows[pivot];
    auto i = _Find(t, column + 1);
    auto j = _Find(p, column + 1);
    while (i != t.end() || j != p.end()) {
      if (j == p.end() || (i != t.end() && i->column < j->column)) {
        m_Merged.push_back(*i++);
        continue;
      }
      const bool both = i != t.end() && i->column == j->column;
      const double value = (both ? i->value : 0.0) - j->value * m;
      if (value != 0.0) {
        m_Merged.push_back({j->column, value});
        if (!both) {
          m_Holders[j->column].push_back(target);
        }
      }
      i += both;
      ++j;
    }
    m_Rows[target].swap(m_Merged);
  }

private:
  static ROW::const_iterator _Find(const ROW& row, std::uint32_t column) {
    return std::find_if(row.begin(), row.end(),
                        [column](const SPLINE_ELEMENT& e) { return e.column >= column; });
  }

  void _Add(std::initializer_list<SPLINE_ELEMENT> elements) {
    for (const SPLINE_ELEMENT& element : elements) {
      m_Holders[element.column].push_back(Size());
    }
    ROW& row = m_Rows.emplace_back(elements);
    std::sort(row.begin(), row.end(),
              [](const SPLINE_ELEMENT& a, const SPLINE_ELEMENT& b) { return a.column < b.column; });
  }

  std::pmr::monotonic_buffer_resource m_Memory;
  LIST<ROW> m_Rows{&m_Memory};
  LIST<LIST<std::uint32_t>> m_Holders;
  ROW m_Merged{&m_Memory};
};

/// The steps that clear what stands right of the diagonal, from the last column down.
void AppendSubstitution(TSparseMatrix& matrix, SPLINE_ELIMINATION* result) {
  struct UPPER {
    std::uint32_t row;
    double value;
  };
  std::pmr::monotonic_buffer_resource memory;
  LIST<LIST<UPPER>> columns(matrix.Size(), &memory);
  for (std::uint32_t i = 0; i < matrix.Size(); ++i) {
    for (const SPLINE_ELEMENT& element : matrix[result->order[i]]) {
      if (element.column > i) {
        columns[element.column].push_back({result->order[i], element.value});
      }
    }
  }
  for (std::uint32_t c = matrix.Size(); c-- > 1;) {
    for (const UPPER& upper : columns[c]) {
      result->steps.push_back({upper.row, result->order[c], upper.value});
    }
  }
}

} // namespace

bool EliminateSpline(unsigned long segments, bool closed, double tol, SPLINE_ELIMINATION* result) {
  TSparseMatrix matrix(segments, closed);
  const std::uint32_t n = matrix.Size();
  result->steps.clear();
  result->order.resize(n);
  std::vector<std::uint32_t> place(n);
  for (std::uint32_t i = 0; i < n; ++i) {
    result->order[i] = i;
    place[i] = i;
  }
  for (std::uint32_t k = 0; k < n; ++k) {
    std::uint32_t p = k;
    double largest = std::fabs(matrix.Value(result->order[k], k));
    for (const std::uint32_t row : matrix.Holders(k)) {
      const double v = std::fabs(matrix.Value(row, k));
      if (place[row] >= k && (v > largest || (v == largest && place[row] < p))) {
        largest = v;
        p = place[row];
      }
    }
    if (tol >= largest) {
      return false;
    }
    std::swap(result->order[k], result->order[p]);
    place[result->order[k]] = k;
    place[result->order[p]] = p;
    const std::uint32_t pivot = result->order[k];
    const double f = 1.0 / matrix.Value(pivot, k);
    for (SPLINE_ELEMENT& element : matrix[pivot]) {
      element.value = element.column == k ? 1.0 : element.value * f;
    }
    result->steps.push_back({pivot, pivot, f});
    for (const std::uint32_t row : matrix.Holders(k)) {
      const double m = matrix.Value(row, k);
      if (place[row] > k && m != 0.0) {
        matrix.Subtract(row, pivot, k, m);
        result->steps.push_back({row, pivot, m});
      }
    }
  }
  AppendSubstitution(matrix, result);
  return std::all_of(result->steps.begin(), result->steps.end(),
                     [](const ROW_STEP& step) { return std::isfinite(step.factor); });
}

} // namespace zx_math
