// Vertices of an array draw, many at a time: clip positions, planes and faces. Included once for
// each instruction set.
//
// Tested by: tests/render/VertexBatches.cpp (VertexBatches.*), tests/render/ClipOutside.cpp
// (ClipOutside.*)

#if defined(ZX_RENDER_VERTEXBATCH_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_VERTEXBATCH_INL_H_
#undef ZX_RENDER_VERTEXBATCH_INL_H_
#else
#define ZX_RENDER_VERTEXBATCH_INL_H_
#endif

#include <algorithm>

#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/kernels/SpanExactColors-inl.h>
#include <ZxCore3D/render/kernels/SpanRowSetup-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// Clip positions of the first `count` entries, by the operations of the standard vertex shader in
// its order.
inline HWY_ATTR void TransformBatch(const double* matrix, int count, TVertexBatch* batch) {
  const DD d;
  for (int i = 0; i < count; i += kLanes) {
    const VD x = hn::Load(d, batch->X + i);
    const VD y = hn::Load(d, batch->Y + i);
    const VD z = hn::Load(d, batch->Z + i);
    const auto row = [&](int k) HWY_ATTR {
      const VD xy =
          hn::Add(hn::Mul(hn::Set(d, matrix[k]), x), hn::Mul(hn::Set(d, matrix[4 + k]), y));
      return hn::Add(hn::Add(xy, hn::Mul(hn::Set(d, matrix[8 + k]), z)),
                     hn::Set(d, matrix[12 + k]));
    };
    hn::Store(row(0), d, batch->X + i);
    hn::Store(row(1), d, batch->Y + i);
    hn::Store(row(2), d, batch->Z + i);
    hn::Store(row(3), d, batch->W + i);
  }
}

// The clip planes in the clipper's order, for a shape of kCorners corners.
template <int kCorners> struct TPlaneWalk {
  MD Whole; ///< no plane so far cuts the shape or takes it out
  MD Outside;

  HWY_INLINE HWY_ATTR void Meet(const MD (&in)[kCorners]) {
    MD any = in[0];
    MD all = in[0];
    for (int c = 1; c < kCorners; ++c) {
      any = hn::Or(any, in[c]);
      all = hn::And(all, in[c]);
    }
    Outside = hn::Or(Outside, hn::AndNot(any, Whole));
    Whole = hn::And(Whole, all);
  }
};

// A shape is outside, here, if the first plane that does not have all of it inside has all of it
// outside: the planes before that pass it unchanged, and there the clipper drops it. One that an
// earlier plane cuts may lie beyond a later plane all the same: see `LiesBeyond`.
template <int kCorners>
HWY_INLINE HWY_ATTR TPlaneWalk<kCorners> WalkPlanes(const TVertexBatch& batch,
                                                    const int (&at)[kCorners]) {
  const DD d;
  TPlaneWalk<kCorners> walk = {hn::Not(NoLanes(DD())), NoLanes(DD())};
  VD w[kCorners];
  for (int c = 0; c < kCorners; ++c) {
    w[c] = hn::Load(d, batch.W + at[c]);
  }
  for (const double* const axis : {batch.X, batch.Y, batch.Z}) {
    MD below[kCorners];
    MD above[kCorners];
    for (int c = 0; c < kCorners; ++c) {
      const VD u = hn::Load(d, axis + at[c]);
      below[c] = hn::Ge(u, hn::Neg(w[c])); // a NaN is outside
      above[c] = hn::Le(u, w[c]);
    }
    walk.Meet(below);
    walk.Meet(above);
    if (hn::AllFalse(d, walk.Whole)) {
      break;
    }
  }
  return walk;
}

// Whether two planes cut off the same corner from the others, or leave the same one alone; the
// signs of the distances tell the sides.
template <int kCorners>
HWY_INLINE HWY_ATTR MD SameAlone(const VD (&a)[kCorners], const VD (&b)[kCorners]) {
  const hn::RebindToSigned<DD> di;
  VD differs = hn::Zero(DD());
  for (int c = 1; c < kCorners; ++c) {
    differs = hn::Or(differs, hn::Xor(hn::Xor(a[0], a[c]), hn::Xor(b[0], b[c])));
  }
  return hn::RebindMask(DD(), hn::Not(hn::Lt(hn::BitCast(di, differs), hn::Zero(di))));
}

// Which shapes lie beyond a plane by a margin, so that the clipper drops all their pieces there at
// the latest, although one or two planes before cut them.
//
// Let d = u + w or w - u be the inside distance of a corner to a plane, S the sum of the magnitudes
// of all components of the shape's corners, e = 2^-53, m = S/2^20. Required, up to the first plane
// P at which d < -m for all corners:
//   1. d < -m or d > m for each corner and plane: all corners are clear of the planes;
//   2. two planes at most have corners on both sides, and with triangles it is not the same corner
//      that both cut off from the two others;
//   3. 2^-900 <= S <= 2^900, so that nothing overflows and what underflows is far below e S.
// d has one rounding, hence its true sign, which is the clipper's.
//
// A cut between o outside and i inside mixes o + (i - o) t, t = N/D. N is |d(o)| but for e S, and
// the three sums of D err by less than 10 e S from |d(o)| + |d(i)|. So t <= 1 if |d(i)| > 12 e S:
// N <= D then, and so is the rounded quotient. If o alone is clear, D > 0 and t < 1 + 2^-28, for
// |d(o)| > m/2. In both cases t >= 0, and the new corner lies on the segment, or past its end by
// 2^-28 of its length, with another 6 e S of rounding in each component. As d is linear, it leaves
// the range of the d of o and i by less than S/2^26.
//
// One end of each segment that is cut is clear. At the first cut both are corners of the shape. At
// the second, one end at least is such a corner, except for the segment between the two new ones.
// These lie on the edges that meet in the corner cut off; by 2. another corner, at the end of one
// of these edges, is cut off now or alone left, so that one of the two edges lies on one side,
// clear, and so does its new corner.
//
// With two cuts a new corner is thus within S/2^25 of the range of d of the shape's corners. Any
// plane in between that has these inside has it inside, and P has it outside: m is 32 times that.
template <int kCorners>
HWY_INLINE HWY_ATTR MD LiesBeyond(const TVertexBatch& batch, const int (&at)[kCorners]) {
  const DD d;
  VD w[kCorners];
  VD sum = hn::Zero(d);
  for (int c = 0; c < kCorners; ++c) {
    w[c] = hn::Load(d, batch.W + at[c]);
    const VD xy =
        hn::Add(hn::Abs(hn::Load(d, batch.X + at[c])), hn::Abs(hn::Load(d, batch.Y + at[c])));
    const VD zw = hn::Add(hn::Abs(hn::Load(d, batch.Z + at[c])), hn::Abs(w[c]));
    sum = hn::Add(sum, hn::Add(xy, zw));
  }
  const VD zero = hn::Zero(d);
  const VD margin = hn::Mul(sum, hn::Set(d, 0x1p-20));
  MD open = hn::And(hn::Ge(sum, hn::Set(d, 0x1p-900)), hn::Le(sum, hn::Set(d, 0x1p900)));
  MD beyond = NoLanes(DD());
  MD once = NoLanes(DD());
  MD twice = NoLanes(DD());
  VD first[kCorners]; // at the first cut, the sign tells on which side a corner is
  std::fill_n(first, kCorners, zero);
  const auto meet = [&](const VD(&distance)[kCorners]) HWY_ATTR {
    VD least = distance[0];
    VD most = distance[0];
    VD nearest = hn::Abs(distance[0]);
    for (int c = 1; c < kCorners; ++c) {
      least = hn::Min(least, distance[c]);
      most = hn::Max(most, distance[c]);
      nearest = hn::Min(nearest, hn::Abs(distance[c]));
    }
    const MD clear = hn::And(open, hn::Gt(nearest, margin));
    const MD out = hn::Lt(most, zero);
    beyond = hn::Or(beyond, hn::And(clear, out));
    open = hn::AndNot(out, clear);
    const MD cut = hn::AndNot(hn::Gt(least, zero), open);
    const MD again = hn::And(cut, once);
    if (!hn::AllFalse(d, again)) {
      open = hn::AndNot(hn::And(again, twice), open);
      if (kCorners == 3) {
        open = hn::AndNot(hn::And(again, SameAlone(distance, first)), open);
      }
      twice = hn::Or(twice, again);
    }
    const MD begins = hn::AndNot(once, cut);
    for (int c = 0; c < kCorners; ++c) {
      first[c] = hn::IfThenElse(begins, distance[c], first[c]);
    }
    once = hn::Or(once, cut);
  };
  for (const double* const axis : {batch.X, batch.Y, batch.Z}) {
    VD below[kCorners];
    VD above[kCorners];
    for (int c = 0; c < kCorners; ++c) {
      const VD u = hn::Load(d, axis + at[c]);
      below[c] = hn::Add(w[c], u);
      above[c] = hn::Sub(w[c], u);
    }
    meet(below);
    meet(above);
    if (hn::AllFalse(d, open)) {
      break;
    }
  }
  return beyond;
}

// Adds the shapes of one vector, from s on, to the classes; returns those inside, bit 0 being s.
template <int kCorners>
HWY_INLINE HWY_ATTR std::uint64_t AddClasses(const TVertexBatch& batch, const int (&at)[kCorners],
                                             int s, TShapeClasses* out) {
  const TPlaneWalk<kCorners> walk = WalkPlanes(batch, at);
  const std::uint64_t group = FirstBits(kLanes);
  const std::uint64_t outside = BitsOfMask(DD(), walk.Outside);
  const std::uint64_t inside = BitsOfMask(DD(), walk.Whole);
  out->Outside |= outside << s;
  out->Inside |= inside << s;
  if ((outside | inside) != group) {
    out->Beyond |= (BitsOfMask(DD(), LiesBeyond(batch, at)) & ~(outside | inside)) << s;
  }
  return inside;
}

// Whether triangles face the front: the area's sign by the steps of rasterisation in their order.
HWY_INLINE HWY_ATTR MD FacesFront(const TVertexBatch& batch, const int (&at)[3], bool frontCCW) {
  const DD d;
  VD x[3];
  VD y[3];
  for (int c = 0; c < 3; ++c) {
    const VD r = hn::Div(hn::Set(d, 1.0), hn::Load(d, batch.W + at[c]));
    x[c] = hn::Mul(hn::Load(d, batch.X + at[c]), r);
    y[c] = hn::Mul(hn::Load(d, batch.Y + at[c]), r);
  }
  const auto cross = [&](int i, int k)
                         HWY_ATTR { return hn::Sub(hn::Mul(x[i], y[k]), hn::Mul(x[k], y[i])); };
  const VD area = hn::Add(hn::Add(cross(0, 1), cross(1, 2)), cross(2, 0));
  return frontCCW ? hn::Ge(area, hn::Zero(d)) : hn::Lt(area, hn::Zero(d));
}

// Classifies the first `count` triangles, whose corners are three columns of the batch.
inline HWY_ATTR void ClassifyTriangles(const TVertexBatch& batch, const int (&corners)[3],
                                       int count, const TCulling& culling, TShapeClasses* out) {
  *out = {};
  for (int s = 0; s < count; s += kLanes) {
    const int at[3] = {corners[0] * batch.Pitch + s, corners[1] * batch.Pitch + s,
                       corners[2] * batch.Pitch + s};
    const std::uint64_t inside = AddClasses(batch, at, s, out);
    if (inside != 0) {
      const std::uint64_t group = FirstBits(kLanes);
      const std::uint64_t front = BitsOfMask(DD(), FacesFront(batch, at, culling.FrontCCW));
      const std::uint64_t culled = (culling.Front ? front : 0) | (culling.Back ? front ^ group : 0);
      out->Front |= front << s;
      out->Culled |= (culled & inside) << s;
    }
  }
}

// Window coordinates of `count` entries from `first` on, by the steps of rasterisation in their
// order. They take the place of those in clip space; w becomes 1/w.
inline HWY_ATTR void ProjectVertices(int width, int height, int first, int count,
                                     TVertexBatch* batch) {
  const DD d;
  const VD half = hn::Set(d, 0.5);
  const auto toWindow = [&](VD u, int size) HWY_ATTR {
    return hn::Sub(hn::Mul(hn::Add(hn::Mul(u, half), half), hn::Set(d, size)), half);
  };
  for (int i = first; i < first + count; i += kLanes) {
    const VD r = hn::Div(hn::Set(d, 1.0), hn::Load(d, batch->W + i));
    const VD z = hn::Mul(hn::Load(d, batch->Z + i), r);
    hn::Store(toWindow(hn::Mul(hn::Load(d, batch->X + i), r), width), d, batch->X + i);
    hn::Store(toWindow(hn::Mul(hn::Load(d, batch->Y + i), r), height), d, batch->Y + i);
    hn::Store(hn::Add(hn::Mul(z, half), half), d, batch->Z + i);
    hn::Store(r, d, batch->W + i);
  }
}

// The rows of the first `count` triangles, whose corners are three columns of window coordinates.
// Of those out of reach of kernels the rows may be any.
inline HWY_ATTR void PlanTriangles(const TVertexBatch& window, const int (&corners)[3], int count,
                                   int height, TTriangleRows* out) {
  const DD d;
  for (int s = 0; s < count; s += kLanes) {
    const auto heightOf = [&](int c)
                              HWY_ATTR { return hn::Load(d, window.Y + c * window.Pitch + s); };
    const VD y[3] = {heightOf(corners[0]), heightOf(corners[1]), heightOf(corners[2])};
    const TRowRanges<DD> ranges = RowRangesOf(d, y, height);
    hn::Store(ranges.Order, d, out->Order + s);
    for (int minor = 0; minor < 2; ++minor) {
      hn::Store(ranges.Minor[minor].First, d, out->First[minor] + s);
      hn::Store(ranges.Minor[minor].Count, d, out->Count[minor] + s);
    }
  }
}

inline HWY_ATTR void ClassifyLines(const TVertexBatch& batch, int count, TShapeClasses* out) {
  *out = {};
  for (int s = 0; s < count; s += kLanes) {
    const int at[2] = {s, batch.Pitch + s};
    AddClasses(batch, at, s, out);
  }
}

// Lines in the window, by the steps of rasterisation in their order, and the pixels of their ends.
// Of those out of reach of kernels the pixels may be any.
inline HWY_ATTR void ProjectLines(int width, int height, int count, TVertexBatch* batch,
                                  TLineEnds* out) {
  const DD d;
  const DI di;
  const VD half = hn::Set(d, 0.5);
  const auto toWindow = [&](double* at, VD h, int size, std::int32_t* pixel) HWY_ATTR {
    const VD scaled = hn::Add(hn::Mul(hn::Load(d, at), h), half);
    const VD u = hn::Sub(hn::Mul(hn::Set(d, size), scaled), half);
    hn::Store(u, d, at);
    hn::Store(hn::DemoteTo(di, hn::Add(u, half)), di, pixel);
  };
  for (int c = 0; c < 2; ++c) {
    for (int i = c * batch->Pitch; i < c * batch->Pitch + count; i += kLanes) {
      const VD r = hn::Div(hn::Set(d, 1.0), hn::Load(d, batch->W + i));
      const VD h = hn::Mul(r, half);
      toWindow(batch->X + i, h, width, out->X + i);
      toWindow(batch->Y + i, h, height, out->Y + i);
      hn::Store(hn::Add(hn::Mul(hn::Load(d, batch->Z + i), h), half), d, batch->Z + i);
      hn::Store(r, d, batch->W + i);
    }
  }
}

// --- Points

// The pixels and depths of points in clip space, by the operations of the reference path in their
// order. The comparisons are its own too: a NaN passes the planes and is rejected at the window.
inline HWY_ATTR void ProjectPoints(const TVertexBatch& batch, int count, int width, int height,
                                   TPointBatch* out) {
  const DD d;
  const DI di;
  const VD half = hn::Set(d, 0.5);
  const VD wide = hn::Set(d, static_cast<double>(width));
  const VD high = hn::Set(d, static_cast<double>(height));
  const VD border = hn::Set(d, -1.0);
  for (int i = 0; i < count; i += kLanes) {
    const VD w = hn::Load(d, batch.W + i);
    const VD u[3] = {hn::Load(d, batch.X + i), hn::Load(d, batch.Y + i), hn::Load(d, batch.Z + i)};
    MD out0 = NoLanes(DD());
    for (const VD& c : u) {
      out0 = hn::Or(out0, hn::Or(hn::Gt(hn::Neg(w), c), hn::Gt(c, w)));
    }
    const VD h = hn::Mul(hn::Div(hn::Set(d, 1.0), w), half);
    const VD x = hn::Mul(wide, hn::Add(hn::Mul(u[0], h), half));
    const VD y = hn::Mul(high, hn::Add(hn::Mul(u[1], h), half));
    const VD z = hn::Add(hn::Mul(h, u[2]), half);
    const MD onX = hn::And(hn::Gt(x, border), hn::Lt(x, wide));
    const MD onY = hn::And(hn::Gt(y, border), hn::Lt(y, high));
    const MD live = hn::AndNot(out0, hn::And(onX, onY));
    hn::Store(hn::DemoteTo(di, hn::IfThenElse(live, x, border)), di, out->X + i);
    hn::Store(hn::DemoteTo(di, hn::IfThenElse(live, y, border)), di, out->Y + i);
    hn::Store(hn::DemoteTo(DF(), z), DF(), out->Depth + i);
  }
  out->Count = count;
}

// Colours, limited to 0 to 1, as bytes. Four doubles in a row become four bytes in a row.
inline HWY_ATTR void PackColors(const double* colors, int count, TPointBatch* out) {
  const DD d;
  const hn::Rebind<std::uint8_t, DD> d8;
  for (int i = 0; i < 4 * count; i += kLanes) {
    const VU bytes = ChannelByte(hn::LoadU(d, colors + i), true);
    hn::StoreU(hn::DemoteTo(d8, hn::BitCast(DI(), bytes)), d8, out->Bytes + i);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
