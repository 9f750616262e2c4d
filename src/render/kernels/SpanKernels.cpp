// Tested by: tests/render/SpanLevels.cpp (EachSpanLevel.*), tests/render/FixedScenes.cpp
// (EachFixedScene.*)

#include <ZxCore3D/render/kernels/SpanJob.h>

#include <algorithm>
#include <atomic>
#include <cstring>

#include <ZxCore3D/types/private/InstructionSets.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/render/kernels/SpanKernels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#if ZX_IS_PORTABLE

// A processor that has none of the instruction sets is served by the reference walker.
namespace Zx3D {
namespace HWY_NAMESPACE {
inline const TSpanKernels* Kernels() { return nullptr; }
} // namespace HWY_NAMESPACE
} // namespace Zx3D

#else
#include <ZxCore3D/render/kernels/PixelRows-inl.h>
#include <ZxCore3D/render/kernels/ShadedRow-inl.h>
#include <ZxCore3D/render/kernels/SlotFacts-inl.h>
#include <ZxCore3D/render/kernels/SpanLine-inl.h>
#include <ZxCore3D/render/kernels/SpanTriangle-inl.h>
#include <ZxCore3D/render/kernels/VertexBatch-inl.h>

HWY_BEFORE_NAMESPACE();
namespace Zx3D {
namespace HWY_NAMESPACE {

// The kernels rely on these traits agreeing.
static_assert(ZX_HAS_ONE_BLOCK == (HWY_LANES(double) == 2));
static_assert(ZX_HAS_MASKED_ACCESS || !ZX_HAS_MASK_REGISTERS);

// Compiled in, so that no table elsewhere can tell another name than that of what runs.
inline constexpr const char* kLevel = (HWY_TARGET & ZX_TARGETS_AVX3) != 0    ? "AVX3"
                                      : (HWY_TARGET & ZX_TARGETS_AVX2) != 0  ? "AVX2"
                                      : (HWY_TARGET & ZX_TARGETS_SSSE3) != 0 ? "SSSE3"
                                      : (HWY_TARGET & ZX_TARGETS_SSE2) != 0  ? "SSE2"
                                      : (HWY_TARGET & ZX_TARGETS_NEON) != 0  ? "NEON"
                                                                             : nullptr;
static_assert(kLevel != nullptr, "an instruction set without a name");

inline constexpr TSpanKernels kKernels = {
    kLevel,     kLanes,          FindFacts,     DrawTriangleJob, DrawPlannedTriangle,
    DrawLines,  TransformBatch,  FindInside,    FindClear,       DivideVertices,
    FindFront,  ProjectVertices, PlanTriangles, ProjectLines,    ProjectPoints,
    PackColors, ShadeRows,       ShadeSpan,     DrawPixelRow,
};

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
constinit std::atomic<bool> s_Reference{false};

struct TLevel {
  const char* Name;
  std::int64_t Targets;
};

constexpr TLevel kLevels[] = {
    {"SSE2", ZX_TARGETS_SSE2}, {"SSSE3", ZX_TARGETS_SSSE3}, {"AVX2", ZX_TARGETS_AVX2},
    {"AVX3", ZX_TARGETS_AVX3}, {"NEON", ZX_TARGETS_NEON},
};

// The targets in force that have kernels.
std::int64_t KernelTargets() {
  return hwy::SupportedTargets() & HWY_TARGETS & ~static_cast<std::int64_t>(ZX_TARGETS_PORTABLE);
}

} // namespace

const TSpanKernels* GetSpanKernels() {
  const TSpanKernels* kernels = s_Kernels.load(std::memory_order_acquire);
  if (kernels == nullptr && !s_Reference.load(std::memory_order_relaxed)) {
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    kernels = KernelTargets() != 0 ? HWY_DYNAMIC_DISPATCH(Kernels)() : nullptr;
    s_Reference.store(kernels == nullptr, std::memory_order_relaxed);
    s_Kernels.store(kernels, std::memory_order_release);
  }
  return kernels;
}

bool LimitSpanLevel(const char* name) {
  std::int64_t targets = 0;
  bool reference = false;
  if (name != nullptr) {
    reference = std::strcmp(name, "reference") == 0;
    hwy::SetSupportedTargetsForTest(0);
    for (const TLevel& level : kLevels) {
      if (std::strcmp(name, level.Name) == 0) {
        targets = KernelTargets() & level.Targets;
      }
    }
    if (!reference && targets == 0) {
      return false;
    }
  }
  hwy::SetSupportedTargetsForTest(targets);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  s_Reference.store(reference);
  s_Kernels.store(nullptr);
  return true;
}

const char* GetSpanLevel() {
  const TSpanKernels* const kernels = GetSpanKernels();
  return kernels == nullptr ? "reference" : kernels->Level;
}

} // namespace Zx3D

#endif // HWY_ONCE
