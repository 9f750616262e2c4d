#pragma once

#include <ZxCore3D/render/FragmentOps.h>

namespace Zx3D {

/// The comparisons in the order of their enums from GL_NEVER on.
inline constexpr TRenderCPU::TDepthCompare kDepthCompares[8] = {
    Never1f, Less1f, Equal1f, Lequal1f, Greater1f, NotEqual1f, Gequal1f, Always1f,
};

inline constexpr TRenderCPU::TStencilCompare kStencilCompares[8] = {
    NeverM_1u8,   LessM_1u8,     EqualM_1u8,  LequalM_1u8,
    GreaterM_1u8, NotEqualM_1u8, GequalM_1u8, AlwaysM_1u8,
};

} // namespace Zx3D
