#pragma once

#include <cstddef>

#include <ZxPixelKit/DATASURFACE.h>

namespace Zx3D {

/// Where the pixels of a surface are.
struct TTarget {
  unsigned char* Data;
  std::ptrdiff_t PixelStride;
  std::ptrdiff_t RowStride;
  std::ptrdiff_t Step;      ///< bytes from pixel to pixel within a span
  std::ptrdiff_t WriteSize; ///< bytes that a pixel's write touches
  std::ptrdiff_t Size;      ///< bytes of the block
  bool Fits;                ///< every pixel of the context lies inside the block
};

/// What drawing goes to, measured whenever a primitive finds a surface's record changed: an owner
/// may exchange the pixels of a surface at any time.
struct TTargets {
  const DATASURFACE* Surfaces[3]; ///< colour, depth, stencil
  DATASURFACE Records[3];         ///< as they were measured
  TTarget Color;
  TTarget Depth;
  TTarget Stencil;
  bool Kernels; ///< all fit, are aligned and apart: many pixels may be drawn at a time
};

} // namespace Zx3D
