#include <ZxBaseKit/TZxXIniWriter.h>

#include <algorithm>
#include <string>

#include <gtest/gtest.h>

#include "object/FailingMalloc.h"

// What writing takes while it works, besides the result: what the docstring says, and no more.

namespace {

constexpr long kSmall = 1 << 14; // what the allocator rounds blocks up by, and the formatter itself

// The buffer doubles as it grows, so that texts of all lengths from one doubling to the next count.
TEST(TZxXIniWriterPeakMemory, OfATextIsUpToThatTwiceBesides) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const std::string value(1000, 'v');
  double least = 3;
  double most = 0;
  for (int count = 1000; count <= 2000; count += 50) {
    TZxXIniWriter writer;
    for (int i = 0; i < count; ++i) {
      ASSERT_TRUE(writer.WriteS("key" + std::to_string(i), &value));
    }
    const zx_test::TMallocWatch watch;
    const std::string text = writer.GetText();
    const long peak = watch.PeakBytes();
    const auto size = static_cast<long>(text.size());
    ASSERT_GE(size, count * 1000L);
    EXPECT_LE(peak, 3 * size + kSmall) << count;
    least = std::min(least, static_cast<double>(peak) / static_cast<double>(size));
    most = std::max(most, static_cast<double>(peak) / static_cast<double>(size));
  }
  // The text itself and its copy at the least; and nearly as much as is stated at some length.
  EXPECT_GE(least, 2);
  EXPECT_GT(most, 2.75);
}

} // namespace
