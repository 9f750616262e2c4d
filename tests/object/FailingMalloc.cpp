#include "object/FailingMalloc.h"

#include <cerrno>
#include <cstdlib>
#include <malloc.h>

namespace {

struct TWatch {
  bool Running;
  bool Failed;
  unsigned long FailAt;
  unsigned long Allocations;
  unsigned long Reallocations;
  long Blocks;
  long Bytes;
  long Peak;
  std::size_t Largest;
};

thread_local TWatch s_Watch;

} // namespace

namespace zx_test {

TMallocWatch::TMallocWatch(unsigned long failAt) {
  s_Watch = TWatch{};
  s_Watch.FailAt = failAt;
  s_Watch.Running = true;
}

TMallocWatch::~TMallocWatch() { s_Watch.Running = false; }

unsigned long TMallocWatch::Allocations() const { return s_Watch.Allocations; }
unsigned long TMallocWatch::Reallocations() const { return s_Watch.Reallocations; }
long TMallocWatch::LiveBlocks() const { return s_Watch.Blocks; }
long TMallocWatch::LiveBytes() const { return s_Watch.Bytes; }
long TMallocWatch::PeakBytes() const { return s_Watch.Peak; }
std::size_t TMallocWatch::Largest() const { return s_Watch.Largest; }
bool TMallocWatch::Failed() const { return s_Watch.Failed; }

// Asked of the functions themselves, since a tool may have put its own in their place. Through a
// pointer that the compiler can't see through, or it would leave the two calls out.
static bool IsCounted() {
  void* (*volatile const allocate)(std::size_t) = std::malloc;
  const TMallocWatch watch;
  std::free(allocate(1));
  return watch.Allocations() != 0;
}

const bool kAvailable = IsCounted();

} // namespace zx_test

#ifndef __SANITIZE_ADDRESS__

extern "C" {

void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);

} // extern "C"

namespace {

// Whether the allocation of `size` bytes that is asked for now may go ahead.
bool Admit(std::size_t size) {
  if (!s_Watch.Running) {
    return true;
  }
  ++s_Watch.Allocations;
  s_Watch.Largest = size > s_Watch.Largest ? size : s_Watch.Largest;
  if (s_Watch.Allocations != s_Watch.FailAt) {
    return true;
  }
  s_Watch.Failed = true;
  errno = ENOMEM;
  return false;
}

void* Count(void* block) {
  if (s_Watch.Running && block != nullptr) {
    ++s_Watch.Blocks;
    s_Watch.Bytes += static_cast<long>(malloc_usable_size(block));
    s_Watch.Peak = s_Watch.Bytes > s_Watch.Peak ? s_Watch.Bytes : s_Watch.Peak;
  }
  return block;
}

void Uncount(void* block) {
  if (s_Watch.Running && block != nullptr) {
    --s_Watch.Blocks;
    s_Watch.Bytes -= static_cast<long>(malloc_usable_size(block));
  }
}

} // namespace

// The other libraries are to call these, whatever visibility the program is compiled with.
#pragma GCC visibility push(default)

extern "C" {

void* malloc(std::size_t size) { return Admit(size) ? Count(__libc_malloc(size)) : nullptr; }

void* calloc(std::size_t count, std::size_t size) {
  return Admit(count * size) ? Count(__libc_calloc(count, size)) : nullptr;
}

void* realloc(void* block, std::size_t size) {
  if (!Admit(size)) {
    return nullptr;
  }
  if (s_Watch.Running && block != nullptr) {
    ++s_Watch.Reallocations;
  }
  const std::size_t before = block != nullptr ? malloc_usable_size(block) : 0;
  void* const moved = __libc_realloc(block, size);
  if (moved != nullptr && s_Watch.Running) {
    s_Watch.Blocks -= block != nullptr ? 1 : 0;
    s_Watch.Bytes -= static_cast<long>(before);
    Count(moved);
  }
  return moved;
}

// What operator new with an alignment calls, one or the other by the version of the library.
void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return Admit(size) ? Count(__libc_memalign(alignment, size)) : nullptr;
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  void* const made = aligned_alloc(alignment, size);
  if (made == nullptr) {
    return ENOMEM;
  }
  *block = made;
  return 0;
}

void free(void* block) {
  Uncount(block);
  __libc_free(block);
}

} // extern "C"

#pragma GCC visibility pop

#endif
