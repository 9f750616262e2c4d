#pragma once

#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include <unistd.h>

namespace zx_test {

/// Puts the process into a locale whose decimal point is a comma, until its end. Where the system
/// has none it is compiled on the spot; IsSet is false where that can't be done either.
class TCommaLocale {
public:
  TCommaLocale() {
    if (!Enter()) {
      m_Directory =
          std::filesystem::temp_directory_path() / ("zx-comma-locale-" + std::to_string(getpid()));
      std::filesystem::create_directories(m_Directory);
      const std::string command = "localedef --no-archive -i de_DE -f UTF-8 '" +
                                  (m_Directory / "de_DE.UTF-8").string() + "' >/dev/null 2>&1";
      if (std::system(command.c_str()) == 0) {
        setenv("LOCPATH", m_Directory.c_str(), 1);
        Enter();
      }
    }
  }
  ~TCommaLocale() {
    std::setlocale(LC_ALL, "C");
    if (!m_Directory.empty()) {
      unsetenv("LOCPATH");
      std::error_code ignored;
      std::filesystem::remove_all(m_Directory, ignored);
    }
  }
  TCommaLocale(const TCommaLocale&) = delete;
  TCommaLocale& operator=(const TCommaLocale&) = delete;

  bool IsSet() const { return m_Set; }

private:
  bool Enter() {
    char text[8];
    m_Set = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr &&
            std::snprintf(text, sizeof text, "%.1f", 0.5) == 3 && text[1] == ',';
    return m_Set;
  }

  bool m_Set = false;
  std::filesystem::path m_Directory;
};

} // namespace zx_test
