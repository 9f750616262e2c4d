#pragma once

#include <atomic>
#include <cstdint>

#include <ZxBaseKit/Export.h>

namespace boost::uuids {
struct uuid;
}

namespace zx {

/// Base of all counted objects. An object starts with a count of 1, which belongs to whoever made
/// it; `Release` deletes the object when the count goes from 1 to 0. The count is atomic, so that
/// holders on different threads can let go independently.
class ZX_BASEKIT_API TRef {
public:
  TRef() noexcept : m_RefCount(1) {}

  /// A copy is an object of its own: its count starts at 1.
  TRef(const TRef&) noexcept : m_RefCount(1) {}
  TRef& operator=(const TRef&) noexcept { return *this; }

  virtual ~TRef();

  /// Adds one reference; returns the new count.
  virtual unsigned int AddRef();

  /// Drops one reference and deletes the object with the last; returns the new count.
  virtual unsigned int Release();

  /// Asks for an interface by its identifier. This base knows none: `*out` becomes null if `out` is
  /// not null, and the result is false. A class that answers returns true and hands out a pointer
  /// with one reference added.
  virtual bool QueryInterface(const boost::uuids::uuid& id, void** out);

  /// The present count: for tests and diagnostics, since it may change at any time.
  unsigned int GetRefCount() const noexcept { return m_RefCount.load(std::memory_order_acquire); }

private:
  std::atomic<std::uint32_t> m_RefCount;
};

} // namespace zx
