#pragma once

/// Calls of the system that go wrong when a test says so: the program's own `open` and `close`,
/// which the libraries call too.

namespace zx_test {

/// While it lives, the next `count` calls of `open` fail with this error and open nothing.
class TFailingOpen {
public:
  TFailingOpen(int count, int error);
  ~TFailingOpen();
  TFailingOpen(const TFailingOpen&) = delete;
  TFailingOpen& operator=(const TFailingOpen&) = delete;

  /// Calls that are still to fail.
  int Left() const;
};

/// While it lives, each `close` closes and then says this error.
class TFailingClose {
public:
  explicit TFailingClose(int error);
  ~TFailingClose();
  TFailingClose(const TFailingClose&) = delete;
  TFailingClose& operator=(const TFailingClose&) = delete;

  /// Calls that have failed.
  int Failed() const;
};

} // namespace zx_test
