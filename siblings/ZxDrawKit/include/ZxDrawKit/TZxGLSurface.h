#pragma once

#include <ZxBaseKit/TRef.h>

#include <ZxDrawKit/Export.h>

/// What a context is made current on. A host derives from it to tie a context to a place of its
/// own; the renderer keeps the pointer and reads nothing through it.
class ZX_DRAWKIT_API TZxGLSurface : public zx::TRef {
public:
  TZxGLSurface() = default;
  ~TZxGLSurface() override;
};
