#include "ImageDecoders.h"

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <new>

#include <jerror.h>
#include <jpeglib.h>

#include "ImageOrientation.h"

namespace zx::image {

namespace {

// Plain data only: a longjmp crosses no object with a destructor.
struct TJpegRead {
  jpeg_decompress_struct Info;
  jpeg_error_mgr Errors;
  jpeg_progress_mgr Progress;
  std::jmp_buf Jump;
  TBytesView File;
  std::uint8_t* Pixels;
  int Channels;
  int Orientation;
  bool EndMissing;        // no end mark stands behind the data
  unsigned int Delivered; // a bit for each component of which a scan came
  TReason* Why;
};

// A Huffman-coded block of 8 by 8 pixels takes a bit at the least. Arithmetic coding goes below
// that on flat pictures; those have the free size to live in.
constexpr std::uint64_t kMostPixelsPerByte = 8 * 64;
constexpr std::int64_t kFreePixels = std::int64_t{1} << 20;

// Against files of many progressive scans over the whole picture, which only burn time.
constexpr int kMostScans = 500;

constexpr unsigned int kExifMarker = JPEG_APP0 + 1;
constexpr char kExifMark[6] = {'E', 'x', 'i', 'f', '\0', '\0'};

TJpegRead* _Job(j_common_ptr info) { return static_cast<TJpegRead*>(info->client_data); }

[[noreturn]] void _Leave(TJpegRead* job) { std::longjmp(job->Jump, 1); }

void _OnError(j_common_ptr info) {
  TJpegRead* job = _Job(info);
  if (info->err->msg_code == JERR_OUT_OF_MEMORY) {
    job->Why->Refuse(kOutOfMemory);
  } else if (job->EndMissing || info->err->msg_code == JWRN_HIT_MARKER) {
    job->Why->Refuse(kTruncated);
  } else {
    char text[JMSG_LENGTH_MAX];
    info->err->format_message(info, text);
    job->Why->Refuse("damaged JPEG", text);
  }
  _Leave(job);
}

// A level below 0 is a warning, after which the decoder goes on with what it makes up. Only those
// that cost no pixel may pass.
void _OnMessage(j_common_ptr info, int level) {
  if (level >= 0) {
    return;
  }
  TJpegRead* job = _Job(info);
  switch (info->err->msg_code) {
  case JWRN_JPEG_EOF:
    job->EndMissing = true;
    // An arithmetic decoder takes the end of the file for zeros without a further warning.
    if (job->Info.arith_code) {
      _OnError(info);
    }
    return;
  case JWRN_EXTRANEOUS_DATA: // between the data and a marker
  case JWRN_JFIF_MAJOR:      // versions beyond 1 change nothing here
  case JWRN_NOT_SEQUENTIAL:  // spectral bounds that a sequential scan doesn't have
  case JWRN_ADOBE_XFORM:     // an unknown code stands for the usual one
    return;
  default:
    _OnError(info);
  }
}

// Called before each row of blocks is read.
void _OnProgress(j_common_ptr info) {
  TJpegRead* job = _Job(info);
  if (job->Info.input_scan_number > kMostScans) {
    job->Why->Refuse("damaged JPEG", "too many scans");
    _Leave(job);
  }
  for (int i = 0; i < job->Info.comps_in_scan; ++i) {
    job->Delivered |= 1u << job->Info.cur_comp_info[i]->component_index;
  }
}

bool _CheckHeader(TJpegRead* job) {
  const std::int64_t width = job->Info.image_width;
  const std::int64_t height = job->Info.image_height;
  const bool small = width * height <= kFreePixels;
  return FitsBudget(width, height, small ? ~std::uint64_t{0} : kMostPixelsPerByte, job->File.Size,
                    job->Why);
}

// Of the markers the decoder keeps those of EXIF data alone.
int _Orientation(const jpeg_decompress_struct& info) {
  for (const jpeg_marker_struct* marker = info.marker_list; marker != nullptr;
       marker = marker->next) {
    if (marker->data_length > sizeof kExifMark &&
        std::memcmp(marker->data, kExifMark, sizeof kExifMark) == 0) {
      return ExifOrientation(
          {marker->data + sizeof kExifMark, marker->data_length - sizeof kExifMark});
    }
  }
  return 1;
}

// Of a picture in several scans: whether all came that make it up. Without the end mark a
// progressive one may have been cut between two scans; then every coefficient must have all its
// bits.
bool _IsComplete(const TJpegRead& job) {
  const jpeg_decompress_struct& info = job.Info;
  if (job.Delivered != (1u << info.num_components) - 1) {
    return false;
  }
  if (!job.EndMissing || !info.progressive_mode) {
    return true;
  }
  for (int component = 0; component < info.num_components; ++component) {
    for (const int missingBits : info.coef_bits[component]) {
      if (missingBits != 0) {
        return false;
      }
    }
  }
  return true;
}

bool _ReadPicture(TJpegRead* job) {
  jpeg_decompress_struct* info = &job->Info;
  jpeg_mem_src(info, job->File.Data, job->File.Size);
  jpeg_save_markers(info, kExifMarker, 0xFFFF);
  jpeg_read_header(info, TRUE);
  if (!_CheckHeader(job)) {
    return false;
  }
  job->Orientation = _Orientation(*info);
  switch (info->jpeg_color_space) {
  case JCS_GRAYSCALE:
    info->out_color_space = JCS_GRAYSCALE;
    break;
  case JCS_CMYK:
  case JCS_YCCK:
    info->out_color_space = JCS_CMYK;
    break;
  default:
    info->out_color_space = JCS_RGB;
    break;
  }
  jpeg_start_decompress(info);
  // The first call reads all scans where there is more than one.
  if (jpeg_has_multiple_scans(info) && !_IsComplete(*job)) {
    return job->Why->Refuse(kTruncated);
  }
  job->Channels = info->output_components;
  const std::size_t rowBytes =
      std::size_t{info->output_width} * static_cast<unsigned int>(job->Channels);
  job->Pixels = static_cast<std::uint8_t*>(std::malloc(rowBytes * info->output_height));
  if (job->Pixels == nullptr) {
    return job->Why->Refuse(kOutOfMemory);
  }
  while (info->output_scanline < info->output_height) {
    JSAMPROW row = job->Pixels + info->output_scanline * rowBytes;
    jpeg_read_scanlines(info, &row, 1);
  }
  jpeg_finish_decompress(info);
  return true;
}

bool _Guarded(TJpegRead* job) {
  if (setjmp(job->Jump) != 0) {
    return false;
  }
  jpeg_create_decompress(&job->Info);
  job->Info.progress = &job->Progress;
  return _ReadPicture(job);
}

// Four-colour files hold the inverse of the ink, as all common programs write them: the product
// of what each ink and black let through is the light that remains.
void _CmykToRgb(const std::uint8_t* from, std::size_t pixels, std::uint8_t* to) {
  for (std::size_t i = 0; i < pixels; ++i, from += 4, to += 3) {
    for (int c = 0; c < 3; ++c) {
      to[c] = static_cast<std::uint8_t>((from[c] * from[3] + 127) / 255);
    }
  }
}

} // namespace

bool IsJpeg(TBytesView head) {
  return head.Size >= 3 && head.Data[0] == 0xFF && head.Data[1] == 0xD8 && head.Data[2] == 0xFF;
}

bool DecodeJpeg(TBytesView file, TPicture* out, TReason* why) {
  // The decoder's records take some 2 KiB, and its errors jump: on the heap nothing of them is in a
  // register when they do.
  const std::unique_ptr<TJpegRead> job(new (std::nothrow) TJpegRead{});
  if (!job) {
    return why->Refuse(kOutOfMemory);
  }
  job->File = file;
  job->Why = why;
  job->Info.err = jpeg_std_error(&job->Errors);
  job->Info.client_data = job.get();
  job->Errors.error_exit = _OnError;
  job->Errors.emit_message = _OnMessage;
  job->Progress.progress_monitor = _OnProgress;
  const bool done = _Guarded(job.get());
  const int width = static_cast<int>(job->Info.image_width);
  const int height = static_cast<int>(job->Info.image_height);
  jpeg_destroy_decompress(&job->Info);
  TBlock pixels(job->Pixels);
  if (!done) {
    return false;
  }
  if (job->Channels == 4) {
    _CmykToRgb(pixels.get(), static_cast<std::size_t>(width) * static_cast<std::size_t>(height),
               pixels.get());
  }
  out->Width = width;
  out->Height = height;
  out->Channels = job->Channels == 1 ? 1 : 3;
  out->Type = DATA_TYPE_UINT8;
  out->Orientation = job->Orientation;
  out->Pixels = std::move(pixels);
  return true;
}

} // namespace zx::image
