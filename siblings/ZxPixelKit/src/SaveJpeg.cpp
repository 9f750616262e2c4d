#include "ImageEncoders.h"

#include <csetjmp>
#include <new>

#include <jerror.h>
#include <jpeglib.h>

namespace zx::image {

namespace {

constexpr int kUsualQuality = 95;

// Plain data only: a longjmp crosses no object with a destructor.
struct TJpegWrite {
  jpeg_compress_struct Info;
  jpeg_error_mgr Errors;
  std::jmp_buf Jump;
  std::FILE* File;
  const DATASURFACE* Surface;
  std::uint8_t* Row; // one tight row
  int Quality;
  TReason* Why;
};

void _OnError(j_common_ptr info) {
  TJpegWrite* job = static_cast<TJpegWrite*>(info->client_data);
  if (info->err->msg_code == JERR_FILE_WRITE) {
    RefuseByErrno(job->Why);
  } else if (info->err->msg_code == JERR_OUT_OF_MEMORY) {
    job->Why->Refuse(kOutOfMemory);
  } else {
    char text[JMSG_LENGTH_MAX];
    info->err->format_message(info, text);
    job->Why->Refuse("can't be written as JPEG", text);
  }
  std::longjmp(job->Jump, 1);
}

void _OnMessage(j_common_ptr, int) {}

// Luminance out of luminance and alpha.
void _DropAlpha(std::uint8_t* row, int width) {
  for (int x = 1; x < width; ++x) {
    row[x] = row[2 * x];
  }
}

void _WritePicture(TJpegWrite* job) {
  const DATASURFACE& surface = *job->Surface;
  jpeg_compress_struct* info = &job->Info;
  jpeg_stdio_dest(info, job->File);
  info->image_width = static_cast<JDIMENSION>(surface.Width);
  info->image_height = static_cast<JDIMENSION>(surface.Height);
  info->input_components = surface.Channels == 2 ? 1 : surface.Channels;
  info->in_color_space = surface.Channels <= 2   ? JCS_GRAYSCALE
                         : surface.Channels == 3 ? JCS_EXT_RGB
                                                 : JCS_EXT_RGBX;
  jpeg_set_defaults(info);
  jpeg_set_quality(info, job->Quality, TRUE);
  // Chroma at full resolution: drawn edges would fray otherwise.
  info->comp_info[0].h_samp_factor = 1;
  info->comp_info[0].v_samp_factor = 1;
  jpeg_start_compress(info, TRUE);
  for (int y = 0; y < surface.Height; ++y) {
    CopyRowFromTop(surface, y, surface.Channels, job->Row);
    if (surface.Channels == 2) {
      _DropAlpha(job->Row, surface.Width);
    }
    JSAMPROW row = job->Row;
    jpeg_write_scanlines(info, &row, 1);
  }
  jpeg_finish_compress(info);
}

bool _Guarded(TJpegWrite* job) {
  if (setjmp(job->Jump) != 0) {
    return false;
  }
  jpeg_create_compress(&job->Info);
  _WritePicture(job);
  return true;
}

} // namespace

bool EncodeJpeg(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint& hint,
                TReason* why) {
  const std::unique_ptr<TJpegWrite> job(new (std::nothrow) TJpegWrite{});
  const TBlock row(static_cast<std::uint8_t*>(
      std::malloc(static_cast<std::size_t>(surface.Width) * surface.Channels)));
  if (!job || !row) {
    return why->Refuse(kOutOfMemory);
  }
  job->File = file;
  job->Surface = &surface;
  job->Row = row.get();
  job->Quality = hint.Quality >= 1 && hint.Quality <= 100 ? hint.Quality : kUsualQuality;
  job->Why = why;
  job->Info.err = jpeg_std_error(&job->Errors);
  job->Info.client_data = job.get();
  job->Errors.error_exit = _OnError;
  job->Errors.emit_message = _OnMessage;
  const bool done = _Guarded(job.get());
  jpeg_destroy_compress(&job->Info);
  return done;
}

} // namespace zx::image
