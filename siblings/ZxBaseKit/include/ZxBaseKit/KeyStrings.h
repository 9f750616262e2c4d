#pragma once

#include <ZxBaseKit/Export.h>

namespace zx {

/// Keys that the family's text files share.
extern ZX_BASEKIT_API const char s_min[4];
extern ZX_BASEKIT_API const char s_max[4];
extern ZX_BASEKIT_API const char s_x[2];
extern ZX_BASEKIT_API const char s_y[2];
extern ZX_BASEKIT_API const char s_z[2];
extern ZX_BASEKIT_API const char s_empty[6];

} // namespace zx
