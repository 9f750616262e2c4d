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

// Packed colours of two groups at t. `sure` loses the pixels whose rounding test fails.
template <bool kPerspective>
HWY_INLINE HWY_ATTR VFU UntexturedBytes(const TSpanJob& job, const TRowSlots& slots,
                                        const TRowFloats& floats, VFF t, MFI* sure) {
  const DFF d;
  VFF q = t;
  if constexpr (kPerspective) {
    const VFF w = hn::Add(hn::Mul(hn::Set(d, floats.WDelta), t), hn::Set(d, floats.WBegin));
    q = hn::Div(hn::Set(d, 1.0f), w);
  }
  const auto valueOf = [&](float begin, float delta) HWY_ATTR {
    const VFF value = hn::Add(hn::Mul(hn::Set(d, delta), t), hn::Set(d, begin));
    return kPerspective ? hn::Mul(value, q) : value;
  };
  const VFF margin = hn::Set(d, floats.Margin);
  VFU packed = hn::Set(DFU(), job.Primitive.ConstColor);
  for (int i = 0; i < 4; ++i) {
    if ((job.Primitive.ConstMask >> i & 1u) != 0) {
      continue;
    }
    VFF value = valueOf(floats.Begin[i], floats.Delta[i]);
    if (slots.Secondary >= 0) {
      value = hn::Add(value, valueOf(floats.SecondaryBegin[i], floats.SecondaryDelta[i]));
    }
    VFU byte = ByteByRoundingTest(d, value, job.Primitive.Clamp, margin, sure);
    byte = i == 0 ? hn::And(byte, hn::Set(DFU(), 255u)) : hn::ShiftLeftSame(byte, 8 * i);
    packed = hn::Or(packed, byte);
  }
  return packed;
}

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

// Draws the colours of a run, without blending and colour mask.
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
    VFU packed = hn::Set(du, job.Primitive.ConstColor);
    if (!job.Primitive.HasConstColor()) {
      const VFF t = hn::Load(df, run.Values.FloatT + i);
      MFI sure = AllLanes(DFI());
      packed = UntexturedBytes<kPerspective>(job, slots, *row.Floats, t, &sure);
      const std::uint64_t unsure = bits & ~BitsOfMask(DFI(), sure);
      if (HWY_UNLIKELY(unsure != 0)) {
        packed = ExactFallbackPair<kPerspective>(job, slots, row, run.X + i, unsure, packed);
      }
    }
    StoreMasked(du, packed, MaskOfBits(du, bits), color + i);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
