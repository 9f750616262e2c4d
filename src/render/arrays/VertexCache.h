#pragma once

#include <cstddef>
#include <cstdint>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/LineWalk.h>

namespace Zx3D {

/// Shaded vertices of the draw call at hand, by element: an index that comes again need not be
/// shaded again. Made by `TRenderCPU::Create`.
struct TVertexCache {
  static constexpr std::size_t kSize = 1024;

  std::uint64_t Tags[kSize]; ///< draw number and element; never 0 for a vertex that is there
  TRenderCPU::VAR_DATA Vertices[kSize];
  std::uint32_t Draw;

  // --- The vertices of a batch in the window; those of separate triangles by turns
  TRenderCPU::VAR_DATA Corners[TVertexBatch::kMost];
  TRenderCPU::VAR_DATA Scaled[TVertexBatch::kMost]; ///< for perspective, where w is not 1
  /// Those of them that are interpolated; null: not filled yet.
  const vec_t_<double, 4>* Slots[TVertexBatch::kMost];

  // --- Lines of a batch that are set up, to be drawn together
  TPrimitive Lines[TVertexBatch::kMost / 2];
  TLineWalk Walks[TVertexBatch::kMost / 2];
};

} // namespace Zx3D
