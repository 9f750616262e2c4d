#include <ZxCore3D/types/vec_t_.h>

#include <ZxCore3D/types/UPLAIN.h>

namespace {

template <class T> T DotOf(const T* a, const T* b, std::size_t count) {
  T sum = a[0] * b[0];
  for (std::size_t i = 1; i < count; ++i) {
    sum = sum + a[i] * b[i];
  }
  return sum;
}

template <class T> vec_t_<T, 3> CrossOf(const vec_t_<T, 3>& a, const vec_t_<T, 3>& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

template <class T>
UPLAIN<T> PlainOf(const vec_t_<T, 3>& p, const vec_t_<T, 3>& q, const vec_t_<T, 3>& r) {
  const vec_t_<T, 3> normal = CrossOf(q - p, r - p);
  const T d = -DotOf(&p.x, &normal.x, 3);
  const T scale = T(1) / std::sqrt(DotOf(&normal.x, &normal.x, 3));
  return {normal.x * scale, normal.y * scale, normal.z * scale, d * scale};
}

} // namespace

namespace zx_vec {

double Dot(const double* a, const double* b, std::size_t count) { return DotOf(a, b, count); }
float Dot(const float* a, const float* b, std::size_t count) { return DotOf(a, b, count); }
double Length(const double* v, std::size_t count) { return std::sqrt(DotOf(v, v, count)); }
float Length(const float* v, std::size_t count) { return std::sqrt(DotOf(v, v, count)); }

} // namespace zx_vec

template <> vec_t_<double, 3> cross(const vec_t_<double, 3>& a, const vec_t_<double, 3>& b) {
  return CrossOf(a, b);
}
template <> vec_t_<float, 3> cross(const vec_t_<float, 3>& a, const vec_t_<float, 3>& b) {
  return CrossOf(a, b);
}

template <>
UPLAIN<double> PlainThrough(const vec_t_<double, 3>& p, const vec_t_<double, 3>& q,
                            const vec_t_<double, 3>& r) {
  return PlainOf(p, q, r);
}
template <>
UPLAIN<float> PlainThrough(const vec_t_<float, 3>& p, const vec_t_<float, 3>& q,
                           const vec_t_<float, 3>& r) {
  return PlainOf(p, q, r);
}
