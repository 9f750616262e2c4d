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
#include <ZxCore3D/render/stages/ClipPlanes.h>

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

// The planes that have the first `count` entries from `first` on inside, as the clipper compares: a
// NaN is outside.
inline HWY_ATTR void FindInside(const TVertexBatch& batch, int first, int count, TInsideBits* out) {
  const DD d;
  std::uint64_t inside[kClipPlanes] = {};
  for (int i = 0; i < count; i += kLanes) {
    const VD w = hn::Load(d, batch.W + first + i);
    const auto meet = [&](const double* axis, int plane) HWY_ATTR {
      const VD u = hn::Load(d, axis + first + i);
      inside[plane] |= BitsOfMask(d, hn::Ge(u, hn::Neg(w))) << i;
      inside[plane + 1] |= BitsOfMask(d, hn::Le(u, w)) << i;
    };
    meet(batch.X, 0);
    meet(batch.Y, 2);
    meet(batch.Z, 4);
  }
  std::copy_n(inside, kClipPlanes, out->Plane);
}

// Which of the first `count` shapes are clear of both planes of each axis: see `LiesBeyond`. The
// distances of a corner have the magnitudes |u| + |w| and ||u| - |w||.
inline HWY_ATTR void FindClear(const TVertexBatch& batch, const TShapeColumns& columns, int count,
                               std::uint64_t (*out)[3]) {
  const DD d;
  std::fill_n(*out, 3, 0);
  for (int s = 0; s < count; s += kLanes) {
    VD sum = hn::Zero(d);
    VD nearest[3];
    std::fill_n(nearest, 3, hn::Set(d, kMaxClearSum));
    for (int c = 0; c < columns.Count; ++c) {
      const int at = columns.Corner[c] * batch.Pitch + s;
      const VD w = hn::Abs(hn::Load(d, batch.W + at));
      const VD u[3] = {hn::Abs(hn::Load(d, batch.X + at)), hn::Abs(hn::Load(d, batch.Y + at)),
                       hn::Abs(hn::Load(d, batch.Z + at))};
      sum = hn::Add(sum, hn::Add(hn::Add(u[0], u[1]), hn::Add(u[2], w)));
      for (int i = 0; i < 3; ++i) {
        nearest[i] = hn::Min(nearest[i], hn::Abs(hn::Sub(w, u[i])));
      }
    }
    const VD margin = hn::Mul(sum, hn::Set(d, kClearMargin));
    const MD isOrdinary =
        hn::And(hn::Ge(sum, hn::Set(d, kMinClearSum)), hn::Le(sum, hn::Set(d, kMaxClearSum)));
    for (int i = 0; i < 3; ++i) {
      (*out)[i] |= BitsOfMask(d, hn::And(isOrdinary, hn::Gt(nearest[i], margin))) << s;
    }
  }
}

// Divides the first `count` entries by w: x, y and 1/w.
inline HWY_ATTR void DivideVertices(const TVertexBatch& batch, int count, TVertexBatch* out) {
  const DD d;
  for (int i = 0; i < count; i += kLanes) {
    const VD r = hn::Div(hn::Set(d, 1.0), hn::Load(d, batch.W + i));
    hn::Store(hn::Mul(hn::Load(d, batch.X + i), r), d, out->X + i);
    hn::Store(hn::Mul(hn::Load(d, batch.Y + i), r), d, out->Y + i);
    hn::Store(r, d, out->W + i);
  }
}

// Which of the first `count` triangles face the front: the area's sign by the steps of
// rasterisation in their order, of corners that are divided by w.
inline HWY_ATTR std::uint64_t FindFront(const TVertexBatch& divided, const TShapeColumns& columns,
                                        int count, bool frontCCW) {
  const DD d;
  std::uint64_t front = 0;
  for (int s = 0; s < count; s += kLanes) {
    const auto cross = [&](int i, int k) HWY_ATTR {
      const int a = columns.Corner[i] * divided.Pitch + s;
      const int b = columns.Corner[k] * divided.Pitch + s;
      return hn::Sub(hn::Mul(hn::Load(d, divided.X + a), hn::Load(d, divided.Y + b)),
                     hn::Mul(hn::Load(d, divided.X + b), hn::Load(d, divided.Y + a)));
    };
    const VD area = hn::Add(hn::Add(cross(0, 1), cross(1, 2)), cross(2, 0));
    front |= BitsOfMask(d, frontCCW ? hn::Ge(area, hn::Zero(d)) : hn::Lt(area, hn::Zero(d))) << s;
  }
  return front;
}

// Window coordinates of the first `count` entries, by the steps of rasterisation in their order.
// They take the place of what `DivideVertices` gave.
inline HWY_ATTR void ProjectVertices(const TVertexBatch& batch, int count, int width, int height,
                                     TVertexBatch* window) {
  const DD d;
  const VD half = hn::Set(d, 0.5);
  const auto toWindow = [&](VD u, int size) HWY_ATTR {
    return hn::Sub(hn::Mul(hn::Add(hn::Mul(u, half), half), hn::Set(d, size)), half);
  };
  for (int i = 0; i < count; i += kLanes) {
    const VD z = hn::Mul(hn::Load(d, batch.Z + i), hn::Load(d, window->W + i));
    hn::Store(toWindow(hn::Load(d, window->X + i), width), d, window->X + i);
    hn::Store(toWindow(hn::Load(d, window->Y + i), height), d, window->Y + i);
    hn::Store(hn::Add(hn::Mul(z, half), half), d, window->Z + i);
  }
}

// The rows of the first `count` triangles, whose corners are three columns of window coordinates.
// Of those out of reach of kernels the rows may be any.
inline HWY_ATTR void PlanTriangles(const TVertexBatch& window, const TShapeColumns& columns,
                                   int count, int height, TTriangleRows* out) {
  const DD d;
  for (int s = 0; s < count; s += kLanes) {
    const auto heightOf = [&](int c)
                              HWY_ATTR { return hn::Load(d, window.Y + c * window.Pitch + s); };
    const VD y[3] = {heightOf(columns.Corner[0]), heightOf(columns.Corner[1]),
                     heightOf(columns.Corner[2])};
    const TRowRanges<DD> ranges = RowRangesOf(d, y, height);
    hn::Store(ranges.Order, d, out->Order + s);
    for (int minor = 0; minor < 2; ++minor) {
      hn::Store(ranges.Minor[minor].First, d, out->First[minor] + s);
      hn::Store(ranges.Minor[minor].Count, d, out->Count[minor] + s);
    }
  }
}

// Lines in the window, by the steps of rasterisation in their order, and the pixels of their ends.
// Of those out of reach of kernels the pixels may be any.
inline HWY_ATTR void ProjectLines(const TVertexBatch& batch, int count, int width, int height,
                                  TVertexBatch* window, TLineEnds* out) {
  const DD d;
  const DI di;
  const VD half = hn::Set(d, 0.5);
  const auto toWindow = [&](const double* from, VD h, int size, double* to, std::int32_t* pixel)
                            HWY_ATTR {
                              const VD scaled = hn::Add(hn::Mul(hn::Load(d, from), h), half);
                              const VD u = hn::Sub(hn::Mul(hn::Set(d, size), scaled), half);
                              hn::Store(u, d, to);
                              hn::Store(hn::DemoteTo(di, hn::Add(u, half)), di, pixel);
                            };
  for (int c = 0; c < 2; ++c) {
    for (int i = c * batch.Pitch; i < c * batch.Pitch + count; i += kLanes) {
      const VD r = hn::Div(hn::Set(d, 1.0), hn::Load(d, batch.W + i));
      const VD h = hn::Mul(r, half);
      toWindow(batch.X + i, h, width, window->X + i, out->X + i);
      toWindow(batch.Y + i, h, height, window->Y + i, out->Y + i);
      hn::Store(hn::Add(hn::Mul(hn::Load(d, batch.Z + i), h), half), d, window->Z + i);
      hn::Store(r, d, window->W + i);
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
