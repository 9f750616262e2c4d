// The pixels of a row, as many at a time as a vector of doubles holds: depth and stencil, colour,
// output. Included once for each instruction set.
//
// Tested by: tests/render/SpanRows.cpp (SpanRows.*), tests/render/SpanLevels.cpp (SpanLevels.*),
// tests/render/MaskedWrites.cpp (MaskedWrites.*)

#if defined(ZX_RENDER_SPANROWS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANROWS_INL_H_
#undef ZX_RENDER_SPANROWS_INL_H_
#else
#define ZX_RENDER_SPANROWS_INL_H_
#endif

#include <cstring>

#include <ZxCore3D/types/InstructionSets-inl.h>

#include <hwy/highway.h>

#include <ZxCore3D/render/kernels/SpanTextured-inl.h>
#include <ZxCore3D/render/kernels/SpanUntextured-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// Where a group of pixels stands in the three surfaces; the stencil may be null.
struct TGroupTargets {
  std::uint32_t* Color;
  float* Depth;
  unsigned char* Stencil;
};

// Which pixels of a group got how far, as bits: through the stencil test and through all tests.
struct TGroupResult {
  unsigned int Stencil;
  unsigned int Shaded;
};

// The packed colours as written: blended with `before`, and within the colour mask.
HWY_INLINE HWY_ATTR VU OutputColors(const TSpanJob& job, VU packed, VU before) {
  if (job.Blend) {
    packed = Blended(packed, before);
  }
  if (job.ColorMask != 15) {
    const std::uint32_t bytes =
        (job.ColorMask & 1 ? 0x000000FFu : 0) | (job.ColorMask & 2 ? 0x0000FF00u : 0) |
        (job.ColorMask & 4 ? 0x00FF0000u : 0) | (job.ColorMask & 8 ? 0xFF000000u : 0);
    const VU kept = hn::Set(DU(), bytes);
    packed = hn::Or(hn::And(packed, kept), hn::AndNot(kept, before));
  }
  return packed;
}

// The stages of a run for one group of pixels at t, of which the first `count` exist. Without
// masked access there is memory for all lanes.
template <TTexelSource kTexels, bool kPerspective, bool kStencil>
HWY_INLINE HWY_ATTR TGroupResult DrawGroup(const TSpanJob& job, const TRowSlots& slots,
                                           const TRow& row, VD t, int count,
                                           const TGroupTargets& to) {
  const DU du;
  const DF df;
  const std::uint64_t live = FirstBits(count);
  std::uint64_t tested = live;
  TStencilRun stencil;
  if constexpr (kStencil) {
    std::memset(stencil.Values, 0, sizeof stencil.Values); // all of them are tested
    if (!kMaskedAccess || count == kLanes) { // a size that the compiler knows needs no call
      std::memcpy(stencil.Values, to.Stencil, kLanes);
    } else {
      std::memcpy(stencil.Values, to.Stencil, static_cast<std::size_t>(count));
    }
    tested &= StencilBits(job, stencil);
  }
  std::uint64_t shaded = tested;
  if (job.DepthTest || job.DepthWrite) {
    const MI alive = MaskOfBits(live);
    MI pass = MaskOfBits(tested);
    VF depth = hn::DemoteTo(df, Interpolated<false>(row, 2, t, t));
    if (job.AddOffset) {
      depth = hn::Add(depth, hn::Set(df, job.Offset));
    }
    const VF stored = LoadLive(df, alive, to.Depth);
    if (job.DepthTest) {
      const auto passes = DepthMask(df, job.DepthFunc, depth, stored);
      pass = hn::And(pass, hn::RebindMask(DI(), passes));
      shaded = BitsOf(pass);
    }
    if (job.DepthWrite) {
      StoreLive(df, depth, pass, to.Depth);
    }
  }
  if constexpr (kStencil) {
    StepStencils(job, live, tested, shaded, &stencil, to.Stencil);
  }
  const TGroupResult result = {static_cast<unsigned int>(tested),
                               static_cast<unsigned int>(shaded)};
  if (shaded == 0 || job.ColorMask == 0) {
    return result;
  }

  const MI pass = MaskOfBits(shaded);
  VU packed = PackedColors<kTexels, kPerspective>(job, slots, row, t);
  if (job.Blend || job.ColorMask != 15) {
    packed = OutputColors(job, packed, LoadLive(du, pass, to.Color));
  }
  StoreLive(du, packed, pass, to.Color);
  return result;
}

// The last pixel, in the order of drawing, of those that left something in the fragment record.
struct TLastPixel {
  int Start = -1; ///< number of the first of the rows that were made with its own; -1 for none
  int Lane = 0;
  int X = 0;
};

struct TLastPixels {
  TLastPixel Stencil; ///< that passed the stencil test: its depth is left
  TLastPixel Shaded;
};

// The last pixels of a row that passed the stencil test and that passed all tests; -1 if none did.
struct TRowResult {
  int LastDepthTested;
  int LastShaded;
};

HWY_INLINE void RecordGroup(TGroupResult group, int x, TRowResult* row) {
  if (group.Stencil != 0) {
    row->LastDepthTested = x + 31 - __builtin_clz(group.Stencil);
  }
  if (group.Shaded != 0) {
    row->LastShaded = x + 31 - __builtin_clz(group.Shaded);
  }
}

// A group of which only the first pixels exist, in copies of whole vectors: nothing outside a row,
// or beside a line, is touched.
struct TGroupStaging {
  HWY_ALIGN std::uint32_t Color[HWY_LANES(double)];
  HWY_ALIGN float Depth[HWY_LANES(double)];
  HWY_ALIGN unsigned char Stencil[HWY_LANES(double)];
};

template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR TGroupResult DrawStaged(const TSpanJob& job, const TRowSlots& slots,
                                              const TRow& row, const double* t, std::size_t count,
                                              TGroupStaging* copies) {
  const VD at = hn::Load(DD(), t);
  const int live = static_cast<int>(count);
  if (job.Stencil != nullptr) {
    return DrawGroup<kTexels, kPerspective, true>(job, slots, row, at, live,
                                                  {copies->Color, copies->Depth, copies->Stencil});
  }
  return DrawGroup<kTexels, kPerspective, false>(job, slots, row, at, live,
                                                 {copies->Color, copies->Depth, nullptr});
}

// A group of pixels that lie anywhere, no two at one place.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR TGroupResult DrawStagedPixels(const TSpanJob& job, const TRowSlots& slots,
                                                  const TRow& row, const double* t,
                                                  std::size_t count, const TGroupTargets* pixels) {
  const bool useDepth = job.DepthTest || job.DepthWrite;
  TGroupStaging copies = {};
  for (std::size_t k = 0; k < count; ++k) {
    copies.Color[k] = *pixels[k].Color;
    if (useDepth) {
      copies.Depth[k] = *pixels[k].Depth;
    }
    if (job.Stencil != nullptr) {
      copies.Stencil[k] = *pixels[k].Stencil;
    }
  }
  const TGroupResult group = DrawStaged<kTexels, kPerspective>(job, slots, row, t, count, &copies);
  const std::uint64_t stepped =
      job.Stencil != nullptr
          ? SteppedPixels(job, FirstBits(static_cast<int>(count)), group.Stencil, group.Shaded)
          : 0;
  for (std::size_t k = 0; k < count; ++k) {
    if ((group.Shaded >> k & 1u) != 0) {
      if (job.ColorMask != 0) {
        *pixels[k].Color = copies.Color[k];
      }
      if (job.DepthWrite) {
        *pixels[k].Depth = copies.Depth[k];
      }
    }
    if ((stepped >> k & 1u) != 0) {
      *pixels[k].Stencil = copies.Stencil[k];
    }
  }
  return group;
}

// The last pixels of a row, fewer than a vector holds: nothing but those is read, and of those
// nothing written but what passes its tests.
template <TTexelSource kTexels, bool kPerspective, bool kStencil>
HWY_INLINE HWY_ATTR TGroupResult DrawPartialGroup(const TSpanJob& job, const TRowSlots& slots,
                                                  const TRow& row, VD t, std::size_t count,
                                                  const TGroupTargets& to) {
  if constexpr (kMaskedAccess) {
    return DrawGroup<kTexels, kPerspective, kStencil>(job, slots, row, t, static_cast<int>(count),
                                                      to);
  } else {
    HWY_ALIGN double values[HWY_LANES(double)];
    hn::Store(t, DD(), values);
    TGroupTargets pixels[HWY_LANES(double)] = {};
    for (std::size_t k = 0; k < count; ++k) {
      pixels[k] = {to.Color + k, to.Depth + k, kStencil ? to.Stencil + k : nullptr};
    }
    return DrawStagedPixels<kTexels, kPerspective>(job, slots, row, values, count, pixels);
  }
}

inline HWY_ATTR float DepthAtT(const TSpanJob& job, const TRow& row, double t) {
  auto depth = static_cast<float>(row.Delta[2] * t + row.Begin[2]);
  if (job.AddOffset) {
    depth += job.Offset;
  }
  return depth;
}

// --- Rows that are a fill

// The vectors between the first and the last are aligned, since a store across two cache lines
// costs two; the first and the last may overlap them.
template <class D, class T>
HWY_INLINE HWY_ATTR void FillRun(D d, T value, T* to, std::size_t count) {
  const std::size_t lanes = hn::Lanes(d);
  if (count < lanes) {
    for (std::size_t i = 0; i < count; ++i) {
      to[i] = value;
    }
    return;
  }
  const auto values = hn::Set(d, value);
  const std::size_t aside = reinterpret_cast<std::uintptr_t>(to) / sizeof(T) % lanes;
  hn::StoreU(values, d, to);
  for (std::size_t i = lanes - aside; i + lanes <= count; i += lanes) {
    hn::StoreU(values, d, to + i);
  }
  hn::StoreU(values, d, to + count - lanes);
}

// Whether a row is a fill: one colour, one depth where it is written, and no test.
inline HWY_ATTR bool IsFill(const TSpanJob& job, const TRow& row) {
  return job.ConstMask == 15 && job.ColorMask == 15 && !job.Blend && !job.DepthTest &&
         job.Stencil == nullptr && (!job.DepthWrite || row.Delta[2] == 0.0);
}

inline HWY_ATTR void FillRow(const TSpanJob& job, const TRow& row, const TGroupTargets& to) {
  const auto count = static_cast<std::size_t>(row.Last - row.First + 1);
  FillRun(hn::ScalableTag<std::uint32_t>(), job.ConstColor, to.Color, count);
  if (job.DepthWrite) {
    FillRun(hn::ScalableTag<float>(), DepthAtT(job, row, 0.0), to.Depth, count);
  }
}

// --- Runs that fail the depth test as a whole

// Whether no pixel of a run passes. Depth is monotone along a row, as t, the product, the sum, the
// rounding to float and the offset are: what the nearer end fails against, all fail against.
inline HWY_ATTR bool WholeRunFails(const TSpanJob& job, const TRow& row, int x,
                                   const float* stored) {
  const hn::ScalableTag<float> d;
  const float a = DepthAtT(job, row, (x - row.Begin[0]) / row.Delta[0]);
  const float b = DepthAtT(job, row, (x + kRun - 1 - row.Begin[0]) / row.Delta[0]);
  if (!(a <= b || b <= a)) {
    return false;
  }
  const bool less = job.DepthFunc + GL_NEVER == GL_LESS;
  const auto nearest = hn::Set(d, a < b ? a : b);
  for (std::size_t i = 0; i < kRun; i += hn::Lanes(d)) {
    const auto there = hn::LoadU(d, stored + i);
    if (!hn::AllFalse(d, less ? hn::Lt(nearest, there) : hn::Le(nearest, there))) {
      return false;
    }
  }
  return true;
}

// --- Rows

// The colours of a run. If `floatT`, t is there in single precision only.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR void DrawColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    const TRunPixels& run, bool floatT, std::uint64_t shaded,
                                    std::uint32_t* color) {
  const DD d;
  const DU du;
  if constexpr (kTexels == TTexelSource::None) {
    if (floatT) {
      DrawUntexturedColors<kPerspective>(job, slots, row, run, shaded, color);
      return;
    }
  }
  bool staged = false;
  HWY_ALIGN std::uint32_t colors[kRun + kLanes];
  if constexpr (kTexels == TTexelSource::Nearest || kTexels == TTexelSource::Linear) {
    if (row.Floats != nullptr && row.Floats->FallbackBudget > 0) {
      TexturedColors<kTexels, kPerspective>(job, slots, row, run.Count, shaded, run.Values.T,
                                            colors);
      staged = true;
    }
  }
  const bool output = job.Blend || job.ColorMask != 15;
  for (int i = 0; i < run.Count; i += kLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kLanes);
    if (bits == 0) {
      continue;
    }
    const MI live = MaskOfBits(bits);
    VU packed = staged ? hn::Load(du, colors + i)
                       : PackedColors<kTexels, kPerspective>(job, slots, row,
                                                             hn::Load(d, run.Values.T + i));
    if (output) {
      packed = OutputColors(job, packed, LoadLive(du, live, color + i));
    }
    StoreLive(du, packed, live, color + i);
  }
}

// A run of pixels; without masked access their count is a multiple of the lanes.
template <TTexelSource kTexels, bool kPerspective, bool kStencil>
HWY_INLINE HWY_ATTR void DrawRun(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                 int x, int count, const TGroupTargets& to, TRowResult* result) {
  const std::uint64_t live = FirstBits(count);
  std::uint64_t tested = live;
  TStencilRun stencil;
  if (kStencil) {
    std::memcpy(stencil.Values, to.Stencil, static_cast<std::size_t>(count));
    tested &= StencilBits(job, stencil);
  }
  // Float colours need t only in float, and constant colours not at all.
  const bool floatT =
      kTexels == TTexelSource::None && !job.Blend && job.ColorMask == 15 &&
      (job.ConstMask == 15 || (row.Floats != nullptr && row.Floats->FallbackBudget > 0));
  TRunPixels run;
  run.X = x;
  run.Count = count;
  SetRunValues(row, x, count, !floatT, &run.Values);
  std::uint64_t shaded = tested;
  if (job.DepthTest || job.DepthWrite) {
    shaded = DrawDepths(job, count, run.Values.Depth, tested, to.Depth);
  }
  if (kStencil) {
    StepStencils(job, live, tested, shaded, &stencil, to.Stencil);
  }
  if (tested != 0) {
    result->LastDepthTested = x + 63 - __builtin_clzll(tested);
  }
  if (shaded == 0) {
    return;
  }
  result->LastShaded = x + 63 - __builtin_clzll(shaded);
  if (job.ColorMask != 0) {
    DrawColors<kTexels, kPerspective>(job, slots, row, run, floatT, shaded, to.Color);
  }
}

HWY_INLINE HWY_ATTR TGroupTargets TargetsAt(const TSpanJob& job, int x, int y) {
  return {reinterpret_cast<std::uint32_t*>(job.Color + y * job.ColorRowStride) + x,
          reinterpret_cast<float*>(job.Depth + y * job.DepthRowStride) + x,
          job.Stencil != nullptr ? job.Stencil + y * job.StencilRowStride + x : nullptr};
}

template <TTexelSource kTexels, bool kPerspective, bool kStencil>
HWY_INLINE HWY_ATTR TRowResult DrawRow(const TSpanJob& job, const TRowSlots& slots,
                                       const TRow& row) {
  if (kTexels == TTexelSource::None && IsFill(job, row)) {
    FillRow(job, row, TargetsAt(job, row.First, row.Y));
    return {row.Last, row.Last};
  }
  TRowResult result = {-1, -1};
  const int pixels = row.Last - row.First + 1;
  if (pixels < kLanes) {
    RecordGroup(DrawPartialGroup<kTexels, kPerspective, kStencil>(
                    job, slots, row, ColumnParameter(row, row.First),
                    static_cast<std::size_t>(pixels), TargetsAt(job, row.First, row.Y)),
                row.First, &result);
    return result;
  }
  const bool mayRejectRuns =
      job.DepthTest && !kStencil &&
      (job.DepthFunc + GL_NEVER == GL_LESS || job.DepthFunc + GL_NEVER == GL_LEQUAL);
  for (int x = row.First; x <= row.Last; x += kRun) {
    const TGroupTargets to = TargetsAt(job, x, row.Y);
    const int count = row.Last - x + 1 < kRun ? row.Last - x + 1 : kRun;
    if (mayRejectRuns && count == kRun && WholeRunFails(job, row, x, to.Depth)) {
      result.LastDepthTested = x + kRun - 1;
      continue;
    }
    const int whole = kMaskedAccess ? count : count / kLanes * kLanes;
    if (whole != 0) {
      DrawRun<kTexels, kPerspective, kStencil>(job, slots, row, x, whole, to, &result);
    }
    if (whole < count) {
      RecordGroup(DrawPartialGroup<kTexels, kPerspective, kStencil>(
                      job, slots, row, ColumnParameter(row, x + whole),
                      static_cast<std::size_t>(count - whole), TargetsAt(job, x + whole, row.Y)),
                  x + whole, &result);
    }
  }
  return result;
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
