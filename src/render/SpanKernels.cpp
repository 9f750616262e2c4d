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
inline void DrawTriangleJob(TSpanJob*) {}
} // namespace HWY_NAMESPACE
} // namespace Zx3D

#else
#include "SpanTriangle-inl.h"
#endif

#if HWY_ONCE

#include <hwy/targets.h>

namespace Zx3D {

HWY_EXPORT(DrawTriangleJob);

namespace {

constinit std::atomic<TDrawJob> s_DrawJob{nullptr};
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

TDrawJob GetDrawJob() {
  TDrawJob draw = s_DrawJob.load(std::memory_order_relaxed);
  if (draw == nullptr && !s_Plain.load(std::memory_order_relaxed)) {
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    if (BestLevel() == nullptr) {
      s_Plain.store(true, std::memory_order_relaxed);
      return nullptr;
    }
    draw = &HWY_DYNAMIC_DISPATCH(DrawTriangleJob);
    s_DrawJob.store(draw, std::memory_order_relaxed);
  }
  return draw;
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
  s_DrawJob.store(nullptr);
  return true;
}

const char* GetSpanLevel() { return GetDrawJob() == nullptr ? "plain" : BestLevel()->Name; }

} // namespace Zx3D

#endif // HWY_ONCE
