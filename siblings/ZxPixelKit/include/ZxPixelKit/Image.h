#pragma once

#include <string>

#include <ZxPixelKit/DATASURFACE.h>
#include <ZxPixelKit/Export.h>

class TDataSurface;
class TZxMessage;
class TZxStream;

/// What a caller may say about an image file; passed through where it is not read.
struct TSaveImageHint {
  /// PNG compression effort, 0 (none) to 9 (smallest); -1 leaves it to the library.
  int Compression = -1;
  /// JPEG quality, 1 (smallest) to 100 (nearly exact); any other number stands for 95.
  int Quality = -1;
};

/// The greatest number of pixels that `LoadImage` decodes: an image whose header promises more is
/// refused before anything of its pixels is read or allocated.
constexpr unsigned long ZxMaxImagePixels = 1ul << 28;

/// Loads an image file: PNG, JPEG, BMP, TGA, PNM (PBM, PGM and PPM) or Radiance HDR, told by its
/// contents and, for TGA, which has no mark, by a header that makes sense.
///
/// `out` receives a record with tight rows, row 0 being the bottom row of the picture, in a block
/// from `AllocateSurfaceBlock` that the caller owns (`FreeDataSurfaceData`). 8-bit files give
/// `DATA_TYPE_UINT8`, 16-bit files `DATA_TYPE_UINT16` in the processor's byte order, HDR
/// `DATA_TYPE_FLOAT`; one to four channels as in the file (luminance, luminance and alpha, RGB,
/// RGBA), palettes and transparent colours expanded, four-colour JPEG turned into RGB.
///
/// False, leaving `*out` as it was and nothing allocated, when the file can't be read, is damaged
/// or truncated, promises more than `ZxMaxImagePixels`, or promises more pixels than its bytes can
/// code. `hint` is not read and may be null.
///
/// While it works it takes, beside the result: the file's bytes and up to half as many more, the
/// picture a second time, a byte a pixel for a packed BMP, two bytes a sample for a JPEG in several
/// scans, and less than 1 MiB for the decoder.
ZX_PIXELKIT_API bool LoadImage(const std::string& name, TSaveImageHint* hint, DATASURFACE* out);

/// The same from the bytes between a stream's position and its end. The stream is read until it
/// gives no more, unless its first bytes are of no known kind; false for a null stream and one
/// whose `operator bool` is false. What its `Read` throws passes through.
ZX_PIXELKIT_API bool LoadImage(TZxStream* stream, TSaveImageHint* hint, DATASURFACE* out);

/// The forms that can say why. When the result is false, `*reason` becomes a phrase without a full
/// stop, fit to stand behind the name of the file and a colon: "No such file or directory", "of no
/// known image kind", "ends inside its picture". A result of true leaves it alone, and it may be
/// null.
ZX_PIXELKIT_API bool LoadImage(const std::string& name, TSaveImageHint* hint, DATASURFACE* out,
                               TZxMessage* reason);
ZX_PIXELKIT_API bool LoadImage(TZxStream* stream, TSaveImageHint* hint, DATASURFACE* out,
                               TZxMessage* reason);

/// The forms for a surface that owns its pixels: on success what it held is freed and it owns the
/// picture; otherwise it stays as it was.
ZX_PIXELKIT_API bool LoadImage(const std::string& name, TSaveImageHint* hint, TDataSurface* out,
                               TZxMessage* reason = nullptr);
ZX_PIXELKIT_API bool LoadImage(TZxStream* stream, TSaveImageHint* hint, TDataSurface* out,
                               TZxMessage* reason = nullptr);

/// Saves a surface of 1 to 4 channels, its row 0 as the bottom row of the picture, as the kind that
/// the name's ending tells, whatever the case of its letters:
///
/// - ".png": channels of `DATA_TYPE_UINT8` or `DATA_TYPE_UINT16`, all of them as they are.
/// - ".bmp", ".tga": `DATA_TYPE_UINT8`, all channels. A BMP has three or four: one becomes three
///   equal ones, luminance and alpha become four.
/// - ".jpg", ".jpeg": `DATA_TYPE_UINT8`, grey or RGB, with some loss. Alpha is left out.
/// - ".hdr" (Radiance): `DATA_TYPE_FLOAT`, as RGB with 8 bits a component and a common exponent.
///   Alpha is left out; below 0 and no number become 0.
///
/// False when the name has another ending or none, when the kind can't hold such pixels or so many
/// of them (each says so before the file is touched), and when the file can't be written: a plain
/// file that could not be completed is removed. `hint` may be null.
///
/// While it works, PNG and JPEG take a row of pixels and less than 1 MiB. The others take the whole
/// picture a second time: TGA as it is, BMP with a byte a pixel more and never less than four, HDR
/// with twelve bytes a pixel.
ZX_PIXELKIT_API bool SaveImage(const std::string& name, TSaveImageHint* hint,
                               const DATASURFACE& surface);

/// The form that can say why: when the result is false, `*reason` becomes a phrase that stands
/// behind the file's name and a colon. A result of true leaves it alone, and it may be null.
ZX_PIXELKIT_API bool SaveImage(const std::string& name, TSaveImageHint* hint,
                               const DATASURFACE& surface, TZxMessage* reason);
