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
#include <ZxCore3D/render/stages/RowWalk.h>

#ifndef ZX_RENDER_SHADEDROW_ONCE
#define ZX_RENDER_SHADEDROW_ONCE
namespace Zx3D {

/// Pixels of a row, all of them covered. Addresses are those of the first; without a stencil test,
/// that of the stencil is null.
struct TShadedSpan {
  TRenderCPU& Context;
  const TRenderCPU::EDGE& Span;
  TRenderCPU::FS_DATA* Record; ///< its row is set
  int First;                   ///< column
  int End;                     ///< column after the last
  unsigned char* Color;
  std::ptrdiff_t ColorStep;
  unsigned char* Depth;
  unsigned char* Stencil;

  unsigned char* ColorAt(int x) const { return Color + (x - First) * ColorStep; }
  unsigned char* DepthAt(int x) const {
    return Depth + (x - First) * static_cast<std::ptrdiff_t>(sizeof(float));
  }
  unsigned char* StencilAt(int x) const {
    return Stencil != nullptr ? Stencil + (x - First) : nullptr;
  }
};

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

// --- Slots

// The first `count` slots at t. With perspective every slot is multiplied by q, the position too.
HWY_INLINE HWY_ATTR void Interpolate(const TRenderCPU::EDGE& edge, double t, int count,
                                     bool perspective, TRenderCPU::VAR_DATA* to) {
  const D4 d;
  const auto* const delta = reinterpret_cast<const double*>(&edge.Delta);
  const auto* const begin = reinterpret_cast<const double*>(edge.Begin);
  auto* const out = reinterpret_cast<double*>(to);
  const V4 at = hn::Set(d, t);
  const V4 q = perspective ? hn::Set(d, 1.0 / (delta[3] * t + begin[3])) : at;
#pragma GCC unroll 8 // straight code: no end of a loop to predict
  for (int slot = 0; slot < static_cast<int>(kSlots); ++slot) {
    if (slot >= count) {
      break;
    }
    for (int i = 4 * slot; i < 4 * slot + 4; i += kLanes4) {
      const V4 v = hn::Add(hn::Mul(hn::LoadU(d, delta + i), at), hn::LoadU(d, begin + i));
      hn::StoreU(perspective ? hn::Mul(v, q) : v, d, out + i);
    }
  }
}

// The values of two edges at a row, and the row between them. Whole slots are stored as they will
// be loaded: a load of what was stored in pieces waits until all of it has reached memory.
HWY_INLINE HWY_ATTR void SetUpSpan(TRenderCPU* gl, const TRenderCPU::EDGE& a, double ta,
                                   const TRenderCPU::EDGE& b, double tb) {
  const D4 d;
  const int count = gl->m_VarCount;
  Interpolate(a, ta, count, false, &gl->m_VarEdgeA);
  Interpolate(b, tb, count, false, &gl->m_VarEdgeB);
  const bool rightward = gl->m_VarEdgeB.Slots[0].x >= gl->m_VarEdgeA.Slots[0].x;
  gl->m_Span.Begin = rightward ? &gl->m_VarEdgeA : &gl->m_VarEdgeB;
  gl->m_Span.End = rightward ? &gl->m_VarEdgeB : &gl->m_VarEdgeA;
  const auto* const begin = reinterpret_cast<const double*>(gl->m_Span.Begin);
  const auto* const end = reinterpret_cast<const double*>(gl->m_Span.End);
  auto* const delta = reinterpret_cast<double*>(&gl->m_Span.Delta);
  for (int i = 0; i < 4 * count; i += kLanes4) {
    hn::StoreU(hn::Sub(hn::LoadU(d, end + i), hn::LoadU(d, begin + i)), d, delta + i);
  }
}

// --- One by one

// A colour as bytes in a word, red the lowest: each the low byte of the truncation of 255 c + 0.5.
// Channels are loaded one by one: a load of several would wait for a shader's stores of one at a
// time to reach memory.
HWY_INLINE HWY_ATTR std::uint32_t PackedBytes(const vec_t_<double, 4>& color) {
  const D4 d;
  const hn::CappedTag<std::uint32_t, 4> d4;
  bool fits = true;
  const auto pair = [](const double* from) HWY_ATTR {
    const hn::CappedTag<double, 1> d1;
    return hn::Combine(hn::CappedTag<double, 2>(), hn::LoadU(d1, from + 1), hn::LoadU(d1, from));
  };
  const auto truncated = [d, &fits](V4 channels) HWY_ATTR {
    const V4 value = hn::Add(hn::Mul(channels, hn::Set(d, 255.0)), hn::Set(d, 0.5));
    const auto inRange = hn::Lt(hn::Abs(value), hn::Set(d, 2147483648.0));
    fits = fits && hn::AllTrue(d, inRange);
    return hn::DemoteTo(hn::Rebind<std::int32_t, D4>(), hn::IfThenElseZero(inRange, value));
  };
#if ZX_HAS_ONE_BLOCK
  const auto high = truncated(pair(&color.z));
  const auto channels = hn::BitCast(
      d4, hn::Combine(hn::RebindToSigned<decltype(d4)>(), high, truncated(pair(&color.x))));
#else
  const auto channels = hn::BitCast(d4, truncated(hn::Combine(d, pair(&color.z), pair(&color.x))));
#endif
  const auto bytes = hn::TruncateTo(hn::Rebind<std::uint8_t, decltype(d4)>(), channels);
  return HWY_LIKELY(fits) ? hn::GetLane(hn::BitCast(hn::CappedTag<std::uint32_t, 1>(), bytes))
                          : PackedBytesOfAny(color);
}

template <bool kStencil> HWY_NOINLINE HWY_ATTR void ShadePixels(const TShadedSpan& row) {
  TRenderCPU& gl = row.Context;
  TRenderCPU::FS_DATA* const record = row.Record;
  unsigned char* color = row.Color;
  unsigned char* depth = row.Depth;
  for (int x = row.First; x < row.End; ++x) {
    const double t = (x - row.Span.Begin->Slots[0].x) / row.Span.Delta.Slots[0].x;
    const TShadedFragment fragment = {gl, row.Span, record, t};
    unsigned char* const stencil = kStencil ? row.StencilAt(x) : nullptr;
    if (PassesBeforeShading(gl, depth, stencil, fragment)) {
      Interpolate(row.Span, t, gl.m_VarCount, gl.m_PerspectiveHint != GL_FASTEST,
                  &gl.m_VarFragment);
      record->X = x;
      if (gl.m_FragmentShader->Execute(&gl.m_VarFragment, record) &&
          PassesAfterShading(gl, depth, stencil, fragment)) {
        if (HWY_UNLIKELY(gl.m_PixelWrite != nullptr)) {
          gl.m_PixelWrite(color, record->Color);
        } else {
          WritePacked(gl, color, PackedBytes(record->Color));
        }
      }
    }
    color += row.ColorStep;
    depth += sizeof(float);
  }
}

// --- At once

// Of `count` pixels from column x on, those that pass the tests before shading: their number, t,
// depths and columns.
inline HWY_ATTR int SelectFragments(const TShadedSpan& row, int x, int count, TShadedRow* out) {
  const TRenderCPU& gl = row.Context;
  const DD d;
  const DF df;
  const auto& begin = row.Span.Begin->Slots[0];
  const auto& delta = row.Span.Delta.Slots[0];
  const bool late = gl.m_CalcDepth;
  float& recorded = row.Record->Depth;
  for (int i = 0; i < count; i += kLanes) {
    const VI columns = Columns(DI(), x + i);
    const VD t =
        hn::Div(hn::Sub(hn::PromoteTo(d, columns), hn::Set(d, begin.x)), hn::Set(d, delta.x));
    VF depth = hn::DemoteTo(df, hn::Add(hn::Mul(hn::Set(d, delta.z), t), hn::Set(d, begin.z)));
    depth = gl.m_PolygonOffsetFill ? hn::Add(depth, hn::Set(df, gl.m_PolygonOffsetFactor)) : depth;
    hn::Store(t, d, out->T + i);
    hn::Store(late ? hn::Set(df, recorded) : depth, df, out->Depth + i);
    hn::Store(columns, DI(), out->X + i);
  }
  int selected = count;
  if (gl.m_StencilTest || (gl.m_DepthTest && !late)) {
    selected = 0;
    for (int i = 0; i < count; ++i) {
      unsigned char* const stencil = row.StencilAt(x + i);
      if (PassesStencil(gl, stencil)) {
        const float depth = out->Depth[i];
        out->T[selected] = out->T[i];
        out->Depth[selected] = depth;
        out->X[selected] = x + i;
        selected += late || PassesDepth(gl, row.DepthAt(x + i), depth, stencil) ? 1 : 0;
        recorded = depth;
      }
    }
  } else {
    recorded = out->Depth[count - 1];
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

// Whether nothing but writing bytes follows shading, of all fragments, which are neighbours.
inline bool AreWritten(const TShadedSpan& row, int count, const TShadedRow& arrays) {
  return row.Context.m_PixelWrite == nullptr && !row.Context.m_CalcDepth &&
         row.ColorStep == kPixelBytes && arrays.X[count - 1] - arrays.X[0] == count - 1 &&
         std::memchr(arrays.Keep, 0, static_cast<std::size_t>(count)) == nullptr;
}

// The stages after shading, of fragments from left to right, or target by target. The arrays hold
// the shader's results.
inline HWY_ATTR void WriteFragments(const TShadedSpan& row, int count, const TShadedRow& arrays) {
  const TRenderCPU& gl = row.Context;
  HWY_ALIGN std::uint32_t packed[kRun];
  bool fit = true;
  for (int i = 0; i < count; i += kLanes) {
    fit = PackGroup(arrays, i, packed) && fit;
  }
  if (fit && AreWritten(row, count, arrays)) {
    const std::size_t bytes = static_cast<std::size_t>(count) * 4;
    for (int i = 0; i < count && row.Stencil != nullptr; ++i) {
      RunStencil(gl, gl.m_StencilZPassOp, row.StencilAt(arrays.X[i]));
    }
    if (gl.m_DepthMask) {
      std::memcpy(row.DepthAt(arrays.X[0]), arrays.Depth, bytes);
    }
    unsigned char* const color = row.ColorAt(arrays.X[0]);
    if (IsCopy(gl)) {
      std::memcpy(color, packed, bytes);
    } else {
      TSpanJob job;
      SetUpOutput(gl, &job.Draw);
      DrawPixelRow(job, reinterpret_cast<const unsigned char*>(packed), color, count);
    }
    return;
  }
  for (int i = 0; i < count; ++i) {
    const int x = arrays.X[i];
    const TRowFragment fragment = {arrays.Depth[i]};
    if (!arrays.Keep[i] || !PassesAfterShading(gl, row.DepthAt(x), row.StencilAt(x), fragment)) {
      continue;
    }
    if (fit && gl.m_PixelWrite == nullptr) {
      WritePacked(gl, row.ColorAt(x), packed[i]);
    } else {
      WriteColor(gl, row.ColorAt(x), arrays.ColorOf(i));
    }
  }
}

inline HWY_ATTR void ShadeAtOnce(const TShadedSpan& span, TRowFragmentShaderCPU* shader,
                                 TShadedRow* arrays) {
  TRenderCPU& gl = span.Context;
  TRenderCPU::FS_DATA* const record = span.Record;
  FS_ROW row = {0, record->Y, record->FrontFacing, arrays->X, {}, {}, arrays->Depth, arrays->Keep};
  const int slots = std::min(gl.m_VarCount, static_cast<int>(kSlots));
  for (int i = 0; i < 4; ++i) {
    row.Color[i] = arrays->Color[i];
    for (int s = 0; s < slots; ++s) {
      row.Slots[s][i] = arrays->Slots[s][i];
    }
  }
  for (int x = span.First; x < span.End; x += kRun) {
    row.Count = SelectFragments(span, x, std::min(kRun, span.End - x), arrays);
    if (row.Count == 0) {
      continue;
    }
    const int last = row.Count - 1;
    InterpolateRow(span, slots, row.Count, arrays);
    Interpolate(span.Span, arrays->T[last], slots, gl.m_PerspectiveHint != GL_FASTEST,
                &gl.m_VarFragment);
    record->X = arrays->X[last];
    std::memset(arrays->Keep, 1, sizeof arrays->Keep);
    shader->ExecuteRow(row);
    int kept = last;
    while (kept >= 0 && !arrays->Keep[kept]) {
      --kept;
    }
    if (kept >= 0) {
      record->Color = arrays->ColorOf(kept);
      record->Depth = gl.m_CalcDepth ? arrays->Depth[kept] : record->Depth;
    }
    WriteFragments(span, row.Count, *arrays);
  }
}

// --- Rows

inline HWY_ATTR void ShadeSpan(TRenderEngine* engine, const TRenderCPU::EDGE& span, int y,
                               TRenderCPU::FS_DATA* fs) {
  TRenderCPU& gl = engine->gl;
  int start = 0;
  int last = 0;
  if (!FindColumns(gl, span, y, &start, &last)) {
    return;
  }
  int first = start;
  int end = last + 1;
  const bool trimmed = TrimToCovered(span, &first, &end);
  if (trimmed && first >= end) {
    return;
  }
  const TTargets& targets = engine->Targets;
  if (HWY_UNLIKELY(!AreCurrent(gl, targets))) {
    engine->MeasureTargets();
  }
  TKernelCounters* const counters = ActiveKernelCounters();
  const bool atOnce = engine->RowShader != nullptr && Meets(counters, engine->SetUpShadedRow());
  if (HWY_UNLIKELY(!targets.Fit || !trimmed)) {
    engine->WalkSpan(span, y, start, last, fs);
    return;
  }
  if (HWY_UNLIKELY(counters != nullptr)) {
    counters->StartRow();
    counters->Add(atOnce ? TKernel::ShadedRows : TKernel::Reference, end - first);
  }
  // Steps within a row are not those between pixels of the surface.
  const auto address = [start, first, y](const TTarget& target) {
    return target.Data + target.OffsetOf(start, y) + (first - start) * target.Step;
  };
  const TShadedSpan row = {gl,
                           span,
                           fs,
                           first,
                           end,
                           address(targets.Color),
                           targets.Color.Step,
                           address(targets.Depth),
                           gl.m_StencilTest ? address(targets.Stencil) : nullptr};
  if (HWY_UNLIKELY(atOnce)) {
    ShadeAtOnce(row, engine->RowShader, engine->Row());
  } else if (row.Stencil != nullptr) {
    ShadePixels<true>(row);
  } else {
    ShadePixels<false>(row);
  }
}

inline HWY_ATTR void ShadeRows(TRenderEngine* engine, const TRenderCPU::EDGE& a,
                               const TRenderCPU::EDGE& b, TRenderCPU::FS_DATA* fs) {
  TRenderCPU& gl = engine->gl;
  ForEachRow(a, b, gl.m_Height, [&](int y, double ta, double tb) HWY_ATTR {
    SetUpSpan(&gl, a, ta, b, tb);
    fs->Y = y;
    ShadeSpan(engine, gl.m_Span, y, fs);
  });
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
