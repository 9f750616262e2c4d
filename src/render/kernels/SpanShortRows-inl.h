// Short rows, group by group in double: for few pixels the set-up of floats and runs costs more
// than it gains. Included once for each instruction set.
//
// Tested by: tests/render/SpanRows.cpp (SpanRows.*), tests/render/StandardScenes.cpp
// (StandardScenes.*), tests/render/MaskedWrites.cpp (MaskedWrites.*)

#if defined(ZX_RENDER_SPANSHORTROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANSHORTROWS_INL_H_
#undef ZX_RENDER_SPANSHORTROWS_INL_H_
#else
#define ZX_RENDER_SPANSHORTROWS_INL_H_
#endif

#include <ZxCore3D/render/kernels/SpanRows-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// Draws rows that were set up together, `start` being the number of the first.
using TDrawRows = void (*)(const TSpanJob& job, const TRowSlots& slots, const TRows& rows,
                           std::uint64_t covered, int start, TLastPixels* last);

// --- Without a texture

// The channels that vary: any; all but alpha, within 0 to 1 without a secondary colour; or none.
enum class TShortColors : std::uint8_t { Any, ConstAlpha, Const };

// Constant channels other than alpha are computed too, beside others: they come to the byte that
// `ConstColor` has. A sum with a secondary colour may always lie outside 0 to 1.
template <bool kPerspective, TShortColors kColors>
HWY_INLINE HWY_ATTR VU ShortColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                   VD t) {
  const TPrimitive& primitive = job.Primitive;
  if (kColors == TShortColors::Const) {
    return hn::Set(DU(), primitive.ConstColor);
  }
  if (kColors == TShortColors::ConstAlpha) {
    return ExactUntextured<kPerspective>(job, row, kColorPlace, -1, kAlphaOnly, false, t);
  }
  const std::uint32_t constMask = primitive.ConstMask & kAlphaOnly;
  return slots.Secondary >= 0 ? ExactUntextured<kPerspective>(job, row, kColorPlace,
                                                              kSecondaryPlace, constMask, true, t)
                              : ExactUntextured<kPerspective>(job, row, kColorPlace, -1, constMask,
                                                              primitive.Clamp, t);
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
inline constexpr TDrawRows kShortRowKernelsByTests[] = {
    DrawShortRows<kPerspective, kColors, TTests::None>,
    DrawShortRows<kPerspective, kColors, TTests::Less>,
    DrawShortRows<kPerspective, kColors, TTests::LessOrEqual>,
    DrawShortRows<kPerspective, kColors, TTests::Any>,
    DrawShortRows<kPerspective, kColors, TTests::AnyWithStencil>,
};

// By perspective; then by the channels that vary and by the tests.
inline constexpr const TDrawRows* kShortRowKernels[2][3] = {
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

// --- With a texture: the pixels of rows that were set up together stand in common groups, since
// few of them alone would fill one

// The row of each pixel of a group, by its lane among the rows that were set up together.
using TLaneIndices = decltype(hn::IndicesFromVec(DD(), VU64()));

struct TJoinedComponents {
  const double (*At)[kLanes];
  TLaneIndices Lanes;
};

HWY_INLINE HWY_ATTR VD ValuesOf(const TJoinedComponents& components, int place) {
  return hn::TableLookupLanes(hn::Load(DD(), components.At[place]), components.Lanes);
}

// What a row is to a group of its pixels, for a group whose pixels are of several rows.
struct TJoinedRow {
  TJoinedComponents Begin;
  TJoinedComponents Delta;
};

template <bool kPerspective> HWY_INLINE HWY_ATTR VD PerspectiveAt(const TJoinedRow& row, VD t) {
  return kPerspective ? hn::Div(hn::Set(DD(), 1.0), Interpolated<false>(row, 3, t, t)) : t;
}

// Copies pixels of a row; what is written past them is for the next row to overwrite.
template <class D, class T>
HWY_INLINE HWY_ATTR void ReadPixels(D d, const T* from, int count, T* to) {
  for (int i = 0; i < count; i += kFloatLanes) {
    hn::StoreU(LoadMasked(d, hn::FirstN(d, static_cast<std::size_t>(count - i)), from + i), d,
               to + i);
  }
}

// Writes those pixels of a row whose bits are set.
template <class D, class T>
HWY_INLINE HWY_ATTR void WritePixels(D d, const T* from, std::uint64_t pixels, T* to) {
  for (int i = 0; pixels != 0; i += kFloatLanes, pixels >>= kFloatLanes) {
    StoreMasked(d, hn::LoadU(d, from + i), MaskOfBits(d, pixels), to + i);
  }
}

// So many that a vector more does not leave a run.
inline constexpr int kMostJoined = kRun - kFloatLanes;
static_assert(kJoinedPixels <= kMostJoined);

// Pixels of several rows, one after the other, with the lane of the row.
struct TJoinedRun : TStagedRun {
  HWY_ALIGN std::uint64_t Lane[kRun];
  int Count;

  HWY_INLINE HWY_ATTR TJoinedRow RowAt(const TRows& rows, int i) const {
    const TLaneIndices lanes = hn::IndicesFromVec(DD(), hn::Load(DU64(), Lane + i));
    return {{rows.Begin, lanes}, {rows.Delta, lanes}};
  }
};

// Puts as many rows into a run as it takes, and reads their pixels where that matters. Returns
// those that are left.
HWY_INLINE HWY_ATTR std::uint64_t JoinRows(const TSpanJob& job, const TRows& rows,
                                           std::uint64_t covered, TJoinedRun* run) {
  const DD d;
  const DU64 du;
  int end = 0;
  for (; covered != 0; covered &= covered - 1) {
    const int lane = FirstBit(covered);
    const int first = rows.First[lane];
    const int count = rows.Last[lane] - first + 1;
    if (end + count > kMostJoined) {
      break;
    }
    for (int i = 0; i < count; i += kLanes) {
      hn::StoreU(Columns(d, first + i), d, run->T + end + i);
      hn::StoreU(hn::Set(du, static_cast<std::uint64_t>(lane)), du, run->Lane + end + i);
    }
    const TGroupTargets from = TargetsAt(job, first, rows.Y[lane]);
    if (job.Draw.ReadsColor()) {
      ReadPixels(DFU(), from.Color, count, run->Color + end);
    }
    if (job.Draw.DepthTest) {
      ReadPixels(DFF(), from.Depth, count, run->Depth + end);
    }
    for (int i = 0; i < count && job.Draw.StencilTest; ++i) {
      run->Stencil[end + i] = from.Stencil[i];
    }
    end += count;
  }
  // The rest of the last group repeats the last pixel.
  hn::StoreU(hn::Set(d, run->T[end - 1]), d, run->T + end);
  hn::StoreU(hn::Set(du, run->Lane[end - 1]), du, run->Lane + end);
  run->Count = end;
  return covered;
}

// Puts t in the place of columns. Returns depths, where they are used.
HWY_INLINE HWY_ATTR void SetJoinedValues(const TSpanJob& job, const TRows& rows, TJoinedRun* run,
                                         float* depths) {
  const DD d;
  for (int i = 0; i < run->Count; i += kLanes) {
    const TJoinedRow row = run->RowAt(rows, i);
    const VD t = ColumnParameter(row, hn::Load(d, run->T + i));
    hn::Store(t, d, run->T + i);
    if (job.Draw.UsesDepth()) {
      hn::Store(hn::DemoteTo(DF(), Interpolated<false>(row, 2, t, t)), DF(), depths + i);
    }
  }
}

template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR void DrawJoinedColors(const TSpanJob& job, const TRowSlots& slots,
                                          const TRows& rows, TJoinedRun* run) {
  const DD d;
  const DU du;
  TFetchedTexels ready[kRun / kLanes];
  const auto fetch = [&](auto reach) HWY_ATTR {
    for (int i = 0; i < run->Count; i += kLanes) {
      FetchTexelsAt<kTexels, kPerspective, decltype(reach)::value>(
          job, slots, run->RowAt(rows, i), hn::Load(d, run->T + i), &ready[i / kLanes]);
    }
  };
  ByReach(job.Primitive.Reach, fetch);
  for (int i = 0; i < run->Count; i += kLanes) {
    VU packed = ExactTextured<kTexels, kPerspective>(job, slots, run->RowAt(rows, i),
                                                     hn::Load(d, run->T + i), ready[i / kLanes]);
    if (job.Draw.ReadsColor()) {
      packed = OutputColors(du, job.Draw, packed, hn::Load(du, run->Color + i));
    }
    hn::Store(packed, du, run->Color + i);
  }
}

template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR void DrawJoinedRows(const TSpanJob& job, const TRowSlots& slots,
                                          const TRows& rows, std::uint64_t covered, int start,
                                          TLastPixels* last) {
  TJoinedRun run;
  HWY_ALIGN float depths[kRun];
  while (covered != 0) {
    std::uint64_t joined = covered;
    covered = JoinRows(job, rows, covered, &run);
    joined &= ~covered;
    SetJoinedValues(job, rows, &run, depths);
    const auto drawDepths = [&](std::uint64_t pixels) HWY_ATTR {
      return job.Draw.UsesDepth() ? DrawDepths(job, run.Count, depths, pixels, run.Depth) : pixels;
    };
    const TGroupResult drawn = job.Draw.StencilTest
                                   ? TestRun<true>(job, run.Count, run.Stencil, drawDepths)
                                   : TestRun<false>(job, run.Count, run.Stencil, drawDepths);
    if (drawn.Shaded != 0 && job.Draw.ColorMask != 0) {
      DrawJoinedColors<kTexels, kPerspective>(job, slots, rows, &run);
    }
    for (int begin = 0; joined != 0; joined &= joined - 1) {
      const int lane = FirstBit(joined);
      const int first = rows.First[lane];
      const int count = rows.Last[lane] - first + 1;
      const std::uint64_t tested = drawn.Tested >> begin & FirstBits(count);
      const std::uint64_t shaded = drawn.Shaded >> begin & FirstBits(count);
      const TGroupTargets to = TargetsAt(job, first, rows.Y[lane]);
      if (job.Draw.ColorMask != 0) {
        WritePixels(DFU(), run.Color + begin, shaded, to.Color);
      }
      if (job.Draw.DepthWrite) {
        WritePixels(DFF(), run.Depth + begin, shaded, to.Depth);
      }
      if (job.Draw.StencilTest) {
        ForPixels(SteppedPixels(job, FirstBits(count), tested, shaded), count,
                  [&](int i) { to.Stencil[i] = run.Stencil[begin + i]; });
      }
      if (tested != 0) {
        last->DepthTested = {start + lane, first + LastBit(tested)};
      }
      if (shaded != 0) {
        last->Shaded = {start + lane, first + LastBit(shaded)};
      }
      begin += count;
    }
  }
}

// By texel source; then by perspective.
inline constexpr TDrawRows kJoinedRowKernels[4][2] = {
    {nullptr, nullptr},
    {DrawJoinedRows<TTexelSource::Nearest, false>, DrawJoinedRows<TTexelSource::Nearest, true>},
    {DrawJoinedRows<TTexelSource::Linear, false>, DrawJoinedRows<TTexelSource::Linear, true>},
    {DrawJoinedRows<TTexelSource::Sampler, false>, DrawJoinedRows<TTexelSource::Sampler, true>},
};

// --- The choice

inline TDrawRows ChooseShortRowKernel(const TSpanJob& job, const TRowSlots& slots) {
  const TPrimitive& primitive = job.Primitive;
  const int perspective = primitive.Perspective ? 1 : 0;
  if (primitive.Texels != TTexelSource::None) {
    return kJoinedRowKernels[static_cast<int>(primitive.Texels)][perspective];
  }
  const bool constAlpha =
      (primitive.ConstMask & kAlphaOnly) != 0 && slots.Secondary < 0 && !primitive.Clamp;
  const TShortColors colors = primitive.HasConstColor() ? TShortColors::Const
                              : constAlpha              ? TShortColors::ConstAlpha
                                                        : TShortColors::Any;
  return kShortRowKernels[perspective][static_cast<int>(colors)][static_cast<int>(TestsOf(job))];
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
