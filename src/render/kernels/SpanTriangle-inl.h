// The rows of a triangle. Included once for each instruction set.
//
// Tested by: tests/render/SpanRows.cpp (SpanRows.*), tests/render/SpanLevels.cpp (SpanLevels.*)

#if defined(ZX_RENDER_SPANTRIANGLE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANTRIANGLE_INL_H_
#undef ZX_RENDER_SPANTRIANGLE_INL_H_
#else
#define ZX_RENDER_SPANTRIANGLE_INL_H_
#endif

#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/common/QuietFloats.h>
#include <ZxCore3D/render/kernels/SpanShortRows-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

template <TTexelSource kTexels, bool kPerspective, bool kStencil>
HWY_NOINLINE HWY_ATTR void DrawRows(const TSpanJob& job, const TRowSlots& slots, const TRows& rows,
                                    std::uint64_t covered, int start, TLastPixels* last) {
  TRowFloats floats;
  const bool uses = !job.Primitive.HasConstColor() || job.Draw.UsesDepth();
  if (uses) {
    SetUpRowFloats(job, slots, rows, &floats);
  }
  for (; covered != 0; covered &= covered - 1) {
    const int lane = FirstBit(covered);
    TRow row = rows.At(lane);
    job.StartRow();
    row.Floats = &floats;
    row.HasFloats = uses && job.Meets(UnmetByFloatRow(job, floats.Ratio[lane]));
    last->Record(start + lane, DrawRow<kTexels, kPerspective, kStencil>(job, slots, row));
  }
}

template <TTexelSource kTexels>
inline constexpr TDrawRows kRowKernelsOf[2][2] = {
    {DrawRows<kTexels, false, false>, DrawRows<kTexels, false, true>},
    {DrawRows<kTexels, true, false>, DrawRows<kTexels, true, true>},
};

// By texel source; then by perspective and by the stencil test.
inline constexpr const TDrawRows (*kRowKernels[4])[2] = {
    kRowKernelsOf<TTexelSource::None>,
    kRowKernelsOf<TTexelSource::Nearest>,
    kRowKernelsOf<TTexelSource::Linear>,
    kRowKernelsOf<TTexelSource::Sampler>,
};

inline HWY_ATTR double RowParameter(const TRow& row, int x) {
  return (x - row.Begin[0]) / row.Delta[0];
}

HWY_NOINLINE HWY_ATTR void SetUpRowsAgain(const TSpanJob& job, const TRowSlots& slots,
                                          const TRowPlan& plan, int start, TRows* rows) {
  SetUpRows(job, slots, plan, start, 0, rows);
}

// Stores the result for the fragment record. Rows that were replaced meanwhile are set up again.
HWY_INLINE HWY_ATTR void RecordLastPixels(TSpanJob* job, const TRowSlots& slots,
                                          const TRowPlan& plan, const TLastPixels& last,
                                          int current, TRows* rows) {
  const auto rowOf = [&](const TLastPixel& pixel) HWY_ATTR __attribute__((always_inline)) {
    const int start = pixel.Row & -kLanes;
    if (HWY_UNLIKELY(current != start)) {
      current = start;
      SetUpRowsAgain(*job, slots, plan, start, rows);
    }
    return rows->At(pixel.Row - start);
  };
  if (last.DepthTested.Row >= 0) {
    const TRow row = rowOf(last.DepthTested);
    job->Result.DepthSet = true;
    job->Result.LastDepth = DepthAtT(*job, row, RowParameter(row, last.DepthTested.X));
  }
  if (last.Shaded.Row >= 0) {
    const TRow row = rowOf(last.Shaded);
    job->Result.ColorSet = true;
    job->Result.LastX = last.Shaded.X;
    job->Result.LastY = row.Y;
    job->Result.LastMinorEdge = last.Shaded.Row < plan.Count[0] ? 1 : 2;
    if (job->Primitive.RecordColor) {
      SetLastColor(*job, slots, row, RowParameter(row, last.Shaded.X), &job->Result);
    }
  }
}

inline void CountShortRows(const TSpanJob& job, const TRows& rows, std::uint64_t covered) {
  const bool textured = job.Primitive.Texels != TTexelSource::None;
  for (; covered != 0; covered &= covered - 1) {
    job.StartRow();
    job.Count(textured ? TKernel::JoinedRows : TKernel::ShortRows,
              PixelsOf(rows.At(FirstBit(covered))));
  }
}

HWY_INLINE HWY_ATTR void DrawPlan(TSpanJob* job, const TRowPlan& plan) {
  const int count = static_cast<int>(plan.Count[0] + plan.Count[1]);
  if (count == 0) {
    return;
  }
  const TPrimitive& primitive = job->Primitive;
  const TRowSlots slots = RowSlotsOf(*job);
  const TDrawRows drawShortRows = ChooseShortRowKernel(*job, slots);
  const int shortPixels = primitive.Texels != TTexelSource::None ? kJoinedPixels : kShortPixels;
  TRows rows;
  TLastPixels last;
  int current = -1;
  for (int start = 0; start < count; start += kLanes) {
    const TRowSets live = SetUpRows(*job, slots, plan, start, shortPixels, &rows);
    current = start;
    if (live.Crossed != 0) {
      job->Result.YSet = true;
      job->Result.Y = rows.Y[LastBit(live.Crossed)];
    }
    if (live.Short != 0) {
      if (HWY_UNLIKELY(job->Counters != nullptr)) {
        CountShortRows(*job, rows, live.Short);
      }
      drawShortRows(*job, slots, rows, live.Short, start, &last);
    }
    if (live.Long != 0) {
      kRowKernels[static_cast<int>(primitive.Texels)][primitive.Perspective ? 1 : 0]
                 [job->Draw.StencilTest ? 1 : 0](*job, slots, rows, live.Long, start, &last);
    }
  }
  RecordLastPixels(job, slots, plan, last, current, &rows);
}

HWY_ATTR void DrawTriangleJob(TSpanJob* job) {
  const TQuietFloats quiet; // lanes past the last pixel may raise any exception
  DrawPlan(job, PlanRows(*job));
}

// A triangle of a batch.
HWY_ATTR void DrawPlannedTriangle(TSpanJob* job, const TTriangleRows& rows, int shape) {
  TRowPlan plan;
  SetEdges(*job, static_cast<int>(rows.Order[shape]), &plan);
  for (int minor = 0; minor < 2; ++minor) {
    plan.First[minor] = rows.First[minor][shape];
    plan.Count[minor] = rows.Count[minor][shape];
  }
  DrawPlan(job, plan);
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
