#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

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

  /// Of the state as it is. A draw buffer stands in the place of the colour surface.
  static TTargetSource Of(const TRenderCPU& gl) {
    return {{gl.m_DrawBuffer != nullptr ? gl.m_DrawBuffer : gl.m_ColorSurface, gl.m_DepthSurface,
             gl.m_StencilSurface},
            gl.m_Width,
            gl.m_Height,
            gl.m_DrawBuffer != nullptr,
            gl.m_PixelWrite};
  }
};

/// What drawing goes to, as `UpdateTargets` measured it.
struct TTargets {
  TTargetSource Source;
  DATASURFACE Records[3]; ///< of the surfaces, when they were measured
  TTarget Color;
  TTarget Depth;
  TTarget Stencil;
  bool Fit;     ///< all of them
  bool Kernels; ///< all fit, are aligned and apart: many pixels may be drawn at a time
};

/// Whether two records are the same, byte by byte.
inline bool IsSameRecord(const DATASURFACE& a, const DATASURFACE& b) {
  constexpr std::size_t kPlaces[] = {0, 16, 32, sizeof(DATASURFACE) - 16};
  static_assert(sizeof(DATASURFACE) >= 48 && sizeof(DATASURFACE) <= 64);
  std::uint64_t differing = 0;
  for (const std::size_t place : kPlaces) {
    std::uint64_t words[2][2]; // of each record, 16 bytes: a vector for the compiler
    std::memcpy(words[0], reinterpret_cast<const unsigned char*>(&a) + place, sizeof words[0]);
    std::memcpy(words[1], reinterpret_cast<const unsigned char*>(&b) + place, sizeof words[1]);
    differing |= (words[0][0] ^ words[1][0]) | (words[0][1] ^ words[1][1]);
  }
  return differing == 0;
}

/// Whether targets are those of the state as it is: in registers alone, since this runs before each
/// primitive, and in line for rows.
[[gnu::always_inline]] inline bool AreCurrent(const TRenderCPU& gl, const TTargets& targets) {
  const TTargetSource source = TTargetSource::Of(gl);
  const TTargetSource& measured = targets.Source;
  const auto isSame = [&](std::size_t i) __attribute__((always_inline)) {
    const DATASURFACE* const surface = source.Surfaces[i];
    return surface == measured.Surfaces[i] &&
           (surface == nullptr || IsSameRecord(*surface, targets.Records[i]));
  };
  return isSame(0) && isSame(1) && isSame(2) && source.Width == measured.Width &&
         source.Height == measured.Height && source.DrawBuffer == measured.DrawBuffer &&
         source.Write == measured.Write;
}

/// Whether texels of a texture share memory with a target.
bool SharesMemory(const DATASURFACE& texture, const TTargets& targets);

} // namespace Zx3D
