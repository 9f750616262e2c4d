#include "ImageStb.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace zx::image {

namespace {

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

bool _CheckBmp(BYTES file, const BMP_HEADER& h, REASON* why) {
  const std::uint32_t bits = h.BitsPerPixel;
  const bool known = bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
  const bool masked = h.Compression == 3 && (bits == 16 || bits == 32);
  if (!known || h.Planes != 1 || (h.Compression != 0 && !masked) ||
      (h.HeaderSize == 12 && (bits == 16 || bits == 32)) || h.Width < 1 ||
      h.Height == std::numeric_limits<std::int32_t>::min() || h.PixelsAt < h.PaletteAt ||
      h.PixelsAt > file.Size) {
    return why->Refuse(kBadHeader);
  }
  const std::uint64_t rowBytes = (static_cast<std::uint64_t>(h.Width) * bits + 31) / 32 * 4;
  return static_cast<std::uint64_t>(std::abs(h.Height)) <= (file.Size - h.PixelsAt) / rowBytes ||
         why->Refuse(kTruncated);
}

} // namespace

bool IsBmp(BYTES head) { return head.Size >= 2 && head.Data[0] == 'B' && head.Data[1] == 'M'; }

// Every header is rewritten as the one kind that the decoder reads without trouble, with a palette
// of full length: colours that the file does not have are black.
bool DecodeBmp(BYTES file, PICTURE* out, REASON* why) {
  BMP_HEADER h;
  if (!_ReadBmpHeader(file, &h)) {
    return why->Refuse(kBadHeader);
  }
  if (!_CheckBmp(file, h, why)) {
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
  Put32(head + 10, static_cast<std::uint32_t>(headSize));
  Put32(head + 14, kBmpInfoHeader);
  Put32(head + 18, static_cast<std::uint32_t>(h.Width));
  Put32(head + 22, static_cast<std::uint32_t>(h.Height));
  Put16(head + 26, 1);
  Put16(head + 28, h.BitsPerPixel);
  Put32(head + 30, h.Compression);
  for (int i = 0; i < 4; ++i) {
    Put32(head + 54 + 4 * i, h.Masks[i]);
  }
  return DecodeByStb({head, headSize}, From(file, h.PixelsAt), DATA_TYPE_UINT8, 8, out, why);
}

} // namespace zx::image
