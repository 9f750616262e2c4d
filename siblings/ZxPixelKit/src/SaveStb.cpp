#include "ImageEncoders.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <new>

namespace zx::image {

namespace {

// The encoder uses what it allocates without a look.
void* _AllocateOrThrow(std::size_t size) {
  void* block = std::malloc(size);
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  return block;
}

} // namespace

} // namespace zx::image

#define STBIW_MALLOC(size) zx::image::_AllocateOrThrow(size)
#define STBIW_REALLOC(block, size) std::realloc(block, size)
#define STBIW_FREE(block) std::free(block)
#define STBIW_ASSERT(x) static_cast<void>(0)
#define STB_IMAGE_WRITE_STATIC
#define STB_IMAGE_WRITE_IMPLEMENTATION
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#include <stb_image_write.h>
#pragma GCC diagnostic pop

namespace zx::image {

namespace {

struct TSink {
  std::FILE* File;
  TReason* Why;
  bool Failed;
};

void _OnWrite(void* user, void* data, int size) {
  TSink* sink = static_cast<TSink*>(user);
  const auto bytes = static_cast<std::size_t>(size);
  if (!sink->Failed && std::fwrite(data, 1, bytes, sink->File) != bytes) {
    sink->Failed = true;
    RefuseByErrno(sink->Why);
  }
}

// The whole picture, tight and top row first; the encoder counts in ints.
TBlock _Tight(const DATASURFACE& surface, std::size_t pixelBytes, TReason* why) {
  constexpr std::size_t kMost = INT_MAX - (1 << 20);
  const std::size_t rowBytes = static_cast<std::size_t>(surface.Width) * pixelBytes;
  const auto height = static_cast<std::size_t>(surface.Height);
  if (rowBytes > kMost / height) {
    why->Refuse("the picture is too large for a file of this kind");
    return nullptr;
  }
  TBlock block(static_cast<std::uint8_t*>(std::malloc(rowBytes * height)));
  if (!block) {
    why->Refuse(kOutOfMemory);
  }
  return block;
}

template <class TWrite> bool _Write(std::FILE* file, TReason* why, const TWrite& write) {
  TSink sink = {file, why, false};
  try {
    return write(&sink) != 0 ? !sink.Failed : why->Refuse("can't be written");
  } catch (const std::bad_alloc&) {
    return why->Refuse(kOutOfMemory);
  }
}

} // namespace

bool EncodeBmp(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint&, TReason* why) {
  // Luminance and alpha go out as four channels; luminance alone the encoder spreads by itself.
  const bool spread = surface.Channels == 2;
  const std::size_t channels = spread ? 4 : surface.Channels;
  const std::size_t rowBytes = static_cast<std::size_t>(surface.Width) * channels;
  // Room for a row of a file even where the surface has fewer channels.
  const TBlock pixels = _Tight(surface, std::max<std::size_t>(channels, 3) + 1, why);
  if (!pixels) {
    return false;
  }
  for (int y = 0; y < surface.Height; ++y) {
    std::uint8_t* row = pixels.get() + static_cast<std::size_t>(y) * rowBytes;
    CopyRowFromTop(surface, y, surface.Channels, row);
    for (int x = spread ? surface.Width - 1 : -1; x >= 0; --x) {
      const std::uint8_t luminance = row[2 * x];
      const std::uint8_t alpha = row[2 * x + 1];
      std::memset(row + 4 * x, luminance, 3);
      row[4 * x + 3] = alpha;
    }
  }
  return _Write(file, why, [&](TSink* sink) {
    return stbi_write_bmp_to_func(_OnWrite, sink, surface.Width, surface.Height,
                                  static_cast<int>(channels), pixels.get());
  });
}

bool EncodeTga(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint&, TReason* why) {
  const std::size_t rowBytes = static_cast<std::size_t>(surface.Width) * surface.Channels;
  const TBlock pixels = _Tight(surface, surface.Channels, why);
  if (!pixels) {
    return false;
  }
  for (int y = 0; y < surface.Height; ++y) {
    CopyRowFromTop(surface, y, surface.Channels,
                   pixels.get() + static_cast<std::size_t>(y) * rowBytes);
  }
  return _Write(file, why, [&](TSink* sink) {
    return stbi_write_tga_to_func(_OnWrite, sink, surface.Width, surface.Height, surface.Channels,
                                  pixels.get());
  });
}

// Three components a pixel within what a common exponent of 8 bits can tell.
bool EncodeHdr(std::FILE* file, const DATASURFACE& surface, const TSaveImageHint&, TReason* why) {
  constexpr float kMost = 255.0f / 256.0f * 0x1p127f;
  const auto width = static_cast<std::size_t>(surface.Width);
  const TBlock pixels = _Tight(surface, 3 * sizeof(float), why);
  const TBlock row(
      static_cast<std::uint8_t*>(std::malloc(width * surface.Channels * sizeof(float))));
  if (!pixels) {
    return false;
  }
  if (!row) {
    return why->Refuse(kOutOfMemory);
  }
  auto* to = reinterpret_cast<float*>(pixels.get());
  for (int y = 0; y < surface.Height; ++y) {
    CopyRowFromTop(surface, y, surface.Channels * sizeof(float), row.get());
    const auto* from = reinterpret_cast<const float*>(row.get());
    for (std::size_t x = 0; x < width; ++x, from += surface.Channels) {
      for (int component = 0; component < 3; ++component) {
        const float value = from[surface.Channels < 3 ? 0 : component];
        *to++ = value > 0 ? std::min(value, kMost) : 0; // no number is not above 0 either
      }
    }
  }
  return _Write(file, why, [&](TSink* sink) {
    return stbi_write_hdr_to_func(_OnWrite, sink, surface.Width, surface.Height, 3,
                                  reinterpret_cast<const float*>(pixels.get()));
  });
}

} // namespace zx::image
