#pragma once

#include <string>

#include <ZxRunKit/Export.h>

namespace Zentrix {

/// printf into a string, of any length. Numbers are written as in the "C" locale, whatever the
/// host's locale is: the point is a point. Wide characters ("%ls", "%lc") are written in the
/// encoding of the host's locale. Empty when `format` is null or the C library refuses it. Raises
/// `std::bad_alloc` when memory is exhausted.
ZX_RUNKIT_API std::string ssprintf(const char* format, ...) __attribute__((format(printf, 1, 2)));

} // namespace Zentrix
