#pragma once

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <QtCore/QJsonObject>

#include "Job.h"
#include "Process.h"
#include "Progress.h"

/// Runs all tasks of a call, several at a time and each in a process of its own, and reports.
class TBatch {
public:
  TBatch(const TCall& call, const std::vector<TTask>& tasks, int jobs);
  TBatch(const TBatch&) = delete;
  TBatch& operator=(const TBatch&) = delete;

  /// The exit status: 0, 1 if a file failed, else 3 if a picture differs.
  int Run();

private:
  using TClock = std::chrono::steady_clock;

  struct TRunning {
    const TTask* Task = nullptr;
    TChild Child;
    std::string Text; ///< an incomplete line of the child's report
    int Next = 0;     ///< the frame being drawn
    bool Failed = false;
    bool TimedOut = false;
    TClock::time_point Deadline;
  };

  /// What --stats prints of a model.
  struct TStats {
    QJsonObject First; ///< the record of its first picture
    qint64 Covered = 0;
    int Pictures = 0;
    double Load = 0;
    double Draw = 0;
    double Save = 0;
  };

  void _Start();
  int _WaitTime() const;
  void _Poll();
  bool _Read(TRunning* running);
  void _TakeLine(TRunning* running, const std::string& line);
  void _TakePicture(TRunning* running, const QJsonObject& event);
  void _Fail(TRunning* running, const std::string& status, const std::string& blamed,
             const std::string& reason);
  void _End(TRunning* running);
  void _Print(const TTask& task, int frame, std::string text);
  void _Complain(const std::string& text);
  std::string _TextOf(const QJsonObject& record) const;
  void _PrintStats() const;

  const TCall& m_Call;
  const TOptions& m_Options;
  const std::vector<TTask>& m_Tasks;
  std::size_t m_Jobs;
  std::size_t m_NextTask = 0;
  std::deque<TRunning> m_Running;
  // Output for each picture, held back until that of all pictures before it has been printed.
  std::vector<std::optional<std::string>> m_Texts;
  std::size_t m_Printed = 0;
  std::size_t m_Done = 0;
  std::map<std::size_t, TStats> m_Stats;
  std::map<std::size_t, std::string> m_Complaints; ///< the last one of each model
  TProgress m_Progress;
  bool m_AnyFailed = false;
  bool m_AnyDifferent = false;
};
