// Triangle contact, polygons, tracing, fits and the text form of geometry.

#include <cmath>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include <ZxBaseKit/TZxXIniReader.h>
#include <ZxBaseKit/TZxXIniWriter.h>
#include <ZxCore3D/math/Frusta.h>
#include <ZxCore3D/math/GeometryXIni.h>
#include <ZxCore3D/math/LineTracing.h>
#include <ZxCore3D/math/Polygons.h>
#include <ZxCore3D/math/TransformEstimation.h>
#include <ZxCore3D/math/TriangleIntersection.h>

namespace {

using TPoint2 = vec_t_<double, 2>;
using TPoint3 = vec_t_<double, 3>;

template <class TPoint> std::vector<TPoint> Points(std::size_t n, double depth = 1) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> real(-1, 1);
  std::vector<TPoint> points(n);
  for (TPoint& p : points) {
    for (std::size_t i = 0; i < sizeof(TPoint) / sizeof(double); ++i) {
      p[i] = real(random) * (i == 2 ? depth : 1);
    }
  }
  return points;
}

void TriangleContact(benchmark::State& state, double depth) {
  constexpr std::size_t triangles = 1000;
  const std::vector<TPoint3> p = Points<TPoint3>(3 * triangles, depth);
  TPoint3 out[6];
  std::size_t i = 0;
  for (auto _ : state) {
    const std::size_t j = (i + 377) % triangles;
    benchmark::DoNotOptimize(GetIntersectTriangles(&p[3 * i], &p[3 * j], out, 1e-9));
    i = (i + 1) % triangles;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(TriangleContact, InSpace, 1.0);
BENCHMARK_CAPTURE(TriangleContact, Coplanar, 0.0);

void SelfIntersection(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  std::vector<TPoint2> p;
  for (std::size_t i = 0; i < n; ++i) {
    const double angle = 6.283185307179586 * static_cast<double>(i) / static_cast<double>(n);
    p.push_back({std::cos(angle), std::sin(angle)});
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(IsSelfIntersected(p.data(), n));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(n * (n - 1) / 2));
}
BENCHMARK(SelfIntersection)->Arg(4)->Arg(8)->Arg(9)->Arg(100)->Arg(1000);

void LineTrace(benchmark::State& state) {
  std::vector<vec_t_<int, 3>> out;
  for (auto _ : state) {
    out.clear();
    DrawLine3d({0, 0, 0}, {1000, 618, -333}, static_cast<int>(state.range(0)), out);
    benchmark::DoNotOptimize(out.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<long>(out.size()));
}
BENCHMARK(LineTrace)->Arg(1)->Arg(3)->Arg(9);

template <class TPoint, class TMat, bool (*Fit)(const TPoint*, const TPoint*, unsigned long, TMat*)>
void TransformFit(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const std::vector<TPoint> src = Points<TPoint>(n);
  std::vector<TPoint> dst = src;
  for (TPoint& p : dst) {
    p = p * (1 / (2 + p.x));
  }
  TMat m;
  for (auto _ : state) {
    benchmark::DoNotOptimize(Fit(src.data(), dst.data(), n, &m));
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(TransformFit<TPoint2, MAT3<double>, GetProjectiveTransform>)->Arg(10)->Arg(10000);
BENCHMARK(TransformFit<TPoint3, MAT4<double>, GetProjectiveTransform>)->Arg(10)->Arg(10000);
BENCHMARK(TransformFit<TPoint3, MAT4<double>, GetAffineTransform>)->Arg(10)->Arg(10000);

struct TShear : TZx3DTransform {
  TPoint3 TransformPoint(const TPoint3& p) const override { return {p.x + p.y, p.y, p.z - p.x}; }
};

void SphereMap(benchmark::State& state) {
  const TShear shear;
  VSPHERE<double> out;
  for (auto _ : state) {
    Transform(VSPHERE<double>{{1, 2, 3}, 4}, static_cast<unsigned long>(state.range(0)), shear,
              &out);
    benchmark::DoNotOptimize(out);
  }
}
BENCHMARK(SphereMap)->Arg(8)->Arg(64);

void MatrixText(benchmark::State& state) {
  MAT4<double> m;
  for (std::size_t i = 0; i < 16; ++i) {
    m[i] = 1.0 / (static_cast<double>(i) + 3);
  }
  for (auto _ : state) {
    TZxXIniWriter writer;
    XIniSaveE(&writer, m);
    TZxXIniReader reader(writer.GetText());
    XIniLoadE(&reader, m);
    benchmark::DoNotOptimize(m);
  }
}
BENCHMARK(MatrixText);

} // namespace

BENCHMARK_MAIN();
