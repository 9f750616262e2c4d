// The pixels of a row, as many at a time as a vector of doubles holds: depth and stencil, colour,
// output. Included once for each instruction set.

#if defined(ZX_RENDER_SPANPIXELS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANPIXELS_INL_H_
#undef ZX_RENDER_SPANPIXELS_INL_H_
#else
#define ZX_RENDER_SPANPIXELS_INL_H_
#endif

#include <cstring>

#include <hwy/highway.h>

#include "SpanRows-inl.h"
#include "SpanTexels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// Where a group of pixels stands in the three surfaces; the stencil may be null.
struct TGroupTargets {
  std::uint32_t* Color;
  float* Depth;
  unsigned char* Stencil;
};

// Which pixels of a group got how far, as bits: through the stencil test and through all tests.
struct TGroupResult {
  unsigned int Stencil;
  unsigned int Shaded;
};

HWY_INLINE HWY_ATTR unsigned int BitsOf(MI mask) {
  std::uint8_t bits[8] = {};
  hn::StoreMaskBits(DI(), mask, bits);
  return bits[0];
}

HWY_INLINE HWY_ATTR MI DepthMask(std::uint8_t func, VF fragment, VF stored) {
  const DI di;
  switch (func + GL_NEVER) {
  case GL_NEVER:
    return hn::MaskFromVec(hn::Zero(di));
  case GL_LESS:
    return hn::RebindMask(di, hn::Lt(fragment, stored));
  case GL_EQUAL:
    return hn::RebindMask(di, hn::Eq(fragment, stored));
  case GL_LEQUAL:
    return hn::RebindMask(di, hn::Le(fragment, stored));
  case GL_GREATER:
    return hn::RebindMask(di, hn::Gt(fragment, stored));
  case GL_NOTEQUAL:
    // The library's own Ne is false for a NaN on some levels.
    return hn::RebindMask(di, hn::Not(hn::Eq(fragment, stored)));
  case GL_GEQUAL:
    return hn::RebindMask(di, hn::Ge(fragment, stored));
  default:
    return hn::Eq(hn::Zero(di), hn::Zero(di));
  }
}

HWY_INLINE HWY_ATTR MI StencilMask(const TSpanJob& job, VI stored) {
  const DI di;
  const VI ref = hn::Set(di, job.StencilRef & job.StencilValueMask);
  const VI value = hn::And(stored, hn::Set(di, job.StencilValueMask));
  switch (job.StencilFunc + GL_NEVER) {
  case GL_NEVER:
    return hn::MaskFromVec(hn::Zero(di));
  case GL_LESS:
    return hn::Lt(ref, value);
  case GL_EQUAL:
    return hn::Eq(ref, value);
  case GL_LEQUAL:
    return hn::Not(hn::Gt(ref, value));
  case GL_GREATER:
    return hn::Gt(ref, value);
  case GL_NOTEQUAL:
    return hn::Ne(ref, value);
  case GL_GEQUAL:
    return hn::Not(hn::Lt(ref, value));
  default:
    return hn::Eq(hn::Zero(di), hn::Zero(di));
  }
}

HWY_INLINE HWY_ATTR VI StencilStep(const TSpanJob& job, std::uint8_t step, VI stored) {
  const DI di;
  const VI mask = hn::Set(di, job.StencilWriteMask);
  const VI inside = hn::And(stored, mask);
  const VI one = hn::Set(di, 1);
  VI value = stored;
  switch (step) {
  case kStencilKeep:
    return stored;
  case kStencilZero:
    value = hn::Zero(di);
    break;
  case kStencilReplace:
    value = hn::Set(di, job.StencilRef);
    break;
  case kStencilIncr:
    value = hn::Min(hn::Add(inside, one), hn::Set(di, 255));
    break;
  case kStencilIncrWrap:
    value = hn::Add(inside, one);
    break;
  case kStencilDecr:
    value = hn::Max(hn::Sub(inside, one), hn::Zero(di));
    break;
  default: // kStencilInvert
    return hn::Xor(stored, mask);
  }
  return hn::Or(hn::And(value, mask), hn::AndNot(mask, stored));
}

HWY_INLINE HWY_ATTR VI LoadStencil(const unsigned char* stencil) {
  const hn::Rebind<std::uint8_t, DD> d8;
  return hn::PromoteTo(DI(), hn::LoadU(d8, stencil));
}

HWY_INLINE HWY_ATTR void StoreStencil(VI values, unsigned char* stencil) {
  const hn::Rebind<std::uint8_t, DD> d8;
  hn::StoreU(hn::DemoteTo(d8, values), d8, stencil);
}

// The values of one component of a slot.
template <bool kPerspective>
HWY_INLINE HWY_ATTR VD Interpolated(const TRow& row, int place, VD t, VD q) {
  const DD d;
  const VD value = hn::Add(hn::Mul(hn::Set(d, row.Delta[place]), t), hn::Set(d, row.Begin[place]));
  return kPerspective ? hn::Mul(value, q) : value;
}

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

// The fragment shader's colours as packed bytes.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR VU PackedColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    VD t, VD q) {
  if constexpr (kTexels == TTexelSource::None) {
    VU packed = hn::Set(DU(), job.ConstColor);
    const auto put = [&](int i, auto shift) HWY_ATTR {
      if ((job.ConstMask >> i & 1u) == 0) {
        VD value = Interpolated<kPerspective>(row, slots.Color + i, t, q);
        if (slots.Secondary >= 0 && i < 3) {
          value = hn::Add(value, Interpolated<kPerspective>(row, slots.Secondary + i, t, q));
        }
        packed =
            hn::Or(packed, hn::ShiftLeft<decltype(shift)::value>(ChannelByte(value, job.Clamp)));
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
    TTexels texels;
    if constexpr (kTexels == TTexelSource::Nearest) {
      texels = NearestTexels(job.Sampler, s, u);
    } else if constexpr (kTexels == TTexelSource::Linear) {
      texels = LinearTexels(job.Sampler, s, u);
    } else {
      texels = SampledTexels(job.Sampler, s, u);
    }
    VD channel[4] = {texels.R, texels.G, texels.B, texels.A};
    if (job.Modulate) {
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
    const VU r = ChannelByte(channel[0], job.Clamp);
    const VU g = ChannelByte(channel[1], job.Clamp);
    const VU b = ChannelByte(channel[2], job.Clamp);
    const VU a = ChannelByte(channel[3], job.Clamp);
    return hn::Or(hn::Or(r, hn::ShiftLeft<8>(g)),
                  hn::Or(hn::ShiftLeft<16>(b), hn::ShiftLeft<24>(a)));
  }
}

// One group of pixels at t; only those in `live` exist.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR TGroupResult DrawGroup(const TSpanJob& job, const TRowSlots& slots,
                                           const TRow& row, VD t, MI live,
                                           const TGroupTargets& to) {
  const DD d;
  const DI di;
  const DU du;
  const DF df;
  TGroupResult result = {0, 0};

  MI pass = live;
  VI stencil = hn::Zero(di);
  if (to.Stencil != nullptr) {
    stencil = LoadStencil(to.Stencil);
    pass = hn::And(live, StencilMask(job, stencil));
    const MI failed = hn::AndNot(pass, live);
    stencil = hn::IfThenElse(failed, StencilStep(job, job.StencilFail, stencil), stencil);
  }
  result.Stencil = BitsOf(pass);

  if (job.DepthTest || job.DepthWrite) {
    VF depth = hn::DemoteTo(df, Interpolated<false>(row, 2, t, t));
    if (job.AddOffset) {
      depth = hn::Add(depth, hn::Set(df, job.Offset));
    }
    const VF stored = hn::LoadU(df, to.Depth);
    if (job.DepthTest) {
      const MI shaded = hn::And(pass, DepthMask(job.DepthFunc, depth, stored));
      if (to.Stencil != nullptr) {
        const MI failed = hn::AndNot(shaded, pass);
        stencil = hn::IfThenElse(failed, StencilStep(job, job.StencilZFail, stencil), stencil);
      }
      pass = shaded;
    }
    if (job.DepthWrite) {
      hn::StoreU(hn::IfThenElse(hn::RebindMask(df, pass), depth, stored), df, to.Depth);
    }
  }
  if (to.Stencil != nullptr) {
    stencil = hn::IfThenElse(pass, StencilStep(job, job.StencilZPass, stencil), stencil);
    StoreStencil(stencil, to.Stencil);
  }
  result.Shaded = BitsOf(pass);
  if (result.Shaded == 0 || job.ColorMask == 0) {
    return result;
  }

  VD q = t;
  if constexpr (kPerspective) {
    q = hn::Div(hn::Set(d, 1.0),
                hn::Add(hn::Mul(hn::Set(d, row.Delta[3]), t), hn::Set(d, row.Begin[3])));
  }
  VU packed = PackedColors<kTexels, kPerspective>(job, slots, row, t, q);
  const VU before = hn::LoadU(du, to.Color);
  if (job.Blend) {
    packed = Blended(packed, before);
  }
  if (job.ColorMask != 15) {
    const std::uint32_t bytes =
        (job.ColorMask & 1 ? 0x000000FFu : 0) | (job.ColorMask & 2 ? 0x0000FF00u : 0) |
        (job.ColorMask & 4 ? 0x00FF0000u : 0) | (job.ColorMask & 8 ? 0xFF000000u : 0);
    const VU kept = hn::Set(du, bytes);
    packed = hn::Or(hn::And(packed, kept), hn::AndNot(kept, before));
  }
  hn::StoreU(hn::IfThenElse(hn::RebindMask(du, pass), packed, before), du, to.Color);
  return result;
}

// What a row's pixels leave: the last ones that got through the stencil test and through all tests;
// -1 if none did.
struct TRowResult {
  int LastStencil;
  int LastShaded;
};

HWY_INLINE void NoteGroup(TGroupResult group, int x, TRowResult* row) {
  if (group.Stencil != 0) {
    row->LastStencil = x + 31 - __builtin_clz(group.Stencil);
  }
  if (group.Shaded != 0) {
    row->LastShaded = x + 31 - __builtin_clz(group.Shaded);
  }
}

// A group of which only the first pixels exist, in copies of whole vectors: nothing outside a row,
// or beside a line, is touched.
struct TGroupCopies {
  HWY_ALIGN std::uint32_t Color[HWY_LANES(double)];
  HWY_ALIGN float Depth[HWY_LANES(double)];
  HWY_ALIGN unsigned char Stencil[HWY_LANES(double)];
};

template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TGroupResult DrawCopies(const TSpanJob& job, const TRowSlots& slots,
                                              const TRow& row, const double* t, std::size_t count,
                                              TGroupCopies* copies) {
  const TGroupTargets to = {copies->Color, copies->Depth,
                            job.Stencil != nullptr ? copies->Stencil : nullptr};
  return DrawGroup<kTexels, kPerspective>(job, slots, row, hn::Load(DD(), t),
                                          hn::FirstN(DI(), count), to);
}

// The last pixels of a row, fewer than a vector holds.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR TGroupResult DrawPartialGroup(const TSpanJob& job, const TRowSlots& slots,
                                                  const TRow& row, VD t, std::size_t count,
                                                  const TGroupTargets& to) {
  TGroupCopies copies = {};
  for (std::size_t i = 0; i < count; ++i) {
    copies.Color[i] = to.Color[i];
    copies.Depth[i] = to.Depth[i];
    copies.Stencil[i] = to.Stencil != nullptr ? to.Stencil[i] : std::uint8_t{0};
  }
  HWY_ALIGN double values[HWY_LANES(double)];
  hn::Store(t, DD(), values);
  const TGroupResult result =
      DrawCopies<kTexels, kPerspective>(job, slots, row, values, count, &copies);
  for (std::size_t i = 0; i < count; ++i) {
    to.Color[i] = copies.Color[i];
    to.Depth[i] = copies.Depth[i];
    if (to.Stencil != nullptr) {
      to.Stencil[i] = copies.Stencil[i];
    }
  }
  return result;
}

// t of the pixels of a row from a column on.
HWY_INLINE HWY_ATTR VD ColumnT(const TRow& row, VD x) {
  const DD d;
  return hn::Div(hn::Sub(x, hn::Set(d, row.Begin[0])), hn::Set(d, row.Delta[0]));
}

inline HWY_ATTR float DepthAtT(const TSpanJob& job, const TRow& row, double t) {
  auto depth = static_cast<float>(row.Delta[2] * t + row.Begin[2]);
  if (job.AddOffset) {
    depth += job.Offset;
  }
  return depth;
}

// --- Rows that are a fill

template <class D, class T>
HWY_INLINE HWY_ATTR void FillRun(D d, T value, T* to, std::size_t count) {
  const std::size_t lanes = hn::Lanes(d);
  const auto values = hn::Set(d, value);
  std::size_t i = 0;
  for (; i + lanes <= count; i += lanes) {
    hn::StoreU(values, d, to + i);
  }
  for (; i < count; ++i) {
    to[i] = value;
  }
}

// Whether a row has one colour, and one depth where that is written, and no test to pass.
inline HWY_ATTR bool IsFill(const TSpanJob& job, const TRow& row) {
  return job.ConstMask == 15 && job.ColorMask == 15 && !job.Blend && !job.DepthTest &&
         job.Stencil == nullptr && (!job.DepthWrite || row.Delta[2] == 0.0);
}

inline HWY_ATTR void FillRow(const TSpanJob& job, const TRow& row, const TGroupTargets& to) {
  const auto count = static_cast<std::size_t>(row.Last - row.First + 1);
  FillRun(hn::ScalableTag<std::uint32_t>(), job.ConstColor, to.Color, count);
  if (job.DepthWrite) {
    FillRun(hn::ScalableTag<float>(), DepthAtT(job, row, 0.0), to.Depth, count);
  }
}

// --- Runs that fail the depth test as a whole

inline constexpr int kDepthRun = 64;

// Whether no pixel of a run passes. Depth is monotone along a row, as t, the product, the sum, the
// rounding to float and the offset are: what the nearer end fails against, all fail against.
inline HWY_ATTR bool FailsWhole(const TSpanJob& job, const TRow& row, int x, const float* stored) {
  const hn::ScalableTag<float> d;
  const float a = DepthAtT(job, row, (x - row.Begin[0]) / row.Delta[0]);
  const float b = DepthAtT(job, row, (x + kDepthRun - 1 - row.Begin[0]) / row.Delta[0]);
  if (!(a <= b || b <= a)) {
    return false;
  }
  const bool less = job.DepthFunc + GL_NEVER == GL_LESS;
  const auto nearest = hn::Set(d, a < b ? a : b);
  for (std::size_t i = 0; i < kDepthRun; i += hn::Lanes(d)) {
    const auto there = hn::LoadU(d, stored + i);
    if (!hn::AllFalse(d, less ? hn::Lt(nearest, there) : hn::Le(nearest, there))) {
      return false;
    }
  }
  return true;
}

template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TRowResult DrawRow(const TSpanJob& job, const TRowSlots& slots,
                                         const TRow& row) {
  const DD d;
  const DI di;
  const int lanes = static_cast<int>(hn::Lanes(d));
  const MI all = hn::Eq(hn::Zero(di), hn::Zero(di));
  TGroupTargets to;
  to.Color = reinterpret_cast<std::uint32_t*>(job.Color + row.Y * job.ColorRowStride) + row.First;
  to.Depth = reinterpret_cast<float*>(job.Depth + row.Y * job.DepthRowStride) + row.First;
  to.Stencil =
      job.Stencil != nullptr ? job.Stencil + row.Y * job.StencilRowStride + row.First : nullptr;
  if (kTexels == TTexelSource::None && IsFill(job, row)) {
    FillRow(job, row, to);
    return {row.Last, row.Last};
  }
  const bool mayFailWhole =
      job.DepthTest && job.Stencil == nullptr &&
      (job.DepthFunc + GL_NEVER == GL_LESS || job.DepthFunc + GL_NEVER == GL_LEQUAL);
  TRowResult result = {-1, -1};
  int x = row.First;
  int runEnd = x; // up to here no whole run was found to fail
  while (x + lanes - 1 <= row.Last) {
    if (mayFailWhole && x >= runEnd) {
      if (x + kDepthRun - 1 <= row.Last && FailsWhole(job, row, x, to.Depth)) {
        result.LastStencil = x + kDepthRun - 1;
        x += kDepthRun;
        runEnd = x;
        to.Color += kDepthRun;
        to.Depth += kDepthRun;
        continue;
      }
      runEnd = x + kDepthRun;
    }
    const VD t = ColumnT(row, hn::Iota(d, static_cast<double>(x)));
    NoteGroup(DrawGroup<kTexels, kPerspective>(job, slots, row, t, all, to), x, &result);
    x += lanes;
    to.Color += lanes;
    to.Depth += lanes;
    to.Stencil = to.Stencil != nullptr ? to.Stencil + lanes : nullptr;
  }
  if (x <= row.Last) {
    const auto count = static_cast<std::size_t>(row.Last - x + 1);
    const VD t = ColumnT(row, hn::Iota(d, static_cast<double>(x)));
    NoteGroup(DrawPartialGroup<kTexels, kPerspective>(job, slots, row, t, count, to), x, &result);
  }
  return result;
}

// --- Pixels that lie anywhere, as those of a line do: by way of copies, no pixel twice

struct TScattered {
  const int* X;
  const int* Y;
  const double* T;
  int Count;
};

template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TRowResult DrawScattered(const TSpanJob& job, const TRowSlots& slots,
                                               const TRow& row, const TScattered& pixels) {
  constexpr std::size_t kMostLanes = HWY_LANES(double);
  const DD d;
  const int lanes = static_cast<int>(hn::Lanes(d));
  TGroupCopies copies = {};
  TRowResult result = {-1, -1};
  for (int first = 0; first < pixels.Count; first += lanes) {
    const int count = pixels.Count - first < lanes ? pixels.Count - first : lanes;
    std::uint32_t* colorAt[kMostLanes];
    float* depthAt[kMostLanes];
    unsigned char* stencilAt[kMostLanes];
    HWY_ALIGN double t[kMostLanes] = {};
    for (int i = 0; i < count; ++i) {
      const std::ptrdiff_t x = pixels.X[first + i];
      const std::ptrdiff_t y = pixels.Y[first + i];
      t[i] = pixels.T[first + i];
      colorAt[i] = reinterpret_cast<std::uint32_t*>(job.Color + y * job.ColorRowStride) + x;
      depthAt[i] = reinterpret_cast<float*>(job.Depth + y * job.DepthRowStride) + x;
      copies.Color[i] = *colorAt[i];
      copies.Depth[i] = *depthAt[i];
      if (job.Stencil != nullptr) {
        stencilAt[i] = job.Stencil + y * job.StencilRowStride + x;
        copies.Stencil[i] = *stencilAt[i];
      }
    }
    const TGroupResult group = DrawCopies<kTexels, kPerspective>(
        job, slots, row, t, static_cast<std::size_t>(count), &copies);
    NoteGroup(group, first, &result);
    for (int i = 0; i < count; ++i) {
      *colorAt[i] = copies.Color[i];
      *depthAt[i] = copies.Depth[i];
      if (job.Stencil != nullptr) {
        *stencilAt[i] = copies.Stencil[i];
      }
    }
  }
  return result;
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
