#pragma once

#include <ZxBaseKit/TRef.h>

#include <ZxCore3D/types/Export.h>

namespace Zx3D {

class TVertexShaderCPU;
class TFragmentShaderCPU;

/// What `SetProgram` installs.
class ZX_CORE3D_API TProgram : public zx::TRef {
public:
  TProgram() = default;
  ~TProgram() override;

  /// A location by name; 0xFFFFFFFF if there is none.
  virtual unsigned int GetAttribLocation(const char* name) const = 0;
  virtual unsigned int GetUniformLocation(const char* name) const = 0;
  virtual unsigned int GetSubroutineIndex(unsigned int shadertype, const char* name) const = 0;
};

/// A pair of shaders, either of which may be missing: the context then runs its standard one.
///
/// A context reads the pair when the program is installed; changing an installed program changes
/// nothing until the next `SetProgram` of another one.
class ZX_CORE3D_API TProgramCPU : public TProgram {
public:
  TProgramCPU() = default;
  ~TProgramCPU() override;
  TProgramCPU(const TProgramCPU&) = delete;
  TProgramCPU& operator=(const TProgramCPU&) = delete;

  /// Holds a shader by a reference of its own; null takes the held one out.
  void SetShaderV(TVertexShaderCPU* shader);
  void SetShaderF(TFragmentShaderCPU* shader);

  /// The held shader, without a reference.
  TVertexShaderCPU* GetShaderV() const { return m_ShaderV; }
  TFragmentShaderCPU* GetShaderF() const { return m_ShaderF; }

  /// The vertex shader's answer.
  unsigned int GetAttribLocation(const char* name) const override;

  /// The vertex shader's answer if it knows the name, otherwise the fragment shader's.
  unsigned int GetUniformLocation(const char* name) const override;

  /// 0xFFFFFFFF: there are no subroutines.
  unsigned int GetSubroutineIndex(unsigned int shadertype, const char* name) const override;

  TVertexShaderCPU* m_ShaderV = nullptr;   ///< one reference held; null for the standard one
  TFragmentShaderCPU* m_ShaderF = nullptr; ///< one reference held; null for the standard one
};

} // namespace Zx3D
