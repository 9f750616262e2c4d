#pragma once

#include <cstddef>

#include <ZxCore3D/types/Export.h>

/// A 4 by 4 matrix, stored column by column as the drawing interface wants it: row r, column c is
/// element `c * 4 + r`. A point is mapped as the column vector `M * p`; an affine matrix keeps its
/// translation in elements 12, 13, 14.
template <class T> struct MAT4 {
  /// The elements, in the order told above.
  T m[16];

  /// Element `i` of `m`, unchecked.
  T& operator[](std::size_t i) { return m[i]; }
  const T& operator[](std::size_t i) const { return m[i]; }
};

static_assert(sizeof(MAT4<double>) == 128);

/// out[4 i + j] = a[4 i] b[j] + a[4 i + 1] b[4 + j] + a[4 i + 2] b[8 + j] + a[4 i + 3] b[12 + j],
/// summed left to right. In column-vector terms the result is the matrix product b * a.
///
/// Each pointer is to 16 values; `out` must be neither input, since it is written while they are
/// read. For double and float the arithmetic is the library's, whatever flags a host is compiled
/// with.
template <class T> inline void Mat4_Mul_Mat4(const T* a, const T* b, T* out) {
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      out[4 * i + j] = a[4 * i] * b[j] + a[4 * i + 1] * b[4 + j] + a[4 * i + 2] * b[8 + j] +
                       a[4 * i + 3] * b[12 + j];
    }
  }
}

template <> ZX_CORE3D_API void Mat4_Mul_Mat4<double>(const double* a, const double* b, double* out);
template <> ZX_CORE3D_API void Mat4_Mul_Mat4<float>(const float* a, const float* b, float* out);

/// The identity.
extern ZX_CORE3D_API const MAT4<double> g_M4Ed;
extern ZX_CORE3D_API const MAT4<float> g_M4Ef;
