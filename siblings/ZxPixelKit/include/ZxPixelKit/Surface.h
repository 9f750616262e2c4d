#pragma once

#include <cstdint>

#include <ZxPixelKit/DATASURFACE.h>
#include <ZxPixelKit/Export.h>

/// Bytes of one component of a base type (1, 2, 4 or 8; 16 for the reserved code 13); 0 for a type
/// without a size: none, reference, string, and codes with flags.
ZX_PIXELKIT_API unsigned long GetTypeSize(DATA_TYPE type);

/// Bytes of one component of an OpenGL type enum; 0 if it has no mapping.
ZX_PIXELKIT_API unsigned long GetTypeSize(unsigned int glType);

/// The `DATA_TYPE` of an OpenGL type enum (GL_BYTE to GL_UNSIGNED_INT, GL_FLOAT, GL_DOUBLE);
/// `DATA_TYPE_NONE` if it has none.
ZX_PIXELKIT_API DATA_TYPE DataTypeFromGL(unsigned int glType);

/// The `DATA_FORMAT` of an OpenGL pixel format (GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RED, GL_RG,
/// GL_RGB, GL_RGBA); `DATA_FORMAT_NONE` if it has none.
ZX_PIXELKIT_API DATA_FORMAT DataFormatFromGL(unsigned int glFormat);

/// Components of a pixel of an OpenGL format: one for GL_LUMINANCE and GL_RED, two for
/// GL_LUMINANCE_ALPHA and GL_RG, three for GL_RGB, four for GL_RGBA; 0 if it has no mapping.
ZX_PIXELKIT_API int GetFormatComponents(unsigned int glFormat);

/// Allocates a block for `dataSize` bytes of pixels and, behind them, zeroed slack of `rowStride +
/// pixelStride` bytes. The pixels are zeroed too. Freed by `free`. Null when the sum is 0,
/// overflows or is above 2^39, or memory is exhausted.
ZX_PIXELKIT_API std::uint8_t* AllocateSurfaceBlock(std::uint64_t dataSize, std::uint64_t rowStride,
                                                   std::uint64_t pixelStride);

/// Frees the block of a surface by `free` and sets all its fields to 0.
ZX_PIXELKIT_API void FreeDataSurfaceData(DATASURFACE& surface);

namespace ds {

/// Sets every pixel to the `size` bytes at `value`. False, with nothing written, when the surface
/// has no pixels, `value` is null, or `size` is not what a pixel has (0, or above the pixel
/// stride).
ZX_PIXELKIT_API bool Fill(const DATASURFACE& surface, const void* value, unsigned long size);

/// Sets `count` values that lie close, from `run` on, to the `size` bytes at `value`, which must
/// not lie among them. Nothing is checked.
ZX_PIXELKIT_API void FillRun(void* run, const void* value, unsigned long size, unsigned long count);

/// Makes `*out` a record over the caller's pixels, with tight rows; nothing is copied or owned.
/// False, with `*out` zeroed, when a size is below 1, `components` is outside 1 to 255, `type` has
/// no size, or a byte count does not fit its field.
ZX_PIXELKIT_API bool Set(DATASURFACE* out, int width, int height, DATA_FORMAT format,
                         DATA_TYPE type, int components, const void* pixels);

/// Makes `*out` a record over the part of `surface` that lies within the rectangle; the strides are
/// those of `surface`, nothing is copied or owned. The rectangle is cut to the surface. False, with
/// `*out` zeroed, when nothing remains.
ZX_PIXELKIT_API bool GetSubSurface(const DATASURFACE& surface, int x, int y, int width, int height,
                                   DATASURFACE* out);

/// Copies the pixels that both surfaces have, from (0, 0) on. The two may lie in one block and
/// overlap in any way: the target then has what the source had before. False, with nothing copied,
/// when type or channel count differ, when either has no pixels, or when surfaces overlap whose
/// strides differ and there is no memory for a tight copy in between, of the pixels that both have.
ZX_PIXELKIT_API bool Copy(const DATASURFACE& from, const DATASURFACE& to);

} // namespace ds
