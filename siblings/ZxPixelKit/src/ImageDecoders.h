#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>

#include <ZxPixelKit/DATASURFACE.h>

class TZxMessage;

/// What the dispatch of image files and the decoders hand to each other. Internal.
namespace zx::image {

/// The whole of a file, in memory of somebody else's.
struct TBytesView {
  const std::uint8_t* Data;
  std::size_t Size;
};

struct TFree {
  void operator()(void* block) const noexcept { std::free(block); }
};

/// Why a file was refused, as a phrase that stands behind its name. Of fixed storage, so that a
/// longjmp may leave it behind and exhausted memory can be told.
struct TReason {
  char Text[256] = "";

  /// Notes the phrase. Always false, so that a refusal is one statement.
  bool Refuse(const char* text);

  /// The same with a decoder's own words behind it.
  bool Refuse(const char* text, const char* detail);
};

/// Notes what the C library says of the last error. Always false.
bool RefuseByErrno(TReason* why);

/// Hands a reason on to a caller who may not want it.
void Tell(const TReason& why, TZxMessage* reason);

/// Phrases that several kinds share.
inline constexpr char kOutOfMemory[] = "out of memory";
inline constexpr char kTruncated[] = "ends inside its picture";
inline constexpr char kBadHeader[] = "has a header that makes no sense";

/// A block from `malloc`.
using TBlock = std::unique_ptr<std::uint8_t[], TFree>;

/// A decoded picture as it is stored: tight rows, in the plain orientation the top row first,
/// components in the processor's byte order.
struct TPicture {
  int Width = 0;
  int Height = 0;
  int Channels = 0;
  DATA_TYPE Type = DATA_TYPE_NONE;
  int Orientation = 1; // as EXIF counts them: 1 to 8, 1 being as stored
  TBlock Pixels;
};

/// Whether a header's promise may be believed: both sizes at least 1, at most `ZxMaxImagePixels`
/// pixels, and no more than `fileSize` bytes can code when a byte stands for `pixelsPerByte` pixels
/// at the most. Beyond a small size, a length in a file thus never sizes a block by itself.
bool FitsBudget(std::int64_t width, std::int64_t height, std::uint64_t pixelsPerByte,
                std::size_t fileSize, TReason* why);

/// An unsigned number of 2 or 4 bytes, lowest byte first.
inline std::uint32_t Get16(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[0]) | static_cast<std::uint32_t>(p[1]) << 8;
}
inline std::uint32_t Get32(const std::uint8_t* p) { return Get16(p) | Get16(p + 2) << 16; }

/// Each `Is` looks at the first bytes only; each `Decode` leaves `*out` as it was when it is false,
/// and has noted in `*why` what was wrong.
bool IsPng(TBytesView head);
bool DecodePng(TBytesView file, TPicture* out, TReason* why);

bool IsJpeg(TBytesView head);
bool DecodeJpeg(TBytesView file, TPicture* out, TReason* why);

bool IsBmp(TBytesView head);
bool DecodeBmp(TBytesView file, TPicture* out, TReason* why);

bool IsPnm(TBytesView head);
bool DecodePnm(TBytesView file, TPicture* out, TReason* why);

bool IsHdr(TBytesView head);
bool DecodeHdr(TBytesView file, TPicture* out, TReason* why);

/// TGA has no mark: this holds each field of the header against the values that it can have.
bool IsTga(TBytesView head);
bool DecodeTga(TBytesView file, TPicture* out, TReason* why);

} // namespace zx::image
