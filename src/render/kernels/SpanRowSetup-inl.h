// Row set-up: the ends, interpolants and covered pixels of a vector's worth of rows of a triangle.
// Included once for each instruction set.
//
// Tested by: tests/render/SpanRows.cpp (SpanRows.*)

#if defined(ZX_RENDER_SPANROWSETUP_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANROWSETUP_INL_H_
#undef ZX_RENDER_SPANROWSETUP_INL_H_
#else
#define ZX_RENDER_SPANROWSETUP_INL_H_
#endif

#include <algorithm>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/kernels/SpanLanes-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// The slots that a row of a triangle has room for, the position first, and where they stand.
inline constexpr int kMaxSlots = 4;
inline constexpr int kColorPlace = 4;
inline constexpr int kSecondaryPlace = 8;
inline constexpr int kTexPlace = 12;

// Where the interpolated slots stand within a row, in doubles; -1 for those that nothing reads.
struct TRowSlots {
  int Color;
  int Secondary;
  int Tex;
};

HWY_INLINE TRowSlots RowSlotsOf(const TSpanJob& job) {
  const TPrimitive& primitive = job.Primitive;
  const bool readsColor = primitive.RecordColor || !primitive.HasConstColor();
  return {readsColor && primitive.ColorSlot >= 0 ? kColorPlace : -1,
          primitive.SecondarySlot >= 0 ? kSecondaryPlace : -1,
          primitive.TexSlot >= 0 ? kTexPlace : -1};
}

// One row's values among those of the rows that were set up together.
struct TRowComponents {
  const double* At;
  double operator[](int place) const { return At[place * kLanes]; }
};

// One of them for each pixel of a group.
HWY_INLINE HWY_ATTR VD ValuesOf(const TRowComponents& components, int place) {
  return hn::Set(DD(), components[place]);
}

// The inputs of near values, of rows that were set up together: see SpanFloatColors-inl.h. What
// is linear in t is by columns after a row's first pixel.
struct TRowFloats {
  HWY_ALIGN float Begin[4][kLanes]; ///< of the colour, in fixed point
  HWY_ALIGN float Delta[4][kLanes];
  HWY_ALIGN float SecondaryBegin[4][kLanes]; ///< beside texels
  HWY_ALIGN float SecondaryDelta[4][kLanes];
  HWY_ALIGN float WBegin[kLanes];
  HWY_ALIGN float WDelta[kLanes];
  HWY_ALIGN float Least[kLanes]; ///< of a channel: what is 0
  HWY_ALIGN float Most[kLanes];
  HWY_ALIGN std::int32_t LeastSure[kLanes]; ///< of a fraction, in the high bits
  HWY_ALIGN double PlaceBegin[3][kLanes];   ///< in texels, less what the filter shifts by; and 1/w
  HWY_ALIGN double PlaceDelta[3][kLanes];
  HWY_ALIGN double DepthBegin[kLanes];
  HWY_ALIGN double DepthDelta[kLanes];
  HWY_ALIGN double Ratio[kLanes]; ///< of the greatest 1/w to the least
};

// A row between its two ends: `Begin` at the left, `Delta` to the right one.
struct TRow {
  TRowComponents Begin;
  TRowComponents Delta;
  int First; ///< first covered pixel
  int Last;  ///< last covered pixel
  int Y;
  int Lane;
  const TRowFloats* Floats; ///< of long rows
  bool HasFloats;           ///< colours may be worked out from these
};

HWY_INLINE int PixelsOf(const TRow& row) { return row.Last - row.First + 1; }

// Rows that were set up together, one a lane.
struct TRows {
  HWY_ALIGN double Begin[4 * kMaxSlots][kLanes];
  HWY_ALIGN double Delta[4 * kMaxSlots][kLanes];
  HWY_ALIGN int First[kLanes];
  HWY_ALIGN int Last[kLanes];
  HWY_ALIGN int Y[kLanes];

  TRow At(int lane) const {
    return {{&Begin[0][lane]}, {&Delta[0][lane]},
            First[lane],       Last[lane],
            Y[lane],           lane,
            nullptr,           false};
  }
};

// From the lower end to the upper one.
struct TRowEdge {
  const vec_t_<double, 4>* Begin;
  const vec_t_<double, 4>* End;
};

// A triangle as two ranges of rows: those that the major edge shares with each minor edge, in
// drawing order.
struct TRowPlan {
  TRowEdge MajorEdge;
  TRowEdge MinorEdge[2];
  double First[2];
  double Count[2];
};

// The ranges of rows of triangles, one a lane.
template <class D> struct TRowRange {
  hn::Vec<D> First;
  hn::Vec<D> Count;
};

template <class D> struct TRowRanges {
  TRowRange<D> Minor[2];
  hn::Vec<D> Order; ///< twice the number of the major edge, and 1 if it leads upwards
};

// Edge i leads from corner i to the next one. Of edges of one height the first is the major one;
// nothing but the ends' heights makes a range of rows, the comparisons being those of `PixelRange`.
// Which edge is the major one is unpredictable: chosen without branches.
template <class D>
HWY_INLINE HWY_ATTR TRowRanges<D> RowRangesOf(D d, const hn::Vec<D> (&y)[3], int height) {
  using V = hn::Vec<D>;
  const V zero = hn::Zero(d);
  const V one = hn::Set(d, 1.0);
  const V size = hn::Set(d, height);
  const auto heightOf = [](V a, V b) HWY_ATTR { return hn::Sub(hn::Max(a, b), hn::Min(a, b)); };
  const V height0 = heightOf(y[0], y[1]);
  const V height1 = heightOf(y[1], y[2]);
  const auto second = hn::Gt(height1, height0);
  const auto third = hn::Gt(heightOf(y[2], y[0]), hn::Max(height0, height1));
  const auto choose = [&](V a, V b, V c) HWY_ATTR {
    return hn::IfThenElse(third, c, hn::IfThenElse(second, b, a));
  };
  const V from = choose(y[0], y[1], y[2]);
  const V to = choose(y[1], y[2], y[0]);
  const V apart = choose(y[2], y[0], y[1]); // of the corner that the major edge does not touch
  const V major = choose(zero, hn::Set(d, 2.0), hn::Set(d, 4.0));
  const V order = hn::Add(major, hn::IfThenElseZero(hn::Ge(to, from), one));
  const auto rangeOf = [&](V other) HWY_ATTR {
    const V begin = hn::Add(hn::Min(apart, other), hn::Set(d, 0.5));
    const V end = hn::Max(apart, other);
    const V first = hn::Trunc(hn::Max(begin, zero));
    const V last = hn::Trunc(hn::Min(end, hn::Sub(size, one)));
    auto any = hn::And(hn::Lt(begin, size), hn::Gt(end, hn::Neg(one)));
    any = hn::And(any, hn::And(hn::Le(first, last), hn::Gt(heightOf(apart, other), zero)));
    return TRowRange<D>{first, hn::IfThenElseZero(any, hn::Add(hn::Sub(last, first), one))};
  };
  return {{rangeOf(to), rangeOf(from)}, order};
}

// The ends of the edges by the order of a triangle's rows. An edge without height has no rows, so
// that either of its ends may be the lower one.
HWY_INLINE HWY_ATTR void SetEdges(const TSpanJob& job, int order, TRowPlan* plan) {
  // Lower and upper end of the major edge, then of both minor ones.
  static constexpr std::uint8_t kEnds[6][6] = {{1, 0, 1, 2, 2, 0}, {0, 1, 2, 1, 0, 2},
                                               {2, 1, 2, 0, 0, 1}, {1, 2, 0, 2, 1, 0},
                                               {0, 2, 0, 1, 1, 2}, {2, 0, 1, 0, 2, 1}};
  const auto& ends = kEnds[order];
  const auto& vertex = job.Primitive.Vertex;
  plan->MajorEdge = {vertex[ends[0]], vertex[ends[1]]};
  plan->MinorEdge[0] = {vertex[ends[2]], vertex[ends[3]]};
  plan->MinorEdge[1] = {vertex[ends[4]], vertex[ends[5]]};
}

HWY_INLINE HWY_ATTR TRowPlan PlanRows(const TSpanJob& job) {
  const hn::CappedTag<double, 1> d;
  const auto& vertex = job.Primitive.Vertex;
  const hn::Vec<decltype(d)> y[3] = {hn::Set(d, vertex[0][0].y), hn::Set(d, vertex[1][0].y),
                                     hn::Set(d, vertex[2][0].y)};
  const auto ranges = RowRangesOf(d, y, job.Draw.Height);
  TRowPlan plan;
  SetEdges(job, static_cast<int>(hn::GetLane(ranges.Order)), &plan);
  for (int minor = 0; minor < 2; ++minor) {
    plan.First[minor] = hn::GetLane(ranges.Minor[minor].First);
    plan.Count[minor] = hn::GetLane(ranges.Minor[minor].Count);
  }
  return plan;
}

// Of the rows set up together, as bits: those that both edges cross, and those that cover pixels.
struct TRowSets {
  std::uint64_t Crossed;
  std::uint64_t Short;
  std::uint64_t Long;
};

// Sets up the rows from number `start` on, in drawing order. Rows of more than `shortPixels` pixels
// count as long.
HWY_INLINE HWY_ATTR TRowSets SetUpRows(const TSpanJob& job, const TRowSlots& slots,
                                       const TRowPlan& plan, int start, int shortPixels,
                                       TRows* rows) {
  const DD d;
  const DI di;
  const VD zero = hn::Zero(d);
  const VD one = hn::Set(d, 1.0);
  const VD index = Columns(d, start);
  const MD second = hn::Ge(index, hn::Set(d, plan.Count[0]));
  const VD y = hn::Add(index, hn::IfThenElse(second, hn::Set(d, plan.First[1] - plan.Count[0]),
                                             hn::Set(d, plan.First[0])));
  struct TPart {
    VD Begin;
    VD Delta;
  };
  const auto onMajor = [&](int slot, int i) HWY_ATTR {
    const VD begin = hn::Set(d, (&plan.MajorEdge.Begin[slot].x)[i]);
    return TPart{begin, hn::Sub(hn::Set(d, (&plan.MajorEdge.End[slot].x)[i]), begin)};
  };
  const auto onMinor = [&](int slot, int i) HWY_ATTR {
    const TRowEdge* const edge = plan.MinorEdge;
    const VD begin = hn::IfThenElse(second, hn::Set(d, (&edge[1].Begin[slot].x)[i]),
                                    hn::Set(d, (&edge[0].Begin[slot].x)[i]));
    const VD end = hn::IfThenElse(second, hn::Set(d, (&edge[1].End[slot].x)[i]),
                                  hn::Set(d, (&edge[0].End[slot].x)[i]));
    return TPart{begin, hn::Sub(end, begin)};
  };
  const auto timeOf = [&](const TPart& part)
                          HWY_ATTR { return hn::Div(hn::Sub(y, part.Begin), part.Delta); };
  const auto valueAt = [](const TPart& part, VD t)
                           HWY_ATTR { return hn::Add(hn::Mul(part.Delta, t), part.Begin); };
  const VD ta = timeOf(onMajor(0, 1));
  const VD tb = timeOf(onMinor(0, 1));
  MD live = hn::And(hn::Ge(hn::Min(ta, tb), zero), hn::Lt(hn::Max(ta, tb), one));
  live = hn::And(live, hn::Lt(index, hn::Set(d, plan.Count[0] + plan.Count[1])));
  const std::uint64_t crossed = BitsOfMask(d, live);

  const VD xa = valueAt(onMajor(0, 0), ta);
  const VD xb = valueAt(onMinor(0, 0), tb);
  const MD rightward = hn::Ge(xb, xa);
  const VD begin = hn::IfThenElse(rightward, xa, xb);
  const VD end = hn::IfThenElse(rightward, xb, xa);
  const VD delta = hn::Sub(end, begin);
  const VD width = hn::Set(d, job.Draw.Width);
  const VD from = hn::Add(begin, hn::Set(d, 0.5));
  live = hn::And(live, hn::Gt(delta, zero));
  live = hn::And(live, hn::And(hn::Lt(from, width), hn::Gt(end, hn::Set(d, -1.0))));
  // t of a pixel is (x - begin) / delta. With delta above 0, and neither overflow nor underflow, it
  // is below 0 exactly when the difference is, and 1 or above exactly when the difference is not
  // below delta: a quotient of two doubles, the smaller over the greater, never rounds to 1. Both
  // can be true of no more than the outermost pixel, since the next is a whole pixel further in.
  VD first = hn::Trunc(hn::Max(from, zero));
  VD last = hn::Trunc(hn::Min(end, hn::Sub(width, one)));
  first = hn::Add(first, hn::IfThenElseZero(hn::Lt(hn::Sub(first, begin), zero), one));
  last = hn::Sub(last, hn::IfThenElseZero(hn::Ge(hn::Sub(last, begin), delta), one));
  live = hn::And(live, hn::Le(first, last));

  hn::Store(begin, d, rows->Begin[0]);
  hn::Store(delta, d, rows->Delta[0]);
  hn::Store(hn::DemoteTo(di, first), di, rows->First);
  hn::Store(hn::DemoteTo(di, last), di, rows->Last);
  hn::Store(hn::DemoteTo(di, y), di, rows->Y);
  // Called so often that the compiler would not inline it by itself.
  const auto makePart = [&](int slot, int place, int i) HWY_ATTR __attribute__((always_inline)) {
    const VD atA = valueAt(onMajor(slot, i), ta);
    const VD atB = valueAt(onMinor(slot, i), tb);
    const VD left = hn::IfThenElse(rightward, atA, atB);
    const VD right = hn::IfThenElse(rightward, atB, atA);
    hn::Store(left, d, rows->Begin[place + i]);
    hn::Store(hn::Sub(right, left), d, rows->Delta[place + i]);
  };
  makePart(0, 0, 2); // z is always read: the record has the depth
  if (job.Primitive.Perspective) {
    makePart(0, 0, 3);
  }
  if (slots.Color >= 0) {
    makePart(job.Primitive.ColorSlot, slots.Color, 0);
    makePart(job.Primitive.ColorSlot, slots.Color, 1);
    makePart(job.Primitive.ColorSlot, slots.Color, 2);
    if (job.Primitive.RecordColor || (job.Primitive.ConstMask & 8u) == 0) {
      makePart(job.Primitive.ColorSlot, slots.Color, 3);
    }
  }
  if (slots.Secondary >= 0) {
    makePart(job.Primitive.SecondarySlot, slots.Secondary, 0);
    makePart(job.Primitive.SecondarySlot, slots.Secondary, 1);
    makePart(job.Primitive.SecondarySlot, slots.Secondary, 2);
  }
  if (slots.Tex >= 0) {
    makePart(job.Primitive.TexSlot, slots.Tex, 0);
    makePart(job.Primitive.TexSlot, slots.Tex, 1);
  }
  const MD longer = hn::Ge(hn::Sub(last, first), hn::Set(d, shortPixels));
  return {crossed, BitsOfMask(d, hn::AndNot(longer, live)), BitsOfMask(d, hn::And(live, longer))};
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
