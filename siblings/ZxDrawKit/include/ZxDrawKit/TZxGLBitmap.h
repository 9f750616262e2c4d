#pragma once

/// A one-bit image for `Bitmap`: rows from the bottom up, each padded to whole bytes, the most
/// significant bit leftmost. The record owns nothing.
struct TZxGLBitmap {
  int Width = 0;        ///< columns
  int Height = 0;       ///< rows
  float OriginX = 0.0f; ///< of the raster position in the image, in pixels from the left
  float OriginY = 0.0f; ///< the same, from below
  const unsigned char* Data = nullptr; ///< the rows
};
