#include <ZxCore3D/render/arrays/VertexBatch.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/arrays/ArrayDraw.h>
#include <ZxCore3D/render/arrays/VertexFetch.h>
#include <ZxCore3D/render/common/Channels.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/SlotTable.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/ClipPlanes.h>
#include <ZxCore3D/render/stages/FragmentStages.h>

namespace Zx3D {

namespace {

using TPointer = TRenderCPU::TVertexAttribPointer;
using TVec4 = vec_t_<double, 4>;

// --- Fetching many

using TFetchRun = void (*)(const unsigned char* from, std::ptrdiff_t stride, int count, TVec4* out);

template <class TFrom, int Size>
void FetchRun(const unsigned char* from, std::ptrdiff_t stride, int count, TVec4* out) {
  for (int i = 0; i < count; ++i, from += stride) {
    out[i] = FetchAt<TFrom, Size>(from);
  }
}

using TFetchPositions = void (*)(const unsigned char* from, std::ptrdiff_t stride, int corners,
                                 int shapes, TVertexBatch* out);

// The w of a position takes no part in its transformation.
template <class TFrom, int Size>
void FetchPositions(const unsigned char* from, std::ptrdiff_t stride, int corners, int shapes,
                    TVertexBatch* out) {
  for (int s = 0; s < shapes; ++s) {
    for (int at = s, c = 0; c < corners; ++c, at += out->Pitch, from += stride) {
      const TVec4 v = FetchAt<TFrom, Size>(from);
      out->X[at] = v.x;
      out->Y[at] = v.y;
      out->Z[at] = v.z;
    }
  }
}

#define ZX_BY_SIZE(fetch, from) fetch<from, 1>, fetch<from, 2>, fetch<from, 3>, fetch<from, 4>
#define ZX_BY_FAMILY(fetch)                                                                        \
  ZX_BY_SIZE(fetch, TFromByte), ZX_BY_SIZE(fetch, TFromNormalizedByte),                            \
      ZX_BY_SIZE(fetch, TFromFloat), ZX_BY_SIZE(fetch, TFromDouble)

// In the order of `s_AttrGetVals`.
constexpr TFetchRun kFetchRuns[16] = {ZX_BY_FAMILY(FetchRun)};
constexpr TFetchPositions kFetchPositions[16] = {ZX_BY_FAMILY(FetchPositions)};

#undef ZX_BY_FAMILY
#undef ZX_BY_SIZE

// The slot that no shader fills while there is no texture: whether all records have +0 there, so
// that scaling and mixing leave it as it is.
bool IsSpareSlotZero(const TRenderCPU& gl) {
  if (gl.m_TexUnits[0].TexEnabled) {
    return true; // all slots are filled
  }
  static constexpr TVec4 kZero = {0, 0, 0, 0};
  return std::all_of(std::begin(gl.m_VarCur), std::end(gl.m_VarCur), [&gl](const auto& record) {
    return std::memcmp(&record.Slots[gl.m_VarCount - 1], &kZero, sizeof kZero) == 0;
  });
}

} // namespace

// --- The arrays of a draw call

struct TBatchDraw {
  struct TSource {
    const TPointer* Pointer = nullptr;
    std::size_t Kind = 0;
  };

  const TLightingTerms* Lighting = nullptr;
  TSource Position;
  TSource Values[3]; ///< normal, colour, texture coordinate
  TVec4* Current[3];
  TVertexBatch Batch = {};
  unsigned long First = 0;             ///< element of the batch's first vertex
  int Count = 0;                       ///< vertices of the batch
  bool Fetched = false;                ///< whether `Vectors` are those of the batch
  TSpanJob Job;                        ///< of lines
  TCondition Unmet = TCondition::None; ///< that leaves lines to the reference walk
  TVec4 Vectors[3][TVertexBatch::kMost];

  // False for a fetching function that a caller installed, or if positions come from no array.
  bool Take(TRenderCPU* gl, const TArrayDraw& arrays) {
    const auto& known = TRenderCPU::s_AttrGetVals;
    Current[0] = &gl->m_CurNormal;
    Current[1] = &gl->m_CurColor;
    Current[2] = &gl->m_CurTexCoord;
    Lighting = arrays.Lighting;
    for (unsigned long k = 0; k < arrays.ValueCount; ++k) {
      const TRenderCPU::TAttrValue& value = arrays.Values[k];
      const auto found = std::find(known.begin(), known.end(), value.Pointer->GetValue);
      if (found == known.end()) {
        return false;
      }
      const TSource source = {value.Pointer, static_cast<std::size_t>(found - known.begin())};
      if (value.Value == &gl->m_CurAttrib[0]) {
        Position = source; // of two arrays for it the last one counts
      }
      for (int i = 0; i < 3; ++i) {
        if (value.Value == Current[i]) {
          Values[i] = source;
        }
      }
    }
    return Position.Pointer != nullptr;
  }

  void FetchBatch(unsigned long first, int corners, int shapes) {
    First = first;
    Count = corners * shapes;
    Fetched = false;
    kFetchPositions[Position.Kind](ElementAt(*Position.Pointer, first),
                                   Position.Pointer->EffectiveStride, corners, shapes, &Batch);
  }

  // Normal, colour or texture coordinate of a vertex of the batch: fetched, or the current one.
  const TVec4& ValueOf(int i, int vertex) const {
    return Values[i].Pointer != nullptr ? Vectors[i][vertex] : *Current[i];
  }

  // The other values of the batch, fetched when the first of its shapes is drawn.
  void FetchValues() {
    if (Fetched) {
      return;
    }
    Fetched = true;
    for (int i = 0; i < 3; ++i) {
      if (const TPointer* const p = Values[i].Pointer) {
        kFetchRuns[Values[i].Kind](ElementAt(*p, First), p->EffectiveStride, Count, Vectors[i]);
      }
    }
  }
};

// Fills a record with a vertex of the batch, as the shader does.
void TRenderEngine::ShadeBatched(TBatchDraw* draw, int vertex, int corner, int shape, bool inside) {
  VAR_DATA& record = gl.m_VarCur[corner];
  if (gl.m_Lighting || !inside) {
    for (int i = 0; i < 3; ++i) {
      *draw->Current[i] = draw->ValueOf(i, vertex);
    }
    const TPointer* const position = draw->Position.Pointer;
    position->GetValue(position, draw->First + static_cast<unsigned long>(vertex), &gl.m_CurVertex);
    ShadeVertex(&gl, &record, draw->Lighting);
    return;
  }
  const TVertexBatch& batch = draw->Batch;
  const int at = corner * batch.Pitch + shape;
  record.Slots[0] = {batch.X[at], batch.Y[at], batch.Z[at], batch.W[at]};
  record.Slots[gl.m_VarColor] = draw->ValueOf(1, vertex);
  if (gl.m_TexUnits[0].TexEnabled) {
    record.Slots[gl.m_VarTexCoord] = draw->ValueOf(2, vertex);
  }
}

// Draws a shape that is neither outside nor culled: fills in its corners and hands them to the next
// stage.
void TRenderEngine::DrawBatched(TBatchDraw* draw, int corners, int shape, bool inside) {
  draw->FetchValues();
  for (int c = 0; c < corners; ++c) {
    ShadeBatched(draw, shape * corners + c, c, shape, inside);
  }
  const int plane = inside ? kClipPlanes : 0;
  switch (corners) {
  case 2:
    if (inside) {
      DrawLine(gl.m_VarCur, &draw->Job, draw->Unmet);
    } else {
      gl.ClipAndRasterizeLine(gl.m_VarCur, 0);
    }
    break;
  case 3:
    gl.ClipAndRasterizeTriangle(gl.m_VarCur, plane);
    break;
  default:
    gl.m_Pending = 4;
    AssembleQuad();
    break;
  }
}

// The shapes of one batch.
void TRenderEngine::ReplayShapes(TBatchDraw* draw, int corners, int shapes) {
  const TSpanKernels& kernels = *GetSpanKernels();
  const TVertexBatch& batch = draw->Batch;
  kernels.TransformBatch(gl.m_ModelViewProjection.m, corners * batch.Pitch, &draw->Batch);
  const TCulling culling = {IsCulled(true), IsCulled(false), gl.m_FrontFaceCCW};
  TShapeClasses a;
  TShapeClasses b;
  b.Outside = ~std::uint64_t{0};
  if (corners == 2) {
    kernels.ClassifyLines(batch, shapes, &a);
  } else {
    kernels.ClassifyTriangles(batch, {0, 1, 2}, shapes, culling, &a);
    if (corners == 4) {
      kernels.ClassifyTriangles(batch, {0, 2, 3}, shapes, culling, &b);
    }
  }
  const std::uint64_t all = (std::uint64_t{1} << shapes) - 1;
  const std::uint64_t inside = corners == 4 ? a.Inside & b.Inside : a.Inside;
  const std::uint64_t uncut = (a.Outside | a.Culled) & (b.Outside | b.Culled);
  std::uint64_t beyond =
      (a.Outside | a.Beyond | a.Culled) & (b.Outside | b.Beyond | b.Culled) & ~uncut & all;
  std::uint64_t rest = all & ~(uncut | beyond);
  const std::uint64_t culled = (a.Culled | b.Culled) & all & ~rest;

  // The only trace of culled shapes is the facing of the last of them in the fragment record.
  std::uint64_t done = 0;
  const auto recordCulled = [&](std::uint64_t before) {
    const std::uint64_t left = culled & before & ~done;
    done = before;
    if (left != 0) {
      const std::uint64_t last = std::uint64_t{1} << (63 - __builtin_clzll(left));
      gl.m_Fragment.FrontFacing = (((b.Culled & last) != 0 ? b.Front : a.Front) & last) != 0;
    }
  };
  // Cutting a shape mixes the slot that no shader fills, which only shows where it is not zero.
  const auto drawBeyond = [&](std::uint64_t from) {
    if ((beyond & from) != 0 && !IsSpareSlotZero(gl)) {
      rest |= beyond & from;
      beyond = 0;
    }
  };
  drawBeyond(all);
  while (rest != 0) {
    const int shape = __builtin_ctzll(rest);
    const std::uint64_t bit = std::uint64_t{1} << shape;
    recordCulled(bit - 1);
    DrawBatched(draw, corners, shape, (inside & bit) != 0);
    rest &= rest - 1;
    drawBeyond(all & ~(2 * bit - 1));
  }
  recordCulled(all);
}

// --- Points

// Colours of a batch of points before clamping: those of the fragment shader without a texture.
const vec_t_<double, 4>* TRenderEngine::PointColors(TBatchDraw* draw, int count) {
  draw->FetchValues();
  TVec4* const colors = draw->Vectors[1];
  if (!gl.m_Lighting) {
    if (draw->Values[1].Pointer == nullptr) {
      std::fill_n(colors, count, gl.m_CurColor);
    }
    return colors;
  }
  const TColorSlots slots = ColorSlotsOf(gl, gl.m_Fragment.FrontFacing);
  for (int i = 0; i < count; ++i) {
    ShadeBatched(draw, i, 0, i, true);
    const VAR_DATA& v = gl.m_VarCur[0];
    const TVec4& a = v.Slots[slots.Primary];
    const TVec4& b = v.Slots[slots.Secondary];
    colors[i] = {a.x + b.x, a.y + b.y, a.z + b.z, a.w};
  }
  return colors;
}

namespace {

// The record that the last fragments of a batch of points leave.
struct TLastPoints {
  int Tested = -1; ///< the last one that came to the depth test
  int Shaded = -1; ///< the last one that was shaded
};

// A point whose depth and colour are computed already.
struct TBatchedPoint {
  const TRenderCPU& gl;
  const TPointBatch& Points;
  TLastPoints* Last;
  bool Copied; ///< whether the colour write is a mere copy, decided once for the batch
  unsigned char* Color;
  int Index;

  float Depth() const { return Points.Depth[Index]; }
  void SetDepth() { Last->Tested = Index; }
  bool Shade() {
    Last->Shaded = Index;
    return true;
  }
  void WriteColor() {
    const unsigned char* const bytes = Points.Bytes + kPixelBytes * static_cast<std::size_t>(Index);
    if (Copied) {
      std::memcpy(Color, bytes, kPixelBytes);
    } else {
      WriteBytes(gl, Color, bytes);
    }
  }
};

} // namespace

// Points of a batch in order, since two may fall on one pixel. They are scattered, so their pixels
// are prefetched before the first is drawn.
void TRenderEngine::DrawPoints(const TDrawState& state, const TPointBatch& points,
                               const vec_t_<double, 4>* colors) {
  struct TPixel {
    int Index;
    unsigned char* Color;
    unsigned char* Depth;
    unsigned char* Stencil;
  };
  const bool useDepth = gl.m_DepthTest || gl.m_DepthMask;
  TPixel pixels[TVertexBatch::kMost];
  int count = 0;
  for (int i = 0; i < points.Count; ++i) {
    const int x = points.X[i];
    const int y = points.Y[i];
    if (x < 0) {
      continue;
    }
    auto* const color = reinterpret_cast<unsigned char*>(state.Color.At<std::uint32_t>(x, y));
    pixels[count] = {i, color, useDepth ? DepthPixel(x, y) : nullptr, StencilPixel(x, y)};
    __builtin_prefetch(pixels[count].Color, 1);
    if (useDepth) {
      __builtin_prefetch(pixels[count].Depth, 1);
    }
    if (gl.m_StencilTest) {
      __builtin_prefetch(pixels[count].Stencil, 1);
    }
    ++count;
  }
  const bool copied = gl.m_ColorMask == kAllChannels && gl.m_BlendFunc == nullptr;
  TLastPoints last;
  for (int k = 0; k < count; ++k) {
    const TPixel& pixel = pixels[k];
    RunFragment(gl, pixel.Depth, pixel.Stencil,
                TBatchedPoint{gl, points, &last, copied, pixel.Color, pixel.Index});
  }
  if (last.Tested >= 0) {
    gl.m_Fragment.Depth = points.Depth[last.Tested];
  }
  if (last.Shaded >= 0) {
    gl.m_Fragment.X = points.X[last.Shaded];
    gl.m_Fragment.Y = points.Y[last.Shaded];
    gl.m_Fragment.Color = Clamped01(colors[last.Shaded]);
  }
}

void TRenderEngine::ReplayPoints(TBatchDraw* draw, const TDrawState& state, int count) {
  const TSpanKernels& kernels = *GetSpanKernels();
  TPointBatch points;
  kernels.TransformBatch(gl.m_ModelViewProjection.m, count, &draw->Batch);
  kernels.ProjectPoints(draw->Batch, count, gl.m_Width, gl.m_Height, &points);
  const TVec4* const colors = PointColors(draw, count);
  kernels.PackColors(&colors->x, count, &points);
  DrawPoints(state, points, colors);
}

// --- Replay

// Replays the elements of separate shapes from `first` on by batches; returns how many, all but the
// last shape at most. That one, and an incomplete shape, take the reference path, so that current
// values and scratch records end up as it leaves them.
//
// A shape that draws nothing leaves no record here. The reference path fills one, which the next
// vertex overwrites; the slot that no shader fills changes only by what is rasterised or cut.
int TRenderEngine::ReplayBatches(const TArrayDraw& arrays, unsigned long first, int count) {
  int corners = 0;
  TDrawState pointState;
  switch (gl.m_PrimitiveMode) {
  case GL_POINTS:
    corners = !gl.m_TexUnits[0].TexEnabled && !gl.m_CalcDepth &&
                      SetUpTargets(&pointState) == TCondition::None
                  ? 1
                  : 0;
    break;
  case GL_LINES:
    corners = 2;
    break;
  case GL_TRIANGLES:
    corners = 3;
    break;
  case GL_QUADS:
    corners = 4;
    break;
  default:
    break;
  }
  const int shapes = corners != 0 ? count / corners - 1 : 0;
  if (shapes < kMinBatch) {
    return 0;
  }
  TBatchDraw draw;
  if (!draw.Take(&gl, arrays)) {
    return 0;
  }
  if (corners == 2) {
    draw.Unmet = SetUpDraw(&draw.Job.Draw);
  }
  draw.Batch.Pitch = TVertexBatch::kMost / corners;
  for (int done = 0; done < shapes;) {
    const int next = std::min(shapes - done, draw.Batch.Pitch);
    draw.FetchBatch(first + static_cast<unsigned long>(done * corners), corners, next);
    if (corners == 1) {
      ReplayPoints(&draw, pointState, next);
    } else {
      ReplayShapes(&draw, corners, next);
    }
    done += next;
  }
  gl.m_Pending = 0;
  gl.m_VertexIndex += shapes * corners;
  return shapes * corners;
}

} // namespace Zx3D
