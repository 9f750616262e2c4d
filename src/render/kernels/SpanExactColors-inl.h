// The colours of a group of pixels: interpolation, texture, clamp, bytes, blending. Included once
// for each instruction set.
//
// Tested by: tests/render/SpanLevels.cpp (SpanLevels.*), tests/render/SpanBytes.cpp (SpanBytes.*)

#if defined(ZX_RENDER_SPANEXACTCOLORS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANEXACTCOLORS_INL_H_
#undef ZX_RENDER_SPANEXACTCOLORS_INL_H_
#else
#define ZX_RENDER_SPANEXACTCOLORS_INL_H_
#endif

#include <bit>

#include <ZxCore3D/render/common/Pairs.h>
#include <ZxCore3D/render/kernels/SpanFloatColors-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// A channel as a byte in the low bits of each lane.
HWY_INLINE HWY_ATTR VU ChannelByte(VD value, bool clamp) {
  const DD d;
  if (clamp) {
    // The greater of a NaN and 0 is 0 here, as the byte of a NaN is.
    value = hn::Min(hn::Max(value, hn::Zero(d)), hn::Set(d, 1.0));
  }
  const VD scaled = hn::Add(hn::Mul(value, hn::Set(d, 255.0)), hn::Set(d, 0.5));
  return hn::BitCast(DU(), hn::DemoteTo(DI(), scaled));
}

// The bytes of a set of channels, all ones.
inline std::uint32_t BytesOf(std::uint32_t channels) {
  return (channels & 1 ? 0x000000FFu : 0) | (channels & 2 ? 0x0000FF00u : 0) |
         (channels & 4 ? 0x00FF0000u : 0) | (channels & 8 ? 0xFF000000u : 0);
}

// Source over destination: each channel (dst * (255 - a) + src * a) / 255, truncated, in two pairs
// of 16-bit lanes. v / 255 is (v + 1 + (v >> 8)) >> 8 for all v up to 65025.
template <class D> HWY_INLINE HWY_ATTR hn::Vec<D> Blended(D d, hn::Vec<D> src, hn::Vec<D> dst) {
  using V = hn::Vec<D>;
  const hn::Repartition<std::uint16_t, D> d16;
  using V16 = hn::Vec<decltype(d16)>;
  const V alpha = hn::ShiftRight<24>(src);
  const V16 a = hn::BitCast(d16, hn::Or(alpha, hn::ShiftLeft<16>(alpha)));
  const V16 b = hn::Sub(hn::Set(d16, std::uint16_t{255}), a);
  const V low = hn::Set(d, 0x00FF00FFu);
  const auto over = [&](V from, V to) HWY_ATTR {
    const V16 v = hn::Add(hn::Mul(hn::BitCast(d16, to), b), hn::Mul(hn::BitCast(d16, from), a));
    const V16 next = hn::Add(v, hn::Set(d16, std::uint16_t{1}));
    return hn::BitCast(d, hn::ShiftRight<8>(hn::Add(next, hn::ShiftRight<8>(v))));
  };
  const V even = over(hn::And(src, low), hn::And(dst, low));
  const V odd = over(hn::And(hn::ShiftRight<8>(src), low), hn::And(hn::ShiftRight<8>(dst), low));
  return hn::Or(even, hn::ShiftLeft<8>(odd));
}

// The packed colours as written: blended with `before`, and within the colour mask.
template <class D>
HWY_INLINE HWY_ATTR hn::Vec<D> OutputColors(D d, const TDrawState& draw, hn::Vec<D> packed,
                                            hn::Vec<D> before) {
  if (draw.Blend != TBlend::None) {
    packed = Blended(d, packed, before);
  }
  if (draw.ColorMask != kAllChannels) {
    const auto kept = hn::Set(d, BytesOf(draw.ColorMask));
    packed = hn::Or(hn::And(packed, kept), hn::AndNot(kept, before));
  }
  return packed;
}

// Colours without a texture, operation by operation in double.
template <bool kPerspective, class TRowOfGroup>
HWY_INLINE HWY_ATTR VU ExactUntextured(const TSpanJob& job, const TRowOfGroup& row, int color,
                                       int secondary, std::uint32_t constMask, bool clamp, VD t) {
  const VD q = PerspectiveAt<kPerspective>(row, t);
  VU packed = hn::Set(DU(), job.Primitive.ConstColor);
  // Called so often that the compiler would not inline it by itself.
  ForEachChannel([&](auto channel) HWY_ATTR __attribute__((always_inline)) {
    constexpr int kChannel = decltype(channel)::value;
    if (HWY_UNLIKELY((constMask >> kChannel & 1u) != 0)) {
      return;
    }
    VD value = Interpolated<kPerspective>(row, color + kChannel, t, q);
    if (secondary >= 0 && kChannel < 3) {
      value = hn::Add(value, Interpolated<kPerspective>(row, secondary + kChannel, t, q));
    }
    packed = hn::Or(packed, hn::ShiftLeft<8 * kChannel>(ChannelByte(value, clamp)));
  });
  return packed;
}

// The bytes of textured channels, operation by operation in double. With P the primary colour, S
// the secondary one where lighting is on, T the texel, by channel:
//
//     without a texture  P + S
//     GL_MODULATE        P T + S
//     GL_REPLACE         T
//
// each limited to 0 to 1; S is not added to alpha. Only `channels` are computed, the others are
// those of `packed`.
template <TTexelSource kTexels, bool kPerspective, class TRowOfGroup>
HWY_INLINE HWY_ATTR VU ExactTextured(const TSpanJob& job, const TRowSlots& slots,
                                     const TRowOfGroup& row, VD t, const TFetchedTexels& fetched,
                                     std::uint32_t channels, VU packed) {
  const TPrimitive& primitive = job.Primitive;
  const VD q = fetched.Q;
  const bool sampled = kTexels == TTexelSource::Sampler || !fetched.Fits;
  const auto interpolated = [&](int place)
                                HWY_ATTR { return Interpolated<kPerspective>(row, place, t, q); };
  // A coordinate that fits no index leaves a fraction of any size, or a NaN.
  const bool clamp = primitive.Clamp || sampled;
  packed = hn::And(packed, hn::Set(DU(), ~BytesOf(channels)));
  const auto put = [&](int i, VD value) HWY_ATTR __attribute__((always_inline)) {
    if (primitive.Modulate) {
      value = hn::Mul(interpolated(slots.Color + i), value);
      if (slots.Secondary >= 0 && i < 3) {
        value = hn::Add(value, interpolated(slots.Secondary + i));
      }
    }
    packed = hn::Or(packed, hn::ShiftLeftSame(ChannelByte(value, clamp), 8 * i));
  };
  const auto each = [&](const auto& texelOf) HWY_ATTR {
    for (; channels != 0; channels &= channels - 1) {
      put(FirstBit(channels), texelOf(FirstBit(channels)));
    }
  };
  if (HWY_UNLIKELY(sampled)) {
    const TTexels texels =
        SampledTexels(primitive.Sampler, interpolated(slots.Tex), interpolated(slots.Tex + 1));
    each([&](int i) HWY_ATTR { return texels.Channel[i]; });
  } else if (HWY_UNLIKELY(fetched.IsBordered)) {
    each([&](int i) HWY_ATTR { return FilteredChannel<kTexels, true>(primitive, fetched, i); });
  } else if (channels == kAllChannels) {
    put(0, FilteredChannel<kTexels, false>(primitive, fetched, 0));
    put(1, FilteredChannel<kTexels, false>(primitive, fetched, 1));
    put(2, FilteredChannel<kTexels, false>(primitive, fetched, 2));
    put(3, FilteredChannel<kTexels, false>(primitive, fetched, 3));
  } else { // most often one, and a branch on each would be foretold wrong
    each([&](int i) HWY_ATTR { return FilteredChannel<kTexels, false>(primitive, fetched, i); });
  }
  return packed;
}

// The fragment shader's colours as packed bytes, operation by operation in double.
template <TTexelSource kTexels, bool kPerspective, class TRowOfGroup>
HWY_INLINE HWY_ATTR VU ExactColors(const TSpanJob& job, const TRowSlots& slots,
                                   const TRowOfGroup& row, VD t) {
  if constexpr (kTexels != TTexelSource::None) {
    TFetchedTexels fetched;
    FetchTexelsAt<kTexels, kPerspective, TTexelReach::Anywhere>(job, slots, row, t, &fetched);
    return ExactTextured<kTexels, kPerspective>(job, slots, row, t, fetched, kAllChannels,
                                                hn::Zero(DU()));
  }
  return job.Primitive.HasConstColor()
             ? hn::Set(DU(), job.Primitive.ConstColor)
             : ExactUntextured<kPerspective>(job, row, slots.Color, slots.Secondary,
                                             job.Primitive.ConstMask, job.Primitive.Clamp, t);
}

// The exact channels of a group that failed a rounding test, the others from `packed`.
template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR VU ExactFallback(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                       VD t, const TFetchedTexels& fetched, std::uint32_t channels,
                                       VU packed) {
  job.Meets(TCondition::ValuesBytes, kLanes);
  return ExactTextured<kTexels, kPerspective>(job, slots, row, t, fetched, channels, packed);
}

// Sets the colour of the fragment record to that of the pixel at t: the formulas of ExactColors in
// doubles. None goes through memory on its way: it would wait there for all stores of pixels.
template <class TRowOfGroup>
inline HWY_ATTR void SetLastColor(const TSpanJob& job, const TRowSlots& slots,
                                  const TRowOfGroup& row, double t, TSpanResult* out) {
  using TVec4 = vec_t_<double, 4>;
  const TPrimitive& primitive = job.Primitive;
  const double q = primitive.Perspective ? 1.0 / (row.Delta[3] * t + row.Begin[3]) : 1.0;
  const auto at = [&](int place) {
    const double value = row.Delta[place] * t + row.Begin[place];
    return primitive.Perspective ? value * q : value;
  };
  const int c = slots.Color;
  TVec4 color = c >= 0 ? TVec4{at(c), at(c + 1), at(c + 2), at(c + 3)} : TVec4{0, 0, 0, 0};
  if (primitive.Texels != TTexelSource::None) {
    TVec4 texel = {0, 0, 0, 0};
    (primitive.Sampler->*primitive.Sampler->m_GetValue)({at(slots.Tex), at(slots.Tex + 1), 0, 0},
                                                        &texel);
    color = primitive.Modulate
                ? TVec4{color.x * texel.x, color.y * texel.y, color.z * texel.z, color.w * texel.w}
                : texel;
  }
  if (slots.Secondary >= 0) {
    const int s = slots.Secondary;
    color = {color.x + at(s), color.y + at(s + 1), color.z + at(s + 2), color.w};
  } else if (primitive.ZeroSecondary) {
    color = {color.x + 0.0, color.y + 0.0, color.z + 0.0, color.w};
  }
  StoreVector(&out->LastColor, Clamped01(color.x), Clamped01(color.y), Clamped01(color.z),
              Clamped01(color.w));
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
