#pragma once

#include <cstddef>

/// A 3 by 3 matrix, stored column by column: row r, column c is element `c * 3 + r`. One that holds
/// a plane projective map has the constant 1 in element 8; row 2 is the denominator.
template <class T> struct MAT3 {
  /// The elements, in the order told above.
  T m[9];

  /// Element `i` of `m`, unchecked.
  T& operator[](std::size_t i) { return m[i]; }
  const T& operator[](std::size_t i) const { return m[i]; }
};

static_assert(sizeof(MAT3<double>) == 72);
