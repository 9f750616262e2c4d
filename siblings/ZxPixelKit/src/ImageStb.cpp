#include "ImageDecoders.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <limits>
#include <utility>

// Sizes are checked before and file positions stay below 2^31, so its assertions have nothing to
// say; a host's process is not to be aborted by them in any case.
#define STBI_ASSERT(x) static_cast<void>(0)
#define STB_IMAGE_STATIC
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_STDIO
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
struct SOURCE {
  BYTES Parts[2];
  int Part;
  std::size_t Position;
  char* Window;
  bool PastEnd;
};

constexpr char kFiller = '\n';

std::size_t _Take(SOURCE* source, char* to, std::size_t size) {
  std::size_t done = 0;
  while (done < size && source->Part < 2) {
    const BYTES& part = source->Parts[source->Part];
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
  SOURCE* source = static_cast<SOURCE*>(user);
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
  SOURCE* source = static_cast<SOURCE*>(user);
  const auto wanted = static_cast<std::size_t>(std::max(size, 0));
  if (_Take(source, nullptr, wanted) != wanted) {
    source->PastEnd = true;
  }
}

int _OnEof(void* user) {
  const SOURCE* source = static_cast<const SOURCE*>(user);
  for (int part = source->Part; part < 2; ++part) {
    if (source->Parts[part].Size > (part == source->Part ? source->Position : 0)) {
      return 0;
    }
  }
  return 1;
}

constexpr stbi_io_callbacks kCallbacks = {_OnRead, _OnSkip, _OnEof};

BYTES _From(BYTES file, std::size_t position) {
  return {file.Data + position, file.Size - position};
}

// Decodes head and body with components of `type`. `pixelsPerByte` is the most that a byte of the
// file can stand for.
bool _Decode(BYTES head, BYTES body, DATA_TYPE type, std::uint64_t pixelsPerByte, PICTURE* out) {
  if (body.Size > INT_MAX - head.Size) {
    return false;
  }
  const SOURCE start = {{head, body}, 0, 0, nullptr, false};
  int width = 0;
  int height = 0;
  int channels = 0;
  SOURCE source = start;
  if (stbi_info_from_callbacks(&kCallbacks, &source, &width, &height, &channels) == 0 ||
      source.PastEnd) {
    return false;
  }
  // A picture stored top first has a negative height in the header of a BMP.
  if (height < -INT_MAX || !FitsBudget(width, std::abs(height), pixelsPerByte, body.Size)) {
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
  if (!block || source.PastEnd) {
    return false;
  }
  out->Width = width;
  out->Height = height;
  out->Channels = channels;
  out->Type = type;
  out->Pixels = std::move(block);
  return true;
}

void _Put16(std::uint8_t* to, std::uint32_t value) {
  to[0] = static_cast<std::uint8_t>(value);
  to[1] = static_cast<std::uint8_t>(value >> 8);
}

void _Put32(std::uint8_t* to, std::uint32_t value) {
  _Put16(to, value & 0xFFFF);
  _Put16(to + 2, value >> 16);
}

constexpr std::size_t kBmpFileHeader = 14;
constexpr std::size_t kBmpInfoHeader = 108;
constexpr std::size_t kBmpPalette = 256 * 4;

struct BMP_HEADER {
  std::uint32_t PixelsAt;
  std::uint32_t HeaderSize;
  std::int32_t Width;
  std::int32_t Height;
  std::uint32_t Planes;
  std::uint32_t BitsPerPixel;
  std::uint32_t Compression;
  std::uint32_t Colors;
  std::uint32_t Masks[4];
  std::size_t PaletteAt;
};

// Fields of the six known headers, whose common parts lie at the same places.
bool _ReadBmpHeader(BYTES file, BMP_HEADER* h) {
  if (file.Size < kBmpFileHeader + 12) {
    return false;
  }
  const std::uint8_t* p = file.Data;
  *h = {};
  h->PixelsAt = Get32(p + 10);
  h->HeaderSize = Get32(p + 14);
  switch (h->HeaderSize) {
  case 12:
    h->Width = static_cast<std::int32_t>(Get16(p + 18));
    h->Height = static_cast<std::int32_t>(Get16(p + 20));
    h->Planes = Get16(p + 22);
    h->BitsPerPixel = Get16(p + 24);
    h->PaletteAt = kBmpFileHeader + 12;
    return true;
  case 40:
  case 52:
  case 56:
  case 108:
  case 124:
    break;
  default:
    return false;
  }
  if (file.Size < kBmpFileHeader + h->HeaderSize) {
    return false;
  }
  h->Width = static_cast<std::int32_t>(Get32(p + 18));
  h->Height = static_cast<std::int32_t>(Get32(p + 22));
  h->Planes = Get16(p + 26);
  h->BitsPerPixel = Get16(p + 28);
  h->Compression = Get32(p + 30);
  h->Colors = Get32(p + 46);
  h->PaletteAt = kBmpFileHeader + h->HeaderSize;
  if (h->Compression == 3) {
    // The masks stand inside the longer headers and behind the shortest: at the same place.
    if (h->HeaderSize == 40) {
      h->PaletteAt += 12;
    }
    if (file.Size < h->PaletteAt) {
      return false;
    }
    const int masks = h->HeaderSize >= 56 ? 4 : 3;
    for (int i = 0; i < masks; ++i) {
      h->Masks[i] = Get32(p + 54 + 4 * i);
    }
  }
  return true;
}

bool _CheckBmp(BYTES file, const BMP_HEADER& h) {
  const std::uint32_t bits = h.BitsPerPixel;
  const bool known = bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
  const bool masked = h.Compression == 3 && (bits == 16 || bits == 32);
  if (!known || h.Planes != 1 || (h.Compression != 0 && !masked) ||
      (h.HeaderSize == 12 && (bits == 16 || bits == 32)) || h.Width < 1 ||
      h.Height == std::numeric_limits<std::int32_t>::min() || h.PixelsAt < h.PaletteAt ||
      h.PixelsAt > file.Size) {
    return false;
  }
  const std::uint64_t rowBytes = (static_cast<std::uint64_t>(h.Width) * bits + 31) / 32 * 4;
  return static_cast<std::uint64_t>(std::abs(h.Height)) <= (file.Size - h.PixelsAt) / rowBytes;
}

} // namespace

bool IsBmp(BYTES head) { return head.Size >= 2 && head.Data[0] == 'B' && head.Data[1] == 'M'; }

// Every header is rewritten as the one kind that the decoder reads without trouble, with a palette
// of full length: colours that the file does not have are black.
bool DecodeBmp(BYTES file, PICTURE* out) {
  BMP_HEADER h;
  if (!_ReadBmpHeader(file, &h) || !_CheckBmp(file, h)) {
    return false;
  }
  std::uint8_t head[kBmpFileHeader + kBmpInfoHeader + kBmpPalette] = {'B', 'M'};
  std::size_t headSize = kBmpFileHeader + kBmpInfoHeader;
  if (h.BitsPerPixel <= 8) {
    const std::size_t entry = h.HeaderSize == 12 ? 3 : 4;
    std::size_t colors =
        std::min<std::size_t>((h.PixelsAt - h.PaletteAt) / entry, std::size_t{1} << h.BitsPerPixel);
    if (h.Colors != 0) {
      colors = std::min<std::size_t>(colors, h.Colors);
    }
    for (std::size_t i = 0; i < colors; ++i) {
      std::memcpy(head + headSize + i * 4, file.Data + h.PaletteAt + i * entry, 3);
    }
    headSize += kBmpPalette;
  }
  _Put32(head + 10, static_cast<std::uint32_t>(headSize));
  _Put32(head + 14, kBmpInfoHeader);
  _Put32(head + 18, static_cast<std::uint32_t>(h.Width));
  _Put32(head + 22, static_cast<std::uint32_t>(h.Height));
  _Put16(head + 26, 1);
  _Put16(head + 28, h.BitsPerPixel);
  _Put32(head + 30, h.Compression);
  for (int i = 0; i < 4; ++i) {
    _Put32(head + 54 + 4 * i, h.Masks[i]);
  }
  return _Decode({head, headSize}, _From(file, h.PixelsAt), DATA_TYPE_UINT8, 8, out);
}

namespace {

// Beyond any picture, and far from what 32 bits hold.
constexpr std::uint32_t kMostPnmNumber = 999999999;

bool _IsSpace(std::uint8_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Reads a number of a PNM header behind white space and comments; `*at` then stands behind its
// last digit.
bool _ReadPnmNumber(BYTES file, std::size_t* at, std::uint32_t* out) {
  std::size_t i = *at;
  while (i < file.Size && (_IsSpace(file.Data[i]) || file.Data[i] == '#')) {
    if (file.Data[i] == '#') {
      while (i < file.Size && file.Data[i] != '\n' && file.Data[i] != '\r') {
        ++i;
      }
    } else {
      ++i;
    }
  }
  const std::size_t first = i;
  std::uint32_t value = 0;
  for (; i < file.Size && file.Data[i] >= '0' && file.Data[i] <= '9'; ++i) {
    if (value > kMostPnmNumber / 10) {
      return false;
    }
    value = value * 10 + (file.Data[i] - std::uint32_t{'0'});
  }
  *at = i;
  *out = value;
  return i > first;
}

// Brings samples of 0 to `most` to the full range of their type, rounded; `T` is in the processor's
// byte order.
template <class T> void _Scale(T* samples, std::size_t count, std::uint32_t most) {
  constexpr std::uint32_t kFull = std::numeric_limits<T>::max();
  if (most == kFull) {
    return;
  }
  for (std::size_t i = 0; i < count; ++i) {
    const std::uint64_t sample = std::min<std::uint32_t>(samples[i], most);
    samples[i] = static_cast<T>((sample * kFull + most / 2) / most);
  }
}

} // namespace

bool IsPnm(BYTES head) {
  return head.Size >= 3 && head.Data[0] == 'P' && (head.Data[1] == '5' || head.Data[1] == '6') &&
         (_IsSpace(head.Data[2]) || head.Data[2] == '#');
}

bool DecodePnm(BYTES file, PICTURE* out) {
  std::size_t at = 2;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::uint32_t most = 0;
  if (!_ReadPnmNumber(file, &at, &width) || !_ReadPnmNumber(file, &at, &height) ||
      !_ReadPnmNumber(file, &at, &most) || at >= file.Size || !_IsSpace(file.Data[at]) ||
      most < 1 || most > 65535 || !FitsBudget(width, height, 1, file.Size)) {
    return false;
  }
  ++at;
  const bool wide = most > 255;
  const std::uint64_t samples = std::uint64_t{width} * height * (file.Data[1] == '6' ? 3u : 1u);
  if (samples * (wide ? 2 : 1) > file.Size - at) {
    return false;
  }
  char head[64];
  const int headSize =
      std::snprintf(head, sizeof head, "P%c\n%u %u\n%u\n", file.Data[1], width, height, most);
  if (!_Decode({reinterpret_cast<const std::uint8_t*>(head), static_cast<std::size_t>(headSize)},
               _From(file, at), wide ? DATA_TYPE_UINT16 : DATA_TYPE_UINT8, 1, out)) {
    return false;
  }
  if (!wide) {
    _Scale(out->Pixels.get(), samples, most);
    return true;
  }
  // The decoder leaves 16-bit samples as the file has them, high byte first.
  auto* wides = reinterpret_cast<std::uint16_t*>(out->Pixels.get());
  for (std::uint64_t i = 0; i < samples; ++i) {
    const std::uint8_t* bytes = out->Pixels.get() + 2 * i;
    wides[i] = static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
  }
  _Scale(wides, samples, most);
  return true;
}

bool IsHdr(BYTES head) {
  static constexpr char kMarks[][12] = {"#?RADIANCE\n", "#?RGBE\n"};
  for (const char* mark : kMarks) {
    const std::size_t size = std::strlen(mark);
    if (head.Size >= size && std::memcmp(head.Data, mark, size) == 0) {
      return true;
    }
  }
  return false;
}

// A run of 127 pixels takes two bytes for each of four components.
bool DecodeHdr(BYTES file, PICTURE* out) {
  return _Decode({file.Data, 0}, file, DATA_TYPE_FLOAT, 16, out);
}

namespace {

constexpr std::size_t kTgaHeader = 18;

struct TGA_HEADER {
  std::size_t IdSize;
  bool Indexed;
  bool Packed;
  bool Grey;
  std::uint32_t PaletteStart;
  std::uint32_t PaletteSize;
  std::uint32_t PaletteBits;
  std::uint32_t Width;
  std::uint32_t Height;
  std::uint32_t BitsPerPixel;
  std::uint8_t Descriptor;
};

bool _ReadTgaHeader(BYTES file, TGA_HEADER* h) {
  if (file.Size < kTgaHeader) {
    return false;
  }
  const std::uint8_t* p = file.Data;
  const int kind = p[2] & 7;
  h->IdSize = p[0];
  h->Indexed = p[1] == 1;
  h->Packed = (p[2] & 8) != 0;
  h->Grey = kind == 3;
  h->PaletteStart = Get16(p + 3);
  h->PaletteSize = Get16(p + 5);
  h->PaletteBits = p[7];
  h->Width = Get16(p + 12);
  h->Height = Get16(p + 14);
  h->BitsPerPixel = p[16];
  h->Descriptor = p[17];
  return p[1] <= 1 && p[2] < 16 && (h->Indexed ? kind == 1 : kind == 2 || kind == 3);
}

bool _CheckTga(const TGA_HEADER& h) {
  const auto isColor = [](std::uint32_t bits) {
    return bits == 15 || bits == 16 || bits == 24 || bits == 32;
  };
  // The two highest bits of the descriptor tell of an interleaving that nobody writes.
  if (h.Width < 1 || h.Height < 1 || (h.Descriptor & 0xC0) != 0) {
    return false;
  }
  if (h.Indexed) {
    return (h.BitsPerPixel == 8 || h.BitsPerPixel == 16) && h.PaletteSize >= 1 &&
           h.PaletteStart + h.PaletteSize <= 65535 &&
           (h.PaletteBits == 8 || isColor(h.PaletteBits));
  }
  return h.Grey ? h.BitsPerPixel == 8 || h.BitsPerPixel == 16 : isColor(h.BitsPerPixel);
}

void _Mirror(PICTURE* picture) {
  const auto pixelBytes = static_cast<std::size_t>(picture->Channels);
  const auto width = static_cast<std::size_t>(picture->Width);
  const auto height = static_cast<std::size_t>(picture->Height);
  for (std::size_t y = 0; y < height; ++y) {
    std::uint8_t* row = picture->Pixels.get() + y * width * pixelBytes;
    for (std::size_t left = 0, right = width - 1; left < right; ++left, --right) {
      std::swap_ranges(row + left * pixelBytes, row + (left + 1) * pixelBytes,
                       row + right * pixelBytes);
    }
  }
}

} // namespace

bool IsTga(BYTES head) {
  TGA_HEADER h;
  return _ReadTgaHeader(head, &h) && _CheckTga(h);
}

// The decoder gets the header without an identification, and a palette that starts at entry 0; the
// entries below its first are black.
bool DecodeTga(BYTES file, PICTURE* out) {
  TGA_HEADER h;
  if (!_ReadTgaHeader(file, &h) || !_CheckTga(h)) {
    return false;
  }
  const std::size_t entry = h.Indexed ? (h.PaletteBits + 7) / 8 : 0;
  const std::size_t paletteAt = kTgaHeader + h.IdSize;
  const std::size_t pixelsAt = paletteAt + h.PaletteSize * entry;
  if (pixelsAt > file.Size) {
    return false;
  }
  const std::uint64_t pixels = std::uint64_t{h.Width} * h.Height;
  if (!h.Packed && pixels * ((h.BitsPerPixel + 7) / 8) > file.Size - pixelsAt) {
    return false;
  }
  const std::size_t headSize = kTgaHeader + (h.PaletteStart + h.PaletteSize) * entry;
  const TBlock head(static_cast<std::uint8_t*>(std::calloc(headSize, 1)));
  if (!head) {
    return false;
  }
  std::memcpy(head.get(), file.Data, kTgaHeader);
  head[0] = 0;
  if (h.Indexed) {
    _Put16(head.get() + 3, 0);
    _Put16(head.get() + 5, h.PaletteStart + h.PaletteSize);
    std::memcpy(head.get() + kTgaHeader + h.PaletteStart * entry, file.Data + paletteAt,
                h.PaletteSize * entry);
  }
  // A packet of 128 pixels takes two bytes at the least.
  if (!_Decode({head.get(), headSize}, _From(file, pixelsAt), DATA_TYPE_UINT8, 64, out)) {
    return false;
  }
  if ((h.Descriptor & 0x10) != 0) {
    _Mirror(out);
  }
  return true;
}

} // namespace zx::image
