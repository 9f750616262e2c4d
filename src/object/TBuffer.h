#pragma once

/// A block of elements as the family passes it around: where it is, how many elements are valid,
/// how many it has room for. The record owns nothing.
template <class T> struct TBuffer {
  T* Data = nullptr;
  unsigned long Size = 0;
  unsigned long Capacity = 0;
};

namespace Zx3D {
using ::TBuffer;
}
