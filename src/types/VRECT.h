#pragma once

#include <ZxBaseKit/Limits.h>

#include <ZxCore3D/types/EmptyMark.h>
#include <ZxCore3D/types/ExpandAxis.h>
#include <ZxCore3D/types/vec_t_.h>

/// An axis-aligned rectangle. Empty when every bit of `Min.x` is set.
template <class T> struct VRECT {
  vec_t_<T, 2> Min; ///< least coordinates
  vec_t_<T, 2> Max; ///< greatest coordinates
  bool Flag;        ///< carried along; nothing in this library reads it

  /// Ready to be grown: the least coordinates are the greatest values of `T`, the greatest the
  /// least. Not marked empty.
  VRECT()
      : Min{zx_max_value<T>(), zx_max_value<T>()}, Max{zx_min_value<T>(), zx_min_value<T>()},
        Flag(false) {}
  /// From its two ends, unchecked.
  VRECT(const vec_t_<T, 2>& min, const vec_t_<T, 2>& max) : Min(min), Max(max), Flag(false) {}

  /// Whether the rectangle is marked empty.
  bool IsEmpty() const { return HasEmptyMark(Min.x); }

  /// Marks the rectangle empty; its other values stay.
  void SetEmpty() { SetEmptyMark(&Min.x); }

  /// Grows the rectangle to hold `p`; an empty one becomes that point. A NaN coordinate leaves its
  /// axis as it is.
  void Expand(const vec_t_<T, 2>& p) {
    if (IsEmpty()) {
      Min = p;
      Max = p;
      return;
    }
    for (std::size_t i = 0; i < 2; ++i) {
      ExpandAxis(p[i], &Min[i], &Max[i]);
    }
  }
};
