// Rows whose fragments a caller's shader computes: one by one, or all at once where the shader can
// and nobody can tell.
//
// Tested by: tests/render/ShadedRows.cpp (ShadedRows.*, WhichRows.*)

#include <algorithm>
#include <iterator>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/RowShaderCPU.h>

#include <ZxCore3D/render/common/Engine.h>
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

} // namespace

// The first condition that keeps a row from being shaded at once.
TCondition TRenderEngine::SetUpShadedRow() const {
  TDrawState draw;
  SetUpOutput(gl, &draw);
  SetUpDepthStencil(&draw);
  ZX_RETURN_FIRST_UNMET(ZX_SHADED_ROW_CONDITIONS);
}

} // namespace Zx3D
