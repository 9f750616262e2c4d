#pragma once

#include <cstddef>

// The test program's own malloc family, which operator new uses too: it counts what this thread
// allocates while a guard lives, and can let one allocation fail. Not available under the address
// sanitizer and under valgrind, which have malloc to themselves; kAvailable tells.

namespace zx_test {

extern const bool kAvailable;

/// Counts from its construction to its destruction. One at a time in a thread.
class TMallocWatch {
public:
  /// With `failAt` the allocation of that number, counted from 1, fails, and no other does.
  explicit TMallocWatch(unsigned long failAt = 0);
  ~TMallocWatch();
  TMallocWatch(const TMallocWatch&) = delete;
  TMallocWatch& operator=(const TMallocWatch&) = delete;

  /// Allocations asked for, reallocations included.
  unsigned long Allocations() const;
  /// Reallocations of a block, counted in `Allocations` as well.
  unsigned long Reallocations() const;
  /// Blocks allocated less blocks freed.
  long LiveBlocks() const;
  /// Bytes of blocks allocated less those of blocks freed: now, and the most there were.
  long LiveBytes() const;
  long PeakBytes() const;
  /// The largest single block that was asked for.
  std::size_t Largest() const;
  /// Whether the allocation that was to fail came.
  bool Failed() const;
};

} // namespace zx_test
