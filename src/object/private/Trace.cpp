#include <ZxCore3D/object/private/Trace.h>

#include <ZxBaseKit/TZxMessage.h>

namespace Zx3D {

void TraceAt(const char* file, int line, const char* function) noexcept {
  try {
    ZxTraceException(TZxMessage("@%1%: %2%: %3%") << file << line << function);
  } catch (...) {
    // Without memory for the text there is no trace.
  }
}

} // namespace Zx3D
