#pragma once

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

/// Base of the stages that a caller can replace. Locations are small integers that a shader hands
/// out by its own rule; 0xFFFFFFFF is no location.
class ZX_CORE3D_API TShaderCPU : public zx::TRef {
public:
  TShaderCPU() = default;
  ~TShaderCPU() override;

  /// The cell of `m_Uniforms` that `name` stands for; 0xFFFFFFFF if there is none.
  virtual unsigned int GetUniformLocation(const char* name) const = 0;

  /// Run at `TRenderCPU::Begin`, the vertex shader's first, and at `TRenderCPU::End`.
  virtual void Begin() = 0;
  virtual void End() = 0;

  /// The context in which the shader is installed; null outside. Not a counted reference. A shader
  /// in two contexts at once has that of the last.
  TRenderCPU* m_Render = nullptr;
};

/// The vertex stage.
///
/// `Begin` must fill the slot table of `*m_Render` (`m_VarColor` and so on) with `m_VarCount`, 1
/// to 8. `Execute` must fill the live slots of its record; slot 0 is the clip-space position.
/// Current values
/// (`m_CurVertex`, `m_CurAttrib`, ...) and uniforms (`m_Uniforms`) are members of `*m_Render`.
class ZX_CORE3D_API TVertexShaderCPU : public TShaderCPU {
public:
  TVertexShaderCPU() = default;
  ~TVertexShaderCPU() override;

  /// Computes one vertex.
  virtual void Execute(TRenderCPU::VAR_DATA* v) = 0;
  /// The generic attribute, 0 to 7, that `name` stands for; 0xFFFFFFFF if there is none.
  virtual unsigned int GetAttribLocation(const char* name) const = 0;
};

/// The fragment stage: called once a fragment, by rows from the bottom and from left to right.
class ZX_CORE3D_API TFragmentShaderCPU : public TShaderCPU {
public:
  TFragmentShaderCPU() = default;
  ~TFragmentShaderCPU() override;

  /// Computes `f->Color` from the interpolated slots, and `f->Depth` if `IsCalcDepth` is true.
  /// False discards the fragment.
  virtual bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) = 0;

  /// Whether `Execute` writes the depth; asked once, when the shader is installed.
  virtual bool IsCalcDepth() const = 0;
};

} // namespace Zx3D
