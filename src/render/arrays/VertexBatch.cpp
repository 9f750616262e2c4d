#include <ZxCore3D/render/arrays/VertexBatch.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/arrays/ArrayDraw.h>
#include <ZxCore3D/render/arrays/BatchFetch.h>
#include <ZxCore3D/render/arrays/VertexCache.h>
#include <ZxCore3D/render/common/Channels.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/Pairs.h>
#include <ZxCore3D/render/common/SlotTable.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/ClipPlanes.h>
#include <ZxCore3D/render/stages/FragmentStages.h>
#include <ZxCore3D/render/stages/SlotMath.h>

namespace Zx3D {

namespace {

using TPointer = TRenderCPU::TVertexAttribPointer;
using TVec4 = vec_t_<double, 4>;

// The slot that no shader fills while there is no texture: whether all records have +0 there, so
// that scaling and mixing leave it as it is.
bool IsSpareSlotZero(const TRenderCPU& gl) {
  if (gl.m_TexUnits[0].TexEnabled) {
    return true; // all slots are filled
  }
  static constexpr TVec4 kZero = {0, 0, 0, 0};
  return std::all_of(std::begin(gl.m_VarCur), std::end(gl.m_VarCur), [&gl](const auto& record) {
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): -0 is to differ
    return std::memcmp(&record.Slots[gl.m_VarCount - 1], &kZero, sizeof kZero) == 0;
  });
}

// How a mode makes shapes of vertices: the first ends at vertex Lead + Step - 1, and each further
// one `Step` vertices later.
struct TShapes {
  unsigned int Mode;
  int Corners; ///< of a shape
  int Step;
  int Lead;
  int Pitch = TVertexBatch::kMost / Corners; ///< shapes of a batch, an even number
  /// The vertex of a batch at an entry of `TVertexBatch`, the corners in the order of drawing. A
  /// batch begins with its first shape's first vertex; that of a fan with the middle.
  std::uint8_t Vertex[TVertexBatch::kMost] = {};

  constexpr TShapes(unsigned int mode, int corners, int step, int lead)
      : Mode(mode), Corners(corners), Step(step), Lead(lead) {
    for (int c = 0; c < corners; ++c) {
      for (int s = 0; s < Pitch; ++s) {
        int vertex = s * step + c;
        if (mode == GL_TRIANGLE_STRIP && c != 2) {
          vertex = s + (c ^ (s & 1)); // the first two change places in every other one
        } else if (mode == GL_TRIANGLE_FAN && c == 0) {
          vertex = 0;
        }
        Vertex[c * Pitch + s] = static_cast<std::uint8_t>(vertex);
      }
    }
  }

  bool AreSeparate() const { return Lead == 0; }
};

// By mode.
constexpr TShapes kShapes[] = {
    {GL_POINTS, 1, 1, 0},       {GL_LINES, 2, 2, 0},     {GL_LINE_LOOP, 2, 1, 1},
    {GL_LINE_STRIP, 2, 1, 1},   {GL_TRIANGLES, 3, 3, 0}, {GL_TRIANGLE_STRIP, 3, 1, 2},
    {GL_TRIANGLE_FAN, 3, 1, 2}, {GL_QUADS, 4, 4, 0},
};

} // namespace

// --- The arrays of a draw call

struct TBatchDraw {
  struct TSource {
    const TPointer* Pointer = nullptr;
    std::size_t Kind = 0;
  };

  const TArrayDraw& Arrays;
  const TElements& Elements;
  const TShapes& Shapes;
  bool Listed;            ///< whether elements do not simply follow each other
  std::uint64_t Tags = 0; ///< of the vertex cache, where shapes may have vertices in common
  TSource Position;
  TSource Values[3]; ///< normal, colour, texture coordinate
  TVec4* Current[3];
  TVertexBatch Batch;
  TVertexBatch Line;                       ///< the vertices themselves, where shapes share them
  int FirstPlace = 0;                      ///< of a separate shape's records
  unsigned long First = 0;                 ///< element of the batch's first vertex
  int Count = 0;                           ///< vertices of the batch
  bool Fetched = false;                    ///< whether `Vectors` are those of the batch
  TSpanJob Job;                            ///< of lines
  TCondition Unmet = TCondition::None;     ///< that leaves lines to the reference walk
  unsigned long List[TVertexBatch::kMost]; ///< of the batch's elements, if `Listed`
  TVec4 Vectors[3][TVertexBatch::kMost];

  TBatchDraw(const TArrayDraw& arrays, const TElements& elements, const TShapes& shapes)
      : Arrays(arrays), Elements(elements), Shapes(shapes),
        Listed(elements.IsIndexed() || shapes.Mode == GL_TRIANGLE_FAN) {
    Batch.Pitch = Line.Pitch = shapes.Pitch;
  }

  bool IsShared() const { return Elements.IsIndexed() || !Shapes.AreSeparate(); }

  // False if positions come from no array. All functions are known, which `Replay` has asked.
  bool Take(TRenderCPU* gl) {
    const auto& known = TRenderCPU::s_AttrGetVals;
    Current[0] = &gl->m_CurNormal;
    Current[1] = &gl->m_CurColor;
    Current[2] = &gl->m_CurTexCoord;
    for (unsigned long k = 0; k < Arrays.ValueCount; ++k) {
      const TRenderCPU::TAttrValue& value = Arrays.Values[k];
      const auto found = std::find(known.begin(), known.end(), value.Pointer->GetValue);
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

  TFetchList ListFor(const TSource& source) const {
    return {source.Pointer, Listed ? List : nullptr, First, Count};
  }

  unsigned long ElementOf(int vertex) const {
    return Listed ? List[vertex] : First + static_cast<unsigned long>(vertex);
  }

  // Makes room for the corners of a separate shape: in records that are in the cache still, but not
  // those that the deferred fragment has.
  void TakePlaces(TVertexCache* cache, const TDeferredFragment& fragment) {
    const TVec4* const kept = fragment.Vertex[0];
    const bool first = kept == cache->Corners[0].Slots || kept == cache->Scaled[0].Slots;
    FirstPlace = first ? Shapes.Corners : 0;
    std::fill_n(cache->Slots + FirstPlace, Shapes.Corners, nullptr);
  }

  // Fetches the vertices of `shapes` shapes, from number `first` on, and transforms their
  // positions.
  void FetchBatch(const TSpanKernels& kernels, const double* matrix, int first, int shapes) {
    const int begin = first * Shapes.Step;
    Count = shapes * Shapes.Step + Shapes.Lead;
    Fetched = false;
    if (Listed) {
      unsigned long* out = List;
      Elements.ForEach(
          Count, [begin](int i) { return begin + i; },
          [&out](unsigned long element) { *out++ = element; });
      if (Shapes.Mode == GL_TRIANGLE_FAN) {
        List[0] = Elements.At(0);
      }
    } else {
      First = Elements.At(begin);
    }
    const auto fetch = kFetchPositions[Position.Kind];
    if (Shapes.AreSeparate()) {
      fetch(ListFor(Position), Shapes.Corners, &Batch);
      for (int c = 0; c < Shapes.Corners; ++c) {
        ZeroRest(c * Batch.Pitch + shapes, (c + 1) * Batch.Pitch, &Batch);
      }
      kernels.TransformBatch(matrix, Shapes.Corners * Batch.Pitch, &Batch);
      return;
    }
    fetch(ListFor(Position), 1, &Line);
    const int whole = (shapes + 7) / 8 * 8; // vectors
    ZeroRest(Count, whole + 8, &Line);
    kernels.TransformBatch(matrix, whole + 8, &Line);
    CopyCorners(Line.X, whole, Batch.X);
    CopyCorners(Line.Y, whole, Batch.Y);
    CopyCorners(Line.Z, whole, Batch.Z);
    CopyCorners(Line.W, whole, Batch.W);
  }

  // Vectors are computed whole, past the last vertex.
  static void ZeroRest(int begin, int end, TVertexBatch* batch) {
    for (double* const part : {batch->X, batch->Y, batch->Z}) {
      std::fill(part + begin, part + end, 0.0);
    }
  }

  // One component of vertices that shapes share to the corners of the shapes, as `Shapes.Vertex`
  // places them: most lie side by side.
  void CopyCorners(const double* vertices, int shapes, double* out) const {
    const int pitch = Shapes.Pitch;
    if (Shapes.Mode == GL_TRIANGLE_STRIP) {
      for (int s = 0; s < shapes; s += 2) {
        out[s] = vertices[s];
        out[s + 1] = vertices[s + 2];
        out[pitch + s] = out[pitch + s + 1] = vertices[s + 1];
      }
    } else {
      const bool fan = Shapes.Mode == GL_TRIANGLE_FAN;
      for (int s = 0; s < shapes; ++s) {
        out[s] = vertices[fan ? 0 : s];
        out[pitch + s] = vertices[s + 1];
      }
    }
    if (Shapes.Corners == 3) {
      std::copy_n(vertices + 2, shapes, out + 2 * pitch);
    }
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
      if (Values[i].Pointer != nullptr) {
        kFetchVectors[Values[i].Kind](ListFor(Values[i]), Vectors[i]);
      }
    }
  }
};

// Fills a record with a vertex of a batch, as the shader does; `entry` is one of its entries. By
// the batch its position is what stands there, in clip space or in the window.
void TRenderEngine::ShadeBatched(TBatchDraw* draw, int entry, bool byBatch, VAR_DATA* record) {
  const TVertexBatch& batch = draw->Batch;
  const int vertex = draw->Shapes.Vertex[entry];
  if (gl.m_Lighting && draw->IsShared()) {
    LoadShared(draw->Arrays, draw->Tags, draw->ElementOf(vertex), record);
  } else if (gl.m_Lighting || !byBatch) {
    draw->Arrays.Fetch(&gl, draw->ElementOf(vertex));
    ShadeVertex(&gl, record, draw->Arrays.Lighting);
  } else {
    draw->FetchValues();
    record->Slots[gl.m_VarColor] = draw->ValueOf(1, vertex);
    if (gl.m_TexUnits[0].TexEnabled) {
      record->Slots[gl.m_VarTexCoord] = draw->ValueOf(2, vertex);
    }
  }
  if (byBatch) {
    StoreVector(&record->Slots[0], batch.X[entry], batch.Y[entry], batch.Z[entry], batch.W[entry]);
  }
}

// Draws a shape that is neither outside nor culled: fills in its corners and hands them to the next
// stage.
void TRenderEngine::DrawBatched(TBatchDraw* draw, int shape, bool inside) {
  for (int c = 0; c < draw->Shapes.Corners; ++c) {
    ShadeBatched(draw, c * draw->Batch.Pitch + shape, inside, &gl.m_VarCur[c]);
  }
  const int plane = inside ? kClipPlanes : 0;
  switch (draw->Shapes.Corners) {
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

// Fills a record with a vertex of the batch in the window, as the shader and rasterisation do.
void TRenderEngine::ShadeCorner(TBatchDraw* draw, int entry, int place) {
  TVertexCache& cache = *VertexCache;
  VAR_DATA& record = cache.Corners[place];
  ShadeBatched(draw, entry, true, &record);
  if (!gl.m_TexUnits[0].TexEnabled) {
    record.Slots[gl.m_VarCount - 1] = {0, 0, 0, 0};
  }
  cache.Slots[place] = record.Slots;
  if (gl.m_PerspectiveHint != GL_FASTEST && record.Slots[0].w != 1.0) {
    VAR_DATA& scaled = cache.Scaled[place];
    scaled.Slots[0] = record.Slots[0];
    ScaleSlots(record, gl.m_VarCount, &scaled);
    cache.Slots[place] = scaled.Slots;
  }
}

// Draws a triangle of a batch in the window. Nothing but the draw itself runs until its end, so
// that no state needs to be looked after. False, having drawn nothing, if that takes the reference
// walker.
bool TRenderEngine::DrawInWindow(TBatchDraw* draw, const TTriangleRows& rows,
                                 const int (&corners)[3], int shape) {
  TPrimitive& primitive = DrawJob->Primitive;
  const TVertexCache& cache = *VertexCache;
  int places[3];
  for (int c = 0; c < 3; ++c) {
    const int entry = corners[c] * draw->Batch.Pitch + shape;
    places[c] =
        draw->Shapes.AreSeparate() ? draw->FirstPlace + corners[c] : draw->Shapes.Vertex[entry];
    if (cache.Slots[places[c]] == nullptr) {
      ShadeCorner(draw, entry, places[c]);
    }
    primitive.Vertex[c] = cache.Corners[places[c]].Slots;
  }
  if (SetUpPrimitive(&primitive) != TCondition::None) {
    return false;
  }
  for (int c = 0; c < 3; ++c) {
    primitive.Vertex[c] = cache.Slots[places[c]];
  }
  primitive.RecordColor = false;
  DrawJob->StartPrimitive();
  GetSpanKernels()->DrawPlannedTriangle(DrawJob, rows, shape);
  RecordTriangle(*DrawJob);
  return true;
}

// The shapes of one batch; returns how many were drawn. Where vertices are drawn from the copies
// that earlier shapes left, a shape that puts something into the slot that no shader fills is the
// last one.
int TRenderEngine::ReplayShapes(TBatchDraw* draw, int shapes) {
  static constexpr int kHalves[2][3] = {{0, 1, 2}, {0, 2, 3}}; // of a quad; a triangle is the first
  const int corners = draw->Shapes.Corners;
  const int halves = corners == 4 ? 2 : 1;
  const bool separate = draw->Shapes.AreSeparate();
  const TSpanKernels& kernels = *GetSpanKernels();
  const TVertexBatch& batch = draw->Batch;
  const TCulling culling = {IsCulled(true), IsCulled(false), gl.m_FrontFaceCCW};
  TShapeClasses classes[2];
  const TShapeClasses& a = classes[0];
  const TShapeClasses& b = classes[1];
  if (corners == 2) {
    kernels.ClassifyLines(batch, shapes, &classes[0]);
  }
  for (int half = 0; half < halves && corners >= 3; ++half) {
    kernels.ClassifyTriangles(batch, kHalves[half], shapes, culling, &classes[half]);
  }
  if (halves == 1) {
    classes[1].Outside = ~std::uint64_t{0};
  }
  const std::uint64_t all = (std::uint64_t{1} << shapes) - 1;
  std::uint64_t inside = corners == 4 ? a.Inside & b.Inside : a.Inside;
  const std::uint64_t uncut = (a.Outside | a.Culled) & (b.Outside | b.Culled);
  std::uint64_t beyond =
      (a.Outside | a.Beyond | a.Culled) & (b.Outside | b.Beyond | b.Culled) & ~uncut & all;
  std::uint64_t rest = all & ~(uncut | beyond);
  const std::uint64_t culled = (a.Culled | b.Culled) & all & ~rest;

  // Those inside go to the window together, while nothing stands in the slot that no shader fills.
  TTriangleRows rows[2];
  bool inWindow = false;
  if ((rest & inside) != 0 && corners >= 3) {
    UpdateDerivedState();
    inWindow = DrawJob != nullptr && IsSpareSlotZero(gl);
  }
  if (inWindow) {
    if (!separate) { // the records are those of this batch from now on
      DeferredFragment.KeepVertices();
      std::fill_n(VertexCache->Slots, draw->Count, nullptr);
    }
    for (int c = 0; c < corners; ++c) {
      kernels.ProjectVertices(gl.m_Width, gl.m_Height, c * batch.Pitch, shapes, &draw->Batch);
    }
    for (int half = 0; half < halves; ++half) {
      kernels.PlanTriangles(batch, kHalves[half], shapes, gl.m_Height, &rows[half]);
    }
  }
  const auto drawInWindow = [&](int shape) {
    if (separate) {
      draw->TakePlaces(VertexCache, DeferredFragment);
    }
    bool done = true;
    for (int half = 0; half < halves && done; ++half) {
      gl.m_Fragment.FrontFacing = (classes[half].Front >> shape & 1) != 0;
      done = (classes[half].Culled >> shape & 1) != 0 ||
             DrawInWindow(draw, rows[half], kHalves[half], shape);
    }
    return done;
  };

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
  for (; rest != 0; rest &= rest - 1) {
    const int shape = __builtin_ctzll(rest);
    const std::uint64_t bit = std::uint64_t{1} << shape;
    recordCulled(bit - 1);
    if (inWindow && (inside & bit) != 0 && drawInWindow(shape)) {
      continue;
    }
    DrawBatched(draw, shape, !inWindow && (inside & bit) != 0);
    if (!IsSpareSlotZero(gl)) {
      if (!separate) {
        return shape + 1;
      }
      inside = inWindow ? 0 : inside;
    }
    drawBeyond(all & ~(2 * bit - 1));
  }
  recordCulled(all);
  return shapes;
}

// --- Points

// Colours of a batch of points: those of the fragment shader, clamped where it has to be called.
const vec_t_<double, 4>* TRenderEngine::PointColors(TBatchDraw* draw, int count) {
  TVec4* const colors = draw->Vectors[1];
  if (!gl.m_Lighting && !gl.m_TexUnits[0].TexEnabled) {
    draw->FetchValues();
    if (draw->Values[1].Pointer == nullptr) {
      std::fill_n(colors, count, gl.m_CurColor);
    }
    return colors;
  }
  FS_DATA fragment = gl.m_Fragment;
  for (int i = 0; i < count; ++i) {
    ShadeBatched(draw, i, true, &gl.m_VarCur[0]);
    gl.m_FragmentShader->Execute(gl.m_VarCur, &fragment);
    colors[i] = fragment.Color;
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
  const bool copied = IsCopy(gl);
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
  kernels.ProjectPoints(draw->Batch, count, gl.m_Width, gl.m_Height, &points);
  const TVec4* const colors = PointColors(draw, count);
  kernels.PackColors(&colors->x, count, &points);
  DrawPoints(state, points, colors);
}

// --- Replay

// Whether the fragment shader's colours of points can be computed before any of them is drawn: a
// caller's sampling function is only called for fragments that pass their tests.
bool TRenderEngine::MayBatchPoints(TDrawState* state) const {
  const TTexUnit& unit = gl.m_TexUnits[0];
  return !gl.m_CalcDepth && (!unit.TexEnabled || IsKnownSampler(unit.Sampler)) &&
         SetUpTargets(state) == TCondition::None;
}

// Puts the scratch records into the state in which the reference path has them after the first
// `vertices` of a mode whose shapes share vertices. All slots that no shader fills are 0 in the
// copies of vertices; in the records of the shape itself they are as it left them.
void TRenderEngine::ResumeAfter(TBatchDraw* draw, int vertices) {
  const auto shade = [&](int vertex) {
    VAR_DATA record = {};
    draw->Arrays.Fetch(&gl, draw->Elements.At(vertex));
    ShadeVertex(&gl, &record, draw->Arrays.Lighting);
    return record;
  };
  const int last = vertices - 1;
  switch (gl.m_PrimitiveMode) {
  case GL_LINE_LOOP:
    gl.CopyVar(gl.m_VarSaved[0], shade(0));
    [[fallthrough]];
  case GL_LINE_STRIP:
    gl.CopyVar(gl.m_VarSaved[1], shade(last));
    gl.CopyVar(gl.m_VarCur[0], gl.m_VarSaved[1]);
    gl.m_Pending = 1;
    break;
  case GL_TRIANGLE_STRIP:
    for (int vertex = last - 2; vertex <= last; ++vertex) {
      gl.CopyVar(gl.m_VarSaved[vertex % 3], shade(vertex));
    }
    gl.m_StripIndex = last % 3;
    gl.m_Pending = 2;
    break;
  case GL_TRIANGLE_FAN:
    gl.CopyVar(gl.m_VarSaved[0], shade(0));
    for (int vertex = last - 1; vertex <= last; ++vertex) {
      gl.CopyVar(gl.m_VarSaved[1 + (vertex & 1)], shade(vertex));
    }
    gl.m_Pending = 2;
    break;
  default:
    gl.m_Pending = 0;
    break;
  }
}

// Replays the shapes of a draw call by batches; returns how many vertices, those of the last shape
// left out at least. That one, and an incomplete shape, take the reference path, so that current
// values and scratch records end up as it leaves them.
//
// A shape that draws nothing leaves no record here. The reference path fills one, which the next
// vertex overwrites; the slot that no shader fills changes only by what is rasterised or cut.
int TRenderEngine::ReplayBatches(const TArrayDraw& arrays, const TElements& elements, int count) {
  const TShapes& kind = kShapes[gl.m_PrimitiveMode];
  TDrawState pointState;
  // Where shapes do not go to the window together, lit vertices of strips and fans are shaded once
  // by the reference path alone, and cost more than what batches save.
  const bool shadedOnce =
      gl.m_Lighting && kind.Corners == 3 && !kind.AreSeparate() && DrawJob == nullptr;
  if (shadedOnce || (kind.Corners == 1 && !MayBatchPoints(&pointState))) {
    return 0;
  }
  const int shapes = (count - kind.Lead) / kind.Step - 1;
  if (shapes < kMinBatch) {
    return 0;
  }
  TBatchDraw draw(arrays, elements, kind);
  if (!draw.Take(&gl)) {
    return 0;
  }
  draw.Tags = NextDraw();
  if (kind.Corners == 2) {
    draw.Unmet = SetUpDraw(TPrimitiveKind::Line, &draw.Job);
  }
  int done = 0;
  bool more = true;
  while (more && done < shapes) {
    const int next = std::min(shapes - done, draw.Batch.Pitch);
    draw.FetchBatch(*GetSpanKernels(), gl.m_ModelViewProjection.m, done, next);
    int drawn = next;
    if (kind.Corners == 1) {
      ReplayPoints(&draw, pointState, next);
    } else {
      drawn = ReplayShapes(&draw, next);
    }
    done += drawn;
    // What a shape leaves in the slot that no shader fills counts for the next batch as well.
    more = drawn == next && (kind.AreSeparate() || IsSpareSlotZero(gl));
  }
  const int vertices = done * kind.Step + kind.Lead;
  ResumeAfter(&draw, vertices);
  gl.m_VertexIndex += vertices;
  return vertices;
}

} // namespace Zx3D
