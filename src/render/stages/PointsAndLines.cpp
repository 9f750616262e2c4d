// Tested by: tests/render/PointsAndLines.cpp (PointsAndLines.*, OnePixel.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdlib>
#include <cstring>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/kernels/SpanJob.h>

namespace Zx3D {

// What follows the shader for points and lines: late depth test, depth, stencil and colour write.
void TRenderCPU::_FinishPixel(int x, int y, unsigned char* depth, unsigned char* stencil) {
  if (m_CalcDepth && !_PassesDepth(depth, m_Fragment.Depth, stencil)) {
    return;
  }
  if (depth != nullptr && m_DepthMask) {
    StoreFloat(depth, m_Fragment.Depth);
  }
  _RunStencil(m_StencilZPassOp, stencil);
  unsigned char* const color = _TargetPixel(m_Targets.Color, x, y);
  if (color != nullptr) {
    _WriteColor(color, m_Fragment.Color);
  }
}

// --- Points

void TRenderCPU::ClipAndRasterizePoint(VAR_DATA* v) {
  vec_t_<double, 4>& at = v->Slots[0];
  if (-at.w > at.x || at.x > at.w || -at.w > at.y || at.y > at.w || -at.w > at.z || at.z > at.w) {
    return;
  }
  _ResolveFragment();
  _RefreshState();
  const double r = 1.0 / at.w;
  const double h = r * 0.5;
  at = {m_Width * (at.x * h + 0.5), m_Height * (at.y * h + 0.5), h * at.z + 0.5, r};
  // A point has no shift by half a pixel: it falls in the pixel whose square contains it.
  if (!(at.x > -1.0 && at.x < m_Width && at.y > -1.0 && at.y < m_Height)) {
    return;
  }
  const int x = TruncI32(at.x);
  const int y = TruncI32(at.y);

  unsigned char* const stencil = _StencilPixel(x, y);
  unsigned char* const depth = _DepthPixel(x, y);
  if (!_PassesStencil(stencil)) {
    return;
  }
  if (!m_CalcDepth) {
    m_Fragment.Depth = static_cast<float>(at.z);
    if (!_PassesDepth(depth, m_Fragment.Depth, stencil)) {
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
  _FinishPixel(x, y, depth, stencil);
}

// Points of a batch in order, since two may fall on one pixel. They are scattered, so their pixels
// are prefetched before the first is drawn.
void TRenderCPU::_DrawPoints(const TDrawState& state, const TPointBatch& points,
                             const vec_t_<double, 4>* colors) {
  struct TPoint {
    int Index;
    unsigned char* Color;
  };
  const bool useDepth = m_DepthTest || m_DepthMask;
  TPoint live[TVertexBatch::kMost];
  int count = 0;
  for (int i = 0; i < points.Count; ++i) {
    if (points.X[i] < 0) {
      continue;
    }
    auto* const color = state.Color.At<std::uint32_t>(points.X[i], points.Y[i]);
    live[count] = {i, reinterpret_cast<unsigned char*>(color)};
    __builtin_prefetch(live[count].Color, 1);
    if (useDepth) {
      __builtin_prefetch(_DepthPixel(points.X[i], points.Y[i]), 1);
    }
    if (m_StencilTest) {
      __builtin_prefetch(_StencilPixel(points.X[i], points.Y[i]), 1);
    }
    ++count;
  }
  const bool plainWrite = m_ColorMask == 15 && m_BlendFunc == nullptr;
  int seen = -1;  // the last point that came to the depth test
  int shown = -1; // the last one that was shaded
  for (int k = 0; k < count; ++k) {
    const int i = live[k].Index;
    const unsigned char* const bytes = points.Bytes + 4 * i;
    if (m_StencilTest || useDepth) {
      unsigned char* const stencil = _StencilPixel(points.X[i], points.Y[i]);
      unsigned char* const depth = _DepthPixel(points.X[i], points.Y[i]);
      if (!_PassesStencil(stencil)) {
        continue;
      }
      seen = i;
      if (!_PassesDepth(depth, points.Depth[i], stencil)) {
        continue;
      }
      if (m_DepthMask) {
        StoreFloat(depth, points.Depth[i]);
      }
      _RunStencil(m_StencilZPassOp, stencil);
    }
    seen = i;
    shown = i;
    if (plainWrite) {
      std::memcpy(live[k].Color, bytes, 4);
    } else {
      _WriteBytes(live[k].Color, bytes);
    }
  }
  if (seen >= 0) {
    m_Fragment.Depth = points.Depth[seen];
  }
  if (shown >= 0) {
    const auto limited = [](double c) { return c < 0.0 ? 0.0 : c > 1.0 ? 1.0 : c; };
    const vec_t_<double, 4>& c = colors[shown];
    m_Fragment.X = points.X[shown];
    m_Fragment.Y = points.Y[shown];
    m_Fragment.Color = {limited(c.x), limited(c.y), limited(c.z), limited(c.w)};
  }
}

// --- Lines

void TRenderCPU::RasterizePixel(int x, int y, const EDGE* e, double t) {
  if (x < 0 || x >= m_Width || y < 0 || y >= m_Height) {
    return;
  }
  _RefreshTargets();
  unsigned char* const stencil = _StencilPixel(x, y);
  unsigned char* const depth = _DepthPixel(x, y);
  if (!_PassesStencil(stencil)) {
    return;
  }
  if (!m_CalcDepth) {
    m_Fragment.Depth = static_cast<float>(e->Delta.Slots[0].z * t + e->Begin->Slots[0].z);
    if (m_PrimitiveMode == GL_TRIANGLES && m_PolygonOffsetFill) {
      m_Fragment.Depth += m_PolygonOffsetFactor;
    }
    if (!_PassesDepth(depth, m_Fragment.Depth, stencil)) {
      return;
    }
  }
  _InterpolateFragment(*e, t);
  m_Fragment.X = x;
  m_Fragment.Y = y;
  if (m_FragmentShader->Execute(&m_VarFragment, &m_Fragment)) {
    _FinishPixel(x, y, depth, stencil);
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
bool TRenderCPU::_IsLinePixel(int x, int y) const {
  return x >= 0 && x < m_Width && y >= 0 && y < m_Height &&
         !(x == m_LastPixelX && y == m_LastPixelY);
}

// The pixel becomes the last one whatever the tests made of it, but after its shader, which may
// look where the line was before.
void TRenderCPU::_DrawLinePixel(int x, int y, double t) {
  RasterizePixel(x, y, &m_Span, t);
  m_LastPixelX = x;
  m_LastPixelY = y;
}

void TRenderCPU::RasterizeLine(VAR_DATA* v) {
  _RefreshState();
  TSpanJob job;
  _DrawLine(v, &job, _SetUpDraw(&job.Draw));
}

// Draws a line in clip space, by a kernel unless a condition is unmet: `unmet`, of the draw, or one
// of the line's own.
void TRenderCPU::_DrawLine(VAR_DATA* v, TSpanJob* job, TCondition unmet) {
  _ResolveFragment();
  for (int i = 0; i < 2; ++i) {
    vec_t_<double, 4>& at = v[i].Slots[0];
    const double r = 1.0 / at.w;
    const double h = r * 0.5;
    at = {m_Width * (at.x * h + 0.5) - 0.5, m_Height * (at.y * h + 0.5) - 0.5, at.z * h + 0.5, r};
  }
  if (unmet == TCondition::None) { // reads the slots before perspective scales them
    TPrimitive& primitive = job->Primitive;
    primitive = TPrimitive();
    primitive.Kind = TPrimitiveKind::Line;
    primitive.Vertex[0] = v[0].Slots;
    primitive.Vertex[1] = primitive.Vertex[2] = v[1].Slots;
    unmet = _SetUpPrimitive(&primitive);
  }
  if (m_PerspectiveHint != GL_FASTEST) {
    _ScaleSlots(&v[0], v[0].Slots[0].w);
    _ScaleSlots(&v[1], v[1].Slots[0].w);
  }
  m_Span.Begin = &v[0];
  m_Span.End = &v[1];
  _SetDelta(&m_Span);

  int end[2][2]; // [vertex][axis]
  for (int i = 0; i < 2; ++i) {
    if (!EndPixel(v[i].Slots[0].x, v[i].Slots[0].y, &end[i][0], &end[i][1])) {
      return;
    }
  }
  if (end[0][0] == end[1][0] && end[0][1] == end[1][1]) {
    if (_IsLinePixel(end[0][0], end[0][1])) {
      _DrawLinePixel(end[0][0], end[0][1], 0.0);
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
  if (!Meets(ActiveKernelCounters(), unmet)) {
    _WalkLine(walk);
  } else if (_ClipWalk(&walk)) {
    _RunLineJob(job, walk);
    if (job->Result.ColorSet) {
      _InterpolateFragment(m_Span, job->Result.LastT);
    }
  }
}

// The reference walk. The error starts at minus the length, so that the first minor step falls
// where the sum first reaches 0.
void TRenderCPU::_WalkLine(const TLineWalk& walk) {
  const int major = walk.Axis;
  const int minor = 1 - major;
  const double begin = m_Span.Begin->Slots[0][static_cast<std::size_t>(major)];
  const double way = m_Span.Delta.Slots[0][static_cast<std::size_t>(major)];
  long long error = -walk.Major;
  int at[2] = {walk.From[0], walk.From[1]};
  if (TKernelCounters* const counters = ActiveKernelCounters()) {
    counters->StartPrimitive();
    counters->Add(TKernel::Reference, static_cast<int>(walk.Major));
  }
  for (long long i = 0; i < walk.Major; ++i) {
    if (_IsLinePixel(at[0], at[1])) {
      double t = (at[major] - begin) / way;
      t = t < 0.0 ? 0.0 : t > 1.0 ? 1.0 : t;
      _DrawLinePixel(at[0], at[1], t);
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
bool TRenderCPU::_ClipWalk(TLineWalk* walk) {
  walk->First = 0;
  walk->Last = static_cast<int>(walk->Major) - 1;
  int x = 0;
  int y = 0;
  const auto isOn = [&](int i) {
    walk->At(i, &x, &y);
    return x >= 0 && x < m_Width && y >= 0 && y < m_Height;
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
  walk->First += x == m_LastPixelX && y == m_LastPixelY ? 1 : 0;
  m_LastPixelX = last[0];
  m_LastPixelY = last[1];
  return walk->First <= walk->Last;
}

void TRenderCPU::PointSize(float size) { m_PointSize = size; }

void TRenderCPU::LineWidth(float width) { m_LineWidth = width; }

} // namespace Zx3D
