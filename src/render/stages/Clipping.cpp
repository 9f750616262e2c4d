// Tested by: tests/render/Clipping.cpp (Clipping.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Engine.h>
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

void TRenderCPU::ClipAndRasterizeLine(VAR_DATA* v, int plane) {
  if (plane < 0 || plane > kClipPlanes) {
    return;
  }
  if (plane == 0) { // as triangles
    const vec_t_<double, 4>* const ends[3] = {v[0].Slots, v[1].Slots, v[1].Slots};
    const TJoinedPlanes outside = OutsidePlanes(ends);
    if (outside.Any == 0) {
      plane = kClipPlanes;
    } else if (IsDropped(ends, outside)) {
      return;
    }
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
  if (plane == 0) { // most are inside or dropped: decided without branches
    const vec_t_<double, 4>* const corners[3] = {v[0].Slots, v[1].Slots, v[2].Slots};
    const TJoinedPlanes outside = OutsidePlanes(corners);
    if (outside.Any == 0) {
      plane = kClipPlanes;
    } else if (IsDropped(corners, outside)) {
      return;
    }
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
