#pragma once

/// Marks what ZxDrawKit exports; everything else in the library is hidden.
#define ZX_DRAWKIT_API __attribute__((visibility("default")))
