// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/PointsAndLines.cpp
// (PointsAndLines.*)

#pragma once

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Pairs.h>

namespace Zx3D {

/// Copies the first slots of a record.
inline void CopySlots(vec_t_<double, 4>* to, const vec_t_<double, 4>* from, int count) {
  for (const vec_t_<double, 4>* const end = from + count; from != end; ++from, ++to) {
    const TPair low = PairAt(&from->x);
    const TPair high = PairAt(&from->z);
    StorePair(&to->x, low);
    StorePair(&to->z, high);
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
