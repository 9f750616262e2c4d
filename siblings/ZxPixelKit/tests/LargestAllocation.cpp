#include "LargestAllocation.h"

#if defined(__SANITIZE_ADDRESS__)

#include <atomic>

// The compiler does not always come with the header that declares it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*,
                                                                          std::size_t),
                                                         void (*onFree)(const volatile void*));

namespace {

std::atomic<bool> s_Watching{false};
std::atomic<std::size_t> s_Largest{0};

void OnMalloc(const volatile void*, std::size_t size) {
  if (s_Watching && size > s_Largest) {
    s_Largest = size;
  }
}
void OnFree(const volatile void*) {}

const int s_Installed = __sanitizer_install_malloc_and_free_hooks(OnMalloc, OnFree);

} // namespace

TLargestAllocation::TLargestAllocation() {
  s_Largest = 0;
  s_Watching = true;
}

TLargestAllocation::~TLargestAllocation() { s_Watching = false; }

std::size_t TLargestAllocation::Get() const { return s_Largest; }

#else

TLargestAllocation::TLargestAllocation() = default;

TLargestAllocation::~TLargestAllocation() = default;

std::size_t TLargestAllocation::Get() const { return m_Watch.Largest(); }

#endif
