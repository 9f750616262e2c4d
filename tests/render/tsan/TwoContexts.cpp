// Two contexts on two threads, for the thread sanitizer: the first use of the library at all is
// that both draw at once; one of them makes and deletes textures of the table that they share while
// the other one draws with its own; they draw into one surface, each into its own half; and they go
// at the same time. A program of its own, as that sanitizer must be in every object that is linked.
//
// With the argument "eight" contexts on eight threads are run instead: EightContexts.cpp.
//
// It ends with 0 when all pixels are there.

#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>
#include <vector>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include "EightContexts.h"
#include "MakeTexture.h"

namespace {

using Zx3D::TRenderCPU;

constexpr int kSize = 96;

// The lower half of the picture for thread 0, the upper one for thread 1.
void Quad(TRenderCPU& gl, int half) {
  const double low = half == 0 ? -1 : 0;
  gl.Begin(GL_QUADS);
  gl.TexCoord2d(0, 0);
  gl.Vertex3d(-1, low, 0.5);
  gl.TexCoord2d(3, 0);
  gl.Vertex3d(1, low, 0);
  gl.TexCoord2d(3, 3);
  gl.Vertex3d(1, low + 1, -0.5);
  gl.TexCoord2d(0, 3);
  gl.Vertex3d(-1, low + 1, 0);
  gl.End();
}

void Shapes(TRenderCPU& gl, int half) {
  const double low = half == 0 ? -0.98 : 0.02;
  std::vector<float> positions;
  for (int i = 0; i < 60; ++i) {
    positions.push_back(static_cast<float>((i * 37 % 100) / 50.0 - 1));
    positions.push_back(static_cast<float>(low + (i * 53 % 100) / 100.0 * 0.96));
  }
  gl.VertexPointer(2, GL_FLOAT, 0, positions.data());
  gl.EnableClientState(GL_VERTEX_ARRAY);
  for (const unsigned int mode : {GL_TRIANGLES, GL_LINES, GL_POINTS}) {
    gl.DrawArrays(mode, 0, 60);
  }
}

void Draw(TRenderCPU* gl, int half, unsigned int texture) {
  gl->EnableDepthTest(true);
  for (int round = 0; round < 30; ++round) {
    gl->Clear(GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
    gl->Enable(GL_STENCIL_TEST);
    gl->StencilOp(GL_KEEP, GL_KEEP, GL_INCR);
    gl->Disable(GL_TEXTURE_2D);
    Shapes(*gl, half);
    if (half == 0) { // the loader
      unsigned int id = MakeTexture(*gl, static_cast<unsigned char>(round), 16);
      gl->DeleteTextures(1, &id);
      gl->BindTexture(GL_TEXTURE_2D, texture);
    }
    gl->Enable(GL_TEXTURE_2D);
    gl->DepthFunc(GL_ALWAYS);
    Quad(*gl, half);
    gl->DepthFunc(GL_LESS);
  }
  gl->BindColorSurface(nullptr);
  gl->Release();
}

} // namespace

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "eight") == 0) {
    return RunEightContexts();
  }
  TDataSurface picture;
  picture.Create(kSize, kSize, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4);
  auto* const a = new TRenderCPU;
  auto* const b = new TRenderCPU;
  if (!a->Create(kSize, kSize, nullptr) || !b->Create(kSize, kSize, a)) {
    return 1;
  }
  const unsigned int first = MakeTexture(*a, 100, 16);
  const unsigned int second = MakeTexture(*a, 200, 16);
  b->BindTexture(GL_TEXTURE_2D, second);
  a->BindColorSurface(&picture);
  b->BindColorSurface(&picture);
  std::thread other(Draw, b, 1, second);
  Draw(a, 0, first);
  other.join();

  int wrong = 0;
  for (int y = 0; y < kSize; ++y) {
    for (int x = 0; x < kSize; ++x) {
      wrong += picture.Data[4 * (y * kSize + x)] != (y < kSize / 2 ? 100 : 200) ? 1 : 0;
    }
  }
  std::printf("%d wrong pixels\n", wrong);
  return wrong == 0 ? 0 : 1;
}
