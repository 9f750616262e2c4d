#include "Progress.h"

#include <cstdio>
#include <string>

#include <unistd.h>

TProgress::TProgress(int steps)
    : m_Steps(steps), m_Active(steps > 1 && isatty(STDERR_FILENO) != 0),
      m_Begin(std::chrono::steady_clock::now()) {
  Show(0);
}

TProgress::~TProgress() { Clear(); }

void TProgress::Show(int done) {
  if (!m_Active) {
    return;
  }
  constexpr int kWidth = 40;
  const auto full = static_cast<std::size_t>(kWidth * static_cast<long>(done) / m_Steps);
  std::string left = "--:--";
  if (done > 0) {
    const double passed =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - m_Begin).count();
    const auto seconds = static_cast<long>(passed / done * (m_Steps - done) + 0.5);
    char text[32];
    std::snprintf(text, sizeof text, "%02ld:%02ld", seconds / 60, seconds % 60);
    left = text;
  }
  std::fprintf(stderr, "\r[%s%s] %d/%d, %s left ", std::string(full, '#').c_str(),
               std::string(kWidth - full, '.').c_str(), done, m_Steps, left.c_str());
  std::fflush(stderr);
  m_Shown = true;
}

void TProgress::Clear() {
  if (m_Shown) {
    std::fputs("\r\033[K", stderr);
    std::fflush(stderr);
    m_Shown = false;
  }
}
