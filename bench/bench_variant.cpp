// What one value costs: set, copy and destroy, beside what a host would take instead.
//
//   bench_variant --benchmark_min_time=0.5

#include <any>
#include <string>
#include <variant>

#include <QByteArray>
#include <QVariant>
#include <benchmark/benchmark.h>

#include <ZxCore3D/object/TVariant.h>

namespace {

using Zx3D::TVariant;

// The same kinds of value as TVariant's.
using TStdVariant =
    std::variant<std::monostate, bool, signed char, unsigned char, short, unsigned short, int,
                 unsigned int, long, unsigned long, float, double, std::string>;

template <class THolder> void SetInt(THolder* holder, int value) { *holder = value; }
void SetInt(TVariant* holder, int value) { holder->Set(value); }
void SetInt(QVariant* holder, int value) { holder->setValue(value); }

template <class THolder> void Int(benchmark::State& state) {
  int value = 0;
  for (auto _ : state) {
    THolder holder;
    SetInt(&holder, value++);
    THolder copy(holder);
    benchmark::DoNotOptimize(copy);
  }
}

template <class THolder> void SetDouble(THolder* holder, double value) { *holder = value; }
void SetDouble(TVariant* holder, double value) { holder->Set(value); }
void SetDouble(QVariant* holder, double value) { holder->setValue(value); }

template <class THolder> void Double(benchmark::State& state) {
  double value = 0.0;
  for (auto _ : state) {
    THolder holder;
    SetDouble(&holder, value);
    value += 1.0;
    THolder copy(holder);
    benchmark::DoNotOptimize(copy);
  }
}

template <class THolder> void SetText(THolder* holder, const std::string& text) { *holder = text; }
void SetText(TVariant* holder, const std::string& text) { holder->Set(text); }

template <class THolder> void Text(benchmark::State& state) {
  const std::string text(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    THolder holder;
    SetText(&holder, text);
    THolder copy(holder);
    benchmark::DoNotOptimize(copy);
  }
}

// Qt shares its strings: the text is made once for each value, as the others make it.
void TextQt(benchmark::State& state) {
  const std::string text(static_cast<std::size_t>(state.range(0)), 'x');
  for (auto _ : state) {
    const QVariant holder(QByteArray(text.data(), static_cast<int>(text.size())));
    const QVariant copy(holder);
    benchmark::DoNotOptimize(copy);
  }
}

BENCHMARK_TEMPLATE(Int, TVariant);
BENCHMARK_TEMPLATE(Int, TStdVariant);
BENCHMARK_TEMPLATE(Int, std::any);
BENCHMARK_TEMPLATE(Int, QVariant);
BENCHMARK_TEMPLATE(Double, TVariant);
BENCHMARK_TEMPLATE(Double, TStdVariant);
BENCHMARK_TEMPLATE(Double, std::any);
BENCHMARK_TEMPLATE(Double, QVariant);
BENCHMARK_TEMPLATE(Text, TVariant)->Arg(20)->Arg(100);
BENCHMARK_TEMPLATE(Text, TStdVariant)->Arg(20)->Arg(100);
BENCHMARK_TEMPLATE(Text, std::any)->Arg(20)->Arg(100);
BENCHMARK(TextQt)->Arg(20)->Arg(100);

} // namespace

BENCHMARK_MAIN();
