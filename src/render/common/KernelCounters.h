#pragma once

#include <atomic>
#include <cinttypes>
#include <cstdint>
#include <cstdio>

#include <ZxCore3D/render/common/KernelConditions.h>

namespace Zx3D {

/// What pixels are drawn by: the reference path, or a kernel of the map in docs/architecture.md.
enum class TKernel : std::uint8_t {
  Reference,  ///< the reference walker, and a caller's shader pixel by pixel
  ShortRows,  ///< in double
  JoinedRows, ///< short rows with a texture, several to a group
  Fill,
  Rejection,   ///< runs that fail the depth test as a whole
  FloatRuns,   ///< runs without a texture, t and colours in float
  TextureRuns, ///< runs of byte texels, colours in float
  ExactRuns,   ///< all other runs
  LineRuns,
  ScatteredPixels, ///< of all other lines
  ShadedRows,      ///< by a caller's shader, a row at once
  PixelRows,       ///< of bytes that a caller handed over, blended or masked
};

inline constexpr const char* kKernelNames[] = {
    "Reference", "ShortRows",       "JoinedRows",  "Fill",
    "Rejection", "FloatRuns",       "TextureRuns", "ExactRuns",
    "LineRuns",  "ScatteredPixels", "ShadedRows",  "PixelRows",
};

inline constexpr int kKernels = static_cast<int>(TKernel::PixelRows) + 1;
static_assert(sizeof kKernelNames / sizeof *kKernelNames == kKernels);

struct TConditionName {
  const char* Path;
  const char* Condition;
  const char* Why;
};

inline constexpr TConditionName kConditionNames[] = {
#define ZX_NAME(path, name, test, why) {#path, #name, why},
    ZX_CONDITIONS(ZX_NAME)
#undef ZX_NAME
};

/// How many primitives, rows and pixels each kernel drew, and how often each condition was the
/// first of its list that did not hold; of the tests of values, in how many pixels. Pixels are
/// those covered, whatever the tests of the draw make of them; a primitive or row that several
/// kernels share counts once for each of them.
class TKernelCounters {
public:
  struct TCounts {
    std::uint64_t Primitives = 0;
    std::uint64_t Rows = 0;
    std::uint64_t Pixels = 0;
  };

  void StartPrimitive() {
    m_InPrimitive = 0;
    m_InRow = 0;
  }
  void StartRow() { m_InRow = 0; }
  /// Pixels of the row at hand.
  void Add(TKernel kernel, int pixels) {
    TCounts& counts = m_Kernels[static_cast<int>(kernel)];
    const std::uint32_t bit = 1u << static_cast<int>(kernel);
    counts.Primitives += (m_InPrimitive & bit) == 0 ? 1 : 0;
    counts.Rows += (m_InRow & bit) == 0 ? 1 : 0;
    counts.Pixels += static_cast<std::uint64_t>(pixels);
    m_InPrimitive |= bit;
    m_InRow |= bit;
  }
  void AddUnmet(TCondition condition, int times = 1) {
    m_Unmet[static_cast<int>(condition)] += static_cast<std::uint64_t>(times);
  }

  const TCounts& Of(TKernel kernel) const { return m_Kernels[static_cast<int>(kernel)]; }
  std::uint64_t Unmet(TCondition condition) const { return m_Unmet[static_cast<int>(condition)]; }

private:
  TCounts m_Kernels[kKernels] = {};
  std::uint64_t m_Unmet[kConditions] = {};
  std::uint32_t m_InPrimitive = 0; ///< bits of the kernels that drew of it
  std::uint32_t m_InRow = 0;
};

/// \name For tests and benchmarks that link the renderer's objects. One thread may draw meanwhile.
/// \{

/// Starts counting from zero.
void StartKernelCounters();
/// Stops counting. What was counted stays until the next start.
void StopKernelCounters();
/// What was counted since the last start.
TKernelCounters KernelCounters();
/// Writes lines "kernel NAME primitives rows pixels" and "fallback TEST pixels", of the tests of
/// values, without those that are 0.
inline void PrintKernelCounters(const TKernelCounters& counters, std::FILE* out) {
  for (int i = 0; i < kKernels; ++i) {
    const TKernelCounters::TCounts& counts = counters.Of(static_cast<TKernel>(i));
    if (counts.Primitives != 0) {
      std::fprintf(out, "kernel %s %" PRIu64 " %" PRIu64 " %" PRIu64 "\n", kKernelNames[i],
                   counts.Primitives, counts.Rows, counts.Pixels);
    }
  }
  for (int i = kFirstValueTest; i < kConditions; ++i) {
    if (const std::uint64_t pixels = counters.Unmet(static_cast<TCondition>(i)); pixels != 0) {
      std::fprintf(out, "fallback %s %" PRIu64 "\n", kConditionNames[i].Condition, pixels);
    }
  }
}

/// Writes lines "unmet PATH.CONDITION times", of all other conditions.
inline void PrintUnmetConditions(const TKernelCounters& counters, std::FILE* out) {
  for (int i = 0; i < kFirstValueTest; ++i) {
    if (const std::uint64_t times = counters.Unmet(static_cast<TCondition>(i)); times != 0) {
      std::fprintf(out, "unmet %s.%s %" PRIu64 "\n", kConditionNames[i].Path,
                   kConditionNames[i].Condition, times);
    }
  }
}
/// \}

/// Whether all conditions of a list hold, `unmet` being the first that does not, which is counted.
inline bool Meets(TKernelCounters* counters, TCondition unmet, int times = 1) {
  if (unmet == TCondition::None) {
    return true;
  }
  if (counters != nullptr) {
    counters->AddUnmet(unmet, times);
  }
  return false;
}

/// What counts at present; null while nobody asked for it.
extern std::atomic<TKernelCounters*> g_ActiveKernelCounters;

inline TKernelCounters* ActiveKernelCounters() {
  return g_ActiveKernelCounters.load(std::memory_order_relaxed);
}

} // namespace Zx3D
