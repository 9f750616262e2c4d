// Tested by: tests/render/Clipping.cpp (Clipping.*), tests/render/VertexBatches.cpp
// (VertexBatches.*)

#pragma once

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>

#include <ZxCore3D/types/vec_t_.h>

#include <ZxCore3D/render/common/KernelConditions.h>
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

/// A triangle, or a line whose second end counts twice.
using TCorners = const vec_t_<double, 4>* const (&)[3];

/// The planes that any corner of a shape is outside of, and those that all are: bit p for plane
/// p.
struct TJoinedPlanes {
  unsigned int Any;
  unsigned int All;
};

/// Without branches. A coordinate is within both planes of its axis if u and -u are -w or above.
inline TJoinedPlanes OutsidePlanes(TCorners corners) {
  const auto planesInside = [](const vec_t_<double, 4>& at) {
    const TPair w = {-at.w, -at.w};
    return ((TPair{at.x, -at.x} >= w) & TPairMask{1, 2}) |
           ((TPair{at.y, -at.y} >= w) & TPairMask{4, 8}) |
           ((TPair{at.z, -at.z} >= w) & TPairMask{16, 32});
  };
  const TPairMask inA = planesInside(*corners[0]);
  const TPairMask inB = planesInside(*corners[1]);
  const TPairMask inC = planesInside(*corners[2]);
  const auto outside = [](TPairMask inside) {
    constexpr unsigned int kAll = (1u << kClipPlanes) - 1;
    return kAll & ~static_cast<unsigned int>(inside[0] | inside[1]);
  };
  return {outside(inA & inB & inC), outside(inA | inB | inC)};
}

/// The planes to both sides of which a shape keeps the distance that `LiesBeyond` asks for.
inline unsigned int FindClear(TCorners corners) {
  double sum = 0.0;
  double nearest[3] = {kMaxClearSum, kMaxClearSum, kMaxClearSum};
  for (const vec_t_<double, 4>* const at : corners) {
    const double w = std::fabs(at->w);
    sum += w;
    for (std::size_t i = 0; i < 3; ++i) {
      const double u = std::fabs((*at)[i]);
      sum += u;
      nearest[i] = std::min(nearest[i], std::fabs(w - u));
    }
  }
  unsigned int clear = 0;
  for (unsigned int i = 0; i < 3; ++i) {
    clear |= nearest[i] > sum * kClearMargin ? 3u << 2 * i : 0;
  }
  return sum >= kMinClearSum && sum <= kMaxClearSum ? clear : 0;
}

/// Whether the clipper drops a shape, all of it outside one plane, although one or two planes cut
/// it before. What arrays do by bits for many, with the proof, is in arrays/VertexBatch.cpp.
[[gnu::noinline]] inline bool LiesBeyond(TCorners corners, TJoinedPlanes outside) {
  const unsigned int passed = outside.All ^ (outside.All - 1); // up to the plane all are outside of
  const unsigned int cuts = outside.Any & ~outside.All & passed;
  const unsigned int rest = cuts & (cuts - 1);
  if ((rest & (rest - 1)) != 0 || (FindClear(corners) & passed) != passed) {
    return false;
  }
  if (rest == 0 || corners[1] == corners[2]) {
    return true;
  }
  // Two planes, which must not see the same corner alone: on which sides are the corners?
  const auto isApart = [&](int c, unsigned int planes) {
    const int plane = std::countr_zero(planes);
    return IsInside(*corners[0], plane) != IsInside(*corners[c], plane);
  };
  return isApart(1, cuts) != isApart(1, rest) || isApart(2, cuts) != isApart(2, rest);
}

/// Whether the clipper drops all of a shape: unchanged, where the first plane that does not pass
/// all of it has all of it outside, or by `LiesBeyond`.
inline bool IsDropped(TCorners corners, TJoinedPlanes outside) {
  return outside.All != 0 &&
         ((outside.All & (outside.Any & (0u - outside.Any))) != 0 || LiesBeyond(corners, outside));
}

} // namespace Zx3D
