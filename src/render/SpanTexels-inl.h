// Texels for the span kernels, many at a time, with the indices and the bits of the texture
// sampler. Included once for each instruction set.

#if defined(ZX_RENDER_SPANTEXELS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANTEXELS_INL_H_
#undef ZX_RENDER_SPANTEXELS_INL_H_
#else
#define ZX_RENDER_SPANTEXELS_INL_H_
#endif

#include <hwy/highway.h>

#include <ZxCore3D/render/GLEnums.h>

#include "SpanRows-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

struct TTexels {
  VD R, G, B, A;
};

// Whether every value can be truncated to 32 bits, with room for a neighbour.
HWY_INLINE HWY_ATTR bool FitsIndex(VD v) {
  const DD d;
  return hn::AllTrue(d, hn::Lt(hn::Abs(v), hn::Set(d, 2147483000.0)));
}

// Truncation, one less for what is negative.
HWY_INLINE HWY_ATTR VI FlooredIndex(VD v, VD signOf) {
  const DD d;
  const DI di;
  const VI truncated = hn::DemoteTo(di, v);
  // All ones where negative: adding it takes one away. A sum with -0.0 keeps zeros positive.
  const VD below = hn::IfThenElseZero(hn::Lt(signOf, hn::Zero(d)), hn::Set(d, -1.0));
  return hn::Add(truncated, hn::DemoteTo(di, below));
}

// Indices by the wrap mode; `outside` collects those that a border mode finds out of range. They
// become 0, so that something can be read.
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
    // Exact: an index below 2^31 over n is never so near an integer that the quotient rounds to it.
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
HWY_INLINE HWY_ATTR hn::Mask<DD> WideMask(MI mask) {
  const VI ones = hn::VecFromMask(DI(), mask);
  return hn::Lt(hn::PromoteTo(DD(), ones), hn::Zero(DD()));
}

HWY_INLINE HWY_ATTR VD BorderOr(hn::Mask<DD> border, double color, VD texel) {
  return hn::IfThenElse(border, hn::Set(DD(), color), texel);
}

HWY_INLINE HWY_ATTR TTexels UnpackTexels(VU packed) {
  return {ByteChannel<0>(packed), ByteChannel<8>(packed), ByteChannel<16>(packed),
          ByteChannel<24>(packed)};
}

HWY_INLINE HWY_ATTR void PutBorder(const TRenderCPU::TTexSampler& sampler, MI outside,
                                   TTexels* texels) {
  if (hn::AllFalse(DI(), outside)) {
    return;
  }
  const hn::Mask<DD> border = WideMask(outside);
  texels->R = BorderOr(border, sampler.m_BorderColor.x, texels->R);
  texels->G = BorderOr(border, sampler.m_BorderColor.y, texels->G);
  texels->B = BorderOr(border, sampler.m_BorderColor.z, texels->B);
  texels->A = BorderOr(border, sampler.m_BorderColor.w, texels->A);
}

// The sampler's own function, pixel by pixel.
HWY_NOINLINE HWY_ATTR TTexels SampledTexels(TRenderCPU::TTexSampler* sampler, VD s, VD t) {
  constexpr std::size_t kMostLanes = HWY_LANES(double);
  HWY_ALIGN double at[2][kMostLanes];
  HWY_ALIGN double channel[4][kMostLanes];
  const DD d;
  hn::Store(s, d, at[0]);
  hn::Store(t, d, at[1]);
  for (std::size_t i = 0; i < hn::Lanes(d); ++i) {
    const vec_t_<double, 4> st = {at[0][i], at[1][i], 0.0, 1.0};
    vec_t_<double, 4> texel = {0, 0, 0, 0};
    (sampler->*sampler->m_GetValue)(st, &texel);
    channel[0][i] = texel.x;
    channel[1][i] = texel.y;
    channel[2][i] = texel.z;
    channel[3][i] = texel.w;
  }
  return {hn::Load(d, channel[0]), hn::Load(d, channel[1]), hn::Load(d, channel[2]),
          hn::Load(d, channel[3])};
}

HWY_INLINE HWY_ATTR TTexels NearestTexels(TRenderCPU::TTexSampler* sampler, VD s, VD t) {
  const DD d;
  const DI di;
  const VD u = hn::Mul(s, hn::Set(d, sampler->m_SurfaceWidth));
  const VD v = hn::Mul(t, hn::Set(d, sampler->m_SurfaceHeight));
  if (!FitsIndex(u) || !FitsIndex(v)) {
    return SampledTexels(sampler, s, t);
  }
  const DATASURFACE& surface = *sampler->m_Surface;
  MI outside = hn::MaskFromVec(hn::Zero(di));
  const VI i = WrapIndex(FlooredIndex(u, s), sampler->m_WrapS, surface.Width, &outside);
  const VI j = WrapIndex(FlooredIndex(v, t), sampler->m_WrapT, surface.Height, &outside);
  TTexels texels = UnpackTexels(FetchTexels(surface, i, j));
  PutBorder(*sampler, outside, &texels);
  return texels;
}

HWY_INLINE HWY_ATTR VD MixVectors(VD c00, VD c10, VD c01, VD c11, VD fu, VD fv) {
  const VD a = hn::Add(hn::Mul(hn::Sub(c10, c00), fu), c00);
  const VD b = hn::Add(hn::Mul(hn::Sub(c11, c01), fu), c01);
  return hn::Add(hn::Mul(hn::Sub(b, a), fv), a);
}

HWY_INLINE HWY_ATTR TTexels LinearTexels(TRenderCPU::TTexSampler* sampler, VD s, VD t) {
  const DD d;
  const DI di;
  const VD half = hn::Set(d, 0.5);
  const VD u = hn::Sub(hn::Mul(s, hn::Set(d, sampler->m_SurfaceWidth)), half);
  const VD v = hn::Sub(hn::Mul(t, hn::Set(d, sampler->m_SurfaceHeight)), half);
  if (!FitsIndex(u) || !FitsIndex(v)) {
    return SampledTexels(sampler, s, t);
  }
  const DATASURFACE& surface = *sampler->m_Surface;
  const VI left = FlooredIndex(u, u);
  const VI bottom = FlooredIndex(v, v);
  const VD fu = hn::Sub(u, hn::PromoteTo(d, left));
  const VD fv = hn::Sub(v, hn::PromoteTo(d, bottom));
  const VI one = hn::Set(di, 1);
  MI out0 = hn::MaskFromVec(hn::Zero(di));
  MI out1 = out0;
  MI outB = out0;
  MI outT = out0;
  const VI x0 = WrapIndex(left, sampler->m_WrapS, surface.Width, &out0);
  const VI x1 = WrapIndex(hn::Add(left, one), sampler->m_WrapS, surface.Width, &out1);
  const VI y0 = WrapIndex(bottom, sampler->m_WrapT, surface.Height, &outB);
  const VI y1 = WrapIndex(hn::Add(bottom, one), sampler->m_WrapT, surface.Height, &outT);
  TTexels c00 = UnpackTexels(FetchTexels(surface, x0, y0));
  TTexels c10 = UnpackTexels(FetchTexels(surface, x1, y0));
  TTexels c01 = UnpackTexels(FetchTexels(surface, x0, y1));
  TTexels c11 = UnpackTexels(FetchTexels(surface, x1, y1));
  if (!hn::AllFalse(di, hn::Or(hn::Or(out0, out1), hn::Or(outB, outT)))) {
    PutBorder(*sampler, hn::Or(out0, outB), &c00);
    PutBorder(*sampler, hn::Or(out1, outB), &c10);
    PutBorder(*sampler, hn::Or(out0, outT), &c01);
    PutBorder(*sampler, hn::Or(out1, outT), &c11);
  }
  return {MixVectors(c00.R, c10.R, c01.R, c11.R, fu, fv),
          MixVectors(c00.G, c10.G, c01.G, c11.G, fu, fv),
          MixVectors(c00.B, c10.B, c01.B, c11.B, fu, fv),
          MixVectors(c00.A, c10.A, c01.A, c11.A, fu, fv)};
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
