// Texels for the span kernels, a group at a time, with the indices and the bits of the texture
// sampler. Included once for each instruction set.
//
// Tested by: tests/render/SpanLevels.cpp (SpanLevels.*), tests/render/TexSampler.cpp (TexSampler.*)

#if defined(ZX_RENDER_SPANTEXELS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANTEXELS_INL_H_
#undef ZX_RENDER_SPANTEXELS_INL_H_
#else
#define ZX_RENDER_SPANTEXELS_INL_H_
#endif

#include <algorithm>
#include <type_traits>

#include <ZxCore3D/render/kernels/SpanRowSetup-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

using DU2 = hn::Repartition<std::uint32_t, DD>;

// The texels of a group of pixels: four each, those to the left and those to the right, the lower
// ones in the low halves; with a nearest filter the first alone.
struct TFetchedTexels {
  hn::Vec<DU2> Left, Right;
  VD FractionU, FractionV;     ///< by which the four are mixed
  VD Q;                        ///< 1 over 1/w, where that is used
  MD OutsideX[2], OutsideY[2]; ///< of the first and the second texel along an axis, if bordered
  bool IsBordered;             ///< texels outside have the border's colour
  bool Fits;                   ///< else nothing is fetched: an index has more than 32 bits

  // Vectors of NEON have constructors; one that the compiler adds here would be for no target.
  HWY_INLINE HWY_ATTR TFetchedTexels() {}
};

// --- Indices

// Whether all values can be truncated to 32 bits, with room for a neighbour.
HWY_INLINE HWY_ATTR bool FitIndices(VD u, VD v) {
  const DD d;
  const VD most = hn::Set(d, kMaxIndex);
  return hn::AllTrue(d, hn::And(hn::Lt(hn::Abs(u), most), hn::Lt(hn::Abs(v), most)));
}

// Whole numbers within a period of n. n goes floor((i + 1/2) / n) times into i: the quotient is at
// least 1 / 2n from an integer. It is below 2^31 / n, so that rounding the reciprocal, and twice on
// the way, moves it by less than 2^-20 / n.
HWY_INLINE HWY_ATTR VD WithinPeriod(const TTexelAxis& axis, VD whole) {
  const DD d;
  const VD times = hn::Mul(hn::Add(whole, hn::Set(d, 0.5)), hn::Set(d, axis.InverseSize));
  return hn::Sub(whole, hn::Mul(hn::Floor(times), hn::Set(d, axis.Size)));
}

// The low bits of whole numbers, as integers.
HWY_INLINE HWY_ATTR VU64 IndexBits(VD whole, std::uint32_t mask) {
  const DU64 du;
  const VD shifted = hn::Add(whole, hn::Set(DD(), kSignedWholeDoubles));
  return hn::And(hn::BitCast(du, shifted), hn::Set(du, std::uint64_t{mask}));
}

// Where texel coordinates along an axis fall: the index; with a linear filter that of the next
// texel, and what is left of the coordinate.
struct TTexelPlaces {
  VU64 Index, Next;
  VD Rest;

  HWY_INLINE HWY_ATTR TTexelPlaces() {}
};

// The sampler's whole part: truncation, less one below zero.
HWY_INLINE HWY_ATTR VD TruncatedBelow(VD coordinate) {
  const DD d;
  const MD below = hn::Lt(coordinate, hn::Zero(d));
  return hn::Add(hn::Trunc(coordinate), hn::IfThenElseZero(below, hn::Set(d, -1.0)));
}

// Of a repeat, and of all that lies between the first and the last texel.
template <TTexelReach kReach>
HWY_INLINE HWY_ATTR TTexelPlaces PlaceRepeated(const TTexelAxis& axis, VD coordinate) {
  constexpr bool kAnywhere = kReach == TTexelReach::Anywhere;
  const DD d;
  const DU64 du;
  TTexelPlaces at;
  const VD whole = kAnywhere ? TruncatedBelow(coordinate) : hn::Floor(coordinate);
  at.Rest = hn::Sub(coordinate, whole);
  const bool divides = kAnywhere ? axis.Mask == kNoTexelMask : kReach == TTexelReach::Periodic;
  at.Index = IndexBits(divides ? WithinPeriod(axis, whole) : whole, axis.Mask);
  at.Next = hn::Add(at.Index, hn::Set(du, std::uint64_t{1}));
  auto atEnd = hn::Eq(at.Index, hn::Set(du, std::uint64_t{axis.Last}));
  if (kAnywhere) { // a negative multiple of the size repeats to the size itself
    atEnd = hn::And(atEnd, hn::RebindMask(du, hn::Ge(whole, hn::Set(d, -1.0))));
    const auto below = hn::RebindMask(du, hn::Lt(whole, hn::Zero(d)));
    const auto multiple = hn::And(below, hn::Eq(at.Index, hn::Zero(du)));
    at.Index = hn::IfThenElse(multiple, hn::Set(du, std::uint64_t{axis.Last} + 1), at.Index);
  }
  at.Next = hn::IfThenZeroElse(atEnd, at.Next);
  return at;
}

// Of texels at the edges, twice, the sampler's mean is one of them: so is that of the last two, or
// the first two, at the end of the way from one to the other.
template <bool kLinear>
HWY_INLINE HWY_ATTR TTexelPlaces PlaceToEdge(const TTexelAxis& axis, VD coordinate) {
  const DD d;
  TTexelPlaces at;
  const VD last = hn::Set(d, axis.Size - 1.0);
  const VD most = kLinear ? last : hn::Set(d, axis.Size);
  const VD inside = hn::Min(hn::Max(coordinate, hn::Zero(d)), most);
  const VD whole =
      hn::Min(hn::Floor(inside), hn::Set(d, std::max(axis.Size - (kLinear ? 2.0 : 1.0), 0.0)));
  at.Rest = hn::Sub(inside, whole);
  at.Index = IndexBits(whole, kNoTexelMask);
  at.Next = IndexBits(hn::Min(hn::Add(whole, hn::Set(d, 1.0)), last), kNoTexelMask);
  return at;
}

// The indices of texels outside become 0, so that the gather stays inside the block.
HWY_INLINE HWY_ATTR TTexelPlaces PlaceInBorder(const TTexelAxis& axis, VD coordinate,
                                               MD (&outside)[2]) {
  const DD d;
  TTexelPlaces at;
  const auto inside = [&](VD index, MD* out) HWY_ATTR {
    *out = hn::Or(hn::Lt(index, hn::Zero(d)), hn::Ge(index, hn::Set(d, axis.Size)));
    return IndexBits(hn::IfThenZeroElse(*out, index), kNoTexelMask);
  };
  const VD whole = TruncatedBelow(coordinate);
  at.Rest = hn::Sub(coordinate, whole);
  at.Index = inside(whole, &outside[0]);
  at.Next = inside(hn::Add(whole, hn::Set(d, 1.0)), &outside[1]);
  return at;
}

template <TTexelReach kReach, bool kLinear>
HWY_INLINE HWY_ATTR TTexelPlaces PlaceTexels(const TTexelAxis& axis, VD coordinate,
                                             MD (&outside)[2]) {
  if constexpr (kReach == TTexelReach::Anywhere) {
    if (axis.Wrap == TTexelWrap::Edge) {
      return PlaceToEdge<kLinear>(axis, coordinate);
    }
    if (axis.Wrap == TTexelWrap::Border) {
      return PlaceInBorder(axis, coordinate, outside);
    }
  }
  return PlaceRepeated<kReach>(axis, coordinate);
}

// --- Fetching

// What texels are fetched from. A copy that no store can change stays in registers.
struct TTexture {
  TTexelAxis X, Y;
  const void* Data;
  const TTexelBytes& Bytes;
  bool AreWords;
  bool MayPair; // two texels in one load
  std::uint32_t RowStride;

  explicit TTexture(const TPrimitive& primitive)
      : X(primitive.AxisX), Y(primitive.AxisY), Data(primitive.Sampler->m_Surface->Data),
        Bytes(primitive.TexelBytes), AreWords(Bytes.AreWords), MayPair(AreWords || Bytes.HasPairs),
        RowStride(static_cast<std::uint32_t>(primitive.Sampler->m_Surface->RowStride)) {}
};

HWY_INLINE HWY_ATTR VU64 RowOffset(const TTexture& texture, VU64 y) {
  const DU2 du;
  return hn::MulEven(hn::BitCast(du, y), hn::Set(du, texture.RowStride));
}

// The bytes of texels at offsets, or of pairs of them, spread out to words. Near the image's end
// they stand further up in what lies within it.
template <class D>
HWY_INLINE HWY_ATTR hn::Vec<D> SpreadTexels(D d, const TTexture& texture, hn::Vec<D> offset) {
  using T = hn::TFromD<D>;
  constexpr bool kPairs = sizeof(T) == 8;
  const TTexelBytes& bytes = texture.Bytes;
  const hn::Repartition<std::uint8_t, D> d8;
  const auto from = hn::Min(offset, hn::Set(d, T{kPairs ? bytes.LastPair : bytes.LastWord}));
  const auto loaded = hn::GatherOffset(d, static_cast<const T*>(texture.Data),
                                       hn::BitCast(hn::RebindToSigned<D>(), from));
  const auto raw = hn::Shr(loaded, hn::ShiftLeft<3>(hn::Sub(offset, from)));
  const auto places = hn::LoadDup128(d8, kPairs ? bytes.PairPlaces : bytes.WordPlaces);
  const auto alpha = hn::Set(hn::Repartition<std::uint32_t, D>(), bytes.Alpha);
  return hn::Or(hn::BitCast(d, hn::TableLookupBytesOr0(hn::BitCast(d8, raw), places)),
                hn::BitCast(d, alpha));
}

HWY_INLINE HWY_ATTR VU64 ColumnOffset(const TTexture& texture, VU64 x) {
  return texture.AreWords
             ? hn::ShiftLeft<2>(x)
             : hn::MulEven(hn::BitCast(DU2(), x), hn::Set(DU2(), texture.Bytes.Stride));
}

HWY_INLINE HWY_ATTR VU GatherTexels(const TTexture& texture, VU64 x, VU64 row) {
  const DU du;
  const VU offset = hn::TruncateTo(du, hn::Add(ColumnOffset(texture, x), row));
  return HWY_LIKELY(texture.AreWords)
             ? hn::GatherOffset(du, static_cast<const std::uint32_t*>(texture.Data),
                                hn::BitCast(DI(), offset))
             : SpreadTexels(du, texture, offset);
}

// The four texels one by one, where a row's two are not neighbours, or too far apart.
HWY_NOINLINE HWY_ATTR void FetchApart(const TTexture& texture, VU64 x0, VU64 x1, VU64 lowRow,
                                      VU64 highRow, TFetchedTexels* out) {
  const auto fetch = [&](VU64 x) HWY_ATTR {
    return hn::Combine(DU2(), GatherTexels(texture, x, highRow), GatherTexels(texture, x, lowRow));
  };
  out->Left = fetch(x0);
  out->Right = fetch(x1);
}

// By how much a coordinate is less than the pixel's place in the texture.
constexpr double ShiftOf(TTexelSource texels) { return texels == TTexelSource::Linear ? 0.5 : 0.0; }

// Whether the exact coordinates have the same floors as these, which are off by kMaxTexelError at
// most.
HWY_INLINE HWY_ATTR bool HaveSureFloors(VD u, VD v) {
  const DD d;
  const auto fromMiddle = [&](VD at) HWY_ATTR {
    return hn::Abs(hn::Sub(hn::Sub(at, hn::Floor(at)), hn::Set(d, 0.5)));
  };
  const VD most = hn::Max(fromMiddle(u), fromMiddle(v));
  return hn::AllTrue(d, hn::Lt(most, hn::Set(d, 0.5 - kMaxTexelError)));
}

// Fetches by coordinates in texels, all of which lie as `kReach` says.
template <TTexelSource kTexels, TTexelReach kReach, bool kNear>
HWY_INLINE HWY_ATTR TCondition FetchTexels(const TTexture& texture, VD u, VD v,
                                           TFetchedTexels* out) {
  constexpr bool kLinear = kTexels == TTexelSource::Linear;
  constexpr bool kAnywhere = kReach == TTexelReach::Anywhere;
  const DD d;
  const DU2 du;
  const DU64 du64;
  const bool mayBorder =
      kAnywhere && (texture.X.Wrap == TTexelWrap::Border || texture.Y.Wrap == TTexelWrap::Border);
  // A mean of texels has no jumps that a floor could decide on, not even where a repeat begins; but
  // beside a border of any colour the least part of it may count.
  const bool sureFloors = !kNear || (kLinear && !mayBorder) || HaveSureFloors(u, v);
  const bool fits = !kAnywhere || kNear || FitIndices(u, v);
  bool isBordered = false;
  if (HWY_LIKELY(fits)) {
    if (mayBorder) {
      for (int i = 0; i < 2; ++i) {
        out->OutsideX[i] = out->OutsideY[i] = NoLanes(d);
      }
    }
    const auto x = PlaceTexels<kReach, kLinear>(texture.X, u, out->OutsideX);
    const auto y = PlaceTexels<kReach, kLinear>(texture.Y, v, out->OutsideY);
    const VU64 lowRow = RowOffset(texture, y.Index);
    if constexpr (kLinear) {
      out->FractionU = x.Rest;
      out->FractionV = y.Rest;
      const VU64 highRow = RowOffset(texture, y.Next);
      const auto next = hn::Add(x.Index, hn::Set(du64, std::uint64_t{1}));
      const bool arePairs = texture.MayPair && hn::AllTrue(du64, hn::Eq(x.Next, next));
      // The two of a row in one load. A repeat may load one past the end, which others may not.
      if (HWY_LIKELY(kAnywhere ? arePairs : texture.MayPair)) {
        const auto* const data = static_cast<const std::uint64_t*>(texture.Data);
        const VU64 across = ColumnOffset(texture, x.Index);
        const auto fetch = [&](VU64 row) HWY_ATTR {
          const VU64 offset = hn::Add(across, row);
          const auto signedOffset = hn::BitCast(hn::RebindToSigned<DD>(), offset);
          return hn::BitCast(du, HWY_LIKELY(texture.AreWords)
                                     ? hn::GatherOffset(du64, data, signedOffset)
                                     : SpreadTexels(du64, texture, offset));
        };
        const auto low = fetch(lowRow);
        const auto high = fetch(highRow);
        out->Left = hn::ConcatEven(du, high, low);
        out->Right = hn::ConcatOdd(du, high, low);
      }
      if (HWY_UNLIKELY(!arePairs)) {
        FetchApart(texture, x.Index, x.Next, lowRow, highRow, out);
      }
    } else {
      out->Left = hn::ZeroExtendVector(du, GatherTexels(texture, x.Index, lowRow));
    }
    if (mayBorder) {
      MD outside = hn::Or(out->OutsideX[0], out->OutsideY[0]);
      if (kLinear) {
        outside = hn::Or(outside, hn::Or(out->OutsideX[1], out->OutsideY[1]));
      }
      isBordered = !hn::AllFalse(d, outside);
    }
  }
  out->Fits = fits;
  out->IsBordered = isBordered;
  ZX_RETURN_FIRST_UNMET(ZX_TEXEL_CONDITIONS);
}

// --- In double, for exact colours

struct TTexels {
  VD Channel[4];
};

// The sampler's own function, pixel by pixel.
HWY_NOINLINE HWY_ATTR TTexels SampledTexels(TRenderCPU::TTexSampler* sampler, VD s, VD t) {
  HWY_ALIGN double at[2][kLanes];
  HWY_ALIGN double channel[4][kLanes];
  const DD d;
  hn::Store(s, d, at[0]);
  hn::Store(t, d, at[1]);
  for (int i = 0; i < kLanes; ++i) {
    vec_t_<double, 4> texel = {0, 0, 0, 0};
    (sampler->*sampler->m_GetValue)({at[0][i], at[1][i], 0.0, 1.0}, &texel);
    for (std::size_t k = 0; k < 4; ++k) {
      channel[k][i] = texel[k];
    }
  }
  return {{hn::Load(d, channel[0]), hn::Load(d, channel[1]), hn::Load(d, channel[2]),
           hn::Load(d, channel[3])}};
}

// By the steps of the sampler; at the far edge, where `PlaceToEdge` ends, the second alone.
HWY_INLINE HWY_ATTR VD MixTexels(bool toEdge, VD first, VD second, VD fraction) {
  const VD mixed = hn::Add(hn::Mul(hn::Sub(second, first), fraction), first);
  return HWY_UNLIKELY(toEdge) ? hn::IfThenElse(hn::Eq(fraction, hn::Set(DD(), 1.0)), second, mixed)
                              : mixed;
}

// What a border has of a channel. A linear filter mixes only the channels that texels have.
template <TTexelSource kTexels>
HWY_INLINE double BorderChannel(const TRenderCPU::TTexSampler& sampler, int channel) {
  const int channels = sampler.m_Surface->Channels;
  if (kTexels == TTexelSource::Linear && channel == 3 && channels % 2 != 0) {
    return 1.0;
  }
  const bool isGrey = kTexels == TTexelSource::Linear && channels < 3 && channel < 3;
  return sampler.m_BorderColor[isGrey ? 0 : static_cast<std::size_t>(channel)];
}

// A channel of fetched texels, filtered.
template <TTexelSource kTexels, bool kBordered>
HWY_INLINE HWY_ATTR VD FilteredChannel(const TPrimitive& primitive, const TFetchedTexels& fetched,
                                       int channel) {
  const DD d;
  const DU du;
  const auto tap = [&](VU texels, int x, int y) HWY_ATTR __attribute__((always_inline)) {
    const VU byte = hn::And(hn::ShiftRightSame(texels, 8 * channel), hn::Set(du, 255u));
    const VD value =
        hn::Mul(hn::PromoteTo(d, hn::BitCast(DI(), byte)), hn::Set(d, 0.00392156862745098));
    if (!kBordered) {
      return value;
    }
    return hn::IfThenElse(hn::Or(fetched.OutsideX[x], fetched.OutsideY[y]),
                          hn::Set(d, BorderChannel<kTexels>(*primitive.Sampler, channel)), value);
  };
  if constexpr (kTexels == TTexelSource::Nearest) {
    return tap(hn::LowerHalf(du, fetched.Left), 0, 0);
  } else {
    const auto row = [&](VU left, VU right, int y) HWY_ATTR __attribute__((always_inline)) {
      return MixTexels(primitive.AxisX.Wrap == TTexelWrap::Edge, tap(left, 0, y), tap(right, 1, y),
                       fetched.FractionU);
    };
    return MixTexels(primitive.AxisY.Wrap == TTexelWrap::Edge,
                     row(hn::LowerHalf(du, fetched.Left), hn::LowerHalf(du, fetched.Right), 0),
                     row(hn::UpperHalf(du, fetched.Left), hn::UpperHalf(du, fetched.Right), 1),
                     fetched.FractionV);
  }
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
