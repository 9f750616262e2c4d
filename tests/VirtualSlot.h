#pragma once

#include <cstddef>
#include <cstring>

#include <gtest/gtest.h>

namespace zx_test {

/// The place of a virtual operation in its class's table, which begins with two destructors. The
/// Itanium C++ ABI keeps it in the pointer to the member, as the place in bytes plus 1 with the
/// base's offset beside it; ARM's variant keeps the plain place, beside twice the offset plus 1.
template <class TPointer> std::size_t SlotOf(TPointer pointer) {
  std::ptrdiff_t parts[2];
  static_assert(sizeof(pointer) == sizeof(parts));
  std::memcpy(parts, &pointer, sizeof(parts));
#ifdef __aarch64__
  EXPECT_EQ(1, parts[1]) << "not virtual, or in a second base";
#else
  EXPECT_EQ(1, parts[0] % 8) << "not virtual";
  EXPECT_EQ(0, parts[1]) << "in a second base";
#endif
  return static_cast<std::size_t>(parts[0]) / sizeof(void*);
}

} // namespace zx_test
