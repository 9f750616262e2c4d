#pragma once

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/vec_t_.h>

/// A colour as four bytes.
struct COLORRGBA {
  /// Red, green, blue and alpha, each 0 to 255.
  unsigned char r, g, b, a;
};

/// A colour as four floats; it passes to `Color4fv` unchanged.
struct COLORRGBA_F {
  /// Red, green, blue and alpha; 0 to 1 is what a surface can hold.
  float r, g, b, a;
};

static_assert(sizeof(COLORRGBA) == 4 && sizeof(COLORRGBA_F) == 16);

namespace Zx3D {

/// The weighted colour of a triangle: each channel is `c2 * w.z + (c1 * w.y + c0 * w.x)`, rounded
/// with halves away from zero and clamped to 0 to 255. Alpha is mixed like the others.
ZX_CORE3D_API void mix(COLORRGBA c0, COLORRGBA c1, COLORRGBA c2, const vec_t_<double, 3>& w,
                       COLORRGBA* out);

} // namespace Zx3D
