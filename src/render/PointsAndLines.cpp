#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdlib>
#include <cstring>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include "Numbers.h"
#include "SpanJob.h"
#include "VertexBatch.h"

namespace Zx3D {

// --- Addresses of one pixel; null where there is no target

float* TRenderCPU::_DepthPixel(int x, int y) const {
  return m_DepthSurface == nullptr
             ? nullptr
             : reinterpret_cast<float*>(m_DepthSurface->Data +
                                        std::ptrdiff_t{y} * m_DepthSurface->RowStride) +
                   x;
}

unsigned char* TRenderCPU::_StencilPixel(int x, int y) const {
  return !m_StencilTest || m_StencilSurface == nullptr
             ? nullptr
             : m_StencilSurface->Data + std::ptrdiff_t{y} * m_StencilSurface->RowStride + x;
}

// What follows the shader in all three fragment paths but the spans': late depth, depth, stencil
// and colour.
void TRenderCPU::_FinishPixel(int x, int y, float* depth, unsigned char* stencil) {
  if (m_CalcDepth && !_PassesDepth(depth, m_Fragment.Depth, stencil)) {
    return;
  }
  if (depth != nullptr && m_DepthMask) {
    *depth = m_Fragment.Depth;
  }
  _RunStencil(m_StencilZPassOp, stencil);
  unsigned char* const color = _ColorPixel(x, y);
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
  _FlushFragment();
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
  float* const depth = _DepthPixel(x, y);
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

// Points of a batch in their order, each behind all that the one before it left: two may fall on
// one pixel. They lie anywhere, so that their pixels are asked for before the first is drawn.
void TRenderCPU::_DrawPoints(const TSpanJob& job, const TPointBatch& points,
                             const vec_t_<double, 4>* colors) {
  struct TPoint {
    int Index;
    unsigned char* Color;
  };
  const bool useDepth = m_DepthTest || m_DepthMask;
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
      float* const depth = _DepthPixel(points.X[i], points.Y[i]);
      if (!_PassesStencil(stencil)) {
        continue;
      }
      seen = i;
      if (!_PassesDepth(depth, points.Depth[i], stencil)) {
        continue;
      }
      if (m_DepthMask) {
        *depth = points.Depth[i];
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
  unsigned char* const stencil = _StencilPixel(x, y);
  float* const depth = _DepthPixel(x, y);
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

// Whether a line's pixel is on the surface and was not drawn last; it then counts as drawn.
bool TRenderCPU::_TakeLinePixel(int x, int y) {
  if (x < 0 || x >= m_Width || y < 0 || y >= m_Height || (x == m_LastPixelX && y == m_LastPixelY)) {
    return false;
  }
  m_LastPixelX = x;
  m_LastPixelY = y;
  return true;
}

void TRenderCPU::RasterizeLine(VAR_DATA* v) {
  _FlushFragment();
  for (int i = 0; i < 2; ++i) {
    vec_t_<double, 4>& at = v[i].Slots[0];
    const double r = 1.0 / at.w;
    const double h = r * 0.5;
    at = {m_Width * (at.x * h + 0.5) - 0.5, m_Height * (at.y * h + 0.5) - 0.5, at.z * h + 0.5, r};
  }
  // The job is settled by the slots as they are before perspective prepares them.
  TSpanJob job;
  job.Vertex[0] = v[0].Slots;
  job.Vertex[1] = v[1].Slots;
  job.Vertex[2] = v[1].Slots;
  const bool many = _SettleJob(&job);
  job.AddOffset = m_PolygonOffsetFill && m_PrimitiveMode == GL_TRIANGLES;
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
    if (_TakeLinePixel(end[0][0], end[0][1])) {
      RasterizePixel(end[0][0], end[0][1], &m_Span, 0.0);
    }
    return;
  }
  _WalkLine(end[0], end[1], many ? &job : nullptr);
}

// The walk goes along the axis of the greater difference. The error starts at minus the length, so
// that the first step aside falls where the sum first reaches 0. With a job the pixels are drawn
// many at a time, without one at once.
void TRenderCPU::_WalkLine(const int (&from)[2], const int (&to)[2], TSpanJob* job) {
  const int delta[2] = {to[0] - from[0], to[1] - from[1]};
  const int major = std::abs(delta[0]) >= std::abs(delta[1]) ? 0 : 1;
  const int minor = 1 - major;
  const int step[2] = {SignOf(delta[0]), SignOf(delta[1])};
  const long long length = std::abs(delta[major]);
  const long long aside = std::abs(delta[minor]);
  const double begin = m_Span.Begin->Slots[0][static_cast<std::size_t>(major)];
  const double way = m_Span.Delta.Slots[0][static_cast<std::size_t>(major)];
  long long error = -length;
  int at[2] = {from[0], from[1]};
  TLinePixels pixels = {}; // whole vectors are read, behind the last pixel too
  pixels.Axis = major;
  for (;;) {
    if (_TakeLinePixel(at[0], at[1])) {
      if (job == nullptr) {
        double t = (at[major] - begin) / way;
        t = t < 0.0 ? 0.0 : t > 1.0 ? 1.0 : t;
        RasterizePixel(at[0], at[1], &m_Span, t);
      } else {
        pixels.X[pixels.Count] = at[0];
        pixels.Y[pixels.Count] = at[1];
        if (++pixels.Count == TLinePixels::kMost) {
          _RunLineJob(job, pixels);
          pixels.Count = 0;
        }
      }
    }
    if (at[major] == to[major] - step[major]) {
      break;
    }
    at[major] += step[major];
    error += 2 * aside;
    if (error >= 0) {
      error -= 2 * length;
      at[minor] += step[minor];
    }
  }
  if (job == nullptr) {
    return;
  }
  _RunLineJob(job, pixels);
  if (job->ColorSet) {
    _InterpolateFragment(m_Span, job->LastT);
  }
}

void TRenderCPU::PointSize(float size) { m_PointSize = size; }

void TRenderCPU::LineWidth(float width) { m_LineWidth = width; }

} // namespace Zx3D
