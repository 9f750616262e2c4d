#pragma once

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

/// The slots that a face's colours come from: those of the back where the vertex shader has filled
/// such. -1 is no slot.
struct TColorSlots {
  int Primary;
  int Secondary;
};

inline TColorSlots ColorSlotsOf(const TRenderCPU& gl, bool front) {
  return {front || gl.m_VarBackColor < 0 ? gl.m_VarColor : gl.m_VarBackColor,
          front || gl.m_VarBackSecondary < 0 ? gl.m_VarSecondary : gl.m_VarBackSecondary};
}

/// The slots that the standard vertex shader writes: without a texture all live ones but the last,
/// which keeps what was there.
inline int WrittenSlots(const TRenderCPU& gl) {
  return gl.m_VarCount - (gl.m_TexUnits[0].TexEnabled ? 0 : 1);
}

} // namespace Zx3D
