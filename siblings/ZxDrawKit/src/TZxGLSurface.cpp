#include <ZxDrawKit/TZxGLSurface.h>

TZxGLSurface::~TZxGLSurface() = default;
