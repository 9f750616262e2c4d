// The colours of a run of pixels. Included once for each instruction set.
//
// Tested by: tests/render/SpanBytes.cpp (SpanBytes.*), tests/render/SpanRows.cpp (SpanRows.*),
// tests/render/SpanLevels.cpp (SpanLevels.*)

#if defined(ZX_RENDER_SPANRUNCOLORS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANRUNCOLORS_INL_H_
#undef ZX_RENDER_SPANRUNCOLORS_INL_H_
#else
#define ZX_RENDER_SPANRUNCOLORS_INL_H_
#endif

#include <ZxCore3D/render/kernels/SpanDepthStencil-inl.h>
#include <ZxCore3D/render/kernels/SpanExactColors-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

struct TRunPixels {
  int X; ///< column of the first
  int Count;
  TRunValues Values;
};

// Recomputes, of two groups from column x on, those that have a pixel in `unsure`.
template <bool kPerspective>
HWY_NOINLINE HWY_ATTR VFU ExactFallbackPair(const TSpanJob& job, const TRowSlots& slots,
                                            const TRow& row, int x, std::uint64_t unsure,
                                            VFU packed) {
  HWY_ALIGN std::uint32_t colors[kFloatLanes];
  hn::Store(packed, DFU(), colors);
  for (int k = 0; k < kFloatLanes; k += kLanes) {
    if ((unsure >> k & FirstBits(kLanes)) != 0) {
      const VU exact = ExactFallbackColors<TTexelSource::None, kPerspective>(
          job, slots, row, ColumnParameter(row, x + k), kAllChannels, hn::Zero(DU()));
      hn::Store(exact, DU(), colors + k);
    }
  }
  return hn::Load(DFU(), colors);
}

// Draws the colours of a run by pairs of groups. Without masked access none of them is blended: a
// pair may reach past the pixels that are readable.
template <bool kPerspective>
HWY_INLINE HWY_ATTR void DrawUntexturedColors(const TSpanJob& job, const TRowSlots& slots,
                                              const TRow& row, const TRunPixels& run,
                                              std::uint64_t shaded, std::uint32_t* color) {
  const DFF df;
  const DFU du;
  for (int i = 0; i < run.Count; i += kFloatLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kFloatLanes);
    if (bits == 0) {
      continue;
    }
    const auto live = MaskOfBits(du, bits);
    VFU packed = hn::Set(du, job.Primitive.ConstColor);
    if (!job.Primitive.HasConstColor()) {
      const VFF t = hn::Load(df, run.Values.FloatT + i);
      MFI sure = AllLanes(DFI());
      packed = UntexturedBytes<kPerspective>(df, job, slots, *row.Floats, t, &sure);
      const auto unsure = hn::AndNot(hn::RebindMask(du, sure), live);
      if (HWY_UNLIKELY(!hn::AllFalse(du, unsure))) {
        packed = ExactFallbackPair<kPerspective>(job, slots, row, run.X + i, BitsOfMask(du, unsure),
                                                 packed);
      }
    }
    if (kMaskedAccess && job.Draw.ReadsColor()) {
      packed = OutputColors(du, job.Draw, packed, LoadMasked(du, live, color + i));
    }
    StoreMasked(du, packed, live, color + i);
  }
}

// --- With a texture, in stages: divisions, then texels and bytes. Fused, the dependency chain
// would exceed the out-of-order window.

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
    const std::uint32_t channels = (unsure >> i & FirstBits(kLanes)) != 0
                                       ? kAllChannels
                                       : TexturedBytes<kTexels, kPerspective>(
                                             job, slots, *row.Floats, ready[i / kLanes], &colors);
    if (HWY_UNLIKELY(channels != 0)) {
      colors = ExactFallbackColors<kTexels, kPerspective>(job, slots, row, hn::Load(d, t + i),
                                                          channels, colors);
    }
    hn::Store(colors, DU(), packed + i);
  }
}

// The colours of a run; with `floatT` its t is there in float alone.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR void DrawColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    const TRunPixels& run, bool floatT, std::uint64_t shaded,
                                    std::uint32_t* color) {
  const DD d;
  const DU du;
  if constexpr (kTexels == TTexelSource::None) {
    if (floatT) {
      DrawUntexturedColors<kPerspective>(job, slots, row, run, shaded, color);
      return;
    }
  }
  bool staged = false;
  HWY_ALIGN std::uint32_t colors[kRun + kLanes];
  if constexpr (kTexels == TTexelSource::Nearest || kTexels == TTexelSource::Linear) {
    if (row.HasFloats()) {
      TexturedColors<kTexels, kPerspective>(job, slots, row, run.Count, shaded, run.Values.T,
                                            colors);
      staged = true;
    }
  }
  for (int i = 0; i < run.Count; i += kLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kLanes);
    if (bits == 0) {
      continue;
    }
    const MI live = MaskOfBits(DI(), bits);
    VU packed = staged ? hn::Load(du, colors + i)
                       : PackedColors<kTexels, kPerspective>(job, slots, row,
                                                             hn::Load(d, run.Values.T + i));
    if (job.Draw.ReadsColor()) {
      packed = OutputColors(du, job.Draw, packed, LoadLive(du, live, color + i));
    }
    StoreLive(du, packed, live, color + i);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
