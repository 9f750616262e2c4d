#include <ZxCore3D/render/common/KernelCounters.h>

#include <atomic>

namespace Zx3D {

namespace {

constinit TKernelCounters s_Counters;
constinit std::atomic<TKernelCounters*> s_Active{nullptr};

} // namespace

void StartKernelCounters() {
  s_Counters = {};
  s_Active.store(&s_Counters);
}

void StopKernelCounters() { s_Active.store(nullptr); }

TKernelCounters KernelCounters() { return s_Counters; }

TKernelCounters* ActiveKernelCounters() { return s_Active.load(std::memory_order_relaxed); }

} // namespace Zx3D
