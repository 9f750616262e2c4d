// Tested by: tests/render/Clipping.cpp (Clipping.*), tests/render/ClipOutside.cpp (ClipOutside.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <cmath>

#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/KernelConditions.h>
#include <ZxCore3D/render/stages/ClipPlanes.h>

namespace Zx3D {

namespace {

using VAR_DATA = TRenderCPU::VAR_DATA;

// Parameter, 0 to 1, at which the segment from `outside` to `inside` meets the plane.
double Crossing(const VAR_DATA& outside, const VAR_DATA& inside, int plane) {
  const auto axis = static_cast<std::size_t>(plane / 2);
  const vec_t_<double, 4>& o = outside.Slots[0];
  const vec_t_<double, 4>& i = inside.Slots[0];
  if ((plane & 1) == 0) {
    return (o[axis] + o.w) / (o[axis] - i[axis] + o.w - i.w);
  }
  return (o[axis] - o.w) / (o[axis] - i[axis] - o.w + i.w);
}

} // namespace

void TRenderCPU::Mix(VAR_DATA& a, const VAR_DATA& b, double t) {
  for (int i = 0; i < m_VarCount; ++i) {
    vec_t_<double, 4>& to = a.Slots[i];
    const vec_t_<double, 4>& from = b.Slots[i];
    to = {(from.x - to.x) * t + to.x, (from.y - to.y) * t + to.y, (from.z - to.z) * t + to.z,
          (from.w - to.w) * t + to.w};
  }
}

// The clipper drops a shape unchanged where the first plane that does not have all of it inside has
// all of it outside. One that an earlier plane cuts may lie beyond a later plane all the same, by a
// margin, so that the clipper drops all its pieces there at the latest.
//
// Let d = u + w or w - u be the inside distance of a corner to a plane, S the sum of the magnitudes
// of all components of the shape's corners, e = 2^-53, m = S/2^20. Required, up to the first plane
// P at which d < -m for all corners:
//   1. d < -m or d > m for each corner and plane: all corners are clear of the planes (both planes
//      of an axis are asked at once: the lesser magnitude of d is that of |u| - |w|);
//   2. two planes at most have corners on both sides, and with triangles it is not the same corner
//      that both cut off from the two others, or leave alone;
//   3. 2^-900 <= S <= 2^900, so that nothing overflows and what underflows is far below e S.
//
// A cut between o outside and i inside mixes o + (i - o) t, t = N/D. N is |d(o)| but for e S, and
// the three sums of D err by less than 10 e S from |d(o)| + |d(i)|. So t <= 1 if |d(i)| > 12 e S:
// N <= D then, and so is the rounded quotient. If o alone is clear, D > 0 and t < 1 + 2^-28, for
// |d(o)| > m/2. In both cases t >= 0, and the new corner lies on the segment, or past its end by
// 2^-28 of its length, with another 6 e S of rounding in each component. As d is linear, it leaves
// the range of the d of o and i by less than S/2^26.
//
// One end of each segment that is cut is clear. At the first cut both are corners of the shape. At
// the second, one end at least is such a corner, except for the segment between the two new ones.
// These lie on the edges that meet in the corner cut off; by 2. another corner, at the end of one
// of these edges, is cut off now or alone left, so that one of the two edges lies on one side,
// clear, and so does its new corner.
//
// With two cuts a new corner is thus within S/2^25 of the range of d of the shape's corners. Any
// plane in between that has these inside has it inside, and P has it outside: m is 32 times that.
std::uint64_t LiesBeyond(const TInsideBits* inside, const TShapeColumns& columns,
                         const std::uint64_t (&clear)[3], std::uint64_t shapes) {
  std::uint64_t open = shapes;
  std::uint64_t beyond = 0;
  std::uint64_t once = 0; // cut by one plane, by two
  std::uint64_t twice = 0;
  std::uint64_t first[2] = {}; // at the first cut, which corners are on another side than corner 0
  for (int plane = 0; plane < kClipPlanes; ++plane) {
    const auto of = [&](int c) { return inside[columns.Corner[c]].Plane[plane]; };
    const std::uint64_t apart[2] = {of(0) ^ of(1), of(0) ^ of(columns.Count - 1)};
    open &= clear[plane / 2];
    const std::uint64_t cut = open & (apart[0] | apart[1]);
    beyond |= open & ~cut & ~of(0);
    open &= cut | of(0);
    const std::uint64_t again = cut & once;
    const std::uint64_t sameAlone = ~((apart[0] ^ first[0]) | (apart[1] ^ first[1]));
    open &= ~(again & (columns.Count == 3 ? twice | sameAlone : twice));
    for (int i = 0; i < 2; ++i) {
      first[i] |= apart[i] & cut & ~once;
    }
    twice |= again;
    once |= cut;
  }
  return beyond;
}

bool LiesBeyond(TCorners corners) {
  const int count = corners[1] == corners[2] ? 2 : 3;
  TInsideBits inside[3];
  double sum = 0.0;
  double nearest[3] = {kMaxClearSum, kMaxClearSum, kMaxClearSum};
  for (int c = 0; c < count; ++c) {
    const vec_t_<double, 4>& at = *corners[c];
    for (int plane = 0; plane < kClipPlanes; ++plane) {
      inside[c].Plane[plane] = IsInside(at, plane) ? 1 : 0;
    }
    sum += std::fabs(at.x) + std::fabs(at.y) + std::fabs(at.z) + std::fabs(at.w);
    for (std::size_t i = 0; i < 3; ++i) {
      nearest[i] = std::min(nearest[i], std::fabs(std::fabs(at[i]) - std::fabs(at.w)));
    }
  }
  const bool isOrdinary = sum >= kMinClearSum && sum <= kMaxClearSum;
  std::uint64_t clear[3];
  for (std::size_t i = 0; i < 3; ++i) {
    clear[i] = isOrdinary && nearest[i] > sum * kClearMargin ? 1 : 0;
  }
  return LiesBeyond(inside, {count, {0, 1, count - 1}}, clear, 1) != 0;
}

void TRenderCPU::ClipAndRasterizeLine(VAR_DATA* v, int plane) {
  if (plane == 0) {
    plane = ClipsFrom({v[0].Slots, v[1].Slots, v[1].Slots});
  }
  if (plane < 0 || plane > kClipPlanes) {
    return;
  }
  for (; plane < kClipPlanes; ++plane) {
    const bool inside0 = IsInside(v[0].Slots[0], plane);
    const bool inside1 = IsInside(v[1].Slots[0], plane);
    if (!inside0 && !inside1) {
      return;
    }
    if (inside0 != inside1) {
      VAR_DATA& outside = inside0 ? v[1] : v[0];
      const VAR_DATA& inside = inside0 ? v[0] : v[1];
      Mix(outside, inside, Crossing(outside, inside, plane));
    }
  }
  RasterizeLine(v);
}

void TRenderCPU::ClipAndRasterizeTriangle(VAR_DATA* v, int plane) {
  if (plane == 0) {
    plane = ClipsFrom({v[0].Slots, v[1].Slots, v[2].Slots});
  }
  if (plane == kClipPlanes) {
    RasterizeTriangle(v);
  } else if (plane >= 0 && plane < kClipPlanes) {
    m_Engine->CutTriangle(v, plane);
  }
}

// Clips a triangle by the planes from number `plane` on, one a level.
void TRenderEngine::CutTriangle(VAR_DATA* v, int plane) {
  // Planes that cut nothing are passed without recursion.
  bool inside[3] = {};
  int insideCount = 3;
  for (; plane < kClipPlanes; ++plane) {
    insideCount = 0;
    for (int i = 0; i < 3; ++i) {
      inside[i] = IsInside(v[i].Slots[0], plane);
      insideCount += inside[i] ? 1 : 0;
    }
    if (insideCount != 3) {
      break;
    }
  }
  if (plane == kClipPlanes) {
    gl.RasterizeTriangle(v);
    return;
  }
  if (insideCount == 0) {
    return;
  }

  if (insideCount == 1) {
    const int i = inside[0] ? 0 : inside[1] ? 1 : 2;
    const int j = (i + 1) % 3;
    const int k = (i + 2) % 3;
    const double tj = Crossing(v[j], v[i], plane);
    const double tk = Crossing(v[k], v[i], plane);
    gl.Mix(v[j], v[i], tj);
    gl.Mix(v[k], v[i], tk);
    gl.ClipAndRasterizeTriangle(v, plane + 1);
    return;
  }

  // One vertex is cut off. The quadrilateral that remains is passed on as two triangles, whose
  // vertices keep the indices of those they come from.
  const int o = !inside[0] ? 0 : !inside[1] ? 1 : 2;
  const int a = (o + 1) % 3;
  const int b = (o + 2) % 3;
  const double ta = Crossing(v[o], v[a], plane);
  const double tb = Crossing(v[o], v[b], plane);
  VAR_DATA tmp[3]; // of which only live slots are filled, and read
  gl.CopyVar(tmp[o], v[o]);
  gl.CopyVar(tmp[b], v[b]);
  gl.Mix(v[o], v[a], ta);
  gl.CopyVar(tmp[a], v[o]);
  gl.Mix(tmp[o], tmp[b], tb);
  gl.ClipAndRasterizeTriangle(v, plane + 1);
  gl.ClipAndRasterizeTriangle(tmp, plane + 1);
}

} // namespace Zx3D
