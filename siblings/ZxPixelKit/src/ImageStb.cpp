#include "ImageStb.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <utility>

// Sizes are checked before and file positions stay below 2^31, so its assertions have nothing to
// say; a host's process is not to be aborted by them in any case.
#define STBI_ASSERT(x) static_cast<void>(0)
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
// Later versions of the PNM reader call a conversion that comes with the PSD reader. No file gets
// as far as that reader: all that is handed on begins with another kind's mark.
#define STBI_ONLY_PSD
#define STBI_ONLY_BMP
#define STBI_ONLY_TGA
#define STBI_ONLY_PNM
#define STBI_ONLY_HDR
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#include <stb_image.h>
#pragma GCC diagnostic pop

namespace zx::image {

namespace {

// A file as the decoder gets it: a header that was checked and made plain here, then the file's own
// bytes from some position on.
//
// The decoder takes the end of a file for zeros and goes on. So what it reads behind the end is
// noted, and it gets line feeds there: they end its loops over header lines and, unlike zeros, its
// loops over packets.
struct TSource {
  TBytesView Parts[2];
  int Part;
  std::size_t Position;
  char* Window;
  bool PastEnd;
};

constexpr char kFiller = '\n';

std::size_t _Take(TSource* source, char* to, std::size_t size) {
  std::size_t done = 0;
  while (done < size && source->Part < 2) {
    const TBytesView& part = source->Parts[source->Part];
    const std::size_t count = std::min(size - done, part.Size - source->Position);
    if (count == 0) {
      ++source->Part;
      source->Position = 0;
      continue;
    }
    if (to != nullptr) {
      std::memcpy(to + done, part.Data + source->Position, count);
    }
    source->Position += count;
    done += count;
  }
  return done;
}

// The decoder's window may be filled in part; all else asks for what it needs. The first call fills
// the window.
int _OnRead(void* user, char* data, int size) {
  TSource* source = static_cast<TSource*>(user);
  if (source->Window == nullptr) {
    source->Window = data;
  }
  const auto wanted = static_cast<std::size_t>(size);
  const std::size_t count = _Take(source, data, wanted);
  if (count == wanted || (count > 0 && data == source->Window)) {
    return static_cast<int>(count);
  }
  std::memset(data + count, kFiller, wanted - count);
  source->PastEnd = true;
  return size;
}

void _OnSkip(void* user, int size) {
  TSource* source = static_cast<TSource*>(user);
  const auto wanted = static_cast<std::size_t>(std::max(size, 0));
  if (_Take(source, nullptr, wanted) != wanted) {
    source->PastEnd = true;
  }
}

int _OnEof(void* user) {
  const TSource* source = static_cast<const TSource*>(user);
  for (int part = source->Part; part < 2; ++part) {
    if (source->Parts[part].Size > (part == source->Part ? source->Position : 0)) {
      return 0;
    }
  }
  return 1;
}

constexpr stbi_io_callbacks kCallbacks = {_OnRead, _OnSkip, _OnEof};

} // namespace

bool DecodeByStb(TBytesView head, TBytesView body, DATA_TYPE type, std::uint64_t pixelsPerByte,
                 TPicture* out, TReason* why) {
  if (body.Size > INT_MAX - head.Size) {
    return why->Refuse("has more than 2 GiB");
  }
  const TSource start = {{head, body}, 0, 0, nullptr, false};
  int width = 0;
  int height = 0;
  int channels = 0;
  TSource source = start;
  if (stbi_info_from_callbacks(&kCallbacks, &source, &width, &height, &channels) == 0) {
    return why->Refuse(kBadHeader, stbi_failure_reason());
  }
  if (source.PastEnd) {
    return why->Refuse(kTruncated);
  }
  // A picture stored top first has a negative height in the header of a BMP.
  if (height < -INT_MAX) {
    return why->Refuse(kBadHeader);
  }
  if (!FitsBudget(width, std::abs(height), pixelsPerByte, body.Size, why)) {
    return false;
  }
  source = start;
  void* pixels = nullptr;
  if (type == DATA_TYPE_FLOAT) {
    pixels = stbi_loadf_from_callbacks(&kCallbacks, &source, &width, &height, &channels, 0);
  } else if (type == DATA_TYPE_UINT16) {
    pixels = stbi_load_16_from_callbacks(&kCallbacks, &source, &width, &height, &channels, 0);
  } else {
    pixels = stbi_load_from_callbacks(&kCallbacks, &source, &width, &height, &channels, 0);
  }
  TBlock block(static_cast<std::uint8_t*>(pixels));
  if (source.PastEnd) {
    return why->Refuse(kTruncated);
  }
  if (!block) {
    return why->Refuse("damaged", stbi_failure_reason());
  }
  out->Width = width;
  out->Height = height;
  out->Channels = channels;
  out->Type = type;
  out->Pixels = std::move(block);
  return true;
}

namespace {

// A line from `at` on, without its end; `*next` is where the one behind it begins. False when no
// line feed ends it.
bool _HdrLine(TBytesView file, std::size_t at, std::size_t* size, std::size_t* next) {
  const void* end = std::memchr(file.Data + at, '\n', file.Size - at);
  if (end == nullptr) {
    return false;
  }
  *size = static_cast<std::size_t>(static_cast<const std::uint8_t*>(end) - (file.Data + at));
  *next = at + *size + 1;
  if (*size > 0 && file.Data[at + *size - 1] == '\r') {
    --*size;
  }
  return true;
}

} // namespace

bool IsHdr(TBytesView head) {
  static constexpr const char* kMarks[] = {"#?RADIANCE", "#?RGBE"};
  std::size_t size = 0;
  std::size_t next = 0;
  if (!_HdrLine(head, 0, &size, &next)) {
    return false;
  }
  return std::any_of(std::begin(kMarks), std::end(kMarks), [&](const char* mark) {
    return size == std::strlen(mark) && std::memcmp(head.Data, mark, size) == 0;
  });
}

// The header's lines go on without the carriage returns of other systems: variables up to an empty
// line, then the line with the sizes.
bool DecodeHdr(TBytesView file, TPicture* out, TReason* why) {
  std::size_t pixelsAt = 0;
  std::size_t size = 0;
  for (bool isLast = false; !isLast;) {
    isLast = pixelsAt > 0 && size == 0;
    if (!_HdrLine(file, pixelsAt, &size, &pixelsAt)) {
      return why->Refuse(kTruncated);
    }
  }
  const TBlock head(static_cast<std::uint8_t*>(std::malloc(pixelsAt)));
  if (!head) {
    return why->Refuse(kOutOfMemory);
  }
  std::size_t headSize = 0;
  for (std::size_t at = 0, next = 0; at < pixelsAt; at = next) {
    static_cast<void>(_HdrLine(file, at, &size, &next));
    std::memcpy(head.get() + headSize, file.Data + at, size);
    headSize += size;
    head[headSize++] = '\n';
  }
  // A run of 127 pixels takes two bytes for each of four components.
  return DecodeByStb({head.get(), headSize}, From(file, pixelsAt), DATA_TYPE_FLOAT, 16, out, why);
}

} // namespace zx::image
