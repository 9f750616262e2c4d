// The library's side of the comparison.

#include <algorithm>

#include <ZxCore3D/ZxCore3D.h>

namespace Zx3D {

void Switch(TRenderCPU& gl, unsigned int cap, bool on) { on ? gl.Enable(cap) : gl.Disable(cap); }

// Depth is written with the test off as well: the mask makes both sides do the same work.
void WriteDepth(TRenderCPU& gl, bool on) { gl.DepthMask(on ? 1 : 0); }

} // namespace Zx3D

#include "Workloads.h"

int main(int argc, char** argv) {
  Zx3D::TRenderCPU gl;
  if (!gl.Create(rivals::kSize, rivals::kSize, nullptr)) {
    return 1;
  }
  return rivals::RunSide(gl, argc, argv);
}
