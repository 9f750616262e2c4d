#pragma once

#include <cstdio>
#include <string>

#include <sys/wait.h>

/// What a command line of the shell printed and how it ended.
struct TResult {
  int Code = -1;
  std::string Text; ///< both outputs
};

inline TResult RunShell(const std::string& command) {
  TResult result;
  // In a shell of its own, so that all parts of a pipe are meant.
  std::FILE* pipe = popen(("{ " + command + "\n} 2>&1").c_str(), "r");
  if (pipe == nullptr) {
    return result;
  }
  char part[4096];
  for (std::size_t count; (count = std::fread(part, 1, sizeof part, pipe)) > 0;) {
    result.Text.append(part, count);
  }
  const int status = pclose(pipe);
  result.Code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

/// The program under test with these arguments.
inline TResult Render(const std::string& arguments) {
  return RunShell(ZX_RENDER_PROGRAM " " + arguments);
}

inline bool Contains(const TResult& result, const std::string& text) {
  return result.Text.find(text) != std::string::npos;
}
