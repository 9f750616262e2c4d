#pragma once

#include <ZxCore3D/render/TRenderCPU.h>
#include <ZxCore3D/render/common/Engine.h>

namespace zx_test {

/// What stands behind a context's private pointer.
Zx3D::TRenderEngine& EngineOf(const Zx3D::TRenderCPU& gl);

// The names in an explicit instantiation are not subject to access checks, so that the pointer to
// the private member can be handed in here.
template <Zx3D::TRenderEngine* Zx3D::TRenderCPU::*kMember> struct TEngineReach {
  friend Zx3D::TRenderEngine& EngineOf(const Zx3D::TRenderCPU& gl) { return *(gl.*kMember); }
};

} // namespace zx_test
