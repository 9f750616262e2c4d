#pragma once

#include <ZxDrawKit/Export.h>

/// Brings the library up. Calls are counted; each needs one `Deinit_ZxDrawKit`.
ZX_DRAWKIT_API void Init_ZxDrawKit();

/// Undoes one `Init_ZxDrawKit`. Without an open one it does nothing.
ZX_DRAWKIT_API void Deinit_ZxDrawKit();
