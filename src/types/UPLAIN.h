#pragma once

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/vec_t_.h>

/// The oriented plane `a x + b y + c z + d = 0`: a normal, then minus the dot product of the normal
/// and any point of the plane.
template <class T> struct UPLAIN {
  /// The coefficients of the equation.
  T a, b, c, d;
};

/// The plane through three points, its normal along `(q - p) x (r - p)`. All four values are
/// multiplied by one over the normal's length: three points on a line yield infinities or NaNs.
/// For double and float the arithmetic is the library's, whatever flags a host is compiled with.
template <class T>
inline UPLAIN<T> PlainThrough(const vec_t_<T, 3>& p, const vec_t_<T, 3>& q, const vec_t_<T, 3>& r) {
  const vec_t_<T, 3> normal = cross(q - p, r - p);
  const T d = -dot(p, normal);
  const T scale = T(1) / length(normal);
  return {normal.x * scale, normal.y * scale, normal.z * scale, d * scale};
}
template <>
ZX_CORE3D_API UPLAIN<double> PlainThrough(const vec_t_<double, 3>& p, const vec_t_<double, 3>& q,
                                          const vec_t_<double, 3>& r);
template <>
ZX_CORE3D_API UPLAIN<float> PlainThrough(const vec_t_<float, 3>& p, const vec_t_<float, 3>& q,
                                         const vec_t_<float, 3>& r);
