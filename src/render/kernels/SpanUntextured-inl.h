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

#include <ZxCore3D/types/InstructionSets-inl.h>

#include <hwy/highway.h>

#include <ZxCore3D/render/kernels/SpanDepthStencil-inl.h>
#include <ZxCore3D/render/kernels/SpanExactColors-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

using VFU = hn::Vec<DFU>;
using MFF = hn::Mask<DFF>;

HWY_INLINE HWY_ATTR hn::Mask<DFU> FloatMaskOfBits(std::uint64_t bits) {
  std::uint8_t bytes[8];
  std::memcpy(bytes, &bits, sizeof bytes);
  return hn::LoadMaskBits(DFU(), bytes);
}

// The bytes of a channel, in the low bits; the shift of any channel but the first drops what stands
// above. `sure` loses the pixels whose rounding test fails.
template <class D, class TMask>
HWY_INLINE HWY_ATTR hn::VFromD<hn::RebindToUnsigned<D>>
ByteByRoundingTest(D d, hn::Vec<D> value, bool clamp, hn::Vec<D> margin, TMask* sure) {
  const hn::RebindToUnsigned<D> du;
  if (clamp) {
    value = hn::Min(hn::Max(value, hn::Zero(d)), hn::Set(d, 255.0f));
  }
  // From 2^23 on floats are whole numbers: the sum is rounded to one, which stands in its low bits.
  const auto whole = hn::Set(d, 8388608.0f);
  const auto low = hn::Add(hn::Sub(value, margin), whole);
  const auto high = hn::Add(hn::Add(value, margin), whole);
  *sure = hn::And(*sure, hn::RebindMask(hn::RebindToSigned<D>(), hn::Eq(low, high)));
  return hn::BitCast(du, low);
}

// Packed colours of two groups at t, of which the pixels in `live` exist. Returns those whose
// rounding test failed.
template <bool kPerspective>
HWY_INLINE HWY_ATTR hn::Mask<DFU> UntexturedBytesPair(const TSpanJob& job, const TRowSlots& slots,
                                                      const TRowFloats& floats, VFF t, MFF live,
                                                      VFU* packed) {
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
  const hn::RebindToSigned<DFF> di;
  auto sure = hn::Eq(hn::Zero(di), hn::Zero(di));
  for (int i = 0; i < 4; ++i) {
    if ((job.ConstMask >> i & 1u) != 0) {
      continue;
    }
    VFF value = valueOf(floats.Begin[i], floats.Delta[i]);
    if (slots.Secondary >= 0) {
      value = hn::Add(value, valueOf(floats.SecondaryBegin[i], floats.SecondaryDelta[i]));
    }
    VFU byte = ByteByRoundingTest(d, value, job.Clamp, margin, &sure);
    byte = i == 0 ? hn::And(byte, hn::Set(DFU(), 255u)) : hn::ShiftLeftSame(byte, 8 * i);
    *packed = hn::Or(*packed, byte);
  }
  return hn::RebindMask(DFU(), hn::AndNot(sure, hn::RebindMask(di, live)));
}

struct TRunPixels {
  int X; ///< column of the first
  int Count;
  TRunValues Values;
};

// Recomputes, of two groups from column x on, those that have a pixel in `unsure`.
template <bool kPerspective>
HWY_NOINLINE HWY_ATTR VFU ExactFallbackPair(const TSpanJob& job, const TRowSlots& slots,
                                            const TRow& row, int x, hn::Mask<DFU> unsure,
                                            VFU packed) {
  HWY_ALIGN std::uint32_t colors[kFloatLanes];
  hn::Store(packed, DFU(), colors);
  std::uint8_t bits[8] = {};
  hn::StoreMaskBits(DFU(), unsure, bits);
  const unsigned int all = bits[0] | static_cast<unsigned int>(bits[1]) << 8;
  for (int k = 0; k < kFloatLanes; k += kLanes) {
    if ((all >> k & FirstBits(kLanes)) != 0) {
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
  const VFU constant = hn::Set(du, job.ConstColor);
  for (int i = 0; i < run.Count; i += kFloatLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kFloatLanes);
    if (bits == 0) {
      continue;
    }
    const hn::Mask<DFU> live = FloatMaskOfBits(bits);
    VFU packed = constant;
    if (job.ConstMask != 15) {
      const VFF t = hn::Load(df, run.Values.Near + i);
      const hn::Mask<DFU> unsure = UntexturedBytesPair<kPerspective>(
          job, slots, *row.Floats, t, hn::RebindMask(df, live), &packed);
      if (HWY_UNLIKELY(!hn::AllFalse(du, unsure))) {
        packed = ExactFallbackPair<kPerspective>(job, slots, row, run.X + i, unsure, packed);
      }
    }
    StoreMasked(du, packed, live, color + i);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
