#pragma once

/// Marks what ZxRunKit exports; everything else in the library is hidden.
#define ZX_RUNKIT_API __attribute__((visibility("default")))
