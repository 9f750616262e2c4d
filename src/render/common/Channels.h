#pragma once

#include <cstddef>

namespace Zx3D {

/// Bytes of a pixel of the colour surface: red, green, blue, alpha.
inline constexpr std::size_t kPixelBytes = 4;

/// The colour mask that writes all of them; bit i is channel i.
inline constexpr unsigned int kAllChannels = 15;

} // namespace Zx3D
