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

// What the compression field tells.
constexpr std::uint32_t kPlain = 0;
constexpr std::uint32_t kPacked8 = 1;
constexpr std::uint32_t kPacked4 = 2;
constexpr std::uint32_t kMasked = 3;

struct TBmpHeader {
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

  bool IsPacked() const { return Compression == kPacked8 || Compression == kPacked4; }
};

// Fields of the six known headers, whose common parts lie at the same places.
bool _ReadBmpHeader(TBytesView file, TBmpHeader* h) {
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
  if (h->Compression == kMasked) {
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

bool _CheckBmp(TBytesView file, const TBmpHeader& h, TReason* why) {
  const std::uint32_t bits = h.BitsPerPixel;
  const bool known = bits == 1 || bits == 4 || bits == 8 || bits == 16 || bits == 24 || bits == 32;
  const bool fits = h.Compression == kPlain ||
                    (h.Compression == kMasked && (bits == 16 || bits == 32)) ||
                    (h.Compression == kPacked8 && bits == 8 && h.Height > 0) ||
                    (h.Compression == kPacked4 && bits == 4 && h.Height > 0);
  if (!known || !fits || h.Planes != 1 || (h.HeaderSize == 12 && (bits == 16 || bits == 32)) ||
      h.Width < 1 || h.Height == std::numeric_limits<std::int32_t>::min() ||
      h.PixelsAt < h.PaletteAt || h.PixelsAt > file.Size) {
    return why->Refuse(kBadHeader);
  }
  if (h.IsPacked()) {
    return true;
  }
  const std::uint64_t rowBytes = (static_cast<std::uint64_t>(h.Width) * bits + 31) / 32 * 4;
  return static_cast<std::uint64_t>(std::abs(h.Height)) <= (file.Size - h.PixelsAt) / rowBytes ||
         why->Refuse(kTruncated);
}

// Runs of packed pixels, spread into rows of a byte a pixel as the plain kind has them: the bottom
// row first, each of a multiple of four bytes. What no run reaches has colour 0.
//
//     n c          n pixels of colour c; of two colours in turn, high half first, with 4 bits
//     0 0          to the next row
//     0 1          the end
//     0 2 dx dy    that far right and up
//     0 n ...      n pixels one by one, up to an even byte
class TUnpacking {
public:
  TUnpacking(TBytesView packed, const TBmpHeader& h, std::uint8_t* rows, std::size_t rowBytes)
      : m_Packed(packed), m_Rows(rows), m_RowBytes(rowBytes),
        m_Width(static_cast<std::size_t>(h.Width)), m_Height(static_cast<std::size_t>(h.Height)),
        m_IsHalf(h.Compression == kPacked4) {}

  bool Run(TReason* why) {
    for (;;) {
      if (_Left() < 2) {
        // The mark of the end may be missing behind the last pixel.
        return m_Y >= m_Height || (m_Y == m_Height - 1 && m_X == m_Width) ||
               why->Refuse(kTruncated);
      }
      const std::uint8_t* code = m_Packed.Data + m_At;
      m_At += 2;
      if (code[0] == 0 && code[1] == 1) {
        return true;
      }
      if (!(code[0] != 0 ? _Put(code + 1, code[0], true, why) : _Escape(code[1], why))) {
        return false;
      }
    }
  }

private:
  std::size_t _Left() const { return m_Packed.Size - m_At; }

  bool _Escape(std::size_t code, TReason* why) {
    if (code == 0) {
      m_X = 0;
      ++m_Y;
      return true;
    }
    const std::size_t bytes = code == 2 ? 2 : m_IsHalf ? (code + 1) / 2 : code;
    if (_Left() < bytes) {
      return why->Refuse(kTruncated);
    }
    const std::uint8_t* data = m_Packed.Data + m_At;
    m_At += std::min(_Left(), bytes + bytes % 2);
    if (code == 2) {
      m_X += data[0];
      m_Y += data[1];
      return true;
    }
    return _Put(data, code, false, why);
  }

  // `count` pixels from `colors` on; `repeated`: all from its first byte.
  bool _Put(const std::uint8_t* colors, std::size_t count, bool repeated, TReason* why) {
    if (m_Y >= m_Height || m_X > m_Width || count > m_Width - m_X) {
      return why->Refuse("damaged", "a run beyond its row");
    }
    std::uint8_t* to = m_Rows + m_Y * m_RowBytes + m_X;
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint8_t byte = colors[repeated ? 0 : m_IsHalf ? i / 2 : i];
      to[i] = !m_IsHalf ? byte : static_cast<std::uint8_t>(i % 2 == 0 ? byte >> 4 : byte & 15);
    }
    m_X += count;
    return true;
  }

  TBytesView m_Packed;
  std::uint8_t* m_Rows;
  std::size_t m_RowBytes;
  std::size_t m_Width;
  std::size_t m_Height;
  bool m_IsHalf;
  std::size_t m_At = 0;
  std::size_t m_X = 0;
  std::size_t m_Y = 0;
};

// The longest run codes 255 pixels in two bytes; small pictures may be nearly empty.
constexpr std::uint64_t kMostPackedPixelsPerByte = 128;
constexpr std::int64_t kFreePixels = std::int64_t{1} << 20;

bool _Unpack(TBytesView file, const TBmpHeader& h, TBlock* rows, std::size_t* size, TReason* why) {
  const bool small = std::int64_t{h.Width} * h.Height <= kFreePixels;
  if (!FitsBudget(h.Width, h.Height, small ? ~std::uint64_t{0} : kMostPackedPixelsPerByte,
                  file.Size, why)) {
    return false;
  }
  const std::size_t rowBytes = (static_cast<std::size_t>(h.Width) + 3) / 4 * 4;
  *size = rowBytes * static_cast<std::size_t>(h.Height);
  rows->reset(static_cast<std::uint8_t*>(std::calloc(*size, 1)));
  if (!*rows) {
    return why->Refuse(kOutOfMemory);
  }
  return TUnpacking(From(file, h.PixelsAt), h, rows->get(), rowBytes).Run(why);
}

} // namespace

bool IsBmp(TBytesView head) { return head.Size >= 2 && head.Data[0] == 'B' && head.Data[1] == 'M'; }

// Every header is rewritten as the one kind that the decoder reads without trouble, with a palette
// of full length: colours that the file does not have are black. It does not read packed pixels, so
// it gets those spread out.
bool DecodeBmp(TBytesView file, TPicture* out, TReason* why) {
  TBmpHeader h;
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
  Put16(head + 28, h.IsPacked() ? 8 : h.BitsPerPixel);
  Put32(head + 30, h.IsPacked() ? kPlain : h.Compression);
  for (int i = 0; i < 4; ++i) {
    Put32(head + 54 + 4 * i, h.Masks[i]);
  }
  TBlock rows;
  TBytesView body = From(file, h.PixelsAt);
  if (h.IsPacked()) {
    if (!_Unpack(file, h, &rows, &body.Size, why)) {
      return false;
    }
    body.Data = rows.get();
  }
  return DecodeByStb({head, headSize}, body, DATA_TYPE_UINT8, 8, out, why);
}

} // namespace zx::image
