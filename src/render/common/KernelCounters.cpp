#include <ZxCore3D/render/common/KernelCounters.h>

namespace Zx3D {

constinit std::atomic<TKernelCounters*> g_ActiveKernelCounters{nullptr};

static constinit TKernelCounters s_Counters;

void StartKernelCounters() {
  s_Counters = {};
  g_ActiveKernelCounters.store(&s_Counters);
}

void StopKernelCounters() { g_ActiveKernelCounters.store(nullptr); }

TKernelCounters KernelCounters() { return s_Counters; }

} // namespace Zx3D
