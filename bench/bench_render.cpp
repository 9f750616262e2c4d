// The renderer's workloads, timed one by one: those of the comparison with OSMesa, without the
// rival.

#include <algorithm>
#include <cstring>

#include <benchmark/benchmark.h>

#include "rivals/ZxCore3DSide.h"

namespace {

using TScene = rivals::TScene<Zx3D::TRenderCPU>;

void RunVariant(benchmark::State& state, std::size_t index) {
  Zx3D::TRenderCPU gl;
  gl.Create(rivals::kSize, rivals::kSize, nullptr);
  TScene scene(gl);
  rivals::ListAll(scene);
  const rivals::TVariant& variant = scene.Variants[index];
  scene.Start();
  variant.SetUp();
  for (auto _ : state) {
    variant.Frame();
    benchmark::DoNotOptimize(gl.GetColorSurface()->Data[0]);
  }
}

// The bytes of a full frame, which pixel transfer is held against.
void CopyFrame(benchmark::State& state) {
  std::vector<unsigned char> from(4 * rivals::kSize * rivals::kSize, 1);
  std::vector<unsigned char> to(from.size());
  for (auto _ : state) {
    std::memcpy(to.data(), from.data(), from.size());
    benchmark::DoNotOptimize(to[0]);
    benchmark::ClobberMemory();
  }
}

// Lit sphere and small triangles three ways: immediate, arrays, elements.
void DrawMeshes(benchmark::State& state, bool lit, int way) {
  Zx3D::TRenderCPU gl;
  gl.Create(rivals::kSize, rivals::kSize, nullptr);
  rivals::TMesh mesh = lit ? rivals::MakeSphere(158) : rivals::MakeShapes({1000000, 3, 2.0f});
  if (lit) {
    gl.EnableLighting(true);
    gl.EnableLight(0, true);
  } else {
    rivals::Number(&mesh);
  }
  const rivals::TMesh flat = rivals::Flattened(mesh);
  const rivals::TMesh& used = way == 2 ? mesh : flat;
  gl.EnableClientState(GL_VERTEX_ARRAY);
  gl.EnableClientState(lit ? GL_NORMAL_ARRAY : GL_COLOR_ARRAY);
  gl.VertexPointer(3, GL_FLOAT, 0, used.Positions.data());
  lit ? gl.NormalPointer(GL_FLOAT, 0, used.Normals.data())
      : gl.ColorPointer(4, GL_FLOAT, 0, used.Colors.data());
  gl.EnableDepthTest(true);
  const auto count = static_cast<int>(mesh.Indices.size());
  for (auto _ : state) {
    gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    if (way == 2) {
      gl.DrawElements(GL_TRIANGLES, count, GL_UNSIGNED_INT, mesh.Indices.data());
    } else if (way == 1) {
      gl.DrawArrays(GL_TRIANGLES, 0, count);
    } else {
      gl.Begin(GL_TRIANGLES);
      for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
        lit ? gl.Normal3fv(&flat.Normals[3 * i]) : gl.Color4fv(&flat.Colors[4 * i]);
        gl.Vertex3fv(&flat.Positions[3 * i]);
      }
      gl.End();
    }
  }
  state.SetItemsProcessed(state.iterations() * count / 3);
}

} // namespace

int main(int argc, char** argv) {
  Zx3D::TRenderCPU gl;
  TScene scene(gl);
  rivals::ListAll(scene);
  for (std::size_t i = 0; i < scene.Variants.size(); ++i) {
    const rivals::TVariant& variant = scene.Variants[i];
    benchmark::RegisterBenchmark((variant.Family + "/" + variant.Name).c_str(), RunVariant, i)
        ->Unit(benchmark::kMicrosecond)
        ->MinTime(0.1);
  }
  benchmark::RegisterBenchmark("copy_frame_memcpy", CopyFrame)->Unit(benchmark::kMicrosecond);
  static constexpr const char* kWays[] = {"immediate", "arrays", "elements"};
  for (int way = 0; way < 3; ++way) {
    benchmark::RegisterBenchmark((std::string("sphere_100k/") + kWays[way]).c_str(), DrawMeshes,
                                 true, way)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark((std::string("small_1m/") + kWays[way]).c_str(), DrawMeshes, false,
                                 way)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
