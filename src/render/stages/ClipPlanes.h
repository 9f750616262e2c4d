// Tested by: tests/render/Clipping.cpp (Clipping.*), tests/render/VertexBatches.cpp
// (VertexBatches.*)

#pragma once

#include <cstddef>
#include <cstdint>

#include <ZxCore3D/types/vec_t_.h>

#include <ZxCore3D/render/common/Pairs.h>

namespace Zx3D {

/// The planes that bound clip space: plane p looks at coordinate p / 2, and even planes bound it
/// from below by -w, odd ones from above by w. A NaN is outside. As the plane to clip by from on,
/// their number means by none.
inline constexpr int kClipPlanes = 6;

inline bool IsInside(const vec_t_<double, 4>& at, int plane) {
  const double u = at[static_cast<std::size_t>(plane / 2)];
  return (plane & 1) == 0 ? u >= -at.w : u <= at.w;
}

/// The planes that any corner of a triangle is outside of, and those that all are: bit p for plane
/// p.
struct TJoinedPlanes {
  unsigned int Any;
  unsigned int All;
};

/// Without branches. A coordinate is within both planes of its axis if u and -u are -w or above.
inline TJoinedPlanes OutsidePlanes(const vec_t_<double, 4>& a, const vec_t_<double, 4>& b,
                                   const vec_t_<double, 4>& c) {
  const auto planesInside = [](const vec_t_<double, 4>& at) {
    const TPair w = {-at.w, -at.w};
    return ((TPair{at.x, -at.x} >= w) & TPairMask{1, 2}) |
           ((TPair{at.y, -at.y} >= w) & TPairMask{4, 8}) |
           ((TPair{at.z, -at.z} >= w) & TPairMask{16, 32});
  };
  const TPairMask inA = planesInside(a);
  const TPairMask inB = planesInside(b);
  const TPairMask inC = planesInside(c);
  const auto outside = [](TPairMask inside) {
    constexpr unsigned int kAll = (1u << kClipPlanes) - 1;
    return kAll & ~static_cast<unsigned int>(inside[0] | inside[1]);
  };
  return {outside(inA & inB & inC), outside(inA | inB | inC)};
}

/// Whether the first plane that cuts or rejects the triangle rejects all of it: the clipper drops
/// it there unchanged.
inline bool IsRejected(TJoinedPlanes outside) {
  return (outside.All & (outside.Any & (0u - outside.Any))) != 0;
}

} // namespace Zx3D
