#pragma once

#include <ZxPixelKit/Export.h>

/// Brings the library up. Calls are counted; each needs one `Deinit_ZxPixelKit`.
ZX_PIXELKIT_API void Init_ZxPixelKit();

/// Undoes one `Init_ZxPixelKit`. Without an open one it does nothing.
ZX_PIXELKIT_API void Deinit_ZxPixelKit();
