// Depth and stencil of a run of pixels that stays in the nearest cache: each stage a small loop, so
// that what is chosen once is not asked for again at every pixel. Included once for each
// instruction set.

#if defined(ZX_RENDER_SPANTESTS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZX_RENDER_SPANTESTS_INL_H_
#undef ZX_RENDER_SPANTESTS_INL_H_
#else
#define ZX_RENDER_SPANTESTS_INL_H_
#endif

#include <cstring>

#include <hwy/highway.h>

#include <ZxCore3D/render/GLEnums.h>

#include "SpanRows-inl.h"

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

// Whether a group reads and writes only those of its pixels that exist. Otherwise whole vectors are
// read and written, and a group that is none goes by way of copies.
inline constexpr bool kMaskedAccess = HWY_TARGET == HWY_AVX3;

template <class D, class T> HWY_INLINE HWY_ATTR hn::Vec<D> LoadLive(D d, MI live, const T* from) {
  if constexpr (kMaskedAccess) {
    return hn::MaskedLoad(hn::RebindMask(d, live), d, from);
  } else {
    return hn::LoadU(d, from);
  }
}

// Those of `mask` get new values, the others keep `before`.
template <class D, class T>
HWY_INLINE HWY_ATTR void StoreLive(D d, hn::Vec<D> values, hn::Vec<D> before, MI mask, T* to) {
  if constexpr (kMaskedAccess) {
    hn::BlendedStore(values, hn::RebindMask(d, mask), d, to);
  } else {
    hn::StoreU(hn::IfThenElse(hn::RebindMask(d, mask), values, before), d, to);
  }
}

// t of the pixels of a row from a column on.
HWY_INLINE HWY_ATTR VD ColumnT(const TRow& row, VD x) {
  const DD d;
  return hn::Div(hn::Sub(x, hn::Set(d, row.Begin[0])), hn::Set(d, row.Delta[0]));
}

HWY_INLINE HWY_ATTR VD ColumnT(const TRow& row, int x) {
  return ColumnT(row, hn::Iota(DD(), static_cast<double>(x)));
}

// --- Depth

HWY_INLINE HWY_ATTR MI DepthMask(std::uint8_t func, VF fragment, VF stored) {
  const DI di;
  switch (func + GL_NEVER) {
  case GL_NEVER:
    return hn::MaskFromVec(hn::Zero(di));
  case GL_LESS:
    return hn::RebindMask(di, hn::Lt(fragment, stored));
  case GL_EQUAL:
    return hn::RebindMask(di, hn::Eq(fragment, stored));
  case GL_LEQUAL:
    return hn::RebindMask(di, hn::Le(fragment, stored));
  case GL_GREATER:
    return hn::RebindMask(di, hn::Gt(fragment, stored));
  case GL_NOTEQUAL:
    // The library's own Ne is false for a NaN on some levels.
    return hn::RebindMask(di, hn::Not(hn::Eq(fragment, stored)));
  case GL_GEQUAL:
    return hn::RebindMask(di, hn::Ge(fragment, stored));
  default:
    return hn::Eq(hn::Zero(di), hn::Zero(di));
  }
}

// A run of pixels from column X on, the first `Count` of which exist. Unless access is by masks
// `Count` is a multiple of the lanes.
struct TDepthRun {
  const TRow* Row;
  int X;
  int Count;
  float* Depth; ///< of the first pixel
  double* T;    ///< filled
};

// Which pixels of `live` pass; those get their depth, where it is written.
template <bool kWrite, class TPass>
HWY_INLINE HWY_ATTR std::uint64_t TestDepths(const TSpanJob& job, const TDepthRun& run,
                                             std::uint64_t live, const TPass& passes) {
  const DD d;
  const DF df;
  const TRow row = *run.Row;
  const bool addOffset = job.AddOffset;
  const VF offset = hn::Set(df, job.Offset);
  const VD begin = hn::Set(d, row.Begin[2]);
  const VD delta = hn::Set(d, row.Delta[2]);
  const std::uint64_t lanes = FirstBits(kLanes);
  std::uint64_t passed = 0;
  for (int i = 0; i < run.Count; i += kLanes) {
    const VD t = ColumnT(row, run.X + i);
    hn::Store(t, d, run.T + i);
    VF depth = hn::DemoteTo(df, hn::Add(hn::Mul(delta, t), begin));
    if (addOffset) {
      depth = hn::Add(depth, offset);
    }
    const MI alive = MaskOfBits(live >> i);
    const VF stored = LoadLive(df, alive, run.Depth + i);
    const MI pass = hn::And(alive, passes(depth, stored));
    if (kWrite) {
      StoreLive(df, depth, stored, pass, run.Depth + i);
    }
    passed |= (BitsOf(pass) & lanes) << i;
  }
  return passed;
}

template <bool kWrite>
HWY_INLINE HWY_ATTR std::uint64_t TestDepthsBy(const TSpanJob& job, const TDepthRun& run,
                                               std::uint64_t live) {
  const DI di;
  const auto test = [&](auto passes)
                        HWY_ATTR { return TestDepths<kWrite>(job, run, live, passes); };
  switch (job.DepthTest ? job.DepthFunc + GL_NEVER : GL_ALWAYS) {
  case GL_LESS:
    return test([](VF a, VF b) HWY_ATTR { return hn::RebindMask(DI(), hn::Lt(a, b)); });
  case GL_LEQUAL:
    return test([](VF a, VF b) HWY_ATTR { return hn::RebindMask(DI(), hn::Le(a, b)); });
  case GL_ALWAYS: {
    const MI all = hn::Eq(hn::Zero(di), hn::Zero(di));
    return test([all](VF, VF) HWY_ATTR { return all; });
  }
  default: {
    const std::uint8_t func = job.DepthFunc;
    return test([func](VF a, VF b) HWY_ATTR { return DepthMask(func, a, b); });
  }
  }
}

inline HWY_ATTR std::uint64_t DrawDepths(const TSpanJob& job, const TDepthRun& run,
                                         std::uint64_t live) {
  return job.DepthWrite ? TestDepthsBy<true>(job, run, live) : TestDepthsBy<false>(job, run, live);
}

// --- Stencil, in bytes

using DB = hn::CappedTag<std::uint8_t, kRun>;
using VB = hn::Vec<DB>;

struct TStencilRun {
  HWY_ALIGN std::uint8_t Values[kRun];
};

// The bits of a run whose bytes meet a condition.
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

// Takes a step at the pixels of a set.
inline HWY_ATTR void StepStencils(const TSpanJob& job, std::uint8_t step, std::uint64_t pixels,
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

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
