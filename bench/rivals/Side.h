#pragma once

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <exception>
#include <memory>
#include <string>

#include "Scene.h"

/// What each side's program does.
///
/// `PROGRAM --list` prints a line for each variant: its family, its name, and `-`, or the unit that
/// is counted where there is nothing to compare with. Without arguments it answers these requests
/// on its standard input, a line each:
///
///     open FAMILY NAME   new context, first frame           ready ITEMS
///     turn SECONDS       draws frames as long as that       best NANOSECONDS FRAMES
///     close              one frame more, its counters,      kernel NAME TRIANGLES ROWS PIXELS
///                        which come before the picture's    fallback REASON PIXELS
///                        mean red, green, blue              mean R G B
///
/// What goes wrong is answered by `error TEXT`.
///
/// `THost` is a side: `TGl& Gl()`, `bool Create()`, `unsigned int Error()` (as of GetError),
/// `StartCounters()`, `PrintCounters()` and the static `List(TScene<TGl>&)`.
namespace rivals {

/// Seconds by one of the system's clocks.
inline double Now(clockid_t clock) {
  timespec time;
  clock_gettime(clock, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

template <class THost> class TSide {
public:
  using TGl = typename THost::TGl;

  void List() {
    THost host;
    TScene<TGl> scene(host.Gl());
    THost::List(scene);
    for (const TVariant& v : scene.Variants) {
      std::printf("%s %s %s\n", v.Family.c_str(), v.Name.c_str(), v.Unit.c_str());
    }
  }

  /// Whether the request was understood.
  bool Answer(const char* request) {
    char family[128];
    char name[128];
    double seconds = 0;
    if (std::sscanf(request, "open %127s %127s", family, name) == 2) {
      Open(family, name);
    } else if (m_Variant != nullptr && std::sscanf(request, "turn %lf", &seconds) == 1) {
      Turn(seconds);
    } else if (m_Variant != nullptr && std::strncmp(request, "close", 5) == 0) {
      Close();
    } else {
      return false;
    }
    return true;
  }

private:
  struct TOpen {
    THost Host;
    TScene<TGl> Scene{Host.Gl()};
  };

  void Open(const char* family, const char* name) {
    m_Variant = nullptr;
    m_Open.reset(); // one context at a time
    m_Open = std::make_unique<TOpen>();
    if (!m_Open->Host.Create()) {
      std::printf("error there is no context\n");
      return;
    }
    THost::List(m_Open->Scene);
    const auto& variants = m_Open->Scene.Variants;
    const auto found = std::find_if(variants.begin(), variants.end(), [&](const TVariant& v) {
      return v.Family == family && v.Name == name;
    });
    if (found == variants.end()) {
      std::printf("error there is no such variant\n");
      return;
    }
    m_Variant = &*found;
    m_Open->Scene.Start();
    m_Variant->SetUp();
    Frame();
    if (const unsigned int code = m_Open->Host.Error(); code != 0) {
      std::printf("error the first frame reports error 0x%x\n", code);
      m_Variant = nullptr;
      return;
    }
    std::printf("ready %.0f\n", m_Open->Scene.Items);
  }

  void Frame() {
    m_Variant->Frame();
    m_Open->Host.Gl().Finish();
  }

  // The first frame of a turn finds what the other side left of the caches: there are two at least.
  // Frames are timed by the processor time of all threads of the process, so that other work on
  // the core counts for neither side.
  void Turn(double seconds) {
    const double end = Now(CLOCK_MONOTONIC) + seconds;
    double best = 1e9;
    int frames = 0;
    do {
      const double start = Now(CLOCK_PROCESS_CPUTIME_ID);
      Frame();
      best = std::min(best, Now(CLOCK_PROCESS_CPUTIME_ID) - start);
      ++frames;
    } while (frames < 2 || Now(CLOCK_MONOTONIC) < end);
    std::printf("best %.0f %d\n", best * 1e9, frames);
  }

  void Close() {
    m_Open->Host.StartCounters();
    Frame();
    m_Open->Host.PrintCounters();
    std::vector<unsigned char> pixels(4 * kSize * kSize);
    m_Open->Host.Gl().ReadPixels(0, 0, kSize, kSize, GL_RGBA, GL_UNSIGNED_BYTE, pixels.data());
    double mean[3] = {};
    for (std::size_t i = 0; i < pixels.size(); ++i) {
      if (i % 4 < 3) {
        mean[i % 4] += pixels[i] / static_cast<double>(kSize * kSize);
      }
    }
    if (const unsigned int code = m_Open->Host.Error(); code != 0) {
      std::printf("error the frames report error 0x%x\n", code);
    } else {
      std::printf("mean %.3f %.3f %.3f\n", mean[0], mean[1], mean[2]);
    }
    m_Variant = nullptr;
  }

  std::unique_ptr<TOpen> m_Open;
  const TVariant* m_Variant = nullptr;
};

template <class THost> int RunSide(int argc, char** argv) {
  TSide<THost> side;
  if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
    side.List();
    return 0;
  }
  if (argc != 1) {
    std::fprintf(stderr, "%s: run by bench_rivals; by itself it takes --list alone\n", argv[0]);
    return 2;
  }
  char request[512];
  while (std::fgets(request, sizeof request, stdin) != nullptr) {
    try {
      if (!side.Answer(request)) {
        std::printf("error what is asked is not understood\n");
      }
    } catch (const std::exception& e) {
      std::printf("error %s\n", e.what());
    }
    std::fflush(stdout);
  }
  return 0;
}

} // namespace rivals
