// Texels for the span kernels, a group at a time, with the indices and the bits of the texture
// sampler. Included once for each instruction set.
//
// Tested by: tests/render/SpanTexels.cpp (SpanTexels.*), tests/render/SpanLevels.cpp (SpanLevels.*)

#if defined(ZX_RENDER_SPANTEXELS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANTEXELS_INL_H_
#undef ZX_RENDER_SPANTEXELS_INL_H_
#else
#define ZX_RENDER_SPANTEXELS_INL_H_
#endif

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/kernels/SpanRowSetup-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

struct TTexels {
  VD Channel[4];
};

// Whether a load from as many addresses as a vector has lanes is one instruction.
inline constexpr bool kGathers = ZX_HAS_GATHERS;

// Whether every value can be truncated to 32 bits, with room for a neighbour.
HWY_INLINE HWY_ATTR bool FitsIndex(VD v) {
  const DD d;
  return hn::AllTrue(d, hn::Lt(hn::Abs(v), hn::Set(d, kMaxIndex)));
}

// Indices are whole numbers in doubles. The sampler's: truncation, less one for a negative value.
HWY_INLINE HWY_ATTR VD FlooredIndex(VD v, VD signOf) {
  const DD d;
  const VD below = hn::IfThenElseZero(hn::Lt(signOf, hn::Zero(d)), hn::Set(d, -1.0));
  if constexpr (kGathers) {
    return hn::Add(hn::Trunc(v), below);
  } else { // rounds by conversion in any case, and to 64 bits
    return hn::Add(hn::PromoteTo(d, hn::DemoteTo(DI(), v)), below);
  }
}

// Indices by the wrap mode, of `n` texels; `outside` collects those that a border mode finds out of
// range. Their indices become 0, so that the gather stays inside the block.
//
// Repeated, an index i from 0 on is i - n trunc(i / n), and a negative one that plus n: a negative
// multiple of n repeats to n itself. With h = 0.5 of the sign of i, trunc((i + h) / n) is
// trunc(i / n), since h leads away from 0, but not as far as the next multiple of n. No (i + h) / n
// is closer to a whole number than 0.5 / n, and the product with the rounded 1 / n is off by less
// than 2^-51 |i + h| / n, where |i| is below 2^31: it truncates alike.
HWY_INLINE HWY_ATTR VD WrapIndex(VD i, std::uint32_t mode, double n, double perTexel, MD* outside) {
  const DD d;
  const VD zero = hn::Zero(d);
  const VD size = hn::Set(d, n);
  const VD last = hn::Set(d, n - 1.0);
  switch (mode) {
  case GL_REPEAT: {
    const VD middle = hn::Add(i, hn::CopySign(hn::Set(d, 0.5), i));
    const VD times = FlooredIndex(hn::Mul(middle, hn::Set(d, perTexel)), i);
    return hn::Sub(i, hn::Mul(times, size));
  }
  case GL_CLAMP_TO_EDGE:
    return hn::Min(hn::Max(i, zero), last);
  default: {
    const MD out = hn::Or(hn::Lt(i, zero), hn::Gt(i, last));
    *outside = hn::Or(*outside, out);
    return hn::IfThenZeroElse(out, i);
  }
  }
}

HWY_INLINE HWY_ATTR VD WrapColumn(const TPrimitive& primitive, VD i, MD* outside) {
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  return WrapIndex(i, sampler.m_WrapS, sampler.m_SurfaceWidth, primitive.PerTexelX, outside);
}

HWY_INLINE HWY_ATTR VD WrapRow(const TPrimitive& primitive, VD j, MD* outside) {
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  return WrapIndex(j, sampler.m_WrapT, sampler.m_SurfaceHeight, primitive.PerTexelY, outside);
}

HWY_INLINE HWY_ATTR VU FetchTexels(const DATASURFACE& surface, VD i, VD j) {
  const DD d;
  const VD offset = hn::Add(hn::Mul(i, hn::Set(d, 4.0)), hn::Mul(j, hn::Set(d, surface.RowStride)));
  return hn::GatherOffset(DU(), reinterpret_cast<const std::uint32_t*>(surface.Data),
                          hn::DemoteTo(DI(), offset));
}

template <int kShift> HWY_INLINE HWY_ATTR VD ByteChannel(VU texels) {
  const DU du;
  const VU byte = kShift == 24 ? hn::ShiftRight<24>(texels)
                               : hn::And(hn::ShiftRight<kShift>(texels), hn::Set(du, 255u));
  const VD value = hn::PromoteTo(DD(), hn::BitCast(DI(), byte));
  return hn::Mul(value, hn::Set(DD(), 0.00392156862745098));
}

HWY_INLINE HWY_ATTR TTexels UnpackTexels(VU packed) {
  return {{ByteChannel<0>(packed), ByteChannel<8>(packed), ByteChannel<16>(packed),
           ByteChannel<24>(packed)}};
}

HWY_INLINE HWY_ATTR void PutBorder(const TRenderCPU::TTexSampler& sampler, MD outside,
                                   TTexels* texels) {
  if (hn::AllFalse(DD(), outside)) {
    return;
  }
  for (std::size_t i = 0; i < 4; ++i) {
    const VD color = hn::Set(DD(), sampler.m_BorderColor[i]);
    texels->Channel[i] = hn::IfThenElse(outside, color, texels->Channel[i]);
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
HWY_INLINE HWY_ATTR bool FetchNearest(const TPrimitive& primitive, VD s, VD t, VU* texels,
                                      MD* outside) {
  const DD d;
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  const VD u = hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth));
  const VD v = hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight));
  if (!FitsIndex(u) || !FitsIndex(v)) {
    return false;
  }
  *outside = NoLanes(d);
  const VD i = WrapColumn(primitive, FlooredIndex(u, s), outside);
  const VD j = WrapRow(primitive, FlooredIndex(v, t), outside);
  *texels = FetchTexels(*sampler.m_Surface, i, j);
  return true;
}

HWY_INLINE HWY_ATTR TTexels NearestTexels(const TPrimitive& primitive, VD s, VD t) {
  VU packed = hn::Zero(DU());
  MD outside = NoLanes(DD());
  if (!FetchNearest(primitive, s, t, &packed, &outside)) {
    return SampledTexels(primitive.Sampler, s, t);
  }
  TTexels texels = UnpackTexels(packed);
  PutBorder(*primitive.Sampler, outside, &texels);
  return texels;
}

// --- Linear

// The indices of each pixel's four texels, and the fractions that mix them.
struct TLinearPlaces {
  VD X0, X1, Y0, Y1;
  VD FractionU, FractionV;
  MD Outside0, Outside1, OutsideB, OutsideT;

  // Vectors of NEON have constructors; one that the compiler adds here would be for no target.
  HWY_INLINE HWY_ATTR TLinearPlaces() {}

  HWY_INLINE HWY_ATTR bool IsInside() const {
    return hn::AllFalse(DD(), hn::Or(hn::Or(Outside0, Outside1), hn::Or(OutsideB, OutsideT)));
  }
};

// False if an index does not fit.
HWY_INLINE HWY_ATTR bool FindLinear(const TPrimitive& primitive, VD s, VD t, TLinearPlaces* at) {
  const DD d;
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  const VD half = hn::Set(d, 0.5);
  const VD u = hn::Sub(hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth)), half);
  const VD v = hn::Sub(hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight)), half);
  if (!FitsIndex(u) || !FitsIndex(v)) {
    return false;
  }
  const VD left = FlooredIndex(u, u);
  const VD bottom = FlooredIndex(v, v);
  at->FractionU = hn::Sub(u, left);
  at->FractionV = hn::Sub(v, bottom);
  const VD one = hn::Set(d, 1.0);
  at->Outside0 = at->Outside1 = at->OutsideB = at->OutsideT = NoLanes(d);
  at->X0 = WrapColumn(primitive, left, &at->Outside0);
  at->X1 = WrapColumn(primitive, hn::Add(left, one), &at->Outside1);
  at->Y0 = WrapRow(primitive, bottom, &at->OutsideB);
  at->Y1 = WrapRow(primitive, hn::Add(bottom, one), &at->OutsideT);
  return true;
}

HWY_INLINE HWY_ATTR VD MixVectors(VD c00, VD c10, VD c01, VD c11, VD fu, VD fv) {
  const VD a = hn::Add(hn::Mul(hn::Sub(c10, c00), fu), c00);
  const VD b = hn::Add(hn::Mul(hn::Sub(c11, c01), fu), c01);
  return hn::Add(hn::Mul(hn::Sub(b, a), fv), a);
}

HWY_INLINE HWY_ATTR TTexels LinearTexels(const TPrimitive& primitive, VD s, VD t) {
  TLinearPlaces at;
  if (!FindLinear(primitive, s, t, &at)) {
    return SampledTexels(primitive.Sampler, s, t);
  }
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  const DATASURFACE& surface = *sampler.m_Surface;
  TTexels c00 = UnpackTexels(FetchTexels(surface, at.X0, at.Y0));
  TTexels c10 = UnpackTexels(FetchTexels(surface, at.X1, at.Y0));
  TTexels c01 = UnpackTexels(FetchTexels(surface, at.X0, at.Y1));
  TTexels c11 = UnpackTexels(FetchTexels(surface, at.X1, at.Y1));
  if (!at.IsInside()) {
    PutBorder(sampler, hn::Or(at.Outside0, at.OutsideB), &c00);
    PutBorder(sampler, hn::Or(at.Outside1, at.OutsideB), &c10);
    PutBorder(sampler, hn::Or(at.Outside0, at.OutsideT), &c01);
    PutBorder(sampler, hn::Or(at.Outside1, at.OutsideT), &c11);
  }
  for (int i = 0; i < 4; ++i) {
    c00.Channel[i] = MixVectors(c00.Channel[i], c10.Channel[i], c01.Channel[i], c11.Channel[i],
                                at.FractionU, at.FractionV);
  }
  return c00;
}

// --- Packed, for float colours

using DU2 = hn::Repartition<std::uint32_t, DD>;

// The four texels of each pixel, those to the left and those to the right, the lower ones in the
// low halves; and how they are mixed.
struct TTexelPairs {
  hn::Vec<DU2> Left, Right;
  VF FractionU, FractionV;

  HWY_INLINE HWY_ATTR TTexelPairs() {}
};

// The remainder of whole numbers from 0 to 2^31 by n, as WrapIndex proves it.
HWY_INLINE HWY_ATTR VD Remainder(VD whole, double n, double perTexel) {
  const DD d;
  const VD middle = hn::Add(whole, hn::Set(d, 0.5));
  const VD times = hn::Floor(hn::Mul(middle, hn::Set(d, perTexel)));
  return hn::Sub(whole, hn::Mul(times, hn::Set(d, n)));
}

// Whole numbers below 2^52, as bits, of which a mask keeps the lowest.
HWY_INLINE HWY_ATTR VU64 WholeIndex(VD whole, std::uint32_t mask) {
  const DD d;
  const DU64 du;
  return hn::And(hn::BitCast(du, hn::Add(whole, hn::Set(d, kWholeDoubles))),
                 hn::Set(du, std::uint64_t{mask}));
}

// Whether the texel after x is the next in memory.
HWY_INLINE HWY_ATTR bool AreNeighbours(VU64 x, const TPrimitive& primitive) {
  const DU64 du;
  const auto width = static_cast<std::uint64_t>(primitive.Sampler->m_Surface->Width);
  return hn::AllFalse(du, hn::Eq(x, hn::Set(du, width - 1)));
}

// The indices of texel coordinates within the limits.
HWY_INLINE HWY_ATTR VU64 InRangeColumn(const TPrimitive& primitive, VD whole) {
  if (primitive.RepeatsX) {
    whole = Remainder(whole, primitive.Sampler->m_SurfaceWidth, primitive.PerTexelX);
  }
  return WholeIndex(whole, primitive.MaskX);
}

HWY_INLINE HWY_ATTR VU64 InRangeRow(const TPrimitive& primitive, VD whole) {
  if (primitive.RepeatsY) {
    whole = Remainder(whole, primitive.Sampler->m_SurfaceHeight, primitive.PerTexelY);
  }
  return WholeIndex(whole, primitive.MaskY);
}

HWY_INLINE HWY_ATTR VU64 RowOffset(const DATASURFACE& surface, VU64 j) {
  const DU2 du;
  return hn::MulEven(hn::BitCast(du, j),
                     hn::Set(du, static_cast<std::uint32_t>(surface.RowStride)));
}

// Pairs of texels of two rows, each of them in one load.
HWY_INLINE HWY_ATTR void FetchPairs(const DATASURFACE& surface, VU64 x, VU64 low, VU64 high,
                                    TTexelPairs* pairs) {
  const DU2 du;
  const auto* const data = reinterpret_cast<const std::uint64_t*>(surface.Data);
  const VU64 across = hn::ShiftLeft<2>(x);
  const auto fetch = [&](VU64 row) HWY_ATTR {
    const VU64 offset = hn::Add(across, RowOffset(surface, row));
    return hn::BitCast(
        du, hn::GatherOffset(DU64(), data, hn::BitCast(hn::RebindToSigned<DD>(), offset)));
  };
  const auto below = fetch(low);
  const auto above = fetch(high);
  pairs->Left = hn::ConcatEven(du, above, below);
  pairs->Right = hn::ConcatOdd(du, above, below);
}

// Texels by the general wrap. False where an index does not fit or a border shows.
HWY_NOINLINE HWY_ATTR bool FetchWrappedNearest(const TPrimitive& primitive, VD s, VD t,
                                               VU* texels) {
  MD outside = NoLanes(DD());
  return FetchNearest(primitive, s, t, texels, &outside) && hn::AllFalse(DD(), outside);
}

HWY_NOINLINE HWY_ATTR bool FetchWrappedPairs(const TPrimitive& primitive, VD s, VD t,
                                             TTexelPairs* pairs) {
  TLinearPlaces at;
  if (!FindLinear(primitive, s, t, &at) || !at.IsInside()) {
    return false;
  }
  const DD d;
  const DU2 du;
  const DATASURFACE& surface = *primitive.Sampler->m_Surface;
  pairs->FractionU = hn::DemoteTo(DF(), at.FractionU);
  pairs->FractionV = hn::DemoteTo(DF(), at.FractionV);
  if (kGathers && hn::AllTrue(d, hn::Eq(at.X1, hn::Add(at.X0, hn::Set(d, 1.0))))) {
    constexpr std::uint32_t kAll = 0xFFFFFFFFu;
    FetchPairs(surface, WholeIndex(at.X0, kAll), WholeIndex(at.Y0, kAll), WholeIndex(at.Y1, kAll),
               pairs);
    return true;
  }
  pairs->Left =
      hn::Combine(du, FetchTexels(surface, at.X0, at.Y1), FetchTexels(surface, at.X0, at.Y0));
  pairs->Right =
      hn::Combine(du, FetchTexels(surface, at.X1, at.Y1), FetchTexels(surface, at.X1, at.Y0));
  return true;
}

HWY_INLINE HWY_ATTR bool IsWithin(VD u, double limitU, VD v, double limitV) {
  const DD d;
  const VD zero = hn::Zero(d);
  return hn::AllTrue(d, hn::And(hn::And(hn::Ge(u, zero), hn::Lt(u, hn::Set(d, limitU))),
                                hn::And(hn::Ge(v, zero), hn::Lt(v, hn::Set(d, limitV)))));
}

// Texels in the range that a mask or a remainder wraps.
HWY_INLINE HWY_ATTR TCondition FetchInRangeNearest(const TSpanJob& job, VD s, VD t, VU* texels) {
  constexpr TTexelSource kTexels = TTexelSource::Nearest;
  const DD d;
  const TPrimitive& primitive = job.Primitive;
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  const VD u = hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth));
  const VD v = hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight));
  const VU64 x = InRangeColumn(primitive, hn::Floor(u));
  ZX_IN_RANGE_CONDITIONS(ZX_RETURN_UNMET)
  const DATASURFACE& surface = *sampler.m_Surface;
  const VU64 y = InRangeRow(primitive, hn::Floor(v));
  const VU64 offset = hn::Add(hn::ShiftLeft<2>(x), RowOffset(surface, y));
  *texels = hn::GatherOffset(DU(), reinterpret_cast<const std::uint32_t*>(surface.Data),
                             hn::BitCast(DI(), hn::TruncateTo(DU(), offset)));
  return TCondition::None;
}

// The same for four texels where the two of each row are neighbours, fetched in one load.
HWY_INLINE HWY_ATTR TCondition FetchInRangePairs(const TSpanJob& job, VD s, VD t,
                                                 TTexelPairs* pairs) {
  constexpr TTexelSource kTexels = TTexelSource::Linear;
  const DD d;
  const VD half = hn::Set(d, 0.5);
  const TPrimitive& primitive = job.Primitive;
  const TRenderCPU::TTexSampler& sampler = *primitive.Sampler;
  const VD u = hn::Sub(hn::Mul(s, hn::Set(d, sampler.m_SurfaceWidth)), half);
  const VD v = hn::Sub(hn::Mul(t, hn::Set(d, sampler.m_SurfaceHeight)), half);
  const VD left = hn::Floor(u);
  const VD bottom = hn::Floor(v);
  const VU64 x = InRangeColumn(primitive, left);
  ZX_IN_RANGE_CONDITIONS(ZX_RETURN_UNMET)
  FetchPairs(*sampler.m_Surface, x, InRangeRow(primitive, bottom),
             InRangeRow(primitive, hn::Add(bottom, hn::Set(d, 1.0))), pairs);
  pairs->FractionU = hn::DemoteTo(DF(), hn::Sub(u, left));
  pairs->FractionV = hn::DemoteTo(DF(), hn::Sub(v, bottom));
  return TCondition::None;
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
