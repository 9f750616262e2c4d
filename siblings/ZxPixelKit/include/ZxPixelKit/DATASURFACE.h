#pragma once

#include <cstdint>

/// A value's type as one packed word. Bits 0 to 3 are the base code below, bits 5 to 7 the
/// component count minus 1, bit 8 the array flag. Surfaces use plain base codes only.
enum DATA_TYPE : std::uint32_t {
  DATA_TYPE_NONE = 0,
  DATA_TYPE_BOOL = 1,
  DATA_TYPE_INT8 = 2,
  DATA_TYPE_UINT8 = 3,
  DATA_TYPE_INT16 = 4,
  DATA_TYPE_UINT16 = 5,
  DATA_TYPE_INT32 = 6,
  DATA_TYPE_UINT32 = 7,
  DATA_TYPE_INT64 = 8,
  DATA_TYPE_UINT64 = 9,
  DATA_TYPE_FLOAT = 10,
  DATA_TYPE_DOUBLE = 11,
  DATA_TYPE_RESERVED8 = 12,
  DATA_TYPE_RESERVED16 = 13,
  DATA_TYPE_REF = 14,
  DATA_TYPE_STRING = 15,
};

/// What a surface's components mean.
enum DATA_FORMAT : std::uint32_t {
  DATA_FORMAT_NONE = 0,
  DATA_FORMAT_LUMINANCE = 1,
  DATA_FORMAT_LUMINANCE_ALPHA = 2,
  DATA_FORMAT_RED = 3,
  DATA_FORMAT_RG = 4,
  DATA_FORMAT_RGB = 5,
  DATA_FORMAT_RGBA = 6,
  DATA_FORMAT_DEPTH = 13,
  DATA_FORMAT_STENCIL = 14,
};

/// A raster in memory, as a plain record that owns nothing by itself. The pixel at column x and row
/// y starts at `Data + x * PixelStride + y * RowStride`; row 0 is the bottom row.
struct DATASURFACE {
  std::int32_t Width;       ///< columns
  std::int32_t Height;      ///< rows
  std::int32_t Depth;       ///< slices, 1 for an image
  std::int32_t PixelStride; ///< bytes from one pixel to the next
  std::int32_t RowStride;   ///< bytes from one row to the next
  std::int32_t SliceStride; ///< bytes from one slice to the next
  DATA_FORMAT Format;       ///< what the components mean
  DATA_TYPE Type;           ///< of a component
  std::uint8_t Channels;    ///< components of a pixel
  std::uint8_t* Data;       ///< the first pixel of row 0, or null
  std::uint64_t DataSize;   ///< bytes that belong to the pixels
};
