#pragma once

#include <cstddef>

/// Watches the allocations of the whole process; one watch at a time, on one thread.
class TLargestAllocation {
public:
  TLargestAllocation();
  ~TLargestAllocation();

  /// The largest single block asked for since the watch began.
  std::size_t Get() const;
};
