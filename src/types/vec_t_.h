#pragma once

#include <cmath>
#include <cstddef>
#include <string>
#include <type_traits>

#include <ZxCore3D/types/Export.h>

class TZxXIniWriter;

/// A fixed vector of N elements and nothing else, so that an array of vectors is a flat array of T.
/// Elements 0, 1, 2, 3 are the x, y, z, w of a coordinate; other lengths have their index only.
template <class T, std::size_t N> struct vec_t_ {
  /// The elements.
  T Values[N];

  /// Element `i`, unchecked.
  T& operator[](std::size_t i) { return Values[i]; }
  const T& operator[](std::size_t i) const { return Values[i]; }
};

/// A vector of two: a texture coordinate, a point of the plane.
template <class T> struct vec_t_<T, 2> {
  /// Elements 0 and 1.
  T x, y;

  /// Element `i`, unchecked.
  T& operator[](std::size_t i) { return reinterpret_cast<T*>(this)[i]; }
  const T& operator[](std::size_t i) const { return reinterpret_cast<const T*>(this)[i]; }
};

/// A vector of three: a point, a direction, a colour.
template <class T> struct vec_t_<T, 3> {
  /// Elements 0 to 2.
  T x, y, z;

  /// Element `i`, unchecked.
  T& operator[](std::size_t i) { return reinterpret_cast<T*>(this)[i]; }
  const T& operator[](std::size_t i) const { return reinterpret_cast<const T*>(this)[i]; }

  /// Writes x, y, z into a compact section `name` of the text format. For `T` = double only.
  /// Raises the writer's error if it can't.
  void SaveSE(TZxXIniWriter* writer, const std::string& name) const;
};

/// A vector of four: a homogeneous coordinate, a colour with alpha.
template <class T> struct vec_t_<T, 4> {
  /// Elements 0 to 3.
  T x, y, z, w;

  /// Element `i`, unchecked.
  T& operator[](std::size_t i) { return reinterpret_cast<T*>(this)[i]; }
  const T& operator[](std::size_t i) const { return reinterpret_cast<const T*>(this)[i]; }
};

template <>
ZX_CORE3D_API void vec_t_<double, 3>::SaveSE(TZxXIniWriter* writer, const std::string& name) const;

static_assert(sizeof(vec_t_<double, 2>) == 16 && sizeof(vec_t_<double, 3>) == 24 &&
              sizeof(vec_t_<double, 4>) == 32 && sizeof(vec_t_<int, 3>) == 12);

/// The sum, element by element.
template <class T, std::size_t N>
inline vec_t_<T, N> operator+(const vec_t_<T, N>& a, const vec_t_<T, N>& b) {
  vec_t_<T, N> sum;
  for (std::size_t i = 0; i < N; ++i) {
    sum[i] = a[i] + b[i];
  }
  return sum;
}

/// The difference, element by element.
template <class T, std::size_t N>
inline vec_t_<T, N> operator-(const vec_t_<T, N>& a, const vec_t_<T, N>& b) {
  vec_t_<T, N> difference;
  for (std::size_t i = 0; i < N; ++i) {
    difference[i] = a[i] - b[i];
  }
  return difference;
}

/// Each element times `factor`.
template <class T, std::size_t N> inline vec_t_<T, N> operator*(const vec_t_<T, N>& v, T factor) {
  vec_t_<T, N> scaled;
  for (std::size_t i = 0; i < N; ++i) {
    scaled[i] = v[i] * factor;
  }
  return scaled;
}

/// Each element times `factor`.
template <class T, std::size_t N> inline vec_t_<T, N> operator*(T factor, const vec_t_<T, N>& v) {
  return v * factor;
}

/// Whether all elements are equal; a NaN is equal to nothing.
template <class T, std::size_t N>
inline bool operator==(const vec_t_<T, N>& a, const vec_t_<T, N>& b) {
  for (std::size_t i = 0; i < N; ++i) {
    if (!(a[i] == b[i])) {
      return false;
    }
  }
  return true;
}

/// Whether any two elements differ.
template <class T, std::size_t N>
inline bool operator!=(const vec_t_<T, N>& a, const vec_t_<T, N>& b) {
  return !(a == b);
}

// The operations below multiply and add. A host may be compiled with flags that make one rounding
// of two (-march=native is enough for some compilers), so for double and float they stand in the
// library: their bits don't depend on the host's flags. Expressions of the operators above are the
// host's own arithmetic.

namespace zx_vec {

/// Whether the library holds the arithmetic of `T`.
template <class T>
inline constexpr bool IsInLibrary = std::is_same_v<T, double> || std::is_same_v<T, float>;

/// `dot` and `length` of `count` (at least 1) elements that lie close.
ZX_CORE3D_API double Dot(const double* a, const double* b, std::size_t count);
ZX_CORE3D_API float Dot(const float* a, const float* b, std::size_t count);
ZX_CORE3D_API double Length(const double* v, std::size_t count);
ZX_CORE3D_API float Length(const float* v, std::size_t count);

} // namespace zx_vec

/// Sum of products, in the order x, y, z, w.
template <class T, std::size_t N> inline T dot(const vec_t_<T, N>& a, const vec_t_<T, N>& b) {
  if constexpr (zx_vec::IsInLibrary<T>) {
    return zx_vec::Dot(&a[0], &b[0], N);
  } else {
    T sum = a[0] * b[0];
    for (std::size_t i = 1; i < N; ++i) {
      sum = sum + a[i] * b[i];
    }
    return sum;
  }
}

/// (a.y b.z - a.z b.y, a.z b.x - a.x b.z, a.x b.y - a.y b.x)
template <class T> inline vec_t_<T, 3> cross(const vec_t_<T, 3>& a, const vec_t_<T, 3>& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
template <>
ZX_CORE3D_API vec_t_<double, 3> cross(const vec_t_<double, 3>& a, const vec_t_<double, 3>& b);
template <>
ZX_CORE3D_API vec_t_<float, 3> cross(const vec_t_<float, 3>& a, const vec_t_<float, 3>& b);

/// Square root of the sum of squares.
template <class T, std::size_t N> inline T length(const vec_t_<T, N>& v) {
  if constexpr (zx_vec::IsInLibrary<T>) {
    return zx_vec::Length(&v[0], N);
  } else {
    return std::sqrt(dot(v, v));
  }
}
