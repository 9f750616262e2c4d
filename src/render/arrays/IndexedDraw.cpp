#include <ZxCore3D/render/arrays/ArrayDraw.h>

#include <ZxCore3D/render/arrays/VertexCache.h>
#include <ZxCore3D/render/common/Engine.h>

namespace Zx3D {

namespace {

using TVec4 = vec_t_<double, 4>;

constexpr int kAllPlanes = 6; // as the number of the plane to clip by from on: none
constexpr unsigned int kPlanes = 63;
constexpr unsigned int kUnshaded = 64; // in a vertex's code: there is a position, but no more

// Bit p for plane p, as the clipper numbers them; a NaN is outside.
std::uint8_t OutsidePlanes(const TVec4& at) {
  const auto planes = [&at](double u) { return (u >= -at.w ? 0 : 1) | (u <= at.w ? 0 : 2); };
  return static_cast<std::uint8_t>(planes(at.x) | planes(at.y) << 2 | planes(at.z) << 4);
}

// Whether the first plane that cuts or rejects the triangle rejects all of it: the clipper drops it
// there unchanged.
bool IsOutside(unsigned int a, unsigned int b, unsigned int c) {
  const unsigned int any = a | b | c;
  return (a & b & c & (any & (0u - any))) != 0;
}

// Facing, by the operations of rasterisation in their order.
bool FacesFront(const TVec4& a, const TVec4& b, const TVec4& c, bool frontCCW) {
  double x[3];
  double y[3];
  const TVec4* const at[3] = {&a, &b, &c};
  for (int i = 0; i < 3; ++i) {
    const double r = 1.0 / at[i]->w;
    x[i] = at[i]->x * r;
    y[i] = at[i]->y * r;
  }
  const double area =
      (x[0] * y[1] - x[1] * y[0]) + (x[1] * y[2] - x[2] * y[1]) + (x[2] * y[0] - x[0] * y[2]);
  return frontCCW ? area >= 0.0 : area < 0.0;
}

} // namespace

// A number for a draw's tags, in their upper half.
std::uint64_t TRenderEngine::NextDraw() {
  TVertexCache& cache = *VertexCache;
  if (++cache.Draw == 0) { // numbers begin anew: no tag of old may be taken for a new one
    std::memset(cache.Tags, 0, sizeof cache.Tags);
    cache.Draw = 1;
  }
  return std::uint64_t{cache.Draw} << 32;
}

// The place of an element's vertex in the cache, to which its position is brought if it isn't
// there.
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
    vertex.Slots[0] = ClipPosition(gl, position);
    cache.Codes[place] = static_cast<std::uint8_t>(OutsidePlanes(vertex.Slots[0]) | kUnshaded);
  } else {
    draw.Arrays.Fetch(&gl, element);
    ShadeVertex(&gl, &vertex, draw.Arrays.Lighting);
    cache.Codes[place] = OutsidePlanes(vertex.Slots[0]);
  }
  cache.Tags[place] = tag;
  return place;
}

// Fills a record of the primitive with a vertex of the cache.
void TRenderEngine::LoadVertex(const TIndexedDraw& draw, std::size_t place, std::uint32_t element,
                               VAR_DATA* record) {
  TVertexCache& cache = *VertexCache;
  if ((cache.Codes[place] & kUnshaded) != 0) {
    draw.Arrays.Fetch(&gl, element);
    ShadeVertex(&gl, &cache.Vertices[place], draw.Arrays.Lighting);
    cache.Codes[place] = static_cast<std::uint8_t>(cache.Codes[place] & kPlanes);
  }
  CopySlots(record, cache.Vertices[place], draw.Written);
}

// A triangle whose vertices don't fit into the cache beside each other.
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
    const unsigned int codes[3] = {cache.Codes[a] & kPlanes, cache.Codes[b] & kPlanes,
                                   cache.Codes[c] & kPlanes};
    if (IsOutside(codes[0], codes[1], codes[2])) {
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
    gl.ClipAndRasterizeTriangle(gl.m_VarCur, inside ? kAllPlanes : 0);
  }
}

} // namespace Zx3D
