// Rows shorter than a vector, as triangles of a few pixels have them, in the state that most are
// drawn in: what is asked for row by row elsewhere is settled here once for all. Included once for
// each instruction set.

#if defined(ZX_RENDER_SPANSHORT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANSHORT_INL_H_
#undef ZX_RENDER_SPANSHORT_INL_H_
#else
#define ZX_RENDER_SPANSHORT_INL_H_
#endif

#include <hwy/highway.h>

#include "SpanPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

enum class TShortDepth { None, Less, LessOrEqual };

// No texture, no stencil, no blending, no masks, and depth either off or tested and written in the
// common order.
inline HWY_ATTR bool HasShortWay(const TSpanJob& job, const TRowSlots& slots) {
  const int func = job.DepthFunc + GL_NEVER;
  const bool depth = job.DepthTest == job.DepthWrite && !job.AddOffset &&
                     (!job.DepthTest || func == GL_LESS || func == GL_LEQUAL);
  return HWY_TARGET != HWY_SSSE3 && job.Texels == TTexelSource::None && job.Stencil == nullptr &&
         job.ColorMask == 15 && !job.Blend && slots.Secondary < 0 && depth &&
         (job.ConstMask == 0 || job.ConstMask == 8);
}

// The bytes of the channels, alpha among them unless it is the same throughout.
template <bool kPerspective, bool kConstAlpha>
HWY_INLINE HWY_ATTR VU ShortColors(const TSpanJob& job, int place, const TRow& row, VD t) {
  const DD d;
  VD q = t;
  if constexpr (kPerspective) {
    q = hn::Div(hn::Set(d, 1.0),
                hn::Add(hn::Mul(hn::Set(d, row.Delta[3]), t), hn::Set(d, row.Begin[3])));
  }
  const auto byteOf = [&](int i) HWY_ATTR {
    return ChannelByte(Interpolated<kPerspective>(row, place + i, t, q), job.Clamp);
  };
  const VU rg = hn::Or(byteOf(0), hn::ShiftLeft<8>(byteOf(1)));
  const VU b = hn::ShiftLeft<16>(byteOf(2));
  const VU a = kConstAlpha ? hn::Set(DU(), job.ConstColor) : hn::ShiftLeft<24>(byteOf(3));
  return hn::Or(rg, hn::Or(b, a));
}

// Draws one row of up to a vector of pixels. Which of them were shaded, as bits.
template <bool kPerspective, bool kConstAlpha, TShortDepth kDepth>
HWY_INLINE HWY_ATTR unsigned int DrawShortRow(const TSpanJob& job, int place, const TRow& row) {
  const DI di;
  const DU du;
  const DF df;
  const VD t = ColumnT(row, row.First);
  MI pass = hn::FirstN(di, static_cast<std::size_t>(row.Last - row.First + 1));
  if constexpr (kDepth != TShortDepth::None) {
    float* const at = reinterpret_cast<float*>(job.Depth + row.Y * job.DepthRowStride) + row.First;
    const VF depth = hn::DemoteTo(df, Interpolated<false>(row, 2, t, t));
    const VF stored = hn::MaskedLoad(hn::RebindMask(df, pass), df, at);
    const auto nearer = kDepth == TShortDepth::Less ? hn::Lt(depth, stored) : hn::Le(depth, stored);
    pass = hn::And(pass, hn::RebindMask(di, nearer));
    hn::BlendedStore(depth, hn::RebindMask(df, pass), df, at);
  }
  const unsigned int bits = BitsOf(pass);
  if (bits != 0) {
    hn::BlendedStore(
        ShortColors<kPerspective, kConstAlpha>(job, place, row, t), hn::RebindMask(du, pass), du,
        reinterpret_cast<std::uint32_t*>(job.Color + row.Y * job.ColorRowStride) + row.First);
  }
  return bits;
}

// Draws the rows that are short, of those that were made together, and tells which those are.
template <bool kPerspective, bool kConstAlpha, TShortDepth kDepth>
HWY_NOINLINE HWY_ATTR void DrawShortRows(const TSpanJob& job, const TRowSlots& slots,
                                         const TRows& rows, unsigned int covered, int start,
                                         TLastPixels* last) {
  const int place = slots.Color;
  int shadedLane = -1;
  unsigned int shadedBits = 0;
  for (unsigned int rest = covered; rest != 0; rest &= rest - 1) {
    const int lane = __builtin_ctz(rest);
    const unsigned int bits =
        DrawShortRow<kPerspective, kConstAlpha, kDepth>(job, place, rows.At(lane));
    if (bits != 0) {
      shadedLane = lane;
      shadedBits = bits;
    }
  }
  const int lane = 31 - __builtin_clz(covered);
  last->Stencil = {start, lane, rows.Last[lane]};
  if (shadedLane >= 0) {
    last->Shaded = {start, shadedLane, rows.First[shadedLane] + 31 - __builtin_clz(shadedBits)};
  }
}

using TDrawShortRows = void (*)(const TSpanJob& job, const TRowSlots& slots, const TRows& rows,
                                unsigned int covered, int start, TLastPixels* last);

template <bool kPerspective, bool kConstAlpha>
inline constexpr TDrawShortRows kShortWaysByDepth[3] = {
    DrawShortRows<kPerspective, kConstAlpha, TShortDepth::None>,
    DrawShortRows<kPerspective, kConstAlpha, TShortDepth::Less>,
    DrawShortRows<kPerspective, kConstAlpha, TShortDepth::LessOrEqual>,
};

// By perspective and by whether alpha is the same throughout; then by depth.
inline constexpr const TDrawShortRows* kShortWays[2][2] = {
    {kShortWaysByDepth<false, false>, kShortWaysByDepth<false, true>},
    {kShortWaysByDepth<true, false>, kShortWaysByDepth<true, true>},
};

// The way for a job; null if there is none.
inline HWY_ATTR TDrawShortRows ShortWayOf(const TSpanJob& job, const TRowSlots& slots) {
  if (!HasShortWay(job, slots)) {
    return nullptr;
  }
  const int depth = !job.DepthTest ? 0 : job.DepthFunc + GL_NEVER == GL_LESS ? 1 : 2;
  return kShortWays[job.Perspective ? 1 : 0][job.ConstMask != 0 ? 1 : 0][depth];
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
