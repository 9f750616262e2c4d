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

// Source over destination: each channel (dst * (255 - a) + src * a) / 255, truncated, in two pairs
// of 16-bit lanes. v / 255 is (v + 1 + (v >> 8)) >> 8 for all v up to 65025.
HWY_INLINE HWY_ATTR VU Blended(VU src, VU dst) {
  const DU du;
  const hn::Repartition<std::uint16_t, DU> d16;
  using V16 = hn::Vec<decltype(d16)>;
  const VU alpha = hn::ShiftRight<24>(src);
  const V16 a = hn::BitCast(d16, hn::Or(alpha, hn::ShiftLeft<16>(alpha)));
  const V16 b = hn::Sub(hn::Set(d16, std::uint16_t{255}), a);
  const VU low = hn::Set(du, 0x00FF00FFu);
  const auto over = [&](VU from, VU to) HWY_ATTR {
    const V16 v = hn::Add(hn::Mul(hn::BitCast(d16, to), b), hn::Mul(hn::BitCast(d16, from), a));
    const V16 next = hn::Add(v, hn::Set(d16, std::uint16_t{1}));
    return hn::BitCast(du, hn::ShiftRight<8>(hn::Add(next, hn::ShiftRight<8>(v))));
  };
  const VU even = over(hn::And(src, low), hn::And(dst, low));
  const VU odd = over(hn::And(hn::ShiftRight<8>(src), low), hn::And(hn::ShiftRight<8>(dst), low));
  return hn::Or(even, hn::ShiftLeft<8>(odd));
}

// The fragment shader's colours as packed bytes, operation by operation.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR VU ExactColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                   VD t) {
  const VD q = PerspectiveAt<kPerspective>(row, t);
  if constexpr (kTexels == TTexelSource::None) {
    VU packed = hn::Set(DU(), job.Primitive.ConstColor);
    const auto put = [&](int i, auto shift) HWY_ATTR {
      if ((job.Primitive.ConstMask >> i & 1u) == 0) {
        VD value = Interpolated<kPerspective>(row, slots.Color + i, t, q);
        if (slots.Secondary >= 0 && i < 3) {
          value = hn::Add(value, Interpolated<kPerspective>(row, slots.Secondary + i, t, q));
        }
        packed = hn::Or(
            packed, hn::ShiftLeft<decltype(shift)::value>(ChannelByte(value, job.Primitive.Clamp)));
      }
    };
    put(0, std::integral_constant<int, 0>());
    put(1, std::integral_constant<int, 8>());
    put(2, std::integral_constant<int, 16>());
    put(3, std::integral_constant<int, 24>());
    return packed;
  } else {
    const VD s = Interpolated<kPerspective>(row, slots.Tex, t, q);
    const VD u = Interpolated<kPerspective>(row, slots.Tex + 1, t, q);
    const TTexels texels = [&]() HWY_ATTR {
      if constexpr (kTexels == TTexelSource::Nearest) {
        return NearestTexels(job.Primitive.Sampler, s, u);
      } else if constexpr (kTexels == TTexelSource::Linear) {
        return LinearTexels(job.Primitive.Sampler, s, u);
      } else {
        return SampledTexels(job.Primitive.Sampler, s, u);
      }
    }();
    VD channel[4] = {texels.R, texels.G, texels.B, texels.A};
    if (job.Primitive.Modulate) {
      for (int i = 0; i < 4; ++i) {
        channel[i] = hn::Mul(Interpolated<kPerspective>(row, slots.Color + i, t, q), channel[i]);
      }
      if (slots.Secondary >= 0) {
        for (int i = 0; i < 3; ++i) {
          channel[i] =
              hn::Add(channel[i], Interpolated<kPerspective>(row, slots.Secondary + i, t, q));
        }
      }
    }
    // A coordinate that fits no index leaves a fraction of any size, or a NaN.
    const bool clamp = job.Primitive.Clamp || kTexels == TTexelSource::Linear;
    const VU r = ChannelByte(channel[0], clamp);
    const VU g = ChannelByte(channel[1], clamp);
    const VU b = ChannelByte(channel[2], clamp);
    const VU a = ChannelByte(channel[3], clamp);
    return hn::Or(hn::Or(r, hn::ShiftLeft<8>(g)),
                  hn::Or(hn::ShiftLeft<16>(b), hn::ShiftLeft<24>(a)));
  }
}

// The exact colours of a group whose rounding test failed, out of line.
template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR VU ExactFallbackColors(const TSpanJob& job, const TRowSlots& slots,
                                             const TRow& row, VD t) {
  // A row whose values all lie between two bytes would pay for both paths: its budget shrinks.
  --row.Floats->FallbackBudget;
  if (HWY_UNLIKELY(job.Counters != nullptr)) {
    job.Counters->AddUnmet(TCondition::ValuesBytes);
  }
  return ExactColors<kTexels, kPerspective>(job, slots, row, t);
}

// The fragment shader's colours as packed bytes.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR VU PackedColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    VD t) {
  VU packed = hn::Set(DU(), job.Primitive.ConstColor);
  if constexpr (kTexels == TTexelSource::None) {
    if (job.Primitive.HasConstColor()) {
      return packed;
    }
  }
  if constexpr (kTexels != TTexelSource::Sampler) {
    if (row.HasFloats()) {
      bool sure = false;
      if constexpr (kTexels == TTexelSource::None) {
        sure = UntexturedBytes<kPerspective>(job, slots, row, t, &packed);
      } else {
        TFetchedTexels ready;
        sure = FetchTexelsAt<kTexels, kPerspective>(job, slots, row, t, &ready) &&
               TexturedBytes<kTexels, kPerspective>(job, slots, *row.Floats, ready, &packed);
      }
      if (HWY_LIKELY(sure)) {
        return packed;
      }
      return ExactFallbackColors<kTexels, kPerspective>(job, slots, row, t);
    }
  }
  return ExactColors<kTexels, kPerspective>(job, slots, row, t);
}

// The colour that the fragment shader leaves at one pixel.
inline HWY_ATTR vec_t_<double, 4> ColorAt(const TSpanJob& job, const TRowSlots& slots,
                                          const TRow& row, double t) {
  const double q = job.Primitive.Perspective ? 1.0 / (row.Delta[3] * t + row.Begin[3]) : 1.0;
  const auto slot = [&](int place, int count) {
    vec_t_<double, 4> v = {0, 0, 0, 0};
    for (int i = 0; i < count && place >= 0; ++i) {
      const double value = row.Delta[place + i] * t + row.Begin[place + i];
      v[static_cast<std::size_t>(i)] = job.Primitive.Perspective ? value * q : value;
    }
    return v;
  };
  vec_t_<double, 4> color = slot(slots.Color, 4);
  if (job.Primitive.Texels != TTexelSource::None) {
    vec_t_<double, 4> texel = {0, 0, 0, 0};
    (job.Primitive.Sampler->*job.Primitive.Sampler->m_GetValue)(slot(slots.Tex, 2), &texel);
    color = job.Primitive.Modulate ? vec_t_<double, 4>{color.x * texel.x, color.y * texel.y,
                                                       color.z * texel.z, color.w * texel.w}
                                   : texel;
  }
  if (slots.Secondary >= 0) {
    const vec_t_<double, 4> secondary = slot(slots.Secondary, 3);
    color = {color.x + secondary.x, color.y + secondary.y, color.z + secondary.z, color.w};
  } else if (job.Primitive.ZeroSecondary) {
    color = {color.x + 0.0, color.y + 0.0, color.z + 0.0, color.w};
  }
  for (std::size_t i = 0; i < 4; ++i) {
    color[i] = color[i] < 0.0 ? 0.0 : color[i] > 1.0 ? 1.0 : color[i];
  }
  return color;
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
