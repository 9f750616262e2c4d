#include <ZxCore3D/render/arrays/ArrayDraw.h>

#include <algorithm>

#include <ZxCore3D/render/arrays/VertexCache.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/SlotTable.h>
#include <ZxCore3D/render/stages/ClipPlanes.h>
#include <ZxCore3D/render/stages/Facing.h>

namespace Zx3D {

namespace {

using TVec4 = vec_t_<double, 4>;

constexpr unsigned int kPlaneBits = (1u << kClipPlanes) - 1;
constexpr unsigned int kUnshaded =
    1u << kClipPlanes; // in a vertex's code: only its position is computed

// Facing of a triangle in clip space, by the operations of rasterisation in their order.
bool FacesFront(const TVec4& a, const TVec4& b, const TVec4& c, bool frontCCW) {
  double x[3];
  double y[3];
  const TVec4* const at[3] = {&a, &b, &c};
  for (int i = 0; i < 3; ++i) {
    const double r = 1.0 / at[i]->w;
    x[i] = at[i]->x * r;
    y[i] = at[i]->y * r;
  }
  return Zx3D::FacesFront(x, y, frontCCW);
}

} // namespace

// The upper half of a new draw's tags.
std::uint64_t TRenderEngine::NextDraw() {
  TVertexCache& cache = *VertexCache;
  if (++cache.Draw == 0) { // the count wrapped: no old tag may match a new one
    std::memset(cache.Tags, 0, sizeof cache.Tags);
    cache.Draw = 1;
  }
  return std::uint64_t{cache.Draw} << 32;
}

// The cache entry of an element. On a miss its vertex is shaded into it, or only its position
// computed.
std::size_t TRenderEngine::CachedVertex(const TIndexedDraw& draw, std::uint32_t element) {
  TVertexCache& cache = *VertexCache;
  const std::size_t place = element % TVertexCache::kSize;
  const std::uint64_t tag = draw.Tag | element;
  if (cache.Tags[place] == tag) {
    return place;
  }
  VAR_DATA& vertex = cache.Vertices[place];
  if (draw.Positions != nullptr) {
    TVec4 position;
    draw.Positions->GetValue(draw.Positions, element, &position);
    SetClipPosition(gl, position, &vertex.Slots[0]);
    cache.Codes[place] = static_cast<std::uint8_t>(OutsidePlanes(vertex.Slots[0]) | kUnshaded);
  } else {
    draw.Arrays.Fetch(&gl, element);
    ShadeVertex(&gl, &vertex, draw.Arrays.Lighting);
    cache.Codes[place] = OutsidePlanes(vertex.Slots[0]);
  }
  cache.Tags[place] = tag;
  return place;
}

// Copies a cached vertex into a record of the primitive; one of which only the position is there is
// shaded first.
void TRenderEngine::LoadVertex(const TIndexedDraw& draw, std::size_t place, std::uint32_t element,
                               VAR_DATA* record) {
  TVertexCache& cache = *VertexCache;
  if ((cache.Codes[place] & kUnshaded) != 0) {
    draw.Arrays.Fetch(&gl, element);
    ShadeVertex(&gl, &cache.Vertices[place], draw.Arrays.Lighting);
    cache.Codes[place] = static_cast<std::uint8_t>(cache.Codes[place] & kPlaneBits);
  }
  CopySlots(record, cache.Vertices[place], draw.Written);
}

// A triangle of which two vertices share a cache entry.
void TRenderEngine::ReplayTriangle(const TIndexedDraw& draw, const std::uint32_t* elements) {
  for (int i = 0; i < 3; ++i) {
    LoadVertex(draw, CachedVertex(draw, elements[i]), elements[i], &gl.m_VarCur[i]);
  }
  gl.ClipAndRasterizeTriangle(gl.m_VarCur, 0);
}

// A triangle that draws nothing fills no record, as with batches of separate shapes.
void TRenderEngine::ReplayIndexed(const TIndexedDraw& draw, const std::uint32_t* elements,
                                  int triangles) {
  const TVertexCache& cache = *VertexCache;
  const bool mayCull = draw.Culling.Front || draw.Culling.Back;
  for (; triangles > 0; --triangles, elements += 3) {
    const std::size_t a = CachedVertex(draw, elements[0]);
    const std::size_t b = CachedVertex(draw, elements[1]);
    const std::size_t c = CachedVertex(draw, elements[2]);
    if (cache.Tags[a] != (draw.Tag | elements[0]) || cache.Tags[b] != (draw.Tag | elements[1])) {
      ReplayTriangle(draw, elements);
      continue;
    }
    const unsigned int codes[3] = {cache.Codes[a] & kPlaneBits, cache.Codes[b] & kPlaneBits,
                                   cache.Codes[c] & kPlaneBits};
    if (IsRejected(codes[0], codes[1], codes[2])) {
      continue;
    }
    const bool inside = (codes[0] | codes[1] | codes[2]) == 0;
    if (inside && mayCull) {
      const bool front = FacesFront(cache.Vertices[a].Slots[0], cache.Vertices[b].Slots[0],
                                    cache.Vertices[c].Slots[0], draw.Culling.FrontCCW);
      if (front ? draw.Culling.Front : draw.Culling.Back) {
        gl.m_Fragment.FrontFacing = front;
        continue;
      }
    }
    LoadVertex(draw, a, elements[0], &gl.m_VarCur[0]);
    LoadVertex(draw, b, elements[1], &gl.m_VarCur[1]);
    LoadVertex(draw, c, elements[2], &gl.m_VarCur[2]);
    gl.ClipAndRasterizeTriangle(gl.m_VarCur, inside ? kClipPlanes : 0);
  }
}

// Replays all triangles of an indexed draw with lights but the last, which takes the reference path
// so that current values and scratch records end up as it leaves them. Returns the number of
// vertices consumed.
int TRenderEngine::ReplayTriangles(const TArrayDraw& arrays, const TElements& elements, int count) {
  const TCulling culling = {IsCulled(true), IsCulled(false), gl.m_FrontFaceCCW};
  const TIndexedDraw draw = {arrays, NextDraw(),
                             culling.Front || culling.Back ? arrays.Positions(gl) : nullptr,
                             WrittenSlots(gl), culling};
  std::uint32_t list[TVertexBatch::kMost];
  const int whole = 3 * (count / 3 - 1);
  int done = 0;
  while (done < whole) {
    const int next = std::min(whole - done, TVertexBatch::kMost);
    std::uint32_t* out = list;
    elements.ForEach(
        next, [done](int i) { return done + i; },
        [&out](unsigned long element) { *out++ = static_cast<std::uint32_t>(element); });
    ReplayIndexed(draw, list, next / 3);
    done += next;
  }
  gl.m_VertexIndex += done;
  return done;
}

} // namespace Zx3D
