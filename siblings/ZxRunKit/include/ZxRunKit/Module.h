#pragma once

#include <ZxRunKit/Export.h>

/// Brings the library up. Calls are counted; each needs one `Deinit_ZxRunKit`.
ZX_RUNKIT_API void Init_ZxRunKit();

/// Undoes one `Init_ZxRunKit`. Without an open one it does nothing.
ZX_RUNKIT_API void Deinit_ZxRunKit();
