#include <ZxCore3D/object/TImageSurface.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>

namespace Zx3D {

TImageSurface::TImageSurface() : m_Surface{}, m_ExtraSize(0) {}

TImageSurface::~TImageSurface() { FreeDataSurfaceData(m_Surface); }

bool TImageSurface::SetDataSize(unsigned long n) {
  if (n == m_Surface.DataSize) {
    return true;
  }
  if (n == 0) {
    FreeDataSurfaceData(m_Surface);
    return true;
  }
  std::uint64_t size = 0;
  if (__builtin_add_overflow(m_ExtraSize, n, &size)) {
    return false;
  }
  // realloc of a null block is malloc.
  void* block = std::realloc(m_Surface.Data, size);
  if (block == nullptr) {
    return false;
  }
  m_Surface.Data = static_cast<std::uint8_t*>(block);
  m_Surface.DataSize = n;
  return true;
}

namespace {

struct TFree {
  void operator()(void* block) const noexcept { std::free(block); }
};

// Whether `data` may point into the surface's block, the slack behind its pixels included. Where
// the answer is a wrong yes, the pixels are copied once more than needed, and that is all.
bool _MayBeInside(const DATASURFACE& surface, std::uint64_t extraSize, const void* data) {
  const std::uint64_t offset =
      reinterpret_cast<std::uintptr_t>(data) - reinterpret_cast<std::uintptr_t>(surface.Data);
  const std::uint64_t slack = static_cast<std::uint64_t>(surface.RowStride) +
                              static_cast<std::uint64_t>(surface.PixelStride);
  return surface.Data != nullptr &&
         (offset < surface.DataSize ||
          (offset - surface.DataSize < extraSize || offset - surface.DataSize < slack));
}

} // namespace

bool TImageSurface::SetImage2D(unsigned long w, unsigned long h, unsigned long pixelStride,
                               unsigned long rowStride, DATA_FORMAT f, DATA_TYPE t, int channels,
                               void* data) {
  unsigned long size = 0;
  if (__builtin_mul_overflow(rowStride, h, &size)) {
    return false;
  }
  // Another size may move the block or cut it short, and with it pixels that lie inside.
  std::unique_ptr<void, TFree> apart;
  if (size != 0 && size != m_Surface.DataSize && data != nullptr &&
      _MayBeInside(m_Surface, m_ExtraSize, data)) {
    apart.reset(std::malloc(size));
    if (!apart) {
      return false;
    }
    data = std::memcpy(apart.get(), data, size);
  }
  if (!SetDataSize(size)) {
    return false;
  }
  m_Surface.Width = static_cast<std::int32_t>(w);
  m_Surface.Height = static_cast<std::int32_t>(h);
  m_Surface.Depth = 1;
  m_Surface.PixelStride = static_cast<std::int32_t>(pixelStride);
  m_Surface.RowStride = static_cast<std::int32_t>(rowStride);
  m_Surface.SliceStride = static_cast<std::int32_t>(size);
  m_Surface.Format = f;
  m_Surface.Type = t;
  m_Surface.Channels = static_cast<std::uint8_t>(channels);
  if (data != nullptr && size != 0) {
    std::memmove(m_Surface.Data, data, size);
  }
  return true;
}

bool TImageSurface::SetImage2D(unsigned long w, unsigned long h, DATA_FORMAT f, DATA_TYPE t,
                               int channels, void* data) {
  const unsigned long pixelStride = GetTypeSize(t) * static_cast<unsigned long>(channels);
  unsigned long rowStride = 0;
  if (__builtin_mul_overflow(pixelStride, w, &rowStride)) {
    return false;
  }
  return SetImage2D(w, h, pixelStride, rowStride, f, t, channels, data);
}

void TImageSurface::AttachDataSurface(const DATASURFACE& s) {
  const DATASURFACE taken = s;
  if (taken.Data == m_Surface.Data) {
    m_Surface.Data = nullptr;
  }
  FreeDataSurfaceData(m_Surface);
  m_Surface = taken;
  m_ExtraSize = 0;
}

void TImageSurface::Attach(DATASURFACE& s) {
  AttachDataSurface(s);
  m_ExtraSize = m_Surface.DataSize;
}

namespace {

bool _ToObject(DATASURFACE& loaded, TImageSurface** out, TZxMessage* reason) {
  TImageSurface* image = new (std::nothrow) TImageSurface;
  if (image == nullptr) {
    FreeDataSurfaceData(loaded);
    if (reason != nullptr) {
      *reason = TZxMessage("out of memory"); // short enough to need none
    }
    return false;
  }
  image->AttachDataSurface(loaded);
  *out = image;
  return true;
}

} // namespace

bool LoadImage(const std::string& name, TSaveImageHint* hint, TImageSurface** out) {
  return LoadImage(name, hint, out, nullptr);
}

bool LoadImage(TZxStream* stream, TSaveImageHint* hint, TImageSurface** out) {
  return LoadImage(stream, hint, out, nullptr);
}

bool LoadImage(const std::string& name, TSaveImageHint* hint, TImageSurface** out,
               TZxMessage* reason) {
  DATASURFACE loaded = {};
  return ::LoadImage(name, hint, &loaded, reason) && _ToObject(loaded, out, reason);
}

bool LoadImage(TZxStream* stream, TSaveImageHint* hint, TImageSurface** out, TZxMessage* reason) {
  DATASURFACE loaded = {};
  return ::LoadImage(stream, hint, &loaded, reason) && _ToObject(loaded, out, reason);
}

} // namespace Zx3D
