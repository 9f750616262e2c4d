#include "ImageDecoders.h"

#include <algorithm>
#include <csetjmp>
#include <cstring>
#include <limits>

#include <png.h>

#include "ImageOrientation.h"

namespace zx::image {

namespace {

// What outlives a longjmp: only plain data, owned by `DecodePng`, which never is on the jumped
// road.
struct TPngRead {
  png_structp Png;
  png_infop Info;
  TBytesView File;
  std::size_t Position;
  std::uint8_t* Pixels;
  png_uint_32 Width;
  png_uint_32 Height;
  int Channels;
  int BitDepth;
  int Orientation;
  TReason* Why;
};

// Deflate codes at most 1032 bytes in one, and a byte holds at most eight pixels.
constexpr std::uint64_t kMostBytesPerByte = 1032;
constexpr std::uint64_t kMostPixelsPerByte = 8 * kMostBytesPerByte;

// What a packed chunk may come to in any case.
constexpr std::size_t kFreeChunk = 1 << 16;

constexpr std::size_t kSignature = 8;
constexpr std::size_t kAroundChunk = 12; // length and kind before it, the sum behind

void _OnError(png_structp png, png_const_charp text) {
  static_cast<TPngRead*>(png_get_error_ptr(png))->Why->Refuse("damaged PNG", text);
  png_longjmp(png, 1);
}

void _OnWarning(png_structp, png_const_charp) {}

void _ReadBytes(png_structp png, png_bytep data, std::size_t size) {
  TPngRead* job = static_cast<TPngRead*>(png_get_io_ptr(png));
  if (size > job->File.Size - job->Position) {
    job->Why->Refuse(kTruncated);
    png_longjmp(png, 1);
  }
  std::memcpy(data, job->File.Data + job->Position, size);
  job->Position += size;
}

// Whether the file has all bytes of each of its chunks, up to the last. The decoder allocates a
// chunk by its length before it reads it.
bool _HasItsChunks(TBytesView file) {
  std::size_t at = kSignature;
  for (bool isLast = false; !isLast;) {
    if (file.Size - at < kAroundChunk) {
      return false;
    }
    const std::size_t size = png_get_uint_32(file.Data + at);
    if (size > file.Size - at - kAroundChunk) {
      return false;
    }
    isLast = std::memcmp(file.Data + at + 4, "IEND", 4) == 0;
    at += kAroundChunk + size;
  }
  return true;
}

// Whether the header is plausible, before any pixel is looked at.
bool _CheckHeader(const TPngRead* job) {
  if (!FitsBudget(job->Width, job->Height, kMostPixelsPerByte, job->File.Size, job->Why)) {
    return false;
  }
  const std::uint64_t bitsPerPixel =
      std::uint64_t{png_get_channels(job->Png, job->Info)} * png_get_bit_depth(job->Png, job->Info);
  return std::uint64_t{job->Width} * job->Height * bitsPerPixel / 8 / kMostBytesPerByte <=
             job->File.Size ||
         job->Why->Refuse("promises more pixels than its bytes can hold");
}

// Asks for 8 or 16 bits a component, grey, grey and alpha, RGB or RGBA.
int _SetTransforms(png_structp png, png_infop info) {
  const int colorType = png_get_color_type(png, info);
  if (colorType == PNG_COLOR_TYPE_PALETTE) {
    png_set_palette_to_rgb(png);
  }
  if (colorType == PNG_COLOR_TYPE_GRAY && png_get_bit_depth(png, info) < 8) {
    png_set_expand_gray_1_2_4_to_8(png);
  }
  if (png_get_valid(png, info, PNG_INFO_tRNS) != 0) {
    png_set_tRNS_to_alpha(png);
  }
  if (png_get_bit_depth(png, info) == 16) {
    png_set_swap(png);
  }
  const int passes = png_set_interlace_handling(png);
  png_read_update_info(png, info);
  return passes;
}

bool _ReadPicture(TPngRead* job) {
  png_structp png = job->Png;
  png_set_read_fn(png, job, _ReadBytes);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  // Bounds what packed texts and profiles come to, which nobody looks at here.
  png_set_chunk_malloc_max(png, std::max<std::size_t>(job->File.Size, kFreeChunk));
  png_set_crc_action(png, PNG_CRC_ERROR_QUIT, PNG_CRC_ERROR_QUIT);
  png_read_info(png, job->Info);
  job->Width = png_get_image_width(png, job->Info);
  job->Height = png_get_image_height(png, job->Info);
  if (!_CheckHeader(job)) {
    return false;
  }
  const int passes = _SetTransforms(png, job->Info);
  job->Channels = png_get_channels(png, job->Info);
  job->BitDepth = png_get_bit_depth(png, job->Info);
  const std::size_t rowBytes = png_get_rowbytes(png, job->Info);
  if (job->Channels < 1 || job->Channels > 4 || (job->BitDepth != 8 && job->BitDepth != 16) ||
      rowBytes != std::uint64_t{job->Width} * static_cast<unsigned int>(job->Channels) *
                      static_cast<unsigned int>(job->BitDepth / 8)) {
    return job->Why->Refuse(kBadHeader);
  }
  // Zeroed, since the first pass of an interlaced picture mixes with what the rows hold.
  job->Pixels = static_cast<std::uint8_t*>(std::calloc(job->Height, rowBytes));
  if (job->Pixels == nullptr) {
    return job->Why->Refuse(kOutOfMemory);
  }
  for (int pass = 0; pass < passes; ++pass) {
    for (png_uint_32 y = 0; y < job->Height; ++y) {
      png_read_row(png, job->Pixels + y * rowBytes, nullptr);
    }
  }
  png_read_end(png, job->Info);
  png_bytep exif = nullptr;
  png_uint_32 exifSize = 0;
  job->Orientation =
      png_get_eXIf_1(png, job->Info, &exifSize, &exif) != 0 ? ExifOrientation({exif, exifSize}) : 1;
  return true;
}

bool _Guarded(TPngRead* job) {
  if (setjmp(png_jmpbuf(job->Png)) != 0) {
    return false;
  }
  return _ReadPicture(job);
}

} // namespace

bool IsPng(TBytesView head) { return head.Size >= 8 && png_sig_cmp(head.Data, 0, 8) == 0; }

bool DecodePng(TBytesView file, TPicture* out, TReason* why) {
  if (!_HasItsChunks(file)) {
    return why->Refuse(kTruncated);
  }
  TPngRead job = {};
  job.File = file;
  job.Why = why;
  why->Refuse(kOutOfMemory); // until there is something else to tell
  job.Png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &job, _OnError, _OnWarning);
  if (job.Png == nullptr) {
    return false;
  }
  job.Info = png_create_info_struct(job.Png);
  const bool done = job.Info != nullptr && _Guarded(&job);
  png_destroy_read_struct(&job.Png, &job.Info, nullptr);
  TBlock pixels(job.Pixels);
  if (!done) {
    return false;
  }
  out->Width = static_cast<int>(job.Width);
  out->Height = static_cast<int>(job.Height);
  out->Channels = job.Channels;
  out->Type = job.BitDepth == 16 ? DATA_TYPE_UINT16 : DATA_TYPE_UINT8;
  out->Orientation = job.Orientation;
  out->Pixels = std::move(pixels);
  return true;
}

} // namespace zx::image
