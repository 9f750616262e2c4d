#pragma once

/// Everything that ZxDrawKit offers.

#include <ZxDrawKit/Module.h>
#include <ZxDrawKit/TZxGLBitmap.h>
#include <ZxDrawKit/TZxGLSurface.h>
