// The pixels of a line, which lie anywhere: by way of copies, no pixel twice. Included once for
// each instruction set.

#if defined(ZX_RENDER_SPANLINE_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANLINE_INL_H_
#undef ZX_RENDER_SPANLINE_INL_H_
#else
#define ZX_RENDER_SPANLINE_INL_H_
#endif

#include <hwy/highway.h>

#include "SpanPixels-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

struct TScattered {
  const int* X;
  const int* Y;
  const double* T;
  int Count;
};

template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TRowResult DrawScattered(const TSpanJob& job, const TRowSlots& slots,
                                               const TRow& row, const TScattered& pixels) {
  constexpr std::size_t kMostLanes = HWY_LANES(double);
  const DD d;
  const int lanes = static_cast<int>(hn::Lanes(d));
  TGroupCopies copies = {};
  TRowResult result = {-1, -1};
  for (int first = 0; first < pixels.Count; first += lanes) {
    const int count = pixels.Count - first < lanes ? pixels.Count - first : lanes;
    std::uint32_t* colorAt[kMostLanes];
    float* depthAt[kMostLanes];
    unsigned char* stencilAt[kMostLanes];
    HWY_ALIGN double t[kMostLanes] = {};
    for (int i = 0; i < count; ++i) {
      const std::ptrdiff_t x = pixels.X[first + i];
      const std::ptrdiff_t y = pixels.Y[first + i];
      t[i] = pixels.T[first + i];
      colorAt[i] = reinterpret_cast<std::uint32_t*>(job.Color + y * job.ColorRowStride) + x;
      depthAt[i] = reinterpret_cast<float*>(job.Depth + y * job.DepthRowStride) + x;
      copies.Color[i] = *colorAt[i];
      copies.Depth[i] = *depthAt[i];
      if (job.Stencil != nullptr) {
        stencilAt[i] = job.Stencil + y * job.StencilRowStride + x;
        copies.Stencil[i] = *stencilAt[i];
      }
    }
    const TGroupResult group = DrawCopies<kTexels, kPerspective>(
        job, slots, row, t, static_cast<std::size_t>(count), &copies);
    NoteGroup(group, first, &result);
    for (int i = 0; i < count; ++i) {
      *colorAt[i] = copies.Color[i];
      *depthAt[i] = copies.Depth[i];
      if (job.Stencil != nullptr) {
        *stencilAt[i] = copies.Stencil[i];
      }
    }
  }
  return result;
}

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
  TRows rows;
  for (int s = 0; s < slots.Count; ++s) {
    const double* const begin = &job->Vertex[0][slots.Source[s]].x;
    const double* const end = &job->Vertex[1][slots.Source[s]].x;
    for (int i = 0; i < 4; ++i) {
      rows.Begin[4 * s + i][0] = begin[i];
      rows.Delta[4 * s + i][0] = end[i] - begin[i];
    }
  }
  const TRow row = {{&rows.Begin[0][0]}, {&rows.Delta[0][0]}, 0, 0, 0, nullptr};
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
