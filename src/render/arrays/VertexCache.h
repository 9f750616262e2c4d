#pragma once

#include <cstddef>
#include <cstdint>

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

/// Shaded vertices of the draw call at hand, by element: an index that comes again need not be
/// shaded again. Made by `TRenderCPU::Create`.
struct TVertexCache {
  static constexpr std::size_t kSize = 1024;

  std::uint64_t Tags[kSize]; ///< draw number and element; never 0 for a vertex that is there
  TRenderCPU::VAR_DATA Vertices[kSize];
  std::uint8_t Codes[kSize]; ///< of indexed triangles: the planes that a vertex is outside of
  std::uint32_t Draw;
};

} // namespace Zx3D
