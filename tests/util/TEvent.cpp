#include <ZxCore3D/util/TEvent.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace {

using namespace std::chrono_literals;
using TClock = std::chrono::steady_clock;

static_assert(std::is_same_v<TEvent, Zx3D::TEvent>);
static_assert(!std::is_copy_constructible_v<TEvent> && !std::is_copy_assignable_v<TEvent>);

TEST(TEvent, BeginsAsTold) {
  TEvent event(true);
  event.Wait();
  EXPECT_FALSE(event.Wait(10)) << "the first wait took the signal";
  TEvent clear(false);
  EXPECT_FALSE(clear.Wait(0));
}

TEST(TEvent, SeveralSetsCountAsOne) {
  TEvent event(false);
  event.Set();
  event.Set();
  EXPECT_TRUE(event.Wait(0));
  EXPECT_FALSE(event.Wait(0));
}

TEST(TEvent, ResetTakesTheSignalBack) {
  TEvent event(true);
  event.Reset();
  EXPECT_FALSE(event.Wait(0));
  event.Reset();
  EXPECT_FALSE(event.Wait(0));
  event.Set();
  EXPECT_TRUE(event.Wait(0));
}

TEST(TEvent, ATimedWaitLastsItsTime) {
  TEvent event(false);
  const auto start = TClock::now();
  EXPECT_FALSE(event.Wait(30));
  EXPECT_GE(TClock::now() - start, 29ms);
  event.Set();
  const auto again = TClock::now();
  EXPECT_TRUE(event.Wait(4294967295U)) << "at once, whatever the time";
  EXPECT_LT(TClock::now() - again, 10s);
}

TEST(TEvent, WakesAWaiter) {
  for (const bool timed : {false, true}) {
    TEvent event(false);
    std::atomic<bool> through{false};
    std::thread waiter([&] {
      if (timed) {
        through = event.Wait(60000);
      } else {
        event.Wait();
        through = true;
      }
    });
    std::this_thread::sleep_for(5ms);
    EXPECT_FALSE(through);
    event.Set();
    waiter.join();
    EXPECT_TRUE(through);
    EXPECT_FALSE(event.Wait(0)) << "the waiter took the signal";
  }
}

TEST(TEvent, OneSetLetsOneWaiterThrough) {
  constexpr int count = 4;
  TEvent event(false);
  std::atomic<int> through{0};
  std::vector<std::thread> waiters;
  for (int i = 0; i < count; ++i) {
    waiters.emplace_back([&] {
      event.Wait();
      ++through;
    });
  }
  for (int i = 1; i <= count; ++i) {
    event.Set();
    while (through < i) {
      std::this_thread::sleep_for(1ms);
    }
    std::this_thread::sleep_for(5ms);
    EXPECT_EQ(through, i);
  }
  for (std::thread& waiter : waiters) {
    waiter.join();
  }
  EXPECT_FALSE(event.Wait(0));
}

// The record's fields, to wake a waiter without a signal.
struct TFields {
  bool Signalled;
  std::mutex Mutex;
  std::condition_variable Condition;
};
static_assert(sizeof(TFields) == sizeof(TEvent));

// Twenty wake-ups without a signal, 25 ms apart, keep a wait of 400 ms alive until 400 ms behind
// the last.
TEST(TEvent, AWakeUpWithoutASignalRestartsTheFullTime) {
  TEvent event(false);
  bool result = true;
  TClock::duration lasted{};
  std::thread waiter([&] {
    const auto start = TClock::now();
    result = event.Wait(400);
    lasted = TClock::now() - start;
  });
  for (int i = 0; i < 20; ++i) {
    std::this_thread::sleep_for(25ms);
    reinterpret_cast<TFields*>(&event)->Condition.notify_one();
  }
  waiter.join();
  EXPECT_FALSE(result);
  EXPECT_GE(lasted, 850ms);
}

} // namespace
