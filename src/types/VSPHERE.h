#pragma once

#include <ZxCore3D/types/EmptyMark.h>
#include <ZxCore3D/types/vec_t_.h>

/// A sphere. Empty when every bit of `Radius` is set.
template <class T> struct VSPHERE {
  vec_t_<T, 3> Center; ///< the middle
  T Radius;            ///< in the units of the centre

  /// Whether the sphere is marked empty.
  bool IsEmpty() const { return HasEmptyMark(Radius); }

  /// Marks the sphere empty; its centre stays.
  void SetEmpty() { SetEmptyMark(&Radius); }
};
