#pragma once

#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/RowShaderCPU.h>
#include <ZxCore3D/render/ShaderCPU.h>
#include <ZxCore3D/render/TRenderCPU.h>

// Shaders of the caller's own.

namespace fuzz_render {

using Zx3D::TRenderCPU;

/// Keeps no promise but those that the interface cannot check.
class TWildVertexShader : public Zx3D::TVertexShaderCPU {
public:
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  unsigned int GetAttribLocation(const char*) const override { return ~0u; }
  void Begin() override {
    m_Render->m_VarCount = Count;
    m_Render->m_VarColor = Slot;
    m_Render->m_VarSecondary = Slot - 1;
    m_Render->m_VarBackColor = -Slot;
    m_Render->m_VarBackSecondary = Slot * 1000;
    m_Render->m_VarTexCoord = Slot + 1;
  }
  void End() override {}
  void Execute(TRenderCPU::VAR_DATA* v) override {
    for (std::size_t i = 0; i < 8; ++i) {
      (*v)[i] = m_Render->m_CurAttrib[i];
    }
    (*v)[0] = m_Render->m_CurVertex;
  }
  int Count = 3;
  int Slot = 1;
};

/// The colour is slot 1, or slot 0 where there is no other; a fifth of the fragments is discarded.
class TWildFragmentShader : public Zx3D::TFragmentShaderCPU {
public:
  explicit TWildFragmentShader(bool calcDepth) : m_CalcDepth(calcDepth) {}
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    const vec_t_<double, 4>& slot = (*v)[m_Render->m_VarCount > 1 ? 1 : 0];
    f->Color = slot;
    if (m_CalcDepth) {
      f->Depth = static_cast<float>(slot.x);
    }
    return (f->X + f->Y) % 5 != 0;
  }
  bool IsCalcDepth() const override { return m_CalcDepth; }

private:
  bool m_CalcDepth;
};

/// The same by rows, as far as which of its two forms runs cannot be told.
class TWildRowShader : public Zx3D::TRowFragmentShaderCPU {
public:
  explicit TWildRowShader(bool calcDepth) : m_CalcDepth(calcDepth) {}
  unsigned int GetUniformLocation(const char*) const override { return ~0u; }
  void Begin() override {}
  void End() override {}
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    if (IsDiscarded(f->X, f->Y)) {
      return false;
    }
    const vec_t_<double, 4>& slot = (*v)[m_Render->m_VarCount > 1 ? 1 : 0];
    f->Color = f->FrontFacing ? slot : vec_t_<double, 4>{slot.w, slot.z, slot.y, slot.x};
    if (m_CalcDepth) {
      f->Depth = static_cast<float>(slot.x);
    }
    return true;
  }
  void ExecuteRow(const Zx3D::FS_ROW& row) override {
    const double* const* slot = row.Slots[m_Render->m_VarCount > 1 ? 1 : 0];
    for (int i = 0; i < row.Count; ++i) {
      row.Keep[i] = !IsDiscarded(row.X[i], row.Y);
      if (!row.Keep[i]) {
        continue;
      }
      for (int c = 0; c < 4; ++c) {
        row.Color[c][i] = slot[row.FrontFacing ? c : 3 - c][i];
      }
      if (m_CalcDepth) {
        row.Depth[i] = static_cast<float>(slot[0][i]);
      }
    }
  }
  bool IsCalcDepth() const override { return m_CalcDepth; }

private:
  static bool IsDiscarded(int x, int y) { return (x * 3 + y) % 7 == 0; }

  bool m_CalcDepth;
};

} // namespace fuzz_render
