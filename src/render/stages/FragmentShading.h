// Tested by: tests/render/StdFragmentShader.cpp (StdFragmentShader.*)

#pragma once

#include <ZxCore3D/render/ShaderCPU.h>
#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/common/SlotTable.h>

namespace Zx3D {

/// A slot of a record. The slot table may have been filled for another state or by another shader:
/// a slot outside the record reads as zero.
inline const vec_t_<double, 4>& SlotOf(const TRenderCPU::VAR_DATA& v, int slot) {
  static constexpr vec_t_<double, 4> kZero = {0, 0, 0, 0};
  return IsBelow(slot, kSlots) ? v.Slots[slot] : kZero;
}

/// The standard fragment shader without its virtual call where it only limits the colour. Its state
/// is that of the context in which it was installed last.
inline bool ShadeFragment(TFragmentShaderCPU* standard, TRenderCPU::VAR_DATA* v,
                          TRenderCPU::FS_DATA* f) {
  const TRenderCPU& gl = *standard->m_Render;
  if (gl.m_TexUnits[0].TexEnabled || gl.m_Lighting) {
    return standard->Execute(v, f);
  }
  f->Color = Clamped01(SlotOf(*v, ColorSlotsOf(gl, f->FrontFacing).Primary));
  return true;
}

} // namespace Zx3D
