#pragma once

#include <algorithm>
#include <cstddef>

#include <ZxPixelKit/DATASURFACE.h>

namespace Zx3D {

/// Bytes of a surface's own block: what its record says, or at least what its size and strides
/// need, for a record that was filled by hand without the former.
inline std::ptrdiff_t BlockSize(const DATASURFACE& surface) {
  const std::ptrdiff_t geometry = std::ptrdiff_t{surface.Height - 1} * surface.RowStride +
                                  std::ptrdiff_t{surface.Width} * surface.PixelStride;
  return std::max(static_cast<std::ptrdiff_t>(surface.DataSize), geometry);
}

} // namespace Zx3D
