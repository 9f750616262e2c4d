// The colours of a run of pixels without a texture in single precision, channel by channel, with
// the proof of SpanFloatColors-inl.h. Included once for each instruction set.
//
// Tested by: tests/render/SpanBytes.cpp (SpanBytes.*), tests/render/SpanRows.cpp (SpanRows.*)

#if defined(ZX_RENDER_SPANUNTEXTURED_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANUNTEXTURED_INL_H_
#undef ZX_RENDER_SPANUNTEXTURED_INL_H_
#else
#define ZX_RENDER_SPANUNTEXTURED_INL_H_
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
          job, slots, row, ColumnParameter(row, x + k));
      hn::Store(exact, DU(), colors + k);
    }
  }
  return hn::Load(DFU(), colors);
}

// Draws the colours of a run. To blend, without masked access, is not for whole vectors.
template <bool kPerspective>
HWY_INLINE HWY_ATTR void DrawUntexturedColors(const TSpanJob& job, const TRowSlots& slots,
                                              const TRow& row, const TRunPixels& run,
                                              std::uint64_t shaded, std::uint32_t* color) {
  const DFF df;
  const DFU du;
  const TFloatInputs inputs =
      row.Floats != nullptr ? FloatInputsOf(job, slots, *row.Floats) : TFloatInputs();
  for (int i = 0; i < run.Count; i += kFloatLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kFloatLanes);
    if (bits == 0) {
      continue;
    }
    VFU packed = hn::Set(du, job.Primitive.ConstColor);
    if (!job.Primitive.HasConstColor()) {
      const VFF t = hn::Load(df, run.Values.FloatT + i);
      MFI sure = AllLanes(DFI());
      packed = UntexturedBytes<kPerspective>(df, job, inputs, t, &sure);
      const std::uint64_t unsure = bits & ~BitsOfMask(DFI(), sure);
      if (HWY_UNLIKELY(unsure != 0)) {
        packed = ExactFallbackPair<kPerspective>(job, slots, row, run.X + i, unsure, packed);
      }
    }
    const auto live = MaskOfBits(du, bits);
    if (kMaskedAccess && job.Draw.ReadsColor()) {
      packed = OutputColors(du, job.Draw, packed, LoadMasked(du, live, color + i));
    }
    StoreMasked(du, packed, live, color + i);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
