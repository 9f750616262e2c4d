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

// Calls a function with each channel's number, as a type.
template <class TFunction> HWY_INLINE HWY_ATTR void ForEachChannel(const TFunction& function) {
  function(std::integral_constant<int, 0>());
  function(std::integral_constant<int, 1>());
  function(std::integral_constant<int, 2>());
  function(std::integral_constant<int, 3>());
}

// What a function gives for a value that is one of several, the last if none of the others, which
// it takes by its type.
template <auto kFirst, auto... kOthers, class T, class TFunction>
HWY_INLINE HWY_ATTR auto ByValue(T value, const TFunction& function) {
  if constexpr (sizeof...(kOthers) != 0) {
    if (value != kFirst) {
      return ByValue<kOthers...>(value, function);
    }
  }
  return function(std::integral_constant<T, kFirst>());
}

// --- The proof
//
// The exact path works out a channel's value v in doubles and takes the truncation of v * 255 +
// 0.5. Here 255 * v is worked out in floats as F, and the byte is taken only if F - margin and F +
// margin, each with the half added, have the same: then every value within the margin of F has this
// byte, the exact one among them; where two bytes meet within the margin the test fails. What
// remains is to bound |F - 255 v|.
//
// F is in fixed point. The fraction of a byte has kFixedBits bits; the half byte, the margin and
// 2^23, from where on floats are whole, are added on the way. The low bits of the sum are then the
// byte and its fraction, and the byte is taken unless the fraction lies below two margins. Colours
// are worked out from n, the columns after the row's first pixel, which a float holds exactly:
// `delta * n + begin`, both set up in double. Without a texture what is added is part of `begin`,
// with one it is part of a secondary colour's, or a constant.
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
//   greatest |coordinate| in texels at the corners, |delta| is at most 2 S R. A numerator of the
//   exact path is off by 7 U S R, its 1/w by (4 p - 3) U of itself, and what follows by 4 U S. By
//   columns, `delta` times n, and what is part of `begin`, are off by 5 U of delta, and `begin`,
//   the shift and the sums by U S R each: 14 U S R; 1/w by (9 p - 5) U, and what is common to both
//   by 4 U S. Together that is 34 U p S at most. `TexelBound` times p being 2^24 at most, both
//   coordinates together are off by 34 * 2^-29 texels (kMaxTexelError is more). The mean of texels
//   has no jumps, also where a repeat or an edge begins, and changes by 255 a texel at most: it is
//   off by 255 * 2^-23.9.
// - With texels the reciprocal is one of doubles. The numerator, from n, is off by 4 u E p, its
//   product with a texel by 255 u C p more, that with the reciprocal and the reciprocal itself by
//   255 * 2 u C; the texel, times the colour, by 7 * 128 u C + 255 u C. Together with a secondary
//   colour the deltas may reach 2 E, and their sum is rounded: 255 u (8 p + 2) E for 255 u (5 p +
//   2) E. Its `begin` and the sum with it hold 2^23 as well where 1/w does not vary, and are off by
//   half of 2^-kFixedBits each.
// What the doubles lose, about 2^-50 p, is below the 255 u that are added, p being limited; the
// terms of second order are below a thousandth of the first for p E up to 512.
//
// Nothing here can be a NaN, an infinity or so small that it loses digits in a way that matters: a
// job's `ChannelBound` is E, set only for numbers up to 4 and 1/w within 1e-15 to 1e15. Pixels that
// do not exist may have any value, but they are not stored.
inline constexpr double kRounding = 1.0 / 16777216.0;
inline constexpr int kFixedBits = 15; // of a fraction of a byte

// A texel's channel is taken as it stands in its word, unless that is where the sign is.
inline constexpr float kTexelScale[4] = {1.0f, 256.0f, 65536.0f, 1.0f};

// --- What rows have ready

// The margin of a row is `Least + ByRatio * ratio`, with the ratio of its 1/w.
struct TMargin {
  double Least;
  double ByRatio;
};

inline TMargin MarginOf(const TPrimitive& primitive) {
  constexpr double kUnit = 255.0 * kRounding * 1.001;
  const bool texels = primitive.Texels != TTexelSource::None;
  const bool adds = texels && primitive.SecondarySlot >= 0;
  const double bound = primitive.ChannelBound * kUnit;
  TMargin margin = {(adds ? 4.2 : 2.1) * kUnit, 0.0};
  if (primitive.UsesVertexColor) {
    margin.Least += 2.0 * bound;
    margin.ByRatio = (!texels ? 9.0 : adds ? 8.0 : 5.0) * bound;
  }
  if (primitive.Texels == TTexelSource::Linear) {
    margin.Least += (3.6 + 1.1) * bound;
  }
  return margin;
}

// What all near values of rows that were set up together have in common.
struct TRowScale {
  const TRows& Rows;
  VD Step;    ///< t from one column to the next
  VD Before;  ///< t of the first pixel
  VD Once;    ///< by which all is multiplied where 1/w does not vary
  MD Divides; ///< where it does
  VD Bias;    ///< the half byte and the margin, in fixed point
  VD Least;   ///< with 2^23, a channel that is 0

  HWY_INLINE HWY_ATTR VD Begin(int place) const { return hn::Load(DD(), Rows.Begin[place]); }
  HWY_INLINE HWY_ATTR VD Delta(int place) const { return hn::Load(DD(), Rows.Delta[place]); }

  // From what is linear in t to what is linear by columns.
  HWY_INLINE HWY_ATTR void SetUp(VD begin, VD delta, double* from, double* by) const {
    hn::Store(hn::Add(hn::Mul(delta, Before), begin), DD(), from);
    hn::Store(hn::Mul(delta, Step), DD(), by);
  }
  HWY_INLINE HWY_ATTR void SetUp(VD begin, VD delta, float* from, float* by) const {
    hn::Store(hn::DemoteTo(DF(), hn::Add(hn::Mul(delta, Before), begin)), DF(), from);
    hn::Store(hn::DemoteTo(DF(), hn::Mul(delta, Step)), DF(), by);
  }
};

inline constexpr double kFixedUnit = 1 << kFixedBits;

inline HWY_ATTR void SetUpUntexturedColors(const TPrimitive& primitive, const TRowSlots& slots,
                                           const TRowScale& row, TRowFloats* floats) {
  const DD d;
  const VD scale = hn::Mul(row.Once, hn::Set(d, 255.0 * kFixedUnit));
  const VD shift = hn::IfThenZeroElse(row.Divides, row.Least);
  for (int i = 0; i < 4; ++i) {
    if ((primitive.ConstMask >> i & 1u) != 0) {
      continue;
    }
    VD begin = row.Begin(slots.Color + i);
    VD delta = row.Delta(slots.Color + i);
    if (slots.Secondary >= 0 && i < 3) {
      begin = hn::Add(begin, row.Begin(slots.Secondary + i));
      delta = hn::Add(delta, row.Delta(slots.Secondary + i));
    }
    begin = hn::Add(hn::Mul(begin, scale), shift);
    delta = hn::Mul(delta, scale);
    if (primitive.Perspective) {
      const VD bias = hn::IfThenElseZero(row.Divides, row.Bias);
      begin = hn::Add(begin, hn::Mul(bias, row.Begin(3)));
      delta = hn::Add(delta, hn::Mul(bias, row.Delta(3)));
    }
    row.SetUp(begin, delta, floats->Begin[i], floats->Delta[i]);
  }
  if (primitive.Perspective) {
    row.SetUp(row.Begin(3), row.Delta(3), floats->WBegin, floats->WDelta);
  }
}

inline HWY_ATTR void SetUpTexturedColors(const TPrimitive& primitive, const TRowSlots& slots,
                                         const TRowScale& row, TRowFloats* floats) {
  const DD d;
  const DF df;
  for (int i = 0; i < 4; ++i) {
    const double unit = kFixedUnit / kTexelScale[i];
    if (!primitive.UsesVertexColor) {
      hn::Store(hn::Set(df, static_cast<float>(unit)), df, floats->Begin[i]);
    } else if ((primitive.TintMask >> i & 1u) != 0) {
      hn::Store(hn::Set(df, primitive.Tint[i] / kTexelScale[i]), df, floats->Begin[i]);
    } else {
      const VD scale = hn::Mul(row.Once, hn::Set(d, unit));
      row.SetUp(hn::Mul(row.Begin(slots.Color + i), scale),
                hn::Mul(row.Delta(slots.Color + i), scale), floats->Begin[i], floats->Delta[i]);
    }
  }
  if (primitive.UsesVertexColor && slots.Secondary >= 0) {
    const VD scale = hn::Mul(row.Once, hn::Set(d, 255.0 * kFixedUnit));
    const VD shift = hn::IfThenZeroElse(row.Divides, row.Least);
    for (int i = 0; i < 3; ++i) {
      row.SetUp(hn::Add(hn::Mul(row.Begin(slots.Secondary + i), scale), shift),
                hn::Mul(row.Delta(slots.Secondary + i), scale), floats->SecondaryBegin[i],
                floats->SecondaryDelta[i]);
    }
  }
}

// Coordinates in texels. The shift of a filter is a shift by as many 1/w.
inline HWY_ATTR void SetUpPlaces(const TPrimitive& primitive, const TRowSlots& slots,
                                 const TRowScale& row, TRowFloats* floats) {
  const DD d;
  VD shift = hn::Set(d, ShiftOf(primitive.Texels));
  VD shiftDelta = hn::Zero(d);
  if (primitive.Perspective) {
    shiftDelta = hn::Mul(shift, row.Delta(3));
    shift = hn::IfThenElse(row.Divides, hn::Mul(shift, row.Begin(3)), shift);
    row.SetUp(row.Begin(3), row.Delta(3), floats->PlaceBegin[2], floats->PlaceDelta[2]);
  }
  for (int i = 0; i < 2; ++i) {
    const double size = (i == 0 ? primitive.AxisX : primitive.AxisY).Size;
    const VD scale = hn::Mul(row.Once, hn::Set(d, size));
    row.SetUp(hn::Sub(hn::Mul(row.Begin(slots.Tex + i), scale), shift),
              hn::Sub(hn::Mul(row.Delta(slots.Tex + i), scale), shiftDelta), floats->PlaceBegin[i],
              floats->PlaceDelta[i]);
  }
}

// Sets up the near values of all rows that were set up together.
inline HWY_ATTR void SetUpRowFloats(const TSpanJob& job, const TRowSlots& slots, const TRows& rows,
                                    TRowFloats* floats) {
  const DD d;
  const DF df;
  const TPrimitive& primitive = job.Primitive;
  const VD one = hn::Set(d, 1.0);
  const VD x = hn::Load(d, rows.Begin[0]);
  const VD step = hn::Div(one, hn::Load(d, rows.Delta[0]));
  const VD first = hn::PromoteTo(d, hn::Load(DI(), rows.First));
  TRowScale row = {rows, step, hn::Mul(hn::Sub(first, x), step), one, NoLanes(d), one, one};
  VD ratio = one;
  if (primitive.Perspective) {
    const VD w = row.Begin(3);
    const VD end = hn::Add(w, row.Delta(3));
    row.Divides = hn::Not(hn::Eq(row.Delta(3), hn::Zero(d)));
    row.Once = hn::IfThenElse(row.Divides, one, hn::Div(one, w));
    ratio = hn::IfThenElse(row.Divides, hn::Div(hn::Max(w, end), hn::Min(w, end)), one);
  }
  hn::Store(ratio, d, floats->Ratio);

  const TMargin margin = MarginOf(primitive);
  const VD units = hn::Ceil(hn::Add(hn::Mul(ratio, hn::Set(d, margin.ByRatio * kFixedUnit)),
                                    hn::Set(d, margin.Least * kFixedUnit)));
  row.Bias = hn::Add(hn::Set(d, 0.5 * kFixedUnit), units);
  row.Least = hn::Add(hn::Set(d, kWholeFloats), row.Bias);
  hn::Store(hn::DemoteTo(df, row.Least), df, floats->Least);
  hn::Store(hn::DemoteTo(df, hn::Add(row.Least, hn::Set(d, 255.0 * kFixedUnit))), df, floats->Most);
  hn::Store(hn::ShiftLeft<33 - kFixedBits>(hn::DemoteTo(DI(), units)), DI(), floats->LeastSure);

  row.SetUp(row.Begin(2), row.Delta(2), floats->DepthBegin, floats->DepthDelta);
  if (primitive.Texels == TTexelSource::None) {
    SetUpUntexturedColors(primitive, slots, row, floats);
  } else {
    SetUpTexturedColors(primitive, slots, row, floats);
    if (HasByteTexels(primitive.Texels)) {
      SetUpPlaces(primitive, slots, row, floats);
    }
  }
}

// The condition that rules out float colours in one of these rows.
inline TCondition UnmetByFloatRow(const TSpanJob& job, double ratio) {
  const TPrimitive& primitive = job.Primitive;
  ZX_RETURN_FIRST_UNMET(ZX_FLOAT_ROW_CONDITIONS);
}

// --- Texels

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
    const TTexture texture(job.Primitive);
    const auto at = [&](int i, const TTexelAxis& axis) HWY_ATTR {
      const VD place =
          hn::Mul(Interpolated<kPerspective>(row, slots.Tex + i, t, q), hn::Set(d, axis.Size));
      return hn::Sub(place, hn::Set(d, ShiftOf(kTexels)));
    };
    return job.Meets(
        FetchTexels<kTexels, kReach, false>(texture, at(0, texture.X), at(1, texture.Y), ready));
  }
}

// What a function gives for the reach of a primitive, which it takes by its type.
template <class TFunction>
HWY_INLINE HWY_ATTR auto ByReach(TTexelReach reach, const TFunction& function) {
  return ByValue<TTexelReach::Plain, TTexelReach::Periodic, TTexelReach::Anywhere>(reach, function);
}

// --- Bytes, channel by channel

// Puts the byte of a channel in fixed point where `packed` has none yet. Returns its fraction, in
// the high bits.
template <int kChannel> HWY_INLINE HWY_ATTR VFU PutByte(VFF value, VFU* packed) {
  constexpr int kShift = 8 * kChannel;
  const DFU du;
  const VFU fixed = hn::BitCast(du, value);
  VFU byte = fixed;
  if constexpr (kShift < kFixedBits) {
    byte = hn::ShiftRight<kFixedBits - kShift>(fixed);
  } else {
    byte = hn::ShiftLeft<kShift - kFixedBits>(fixed);
  }
  *packed = hn::OrAnd(*packed, byte, hn::Set(du, 0xFFu << kShift));
  return hn::ShiftLeft<32 - kFixedBits>(fixed);
}

HWY_INLINE HWY_ATTR VFF ClampedFixed(const TRow& row, VFF value) {
  const DFF d;
  return hn::Min(hn::Max(value, hn::Set(d, row.Floats->Least[row.Lane])),
                 hn::Set(d, row.Floats->Most[row.Lane]));
}

// A value that is linear by columns, at the pixels so many columns after a row's first.
HWY_INLINE HWY_ATTR VFF ValueAfter(const TRow& row, const float* begin, const float* delta,
                                   VFF after) {
  const DFF d;
  return hn::Add(hn::Mul(hn::Set(d, delta[row.Lane]), after), hn::Set(d, begin[row.Lane]));
}

// Packed colours of pixels of a row without a texture, by how many columns they lie after its first
// one, with the constant ones of `packed`. The mask loses those whose rounding test fails.
template <bool kDivides, bool kClamp>
HWY_INLINE HWY_ATTR MFI UntexturedBytes(const TRow& row, std::uint32_t constMask, VFF after,
                                        VFU* packed) {
  const DFF d;
  const DFU du;
  const TRowFloats& floats = *row.Floats;
  const VFF q =
      kDivides ? hn::Div(hn::Set(d, 1.0f), ValueAfter(row, floats.WBegin, floats.WDelta, after))
               : after;
  VFU least = hn::Set(du, ~0u);
  ForEachChannel([&](auto channel) HWY_ATTR __attribute__((always_inline)) {
    constexpr int kChannel = decltype(channel)::value;
    if (HWY_UNLIKELY((constMask >> kChannel & 1u) != 0)) {
      return;
    }
    VFF value = ValueAfter(row, floats.Begin[kChannel], floats.Delta[kChannel], after);
    if (kDivides) {
      value = hn::Add(hn::Mul(value, q), hn::Set(d, kWholeFloats));
    }
    if (kClamp) {
      value = ClampedFixed(row, value);
    }
    least = hn::Min(least, PutByte<kChannel>(value, packed));
  });
  const VFU sure = hn::Set(du, floats.LeastSure[row.Lane]);
  return hn::RebindMask(DFI(), hn::Eq(hn::Min(least, sure), sure));
}

// A channel of texels, times its `kTexelScale`.
template <int kChannel> HWY_INLINE HWY_ATTR VFF TexelChannel(VFU texels) {
  VFU byte;
  if constexpr (kChannel == 3) {
    byte = hn::ShiftRight<24>(texels);
  } else {
    byte = hn::And(texels, hn::Set(DFU(), 0xFFu << 8 * kChannel));
  }
  return hn::ConvertTo(DFF(), hn::BitCast(DFI(), byte));
}

HWY_INLINE HWY_ATTR VFF MixFloats(VFF a, VFF b, VFF f) {
  return hn::Add(hn::Mul(hn::Sub(b, a), f), a);
}

// What texels are multiplied by, and added to.
enum class TModulation : std::uint8_t { None, Color, ColorAndSecondary };

// The pixels whose rounding test fails, of two groups: 16 bits a channel.
using TUnsureBits = std::uint64_t;

// Packed colours of the textured pixels of two groups, by how many columns they lie after the row's
// first, 1/w varying if `kDivides`.
template <TTexelSource kTexels, bool kDivides, TModulation kModulation>
HWY_INLINE HWY_ATTR VFU TexturedBytes(const TPrimitive& primitive, const TRow& row, VFF after,
                                      const TFetchedTexels& first, const TFetchedTexels& second,
                                      TUnsureBits* unsure) {
  constexpr bool kLinear = kTexels == TTexelSource::Linear;
  const DFF d;
  const DFU du;
  *unsure = 0;
  const VFU lowLeft = hn::ConcatLowerLower(du, second.Left, first.Left);
  if (!kLinear && kModulation == TModulation::None) {
    // A byte times 0.00392156862745098 times 255 is the byte again, to a few units of the last
    // place, even after multiplication by an interpolated 1 that is off by as much.
    return lowLeft;
  }
  const auto join = [&](VD low, VD high) HWY_ATTR __attribute__((always_inline)) {
    return hn::Combine(d, hn::DemoteTo(DF(), high), hn::DemoteTo(DF(), low));
  };
  VFU lowRight, highLeft, highRight;
  VFF u, v;
  if constexpr (kLinear) {
    lowRight = hn::ConcatLowerLower(du, second.Right, first.Right);
    highLeft = hn::ConcatUpperUpper(du, second.Left, first.Left);
    highRight = hn::ConcatUpperUpper(du, second.Right, first.Right);
    u = join(first.FractionU, second.FractionU);
    v = join(first.FractionV, second.FractionV);
  }
  const VFF q = kDivides && kModulation != TModulation::None ? join(first.Q, second.Q) : after;
  const TRowFloats& floats = *row.Floats;
  const int lane = row.Lane;
  const VFF zero = hn::Set(d, floats.Least[lane]);
  VFU packed = hn::Zero(du);
  ForEachChannel([&](auto channel) HWY_ATTR __attribute__((always_inline)) {
    constexpr int kChannel = decltype(channel)::value;
    constexpr bool kAdds = kModulation == TModulation::ColorAndSecondary && kChannel < 3;
    VFF value = TexelChannel<kChannel>(lowLeft);
    if constexpr (kLinear) {
      value = MixFloats(
          MixFloats(value, TexelChannel<kChannel>(lowRight), u),
          MixFloats(TexelChannel<kChannel>(highLeft), TexelChannel<kChannel>(highRight), u), v);
    }
    // Of a linear filter's channels only an alpha without texels can be a tint.
    if ((!kLinear || kChannel == 3) && HWY_UNLIKELY((primitive.TintMask >> kChannel & 1u) != 0)) {
      const VFF tinted = hn::Mul(value, hn::Set(d, floats.Begin[kChannel][lane]));
      const VFU byte = hn::BitCast(du, hn::Add(tinted, hn::Set(d, kWholeFloats)));
      packed = hn::Or(packed, hn::ShiftLeft<8 * kChannel>(hn::And(byte, hn::Set(du, 255u))));
      return;
    }
    if (kModulation == TModulation::None) {
      value = hn::Mul(value, hn::Set(d, floats.Begin[kChannel][lane]));
    } else {
      value =
          hn::Mul(value, ValueAfter(row, floats.Begin[kChannel], floats.Delta[kChannel], after));
    }
    if (kDivides && kModulation != TModulation::None) {
      value = kAdds ? hn::Add(value, ValueAfter(row, floats.SecondaryBegin[kChannel],
                                                floats.SecondaryDelta[kChannel], after))
                    : value;
      value = hn::Add(hn::Mul(value, q), zero);
    } else {
      value = hn::Add(value, kAdds ? ValueAfter(row, floats.SecondaryBegin[kChannel],
                                                floats.SecondaryDelta[kChannel], after)
                                   : zero);
    }
    if (primitive.Clamp) {
      value = ClampedFixed(row, value);
    }
    const VFU fraction = PutByte<kChannel>(value, &packed);
    *unsure |= BitsOfMask(du, hn::Lt(fraction, hn::Set(du, floats.LeastSure[lane])))
               << 16 * kChannel;
  });
  return packed;
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
