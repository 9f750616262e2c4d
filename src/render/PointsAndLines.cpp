#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdlib>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include "Numbers.h"

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

// Draws a line's pixel unless it is off the surface or was drawn last.
void TRenderCPU::_LinePixel(int x, int y, double t) {
  if (x < 0 || x >= m_Width || y < 0 || y >= m_Height || (x == m_LastPixelX && y == m_LastPixelY)) {
    return;
  }
  RasterizePixel(x, y, &m_Span, t);
  m_LastPixelX = x;
  m_LastPixelY = y;
}

void TRenderCPU::RasterizeLine(VAR_DATA* v) {
  _FlushFragment();
  const bool perspective = m_PerspectiveHint != GL_FASTEST;
  for (int i = 0; i < 2; ++i) {
    vec_t_<double, 4>& at = v[i].Slots[0];
    const double r = 1.0 / at.w;
    const double h = r * 0.5;
    at = {m_Width * (at.x * h + 0.5) - 0.5, m_Height * (at.y * h + 0.5) - 0.5, at.z * h + 0.5, r};
    if (perspective) {
      _ScaleSlots(&v[i], r);
    }
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
  const int delta[2] = {end[1][0] - end[0][0], end[1][1] - end[0][1]};
  if (delta[0] == 0 && delta[1] == 0) {
    _LinePixel(end[0][0], end[0][1], 0.0);
    return;
  }

  // The walk goes along the axis of the greater difference. The error starts at minus the length,
  // so that the first step aside falls where the sum first reaches 0.
  const int major = std::abs(delta[0]) >= std::abs(delta[1]) ? 0 : 1;
  const int minor = 1 - major;
  const int step[2] = {SignOf(delta[0]), SignOf(delta[1])};
  const long long length = std::abs(delta[major]);
  const long long aside = std::abs(delta[minor]);
  const double begin = v[0].Slots[0][static_cast<std::size_t>(major)];
  const double way = m_Span.Delta.Slots[0][static_cast<std::size_t>(major)];
  long long error = -length;
  int at[2] = {end[0][0], end[0][1]};
  for (;;) {
    double t = (at[major] - begin) / way;
    t = t < 0.0 ? 0.0 : t > 1.0 ? 1.0 : t;
    _LinePixel(at[0], at[1], t);
    if (at[major] == end[1][major] - step[major]) {
      return;
    }
    at[major] += step[major];
    error += 2 * aside;
    if (error >= 0) {
      error -= 2 * length;
      at[minor] += step[minor];
    }
  }
}

void TRenderCPU::PointSize(float size) { m_PointSize = size; }

void TRenderCPU::LineWidth(float width) { m_LineWidth = width; }

} // namespace Zx3D
