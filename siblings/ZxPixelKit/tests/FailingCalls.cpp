#include "FailingCalls.h"

#include <cerrno>
#include <cstdarg>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

thread_local int s_OpenLeft = 0;
thread_local int s_OpenError = 0;
thread_local int s_CloseError = 0;
thread_local int s_CloseFailed = 0;

} // namespace

namespace zx_test {

TFailingOpen::TFailingOpen(int count, int error) {
  s_OpenLeft = count;
  s_OpenError = error;
}
TFailingOpen::~TFailingOpen() { s_OpenLeft = 0; }
int TFailingOpen::Left() const { return s_OpenLeft; }

TFailingClose::TFailingClose(int error) {
  s_CloseError = error;
  s_CloseFailed = 0;
}
TFailingClose::~TFailingClose() { s_CloseError = 0; }
int TFailingClose::Failed() const { return s_CloseFailed; }

} // namespace zx_test

extern "C" {

[[gnu::visibility("default")]] int open(const char* name, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  if (s_OpenLeft > 0) {
    --s_OpenLeft;
    errno = s_OpenError;
    return -1;
  }
  return static_cast<int>(syscall(SYS_openat, AT_FDCWD, name, flags, mode));
}

[[gnu::visibility("default")]] int close(int file) {
  const int result = static_cast<int>(syscall(SYS_close, file));
  if (s_CloseError != 0) {
    ++s_CloseFailed;
    errno = s_CloseError;
    return -1;
  }
  return result;
}

} // extern "C"
