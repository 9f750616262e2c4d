#include "ImageEncoders.h"

#include <csetjmp>

#include <png.h>

#include <ZxPixelKit/Surface.h>

namespace zx::image {

namespace {

// Plain data only: a longjmp crosses no object with a destructor.
struct TPngWrite {
  png_structp Png;
  png_infop Info;
  std::FILE* File;
  const DATASURFACE* Surface;
  std::uint8_t* Row; // one tight row
  std::size_t PixelBytes;
  int Compression;
  TReason* Why;
};

void _OnError(png_structp png, png_const_charp text) {
  static_cast<TPngWrite*>(png_get_error_ptr(png))->Why->Refuse("can't be written as PNG", text);
  png_longjmp(png, 1);
}

void _OnWarning(png_structp, png_const_charp) {}

void _WriteBytes(png_structp png, png_bytep data, std::size_t size) {
  if (std::fwrite(data, 1, size, static_cast<std::FILE*>(png_get_io_ptr(png))) != size) {
    RefuseByErrno(static_cast<TPngWrite*>(png_get_error_ptr(png))->Why);
    png_longjmp(png, 1);
  }
}

void _Flush(png_structp) {}

void _WritePicture(TPngWrite* job) {
  static constexpr int kColorTypes[] = {PNG_COLOR_TYPE_GRAY, PNG_COLOR_TYPE_GRAY_ALPHA,
                                        PNG_COLOR_TYPE_RGB, PNG_COLOR_TYPE_RGB_ALPHA};
  const DATASURFACE& surface = *job->Surface;
  const int bitDepth = surface.Type == DATA_TYPE_UINT16 ? 16 : 8;
  png_set_write_fn(job->Png, job->File, _WriteBytes, _Flush);
  png_set_user_limits(job->Png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  if (job->Compression >= 0 && job->Compression <= 9) {
    png_set_compression_level(job->Png, job->Compression);
  }
  png_set_IHDR(job->Png, job->Info, static_cast<png_uint_32>(surface.Width),
               static_cast<png_uint_32>(surface.Height), bitDepth,
               kColorTypes[surface.Channels - 1], PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_write_info(job->Png, job->Info);
  if (bitDepth == 16) {
    png_set_swap(job->Png);
  }
  for (int y = 0; y < surface.Height; ++y) {
    CopyRowFromTop(surface, y, job->PixelBytes, job->Row);
    png_write_row(job->Png, job->Row);
  }
  png_write_end(job->Png, job->Info);
}

bool _Guarded(TPngWrite* job) {
  if (setjmp(png_jmpbuf(job->Png)) != 0) {
    return false;
  }
  _WritePicture(job);
  return true;
}

bool _Write(TPngWrite* job) {
  job->Png = png_create_write_struct(PNG_LIBPNG_VER_STRING, job, _OnError, _OnWarning);
  if (job->Png == nullptr) {
    return false;
  }
  job->Info = png_create_info_struct(job->Png);
  const bool done = job->Info != nullptr && _Guarded(job);
  png_destroy_write_struct(&job->Png, &job->Info);
  return done;
}

} // namespace

bool EncodePng(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint& hint,
               TReason* why) {
  TPngWrite job = {};
  job.File = file;
  job.Surface = &surface;
  job.PixelBytes = surface.Channels * GetTypeSize(surface.Type);
  job.Compression = hint.Compression;
  job.Why = why;
  why->Refuse(kOutOfMemory); // until there is something else to tell
  const TBlock row(static_cast<std::uint8_t*>(
      std::malloc(static_cast<std::size_t>(surface.Width) * job.PixelBytes)));
  job.Row = row.get();
  return row && _Write(&job);
}

} // namespace zx::image
