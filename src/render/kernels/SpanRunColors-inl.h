// The colours of a run of pixels. Included once for each instruction set.
//
// Tested by: tests/render/SpanBytes.cpp (SpanBytes.*), tests/render/SpanRows.cpp (SpanRows.*),
// tests/render/SpanLevels.cpp (SpanLevels.*)

#if defined(ZX_RENDER_SPANRUNCOLORS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANRUNCOLORS_INL_H_
#undef ZX_RENDER_SPANRUNCOLORS_INL_H_
#else
#define ZX_RENDER_SPANRUNCOLORS_INL_H_
#endif

#include <ZxCore3D/render/kernels/SpanDepthStencil-inl.h>
#include <ZxCore3D/render/kernels/SpanExactColors-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

struct TRunPixels {
  int X; ///< column of the first
  int Count;
  TRunValues Values;
};

// The exact bytes of a set of channels, and the constant ones, of two groups from column x on.
template <bool kPerspective>
HWY_INLINE HWY_ATTR VFU ExactPair(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                  int x, std::uint32_t channels) {
  const auto exact = [&](int at) HWY_ATTR {
    return ExactUntextured<kPerspective>(job, row, slots.Color, slots.Secondary,
                                         kAllChannels & ~channels, ColumnParameter(row, at));
  };
  return hn::Combine(DFU(), exact(x + kLanes), exact(x));
}

// Whether channels have one value throughout a row, being the same at all vertices, as 1/w is.
inline HWY_ATTR bool AreSame(const TRowSlots& slots, const TRow& row, std::uint32_t channels) {
  bool same = channels == 0 || HasOneW(row);
  for (int i = 0; i < 4; ++i) {
    same = same && ((channels >> i & 1u) == 0 || row.Delta[slots.Color + i] == 0.0);
  }
  return same;
}

// Recomputes, of two groups from column x on, those that have a pixel in `unsure`.
template <bool kPerspective>
HWY_NOINLINE HWY_ATTR VFU ExactFallbackPair(const TSpanJob& job, const TRowSlots& slots,
                                            const TRow& row, int x, std::uint64_t unsure,
                                            VFU packed) {
  HWY_ALIGN std::uint32_t colors[kFloatLanes];
  hn::Store(packed, DFU(), colors);
  for (int k = 0; k < kFloatLanes; k += kLanes) {
    if ((unsure >> k & FirstBits(kLanes)) != 0) {
      const VU exact = ExactFallbackColors<TTexelSource::None, kPerspective>(
          job, slots, row, ColumnParameter(row, x + k), kAllChannels, hn::Zero(DU()));
      hn::Store(exact, DU(), colors + k);
    }
  }
  return hn::Load(DFU(), colors);
}

// Draws the colours of a run by pairs of groups. Without masked access none of them is blended: a
// pair may reach past the pixels that are readable.
template <bool kPerspective>
HWY_INLINE HWY_ATTR void DrawUntexturedColors(const TSpanJob& job, const TRowSlots& slots,
                                              const TRow& row, const TRunPixels& run,
                                              std::uint64_t shaded, std::uint32_t* color) {
  const DFF df;
  const DFU du;
  const std::uint32_t ties = job.Primitive.TieMask;
  const bool sameTies = AreSame(slots, row, ties);
  VFU tied = hn::Zero(du);
  if (kPerspective && ties != 0) {
    tied = ExactPair<kPerspective>(job, slots, row, run.X, ties);
  }
  for (int i = 0; i < run.Count; i += kFloatLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kFloatLanes);
    if (bits == 0) {
      continue;
    }
    const auto live = MaskOfBits(du, bits);
    VFU packed = hn::Set(du, job.Primitive.ConstColor);
    if (!job.Primitive.HasConstColor()) {
      const VFF t = hn::Load(df, run.Values.FloatT + i);
      MFI sure = AllLanes(DFI());
      packed = UntexturedBytes<kPerspective>(df, job, slots, *row.Floats,
                                             job.Primitive.ConstMask | ties, t, &sure);
      if (kPerspective && !sameTies) {
        tied = ExactPair<kPerspective>(job, slots, row, run.X + i, ties);
      }
      packed = hn::Or(packed, tied);
      const auto unsure = hn::AndNot(hn::RebindMask(du, sure), live);
      if (HWY_UNLIKELY(!hn::AllFalse(du, unsure))) {
        packed = ExactFallbackPair<kPerspective>(job, slots, row, run.X + i, BitsOfMask(du, unsure),
                                                 packed);
      }
    }
    if (kMaskedAccess && job.Draw.ReadsColor()) {
      packed = OutputColors(du, job.Draw, packed, LoadMasked(du, live, color + i));
    }
    StoreMasked(du, packed, live, color + i);
  }
}

// --- With a texture, in stages: divisions, then texels and bytes. Fused, the dependency chain
// would exceed the out-of-order window.

// Fetches the texels of a run, of each group that has a pixel in `shaded`. Returns the pixels that
// only the exact path will do for.
template <TTexelSource kTexels, bool kPerspective, TTexelReach kReach>
HWY_INLINE HWY_ATTR std::uint64_t FetchRun(const TSpanJob& job, const TRowSlots& slots,
                                           const TRow& row, int count, std::uint64_t shaded,
                                           const double* t, TFetchedTexels* ready) {
  std::uint64_t unsure = 0;
  for (int i = 0; i < count; i += kLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kLanes);
    if (bits != 0 && HWY_UNLIKELY((!FetchTexelsAt<kTexels, kPerspective, kReach>(
                         job, slots, row, hn::Load(DD(), t + i), &ready[i / kLanes])))) {
      unsure |= bits << i;
    }
  }
  return unsure;
}

// The packed colours of a run, in whole vectors: those of each group that has a pixel in `shaded`.
// Rounding tests that fail are seen to at the end: a branch upon each would be foretold wrong as
// often, and known to be so after all of a group's steps.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR void TexturedColors(const TSpanJob& job, const TRowSlots& slots,
                                        const TRow& row, int count, std::uint64_t shaded,
                                        const double* t, std::uint32_t* packed) {
  const DD d;
  TFetchedTexels ready[kRun / kLanes];
  const auto fetch = [&](auto reach) HWY_ATTR {
    return FetchRun<kTexels, kPerspective, decltype(reach)::value>(job, slots, row, count, shaded,
                                                                   t, ready);
  };
  const TTexelReach reach = kGathers ? job.Primitive.Reach : TTexelReach::Anywhere;
  const std::uint64_t unsure =
      reach == TTexelReach::Plain ? fetch(std::integral_constant<TTexelReach, TTexelReach::Plain>())
      : reach == TTexelReach::Periodic
          ? fetch(std::integral_constant<TTexelReach, TTexelReach::Periodic>())
          : fetch(std::integral_constant<TTexelReach, TTexelReach::Near>());

  int& exactRuns = row.Floats->ExactRuns;
  const bool tries = exactRuns == 0;
  std::uint8_t sure[kRun / kLanes][8]; // a mask for each group
  std::memset(sure, tries ? 0xFF : 0, sizeof sure);
  MFI all = AllLanes(DFI());
  for (int i = 0; tries && i < count; i += kLanes) {
    if (((shaded & ~unsure) >> i & FirstBits(kLanes)) == 0) {
      continue;
    }
    VU colors;
    const MFI group = TexturedBytes<kTexels, kPerspective>(
        job, slots, *row.Floats, hn::Load(d, t + i), ready[i / kLanes], &colors);
    all = hn::And(all, group);
    hn::StoreMaskBits(DFI(), group, sure[i / kLanes]);
    hn::Store(colors, DU(), packed + i);
  }
  if (tries && unsure == 0 && hn::AllTrue(DFI(), all)) {
    return;
  }
  std::uint32_t common = kAllChannels;
  for (int i = 0; i < count; i += kLanes) {
    if ((shaded >> i & FirstBits(kLanes)) == 0) {
      continue;
    }
    const TFetchedTexels& fetched = ready[i / kLanes];
    const VD at = hn::Load(d, t + i);
    VU colors = hn::Zero(DU());
    if ((unsure >> i & FirstBits(kLanes)) != 0) {
      colors =
          ExactFallbackColors<kTexels, kPerspective>(job, slots, row, at, kAllChannels, colors);
    } else {
      std::uint64_t bits;
      std::memcpy(&bits, sure[i / kLanes], sizeof bits);
      const std::uint32_t channels = UnsureChannels(bits);
      common &= channels;
      if (channels == 0) {
        continue;
      }
      colors = ExactFetchedFallback<kTexels, kPerspective>(
          job, slots, row, at, fetched, channels,
          channels == kAllChannels ? colors : hn::Load(DU(), packed + i));
    }
    hn::Store(colors, DU(), packed + i);
  }
  exactRuns = !tries ? exactRuns - 1 : common == kAllChannels ? kExactRuns : 0;
}

// The colours of a run; with `floatT` its t is there in float alone.
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
    if (row.HasFloats()) {
      TexturedColors<kTexels, kPerspective>(job, slots, row, run.Count, shaded, run.Values.T,
                                            colors);
      staged = true;
    }
  }
  for (int i = 0; i < run.Count; i += kLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kLanes);
    if (bits == 0) {
      continue;
    }
    const MI live = MaskOfBits(DI(), bits);
    VU packed = staged ? hn::Load(du, colors + i)
                       : PackedColors<kTexels, kPerspective>(job, slots, row,
                                                             hn::Load(d, run.Values.T + i));
    if (job.Draw.ReadsColor()) {
      packed = OutputColors(du, job.Draw, packed, LoadLive(du, live, color + i));
    }
    StoreLive(du, packed, live, color + i);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
