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

#include <ZxCore3D/render/kernels/SpanRows-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// The pixels `First` to `Last` that a line covers in a row. Of a leftward line the last in drawing
// order is the first in the row.
struct TLineRun {
  int Y;
  int First;
  int Last;
  bool Leftward;
};

HWY_INLINE HWY_ATTR VD LineParameter(const TRow& row, int axis, VD at) {
  const DD d;
  const VD zero = hn::Zero(d);
  const VD one = hn::Set(d, 1.0);
  VD t = hn::Div(hn::Sub(at, hn::Set(d, row.Begin[axis])), hn::Set(d, row.Delta[axis]));
  t = hn::IfThenElse(hn::Lt(t, zero), zero, t);
  return hn::IfThenElse(hn::Gt(t, one), one, t);
}

inline HWY_ATTR double LineParameter(const TRow& row, int axis, int at) {
  const double t = (at - row.Begin[axis]) / row.Delta[axis];
  return t < 0.0 ? 0.0 : t > 1.0 ? 1.0 : t;
}

// The results are columns.
HWY_INLINE void RecordRunGroup(TGroupResult group, int x, bool leftward, TRowResult* result) {
  if (!leftward) {
    RecordGroup(group, x, result);
    return;
  }
  if (group.Tested != 0 && result->LastDepthTested < 0) {
    result->LastDepthTested = x + FirstBit(group.Tested);
  }
  if (group.Shaded != 0 && result->LastShaded < 0) {
    result->LastShaded = x + FirstBit(group.Shaded);
  }
}

// Draws a run as a row is drawn; the results are columns.
template <TTexelSource kTexels, bool kPerspective, bool kStencil>
HWY_NOINLINE HWY_ATTR TRowResult DrawLineRun(const TSpanJob& job, const TRowSlots& slots,
                                             const TRow& row, const TLineRun& run) {
  const DD d;
  const auto targetsAt = [&](int x) { return TargetsAt(job, x, run.Y); };
  if (kTexels == TTexelSource::None && !job.Draw.DepthWrite &&
      UnmetByFill(job, row) == TCondition::None) {
    Fill(hn::ScalableTag<std::uint32_t>(), job.Primitive.ConstColor, targetsAt(run.First).Color,
         static_cast<std::size_t>(run.Last - run.First + 1));
    const int last = run.Leftward ? run.First : run.Last;
    return {last, last};
  }
  TRowResult result = {-1, -1};
  int x = run.First;
  for (; x + kLanes - 1 <= run.Last; x += kLanes) {
    const VD t = LineParameter(row, 0, hn::Iota(d, static_cast<double>(x)));
    RecordRunGroup(
        DrawGroup<kTexels, kPerspective, kStencil>(job, slots, row, t, kLanes, targetsAt(x)), x,
        run.Leftward, &result);
  }
  if (x > run.Last) {
    return result;
  }
  const VD t = LineParameter(row, 0, hn::Iota(d, static_cast<double>(x)));
  RecordRunGroup(DrawGroup<kTexels, kPerspective, kStencil>(job, slots, row, t, run.Last - x + 1,
                                                            targetsAt(x)),
                 x, run.Leftward, &result);
  return result;
}

// The pixels of a walk in one target: their distances, in bytes, along both axes.
template <class T> struct TScatteredPixels {
  unsigned char* First;
  std::ptrdiff_t Along;
  std::ptrdiff_t Aside;

  TScatteredPixels(const TTargetRows& rows, const TLineWalk& walk)
      : First(reinterpret_cast<unsigned char*>(rows.At<T>(walk.From[0], walk.From[1]))) {
    const std::ptrdiff_t step[2] = {walk.Step[0] * static_cast<std::ptrdiff_t>(sizeof(T)),
                                    walk.Step[1] * rows.Stride};
    Along = step[walk.Axis];
    Aside = step[1 - walk.Axis];
  }
  T* At(int along, int aside) const {
    return reinterpret_cast<T*>(First + along * Along + aside * Aside);
  }
};

// Draws scattered pixels, no two at one place, through staging copies; the results are numbers of
// pixels along the line.
template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TRowResult DrawScattered(const TSpanJob& job, const TRowSlots& slots,
                                               const TRow& row, const TLineWalk& walk) {
  const DD d;
  const DI di;
  const VD twiceMinor = hn::Set(d, static_cast<double>(2 * walk.Minor));
  const VD begin = hn::Set(d, walk.StepsBegin());
  const VD scale = hn::Set(d, walk.StepsScale());
  const TScatteredPixels<std::uint32_t> color(job.Draw.Color, walk);
  const TScatteredPixels<float> depth(job.Draw.Depth, walk);
  const TScatteredPixels<unsigned char> stencil(job.Draw.Stencil, walk);
  const bool usesT =
      kTexels != TTexelSource::None || !job.Primitive.HasConstColor() || job.Draw.UsesDepth();
  TStagedRun run;
  HWY_ALIGN std::int32_t aside[kRun];
  TRowResult result = {-1, -1};
  for (int first = walk.First; first <= walk.Last; first += kRun) {
    const int count = walk.Last - first + 1 < kRun ? walk.Last - first + 1 : kRun;
    for (int k = 0; k < count; k += kLanes) {
      const VD i = hn::Iota(d, static_cast<double>(first + k));
      const VD steps =
          hn::Floor(hn::Mul(hn::Add(hn::Mul(twiceMinor, i), begin), scale)); // as MinorStepsAt
      hn::Store(hn::DemoteTo(di, steps), di, aside + k);
      VD t = hn::Zero(d);
      if (usesT) {
        const VD along = hn::Add(hn::Set(d, static_cast<double>(walk.From[walk.Axis])),
                                 hn::Mul(hn::Set(d, static_cast<double>(walk.Step[walk.Axis])), i));
        t = LineParameter(row, walk.Axis, along);
      }
      hn::Store(t, d, run.T + k);
    }
    const auto targetsAt = [&](int k) HWY_ATTR {
      return TGroupTargets{color.At(first + k, aside[k]), depth.At(first + k, aside[k]),
                           stencil.At(first + k, aside[k])};
    };
    RecordGroup(DrawStagedPixels<kTexels, kPerspective>(job, slots, row, count, targetsAt, &run),
                first, &result);
  }
  return result;
}

inline HWY_ATTR TCondition UnmetByLineRuns(const TLineWalk& walk) {
  ZX_RETURN_FIRST_UNMET(ZX_LINE_RUN_CONDITIONS);
}

// The results are numbers of pixels along the line.
template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TRowResult DrawWalk(const TSpanJob& job, const TRowSlots& slots,
                                          const TRow& row, const TLineWalk& walk) {
  const bool byRuns = job.Meets(UnmetByLineRuns(walk));
  job.Count(byRuns ? TKernel::LineRuns : TKernel::ScatteredPixels, walk.Last - walk.First + 1);
  if (!byRuns) {
    return DrawScattered<kTexels, kPerspective>(job, slots, row, walk);
  }
  TRowResult result = {-1, -1};
  const bool leftward = walk.Step[0] < 0;
  for (int first = walk.First; first <= walk.Last;) {
    const long long k = walk.MinorStepsAt(first);
    int last = walk.Last;
    if (walk.Minor != 0) {
      last = static_cast<int>(std::min<long long>(last, walk.FirstAtMinorStep(k + 1) - 1));
    }
    const int a = walk.From[0] + walk.Step[0] * first;
    const int b = walk.From[0] + walk.Step[0] * last;
    const TLineRun run = {walk.From[1] + walk.Step[1] * static_cast<int>(k), leftward ? b : a,
                          leftward ? a : b, leftward};
    const TRowResult drawn = job.Draw.StencilTest
                                 ? DrawLineRun<kTexels, kPerspective, true>(job, slots, row, run)
                                 : DrawLineRun<kTexels, kPerspective, false>(job, slots, row, run);
    if (drawn.LastDepthTested >= 0) {
      result.LastDepthTested = (drawn.LastDepthTested - walk.From[0]) * walk.Step[0];
    }
    if (drawn.LastShaded >= 0) {
      result.LastShaded = (drawn.LastShaded - walk.From[0]) * walk.Step[0];
    }
    first = last + 1;
  }
  return result;
}

using TDrawWalk = TRowResult (*)(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                 const TLineWalk& walk);

inline constexpr TDrawWalk kLineKernels[4][2] = {
    {DrawWalk<TTexelSource::None, false>, DrawWalk<TTexelSource::None, true>},
    {DrawWalk<TTexelSource::Nearest, false>, DrawWalk<TTexelSource::Nearest, true>},
    {DrawWalk<TTexelSource::Linear, false>, DrawWalk<TTexelSource::Linear, true>},
    {DrawWalk<TTexelSource::Sampler, false>, DrawWalk<TTexelSource::Sampler, true>},
};

// A line between vertices 0 and 1 of the job.
inline HWY_ATTR void DrawLineJob(TSpanJob* job, const TLineWalk& walk) {
  const TRowSlots slots = RowSlotsOf(*job);
  TRows rows;
  for (int s = 0; s < slots.Count; ++s) {
    const double* const begin = &job->Primitive.Vertex[0][slots.Source[s]].x;
    const double* const end = &job->Primitive.Vertex[1][slots.Source[s]].x;
    for (int i = 0; i < 4; ++i) {
      rows.Begin[4 * s + i][0] = begin[i];
      rows.Delta[4 * s + i][0] = end[i] - begin[i];
    }
  }
  const TRow row = {{&rows.Begin[0][0]}, {&rows.Delta[0][0]}, 0, 0, 0, nullptr};
  const TRowResult result =
      kLineKernels[static_cast<int>(job->Primitive.Texels)][job->Primitive.Perspective ? 1 : 0](
          *job, slots, row, walk);
  const auto partAt = [&](int i) {
    return LineParameter(row, walk.Axis, walk.From[walk.Axis] + walk.Step[walk.Axis] * i);
  };
  if (result.LastDepthTested >= 0) {
    job->Result.DepthSet = true;
    job->Result.LastDepth = DepthAtT(*job, row, partAt(result.LastDepthTested));
  }
  if (result.LastShaded >= 0) {
    job->Result.ColorSet = true;
    walk.At(result.LastShaded, &job->Result.LastX, &job->Result.LastY);
    job->Result.LastT = partAt(result.LastShaded);
    job->Result.LastColor = ColorAt(*job, slots, row, job->Result.LastT);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
