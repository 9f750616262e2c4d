// The pixels of several short rows as one group, where the processor reads and writes a vector's
// lanes at addresses of their own. Included once for each instruction set.

#if defined(ZX_RENDER_SPANSHORT_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANSHORT_INL_H_
#undef ZX_RENDER_SPANSHORT_INL_H_
#else
#define ZX_RENDER_SPANSHORT_INL_H_
#endif

#include <hwy/highway.h>

#include "SpanPixels-inl.h"

#if HWY_TARGET == HWY_AVX3

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

using DL = hn::Rebind<std::int64_t, DD>;
using TLaneIndices = decltype(hn::IndicesFromVec(DD(), hn::Zero(DL())));

// The value of each place in the row of each lane.
struct TLaneParts {
  const double (*At)[kLanes];
  TLaneIndices Row;

  HWY_INLINE HWY_ATTR VD operator[](int place) const {
    return hn::TableLookupLanes(hn::Load(DD(), At[place]), Row);
  }
};

struct TLaneRows {
  TLaneParts Begin;
  TLaneParts Delta;
};

// Rows that were made together as one run of pixels, in the order of drawing.
struct TRowRun {
  int Before[kLanes + 1]; ///< pixels in the rows before each; the last is the sum

  int RowOf(int pixel) const {
    int row = 0;
    while (Before[row + 1] <= pixel) {
      ++row;
    }
    return row;
  }
};

// Whether rows drawn as one run take at most half as many groups as drawn one by one.
inline HWY_ATTR bool SetRowRun(const TSpanJob& job, const TRows& rows, unsigned int covered,
                               TRowRun* run) {
  constexpr std::int64_t kMostBytes = std::int64_t{1} << 31;
  if (job.Stencil != nullptr || job.Height * std::int64_t{job.ColorRowStride} >= kMostBytes ||
      job.Height * std::int64_t{job.DepthRowStride} >= kMostBytes) {
    return false;
  }
  int groups = 0;
  run->Before[0] = 0;
  for (int i = 0; i < kLanes; ++i) {
    const int live = static_cast<int>(covered >> i & 1u);
    const int count = live * (rows.Last[i] - rows.First[i] + 1);
    groups += (count + kLanes - 1) / kLanes;
    run->Before[i + 1] = run->Before[i] + count;
  }
  return 2 * ((run->Before[kLanes] + kLanes - 1) / kLanes) <= groups;
}

// Where the pixels of a group stand: bytes from the beginning of a surface of four bytes a pixel.
HWY_INLINE HWY_ATTR VI PixelOffsets(const TRows& rows, std::ptrdiff_t rowStride, VI x, VI row) {
  const DI di;
  const VI lines = hn::Mul(hn::Load(di, rows.Y), hn::Set(di, static_cast<std::int32_t>(rowStride)));
  return hn::Add(hn::TableLookupLanes(lines, hn::IndicesFromVec(di, row)), hn::ShiftLeft<2>(x));
}

HWY_INLINE HWY_ATTR VU GatherLive(MI live, const unsigned char* base, VI offsets) {
  return VU{_mm256_mmask_i32gather_epi32(_mm256_setzero_si256(), live.raw, offsets.raw, base, 1)};
}

HWY_INLINE HWY_ATTR void ScatterLive(VU values, MI live, unsigned char* base, VI offsets) {
  _mm256_mask_i32scatter_epi32(base, live.raw, offsets.raw, values.raw, 1);
}

// Draws one group; the pixels in `live` exist. Which of them were shaded, as bits.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR unsigned int DrawRunGroup(const TSpanJob& job, const TRowSlots& slots,
                                              const TRows& rows, VI x, VI row, MI live) {
  const DD d;
  const DF df;
  const TLaneIndices lanes = hn::IndicesFromVec(d, hn::PromoteTo(DL(), row));
  const TLaneRows laneRows = {{rows.Begin, lanes}, {rows.Delta, lanes}};
  const VD t = hn::Div(hn::Sub(hn::PromoteTo(d, x), laneRows.Begin[0]), laneRows.Delta[0]);
  MI pass = live;
  if (job.DepthTest || job.DepthWrite) {
    VF depth = hn::DemoteTo(df, Interpolated<false>(laneRows, 2, t, t));
    if (job.AddOffset) {
      depth = hn::Add(depth, hn::Set(df, job.Offset));
    }
    const VI at = PixelOffsets(rows, job.DepthRowStride, x, row);
    if (job.DepthTest) {
      const VF stored = hn::BitCast(df, GatherLive(live, job.Depth, at));
      pass = hn::And(pass, DepthMask(job.DepthFunc, depth, stored));
    }
    if (job.DepthWrite) {
      ScatterLive(hn::BitCast(DU(), depth), pass, job.Depth, at);
    }
  }
  const unsigned int shaded = BitsOf(pass);
  if (shaded == 0 || job.ColorMask == 0) {
    return shaded;
  }
  VU packed = PackedColors<kTexels, kPerspective>(job, slots, laneRows, t);
  const VI at = PixelOffsets(rows, job.ColorRowStride, x, row);
  if (job.Blend || job.ColorMask != 15) {
    packed = OutputColors(job, packed, GatherLive(live, job.Color, at));
  }
  ScatterLive(packed, pass, job.Color, at);
  return shaded;
}

template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR void DrawRowRun(const TSpanJob& job, const TRowSlots& slots,
                                      const TRows& rows, const TRowRun& run, int start,
                                      TLastPixels* last) {
  const DI di;
  const VI before = hn::LoadU(di, run.Before);
  const VI shift = hn::Sub(hn::Load(di, rows.First), before);
  const int count = run.Before[kLanes];
  int lastShaded = -1;
  for (int first = 0; first < count; first += kLanes) {
    const VI pixel = hn::Iota(di, first);
    VI row = hn::Zero(di);
    for (int i = 1; i < kLanes; ++i) {
      row = hn::Sub(row, hn::VecFromMask(di, hn::Gt(pixel, hn::Set(di, run.Before[i] - 1))));
    }
    const VI x = hn::Add(pixel, hn::TableLookupLanes(shift, hn::IndicesFromVec(di, row)));
    const MI live = hn::Lt(pixel, hn::Set(di, count));
    const unsigned int shaded = DrawRunGroup<kTexels, kPerspective>(job, slots, rows, x, row, live);
    lastShaded = shaded != 0 ? first + 31 - __builtin_clz(shaded) : lastShaded;
  }
  const auto pixelAt = [&](int pixel) {
    const int row = run.RowOf(pixel);
    return TLastPixel{start, row, rows.First[row] + pixel - run.Before[row]};
  };
  last->Stencil = pixelAt(count - 1);
  if (lastShaded >= 0) {
    last->Shaded = pixelAt(lastShaded);
  }
}

using TDrawRowRun = void (*)(const TSpanJob& job, const TRowSlots& slots, const TRows& rows,
                             const TRowRun& run, int start, TLastPixels* last);

// By where texels come from, then by perspective.
inline constexpr TDrawRowRun kRunWays[4][2] = {
    {DrawRowRun<TTexelSource::None, false>, DrawRowRun<TTexelSource::None, true>},
    {DrawRowRun<TTexelSource::Nearest, false>, DrawRowRun<TTexelSource::Nearest, true>},
    {DrawRowRun<TTexelSource::Linear, false>, DrawRowRun<TTexelSource::Linear, true>},
    {DrawRowRun<TTexelSource::Sampler, false>, DrawRowRun<TTexelSource::Sampler, true>},
};

// Draws rows that were made together as one run; false, with nothing drawn, where that is no gain.
inline HWY_ATTR bool DrawAsRun(const TSpanJob& job, const TRowSlots& slots, const TRows& rows,
                               unsigned int covered, int start, TLastPixels* last) {
  TRowRun run;
  if (!SetRowRun(job, rows, covered, &run)) {
    return false;
  }
  kRunWays[static_cast<int>(job.Texels)][job.Perspective ? 1 : 0](job, slots, rows, run, start,
                                                                  last);
  return true;
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#else

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

inline HWY_ATTR bool DrawAsRun(const TSpanJob&, const TRowSlots&, const TRows&, unsigned int, int,
                               TLastPixels*) {
  return false;
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif

#endif
