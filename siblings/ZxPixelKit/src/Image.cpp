#include <ZxPixelKit/Image.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxBaseKit/TZxStream.h>
#include <ZxPixelKit/Surface.h>
#include <ZxPixelKit/TDataSurface.h>

#include "ImageDecoders.h"
#include "ImageOrientation.h"

namespace zx::image {

bool TReason::Refuse(const char* text) { return Refuse(text, nullptr); }

bool TReason::Refuse(const char* text, const char* detail) {
  const bool more = detail != nullptr;
  std::snprintf(Text, sizeof Text, "%s%s%s", text, more ? ": " : "", more ? detail : "");
  return false;
}

bool RefuseByErrno(TReason* why) {
  char text[128];
  return why->Refuse(strerror_r(errno, text, sizeof text));
}

void Tell(const TReason& why, TZxMessage* reason) {
  if (reason == nullptr) {
    return;
  }
  try {
    *reason = TZxMessage(why.Text);
  } catch (const std::bad_alloc&) {
    *reason = TZxMessage(kOutOfMemory); // short enough to need none
  }
}

bool FitsBudget(std::int64_t width, std::int64_t height, std::uint64_t pixelsPerByte,
                std::size_t fileSize, TReason* why) {
  constexpr auto kMost = static_cast<std::int64_t>(ZxMaxImagePixels);
  if (width < 1 || height < 1) {
    return why->Refuse("has no pixels");
  }
  if (width > kMost || height > kMost / width) {
    return why->Refuse("has more than 2^28 pixels");
  }
  return static_cast<std::uint64_t>(width * height) / pixelsPerByte <= fileSize ||
         why->Refuse("promises more pixels than its bytes can hold");
}

namespace {

using TDecode = bool (*)(TBytesView file, TPicture* out, TReason* why);

// The first bytes by which a file is told; what nobody knows is not read any further.
constexpr std::size_t kHeadSize = 1 << 16;

// No file of a picture within the budget needs more: 16 bits in four components, stored plainly.
constexpr std::size_t kMostFileSize = std::size_t{ZxMaxImagePixels} * 8 + (1 << 26);

// The TGA test comes last, since it has no mark to go by.
TDecode _FindDecoder(TBytesView head) {
  static constexpr struct {
    bool (*Is)(TBytesView head);
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
  template <class TRead> bool Read(std::size_t most, TRead& read, TReason* why) {
    while (m_Size < most) {
      if (m_Size == m_Capacity && !_Grow()) {
        return why->Refuse(kOutOfMemory);
      }
      const std::size_t asked = std::min(m_Capacity, most) - m_Size;
      const std::size_t got = read(m_Block.get() + m_Size, asked);
      if (got > asked) {
        return why->Refuse("can't be read");
      }
      if (got == 0) {
        break;
      }
      m_Size += got;
    }
    return true;
  }

  TBytesView Get() const { return {m_Block.get(), m_Size}; }

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

// Turns the picture as it is to be seen, bottom row first, into a block with slack behind its
// pixels.
bool _ToSurface(const TPicture& picture, DATASURFACE* out, TReason* why) {
  static constexpr DATA_FORMAT kFormats[] = {DATA_FORMAT_LUMINANCE, DATA_FORMAT_LUMINANCE_ALPHA,
                                             DATA_FORMAT_RGB, DATA_FORMAT_RGBA};
  const TWalk walk = WalkOf(picture.Width, picture.Height, picture.Orientation);
  DATASURFACE made;
  if (picture.Channels < 1 || picture.Channels > 4 ||
      !ds::Set(&made, walk.Width, walk.Height, kFormats[picture.Channels - 1], picture.Type,
               picture.Channels, nullptr)) {
    return why->Refuse("has rows of more than 2 GiB");
  }
  const auto rowStride = static_cast<std::size_t>(made.RowStride);
  const auto pixelStride = static_cast<std::size_t>(made.PixelStride);
  made.Data = AllocateSurfaceBlock(made.DataSize, rowStride, pixelStride);
  if (made.Data == nullptr) {
    return why->Refuse(kOutOfMemory);
  }
  const auto stored = [&](std::ptrdiff_t index) {
    return picture.Pixels.get() + static_cast<std::size_t>(index) * pixelStride;
  };
  for (int y = 0; y < walk.Height; ++y) {
    std::uint8_t* row = made.Data + static_cast<std::size_t>(walk.Height - 1 - y) * rowStride;
    const std::ptrdiff_t first = walk.First + y * walk.Row;
    if (walk.Column == 1) {
      std::memcpy(row, stored(first), rowStride);
      continue;
    }
    for (int x = 0; x < walk.Width; ++x, row += pixelStride) {
      std::memcpy(row, stored(first + x * walk.Column), pixelStride);
    }
  }
  *out = made;
  return true;
}

template <class TRead> bool _LoadBytes(TRead read, DATASURFACE* out, TReason* why) {
  TGrowing bytes;
  if (!bytes.Read(kHeadSize, read, why)) {
    return false;
  }
  const TDecode decode = _FindDecoder(bytes.Get());
  if (decode == nullptr) {
    return why->Refuse(bytes.Get().Size == 0 ? "is empty" : "of no known image kind");
  }
  if (!bytes.Read(kMostFileSize, read, why)) {
    return false;
  }
  TPicture picture;
  return decode(bytes.Get(), &picture, why) && _ToSurface(picture, out, why);
}

// A descriptor, read without the standard library's buffer: that gives up when a signal comes.
class TSource {
public:
  explicit TSource(const char* name) {
    do {
      m_File = open(name, O_RDONLY | O_CLOEXEC);
    } while (m_File < 0 && errno == EINTR);
  }
  ~TSource() {
    if (m_File >= 0) {
      close(m_File);
    }
  }
  TSource(const TSource&) = delete;
  TSource& operator=(const TSource&) = delete;

  bool IsOpen() const { return m_File >= 0; }
  /// The count that was read, 0 at the end, -1 with `errno`.
  ssize_t Read(void* data, std::size_t size) const {
    ssize_t got;
    do {
      got = read(m_File, data, size);
    } while (got < 0 && errno == EINTR);
    return got;
  }

private:
  int m_File;
};

bool _LoadFrom(const std::string& name, DATASURFACE* out, TReason* why) {
  const TSource file(name.c_str());
  if (!file.IsOpen()) {
    return RefuseByErrno(why);
  }
  bool failed = false;
  const auto read = [&](std::uint8_t* data, std::size_t size) -> std::size_t {
    const ssize_t got = file.Read(data, size);
    if (got < 0) {
      failed = true;
      RefuseByErrno(why);
      return 0;
    }
    return static_cast<std::size_t>(got);
  };
  // What could be read of a file that can't be read to its end is not the file.
  TReason ofBytes;
  DATASURFACE made = {};
  const bool done = _LoadBytes(read, &made, &ofBytes);
  if (failed) {
    FreeDataSurfaceData(made);
    return false;
  }
  if (!done) {
    *why = ofBytes;
    return false;
  }
  *out = made;
  return true;
}

bool _LoadFrom(TZxStream* stream, DATASURFACE* out, TReason* why) {
  if (stream == nullptr || !static_cast<bool>(*stream)) {
    return why->Refuse("no stream to read from");
  }
  const auto read = [&](std::uint8_t* data, std::size_t size) {
    return std::size_t{stream->Read(data, size)};
  };
  return _LoadBytes(read, out, why);
}

template <class TSource> bool _Load(const TSource& source, DATASURFACE* out, TZxMessage* reason) {
  TReason why;
  if (_LoadFrom(source, out, &why)) {
    return true;
  }
  Tell(why, reason);
  return false;
}

template <class TSource> bool _Load(const TSource& source, TDataSurface* out, TZxMessage* reason) {
  DATASURFACE made = {};
  if (!_Load(source, &made, reason)) {
    return false;
  }
  out->Adopt(made);
  return true;
}

} // namespace

} // namespace zx::image

bool LoadImage(const std::string& name, TSaveImageHint*, DATASURFACE* out) {
  return zx::image::_Load(name, out, static_cast<TZxMessage*>(nullptr));
}

bool LoadImage(TZxStream* stream, TSaveImageHint*, DATASURFACE* out) {
  return zx::image::_Load(stream, out, static_cast<TZxMessage*>(nullptr));
}

bool LoadImage(const std::string& name, TSaveImageHint*, DATASURFACE* out, TZxMessage* reason) {
  return zx::image::_Load(name, out, reason);
}

bool LoadImage(TZxStream* stream, TSaveImageHint*, DATASURFACE* out, TZxMessage* reason) {
  return zx::image::_Load(stream, out, reason);
}

bool LoadImage(const std::string& name, TSaveImageHint*, TDataSurface* out, TZxMessage* reason) {
  return zx::image::_Load(name, out, reason);
}

bool LoadImage(TZxStream* stream, TSaveImageHint*, TDataSurface* out, TZxMessage* reason) {
  return zx::image::_Load(stream, out, reason);
}
