// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/PointsAndLines.cpp
// (PointsAndLines.*)

#pragma once

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Pairs.h>

namespace Zx3D {

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
/// interpolation. `v` has window coordinates, whose w is that already; one of 1 changes nothing.
inline void ScaleSlots(TRenderCPU::VAR_DATA* v, int count) {
  const double r = v->Slots[0].w;
  double* const slots = &v->Slots[0].x;
  for (int i = 4; i < 4 * count && r != 1.0; i += 2) {
    StorePair(slots + i, PairAt(slots + i) * r);
  }
}

} // namespace Zx3D
