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

// The colour that the fragment shader leaves at one pixel.
inline HWY_ATTR vec_t_<double, 4> ColorAt(const TSpanJob& job, const TRowSlots& slots,
                                          const TRow& row, double t) {
  const double q = job.Perspective ? 1.0 / (row.Delta[3] * t + row.Begin[3]) : 1.0;
  const auto slot = [&](int place) {
    vec_t_<double, 4> v = {0, 0, 0, 0};
    for (int i = 0; i < 4 && place >= 0; ++i) {
      const double value = row.Delta[place + i] * t + row.Begin[place + i];
      v[static_cast<std::size_t>(i)] = job.Perspective ? value * q : value;
    }
    return v;
  };
  vec_t_<double, 4> color = slot(slots.Color);
  if (job.Texels != TTexelSource::None) {
    vec_t_<double, 4> texel = {0, 0, 0, 0};
    (job.Sampler->*job.Sampler->m_GetValue)(slot(slots.Tex), &texel);
    color = job.Modulate ? vec_t_<double, 4>{color.x * texel.x, color.y * texel.y,
                                             color.z * texel.z, color.w * texel.w}
                         : texel;
  }
  if (slots.Secondary >= 0) {
    const vec_t_<double, 4> secondary = slot(slots.Secondary);
    color = {color.x + secondary.x, color.y + secondary.y, color.z + secondary.z, color.w};
  } else if (job.ZeroSecondary) {
    color = {color.x + 0.0, color.y + 0.0, color.z + 0.0, color.w};
  }
  for (std::size_t i = 0; i < 4; ++i) {
    color[i] = color[i] < 0.0 ? 0.0 : color[i] > 1.0 ? 1.0 : color[i];
  }
  return color;
}

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

// --- Lines

using TDrawScattered = TRowResult (*)(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                      const TScattered& pixels);

inline constexpr TDrawScattered kLineWays[4][2] = {
    {DrawScattered<TTexelSource::None, false>, DrawScattered<TTexelSource::None, true>},
    {DrawScattered<TTexelSource::Nearest, false>, DrawScattered<TTexelSource::Nearest, true>},
    {DrawScattered<TTexelSource::Linear, false>, DrawScattered<TTexelSource::Linear, true>},
    {DrawScattered<TTexelSource::Sampler, false>, DrawScattered<TTexelSource::Sampler, true>},
};

// Pixels of a line between vertices 0 and 1 of the job.
inline HWY_ATTR void DrawLineJob(TSpanJob* job, const TLinePixels& line) {
  const TRowSlots slots = RowSlotsOf(*job);
  TRow row;
  for (int s = 0; s < slots.Count; ++s) {
    const double* const begin = &job->Vertex[0][slots.Source[s]].x;
    const double* const end = &job->Vertex[1][slots.Source[s]].x;
    for (int i = 0; i < 4; ++i) {
      row.Begin[4 * s + i] = begin[i];
      row.Delta[4 * s + i] = end[i] - begin[i];
    }
  }
  constexpr std::size_t kMostLanes = HWY_LANES(double);
  HWY_ALIGN double t[TLinePixels::kMost + kMostLanes];
  const DD d;
  const VD zero = hn::Zero(d);
  const VD one = hn::Set(d, 1.0);
  const int* const along = line.Axis == 0 ? line.X : line.Y;
  const VD begin = hn::Set(d, row.Begin[line.Axis]);
  const VD way = hn::Set(d, row.Delta[line.Axis]);
  for (int i = 0; i < line.Count; i += static_cast<int>(hn::Lanes(d))) {
    const VD at = hn::PromoteTo(d, hn::LoadU(DI(), along + i));
    VD part = hn::Div(hn::Sub(at, begin), way);
    part = hn::IfThenElse(hn::Lt(part, zero), zero, part);
    part = hn::IfThenElse(hn::Gt(part, one), one, part);
    hn::Store(part, d, t + i);
  }
  const TScattered pixels = {line.X, line.Y, t, line.Count};
  const TRowResult result =
      kLineWays[static_cast<int>(job->Texels)][job->Perspective ? 1 : 0](*job, slots, row, pixels);
  if (result.LastStencil >= 0) {
    job->DepthSet = true;
    job->LastDepth = DepthAtT(*job, row, t[result.LastStencil]);
  }
  if (result.LastShaded >= 0) {
    job->ColorSet = true;
    job->LastX = line.X[result.LastShaded];
    job->LastY = line.Y[result.LastShaded];
    job->LastT = t[result.LastShaded];
    job->LastColor = ColorAt(*job, slots, row, job->LastT);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
