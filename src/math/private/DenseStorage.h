#pragma once

#include <limits>
#include <new>

namespace zx_math {

/// sizeX * sizeY, or all ones if that doesn't fit, which no allocation below survives.
inline unsigned long ElementCount(unsigned long sizeX, unsigned long sizeY) {
  unsigned long count = 0;
  return __builtin_mul_overflow(sizeX, sizeY, &count) ? ~0UL : count;
}

/// An array for `delete[]`, not initialised. A count whose bytes don't fit asks for the largest
/// number of bytes instead, so that it fails in the allocator and never wraps.
inline double* AllocateDoubles(unsigned long n) {
  const std::size_t bytes =
      (n >> 61) != 0 ? std::numeric_limits<std::size_t>::max() : n * sizeof(double);
  return static_cast<double*>(::operator new[](bytes));
}

inline void FreeDoubles(double* p) noexcept { ::operator delete[](p); }

} // namespace zx_math
