// The library's side of the comparison, linked from the renderer's objects: its counters are not
// exported.

#include "ZxCore3DSide.h"

#include <ZxCore3D/render/common/KernelCounters.h>

#include "Side.h"

namespace {

class THost {
public:
  using TGl = Zx3D::TRenderCPU;

  bool Create() { return m_Gl.Create(rivals::kSize, rivals::kSize, nullptr); }

  TGl& Gl() { return m_Gl; }
  unsigned int Error() { return m_Gl.GetError(); }
  void StartCounters() { Zx3D::StartKernelCounters(); }
  void PrintCounters() {
    Zx3D::StopKernelCounters();
    Zx3D::PrintKernelCounters(Zx3D::KernelCounters(), stdout);
  }
  static void List(rivals::TScene<TGl>& scene) { rivals::ListAll(scene); }

private:
  TGl m_Gl;
};

} // namespace

int main(int argc, char** argv) { return rivals::RunSide<THost>(argc, argv); }
