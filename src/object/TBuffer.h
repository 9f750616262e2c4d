#pragma once

/// A block of elements as the family passes it around: where it is, how many elements are valid,
/// how many it has room for. The record owns nothing.
template <class T> struct TBuffer {
  T* Data = nullptr;          ///< the first element, or null
  unsigned long Size = 0;     ///< how many are valid
  unsigned long Capacity = 0; ///< how many there is room for
};

namespace Zx3D {
using ::TBuffer;
}
