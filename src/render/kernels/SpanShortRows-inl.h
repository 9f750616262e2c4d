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

#include <ZxCore3D/render/kernels/SpanJoinedRows-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

enum class TShortDepth { None, Less, LessOrEqual };
// The channels that vary: any, all but alpha, without a secondary colour, or none.
enum class TShortColors { Any, ConstAlpha, Const };

template <TShortColors kColors> HWY_INLINE int SecondaryOf(const TRowSlots& slots) {
  return kColors == TShortColors::Any ? slots.Secondary : -1;
}

// The constant channels that are not computed. Single ones other than alpha are: they come to the
// byte that `ConstColor` has.
template <TShortColors kColors> HWY_INLINE std::uint32_t ConstMaskOf(const TSpanJob& job) {
  return kColors == TShortColors::Any ? job.Primitive.ConstMask & kAlphaOnly : kAlphaOnly;
}

inline HWY_ATTR TCondition UnmetByShortRows(const TSpanJob& job) {
  const TDrawState& draw = job.Draw;
  const TPrimitive& primitive = job.Primitive;
  ZX_RETURN_FIRST_UNMET(ZX_SHORT_ROW_CONDITIONS);
}

inline HWY_ATTR TCondition UnmetByFloatShortRows(const TSpanJob& job) {
  const TPrimitive& primitive = job.Primitive;
  ZX_RETURN_FIRST_UNMET(ZX_FLOAT_SHORT_ROW_CONDITIONS);
}

// Depth test and write of a group; returns the pixels that pass.
template <TShortDepth kDepth>
HWY_INLINE HWY_ATTR MI DrawShortDepths(const TSpanJob& job, const TRow& row, int x, VF depth,
                                       MI live) {
  const DF df;
  float* const at = job.Draw.Depth.At<float>(x, row.Y);
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
                   job.Draw.Color.At<std::uint32_t>(x, row.Y));
}

template <bool kPerspective, TShortColors kColors>
HWY_INLINE HWY_ATTR VU ExactShortColors(const TSpanJob& job, const TRowSlots& slots,
                                        const TRow& row, VD t) {
  if constexpr (kColors == TShortColors::Const) {
    return hn::Set(DU(), job.Primitive.ConstColor);
  } else {
    return ExactUntextured<kPerspective>(job, row, slots.Color, SecondaryOf<kColors>(slots),
                                         ConstMaskOf<kColors>(job), t);
  }
}

// Draws a group of a row, up to a vector of pixels. Returns those that were shaded, as bits.
template <bool kPerspective, TShortColors kColors, TShortDepth kDepth>
HWY_INLINE HWY_ATTR std::uint64_t DrawShortGroup(const TSpanJob& job, const TRowSlots& slots,
                                                 const TRow& row, int x) {
  const DI di;
  const DF df;
  const VD t = ColumnParameter(row, x);
  MI pass = hn::FirstN(di, static_cast<std::size_t>(row.Last - x + 1));
  if constexpr (kDepth != TShortDepth::None) {
    const VF depth = hn::DemoteTo(df, Interpolated<false>(row, 2, t, t));
    pass = DrawShortDepths<kDepth>(job, row, x, depth, pass);
  }
  const std::uint64_t bits = BitsOfMask(di, pass);
  if (bits != 0) {
    StoreShortColors(job, row, x, ExactShortColors<kPerspective, kColors>(job, slots, row, t),
                     pass);
  }
  return bits;
}

// --- Without a division of doubles a pixel, with the proofs of SpanDepthStencil-inl.h and
// SpanFloatColors-inl.h

// Inputs of each row: red, green, blue, alpha, the secondary colour and 1/w in float, the margins
// of bytes and depths, and the reciprocal of the row's width.
struct TFloatRows {
  static constexpr int kSecondary = 4;
  static constexpr int kW = 7;

  HWY_ALIGN float Begin[8][kLanes];
  HWY_ALIGN float Delta[8][kLanes];
  HWY_ALIGN float Margin[kLanes];
  HWY_ALIGN double Inverse[kLanes];
  HWY_ALIGN double DepthMargin[kLanes];
};

// A margin so large that every pixel takes the exact path.
HWY_INLINE HWY_ATTR VD Unsure(hn::Mask<DD> unsure, VD margin) {
  return hn::IfThenElse(unsure, hn::Set(DD(), 1e30), margin);
}

template <bool kPerspective, TShortColors kColors>
HWY_INLINE HWY_ATTR void SetFloatRows(const TSpanJob& job, const TRowSlots& slots,
                                      const TRows& rows, TFloatRows* floats) {
  const DD d;
  const DF df;
  const VD one = hn::Set(d, 1.0);
  const auto setFloats = [&](int place, double scale, int i) HWY_ATTR {
    const VD by = hn::Set(d, scale);
    hn::Store(hn::DemoteTo(df, hn::Mul(hn::Load(d, rows.Begin[place]), by)), df, floats->Begin[i]);
    hn::Store(hn::DemoteTo(df, hn::Mul(hn::Load(d, rows.Delta[place]), by)), df, floats->Delta[i]);
  };
  for (int i = 0; i < ((ConstMaskOf<kColors>(job) & kAlphaOnly) != 0 ? 3 : 4); ++i) {
    setFloats(slots.Color + i, 255.0, i);
  }
  for (int i = 0; i < 3 && SecondaryOf<kColors>(slots) >= 0; ++i) {
    setFloats(slots.Secondary + i, 255.0, TFloatRows::kSecondary + i);
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
  hn::Store(hn::DemoteTo(df, Unsure(steep, margin)), df, floats->Margin);
  hn::Store(hn::Div(one, hn::Load(d, rows.Delta[0])), d, floats->Inverse);
  const VD depthBound =
      hn::Add(hn::Abs(hn::Load(d, rows.Delta[2])), hn::Abs(hn::Load(d, rows.Begin[2])));
  const auto extreme = hn::Not(hn::And(hn::Gt(depthBound, hn::Set(d, kMinDepthBound)),
                                       hn::Lt(depthBound, hn::Set(d, kMaxDepthBound))));
  const VD depthMargin = Unsure(extreme, hn::Mul(depthBound, hn::Set(d, kDepthMargin)));
  const auto sameDepth = hn::Eq(hn::Load(d, rows.Delta[2]), hn::Zero(d));
  hn::Store(hn::IfThenZeroElse(sameDepth, depthMargin), d, floats->DepthMargin);
}

// Packed colours in float; `sure` loses the pixels whose rounding test fails.
template <bool kPerspective, TShortColors kColors>
HWY_INLINE HWY_ATTR VU FloatShort(const TSpanJob& job, const TRowSlots& slots,
                                  const TFloatRows& rows, int lane, VF t, MI* sure) {
  constexpr int kW = TFloatRows::kW;
  const DF df;
  const VF q = PerspectiveAt<kPerspective>(df, rows.Begin[kW][lane], rows.Delta[kW][lane], t);
  const auto interpolated = [&](int i) HWY_ATTR {
    return Interpolated<kPerspective>(hn::Set(df, rows.Begin[i][lane]),
                                      hn::Set(df, rows.Delta[i][lane]), t, q);
  };
  const auto valueOf = [&](int i) HWY_ATTR {
    const VF value = interpolated(i);
    return SecondaryOf<kColors>(slots) >= 0 && i < 3
               ? hn::Add(value, interpolated(TFloatRows::kSecondary + i))
               : value;
  };
  return PackFloatBytes(df, job.Primitive, ConstMaskOf<kColors>(job), rows.Margin[lane], valueOf,
                        sure);
}

template <bool kPerspective, TShortColors kColors>
HWY_NOINLINE HWY_ATTR VU ExactShortFallback(const TSpanJob& job, const TRowSlots& slots,
                                            const TRow& row, int x) {
  job.Meets(TCondition::ValuesBytes, kLanes);
  return ExactShortColors<kPerspective, kColors>(job, slots, row, ColumnParameter(row, x));
}

// Draws a group of a row in float where the rounding tests allow. Returns the pixels that were
// shaded, as bits.
template <bool kPerspective, TShortColors kColors, TShortDepth kDepth>
HWY_INLINE HWY_ATTR std::uint64_t DrawFloatGroup(const TSpanJob& job, const TRowSlots& slots,
                                                 const TRow& row, const TFloatRows& floats,
                                                 int lane, int x) {
  const DD d;
  const DI di;
  const DF df;
  const VD column = hn::Iota(d, static_cast<double>(x));
  const VD t = hn::Mul(hn::Sub(column, hn::Set(d, row.Begin[0])), hn::Set(d, floats.Inverse[lane]));
  MI pass = hn::FirstN(di, static_cast<std::size_t>(row.Last - x + 1));
  if constexpr (kDepth != TShortDepth::None) {
    const VD margin = hn::Set(d, floats.DepthMargin[lane]);
    const VD value = Interpolated<false>(row, 2, t, t);
    VF depth = hn::DemoteTo(df, hn::Sub(value, margin));
    const auto same = hn::Eq(depth, hn::DemoteTo(df, hn::Add(value, margin)));
    if (HWY_UNLIKELY(!hn::AllFalse(di, hn::AndNot(hn::RebindMask(di, same), pass)))) {
      depth = ExactDepths(job, row, x);
    }
    pass = DrawShortDepths<kDepth>(job, row, x, depth, pass);
  }
  const std::uint64_t bits = BitsOfMask(di, pass);
  if (bits != 0) {
    MI sure = pass;
    VU packed =
        FloatShort<kPerspective, kColors>(job, slots, floats, lane, hn::DemoteTo(df, t), &sure);
    if (HWY_UNLIKELY(BitsOfMask(di, sure) != bits)) {
      packed = ExactShortFallback<kPerspective, kColors>(job, slots, row, x);
    }
    StoreShortColors(job, row, x, packed, pass);
  }
  return bits;
}

// --- Rows

// Draws rows that were set up together, all of them short.
template <bool kFloat, bool kPerspective, TShortColors kColors, TShortDepth kDepth>
HWY_NOINLINE HWY_ATTR void DrawShortRows(const TSpanJob& job, const TRowSlots& slots,
                                         const TRows& rows, std::uint64_t covered, int start,
                                         TLastPixels* last) {
  TFloatRows floats;
  if constexpr (kFloat) {
    SetFloatRows<kPerspective, kColors>(job, slots, rows, &floats);
  }
  int shadedLane = -1;
  int shadedX = 0;
  std::uint64_t shadedBits = 0;
  for (std::uint64_t rest = covered; rest != 0; rest &= rest - 1) {
    const int lane = FirstBit(rest);
    const TRow row = rows.At(lane);
    int x = row.First;
    do {
      std::uint64_t bits = 0;
      if constexpr (kFloat) {
        bits = DrawFloatGroup<kPerspective, kColors, kDepth>(job, slots, row, floats, lane, x);
      } else {
        bits = DrawShortGroup<kPerspective, kColors, kDepth>(job, slots, row, x);
      }
      if (bits != 0) {
        shadedLane = lane;
        shadedX = x;
        shadedBits = bits;
      }
      x += kLanes;
    } while (x <= row.Last);
  }
  const int lane = LastBit(covered);
  last->DepthTested = {start, lane, rows.Last[lane]};
  if (shadedLane >= 0) {
    last->Shaded = {start, shadedLane, shadedX + LastBit(shadedBits)};
  }
}

template <bool kFloat, bool kPerspective, TShortColors kColors>
inline constexpr TDrawShortRows kShortRowKernelsByDepth[3] = {
    DrawShortRows<kFloat, kPerspective, kColors, TShortDepth::None>,
    DrawShortRows<kFloat, kPerspective, kColors, TShortDepth::Less>,
    DrawShortRows<kFloat, kPerspective, kColors, TShortDepth::LessOrEqual>,
};

// By the channels that vary; then by the depth test.
template <bool kFloat, bool kPerspective>
inline constexpr const TDrawShortRows* kShortRowKernelsByColors[3] = {
    kShortRowKernelsByDepth<kFloat, kPerspective, TShortColors::Any>,
    kShortRowKernelsByDepth<kFloat, kPerspective, TShortColors::ConstAlpha>,
    kShortRowKernelsByDepth<false, false, TShortColors::Const>,
};

// By float colours and perspective.
inline constexpr const TDrawShortRows* const* kShortRowKernels[2][2] = {
    {kShortRowKernelsByColors<false, false>, kShortRowKernelsByColors<false, true>},
    {kShortRowKernelsByColors<true, false>, kShortRowKernelsByColors<true, true>},
};

struct TShortRowKernel {
  TDrawShortRows Draw = nullptr; ///< null: none
  int Pixels = 0;                ///< up to which a row is short
  TKernel Kernel = TKernel::ShortRows;
};

inline HWY_ATTR TShortRowKernel ChooseShortRowKernel(const TSpanJob& job, const TRowSlots& slots) {
  if (!job.Meets(UnmetByShortRows(job))) {
    if (!job.Meets(UnmetByJoinedRows(job))) {
      return {};
    }
    return {JoinedRowKernel(job.Primitive), kJoinedPixels, TKernel::JoinedRows};
  }
  const bool useFloats = job.Meets(UnmetByFloatShortRows(job));
  const bool constAlpha = (job.Primitive.ConstMask & kAlphaOnly) != 0 && slots.Secondary < 0;
  const int colors = job.Primitive.HasConstColor() ? 2 : constAlpha ? 1 : 0;
  const int depth = !job.Draw.DepthTest ? 0 : job.Draw.DepthFunc == TCompare::Less ? 1 : 2;
  return {kShortRowKernels[useFloats ? 1 : 0][job.Primitive.Perspective ? 1 : 0][colors][depth],
          useFloats ? kShortFloatPixels : kShortPixels,
          useFloats ? TKernel::FloatShortRows : TKernel::ShortRows};
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
