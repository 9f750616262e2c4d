#pragma once

#include <cstdint>
#include <cstring>
#include <limits>

#include <ZxCore3D/types/vec_t_.h>

namespace Zx3D {

/// Truncation towards zero to 32 bits. What does not fit, and a NaN, gives the least integer, on
/// every processor; a cast would leave those undefined, and processors differ in them.
inline std::int32_t TruncI32(double value) {
  const bool fits = value > -2147483649.0 && value < 2147483648.0;
  return fits ? static_cast<std::int32_t>(value) : std::numeric_limits<std::int32_t>::min();
}

/// Truncation to 64 bits, in the same way. The least integer is itself a double.
inline std::int64_t TruncI64(double value) {
  const bool fits = value >= -9223372036854775808.0 && value < 9223372036854775808.0;
  return fits ? static_cast<std::int64_t>(value) : std::numeric_limits<std::int64_t>::min();
}

/// A float is a double of the same value.
inline std::int32_t TruncI32(float value) { return TruncI32(static_cast<double>(value)); }
inline std::int64_t TruncI64(float value) { return TruncI64(static_cast<double>(value)); }

/// A channel as a byte: the low byte of the truncation of `c * 255 + 0.5`.
inline unsigned char ByteOf(double c) {
  return static_cast<unsigned char>(TruncI64(c * 255.0 + 0.5));
}

/// \name A byte as 0 to 1. Each is the rounding of its kind of call: arrays multiply by the double
/// nearest to 1/255, colours of the current values by the float nearest to it in single precision,
/// and only what is read back is the quotient.
/// \{
inline double UnitOfArrayByte(unsigned char byte) { return byte * 0.00392156862745098; }
inline double UnitOfColorByte(unsigned char byte) {
  return static_cast<double>(static_cast<float>(byte) * 0.003921569f);
}
inline double UnitOfStoredByte(unsigned char byte) { return byte / 255.0; }
/// \}

/// Limited to 0 to 1; a NaN stays one.
inline double Clamped01(double c) { return c < 0.0 ? 0.0 : c > 1.0 ? 1.0 : c; }
inline vec_t_<double, 4> Clamped01(const vec_t_<double, 4>& c) {
  return {Clamped01(c.x), Clamped01(c.y), Clamped01(c.z), Clamped01(c.w)};
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
inline bool PixelRange(double from, double to, int size, int* first, int* last) {
  // The comparisons are made so that a NaN fails them; only what fits is ever truncated.
  if (!(from < size) || !(to > -1.0)) {
    return false;
  }
  *first = from > 0.0 ? TruncI32(from) : 0;
  *last = to < size ? TruncI32(to) : size - 1;
  return *first <= *last;
}

} // namespace Zx3D
