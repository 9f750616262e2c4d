// The rows of a triangle. Included once for each instruction set.

#if defined(ZX_RENDER_SPANTRIANGLE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANTRIANGLE_INL_H_
#undef ZX_RENDER_SPANTRIANGLE_INL_H_
#else
#define ZX_RENDER_SPANTRIANGLE_INL_H_
#endif

#include <hwy/highway.h>

#include "SpanPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// The rows that matter after the triangle: those of the last pixels that left something in the
// fragment record. Three records are enough to keep both while the next row is filled.
struct TRowKeeper {
  TRow Rows[3];
  int Current = 0;
  int DepthRow = -1;
  int DepthX = 0;
  int ColorRow = -1;
  int ColorX = 0;

  void Note(const TRowResult& result) {
    if (result.LastStencil >= 0) {
      DepthRow = Current;
      DepthX = result.LastStencil;
    }
    if (result.LastShaded >= 0) {
      ColorRow = Current;
      ColorX = result.LastShaded;
    }
    while (Current == DepthRow || Current == ColorRow) {
      Current = (Current + 1) % 3;
    }
  }
};

inline HWY_ATTR double RowT(const TRow& row, int x) { return (x - row.Begin[0]) / row.Delta[0]; }

using TDrawRow = TRowResult (*)(const TSpanJob& job, const TRowSlots& slots, const TRow& row);

// By where texels come from, then by perspective.
inline constexpr TDrawRow kRowWays[4][2] = {
    {DrawRow<TTexelSource::None, false>, DrawRow<TTexelSource::None, true>},
    {DrawRow<TTexelSource::Nearest, false>, DrawRow<TTexelSource::Nearest, true>},
    {DrawRow<TTexelSource::Linear, false>, DrawRow<TTexelSource::Linear, true>},
    {DrawRow<TTexelSource::Sampler, false>, DrawRow<TTexelSource::Sampler, true>},
};

template <int kSlots>
HWY_NOINLINE HWY_ATTR void DrawHalf(TSpanJob* job, const TRowSlots& slots, const TRowEdge& a,
                                    const TRowEdge& b, int half, TRowKeeper* keeper) {
  const TDrawRow drawRow = kRowWays[static_cast<int>(job->Texels)][job->Perspective ? 1 : 0];
  const double deltaA = a.Delta[1];
  const double deltaB = b.Delta[1];
  int first = 0;
  int last = 0;
  if (deltaA == 0.0 || deltaB == 0.0 ||
      !LoopLimits(b.Begin[1] + 0.5, b.EndY, job->Height, &first, &last)) {
    return;
  }
  for (int y = first; y <= last; ++y) {
    const double ta = (y - a.Begin[1]) / deltaA;
    const double tb = (y - b.Begin[1]) / deltaB;
    if (ta < 0.0 || ta >= 1.0 || tb < 0.0 || tb >= 1.0) {
      continue;
    }
    job->YSet = true;
    job->Y = y;
    TRow& row = keeper->Rows[keeper->Current];
    if (SetRow<kSlots>(*job, a, ta, b, tb, &row)) {
      row.Y = y;
      row.Half = half;
      SetRowFloats(*job, slots, row.Last - row.First + 1, &row);
      keeper->Note(drawRow(*job, slots, row));
    }
  }
}

inline HWY_ATTR void DrawHalves(TSpanJob* job, const TRowSlots& slots, TRowKeeper* keeper) {
  TRowEdge edges[3];
  SetRowEdge(*job, slots, 0, 1, &edges[0]);
  SetRowEdge(*job, slots, 1, 2, &edges[1]);
  SetRowEdge(*job, slots, 2, 0, &edges[2]);
  int longest = 0;
  for (int i = 1; i < 3; ++i) {
    if (edges[i].Delta[1] > edges[longest].Delta[1]) {
      longest = i;
    }
  }
  using TDrawHalf = void (*)(TSpanJob * job, const TRowSlots& slots, const TRowEdge& a,
                             const TRowEdge& b, int half, TRowKeeper* keeper);
  static constexpr TDrawHalf kHalves[kMostSlots] = {DrawHalf<1>, DrawHalf<2>, DrawHalf<3>,
                                                    DrawHalf<4>};
  const TDrawHalf drawHalf = kHalves[slots.Count - 1];
  drawHalf(job, slots, edges[longest], edges[(longest + 1) % 3], 1, keeper);
  drawHalf(job, slots, edges[longest], edges[(longest + 2) % 3], 2, keeper);
}

HWY_ATTR void DrawTriangleJob(TSpanJob* job) {
  const TRowSlots slots = RowSlotsOf(*job);
  TRowKeeper keeper;
  DrawHalves(job, slots, &keeper);
  if (keeper.DepthRow >= 0) {
    job->DepthSet = true;
    const TRow& row = keeper.Rows[keeper.DepthRow];
    job->LastDepth = DepthAtT(*job, row, RowT(row, keeper.DepthX));
  }
  if (keeper.ColorRow >= 0) {
    const TRow& row = keeper.Rows[keeper.ColorRow];
    job->ColorSet = true;
    job->LastX = keeper.ColorX;
    job->LastY = row.Y;
    job->LastHalf = row.Half;
    job->LastColor = ColorAt(*job, slots, row, RowT(row, keeper.ColorX));
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
