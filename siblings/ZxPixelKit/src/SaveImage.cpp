#include <ZxPixelKit/Image.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <new>

#include <sys/stat.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Surface.h>

#include "ImageEncoders.h"

namespace zx::image {

void CopyRowFromTop(const DATASURFACE& surface, int y, std::size_t pixelBytes, std::uint8_t* to) {
  const std::uint8_t* from =
      surface.Data + static_cast<std::ptrdiff_t>(surface.Height - 1 - y) * surface.RowStride;
  for (int x = 0; x < surface.Width; ++x, from += surface.PixelStride, to += pixelBytes) {
    std::memcpy(to, from, pixelBytes);
  }
}

namespace {

bool _IsByte(DATA_TYPE type) { return type == DATA_TYPE_UINT8; }
bool _IsByteOrWord(DATA_TYPE type) { return type == DATA_TYPE_UINT8 || type == DATA_TYPE_UINT16; }
bool _IsFloat(DATA_TYPE type) { return type == DATA_TYPE_FLOAT; }

struct TKind {
  const char* Ending;
  bool (*Takes)(DATA_TYPE type);
  int MostColumnsOrRows;
  bool (*Encode)(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint& hint,
                 TReason* why);
};

constexpr int kUnlimited = 0x7FFFFFFF;

constexpr TKind kKinds[] = {
    {"png", _IsByteOrWord, kUnlimited, EncodePng}, //
    {"bmp", _IsByte, kUnlimited, EncodeBmp},       //
    {"tga", _IsByte, 65535, EncodeTga},            //
    {"jpg", _IsByte, 65500, EncodeJpeg},           //
    {"jpeg", _IsByte, 65500, EncodeJpeg},          //
    {"hdr", _IsFloat, kUnlimited, EncodeHdr},
};

// Of ASCII letters, whatever the locale.
char _Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

const TKind* _FindKind(const std::string& name) {
  const std::size_t slash = name.rfind('/');
  const std::size_t point = name.rfind('.');
  if (point == std::string::npos || (slash != std::string::npos && point < slash)) {
    return nullptr;
  }
  const char* ending = name.c_str() + point + 1;
  const auto* found = std::find_if(std::begin(kKinds), std::end(kKinds), [&](const TKind& kind) {
    const std::size_t size = std::strlen(kind.Ending);
    return name.size() - point - 1 == size &&
           std::equal(ending, ending + size, kind.Ending,
                      [](char a, char b) { return _Lower(a) == b; });
  });
  return found == std::end(kKinds) ? nullptr : found;
}

bool _Check(const DATASURFACE& surface, const TKind& kind, TReason* why) {
  if (surface.Data == nullptr || surface.Width < 1 || surface.Height < 1) {
    return why->Refuse("there are no pixels to save");
  }
  if (surface.Channels < 1 || surface.Channels > 4 || !kind.Takes(surface.Type) ||
      surface.PixelStride < static_cast<int>(surface.Channels * GetTypeSize(surface.Type))) {
    return why->Refuse("such pixels can't be stored in a file of this kind");
  }
  return (surface.Width <= kind.MostColumnsOrRows && surface.Height <= kind.MostColumnsOrRows) ||
         why->Refuse("the picture is too large for a file of this kind");
}

bool _Save(const std::string& name, const TSaveImageHint& hint, const DATASURFACE& surface,
           TReason* why) {
  const TKind* kind = _FindKind(name);
  if (kind == nullptr) {
    return why->Refuse("the ending tells no kind that is written (png, bmp, tga, jpg, jpeg, hdr)");
  }
  if (!_Check(surface, *kind, why)) {
    return false;
  }
  std::FILE* file = std::fopen(name.c_str(), "wbe");
  if (file == nullptr) {
    return RefuseByErrno(why);
  }
  // A device or a pipe that took only a part is not ours to remove.
  struct stat about = {};
  const bool plain = fstat(fileno(file), &about) == 0 && S_ISREG(about.st_mode);
  bool done = kind->Encode(file, surface, hint, why);
  if (std::fclose(file) != 0 && done) {
    done = RefuseByErrno(why);
  }
  if (!done && plain) {
    std::remove(name.c_str());
  }
  return done;
}

} // namespace

} // namespace zx::image

bool SaveImage(const std::string& name, TSaveImageHint* hint, const DATASURFACE& surface) {
  return SaveImage(name, hint, surface, nullptr);
}

bool SaveImage(const std::string& name, TSaveImageHint* hint, const DATASURFACE& surface,
               TZxMessage* reason) {
  zx::image::TReason why;
  if (zx::image::_Save(name, hint != nullptr ? *hint : TSaveImageHint(), surface, &why)) {
    return true;
  }
  zx::image::Tell(why, reason);
  return false;
}
