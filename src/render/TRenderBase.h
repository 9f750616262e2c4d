#pragma once

#include <ZxCore3D/render/TZxGL.h>

namespace Zx3D {

/// What a context is passed around as. Operations that take one ask by a dynamic cast whether it is
/// a context of their own kind.
class ZX_CORE3D_API TRenderBase : public TZxGL {
public:
  TRenderBase() = default;
  ~TRenderBase() override;
};

} // namespace Zx3D
