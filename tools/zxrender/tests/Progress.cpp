#include <string>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include "Files.h"
#include "Run.h"

namespace {

/// A terminal that nobody sits at. It keeps what is written to it until `Read`.
class TTerminal {
public:
  TTerminal() : m_Master(posix_openpt(O_RDWR | O_NOCTTY)) {
    if (m_Master < 0 || grantpt(m_Master) != 0 || unlockpt(m_Master) != 0) {
      return;
    }
    Name = ptsname(m_Master);
    m_Slave = open(Name.c_str(), O_RDWR | O_NOCTTY); // the text is lost with the last descriptor
    fcntl(m_Master, F_SETFL, O_NONBLOCK);
  }
  ~TTerminal() {
    close(m_Slave);
    close(m_Master);
  }
  TTerminal(const TTerminal&) = delete;
  TTerminal& operator=(const TTerminal&) = delete;

  bool IsOpen() const { return m_Slave >= 0; }
  std::string Read() const {
    std::string text;
    char part[1024];
    for (ssize_t count; (count = read(m_Master, part, sizeof part)) > 0;) {
      text.append(part, static_cast<std::size_t>(count));
    }
    return text;
  }

  std::string Name;

private:
  int m_Master;
  int m_Slave = -1;
};

TEST(Progress, IsShownOnATerminalAndTakenAway) {
  const TTerminal terminal;
  if (!terminal.IsOpen()) {
    GTEST_SKIP() << "this system gives out no terminal";
  }
  const TDirectory directory;
  const std::string model = directory.Write("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  const std::string arguments = "-s 20x20 -j 1 -o '" + (directory / "{n}.png") + "' " + model +
                                " " + model + " " + model + " " + model + " 2>" + terminal.Name;
  ASSERT_EQ(Render(arguments).Code, 0);
  const std::string text = terminal.Read();
  const std::string line = "\r[" + std::string(40, '.') + "] 0/4, --:-- left ";
  EXPECT_EQ(text.substr(0, line.size()), line);
  for (const int done : {1, 2, 3}) {
    const std::string part = "\r[" + std::string(10 * done, '#') +
                             std::string(40 - 10 * done, '.') + "] " + std::to_string(done) +
                             "/4, 0";
    EXPECT_NE(text.find(part), std::string::npos) << done;
  }
  // Nothing of it stays on the screen.
  const std::string end = "\r\033[K";
  ASSERT_GT(text.size(), end.size());
  EXPECT_EQ(text.substr(text.size() - end.size()), end);
}

TEST(Progress, OfOnePictureIsNone) {
  const TTerminal terminal;
  if (!terminal.IsOpen()) {
    GTEST_SKIP() << "this system gives out no terminal";
  }
  const TDirectory directory;
  const std::string model = directory.Write("m.obj", "v 0 0 0\nv 1 0 0\nv 0 1 0\nf 1 2 3\n");
  ASSERT_EQ(
      Render("-s 20x20 -o " + (directory / "p.png") + " " + model + " 2>" + terminal.Name).Code, 0);
  EXPECT_EQ(terminal.Read(), "");
}

} // namespace
