#pragma once

#include <ZxCore3D/render/ShaderCPU.h>

namespace Zx3D {

/// The fixed-function fragment stage: the face's colour, one texture by unit 0's mode, the specular
/// colour, a clamp to 0 to 1. Fog is not applied.
class ZX_CORE3D_API TStdFragmentShaderCPU : public TFragmentShaderCPU {
public:
  TStdFragmentShaderCPU() = default;
  ~TStdFragmentShaderCPU() override;

  /// 0xFFFFFFFF for every name.
  unsigned int GetUniformLocation(const char* name) const override;
  /// Nothing to do.
  void Begin() override;
  void End() override;

  /// Always true. A NaN passes the clamp.
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override;

  /// False: the interpolated depth stands.
  bool IsCalcDepth() const override;
};

} // namespace Zx3D
