#include "Process.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

// The shadow memory of the address sanitizer is larger than any limit, and what it finds is to be
// seen.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kIsSanitized = true;
#else
constexpr bool kIsSanitized = false;
#endif

void _Limit(std::uint64_t memory) {
  const rlimit none = {0, 0};
  setrlimit(RLIMIT_CORE, &none); // a crash is reported, and leaves nothing behind
  if (memory > 0 && !kIsSanitized) {
    rlimit limit = {};
    getrlimit(RLIMIT_AS, &limit);
    limit.rlim_cur =
        limit.rlim_max == RLIM_INFINITY || memory < limit.rlim_max ? memory : limit.rlim_max;
    setrlimit(RLIMIT_AS, &limit);
  }
}

[[noreturn]] void _Work(pid_t parent, std::uint64_t memory, int pipe,
                        const std::function<void(int, int)>& work) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(1); // it ended before
  }
  std::signal(SIGPIPE, SIG_IGN);
  const int standardOutput = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  if (const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC); nowhere >= 0) {
    dup2(nowhere, STDOUT_FILENO);
    if (!kIsSanitized) {
      dup2(nowhere, STDERR_FILENO);
    }
    close(nowhere);
  }
  _Limit(memory);
  work(pipe, standardOutput);
  _exit(0);
}

} // namespace

bool StartChild(std::uint64_t memory, const std::function<void(int pipe, int standardOutput)>& work,
                TChild* out, std::string* error) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    *error = std::strerror(errno);
    return false;
  }
  std::fflush(nullptr); // or both would print what waits
  const pid_t parent = getpid();
  const pid_t process = fork();
  if (process == 0) {
    close(ends[0]);
    _Work(parent, memory, ends[1], work);
  }
  const int reason = errno;
  close(ends[1]);
  if (process < 0) {
    close(ends[0]);
    *error = std::strerror(reason);
    return false;
  }
  fcntl(ends[0], F_SETFL, O_NONBLOCK);
  *out = {process, ends[0]};
  return true;
}

std::string EndOfChild(const TChild& child) {
  int status = 0;
  while (waitpid(child.Process, &status, 0) < 0 && errno == EINTR) {
  }
  if (WIFSIGNALED(status)) {
    return std::string("ended by ") + strsignal(WTERMSIG(status));
  }
  return WEXITSTATUS(status) == 0 ? "" : "ended with status " + std::to_string(WEXITSTATUS(status));
}
