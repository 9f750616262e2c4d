#pragma once

#include <cstdint>
#include <cstring>
#include <emmintrin.h>

namespace Zx3D {

/// Truncation towards zero to 32 bits as the processor does it: what does not fit, and a NaN, gives
/// the least integer. A cast would leave those undefined.
inline std::int32_t TruncI32(double value) { return _mm_cvttsd_si32(_mm_set_sd(value)); }

/// The same for a float.
inline std::int32_t TruncI32(float value) { return _mm_cvttss_si32(_mm_set_ss(value)); }

/// Truncation to 64 bits.
inline std::int64_t TruncI64(double value) { return _mm_cvttsd_si64(_mm_set_sd(value)); }
inline std::int64_t TruncI64(float value) { return _mm_cvttss_si64(_mm_set_ss(value)); }

/// A channel as a byte: the low byte of the truncation of `c * 255 + 0.5`.
inline unsigned char ByteOf(double c) {
  return static_cast<unsigned char>(TruncI64(c * 255.0 + 0.5));
}

/// \name A float at any address.
/// \{
inline float LoadFloat(const unsigned char* from) {
  float value;
  std::memcpy(&value, from, sizeof value);
  return value;
}
inline void StoreFloat(unsigned char* to, float value) { std::memcpy(to, &value, sizeof value); }
/// \}

/// Sums of indices that wrap instead of overflowing.
inline std::int32_t WrapAdd(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

/// The integers from the truncation of `from` to the truncation of `to`, cut to 0 .. size - 1.
/// False if there are none, or if either end is a NaN.
inline bool LoopLimits(double from, double to, int size, int* first, int* last) {
  // The comparisons are made so that a NaN fails them; only what fits is ever truncated.
  if (!(from < size) || !(to > -1.0)) {
    return false;
  }
  *first = from > 0.0 ? TruncI32(from) : 0;
  *last = to < size ? TruncI32(to) : size - 1;
  return *first <= *last;
}

} // namespace Zx3D
