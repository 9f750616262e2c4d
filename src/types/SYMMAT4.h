#pragma once

#include <cstddef>

/// A symmetric 4 by 4 matrix as its upper triangle row by row: a00, a01, a02, a03, a11, a12, a13,
/// a22, a23, a33.
template <class T> struct SYMMAT4 {
  /// The elements, in the order told above.
  T m[10];

  /// Element `i` of `m`, unchecked.
  T& operator[](std::size_t i) { return m[i]; }
  const T& operator[](std::size_t i) const { return m[i]; }
};

static_assert(sizeof(SYMMAT4<double>) == 80);
