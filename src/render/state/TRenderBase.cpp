#include <ZxCore3D/render/TRenderBase.h>

namespace Zx3D {

TRenderBase::~TRenderBase() = default;

} // namespace Zx3D
