#pragma once

#include <locale.h>

#include <ZxRunKit/Export.h>

namespace Zentrix {

/// The "C" locale, for the `_l` functions of the C library. Made on first use, never freed; null in
/// the one case that the C library can't give it.
ZX_RUNKIT_API locale_t CLocale();

} // namespace Zentrix
