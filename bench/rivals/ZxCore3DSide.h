#pragma once

#include <ZxCore3D/ZxCore3D.h>

namespace Zx3D {

inline void Switch(TRenderCPU& gl, unsigned int cap, bool on) {
  on ? gl.Enable(cap) : gl.Disable(cap);
}

/// Depth is written with the test off as well: the mask makes both sides do the same work.
inline void WriteDepth(TRenderCPU& gl, bool on) { gl.DepthMask(on ? 1 : 0); }

} // namespace Zx3D

#include "ShaderWorkloads.h" // needs the two above
#include "Workloads.h"

namespace rivals {

/// The variants of the library: those that both sides draw, and those of caller-written shaders.
inline void ListAll(TScene<Zx3D::TRenderCPU>& scene) {
  ListWorkloads(scene);
  ListShaders(scene);
}

} // namespace rivals
