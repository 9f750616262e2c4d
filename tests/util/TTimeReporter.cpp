#include <ZxCore3D/util/TTimeReporter.h>

#include <limits>
#include <new>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "CommaLocale.h"
#include "object/FailingMalloc.h"

namespace {

static_assert(std::is_same_v<TTimeReporter, Zx3D::TTimeReporter>);

TEST(TTimeReporter, IsEmptyWithNothingToTell) {
  TTimeReporter reporter;
  EXPECT_EQ(reporter.GetReport(), "");
}

TEST(TTimeReporter, ListsTimesWithoutATotal) {
  TTimeReporter reporter;
  reporter.AddTime("load", 0.5);
  EXPECT_EQ(reporter.GetReport(), "load 0.500000 s");
  reporter.AddTime("draw", 1.25);
  reporter.AddTime("", -1.0);
  EXPECT_EQ(reporter.GetReport(), "load 0.500000 s\ndraw 1.250000 s\n -1.000000 s");
}

TEST(TTimeReporter, TellsSharesOfATotal) {
  TTimeReporter reporter;
  EXPECT_TRUE(reporter.SetFullTime("all", 4.0));
  EXPECT_EQ(reporter.GetReport(), "all 4.000000 s");
  reporter.AddTime("load", 1.0);
  reporter.AddTime("draw", 2.5);
  EXPECT_EQ(reporter.GetReport(),
            "load 1.000000 s (25.000000%)\ndraw 2.500000 s (62.500000%)\nall 4.000000 s");
}

// 100 / 161 is rounded before the product, which then falls one unit in the last place, 2^-16,
// short of 10^11.
TEST(TTimeReporter, MultipliesByTheRoundedFactor) {
  TTimeReporter reporter;
  reporter.SetFullTime("t", 161.0);
  reporter.AddTime("x", 161e9);
  EXPECT_EQ(reporter.GetReport(), "x 161000000000.000000 s (99999999999.999985%)\nt 161.000000 s");
}

TEST(TTimeReporter, ANegativeTotalChangesNothing) {
  TTimeReporter reporter;
  EXPECT_TRUE(reporter.SetFullTime("old", 2.0));
  EXPECT_FALSE(reporter.SetFullTime("new", -0.5));
  EXPECT_EQ(reporter.GetReport(), "old 2.000000 s");
}

TEST(TTimeReporter, ANullNameKeepsTheOldOne) {
  TTimeReporter reporter;
  reporter.SetFullTime("old", 2.0);
  EXPECT_TRUE(reporter.SetFullTime(nullptr, 3.0));
  EXPECT_EQ(reporter.GetReport(), "old 3.000000 s");
}

TEST(TTimeReporter, ATotalOfZeroTurnsTheSharesOff) {
  TTimeReporter reporter;
  reporter.AddTime("a", 1.0);
  reporter.SetFullTime("all", 2.0);
  EXPECT_TRUE(reporter.SetFullTime("all", 0.0));
  EXPECT_EQ(reporter.GetReport(), "a 1.000000 s");
  EXPECT_TRUE(reporter.SetFullTime("all", -0.0));
  EXPECT_EQ(reporter.GetReport(), "a 1.000000 s");
}

TEST(TTimeReporter, ANaNIsATotal) {
  TTimeReporter reporter;
  EXPECT_TRUE(reporter.SetFullTime("all", std::numeric_limits<double>::quiet_NaN()));
  reporter.AddTime("a", 1.0);
  const std::string report = reporter.GetReport();
  EXPECT_TRUE(report == "a 1.000000 s (nan%)\nall nan s" ||
              report == "a 1.000000 s (-nan%)\nall nan s")
      << report;
}

TEST(TTimeReporter, ClearKeepsTheTotalsName) {
  TTimeReporter reporter;
  reporter.AddTime("a", 1.0);
  reporter.SetFullTime("all", 2.0);
  reporter.Clear();
  EXPECT_EQ(reporter.GetReport(), "");
  reporter.SetFullTime(nullptr, 1.0);
  EXPECT_EQ(reporter.GetReport(), "all 1.000000 s");
}

TEST(TTimeReporter, AppendsNothingWithoutAName) {
  TTimeReporter reporter;
  reporter.AddTime(nullptr, 1.0);
  EXPECT_EQ(reporter.GetReport(), "");
}

// Whatever allocation fails, nothing is lost and nothing is half done.
TEST(TTimeReporter, LetsExhaustedMemoryThrough) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the address sanitizer has the allocator";
  }
  const std::string longName(600, 'n');
  const std::string expected = "a short one 0.500000 s (25.000000%)\n" + longName +
                               " 0.250000 s (12.500000%)\n" + longName + " 2.000000 s";
  bool failed = true;
  unsigned long at = 0;
  while (failed) {
    ++at;
    ASSERT_LT(at, 100U);
    const zx_test::TMallocWatch watch(at);
    int reached = 0;
    try {
      TTimeReporter reporter;
      reporter.AddTime("a short one", 0.5);
      ++reached;
      reporter.AddTime(longName.c_str(), 0.25);
      ++reached;
      reporter.SetFullTime(longName.c_str(), 2.0);
      ++reached;
      const std::string report = reporter.GetReport();
      ++reached;
      EXPECT_TRUE(report == expected);
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(watch.Failed());
      EXPECT_LT(reached, 4);
    }
    EXPECT_EQ(watch.LiveBlocks(), 0) << at;
    failed = watch.Failed();
  }
  EXPECT_GT(at, 6U);
}

TEST(TTimeReporter, DoesNotFollowTheHostsLocale) {
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  TTimeReporter reporter;
  reporter.AddTime("a", 1.5);
  EXPECT_EQ(reporter.GetReport(), "a 1.500000 s");
}

} // namespace
