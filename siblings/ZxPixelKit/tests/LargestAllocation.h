#pragma once

#include <cstddef>

#include "object/FailingMalloc.h"

/// Watches the allocations of the whole process under the address sanitizer, of this thread
/// without it; one watch at a time.
class TLargestAllocation {
public:
  TLargestAllocation();
  ~TLargestAllocation();
  TLargestAllocation(const TLargestAllocation&) = delete;
  TLargestAllocation& operator=(const TLargestAllocation&) = delete;

  /// The largest single block asked for since the watch began.
  std::size_t Get() const;

private:
  zx_test::TMallocWatch m_Watch;
};
