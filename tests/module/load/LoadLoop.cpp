// Loads and unloads the library again and again, from several threads at once, as a host does that
// has it behind a plugin: LoadLoop LIBRARY ROUNDS. This program is not linked with it. What is
// unloaded takes its memory along, and nothing is left that a later round could trip over.
//
// It ends with 0 when every round could use the library and memory stays flat.

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <thread>
#include <vector>

#include <dlfcn.h>
#include <malloc.h>

namespace {

std::mutex s_LifeCycle; // the calls that a host is to serialise
std::atomic<int> s_Failures{0};

void Fail(const char* what) {
  const char* const why = dlerror();
  std::fprintf(stderr, "%s: %s\n", what, why != nullptr ? why : "no reason");
  ++s_Failures;
}

void Rounds(const char* library, int rounds) {
  for (int i = 0; i < rounds; ++i) {
    void* const handle = dlopen(library, (i % 2 == 0 ? RTLD_NOW : RTLD_LAZY) | RTLD_LOCAL);
    if (handle == nullptr) {
      Fail("dlopen");
      return;
    }
    using TCall = void (*)();
    using TCreator = const void* (*)(const char*);
    const auto init = reinterpret_cast<TCall>(dlsym(handle, "_Z13Init_ZxCore3Dv"));
    const auto deinit = reinterpret_cast<TCall>(dlsym(handle, "_Z15Deinit_ZxCore3Dv"));
    const auto find =
        reinterpret_cast<TCreator>(dlsym(handle, "_ZN4Zx3D21GetCreatorByClassNameEPKc"));
    if (init == nullptr || deinit == nullptr || find == nullptr) {
      Fail("dlsym");
      return;
    }
    {
      const std::lock_guard<std::mutex> lock(s_LifeCycle);
      init();
      if (find("nobody") != nullptr) {
        Fail("a creator that nobody registered");
      }
      deinit();
    }
    if (dlclose(handle) != 0) {
      Fail("dlclose");
    }
  }
}

void RunThreads(const char* library, int rounds) {
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back(Rounds, library, rounds);
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

} // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "LoadLoop LIBRARY ROUNDS\n");
    return 2;
  }
  const int rounds = std::atoi(argv[2]);
  Rounds(argv[1], 3);
  RunThreads(argv[1], 3);
  const std::size_t before = mallinfo2().uordblks;
  Rounds(argv[1], rounds);
  RunThreads(argv[1], rounds);
  const std::size_t after = mallinfo2().uordblks;
  std::printf("%d rounds in one thread and in four, %zu bytes before, %zu after\n", rounds, before,
              after);
  // The loader keeps some bytes for threads that come and go; each round must not.
  if (after > before + 64 * 1024) {
    std::fprintf(stderr, "memory grows\n");
    ++s_Failures;
  }
  return s_Failures == 0 ? 0 : 1;
}
