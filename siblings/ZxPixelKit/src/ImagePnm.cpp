#include "ImageStb.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

namespace zx::image {

namespace {

// Beyond any picture, and far from what 32 bits hold.
constexpr std::uint32_t kMostPnmNumber = 999999999;

bool _IsSpace(std::uint8_t c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Steps over white space and comments.
void _SkipPnmSpace(TBytesView file, std::size_t* at) {
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
  *at = i;
}

// Reads a number behind white space and comments; `*at` then stands behind its last digit.
bool _ReadPnmNumber(TBytesView file, std::size_t* at, std::uint32_t* out) {
  _SkipPnmSpace(file, at);
  std::size_t i = *at;
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

struct TPnmHeader {
  char Kind; // '1' to '6': bits, grey and colour as text, then the same in binary
  std::uint32_t Width;
  std::uint32_t Height;
  std::uint32_t Most;
  std::size_t PixelsAt;

  bool IsBits() const { return Kind == '1' || Kind == '4'; }
  bool IsText() const { return Kind <= '3'; }
  bool IsWide() const { return Most > 255; }
  int Channels() const { return Kind == '3' || Kind == '6' ? 3 : 1; }
  std::size_t Samples() const {
    return std::size_t{Width} * Height * static_cast<unsigned int>(Channels());
  }
};

bool _ReadPnmHeader(TBytesView file, TPnmHeader* h) {
  std::size_t at = 2;
  h->Kind = static_cast<char>(file.Data[1]);
  h->Most = 1;
  if (!_ReadPnmNumber(file, &at, &h->Width) || !_ReadPnmNumber(file, &at, &h->Height) ||
      (!h->IsBits() && !_ReadPnmNumber(file, &at, &h->Most)) || at >= file.Size ||
      !_IsSpace(file.Data[at]) || h->Most < 1 || h->Most > 65535) {
    return false;
  }
  h->PixelsAt = at + 1;
  return true;
}

// The least that the samples take in the file.
std::uint64_t _PnmBytes(const TPnmHeader& h) {
  const std::uint64_t samples = h.Samples();
  switch (h.Kind) {
  case '1':
    return samples; // needs no white space between its digits
  case '2':
  case '3':
    return samples * 2 - 1;
  case '4':
    return (std::uint64_t{h.Width} + 7) / 8 * h.Height;
  default:
    return samples * (h.IsWide() ? 2 : 1);
  }
}

// A bit of the text kind, behind white space and comments.
bool _ReadPnmBit(TBytesView file, std::size_t* at, std::uint32_t* out) {
  _SkipPnmSpace(file, at);
  if (*at >= file.Size || (file.Data[*at] != '0' && file.Data[*at] != '1')) {
    return false;
  }
  *out = file.Data[(*at)++] == '1' ? 1 : 0;
  return true;
}

template <class T>
bool _ReadPnmText(TBytesView file, const TPnmHeader& h, T* samples, TReason* why) {
  const std::size_t count = h.Samples();
  std::size_t at = h.PixelsAt;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t sample = 0;
    if (!(h.IsBits() ? _ReadPnmBit(file, &at, &sample) : _ReadPnmNumber(file, &at, &sample))) {
      return why->Refuse(at >= file.Size ? kTruncated : "holds text that is no number");
    }
    samples[i] = static_cast<T>(h.IsBits() ? 1 - sample : std::min(sample, h.Most));
  }
  return true;
}

// Eight pixels a byte, the highest bit first; each row begins with a byte of its own. 1 is black.
void _UnpackPnmBits(TBytesView file, const TPnmHeader& h, std::uint8_t* samples) {
  const std::size_t rowBytes = (std::size_t{h.Width} + 7) / 8;
  for (std::size_t y = 0; y < h.Height; ++y) {
    const std::uint8_t* row = file.Data + h.PixelsAt + y * rowBytes;
    for (std::size_t x = 0; x < h.Width; ++x) {
      *samples++ = (row[x / 8] >> (7 - x % 8) & 1) == 0 ? 1 : 0;
    }
  }
}

// The kinds that stb_image has no reader for. Samples come out in 0 to `Most`.
bool _ReadPnmSamples(TBytesView file, const TPnmHeader& h, TPicture* out, TReason* why) {
  const std::size_t count = h.Samples();
  TBlock pixels(static_cast<std::uint8_t*>(std::malloc(count * (h.IsWide() ? 2 : 1))));
  if (!pixels) {
    return why->Refuse(kOutOfMemory);
  }
  if (h.Kind == '4') {
    _UnpackPnmBits(file, h, pixels.get());
  } else if (!(h.IsWide()
                   ? _ReadPnmText(file, h, reinterpret_cast<std::uint16_t*>(pixels.get()), why)
                   : _ReadPnmText(file, h, pixels.get(), why))) {
    return false;
  }
  out->Width = static_cast<int>(h.Width);
  out->Height = static_cast<int>(h.Height);
  out->Channels = h.Channels();
  out->Type = h.IsWide() ? DATA_TYPE_UINT16 : DATA_TYPE_UINT8;
  out->Pixels = std::move(pixels);
  return true;
}

bool _ReadPnmBinary(TBytesView file, const TPnmHeader& h, TPicture* out, TReason* why) {
  char head[64];
  const int headSize =
      std::snprintf(head, sizeof head, "P%c\n%u %u\n%u\n", h.Kind, h.Width, h.Height, h.Most);
  if (!DecodeByStb(
          {reinterpret_cast<const std::uint8_t*>(head), static_cast<std::size_t>(headSize)},
          From(file, h.PixelsAt), h.IsWide() ? DATA_TYPE_UINT16 : DATA_TYPE_UINT8, 1, out, why)) {
    return false;
  }
  if (h.IsWide()) {
    // The decoder leaves 16-bit samples as the file has them, high byte first.
    auto* wides = reinterpret_cast<std::uint16_t*>(out->Pixels.get());
    const std::size_t count = h.Samples();
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint8_t* bytes = out->Pixels.get() + 2 * i;
      wides[i] = static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
    }
  }
  return true;
}

} // namespace

bool IsPnm(TBytesView head) {
  return head.Size >= 3 && head.Data[0] == 'P' && head.Data[1] >= '1' && head.Data[1] <= '6' &&
         (_IsSpace(head.Data[2]) || head.Data[2] == '#');
}

bool DecodePnm(TBytesView file, TPicture* out, TReason* why) {
  TPnmHeader h;
  if (!_ReadPnmHeader(file, &h)) {
    return why->Refuse(kBadHeader);
  }
  if (!FitsBudget(h.Width, h.Height, h.Kind == '4' ? 8 : 1, file.Size, why)) {
    return false;
  }
  if (_PnmBytes(h) > file.Size - h.PixelsAt) {
    return why->Refuse(kTruncated);
  }
  TPicture made;
  if (!(h.IsText() || h.IsBits() ? _ReadPnmSamples(file, h, &made, why)
                                 : _ReadPnmBinary(file, h, &made, why))) {
    return false;
  }
  const std::size_t count = h.Samples();
  if (h.IsWide()) {
    _Scale(reinterpret_cast<std::uint16_t*>(made.Pixels.get()), count, h.Most);
  } else {
    _Scale(made.Pixels.get(), count, h.Most);
  }
  *out = std::move(made);
  return true;
}

} // namespace zx::image
