#include <ZxBaseKit/KeyStrings.h>

namespace zx {

const char s_min[4] = "min";
const char s_max[4] = "max";
const char s_x[2] = "x";
const char s_y[2] = "y";
const char s_z[2] = "z";
const char s_empty[6] = "empty";

} // namespace zx
