#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include <sys/types.h>

/// A child process that reports through a pipe.
struct TChild {
  pid_t Process = -1;
  int Pipe = -1; ///< the end to read from; non-blocking
};

/// Runs `work` in a child with at most `memory` bytes of address space, 0 for no limit. `work` gets
/// the end of a pipe to write to and a file descriptor of the standard output; what importers print
/// in the child is dropped. The child dies with its parent. False with `*error`
/// as the reason if there can't be another process.
bool StartChild(std::uint64_t memory, const std::function<void(int pipe, int standardOutput)>& work,
                TChild* out, std::string* error);

/// Waits for a child to end. Returns "" if it exited with status 0, else how it ended.
std::string EndOfChild(const TChild& child);
