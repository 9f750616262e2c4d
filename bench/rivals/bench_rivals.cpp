// Draws every variant of every family by the library and by OSMesa, in short turns of the two
// processes on one core, and prints how many times as fast the library is.

#include <getopt.h>
#include <sched.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "Report.h"
#include "SideProcess.h"

namespace {

using namespace rivals;

constexpr char kHelp[] =
    R"(bench_rivals [OPTIONS]: times the renderer beside OSMesa's llvmpipe on one thread.

Each family is drawn in several variants; its figure is that of its worst variant. A figure is the
ratio of OSMesa's processor time to ZxCore3D's, best of all frames of both; custom shaders have no
rival and are timed in millions of pixels or vertices a second. The processes take short turns on
one core.

  --list            print families and variants, and end
  --family NAME     only this family; may be given several times
  --variant NAME    only variants of this name; may be given several times
  --seconds S       draw each variant for S seconds, both sides together (1)
  --turn S          seconds of a turn (0.04)
  --json FILE       write all figures to FILE as well
  --help            print this, and end

Printed beside each row: whether the pictures' mean colours are the same; the kernel that drew most
pixels, with its share; the share of pixels that fell back to exact computation, marked by "!" above
3 %, with the commonest reason. "-" if no pixel was counted. Progress goes to standard error.

Ends with 0 if everything ran and showed the same, even where aims are missed; with 1 if not; with 2
for wrong options.
)";

struct TOptions {
  std::vector<std::string> Families;
  std::vector<std::string> Variants;
  double Seconds = 1.0;
  double Turn = 0.04;
  std::string Json;
  bool List = false;
};

bool ParseSeconds(const char* text, double* seconds) {
  char* end = nullptr;
  *seconds = std::strtod(text, &end);
  return end != text && *end == '\0' && *seconds > 0 && *seconds < 3600;
}

// -1 to go on, else the code to end with.
int ParseOptions(int argc, char** argv, TOptions* options) {
  static constexpr option kOptions[] = {
      {"help", no_argument, nullptr, 'h'},          {"list", no_argument, nullptr, 'l'},
      {"family", required_argument, nullptr, 'f'},  {"variant", required_argument, nullptr, 'v'},
      {"seconds", required_argument, nullptr, 's'}, {"turn", required_argument, nullptr, 't'},
      {"json", required_argument, nullptr, 'j'},    {nullptr, 0, nullptr, 0},
  };
  for (int c; (c = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    switch (c) {
    case 'h':
      std::fputs(kHelp, stdout);
      return 0;
    case 'l':
      options->List = true;
      break;
    case 'f':
      options->Families.emplace_back(optarg);
      break;
    case 'v':
      options->Variants.emplace_back(optarg);
      break;
    case 's':
    case 't':
      if (!ParseSeconds(optarg, c == 's' ? &options->Seconds : &options->Turn)) {
        std::fprintf(stderr, "bench_rivals: \"%s\" is no number of seconds\n", optarg);
        return 2;
      }
      break;
    case 'j':
      options->Json = optarg;
      break;
    default:
      return 2;
    }
  }
  if (optind != argc) {
    std::fprintf(stderr, "bench_rivals: \"%s\" is no option; see --help\n", argv[optind]);
    return 2;
  }
  return -1;
}

// The last processor that this process may run on, for it and for all that it starts.
void StayOnOneCore() {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) {
    return;
  }
  for (int i = CPU_SETSIZE - 1; i >= 0; --i) {
    if (CPU_ISSET(i, &allowed)) {
      cpu_set_t one;
      CPU_ZERO(&one);
      CPU_SET(i, &one);
      sched_setaffinity(0, sizeof one, &one);
      return;
    }
  }
}

std::vector<TResult> ParseList(const std::string& list) {
  std::vector<TResult> variants;
  for (std::size_t at = 0; at < list.size();) {
    const std::size_t end = std::min(list.find('\n', at), list.size());
    char family[128];
    char name[128];
    char unit[32];
    if (std::sscanf(list.substr(at, end - at).c_str(), "%127s %127s %31s", family, name, unit) ==
        3) {
      TResult result;
      result.Family = family;
      result.Variant = name;
      result.Unit = unit;
      variants.push_back(result);
    }
    at = end + 1;
  }
  return variants;
}

bool Contains(const std::vector<std::string>& list, const std::string& name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

// Leaves what was asked for. False if a name is nobody's.
bool Choose(const TOptions& options, std::vector<TResult>* variants) {
  for (const std::string& name : options.Families) {
    if (std::none_of(variants->begin(), variants->end(),
                     [&name](const TResult& r) { return r.Family == name; })) {
      std::fprintf(stderr, "bench_rivals: there is no family \"%s\"; see --list\n", name.c_str());
      return false;
    }
  }
  const auto unwanted = [&options](const TResult& r) {
    return (!options.Families.empty() && !Contains(options.Families, r.Family)) ||
           (!options.Variants.empty() && !Contains(options.Variants, r.Variant));
  };
  variants->erase(std::remove_if(variants->begin(), variants->end(), unwanted), variants->end());
  for (const std::string& name : options.Variants) {
    if (std::none_of(variants->begin(), variants->end(),
                     [&name](const TResult& r) { return r.Variant == name; })) {
      std::fprintf(stderr, "bench_rivals: there is no variant \"%s\" here; see --list\n",
                   name.c_str());
      return false;
    }
  }
  return true;
}

// --- Timing

bool OpenSide(TSideProcess* side, TResult* result) {
  std::string answer;
  if (!side->Ask("open " + result->Family + " " + result->Variant, "ready", &answer)) {
    return false;
  }
  if (!result->HasRival()) {
    result->Items = std::atof(answer.c_str() + 5);
  }
  return true;
}

bool TakeTurn(TSideProcess* side, int index, const std::string& request, TResult* result) {
  std::string answer;
  if (!side->Ask(request, "best", &answer)) {
    return false;
  }
  double best = 0;
  int frames = 0;
  std::sscanf(answer.c_str(), "best %lf %d", &best, &frames);
  double& least = result->Best[index];
  least = result->Frames[index] == 0 ? best : std::min(least, best);
  result->Frames[index] += frames;
  return true;
}

// Reads the counters, the library's alone, which come before the picture's mean colour.
bool CloseSide(TSideProcess* side, int index, TResult* result) {
  const bool counts = index == 0;
  std::string answer;
  bool alive = side->Ask("close", "", &answer);
  for (; alive; alive = side->ReadLine(&answer)) {
    char name[128];
    double a = 0;
    double b = 0;
    double c = 0;
    if (std::sscanf(answer.c_str(), "kernel %127s %lf %lf %lf", name, &a, &b, &c) == 4) {
      if (counts) {
        result->Kernels.push_back({name, a, b, c});
      }
    } else if (std::sscanf(answer.c_str(), "fallback %127s %lf", name, &a) == 2) {
      if (counts) {
        result->Fallbacks.push_back({name, a});
      }
    } else {
      break;
    }
  }
  double* const mean = result->Mean[index];
  if (alive && std::sscanf(answer.c_str(), "mean %lf %lf %lf", &mean[0], &mean[1], &mean[2]) != 3) {
    result->Problem = side->Program() + " answers \"" + answer + "\"";
  }
  return alive;
}

// The sides begin by turns, so that neither always finds the caches of the other.
bool RunTurns(TSideProcess* const* sides, int count, const TOptions& options, TResult* result) {
  using TClock = std::chrono::steady_clock;
  const std::string request = "turn " + std::to_string(options.Turn);
  const auto end = TClock::now() + std::chrono::duration<double>(options.Seconds);
  for (int round = 0; round < 3 || TClock::now() < end; ++round) {
    for (int i = 0; i < count; ++i) {
      const int index = (i + round) % count;
      if (!TakeTurn(sides[index], index, request, result)) {
        result->Problem = sides[index]->Problem();
        return false;
      }
    }
  }
  return true;
}

void RunVariant(TSideProcess* const* sides, const TOptions& options, TResult* result) {
  const int count = result->HasRival() ? 2 : 1;
  for (int i = 0; i < count; ++i) {
    if (!OpenSide(sides[i], result)) {
      result->Problem = sides[i]->Problem();
      return;
    }
  }
  if (!RunTurns(sides, count, options, result)) {
    return;
  }
  for (int i = 0; i < count; ++i) {
    if (!CloseSide(sides[i], i, result)) {
      result->Problem = sides[i]->Problem();
      return;
    }
  }
}

} // namespace

int main(int argc, char** argv) {
  TOptions options;
  if (const int code = ParseOptions(argc, argv, &options); code >= 0) {
    return code;
  }
  signal(SIGPIPE, SIG_IGN); // a side that died is noticed by its answer
  StayOnOneCore();
  const std::string self = argv[0];
  const std::size_t slash = self.rfind('/');
  const std::string folder = slash == std::string::npos ? "./" : self.substr(0, slash + 1);
  TSideProcess library(folder + "rival_zxcore3d");
  TSideProcess osmesa(folder + "rival_osmesa");
  TSideProcess* const sides[2] = {&library, &osmesa};

  std::string list;
  std::string problem;
  if (!ReadOutput(library.Program(), "--list", &list, &problem)) {
    std::fprintf(stderr, "bench_rivals: %s\n", problem.c_str());
    return 1;
  }
  std::vector<TResult> results = ParseList(list);
  if (!Choose(options, &results)) {
    return 2;
  }
  if (options.List) {
    for (const TResult& r : results) {
      std::printf("%-28s %s\n", r.Family.c_str(), r.Variant.c_str());
    }
    return 0;
  }

  PrintHeader();
  bool good = true;
  for (std::size_t i = 0; i < results.size(); ++i) {
    TResult& r = results[i];
    std::fprintf(stderr, "[%zu/%zu] %s %s\n", i + 1, results.size(), r.Family.c_str(),
                 r.Variant.c_str());
    RunVariant(sides, options, &r);
    good = good && r.Problem.empty() && r.SamePicture();
    PrintRow(r);
    std::fflush(stdout);
  }
  PrintFamilies(FamiliesOf(results));
  if (!options.Json.empty() && !WriteJson(options.Json, options.Seconds, results)) {
    std::fprintf(stderr, "bench_rivals: %s cannot be written\n", options.Json.c_str());
    good = false;
  }
  return good ? 0 : 1;
}
