#pragma once

#include "ImageDecoders.h"

/// What the kinds that stb_image decodes share. Internal.
namespace zx::image {

/// The rest of a file from some position on.
inline TBytesView From(TBytesView file, std::size_t position) {
  return {file.Data + position, file.Size - position};
}

/// Puts a number of 2 or 4 bytes at `to`, lowest byte first.
inline void Put16(std::uint8_t* to, std::uint32_t value) {
  to[0] = static_cast<std::uint8_t>(value);
  to[1] = static_cast<std::uint8_t>(value >> 8);
}
inline void Put32(std::uint8_t* to, std::uint32_t value) {
  Put16(to, value & 0xFFFF);
  Put16(to + 2, value >> 16);
}

/// Decodes, by stb_image, a file that consists of `head`, a header that was checked and made plain,
/// and of `body`, the file's own bytes from some position on, into components of `type`: 8 or 16
/// bits, or float. `pixelsPerByte` is the most pixels that a byte of the body can stand for.
bool DecodeByStb(TBytesView head, TBytesView body, DATA_TYPE type, std::uint64_t pixelsPerByte,
                 TPicture* out, TReason* why);

} // namespace zx::image
