#pragma once

#include <string>

#include <ZxPixelKit/DATASURFACE.h>
#include <ZxPixelKit/Export.h>

class TZxStream;

/// What a caller may say about an image file; passed through where it is not read.
struct TSaveImageHint {
  /// PNG compression effort, 0 (none) to 9 (smallest); -1 leaves it to the library.
  int Compression = -1;
};

/// The greatest number of pixels that `LoadImage` decodes: an image whose header promises more is
/// refused before anything of its pixels is read or allocated.
constexpr unsigned long ZxMaxImagePixels = 1ul << 28;

/// Loads an image file: PNG, JPEG, BMP, TGA, PNM (PGM, PPM) or Radiance HDR, told by its contents
/// and, for TGA, which has no mark, by everything else failing.
///
/// `out` receives a record with tight rows, row 0 being the bottom row of the picture, in a block
/// from `AllocateSurfaceBlock` that the caller owns (`FreeDataSurfaceData`). 8-bit files give
/// `DATA_TYPE_UINT8`, 16-bit files `DATA_TYPE_UINT16`, HDR `DATA_TYPE_FLOAT`; one to four channels
/// as in the file, palettes expanded.
///
/// False, leaving `*out` as it was and nothing allocated, when the file can't be read, is damaged or
/// truncated, or promises more than `ZxMaxImagePixels`. `hint` is not read and may be null.
ZX_PIXELKIT_API bool LoadImage(const std::string& name, TSaveImageHint* hint, DATASURFACE* out);

/// The same from the bytes between a stream's position and its end.
ZX_PIXELKIT_API bool LoadImage(TZxStream* stream, TSaveImageHint* hint, DATASURFACE* out);

/// Saves a surface of 1 to 4 components of 8 or 16 bits as PNG, its row 0 as the bottom row of the
/// picture. False when the surface can't be stored so or the file can't be written; a file that
/// could not be completed is removed. `hint` may be null.
ZX_PIXELKIT_API bool SaveImage(const std::string& name, TSaveImageHint* hint,
                               const DATASURFACE& surface);
