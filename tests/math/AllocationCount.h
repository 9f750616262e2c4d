#pragma once

#include <cstddef>

/// How many blocks this program has taken by operator new so far.
std::size_t AllocationCount();

/// The bytes that were last asked of operator new, by this thread or another.
std::size_t LastAllocationSize();

/// Makes operator new throw from now on for blocks of at least `bytes`; 0 takes the limit away.
void SetAllocationLimit(std::size_t bytes);
