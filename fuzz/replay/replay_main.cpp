// Runs a fuzz target over the files of a directory: replay_<name> <directory>.
// Exit code 1 when there is none, so that an empty corpus is no success.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

bool Replay(const std::filesystem::path& path) {
  const auto size = static_cast<std::size_t>(std::filesystem::file_size(path));
  // A block of just the size, so that a sanitizer sees reads past the end.
  const std::unique_ptr<std::uint8_t[]> bytes(new std::uint8_t[size]);
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(bytes.get()), static_cast<std::streamsize>(size));
  if (!file) {
    std::fprintf(stderr, "%s: can't be read\n", path.c_str());
    return false;
  }
  LLVMFuzzerTestOneInput(bytes.get(), size);
  return true;
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s <directory>\n", argv[0]);
    return 2;
  }
  std::error_code error;
  std::vector<std::filesystem::path> paths;
  for (std::filesystem::directory_iterator it(argv[1], error), end; !error && it != end;
       it.increment(error)) {
    if (it->is_regular_file()) {
      paths.push_back(it->path());
    }
  }
  std::sort(paths.begin(), paths.end());
  for (const std::filesystem::path& path : paths) {
    std::printf("%s\n", path.filename().c_str());
    std::fflush(stdout);
    if (!Replay(path)) {
      return 1;
    }
  }
  std::printf("%zu files replayed\n", paths.size());
  return paths.empty() ? 1 : 0;
}
