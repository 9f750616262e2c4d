// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/SharedMemory.cpp
// (SharedMemory.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Engine.h>

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

void TRenderEngine::RunStencil(TStencilFunction operation, unsigned char* stencil) {
  if (stencil != nullptr) {
    operation(stencil, static_cast<unsigned char>(gl.m_StencilRef),
              static_cast<unsigned char>(gl.m_StencilWriteMask));
  }
}

bool TRenderEngine::PassesStencil(unsigned char* stencil) {
  const unsigned char value = stencil != nullptr ? *stencil : 0;
  if (gl.m_StencilTest && !gl.m_StencilCompare(static_cast<unsigned char>(gl.m_StencilRef), value,
                                               static_cast<unsigned char>(gl.m_StencilValueMask))) {
    RunStencil(gl.m_StencilFailOp, stencil);
    return false;
  }
  return true;
}

bool TRenderEngine::PassesDepth(const unsigned char* depth, float fragment,
                                unsigned char* stencil) {
  if (depth != nullptr && gl.m_DepthTest && !gl.m_DepthCompare(fragment, LoadFloat(depth))) {
    RunStencil(gl.m_StencilZFailOp, stencil);
    return false;
  }
  return true;
}

// Fills `m_VarFragment` at t. With perspective every slot is multiplied by q, the position too.
void TRenderEngine::InterpolateFragment(const EDGE& e, double t) {
  if (gl.m_PerspectiveHint == GL_FASTEST) {
    gl.Value(e, t, &gl.m_VarFragment);
    return;
  }
  const double q = 1.0 / (e.Delta.Slots[0].w * t + e.Begin->Slots[0].w);
  for (int i = 0; i < gl.m_VarCount; ++i) {
    const vec_t_<double, 4>& delta = e.Delta.Slots[i];
    const vec_t_<double, 4>& begin = e.Begin->Slots[i];
    gl.m_VarFragment.Slots[i] = {(delta.x * t + begin.x) * q, (delta.y * t + begin.y) * q,
                                 (delta.z * t + begin.z) * q, (delta.w * t + begin.w) * q};
  }
}

// --- The walk

void TRenderCPU::DrawSpan(EDGE* span, int y, FS_DATA* fs) {
  m_Engine->RefreshTargets();
  if (span->Delta.Slots[0].x == 0.0 || y < 0 || y >= m_Height) {
    return;
  }
  int first = 0;
  int last = 0;
  if (!PixelRange(span->Begin->Slots[0].x + 0.5, span->End->Slots[0].x, m_Width, &first, &last)) {
    return;
  }
  m_Engine->WalkSpan(*span, y, first, last, fs);
}

// The reference walker: right for every state and every shader, pixel by pixel from left to right.
void TRenderEngine::WalkSpan(const EDGE& span, int y, int first, int last, FS_DATA* fs) {
  // Where a target ends within the row, its pixels from there on have no address.
  TSpanTarget color(TargetPixel(Targets.Color, first, y), Targets.Color.Step,
                    TargetEnd(Targets.Color, first, y));
  TSpanTarget depth(DepthPixel(first, y), sizeof(float), TargetEnd(Targets.Depth, first, y));
  TSpanTarget stencil(StencilPixel(first, y), 1, TargetEnd(Targets.Stencil, first, y));
  const double beginX = span.Begin->Slots[0].x;
  const double deltaX = span.Delta.Slots[0].x;
  const double beginZ = span.Begin->Slots[0].z;
  const double deltaZ = span.Delta.Slots[0].z;

  const auto drawPixel = [&](int x, unsigned char* colorAt, unsigned char* depthAt,
                             unsigned char* stencilAt) {
    const double t = (x - beginX) / deltaX;
    if (t < 0.0 || t >= 1.0 || !PassesStencil(stencilAt)) {
      return;
    }
    if (!gl.m_CalcDepth) {
      fs->Depth = static_cast<float>(deltaZ * t + beginZ);
      if (gl.m_PolygonOffsetFill) {
        fs->Depth += gl.m_PolygonOffsetFactor;
      }
      if (!PassesDepth(depthAt, fs->Depth, stencilAt)) {
        return;
      }
    }
    InterpolateFragment(span, t);
    fs->X = x;
    if (!gl.m_FragmentShader->Execute(&gl.m_VarFragment, fs)) {
      return;
    }
    if (gl.m_CalcDepth && !PassesDepth(depthAt, fs->Depth, stencilAt)) {
      return;
    }
    if (depthAt != nullptr && gl.m_DepthMask) {
      StoreFloat(depthAt, fs->Depth);
    }
    RunStencil(gl.m_StencilZPassOp, stencilAt);
    if (colorAt != nullptr) {
      WriteColor(colorAt, fs->Color);
    }
  };

  for (int x = first; x <= last; ++x) {
    drawPixel(x, color.Next(x), depth.Next(x), stencil.Next(x));
  }
}

} // namespace Zx3D
