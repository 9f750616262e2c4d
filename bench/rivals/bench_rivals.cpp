// Runs both sides of every workload in turn, pinned to one core, and prints the ratios.
//
//   bench_rivals [SECONDS [ROUNDS [WORKLOAD ...]]]

#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {

std::string Output(const std::string& command) {
  std::string text;
  FILE* const pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) {
    return text;
  }
  char buffer[4096];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    text.append(buffer, n);
  }
  return pclose(pipe) == 0 ? text : std::string();
}

struct TFigure {
  double Nanoseconds = 1e18;
  double Mean[3] = {};
};

bool RunOnce(const std::string& command, TFigure* best) {
  TFigure figure;
  if (std::sscanf(Output(command).c_str(), "%lf %lf %lf %lf", &figure.Nanoseconds, &figure.Mean[0],
                  &figure.Mean[1], &figure.Mean[2]) != 4) {
    return false;
  }
  if (figure.Nanoseconds < best->Nanoseconds) {
    *best = figure;
  }
  return true;
}

} // namespace

int main(int argc, char** argv) {
  const std::string seconds = argc > 1 ? argv[1] : "0.5";
  const int rounds = argc > 2 ? std::atoi(argv[2]) : 3;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(sysconf(_SC_NPROCESSORS_ONLN) - 1, &one);
  sched_setaffinity(0, sizeof one, &one);

  const std::string self = argv[0];
  const std::size_t slash = self.rfind('/');
  const std::string folder = slash == std::string::npos ? "./" : self.substr(0, slash + 1);
  const std::string sides[2] = {folder + "rival_zxcore3d", folder + "rival_osmesa"};
  const std::string names = Output(sides[0] + " list");
  std::printf("%-26s %14s %14s %8s  %s\n", "workload", "ZxCore3D us", "OSMesa us", "ratio",
              "picture");
  bool good = !names.empty();
  for (std::size_t at = 0; at < names.size();) {
    const std::size_t end = names.find('\n', at);
    const std::string name = names.substr(at, end - at);
    at = end + 1;
    if (argc > 3 && std::find_if(argv + 3, argv + argc, [&name](const char* wanted) {
                      return name == wanted;
                    }) == argv + argc) {
      continue;
    }
    TFigure best[2];
    bool ran = true;
    for (int round = 0; round < rounds; ++round) {
      for (int side = 0; side < 2; ++side) {
        ran = RunOnce(sides[side] + " " + name + " " + seconds, &best[side]) && ran;
      }
    }
    double apart = 0;
    for (int i = 0; i < 3; ++i) {
      apart = std::max(apart, std::fabs(best[0].Mean[i] - best[1].Mean[i]));
    }
    // Single against double precision, and truncation against rounding, move bytes by one or two.
    const bool same = ran && apart < 2.0;
    good = good && same;
    std::printf("%-26s %14.1f %14.1f %8.2f  %s (%.1f %.1f %.1f)\n", name.c_str(),
                best[0].Nanoseconds / 1e3, best[1].Nanoseconds / 1e3,
                best[1].Nanoseconds / best[0].Nanoseconds, same ? "same" : "DIFFERS",
                best[0].Mean[0], best[0].Mean[1], best[0].Mean[2]);
    std::fflush(stdout);
  }
  return good ? 0 : 1;
}
