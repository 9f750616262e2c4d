#include "SideProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace rivals {

namespace {

std::string EndOf(int status) {
  if (WIFSIGNALED(status)) {
    return std::string("was ended by signal ") + std::to_string(WTERMSIG(status)) + " (" +
           strsignal(WTERMSIG(status)) + ")";
  }
  if (WIFEXITED(status) && WEXITSTATUS(status) == 127) {
    return "cannot be run";
  }
  return "ended with code " + std::to_string(WEXITSTATUS(status));
}

// The program with its standard input and output as pipes; -1 if there is no process to be had. No
// other program gets these pipes: a side ends by itself once nobody can ask it any more.
pid_t Spawn(const std::string& program, const char* argument, int* requests, int* answers) {
  int in[2];
  int out[2];
  if (pipe2(in, O_CLOEXEC) != 0) {
    return -1;
  }
  if (pipe2(out, O_CLOEXEC) != 0) {
    close(in[0]);
    close(in[1]);
    return -1;
  }
  const pid_t id = fork();
  if (id == 0) {
    dup2(in[0], STDIN_FILENO);
    dup2(out[1], STDOUT_FILENO);
    execl(program.c_str(), program.c_str(), argument, static_cast<char*>(nullptr));
    _exit(127);
  }
  close(in[0]);
  close(out[1]);
  if (id < 0) {
    close(in[1]);
    close(out[0]);
    return -1;
  }
  *requests = in[1];
  *answers = out[0];
  return id;
}

} // namespace

bool TSideProcess::Start() {
  if (m_Id < 0) {
    m_Unread.clear();
    m_Id = Spawn(m_Program, nullptr, &m_Requests, &m_Answers);
  }
  return m_Id >= 0;
}

// Without further requests the program ends by itself; one that hangs does not.
void TSideProcess::Stop() {
  if (m_Id < 0) {
    return;
  }
  close(m_Requests);
  close(m_Answers);
  int status = 0;
  for (int i = 0; i < 200; ++i) {
    if (waitpid(m_Id, &status, WNOHANG) == m_Id) {
      m_Id = -1;
      return;
    }
    usleep(10000);
  }
  kill(m_Id, SIGKILL);
  waitpid(m_Id, &status, 0);
  m_Id = -1;
}

bool TSideProcess::Fail(const std::string& problem) {
  const std::size_t slash = m_Program.rfind('/');
  m_Problem = m_Program.substr(slash == std::string::npos ? 0 : slash + 1) + " " + problem;
  return false;
}

bool TSideProcess::FailEnded() {
  int status = 0;
  close(m_Requests);
  close(m_Answers);
  waitpid(m_Id, &status, 0);
  m_Id = -1;
  return Fail(EndOf(status));
}

bool TSideProcess::Ask(const std::string& request, const char* expected, std::string* answer) {
  if (!Start()) {
    return Fail("gets no process");
  }
  const std::string line = request + "\n";
  if (write(m_Requests, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
    return FailEnded();
  }
  if (!ReadLine(answer)) {
    return false;
  }
  if (answer->rfind(expected, 0) == 0) {
    return true;
  }
  if (answer->rfind("error ", 0) == 0) {
    return Fail("says: " + answer->substr(6));
  }
  Stop();
  return Fail("answers \"" + *answer + "\" to \"" + request + "\"");
}

bool TSideProcess::ReadLine(std::string* line) {
  for (;;) {
    const std::size_t end = m_Unread.find('\n');
    if (end != std::string::npos) {
      *line = m_Unread.substr(0, end);
      m_Unread.erase(0, end + 1);
      return true;
    }
    pollfd waiting = {m_Answers, POLLIN, 0};
    const int ready = poll(&waiting, 1, kPatience * 1000);
    if (ready < 0 && errno == EINTR) {
      continue;
    }
    if (ready == 0) {
      kill(m_Id, SIGKILL);
      FailEnded();
      return Fail("was silent for " + std::to_string(kPatience) + " s");
    }
    char buffer[4096];
    const ssize_t n = read(m_Answers, buffer, sizeof buffer);
    if (n <= 0) {
      return FailEnded();
    }
    m_Unread.append(buffer, static_cast<std::size_t>(n));
  }
}

bool ReadOutput(const std::string& program, const char* argument, std::string* output,
                std::string* problem) {
  int requests = -1;
  int answers = -1;
  const pid_t id = Spawn(program, argument, &requests, &answers);
  if (id < 0) {
    *problem = program + " gets no process";
    return false;
  }
  close(requests);
  char buffer[4096];
  for (ssize_t n; (n = read(answers, buffer, sizeof buffer)) > 0;) {
    output->append(buffer, static_cast<std::size_t>(n));
  }
  close(answers);
  int status = 0;
  waitpid(id, &status, 0);
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    *problem = program + " " + EndOf(status);
    return false;
  }
  return true;
}

} // namespace rivals
