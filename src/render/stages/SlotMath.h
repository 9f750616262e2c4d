// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/PointsAndLines.cpp
// (PointsAndLines.*)

#pragma once

#include <cstddef>
#include <cstring>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Pairs.h>

namespace Zx3D {

/// Copies the first slots of a record; sizes that the compiler knows need no call.
inline void CopySlots(vec_t_<double, 4>* to, const vec_t_<double, 4>* from, int count) {
  constexpr std::size_t kSlot = sizeof *from;
  switch (count) {
  case 1:
    std::memcpy(to, from, kSlot);
    break;
  case 2:
    std::memcpy(to, from, 2 * kSlot);
    break;
  case 3:
    std::memcpy(to, from, 3 * kSlot);
    break;
  case 4:
    std::memcpy(to, from, 4 * kSlot);
    break;
  default:
    std::memcpy(to, from, static_cast<std::size_t>(count) * kSlot);
    break;
  }
}

/// Sets the difference of an edge's ends in the first `count` slots.
inline void SetDelta(TRenderCPU::EDGE* e, int count) {
  const double* const begin = &e->Begin->Slots[0].x;
  const double* const end = &e->End->Slots[0].x;
  double* const delta = &e->Delta.Slots[0].x;
  for (int i = 0; i < 4 * count; i += 2) {
    StorePair(delta + i, PairAt(end + i) - PairAt(begin + i));
  }
}

/// Multiplies the first `count` slots but the position by 1/w, for perspective-correct
/// interpolation. `from` has window coordinates, whose w is that already.
inline void ScaleSlots(const TRenderCPU::VAR_DATA& from, int count, TRenderCPU::VAR_DATA* to) {
  const double r = from.Slots[0].w;
  const double* const slots = &from.Slots[0].x;
  double* const scaled = &to->Slots[0].x;
  for (int i = 4; i < 4 * count; i += 2) {
    StorePair(scaled + i, PairAt(slots + i) * r);
  }
}

/// In place, where that is not 1 and changes nothing.
inline void ScaleSlots(TRenderCPU::VAR_DATA* v, int count) {
  if (v->Slots[0].w != 1.0) {
    ScaleSlots(*v, count, v);
  }
}

} // namespace Zx3D
