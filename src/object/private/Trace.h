#pragma once

namespace Zx3D {

/// Hands "@file: line: function" to the trace channel. Never throws, so that the exception that is
/// on its way out goes on unchanged.
void TraceAt(const char* file, int line, const char* function) noexcept;

/// Runs `guarded`; an exception of any type that leaves it is traced and goes on.
template <class F> auto Traced(const char* file, int line, const char* function, const F& guarded) {
  try {
    return guarded();
  } catch (...) {
    TraceAt(file, line, function);
    throw;
  }
}

} // namespace Zx3D
