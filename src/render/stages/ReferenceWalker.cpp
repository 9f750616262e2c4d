// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/SharedMemory.cpp
// (SharedMemory.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/KernelCounters.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/FragmentStages.h>
#include <ZxCore3D/render/stages/RowWalk.h>

namespace Zx3D {

// --- Interpolation

// Fills `m_VarFragment` at t. With perspective every slot is multiplied by q, the position too.
void TRenderEngine::InterpolateFragment(const EDGE& e, double t) {
  gl.Value(e, t, &gl.m_VarFragment);
  if (gl.m_PerspectiveHint != GL_FASTEST) {
    const double q = 1.0 / gl.m_VarFragment.Slots[0].w;
    for (int i = 0; i < gl.m_VarCount; ++i) {
      vec_t_<double, 4>& slot = gl.m_VarFragment.Slots[i];
      slot = {slot.x * q, slot.y * q, slot.z * q, slot.w * q};
    }
  }
}

// --- The walk

void TRenderCPU::DrawSpan(EDGE* span, int y, FS_DATA* fs) {
  if (const TSpanKernels* const kernels = GetSpanKernels()) {
    kernels->ShadeSpan(m_Engine, *span, y, fs);
    return;
  }
  m_Engine->UpdateTargets();
  int first = 0;
  int last = 0;
  if (FindColumns(*this, *span, y, &first, &last)) {
    m_Engine->WalkSpan(*span, y, first, last, fs);
  }
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
  if (TKernelCounters* const counters = ActiveKernelCounters()) {
    counters->StartRow();
    counters->Add(TKernel::Reference, last - first + 1);
  }
  // The addresses of a target's pixels by column; null from where its block ends.
  const auto pixelsOf = [this, first, y](const TTarget& target, std::ptrdiff_t step, bool used) {
    unsigned char* const start = used ? target.At(first, y) : nullptr;
    const int end = target.EndOfSpan(first, y, gl.m_Width);
    return
        [=](int x) { return start != nullptr && x < end ? start + (x - first) * step : nullptr; };
  };
  const auto color = pixelsOf(Targets.Color, Targets.Color.Step, true);
  const auto depth = pixelsOf(Targets.Depth, sizeof(float), true);
  const auto stencil = pixelsOf(Targets.Stencil, 1, gl.m_StencilTest);
  const double beginX = span.Begin->Slots[0].x;
  const double deltaX = span.Delta.Slots[0].x;
  for (int x = first; x <= last; ++x) {
    const double t = (x - beginX) / deltaX;
    if (t >= 0.0 && t < 1.0) {
      RunFragment(gl, depth(x), stencil(x), TSpanFragment{*this, span, fs, color(x), x, t});
    }
  }
}

} // namespace Zx3D
