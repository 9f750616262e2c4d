#pragma once

#include "ImageDecoders.h"

/// How a stored picture lies, and turning it. Internal.
namespace zx::image {

/// The orientation that EXIF data tell, 1 to 8: where the picture's top left corner is stored and
/// in which direction its rows run. 1, the plain order, when they tell none or are damaged. `tiff`
/// begins with the byte order mark.
int ExifOrientation(TBytesView tiff);

/// How to walk a stored picture in the order in which it is to be seen: the pixel at column x of
/// row y, from the top left, is the stored one of index `First + x * Column + y * Row`.
struct TWalk {
  int Width;
  int Height;
  std::ptrdiff_t First;
  std::ptrdiff_t Column;
  std::ptrdiff_t Row;
};

/// The walk through a picture of `width` by `height` stored pixels in an orientation of 1 to 8.
TWalk WalkOf(int width, int height, int orientation);

} // namespace zx::image
