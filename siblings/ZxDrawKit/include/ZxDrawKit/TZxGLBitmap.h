#pragma once

/// A one-bit image for `Bitmap`: rows from the bottom up, each padded to whole bytes, the most
/// significant bit leftmost. The record owns nothing.
struct TZxGLBitmap {
  int Width = 0;
  int Height = 0;
  float OriginX = 0.0f;
  float OriginY = 0.0f;
  const unsigned char* Data = nullptr;
};
