#include <ZxCore3D/util/TPerformCounter.h>

#include <chrono>
#include <thread>
#include <type_traits>

#include <gtest/gtest.h>

namespace {

constexpr std::int64_t kMs = 1000000;

void Sleep(int ms) { std::this_thread::sleep_for(std::chrono::milliseconds(ms)); }

std::int64_t SystemNow() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

static_assert(std::is_same_v<TPerformCounter, Zx3D::TPerformCounter>);
static_assert(std::is_same_v<TPerformCounterEx, Zx3D::TPerformCounterEx>);
static_assert(sizeof(TPerformCounter) == 8 && sizeof(TPerformCounterEx) == 24);

TEST(TPerformCounter, SecondsAreNanosecondsTimesABillionth) {
  EXPECT_EQ(TPerformCounter::ToSec(1000000000), 1.0);
  EXPECT_EQ(TPerformCounter::ToSec(0), 0.0);
  EXPECT_EQ(TPerformCounter::ToSec(3), 3.0 * 1e-9);
  EXPECT_EQ(TPerformCounter::ToSec(~0UL), 18446744073709551616.0 * 1e-9) << "unsigned";
  const std::int64_t frequency = TPerformCounter::s_tFreq;
  TPerformCounter::s_tFreq = 5;
  EXPECT_EQ(TPerformCounter::ToSec(1000000000), 1.0) << "the frequency is not read";
  TPerformCounter::s_tFreq = frequency;
}

TEST(TPerformCounter, NowIsTheSystemClock) {
  const std::int64_t before = SystemNow();
  const std::int64_t now = TPerformCounter::Now();
  const std::int64_t after = SystemNow();
  EXPECT_LE(before, now);
  EXPECT_LE(now, after);
}

TEST(TPerformCounter, CountHasANegativeSign) {
  const std::int64_t before = SystemNow();
  TPerformCounter::Initialize();
  const std::int64_t after = SystemNow();
  EXPECT_EQ(TPerformCounter::s_tFreq, 1000000000);
  EXPECT_LE(before, TPerformCounter::s_tStart);
  EXPECT_LE(TPerformCounter::s_tStart, after);
  Sleep(2);
  const std::int64_t count = TPerformCounter::Count();
  EXPECT_LE(count, -2 * kMs);
  EXPECT_GE(count, before - SystemNow());
  const std::int64_t start = TPerformCounter::s_tStart;
  TPerformCounter::Finalize();
  EXPECT_EQ(TPerformCounter::s_tStart, start);
  EXPECT_EQ(TPerformCounter::s_tFreq, 1000000000);
}

TEST(TPerformCounter, ElapsedOfTwoPointsIsTheirDifference) {
  EXPECT_EQ(TPerformCounter::Elapsed(5, 12), 7);
  EXPECT_EQ(TPerformCounter::Elapsed(12, 5), -7);
}

TEST(TPerformCounter, RunsFromItsConstructionOrRestart) {
  const std::int64_t before = SystemNow();
  TPerformCounter counter;
  Sleep(3);
  const std::int64_t first = counter.Elapsed();
  EXPECT_GE(first, 3 * kMs);
  const std::int64_t restarted = counter.Restart();
  EXPECT_GE(restarted, first);
  const std::int64_t second = counter.Elapsed();
  EXPECT_GE(second, 0);
  // No time is lost or counted twice between Restart's result and the new start.
  EXPECT_LE(restarted + second, SystemNow() - before);
  EXPECT_LT(second, restarted + (SystemNow() - before));
}

TEST(TPerformCounterEx, StartsAsTold) {
  TPerformCounterEx stopped(false);
  Sleep(1);
  EXPECT_EQ(stopped.Elapsed(), 0U);
  TPerformCounterEx running(true);
  Sleep(2);
  EXPECT_GE(running.Elapsed(), 2U * kMs);
  running.Stop();
  const std::uint64_t sum = running.Elapsed();
  EXPECT_GE(sum, 2U * kMs);
  Sleep(1);
  EXPECT_EQ(running.Elapsed(), sum) << "depth was 1";
}

TEST(TPerformCounterEx, NestedSpansCountOnce) {
  const std::int64_t before = SystemNow();
  TPerformCounterEx counter(false);
  counter.Start();
  Sleep(2);
  counter.Start();
  Sleep(2);
  counter.Stop();
  const std::uint64_t inner = counter.Elapsed();
  EXPECT_GE(inner, 4U * kMs) << "the second Start dropped nothing";
  Sleep(2);
  EXPECT_GE(counter.Elapsed(), inner + 2U * kMs) << "still running";
  counter.Stop();
  const std::uint64_t sum = counter.Elapsed();
  EXPECT_GE(sum, 6U * kMs);
  EXPECT_LE(sum, static_cast<std::uint64_t>(SystemNow() - before));
  Sleep(1);
  EXPECT_EQ(counter.Elapsed(), sum);
}

TEST(TPerformCounterEx, StartDropsTheSumAndContinueKeepsIt) {
  TPerformCounterEx counter(true);
  Sleep(20);
  counter.Stop();
  const std::uint64_t first = counter.Elapsed();
  EXPECT_GE(first, 20U * kMs);
  counter.Continue();
  Sleep(2);
  counter.Continue();
  counter.Stop();
  EXPECT_GE(counter.Elapsed(), first + 2U * kMs) << "running";
  counter.Stop();
  const std::uint64_t second = counter.Elapsed();
  EXPECT_GE(second, first + 2U * kMs);
  const std::int64_t before = SystemNow();
  counter.Start();
  counter.Stop();
  EXPECT_LE(counter.Elapsed(), static_cast<std::uint64_t>(SystemNow() - before));
}

TEST(TPerformCounterEx, ResetStopsAtZero) {
  TPerformCounterEx counter(true);
  counter.Start();
  Sleep(1);
  counter.Reset();
  EXPECT_EQ(counter.Elapsed(), 0U);
  Sleep(1);
  EXPECT_EQ(counter.Elapsed(), 0U);
  counter.Start();
  counter.Stop();
  const std::uint64_t sum = counter.Elapsed();
  Sleep(1);
  EXPECT_EQ(counter.Elapsed(), sum) << "one Stop is enough: the depth was dropped too";
}

TEST(TPerformCounterEx, RestartOfAStoppedCounterRuns) {
  TPerformCounterEx counter(true);
  Sleep(2);
  counter.Stop();
  const std::uint64_t sum = counter.Elapsed();
  Sleep(1);
  const std::int64_t before = SystemNow();
  EXPECT_EQ(counter.Restart(), sum);
  Sleep(1);
  const std::uint64_t running = counter.Elapsed();
  EXPECT_GE(running, 1U * kMs);
  EXPECT_LE(running, static_cast<std::uint64_t>(SystemNow() - before)) << "the sum was dropped";
  counter.Stop();
  const std::uint64_t stopped = counter.Elapsed();
  Sleep(1);
  EXPECT_EQ(counter.Elapsed(), stopped) << "the depth was 1";
}

TEST(TPerformCounterEx, RestartOfARunningCounterKeepsItsDepth) {
  TPerformCounterEx counter(true);
  counter.Continue();
  Sleep(2);
  EXPECT_GE(counter.Restart(), 2U * kMs);
  counter.Stop();
  Sleep(1);
  const std::uint64_t running = counter.Elapsed();
  EXPECT_GE(running, 1U * kMs) << "one of two spans is still open";
  counter.Stop();
  const std::uint64_t sum = counter.Elapsed();
  Sleep(1);
  EXPECT_EQ(counter.Elapsed(), sum);
}

// Without a guard the number of open spans wraps, and one Start then closes the round.
TEST(TPerformCounterEx, StopOfAStoppedCounterWraps) {
  TPerformCounterEx counter(false);
  counter.Stop();
  EXPECT_NE(counter.Elapsed(), 0U) << "counts as running, from the epoch";
  counter.Continue();
  EXPECT_EQ(counter.Elapsed(), 0U) << "back at no open span";
}

} // namespace
