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

#include <algorithm>
#include <cmath>

#include <ZxCore3D/render/kernels/SpanRowSetup-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// The parameter t of a group of pixels, from column x on.
template <class TRowOfGroup> HWY_INLINE HWY_ATTR VD ColumnParameter(const TRowOfGroup& row, VD x) {
  return hn::Div(hn::Sub(x, ValuesOf(row.Begin, 0)), ValuesOf(row.Delta, 0));
}

HWY_INLINE HWY_ATTR VD ColumnParameter(const TRow& row, int x) {
  return ColumnParameter(row, Columns(DD(), x));
}

// --- Depth

// The lanes of a vector of floats that pass.
template <class D>
HWY_INLINE HWY_ATTR hn::Mask<D> DepthMask(D d, TCompare func, hn::Vec<D> fragment,
                                          hn::Vec<D> stored) {
  switch (func) {
  case TCompare::Never:
    return NoLanes(d);
  case TCompare::Less:
    return hn::Lt(fragment, stored);
  case TCompare::Equal:
    return hn::Eq(fragment, stored);
  case TCompare::LessEqual:
    return hn::Le(fragment, stored);
  case TCompare::Greater:
    return hn::Gt(fragment, stored);
  case TCompare::NotEqual:
    // Highway's own Ne is false for a NaN at some levels.
    return hn::Not(hn::Eq(fragment, stored));
  case TCompare::GreaterEqual:
    return hn::Ge(fragment, stored);
  default:
    return AllLanes(d);
  }
}

// Computed for a run of pixels before any test: t, unless colours do without, and depth where that
// is used.
struct TRunValues {
  bool IsNear;  ///< nothing needs t
  bool IsFloat; ///< nor a texture
  HWY_ALIGN double T[kRun + kFloatLanes];
  HWY_ALIGN float Depth[kRun + kFloatLanes];
};

// Values of a run by the operations of the exact path, or depths alone, without a division a pixel.
// Returns the test that failed, if a depth may round to another float than the exact path finds;
// `values` are void then.
//
//   t = (x - begin x) / delta x,   depth = delta z * t + begin z
//
// With u = 2^-53, what the exact path loses is 4 u |delta z| + u |begin z| at most, t being
// below 1. Without t, depth is `delta * n + begin` of the n columns after the row's first pixel:
// `begin` is off by 6 u |delta z| + 2 u |begin z|, with the margin in it, the product by 3 u |delta
// z| and the sum by u of both, 14 u and 4 u together. If the depths 16 u (|delta z| + |begin z|)
// below and above round to one float, that is the exact one's, since rounding is monotone. The
// limits of the sum keep this margin above all that a float cannot tell from zero. Where delta z is
// 0, the product is a zero of its sign for every t, none being negative: depth is the exact path's.
// Lanes past the last pixel have an exact t of 1 at most, so that what they fetch from a texture is
// there.
template <bool kExact>
inline HWY_ATTR TCondition SetValues(const TSpanJob& job, const TRow& row, int x, int count,
                                     TRunValues* values) {
  const DD d;
  const DF df;
  if (!kExact && !job.Draw.UsesDepth()) {
    return TCondition::None;
  }
  const bool sameDepth = kExact || row.Delta[2] == 0.0;
  const double depthBound = std::fabs(row.Delta[2]) + std::fabs(row.Begin[2]);
  ZX_DEPTH_RANGE_CONDITION(ZX_RETURN_UNMET)
  const double begin = kExact ? row.Begin[2] : row.Floats->DepthBegin[row.Lane];
  const double margin = sameDepth ? 0.0 : depthBound * kDepthMargin;
  const VD least = hn::Set(d, begin - margin);
  const VD most = hn::Set(d, begin + margin);
  const VD delta = hn::Set(d, kExact ? row.Delta[2] : row.Floats->DepthDelta[row.Lane]);
  VD column = Columns(d, kExact ? x : x - row.First);
  hn::Mask<DF> sure = AllLanes(df);
  for (int i = 0; i < count; i += kLanes) {
    VD t = column;
    if (kExact) {
      t = hn::Div(hn::Sub(column, hn::Set(d, row.Begin[0])), hn::Set(d, row.Delta[0]));
      t = hn::Min(t, hn::Set(d, 1.0));
      hn::Store(t, d, values->T + i);
    }
    column = hn::Add(column, hn::Set(d, kLanes));
    const VD product = hn::Mul(delta, t);
    const VF low = hn::DemoteTo(df, hn::Add(product, least));
    if (!kExact) {
      sure = hn::And(sure, hn::Eq(low, hn::DemoteTo(df, hn::Add(product, most))));
    }
    hn::Store(low, df, values->Depth + i);
  }
  const bool depthSure = hn::AllTrue(df, sure);
  ZX_RETURN_FIRST_UNMET(ZX_DEPTH_ROUNDING_TEST);
}

HWY_INLINE HWY_ATTR void SetRunValues(const TSpanJob& job, const TRow& row, int x, int count,
                                      TRunValues* values) {
  if (!values->IsNear || !job.Meets(SetValues<false>(job, row, x, count, values), count)) {
    SetValues<true>(job, row, x, count, values);
  }
}

// Which pixels of `live` pass; those get their depth, where it is written.
inline HWY_ATTR std::uint64_t DrawDepths(const TSpanJob& job, int count, const float* depths,
                                         std::uint64_t live, float* stored) {
  const DFF d;
  const TCompare func = job.Draw.DepthTest ? job.Draw.DepthFunc : TCompare::Always;
  std::uint64_t passed = 0;
  for (int i = 0; i < count; i += kFloatLanes) {
    VFF depth = hn::Load(d, depths + i);
    if (job.Primitive.AddOffset) {
      depth = hn::Add(depth, hn::Set(d, job.Draw.Offset));
    }
    const auto alive = MaskOfBits(d, live >> i);
    const auto passes = DepthMask(d, func, depth, LoadMasked(d, alive, stored + i));
    const auto pass = hn::And(alive, passes);
    if (job.Draw.DepthWrite) {
      StoreMasked(d, depth, pass, stored + i);
    }
    passed |= BitsOfMask(d, pass) << i;
  }
  return passed;
}

// --- Stencil, in bytes

// Those of a run or of a group.
template <int kMost> struct TStencils {
  static constexpr int kBytes = std::max(kMost, 8);
  using D = hn::CappedTag<std::uint8_t, kBytes>;
  HWY_ALIGN std::uint8_t Values[kBytes];
};

// With mask registers a group takes no longer than a run.
using TGroupStencils = TStencils<ZX_HAS_MASK_REGISTERS ? kRun : kLanes>;

// The first `count` of as many bytes as a vector has, no more than `kMost`; the others are any.
// They are brought to registers one by one: a vector loaded from bytes that were stored one by one
// waits until all stores of pixels before have reached memory.
template <int kMost, class D>
HWY_INLINE HWY_ATTR hn::Vec<D> LoadFirstBytes(D d, const unsigned char* from, int count) {
  constexpr int kBytes = static_cast<int>(hn::MaxLanes(d));
  if constexpr (kBytes > 8) {
    const hn::Half<D> half;
    return hn::Combine(d, LoadFirstBytes<kMost>(half, from + kBytes / 2, count - kBytes / 2),
                       LoadFirstBytes<kMost>(half, from, count));
  } else {
    std::uint64_t word = 0;
    if (count >= 8) {
      std::memcpy(&word, from, sizeof word);
    } else if (count > 0) {
      for (int k = 0; k < std::min(kMost, 8); ++k) {
        word |= std::uint64_t{from[std::min(k, count - 1)]} << 8 * k;
      }
    }
    return hn::BitCast(d, hn::Set(hn::Repartition<std::uint64_t, D>(), word));
  }
}

// Loads the first `count`; the others have any value.
template <int kMost>
HWY_INLINE HWY_ATTR void LoadStencils(const unsigned char* from, int count, TStencils<kMost>* out) {
  const typename TStencils<kMost>::D d;
#if ZX_HAS_MASK_REGISTERS // in one store, which the load of the test need not wait for
  const auto live = hn::FirstN(d, static_cast<std::size_t>(count));
  hn::Store(hn::MaskedLoad(live, d, from), d, out->Values);
#else
  constexpr int kBytes = static_cast<int>(hn::MaxLanes(d));
  for (int i = 0; i < count; i += kBytes) {
    hn::Store(count - i >= kBytes ? hn::LoadU(d, from + i)
                                  : LoadFirstBytes<kMost>(d, from + i, count - i),
              d, out->Values + i);
  }
#endif
}

// Which pixels pass the stencil test. The bits of a comparison's number say whether it holds for a
// reference that is less, equal and greater; where two of them or all do, its opposite is asked.
template <int kMost>
inline HWY_ATTR std::uint64_t StencilBits(const TSpanJob& job, const TStencils<kMost>& stencils) {
  static_assert(static_cast<int>(TCompare::Less) == 1 && static_cast<int>(TCompare::Equal) == 2 &&
                static_cast<int>(TCompare::Greater) == 4 &&
                static_cast<int>(TCompare::Always) == 7);
  const typename TStencils<kMost>::D d;
  const auto mask = hn::Set(d, job.Draw.StencilValueMask);
  const auto ref = hn::And(hn::Set(d, job.Draw.StencilRef), mask);
  const int func = static_cast<int>(job.Draw.StencilFunc);
  const bool opposite = func == 3 || func >= 5;
  const int asked = opposite ? 7 - func : func;
  std::uint64_t bits = opposite ? ~std::uint64_t{0} : 0;
  for (int i = 0; i < kMost && asked != 0; i += static_cast<int>(hn::Lanes(d))) {
    const auto stored = hn::And(hn::Load(d, stencils.Values + i), mask);
    const auto holds = asked == 1   ? hn::Lt(ref, stored)
                       : asked == 2 ? hn::Eq(ref, stored)
                                    : hn::Gt(ref, stored);
    bits ^= BitsOfMask(d, holds) << i;
  }
  return bits;
}

// What an operation makes of the bits within the write mask.
template <class D>
HWY_INLINE HWY_ATTR hn::Vec<D> StencilValue(D d, const TSpanJob& job, TStencilStep step,
                                            hn::Vec<D> inside, hn::Vec<D> mask) {
  const auto one = hn::Set(d, std::uint8_t{1});
  switch (step) {
  case TStencilStep::Zero:
    return hn::Zero(d);
  case TStencilStep::Replace:
    return hn::Set(d, job.Draw.StencilRef);
  case TStencilStep::Incr:
    return hn::SaturatedAdd(inside, one);
  case TStencilStep::IncrWrap:
    return hn::Add(inside, one);
  case TStencilStep::Decr:
    return hn::SaturatedSub(inside, one);
  default: // Invert: what keeps is no step
    return hn::Xor(inside, mask);
  }
}

// Applies a stencil operation to a set of pixels.
template <int kMost>
inline HWY_ATTR void StepStencil(const TSpanJob& job, TStencilStep step, std::uint64_t pixels,
                                 TStencils<kMost>* stencils) {
  if (step == TStencilStep::Keep || pixels == 0) {
    return;
  }
  const typename TStencils<kMost>::D d;
  const auto mask = hn::Set(d, job.Draw.StencilWriteMask);
  for (int i = 0; i < kMost; i += static_cast<int>(hn::Lanes(d))) {
    const auto stored = hn::Load(d, stencils->Values + i);
    const auto value = hn::And(StencilValue(d, job, step, hn::And(stored, mask), mask), mask);
    const auto stepped = hn::Or(value, hn::AndNot(mask, stored));
    hn::Store(hn::IfThenElse(MaskOfBits(d, pixels >> i), stepped, stored), d, stencils->Values + i);
  }
}

// Writes a set of pixels, most often all of the first `count`, and no others.
template <int kMost>
inline HWY_ATTR void StoreStencils(const TStencils<kMost>& stencils, std::uint64_t pixels,
                                   int count, unsigned char* to) {
#if ZX_HAS_MASK_REGISTERS
  (void)count;
  const typename TStencils<kMost>::D d;
  static_assert(hn::MaxLanes(d) == kRun);
  hn::BlendedStore(hn::Load(d, stencils.Values), MaskOfBits(d, pixels), d, to);
#else
  ForPixels(pixels, count, [&](int k) { to[k] = stencils.Values[k]; });
#endif
}

// The pixels whose stencil an operation writes.
inline std::uint64_t SteppedPixels(const TSpanJob& job, std::uint64_t live, std::uint64_t tested,
                                   std::uint64_t shaded) {
  return (job.Draw.StencilFail != TStencilStep::Keep ? live & ~tested : 0) |
         (job.Draw.StencilZFail != TStencilStep::Keep ? tested & ~shaded : 0) |
         (job.Draw.StencilZPass != TStencilStep::Keep ? shaded : 0);
}

// Applies the three stencil operations: to those of the first `count` pixels that fail the stencil
// test, that fail the depth test, and that pass both.
template <int kMost>
inline HWY_ATTR void StepStencils(const TSpanJob& job, int count, std::uint64_t tested,
                                  std::uint64_t shaded, TStencils<kMost>* stencils,
                                  unsigned char* to) {
  const std::uint64_t live = FirstBits(count);
  const std::uint64_t stepped = SteppedPixels(job, live, tested, shaded);
  if (stepped == 0) {
    return;
  }
  StepStencil(job, job.Draw.StencilFail, live & ~tested, stencils);
  StepStencil(job, job.Draw.StencilZFail, tested & ~shaded, stencils);
  StepStencil(job, job.Draw.StencilZPass, shaded, stencils);
  StoreStencils(*stencils, stepped, count, to);
}

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif
