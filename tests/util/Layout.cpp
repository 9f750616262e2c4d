// The fields of the timing classes, in order: callers hold these objects themselves.

#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/util/TEvent.h>
#include <ZxCore3D/util/TPerformCounter.h>
#include <ZxCore3D/util/TTimeReporter.h>

namespace {

template <class T, class TObject> T ValueAt(const TObject& object, std::size_t offset) {
  T value;
  std::memcpy(&value, reinterpret_cast<const char*>(&object) + offset, sizeof(value));
  return value;
}

template <class T, class TObject> const T& ObjectAt(const TObject& object, std::size_t offset) {
  return *reinterpret_cast<const T*>(reinterpret_cast<const char*>(&object) + offset);
}

TEST(Layout, ACounterIsItsStart) {
  EXPECT_EQ(sizeof(TPerformCounter), 8u);
  const TPerformCounter::TimePoint before = TPerformCounter::Now();
  const TPerformCounter counter;
  const auto start = ValueAt<std::int64_t>(counter, 0);
  EXPECT_LE(before, start);
  EXPECT_LE(start, TPerformCounter::Now());
}

TEST(Layout, AnAddingCountersFields) {
  struct TFields {
    std::int64_t Start;
    std::uint64_t Accumulated;
    std::uint64_t Depth;
  };
  ASSERT_EQ(sizeof(TPerformCounterEx), sizeof(TFields));
  TPerformCounterEx counter(true);
  const std::int64_t now = TPerformCounter::Now();
  counter.Start();
  TFields fields = ValueAt<TFields>(counter, 0);
  EXPECT_LE(fields.Start, now);
  EXPECT_GT(fields.Start, now - std::int64_t(60) * 1000000000);
  EXPECT_EQ(fields.Accumulated, 0u);
  EXPECT_EQ(fields.Depth, 2u);
  counter.Stop();
  while (TPerformCounter::Now() == now) {
  }
  counter.Stop();
  fields = ValueAt<TFields>(counter, 0);
  EXPECT_EQ(fields.Depth, 0u);
  EXPECT_GT(fields.Accumulated, 0u);
  EXPECT_EQ(fields.Accumulated, counter.Elapsed());
}

TEST(Layout, AReportersFields) {
  using TItems = std::vector<TTimeReporter::TItem>;
  constexpr std::size_t fullTime = sizeof(TItems);
  constexpr std::size_t fullName = fullTime + sizeof(double);
  ASSERT_EQ(sizeof(TTimeReporter), fullName + sizeof(std::string));
  TTimeReporter reporter;
  EXPECT_TRUE(ObjectAt<TItems>(reporter, 0).empty());
  EXPECT_EQ(ValueAt<double>(reporter, fullTime), 0.0);
  EXPECT_EQ(ObjectAt<std::string>(reporter, fullName), "");
  reporter.AddTime("first", 1.5);
  reporter.AddTime("second", 2.5);
  ASSERT_TRUE(reporter.SetFullTime("all", 4.0));
  ASSERT_EQ(ObjectAt<TItems>(reporter, 0).size(), 2u);
  EXPECT_EQ(ObjectAt<TItems>(reporter, 0)[0].Name, "first");
  EXPECT_EQ(ObjectAt<TItems>(reporter, 0)[1].Time, 2.5);
  EXPECT_EQ(ValueAt<double>(reporter, fullTime), 4.0);
  EXPECT_EQ(ObjectAt<std::string>(reporter, fullName), "all");

  EXPECT_EQ(sizeof(TTimeReporter::TItem), sizeof(double) + sizeof(std::string));
  const TTimeReporter::TItem item = {3.0, "item"};
  EXPECT_EQ(ValueAt<double>(item, 0), 3.0);
  EXPECT_EQ(ObjectAt<std::string>(item, sizeof(double)), "item");
}

TEST(Layout, AnEventsFields) {
  struct TFields {
    bool Signalled;
    std::mutex Mutex;
    std::condition_variable Condition;
  };
  EXPECT_EQ(sizeof(TEvent), sizeof(TFields));
  EXPECT_EQ(ValueAt<unsigned char>(TEvent(true), 0), 1);
  EXPECT_EQ(ValueAt<unsigned char>(TEvent(false), 0), 0);
}

} // namespace
