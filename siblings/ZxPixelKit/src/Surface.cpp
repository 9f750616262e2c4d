#include <ZxPixelKit/Surface.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>

namespace {

enum : unsigned int {
  kGLByte = 0x1400,
  kGLUnsignedByte = 0x1401,
  kGLShort = 0x1402,
  kGLUnsignedShort = 0x1403,
  kGLInt = 0x1404,
  kGLUnsignedInt = 0x1405,
  kGLFloat = 0x1406,
  kGLDouble = 0x140A,
  kGLRed = 0x1903,
  kGLRGB = 0x1907,
  kGLRGBA = 0x1908,
  kGLLuminance = 0x1909,
  kGLLuminanceAlpha = 0x190A,
  kGLRG = 0x8227,
};

// Half a tebibyte: beyond any surface, so that absurd sizes do not reach the allocator.
constexpr std::uint64_t kMostBlockBytes = std::uint64_t{1} << 39;

std::uint64_t PixelBytes(const DATASURFACE& surface) {
  return std::uint64_t{surface.Channels} * GetTypeSize(surface.Type);
}

bool HasPixels(const DATASURFACE& surface) {
  return surface.Data != nullptr && surface.Width > 0 && surface.Height > 0 &&
         surface.PixelStride > 0 && surface.RowStride > 0;
}

std::uint8_t* PixelAt(const DATASURFACE& surface, int x, int y) {
  return surface.Data + static_cast<std::ptrdiff_t>(y) * surface.RowStride +
         static_cast<std::ptrdiff_t>(x) * surface.PixelStride;
}

// What is copied from one surface to another: pixels from (0, 0) on.
struct TRect {
  int Width;
  int Height;
  std::uint64_t PixelBytes;
};

// Whether rows of pixels can be moved as a whole.
bool AreTight(const DATASURFACE& from, const DATASURFACE& to, const TRect& part) {
  return from.PixelStride == to.PixelStride &&
         static_cast<std::uint64_t>(from.PixelStride) == part.PixelBytes;
}

bool Overlap(const DATASURFACE& from, const DATASURFACE& to, const TRect& part) {
  const auto first = [](const DATASURFACE& surface) {
    return reinterpret_cast<std::uintptr_t>(surface.Data);
  };
  const auto last = [&](const DATASURFACE& surface) {
    return reinterpret_cast<std::uintptr_t>(PixelAt(surface, part.Width - 1, part.Height - 1)) +
           part.PixelBytes;
  };
  return first(from) < last(to) && first(to) < last(from);
}

void CopyForwards(const DATASURFACE& from, const DATASURFACE& to, const TRect& part) {
  const bool tight = AreTight(from, to, part);
  for (int y = 0; y < part.Height; ++y) {
    if (tight) {
      std::memmove(PixelAt(to, 0, y), PixelAt(from, 0, y),
                   static_cast<std::size_t>(part.Width) * part.PixelBytes);
      continue;
    }
    for (int x = 0; x < part.Width; ++x) {
      std::memmove(PixelAt(to, x, y), PixelAt(from, x, y), part.PixelBytes);
    }
  }
}

// From the last pixel to the first.
void CopyBackwards(const DATASURFACE& from, const DATASURFACE& to, const TRect& part) {
  const bool tight = AreTight(from, to, part);
  for (int y = part.Height - 1; y >= 0; --y) {
    if (tight) {
      std::memmove(PixelAt(to, 0, y), PixelAt(from, 0, y),
                   static_cast<std::size_t>(part.Width) * part.PixelBytes);
      continue;
    }
    for (int x = part.Width - 1; x >= 0; --x) {
      std::memmove(PixelAt(to, x, y), PixelAt(from, x, y), part.PixelBytes);
    }
  }
}

// Where surfaces of different strides overlap, no order is right for all their pixels.
bool CopyByWayOfABlock(const DATASURFACE& from, const DATASURFACE& to, const TRect& part) {
  DATASURFACE between;
  if (!ds::Set(&between, part.Width, part.Height, from.Format, from.Type, from.Channels, nullptr)) {
    return false;
  }
  between.Data = static_cast<std::uint8_t*>(std::malloc(between.DataSize));
  if (between.Data == nullptr) {
    return false;
  }
  CopyForwards(from, between, part);
  CopyForwards(between, to, part);
  std::free(between.Data);
  return true;
}

} // namespace

unsigned long GetTypeSize(DATA_TYPE type) {
  switch (static_cast<std::uint32_t>(type)) {
  case DATA_TYPE_BOOL:
  case DATA_TYPE_INT8:
  case DATA_TYPE_UINT8:
    return 1;
  case DATA_TYPE_INT16:
  case DATA_TYPE_UINT16:
    return 2;
  case DATA_TYPE_INT32:
  case DATA_TYPE_UINT32:
  case DATA_TYPE_FLOAT:
    return 4;
  case DATA_TYPE_INT64:
  case DATA_TYPE_UINT64:
  case DATA_TYPE_DOUBLE:
  case DATA_TYPE_RESERVED8:
    return 8;
  case DATA_TYPE_RESERVED16:
    return 16;
  default:
    return 0;
  }
}

unsigned long GetTypeSize(unsigned int glType) { return GetTypeSize(DataTypeFromGL(glType)); }

DATA_TYPE DataTypeFromGL(unsigned int glType) {
  switch (glType) {
  case kGLByte:
    return DATA_TYPE_INT8;
  case kGLUnsignedByte:
    return DATA_TYPE_UINT8;
  case kGLShort:
    return DATA_TYPE_INT16;
  case kGLUnsignedShort:
    return DATA_TYPE_UINT16;
  case kGLInt:
    return DATA_TYPE_INT32;
  case kGLUnsignedInt:
    return DATA_TYPE_UINT32;
  case kGLFloat:
    return DATA_TYPE_FLOAT;
  case kGLDouble:
    return DATA_TYPE_DOUBLE;
  default:
    return DATA_TYPE_NONE;
  }
}

DATA_FORMAT DataFormatFromGL(unsigned int glFormat) {
  switch (glFormat) {
  case kGLLuminance:
    return DATA_FORMAT_LUMINANCE;
  case kGLLuminanceAlpha:
    return DATA_FORMAT_LUMINANCE_ALPHA;
  case kGLRed:
    return DATA_FORMAT_RED;
  case kGLRG:
    return DATA_FORMAT_RG;
  case kGLRGB:
    return DATA_FORMAT_RGB;
  case kGLRGBA:
    return DATA_FORMAT_RGBA;
  default:
    return DATA_FORMAT_NONE;
  }
}

int GetFormatComponents(unsigned int glFormat) {
  switch (glFormat) {
  case kGLLuminance:
  case kGLRed:
    return 1;
  case kGLLuminanceAlpha:
  case kGLRG:
    return 2;
  case kGLRGB:
    return 3;
  case kGLRGBA:
    return 4;
  default:
    return 0;
  }
}

std::uint8_t* AllocateSurfaceBlock(std::uint64_t dataSize, std::uint64_t rowStride,
                                   std::uint64_t pixelStride) {
  std::uint64_t size = 0;
  if (__builtin_add_overflow(dataSize, rowStride, &size) ||
      __builtin_add_overflow(size, pixelStride, &size) || size == 0 || size > kMostBlockBytes) {
    return nullptr;
  }
  return static_cast<std::uint8_t*>(std::calloc(size, 1));
}

void FreeDataSurfaceData(DATASURFACE& surface) {
  std::free(surface.Data);
  surface = DATASURFACE{};
}

namespace ds {

bool Fill(const DATASURFACE& surface, const void* value, unsigned long size) {
  if (!HasPixels(surface) || value == nullptr || size == 0 ||
      size > static_cast<unsigned long>(surface.PixelStride)) {
    return false;
  }
  const auto width = static_cast<unsigned long>(surface.Width);
  const auto height = static_cast<unsigned long>(surface.Height);
  const auto pixelStride = static_cast<unsigned long>(surface.PixelStride);
  if (size != pixelStride) {
    for (int y = 0; y < surface.Height; ++y) {
      for (int x = 0; x < surface.Width; ++x) {
        std::memcpy(PixelAt(surface, x, y), value, size);
      }
    }
    return true;
  }
  const bool tight = width * pixelStride == static_cast<unsigned long>(surface.RowStride);
  for (int y = 0; y < (tight ? 1 : surface.Height); ++y) {
    FillRun(PixelAt(surface, 0, y), value, size, tight ? width * height : width);
  }
  return true;
}

void FillRun(void* run, const void* value, unsigned long size, unsigned long count) {
  auto* const first = static_cast<std::uint8_t*>(run);
  const unsigned long bytes = size * count;
  if (bytes == 0) {
    return;
  }
#if defined(__x86_64__)
  constexpr unsigned long kWord = sizeof(std::uint64_t);
  constexpr unsigned long kLongRun = 1024;
  if (bytes >= kLongRun && kWord % size == 0) {
    std::uint8_t pattern[kWord];
    for (unsigned long i = 0; i < kWord; i += size) {
      std::memcpy(pattern + i, value, size);
    }
    std::uint64_t word;
    std::memcpy(&word, pattern, kWord);
    // The string store takes lines over without reading them: beyond the caches that is a tenth
    // faster than vectors.
    void* at = first;
    unsigned long words = bytes / kWord;
    __asm__ volatile("rep stosq" : "+D"(at), "+c"(words) : "a"(word) : "memory");
    std::memcpy(at, pattern, bytes % kWord);
    return;
  }
#endif
  // Doubling copies.
  std::memcpy(first, value, size);
  for (unsigned long done = size; done < bytes;) {
    const unsigned long part = std::min(done, bytes - done);
    std::memcpy(first + done, first, part);
    done += part;
  }
}

bool Set(DATASURFACE* out, int width, int height, DATA_FORMAT format, DATA_TYPE type,
         int components, const void* pixels) {
  *out = DATASURFACE{};
  const std::uint64_t typeSize = GetTypeSize(type);
  if (width < 1 || height < 1 || components < 1 || components > 255 || typeSize == 0) {
    return false;
  }
  const std::uint64_t pixelStride = typeSize * static_cast<std::uint64_t>(components);
  const std::uint64_t rowStride = pixelStride * static_cast<std::uint64_t>(width);
  constexpr std::uint64_t kMost = std::numeric_limits<std::int32_t>::max();
  if (rowStride > kMost) {
    return false;
  }
  const std::uint64_t size = rowStride * static_cast<std::uint64_t>(height);
  out->Width = width;
  out->Height = height;
  out->Depth = 1;
  out->PixelStride = static_cast<std::int32_t>(pixelStride);
  out->RowStride = static_cast<std::int32_t>(rowStride);
  // The slice stride of one slice is never walked; it saturates where the whole does not fit.
  out->SliceStride = static_cast<std::int32_t>(std::min(size, kMost));
  out->Format = format;
  out->Type = type;
  out->Channels = static_cast<std::uint8_t>(components);
  out->Data = static_cast<std::uint8_t*>(const_cast<void*>(pixels));
  out->DataSize = size;
  return true;
}

bool GetSubSurface(const DATASURFACE& surface, int x, int y, int width, int height,
                   DATASURFACE* out) {
  *out = DATASURFACE{};
  if (!HasPixels(surface)) {
    return false;
  }
  const std::int64_t left = std::max<std::int64_t>(x, 0);
  const std::int64_t bottom = std::max<std::int64_t>(y, 0);
  const std::int64_t right =
      std::min(static_cast<std::int64_t>(x) + width, static_cast<std::int64_t>(surface.Width));
  const std::int64_t top =
      std::min(static_cast<std::int64_t>(y) + height, static_cast<std::int64_t>(surface.Height));
  if (left >= right || bottom >= top) {
    return false;
  }
  *out = surface;
  out->Width = static_cast<std::int32_t>(right - left);
  out->Height = static_cast<std::int32_t>(top - bottom);
  out->Data = PixelAt(surface, static_cast<int>(left), static_cast<int>(bottom));
  out->DataSize =
      static_cast<std::uint64_t>(out->Height - 1) * static_cast<std::uint64_t>(surface.RowStride) +
      static_cast<std::uint64_t>(out->Width) * static_cast<std::uint64_t>(surface.PixelStride);
  return true;
}

bool Copy(const DATASURFACE& from, const DATASURFACE& to) {
  const std::uint64_t pixelBytes = PixelBytes(from);
  if (!HasPixels(from) || !HasPixels(to) || from.Type != to.Type || from.Channels != to.Channels ||
      pixelBytes == 0) {
    return false;
  }
  const TRect part = {std::min(from.Width, to.Width), std::min(from.Height, to.Height), pixelBytes};
  if (!Overlap(from, to, part)) {
    CopyForwards(from, to, part);
    return true;
  }
  if (from.RowStride == to.RowStride && from.PixelStride == to.PixelStride) {
    if (to.Data <= from.Data) {
      CopyForwards(from, to, part);
    } else {
      CopyBackwards(from, to, part);
    }
    return true;
  }
  return CopyByWayOfABlock(from, to, part);
}

} // namespace ds
