#include <ZxCore3D/render/TZxGL.h>

namespace Zx3D {

TZxGL::~TZxGL() = default;

bool TZxGL::MakeCurrent(TZxGLSurface* surface) {
  if (!DoMakeCurrent(surface != nullptr ? surface : m_Surface)) {
    return false;
  }
  m_Current = true;
  return true;
}

void TZxGL::DoneCurrent() {
  DoDoneCurrent();
  m_Current = false;
}

} // namespace Zx3D
