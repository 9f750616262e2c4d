#include "math/AllocationCount.h"

#include <atomic>
#include <cstdlib>
#include <new>

static std::atomic<std::size_t> s_Count{0};
static std::atomic<std::size_t> s_Size{0};
static std::atomic<std::size_t> s_Limit{0};

std::size_t AllocationCount() { return s_Count; }

std::size_t LastAllocationSize() { return s_Size; }

void SetAllocationLimit(std::size_t bytes) { s_Limit = bytes; }

void* operator new(std::size_t size) {
  ++s_Count;
  s_Size = size;
  if (s_Limit != 0 && size >= s_Limit) {
    throw std::bad_alloc();
  }
  if (void* memory = std::malloc(size != 0 ? size : 1)) {
    return memory;
  }
  throw std::bad_alloc();
}

// Spelled out, since a sanitizer's own forms would not come by the one above.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new[](std::size_t size, const std::nothrow_t& none) noexcept {
  return operator new(size, none);
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
