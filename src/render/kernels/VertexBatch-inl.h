// Vertices of an array draw, many at a time: clip positions, planes and faces. Included once for
// each instruction set.
//
// Tested by: tests/render/VertexBatches.cpp (VertexBatches.*)

#if defined(ZX_RENDER_VERTEXBATCH_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_VERTEXBATCH_INL_H_
#undef ZX_RENDER_VERTEXBATCH_INL_H_
#else
#define ZX_RENDER_VERTEXBATCH_INL_H_
#endif

#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/kernels/SpanExactColors-inl.h>

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
  MD Decided; ///< a plane before this one cuts the shape or takes it out
  MD Outside;

  HWY_INLINE HWY_ATTR void Meet(const MD (&out)[kCorners]) {
    MD any = out[0];
    MD all = out[0];
    for (int c = 1; c < kCorners; ++c) {
      any = hn::Or(any, out[c]);
      all = hn::And(all, out[c]);
    }
    Outside = hn::Or(Outside, hn::AndNot(Decided, all));
    Decided = hn::Or(Decided, any);
  }
};

// A shape is outside, here, if the first plane that does not have all of it inside has all of it
// outside: the planes before that pass it unchanged, and there the clipper drops it. One that an
// earlier plane cuts is left to the clipper even if all of it lies behind a later plane: rounding
// could move a new corner across that plane.
template <int kCorners>
HWY_INLINE HWY_ATTR TPlaneWalk<kCorners> WalkPlanes(const TVertexBatch& batch,
                                                    const int (&at)[kCorners]) {
  const DD d;
  TPlaneWalk<kCorners> walk = {NoLanes(DD()), NoLanes(DD())};
  VD w[kCorners];
  for (int c = 0; c < kCorners; ++c) {
    w[c] = hn::Load(d, batch.W + at[c]);
  }
  for (const double* const axis : {batch.X, batch.Y, batch.Z}) {
    MD below[kCorners];
    MD above[kCorners];
    for (int c = 0; c < kCorners; ++c) {
      const VD u = hn::Load(d, axis + at[c]);
      below[c] = hn::Not(hn::Ge(u, hn::Neg(w[c]))); // a NaN is outside
      above[c] = hn::Not(hn::Le(u, w[c]));
    }
    walk.Meet(below);
    walk.Meet(above);
  }
  return walk;
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
  *out = {0, 0, 0, 0};
  for (int s = 0; s < count; s += kLanes) {
    const int at[3] = {corners[0] * batch.Pitch + s, corners[1] * batch.Pitch + s,
                       corners[2] * batch.Pitch + s};
    const TPlaneWalk<3> walk = WalkPlanes(batch, at);
    const std::uint64_t group = FirstBits(kLanes);
    const std::uint64_t inside = BitsOfMask(DD(), walk.Decided) ^ group;
    out->Outside |= BitsOfMask(DD(), walk.Outside) << s;
    out->Inside |= inside << s;
    if ((culling.Front || culling.Back) && inside != 0) {
      const std::uint64_t front = BitsOfMask(DD(), FacesFront(batch, at, culling.FrontCCW));
      const std::uint64_t culled = (culling.Front ? front : 0) | (culling.Back ? front ^ group : 0);
      out->Front |= front << s;
      out->Culled |= (culled & inside) << s;
    }
  }
}

inline HWY_ATTR void ClassifyLines(const TVertexBatch& batch, int count, TShapeClasses* out) {
  *out = {0, 0, 0, 0};
  for (int s = 0; s < count; s += kLanes) {
    const int at[2] = {s, batch.Pitch + s};
    const TPlaneWalk<2> walk = WalkPlanes(batch, at);
    const std::uint64_t group = FirstBits(kLanes);
    out->Outside |= BitsOfMask(DD(), walk.Outside) << s;
    out->Inside |= (BitsOfMask(DD(), walk.Decided) ^ group) << s;
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
