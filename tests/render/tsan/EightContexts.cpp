// Contexts on eight threads, for the thread sanitizer: see TwoContexts.cpp, which has `main`. All
// of them start at once, so that everything that is chosen when it is first used, in the renderer
// and in the numerics, is first used by all.

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <thread>
#include <vector>

#include <ZxCore3D/math/CubeSpline.h>
#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include "EightContexts.h"
#include "MakeTexture.h"

namespace {

using Zx3D::TRenderCPU;

constexpr int kThreads = 8;
constexpr int kSize = 32;
constexpr int kRounds = 12;

std::mutex s_Table; // names may not be made and deleted by two contexts at once
std::atomic<int> s_Ready{0};
std::atomic<int> s_Last{0}; ///< threads that have their last context
std::atomic<bool> s_Go{false};
std::atomic<int> s_Wrong{0};

void Numerics() {
  constexpr unsigned long n = 50;
  TMatrixD m(n, n);
  TMatrixD inv(n, n);
  TMatrixD product(n, n);
  fill(m, 0.5);
  std::vector<double> b(n, 1.0);
  std::vector<double> x(n);
  for (unsigned long i = 0; i < n; ++i) {
    m.Data[i * n + i] = 60;
  }
  bool done = inverse(m, inv);
  mul(m, inv, product);
  done = done && SolveGauss(m.Data, n, b.data(), 0, x.data(), nullptr);
  done = done && LineSysGauss2(m.Data, n, b.data(), x.data());
  POLYNOM3 spline[n];
  done = done && CalcCubeSpline1D(x.data(), 0, n, true, spline);
  if (!done || product.Data[0] < 0.999 || product.Data[0] > 1.001) {
    ++s_Wrong;
  }
}

// A program that all threads count references of, and that no context draws with.
void CountReferences(zx::TRef* shared) {
  for (int i = 0; i < 1000; ++i) {
    shared->AddRef();
    shared->Release();
  }
}

void Draw(TRenderCPU& gl, unsigned char grey) {
  gl.Enable(GL_TEXTURE_2D);
  gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  gl.Begin(GL_QUADS);
  const double corners[4][2] = {{-1, -1}, {1, -1}, {1, 1}, {-1, 1}};
  for (const auto& corner : corners) {
    gl.TexCoord2d(corner[0] + 1, corner[1] + 1);
    gl.Vertex3d(corner[0], corner[1], 0.25 * corner[0]);
  }
  gl.End();
  for (int i = 0; i < 4 * kSize * kSize; ++i) {
    if (gl.m_ColorSurface->Data[i] != grey) {
      ++s_Wrong;
      return;
    }
  }
}

// Shares the table of `giver`, draws with a texture of its own, has others' come and go, and
// leaves.
void Run(TRenderCPU* giver, zx::TRef* shared, int number) {
  ++s_Ready;
  while (s_Ready < kThreads) {
  }
  Numerics();
  CountReferences(shared);
  const auto grey = static_cast<unsigned char>(20 * (number + 1));
  for (int round = 0; round < kRounds; ++round) {
    auto* const gl = new TRenderCPU;
    unsigned int own = 0;
    unsigned int other = 0;
    {
      const std::lock_guard<std::mutex> lock(s_Table);
      if (!gl->Create(kSize, kSize, giver)) {
        ++s_Wrong;
      }
      other = MakeTexture(*gl, 1, 8);
      own = MakeTexture(*gl, grey, 8);
    }
    Draw(*gl, grey);
    {
      const std::lock_guard<std::mutex> lock(s_Table);
      gl->ActiveTexture(GL_TEXTURE0 + 5);
      gl->BindTexture(GL_TEXTURE_2D, other);
      gl->DeleteTextures(1, &other);
    }
    Draw(*gl, grey);
    if (round == kRounds - 1) { // with its texture: the last of all deletes the table
      ++s_Last;
      while (!s_Go) {
      }
    } else {
      const std::lock_guard<std::mutex> lock(s_Table);
      gl->DeleteTextures(1, &own);
    }
    gl->Release();
  }
}

} // namespace

int RunEightContexts() {
  auto* const giver = new TRenderCPU;
  auto* const shared = new Zx3D::TProgramCPU;
  if (!giver->Create(4, 4, nullptr)) {
    return 1;
  }
  // The first to share makes the table.
  auto* const first = new TRenderCPU;
  if (!first->Create(4, 4, giver)) {
    return 1;
  }
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back(Run, giver, shared, i);
  }
  while (s_Last < kThreads) {
  }
  const std::uint32_t count = first->m_Textures->RefCount;
  giver->Release();
  first->Release();
  s_Go = true; // from here on the table is the threads' alone
  for (std::thread& thread : threads) {
    thread.join();
  }
  shared->Release();
  std::printf("%d wrong, %u contexts at the end\n", s_Wrong.load(), count);
  return s_Wrong == 0 && count == kThreads + 2 ? 0 : 1;
}
