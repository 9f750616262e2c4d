// Rows of pixels that a caller hands over as bytes. Included once for each instruction set.
//
// Tested by: tests/render/PixelTransfer.cpp (PixelRows.*)

#if defined(ZX_RENDER_PIXELROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_PIXELROWS_INL_H_
#undef ZX_RENDER_PIXELROWS_INL_H_
#else
#define ZX_RENDER_PIXELROWS_INL_H_
#endif

#include <ZxCore3D/render/kernels/SpanExactColors-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// Blends and masks `count` pixels of four bytes, at any addresses, whose memory does not overlap.
inline HWY_ATTR void DrawPixelRow(const TSpanJob& job, const unsigned char* from, unsigned char* to,
                                  std::ptrdiff_t count) {
  const hn::ScalableTag<std::uint8_t> d8;
  const DFU du;
  const auto draw = [&](const unsigned char* source, unsigned char* target) HWY_ATTR {
    const VFU before = hn::BitCast(du, hn::LoadU(d8, target));
    const VFU packed = hn::BitCast(du, hn::LoadU(d8, source));
    hn::StoreU(hn::BitCast(d8, OutputColors(du, job.Draw, packed, before)), d8, target);
  };
  for (; count >= kFloatLanes; count -= kFloatLanes) {
    draw(from, to);
    from += 4 * kFloatLanes;
    to += 4 * kFloatLanes;
  }
  if (count != 0) {
    const std::size_t bytes = 4 * static_cast<std::size_t>(count);
    unsigned char copies[2][4 * kFloatLanes] = {};
    std::memcpy(copies[0], from, bytes);
    std::memcpy(copies[1], to, bytes);
    draw(copies[0], copies[1]);
    std::memcpy(to, copies[1], bytes);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
