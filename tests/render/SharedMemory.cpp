// Surfaces that share memory: fragments are drawn from left to right, each with its tests, its
// shading, its depth write and its colour write before the next, at every instruction set.

#include <cstring>
#include <functional>
#include <vector>

#include "LevelTest.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

constexpr int kWidth = 32;

using TDraw = std::function<void(TRenderCPU&)>;

/// A row of pixels, once at each level of this processor.
class SharedMemory : public testing::Test {
protected:
  ~SharedMemory() override { LimitSpanLevel(nullptr); }

  static void AtEveryLevel(const std::function<void(const char*)>& run) {
    for (const char* level : Zx3D::kSpanPaths) {
      if (LimitSpanLevel(level)) {
        run(level);
      }
    }
  }
};

// One row from column 0 to the last, by a triangle with its apex at the right.
void DrawRow(TRenderCPU& gl, double texLeft = 0, double texRight = 1) {
  gl.Begin(GL_TRIANGLES);
  gl.TexCoord2d(texLeft, 0.5);
  gl.Vertex2d(-1, -0.9);
  gl.TexCoord2d(texRight, 0.5);
  gl.Vertex2d(1, 0);
  gl.TexCoord2d(texLeft, 0.5);
  gl.Vertex2d(-1, 0.9);
  gl.End();
}

void DrawRowByArrays(TRenderCPU& gl) {
  std::vector<double> positions;
  for (int i = 0; i < 2; ++i) { // the second one finds what the first left
    positions.insert(positions.end(), {-1, -0.9, 1, 0, -1, 0.9});
  }
  gl.VertexPointer(2, GL_DOUBLE, 0, positions.data());
  gl.EnableClientState(GL_VERTEX_ARRAY);
  gl.DrawArrays(GL_TRIANGLES, 0, 3);
  gl.DisableClientState(GL_VERTEX_ARRAY);
}

void DrawRowByLine(TRenderCPU& gl) {
  gl.Begin(GL_LINES);
  gl.Vertex2d(-1, 0);
  gl.Vertex2d(1, 0);
  gl.End();
}

void DrawRowByPoints(TRenderCPU& gl) {
  std::vector<double> positions;
  for (int x = 0; x < kWidth; ++x) {
    positions.insert(positions.end(), {Clip(x, kWidth), 0});
  }
  gl.VertexPointer(2, GL_DOUBLE, 0, positions.data());
  gl.EnableClientState(GL_VERTEX_ARRAY);
  gl.DrawArrays(GL_POINTS, 0, kWidth);
  gl.DisableClientState(GL_VERTEX_ARRAY);
}

} // namespace

// Each colour falls on the depth of the pixel to the right and, read as a float, is 0.25: that
// pixel fails, so that every second one is drawn.
TEST_F(SharedMemory, AColourThatIsTheNextPixelsDepth) {
  const float written = 0.25f; // bytes 0, 0, 128, 62
  AtEveryLevel([&](const char* level) {
    for (const TDraw& draw : {TDraw([](TRenderCPU& gl) { DrawRow(gl); }), TDraw(DrawRowByArrays),
                              TDraw(DrawRowByLine), TDraw(DrawRowByPoints)}) {
      std::vector<float> block(2 * kWidth + 2, 1.0f);
      TDataSurface depth;
      TDataSurface color;
      ASSERT_TRUE(depth.Create(kWidth, 1, DATA_FORMAT_DEPTH, DATA_TYPE_FLOAT, 1, block.data()));
      ASSERT_TRUE(color.Create(kWidth, 1, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, block.data() + 1));
      TScene s(kWidth, 1);
      s->GetDepthSurface()->Swap(depth);
      s->BindColorSurface(&color);
      s->EnableDepthTest(true);
      s->Color4ub(0, 0, 128, 62);
      draw(*s);
      for (int x = 0; x < kWidth; ++x) {
        ASSERT_EQ(x % 2 == 0 ? 0.5f : written, block[static_cast<std::size_t>(x)])
            << level << ", " << x;
      }
      EXPECT_EQ(1.0f, block[kWidth]) << "the last pixel failed";
      s->BindColorSurface(nullptr);
    }
  });
}

// Each pixel takes the texel to its left, which is the pixel drawn before.
TEST_F(SharedMemory, ATextureThatIsTheColourSurface) {
  AtEveryLevel([](const char* level) {
    for (const unsigned int filter : {GL_NEAREST, GL_LINEAR}) {
      TScene s(kWidth, 1);
      for (int x = 0; x < kWidth; ++x) {
        s.SetColor(x, 0, {x, 2 * x, 3 * x, 255});
      }
      s.SetColor(0, 0, {200, 100, 50, 25});
      TRenderCPU::TTexSampler& sampler = s->m_TexUnits[0].Sampler;
      sampler.SetSurface(s->GetColorSurface());
      sampler.SetFilter(filter, filter);
      sampler.SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE);
      s->Enable(GL_TEXTURE_2D);
      s->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
      DrawRow(*s, -1.0 / kWidth, 1.0 - 1.0 / kWidth);
      for (int x = 0; x < kWidth; ++x) {
        ASSERT_EQ((TPixel{200, 100, 50, 25}), s.Color(x, 0)) << level << ", " << x;
      }
    }
  });
}

// Each pixel reads the depth to its left: the first its own, from before it is written.
TEST_F(SharedMemory, ATextureThatIsTheDepthSurface) {
  AtEveryLevel([](const char* level) {
    TScene s(kWidth, 1);
    TRenderCPU::TTexSampler& sampler = s->m_TexUnits[0].Sampler;
    sampler.SetSurface(s->GetDepthSurface());
    sampler.SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE);
    s->Enable(GL_TEXTURE_2D);
    s->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    DrawRow(*s, -1.0 / kWidth, 1.0 - 1.0 / kWidth);
    for (int x = 0; x < kWidth; ++x) {
      const int grey = x == 0 ? 0 : 128;
      ASSERT_EQ((TPixel{grey, grey, grey, 255}), s.Color(x, 0)) << level << ", " << x;
    }
  });
}

// The stencil of four pixels is the colour of one: pixel 0 changes what pixels 1, 2 and 3 are
// tested against.
TEST_F(SharedMemory, AColourThatIsTheStencilOfThePixelsAfterIt) {
  AtEveryLevel([](const char* level) {
    std::vector<unsigned char> block(8 * kWidth, 0);
    TDataSurface stencil;
    TDataSurface color;
    ASSERT_TRUE(stencil.Create(kWidth, 1, DATA_FORMAT_STENCIL, DATA_TYPE_UINT8, 1, block.data()));
    ASSERT_TRUE(color.Create(kWidth, 1, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, block.data()));
    TScene s(kWidth, 1);
    s->GetStencilSurface()->Swap(stencil);
    s->BindColorSurface(&color);
    s->Enable(GL_STENCIL_TEST);
    s->StencilFunc(GL_EQUAL, 0, 255);
    s->Color4ub(9, 8, 7, 6);
    DrawRow(*s);
    // Pixel 0 writes bytes 0 to 3, so that pixels 1 to 3 fail; 4 passes and writes 16 to 19; so do
    // 5, 6 and 7, up to 31, and from there on every pixel has failed.
    for (int x = 0; x < kWidth; ++x) {
      const bool drawn = x == 0 || (x >= 4 && x < 16);
      const int at = 4 * x;
      ASSERT_EQ(drawn ? 9 : 0, block[static_cast<std::size_t>(at)]) << level << ", " << x;
      ASSERT_EQ(drawn ? 6 : 0, block[static_cast<std::size_t>(at + 3)]) << level << ", " << x;
    }
    s->BindColorSurface(nullptr);
  });
}

TEST_F(SharedMemory, RowsOfPixelsThatAreCopiedOntoThemselves) {
  TScene s(kWidth, 2);
  for (int x = 0; x < kWidth; ++x) {
    s.SetColor(x, 0, {x, x, x, 255});
  }
  // From one pixel on to the right: each takes what the one before it was given.
  s->WindowPos2i(1, 0);
  s->DrawPixels(kWidth - 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, s->GetColorSurface()->Data);
  for (int x = 0; x < kWidth; ++x) {
    ASSERT_EQ((TPixel{0, 0, 0, 255}), s.Color(x, 0)) << x;
  }
}

TEST_F(SharedMemory, AnImageMadeFromTheTexturesOwnPixels) {
  THeld<TRenderCPU> gl;
  unsigned int id = 0;
  gl->GenTextures(1, &id);
  gl->BindTexture(GL_TEXTURE_2D, id);
  std::vector<unsigned char> texels(4 * 64 * 64);
  for (std::size_t i = 0; i < texels.size(); ++i) {
    texels[i] = static_cast<unsigned char>(i * 7);
  }
  gl->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 64, 64, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels.data());
  const DATASURFACE* const texture = gl->m_TexUnits[0].Sampler.GetSurface();
  gl->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 64, 32, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                 texture->Data + 64 * 4 * 16);
  ASSERT_EQ(32, texture->Height);
  EXPECT_EQ(0, std::memcmp(texture->Data, texels.data() + 64 * 4 * 16, 64 * 4 * 32));
}
