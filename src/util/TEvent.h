#pragma once

#include <condition_variable>
#include <mutex>

#include <ZxCore3D/types/Export.h>

/// A signal between threads that resets itself: one `Set` lets exactly one waiter through. A `Set`
/// with nobody waiting stays pending, and several of them count as one. All operations may be
/// called from any thread; they let through the `std::system_error` of a failing lock.
class ZX_CORE3D_API TEvent {
public:
  /// Signalled from the start, or not.
  explicit TEvent(bool signalled);

  /// Signals, and wakes one waiter.
  void Set();
  /// Takes a pending signal back.
  void Reset();
  /// Blocks until the event is signalled, and takes the signal.
  void Wait();
  /// Takes a pending signal at once and returns true; otherwise waits up to `ms` milliseconds by
  /// the system clock. False when a wait ran that long: a signal of that last moment stays pending.
  /// A wake-up without a signal starts the full time again.
  bool Wait(unsigned int ms);

private:
  bool m_Signalled;
  std::mutex m_Mutex;
  std::condition_variable m_Condition;
};

namespace Zx3D {
using ::TEvent;
} // namespace Zx3D
