#pragma once

#include <ZxCore3D/render/ShaderCPU.h>

namespace Zx3D {

/// The fixed-function vertex stage: clip position, lighting by vertex with primary and specular
/// colour of both faces, one texture coordinate. Colours are not clamped here.
class ZX_CORE3D_API TStdVertexShaderCPU : public TVertexShaderCPU {
public:
  TStdVertexShaderCPU() = default;
  ~TStdVertexShaderCPU() override;

  /// 0xFFFFFFFF for every name: the shader reads the fixed current values and has no uniforms.
  unsigned int GetUniformLocation(const char* name) const override;
  unsigned int GetAttribLocation(const char* name) const override;

  /// Fills the slot table by lighting, two-sided lighting and the texture switch of unit 0.
  void Begin() override;
  /// Nothing to do.
  void End() override;
  /// Transforms and lights the current vertex. With `GL_COLOR_MATERIAL` on, the current colour is
  /// written into the materials and stays there.
  void Execute(TRenderCPU::VAR_DATA* v) override;
};

} // namespace Zx3D
