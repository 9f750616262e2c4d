// The colours of a run of textured pixels, in stages: divisions, then texels and bytes. Fused, the
// dependency chain would exceed the out-of-order window. Included once for each instruction set.
//
// Tested by: tests/render/SpanBytes.cpp (SpanBytes.*), tests/render/SpanLevels.cpp (SpanLevels.*)

#if defined(ZX_RENDER_SPANTEXTURED_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANTEXTURED_INL_H_
#undef ZX_RENDER_SPANTEXTURED_INL_H_
#else
#define ZX_RENDER_SPANTEXTURED_INL_H_
#endif

#include <ZxCore3D/render/kernels/SpanDepthStencil-inl.h>
#include <ZxCore3D/render/kernels/SpanExactColors-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// The packed colours of a run, in whole vectors: those of each group that has a pixel in `shaded`.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR void TexturedColors(const TSpanJob& job, const TRowSlots& slots,
                                        const TRow& row, int count, std::uint64_t shaded,
                                        const double* t, std::uint32_t* packed) {
  const DD d;
  TFetchedTexels ready[kRun / kLanes];
  std::uint64_t unsure = 0;
  for (int i = 0; i < count; i += kLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kLanes);
    if (bits != 0 && HWY_UNLIKELY((!FetchTexelsAt<kTexels, kPerspective>(
                         job, slots, row, hn::Load(d, t + i), &ready[i / kLanes])))) {
      unsure |= bits << i;
    }
  }
  for (int i = 0; i < count; i += kLanes) {
    if ((shaded >> i & FirstBits(kLanes)) == 0) {
      continue;
    }
    VU colors = hn::Zero(DU());
    if (HWY_UNLIKELY((unsure >> i & FirstBits(kLanes)) != 0 ||
                     (!TexturedBytes<kTexels, kPerspective>(job, slots, *row.Floats,
                                                            ready[i / kLanes], &colors)))) {
      colors = ExactFallbackColors<kTexels, kPerspective>(job, slots, row, hn::Load(d, t + i));
    }
    hn::Store(colors, DU(), packed + i);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
