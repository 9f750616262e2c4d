#pragma once

#include <cstdint>
#include <vector>

namespace zx_math {

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

} // namespace zx_math
