// Rows whose fragments a caller's shader computes: one by one, or all at once where the shader can
// and nobody can tell.
//
// Tested by: tests/render/ShadedRows.cpp (ShadedRows.*, WhichRows.*)

#include <algorithm>
#include <cmath>
#include <iterator>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/RowShaderCPU.h>

#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/KernelCounters.h>
#include <ZxCore3D/render/common/SurfaceBlock.h>
#include <ZxCore3D/render/kernels/SpanJob.h>

namespace Zx3D {

namespace {

bool IsKnownWrite(TRenderCPU::TPixelWrite write) {
  const auto known = {SetValue1f, SetValue1d, SetValue4f, SetValue4d};
  return write == nullptr || std::find(known.begin(), known.end(), write) != known.end();
}

// Whether a shader that samples any unit could read what a row writes.
bool AnyTextureIsTarget(const TRenderCPU& gl, const TTargets& targets) {
  return std::any_of(std::begin(gl.m_TexUnits), std::end(gl.m_TexUnits), [&](const auto& unit) {
    const DATASURFACE* const texture = unit.Sampler.m_Surface;
    return texture != nullptr && SharesMemory(*texture, targets);
  });
}

// Leaves those columns of a row that are covered, with t = (x - begin) / delta from 0 to below 1:
// differences and quotients are rounded in order, so that they are consecutive.
//
// With delta above 0, t is below 0 exactly if the difference is, unless the quotient underflows; it
// is 1 or above exactly if the difference is not below delta, since the smaller of two doubles over
// the greater never rounds to 1. A difference that is not 0 is 2^-53 or more, or at column 0 the
// magnitude of begin. A row of a triangle has at most one such column at each side: the first of
// each is found without a branch, which could not be predicted.
void TrimToCovered(const TRenderCPU::EDGE& span, int* from, int* to) {
  const double begin = span.Begin->Slots[0].x;
  const double delta = span.Delta.Slots[0].x;
  if (delta > 0.0 && delta < kMaxWindow && (std::fabs(begin) > kMinSteadyW || begin == 0.0)) {
    *from += *from - begin < 0.0 ? 1 : 0;
    *to -= *to - begin >= delta ? 1 : 0;
    while (*from <= *to && *from - begin < 0.0) {
      ++*from;
    }
    while (*from <= *to && *to - begin >= delta) {
      --*to;
    }
    return;
  }
  const auto covers = [begin, delta](int x) {
    const double t = (x - begin) / delta;
    return t >= 0.0 && t < 1.0;
  };
  while (*from <= *to && !covers(*from)) {
    ++*from;
  }
  while (*from <= *to && !covers(*to)) {
    --*to;
  }
}

} // namespace

// The first condition that keeps a row from being shaded at once.
TCondition TRenderEngine::SetUpShadedRow() const {
  TDrawState draw;
  SetUpOutput(gl, &draw);
  SetUpDepthStencil(&draw);
  ZX_RETURN_FIRST_UNMET(ZX_SHADED_ROW_CONDITIONS);
}

// Gives a row to the kernels of the instruction set; false if there are none, or a target has no
// address for all of its pixels.
bool TRenderEngine::ShadeSpan(const EDGE& span, int y, int first, int last, FS_DATA* fs) {
  const TSpanKernels* const kernels = GetSpanKernels();
  const auto holds = [&](const TTarget& target) {
    return target.At(first, y) != nullptr && target.EndOfSpan(first, y, gl.m_Width) > last;
  };
  const bool stencil = StencilPixel(first, y) != nullptr;
  if (kernels == nullptr || !holds(Targets.Color) || !holds(Targets.Depth) ||
      (stencil && !holds(Targets.Stencil))) {
    return false;
  }
  int from = first;
  int to = last;
  TrimToCovered(span, &from, &to);
  const int left = from - first; // addresses follow from that of the row's first pixel
  const TShadedSpan row = {gl,
                           span,
                           fs,
                           from,
                           std::max(to - from + 1, 0),
                           Targets.Color.At(first, y) + left * Targets.Color.Step,
                           Targets.Color.Step,
                           DepthPixel(first, y) + left * Targets.Depth.Step,
                           stencil ? StencilPixel(first, y) + left : nullptr};
  TKernelCounters* const counters = ActiveKernelCounters();
  const bool atOnce = RowShader != nullptr && Meets(counters, SetUpShadedRow());
  if (counters != nullptr) {
    counters->StartRow();
    counters->Add(atOnce ? TKernel::ShadedRows : TKernel::Reference, last - first + 1);
  }
  if (atOnce) {
    kernels->ShadeRow(row, RowShader, Row());
  } else {
    kernels->ShadeSpan(row);
  }
  return true;
}

} // namespace Zx3D
