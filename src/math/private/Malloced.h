#pragma once

#include <cstdlib>
#include <memory>

namespace zx_math {

struct TFree {
  void operator()(void* p) const { std::free(p); }
};

/// An array from `malloc`, given back by `free`.
template <class T> using MALLOCED = std::unique_ptr<T[], TFree>;

/// rows * columns + extra values, not initialised; null where there is no memory or the count
/// doesn't fit.
template <class T>
MALLOCED<T> MallocArray(unsigned long rows, unsigned long columns, unsigned long extra = 0) {
  unsigned long count = 0;
  if (__builtin_mul_overflow(rows, columns, &count) ||
      __builtin_add_overflow(count, extra, &count) ||
      __builtin_mul_overflow(count, sizeof(T), &count)) {
    return nullptr;
  }
  return MALLOCED<T>(static_cast<T*>(std::malloc(count)));
}

} // namespace zx_math
