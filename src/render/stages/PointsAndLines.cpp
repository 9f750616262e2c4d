// Tested by: tests/render/PointsAndLines.cpp (PointsAndLines.*, OnePixel.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdlib>
#include <cstring>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/kernels/SpanJob.h>

namespace Zx3D {

// What follows the shader for points and lines: late depth test, depth, stencil and colour write.
void TRenderEngine::FinishPixel(int x, int y, unsigned char* depth, unsigned char* stencil) {
  if (gl.m_CalcDepth && !PassesDepth(depth, gl.m_Fragment.Depth, stencil)) {
    return;
  }
  if (depth != nullptr && gl.m_DepthMask) {
    StoreFloat(depth, gl.m_Fragment.Depth);
  }
  RunStencil(gl.m_StencilZPassOp, stencil);
  unsigned char* const color = TargetPixel(Targets.Color, x, y);
  if (color != nullptr) {
    WriteColor(color, gl.m_Fragment.Color);
  }
}

// --- Points

void TRenderCPU::ClipAndRasterizePoint(VAR_DATA* v) {
  vec_t_<double, 4>& at = v->Slots[0];
  if (-at.w > at.x || at.x > at.w || -at.w > at.y || at.y > at.w || -at.w > at.z || at.z > at.w) {
    return;
  }
  m_Engine->ResolveFragment();
  m_Engine->RefreshState();
  const double r = 1.0 / at.w;
  const double h = r * 0.5;
  at = {m_Width * (at.x * h + 0.5), m_Height * (at.y * h + 0.5), h * at.z + 0.5, r};
  // A point has no shift by half a pixel: it falls in the pixel whose square contains it.
  if (!(at.x > -1.0 && at.x < m_Width && at.y > -1.0 && at.y < m_Height)) {
    return;
  }
  const int x = TruncI32(at.x);
  const int y = TruncI32(at.y);

  unsigned char* const stencil = m_Engine->StencilPixel(x, y);
  unsigned char* const depth = m_Engine->DepthPixel(x, y);
  if (!m_Engine->PassesStencil(stencil)) {
    return;
  }
  if (!m_CalcDepth) {
    m_Fragment.Depth = static_cast<float>(at.z);
    if (!m_Engine->PassesDepth(depth, m_Fragment.Depth, stencil)) {
      return;
    }
  }
  if (m_FragmentShader != nullptr) {
    m_Fragment.X = x;
    m_Fragment.Y = y;
    if (!m_FragmentShader->Execute(v, &m_Fragment)) {
      return;
    }
  } else {
    m_Fragment.Color = m_CurColor;
  }
  m_Engine->FinishPixel(x, y, depth, stencil);
}

// Points of a batch in order, since two may fall on one pixel. They are scattered, so their pixels
// are prefetched before the first is drawn.
void TRenderEngine::DrawPoints(const TSpanJob& job, const TPointBatch& points,
                               const vec_t_<double, 4>* colors) {
  struct TPoint {
    int Index;
    unsigned char* Color;
  };
  const bool useDepth = gl.m_DepthTest || gl.m_DepthMask;
  TPoint live[TVertexBatch::kMost];
  int count = 0;
  for (int i = 0; i < points.Count; ++i) {
    const std::ptrdiff_t x = points.X[i];
    const std::ptrdiff_t y = points.Y[i];
    if (x < 0) {
      continue;
    }
    live[count] = {i, job.Color + y * job.ColorRowStride + 4 * x};
    __builtin_prefetch(live[count].Color, 1);
    if (useDepth) {
      __builtin_prefetch(DepthPixel(points.X[i], points.Y[i]), 1);
    }
    if (gl.m_StencilTest) {
      __builtin_prefetch(StencilPixel(points.X[i], points.Y[i]), 1);
    }
    ++count;
  }
  const bool plainWrite = gl.m_ColorMask == 15 && gl.m_BlendFunc == nullptr;
  int seen = -1;  // the last point that came to the depth test
  int shown = -1; // the last one that was shaded
  for (int k = 0; k < count; ++k) {
    const int i = live[k].Index;
    const unsigned char* const bytes = points.Bytes + 4 * i;
    if (gl.m_StencilTest || useDepth) {
      unsigned char* const stencil = StencilPixel(points.X[i], points.Y[i]);
      unsigned char* const depth = DepthPixel(points.X[i], points.Y[i]);
      if (!PassesStencil(stencil)) {
        continue;
      }
      seen = i;
      if (!PassesDepth(depth, points.Depth[i], stencil)) {
        continue;
      }
      if (gl.m_DepthMask) {
        StoreFloat(depth, points.Depth[i]);
      }
      RunStencil(gl.m_StencilZPassOp, stencil);
    }
    seen = i;
    shown = i;
    if (plainWrite) {
      std::memcpy(live[k].Color, bytes, 4);
    } else {
      WriteBytes(live[k].Color, bytes);
    }
  }
  if (seen >= 0) {
    gl.m_Fragment.Depth = points.Depth[seen];
  }
  if (shown >= 0) {
    const auto limited = [](double c) { return c < 0.0 ? 0.0 : c > 1.0 ? 1.0 : c; };
    const vec_t_<double, 4>& c = colors[shown];
    gl.m_Fragment.X = points.X[shown];
    gl.m_Fragment.Y = points.Y[shown];
    gl.m_Fragment.Color = {limited(c.x), limited(c.y), limited(c.z), limited(c.w)};
  }
}

// --- Lines

void TRenderCPU::RasterizePixel(int x, int y, const EDGE* e, double t) {
  if (x < 0 || x >= m_Width || y < 0 || y >= m_Height) {
    return;
  }
  m_Engine->RefreshTargets();
  unsigned char* const stencil = m_Engine->StencilPixel(x, y);
  unsigned char* const depth = m_Engine->DepthPixel(x, y);
  if (!m_Engine->PassesStencil(stencil)) {
    return;
  }
  if (!m_CalcDepth) {
    m_Fragment.Depth = static_cast<float>(e->Delta.Slots[0].z * t + e->Begin->Slots[0].z);
    if (m_PrimitiveMode == GL_TRIANGLES && m_PolygonOffsetFill) {
      m_Fragment.Depth += m_PolygonOffsetFactor;
    }
    if (!m_Engine->PassesDepth(depth, m_Fragment.Depth, stencil)) {
      return;
    }
  }
  m_Engine->InterpolateFragment(*e, t);
  m_Fragment.X = x;
  m_Fragment.Y = y;
  if (m_FragmentShader->Execute(&m_VarFragment, &m_Fragment)) {
    m_Engine->FinishPixel(x, y, depth, stencil);
  }
}

namespace {

int SignOf(int value) { return (value > 0) - (value < 0); }

// The pixel of a line's end; false where there is none near enough to the surface to be an address.
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

// The pixel becomes the last one whatever the tests made of it, but after its shader, which may
// look where the line was before.
void TRenderEngine::DrawLinePixel(int x, int y, double t) {
  gl.RasterizePixel(x, y, &gl.m_Span, t);
  gl.m_LastPixelX = x;
  gl.m_LastPixelY = y;
}

void TRenderCPU::RasterizeLine(VAR_DATA* v) {
  m_Engine->RefreshState();
  TSpanJob job;
  m_Engine->DrawLine(v, m_Engine->SetUpDraw(&job) ? &job : nullptr);
}

// `drawJob` holds for the draw; null sends the line to the reference walk.
void TRenderEngine::DrawLine(VAR_DATA* v, TSpanJob* drawJob) {
  ResolveFragment();
  for (int i = 0; i < 2; ++i) {
    vec_t_<double, 4>& at = v[i].Slots[0];
    const double r = 1.0 / at.w;
    const double h = r * 0.5;
    at = {gl.m_Width * (at.x * h + 0.5) - 0.5, gl.m_Height * (at.y * h + 0.5) - 0.5, at.z * h + 0.5,
          r};
  }
  // Set-up reads the slots before perspective divides them.
  bool many = drawJob != nullptr;
  if (many) {
    drawJob->Vertex[0] = v[0].Slots;
    drawJob->Vertex[1] = v[1].Slots;
    drawJob->Vertex[2] = v[1].Slots;
    drawJob->AddOffset = gl.m_PolygonOffsetFill && gl.m_PrimitiveMode == GL_TRIANGLES;
    many = SetUpPrimitive(drawJob);
  }
  if (gl.m_PerspectiveHint != GL_FASTEST) {
    ScaleSlots(&v[0], v[0].Slots[0].w);
    ScaleSlots(&v[1], v[1].Slots[0].w);
  }
  gl.m_Span.Begin = &v[0];
  gl.m_Span.End = &v[1];
  SetDelta(&gl.m_Span);

  int end[2][2]; // [vertex][axis]
  for (int i = 0; i < 2; ++i) {
    if (!EndPixel(v[i].Slots[0].x, v[i].Slots[0].y, &end[i][0], &end[i][1])) {
      return;
    }
  }
  if (end[0][0] == end[1][0] && end[0][1] == end[1][1]) {
    if (IsLinePixel(end[0][0], end[0][1])) {
      DrawLinePixel(end[0][0], end[0][1], 0.0);
    }
    return;
  }
  const int delta[2] = {end[1][0] - end[0][0], end[1][1] - end[0][1]};
  TLineWalk walk;
  walk.Axis = std::abs(delta[0]) >= std::abs(delta[1]) ? 0 : 1;
  for (int i = 0; i < 2; ++i) {
    walk.From[i] = end[0][i];
    walk.Step[i] = SignOf(delta[i]);
  }
  walk.Major = std::abs(delta[walk.Axis]);
  walk.Minor = std::abs(delta[1 - walk.Axis]);
  if (!many) {
    WalkLine(walk);
  } else if (ClipWalk(&walk)) {
    RunLineJob(drawJob, walk);
    if (drawJob->ColorSet) {
      InterpolateFragment(gl.m_Span, drawJob->LastT);
    }
  }
}

// The reference walk. The error starts at minus the length, so that the first minor step falls
// where the sum first reaches 0.
void TRenderEngine::WalkLine(const TLineWalk& walk) {
  const int major = walk.Axis;
  const int minor = 1 - major;
  const double begin = gl.m_Span.Begin->Slots[0][static_cast<std::size_t>(major)];
  const double way = gl.m_Span.Delta.Slots[0][static_cast<std::size_t>(major)];
  long long error = -walk.Major;
  int at[2] = {walk.From[0], walk.From[1]};
  for (long long i = 0; i < walk.Major; ++i) {
    if (IsLinePixel(at[0], at[1])) {
      double t = (at[major] - begin) / way;
      t = t < 0.0 ? 0.0 : t > 1.0 ? 1.0 : t;
      DrawLinePixel(at[0], at[1], t);
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
