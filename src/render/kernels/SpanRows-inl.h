// The pixels of a row, as many at a time as a vector of doubles holds: depth and stencil, colour,
// output. Included once for each instruction set.
//
// Tested by: tests/render/SpanRows.cpp (SpanRows.*), tests/render/SpanLevels.cpp (SpanLevels.*),
// tests/render/MaskedWrites.cpp (MaskedWrites.*)

#if defined(ZX_RENDER_SPANROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANROWS_INL_H_
#undef ZX_RENDER_SPANROWS_INL_H_
#else
#define ZX_RENDER_SPANROWS_INL_H_
#endif

#include <ZxCore3D/render/kernels/SpanRunColors-inl.h>

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
  std::uint64_t Tested;
  std::uint64_t Shaded;
};

// The tests of a draw: none; a depth test that writes, by a function known here; or as its state
// says, without the stencil test or with it.
enum class TTests : std::uint8_t { None, Less, LessOrEqual, Any, AnyWithStencil };

// The stages of a run for one group of pixels at t, of which the first `count` exist; `colors` are
// asked for where a pixel passes.
template <TTests kTests, class TRowOfGroup, class TColors>
HWY_INLINE HWY_ATTR TGroupResult DrawGroupBy(const TSpanJob& job, const TRowOfGroup& row, VD t,
                                             int count, const TGroupTargets& to,
                                             const TColors& colors) {
  constexpr bool kAny = kTests == TTests::Any || kTests == TTests::AnyWithStencil;
  const DU du;
  const DF df;
  const std::uint64_t live = FirstBits(count);
  std::uint64_t tested = live;
  TGroupStencils stencil;
  if constexpr (kTests == TTests::AnyWithStencil) {
    LoadStencils(to.Stencil, count, &stencil);
    tested &= StencilBits(job, stencil);
  }
  MI pass = kTests == TTests::AnyWithStencil ? MaskOfBits(DI(), tested)
                                             : hn::FirstN(DI(), static_cast<std::size_t>(count));
  const auto store = [&](auto d, auto values, auto* at)
                         HWY_ATTR { StoreSteadily(d, values, hn::RebindMask(d, pass), at); };
  if (kAny ? job.Draw.UsesDepth() : kTests != TTests::None) {
    VF depth = hn::DemoteTo(df, Interpolated<false>(row, 2, t, t));
    if (kAny && job.Primitive.AddOffset) {
      depth = hn::Add(depth, hn::Set(df, job.Draw.Offset));
    }
    if (!kAny || job.Draw.DepthTest) {
      const TCompare func = kTests == TTests::Less          ? TCompare::Less
                            : kTests == TTests::LessOrEqual ? TCompare::LessEqual
                                                            : job.Draw.DepthFunc;
      const auto passes =
          DepthMask(df, func, depth, LoadMasked(df, hn::RebindMask(df, pass), to.Depth));
      pass = hn::And(pass, hn::RebindMask(DI(), passes));
    }
    if (!kAny || job.Draw.DepthWrite) {
      store(df, depth, to.Depth);
    }
  }
  const std::uint64_t shaded = kTests == TTests::None ? live : BitsOfMask(DI(), pass);
  if constexpr (kTests == TTests::AnyWithStencil) {
    StepStencils(job, count, tested, shaded, &stencil, to.Stencil);
  }
  if ((kTests != TTests::None && shaded == 0) || (kAny && job.Draw.ColorMask == 0)) {
    return {tested, shaded};
  }
  VU packed = colors();
  if (kAny && job.Draw.ReadsColor()) {
    packed = OutputColors(du, job.Draw, packed, LoadMasked(du, hn::RebindMask(du, pass), to.Color));
  }
  store(du, packed, to.Color);
  return {tested, shaded};
}

// The same in any state.
template <TTexelSource kTexels, bool kPerspective, bool kStencil, class TRowOfGroup>
HWY_INLINE HWY_ATTR TGroupResult DrawGroup(const TSpanJob& job, const TRowSlots& slots,
                                           const TRowOfGroup& row, VD t, int count,
                                           const TGroupTargets& to) {
  return DrawGroupBy < kStencil ? TTests::AnyWithStencil
                                : TTests::Any > (job, row, t, count, to, [&]() HWY_ATTR {
                                    return ExactColors<kTexels, kPerspective>(job, slots, row, t);
                                  });
}

// The last pixels in drawing order that passed the stencil test and that passed all tests: columns
// of a row, or numbers of a line's pixels; -1 if none did.
struct TRowResult {
  int LastDepthTested = -1;
  int LastShaded = -1;
};

// A pixel by its row or line, in drawing order, and its place there; -1 for no pixel.
struct TLastPixel {
  int Row = -1;
  int X = 0;
};

// The last pixels in drawing order, which the fragment record describes.
struct TLastPixels {
  TLastPixel DepthTested;
  TLastPixel Shaded;

  // A later row may have been recorded before: short ones are drawn first.
  HWY_INLINE void Record(int row, const TRowResult& drawn) {
    if (drawn.LastDepthTested >= 0 && row > DepthTested.Row) {
      DepthTested = {row, drawn.LastDepthTested};
    }
    if (drawn.LastShaded >= 0 && row > Shaded.Row) {
      Shaded = {row, drawn.LastShaded};
    }
  }
};

HWY_INLINE void RecordGroup(TGroupResult group, int x, TRowResult* row) {
  if (group.Tested != 0) {
    row->LastDepthTested = x + LastBit(group.Tested);
  }
  if (group.Shaded != 0) {
    row->LastShaded = x + LastBit(group.Shaded);
  }
}

// A run of pixels that lie anywhere, or of which only the first exist, in copies of whole vectors:
// nothing outside a row, or beside a line, is touched.
struct TStagedRun {
  HWY_ALIGN double T[kRun];
  HWY_ALIGN std::uint32_t Color[kRun];
  HWY_ALIGN float Depth[kRun];
  HWY_ALIGN unsigned char Stencil[kRun];
};

template <class TRowOfGroup>
inline HWY_ATTR float DepthAtT(const TSpanJob& job, const TRowOfGroup& row, double t) {
  auto depth = static_cast<float>(row.Delta[2] * t + row.Begin[2]);
  if (job.Primitive.AddOffset) {
    depth += job.Draw.Offset;
  }
  return depth;
}

// --- Rows that are a fill

inline HWY_ATTR TCondition UnmetByFill(const TSpanJob& job, const TRow& row) {
  const TDrawState& draw = job.Draw;
  const TPrimitive& primitive = job.Primitive;
  ZX_RETURN_FIRST_UNMET(ZX_FILL_CONDITIONS);
}

inline HWY_ATTR void FillRow(const TSpanJob& job, const TRow& row, const TGroupTargets& to) {
  static_assert(hn::MaxLanes(DFU()) <= kShortPixels && hn::MaxLanes(DFF()) <= kShortPixels,
                "a row that is not short fills a vector");
  const auto count = static_cast<std::size_t>(row.Last - row.First + 1);
  Fill(hn::ScalableTag<std::uint32_t>(), job.Primitive.ConstColor, to.Color, count);
  if (job.Draw.DepthWrite) {
    Fill(hn::ScalableTag<float>(), DepthAtT(job, row, 0.0), to.Depth, count);
  }
}

// --- Runs that fail the depth test as a whole

inline HWY_ATTR TCondition UnmetByRejection(const TSpanJob& job) {
  const TDrawState& draw = job.Draw;
  ZX_RETURN_FIRST_UNMET(ZX_REJECTION_CONDITIONS);
}

// Whether no pixel of a run passes. Depth is monotone along a row, as t, the product, the sum, the
// rounding to float and the offset are: what the end that comes nearest to passing fails against,
// all fail against.
HWY_INLINE HWY_ATTR bool WholeRunFails(const TSpanJob& job, const TRow& row, int x, int count,
                                       const float* stored) {
  const DFF d;
  const float a = DepthAtT(job, row, (x - row.Begin[0]) / row.Delta[0]);
  const float b = DepthAtT(job, row, (x + count - 1 - row.Begin[0]) / row.Delta[0]);
  if (!(a <= b || b <= a)) {
    return false;
  }
  const TCompare func = job.Draw.DepthFunc;
  const auto best = hn::Set(d, (a < b) == IsLessOrLessEqual(func) ? a : b);
  for (int i = 0; i < count; i += kFloatLanes) {
    const auto live = hn::FirstN(d, static_cast<std::size_t>(count - i));
    const auto passes = DepthMask(d, func, best, LoadMasked(d, live, stored + i));
    if (!hn::AllFalse(d, hn::And(live, passes))) {
      return false;
    }
  }
  return true;
}

// --- Rows

// Whether the colours of a run need t in float alone; constant ones do not need it at all.
template <TTexelSource kTexels>
HWY_INLINE HWY_ATTR TCondition UnmetByFloatRun(const TSpanJob& job, const TRow& row) {
  const TPrimitive& primitive = job.Primitive;
  ZX_RETURN_FIRST_UNMET(ZX_FLOAT_RUN_CONDITIONS);
}

// Tests a run of pixels and writes their stencils. `drawDepths` tells which of those that passed
// the stencil test pass the depth test.
template <bool kStencil, class TDrawDepths>
HWY_INLINE HWY_ATTR TGroupResult TestRun(const TSpanJob& job, int count, unsigned char* stencils,
                                         const TDrawDepths& drawDepths) {
  const std::uint64_t live = FirstBits(count);
  if constexpr (!kStencil) {
    return {live, drawDepths(live)};
  }
  TStencils<kRun> stencil;
  LoadStencils(stencils, count, &stencil);
  const std::uint64_t tested = live & StencilBits(job, stencil);
  const std::uint64_t shaded = tested != 0 ? drawDepths(tested) : 0;
  StepStencils(job, count, tested, shaded, &stencil, stencils);
  return {tested, shaded};
}

template <TTexelSource kTexels, bool kPerspective, bool kStencil>
HWY_INLINE HWY_ATTR void DrawRun(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                 int x, int count, const TGroupTargets& to, TRowResult* result) {
  const bool inFloat = HasByteTexels(kTexels) && row.HasFloats;
  TRunValues values;
  values.IsFloat = job.Meets(UnmetByFloatRun<kTexels>(job, row));
  values.IsNear = values.IsFloat || (inFloat && *job.ExactRuns <= 0);
  job.Count(values.IsFloat ? TKernel::FloatRuns
            : inFloat      ? TKernel::TextureRuns
                           : TKernel::ExactRuns,
            count);
  const auto drawDepths = [&](std::uint64_t tested) HWY_ATTR {
    SetRunValues(job, row, x, count, &values);
    return job.Draw.UsesDepth() ? DrawDepths(job, count, values.Depth, tested, to.Depth) : tested;
  };
  const TGroupResult drawn = TestRun<kStencil>(job, count, to.Stencil, drawDepths);
  RecordGroup(drawn, x, result);
  if (drawn.Shaded != 0 && job.Draw.ColorMask != 0) {
    DrawColors<kTexels, kPerspective>(job, slots, row, x, count, &values, drawn.Shaded, to.Color);
  }
}

HWY_INLINE HWY_ATTR TGroupTargets TargetsAt(const TSpanJob& job, int x, int y) {
  return {job.Draw.Color.At<std::uint32_t>(x, y), job.Draw.Depth.At<float>(x, y),
          job.Draw.Stencil.At<unsigned char>(x, y)};
}

template <TTexelSource kTexels, bool kPerspective, bool kStencil>
HWY_INLINE HWY_ATTR TRowResult DrawRow(const TSpanJob& job, const TRowSlots& slots,
                                       const TRow& row) {
  const int pixels = PixelsOf(row);
  if (kTexels == TTexelSource::None && job.Meets(UnmetByFill(job, row))) {
    job.Count(TKernel::Fill, pixels);
    FillRow(job, row, TargetsAt(job, row.First, row.Y));
    return {row.Last, row.Last};
  }
  TRowResult result;
  const bool mayRejectRuns = job.Meets(UnmetByRejection(job));
  bool rejects =
      mayRejectRuns; // as long as none passes: a run seldom fails after one that does not
  for (int x = row.First; x <= row.Last; x += kRun) {
    const TGroupTargets to = TargetsAt(job, x, row.Y);
    const int count = row.Last - x + 1 < kRun ? row.Last - x + 1 : kRun;
    if (rejects && WholeRunFails(job, row, x, count, to.Depth)) {
      job.Count(TKernel::Rejection, count);
      const auto none = [](std::uint64_t) { return std::uint64_t{0}; };
      RecordGroup(TestRun<kStencil>(job, count, to.Stencil, none), x, &result);
      continue;
    }
    DrawRun<kTexels, kPerspective, kStencil>(job, slots, row, x, count, to, &result);
    rejects = mayRejectRuns && result.LastShaded < x;
  }
  return result;
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
