// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/SharedMemory.cpp
// (SharedMemory.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/KernelCounters.h>

namespace Zx3D {

namespace {

// The pixels of one target along a row.
class TSpanTarget {
public:
  TSpanTarget(unsigned char* first, std::ptrdiff_t step, int end)
      : m_At(first), m_Step(step), m_End(end) {}

  // The address at column x, those of the columns before it having been taken; null from the end
  // on.
  unsigned char* Next(int x) {
    if (x >= m_End || m_At == nullptr) {
      return nullptr;
    }
    unsigned char* const at = m_At;
    m_At += m_Step;
    return at;
  }

private:
  unsigned char* m_At;
  std::ptrdiff_t m_Step;
  int m_End;
};

} // namespace

// --- The tests of a fragment, for spans, lines and points alike. A null address is a target that
// isn't there.

void TRenderCPU::_RunStencil(TStencilFunction operation, unsigned char* stencil) {
  if (stencil != nullptr) {
    operation(stencil, static_cast<unsigned char>(m_StencilRef),
              static_cast<unsigned char>(m_StencilWriteMask));
  }
}

bool TRenderCPU::_PassesStencil(unsigned char* stencil) {
  const unsigned char value = stencil != nullptr ? *stencil : 0;
  if (m_StencilTest && !m_StencilCompare(static_cast<unsigned char>(m_StencilRef), value,
                                         static_cast<unsigned char>(m_StencilValueMask))) {
    _RunStencil(m_StencilFailOp, stencil);
    return false;
  }
  return true;
}

bool TRenderCPU::_PassesDepth(const unsigned char* depth, float fragment, unsigned char* stencil) {
  if (depth != nullptr && m_DepthTest && !m_DepthCompare(fragment, LoadFloat(depth))) {
    _RunStencil(m_StencilZFailOp, stencil);
    return false;
  }
  return true;
}

// Fills `m_VarFragment` at t. With perspective every slot is multiplied by q, the position too.
void TRenderCPU::_InterpolateFragment(const EDGE& e, double t) {
  if (m_PerspectiveHint == GL_FASTEST) {
    Value(e, t, &m_VarFragment);
    return;
  }
  const double q = 1.0 / (e.Delta.Slots[0].w * t + e.Begin->Slots[0].w);
  for (int i = 0; i < m_VarCount; ++i) {
    const vec_t_<double, 4>& delta = e.Delta.Slots[i];
    const vec_t_<double, 4>& begin = e.Begin->Slots[i];
    m_VarFragment.Slots[i] = {(delta.x * t + begin.x) * q, (delta.y * t + begin.y) * q,
                              (delta.z * t + begin.z) * q, (delta.w * t + begin.w) * q};
  }
}

// --- The walk

void TRenderCPU::DrawSpan(EDGE* span, int y, FS_DATA* fs) {
  _RefreshTargets();
  if (span->Delta.Slots[0].x == 0.0 || y < 0 || y >= m_Height) {
    return;
  }
  int first = 0;
  int last = 0;
  if (!PixelRange(span->Begin->Slots[0].x + 0.5, span->End->Slots[0].x, m_Width, &first, &last)) {
    return;
  }
  if (TKernelCounters* const counters = ActiveKernelCounters()) {
    counters->StartRow();
    counters->Add(TKernel::Reference, last - first + 1);
  }
  _WalkSpan(*span, y, first, last, fs);
}

// The reference walker: right for every state and every shader, pixel by pixel from left to right.
void TRenderCPU::_WalkSpan(const EDGE& span, int y, int first, int last, FS_DATA* fs) {
  // Where a target ends within the row, its pixels from there on have no address.
  TSpanTarget color(_TargetPixel(m_Targets.Color, first, y), m_Targets.Color.Step,
                    _TargetEnd(m_Targets.Color, first, y));
  TSpanTarget depth(_DepthPixel(first, y), sizeof(float), _TargetEnd(m_Targets.Depth, first, y));
  TSpanTarget stencil(_StencilPixel(first, y), 1, _TargetEnd(m_Targets.Stencil, first, y));
  const double beginX = span.Begin->Slots[0].x;
  const double deltaX = span.Delta.Slots[0].x;
  const double beginZ = span.Begin->Slots[0].z;
  const double deltaZ = span.Delta.Slots[0].z;

  const auto drawPixel = [&](int x, unsigned char* colorAt, unsigned char* depthAt,
                             unsigned char* stencilAt) {
    const double t = (x - beginX) / deltaX;
    if (t < 0.0 || t >= 1.0 || !_PassesStencil(stencilAt)) {
      return;
    }
    if (!m_CalcDepth) {
      fs->Depth = static_cast<float>(deltaZ * t + beginZ);
      if (m_PolygonOffsetFill) {
        fs->Depth += m_PolygonOffsetFactor;
      }
      if (!_PassesDepth(depthAt, fs->Depth, stencilAt)) {
        return;
      }
    }
    _InterpolateFragment(span, t);
    fs->X = x;
    if (!m_FragmentShader->Execute(&m_VarFragment, fs)) {
      return;
    }
    if (m_CalcDepth && !_PassesDepth(depthAt, fs->Depth, stencilAt)) {
      return;
    }
    if (depthAt != nullptr && m_DepthMask) {
      StoreFloat(depthAt, fs->Depth);
    }
    _RunStencil(m_StencilZPassOp, stencilAt);
    if (colorAt != nullptr) {
      _WriteColor(colorAt, fs->Color);
    }
  };

  for (int x = first; x <= last; ++x) {
    drawPixel(x, color.Next(x), depth.Next(x), stencil.Next(x));
  }
}

} // namespace Zx3D
