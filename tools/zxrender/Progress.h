#pragma once

#include <chrono>

/// A line on standard error that says how far a long work is and how long it will take; nothing
/// when that is no terminal.
class TProgress {
public:
  explicit TProgress(int steps);
  ~TProgress();
  TProgress(const TProgress&) = delete;
  TProgress& operator=(const TProgress&) = delete;

  /// Says that `done` steps are done.
  void Show(int done);

  /// Takes the line away, so that other text can be printed.
  void Clear();

private:
  int m_Steps;
  bool m_Active;
  bool m_Shown = false;
  std::chrono::steady_clock::time_point m_Begin;
};
