#pragma once

#include <cmath>

#include <ZxCore3D/types/vec_t_.h>

// The operations on doubles that the library's own sources call often, inlined: these sources are
// compiled without contraction, so that the bits are those of the exported forms. Overload
// resolution prefers them because they are no templates.

inline double dot(const vec_t_<double, 2>& a, const vec_t_<double, 2>& b) {
  return a.x * b.x + a.y * b.y;
}

inline double dot(const vec_t_<double, 3>& a, const vec_t_<double, 3>& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

inline vec_t_<double, 3> cross(const vec_t_<double, 3>& a, const vec_t_<double, 3>& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline double length(const vec_t_<double, 2>& v) { return std::sqrt(dot(v, v)); }
inline double length(const vec_t_<double, 3>& v) { return std::sqrt(dot(v, v)); }
