#include <ZxCore3D/types/COLORRGBA.h>

#include <cmath>

namespace Zx3D {

static unsigned char MixChannel(unsigned char c0, unsigned char c1, unsigned char c2,
                                const vec_t_<double, 3>& w) {
  const double rounded = std::round(c2 * w.z + (c1 * w.y + c0 * w.x));
  // A NaN is not above 0 and becomes 0.
  if (!(rounded > 0.0)) {
    return 0;
  }
  return rounded > 255.0 ? 255 : static_cast<unsigned char>(rounded);
}

void mix(COLORRGBA c0, COLORRGBA c1, COLORRGBA c2, const vec_t_<double, 3>& w, COLORRGBA* out) {
  out->r = MixChannel(c0.r, c1.r, c2.r, w);
  out->g = MixChannel(c0.g, c1.g, c2.g, w);
  out->b = MixChannel(c0.b, c1.b, c2.b, w);
  out->a = MixChannel(c0.a, c1.a, c2.a, w);
}

} // namespace Zx3D
