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

/// A triangle, or a line whose second end counts twice.
using TCorners = const vec_t_<double, 4>* const (&)[3];

/// The planes that any corner of a shape is outside of, and those that all are: bit p for plane
/// p.
struct TJoinedPlanes {
  unsigned int Any;
  unsigned int All;
};

/// Without branches.
inline TJoinedPlanes OutsidePlanes(TCorners corners) {
  const auto planesInside = [](const vec_t_<double, 4>& at) {
    const TPair w = {at.w, at.w};
    const TPair xy = {at.x, at.y};
    const TPair z = {at.z, at.z};
    return ((xy >= -w) & TPairMask{1, 4}) | ((xy <= w) & TPairMask{2, 8}) |
           ((z >= -w) & TPairMask{16, 0}) | ((z <= w) & TPairMask{32, 0});
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

/// The corners of triangles or lines, as columns of what holds those of many shapes.
struct TShapeColumns {
  int Count;
  int Corner[3];
};

/// The vertices of a column that each plane has inside, one a bit.
struct TInsideBits {
  std::uint64_t Plane[kClipPlanes];
};

/// Which of `shapes`, that a plane cuts, the clipper drops all the same, since all of each lies
/// beyond another plane. `clear` are those that are clear of both planes of an axis, by axis.
std::uint64_t LiesBeyond(const TInsideBits* inside, const TShapeColumns& columns,
                         const std::uint64_t (&clear)[3], std::uint64_t shapes);

/// The same of one shape, which lies outside one plane at least.
bool LiesBeyond(TCorners corners);

/// The plane from which on a shape is to be clipped: the first; `kClipPlanes` if it is inside of
/// all; -1 if the clipper drops it, unchanged at the first plane that does not pass all of it, or
/// beyond another. Most shapes are inside or dropped: decided without branches.
inline int ClipsFrom(TCorners corners) {
  const TJoinedPlanes outside = OutsidePlanes(corners);
  if (outside.Any == 0) {
    return kClipPlanes;
  }
  const unsigned int first = outside.Any & (0u - outside.Any);
  const bool isOutside = (outside.All & first) != 0;
  return isOutside || (outside.All != 0 && LiesBeyond(corners)) ? -1 : 0;
}

} // namespace Zx3D
