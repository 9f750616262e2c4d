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

// Indices of whole numbers within a range, as bits. (i + 1/2) / n is at least 1 / 2n from an
// integer, which is more than rounding moves it by as long as i and n are below 2^21: its floor is
// how often n goes into i.
template <bool kPeriods> HWY_INLINE HWY_ATTR VU64 WholeIndex(VD whole, const TTexelRange& range) {
  const DD d;
  const DU64 du;
  if (kPeriods && range.Period != 0.0) {
    const VD place = hn::Mul(hn::Add(whole, hn::Set(d, 0.5)), hn::Set(d, range.InversePeriod));
    whole = hn::Sub(whole, hn::Mul(hn::Floor(place), hn::Set(d, range.Period)));
  }
  return hn::And(hn::BitCast(du, hn::Add(whole, hn::Set(d, kWholeDoubles))),
                 hn::Set(du, std::uint64_t{range.Mask}));
}

HWY_INLINE HWY_ATTR bool IsWithin(VD u, double limitU, VD v, double limitV) {
  const DD d;
  const VD zero = hn::Zero(d);
  return hn::AllTrue(d, hn::And(hn::And(hn::Ge(u, zero), hn::Lt(u, hn::Set(d, limitU))),
                                hn::And(hn::Ge(v, zero), hn::Lt(v, hn::Set(d, limitV)))));
}

// Whether the texel after x is the next in memory.
HWY_INLINE HWY_ATTR bool AreNeighbours(VU64 x, const TTexelRange& range) {
  const DU64 du;
  return hn::AllFalse(du, hn::Eq(x, hn::Set(du, std::uint64_t{range.Last})));
}

HWY_INLINE HWY_ATTR VU64 RowOffset(const DATASURFACE& surface, VU64 j) {
  const DU2 du;
  return hn::MulEven(hn::BitCast(du, j),
                     hn::Set(du, static_cast<std::uint32_t>(surface.RowStride)));
}

inline bool HasPeriods(const TSpanJob& job) {
  return job.Primitive.RangeX.Period != 0.0 || job.Primitive.RangeY.Period != 0.0;
}

// Whether a load from as many addresses as a vector has lanes is one instruction.
inline constexpr bool kGathers = ZX_HAS_GATHERS;

// Texels within the ranges of a primitive.
template <bool kPeriods>
HWY_INLINE HWY_ATTR TCondition FetchInRangeNearest(const TSpanJob& job, VD s, VD t, VU* texels) {
  constexpr TTexelSource kTexels = TTexelSource::Nearest;
  const DD d;
  const TPrimitive& primitive = job.Primitive;
  const double limitU = kPeriods ? primitive.RangeX.PeriodLimit : primitive.RangeX.Limit;
  const double limitV = kPeriods ? primitive.RangeY.PeriodLimit : primitive.RangeY.Limit;
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  const VD u = hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth));
  const VD v = hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight));
  const VU64 x = WholeIndex<kPeriods>(hn::Floor(u), primitive.RangeX);
  ZX_IN_RANGE_CONDITIONS(ZX_RETURN_UNMET)
  const DATASURFACE& surface = *sampler.m_Surface;
  const VU64 y = WholeIndex<kPeriods>(hn::Floor(v), primitive.RangeY);
  const VU64 offset = hn::Add(hn::ShiftLeft<2>(x), RowOffset(surface, y));
  *texels = hn::GatherOffset(DU(), reinterpret_cast<const std::uint32_t*>(surface.Data),
                             hn::BitCast(DI(), hn::TruncateTo(DU(), offset)));
  return TCondition::None;
}

// The same for four texels where the two of each row are neighbours, fetched in one load.
template <bool kPeriods>
HWY_INLINE HWY_ATTR TCondition FetchInRangePairs(const TSpanJob& job, VD s, VD t,
                                                 TTexelPairs* pairs) {
  constexpr TTexelSource kTexels = TTexelSource::Linear;
  const DD d;
  const DU64 du64;
  const DU2 du;
  const VD half = hn::Set(d, 0.5);
  const TPrimitive& primitive = job.Primitive;
  const double limitU = kPeriods ? primitive.RangeX.PeriodLimit : primitive.RangeX.Limit;
  const double limitV = kPeriods ? primitive.RangeY.PeriodLimit : primitive.RangeY.Limit;
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  const VD u = hn::Sub(hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth)), half);
  const VD v = hn::Sub(hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight)), half);
  const VD left = hn::Floor(u);
  const VD bottom = hn::Floor(v);
  const VU64 x = WholeIndex<kPeriods>(left, primitive.RangeX);
  ZX_IN_RANGE_CONDITIONS(ZX_RETURN_UNMET)
  const DATASURFACE& surface = *sampler.m_Surface;
  const auto* const data = reinterpret_cast<const std::uint64_t*>(surface.Data);
  const VU64 across = hn::ShiftLeft<2>(x);
  const auto fetch = [&](VD row) HWY_ATTR {
    const VU64 offset =
        hn::Add(across, RowOffset(surface, WholeIndex<kPeriods>(row, primitive.RangeY)));
    return hn::BitCast(du,
                       hn::GatherOffset(du64, data, hn::BitCast(hn::RebindToSigned<DD>(), offset)));
  };
  const auto low = fetch(bottom);
  const auto high = fetch(hn::Add(bottom, hn::Set(d, 1.0)));
  pairs->Left = hn::ConcatEven(du, high, low);
  pairs->Right = hn::ConcatOdd(du, high, low);
  pairs->FractionU = hn::Sub(u, left);
  pairs->FractionV = hn::Sub(v, bottom);
  return TCondition::None;
}

// Texels by the general wrap. False where an index does not fit or a border shows.
HWY_NOINLINE HWY_ATTR bool FetchWrappedNearest(const TSpanJob& job, VD s, VD t, VU* texels) {
  if (HasPeriods(job) && FetchInRangeNearest<true>(job, s, t, texels) == TCondition::None) {
    return true;
  }
  const TRenderCPU::TTexSampler& sampler = *job.Primitive.Sampler;
  MI outside = NoLanes(DI());
  return FetchNearest(sampler, s, t, texels, &outside) && hn::AllFalse(DI(), outside);
}

HWY_NOINLINE HWY_ATTR bool FetchWrappedPairs(const TSpanJob& job, VD s, VD t, TTexelPairs* pairs) {
  if (HasPeriods(job) && FetchInRangePairs<true>(job, s, t, pairs) == TCondition::None) {
    return true;
  }
  const TRenderCPU::TTexSampler& sampler = *job.Primitive.Sampler;
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
  if (FetchInRangeNearest<false>(job, s, t, &packed) != TCondition::None &&
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

// The texels' channels in a set; others are 0.
HWY_INLINE HWY_ATTR TTexels LinearTexels(const TSpanJob& job, std::uint32_t channels, VD s, VD t) {
  const DU du;
  TTexelPairs pairs;
  if (FetchInRangePairs<false>(job, s, t, &pairs) != TCondition::None) {
    return WrappedLinearTexels(job.Primitive.Sampler, s, t);
  }
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

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
