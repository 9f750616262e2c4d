#pragma once

#include "Common.h"

namespace zxpy {

/// The values of a matrix column by column, from an array [row, column] of `Size` by `Size` numbers
/// or from a flat one that has them column by column already. Raises `TypeError` for another shape.
template <class TMatrix, int Size> TMatrix MatrixFrom(const py::handle& object) {
  const TAnyDoubles values = TAnyDoubles::ensure(object);
  if (!values) {
    PyErr_Clear();
    throw py::type_error("expected a matrix");
  }
  TMatrix m;
  if (values.ndim() == 1 && values.shape(0) == Size * Size) {
    for (int i = 0; i < Size * Size; ++i) {
      m.m[i] = values.at(i);
    }
  } else if (values.ndim() == 2 && values.shape(0) == Size && values.shape(1) == Size) {
    for (int c = 0; c < Size; ++c) {
      for (int r = 0; r < Size; ++r) {
        m.m[c * Size + r] = values.at(r, c);
      }
    }
  } else {
    throw py::type_error("expected a matrix of " + std::to_string(Size) + " by " +
                         std::to_string(Size) + " numbers, or as many in a row");
  }
  return m;
}

/// An array [row, column] over values that stand column by column; a copy without `base`.
inline py::array MatrixArray(const double* values, int size, const py::handle& base = {}) {
  return py::array(py::dtype::of<double>(), std::vector<py::ssize_t>{size, size},
                   std::vector<py::ssize_t>{8, 8 * size}, values, base);
}

} // namespace zxpy
