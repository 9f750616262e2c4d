// The rows and pixels of a triangle, as its edges give them. Inline, so that kernels compile them
// with their own instruction set.
//
// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/ShadedRows.cpp (ShadedRows.*)

#pragma once

#include <cmath>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/KernelConditions.h>

namespace Zx3D {

/// Calls `draw(y, ta, tb)` for each row below `height` that both edges cross, with the row's
/// parameters on them.
template <class TDraw>
inline void ForEachRow(const TRenderCPU::EDGE& a, const TRenderCPU::EDGE& b, int height,
                       const TDraw& draw) {
  const double deltaA = a.Delta.Slots[0].y;
  const double deltaB = b.Delta.Slots[0].y;
  const double beginA = a.Begin->Slots[0].y;
  const double beginB = b.Begin->Slots[0].y;
  int first = 0;
  int last = 0;
  if (deltaA == 0.0 || deltaB == 0.0 ||
      !PixelRange(beginB + 0.5, b.End->Slots[0].y, height, &first, &last)) {
    return;
  }
  for (int y = first; y <= last; ++y) {
    const double ta = (y - beginA) / deltaA;
    const double tb = (y - beginB) / deltaB;
    if (!(ta < 0.0 || ta >= 1.0 || tb < 0.0 || tb >= 1.0)) { // as the walk has it, with a NaN too
      draw(y, ta, tb);
    }
  }
}

/// The columns of a row that may be covered; false if there are none.
inline bool FindColumns(const TRenderCPU& gl, const TRenderCPU::EDGE& span, int y, int* first,
                        int* last) {
  return span.Delta.Slots[0].x != 0.0 && y >= 0 && y < gl.m_Height &&
         PixelRange(span.Begin->Slots[0].x + 0.5, span.End->Slots[0].x, gl.m_Width, first, last);
}

/// Leaves those columns of a row, `from` to before `end`, that are covered: with t = (x - begin) /
/// delta from 0 to below 1. False where only quotients can tell.
///
/// With delta above 0, t is below 0 exactly if the difference is, unless the quotient underflows;
/// it is 1 or above exactly if the difference is not below delta, since the smaller of two doubles
/// over the greater never rounds to 1. A difference that is not 0 is 2^-53 or more, or at column 0
/// the magnitude of begin. A triangle's row has one column at each side at most that is not
/// covered; both are left out without a branch, which could not be predicted.
[[gnu::always_inline]] inline bool TrimToCovered(const TRenderCPU::EDGE& span, int* from,
                                                 int* end) {
  const double begin = span.Begin->Slots[0].x;
  const double delta = span.Delta.Slots[0].x;
  if (!(delta > 0.0 && delta < kMaxWindow && (std::fabs(begin) > kMinSteadyW || begin == 0.0))) {
    return false;
  }
  *from += *from - begin < 0.0 ? 1 : 0;
  *end -= *end - 1 - begin >= delta ? 1 : 0;
  return *from >= *end || (*from - begin >= 0.0 && *end - 1 - begin < delta);
}

} // namespace Zx3D
