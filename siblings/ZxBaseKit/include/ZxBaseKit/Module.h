#pragma once

#include <ZxBaseKit/Export.h>

/// Brings the library up. Calls are counted; each needs one `Deinit_ZxBaseKit`.
ZX_BASEKIT_API void Init_ZxBaseKit();

/// Undoes one `Init_ZxBaseKit`. Without an open one it does nothing.
ZX_BASEKIT_API void Deinit_ZxBaseKit();
