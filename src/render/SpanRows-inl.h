// One row of a triangle as the span kernels see it. Included once for each instruction set.

#if defined(ZX_RENDER_SPANROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANROWS_INL_H_
#undef ZX_RENDER_SPANROWS_INL_H_
#else
#define ZX_RENDER_SPANROWS_INL_H_
#endif

#include <hwy/highway.h>

#include "Numbers.h"
#include "SpanJob.h"

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// Slots in the order in which a row keeps them; those that nothing reads are left out at the end.
inline constexpr int kMostSlots = 4;

// What a row's pixels read to be coloured in single precision: see SpanFloats-inl.h.
struct TRowFloats {
  alignas(16) float Begin[4]; ///< of the colour
  alignas(16) float Delta[4];
  alignas(16) float SecondaryBegin[4];
  alignas(16) float SecondaryDelta[4];
  float WBegin;
  float WDelta;
  mutable float Margin; ///< 0: the exact way
  mutable int Doubts;   ///< groups that may still prove unsure before the row goes the exact way
};

// A row's two ends: `Begin` at the left, `Delta` to the right one. Slot 0 is the position.
struct TRow {
  alignas(64) double Begin[4 * kMostSlots];
  alignas(64) double Delta[4 * kMostSlots];
  TRowFloats Floats;
  int First; ///< first covered pixel
  int Last;  ///< last covered pixel
  int Y;
  int Half;
};

struct TRowEdge {
  alignas(64) double Begin[4 * kMostSlots];
  alignas(64) double Delta[4 * kMostSlots];
  double EndY;
};

// The places of the interpolated slots within a row, in doubles; -1 for those that are left out.
struct TRowSlots {
  int Count; ///< slots, the position among them
  int Source[kMostSlots];
  int Color;
  int Secondary;
  int Tex;
};

inline HWY_ATTR TRowSlots RowSlotsOf(const TSpanJob& job) {
  TRowSlots slots = {1, {0, 0, 0, 0}, -1, -1, -1};
  const auto add = [&slots](int source, int* place) {
    if (source >= 0) {
      *place = 4 * slots.Count;
      slots.Source[slots.Count++] = source;
    }
  };
  add(job.ColorSlot, &slots.Color);
  add(job.SecondarySlot, &slots.Secondary);
  add(job.TexSlot, &slots.Tex);
  return slots;
}

inline HWY_ATTR void SetRowEdge(const TSpanJob& job, const TRowSlots& slots, int from, int to,
                                TRowEdge* edge) {
  const vec_t_<double, 4>* a = job.Vertex[from];
  const vec_t_<double, 4>* b = job.Vertex[to];
  if (!(b[0].y >= a[0].y)) {
    std::swap(a, b);
  }
  for (int s = 0; s < slots.Count; ++s) {
    const double* const begin = &a[slots.Source[s]].x;
    const double* const end = &b[slots.Source[s]].x;
    for (int i = 0; i < 4; ++i) {
      edge->Begin[4 * s + i] = begin[i];
      edge->Delta[4 * s + i] = end[i] - begin[i];
    }
  }
  edge->EndY = b[0].y;
}

// The values of an edge at t.
template <int kSlots>
HWY_INLINE HWY_ATTR void EdgeAt(const TRowEdge& edge, double t, double* HWY_RESTRICT out) {
  for (int i = 0; i < 4 * kSlots; ++i) {
    out[i] = edge.Delta[i] * t + edge.Begin[i];
  }
}

// Fills the row between two edges; false if it covers no pixel.
template <int kSlots>
HWY_INLINE HWY_ATTR bool SetRow(const TSpanJob& job, const TRowEdge& a, double ta,
                                const TRowEdge& b, double tb, TRow* row) {
  alignas(64) double atA[4 * kSlots];
  alignas(64) double atB[4 * kSlots];
  EdgeAt<kSlots>(a, ta, atA);
  EdgeAt<kSlots>(b, tb, atB);
  const bool rightward = atB[0] >= atA[0];
  const double* const begin = rightward ? atA : atB;
  const double* const end = rightward ? atB : atA;
  const double beginX = begin[0];
  const double deltaX = end[0] - beginX;
  int first = 0;
  int last = 0;
  if (deltaX == 0.0 || !LoopLimits(beginX + 0.5, end[0], job.Width, &first, &last)) {
    return false;
  }
  // t of a pixel is (x - begin) / delta. With delta above 0 and nothing near the ends of the range
  // it is below 0 just when the difference is, and 1 or above just when the difference is not below
  // delta: a quotient of two doubles, the smaller over the greater, never rounds to 1.
  while (first <= last && first - beginX < 0.0) {
    ++first;
  }
  while (first <= last && last - beginX >= deltaX) {
    --last;
  }
  if (first > last) {
    return false;
  }
  for (int i = 0; i < 4 * kSlots; ++i) {
    row->Begin[i] = begin[i];
    row->Delta[i] = end[i] - begin[i];
  }
  row->First = first;
  row->Last = last;
  return true;
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
