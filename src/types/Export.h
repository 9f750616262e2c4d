#pragma once

/// Marks what ZxCore3D exports; everything else in the library is hidden.
#define ZX_CORE3D_API __attribute__((visibility("default")))
