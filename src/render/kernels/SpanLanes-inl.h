// Vectors of pixels, as all kernels name them: element types, masks and bits, and memory of which
// only some lanes may be touched. Included once for each instruction set.
//
// Tested by: tests/render/MaskedWrites.cpp (MaskedWrites.*), tests/render/SpanLevels.cpp
// (SpanLevels.*)

#if defined(ZX_RENDER_SPANLANES_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANLANES_INL_H_
#undef ZX_RENDER_SPANLANES_INL_H_
#else
#define ZX_RENDER_SPANLANES_INL_H_
#endif

#include <cstdint>
#include <cstring>
#include <type_traits>

#include <ZxCore3D/types/private/InstructionSets.h>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

// A group of pixels: as many as a vector of doubles has lanes, whatever the element.
using DD = hn::ScalableTag<double>;
using DI = hn::Rebind<std::int32_t, DD>;
using DU = hn::Rebind<std::uint32_t, DD>;
using DF = hn::Rebind<float, DD>;
using DU64 = hn::RebindToUnsigned<DD>;
using VD = hn::Vec<DD>;
using VI = hn::Vec<DI>;
using VU = hn::Vec<DU>;
using VF = hn::Vec<DF>;
using VU64 = hn::Vec<DU64>;
using MD = hn::Mask<DD>;
using MI = hn::Mask<DI>;

// Whole vectors of 32-bit lanes: two groups, or the four channels of half a group's pixels.
using DFF = hn::ScalableTag<float>;
using DFU = hn::RebindToUnsigned<DFF>;
using DFI = hn::RebindToSigned<DFF>;
using VFF = hn::Vec<DFF>;
using VFU = hn::Vec<DFU>;
using MFI = hn::Mask<DFI>;

// Pixels of a group and of two; as many rows are set up at a time as a group has pixels.
inline constexpr int kLanes = static_cast<int>(HWY_LANES(double));
inline constexpr int kFloatLanes = 2 * kLanes;

// The four components of a slot, or as many of them as a vector holds.
using D4 = hn::CappedTag<double, 4>;
using V4 = hn::Vec<D4>;
inline constexpr int kLanes4 = static_cast<int>(hn::MaxLanes(D4()));

// Pixels of a run; sets of them are the bits of a word.
inline constexpr int kRun = 64;

// Columns from x on: constants and a sum, where `Iota` of a variable goes through memory.
template <class D> HWY_INLINE HWY_ATTR hn::Vec<D> Columns(D d, int x) {
  return hn::Add(hn::Set(d, static_cast<hn::TFromD<D>>(x)), hn::Iota(d, 0));
}

// --- Masks and bits: bit i is lane i

inline constexpr std::uint64_t FirstBits(int count) {
  return count >= kRun ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

HWY_INLINE int FirstBit(std::uint64_t bits) { return __builtin_ctzll(bits); }
HWY_INLINE int LastBit(std::uint64_t bits) { return 63 - __builtin_clzll(bits); }

template <class D> HWY_INLINE HWY_ATTR hn::Mask<D> NoLanes(D d) {
  return hn::MaskFromVec(hn::Zero(d));
}

template <class D> HWY_INLINE HWY_ATTR hn::Mask<D> AllLanes(D d) {
  return hn::Eq(hn::Zero(d), hn::Zero(d));
}

template <class D> HWY_INLINE HWY_ATTR std::uint64_t BitsOfMask(D d, hn::Mask<D> mask) {
  constexpr std::size_t kLanesOfMask = hn::MaxLanes(D());
  // Of the very size that is stored: a wider load would wait for the store.
  using TBits = std::conditional_t<
      kLanesOfMask <= 8, std::uint8_t,
      std::conditional_t<kLanesOfMask <= 16, std::uint16_t,
                         std::conditional_t<kLanesOfMask <= 32, std::uint32_t, std::uint64_t>>>;
  std::uint8_t bytes[8] = {};
  hn::StoreMaskBits(d, mask, bytes);
  TBits bits;
  std::memcpy(&bits, bytes, sizeof bits);
  return bits;
}

// Bits past the last lane take no part.
template <class D> HWY_INLINE HWY_ATTR hn::Mask<D> MaskOfBits(D d, std::uint64_t bits) {
  std::uint8_t bytes[8];
  std::memcpy(bytes, &bits, sizeof bytes);
  return hn::LoadMaskBits(d, bytes);
}

// Calls `write` for the pixels of a set, most often all of the first `count`.
template <class TWrite>
HWY_INLINE void ForPixels(std::uint64_t pixels, int count, const TWrite& write) {
  if (HWY_LIKELY(pixels == FirstBits(count))) {
    for (int k = 0; k < count; ++k) {
      write(k);
    }
    return;
  }
  for (; pixels != 0; pixels &= pixels - 1) {
    write(FirstBit(pixels));
  }
}

// --- Memory: the lanes of a mask and no others, since that of a pixel that does not exist, or that
// fails its tests, may be another thread's to write, or nobody's

// The other lanes are 0.
template <class D, class T>
HWY_INLINE HWY_ATTR hn::Vec<D> LoadMasked(D d, hn::Mask<D> live, const T* from) {
#if ZX_HAS_MASKED_ACCESS
  return hn::MaskedLoad(live, d, from);
#else
  if (HWY_LIKELY(hn::AllTrue(d, live))) {
    return hn::LoadU(d, from);
  }
  HWY_ALIGN T lanes[hn::MaxLanes(d)] = {};
  for (std::uint64_t rest = BitsOfMask(d, live); rest != 0; rest &= rest - 1) {
    std::memcpy(lanes + FirstBit(rest), from + FirstBit(rest), sizeof(T));
  }
  return hn::Load(d, lanes);
#endif
}

// Without a branch on the mask, where there is masked access: for masks that nobody can predict.
template <class D, class T>
HWY_INLINE HWY_ATTR void StoreSteadily(D d, hn::Vec<D> values, hn::Mask<D> mask, T* to) {
#if ZX_HAS_MASKED_ACCESS
  hn::BlendedStore(values, mask, d, to);
#else
  if (HWY_LIKELY(hn::AllTrue(d, mask))) {
    hn::StoreU(values, d, to);
    return;
  }
  HWY_ALIGN T lanes[hn::MaxLanes(d)];
  hn::Store(values, d, lanes);
  for (std::uint64_t rest = BitsOfMask(d, mask); rest != 0; rest &= rest - 1) {
    std::memcpy(to + FirstBit(rest), lanes + FirstBit(rest), sizeof(T));
  }
#endif
}

template <class D, class T>
HWY_INLINE HWY_ATTR void StoreMasked(D d, hn::Vec<D> values, hn::Mask<D> mask, T* to) {
#if ZX_HAS_MASKED_ACCESS && !ZX_HAS_MASK_REGISTERS
  if (HWY_LIKELY(hn::AllTrue(d, mask))) { // masked stores are slow on some processors
    hn::StoreU(values, d, to);
    return;
  }
#endif
  StoreSteadily(d, values, mask, to);
}

// Fills a vector's length or more. The vectors between the first and the last are aligned, since a
// store across two cache lines costs two; the first and the last may overlap them.
template <class D, class T> HWY_INLINE HWY_ATTR void Fill(D d, T value, T* to, std::size_t count) {
  const std::size_t lanes = hn::Lanes(d);
  const auto values = hn::Set(d, value);
  const std::size_t misaligned = reinterpret_cast<std::uintptr_t>(to) / sizeof(T) % lanes;
  hn::StoreU(values, d, to);
  for (std::size_t i = lanes - misaligned; i + lanes <= count; i += lanes) {
    hn::StoreU(values, d, to + i);
  }
  hn::StoreU(values, d, to + count - lanes);
}

// --- Rounding

// From 2^23 on floats are whole numbers: a float from 0 to 2^22 plus this is rounded to one, which
// stands in its low bits. The like for doubles is 2^52, and half as much again for either sign.
inline constexpr float kWholeFloats = 8388608.0f;
inline constexpr double kSignedWholeDoubles = 6755399441055744.0;

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
