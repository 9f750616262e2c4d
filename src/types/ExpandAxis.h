#pragma once

/// Grows the range from `*min` to `*max` to hold `value`. Only one of the two ends ever moves, and
/// a NaN on either side of a comparison moves none.
template <class T> inline void ExpandAxis(const T& value, T* min, T* max) {
  if (*min > value) {
    *min = value;
  } else if (value > *max) {
    *max = value;
  }
}
