#include <ZxCore3D/render/arrays/VertexBatch.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

#include <ZxCore3D/render/arrays/BatchDraw.h>
#include <ZxCore3D/render/common/KernelConditions.h>
#include <ZxCore3D/render/common/Pairs.h>
#include <ZxCore3D/render/stages/ClipPlanes.h>
#include <ZxCore3D/render/stages/SlotMath.h>

namespace Zx3D {

using TVec4 = vec_t_<double, 4>;

// The slot that no shader fills while there is no texture: whether all records have +0 there, so
// that scaling and mixing leave it as it is.
static bool IsSpareSlotZero(const TRenderCPU& gl) {
  if (gl.m_TexUnits[0].TexEnabled) {
    return true; // all slots are filled
  }
  static constexpr TVec4 kZero = {0, 0, 0, 0};
  return std::all_of(std::begin(gl.m_VarCur), std::end(gl.m_VarCur), [&gl](const auto& record) {
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): -0 is to differ
    return std::memcmp(&record.Slots[gl.m_VarCount - 1], &kZero, sizeof kZero) == 0;
  });
}

// Fills a record with a vertex of a batch by the shader. Apart from `FillRecord`, which needs few
// registers without it.
[[gnu::noinline]] void TRenderEngine::ShadeFetched(TBatchDraw* draw, int vertex, VAR_DATA* record) {
  if (gl.m_Lighting && draw->IsShared()) {
    LoadShared(draw->Arrays, draw->Tags, draw->ElementOf(vertex), record);
  } else {
    draw->Arrays.Fetch(&gl, draw->ElementOf(vertex));
    ShadeVertex(&gl, record, draw->Arrays.Lighting);
  }
}

// Fills a record with a vertex of a batch, as the shader does; `entry` is one of the batch's, and
// its position what stands there, in clip space or in the window.
[[gnu::always_inline]] static inline void FillRecord(TRenderEngine* engine, TBatchDraw* draw,
                                                     const TVertexBatch& batch, int entry,
                                                     TRenderCPU::VAR_DATA* record) {
  const TRenderCPU& gl = engine->gl;
  const int vertex = draw->Shapes.Vertex[entry];
  if (gl.m_Lighting || !draw->Fetched) {
    engine->ShadeFetched(draw, vertex, record);
  } else {
    record->Slots[gl.m_VarColor] = draw->ValueOf(1, vertex);
    if (gl.m_TexUnits[0].TexEnabled) {
      record->Slots[gl.m_VarTexCoord] = draw->ValueOf(2, vertex);
    }
  }
  StoreVector(&record->Slots[0], batch.X[entry], batch.Y[entry], batch.Z[entry], batch.W[entry]);
}

void TRenderEngine::ShadeBatched(TBatchDraw* draw, int entry, VAR_DATA* record) {
  FillRecord(this, draw, draw->Batch, entry, record);
}

// Hands the corners of a shape that is neither outside nor culled to the next stage.
void TRenderEngine::DrawBatched(TBatchDraw* draw, int shape) {
  draw->FillCorners();
  for (int c = 0; c < draw->Shapes.Corners; ++c) {
    ShadeBatched(draw, c * draw->Batch.Pitch + shape, &gl.m_VarCur[c]);
  }
  if (draw->Shapes.Corners == 2) {
    gl.ClipAndRasterizeLine(gl.m_VarCur, 0);
  } else if (draw->Shapes.Corners == 3) {
    gl.ClipAndRasterizeTriangle(gl.m_VarCur, 0);
  } else {
    gl.m_Pending = 4;
    AssembleQuad();
  }
}

// Fills a record with a vertex of the batch in the window, as the shader and rasterisation do.
void TRenderEngine::ShadeCorner(TBatchDraw* draw, int entry, int place) {
  TVertexCache& cache = *VertexCache;
  VAR_DATA& record = cache.Corners[place];
  FillRecord(this, draw, draw->Window, entry, &record);
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

// Sets up a triangle or line of a batch in the window. Nothing but the draw itself runs until its
// end, so that no state needs to be looked after. False if drawing takes the reference walker.
bool TRenderEngine::SetUpInWindow(TBatchDraw* draw, const TShapeColumns& columns, int shape,
                                  TPrimitive* primitive) {
  const TVertexCache& cache = *VertexCache;
  const bool turns = draw->Shapes.TakesTurns();
  int places[3];
  for (int c = 0; c < 3; ++c) {
    const int entry = columns.Corner[c] * draw->Batch.Pitch + shape;
    places[c] = turns ? draw->FirstPlace + columns.Corner[c] : draw->Shapes.Vertex[entry];
    if (!turns && cache.Slots[places[c]] == nullptr) {
      ShadeCorner(draw, entry, places[c]);
    }
    primitive->Vertex[c] = cache.Corners[places[c]].Slots;
  }
  if (SetUpPrimitive(primitive) != TCondition::None) {
    return false;
  }
  for (int c = 0; c < 3; ++c) {
    primitive->Vertex[c] = cache.Slots[places[c]];
  }
  return true;
}

// Draws a triangle of a batch in the window. False, having drawn nothing, if that takes the
// reference walker.
bool TRenderEngine::DrawInWindow(TBatchDraw* draw, const TTriangleRows& rows,
                                 const TShapeColumns& columns, int shape) {
  if (!SetUpInWindow(draw, columns, shape, &DrawJob->Primitive)) {
    return false;
  }
  DrawJob->StartPrimitive();
  GetSpanKernels()->DrawPlannedTriangle(DrawJob, rows, shape);
  RecordPrimitive(*DrawJob);
  return true;
}

// Adds a line to those that are set up: their stores would wait behind those of pixels. Returns as
// `DrawInWindow`.
bool TRenderEngine::AddLine(TBatchDraw* draw, const TLineEnds& ends, int shape) {
  TPrimitive& line = VertexCache->Lines[draw->Lines];
  line = DrawJob->Primitive;
  if (!SetUpInWindow(draw, draw->Shapes.Columns[0], shape, &line)) {
    return false;
  }
  const int to = draw->Batch.Pitch + shape;
  const int begin[2] = {ends.X[shape], ends.Y[shape]};
  const int end[2] = {ends.X[to], ends.Y[to]};
  TLineWalk* const walk = &VertexCache->Walks[draw->Lines];
  new (walk) TLineWalk(TLineWalk::Between(begin, end, line.Vertex[0][0], line.Vertex[1][0]));
  draw->Lines += ClipWalk(walk) ? 1 : 0;
  return true;
}

// Draws the lines that are set up.
void TRenderEngine::DrawLines(TBatchDraw* draw) {
  if (draw->Lines != 0) {
    RunLineJob(DrawJob, VertexCache->Lines, VertexCache->Walks, draw->Lines);
    draw->Lines = 0;
  }
}

// --- Planes

TShapeClasses ClassifyShapes(const TInsideBits (&inside)[4], const TShapeColumns& columns) {
  TShapeClasses classes;
  classes.Inside = ~std::uint64_t{0}; // of the planes so far
  for (int plane = 0; plane < kClipPlanes; ++plane) {
    std::uint64_t any = 0;
    std::uint64_t all = ~std::uint64_t{0};
    for (int c = 0; c < columns.Count; ++c) {
      any |= inside[columns.Corner[c]].Plane[plane];
      all &= inside[columns.Corner[c]].Plane[plane];
    }
    classes.Outside |= classes.Inside & ~any;
    classes.Inside &= all;
  }
  return classes;
}

// The classes of both halves. Where there is but one, the other is outside.
static void Classify(const TRenderEngine& engine, TBatchDraw* draw, int shapes,
                     TShapeClasses (*out)[2]) {
  const TSpanKernels& kernels = *GetSpanKernels();
  const std::uint64_t all = (std::uint64_t{1} << shapes) - 1;
  TInsideBits inside[4];
  draw->FindInside(kernels, shapes, &inside);
  (*out)[1].Outside = ~std::uint64_t{0};
  for (int half = 0; half < draw->Shapes.Halves(); ++half) {
    const TShapeColumns& columns = draw->Shapes.Columns[half];
    TShapeClasses& classes = (*out)[half];
    classes = ClassifyShapes(inside, columns);
    const std::uint64_t cut = all & ~(classes.Inside | classes.Outside);
    if (cut != 0) {
      std::uint64_t clear[3];
      draw->FillCorners();
      kernels.FindClear(draw->Batch, columns, shapes, &clear);
      classes.Beyond = LiesBeyond(inside, columns, clear, cut);
    }
    if ((classes.Inside & all) != 0 && columns.Count == 3) {
      draw->DivideCorners(kernels);
      classes.Front = kernels.FindFront(draw->Window, columns, shapes, engine.gl.m_FrontFaceCCW);
      classes.Culled = classes.Inside & ((engine.IsCulled(true) ? classes.Front : 0) |
                                         (engine.IsCulled(false) ? ~classes.Front : 0));
    }
  }
}

// Takes a batch to the window: lines with their ends, triangles with the rows of both halves.
static void TakeToWindow(const TRenderCPU& gl, TBatchDraw* draw, int shapes, TWindowShapes* out) {
  const TSpanKernels& kernels = *GetSpanKernels();
  if (draw->Shapes.Corners == 2) {
    draw->FillCorners();
    kernels.ProjectLines(draw->Batch, shapes, gl.m_Width, gl.m_Height, &draw->Window, &out->Ends);
    return;
  }
  draw->Project(kernels, gl.m_Width, gl.m_Height);
  for (int half = 0; half < draw->Shapes.Halves(); ++half) {
    kernels.PlanTriangles(draw->Window, draw->Shapes.Columns[half], shapes, gl.m_Height,
                          &out->Rows[half]);
  }
}

// The shapes of one batch; returns how many were drawn. Where vertices are drawn from the copies
// that earlier shapes left, a shape that puts something into the slot that no shader fills is the
// last one.
int TRenderEngine::ReplayShapes(TBatchDraw* draw, int shapes) {
  const int corners = draw->Shapes.Corners;
  const int halves = draw->Shapes.Halves();
  const bool turns = draw->Shapes.TakesTurns();
  TShapeClasses classes[2];
  const TShapeClasses& a = classes[0];
  const TShapeClasses& b = classes[1];
  Classify(*this, draw, shapes, &classes);
  const std::uint64_t all = (std::uint64_t{1} << shapes) - 1;
  const std::uint64_t inside = corners == 4 ? a.Inside & b.Inside : a.Inside;
  const std::uint64_t uncut = (a.Outside | a.Culled) & (b.Outside | b.Culled);
  std::uint64_t beyond =
      (a.Outside | a.Beyond | a.Culled) & (b.Outside | b.Beyond | b.Culled) & ~uncut & all;
  std::uint64_t rest = all & ~(uncut | beyond);
  const std::uint64_t culled = (a.Culled | b.Culled) & all & ~rest;
  if (rest != 0 && !gl.m_Lighting && kMostUnfetched * __builtin_popcountll(rest) >= shapes) {
    draw->FetchValues();
  }

  // Those inside go to the window together, while nothing stands in the slot that no shader fills.
  TWindowShapes window;
  bool inWindow = false;
  if ((rest & inside) != 0) {
    UpdateDerivedState();
    inWindow = DrawJob != nullptr && IsSpareSlotZero(gl);
  }
  if (inWindow) {
    if (!turns) { // the records are those of this batch from now on
      DeferredFragment.KeepVertices();
      std::fill_n(VertexCache->Slots, draw->Count, nullptr);
    }
    TakeToWindow(gl, draw, shapes, &window);
  }
  const auto drawInWindow = [&](int shape) {
    if (corners == 2) {
      return AddLine(draw, window.Ends, shape);
    }
    if (turns) {
      draw->TakePlaces(*VertexCache, DeferredFragment);
      for (int c = 0; c < corners; ++c) {
        ShadeCorner(draw, c * draw->Batch.Pitch + shape, draw->FirstPlace + c);
      }
    }
    if (const std::uint64_t others = rest & (rest - 1) & inside; others != 0) {
      const int next = __builtin_ctzll(others);
      AskAhead(draw->Window.X + next, draw->Window.Y + next, draw->Window.Pitch);
    }
    bool done = true;
    for (int half = 0; half < halves && done; ++half) {
      gl.m_Fragment.FrontFacing = (classes[half].Front >> shape & 1) != 0;
      done = (classes[half].Culled >> shape & 1) != 0 ||
             DrawInWindow(draw, window.Rows[half], draw->Shapes.Columns[half], shape);
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
    DrawLines(draw);
    DrawBatched(draw, shape);
    if (!IsSpareSlotZero(gl)) {
      if (!draw->Shapes.AreSeparate()) {
        return shape + 1;
      }
      inWindow = false;
    }
    drawBeyond(all & ~(2 * bit - 1));
  }
  DrawLines(draw);
  recordCulled(all);
  return shapes;
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
  const auto shade = [&](int vertex, VAR_DATA* record) {
    if (!gl.m_TexUnits[0].TexEnabled) {
      record->Slots[gl.m_VarCount - 1] = {0, 0, 0, 0};
    }
    draw->Arrays.Fetch(&gl, draw->Elements.At(vertex));
    ShadeVertex(&gl, record, draw->Arrays.Lighting);
  };
  const unsigned int mode = draw->Shapes.Mode;
  gl.m_Pending = draw->Shapes.AreSeparate() ? 0 : draw->Shapes.Corners - 1;
  if (mode == GL_LINE_LOOP || mode == GL_TRIANGLE_FAN) {
    shade(0, &gl.m_VarSaved[0]);
  }
  for (int vertex = vertices - gl.m_Pending; vertex < vertices; ++vertex) {
    int place = mode == GL_TRIANGLE_FAN ? 1 + (vertex & 1) : 1;
    if (mode == GL_TRIANGLE_STRIP) {
      place = gl.m_StripIndex = vertex % 3;
    }
    shade(vertex, &gl.m_VarSaved[place]);
  }
  if (gl.m_Pending == 1) {
    gl.CopyVar(gl.m_VarCur[0], gl.m_VarSaved[1]);
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
