#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include <ZxPixelKit/DATASURFACE.h>

namespace Zx3D {

/// Bytes of a surface's own block: what its record says, or at least what its size and strides
/// need, for a record that was filled by hand without the former.
inline std::ptrdiff_t BlockSize(const DATASURFACE& surface) {
  const std::ptrdiff_t geometry = std::ptrdiff_t{surface.Height - 1} * surface.RowStride +
                                  std::ptrdiff_t{surface.Width} * surface.PixelStride;
  return std::max(static_cast<std::ptrdiff_t>(surface.DataSize), geometry);
}

/// Addresses from `Begin` up to `End`; none if they are the same.
struct TBlock {
  std::uintptr_t Begin;
  std::uintptr_t End;

  bool Overlaps(const TBlock& other) const { return Begin < other.End && other.Begin < End; }
};

/// Where a surface's pixels lie, whichever way its rows run, and `slack` bytes after them.
inline TBlock BlockOf(const DATASURFACE& surface, std::ptrdiff_t slack = 0) {
  if (surface.Data == nullptr || surface.Height < 1) {
    return {0, 0};
  }
  const std::ptrdiff_t lastRow = std::ptrdiff_t{surface.Height - 1} * surface.RowStride;
  const std::ptrdiff_t row = std::ptrdiff_t{surface.Width} * surface.PixelStride;
  const auto data = reinterpret_cast<std::uintptr_t>(surface.Data);
  const auto at = [data](std::ptrdiff_t offset) {
    return data + static_cast<std::uintptr_t>(offset);
  };
  return {at(std::min<std::ptrdiff_t>(lastRow, 0) + std::min<std::ptrdiff_t>(row, 0)),
          at(std::max(BlockSize(surface), row) + slack)};
}

} // namespace Zx3D
