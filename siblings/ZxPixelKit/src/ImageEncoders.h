#pragma once

#include <cstdio>

#include <ZxPixelKit/Image.h>

#include "ImageDecoders.h"

/// What the dispatch of saving and the encoders hand to each other. Internal.
namespace zx::image {

/// Copies row `y` of a surface, counted from the top of the picture, to `to`: `pixelBytes` of each
/// pixel, tight.
void CopyRowFromTop(const DATASURFACE& surface, int y, std::size_t pixelBytes, std::uint8_t* to);

/// Each `Encode` writes a surface that has pixels and a type and channel count as its kind takes
/// them, and notes in `*why` what was wrong when it is false.
bool EncodePng(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint& hint,
               TReason* why);
bool EncodeJpeg(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint& hint,
                TReason* why);
bool EncodeBmp(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint& hint,
               TReason* why);
bool EncodeTga(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint& hint,
               TReason* why);
bool EncodeHdr(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint& hint,
               TReason* why);

} // namespace zx::image
