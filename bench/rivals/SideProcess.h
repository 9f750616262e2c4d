#pragma once

#include <string>
#include <utility>

#include <sys/types.h>

namespace rivals {

/// A side's program, run beside this one and asked through pipes; Side.h says what.
class TSideProcess {
public:
  explicit TSideProcess(std::string program) : m_Program(std::move(program)) {}
  TSideProcess(const TSideProcess&) = delete;
  TSideProcess& operator=(const TSideProcess&) = delete;
  ~TSideProcess() { Stop(); }

  /// Sends a request and reads the first line of its answer, which has to begin with `expected`.
  /// Starts the program if it doesn't run. False, with `Problem` saying what happened, if the
  /// program ended, was silent for `kPatience` seconds, or answered something else; it is then
  /// stopped unless it said itself what was wrong.
  bool Ask(const std::string& request, const char* expected, std::string* answer);

  /// Reads one more line of an answer; as `Ask`.
  bool ReadLine(std::string* line);

  const std::string& Problem() const { return m_Problem; }
  const std::string& Program() const { return m_Program; }

  static constexpr int kPatience = 60;

private:
  bool Start();
  void Stop();
  bool Fail(const std::string& problem);
  bool FailEnded();

  std::string m_Program;
  std::string m_Problem;
  std::string m_Unread; ///< of the answers
  pid_t m_Id = -1;
  int m_Requests = -1;
  int m_Answers = -1;
};

/// What `program` prints when run with `argument`; false, with `problem`, unless it ends with 0.
bool ReadOutput(const std::string& program, const char* argument, std::string* output,
                std::string* problem);

} // namespace rivals
