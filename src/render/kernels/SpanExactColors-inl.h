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

// The byte of a textured channel, operation by operation in double, where it stands in a packed
// colour. With P the primary colour, S the secondary one where lighting is on, T the texel:
//
//     without a texture  P + S
//     GL_MODULATE        P T + S
//     GL_REPLACE         T
//
// each limited to 0 to 1; S is not added to alpha.
template <bool kPerspective, class TRowOfGroup>
HWY_INLINE HWY_ATTR VU ExactByte(const TPrimitive& primitive, const TRowSlots& slots,
                                 const TRowOfGroup& row, VD t, VD q, int channel, VD texel,
                                 bool clamp) {
  if (primitive.Modulate) {
    texel = hn::Mul(Interpolated<kPerspective>(row, slots.Color + channel, t, q), texel);
    if (slots.Secondary >= 0 && channel < 3) {
      texel = hn::Add(texel, Interpolated<kPerspective>(row, slots.Secondary + channel, t, q));
    }
  }
  return hn::ShiftLeftSame(ChannelByte(texel, clamp), 8 * channel);
}

// The packed colours of a textured group.
template <TTexelSource kTexels, bool kPerspective, class TRowOfGroup>
HWY_INLINE HWY_ATTR VU ExactTextured(const TSpanJob& job, const TRowSlots& slots,
                                     const TRowOfGroup& row, VD t, const TFetchedTexels& fetched) {
  const TPrimitive& primitive = job.Primitive;
  const bool sampled = kTexels == TTexelSource::Sampler || !fetched.Fits;
  // A coordinate that fits no index leaves a fraction of any size, or a NaN.
  const bool clamp = primitive.Clamp || sampled;
  VU packed = hn::Zero(DU());
  const auto pack = [&](const auto& texelOf) HWY_ATTR __attribute__((always_inline)) {
    ForEachChannel([&](auto channel) HWY_ATTR __attribute__((always_inline)) {
      packed = hn::Or(packed, ExactByte<kPerspective>(primitive, slots, row, t, fetched.Q, channel,
                                                      texelOf(channel), clamp));
    });
  };
  if (HWY_UNLIKELY(sampled)) {
    const auto at = [&](int i) HWY_ATTR {
      return Interpolated<kPerspective>(row, slots.Tex + i, t, fetched.Q);
    };
    const TTexels texels = SampledTexels(primitive.Sampler, at(0), at(1));
    pack([&](int i) HWY_ATTR { return texels.Channel[i]; });
  } else if (HWY_UNLIKELY(fetched.IsBordered)) {
    pack([&](int i) HWY_ATTR { return FilteredChannel<kTexels, true>(primitive, fetched, i); });
  } else {
    pack([&](int i) HWY_ATTR { return FilteredChannel<kTexels, false>(primitive, fetched, i); });
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
    return ExactTextured<kTexels, kPerspective>(job, slots, row, t, fetched);
  }
  return job.Primitive.HasConstColor()
             ? hn::Set(DU(), job.Primitive.ConstColor)
             : ExactUntextured<kPerspective>(job, row, slots.Color, slots.Secondary,
                                             job.Primitive.ConstMask, job.Primitive.Clamp, t);
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
