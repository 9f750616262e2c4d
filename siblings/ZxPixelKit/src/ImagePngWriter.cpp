#include <ZxPixelKit/Image.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include <png.h>
#include <sys/stat.h>

#include <ZxPixelKit/Surface.h>

namespace {

// Plain data only: a longjmp crosses no object with a destructor.
struct PNG_WRITE {
  png_structp Png;
  png_infop Info;
  std::FILE* File;
  const DATASURFACE* Surface;
  std::uint8_t* Row; // one tight row
  std::size_t PixelBytes;
  int Compression;
};

void _OnError(png_structp png, png_const_charp) { png_longjmp(png, 1); }

void _OnWarning(png_structp, png_const_charp) {}

void _WriteBytes(png_structp png, png_bytep data, std::size_t size) {
  if (std::fwrite(data, 1, size, static_cast<std::FILE*>(png_get_io_ptr(png))) != size) {
    png_error(png, "write failed");
  }
}

void _Flush(png_structp) {}

void _WritePicture(PNG_WRITE* job) {
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
  for (int y = surface.Height - 1; y >= 0; --y) {
    const std::uint8_t* from = surface.Data + static_cast<std::ptrdiff_t>(y) * surface.RowStride;
    for (int x = 0; x < surface.Width; ++x, from += surface.PixelStride) {
      std::memcpy(job->Row + static_cast<std::size_t>(x) * job->PixelBytes, from, job->PixelBytes);
    }
    png_write_row(job->Png, job->Row);
  }
  png_write_end(job->Png, job->Info);
}

bool _Guarded(PNG_WRITE* job) {
  if (setjmp(png_jmpbuf(job->Png)) != 0) {
    return false;
  }
  _WritePicture(job);
  return true;
}

bool _Write(PNG_WRITE* job) {
  job->Png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, _OnError, _OnWarning);
  if (job->Png == nullptr) {
    return false;
  }
  job->Info = png_create_info_struct(job->Png);
  const bool done = job->Info != nullptr && _Guarded(job);
  png_destroy_write_struct(&job->Png, &job->Info);
  return done;
}

bool _CanBeStored(const DATASURFACE& surface) {
  return surface.Data != nullptr && surface.Width > 0 && surface.Height > 0 &&
         surface.Channels >= 1 && surface.Channels <= 4 &&
         (surface.Type == DATA_TYPE_UINT8 || surface.Type == DATA_TYPE_UINT16) &&
         surface.PixelStride >= static_cast<int>(surface.Channels * GetTypeSize(surface.Type));
}

} // namespace

bool SaveImage(const std::string& name, TSaveImageHint* hint, const DATASURFACE& surface) {
  if (!_CanBeStored(surface)) {
    return false;
  }
  PNG_WRITE job = {};
  job.Surface = &surface;
  job.PixelBytes = surface.Channels * GetTypeSize(surface.Type);
  job.Compression = hint != nullptr ? hint->Compression : -1;
  const std::unique_ptr<std::uint8_t[]> row(
      new (std::nothrow) std::uint8_t[static_cast<std::size_t>(surface.Width) * job.PixelBytes]);
  if (!row) {
    return false;
  }
  job.Row = row.get();
  job.File = std::fopen(name.c_str(), "wbe");
  if (job.File == nullptr) {
    return false;
  }
  // A device or a pipe that took only a part is not ours to remove.
  struct stat about = {};
  const bool plain = fstat(fileno(job.File), &about) == 0 && S_ISREG(about.st_mode);
  bool done = _Write(&job);
  if (std::fclose(job.File) != 0) {
    done = false;
  }
  if (!done && plain) {
    std::remove(name.c_str());
  }
  return done;
}
