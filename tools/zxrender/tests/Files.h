#pragma once

#include <filesystem>
#include <fstream>
#include <string>

#include <unistd.h>

/// A directory of its own for one test, removed at its end.
class TDirectory {
public:
  TDirectory() {
    static int s_Count = 0;
    m_Path = std::filesystem::temp_directory_path() /
             ("zxrender_" + std::to_string(getpid()) + "_" + std::to_string(s_Count++));
    std::filesystem::create_directories(m_Path);
  }
  ~TDirectory() { std::filesystem::remove_all(m_Path); }

  std::string operator/(const std::string& name) const { return (m_Path / name).string(); }

  std::string Write(const std::string& name, const std::string& text) const {
    std::ofstream(*this / name, std::ios::binary) << text;
    return *this / name;
  }

private:
  std::filesystem::path m_Path;
};

/// A square from (-1, -1) to (1, 1) in the plane z = 0 that faces +z, with texture coordinates from
/// (0, 0) at its lower left to (1, 1).
inline std::string SquareObj(const std::string& head = "") {
  return head + "v -1 -1 0\nv 1 -1 0\nv 1 1 0\nv -1 1 0\n"
                "vt 0 0\nvt 1 0\nvt 1 1\nvt 0 1\nvn 0 0 1\n"
                "f 1/1/1 2/2/1 3/3/1 4/4/1\n";
}
