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

// Whether channels have one value throughout a row, being the same at all vertices, as 1/w is.
inline HWY_ATTR bool AreSame(const TRowSlots& slots, const TRow& row, std::uint32_t channels) {
  bool same = channels == 0 || HasOneW(row);
  for (int i = 0; i < 4; ++i) {
    same = same && ((channels >> i & 1u) == 0 || row.Delta[slots.Color + i] == 0.0);
  }
  return same;
}

// The exact bytes of a set of channels, and the constant ones, of two groups from column x on; of
// groups without a pixel in `pixels` those of `packed`.
template <bool kPerspective>
HWY_NOINLINE HWY_ATTR VFU ExactPair(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    int x, std::uint32_t channels, std::uint64_t pixels,
                                    VFU packed) {
  const DU du;
  const auto exact = [&](int k, VU others) HWY_ATTR {
    if ((pixels >> k & FirstBits(kLanes)) == 0) {
      return others;
    }
    return ExactUntextured<kPerspective>(job, row, slots.Color, slots.Secondary,
                                         kAllChannels & ~channels, ColumnParameter(row, x + k));
  };
  return hn::Combine(DFU(), exact(kLanes, hn::UpperHalf(du, packed)),
                     exact(0, hn::LowerHalf(du, packed)));
}

// Draws the colours of a run, from column x on, by pairs of groups.
template <bool kPerspective>
HWY_INLINE HWY_ATTR void
DrawUntexturedColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row, int x, int count,
                     const TRunValues& values, std::uint64_t shaded, std::uint32_t* color) {
  const DFF df;
  const DFU du;
  const std::uint32_t ties = job.Primitive.TieMask;
  const std::uint32_t varying = kAllChannels & ~job.Primitive.ConstMask;
  const auto exact = [&](int i, std::uint32_t channels, std::uint64_t pixels, VFU packed) HWY_ATTR {
    return ExactPair<kPerspective>(job, slots, row, x + i, channels, pixels, packed);
  };
  const bool sameTies = AreSame(slots, row, ties);
  VFU tied = hn::Zero(du);
  if (kPerspective && ties != 0 && sameTies) {
    tied = exact(0, ties, FirstBits(kFloatLanes), tied);
  }
  for (int i = 0; i < count; i += kFloatLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kFloatLanes);
    if (bits == 0) {
      continue;
    }
    const auto live = MaskOfBits(du, bits);
    VFU packed = hn::Set(du, job.Primitive.ConstColor);
    if (varying != 0) {
      const VFF t = hn::Load(df, values.FloatT + i);
      MFI sure = AllLanes(DFI());
      packed = UntexturedBytes<kPerspective>(job, slots, *row.Floats,
                                             job.Primitive.ConstMask | ties, t, &sure);
      if (kPerspective && !sameTies) {
        tied = exact(i, ties, bits, tied);
      }
      packed = hn::Or(packed, tied);
      const auto unsure = hn::AndNot(hn::RebindMask(du, sure), live);
      if (HWY_UNLIKELY(!hn::AllFalse(du, unsure))) {
        job.Meets(TCondition::ValuesBytes, kLanes);
        packed = exact(i, varying, BitsOfMask(du, unsure), packed);
      }
    }
    if (job.Draw.ReadsColor()) {
      packed = OutputColors(du, job.Draw, packed, LoadMasked(du, live, color + i));
    }
    StoreMasked(du, packed, live, color + i);
  }
}

// --- With a texture, in stages: divisions, then texels and bytes. Fused, the dependency chain
// would exceed the out-of-order window.

// Fetches the texels of a run, of each group that has a pixel in `shaded`. Returns the pixels whose
// texels are no bytes.
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
// Rounding tests that fail are seen to at the end: a branch upon each
// would be foretold wrong as often, and known to be so after all of a group's steps.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR void TexturedColors(const TSpanJob& job, const TRowSlots& slots,
                                        const TRow& row, int count, std::uint64_t shaded,
                                        const double* t, std::uint32_t* packed) {
  const DD d;
  TFetchedTexels ready[kRun / kLanes];
  const std::uint64_t unsure = ByReach(job.Primitive.Reach, [&](auto reach) HWY_ATTR {
    return FetchRun<kTexels, kPerspective, decltype(reach)::value>(job, slots, row, count, shaded,
                                                                   t, ready);
  });
  std::uint8_t sure[kRun / kLanes][8]; // a mask for each group
  std::memset(sure, 0xFF, sizeof sure);
  MFI all = AllLanes(DFI());
  for (int i = 0; i < count; i += kLanes) {
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
  if (unsure == 0 && hn::AllTrue(DFI(), all)) {
    return;
  }
  for (int i = 0; i < count; i += kLanes) {
    if ((shaded >> i & FirstBits(kLanes)) == 0) {
      continue;
    }
    std::uint64_t bits;
    std::memcpy(&bits, sure[i / kLanes], sizeof bits);
    const std::uint32_t channels =
        (unsure >> i & FirstBits(kLanes)) != 0 ? kAllChannels : UnsureChannels(bits);
    if (channels != 0) {
      const VU exact = ExactFallback<kTexels, kPerspective>(
          job, slots, row, hn::Load(d, t + i), ready[i / kLanes], channels,
          channels == kAllChannels ? hn::Zero(DU()) : hn::Load(DU(), packed + i));
      hn::Store(exact, DU(), packed + i);
    }
  }
}

// The colours of a run; with `floatT` its t is there in float alone.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR void DrawColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    int x, int count, const TRunValues& values, bool floatT,
                                    std::uint64_t shaded, std::uint32_t* color) {
  const DD d;
  const DU du;
  if constexpr (kTexels == TTexelSource::None) {
    if (floatT) {
      DrawUntexturedColors<kPerspective>(job, slots, row, x, count, values, shaded, color);
      return;
    }
  }
  bool staged = false;
  HWY_ALIGN std::uint32_t colors[kRun + kLanes];
  if constexpr (kTexels == TTexelSource::Nearest || kTexels == TTexelSource::Linear) {
    if (row.HasFloats()) {
      TexturedColors<kTexels, kPerspective>(job, slots, row, count, shaded, values.T, colors);
      staged = true;
    }
  }
  for (int i = 0; i < count; i += kLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kLanes);
    if (bits == 0) {
      continue;
    }
    const auto live = MaskOfBits(du, bits);
    VU packed =
        staged ? hn::Load(du, colors + i)
               : ExactColors<kTexels, kPerspective>(job, slots, row, hn::Load(d, values.T + i));
    if (job.Draw.ReadsColor()) {
      packed = OutputColors(du, job.Draw, packed, LoadMasked(du, live, color + i));
    }
    StoreMasked(du, packed, live, color + i);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
