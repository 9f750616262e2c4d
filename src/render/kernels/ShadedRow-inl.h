// Rows whose fragments a caller's shader computes. One by one, this is the reference walker's loop
// with the live slots and the channels of a pixel in vectors; state is read anew for each pixel,
// since the shader may change it. At once, pixels are the lanes. Included once for each instruction
// set.
//
// Tested by: tests/render/ShadedRows.cpp (ShadedRows.*, WhichRows.*)

#if defined(ZX_RENDER_SHADEDROW_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SHADEDROW_INL_H_
#undef ZX_RENDER_SHADEDROW_INL_H_
#else
#define ZX_RENDER_SHADEDROW_INL_H_
#endif

#include <algorithm>
#include <cstring>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/RowShaderCPU.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/kernels/PixelRows-inl.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/FragmentStages.h>

#ifndef ZX_RENDER_SHADEDROW_ONCE
#define ZX_RENDER_SHADEDROW_ONCE
namespace Zx3D {

/// A fragment as the stages around its shader see it. Compiled without an instruction set of its
/// own, as those are, so that they can be inlined.
struct TShadedFragment {
  const TRenderCPU& Context;
  const TRenderCPU::EDGE& Span;
  TRenderCPU::FS_DATA* Record;
  double T;

  float Depth() const { return Record->Depth; }
  void SetDepth() const { Record->Depth = SpanDepth(Context, Span, T); }
};

/// The same of a row that is shaded at once.
struct TRowFragment {
  float Value;

  float Depth() const { return Value; }
};

} // namespace Zx3D
#endif

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// The components of a slot, in one vector or two.
using D4 = hn::CappedTag<double, 4>;
using V4 = hn::Vec<D4>;
inline constexpr std::size_t kLanes4 = hn::MaxLanes(D4());

// The slots of a fragment at t. With perspective every slot is multiplied by q, the position too.
HWY_INLINE HWY_ATTR void InterpolateSlots(TRenderCPU* gl, const TRenderCPU::EDGE& span, double t) {
  const D4 d;
  const auto* const delta = reinterpret_cast<const double*>(&span.Delta);
  const auto* const begin = reinterpret_cast<const double*>(span.Begin);
  auto* const out = reinterpret_cast<double*>(&gl->m_VarFragment);
  const V4 at = hn::Set(d, t);
  const bool perspective = gl->m_PerspectiveHint != GL_FASTEST;
  const V4 q = perspective ? hn::Set(d, 1.0 / (delta[3] * t + begin[3])) : at;
  const auto count = static_cast<std::size_t>(gl->m_VarCount);
#pragma GCC unroll 8 // straight code: no end of a loop to predict
  for (std::size_t slot = 0; slot < kSlots; ++slot) {
    if (slot >= count) {
      break;
    }
    for (std::size_t i = 4 * slot; i < 4 * slot + 4; i += kLanes4) {
      const V4 v = hn::Add(hn::Mul(hn::LoadU(d, delta + i), at), hn::LoadU(d, begin + i));
      hn::StoreU(perspective ? hn::Mul(v, q) : v, d, out + i);
    }
  }
}

// Two doubles, each loaded by itself: a load of both would wait for a shader's stores of one at a
// time to reach memory.
HWY_INLINE HWY_ATTR hn::Vec<hn::CappedTag<double, 2>> LoadPair(const double* from) {
  const hn::CappedTag<double, 2> d;
  return hn::InterleaveLower(d, hn::Set(d, from[0]), hn::Set(d, from[1]));
}

// A colour as bytes in a word, red the lowest: each the low byte of the truncation of 255 c + 0.5.
HWY_INLINE HWY_ATTR std::uint32_t PackedBytes(const vec_t_<double, 4>& color) {
  const D4 d;
  const hn::Rebind<std::int32_t, D4> di;
  const hn::CappedTag<std::int32_t, 4> d4;
  const V4 limit = hn::Set(d, 2147483648.0);
  const V4 scale = hn::Set(d, 255.0);
  const V4 half = hn::Set(d, 0.5);
#if ZX_HAS_ONE_BLOCK
  const V4 low = hn::Add(hn::Mul(LoadPair(&color.x), scale), half);
  const V4 high = hn::Add(hn::Mul(LoadPair(&color.z), scale), half);
  const auto inRange = hn::And(hn::Lt(hn::Abs(low), limit), hn::Lt(hn::Abs(high), limit));
#else
  const V4 all = hn::Combine(d, LoadPair(&color.z), LoadPair(&color.x));
  const V4 low = hn::Add(hn::Mul(all, scale), half);
  const auto inRange = hn::Lt(hn::Abs(low), limit);
#endif
  if (HWY_UNLIKELY(!hn::AllTrue(d, inRange))) {
    return PackedBytesOfAny(color);
  }
#if ZX_HAS_ONE_BLOCK
  const auto channels = hn::Combine(d4, hn::DemoteTo(di, high), hn::DemoteTo(di, low));
#else
  const auto channels = hn::DemoteTo(di, low);
#endif
  const hn::Rebind<std::uint8_t, decltype(d4)> d8;
  const auto bytes = hn::DemoteTo(d8, hn::And(channels, hn::Set(d4, 255)));
  return hn::GetLane(hn::BitCast(hn::CappedTag<std::uint32_t, 1>(), bytes));
}

// t of pixels from column x on; up to a whole vector more is written.
HWY_INLINE HWY_ATTR void SetParameters(const TRenderCPU::EDGE& span, int x, int count, double* t) {
  const DD d;
  const DI di;
  const VD begin = hn::Set(d, span.Begin->Slots[0].x);
  const VD delta = hn::Set(d, span.Delta.Slots[0].x);
  for (int i = 0; i < count; i += kLanes) {
    const VD column = hn::PromoteTo(d, hn::Iota(di, x + i));
    hn::Store(hn::Div(hn::Sub(column, begin), delta), d, t + i);
  }
}

// t of as many pixels from column x on as a slot's vector has lanes: wider vectors take longer to
// divide in than they save, beside code that has none.
HWY_INLINE HWY_ATTR void SetFewParameters(double begin, double delta, int x, double* t) {
  const D4 d;
  const hn::Rebind<std::int32_t, D4> di;
  const V4 column = hn::PromoteTo(d, hn::Iota(di, x));
  hn::Store(hn::Div(hn::Sub(column, hn::Set(d, begin)), hn::Set(d, delta)), d, t);
}

template <bool kStencil> HWY_INLINE HWY_ATTR void ShadePixels(const TShadedSpan& row) {
  TRenderCPU& gl = row.Context;
  TRenderCPU::FS_DATA* const record = row.Record;
  const double begin = row.Span.Begin->Slots[0].x;
  const double delta = row.Span.Delta.Slots[0].x;
  HWY_ALIGN double parameters[kLanes4];
  unsigned char* color = row.Color;
  unsigned char* depth = row.Depth;
  unsigned char* stencil = row.Stencil;
  const auto shade = [&](int x, double t) HWY_ATTR __attribute__((always_inline)) {
    const TShadedFragment fragment = {gl, row.Span, record, t};
    if (!PassesBeforeShading(gl, depth, kStencil ? stencil : nullptr, fragment)) {
      return;
    }
    InterpolateSlots(&gl, row.Span, t);
    record->X = x;
    if (!gl.m_FragmentShader->Execute(&gl.m_VarFragment, record) ||
        !PassesAfterShading(gl, depth, kStencil ? stencil : nullptr, fragment)) {
      return;
    }
    if (HWY_UNLIKELY(gl.m_PixelWrite != nullptr)) {
      gl.m_PixelWrite(color, record->Color);
    } else {
      WritePacked(gl, color, PackedBytes(record->Color));
    }
  };
  for (std::size_t i = 0; i < static_cast<std::size_t>(row.Count); ++i) {
    const int x = row.First + static_cast<int>(i);
    const std::size_t lane = i % kLanes4;
    if (lane == 0) {
      SetFewParameters(begin, delta, x, parameters);
    }
    shade(x, parameters[lane]);
    color += row.ColorStep;
    depth += sizeof(float);
    stencil += kStencil ? 1 : 0;
  }
}

inline HWY_ATTR void ShadeSpan(const TShadedSpan& row) {
  if (row.Stencil != nullptr) {
    ShadePixels<true>(row);
  } else {
    ShadePixels<false>(row);
  }
}

// --- At once

// Window depths of `count` pixels with parameters t.
inline HWY_ATTR void SetDepths(const TShadedSpan& row, int count, const double* t, float* out) {
  const DD d;
  const DF df;
  const bool offset = row.Context.m_PolygonOffsetFill;
  const VF added = hn::Set(df, row.Context.m_PolygonOffsetFactor);
  const VD delta = hn::Set(d, row.Span.Delta.Slots[0].z);
  const VD begin = hn::Set(d, row.Span.Begin->Slots[0].z);
  for (int i = 0; i < count; i += kLanes) {
    const VF depth = hn::DemoteTo(df, hn::Add(hn::Mul(delta, hn::Load(d, t + i)), begin));
    hn::Store(offset ? hn::Add(depth, added) : depth, df, out + i);
  }
}

// Of `count` pixels from number `first` of the row on, whose parameters are `t`, those that pass
// the tests before shading: their t, depths and columns.
inline HWY_ATTR int SelectFragments(const TShadedSpan& row, int first, int count, const double* t,
                                    TShadedRow* out) {
  const TRenderCPU& gl = row.Context;
  const unsigned char* const depths =
      row.Depth + first * static_cast<std::ptrdiff_t>(sizeof(float));
  const auto passesStencil = [&](int i) {
    return PassesStencil(gl, row.Stencil != nullptr ? row.Stencil + first + i : nullptr);
  };
  int selected = 0;
  const auto select = [&](int i, float depth) {
    out->T[selected] = t[i];
    out->Depth[selected] = depth;
    out->X[selected] = row.First + first + i;
  };
  if (gl.m_CalcDepth) {
    for (int i = 0; i < count; ++i) {
      select(i, row.Record->Depth);
      selected += passesStencil(i) ? 1 : 0;
    }
  } else {
    HWY_ALIGN float own[kRun];
    SetDepths(row, count, t, own);
    for (int i = 0; i < count; ++i) {
      if (passesStencil(i)) {
        unsigned char* const stencil = row.Stencil != nullptr ? row.Stencil + first + i : nullptr;
        select(i, own[i]);
        const unsigned char* const depth = depths + static_cast<std::size_t>(i) * sizeof(float);
        selected += PassesDepth(gl, depth, own[i], stencil) ? 1 : 0;
        row.Record->Depth = own[i];
      }
    }
  }
  // Lanes past the last fragment divide as that one does, and raise nothing.
  for (int i = selected; i % kLanes != 0; ++i) {
    out->T[i] = out->T[selected - 1];
  }
  return selected;
}

// The live slots of the selected fragments.
inline HWY_ATTR void InterpolateRow(const TShadedSpan& row, int slots, int count, TShadedRow* out) {
  const DD d;
  const bool perspective = row.Context.m_PerspectiveHint != GL_FASTEST;
  const auto* const delta = reinterpret_cast<const double*>(&row.Span.Delta);
  const auto* const begin = reinterpret_cast<const double*>(row.Span.Begin);
  for (int i = 0; i < count; i += kLanes) {
    const VD t = hn::Load(d, out->T + i);
    const auto at = [&](int k) HWY_ATTR {
      return hn::Add(hn::Mul(hn::Set(d, delta[k]), t), hn::Set(d, begin[k]));
    };
    const VD q = perspective ? hn::Div(hn::Set(d, 1.0), at(3)) : hn::Set(d, 1.0);
    for (int k = 0; k < 4 * slots; ++k) {
      const VD v = at(k);
      hn::Store(perspective ? hn::Mul(v, q) : v, d, &out->Slots[0][0][0] + k * kRun + i);
    }
  }
}

// The colours of a group as bytes in words; false if a channel is out of the range of 32 bits.
// Lanes past the last fragment may hold anything, and only make the row go the longer road.
HWY_INLINE HWY_ATTR bool PackGroup(const TShadedRow& arrays, int i, std::uint32_t* packed) {
  const DD d;
  const DU du;
  MD fits = AllLanes(d);
  VU word = hn::Zero(du);
  for (int c = 3; c >= 0; --c) {
    const VD value =
        hn::Add(hn::Mul(hn::Load(d, arrays.Color[c] + i), hn::Set(d, 255.0)), hn::Set(d, 0.5));
    fits = hn::And(fits, hn::Lt(hn::Abs(value), hn::Set(d, 2147483648.0)));
    const VD safe = hn::IfThenElseZero(fits, value);
    const VU byte = hn::And(hn::BitCast(du, hn::DemoteTo(DI(), safe)), hn::Set(du, 255u));
    word = hn::Or(hn::ShiftLeft<8>(word), byte);
  }
  hn::StoreU(word, du, packed + i);
  return hn::AllTrue(d, fits);
}

// Whether nothing but writing follows shading, of all fragments, which are neighbours.
inline bool AreWritten(const TShadedSpan& row, int count, const TShadedRow& arrays) {
  return !row.Context.m_CalcDepth && row.ColorStep == kPixelBytes &&
         arrays.X[count - 1] - arrays.X[0] == count - 1 &&
         std::memchr(arrays.Keep, 0, static_cast<std::size_t>(count)) == nullptr;
}

// The stages after shading, of fragments from left to right. The arrays hold the shader's results.
inline HWY_ATTR void WriteFragments(const TShadedSpan& row, int count, const TShadedRow& arrays) {
  const TRenderCPU& gl = row.Context;
  HWY_ALIGN std::uint32_t packed[kRun];
  bool fit = true;
  for (int i = 0; i < count; i += kLanes) {
    fit = PackGroup(arrays, i, packed) && fit;
  }
  const auto depthAt = [&row](std::ptrdiff_t place) {
    return row.Depth + place * static_cast<std::ptrdiff_t>(sizeof(float));
  };
  TSpanJob job;
  SetUpOutput(gl, &job.Draw);
  if (fit && AreWritten(row, count, arrays) && KnowsWrites(gl, job.Draw)) {
    const std::ptrdiff_t place = arrays.X[0] - row.First;
    const std::size_t bytes = static_cast<std::size_t>(count) * 4;
    for (int i = 0; i < count && row.Stencil != nullptr; ++i) {
      RunStencil(gl, gl.m_StencilZPassOp, row.Stencil + place + i);
    }
    if (gl.m_DepthMask) {
      std::memcpy(depthAt(place), arrays.Depth, bytes);
    }
    unsigned char* const color = row.Color + place * row.ColorStep;
    const auto* const from = reinterpret_cast<const unsigned char*>(packed);
    if (IsCopy(gl)) {
      std::memcpy(color, from, bytes);
    } else if (gl.m_ColorMask != 0) {
      DrawPixelRow(job, from, color, count);
    }
    return;
  }
  for (int i = 0; i < count; ++i) {
    if (!arrays.Keep[i]) {
      continue;
    }
    const std::ptrdiff_t place = arrays.X[i] - row.First;
    unsigned char* const stencil = row.Stencil != nullptr ? row.Stencil + place : nullptr;
    if (!PassesAfterShading(gl, depthAt(place), stencil, TRowFragment{arrays.Depth[i]})) {
      continue;
    }
    unsigned char* const color = row.Color + place * row.ColorStep;
    if (fit && gl.m_PixelWrite == nullptr) {
      WritePacked(gl, color, packed[i]);
    } else {
      WriteColor(gl, color,
                 {arrays.Color[0][i], arrays.Color[1][i], arrays.Color[2][i], arrays.Color[3][i]});
    }
  }
}

inline HWY_ATTR void ShadeRow(const TShadedSpan& span, TRowFragmentShaderCPU* shader,
                              TShadedRow* arrays) {
  TRenderCPU& gl = span.Context;
  TRenderCPU::FS_DATA* const record = span.Record;
  FS_ROW row = {};
  row.Y = record->Y;
  row.FrontFacing = record->FrontFacing;
  row.X = arrays->X;
  row.Depth = arrays->Depth;
  row.Keep = arrays->Keep;
  const int slots = std::min(gl.m_VarCount, static_cast<int>(kSlots));
  for (int i = 0; i < 4; ++i) {
    row.Color[i] = arrays->Color[i];
    for (int s = 0; s < slots; ++s) {
      row.Slots[s][i] = arrays->Slots[s][i];
    }
  }
  HWY_ALIGN double t[kRun];
  for (int i = 0; i < span.Count; i += kRun) {
    const int pixels = std::min(kRun, span.Count - i);
    SetParameters(span.Span, span.First + i, pixels, t);
    row.Count = SelectFragments(span, i, pixels, t, arrays);
    if (row.Count == 0) {
      continue;
    }
    const int last = row.Count - 1;
    const float depth = record->Depth; // of the last pixel, which a test may have rejected
    InterpolateRow(span, slots, row.Count, arrays);
    InterpolateSlots(&gl, span.Span, arrays->T[last]);
    record->X = arrays->X[last];
    std::memset(arrays->Keep, 1, sizeof arrays->Keep);
    shader->ExecuteRow(row);
    int kept = last;
    while (kept >= 0 && !arrays->Keep[kept]) {
      --kept;
    }
    if (kept >= 0) {
      for (std::size_t c = 0; c < 4; ++c) {
        record->Color[c] = arrays->Color[c][kept];
      }
    }
    if (gl.m_CalcDepth && kept >= 0) {
      record->Depth = arrays->Depth[kept];
    } else {
      record->Depth = depth;
    }
    WriteFragments(span, row.Count, *arrays);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
