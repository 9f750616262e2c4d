#include "ImageStb.h"

#include <cstdlib>
#include <cstring>

namespace zx::image {

namespace {

constexpr std::size_t kTgaHeader = 18;

struct TTgaHeader {
  std::size_t IdSize;
  bool HasPalette;
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

bool _ReadTgaHeader(TBytesView file, TTgaHeader* h) {
  if (file.Size < kTgaHeader) {
    return false;
  }
  const std::uint8_t* p = file.Data;
  const int kind = p[2] & 7;
  h->IdSize = p[0];
  h->HasPalette = p[1] == 1;
  h->Indexed = kind == 1;
  h->Packed = (p[2] & 8) != 0;
  h->Grey = kind == 3;
  h->PaletteStart = Get16(p + 3);
  h->PaletteSize = Get16(p + 5);
  h->PaletteBits = p[7];
  h->Width = Get16(p + 12);
  h->Height = Get16(p + 14);
  h->BitsPerPixel = p[16];
  h->Descriptor = p[17];
  return p[1] <= 1 && p[2] < 16 && kind >= 1 && kind <= 3 && (h->HasPalette || !h->Indexed);
}

bool _CheckTga(const TTgaHeader& h) {
  const auto isColor = [](std::uint32_t bits) {
    return bits == 15 || bits == 16 || bits == 24 || bits == 32;
  };
  // The two highest bits of the descriptor tell of an interleaving that nobody writes.
  if (h.Width < 1 || h.Height < 1 || (h.Descriptor & 0xC0) != 0) {
    return false;
  }
  if (h.HasPalette && h.PaletteBits != 8 && !isColor(h.PaletteBits)) {
    return false;
  }
  if (h.Indexed) {
    return (h.BitsPerPixel == 8 || h.BitsPerPixel == 16) && h.PaletteSize >= 1 &&
           h.PaletteStart + h.PaletteSize <= 65535;
  }
  return h.Grey ? h.BitsPerPixel == 8 || h.BitsPerPixel == 16 : isColor(h.BitsPerPixel);
}

} // namespace

bool IsTga(TBytesView head) {
  TTgaHeader h;
  return _ReadTgaHeader(head, &h) && _CheckTga(h);
}

// The decoder gets the header without an identification, and a palette that starts at entry 0; the
// entries below its first are black. A palette that the pixels do not need is left out.
bool DecodeTga(TBytesView file, TPicture* out, TReason* why) {
  TTgaHeader h = {};
  static_cast<void>(_ReadTgaHeader(file, &h)); // `IsTga` has seen that it is sound
  const std::size_t entry = h.HasPalette ? (h.PaletteBits + 7) / 8 : 0;
  const std::size_t paletteAt = kTgaHeader + h.IdSize;
  const std::size_t pixelsAt = paletteAt + h.PaletteSize * entry;
  if (pixelsAt > file.Size) {
    return why->Refuse(kTruncated);
  }
  const std::uint64_t pixels = std::uint64_t{h.Width} * h.Height;
  if (!h.Packed && pixels * ((h.BitsPerPixel + 7) / 8) > file.Size - pixelsAt) {
    return why->Refuse(kTruncated);
  }
  const std::size_t entries = h.Indexed ? h.PaletteStart + h.PaletteSize : 0;
  const std::size_t headSize = kTgaHeader + entries * entry;
  const TBlock head(static_cast<std::uint8_t*>(std::calloc(headSize, 1)));
  if (!head) {
    return why->Refuse(kOutOfMemory);
  }
  std::memcpy(head.get(), file.Data, kTgaHeader);
  head[0] = 0;
  head[1] = h.Indexed ? 1 : 0;
  Put16(head.get() + 3, 0);
  Put16(head.get() + 5, static_cast<std::uint32_t>(entries));
  if (h.Indexed) {
    std::memcpy(head.get() + kTgaHeader + h.PaletteStart * entry, file.Data + paletteAt,
                h.PaletteSize * entry);
  }
  // A packet of 128 pixels takes two bytes at the least.
  if (!DecodeByStb({head.get(), headSize}, From(file, pixelsAt), DATA_TYPE_UINT8, 64, out, why)) {
    return false;
  }
  if ((h.Descriptor & 0x10) != 0) {
    out->Orientation = 2; // each row is stored from its right end
  }
  return true;
}

} // namespace zx::image
