#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include <ZxCore3D/math/CubeSpline.h>

namespace zx_math {

/// An element of the matrix that isn't 0.
struct SPLINE_ELEMENT {
  std::uint32_t column;
  double value;
};

/// Calls `add` with the elements of each row of a spline's matrix, in the order of the rows.
template <class Add> void ForEachSplineRow(unsigned long segments, bool closed, Add add) {
  using ELEMENTS = std::initializer_list<SPLINE_ELEMENT>;
  const auto last = static_cast<std::uint32_t>(segments - 1);
  for (std::uint32_t i = 0; i <= last; ++i) {
    const std::uint32_t a = 4 * i;
    add(ELEMENTS{{a, 1.0}});
    add(ELEMENTS{{a, 1.0}, {a + 1, 1.0}, {a + 2, 1.0}, {a + 3, 1.0}});
    if (i == last && !closed) {
      continue;
    }
    const std::uint32_t next = i == last ? 0 : a + 4;
    add(ELEMENTS{{a + 1, 1.0}, {a + 2, 2.0}, {a + 3, 3.0}, {next + 1, -1.0}});
    add(ELEMENTS{{a + 2, 2.0}, {a + 3, 6.0}, {next + 2, -2.0}});
  }
  if (!closed) {
    add(ELEMENTS{{2, 2.0}});
    add(ELEMENTS{{4 * last + 2, 2.0}, {4 * last + 3, 6.0}});
  }
}

/// One operation on whole rows of the inverse: `target` -= `source` * `factor`, or, where the two
/// are the same row, `target` *= `factor`.
struct ROW_STEP {
  std::uint32_t target;
  std::uint32_t source;
  double factor;
};

/// What `InverseEx` does to the rows of the inverse of a spline's matrix, without the steps that
/// its exact zeros leave out.
///
/// The matrix depends on the number of segments alone, every column of the inverse goes its own
/// way, and only columns that meet a value of the right side other than 0 can change the result. So
/// the elimination is made once on the few elements that the rows have, and its steps are then
/// replayed on the columns that count. Leaving out subtractions of zero products and products with
/// zeros in sums that begin at 0.0 changes no bit of a sum, since all elements are finite.
struct SPLINE_ELIMINATION {
  std::vector<ROW_STEP> steps;
  /// The row, by its number in the matrix as it was set up, that ends as row i of the inverse.
  std::vector<std::uint32_t> order;
};

/// False if a pivot isn't above `tol`, or if a factor isn't finite.
bool EliminateSpline(unsigned long segments, bool closed, double tol, SPLINE_ELIMINATION* result);

/// `CalcCubeSpline1D` for `coordinates` (1 to 3) values that stand side by side at each point, with
/// one elimination for all of them. The polynomials of one coordinate follow those of the one
/// before. A coordinate without memory fails and leaves its polynomials, and the others go on.
bool CalcCubeSplines(const double* y, unsigned long coordinates, unsigned long stride,
                     unsigned long n, bool closed, POLYNOM3* out);

} // namespace zx_math
