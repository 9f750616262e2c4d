#include <ZxCore3D/math/private/BoundingSphere.h>

#include <cmath>
#include <cstring>

#include <ZxCore3D/types/ExpandAxis.h>
#include <ZxCore3D/types/private/VectorForms.h>

using TPoint = vec_t_<double, 3>;

static TPoint LoadPoint(const TPoint* p, unsigned long stride, unsigned long i) {
  // A stride need not keep the points aligned.
  TPoint point;
  std::memcpy(&point, reinterpret_cast<const char*>(p) + i * stride, sizeof(point));
  return point;
}

template <>
void GetBoundingSphere<double>(const TPoint* p, unsigned long stride, unsigned long n,
                               VSPHERE<double>* out) {
  out->SetEmpty();
  if (n == 0) {
    return;
  }
  const TPoint first = LoadPoint(p, stride, 0);
  if (n == 1) {
    out->Center = first;
    out->Radius = 0.0;
    return;
  }
  TPoint min = first;
  TPoint max = first;
  for (unsigned long i = 1; i < n; ++i) {
    const TPoint point = LoadPoint(p, stride, i);
    for (unsigned long axis = 0; axis < 3; ++axis) {
      ExpandAxis(point[axis], &min[axis], &max[axis]);
    }
  }
  const TPoint center = (min + max) * 0.5;
  double farthest = 0.0;
  for (unsigned long i = 0; i < n; ++i) {
    const TPoint d = LoadPoint(p, stride, i) - center;
    const double distance = dot(d, d);
    farthest = distance > farthest ? distance : farthest;
  }
  out->Center = center;
  out->Radius = std::sqrt(farthest);
}
