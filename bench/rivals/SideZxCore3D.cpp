// The library's side of the comparison.

#include "ZxCore3DSide.h"

#include "Side.h"

namespace {

class THost {
public:
  using TGl = Zx3D::TRenderCPU;

  bool Create() { return m_Gl.Create(rivals::kSize, rivals::kSize, nullptr); }

  TGl& Gl() { return m_Gl; }
  unsigned int Error() { return m_Gl.GetError(); }
  // The place of the kernels' counters, once there are any; see Side.h for the lines.
  void ResetCounters() {}
  void PrintCounters() {}
  static void List(rivals::TScene<TGl>& scene) { rivals::ListAll(scene); }

private:
  TGl m_Gl;
};

} // namespace

int main(int argc, char** argv) { return rivals::RunSide<THost>(argc, argv); }
