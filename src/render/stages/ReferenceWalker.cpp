// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/SharedMemory.cpp
// (SharedMemory.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/KernelCounters.h>
#include <ZxCore3D/render/stages/FragmentStages.h>

namespace Zx3D {

namespace {

// The pixels of one target along a row: their addresses up to a column, null from there on.
struct TSpanTarget {
  unsigned char* First;
  std::ptrdiff_t Step;
  int Count;

  unsigned char* At(int i) const {
    return First != nullptr && i < Count ? First + i * Step : nullptr;
  }
};

} // namespace

// --- Interpolation

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
  m_Engine->UpdateTargets();
  if (span->Delta.Slots[0].x == 0.0 || y < 0 || y >= m_Height) {
    return;
  }
  int first = 0;
  int last = 0;
  if (!PixelRange(span->Begin->Slots[0].x + 0.5, span->End->Slots[0].x, m_Width, &first, &last)) {
    return;
  }
  if (m_Engine->ShadeSpan(*span, y, first, last, fs)) {
    return;
  }
  if (TKernelCounters* const counters = ActiveKernelCounters()) {
    counters->StartRow();
    counters->Add(TKernel::Reference, last - first + 1);
  }
  m_Engine->WalkSpan(*span, y, first, last, fs);
}

namespace {

// A fragment of a span. `Record` keeps the row that its caller set.
struct TSpanFragment {
  TRenderEngine& Engine;
  const TRenderCPU::EDGE& Span;
  TRenderCPU::FS_DATA* Record;
  unsigned char* Color;
  int X;
  double T; ///< position between the span's ends

  float Depth() const { return Record->Depth; }
  void SetDepth() { Record->Depth = SpanDepth(Engine.gl, Span, T); }
  bool Shade() {
    TRenderCPU& gl = Engine.gl;
    Engine.InterpolateFragment(Span, T);
    Record->X = X;
    return gl.m_FragmentShader->Execute(&gl.m_VarFragment, Record);
  }
  void WriteColor() {
    if (Color != nullptr) {
      Zx3D::WriteColor(Engine.gl, Color, Record->Color);
    }
  }
};

} // namespace

// The reference walker: right for every state and every shader, pixel by pixel from left to right.
void TRenderEngine::WalkSpan(const EDGE& span, int y, int first, int last, FS_DATA* fs) {
  const auto pixelsOf = [this, first, y](const TTarget& target, std::ptrdiff_t step) {
    return TSpanTarget{target.At(first, y), step, target.EndOfSpan(first, y, gl.m_Width) - first};
  };
  const TSpanTarget color = pixelsOf(Targets.Color, Targets.Color.Step);
  const TSpanTarget depth = pixelsOf(Targets.Depth, sizeof(float));
  const TSpanTarget stencil = gl.m_StencilTest ? pixelsOf(Targets.Stencil, 1) : TSpanTarget{};
  const double beginX = span.Begin->Slots[0].x;
  const double deltaX = span.Delta.Slots[0].x;
  for (int x = first; x <= last; ++x) {
    const int i = x - first;
    const double t = (x - beginX) / deltaX;
    if (t >= 0.0 && t < 1.0) {
      RunFragment(gl, depth.At(i), stencil.At(i),
                  TSpanFragment{*this, span, fs, color.At(i), x, t});
    }
  }
}

} // namespace Zx3D
