// Colours that stand on the edge of a byte, and coordinates and depths at the ends of their ranges:
// where single precision must step aside, every instruction set leaves what the reference walker
// does.

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/ProgramCPU.h>

#include "LevelTest.h"

namespace {

using Zx3D::TRenderCPU;

constexpr int kWidth = 83; // whole groups at every level, and a rest
constexpr int kHeight = 21;

struct TCorner {
  double X, Y, W;
  double R, G, B, A;
  double S, T;
};

// Two triangles of four corners. A vertex's own w takes no part in its transformation: the matrix
// takes z for it, and leaves 0 for z.
void DrawQuad(TRenderCPU& gl, const TCorner (&corners)[4]) {
  constexpr double kDepthIsW[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadMatrixd(kDepthIsW);
  gl.Begin(GL_QUADS);
  for (const TCorner& c : corners) {
    gl.Color4d(c.R, c.G, c.B, c.A);
    gl.TexCoord2d(c.S, c.T);
    gl.Vertex3d(c.X * c.W, c.Y * c.W, c.W);
  }
  gl.End();
}

void SetTexture(TRenderCPU& gl, int width, int height, unsigned int filter) {
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  std::vector<unsigned char> texels(static_cast<std::size_t>(4 * width * height));
  std::uint32_t state = 12345;
  for (unsigned char& byte : texels) {
    state = state * 1664525u + 1013904223u;
    // Whole bytes, the ends of the range, and pairs whose mean is between two bytes.
    byte = static_cast<unsigned char>(state >> 31 != 0 ? state >> 24 : (state >> 28) % 2 * 255);
  }
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                texels.data());
  gl.TexFilter2D(filter, filter);
  gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  gl._EnableTexture2D(0, true);
}

class SpanBytes : public zx_test::TLevelTest {
protected:
  SpanBytes() : TLevelTest(kWidth, kHeight) {}

  // Onto a colour with four different channels.
  void Expect(const std::string& what, const TDraw& draw) {
    TLevelTest::Expect(what, [&draw](TRenderCPU& gl) {
      gl.ClearColor(0.25f, 0.5f, 0.75f, 0.5f);
      gl.Clear(GL_COLOR_BUFFER_BIT);
      draw(gl);
    });
  }
};

// A value near one at which a byte changes, or near the middle between two.
double Edge(int k, int which) {
  const double on = (k + 0.5) / 255.0;
  switch (which) {
  case 0:
    return on;
  case 1:
    return std::nextafter(on, 0.0);
  case 2:
    return std::nextafter(on, 1.0);
  case 3:
    return static_cast<float>(on);
  case 4:
    return on + 1e-7;
  case 5:
    return on - 1e-7;
  default:
    return k / 255.0;
  }
}

TEST_F(SpanBytes, ColoursOnTheEdgeOfAByte) {
  for (int which = 0; which < 7; ++which) {
    for (int k = 0; k < 254; k += 5) {
      const double a = Edge(k, which);
      const double b = Edge(253 - k, which);
      for (const double far : {1.0, 1.0000001, 3.0, 40.0, 500.0, 70000.0}) {
        // The first channel is the same throughout, the second nearly so, the third runs.
        const TCorner corners[4] = {{-1, -1, 1, a, a, a, b, 0, 0},
                                    {1, -1, far, a, a, b, b, 0, 0},
                                    {1, 1, far, a, a + 1e-9, 0, b, 0, 0},
                                    {-1, 1, 1, a, a, 1, b, 0, 0}};
        Expect("edge " + std::to_string(k) + " kind " + std::to_string(which) + " w " +
                   std::to_string(far),
               [&](TRenderCPU& gl) { DrawQuad(gl, corners); });
      }
    }
  }
}

TEST_F(SpanBytes, ColoursOutsideTheirRange) {
  for (const double c :
       {-4.0, -1.0, -1e-9, 1.0 + 1e-9, 2.0, 4.0, 5.0, 1e30, 1e300,
        std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    for (const bool texture : {false, true}) {
      const TCorner corners[4] = {{-1, -1, 1, c, 0, 1, 1, 0, 0},
                                  {1, -1, 2, 0, c, 1, 0, 2, 0},
                                  {1, 1, 3, 1, 0, c, 1, 2, 2},
                                  {-1, 1, 2, 0, 1, -c, 0, 0, 2}};
      Expect("colour " + std::to_string(c), [&](TRenderCPU& gl) {
        if (texture) {
          SetTexture(gl, 8, 8, GL_LINEAR);
        }
        DrawQuad(gl, corners);
      });
    }
  }
}

TEST_F(SpanBytes, DepthsFarApart) {
  for (const double near : {1e-200, 1e-30, 1e-15, 1.0, 1e15, 1e30, 1e200}) {
    for (const double ratio : {1.5, 63.9, 64.1, 1e3, 65536.0, 1e9}) {
      for (const unsigned int filter : {0u, unsigned{GL_NEAREST}, unsigned{GL_LINEAR}}) {
        const double far = near * ratio;
        const TCorner corners[4] = {{-1, -1, near, 1, 0, 0.5, 1, 0, 0},
                                    {1, -1, far, 0, 1, 0.5, 0.5, 3, 0},
                                    {1, 1, far, 0.5, 0, 1, 0.25, 3, 3},
                                    {-1, 1, near, 0, 0.5, 0, 1, 0, 3}};
        Expect("w " + std::to_string(near) + " times " + std::to_string(ratio),
               [&](TRenderCPU& gl) {
                 if (filter != 0) {
                   SetTexture(gl, 16, 16, filter);
                 }
                 DrawQuad(gl, corners);
               });
      }
    }
  }
}

// Every pixel at the centre of a texel, between two, or between four, where the mean of bytes lies
// between two bytes; colours that halve a byte.
TEST_F(SpanBytes, TexelsOnTheEdgeOfAByte) {
  for (const unsigned int filter : {unsigned{GL_NEAREST}, unsigned{GL_LINEAR}}) {
    for (const double scale : {1.0, 2.0, 0.5}) {
      for (const double shift : {0.0, 0.5, 0.25}) {
        for (const double c : {1.0, 0.5, 0.2, 128.0 / 255.0}) {
          const double left = shift / 64.0;
          const double right = left + scale * kWidth / 64.0;
          const double bottom = shift / 32.0;
          const double top = bottom + scale * kHeight / 32.0;
          const TCorner corners[4] = {{-1, -1, 1, c, c, c, c, left, bottom},
                                      {1, -1, 1, c, c, c, c, right, bottom},
                                      {1, 1, 1, c, c, c, c, right, top},
                                      {-1, 1, 1, c, c, c, c, left, top}};
          for (const int mode : {GL_MODULATE, GL_REPLACE}) {
            Expect("scale " + std::to_string(scale) + " shift " + std::to_string(shift),
                   [&](TRenderCPU& gl) {
                     SetTexture(gl, 64, 32, filter);
                     gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, mode);
                     DrawQuad(gl, corners);
                   });
          }
        }
      }
    }
  }
}

// Colours that are the same at all corners, over texels of every byte: where a product of the two
// lies between two bytes, or so near to it that only the rounding of each pixel decides.
TEST_F(SpanBytes, ConstantColoursOverEveryByte) {
  // Blocks of nine texels, so that a linear filter finds four of one byte as well.
  constexpr std::size_t kSide = 48;
  std::vector<unsigned char> texels(kSide * kSide * 4);
  for (std::size_t i = 0; i < texels.size(); ++i) {
    const std::size_t texel = i / 4;
    const std::size_t block = texel / kSide / 3 * 16 + texel % kSide / 3;
    texels[i] = static_cast<unsigned char>(block * (2 * (i % 4) + 1)); // each channel in its order
  }
  std::vector<double> channels = {0.0, 1e-310, 1e-9, 0.5, 0.9, 0.9f, 128.0 / 255.0, 1.0};
  for (const auto& [k, b] : {std::pair{4, 5}, {31, 35}, {0, 1}, {0, 255}, {127, 255}, {253, 254}}) {
    const double between = (k + 0.5) / b;
    channels.insert(channels.end(),
                    {between, std::nextafter(between, 0.0), std::nextafter(between, 1.0)});
    for (const double part : {1e-14, 1e-12, 1e-10, 9e-10, 1.1e-9, 1e-7}) {
      channels.insert(channels.end(), {between * (1 - part), between * (1 + part)});
    }
  }
  for (std::size_t i = 0; i < channels.size(); ++i) {
    for (const double far : {1.0, 1.0000001, 3.0, 60.0, 65536.0}) {
      for (const bool all : {false, true}) {
        const unsigned int filter = (i + (all ? 1 : 0)) % 2 != 0 ? GL_NEAREST : GL_LINEAR;
        const double c = channels[i];
        const double other = channels[(i + 5) % channels.size()];
        const TCorner corners[4] = {{-1, -1, 1, all ? c : 0.3, other, c, c, 0, 0},
                                    {1, -1, far, all ? c : 0.7, other, c, c, 3, 0},
                                    {1, 1, far, all ? c : 0.1, other, c, c, 3, 1.5},
                                    {-1, 1, 1, all ? c : 0.9, other, c, c, 0, 1.5}};
        Expect("channel " + std::to_string(i) + " w " + std::to_string(far), [&](TRenderCPU& gl) {
          SetTexture(gl, 16, 16, filter);
          gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, kSide, kSide, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                        texels.data());
          DrawQuad(gl, corners);
        });
      }
    }
  }
}

// Passes a colour, texture coordinates, and as the secondary colour what is missing to a sum.
class TSumShader : public zx_test::TPassVertexShader {
public:
  TSumShader() : TPassVertexShader(4) {}
  void Begin() override {
    TPassVertexShader::Begin();
    m_Render->m_VarSecondary = 3;
  }
  void Execute(TRenderCPU::VAR_DATA* v) override {
    TPassVertexShader::Execute(v);
    const auto& color = (*v)[1];
    (*v)[3] = {Sum - color.x, Sum - color.y, Sum - color.z, 0.0};
  }

  double Sum = 0.0;
};

// Over white texels, a colour and a secondary colour that run against each other: their sum stands
// on the edge of a byte at each pixel, or near to it.
TEST_F(SpanBytes, SecondaryColoursBesideTexels) {
  const std::vector<unsigned char> white(4 * 4 * 4, 255);
  for (const unsigned int filter : {unsigned{GL_NEAREST}, unsigned{GL_LINEAR}}) {
    for (const double far : {1.0, 1.5, 40.0}) {
      for (int k = 3; k < 254; k += 25) {
        for (const double beside : {0.0, 2e-9, 2e-8, 6e-8, 2e-7, 6e-7, 2e-6, 2e-5}) {
          for (const double sign : {-1.0, 1.0}) {
            const double sum = (k + 0.5) / 255.0 + sign * beside;
            const TCorner corners[4] = {{-1, -1, 1, 0, sum, 0.3 * sum, 1, 0, 0},
                                        {1, -1, far, sum, 0, 0, 1, 3, 0},
                                        {1, 1, far, sum, 0.1 * sum, sum, 1, 3, 3},
                                        {-1, 1, 1, 0, sum, 0.7 * sum, 1, 0, 3}};
            Expect("sum " + std::to_string(sum) + " w " + std::to_string(far), [&](TRenderCPU& gl) {
              SetTexture(gl, 4, 4, filter);
              gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 4, 4, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                            white.data());
              gl.Enable(GL_LIGHTING);
              const zx_test::THeld<TSumShader> shader;
              shader->Sum = sum;
              const zx_test::THeld<Zx3D::TProgramCPU> program;
              program->SetShaderV(shader.Get());
              gl.SetProgram(program.Get());
              DrawQuad(gl, corners);
            });
          }
        }
      }
    }
  }
}

TEST_F(SpanBytes, CoordinatesOfAllKinds) {
  constexpr unsigned int kWraps[] = {GL_REPEAT, GL_CLAMP, GL_CLAMP_TO_BORDER, GL_CLAMP_TO_EDGE};
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  constexpr double kInf = std::numeric_limits<double>::infinity();
  constexpr double kRanges[][2] = {{0, 1},
                                   {0.25, 0.75},
                                   {-1, 1},
                                   {-3, -1},
                                   {-2, -2},
                                   {1, 1},
                                   {0, 1048576},
                                   {1e5, 1e6},
                                   {-1e6, 1e6},
                                   {0, 1e9},
                                   {0, 1e20},
                                   {-1e300, 1e300},
                                   {-5e-324, 0},
                                   {-1e-20, 0},
                                   {0, kInf},
                                   {kNaN, 1},
                                   {65535, 65537},
                                   // the last repeats below 2^20 texels of 3 and of 33
                                   {349524, 349526},
                                   {31774, 31776}};
  for (const unsigned int filter : {unsigned{GL_NEAREST}, unsigned{GL_LINEAR}}) {
    for (const int size : {1, 2, 3, 16, 33}) {
      for (const unsigned int wrap : kWraps) {
        for (const auto& range : kRanges) {
          const double a = range[0];
          const double b = range[1];
          const TCorner corners[4] = {{-1, -1, 1, 1, 0.5, 1, 1, a, 0.1},
                                      {1, -1, 2, 0, 1, 1, 1, b, 0.1},
                                      {1, 1, 3, 1, 0, 1, 1, b, b},
                                      {-1, 1, 1, 0.5, 1, 1, 1, a, a}};
          Expect("size " + std::to_string(size) + " wrap " + std::to_string(wrap) + " from " +
                     std::to_string(a) + " to " + std::to_string(b),
                 [&](TRenderCPU& gl) {
                   SetTexture(gl, size, size, filter);
                   gl.TexWrap2D(wrap, wrap);
                   DrawQuad(gl, corners);
                 });
        }
      }
    }
  }
}

} // namespace
