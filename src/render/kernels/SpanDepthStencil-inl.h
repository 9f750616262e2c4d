// Depth and stencil of a run of pixels, small enough to stay in the first-level cache. Each stage
// is a loop of its own, so that a choice is made once a run and not once a pixel. Included once for
// each instruction set.
//
// Tested by: tests/render/SpanLevels.cpp (SpanLevels.*), tests/render/SpanRows.cpp (SpanRows.*),
// tests/render/MaskedWrites.cpp (MaskedWrites.*)

#if defined(ZX_RENDER_SPANDEPTHSTENCIL_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANDEPTHSTENCIL_INL_H_
#undef ZX_RENDER_SPANDEPTHSTENCIL_INL_H_
#else
#define ZX_RENDER_SPANDEPTHSTENCIL_INL_H_
#endif

#include <cmath>
#include <cstring>

#include <ZxCore3D/types/InstructionSets-inl.h>

#include <hwy/highway.h>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/kernels/SpanRowSetup-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// Pixels of a run; sets of them are the bits of a word.
inline constexpr int kRun = 64;

inline std::uint64_t FirstBits(int count) {
  return count >= kRun ? ~std::uint64_t{0} : (std::uint64_t{1} << count) - 1;
}

HWY_INLINE HWY_ATTR unsigned int BitsOf(MI mask) {
  std::uint8_t bits[8] = {};
  hn::StoreMaskBits(DI(), mask, bits);
  return bits[0];
}

// The lanes whose bits are set among the lowest ones.
HWY_INLINE HWY_ATTR MI MaskOfBits(std::uint64_t bits) {
  std::uint8_t bytes[8];
  std::memcpy(bytes, &bits, sizeof bytes);
  return hn::LoadMaskBits(DI(), bytes);
}

// Whether a mask can say which lanes of a vector are read and written. Otherwise whole vectors are
// read, and a partial group goes through staging copies.
inline constexpr bool kMaskedAccess = ZX_HAS_MASKED_ACCESS;

template <class D, class T> HWY_INLINE HWY_ATTR hn::Vec<D> LoadLive(D d, MI live, const T* from) {
  if constexpr (kMaskedAccess) {
    return hn::MaskedLoad(hn::RebindMask(d, live), d, from);
  } else {
    return hn::LoadU(d, from);
  }
}

// Writes the lanes of a mask and no others: memory behind a pixel that fails its tests may be
// another thread's to write, or nobody's.
template <class D, class T>
HWY_INLINE HWY_ATTR void StoreMasked(D d, hn::Vec<D> values, hn::Mask<D> mask, T* to) {
#if ZX_HAS_MASK_REGISTERS
  hn::BlendedStore(values, mask, d, to);
#else
  if (HWY_LIKELY(hn::AllTrue(d, mask))) { // masked stores are slow on some processors
    hn::StoreU(values, d, to);
    return;
  }
#if !ZX_HAS_MASKED_ACCESS
  std::uint8_t bits[8] = {};
  hn::StoreMaskBits(d, mask, bits);
  HWY_ALIGN T lanes[hn::MaxLanes(d)];
  hn::Store(values, d, lanes);
  for (unsigned int rest = bits[0]; rest != 0; rest &= rest - 1) {
    const int i = __builtin_ctz(rest);
    std::memcpy(to + i, lanes + i, sizeof(T));
  }
#else
  hn::BlendedStore(values, mask, d, to);
#endif
#endif
}

template <class D, class T>
HWY_INLINE HWY_ATTR void StoreLive(D d, hn::Vec<D> values, MI mask, T* to) {
  StoreMasked(d, values, hn::RebindMask(d, mask), to);
}

// The parameter t of a group of pixels, from column x on.
HWY_INLINE HWY_ATTR VD ColumnParameter(const TRow& row, VD x) {
  const DD d;
  return hn::Div(hn::Sub(x, hn::Set(d, row.Begin[0])), hn::Set(d, row.Delta[0]));
}

HWY_INLINE HWY_ATTR VD ColumnParameter(const TRow& row, int x) {
  return ColumnParameter(row, hn::Iota(DD(), static_cast<double>(x)));
}

// --- Depth

// The lanes of a vector of floats that pass.
template <class D>
HWY_INLINE HWY_ATTR hn::Mask<D> DepthMask(D d, std::uint8_t func, hn::Vec<D> fragment,
                                          hn::Vec<D> stored) {
  switch (func + GL_NEVER) {
  case GL_NEVER:
    return hn::MaskFromVec(hn::Zero(d));
  case GL_LESS:
    return hn::Lt(fragment, stored);
  case GL_EQUAL:
    return hn::Eq(fragment, stored);
  case GL_LEQUAL:
    return hn::Le(fragment, stored);
  case GL_GREATER:
    return hn::Gt(fragment, stored);
  case GL_NOTEQUAL:
    // Highway's own Ne is false for a NaN at some levels.
    return hn::Not(hn::Eq(fragment, stored));
  case GL_GEQUAL:
    return hn::Ge(fragment, stored);
  default:
    return hn::Eq(hn::Zero(d), hn::Zero(d));
  }
}

// Lanes of a vector of floats: two groups.
using DFF = hn::ScalableTag<float>;
inline constexpr int kFloatLanes = 2 * kLanes;

// Computed for a run of pixels before any test.
struct TRunValues {
  HWY_ALIGN double T[kRun + kFloatLanes];
  HWY_ALIGN float Near[kRun + kFloatLanes]; ///< t in single precision
  HWY_ALIGN float Depth[kRun + kFloatLanes];
};

// The error bounds of the proof below.
inline constexpr double kDepthMargin = 1.0 / (std::int64_t{1} << 49);
inline constexpr double kMinDepthBound = 1e-20;
inline constexpr double kMaxDepthBound = 1e20;

// The depths of a group from column x on, before the polygon offset.
HWY_NOINLINE HWY_ATTR VF ExactDepths(const TRow& row, int x) {
  const DD d;
  const VD t = ColumnParameter(row, x);
  return hn::DemoteTo(DF(),
                      hn::Add(hn::Mul(hn::Set(d, row.Delta[2]), t), hn::Set(d, row.Begin[2])));
}

// t of a run, and its depth.
inline HWY_ATTR void SetExactValues(const TRow& row, int x, int count, TRunValues* values) {
  const DD d;
  const VD begin = hn::Set(d, row.Begin[2]);
  const VD delta = hn::Set(d, row.Delta[2]);
  for (int i = 0; i < count; i += kLanes) {
    const VD t = ColumnParameter(row, x + i);
    hn::Store(t, d, values->T + i);
    hn::Store(hn::DemoteTo(DF(), t), DF(), values->Near + i);
    hn::Store(hn::DemoteTo(DF(), hn::Add(hn::Mul(delta, t), begin)), DF(), values->Depth + i);
  }
}

// The same without a division a pixel, for who needs t in single precision alone; false, with
// nothing to rely on, if a depth may round to another float than the exact path finds.
//
// t is taken as the product with the reciprocal of the divisor: with u = 2^-53 it is off the exact
// quotient's rounding by 3 u at most, t being below 1. So is depth by 9 u (|delta| + |begin|), with
// the roundings of product and sum on both ways. If the depths 16 u (|delta| + |begin|) below and
// above round to one float, that is the exact one's, since rounding is monotone. The bounds on the
// sum keep this margin above all that a float can not tell from zero.
inline HWY_ATTR bool SetFloatValues(const TRow& row, int x, int count, TRunValues* values) {
  const DD d;
  const DF df;
  const double reach = std::fabs(row.Delta[2]) + std::fabs(row.Begin[2]);
  if (!(reach > kMinDepthBound && reach < kMaxDepthBound)) {
    return false;
  }
  const VD begin = hn::Set(d, row.Begin[2]);
  const VD delta = hn::Set(d, row.Delta[2]);
  const VD from = hn::Set(d, row.Begin[0]);
  const VD perPixel = hn::Set(d, 1.0 / row.Delta[0]);
  const VD margin = hn::Set(d, reach * kDepthMargin);
  hn::Mask<DF> sure = hn::Eq(hn::Zero(df), hn::Zero(df));
  VD column = hn::Iota(d, static_cast<double>(x));
  for (int i = 0; i < count; i += kLanes, column = hn::Add(column, hn::Set(d, kLanes))) {
    const VD t = hn::Mul(hn::Sub(column, from), perPixel);
    hn::Store(hn::DemoteTo(df, t), df, values->Near + i);
    const VD depth = hn::Add(hn::Mul(delta, t), begin);
    const VF low = hn::DemoteTo(df, hn::Sub(depth, margin));
    sure = hn::And(sure, hn::Eq(low, hn::DemoteTo(df, hn::Add(depth, margin))));
    hn::Store(low, df, values->Depth + i);
  }
  return hn::AllTrue(df, sure);
}

HWY_INLINE HWY_ATTR void SetRunValues(const TRow& row, int x, int count, bool exactT,
                                      TRunValues* values) {
  if (exactT || !SetFloatValues(row, x, count, values)) {
    SetExactValues(row, x, count, values);
  }
}

// Tests one vector of depths and writes those that pass. Returns them as bits.
template <bool kWrite, class D, class TPass>
HWY_INLINE HWY_ATTR std::uint64_t TestDepthVector(D d, hn::Vec<D> depth, std::uint64_t live,
                                                  float* stored, const TPass& passes) {
  std::uint8_t bytes[8];
  std::memcpy(bytes, &live, sizeof bytes);
  const hn::Mask<D> alive = hn::LoadMaskBits(d, bytes);
  hn::Vec<D> before;
  if constexpr (kMaskedAccess) {
    before = hn::MaskedLoad(alive, d, stored);
  } else {
    before = hn::LoadU(d, stored);
  }
  const hn::Mask<D> pass = hn::And(alive, passes(d, depth, before));
  if constexpr (kWrite) {
    StoreMasked(d, depth, pass, stored);
  }
  std::uint8_t bits[8] = {};
  hn::StoreMaskBits(d, pass, bits);
  std::uint64_t passed;
  std::memcpy(&passed, bits, sizeof passed);
  return passed;
}

// Which pixels of `live` pass; those get their depth, where it is written. Without masked access
// `count` is a multiple of the lanes.
template <bool kWrite, class TPass>
HWY_INLINE HWY_ATTR std::uint64_t TestDepths(const TSpanJob& job, int count, const float* depths,
                                             std::uint64_t live, float* stored,
                                             const TPass& passes) {
  std::uint64_t passed = 0;
  const auto test = [&](auto d, int i) HWY_ATTR {
    auto depth = hn::Load(d, depths + i);
    if (job.AddOffset) {
      depth = hn::Add(depth, hn::Set(d, job.Offset));
    }
    passed |= TestDepthVector<kWrite>(d, depth, live >> i, stored + i, passes) << i;
  };
  int i = 0;
  for (; kMaskedAccess ? i < count : i + kFloatLanes <= count; i += kFloatLanes) {
    test(DFF(), i);
  }
  if (i < count) {
    test(DF(), i);
  }
  return passed;
}

template <bool kWrite>
HWY_INLINE HWY_ATTR std::uint64_t TestDepthsBy(const TSpanJob& job, int count, const float* depths,
                                               std::uint64_t live, float* stored) {
  const auto test = [&](auto passes) HWY_ATTR {
    return TestDepths<kWrite>(job, count, depths, live, stored, passes);
  };
  switch (job.DepthTest ? job.DepthFunc + GL_NEVER : GL_ALWAYS) {
  case GL_LESS:
    return test([](auto, auto a, auto b) HWY_ATTR { return hn::Lt(a, b); });
  case GL_LEQUAL:
    return test([](auto, auto a, auto b) HWY_ATTR { return hn::Le(a, b); });
  case GL_ALWAYS:
    return test([](auto d, auto, auto) HWY_ATTR { return hn::Eq(hn::Zero(d), hn::Zero(d)); });
  default: {
    const std::uint8_t func = job.DepthFunc;
    return test([func](auto d, auto a, auto b) HWY_ATTR { return DepthMask(d, func, a, b); });
  }
  }
}

inline HWY_ATTR std::uint64_t DrawDepths(const TSpanJob& job, int count, const float* depths,
                                         std::uint64_t live, float* stored) {
  return job.DepthWrite ? TestDepthsBy<true>(job, count, depths, live, stored)
                        : TestDepthsBy<false>(job, count, depths, live, stored);
}

// --- Stencil, in bytes

using DB = hn::CappedTag<std::uint8_t, kRun>;
using VB = hn::Vec<DB>;

struct TStencilRun {
  HWY_ALIGN std::uint8_t Values[kRun];
};

// The pixels of a run whose stencil bytes meet a condition, as bits.
template <class TMeets>
HWY_INLINE HWY_ATTR std::uint64_t BytesThat(const TStencilRun& run, const TMeets& meets) {
  const DB db;
  std::uint8_t bits[kRun / 8 + 8] = {};
  for (int i = 0; i < kRun; i += static_cast<int>(hn::Lanes(db))) {
    hn::StoreMaskBits(db, meets(hn::Load(db, run.Values + i)), bits + i / 8);
  }
  std::uint64_t all;
  std::memcpy(&all, bits, sizeof all);
  return all;
}

// Which pixels pass the stencil test.
inline HWY_ATTR std::uint64_t StencilBits(const TSpanJob& job, const TStencilRun& run) {
  const DB db;
  const VB mask = hn::Set(db, job.StencilValueMask);
  const VB ref = hn::Set(db, static_cast<std::uint8_t>(job.StencilRef & job.StencilValueMask));
  const auto less = [&](VB v) HWY_ATTR { return hn::Lt(ref, hn::And(v, mask)); };
  const auto equal = [&](VB v) HWY_ATTR { return hn::Eq(ref, hn::And(v, mask)); };
  const auto greater = [&](VB v) HWY_ATTR { return hn::Gt(ref, hn::And(v, mask)); };
  switch (job.StencilFunc + GL_NEVER) {
  case GL_NEVER:
    return 0;
  case GL_LESS:
    return BytesThat(run, less);
  case GL_EQUAL:
    return BytesThat(run, equal);
  case GL_LEQUAL:
    return ~BytesThat(run, greater);
  case GL_GREATER:
    return BytesThat(run, greater);
  case GL_NOTEQUAL:
    return ~BytesThat(run, equal);
  case GL_GEQUAL:
    return ~BytesThat(run, less);
  default:
    return ~std::uint64_t{0};
  }
}

HWY_INLINE HWY_ATTR VB StencilValue(const TSpanJob& job, std::uint8_t step, VB stored) {
  const DB db;
  const VB mask = hn::Set(db, job.StencilWriteMask);
  const VB inside = hn::And(stored, mask);
  const VB one = hn::Set(db, std::uint8_t{1});
  VB value = inside;
  switch (step) {
  case kStencilZero:
    value = hn::Zero(db);
    break;
  case kStencilReplace:
    value = hn::Set(db, job.StencilRef);
    break;
  case kStencilIncr:
    value = hn::SaturatedAdd(inside, one);
    break;
  case kStencilIncrWrap:
    value = hn::Add(inside, one);
    break;
  case kStencilDecr:
    value = hn::SaturatedSub(inside, one);
    break;
  case kStencilInvert:
    value = hn::Xor(inside, mask);
    break;
  default: // kStencilKeep
    break;
  }
  return hn::Or(hn::And(value, mask), hn::AndNot(mask, stored));
}

// Applies a stencil operation to a set of pixels.
inline HWY_ATTR void StepStencil(const TSpanJob& job, std::uint8_t step, std::uint64_t pixels,
                                 TStencilRun* run) {
  if (step == kStencilKeep || pixels == 0) {
    return;
  }
  const DB db;
  std::uint8_t bits[kRun / 8];
  std::memcpy(bits, &pixels, sizeof bits);
  for (int i = 0; i < kRun; i += static_cast<int>(hn::Lanes(db))) {
    const VB stored = hn::Load(db, run->Values + i);
    const auto chosen = hn::LoadMaskBits(db, bits + i / 8);
    hn::Store(hn::IfThenElse(chosen, StencilValue(job, step, stored), stored), db, run->Values + i);
  }
}

// Writes the bytes of a run whose bits are set, and no others.
inline HWY_ATTR void StoreStencils(const TStencilRun& run, std::uint64_t pixels,
                                   unsigned char* to) {
#if ZX_HAS_MASK_REGISTERS
  const DB db;
  static_assert(hn::MaxLanes(db) == kRun);
  std::uint8_t bits[kRun / 8];
  std::memcpy(bits, &pixels, sizeof bits);
  hn::BlendedStore(hn::Load(db, run.Values), hn::LoadMaskBits(db, bits), db, to);
#else
  for (int i = 0; pixels >> i != 0; i += 8) {
    unsigned int rest = pixels >> i & 255;
    if (rest == 255) {
      std::memcpy(to + i, run.Values + i, 8);
      rest = 0;
    }
    for (; rest != 0; rest &= rest - 1) {
      const int k = i + __builtin_ctz(rest);
      to[k] = run.Values[k];
    }
    if (i == kRun - 8) {
      break;
    }
  }
#endif
}

// The pixels whose stencil an operation writes.
inline std::uint64_t SteppedPixels(const TSpanJob& job, std::uint64_t live, std::uint64_t tested,
                                   std::uint64_t shaded) {
  return (job.StencilFail != kStencilKeep ? live & ~tested : 0) |
         (job.StencilZFail != kStencilKeep ? tested & ~shaded : 0) |
         (job.StencilZPass != kStencilKeep ? shaded : 0);
}

// Applies the three stencil operations: to pixels of `live` that fail the stencil test, that fail
// the depth test, and that pass both.
inline HWY_ATTR void StepStencils(const TSpanJob& job, std::uint64_t live, std::uint64_t tested,
                                  std::uint64_t shaded, TStencilRun* run, unsigned char* to) {
  const std::uint64_t stepped = SteppedPixels(job, live, tested, shaded);
  if (stepped == 0) {
    return;
  }
  StepStencil(job, job.StencilFail, live & ~tested, run);
  StepStencil(job, job.StencilZFail, tested & ~shaded, run);
  StepStencil(job, job.StencilZPass, shaded, run);
  StoreStencils(*run, stepped, to);
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
