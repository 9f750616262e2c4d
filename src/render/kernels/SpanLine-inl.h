// The pixels of a line: runs along a row are drawn as rows are, all others through staging copies.
// Included once for each instruction set.
//
// Tested by: tests/render/VertexBatches.cpp (LineWalks.*), tests/render/SpanLevels.cpp
// (SpanLevels.*)

#if defined(ZX_RENDER_SPANLINE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANLINE_INL_H_
#undef ZX_RENDER_SPANLINE_INL_H_
#else
#define ZX_RENDER_SPANLINE_INL_H_
#endif

#include <algorithm>
#include <bit>

#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/common/Pairs.h>
#include <ZxCore3D/render/common/QuietFloats.h>
#include <ZxCore3D/render/kernels/SpanRows-inl.h>
#include <ZxCore3D/render/stages/LineWalk.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// The values of a line's begin, or their differences, slot by slot.
struct TLineComponents {
  const double* At;
  // Each by itself: a load of four would wait for the stores of both pairs to reach memory.
  double operator[](int place) const { return static_cast<const volatile double*>(At)[place]; }
};

HWY_INLINE HWY_ATTR VD ValuesOf(const TLineComponents& components, int place) {
  return hn::Set(DD(), components.At[place]);
}

// What a row is to a group of its pixels, for those of a line.
struct TLineRow {
  TLineComponents Begin;
  TLineComponents Delta;
};

// The pixels of a run of a line in one target. Offsets within a target, in bytes, are below 2^47:
// as doubles they are exact, and plus `kSignedWholeDoubles` they stand in the low bits.
template <class T> class TLinePixels {
public:
  TLinePixels(const TTargetRows& rows, const TLineWalk& walk) {
    int x;
    int y;
    walk.At(walk.First, &x, &y);
    m_First = reinterpret_cast<std::uintptr_t>(rows.At<T>(x, y)) -
              std::bit_cast<std::uint64_t>(kSignedWholeDoubles);
    const double step[2] = {static_cast<double>(walk.Step[0]) * sizeof(T),
                            static_cast<double>(walk.Step[1] * rows.Stride)};
    m_Along = step[walk.Axis];
    m_Aside = step[1 - walk.Axis];
  }
  // Finds the pixels from number k on, so many steps from the line's first along both axes.
  HWY_INLINE HWY_ATTR void Find(int k, VD along, VD aside) {
    const DD d;
    const VD offset =
        hn::Add(hn::Mul(hn::Set(d, m_Along), along), hn::Mul(hn::Set(d, m_Aside), aside));
    hn::Store(hn::Add(offset, hn::Set(d, kSignedWholeDoubles)), d, m_Offsets + k);
  }
  T* At(int k) const {
    return reinterpret_cast<T*>(m_First + std::bit_cast<std::uint64_t>(m_Offsets[k]));
  }
  // Copies the first `count`, or a set of them, from or to a run.
  HWY_INLINE void Read(int count, T* to) const {
    for (int k = 0; k < count; ++k) {
      to[k] = *At(k);
    }
  }
  HWY_INLINE void Write(const T* from, std::uint64_t pixels, int count) const {
    ForPixels(pixels, count, [&](int k) { *At(k) = from[k]; });
  }

private:
  std::uintptr_t m_First; ///< sums wrap
  double m_Along;
  double m_Aside;
  HWY_ALIGN double m_Offsets[kRun];
};

// A walk as doubles, for vectors of pixels by their numbers.
struct TLineSteps {
  double First;
  double FirstAside;
  double TwiceMinor;
  double StepsBegin;
  double StepsScale;
  double From;
  double Step;
  double Begin;
  double Delta;

  HWY_INLINE HWY_ATTR explicit TLineSteps(const TLineWalk& walk)
      : First(walk.First),
        FirstAside(walk.First == 0 ? 0.0 : static_cast<double>(walk.MinorStepsAt(walk.First))),
        TwiceMinor(static_cast<double>(2 * walk.Minor)), StepsBegin(walk.StepsBegin()),
        StepsScale(walk.StepsScale()), From(walk.From[walk.Axis]), Step(walk.Step[walk.Axis]),
        Begin(walk.Begin), Delta(walk.Delta) {}

  // How many steps they lie from the first one that is drawn along either axis.
  HWY_INLINE HWY_ATTR VD Along(VD i) const { return hn::Sub(i, hn::Set(DD(), First)); }
  HWY_INLINE HWY_ATTR VD Aside(VD i) const { // as MinorStepsAt
    const DD d;
    const VD n = hn::Add(hn::Mul(hn::Set(d, TwiceMinor), i), hn::Set(d, StepsBegin));
    return hn::Sub(hn::Floor(hn::Mul(n, hn::Set(d, StepsScale))), hn::Set(d, FirstAside));
  }
  HWY_INLINE HWY_ATTR VD T(VD i) const {
    const DD d;
    const VD zero = hn::Zero(d);
    const VD one = hn::Set(d, 1.0);
    const VD at = hn::Add(hn::Set(d, From), hn::Mul(hn::Set(d, Step), i));
    VD t = hn::Div(hn::Sub(at, hn::Set(d, Begin)), hn::Set(d, Delta));
    t = hn::IfThenElse(hn::Lt(t, zero), zero, t);
    return hn::IfThenElse(hn::Gt(t, one), one, t);
  }
};

inline HWY_ATTR TCondition UnmetByLineRuns(const TLineWalk& walk) {
  ZX_RETURN_FIRST_UNMET(ZX_LINE_RUN_CONDITIONS);
}

// Draws pixels that are only written.
template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TRowResult DrawPlainWalk(const TSpanJob& job, const TRowSlots& slots,
                                               const TLineRow& row, const TLineWalk& walk) {
  const DD d;
  const DU du;
  const TLineSteps steps(walk);
  TLinePixels<std::uint32_t> color(job.Draw.Color, walk);
  // The commonest case, with a mask that is known here; other constant channels find their byte.
  const bool isOpaque = kTexels == TTexelSource::None && slots.Secondary < 0 &&
                        (job.Primitive.ConstMask & kAlphaOnly) != 0 &&
                        !job.Primitive.HasConstColor();
  HWY_ALIGN std::uint32_t packed[kLanes];
  for (int first = walk.First; first <= walk.Last; first += kLanes) {
    const int count = std::min(walk.Last - first + 1, kLanes);
    const VD i = Columns(d, first);
    color.Find(0, steps.Along(i), steps.Aside(i));
    const VD t = steps.T(i);
    const VU colors = isOpaque ? ExactUntextured<kPerspective>(job, row, slots.Color, -1,
                                                               kAlphaOnly, job.Primitive.Clamp, t)
                               : ExactColors<kTexels, kPerspective>(job, slots, row, t);
    hn::Store(colors, du, packed);
    for (int k = 0; k < count; ++k) {
      *color.At(k) = packed[k];
    }
  }
  return {walk.Last, walk.Last};
}

// Draws the pixels from number `first` to `last`, which lie in one row, as a row is drawn: by
// groups in drawing order, each from left to right. The results are numbers of pixels along the
// line.
template <TTexelSource kTexels, bool kPerspective, bool kStencil>
HWY_NOINLINE HWY_ATTR void DrawLineRun(const TSpanJob& job, const TRowSlots& slots,
                                       const TLineRow& row, const TLineWalk& walk, int first,
                                       int last, TRowResult* result) {
  const DD d;
  const TLineSteps steps(walk);
  const bool leftward = walk.Step[0] < 0;
  int x;
  int y;
  walk.At(first, &x, &y);
  for (int i = first; i <= last; i += kLanes) {
    const int count = std::min(last - i + 1, kLanes);
    const int left = walk.From[0] + walk.Step[0] * (leftward ? i + count - 1 : i);
    const VD numbers = hn::Mul(Columns(d, left - walk.From[0]), hn::Set(d, steps.Step));
    const TGroupResult drawn = DrawGroup<kTexels, kPerspective, kStencil>(
        job, slots, row, steps.T(numbers), count, TargetsAt(job, left, y));
    const auto lastOf = [&](std::uint64_t bits) {
      return i + (leftward ? count - 1 - FirstBit(bits) : LastBit(bits));
    };
    if (drawn.Tested != 0) {
      result->LastDepthTested = lastOf(drawn.Tested);
    }
    if (drawn.Shaded != 0) {
      result->LastShaded = lastOf(drawn.Shaded);
    }
  }
}

// Draws scattered pixels, no two at one place, through staging copies. Only what takes part is
// read, and all of a run before the first test: scattered loads are long waited for, and those
// behind a branch that is foretold wrong are begun again.
template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TRowResult DrawScattered(const TSpanJob& job, const TRowSlots& slots,
                                               const TLineRow& row, const TLineWalk& walk) {
  const DD d;
  const TDrawState& draw = job.Draw;
  const TLineSteps steps(walk);
  TLinePixels<std::uint32_t> color(draw.Color, walk);
  TLinePixels<float> depth(draw.Depth, walk);
  TLinePixels<unsigned char> stencil(draw.Stencil, walk);
  TStagedRun run;
  TRowResult result;
  for (int first = walk.First; first <= walk.Last; first += kRun) {
    const int count = std::min(walk.Last - first + 1, kRun);
    for (int k = 0; k < count; k += kLanes) {
      const VD i = Columns(d, first + k);
      const VD along = steps.Along(i);
      const VD aside = steps.Aside(i);
      color.Find(k, along, aside);
      if (draw.UsesDepth()) {
        depth.Find(k, along, aside);
      }
      if (draw.StencilTest) {
        stencil.Find(k, along, aside);
      }
      hn::Store(steps.T(i), d, run.T + k);
    }
    if (draw.DepthTest) {
      depth.Read(count, run.Depth);
    }
    if (draw.ReadsColor()) {
      color.Read(count, run.Color);
    }
    if (draw.StencilTest) {
      stencil.Read(count, run.Stencil);
    }
    TGroupResult drawn = {0, 0};
    for (int k = 0; k < count; k += kLanes) {
      const VD t = hn::Load(d, run.T + k);
      const int next = std::min(count - k, kLanes);
      const TGroupTargets to = {run.Color + k, run.Depth + k, run.Stencil + k};
      const TGroupResult group =
          draw.StencilTest ? DrawGroup<kTexels, kPerspective, true>(job, slots, row, t, next, to)
                           : DrawGroup<kTexels, kPerspective, false>(job, slots, row, t, next, to);
      drawn.Tested |= group.Tested << k;
      drawn.Shaded |= group.Shaded << k;
    }
    if (draw.ColorMask != 0) {
      color.Write(run.Color, drawn.Shaded, count);
    }
    if (draw.DepthWrite) {
      depth.Write(run.Depth, drawn.Shaded, count);
    }
    if (draw.StencilTest) {
      stencil.Write(run.Stencil, SteppedPixels(job, FirstBits(count), drawn.Tested, drawn.Shaded),
                    count);
    }
    RecordGroup(drawn, first, &result);
  }
  return result;
}

// The results are numbers of pixels along the line.
template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TRowResult DrawWalk(const TSpanJob& job, const TRowSlots& slots,
                                          const TLineRow& row, const TLineWalk& walk) {
  const bool isPlain = job.Draw.IsPlain();
  const bool byRuns = !isPlain && job.Meets(UnmetByLineRuns(walk));
  job.Count(byRuns ? TKernel::LineRuns : TKernel::ScatteredPixels, walk.Last - walk.First + 1);
  if (isPlain) {
    return DrawPlainWalk<kTexels, kPerspective>(job, slots, row, walk);
  }
  if (!byRuns) {
    return DrawScattered<kTexels, kPerspective>(job, slots, row, walk);
  }
  TRowResult result;
  for (int first = walk.First, last = 0; first <= walk.Last; first = last + 1) {
    last = walk.LastAsideWith(first);
    const auto draw = job.Draw.StencilTest ? DrawLineRun<kTexels, kPerspective, true>
                                           : DrawLineRun<kTexels, kPerspective, false>;
    draw(job, slots, row, walk, first, last, &result);
  }
  return result;
}

using TDrawWalk = TRowResult (*)(const TSpanJob& job, const TRowSlots& slots, const TLineRow& row,
                                 const TLineWalk& walk);

inline constexpr TDrawWalk kLineKernels[4][2] = {
    {DrawWalk<TTexelSource::None, false>, DrawWalk<TTexelSource::None, true>},
    {DrawWalk<TTexelSource::Nearest, false>, DrawWalk<TTexelSource::Nearest, true>},
    {DrawWalk<TTexelSource::Linear, false>, DrawWalk<TTexelSource::Linear, true>},
    {DrawWalk<TTexelSource::Sampler, false>, DrawWalk<TTexelSource::Sampler, true>},
};

// A line between vertices 0 and 1 of the job.
class TLineValues {
public:
  HWY_INLINE HWY_ATTR void Set(const TPrimitive& primitive) {
    const auto placeOf = [](int slot) { return slot >= 0 ? 4 * slot : -1; };
    Slots = {placeOf(primitive.ColorSlot), placeOf(primitive.SecondarySlot),
             placeOf(primitive.TexSlot)};
    const double* const begin = &primitive.Vertex[0][0].x;
    const double* const end = &primitive.Vertex[1][0].x;
    const hn::CappedTag<double, 2> d; // as they were stored
    for (const int place : {0, Slots.Color, Slots.Secondary, Slots.Tex}) {
      for (int i = place; i >= 0 && i < place + 4; i += 2) {
        hn::Store(hn::Sub(hn::LoadU(d, end + i), hn::LoadU(d, begin + i)), d, m_Delta + i);
      }
    }
    Row = {{begin}, {m_Delta}};
  }

  TRowSlots Slots;
  TLineRow Row;

private:
  HWY_ALIGN double m_Delta[4 * kSlots];
};

inline HWY_ATTR void DrawLines(TSpanJob* job, const TPrimitive* lines, const TLineWalk* walks,
                               int count) {
  const TQuietFloats quiet; // as for a triangle
  TPrimitive& primitive = job->Primitive;
  TLineValues values;
  TLastPixels last;
  const auto take = [&](int i) HWY_ATTR {
    if (lines + i != &primitive) { // as a whole, it would be copied by an instruction to wait for
      static_cast<TPrimitiveValues&>(primitive) = lines[i];
      primitive.Vertex[0] = lines[i].Vertex[0];
      primitive.Vertex[1] = lines[i].Vertex[1];
    }
    values.Set(primitive);
  };
  for (int i = 0; i < count; ++i) {
    job->StartPrimitive();
    take(i);
    last.Record(i, kLineKernels[static_cast<int>(primitive.Texels)][primitive.Perspective ? 1 : 0](
                       *job, values.Slots, values.Row, walks[i]));
  }
  if (const TLastPixel tested = last.DepthTested; tested.Row >= 0) {
    take(tested.Row);
    job->Result.DepthSet = true;
    job->Result.LastDepth = DepthAtT(*job, values.Row, walks[tested.Row].ParameterAt(tested.X));
  }
  if (const TLastPixel shaded = last.Shaded; shaded.Row >= 0) {
    const TLineWalk& walk = walks[shaded.Row];
    take(shaded.Row);
    TSpanResult& result = job->Result;
    result.ColorSet = result.YSet = true;
    result.LastMinorEdge = 0;
    walk.At(shaded.X, &result.LastX, &result.LastY);
    result.Y = result.LastY;
    result.LastT = walk.ParameterAt(shaded.X);
    if (primitive.RecordColor) {
      SetLastColor(*job, values.Slots, values.Row, result.LastT, &result);
    }
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
