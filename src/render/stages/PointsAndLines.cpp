// Tested by: tests/render/PointsAndLines.cpp (PointsAndLines.*, OnePixel.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdlib>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/FragmentShading.h>
#include <ZxCore3D/render/stages/FragmentStages.h>
#include <ZxCore3D/render/stages/LineWalk.h>
#include <ZxCore3D/render/stages/SlotMath.h>

namespace Zx3D {

// The colour's address is looked up after the shader, which may have bound another surface.
static inline void WriteRecordColor(TRenderEngine& engine, int x, int y) {
  const TRenderCPU& gl = engine.gl;
  if (gl.m_FragmentShader != gl.m_StdFragmentShader) {
    engine.UpdateTargets();
  }
  unsigned char* const color = engine.Targets.Color.At(x, y);
  if (color != nullptr) {
    WriteColor(gl, color, gl.m_Fragment.Color);
  }
}

// --- Points

namespace {

struct TPointFragment {
  TRenderEngine& Engine;
  TRenderCPU::VAR_DATA* Vertex; ///< the position in the window
  int X;
  int Y;

  float Depth() const { return Engine.gl.m_Fragment.Depth; }
  void SetDepth() { Engine.gl.m_Fragment.Depth = static_cast<float>(Vertex->Slots[0].z); }
  bool Shade() {
    TRenderCPU& gl = Engine.gl;
    if (gl.m_FragmentShader == nullptr) {
      gl.m_Fragment.Color = gl.m_CurColor;
      return true;
    }
    gl.m_Fragment.X = X;
    gl.m_Fragment.Y = Y;
    if (gl.m_FragmentShader == gl.m_StdFragmentShader) {
      return ShadeFragment(gl.m_FragmentShader, Vertex, &gl.m_Fragment);
    }
    return gl.m_FragmentShader->Execute(Vertex, &gl.m_Fragment);
  }
  void WriteColor() { WriteRecordColor(Engine, X, Y); }
};

} // namespace

void TRenderCPU::ClipAndRasterizePoint(VAR_DATA* v) {
  vec_t_<double, 4>& at = v->Slots[0];
  if (-at.w > at.x || at.x > at.w || -at.w > at.y || at.y > at.w || -at.w > at.z || at.z > at.w) {
    return;
  }
  TRenderEngine& engine = *m_Engine;
  engine.ResolveFragment();
  engine.UpdateDerivedState();
  const double r = 1.0 / at.w;
  const double h = r * 0.5;
  StoreVector(&at, m_Width * (at.x * h + 0.5), m_Height * (at.y * h + 0.5), h * at.z + 0.5, r);
  // A point has no shift by half a pixel: it falls in the pixel whose square contains it.
  if (!(at.x > -1.0 && at.x < m_Width && at.y > -1.0 && at.y < m_Height)) {
    return;
  }
  const int x = TruncI32(at.x);
  const int y = TruncI32(at.y);
  RunFragment(*this, engine.DepthPixel(x, y), engine.StencilPixel(x, y),
              TPointFragment{engine, v, x, y});
}

// --- Lines

namespace {

struct TLineFragment {
  TRenderEngine& Engine;
  const TRenderCPU::EDGE& Line;
  int X;
  int Y;
  double T; ///< position between the line's ends

  float Depth() const { return Engine.gl.m_Fragment.Depth; }
  void SetDepth() {
    TRenderCPU& gl = Engine.gl;
    gl.m_Fragment.Depth = static_cast<float>(Line.Delta.Slots[0].z * T + Line.Begin->Slots[0].z);
    if (gl.m_PrimitiveMode == GL_TRIANGLES && gl.m_PolygonOffsetFill) {
      gl.m_Fragment.Depth += gl.m_PolygonOffsetFactor;
    }
  }
  bool Shade() {
    TRenderCPU& gl = Engine.gl;
    Engine.InterpolateFragment(Line, T);
    gl.m_Fragment.X = X;
    gl.m_Fragment.Y = Y;
    return gl.m_FragmentShader->Execute(&gl.m_VarFragment, &gl.m_Fragment);
  }
  void WriteColor() { WriteRecordColor(Engine, X, Y); }
};

} // namespace

void TRenderCPU::RasterizePixel(int x, int y, const EDGE* e, double t) {
  if (x < 0 || x >= m_Width || y < 0 || y >= m_Height) {
    return;
  }
  TRenderEngine& engine = *m_Engine;
  engine.UpdateTargets();
  RunFragment(*this, engine.DepthPixel(x, y), engine.StencilPixel(x, y),
              TLineFragment{engine, *e, x, y, t});
}

namespace {

int SignOf(int value) { return (value > 0) - (value < 0); }

// The pixel that a line's end falls on; false if it lies too far away for integer steps.
bool EndPixel(double x, double y, int* px, int* py) {
  constexpr double kFar = 1 << 30;
  const double cx = x + 0.5;
  const double cy = y + 0.5;
  if (!(cx > -kFar && cx < kFar && cy > -kFar && cy < kFar)) {
    return false;
  }
  *px = TruncI32(cx);
  *py = TruncI32(cy);
  return true;
}

} // namespace

// Whether a line's pixel is on the surface and was not drawn last.
bool TRenderEngine::IsLinePixel(int x, int y) const {
  return x >= 0 && x < gl.m_Width && y >= 0 && y < gl.m_Height &&
         !(x == gl.m_LastPixelX && y == gl.m_LastPixelY);
}

// The pixel becomes the last one drawn even if a test rejects it, but only after its shader has
// run, which may read the one before.
void TRenderEngine::DrawLinePixel(int x, int y, double t) {
  gl.RasterizePixel(x, y, &gl.m_Span, t);
  gl.m_LastPixelX = x;
  gl.m_LastPixelY = y;
}

void TRenderCPU::RasterizeLine(VAR_DATA* v) {
  m_Engine->UpdateDerivedState();
  if (TSpanJob* const job = m_Engine->DrawJob) {
    m_Engine->DrawLine(v, job, TCondition::None);
    return;
  }
  TSpanJob job;
  m_Engine->DrawLine(v, &job, m_Engine->SetUpDraw(TPrimitiveKind::Line, &job));
}

// Draws a line in clip space, by a kernel unless a condition is unmet: `unmet`, of the draw, or one
// of the line's own.
void TRenderEngine::DrawLine(VAR_DATA* v, TSpanJob* job, TCondition unmet) {
  for (int i = 0; i < 2; ++i) {
    vec_t_<double, 4>& at = v[i].Slots[0];
    const double r = 1.0 / at.w;
    const double h = r * 0.5;
    StoreVector(&at, gl.m_Width * (at.x * h + 0.5) - 0.5, gl.m_Height * (at.y * h + 0.5) - 0.5,
                at.z * h + 0.5, r);
  }
  if (unmet == TCondition::None) { // reads the slots before perspective scales them
    TPrimitive& primitive = job->Primitive;
    primitive.Vertex[0] = v[0].Slots;
    primitive.Vertex[1] = primitive.Vertex[2] = v[1].Slots;
    unmet = SetUpPrimitive(&primitive);
  }
  if (gl.m_PerspectiveHint != GL_FASTEST) {
    ScaleSlots(&v[0], gl.m_VarCount);
    ScaleSlots(&v[1], gl.m_VarCount);
  }
  gl.m_Span.Begin = &v[0];
  gl.m_Span.End = &v[1];
  SetDelta(&gl.m_Span, gl.m_VarCount);
  int end[2][2]; // [vertex][axis]
  for (int i = 0; i < 2; ++i) {
    if (!EndPixel(v[i].Slots[0].x, v[i].Slots[0].y, &end[i][0], &end[i][1])) {
      return;
    }
  }
  TLineWalk walk = TLineWalk::Between(end[0], end[1], v[0].Slots[0], v[1].Slots[0]);
  if (Meets(ActiveKernelCounters(), unmet)) {
    if (ClipWalk(&walk)) {
      RunLineJob(job, &job->Primitive, &walk, 1);
      KeepDeferred();
    }
    return;
  }
  ResolveFragment();
  WalkLine(walk);
}

TLineWalk TLineWalk::Between(const int (&from)[2], const int (&to)[2],
                             const vec_t_<double, 4>& begin, const vec_t_<double, 4>& end) {
  const int delta[2] = {to[0] - from[0], to[1] - from[1]};
  const int size[2] = {std::abs(delta[0]), std::abs(delta[1])};
  const int axis = size[0] >= size[1] ? 0 : 1;
  const auto at = static_cast<std::size_t>(axis);
  const bool isDot = size[axis] == 0;
  return {axis,
          {from[0], from[1]},
          {SignOf(delta[0]), SignOf(delta[1])},
          isDot ? 1 : size[axis],
          size[1 - axis],
          0,
          0,
          isDot ? from[0] : begin[at],
          isDot ? 1.0 : end[at] - begin[at]};
}

// The reference walk, Bresenham's: the error starts at -Major, and the minor axis steps when it
// reaches 0.
void TRenderEngine::WalkLine(const TLineWalk& walk) {
  const int major = walk.Axis;
  const int minor = 1 - major;
  long long error = -walk.Major;
  int at[2] = {walk.From[0], walk.From[1]};
  if (TKernelCounters* const counters = ActiveKernelCounters()) {
    counters->StartPrimitive();
    counters->Add(TKernel::Reference, static_cast<int>(walk.Major));
  }
  for (long long i = 0; i < walk.Major; ++i) {
    if (IsLinePixel(at[0], at[1])) {
      DrawLinePixel(at[0], at[1], Clamped01((at[major] - walk.Begin) / walk.Delta));
    }
    at[major] += walk.Step[major];
    error += 2 * walk.Minor;
    if (error >= 0) {
      error -= 2 * walk.Major;
      at[minor] += walk.Step[minor];
    }
  }
}

// Clips the walk to the pixels on the surface, which are consecutive, without the first if it was
// drawn last. False if none is left. No other pixel can be the one drawn last, since each follows
// another.
bool TRenderEngine::ClipWalk(TLineWalk* walk) {
  walk->First = 0;
  walk->Last = static_cast<int>(walk->Major) - 1;
  int x = 0;
  int y = 0;
  const auto isOn = [&](int i) {
    walk->At(i, &x, &y);
    return x >= 0 && x < gl.m_Width && y >= 0 && y < gl.m_Height;
  };
  while (walk->First <= walk->Last && !isOn(walk->Last)) {
    --walk->Last;
  }
  if (walk->First > walk->Last) {
    return false;
  }
  const int last[2] = {x, y};
  while (!isOn(walk->First)) {
    ++walk->First;
  }
  walk->First += x == gl.m_LastPixelX && y == gl.m_LastPixelY ? 1 : 0;
  gl.m_LastPixelX = last[0];
  gl.m_LastPixelY = last[1];
  return walk->First <= walk->Last;
}

void TRenderCPU::PointSize(float size) { m_PointSize = size; }

void TRenderCPU::LineWidth(float width) { m_LineWidth = width; }

} // namespace Zx3D
