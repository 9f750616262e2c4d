// Short rows, as triangles of a few pixels have them, in the most common state: choices that the
// other kernels make for each row are made here once for all rows. Included once for each
// instruction set.
//
// Tested by: tests/render/SpanRows.cpp (SpanRows.*), tests/render/StandardScenes.cpp
// (StandardScenes.*)

#if defined(ZX_RENDER_SPANSHORTROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANSHORTROWS_INL_H_
#undef ZX_RENDER_SPANSHORTROWS_INL_H_
#else
#define ZX_RENDER_SPANSHORTROWS_INL_H_
#endif

#include <ZxCore3D/types/InstructionSets-inl.h>

#include <hwy/highway.h>

#include <ZxCore3D/render/kernels/SpanRows-inl.h>
#include <ZxCore3D/render/kernels/SpanUntextured-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

enum class TShortDepth { None, Less, LessOrEqual };

// No texture, no stencil, no blending, no masks, and depth either off or tested and written in the
// common order.
inline HWY_ATTR bool HasShortRowKernel(const TSpanJob& job, const TRowSlots& slots) {
  const int func = job.DepthFunc + GL_NEVER;
  const bool depth = job.DepthTest == job.DepthWrite && !job.AddOffset &&
                     (!job.DepthTest || func == GL_LESS || func == GL_LEQUAL);
  return ZX_HAS_MASKED_ACCESS && job.Texels == TTexelSource::None && job.Stencil == nullptr &&
         job.ColorMask == 15 && !job.Blend && slots.Secondary < 0 && depth &&
         (job.ConstMask == 0 || job.ConstMask == 8);
}

// Packs channel bytes; a constant alpha is not computed. Bits above the first channel's byte must
// be 0; those above the others' are shifted out.
template <bool kConstAlpha, class TByteOf>
HWY_INLINE HWY_ATTR VU ShortPixels(const TSpanJob& job, const TByteOf& byteOf) {
  const VU rg = hn::Or(byteOf(0), hn::ShiftLeft<8>(byteOf(1)));
  const VU b = hn::ShiftLeft<16>(byteOf(2));
  const VU a = kConstAlpha ? hn::Set(DU(), job.ConstColor) : hn::ShiftLeft<24>(byteOf(3));
  return hn::Or(rg, hn::Or(b, a));
}

// Packed colours, operation by operation in double; alpha only if it varies.
template <bool kPerspective, bool kConstAlpha>
HWY_INLINE HWY_ATTR VU ShortColors(const TSpanJob& job, int place, const TRow& row, VD t) {
  const VD q = PerspectiveAt<kPerspective>(row, t);
  const auto byteOf = [&](int i) HWY_ATTR {
    return ChannelByte(Interpolated<kPerspective>(row, place + i, t, q), job.Clamp);
  };
  return ShortPixels<kConstAlpha>(job, byteOf);
}

// Depth test and write of a group; returns the pixels that pass.
template <TShortDepth kDepth>
HWY_INLINE HWY_ATTR MI DrawShortDepths(const TSpanJob& job, const TRow& row, int x, VF depth,
                                       MI live) {
  const DF df;
  float* const at = reinterpret_cast<float*>(job.Depth + row.Y * job.DepthRowStride) + x;
  const VF stored = hn::MaskedLoad(hn::RebindMask(df, live), df, at);
  const auto nearer = kDepth == TShortDepth::Less ? hn::Lt(depth, stored) : hn::Le(depth, stored);
  const MI pass = hn::And(live, hn::RebindMask(DI(), nearer));
  hn::BlendedStore(depth, hn::RebindMask(df, pass), df, at);
  return pass;
}

HWY_INLINE HWY_ATTR void StoreShortColors(const TSpanJob& job, const TRow& row, int x, VU packed,
                                          MI pass) {
  const DU du;
  hn::BlendedStore(packed, hn::RebindMask(du, pass), du,
                   reinterpret_cast<std::uint32_t*>(job.Color + row.Y * job.ColorRowStride) + x);
}

// Draws a group of a row, up to a vector of pixels. Returns those that were shaded, as bits.
template <bool kPerspective, bool kConstAlpha, TShortDepth kDepth>
HWY_INLINE HWY_ATTR unsigned int DrawShortGroup(const TSpanJob& job, int place, const TRow& row,
                                                int x) {
  const DI di;
  const DF df;
  const VD t = ColumnParameter(row, x);
  MI pass = hn::FirstN(di, static_cast<std::size_t>(row.Last - x + 1));
  if constexpr (kDepth != TShortDepth::None) {
    const VF depth = hn::DemoteTo(df, Interpolated<false>(row, 2, t, t));
    pass = DrawShortDepths<kDepth>(job, row, x, depth, pass);
  }
  const unsigned int bits = BitsOf(pass);
  if (bits != 0) {
    StoreShortColors(job, row, x, ShortColors<kPerspective, kConstAlpha>(job, place, row, t), pass);
  }
  return bits;
}

// --- Without a division of doubles a pixel, with the proofs of SpanDepthStencil-inl.h and
// SpanFloatColors-inl.h

// Inputs of each row: red, green, blue, alpha and 1/w in float, the margins of bytes and depths,
// and the reciprocal of the row's width.
struct TFloatRows {
  static constexpr int kW = 4;

  HWY_ALIGN float Begin[5][kLanes];
  HWY_ALIGN float Delta[5][kLanes];
  HWY_ALIGN float Margin[kLanes];
  HWY_ALIGN double Inverse[kLanes];
  HWY_ALIGN double DepthMargin[kLanes];
};

// A margin so large that every pixel takes the exact path.
HWY_INLINE HWY_ATTR VD Unsure(hn::Mask<DD> unsure, VD margin) {
  return hn::IfThenElse(unsure, hn::Set(DD(), 1e30), margin);
}

template <bool kPerspective, bool kConstAlpha>
HWY_INLINE HWY_ATTR void SetFloatRows(const TSpanJob& job, const TRowSlots& slots,
                                      const TRows& rows, TFloatRows* near) {
  const DD d;
  const DF df;
  const VD one = hn::Set(d, 1.0);
  const auto setFloats = [&](int place, double scale, int i) HWY_ATTR {
    const VD by = hn::Set(d, scale);
    hn::Store(hn::DemoteTo(df, hn::Mul(hn::Load(d, rows.Begin[place]), by)), df, near->Begin[i]);
    hn::Store(hn::DemoteTo(df, hn::Mul(hn::Load(d, rows.Delta[place]), by)), df, near->Delta[i]);
  };
  for (int i = 0; i < (kConstAlpha ? 3 : 4); ++i) {
    setFloats(slots.Color + i, 255.0, i);
  }
  VD ratio = one;
  if constexpr (kPerspective) {
    setFloats(3, 1.0, TFloatRows::kW);
    const VD begin = hn::Load(d, rows.Begin[3]);
    const VD end = hn::Add(begin, hn::Load(d, rows.Delta[3]));
    ratio = hn::Div(hn::Max(begin, end), hn::Min(begin, end));
  }
  const TMarginTerms terms = MarginTermsOf(job);
  const VD margin = hn::Add(hn::Set(d, terms.Base), hn::Mul(hn::Set(d, terms.Slope), ratio));
  const auto steep = hn::Not(hn::Le(ratio, hn::Set(d, kMaxFloatRatio)));
  hn::Store(hn::DemoteTo(df, Unsure(steep, margin)), df, near->Margin);
  hn::Store(hn::Div(one, hn::Load(d, rows.Delta[0])), d, near->Inverse);
  const VD reach =
      hn::Add(hn::Abs(hn::Load(d, rows.Delta[2])), hn::Abs(hn::Load(d, rows.Begin[2])));
  const auto extreme = hn::Not(hn::And(hn::Gt(reach, hn::Set(d, kMinDepthBound)),
                                       hn::Lt(reach, hn::Set(d, kMaxDepthBound))));
  hn::Store(Unsure(extreme, hn::Mul(reach, hn::Set(d, kDepthMargin))), d, near->DepthMargin);
}

// Packed colours in float; `sure` loses the pixels whose rounding test fails.
template <bool kPerspective, bool kConstAlpha>
HWY_INLINE HWY_ATTR VU FloatColors(const TSpanJob& job, const TFloatRows& near, int lane, VF t,
                                   MI* sure) {
  const DF df;
  const auto valueOf = [&](int i) HWY_ATTR {
    return hn::Add(hn::Mul(hn::Set(df, near.Delta[i][lane]), t), hn::Set(df, near.Begin[i][lane]));
  };
  VF q = t;
  if constexpr (kPerspective) {
    q = hn::Div(hn::Set(df, 1.0f), valueOf(TFloatRows::kW));
  }
  const VF margin = hn::Set(df, near.Margin[lane]);
  const auto byteOf = [&](int i) HWY_ATTR {
    const VF value = kPerspective ? hn::Mul(valueOf(i), q) : valueOf(i);
    const VU byte = ByteByRoundingTest(df, value, job.Clamp, margin, sure);
    return i == 0 ? hn::And(byte, hn::Set(DU(), 255u)) : byte;
  };
  return ShortPixels<kConstAlpha>(job, byteOf);
}

template <bool kPerspective, bool kConstAlpha>
HWY_NOINLINE HWY_ATTR VU ExactShortColors(const TSpanJob& job, int place, const TRow& row, int x) {
  return ShortColors<kPerspective, kConstAlpha>(job, place, row, ColumnParameter(row, x));
}

// Draws a group of a row in float where the rounding tests allow. Returns the pixels that were
// shaded, as bits.
template <bool kPerspective, bool kConstAlpha, TShortDepth kDepth>
HWY_INLINE HWY_ATTR unsigned int DrawFloatGroup(const TSpanJob& job, int place, const TRow& row,
                                                const TFloatRows& near, int lane, int x) {
  const DD d;
  const DI di;
  const DF df;
  const VD column = hn::Iota(d, static_cast<double>(x));
  const VD t = hn::Mul(hn::Sub(column, hn::Set(d, row.Begin[0])), hn::Set(d, near.Inverse[lane]));
  MI pass = hn::FirstN(di, static_cast<std::size_t>(row.Last - x + 1));
  if constexpr (kDepth != TShortDepth::None) {
    const VD margin = hn::Set(d, near.DepthMargin[lane]);
    const VD value = Interpolated<false>(row, 2, t, t);
    VF depth = hn::DemoteTo(df, hn::Sub(value, margin));
    const auto same = hn::Eq(depth, hn::DemoteTo(df, hn::Add(value, margin)));
    if (HWY_UNLIKELY(!hn::AllFalse(di, hn::AndNot(hn::RebindMask(di, same), pass)))) {
      depth = ExactDepths(row, x);
    }
    pass = DrawShortDepths<kDepth>(job, row, x, depth, pass);
  }
  const unsigned int bits = BitsOf(pass);
  if (bits != 0) {
    MI sure = pass;
    VU packed = FloatColors<kPerspective, kConstAlpha>(job, near, lane, hn::DemoteTo(df, t), &sure);
    if (HWY_UNLIKELY(BitsOf(sure) != bits)) {
      packed = ExactShortColors<kPerspective, kConstAlpha>(job, place, row, x);
    }
    StoreShortColors(job, row, x, packed, pass);
  }
  return bits;
}

// --- Rows

// Rows of at most this many pixels are short: set-up for long ones costs more than it saves.
inline constexpr int kShortPixels = 8;
inline constexpr int kFloatRowPixels = 24;

// Draws rows that were set up together, all of them short.
template <bool kFloat, bool kPerspective, bool kConstAlpha, TShortDepth kDepth>
HWY_NOINLINE HWY_ATTR void DrawShortRows(const TSpanJob& job, const TRowSlots& slots,
                                         const TRows& rows, unsigned int covered, int start,
                                         TLastPixels* last) {
  const int place = slots.Color;
  TFloatRows near;
  if constexpr (kFloat) {
    SetFloatRows<kPerspective, kConstAlpha>(job, slots, rows, &near);
  }
  int shadedLane = -1;
  int shadedX = 0;
  unsigned int shadedBits = 0;
  for (unsigned int rest = covered; rest != 0; rest &= rest - 1) {
    const int lane = __builtin_ctz(rest);
    const TRow row = rows.At(lane);
    int x = row.First;
    do { // one group is all where a vector holds a short row
      unsigned int bits = 0;
      if constexpr (kFloat) {
        bits = DrawFloatGroup<kPerspective, kConstAlpha, kDepth>(job, place, row, near, lane, x);
      } else {
        bits = DrawShortGroup<kPerspective, kConstAlpha, kDepth>(job, place, row, x);
      }
      if (bits != 0) {
        shadedLane = lane;
        shadedX = x;
        shadedBits = bits;
      }
      x += kLanes;
    } while ((kFloat || kLanes < kShortPixels) && x <= row.Last);
  }
  const int lane = 31 - __builtin_clz(covered);
  last->Stencil = {start, lane, rows.Last[lane]};
  if (shadedLane >= 0) {
    last->Shaded = {start, shadedLane, shadedX + 31 - __builtin_clz(shadedBits)};
  }
}

using TDrawShortRows = void (*)(const TSpanJob& job, const TRowSlots& slots, const TRows& rows,
                                unsigned int covered, int start, TLastPixels* last);

template <bool kFloat, bool kPerspective, bool kConstAlpha>
inline constexpr TDrawShortRows kShortRowKernelsByDepth[3] = {
    DrawShortRows<kFloat, kPerspective, kConstAlpha, TShortDepth::None>,
    DrawShortRows<kFloat, kPerspective, kConstAlpha, TShortDepth::Less>,
    DrawShortRows<kFloat, kPerspective, kConstAlpha, TShortDepth::LessOrEqual>,
};

// By float colours, perspective and constant alpha; then by the depth test.
inline constexpr const TDrawShortRows* kShortRowKernels[2][2][2] = {
    {{kShortRowKernelsByDepth<false, false, false>, kShortRowKernelsByDepth<false, false, true>},
     {kShortRowKernelsByDepth<false, true, false>, kShortRowKernelsByDepth<false, true, true>}},
    {{kShortRowKernelsByDepth<true, false, false>, kShortRowKernelsByDepth<true, false, true>},
     {kShortRowKernelsByDepth<true, true, false>, kShortRowKernelsByDepth<true, true, true>}},
};

struct TShortRowKernel {
  TDrawShortRows Draw = nullptr; ///< null: none
  int Pixels = 0;                ///< up to which a row is short
};

inline HWY_ATTR TShortRowKernel ChooseShortRowKernel(const TSpanJob& job, const TRowSlots& slots) {
  if (!HasShortRowKernel(job, slots)) {
    return {};
  }
  const bool near = job.ChannelBound > 0.0 && job.Perspective;
  const int depth = !job.DepthTest ? 0 : job.DepthFunc + GL_NEVER == GL_LESS ? 1 : 2;
  return {
      kShortRowKernels[near ? 1 : 0][job.Perspective ? 1 : 0][job.ConstMask != 0 ? 1 : 0][depth],
      near ? kFloatRowPixels : kShortPixels};
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
