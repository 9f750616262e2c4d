#pragma once

/// Marks what ZxPixelKit exports; everything else in the library is hidden.
#define ZX_PIXELKIT_API __attribute__((visibility("default")))
