#pragma once

#include <type_traits>

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

/// \name How many there are of each, as the context's members say.
/// \{
inline constexpr unsigned int kLights = std::extent_v<decltype(TRenderCPU::m_Lights)>;
inline constexpr unsigned int kTexUnits = std::extent_v<decltype(TRenderCPU::m_TexUnits)>;
inline constexpr unsigned int kAttribs = std::extent_v<decltype(TRenderCPU::m_CurAttrib)>;
inline constexpr unsigned int kUniformCells = std::extent_v<decltype(TRenderCPU::m_Uniforms)>;
inline constexpr unsigned int kSlots = std::extent_v<decltype(TRenderCPU::VAR_DATA::Slots)>;
/// \}

static_assert(kAttribs == std::extent_v<decltype(TRenderCPU::TVertexArray::Attribs)>);

/// Whether a number, which may be negative, is one of `count`.
constexpr bool IsBelow(int number, unsigned int count) {
  return static_cast<unsigned int>(number) < count;
}

} // namespace Zx3D
