#include "SpanJob.h"

#include <algorithm>
#include <atomic>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/render/SpanKernels.cpp"
#define HWY_DISABLED_TARGETS (HWY_SSE4 | HWY_AVX3_DL)
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// A processor without SSSE3 is served by the plain walker: this is never called.
namespace Zx3D {
namespace HWY_NAMESPACE {
inline const TSpanKernels* Kernels() { return nullptr; }
} // namespace HWY_NAMESPACE
} // namespace Zx3D

#else
#include "QuietFloats-inl.h"
#include "SpanLine-inl.h"
#include "SpanTriangle-inl.h"
#include "VertexBatch-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// A routine as it is called: what lanes beyond the last pixel or vertex raise stays within.
template <auto kRoutine> struct TQuiet;
template <class... TArgs, void (*kRoutine)(TArgs...)> struct TQuiet<kRoutine> {
  static HWY_ATTR void Call(TArgs... args) {
    const TQuietFloats quiet;
    kRoutine(args...);
  }
};

inline constexpr TSpanKernels kKernels = {
    TQuiet<DrawTriangleJob>::Call, TQuiet<DrawLineJob>::Call, TQuiet<TransformBatch>::Call,
    TQuiet<JudgeTriangles>::Call,  TQuiet<JudgeLines>::Call,  TQuiet<PlacePoints>::Call,
    TQuiet<PackColors>::Call};

inline const TSpanKernels* Kernels() { return &kKernels; }

} // namespace HWY_NAMESPACE
} // namespace Zx3D
HWY_AFTER_NAMESPACE();

#endif

#if HWY_ONCE

#include <hwy/targets.h>

namespace Zx3D {

HWY_EXPORT(Kernels);

namespace {

constinit std::atomic<const TSpanKernels*> s_Kernels{nullptr};
constinit std::atomic<bool> s_Plain{false};

struct TLevel {
  const char* Name;
  std::uint32_t Target;
};

constexpr TLevel kLevels[] = {
    {"SSSE3", HWY_SSSE3},
    {"AVX2", HWY_AVX2},
    {"AVX3", HWY_AVX3},
};

// The best level among the targets in force; null if none of them is there.
const TLevel* BestLevel() {
  for (std::size_t i = std::size(kLevels); i-- > 0;) {
    if ((hwy::SupportedTargets() & kLevels[i].Target) != 0) {
      return &kLevels[i];
    }
  }
  return nullptr;
}

} // namespace

const TSpanKernels* GetSpanKernels() {
  const TSpanKernels* kernels = s_Kernels.load(std::memory_order_acquire);
  if (kernels == nullptr && !s_Plain.load(std::memory_order_relaxed)) {
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    kernels = BestLevel() != nullptr ? HWY_DYNAMIC_DISPATCH(Kernels)() : nullptr;
    s_Plain.store(kernels == nullptr, std::memory_order_relaxed);
    s_Kernels.store(kernels, std::memory_order_release);
  }
  return kernels;
}

bool LimitSpanLevel(const char* name) {
  std::int64_t targets = 0;
  bool plain = false;
  if (name != nullptr) {
    plain = std::strcmp(name, "plain") == 0;
    hwy::SetSupportedTargetsForTest(0);
    const std::int64_t had = hwy::SupportedTargets();
    for (const TLevel& level : kLevels) {
      if (std::strcmp(name, level.Name) == 0 && (had & level.Target) != 0) {
        targets = level.Target;
      }
    }
    if (!plain && targets == 0) {
      return false;
    }
  }
  hwy::SetSupportedTargetsForTest(targets);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  s_Plain.store(plain);
  s_Kernels.store(nullptr);
  return true;
}

const char* GetSpanLevel() { return GetSpanKernels() == nullptr ? "plain" : BestLevel()->Name; }

} // namespace Zx3D

#endif // HWY_ONCE
