#pragma once

/// Marks what ZxBaseKit exports; everything else in the library is hidden.
#define ZX_BASEKIT_API __attribute__((visibility("default")))
