#pragma once

#include <algorithm>
#include <cstddef>

#include <ZxCore3D/render/TRenderCPU.h>

namespace Zx3D {

/// Where the pixels of a surface are. Strides and sizes are in bytes.
struct TTarget {
  unsigned char* Data;
  std::ptrdiff_t PixelStride;
  std::ptrdiff_t RowStride;
  std::ptrdiff_t Step;      ///< from pixel to pixel within a span
  std::ptrdiff_t WriteSize; ///< what a pixel's write touches
  std::ptrdiff_t Size;      ///< of the block
  bool Fits;                ///< every pixel of the context lies inside the block

  std::ptrdiff_t OffsetOf(int x, int y) const { return x * PixelStride + y * RowStride; }

  /// The address of a pixel; null for one that the block does not hold.
  unsigned char* At(int x, int y) const {
    const std::ptrdiff_t offset = OffsetOf(x, y);
    const bool holds = Fits || (Data != nullptr && offset >= 0 && offset <= Size - WriteSize);
    return holds ? Data + offset : nullptr;
  }

  /// The column at which a span from (x, y) on leaves the block, or the `width` of the context.
  int EndOfSpan(int x, int y, int width) const {
    if (Fits) {
      return width;
    }
    if (At(x, y) == nullptr || Step <= 0) {
      return x;
    }
    const std::ptrdiff_t pixels = (Size - WriteSize - OffsetOf(x, y)) / Step + 1;
    return static_cast<int>(std::min<std::ptrdiff_t>(x + pixels, width));
  }
};

/// What the place of the targets follows from, beside the records of the surfaces.
struct TTargetSource {
  const DATASURFACE* Surfaces[3]; ///< colour or draw buffer, depth, stencil
  int Width;                      ///< of the context
  int Height;
  bool DrawBuffer;               ///< whether the first is one
  TRenderCPU::TPixelWrite Write; ///< its writer
};

/// What drawing goes to, as `UpdateTargets` measured it.
struct TTargets {
  TTargetSource Source;
  DATASURFACE Records[3]; ///< of the surfaces, when they were measured
  TTarget Color;
  TTarget Depth;
  TTarget Stencil;
  bool Kernels; ///< all fit, are aligned and apart: many pixels may be drawn at a time
};

/// Whether texels of a texture share memory with a target.
bool SharesMemory(const DATASURFACE& texture, const TTargets& targets);

} // namespace Zx3D
