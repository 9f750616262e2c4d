#include <ZxCore3D/math/private/SplineElimination.h>

#include <algorithm>
#include <cmath>

namespace zx_math {

namespace {

struct ELEMENT {
  std::uint32_t column;
  double value;
};

/// The elements of a row that aren't 0, by ascending columns.
using ROW = std::vector<ELEMENT>;

class TSparseMatrix {
public:
  TSparseMatrix(unsigned long segments, bool closed) : m_Holders(4 * segments) {
    const auto last = static_cast<std::uint32_t>(segments - 1);
    m_Rows.reserve(4 * segments);
    for (std::uint32_t i = 0; i <= last; ++i) {
      const std::uint32_t a = 4 * i;
      _Add({{a, 1.0}});
      _Add({{a, 1.0}, {a + 1, 1.0}, {a + 2, 1.0}, {a + 3, 1.0}});
      if (i == last && !closed) {
        continue;
      }
      const std::uint32_t next = i == last ? 0 : a + 4;
      _Add({{a + 1, 1.0}, {a + 2, 2.0}, {a + 3, 3.0}, {next + 1, -1.0}});
      _Add({{a + 2, 2.0}, {a + 3, 6.0}, {next + 2, -2.0}});
    }
    if (!closed) {
      _Add({{2, 2.0}});
      _Add({{4 * last + 2, 2.0}, {4 * last + 3, 6.0}});
    }
  }

  ROW& operator[](std::uint32_t row) { return m_Rows[row]; }
  std::uint32_t Size() const { return static_cast<std::uint32_t>(m_Rows.size()); }

  /// The rows that have, or had, an element in `column`.
  const std::vector<std::uint32_t>& Holders(std::uint32_t column) const {
    return m_Holders[column];
  }

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
                        [column](const ELEMENT& e) { return e.column >= column; });
  }

  void _Add(ROW row) {
    std::sort(row.begin(), row.end(),
              [](const ELEMENT& a, const ELEMENT& b) { return a.column < b.column; });
    for (const ELEMENT& element : row) {
      m_Holders[element.column].push_back(Size());
    }
    m_Rows.push_back(std::move(row));
  }

  std::vector<ROW> m_Rows;
  std::vector<std::vector<std::uint32_t>> m_Holders;
  ROW m_Merged;
};

/// The steps that clear what stands right of the diagonal, from the last column down.
void AppendSubstitution(TSparseMatrix& matrix, SPLINE_ELIMINATION* result) {
  struct UPPER {
    std::uint32_t row;
    double value;
  };
  std::vector<std::vector<UPPER>> columns(matrix.Size());
  for (std::uint32_t i = 0; i < matrix.Size(); ++i) {
    for (const ELEMENT& element : matrix[result->order[i]]) {
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
    for (ELEMENT& element : matrix[pivot]) {
      element.value = element.column == k ? 1.0 : element.value * f;
    }
    result->steps.push_back({pivot, pivot, f});
    for (const std::uint32_t row : std::vector<std::uint32_t>(matrix.Holders(k))) {
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
