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

// Writes a pair of groups, of which the pixels of `bits` are shaded.
HWY_INLINE HWY_ATTR void WriteColors(const TSpanJob& job, std::uint64_t bits, VFU packed,
                                     std::uint32_t* color) {
  const DFU du;
  const auto live = MaskOfBits(du, bits);
  if (job.Draw.ReadsColor()) {
    packed = OutputColors(du, job.Draw, packed, LoadMasked(du, live, color));
  }
  StoreMasked(du, packed, live, color);
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
  const VFU constColor = hn::Set(du, job.Primitive.ConstColor);
  const auto exact = [&](int i, std::uint32_t channels, std::uint64_t pixels, VFU packed) HWY_ATTR {
    return ExactPair<kPerspective>(job, slots, row, x + i, channels, pixels, packed);
  };
  const bool sameTies = AreSame(slots, row, ties);
  VFU tied = hn::Zero(du);
  if (kPerspective && ties != 0 && sameTies) {
    tied = exact(0, ties, FirstBits(kFloatLanes), tied);
  }
  VFF after = Columns(df, x - row.First);
  for (int i = 0; i < count; i += kFloatLanes, after = hn::Add(after, hn::Set(df, kFloatLanes))) {
    const std::uint64_t bits = shaded >> i & FirstBits(kFloatLanes);
    if (bits == 0) {
      continue;
    }
    VFU packed = constColor;
    const MFI sure = UntexturedBytes<kDivides, kClamp>(row, constant | ties, after, &packed);
    if (kPerspective && !sameTies) {
      tied = exact(i, ties, bits, tied);
    }
    packed = hn::Or(packed, tied);
    const std::uint64_t unsure = bits & ~BitsOfMask(DFI(), sure);
    if (HWY_UNLIKELY(unsure != 0)) {
      job.Meets(TCondition::ValuesBytes, kLanes);
      packed = exact(i, kAllChannels & ~constant, unsure, packed);
    }
    WriteColors(job, bits, packed, color + i);
  }
}

// --- With a texture, in stages: divisions, then texels and bytes. Fused, the dependency chain
// would exceed the out-of-order window. They are in line in each kernel of rows, which takes 5 %
// less time than calls; but for the address sanitizer, which takes more than twenty minutes to
// instrument all these copies, they are called.
#ifndef ZX_STAGE
#if defined(__SANITIZE_ADDRESS__) || HWY_IS_ASAN // GCC; clang
#define ZX_STAGE HWY_NOINLINE
#else
#define ZX_STAGE HWY_INLINE
#endif
#endif

// Fetches the texels of a group by the float set-up of its row, so many columns after the first
// pixel. False where they may be others than the exact path's, or no bytes.
template <TTexelSource kTexels, bool kDivides, TTexelReach kReach>
HWY_INLINE HWY_ATTR bool FetchNear(const TSpanJob& job, const TTexture& texture, const TRow& row,
                                   VD after, TFetchedTexels* ready) {
  const DD d;
  const auto at = [&](int i) HWY_ATTR __attribute__((always_inline)) {
    return hn::Add(hn::Mul(hn::Set(d, row.Floats->PlaceDelta[i][row.Lane]), after),
                   hn::Set(d, row.Floats->PlaceBegin[i][row.Lane]));
  };
  VD u = at(0);
  VD v = at(1);
  if (kDivides) {
    ready->Q = hn::Div(hn::Set(d, 1.0), at(2));
    u = hn::Mul(u, ready->Q);
    v = hn::Mul(v, ready->Q);
  }
  return job.Meets(FetchTexels<kTexels, kReach, true>(texture, u, v, ready));
}

// The texels of a run, those of each group that has a pixel in `shaded`. Returns the pixels whose
// texels are no bytes.
template <TTexelSource kTexels, bool kPerspective, bool kDivides>
ZX_STAGE HWY_ATTR std::uint64_t FetchRun(const TSpanJob& job, const TRowSlots& slots,
                                         const TRow& row, int x, int count, std::uint64_t shaded,
                                         const TRunValues& values, TFetchedTexels* ready) {
  const DD d;
  std::uint64_t unfetched = 0;
  const auto fetchBy = [&](const auto& fetch) HWY_ATTR __attribute__((always_inline)) {
    VD after = Columns(d, x - row.First);
    for (int i = 0; i < count; i += kLanes, after = hn::Add(after, hn::Set(d, kLanes))) {
      const std::uint64_t bits = shaded >> i & FirstBits(kLanes);
      if (bits != 0 && HWY_UNLIKELY(!fetch(i, after, &ready[i / kLanes]))) {
        unfetched |= bits << i;
      }
    }
  };
  ByReach(
      job.Primitive.Reach, [&](auto reach) HWY_ATTR __attribute__((always_inline)) {
        constexpr TTexelReach kReach = decltype(reach)::value;
        if (values.IsNear) {
          const TTexture texture(job.Primitive);
          // Past the last pixel other texels may lie than within reach.
          const VD last = hn::Set(d, row.Last - row.First);
          fetchBy([&](int, VD after, TFetchedTexels* to) HWY_ATTR __attribute__((always_inline)) {
            return FetchNear<kTexels, kDivides, kReach>(job, texture, row, hn::Min(after, last),
                                                        to);
          });
        } else {
          fetchBy([&](int i, VD, TFetchedTexels* to) HWY_ATTR __attribute__((always_inline)) {
            return FetchTexelsAt<kTexels, kPerspective, kReach>(job, slots, row,
                                                                hn::Load(d, values.T + i), to);
          });
        }
      });
  return unfetched;
}

// The lowest bit of each channel.
inline constexpr TUnsureBits kEachChannel = 0x0001000100010001u;

// Those of all channels, each where it stands in one.
HWY_INLINE TUnsureBits OfAnyChannel(TUnsureBits bits) {
  bits |= bits >> 32;
  return (bits | bits >> 16) & 0xFFFFu;
}

// The pixels of a run whose rounding test failed, or whose texels are no bytes, by pairs of groups.
struct TUnsureRun {
  static constexpr int kMostGroups = kRun / kLanes < 16 ? kRun / kLanes : 16; ///< of a channel

  TUnsureBits Pair[kRun / kFloatLanes];
  TUnsureBits Any;

  // Those of the group from pixel i on.
  TUnsureBits Group(int i) const {
    return Pair[i / kFloatLanes] >> i % kFloatLanes & FirstBits(kLanes) * kEachChannel;
  }

  // Which of the groups from pixel `from` on have such pixels, a bit for each in each channel.
  HWY_INLINE TUnsureBits GroupsFrom(int from, int count) const {
    constexpr TUnsureBits kHighest = kEachChannel << 15;
    TUnsureBits groups = 0;
    for (int k = 0; k < kMostGroups && from + k * kLanes < count; ++k) {
      groups |= ((Group(from + k * kLanes) + (kHighest - kEachChannel)) & kHighest) >> (15 - k);
    }
    return groups;
  }
};

// The packed colours of a run from its texels, in whole vectors.
template <TTexelSource kTexels, bool kDivides, TModulation kModulation>
ZX_STAGE HWY_ATTR void PackRun(const TSpanJob& job, const TRow& row, int x, int count,
                               std::uint64_t shaded, std::uint64_t unfetched,
                               const TFetchedTexels* ready, std::uint32_t* packed,
                               TUnsureRun* unsure) {
  const DFF df;
  unsure->Any = 0;
  VFF after = Columns(df, x - row.First);
  for (int i = 0; i < count; i += kFloatLanes, after = hn::Add(after, hn::Set(df, kFloatLanes))) {
    TUnsureBits& bits = unsure->Pair[i / kFloatLanes];
    const std::uint64_t wanted = shaded >> i & FirstBits(kFloatLanes);
    const std::uint64_t there = wanted & ~(unfetched >> i);
    bits = 0;
    if (there != 0) {
      // Where one of the groups has no pixel, nothing was fetched.
      const TFetchedTexels* const groups = &ready[i / kLanes];
      const TFetchedTexels& low = groups[(there & FirstBits(kLanes)) != 0 ? 0 : 1];
      const TFetchedTexels& high = groups[there >> kLanes != 0 ? 1 : 0];
      const VFU colors = TexturedBytes<kTexels, kDivides, kModulation>(job.Primitive, row, after,
                                                                       low, high, &bits);
      hn::Store(colors, DFU(), packed + i);
    }
    bits = (bits & there * kEachChannel) | (wanted & ~there) * kEachChannel;
    unsure->Any |= bits;
  }
}

// The unsure bytes of a group's packed colours, all ones.
HWY_INLINE HWY_ATTR VU UnsureBytes(TUnsureBits unsure) {
  const DU du;
  VU bytes = hn::Zero(du);
  for (int k = 0; k < 4; ++k) {
    const auto here = MaskOfBits(du, unsure >> 16 * k & FirstBits(kLanes));
    bytes = hn::Or(bytes, hn::IfThenElseZero(here, hn::Set(du, 0xFFu << 8 * k)));
  }
  return bytes;
}

// Whether the exact path finds the same means of texels for these bytes of a group's colours at
// other coordinates, which are near its own: the four texels of each are alike, and no coordinate
// is so near to a whole number that it may find others.
template <TTexelSource kTexels>
HWY_INLINE HWY_ATTR bool HaveSameMeans(const TFetchedTexels& texels, VU bytes) {
  if (kTexels == TTexelSource::Nearest) {
    return true; // floors were sure, or nothing was fetched
  }
  const DU du;
  const DU2 du2;
  const auto swapped = hn::ConcatLowerUpper(du2, texels.Left, texels.Left);
  const auto apart = hn::Or(hn::Xor(texels.Left, texels.Right), hn::Xor(texels.Left, swapped));
  const VU either = hn::Or(hn::LowerHalf(du, apart), hn::UpperHalf(du, apart));
  return hn::AllTrue(du, hn::Eq(hn::And(either, bytes), hn::Zero(du))) &&
         HaveSureFloors(texels.FractionU, texels.FractionV);
}

// The exact channels of the groups of a run whose rounding tests failed, a channel after the other:
// branches of each group upon its channels would be foretold wrong as often. Coordinates that are
// near will do where the exact ones find the same texels. Returns how many groups wanted others.
template <TTexelSource kTexels, bool kPerspective>
HWY_NOINLINE HWY_ATTR int ExactFallback(const TSpanJob& job, const TRowSlots& slots,
                                        const TRow& row, int x, int count, TRunValues* values,
                                        std::uint64_t unfetched, const TUnsureRun& unsure,
                                        TFetchedTexels* ready, std::uint32_t* packed) {
  const DD d;
  const DU du;
  HWY_ALIGN std::uint32_t wanted[kRun];
  int exact = 0;
  for (int from = 0; from < count; from += TUnsureRun::kMostGroups * kLanes) {
    TUnsureBits groups = unsure.GroupsFrom(from, count);
    TUnsureBits means = 0;
    for (TUnsureBits any = OfAnyChannel(groups); any != 0; any &= any - 1) {
      const int i = from + FirstBit(any) * kLanes;
      TFetchedTexels& texels = ready[i / kLanes];
      VU bytes = hn::Set(du, ~0u);
      if (kTexels != TTexelSource::Nearest) { // whose texels are the same for all pixels
        bytes = UnsureBytes(unsure.Group(i));
        hn::Store(bytes, du, wanted + i);
      }
      if (values->IsNear) {
        const VD t = ColumnParameter(row, x + i);
        hn::Store(t, d, values->T + i);
        if ((unfetched >> i & FirstBits(kLanes)) == 0 && HaveSameMeans<kTexels>(texels, bytes)) {
          texels.Q = PerspectiveAt<kPerspective>(row, t);
          means |= any & -any;
        } else {
          FetchTexelsAt<kTexels, kPerspective, TTexelReach::Anywhere>(job, slots, row, t, &texels);
          ++exact;
        }
      }
      if (HWY_UNLIKELY(!texels.Fits || texels.IsBordered)) {
        const VD t = hn::Load(d, values->T + i);
        hn::Store(ExactTextured<kTexels, kPerspective>(job, slots, row, t, texels), du, packed + i);
        groups &= ~(kEachChannel << FirstBit(any));
      }
      job.Meets(TCondition::ValuesBytes, kLanes);
    }
    ForEachChannel([&](auto channel) HWY_ATTR __attribute__((always_inline)) {
      constexpr int kChannel = decltype(channel)::value;
      constexpr std::uint32_t kByte = 0xFFu << 8 * kChannel;
      for (TUnsureBits left = groups >> 16 * kChannel & 0xFFFFu; left != 0; left &= left - 1) {
        const int i = from + FirstBit(left) * kLanes;
        const TFetchedTexels& texels = ready[i / kLanes];
        const VD texel =
            (means & left & -left) != 0
                ? FilteredChannel<TTexelSource::Nearest, false>(job.Primitive, texels, kChannel)
                : FilteredChannel<kTexels, false>(job.Primitive, texels, kChannel);
        const VU byte =
            ExactByte<kPerspective>(job.Primitive, slots, row, hn::Load(d, values->T + i), texels.Q,
                                    kChannel, texel, job.Primitive.Clamp);
        VU here = hn::Set(du, kByte);
        if (kTexels != TTexelSource::Nearest) {
          here = hn::And(here, hn::Load(du, wanted + i));
        }
        hn::Store(hn::IfVecThenElse(here, byte, hn::Load(du, packed + i)), du, packed + i);
      }
    });
  }
  return exact;
}

// The packed colours of a run: those of each group that has a pixel in `shaded`. Returns how many
// groups wanted exact coordinates.
template <TTexelSource kTexels, bool kPerspective, bool kDivides>
ZX_STAGE HWY_ATTR int TexturedColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                     int x, int count, std::uint64_t shaded, TRunValues* values,
                                     std::uint32_t* packed) {
  TFetchedTexels ready[kRun / kLanes];
  TUnsureRun unsure;
  const std::uint64_t unfetched =
      FetchRun<kTexels, kPerspective, kDivides>(job, slots, row, x, count, shaded, *values, ready);
  const TModulation modulation = !job.Primitive.UsesVertexColor ? TModulation::None
                                 : slots.Secondary < 0          ? TModulation::Color
                                                                : TModulation::ColorAndSecondary;
  ByValue<TModulation::None, TModulation::Color, TModulation::ColorAndSecondary>(
      modulation, [&](auto constant) HWY_ATTR __attribute__((always_inline)) {
        PackRun<kTexels, kDivides, decltype(constant)::value>(job, row, x, count, shaded, unfetched,
                                                              ready, packed, &unsure);
      });
  return HWY_LIKELY(unsure.Any == 0)
             ? 0
             : ExactFallback<kTexels, kPerspective>(job, slots, row, x, count, values, unfetched,
                                                    unsure, ready, packed);
}

// Keeps account of the groups that wanted exact coordinates: `exactRuns` are the runs that will
// have them, or below zero the pixels that had them lately beyond one in kMostUnsure.
inline void CountExactGroups(int groups, int count, bool isNear, int* exactRuns) {
  if (isNear) {
    const int beyond = std::max(groups * kLanes * kMostUnsure - count - *exactRuns, 0);
    *exactRuns = beyond > kMostUnsurePixels ? kExactRuns : -beyond;
  } else if (*exactRuns > 0) {
    --*exactRuns;
  }
}

// The colours of a run.
template <TTexelSource kTexels, bool kPerspective>
HWY_INLINE HWY_ATTR void DrawColors(const TSpanJob& job, const TRowSlots& slots, const TRow& row,
                                    int x, int count, TRunValues* values, std::uint64_t shaded,
                                    std::uint32_t* color) {
  const auto byDivision = [&](const auto& function) HWY_ATTR __attribute__((always_inline)) {
    return ByValue<false, kPerspective>(kPerspective && !HasOneW(row), function);
  };
  if constexpr (kTexels == TTexelSource::None) {
    if (job.Primitive.HasConstColor()) {
      for (int i = 0; i < count; i += kFloatLanes) {
        WriteColors(job, shaded >> i, hn::Set(DFU(), job.Primitive.ConstColor), color + i);
      }
      return;
    }
    if (values->IsFloat) {
      byDivision([&](auto divides) HWY_ATTR __attribute__((always_inline)) {
        ByValue<false, true>(
            job.Primitive.Clamp, [&](auto clamp) HWY_ATTR __attribute__((always_inline)) {
              DrawUntexturedColors<kPerspective, decltype(divides)::value, decltype(clamp)::value>(
                  job, slots, row, x, count, shaded, color);
            });
      });
      return;
    }
  }
  HWY_ALIGN std::uint32_t packed[kRun + kFloatLanes];
  bool staged = false;
  if constexpr (HasByteTexels(kTexels)) {
    staged = row.HasFloats;
    if (staged) {
      const int exact = byDivision([&](auto divides) HWY_ATTR __attribute__((always_inline)) {
        return TexturedColors<kTexels, kPerspective, decltype(divides)::value>(
            job, slots, row, x, count, shaded, values, packed);
      });
      CountExactGroups(exact, count, values->IsNear, job.ExactRuns);
    }
  }
  for (int i = 0; i < count && !staged; i += kLanes) {
    if ((shaded >> i & FirstBits(kLanes)) != 0) {
      const VD t = hn::Load(DD(), values->T + i);
      hn::Store(ExactColors<kTexels, kPerspective>(job, slots, row, t), DU(), packed + i);
    }
  }
  for (int i = 0; i < count; i += kFloatLanes) {
    const std::uint64_t bits = shaded >> i & FirstBits(kFloatLanes);
    if (bits != 0) {
      WriteColors(job, bits, hn::Load(DFU(), packed + i), color + i);
    }
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
