// What a caller's own shaders cost, in pixels and vertices a second: shaders that do next to
// nothing, so that what is left is the pipeline's part.

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include <ZxCore3D/ZxCore3D.h>

#include "BareShaders.h"

namespace {

using Zx3D::TRenderCPU;
using VAR_DATA = TRenderCPU::VAR_DATA;
using FS_DATA = TRenderCPU::FS_DATA;

constexpr int kSize = 256;

/// Copies a slot, the last live one.
class TCopy : public zx_bench::TBareFragment<> {
public:
  explicit TCopy(std::size_t slot) : m_Slot(slot) {}
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    f->Color = (*v)[m_Slot];
    return true;
  }

private:
  std::size_t m_Slot;
};

/// Copies a slot, a row at once.
class TCopyRow : public zx_bench::TBareFragment<Zx3D::TRowFragmentShaderCPU> {
public:
  explicit TCopyRow(std::size_t slot) : m_Slot(slot) {}
  bool Execute(VAR_DATA* v, FS_DATA* f) override {
    f->Color = (*v)[m_Slot];
    return true;
  }
  void ExecuteRow(const Zx3D::FS_ROW& row) override {
    for (std::size_t c = 0; c < 4; ++c) {
      std::copy_n(row.Slots[m_Slot][c], row.Count, row.Color[c]);
    }
  }

private:
  std::size_t m_Slot;
};

/// The position as it comes, and slots of one colour.
class TVertex : public zx_bench::TBareVertex {
public:
  explicit TVertex(int slots) : m_Slots(slots) {}
  void Begin() override { m_Render->m_VarCount = m_Slots; }
  void Execute(VAR_DATA* v) override {
    (*v)[0] = m_Render->m_CurVertex;
    for (int i = 1; i < m_Slots; ++i) {
      (*v)[static_cast<std::size_t>(i)] = m_Render->m_CurColor;
    }
  }

private:
  int m_Slots;
};

struct TState {
  const char* Name;
  bool Depth;
  bool Perspective;
  bool Blend;
  bool Stencil;
};

constexpr TState kStates[] = {
    {"flat", false, false, false, false},       {"depth", true, false, false, false},
    {"perspective", false, true, false, false}, {"depth_perspective", true, true, false, false},
    {"blend", false, false, true, false},       {"stencil", false, false, false, true},
};

void Apply(TRenderCPU& gl, const TState& state) {
  gl.EnableDepthTest(state.Depth);
  gl.DepthMask(state.Depth ? 1 : 0);
  gl.DepthFunc(GL_LEQUAL);
  gl.SetPerspectiveCorrectionHint(state.Perspective ? GL_NICEST : GL_FASTEST);
  gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  gl.EnableBlend(state.Blend);
  if (state.Stencil) {
    gl.Enable(GL_STENCIL_TEST);
    gl.StencilOp(GL_KEEP, GL_KEEP, GL_INCR);
  }
}

// A quad over the whole surface, tilted in depth; with perspective its left and right sides are
// unequally far away.
void DrawPixels(benchmark::State& run, const TState& state, int slots,
                Zx3D::TFragmentShaderCPU* shader) {
  TRenderCPU gl;
  gl.Create(kSize, kSize, nullptr);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  Apply(gl, state);
  auto* const vertex = new TVertex(slots);
  gl._SetVertexShader(vertex);
  gl._SetFragmentShader(shader);
  vertex->Release();
  const double far = state.Perspective ? 2.0 : 1.0;
  for (auto _ : run) {
    gl.Begin(GL_QUADS);
    gl.Color4d(0.9, 0.2, 0.1, 0.6), gl.Vertex4d(-1, -1, -0.5, 1);
    gl.Color4d(0.1, 0.7, 0.3, 0.8), gl.Vertex4d(far, -far, 0.5, far);
    gl.Color4d(0.1, 0.3, 0.8, 0.5), gl.Vertex4d(far, far, 0.5, far);
    gl.Color4d(0.4, 0.4, 0.4, 0.9), gl.Vertex4d(-1, 1, -0.5, 1);
    gl.End();
  }
  run.SetItemsProcessed(run.iterations() * kSize * kSize);
}

// Triangles beyond a plane of the view volume, of which only the vertices cost.
void DrawVertices(benchmark::State& run, bool arrays) {
  constexpr int kCount = 30000;
  TRenderCPU gl;
  gl.Create(16, 16, nullptr);
  auto* const vertex = new TVertex(3);
  gl._SetVertexShader(vertex);
  vertex->Release();
  const std::vector<float> outside(3 * kCount, 2.0f);
  gl.EnableClientState(GL_VERTEX_ARRAY);
  gl.VertexPointer(3, GL_FLOAT, 0, outside.data());
  for (auto _ : run) {
    if (arrays) {
      gl.DrawArrays(GL_TRIANGLES, 0, kCount);
      continue;
    }
    gl.Begin(GL_TRIANGLES);
    for (std::size_t i = 0; i < kCount; ++i) {
      gl.Vertex3fv(&outside[3 * i]);
    }
    gl.End();
  }
  run.SetItemsProcessed(run.iterations() * kCount);
}

template <class TShader, class... TArgs>
void Register(const std::string& name, const TState& state, int slots, TArgs... args) {
  benchmark::RegisterBenchmark((name + "/" + state.Name + "/" + std::to_string(slots)).c_str(),
                               [&state, slots, args...](benchmark::State& run) {
                                 auto* const shader = new TShader(args...);
                                 DrawPixels(run, state, slots, shader);
                                 shader->Release();
                               })
      ->Unit(benchmark::kMicrosecond);
}

} // namespace

int main(int argc, char** argv) {
  for (const TState& state : kStates) {
    for (const int slots : {1, 3, 8}) {
      Register<zx_bench::TEmptyFragment>("empty", state, slots);
    }
    Register<TCopy>("copy", state, 3, std::size_t{2});
    Register<TCopyRow>("copy_row", state, 3, std::size_t{2});
  }
  for (const bool arrays : {false, true}) {
    benchmark::RegisterBenchmark(arrays ? "vertex/arrays" : "vertex/immediate", DrawVertices,
                                 arrays)
        ->Unit(benchmark::kMicrosecond);
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
