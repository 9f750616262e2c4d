#pragma once

#include <cstring>

/// The mark of an empty box, rectangle or sphere: every bit of one value set. It is a NaN, so it is
/// told by its bits and never by a floating comparison.
template <class T> inline bool HasEmptyMark(const T& value) {
  unsigned char bytes[sizeof(T)];
  std::memcpy(bytes, &value, sizeof(T));
  for (const unsigned char byte : bytes) {
    if (byte != 0xFF) {
      return false;
    }
  }
  return true;
}

/// Sets every bit of `*value`.
template <class T> inline void SetEmptyMark(T* value) { std::memset(value, 0xFF, sizeof(T)); }
