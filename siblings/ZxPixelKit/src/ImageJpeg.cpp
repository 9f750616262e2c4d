#include "ImageDecoders.h"

#include <turbojpeg.h>

namespace zx::image {

namespace {

struct TDestroyHandle {
  void operator()(void* handle) const noexcept { tjDestroy(handle); }
};
using THandle = std::unique_ptr<void, TDestroyHandle>;

// A Huffman-coded block of 8 by 8 pixels takes a bit at the least. Arithmetic coding goes below
// that on flat pictures; those have the free size to live in.
constexpr std::uint64_t kMostPixelsPerByte = 8 * 64;
constexpr std::int64_t kFreePixels = std::int64_t{1} << 20;

// A damaged or truncated file is decoded with a warning, which must not pass for success; the
// number of progressive scans is limited against files that only burn time.
constexpr int kFlags = TJFLAG_ACCURATEDCT | TJFLAG_STOPONWARNING | TJFLAG_LIMITSCANS;

// Four-colour files hold the inverse of the ink, as all common programs write them: the product
// of what each ink and black let through is the light that remains.
void _CmykToRgb(const std::uint8_t* from, std::size_t pixels, std::uint8_t* to) {
  for (std::size_t i = 0; i < pixels; ++i, from += 4, to += 3) {
    for (int c = 0; c < 3; ++c) {
      to[c] = static_cast<std::uint8_t>((from[c] * from[3] + 127) / 255);
    }
  }
}

} // namespace

bool IsJpeg(BYTES head) {
  return head.Size >= 3 && head.Data[0] == 0xFF && head.Data[1] == 0xD8 && head.Data[2] == 0xFF;
}

bool DecodeJpeg(BYTES file, PICTURE* out, REASON* why) {
  const THandle handle(tjInitDecompress());
  int width = 0;
  int height = 0;
  int subsampling = 0;
  int colors = 0;
  if (!handle || tjDecompressHeader3(handle.get(), file.Data, file.Size, &width, &height,
                                     &subsampling, &colors) != 0) {
    return why->Refuse("damaged JPEG", tjGetErrorStr2(handle.get()));
  }
  const bool small = static_cast<std::int64_t>(width) * height <= kFreePixels;
  if (!FitsBudget(width, height, small ? ~std::uint64_t{0} : kMostPixelsPerByte, file.Size, why)) {
    return false;
  }
  const bool grey = colors == TJCS_GRAY;
  const bool cmyk = colors == TJCS_CMYK || colors == TJCS_YCCK;
  const int format = grey ? TJPF_GRAY : cmyk ? TJPF_CMYK : TJPF_RGB;
  const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const auto pixelSize = static_cast<std::size_t>(tjPixelSize[format]);
  TBlock decoded(static_cast<std::uint8_t*>(std::malloc(pixels * pixelSize)));
  if (!decoded || tjDecompress2(handle.get(), file.Data, file.Size, decoded.get(), width, 0, height,
                                format, kFlags) != 0) {
    return why->Refuse("damaged JPEG", tjGetErrorStr2(handle.get()));
  }
  if (cmyk) {
    _CmykToRgb(decoded.get(), pixels, decoded.get());
  }
  out->Width = width;
  out->Height = height;
  out->Channels = grey ? 1 : 3;
  out->Type = DATA_TYPE_UINT8;
  out->Pixels = std::move(decoded);
  return true;
}

} // namespace zx::image
