// Tested by: tests/render/Clipping.cpp (Clipping.*), tests/render/VertexBatches.cpp
// (VertexBatches.*)

#pragma once

#include <cstddef>
#include <cstdint>

#include <ZxCore3D/types/vec_t_.h>

namespace Zx3D {

/// The planes that bound clip space: plane p looks at coordinate p / 2, and even planes bound it
/// from below by -w, odd ones from above by w. A NaN is outside. As the plane to clip by from on,
/// their number means by none.
inline constexpr int kClipPlanes = 6;

inline bool IsInside(const vec_t_<double, 4>& at, int plane) {
  const double u = at[static_cast<std::size_t>(plane / 2)];
  return (plane & 1) == 0 ? u >= -at.w : u <= at.w;
}

/// The planes that a position is outside of: bit p for plane p.
inline std::uint8_t OutsidePlanes(const vec_t_<double, 4>& at) {
  const auto planes = [&at](double u) { return (u >= -at.w ? 0 : 1) | (u <= at.w ? 0 : 2); };
  return static_cast<std::uint8_t>(planes(at.x) | planes(at.y) << 2 | planes(at.z) << 4);
}

/// Whether the first plane that cuts or rejects the triangle rejects all of it: the clipper drops
/// it there unchanged. `a`, `b` and `c` are its corners' `OutsidePlanes`.
inline bool IsRejected(unsigned int a, unsigned int b, unsigned int c) {
  const unsigned int any = a | b | c;
  return (a & b & c & (any & (0u - any))) != 0;
}

} // namespace Zx3D
