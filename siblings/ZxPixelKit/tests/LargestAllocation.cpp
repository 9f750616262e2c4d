#include "LargestAllocation.h"

#include <algorithm>
#include <atomic>

#if defined(__SANITIZE_ADDRESS__)
// The compiler does not always come with the header that declares it.
extern "C" int __sanitizer_install_malloc_and_free_hooks(void (*onMalloc)(const volatile void*,
                                                                          std::size_t),
                                                         void (*onFree)(const volatile void*));
#endif

namespace {

std::atomic<bool> s_Watching{false};
std::atomic<std::size_t> s_Largest{0};

void Note(std::size_t size) {
  if (s_Watching && size > s_Largest) {
    s_Largest = size;
  }
}

} // namespace

#if defined(__SANITIZE_ADDRESS__)

namespace {

void OnMalloc(const volatile void*, std::size_t size) { Note(size); }
void OnFree(const volatile void*) {}

const int s_Installed = __sanitizer_install_malloc_and_free_hooks(OnMalloc, OnFree);

} // namespace

#else

extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);

void* malloc(std::size_t size) {
  Note(size);
  return __libc_malloc(size);
}

void* calloc(std::size_t count, std::size_t size) {
  Note(count * size);
  return __libc_calloc(count, size);
}

void* realloc(void* block, std::size_t size) {
  Note(size);
  return __libc_realloc(block, size);
}
}

#endif

TLargestAllocation::TLargestAllocation() {
  s_Largest = 0;
  s_Watching = true;
}

TLargestAllocation::~TLargestAllocation() { s_Watching = false; }

std::size_t TLargestAllocation::Get() const { return s_Largest; }
