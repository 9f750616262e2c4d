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
                                         kAllChannels & ~channels, job.Primitive.Clamp,
                                         ColumnParameter(row, x + k));
  };
  return hn::Combine(DFU(), exact(kLanes, hn::UpperHalf(du, packed)),
                     exact(0, hn::LowerHalf(du, packed)));
}

// Draws the colours of a run, from column x on, by pairs of groups. `kDivides`: 1/w varies;
// `kClamp`: channels may lie outside 0 to 1.
template <bool kPerspective, bool kDivides, bool kClamp>
HWY_INLINE HWY_ATTR void DrawUntexturedColors(const TSpanJob& job, const TRowSlots& slots,
                                              const TRow& row, int x, int count,
                                              std::uint64_t shaded, std::uint32_t* color) {
  const DFF df;
  const DFU du;
  const std::uint32_t ties = job.Primitive.TieMask;
  const std::uint32_t constant = job.Primitive.ConstMask;
  const std::uint32_t varying = kAllChannels & ~constant;
  const VFU constColor = hn::Set(du, job.Primitive.ConstColor);
  const bool reads = job.Draw.ReadsColor();
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
    VFU packed = constColor;
    if (varying != 0) {
      const MFI sure = UntexturedBytes<kDivides, kClamp>(
          *row.Floats, constant | ties, hn::Iota(df, static_cast<float>(x - row.First + i)),
          &packed);
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
    if (reads) {
      packed = OutputColors(du, job.Draw, packed, LoadMasked(du, live, color + i));
    }
    StoreMasked(du, packed, live, color + i);
  }
}

// --- With a texture, in stages: divisions, then texels and bytes. Fused, the dependency chain
// would exceed the out-of-order window.

// Fetches the texels of a group near t by the float set-up of its row. False where they may be
// others than the exact path's, or no bytes.
template <TTexelSource kTexels, bool kDivides, TTexelReach kReach>
HWY_INLINE HWY_ATTR bool FetchNear(const TSpanJob& job, const TRow& row, VD t,
                                   TFetchedTexels* ready) {
  const DD d;
  const TRowFloats& floats = *row.Floats;
  ready->Q = PerspectiveAt<kDivides>(row, t);
  const auto texel = [&](int axis) HWY_ATTR {
    return Interpolated<kDivides>(hn::Set(d, floats.TexelBegin[axis]),
                                  hn::Set(d, floats.TexelDelta[axis]), t, ready->Q);
  };
  return job.Meets(FetchTexels<kTexels, kReach, true>(job.Primitive, texel(0), texel(1), ready));
}

// Fetches the exact path's texels of a group in place of others. Returns the exact t.
template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR VD FetchExactly(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                      int x, TFetchedTexels* ready) {
  const VD t = ColumnParameter(row, x);
  FetchTexelsAt<kTexels, kPerspective, TTexelReach::Anywhere>(job, slots, row, t, ready);
  return t;
}

// Fetches the texels of a run by `fetch`, of each group that has a pixel in `shaded`. Returns the
// pixels whose texels are no bytes.
template <class TFetch>
HWY_INLINE HWY_ATTR std::uint64_t FetchRun(int count, std::uint64_t shaded, const TFetch& fetch) {
  std::uint64_t unsure = 0;
  for (int i = 0; i < count; i += kLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kLanes);
    if (bits != 0 && HWY_UNLIKELY(!fetch(i))) {
      unsure |= bits << i;
    }
  }
  return unsure;
}

// The packed colours of a run, in whole vectors: those of each group that has a pixel in `shaded`.
// Rounding tests that fail are seen to at the end: a branch upon each would be foretold wrong as
// often, and known to be so after all of a group's steps. Returns how many groups failed.
template <TTexelSource kTexels, bool kPerspective, bool kDivides>
HWY_INLINE HWY_ATTR int TexturedColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                       int x, int count, std::uint64_t shaded,
                                       const TRunValues& values, std::uint32_t* packed) {
  TFetchedTexels ready[kRun / kLanes];
  const std::uint64_t unsure = ByReach(
      job.Primitive.Reach, [&](auto constant) HWY_ATTR __attribute__((always_inline)) {
        constexpr TTexelReach kReach = decltype(constant)::value;
        const auto tAt = [&](int i) HWY_ATTR { return hn::Load(DD(), values.T + i); };
        return values.IsNear
                   ? FetchRun(
                         count, shaded,
                         [&](int i) HWY_ATTR __attribute__((always_inline)) {
                           return FetchNear<kTexels, kDivides, kReach>(job, row, tAt(i),
                                                                       &ready[i / kLanes]);
                         })
                   : FetchRun(
                         count, shaded, [&](int i) HWY_ATTR __attribute__((always_inline)) {
                           return FetchTexelsAt<kTexels, kPerspective, kReach>(
                               job, slots, row, tAt(i), &ready[i / kLanes]);
                         });
      });
  std::uint8_t sure[kRun / kLanes][8]; // a mask for each group
  std::memset(sure, 0xFF, sizeof sure);
  MFI allSure = AllLanes(DFI());
  for (int i = 0; i < count; i += kLanes) {
    if (((shaded & ~unsure) >> i & FirstBits(kLanes)) == 0) {
      continue;
    }
    VU colors;
    const MFI group = TexturedBytes<kTexels, kDivides>(
        job, slots, *row.Floats, hn::Load(DD(), values.T + i), ready[i / kLanes], &colors);
    allSure = hn::And(allSure, group);
    hn::StoreMaskBits(DFI(), group, sure[i / kLanes]);
    hn::Store(colors, DU(), packed + i);
  }
  int exact = 0;
  if (unsure == 0 && hn::AllTrue(DFI(), allSure)) {
    return exact;
  }
  for (int i = 0; i < count; i += kLanes) {
    if ((shaded >> i & FirstBits(kLanes)) == 0) {
      continue;
    }
    std::uint64_t bits;
    std::memcpy(&bits, sure[i / kLanes], sizeof bits);
    const std::uint32_t channels =
        (unsure >> i & FirstBits(kLanes)) != 0 ? kAllChannels : UnsureChannels(bits);
    if (channels == 0) {
      continue;
    }
    ++exact;
    const bool all = channels == kAllChannels;
    const VD t = values.IsNear ? FetchExactly<kTexels, kPerspective>(job, slots, row, x + i,
                                                                     &ready[i / kLanes])
                               : hn::Load(DD(), values.T + i);
    hn::Store(
        ExactFallback<kTexels, kPerspective>(job, slots, row, t, ready[i / kLanes], channels,
                                             all ? hn::Zero(DU()) : hn::Load(DU(), packed + i)),
        DU(), packed + i);
  }
  return exact;
}

// What a function gives for whether 1/w varies in a row, which it takes by its type.
template <bool kPerspective, class TFunction>
HWY_INLINE HWY_ATTR auto ByDivision(const TRow& row, const TFunction& function) {
  if constexpr (kPerspective) {
    if (!HasOneW(row)) {
      return function(std::true_type());
    }
  }
  return function(std::false_type());
}

// The colours of a run.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR void DrawColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    int x, int count, const TRunValues& values,
                                    std::uint64_t shaded, std::uint32_t* color) {
  const DU du;
  if constexpr (kTexels == TTexelSource::None) {
    if (values.IsFloat) {
      ByDivision<kPerspective>(
          row, [&](auto divides) HWY_ATTR __attribute__((always_inline)) {
            constexpr bool kDivides = decltype(divides)::value;
            job.Primitive.Clamp
                ? DrawUntexturedColors<kPerspective, kDivides, true>(job, slots, row, x, count,
                                                                     shaded, color)
                : DrawUntexturedColors<kPerspective, kDivides, false>(job, slots, row, x, count,
                                                                      shaded, color);
          });
      return;
    }
  }
  const bool staged = HasByteTexels(kTexels) && row.HasFloats();
  HWY_ALIGN std::uint32_t colors[kRun + kLanes];
  if constexpr (HasByteTexels(kTexels)) {
    if (staged) {
      const int exact = ByDivision<kPerspective>(
          row, [&](auto divides) HWY_ATTR __attribute__((always_inline)) {
            return TexturedColors<kTexels, kPerspective, decltype(divides)::value>(
                job, slots, row, x, count, shaded, values, colors);
          });
      if (values.IsNear && exact * kLanes * kMostUnsure > count) {
        *job.ExactRuns = kExactRuns;
      } else if (*job.ExactRuns > 0) {
        --*job.ExactRuns;
      }
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
               : ExactColors<kTexels, kPerspective>(job, slots, row, hn::Load(DD(), values.T + i));
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
