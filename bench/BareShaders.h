#pragma once

#include <ZxCore3D/ZxCore3D.h>

/// What the shaders of the benchmarks share: next to nothing, so that the pipeline's part is timed.
namespace zx_bench {

using Zx3D::TRenderCPU;

/// A shader that has no uniforms and prepares nothing.
template <class TBase> class TBareShader : public TBase {
public:
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
};

/// Of fragments one by one, or by rows; the depth stays that of the primitive.
template <class TBase = Zx3D::TFragmentShaderCPU> class TBareFragment : public TBareShader<TBase> {
public:
  bool IsCalcDepth() const override { return false; }
};

class TBareVertex : public TBareShader<Zx3D::TVertexShaderCPU> {
public:
  unsigned int GetAttribLocation(const char*) const override { return ~0u; }
};

/// Draws what the record holds.
class TEmptyFragment : public TBareFragment<> {
public:
  bool Execute(TRenderCPU::VAR_DATA*, TRenderCPU::FS_DATA*) override { return true; }
};

} // namespace zx_bench
