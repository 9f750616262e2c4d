// Texels for the span kernels, a group at a time, with the indices and the bits of the texture
// sampler. Included once for each instruction set.
//
// Tested by: tests/render/SpanLevels.cpp (SpanLevels.*), tests/render/TexSampler.cpp (TexSampler.*)

#if defined(ZX_RENDER_SPANTEXELS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANTEXELS_INL_H_
#undef ZX_RENDER_SPANTEXELS_INL_H_
#else
#define ZX_RENDER_SPANTEXELS_INL_H_
#endif

#include <type_traits>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/kernels/SpanRowSetup-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

struct TTexels {
  VD Channel[4];
};

// Whether every value can be truncated to 32 bits, with room for a neighbour.
HWY_INLINE HWY_ATTR bool FitsIndex(VD v) {
  const DD d;
  return hn::AllTrue(d, hn::Lt(hn::Abs(v), hn::Set(d, kMaxIndex)));
}

// The sampler's index: truncation, less one for a negative value.
HWY_INLINE HWY_ATTR VI FlooredIndex(VD v, VD signOf) {
  const DD d;
  const DI di;
  const VI truncated = hn::DemoteTo(di, v);
  // All ones where negative: adding it takes one away. A sum with -0.0 keeps zeros positive.
  const VD below = hn::IfThenElseZero(hn::Lt(signOf, hn::Zero(d)), hn::Set(d, -1.0));
  return hn::Add(truncated, hn::DemoteTo(di, below));
}

// Indices by the wrap mode; `outside` collects those that a border mode finds out of range. Their
// indices become 0, so that the gather stays inside the block.
HWY_INLINE HWY_ATTR VI WrapIndex(VI i, std::uint32_t mode, std::int32_t n, MI* outside) {
  const DI di;
  const DD d;
  const VI zero = hn::Zero(di);
  const VI size = hn::Set(di, n);
  const VI last = hn::Set(di, n - 1);
  switch (mode) {
  case GL_REPEAT: {
    if ((n & (n - 1)) == 0) {
      const VI rest = hn::And(i, last);
      // A negative multiple of n repeats to n itself.
      const MI toEnd = hn::And(hn::Lt(i, zero), hn::Eq(rest, zero));
      return hn::IfThenElse(toEnd, size, rest);
    }
    const VD whole = hn::PromoteTo(d, i);
    const VD sizeD = hn::Set(d, n);
    // Exact: an index below 2^31 over n is an integer or at least 1 / n from one, which is far more
    // than rounding moves the quotient.
    const VI times = hn::DemoteTo(di, hn::Div(whole, sizeD));
    const VI rest = hn::Sub(i, hn::Mul(times, size));
    return hn::Add(rest, hn::IfThenElseZero(hn::Lt(i, zero), size));
  }
  case GL_CLAMP_TO_EDGE:
    return hn::Min(hn::Max(i, zero), last);
  default: {
    const MI out = hn::Or(hn::Lt(i, zero), hn::Gt(i, last));
    *outside = hn::Or(*outside, out);
    return hn::IfThenZeroElse(out, i);
  }
  }
}

HWY_INLINE HWY_ATTR VU FetchTexels(const DATASURFACE& surface, VI i, VI j) {
  const DI di;
  const VI offset = hn::Add(hn::ShiftLeft<2>(i), hn::Mul(j, hn::Set(di, surface.RowStride)));
  return hn::GatherOffset(DU(), reinterpret_cast<const std::uint32_t*>(surface.Data), offset);
}

template <int kShift> HWY_INLINE HWY_ATTR VD ByteChannel(VU texels) {
  const DU du;
  const VU byte = kShift == 24 ? hn::ShiftRight<24>(texels)
                               : hn::And(hn::ShiftRight<kShift>(texels), hn::Set(du, 255u));
  const VD value = hn::PromoteTo(DD(), hn::BitCast(DI(), byte));
  return hn::Mul(value, hn::Set(DD(), 0.00392156862745098));
}

// A mask of 32-bit lanes as one of 64-bit lanes.
HWY_INLINE HWY_ATTR MD PromotedMask(MI mask) {
  const VI ones = hn::VecFromMask(DI(), mask);
  return hn::Lt(hn::PromoteTo(DD(), ones), hn::Zero(DD()));
}

HWY_INLINE HWY_ATTR TTexels UnpackTexels(VU packed) {
  return {{ByteChannel<0>(packed), ByteChannel<8>(packed), ByteChannel<16>(packed),
           ByteChannel<24>(packed)}};
}

HWY_INLINE HWY_ATTR void PutBorder(const TRenderCPU::TTexSampler& sampler, MI outside,
                                   TTexels* texels) {
  if (hn::AllFalse(DI(), outside)) {
    return;
  }
  const MD border = PromotedMask(outside);
  for (std::size_t i = 0; i < 4; ++i) {
    const VD color = hn::Set(DD(), sampler.m_BorderColor[i]);
    texels->Channel[i] = hn::IfThenElse(border, color, texels->Channel[i]);
  }
}

// The sampler's own function, pixel by pixel.
HWY_NOINLINE HWY_ATTR TTexels SampledTexels(TRenderCPU::TTexSampler* sampler, VD s, VD t) {
  HWY_ALIGN double at[2][kLanes];
  HWY_ALIGN double channel[4][kLanes];
  const DD d;
  hn::Store(s, d, at[0]);
  hn::Store(t, d, at[1]);
  for (int i = 0; i < kLanes; ++i) {
    vec_t_<double, 4> texel = {0, 0, 0, 0};
    (sampler->*sampler->m_GetValue)({at[0][i], at[1][i], 0.0, 1.0}, &texel);
    for (std::size_t k = 0; k < 4; ++k) {
      channel[k][i] = texel[k];
    }
  }
  return {{hn::Load(d, channel[0]), hn::Load(d, channel[1]), hn::Load(d, channel[2]),
           hn::Load(d, channel[3])}};
}

// --- Nearest

// The packed texels; lanes of `outside` have the border's colour instead. False if an index does
// not fit.
HWY_INLINE HWY_ATTR bool FetchNearest(const TRenderCPU::TTexSampler& sampler, VD s, VD t,
                                      VU* texels, MI* outside) {
  const DD d;
  const VD u = hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth));
  const VD v = hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight));
  if (!FitsIndex(u) || !FitsIndex(v)) {
    return false;
  }
  const DATASURFACE& surface = *sampler.m_Surface;
  *outside = NoLanes(DI());
  const VI i = WrapIndex(FlooredIndex(u, s), sampler.m_WrapS, surface.Width, outside);
  const VI j = WrapIndex(FlooredIndex(v, t), sampler.m_WrapT, surface.Height, outside);
  *texels = FetchTexels(surface, i, j);
  return true;
}

// --- Linear

// The indices of each pixel's four texels, and the fractions that mix them.
struct TLinearPlaces {
  VI X0, X1, Y0, Y1;
  VD FractionU, FractionV;
  MI Outside0, Outside1, OutsideB, OutsideT;

  // Vectors of NEON have constructors; one that the compiler adds here would be for no target.
  HWY_INLINE HWY_ATTR TLinearPlaces() {}

  HWY_INLINE HWY_ATTR bool IsInside() const {
    return hn::AllFalse(DI(), hn::Or(hn::Or(Outside0, Outside1), hn::Or(OutsideB, OutsideT)));
  }
};

// False if an index does not fit.
HWY_INLINE HWY_ATTR bool FindLinear(const TRenderCPU::TTexSampler& sampler, VD s, VD t,
                                    TLinearPlaces* at) {
  const DD d;
  const DI di;
  const VD half = hn::Set(d, 0.5);
  const VD u = hn::Sub(hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth)), half);
  const VD v = hn::Sub(hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight)), half);
  if (!FitsIndex(u) || !FitsIndex(v)) {
    return false;
  }
  const DATASURFACE& surface = *sampler.m_Surface;
  const VI left = FlooredIndex(u, u);
  const VI bottom = FlooredIndex(v, v);
  at->FractionU = hn::Sub(u, hn::PromoteTo(d, left));
  at->FractionV = hn::Sub(v, hn::PromoteTo(d, bottom));
  const VI one = hn::Set(di, 1);
  at->Outside0 = at->Outside1 = at->OutsideB = at->OutsideT = NoLanes(di);
  at->X0 = WrapIndex(left, sampler.m_WrapS, surface.Width, &at->Outside0);
  at->X1 = WrapIndex(hn::Add(left, one), sampler.m_WrapS, surface.Width, &at->Outside1);
  at->Y0 = WrapIndex(bottom, sampler.m_WrapT, surface.Height, &at->OutsideB);
  at->Y1 = WrapIndex(hn::Add(bottom, one), sampler.m_WrapT, surface.Height, &at->OutsideT);
  return true;
}

HWY_INLINE HWY_ATTR VD MixVectors(VD c00, VD c10, VD c01, VD c11, VD fu, VD fv) {
  const VD a = hn::Add(hn::Mul(hn::Sub(c10, c00), fu), c00);
  const VD b = hn::Add(hn::Mul(hn::Sub(c11, c01), fu), c01);
  return hn::Add(hn::Mul(hn::Sub(b, a), fv), a);
}

// --- Packed, for float colours

using DU2 = hn::Repartition<std::uint32_t, DD>;

// The four texels of each pixel, those to the left and those to the right, the lower ones in the
// low halves; and how they are mixed.
struct TTexelPairs {
  hn::Vec<DU2> Left, Right;
  VD FractionU, FractionV;

  HWY_INLINE HWY_ATTR TTexelPairs() {}
};

// The indices of texel coordinates along an axis, of the left one of two with a linear filter, and
// what is left of the coordinates. Lanes that only the general wrap finds are added to `odd`.
//
// Indices are the sampler's: truncation, less one below zero; where all coordinates lie in the axis
// itself, or of a repeat at most one texel below it, that is the floor. A period goes
// floor((i + 1/2) / n) times into i: the quotient is at least 1 / 2n from an integer, which is more
// than rounding moves it by as long as i and n are below 2^21. Below zero a multiple of the size
// repeats to the size itself, which is left to the general wrap with the texels around it.
//
// Coordinates beyond the edges that a texture is clamped to are moved to those edges first. With a
// linear filter they then lie at the far end of the last two texels, or at the near end of the
// first two, and mix to the same mean as twice the texel at the edge.
template <TTexelReach kReach, bool kLinear>
HWY_INLINE HWY_ATTR VU64 PlaceTexels(const TTexelAxis& axis, VD coordinate, VD* rest, MD* odd) {
  const DD d;
  const DU64 du;
  const VD zero = hn::Zero(d);
  const auto indexOf = [&](VD whole) HWY_ATTR {
    return hn::And(hn::BitCast(du, hn::Add(whole, hn::Set(d, kSignedWholeDoubles))),
                   hn::Set(du, std::uint64_t{axis.Mask}));
  };
  const auto withinPeriod = [&](VD whole) HWY_ATTR {
    const VD times = hn::Mul(hn::Add(whole, hn::Set(d, 0.5)), hn::Set(d, axis.InversePeriod));
    return hn::Sub(whole, hn::Mul(hn::Floor(times), hn::Set(d, axis.Period)));
  };
  VD whole = zero;
  if (kReach == TTexelReach::Near && axis.Wrap == TTexelWrap::Repeat) {
    const MD below = hn::Lt(coordinate, zero);
    whole = hn::Add(hn::Trunc(coordinate), hn::IfThenElseZero(below, hn::Set(d, -1.0)));
    *rest = hn::Sub(coordinate, whole);
    if (axis.Period != 0.0) {
      // Lanes of no pixel may have any coordinate, but are fetched all the same.
      whole = hn::Min(hn::Max(withinPeriod(whole), zero), hn::Set(d, axis.Last));
    }
    const VU64 index = indexOf(whole);
    const auto atEdge =
        hn::Or(hn::Eq(index, hn::Zero(du)), hn::Eq(index, hn::Set(du, std::uint64_t{axis.Last})));
    *odd = hn::Or(*odd, hn::And(below, hn::RebindMask(d, atEdge)));
    return index;
  }
  if (kReach == TTexelReach::Near && axis.Wrap == TTexelWrap::Edge) {
    coordinate = hn::Min(hn::Max(coordinate, zero), hn::Set(d, axis.MostCoordinate));
    whole = hn::Min(hn::Floor(coordinate), hn::Set(d, axis.MostIndex));
  } else {
    whole = hn::Floor(coordinate);
    if (kReach == TTexelReach::Near) {
      const MD inside =
          hn::And(hn::Ge(coordinate, zero), hn::Lt(coordinate, hn::Set(d, axis.MostCoordinate)));
      *odd = hn::Or(*odd, hn::Not(inside));
    }
  }
  if (kLinear) {
    *rest = hn::Sub(coordinate, whole);
  }
  if (kReach == TTexelReach::Periodic && axis.Period != 0.0) {
    whole = withinPeriod(whole);
  }
  return indexOf(whole);
}

HWY_INLINE HWY_ATTR VU64 RowOffset(const DATASURFACE& surface, VU64 j) {
  const DU2 du;
  return hn::MulEven(hn::BitCast(du, j),
                     hn::Set(du, static_cast<std::uint32_t>(surface.RowStride)));
}

// Whether a load from as many addresses as a vector has lanes is one instruction.
inline constexpr bool kGathers = ZX_HAS_GATHERS;

HWY_INLINE HWY_ATTR VU GatherTexels(const DATASURFACE& surface, VU64 offset) {
  return hn::GatherOffset(DU(), reinterpret_cast<const std::uint32_t*>(surface.Data),
                          hn::BitCast(DI(), hn::TruncateTo(DU(), offset)));
}

// Texels within reach of a primitive, all of whose coordinates lie as `kReach` says.
template <TTexelReach kReach>
HWY_INLINE HWY_ATTR TCondition FetchInRangeNearest(const TSpanJob& job, VD s, VD t, VU* texels) {
  const DD d;
  const TPrimitive& primitive = job.Primitive;
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  const VD u = hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth));
  const VD v = hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight));
  MD odd = NoLanes(d);
  VD rest;
  const VU64 x = PlaceTexels<kReach, false>(primitive.AxisX, u, &rest, &odd);
  const VU64 y = PlaceTexels<kReach, false>(primitive.AxisY, v, &rest, &odd);
  ZX_IN_RANGE_CONDITIONS(ZX_RETURN_UNMET)
  const DATASURFACE& surface = *sampler.m_Surface;
  *texels = GatherTexels(surface, hn::Add(hn::ShiftLeft<2>(x), RowOffset(surface, y)));
  return TCondition::None;
}

// A mask of pixels for the texels of either row.
HWY_INLINE HWY_ATTR hn::Mask<DU2> OfBothRows(hn::Mask<DU64> pixels) {
  const VU chosen = hn::TruncateTo(DU(), hn::VecFromMask(DU64(), pixels));
  return hn::MaskFromVec(hn::Combine(DU2(), chosen, chosen));
}

// Puts the first texel of a row to the right of the last one.
HWY_NOINLINE HWY_ATTR hn::Vec<DU2> WrappedRight(const DATASURFACE& surface, hn::Mask<DU64> atLast,
                                                VU64 low, VU64 high, hn::Vec<DU2> right) {
  const auto first = hn::Combine(DU2(), GatherTexels(surface, high), GatherTexels(surface, low));
  return hn::IfThenElse(OfBothRows(atLast), first, right);
}

// The same for four texels, the two of each row in one load.
template <TTexelReach kReach>
HWY_INLINE HWY_ATTR TCondition FetchInRangePairs(const TSpanJob& job, VD s, VD t,
                                                 TTexelPairs* pairs) {
  const DD d;
  const DU64 du64;
  const DU2 du;
  const VD half = hn::Set(d, 0.5);
  const TPrimitive& primitive = job.Primitive;
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  const VD u = hn::Sub(hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth)), half);
  const VD v = hn::Sub(hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight)), half);
  MD odd = NoLanes(d);
  const VU64 x = PlaceTexels<kReach, true>(primitive.AxisX, u, &pairs->FractionU, &odd);
  const VU64 y = PlaceTexels<kReach, true>(primitive.AxisY, v, &pairs->FractionV, &odd);
  ZX_IN_RANGE_CONDITIONS(ZX_RETURN_UNMET)
  const DATASURFACE& surface = *sampler.m_Surface;
  const auto* const data = reinterpret_cast<const std::uint64_t*>(surface.Data);
  const VU64 across = hn::ShiftLeft<2>(x);
  const auto fetch = [&](VU64 row) HWY_ATTR {
    const VU64 offset = hn::Add(across, row);
    return hn::BitCast(du,
                       hn::GatherOffset(du64, data, hn::BitCast(hn::RebindToSigned<DD>(), offset)));
  };
  const auto isLast = [&](VU64 index, const TTexelAxis& axis) HWY_ATTR {
    return hn::Eq(index, hn::Set(du64, std::uint64_t{axis.Last}));
  };
  const VU64 above = hn::Add(y, hn::Set(du64, std::uint64_t{1}));
  const VU64 lowRow = RowOffset(surface, y);
  const VU64 highRow = RowOffset(surface, hn::IfThenZeroElse(isLast(y, primitive.AxisY), above));
  const auto low = fetch(lowRow);
  const auto high = fetch(highRow);
  pairs->Left = hn::ConcatEven(du, high, low);
  pairs->Right = hn::ConcatOdd(du, high, low);
  const auto atLast = isLast(x, primitive.AxisX);
  if (HWY_UNLIKELY(!hn::AllFalse(du64, atLast))) {
    pairs->Right = WrappedRight(surface, atLast, lowRow, highRow, pairs->Right);
  }
  return TCondition::None;
}

// Texels by the general wrap. False where an index does not fit or a border shows.
HWY_NOINLINE HWY_ATTR bool FetchWrappedNearest(const TRenderCPU::TTexSampler& sampler, VD s, VD t,
                                               VU* texels) {
  MI outside = NoLanes(DI());
  return FetchNearest(sampler, s, t, texels, &outside) && hn::AllFalse(DI(), outside);
}

HWY_NOINLINE HWY_ATTR bool FetchWrappedPairs(const TRenderCPU::TTexSampler& sampler, VD s, VD t,
                                             TTexelPairs* pairs) {
  TLinearPlaces at;
  if (!FindLinear(sampler, s, t, &at) || !at.IsInside()) {
    return false;
  }
  const DU2 du;
  const DATASURFACE& surface = *sampler.m_Surface;
  pairs->Left =
      hn::Combine(du, FetchTexels(surface, at.X0, at.Y1), FetchTexels(surface, at.X0, at.Y0));
  pairs->Right =
      hn::Combine(du, FetchTexels(surface, at.X1, at.Y1), FetchTexels(surface, at.X1, at.Y0));
  pairs->FractionU = at.FractionU;
  pairs->FractionV = at.FractionV;
  return true;
}

// --- In double, for exact colours

HWY_INLINE HWY_ATTR TTexels NearestTexels(const TSpanJob& job, VD s, VD t) {
  TRenderCPU::TTexSampler* const sampler = job.Primitive.Sampler;
  VU packed = hn::Zero(DU());
  MI outside = NoLanes(DI());
  if (FetchInRangeNearest<TTexelReach::Near>(job, s, t, &packed) != TCondition::None &&
      !FetchNearest(*sampler, s, t, &packed, &outside)) {
    return SampledTexels(sampler, s, t);
  }
  TTexels texels = UnpackTexels(packed);
  PutBorder(*sampler, outside, &texels);
  return texels;
}

HWY_NOINLINE HWY_ATTR TTexels WrappedLinearTexels(TRenderCPU::TTexSampler* sampler, VD s, VD t) {
  TLinearPlaces at;
  if (!FindLinear(*sampler, s, t, &at)) {
    return SampledTexels(sampler, s, t);
  }
  const DATASURFACE& surface = *sampler->m_Surface;
  TTexels c00 = UnpackTexels(FetchTexels(surface, at.X0, at.Y0));
  TTexels c10 = UnpackTexels(FetchTexels(surface, at.X1, at.Y0));
  TTexels c01 = UnpackTexels(FetchTexels(surface, at.X0, at.Y1));
  TTexels c11 = UnpackTexels(FetchTexels(surface, at.X1, at.Y1));
  if (!at.IsInside()) {
    PutBorder(*sampler, hn::Or(at.Outside0, at.OutsideB), &c00);
    PutBorder(*sampler, hn::Or(at.Outside1, at.OutsideB), &c10);
    PutBorder(*sampler, hn::Or(at.Outside0, at.OutsideT), &c01);
    PutBorder(*sampler, hn::Or(at.Outside1, at.OutsideT), &c11);
  }
  for (int i = 0; i < 4; ++i) {
    c00.Channel[i] = MixVectors(c00.Channel[i], c10.Channel[i], c01.Channel[i], c11.Channel[i],
                                at.FractionU, at.FractionV);
  }
  return c00;
}

// Texels as the sampler takes them, where `FetchInRangePairs` left those whose mean is the same: at
// the far edges of a texture that is clamped to them, the texel at the edge twice.
HWY_INLINE HWY_ATTR void SetExactPairs(const TPrimitive& primitive, TTexelPairs* pairs) {
  const DU2 du;
  const DU64 du64;
  const auto isOne = [&](VD fraction) HWY_ATTR {
    return OfBothRows(hn::RebindMask(du64, hn::Eq(fraction, hn::Set(DD(), 1.0))));
  };
  if (primitive.AxisX.Wrap == TTexelWrap::Edge) {
    pairs->Left = hn::IfThenElse(isOne(pairs->FractionU), pairs->Right, pairs->Left);
  }
  if (primitive.AxisY.Wrap == TTexelWrap::Edge) {
    const auto above = isOne(pairs->FractionV);
    const auto upper = [&](hn::Vec<DU2> both) HWY_ATTR {
      return hn::IfThenElse(above, hn::ConcatUpperUpper(du, both, both), both);
    };
    pairs->Left = upper(pairs->Left);
    pairs->Right = upper(pairs->Right);
  }
}

// The channels in a set of four texels mixed; others are 0.
HWY_INLINE HWY_ATTR TTexels MixedChannels(const TTexelPairs& pairs, std::uint32_t channels) {
  const DU du;
  const VU c00 = hn::LowerHalf(du, pairs.Left);
  const VU c10 = hn::LowerHalf(du, pairs.Right);
  const VU c01 = hn::UpperHalf(du, pairs.Left);
  const VU c11 = hn::UpperHalf(du, pairs.Right);
  const auto mixed = [&](auto shift) HWY_ATTR {
    constexpr int kShift = decltype(shift)::value;
    return (channels >> kShift / 8 & 1u) == 0
               ? hn::Zero(DD())
               : MixVectors(ByteChannel<kShift>(c00), ByteChannel<kShift>(c10),
                            ByteChannel<kShift>(c01), ByteChannel<kShift>(c11), pairs.FractionU,
                            pairs.FractionV);
  };
  return {{mixed(std::integral_constant<int, 0>()), mixed(std::integral_constant<int, 8>()),
           mixed(std::integral_constant<int, 16>()), mixed(std::integral_constant<int, 24>())}};
}

HWY_INLINE HWY_ATTR TTexels LinearTexels(const TSpanJob& job, std::uint32_t channels, VD s, VD t) {
  TTexelPairs pairs;
  if (FetchInRangePairs<TTexelReach::Near>(job, s, t, &pairs) != TCondition::None) {
    return WrappedLinearTexels(job.Primitive.Sampler, s, t);
  }
  SetExactPairs(job.Primitive, &pairs);
  return MixedChannels(pairs, channels);
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
