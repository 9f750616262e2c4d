// The colours of a group of pixels in single precision, with proof that the bytes are those of
// double precision. Included once for each instruction set.
//
// Tested by: tests/render/SpanBytes.cpp (SpanBytes.*), tests/render/SpanLevels.cpp (SpanLevels.*)

#if defined(ZX_RENDER_SPANFLOATCOLORS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANFLOATCOLORS_INL_H_
#undef ZX_RENDER_SPANFLOATCOLORS_INL_H_
#else
#define ZX_RENDER_SPANFLOATCOLORS_INL_H_
#endif

#include <algorithm>
#include <cmath>
#include <type_traits>

#include <ZxCore3D/render/kernels/SpanRowSetup-inl.h>
#include <ZxCore3D/render/kernels/SpanTexels-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// delta * t + begin, times q with perspective.
template <bool kPerspective, class V>
HWY_INLINE HWY_ATTR V Interpolated(V begin, V delta, V t, V q) {
  const V value = hn::Add(hn::Mul(delta, t), begin);
  return kPerspective ? hn::Mul(value, q) : value;
}

// A component of a slot at the pixels of a group.
template <bool kPerspective, class TRowOfGroup>
HWY_INLINE HWY_ATTR VD Interpolated(const TRowOfGroup& row, int place, VD t, VD q) {
  return Interpolated<kPerspective>(ValuesOf(row.Begin, place), ValuesOf(row.Delta, place), t, q);
}

// Whether 1/w is the same at all pixels of a row, as on a floor or on what faces the viewer.
HWY_INLINE bool HasOneW(const TRow& row) { return row.Delta[3] == 0.0; }

// q = 1 / (1/w at t); without perspective it is not read.
template <bool kPerspective, class TRowOfGroup>
HWY_INLINE HWY_ATTR VD PerspectiveAt(const TRowOfGroup& row, VD t) {
  const DD d;
  if (!kPerspective) {
    return t;
  }
  if (row.Delta[3] == 0.0) { // one division for all lanes
    return hn::Set(d, 1.0 / row.Begin[3]);
  }
  return hn::Div(hn::Set(d, 1.0), Interpolated<false>(row, 3, t, t));
}

// Packed pixels: `packed`, with the bytes that `byteOf` gives for the channels outside `mask`.
template <class D, class TByteOf>
HWY_INLINE HWY_ATTR hn::Vec<D> PackChannels(D, std::uint32_t mask, hn::Vec<D> packed,
                                            const TByteOf& byteOf) {
  // Called so often that the compiler would not inline it by itself.
  const auto put = [&](int i, auto shift) HWY_ATTR __attribute__((always_inline)) {
    if (HWY_LIKELY((mask >> i & 1u) == 0)) {
      packed = hn::Or(packed, hn::ShiftLeft<decltype(shift)::value>(byteOf(i)));
    }
  };
  put(0, std::integral_constant<int, 0>());
  put(1, std::integral_constant<int, 8>());
  put(2, std::integral_constant<int, 16>());
  put(3, std::integral_constant<int, 24>());
  return packed;
}

// --- The proof
//
// The exact path works out a channel's value v in doubles and takes the truncation of v * 255 +
// 0.5. Here 255 * v is worked out in floats as F, and the byte is taken only if both F - margin and
// F + margin round to it: then every value within the margin of F has this byte, the exact one
// among them; where two bytes meet within the margin the test fails. What remains is to bound
// |F - 255 v|.
//
// Without a texture a channel is worked out from n, the columns after the row's first pixel, which
// a float holds exactly: `delta * n + begin`, both set up in double, in fixed point. The fraction
// of a byte has kFixedBits bits; the half byte that the exact path adds, the margin and 2^23, from
// where on floats are whole, are part of `begin`. The low bits of the sum are then the byte and its
// fraction, and the byte is taken unless the fraction lies below two margins.
//
// With u = 2^-24, the relative error of one rounding, R the greatest and r the least 1/w of the
// row's two ends, p = R / r, C the greatest |c| of a channel at the corners and D the greatest
// difference of two corners, both times 1/w where there is perspective:
// - A numerator is `delta * t + begin`, where |begin| <= C R and |delta| <= max(C, D) R = E R: with
//   no negative channel E = C, otherwise 2 C. Rounding delta, t and the product costs 3 u E R,
//   rounding begin and the sum 2 u C R: u (3 E + 2 C) p relative to 1/w. Of 1/w itself |delta| is
//   at most R - r: relative to it, it is off by u (3 (p - 1) + p + 1) = u (4 p - 2).
// - From n no t is rounded: u (2 E + 2 C) p for a numerator, and the same as from t for 1/w. What
//   is part of `begin` counts in C as 1.01; where 1/w varies, and 2^23 is added at the end, as
//   0.01, and that sum is off by half of 2^-kFixedBits, 1.01 * 255 u of a byte. The margin is a
//   whole number of these units, rounded up.
// - The numerator times the reciprocal, both rounded, is off by u (3 E + 2 C) p + u C (4 p - 1)
//   + u C: below 9 u E p. Without perspective it is less, p being 1. A secondary colour, which C
//   and E count in, adds a rounding of the sum: u C. Without a texture it is added in double.
// - Where 1/w is the same at all pixels of a row, its reciprocal is multiplied into begin and delta
//   in double, and p is 1.
// - Texels are whole numbers up to 255, and so are their differences, exactly. Mixing them rounds
//   the two fractions, three products, three sums and a difference, of which no pixel meets more
//   than 7 in full. A number below 256 is rounded by 128 u at most, a fraction by u / 2, which is
//   multiplied by 255 at most: 7 * 128 u.
// - The coordinates that are mixed by are near those of the exact path. With U = 2^-53 and S the
//   greatest |coordinate| in texels at the corners: t as a product is off by 3 U, so that a
//   numerator is by 11 U S R, and by 5 U S R on the exact path, with half a texel of a filter taken
//   away before or after; 1/w by (4 p + 1) U and (2 p + 1) U of itself; products and quotient by
//   6 U more. Together that is below 34 U p S. `TexelBound` times p being 2^24 at most, both
//   coordinates together are off by 34 * 2^-29 texels (kMaxTexelError is more). The mean of texels
//   has no jumps, also where a repeat or an edge begins, and changes by 255 a texel at most: it is
//   off by 255 * 2^-23.9.
// - With texels the reciprocal is one of doubles: a colour is off by u E (5 p + 2), and texel times
//   colour by 255 u E (5 p + 2) + 7 * 128 u C + 255 u C; a secondary colour as above.
// - Adding or taking away the margin rounds a number below 256 once, after the clamp, which brings
//   no two values further apart: 128 u.
// What the doubles lose, about 2^-50 p, is below the 255 u that are added, p being limited; the
// terms of second order are below a thousandth of the first for p E up to 512.
//
// Nothing here can be a NaN, an infinity or so small that it loses digits in a way that matters: a
// job's `ChannelBound` is E, set only for numbers up to 4 and 1/w within 1e-15 to 1e15. Pixels that
// do not exist may have any value, but they are not stored.
inline constexpr double kRounding = 1.0 / 16777216.0;
inline constexpr int kFixedBits = 15; // of a fraction of a byte

// The margin of a row with a ratio of its 1/w.
inline HWY_ATTR double MarginOf(const TPrimitive& primitive, double ratio) {
  constexpr double kUnit = 255.0 * kRounding * 1.001;
  const bool texels = primitive.Texels != TTexelSource::None;
  double bounds = 0.0;
  if (primitive.UsesVertexColor) {
    bounds = texels ? 4.0 + 5.0 * ratio : 2.0 + 9.0 * ratio;
  }
  if (primitive.Texels == TTexelSource::Linear) {
    bounds += 3.6 + 1.1;
  }
  return kUnit * ((texels ? 1.5 : 2.1) + primitive.ChannelBound * bounds);
}

// --- What a row has ready

HWY_INLINE HWY_ATTR void SetFloats(const TRowComponents& from, int place, double scale, float* to) {
  for (int i = 0; i < 4; ++i) {
    to[i] = static_cast<float>(from[place + i] * scale);
  }
}

// The colours of a row without a texture, by columns.
inline HWY_ATTR void SetUpRowColumns(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                     double margin, TRowFloats* floats) {
  constexpr double kUnit = 1 << kFixedBits;
  const double units = std::ceil(margin * kUnit);
  const double bias = 0.5 * kUnit + units;
  const bool divides = job.Primitive.Perspective && !HasOneW(row);
  const double once = job.Primitive.Perspective && !divides ? 1.0 / row.Begin[3] : 1.0;
  const double shift = divides ? 0.0 : kWholeFloats + bias;
  const double step = 1.0 / row.Delta[0];
  const double before = (row.First - row.Begin[0]) * step;
  const auto setUp = [&](double begin, double delta, float* from, float* by) HWY_ATTR {
    *from = static_cast<float>(delta * before + begin);
    *by = static_cast<float>(delta * step);
  };
  for (int i = 0; i < 4; ++i) {
    if ((job.Primitive.ConstMask >> i & 1u) != 0) {
      continue;
    }
    const auto sumOf = [&](const TRowComponents& from, double ofOne) HWY_ATTR {
      const bool adds = slots.Secondary >= 0 && i < 3;
      const double sum = from[slots.Color + i] + (adds ? from[slots.Secondary + i] : 0.0);
      return sum * (255.0 * kUnit * once) + (divides ? bias * from[3] : ofOne);
    };
    setUp(sumOf(row.Begin, shift), sumOf(row.Delta, 0.0), &floats->Begin[i], &floats->Delta[i]);
  }
  if (divides) {
    setUp(row.Begin[3], row.Delta[3], &floats->WBegin, &floats->WDelta);
  }
  floats->Least = static_cast<float>(kWholeFloats + bias);
  floats->Most = static_cast<float>(kWholeFloats + bias + 255.0 * kUnit);
  floats->LeastSure = static_cast<std::uint32_t>(2.0 * units) << (32 - kFixedBits);
}

// The colours of a row that are multiplied by texels, by t.
inline HWY_ATTR void SetUpRowColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    TRowFloats* floats) {
  const double once = job.Primitive.Perspective && HasOneW(row) ? 1.0 / row.Begin[3] : 1.0;
  SetFloats(row.Begin, slots.Color, once, floats->Begin);
  SetFloats(row.Delta, slots.Color, once, floats->Delta);
  if (slots.Secondary >= 0) {
    SetFloats(row.Begin, slots.Secondary, once * 255.0, floats->SecondaryBegin);
    SetFloats(row.Delta, slots.Secondary, once * 255.0, floats->SecondaryDelta);
    floats->SecondaryBegin[3] = 0.0f;
    floats->SecondaryDelta[3] = 0.0f;
  }
  for (int i = 0; i < 4; ++i) {
    if ((job.Primitive.TintMask >> i & 1u) != 0) {
      floats->Begin[i] = job.Primitive.Tint[i];
      floats->Delta[i] = 0.0f;
    }
  }
}

// A coordinate in texels is TexelBegin + TexelDelta * t, times q where 1/w varies. The shift of a
// filter is a shift by as many 1/w.
inline HWY_ATTR void SetUpRowTexels(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    TRowFloats* floats) {
  const TPrimitive& primitive = job.Primitive;
  double once = 1.0;
  double shift = ShiftOf(primitive.Texels);
  double shiftDelta = 0.0;
  if (primitive.Perspective && HasOneW(row)) {
    once = 1.0 / row.Begin[3];
  } else if (primitive.Perspective) {
    shiftDelta = shift * row.Delta[3];
    shift *= row.Begin[3];
  }
  const auto setUp = [&](int i, double size) HWY_ATTR {
    floats->TexelBegin[i] = row.Begin[slots.Tex + i] * once * size - shift;
    floats->TexelDelta[i] = row.Delta[slots.Tex + i] * once * size - shiftDelta;
  };
  setUp(0, primitive.AxisX.Size);
  setUp(1, primitive.AxisY.Size);
}

inline HWY_ATTR double RatioOfW(const TRow& row) {
  const double begin = row.Begin[3];
  const double end = begin + row.Delta[3];
  return HasOneW(row) ? 1.0 : std::max(begin, end) / std::min(begin, end);
}

// Sets up a row for float colours, unless a condition rules them out.
inline HWY_ATTR TCondition SetUpRowFloats(const TSpanJob& job, const TRowSlots& slots,
                                          const TRow& row, TRowFloats* floats) {
  const TPrimitive& primitive = job.Primitive;
  const double ratio = primitive.Perspective ? RatioOfW(row) : 1.0;
  ZX_FLOAT_ROW_CONDITIONS(ZX_RETURN_UNMET)
  const double margin = MarginOf(primitive, ratio);
  if (primitive.Texels == TTexelSource::None) {
    SetUpRowColumns(job, slots, row, margin, floats);
    return TCondition::None;
  }
  if (primitive.UsesVertexColor) {
    SetUpRowColors(job, slots, row, floats);
  }
  floats->Margin = static_cast<float>(margin);
  floats->NearTexels = HasByteTexels(primitive.Texels) && *job.ExactRuns == 0;
  if (floats->NearTexels) {
    SetUpRowTexels(job, slots, row, floats);
  }
  for (int i = 0; i < 4; ++i) {
    floats->ChannelMargins[i] = (primitive.TintMask >> i & 1u) != 0 ? 0.0f : floats->Margin;
  }
  return TCondition::None;
}

// --- Channels, pixel by pixel, in two whole vectors

struct TChannels {
  VFF Low, High;
};

// Repeats each pixel's value for its four channels.
HWY_INLINE HWY_ATTR TChannels Spread(VF value) {
  const DFF d;
  const VFF whole = hn::ZeroExtendVector(d, value);
#if ZX_HAS_ONE_BLOCK
  return {hn::Broadcast<0>(whole), hn::Broadcast<1>(whole)};
#else
  constexpr int kHalf = HWY_LANES(double) / 2;
  HWY_ALIGN static constexpr std::int32_t kLow[16] = {0, 0, 0, 0, 1, 1, 1, 1,
                                                      2, 2, 2, 2, 3, 3, 3, 3};
  HWY_ALIGN static constexpr std::int32_t kHigh[16] = {
      kHalf,     kHalf,     kHalf,     kHalf,     kHalf + 1, kHalf + 1, kHalf + 1, kHalf + 1,
      kHalf + 2, kHalf + 2, kHalf + 2, kHalf + 2, kHalf + 3, kHalf + 3, kHalf + 3, kHalf + 3};
  return {hn::TableLookupLanes(whole, hn::SetTableIndices(d, kLow)),
          hn::TableLookupLanes(whole, hn::SetTableIndices(d, kHigh))};
#endif
}

HWY_INLINE HWY_ATTR TChannels ChannelsOf(VU texels) {
  const DFF d;
  const DFI di;
  const hn::Rebind<std::uint8_t, DFF> half;
  const auto bytes = hn::BitCast(hn::Repartition<std::uint8_t, DU>(), texels);
  return {hn::ConvertTo(d, hn::PromoteTo(di, hn::LowerHalf(half, bytes))),
          hn::ConvertTo(d, hn::PromoteTo(di, hn::UpperHalf(half, bytes)))};
}

template <bool kPerspective>
HWY_INLINE HWY_ATTR TChannels SlotAt(const float* begin, const float* delta, const TChannels& t,
                                     const TChannels& q) {
  const DFF d;
  const VFF b = hn::LoadDup128(d, begin);
  const VFF m = hn::LoadDup128(d, delta);
  return {Interpolated<kPerspective>(b, m, t.Low, q.Low),
          Interpolated<kPerspective>(b, m, t.High, q.High)};
}

// The bytes of channels in 0 to 255. The mask that is returned loses what fails the rounding test:
// bits of a channel and a pixel, of either vector.
HWY_INLINE HWY_ATTR MFI BytesByRoundingTest(TChannels value, bool clamp, VFF by, VU* packed) {
  const DFF d;
  MFI sure = AllLanes(DFI());
  const VFU low = ByteByRoundingTest(d, value.Low, clamp, by, &sure);
  const VFU high = ByteByRoundingTest(d, value.High, clamp, by, &sure);
  const hn::Rebind<std::uint8_t, DFF> half;
  const auto bytes = hn::Combine(hn::Repartition<std::uint8_t, DU>(), hn::TruncateTo(half, high),
                                 hn::TruncateTo(half, low));
  *packed = hn::BitCast(DU(), bytes);
  return sure;
}

// The channels that failed, of the bits of that mask.
inline std::uint32_t UnsureChannels(std::uint64_t sure) {
  std::uint64_t unsure = ~sure & FirstBits(kFloatLanes);
  unsure |= unsure >> 8;
  return static_cast<std::uint32_t>((unsure | unsure >> 4) & kAllChannels);
}

// --- Texels

HWY_INLINE HWY_ATTR VFF MixFloats(VFF a, VFF b, VFF f) {
  return hn::Add(hn::Mul(hn::Sub(b, a), f), a);
}

// Computes the exact path's coordinates and fetches texels; false where they are no bytes.
template <TTexelSource kTexels, bool kPerspective, TTexelReach kReach, class TRowOfGroup>
HWY_INLINE HWY_ATTR bool FetchTexelsAt(const TSpanJob& job, const TRowSlots& slots,
                                       const TRowOfGroup& row, VD t, TFetchedTexels* ready) {
  const VD q = PerspectiveAt<kPerspective>(row, t);
  ready->Q = q;
  if constexpr (kTexels == TTexelSource::Sampler) {
    ready->Fits = false;
    return false;
  } else {
    const DD d;
    const auto at = [&](int i, const TTexelAxis& axis) HWY_ATTR {
      const VD place =
          hn::Mul(Interpolated<kPerspective>(row, slots.Tex + i, t, q), hn::Set(d, axis.Size));
      return hn::Sub(place, hn::Set(d, ShiftOf(kTexels)));
    };
    return job.Meets(FetchTexels<kTexels, kReach, false>(job.Primitive, at(0, job.Primitive.AxisX),
                                                         at(1, job.Primitive.AxisY), ready));
  }
}

// What a function gives for the reach of a primitive, which it takes by its type.
template <class TFunction>
HWY_INLINE HWY_ATTR auto ByReach(TTexelReach reach, const TFunction& function) {
  switch (reach) {
  case TTexelReach::Plain:
    return function(std::integral_constant<TTexelReach, TTexelReach::Plain>());
  case TTexelReach::Periodic:
    return function(std::integral_constant<TTexelReach, TTexelReach::Periodic>());
  default:
    return function(std::integral_constant<TTexelReach, TTexelReach::Anywhere>());
  }
}

// Mixes four texels of each pixel, by the steps of the sampler.
HWY_INLINE HWY_ATTR TChannels MixTexels(const TFetchedTexels& texels) {
  const DU du;
  const TChannels fu = Spread(hn::DemoteTo(DF(), texels.FractionU));
  const TChannels fv = Spread(hn::DemoteTo(DF(), texels.FractionV));
  const TChannels c00 = ChannelsOf(hn::LowerHalf(du, texels.Left));
  const TChannels c10 = ChannelsOf(hn::LowerHalf(du, texels.Right));
  const TChannels c01 = ChannelsOf(hn::UpperHalf(du, texels.Left));
  const TChannels c11 = ChannelsOf(hn::UpperHalf(du, texels.Right));
  return {
      MixFloats(MixFloats(c00.Low, c10.Low, fu.Low), MixFloats(c01.Low, c11.Low, fu.Low), fv.Low),
      MixFloats(MixFloats(c00.High, c10.High, fu.High), MixFloats(c01.High, c11.High, fu.High),
                fv.High)};
}

// Packed colours of textured pixels at t, with perspective if `kDivides`. The mask is that
// of `BytesByRoundingTest`.
template <TTexelSource kTexels, bool kDivides>
HWY_INLINE HWY_ATTR MFI TexturedBytes(const TSpanJob& job, const TRowSlots& slots,
                                      const TRowFloats& floats, VD at, const TFetchedTexels& ready,
                                      VU* packed) {
  if (kTexels == TTexelSource::Nearest && !job.Primitive.UsesVertexColor) {
    // A byte times 0.00392156862745098 times 255 is the byte again, to a few units of the last
    // place, even after multiplication by an interpolated 1 that is off by as much.
    *packed = hn::LowerHalf(DU(), ready.Left);
    return AllLanes(DFI());
  }
  const DFF d;
  const VFF margins = hn::LoadDup128(d, floats.ChannelMargins);
  TChannels value = kTexels == TTexelSource::Nearest ? ChannelsOf(hn::LowerHalf(DU(), ready.Left))
                                                     : MixTexels(ready);
  if (job.Primitive.UsesVertexColor) {
    const TChannels t = Spread(hn::DemoteTo(DF(), at));
    const TChannels q = kDivides ? Spread(hn::DemoteTo(DF(), ready.Q)) : t;
    TChannels color = SlotAt<kDivides>(floats.Begin, floats.Delta, t, q);
    if (kDivides && job.Primitive.TintMask != 0) {
      const VFF begin = hn::LoadDup128(d, floats.Begin);
      const auto same = hn::Eq(margins, hn::Zero(d));
      color = {hn::IfThenElse(same, begin, color.Low), hn::IfThenElse(same, begin, color.High)};
    }
    value = {hn::Mul(value.Low, color.Low), hn::Mul(value.High, color.High)};
    if (slots.Secondary >= 0) {
      const TChannels sum = SlotAt<kDivides>(floats.SecondaryBegin, floats.SecondaryDelta, t, q);
      value = {hn::Add(value.Low, sum.Low), hn::Add(value.High, sum.High)};
    }
  }
  return BytesByRoundingTest(value, job.Primitive.Clamp, margins, packed);
}

// --- Without a texture, channel by channel

// Packed colours of pixels of a row, by how many columns they lie after its first one, with the
// constant ones of `packed`. The mask loses those whose rounding test fails.
template <bool kDivides, bool kClamp>
HWY_INLINE HWY_ATTR MFI UntexturedBytes(const TRowFloats& floats, std::uint32_t constMask,
                                        VFF after, VFU* packed) {
  const DFF d;
  const DFU du;
  const auto at = [&](float begin, float delta) HWY_ATTR __attribute__((always_inline)) {
    return Interpolated<false>(hn::Set(d, begin), hn::Set(d, delta), after, after);
  };
  const VFF q = kDivides ? hn::Div(hn::Set(d, 1.0f), at(floats.WBegin, floats.WDelta)) : after;
  VFU least = hn::Set(du, ~0u);
  const auto put = [&](auto shift) HWY_ATTR __attribute__((always_inline)) {
    constexpr int kShift = decltype(shift)::value;
    constexpr int kChannel = kShift / 8;
    if (HWY_UNLIKELY((constMask >> kChannel & 1u) != 0)) {
      return;
    }
    VFF value = at(floats.Begin[kChannel], floats.Delta[kChannel]);
    if (kDivides) {
      value = hn::Add(hn::Mul(value, q), hn::Set(d, kWholeFloats));
    }
    if (kClamp) {
      value = hn::Min(hn::Max(value, hn::Set(d, floats.Least)), hn::Set(d, floats.Most));
    }
    const VFU fixed = hn::BitCast(du, value);
    least = hn::Min(least, hn::ShiftLeft<32 - kFixedBits>(fixed));
    VFU byte = fixed;
    if constexpr (kShift < kFixedBits) {
      byte = hn::ShiftRight<kFixedBits - kShift>(fixed);
    } else {
      byte = hn::ShiftLeft<kShift - kFixedBits>(fixed);
    }
    *packed = hn::OrAnd(*packed, byte, hn::Set(du, 0xFFu << kShift));
  };
  put(std::integral_constant<int, 0>());
  put(std::integral_constant<int, 8>());
  put(std::integral_constant<int, 16>());
  put(std::integral_constant<int, 24>());
  const VFU sure = hn::Set(du, floats.LeastSure);
  return hn::RebindMask(DFI(), hn::Eq(hn::Min(least, sure), sure));
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
