// Short rows without a texture, group by group in double: for few pixels the set-up of floats and
// runs costs more than it gains. Included once for each instruction set.
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

// The channels that vary: any, all but alpha, without a secondary colour, or none.
enum class TShortColors : std::uint8_t { Any, ConstAlpha, Const };

// Constant channels other than alpha are computed too, beside others: they come to the byte that
// `ConstColor` has.
template <bool kPerspective, TShortColors kColors>
HWY_INLINE HWY_ATTR VU ShortColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                   VD t) {
  switch (kColors) {
  case TShortColors::Const:
    return hn::Set(DU(), job.Primitive.ConstColor);
  case TShortColors::ConstAlpha:
    return ExactUntextured<kPerspective>(job, row, slots.Color, -1, kAlphaOnly, t);
  default:
    return ExactUntextured<kPerspective>(job, row, slots.Color, slots.Secondary,
                                         job.Primitive.ConstMask & kAlphaOnly, t);
  }
}

template <bool kPerspective, TShortColors kColors, TTests kTests>
HWY_NOINLINE HWY_ATTR void DrawShortRows(const TSpanJob& job, const TRowSlots& slots,
                                         const TRows& rows, std::uint64_t covered, int start,
                                         TLastPixels* last) {
  TLastPixel tested = {start + LastBit(covered), rows.Last[LastBit(covered)]};
  if (kTests == TTests::AnyWithStencil) {
    tested.Row = -1;
  }
  TLastPixel shaded; // of its group the first
  std::uint64_t shadedBits = 1;
  for (; covered != 0; covered &= covered - 1) {
    const int lane = FirstBit(covered);
    const TRow row = rows.At(lane);
    for (int x = row.First; x <= row.Last; x += kLanes) {
      const VD t = ColumnParameter(row, x);
      const TGroupResult drawn = DrawGroupBy<kTests>(
          job, row, t, std::min(row.Last - x + 1, kLanes), TargetsAt(job, x, row.Y),
          [&]() HWY_ATTR { return ShortColors<kPerspective, kColors>(job, slots, row, t); });
      if (kTests == TTests::AnyWithStencil && drawn.Tested != 0) {
        tested = {start + lane, x + LastBit(drawn.Tested)};
      }
      if (drawn.Shaded != 0) {
        shaded = {start + lane, x};
        shadedBits = drawn.Shaded;
      }
    }
  }
  if (tested.Row >= 0) {
    last->DepthTested = tested;
  }
  if (shaded.Row >= 0) {
    last->Shaded = {shaded.Row, shaded.X + LastBit(shadedBits)};
  }
}

template <bool kPerspective, TShortColors kColors>
inline constexpr TDrawShortRows kShortRowKernelsByTests[] = {
    DrawShortRows<kPerspective, kColors, TTests::None>,
    DrawShortRows<kPerspective, kColors, TTests::Less>,
    DrawShortRows<kPerspective, kColors, TTests::LessOrEqual>,
    DrawShortRows<kPerspective, kColors, TTests::Any>,
    DrawShortRows<kPerspective, kColors, TTests::AnyWithStencil>,
};

// By perspective; then by the channels that vary and by the tests.
inline constexpr const TDrawShortRows* kShortRowKernels[2][3] = {
    {kShortRowKernelsByTests<false, TShortColors::Any>,
     kShortRowKernelsByTests<false, TShortColors::ConstAlpha>,
     kShortRowKernelsByTests<false, TShortColors::Const>},
    {kShortRowKernelsByTests<true, TShortColors::Any>,
     kShortRowKernelsByTests<true, TShortColors::ConstAlpha>,
     kShortRowKernelsByTests<false, TShortColors::Const>},
};

inline TTests TestsOf(const TSpanJob& job) {
  const TDrawState& draw = job.Draw;
  if (draw.StencilTest) {
    return TTests::AnyWithStencil;
  }
  if (draw.ReadsColor() || draw.DepthTest != draw.DepthWrite || job.Primitive.AddOffset) {
    return TTests::Any;
  }
  return !draw.DepthTest                         ? TTests::None
         : draw.DepthFunc == TCompare::Less      ? TTests::Less
         : draw.DepthFunc == TCompare::LessEqual ? TTests::LessOrEqual
                                                 : TTests::Any;
}

struct TShortRowKernel {
  TDrawShortRows Draw;
  TKernel Kernel;
  int MostPixels; ///< of a row
};

inline HWY_ATTR TShortRowKernel ChooseShortRowKernel(const TSpanJob& job, const TRowSlots& slots) {
  if (job.Primitive.Texels != TTexelSource::None) {
    return {JoinedRowKernel(job.Primitive), TKernel::JoinedRows, kJoinedPixels};
  }
  const bool constAlpha = (job.Primitive.ConstMask & kAlphaOnly) != 0 && slots.Secondary < 0;
  const TShortColors colors = job.Primitive.HasConstColor() ? TShortColors::Const
                              : constAlpha                  ? TShortColors::ConstAlpha
                                                            : TShortColors::Any;
  return {kShortRowKernels[job.Primitive.Perspective ? 1 : 0][static_cast<int>(colors)]
                          [static_cast<int>(TestsOf(job))],
          TKernel::ShortRows, kShortPixels};
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
