// Numbers out of text, a thousand at a time, beside the C and the C++ library; and numbers into
// text, with the price of the locale switch.
//
//   bench_numbers --benchmark_min_time=0.5

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <ZxCore3D/util/TextNumbers.h>
#include <ZxRunKit/Format.h>

namespace {

constexpr int s_Count = 1000;

std::vector<std::string> Ints() {
  std::mt19937 random(1);
  std::vector<std::string> texts;
  for (int i = 0; i < s_Count; ++i) {
    texts.push_back(std::to_string(static_cast<int>(random()) >> (random() % 24)));
  }
  return texts;
}

// Seventeen digits, or the few that people write.
std::vector<std::string> Reals(int digits) {
  std::mt19937 random(2);
  std::uniform_real_distribution<double> range(-1000.0, 1000.0);
  std::vector<std::string> texts;
  for (int i = 0; i < s_Count; ++i) {
    texts.push_back(Zentrix::ssprintf("%.*g", digits, range(random)));
  }
  return texts;
}

template <class TRead>
void Run(benchmark::State& state, const std::vector<std::string>& texts, TRead read) {
  for (auto _ : state) {
    for (const std::string& text : texts) {
      benchmark::DoNotOptimize(read(text.c_str(), text.size()));
    }
  }
  state.SetItemsProcessed(state.iterations() * s_Count);
}

int ReadInt(const char* text, std::size_t) {
  int value = 0;
  StringToInt(text, &value);
  return value;
}
int ReadIntCounted(const char* text, std::size_t length) {
  int value = 0;
  StringToInt(text, length, &value);
  return value;
}
int ReadIntStrtol(const char* text, std::size_t) {
  return static_cast<int>(std::strtol(text, nullptr, 10));
}
int ReadIntFromChars(const char* text, std::size_t length) {
  int value = 0;
  std::from_chars(text, text + length, value);
  return value;
}
double ReadReal(const char* text, std::size_t) {
  double value = 0.0;
  StringToFloat(text, &value);
  return value;
}
double ReadRealStrtod(const char* text, std::size_t) { return std::strtod(text, nullptr); }
double ReadRealFromChars(const char* text, std::size_t length) {
  double value = 0.0;
  std::from_chars(text, text + length, value);
  return value;
}

BENCHMARK_CAPTURE(Run, int / StringToInt, Ints(), ReadInt);
BENCHMARK_CAPTURE(Run, int / StringToIntCounted, Ints(), ReadIntCounted);
BENCHMARK_CAPTURE(Run, int / strtol, Ints(), ReadIntStrtol);
BENCHMARK_CAPTURE(Run, int / from_chars, Ints(), ReadIntFromChars);
BENCHMARK_CAPTURE(Run, real17 / StringToFloat, Reals(17), ReadReal);
BENCHMARK_CAPTURE(Run, real17 / strtod, Reals(17), ReadRealStrtod);
BENCHMARK_CAPTURE(Run, real17 / from_chars, Reals(17), ReadRealFromChars);
BENCHMARK_CAPTURE(Run, real6 / StringToFloat, Reals(6), ReadReal);
BENCHMARK_CAPTURE(Run, real6 / strtod, Reals(6), ReadRealStrtod);
BENCHMARK_CAPTURE(Run, real6 / from_chars, Reals(6), ReadRealFromChars);

void PrintReal(benchmark::State& state) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(Zentrix::ssprintf("double(%f)", 123.456));
  }
}
void PrintRealSnprintf(benchmark::State& state) {
  for (auto _ : state) {
    char text[64];
    std::snprintf(text, sizeof text, "double(%f)", 123.456);
    benchmark::DoNotOptimize(std::string(text));
  }
}
BENCHMARK(PrintReal);
BENCHMARK(PrintRealSnprintf);

} // namespace

BENCHMARK_MAIN();
