#pragma once

#include <cstdint>

#include <ZxCore3D/types/Export.h>

/// A stopwatch on `std::chrono::system_clock`. Time points and spans are 64-bit numbers of
/// nanoseconds; the clock is the wall clock, so a span can be negative when it was set back. Each
/// operation that needs the time reads the clock once. One thread at a time.
class ZX_CORE3D_API TPerformCounter {
public:
  /// Nanoseconds since the clock's epoch.
  using TimePoint = std::int64_t;

  /// The process-wide time base: ticks per second, and when it was last started. Both are 0 until
  /// `Initialize`, which the library's own start calls.
  static std::int64_t s_tFreq;
  static TimePoint s_tStart;

  /// Starts the time base: a frequency of 1000000000, the start now.
  static void Initialize();
  /// Nothing is to be undone.
  static void Finalize();

  /// Seconds of `t` nanoseconds, without a look at `s_tFreq`.
  static double ToSec(unsigned long t);
  /// The clock's present time.
  static TimePoint Now();
  /// `s_tStart` minus now: the time since `Initialize`, with a negative sign.
  static std::int64_t Count();
  /// `b` minus `a`.
  static std::int64_t Elapsed(TimePoint a, TimePoint b);

  /// Starts now.
  TPerformCounter();
  /// Returns what `Elapsed` would, and starts anew at that same moment.
  std::int64_t Restart();
  /// Now minus start.
  std::int64_t Elapsed() const;

private:
  TimePoint m_Start;
};

/// A stopwatch that sums up stretches and can be started in nested spans, of which the outermost
/// counts. Clock and units as for `TPerformCounter`. One thread at a time.
class ZX_CORE3D_API TPerformCounterEx {
public:
  /// Nothing accumulated; running if `run`.
  explicit TPerformCounterEx(bool run);

  /// Opens a span. Only where none is open, the sum is dropped and a stretch begins now.
  void Start();
  /// Opens a span. Only where none is open, a stretch begins now; the sum stays.
  void Continue();
  /// Closes a span; with the last one the stretch is added to the sum. Calls must match `Start` and
  /// `Continue`: closing what is not open wraps the number of open spans.
  void Stop();
  /// Stops and drops the sum.
  void Reset();
  /// Returns what `Elapsed` would, and runs anew from that same moment with an empty sum; as many
  /// spans stay open as were, but at least one.
  std::uint64_t Restart();
  /// The sum, with the running stretch up to now. A stopped counter does not read the clock.
  std::uint64_t Elapsed() const;

private:
  std::uint64_t _ElapsedAt(TPerformCounter::TimePoint now) const;

  TPerformCounter::TimePoint m_Start;
  std::uint64_t m_Accumulated;
  std::uint64_t m_Depth;
};

namespace Zx3D {
using ::TPerformCounter;
using ::TPerformCounterEx;
} // namespace Zx3D
