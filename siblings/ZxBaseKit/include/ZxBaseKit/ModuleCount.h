#pragma once

#include <atomic>

namespace zx {

/// How many users have a library open. Constant-initialised and lock-free, so that it can be a
/// static member of any library of the family.
class TModuleCount {
public:
  /// Adds one user; returns the new count.
  unsigned long Open() noexcept { return ++m_Count; }

  /// Takes one user away; stays at 0 when there is none. Returns the new count.
  unsigned long Close() noexcept {
    unsigned long seen = m_Count.load();
    while (seen != 0 && !m_Count.compare_exchange_weak(seen, seen - 1)) {
    }
    return seen == 0 ? 0 : seen - 1;
  }

  /// The present number of users.
  unsigned long Count() const noexcept { return m_Count.load(); }

private:
  std::atomic<unsigned long> m_Count{0};
};

} // namespace zx
