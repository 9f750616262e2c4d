#pragma once

#include <ZxCore3D/ZxCore3D.h>

namespace zx_scene {

/// Cells of uniforms that these shaders read.
enum TUniform : int {
  kCutoffCell = 0, ///< a double: fragments of less alpha are discarded
  kIdCell = 1,     ///< a double: the number of the mesh, or 0 for depth and normal
};

/// The fixed-function fragment stage with the alpha test of glTF: a fragment whose alpha is below
/// "cutoff" is discarded, and any other is opaque.
class TCutoutShader : public Zx3D::TStdFragmentShaderCPU {
public:
  unsigned int GetUniformLocation(const char* name) const override;
  bool Execute(Zx3D::TRenderCPU::VAR_DATA* v, Zx3D::TRenderCPU::FS_DATA* f) override;
};

/// The fixed-function vertex stage with two more slots at the end: the vertex and its normal in the
/// axes of the eye. Lighting must be off, since lit vertices leave too few slots.
class TLayerVertexShader : public Zx3D::TStdVertexShaderCPU {
public:
  void Begin() override;
  void Execute(Zx3D::TRenderCPU::VAR_DATA* v) override;
};

/// Writes measures instead of colours: the distance before the eye along the direction of view and
/// the normal on the side that is seen, or the number "id" where that is not 0. Discards what is
/// less opaque than "cutoff".
class TLayerFragmentShader : public Zx3D::TStdFragmentShaderCPU {
public:
  unsigned int GetUniformLocation(const char* name) const override;
  bool Execute(Zx3D::TRenderCPU::VAR_DATA* v, Zx3D::TRenderCPU::FS_DATA* f) override;
};

} // namespace zx_scene
