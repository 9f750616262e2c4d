#include "Batch.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <utility>

#include <QtCore/QJsonDocument>
#include <QtCore/QString>

#include <poll.h>
#include <unistd.h>

namespace {

std::size_t _CountPictures(const std::vector<TTask>& tasks) {
  std::size_t count = 0;
  for (const TTask& task : tasks) {
    count += static_cast<std::size_t>(task.EndFrame - task.FirstFrame);
  }
  return count;
}

std::string _Text(const QJsonObject& object, const char* name) {
  return object[QLatin1String(name)].toString().toStdString();
}

// In the largest unit that divides it.
std::string _SizeText(std::uint64_t bytes) {
  static constexpr const char* kUnits[] = {" bytes", " KiB", " MiB", " GiB", " TiB"};
  std::size_t unit = 0;
  for (; unit + 1 < std::size(kUnits) && bytes > 0 && bytes % 1024 == 0; ++unit) {
    bytes /= 1024;
  }
  return std::to_string(bytes) + kUnits[unit];
}

} // namespace

TBatch::TBatch(const TCall& call, const std::vector<TTask>& tasks, int jobs)
    : m_Call(call), m_Options(call.Options), m_Tasks(tasks),
      m_Jobs(static_cast<std::size_t>(std::max(jobs, 1))), m_Texts(_CountPictures(tasks)),
      m_Progress(static_cast<int>(m_Texts.size())) {}

void TBatch::_Complain(const std::string& text) {
  m_Progress.Clear();
  std::fprintf(stderr, "zxrender: %s\n", text.c_str());
}

// Prints in the order of the pictures, whichever is finished first.
void TBatch::_Print(const TTask& task, int frame, std::string text) {
  const std::size_t index = task.FirstNumber - m_Tasks.front().FirstNumber +
                            static_cast<std::size_t>(frame - task.FirstFrame);
  m_Texts[index] = std::move(text);
  if (m_Printed < m_Texts.size() && m_Texts[m_Printed] && !m_Texts[m_Printed]->empty()) {
    m_Progress.Clear();
  }
  for (; m_Printed < m_Texts.size() && m_Texts[m_Printed]; ++m_Printed) {
    std::fputs(m_Texts[m_Printed]->c_str(), stdout);
    m_Texts[m_Printed]->clear();
  }
  std::fflush(stdout);
  ++m_Done;
  m_Progress.Show(static_cast<int>(m_Done));
}

std::string TBatch::_TextOf(const QJsonObject& record) const {
  if (m_Options.Json) {
    return QJsonDocument(record).toJson(QJsonDocument::Compact).toStdString() + "\n";
  }
  std::string text;
  if (m_Options.Digest && record.contains("digest")) {
    text += _Text(record, "digest") + "  " + _Text(record, "picture") + "\n";
  }
  if (record.contains("check")) {
    const QJsonObject check = record["check"].toObject();
    text += _Text(check, "picture") + ": ";
    if (check["same"].toBool()) {
      text += "same\n";
    } else if (check.contains("reason")) {
      text += _Text(check, "reason") + "\n";
    } else {
      text += std::to_string(check["differing"].toVariant().toLongLong()) + " of " +
              std::to_string(static_cast<long long>(record["width"].toInt()) *
                             record["height"].toInt()) +
              " pixels differ, by " + std::to_string(check["greatest"].toInt()) +
              " of 255 at most\n";
    }
  }
  return text;
}

void TBatch::_TakePicture(TRunning* running, const QJsonObject& event) {
  const QJsonObject record = event["record"].toObject();
  const int frame = event["frame"].toInt();
  m_AnyDifferent = m_AnyDifferent || _Text(record, "status") == "different";
  if (m_Options.Stats) {
    TStats& stats = m_Stats[running->Task->Model];
    const QJsonObject seconds = record["seconds"].toObject();
    if (stats.Pictures++ == 0) {
      stats.First = record;
    }
    stats.Covered += record["covered"].toVariant().toLongLong();
    stats.Load += frame == running->Task->FirstFrame ? seconds["load"].toDouble() : 0;
    stats.Draw += seconds["draw"].toDouble();
    stats.Save += seconds["save"].toDouble();
  }
  running->Next = frame + 1;
  _Print(*running->Task, frame, _TextOf(record));
}

// Reports a failure and gives up the remaining pictures of a task.
void TBatch::_Fail(TRunning* running, const std::string& status, const std::string& blamed,
                   const std::string& reason) {
  m_AnyFailed = true;
  running->Failed = true;
  // All tasks of a model fail alike.
  std::string& last = m_Complaints[running->Task->Model];
  if (const std::string text = blamed + ": " + reason; text != last) {
    _Complain(text);
    last = text;
  }
  for (; running->Next < running->Task->EndFrame; ++running->Next) {
    std::string text;
    if (m_Options.Json) {
      QJsonObject record = {
          {"file", QString::fromStdString(m_Options.Models[running->Task->Model])},
          {"status", QString::fromStdString(status)},
          {"reason", QString::fromStdString(reason)},
          {"number", static_cast<qint64>(running->Task->FirstNumber) + running->Next -
                         running->Task->FirstFrame}};
      if (m_Options.Frames > 0) {
        record["frame"] = running->Next;
      }
      text = QJsonDocument(record).toJson(QJsonDocument::Compact).toStdString() + "\n";
    }
    _Print(*running->Task, running->Next, text);
  }
}

void TBatch::_TakeLine(TRunning* running, const std::string& line) {
  const QJsonObject event =
      QJsonDocument::fromJson(QByteArray(line.data(), static_cast<int>(line.size()))).object();
  const std::string name = _Text(event, "event");
  const std::string& file = m_Options.Models[running->Task->Model];
  if (name == "picture") {
    _TakePicture(running, event);
  } else if (name == "warning") {
    // All tasks of a model have the same warnings.
    if (running->Task->FirstFrame == 0 || running->Task == &m_Tasks.front()) {
      _Complain(file + ": warning: " + _Text(event, "text"));
      m_Progress.Show(static_cast<int>(m_Done));
    }
  } else if (name == "failed") {
    std::string reason = _Text(event, "reason");
    if (_Text(event, "status") == "memory" && m_Options.Memory > 0) {
      reason += " (" + _SizeText(m_Options.Memory) + ")";
    }
    _Fail(running, _Text(event, "status"), _Text(event, "blamed"), reason);
  }
}

// False at the end of the child's report.
bool TBatch::_Read(TRunning* running) {
  char part[1 << 16];
  for (;;) {
    const ssize_t count = read(running->Child.Pipe, part, sizeof part);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0 && errno == EAGAIN) {
      return true;
    }
    if (count <= 0) {
      return false;
    }
    running->Text.append(part, static_cast<std::size_t>(count));
    std::size_t begin = 0;
    for (std::size_t end; (end = running->Text.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
      _TakeLine(running, running->Text.substr(begin, end - begin));
    }
    running->Text.erase(0, begin);
  }
}

void TBatch::_End(TRunning* running) {
  const std::string how = EndOfChild(running->Child);
  close(running->Child.Pipe);
  if (running->Next < running->Task->EndFrame && !running->Failed) {
    // It may have been writing a picture.
    const TPictureNames names = NamesOf(m_Call, *running->Task, running->Next);
    const auto remove = [](const std::string& name, TImageKind kind) {
      if (!name.empty() && name != "-") {
        unlink(PartName(name, kind).c_str());
      }
    };
    remove(names.Output, OutputKind(m_Options));
    for (const std::string* name : {&names.Depth, &names.Normals, &names.Ids, &names.Difference}) {
      remove(*name, KindOfName(*name));
    }
    const std::string& file = m_Options.Models[running->Task->Model];
    if (running->TimedOut) {
      _Fail(running, "timeout", file, "given up: it takes longer than --timeout allows");
    } else {
      _Fail(running, "crashed", file,
            "the process that read it " + (how.empty() ? "ended early" : how));
    }
  }
}

void TBatch::_Start() {
  while (m_Running.size() < m_Jobs && m_NextTask < m_Tasks.size()) {
    TRunning running;
    running.Task = &m_Tasks[m_NextTask++];
    running.Next = running.Task->FirstFrame;
    const int frames = running.Task->EndFrame - running.Task->FirstFrame;
    const double seconds = m_Options.Timeout < 0 ? kDefaultTimeout * frames : m_Options.Timeout;
    running.Deadline = seconds > 0 ? TClock::now() + std::chrono::duration_cast<TClock::duration>(
                                                         std::chrono::duration<double>(seconds))
                                   : TClock::time_point::max();
    std::string error;
    const auto work = [&](int pipe, int standardOutput) {
      RunTask(m_Call, *running.Task, pipe, standardOutput);
    };
    if (!StartChild(m_Options.Memory, work, &running.Child, &error)) {
      _Fail(&running, "crashed", m_Options.Models[running.Task->Model],
            "no process can be started: " + error);
      continue;
    }
    m_Running.push_back(std::move(running));
  }
}

// Milliseconds until the next deadline; -1 for none.
int TBatch::_WaitTime() const {
  TClock::time_point next = TClock::time_point::max();
  for (const TRunning& running : m_Running) {
    next = std::min(next, running.TimedOut ? next : running.Deadline);
  }
  if (next == TClock::time_point::max()) {
    return -1;
  }
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - TClock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 0, 1000000));
}

void TBatch::_Poll() {
  std::vector<pollfd> files;
  for (const TRunning& running : m_Running) {
    files.push_back({running.Child.Pipe, POLLIN, 0});
  }
  poll(files.data(), files.size(), _WaitTime());
  const TClock::time_point now = TClock::now();
  for (std::size_t i = files.size(); i-- > 0;) {
    TRunning& running = m_Running[i];
    if (files[i].revents != 0 && !_Read(&running)) {
      _End(&running);
      m_Running.erase(m_Running.begin() + static_cast<std::ptrdiff_t>(i));
    } else if (now >= running.Deadline && !running.TimedOut) {
      running.TimedOut = true;
      kill(running.Child.Process, SIGKILL); // its pipe closes by that
    }
  }
}

void TBatch::_PrintStats() const {
  for (const auto& [model, stats] : m_Stats) {
    const auto count = [&first = stats.First](const char* name) {
      return first[QLatin1String(name)].toVariant().toLongLong();
    };
    if (m_Options.Models.size() > 1) {
      std::printf("model      %s\n", m_Options.Models[model].c_str());
    }
    std::printf("triangles  %lld\n", count("triangles"));
    for (const char* name : {"lines", "points"}) {
      if (count(name) > 0) {
        std::printf("%-10s %lld\n", name, count(name));
      }
    }
    std::printf("vertices   %lld\n", count("vertices"));
    std::printf("textures   %lld\n", count("textures"));
    std::printf("pixels     %lld covered of %lld\n", static_cast<long long>(stats.Covered),
                count("width") * count("height") * stats.Pictures);
    if (stats.First.contains("depthStep")) {
      std::printf("depth step %g\n", stats.First["depthStep"].toDouble());
    }
    std::printf("load       %.3f s\n", stats.Load);
    std::printf("draw       %.3f s in %d picture%s\n", stats.Draw, stats.Pictures,
                stats.Pictures == 1 ? "" : "s");
    std::printf("save       %.3f s\n", stats.Save);
  }
}

int TBatch::Run() {
  for (_Start(); !m_Running.empty(); _Start()) {
    _Poll();
  }
  m_Progress.Clear();
  _PrintStats();
  return m_AnyFailed ? 1 : m_AnyDifferent ? 3 : 0;
}
