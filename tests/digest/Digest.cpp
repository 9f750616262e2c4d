// Prints hashes of what the library computes, a line for each part, so that builds for two
// architectures, or by two compilers, can be compared by diff. The levels of instruction sets must
// agree among themselves: if two don't, the line says so and the program ends with 1.
//
//   zx_digest [SCENES]
//   zx_digest --scene SEED     a line for each call of one scene, to find the first that differs

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include <ZxCore3D/math/CubeSpline.h>
#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>
#include <ZxCore3D/object/TMemoryStream.h>
#include <ZxCore3D/object/TObjectWriter.h>
#include <ZxCore3D/object/TVariant.h>

#include "../render/RandomScene.h"
#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/kernels/SpanJob.h>

namespace {

class THash {
public:
  void Add(const void* data, std::size_t size) {
    const auto* const bytes = static_cast<const unsigned char*>(data);
    for (std::size_t i = 0; i < size; ++i) {
      m_Value = (m_Value ^ bytes[i]) * 1099511628211ull;
    }
  }
  // Sign and payload of a NaN are the processor's choice.
  void Add(double value) {
    const auto bits = std::isnan(value) ? 0x7FF8000000000000u : std::bit_cast<std::uint64_t>(value);
    Add(&bits, sizeof bits);
  }
  void Add(const std::vector<double>& values) {
    for (const double value : values) {
      Add(value);
    }
  }
  std::uint64_t Value() const { return m_Value; }

private:
  std::uint64_t m_Value = 14695981039346656037ull; // FNV-1a
};

int s_Failures = 0;

void Print(const char* what, const THash& hash) {
  std::printf("%-28s %016llx\n", what, static_cast<unsigned long long>(hash.Value()));
}

std::vector<double> Numbers(std::size_t count, std::mt19937_64* random) {
  std::vector<double> values(count);
  for (double& value : values) {
    value = static_cast<double>(static_cast<std::int64_t>((*random)())) / 9223372036854775808.0;
  }
  return values;
}

// --- Scenes

THash SceneAt(const char* level, int seed) {
  Zx3D::LimitSpanLevel(level);
  const std::vector<unsigned char> left = zx_test::TRandomScene(static_cast<std::uint32_t>(seed))
                                              .RunForAnyProcessor(zx_test::TRandomScene::kCalls);
  THash hash;
  hash.Add(left.data(), left.size());
  return hash;
}

void Scenes(int count) {
  std::vector<const char*> levels;
  for (const char* const level : Zx3D::kSpanLevels) {
    if (Zx3D::LimitSpanLevel(level)) {
      levels.push_back(level);
    }
  }
  for (int seed = 1; seed <= count; ++seed) {
    const THash reference = SceneAt("reference", seed);
    char name[32];
    std::snprintf(name, sizeof name, "scene %d", seed);
    Print(name, reference);
    for (const char* const level : levels) {
      if (SceneAt(level, seed).Value() != reference.Value()) {
        std::printf("%s differs at %s\n", name, level);
        ++s_Failures;
      }
    }
  }
  Zx3D::LimitSpanLevel(nullptr);
  std::fprintf(stderr, "%d scenes, each by the reference path and at %zu levels:", count,
               levels.size());
  for (const char* const level : levels) {
    std::fprintf(stderr, " %s", level);
  }
  std::fprintf(stderr, "; chosen is %s\n", Zx3D::GetSpanLevel());
}

// What the scene's first calls leave, call by call, by the reference path.
void TraceScene(int seed) {
  Zx3D::LimitSpanLevel("reference");
  const zx_test::TRandomScene scene(static_cast<std::uint32_t>(seed));
  for (int calls = 1; calls <= zx_test::TRandomScene::kCalls; ++calls) {
    const std::vector<unsigned char> left = scene.RunForAnyProcessor(calls);
    THash hash;
    hash.Add(left.data(), left.size());
    std::printf("%3d %zu %016llx %s\n", calls, left.size(),
                static_cast<unsigned long long>(hash.Value()), scene.Describe(calls - 1).c_str());
  }
}

// --- Numerics

void Dense() {
  THash products;
  THash inverses;
  THash solutions;
  std::mt19937_64 random(1);
  for (unsigned long n = 1; n <= 160; n += n < 40 ? 1 : 17) {
    std::vector<double> a = Numbers(n * n, &random);
    std::vector<double> b = Numbers(n * n, &random);
    std::vector<double> product(n * n);
    TMatrixD left(n, n, a.data());
    TMatrixD right(n, n, b.data());
    TMatrixD result(n, n, product.data());
    mul(left, right, result);
    products.Add(product);
    mul_mtm(left, &result);
    products.Add(product);
    products.Add(inverse(left, result) ? 1.0 : 0.0);
    inverses.Add(product);
    std::vector<double> x(n);
    const auto solve = [&](auto solver) {
      std::vector<double> work = a;
      std::vector<double> side = b;
      solutions.Add(solver(work.data(), side.data()) ? 1.0 : 0.0);
      solutions.Add(x);
      solutions.Add(work);
    };
    solve([&](double* m, double* v) { return LineSysGauss1(m, n, v, x.data()); });
    solve([&](double* m, double* v) { return LineSysGauss2(m, n, v, x.data()); });
    solve([&](double* m, double* v) {
      unsigned long rank = 0;
      return SolveGaussInplace(m, n, v, 0.0, x.data(), &rank);
    });
  }
  Print("matrix products", products);
  Print("inverses", inverses);
  Print("linear systems", solutions);
}

void Splines() {
  THash hash;
  std::mt19937_64 random(2);
  for (unsigned long n = 2; n <= 300; n += n < 40 ? 1 : 37) {
    for (const bool closed : {false, true}) {
      const std::vector<double> y = Numbers(n, &random);
      std::vector<POLYNOM3> out(n, POLYNOM3{});
      hash.Add(CalcCubeSpline1D(y.data(), 0, n, closed, out.data()) ? 1.0 : 0.0);
      for (const POLYNOM3& p : out) {
        hash.Add({p.a, p.b, p.c, p.d});
      }
    }
  }
  Print("splines", hash);
}

// --- Numbers that do not fit

void Conversions() {
  THash hash;
  std::mt19937_64 random(3);
  const auto add = [&hash](double value) {
    const std::int64_t results[] = {Zx3D::TruncI32(value), Zx3D::TruncI64(value),
                                    Zx3D::TruncI32(static_cast<float>(value)),
                                    Zx3D::TruncI64(static_cast<float>(value)), Zx3D::ByteOf(value)};
    hash.Add(results, sizeof results);
  };
  for (const double value : {0.0,
                             -0.0,
                             0.5,
                             -0.5,
                             1e300,
                             -1e300,
                             HUGE_VAL,
                             -HUGE_VAL,
                             std::nan(""),
                             -std::nan(""),
                             2147483647.0,
                             2147483647.5,
                             2147483648.0,
                             -2147483648.0,
                             -2147483648.5,
                             -2147483649.0,
                             9223372036854774784.0,
                             9223372036854775808.0,
                             -9223372036854775808.0,
                             5e-324}) {
    add(value);
  }
  for (int i = 0; i < 100000; ++i) {
    add(std::bit_cast<double>(random())); // of any magnitude
  }
  Print("conversions", hash);
}

// --- The persistent format

void Format() {
  Zx3D::TMemoryStream stream;
  Zx3D::TObjectWriter writer(&stream, false);
  std::mt19937_64 random(4);
  const auto save = [&](const char* name, auto value) {
    Zx3D::TVariant variant;
    variant.Set(value);
    Zx3D::SaveAttribute(&writer, name, ~0ul, variant);
  };
  for (int i = 0; i < 200; ++i) {
    const std::uint64_t bits = random();
    Zx3D::STORE_BLOCK block;
    writer.WriteBlockBeginE(&block);
    save("double", std::bit_cast<double>(bits & 0xBFFFFFFFFFFFFFFFu));
    save("float", static_cast<float>(static_cast<std::int64_t>(bits)));
    save("int", static_cast<int>(bits));
    save("char", static_cast<signed char>(bits));
    save("byte", static_cast<unsigned char>(bits >> 8));
    save("text", std::string(bits % 70, static_cast<char>(bits >> 16 & 0xFF)));
    writer.WriteBlockEndE(&block);
  }
  std::vector<unsigned char> bytes(static_cast<std::size_t>(stream.GetSize()));
  stream.SetPos(0);
  if (!stream.ReadAll(bytes.data(), bytes.size())) {
    ++s_Failures;
  }
  THash hash;
  hash.Add(bytes.data(), bytes.size());
  Print("persistent format", hash);
  std::fprintf(stderr, "%zu bytes of the persistent format\n", bytes.size());
}

} // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--scene") == 0) {
    TraceScene(std::atoi(argv[2]));
    return 0;
  }
  Dense();
  Splines();
  Conversions();
  Format();
  Scenes(argc > 1 ? std::atoi(argv[1]) : 500);
  return s_Failures == 0 ? 0 : 1;
}
