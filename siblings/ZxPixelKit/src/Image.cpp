#include <ZxPixelKit/Image.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

#include <ZxBaseKit/TZxStream.h>
#include <ZxPixelKit/Surface.h>

#include "ImageDecoders.h"

namespace zx::image {

bool FitsBudget(std::int64_t width, std::int64_t height, std::uint64_t pixelsPerByte,
                std::size_t fileSize) {
  constexpr auto kMost = static_cast<std::int64_t>(ZxMaxImagePixels);
  if (width < 1 || height < 1 || width > kMost || height > kMost / width) {
    return false;
  }
  return static_cast<std::uint64_t>(width * height) / pixelsPerByte <= fileSize;
}

namespace {

using TDecode = bool (*)(BYTES file, PICTURE* out);

// The first bytes by which a file is told; what nobody knows is not read any further.
constexpr std::size_t kHeadSize = 1 << 16;

// No file of a picture within the budget needs more: 16 bits in four components, stored plainly.
constexpr std::size_t kMostFileSize = std::size_t{ZxMaxImagePixels} * 8 + (1 << 26);

// The TGA test comes last, since it has no mark to go by.
TDecode _FindDecoder(BYTES head) {
  static constexpr struct {
    bool (*Is)(BYTES head);
    TDecode Decode;
  } kKinds[] = {
      {IsPng, DecodePng}, {IsJpeg, DecodeJpeg}, {IsBmp, DecodeBmp},
      {IsPnm, DecodePnm}, {IsHdr, DecodeHdr},   {IsTga, DecodeTga},
  };
  for (const auto& kind : kKinds) {
    if (kind.Is(head)) {
      return kind.Decode;
    }
  }
  return nullptr;
}

// Bytes that grow as they arrive.
class TGrowing {
public:
  // Reads up to `most` bytes in all by `read(data, size)`, until that gives 0.
  template <class TRead> bool Read(std::size_t most, TRead& read) {
    while (m_Size < most) {
      if (m_Size == m_Capacity && !_Grow()) {
        return false;
      }
      const std::size_t asked = std::min(m_Capacity, most) - m_Size;
      const std::size_t got = read(m_Block.get() + m_Size, asked);
      if (got > asked) {
        return false;
      }
      if (got == 0) {
        break;
      }
      m_Size += got;
    }
    return true;
  }

  BYTES Get() const { return {m_Block.get(), m_Size}; }

private:
  bool _Grow() {
    const std::size_t capacity = std::max(kHeadSize, m_Capacity + m_Capacity / 2);
    void* block = std::realloc(m_Block.get(), capacity);
    if (block == nullptr) {
      return false;
    }
    static_cast<void>(m_Block.release());
    m_Block.reset(static_cast<std::uint8_t*>(block));
    m_Capacity = capacity;
    return true;
  }

  TBlock m_Block;
  std::size_t m_Size = 0;
  std::size_t m_Capacity = 0;
};

// Turns the picture bottom row first, into a block with slack behind its pixels.
bool _ToSurface(const PICTURE& picture, DATASURFACE* out) {
  static constexpr DATA_FORMAT kFormats[] = {DATA_FORMAT_LUMINANCE, DATA_FORMAT_LUMINANCE_ALPHA,
                                             DATA_FORMAT_RGB, DATA_FORMAT_RGBA};
  DATASURFACE made;
  if (picture.Channels < 1 || picture.Channels > 4 ||
      !ds::Set(&made, picture.Width, picture.Height, kFormats[picture.Channels - 1], picture.Type,
               picture.Channels, nullptr)) {
    return false;
  }
  const auto rowStride = static_cast<std::size_t>(made.RowStride);
  const auto height = static_cast<std::size_t>(made.Height);
  made.Data =
      AllocateSurfaceBlock(made.DataSize, rowStride, static_cast<std::uint64_t>(made.PixelStride));
  if (made.Data == nullptr) {
    return false;
  }
  for (std::size_t y = 0; y < height; ++y) {
    std::memcpy(made.Data + y * rowStride, picture.Pixels.get() + (height - 1 - y) * rowStride,
                rowStride);
  }
  *out = made;
  return true;
}

template <class TRead> bool _Load(TRead read, DATASURFACE* out) {
  TGrowing bytes;
  if (!bytes.Read(kHeadSize, read)) {
    return false;
  }
  const TDecode decode = _FindDecoder(bytes.Get());
  if (decode == nullptr || !bytes.Read(kMostFileSize, read)) {
    return false;
  }
  PICTURE picture;
  return decode(bytes.Get(), &picture) && _ToSurface(picture, out);
}

struct TCloseFile {
  void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

} // namespace

} // namespace zx::image

bool LoadImage(const std::string& name, TSaveImageHint*, DATASURFACE* out) {
  const std::unique_ptr<std::FILE, zx::image::TCloseFile> file(std::fopen(name.c_str(), "rbe"));
  if (!file) {
    return false;
  }
  const auto read = [&](std::uint8_t* data, std::size_t size) {
    return std::fread(data, 1, size, file.get());
  };
  return zx::image::_Load(read, out);
}

bool LoadImage(TZxStream* stream, TSaveImageHint*, DATASURFACE* out) {
  if (stream == nullptr || !static_cast<bool>(*stream)) {
    return false;
  }
  const auto read = [&](std::uint8_t* data, std::size_t size) {
    return std::size_t{stream->Read(data, size)};
  };
  return zx::image::_Load(read, out);
}
