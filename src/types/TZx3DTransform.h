#pragma once

#include <ZxCore3D/types/vec_t_.h>

/// A map of points, supplied by the caller.
class TZx3DTransform {
public:
  virtual ~TZx3DTransform() = default;

  /// The image of `point`.
  virtual vec_t_<double, 3> TransformPoint(const vec_t_<double, 3>& point) const = 0;
};
