// Rows of every length, depths on the edge between two floats, and tests of whole runs: every
// instruction set leaves what the reference walker does, in all three surfaces and in the records.

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "LevelTest.h"
#include "StateChecks.h"
#include <ZxCore3D/render/ProgramCPU.h>

namespace {

using Zx3D::TRenderCPU;
using zx_test::TScene;

constexpr int kWidth = 150; // two whole runs of 64 pixels and a rest
constexpr int kHeight = 37;

class SpanRows : public zx_test::TLevelTest {
protected:
  SpanRows() : TLevelTest(kWidth, kHeight) {}

  // Onto depths in the middle of the range.
  void Expect(const std::string& what, const TDraw& draw) {
    TLevelTest::Expect(what, [&draw](TRenderCPU& gl) {
      gl.ClearDepth(0.75);
      gl.Clear(false, true, false);
      draw(gl);
    });
  }
};

struct TLook {
  bool Perspective;
  int Alpha; ///< 0: 1 throughout, 1: another number throughout, 2: running
  /// 0: within 0 to 1, 1: beyond, 2: some no numbers, 3: one for each triangle, 4: one red for each
  int Colour;
  unsigned int Depth; ///< 0: off
  bool Write;
};

// Random triangles of up to `side` pixels; by vertex or by arrays.
class TShapes {
public:
  TShapes(int count, double side, const TLook& look) {
    std::mt19937 random(static_cast<unsigned int>(count + 100 * side));
    const auto next = [&random](double low, double high) {
      return low + (high - low) * static_cast<double>(random()) / 4294967296.0;
    };
    for (int i = 0; i < count; ++i) {
      const double x = next(-4, kWidth);
      const double y = next(-4, kHeight);
      for (int k = 0; k < 3; ++k) {
        const double z = look.Perspective ? next(0.6, k == 0 ? 90.0 : 3.0) : next(-0.9, 0.9);
        const double w = look.Perspective ? z : 1.0;
        const double at[3] = {zx_test::Clip(x + next(0, side), kWidth) * w,
                              zx_test::Clip(y + next(0, side), kHeight) * w, z};
        Positions.insert(Positions.end(), at, at + 3);
        for (int c = 0; c < 4; ++c) {
          const bool same = k != 0 && (look.Colour == 3 || (look.Colour == 4 && c == 0));
          Colors.push_back(same ? Colors[Colors.size() - 4] : Channel(look, c, next));
        }
      }
    }
  }

  void ByVertex(TRenderCPU& gl) const {
    gl.Begin(GL_TRIANGLES);
    for (std::size_t i = 0; i < Positions.size() / 3; ++i) {
      gl.Color4dv(&Colors[4 * i]);
      gl.TexCoord3d(Colors[4 * i + 1], Colors[4 * i + 2] - 0.5, Colors[4 * i]);
      gl.Vertex3dv(&Positions[3 * i]);
    }
    gl.End();
  }

  void ByArrays(TRenderCPU& gl) const {
    gl.EnableClientState(GL_VERTEX_ARRAY);
    gl.EnableClientState(GL_COLOR_ARRAY);
    gl.VertexPointer(3, GL_DOUBLE, 0, Positions.data());
    gl.ColorPointer(4, GL_DOUBLE, 0, Colors.data());
    gl.DrawArrays(GL_TRIANGLES, 0, static_cast<int>(Positions.size() / 3));
  }

private:
  template <class TNext> static double Channel(const TLook& look, int channel, const TNext& next) {
    if (channel == 3 && look.Alpha < 2) {
      return look.Alpha == 0 ? 1.0 : 0.3;
    }
    const bool inside = look.Colour != 1 && look.Colour != 2;
    const double value = inside ? next(0, 1) : next(-1, 2);
    return look.Colour == 2 && value > 1.9 ? std::numeric_limits<double>::quiet_NaN() : value;
  }

  std::vector<double> Positions;
  std::vector<double> Colors;
};

// Passes a colour and, as the secondary colour, the texture coordinate.
class TSecondaryShader : public zx_test::TPassVertexShader {
public:
  TSecondaryShader() : TPassVertexShader(3) {}
  void Begin() override {
    TPassVertexShader::Begin();
    m_Render->m_VarTexCoord = -1;
    m_Render->m_VarSecondary = 2;
  }
};

void SetLook(TRenderCPU& gl, const TLook& look) {
  if (look.Perspective) { // w is z, and depth runs from z - 1
    constexpr double kDepthIsW[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1, 0, 0, -1, 0};
    gl.MatrixMode(GL_PROJECTION);
    gl.LoadMatrixd(kDepthIsW);
  }
  gl.EnableDepthTest(look.Depth != 0);
  if (look.Depth != 0) {
    gl.DepthFunc(look.Depth);
  }
  gl.DepthMask(look.Write ? 1 : 0);
}

constexpr unsigned int kDepths[] = {0, GL_LESS, GL_LEQUAL, GL_GREATER, GL_NOTEQUAL};

// A secondary colour of each sign, which is added to all channels but alpha.
TEST_F(SpanRows, SecondaryColours) {
  for (const double side : {1.5, 9.0, 30.0, 140.0}) {
    for (int i = 0; i < 2 * 3 * 5 * 3; ++i) {
      const TLook look = {i % 2 != 0, i / 2 % 3, i / 6 % 5, kDepths[i / 30 % 3], i / 30 != 0};
      const TShapes shapes(40, side, look);
      Expect("side " + std::to_string(side) + ", look " + std::to_string(i), [&](TRenderCPU& gl) {
        SetLook(gl, look);
        gl.Enable(GL_LIGHTING);
        const zx_test::THeld<TSecondaryShader> shader;
        const zx_test::THeld<Zx3D::TProgramCPU> program;
        program->SetShaderV(shader.Get());
        gl.SetProgram(program.Get());
        shapes.ByVertex(gl);
      });
    }
  }
}

TEST_F(SpanRows, TrianglesOfEverySizeAndLook) {
  for (const double side : {1.5, 5.0, 9.0, 17.0, 30.0, 140.0}) {
    for (int i = 0; i < 2 * 3 * 5 * 5 * 2; ++i) {
      const TLook look = {i % 2 != 0, i / 2 % 3, i / 6 % 5, kDepths[i / 30 % 5], i / 150 != 0};
      const TShapes shapes(40, side, look);
      for (const bool arrays : {false, true}) {
        Expect("side " + std::to_string(side) + ", look " + std::to_string(i) +
                   (arrays ? ", arrays" : ""),
               [&](TRenderCPU& gl) {
                 SetLook(gl, look);
                 arrays ? shapes.ByArrays(gl) : shapes.ByVertex(gl);
               });
      }
    }
  }
}

void SetTexture(TRenderCPU& gl, unsigned int filter, unsigned int wrap, int channels) {
  zx_test::TRandom random(11);
  std::vector<unsigned char> texels(static_cast<std::size_t>(20 * 12 * channels));
  for (unsigned char& byte : texels) {
    byte = static_cast<unsigned char>(random.Below(256));
  }
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  const unsigned int format = channels == 4 ? GL_RGBA : GL_RGB;
  gl.TexImage2D(GL_TEXTURE_2D, 0, format, 20, 12, 0, format, GL_UNSIGNED_BYTE, texels.data());
  gl.TexFilter2D(filter, filter);
  gl.TexWrap2D(wrap, wrap);
  gl.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_MODULATE);
  gl.Enable(GL_TEXTURE_2D);
}

// Short rows of every state, which share groups of pixels, over targets that hold all kinds of
// values; textures of four channels and of three, which kernels do not read themselves.
TEST_F(SpanRows, SmallTrianglesOfEveryState) {
  constexpr unsigned int kWraps[] = {GL_REPEAT, GL_CLAMP_TO_EDGE, GL_CLAMP};
  zx_test::TRandom random(13);
  for (const double side : {1.5, 5.0, 9.0, 17.0, 30.0, 50.0}) {
    for (int i = 0; i < 200; ++i) {
      const TLook look = {random.Below(2) != 0, random.Below(3), random.Below(5),
                          kDepths[random.Below(5)], random.Below(2) != 0};
      const int texture = random.Below(4); // none, nearest, linear, not for kernels
      const unsigned int wrap = kWraps[random.Below(3)];
      const bool blend = random.Below(2) != 0;
      const bool mask = random.Below(3) == 0;
      const bool stencil = random.Below(3) == 0;
      const bool offset = random.Below(3) == 0;
      const TShapes shapes(30, side, look);
      Expect("side " + std::to_string(side) + ", state " + std::to_string(i), [&](TRenderCPU& gl) {
        for (int y = 0; y < kHeight; ++y) {
          for (int x = 0; x < kWidth; ++x) {
            *TScene::At(*gl.m_StencilSurface, x, y) = static_cast<std::uint8_t>(x * 7 + y * 31);
          }
        }
        SetLook(gl, look);
        if (texture != 0) {
          SetTexture(gl, texture == 1 ? GL_NEAREST : GL_LINEAR, wrap, texture == 3 ? 3 : 4);
        }
        if (blend) {
          gl.Enable(GL_BLEND);
          gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
        }
        if (mask) {
          gl.ColorMask(1, 0, 1, 0);
        }
        if (stencil) {
          gl.Enable(GL_STENCIL_TEST);
          gl.StencilFunc(GL_GREATER, 0x80, 0xFF);
          gl.StencilOp(GL_INVERT, GL_DECR, GL_INCR);
        }
        gl.EnablePolygonOffsetFill(offset);
        gl.PolygonOffset(0.01, 0);
        shapes.ByVertex(gl);
      });
    }
  }
}

// Channels that lie between two bytes at every pixel, if nothing were rounded on the way, beside
// others that do not.
TEST_F(SpanRows, ConstantChannelsBetweenTwoBytes) {
  for (int i = 0; i < 64; ++i) {
    const double tie = (4 * i + 1.5) / 255;
    for (const int channel : {0, 1, 2, 3, 4}) { // 4: red and alpha
      for (const double far : {1.0, 2.0, 3.7}) {
        Expect("tie " + std::to_string(i) + ", channel " + std::to_string(channel),
               [&](TRenderCPU& gl) {
                 constexpr double kWIsZ[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
                 gl.MatrixMode(GL_PROJECTION);
                 gl.LoadMatrixd(kWIsZ);
                 gl.Begin(GL_QUADS);
                 for (int k = 0; k < 4; ++k) {
                   double color[4] = {0.1 + 0.2 * k, 0.9 - 0.2 * k, 0.3, 0.5 + 0.1 * k};
                   color[channel % 4] = tie;
                   color[channel == 4 ? 3 : channel] = tie;
                   const double w = k < 2 ? 1.0 : far;
                   gl.Color4dv(color);
                   gl.Vertex3d(w * (k == 1 || k == 2 ? 1.1 : -1.1), w * (k < 2 ? -0.5 : 0.8), w);
                 }
                 gl.End();
               });
      }
    }
  }
}

void DrawQuad(TRenderCPU& gl, double left, double right) {
  gl.Begin(GL_QUADS);
  gl.Vertex3d(-1, -1, 2 * left - 1);
  gl.Vertex3d(1, -1, 2 * right - 1);
  gl.Vertex3d(1, 1, 2 * right - 1);
  gl.Vertex3d(-1, 1, 2 * left - 1);
  gl.End();
}

void DrawSlope(TRenderCPU& gl, double left, double right) {
  gl.EnableDepthTest(true);
  gl.DepthFunc(GL_LEQUAL);
  gl.DepthMask(1);
  DrawQuad(gl, left, right);
}

// Depths that would lie just between two floats at every pixel, if nothing were rounded on the way:
// what is rounded decides which float it becomes, and so the least error would show.
TEST_F(SpanRows, DepthsBetweenTwoFloats) {
  constexpr double kUlp = 1.0 / (1 << 24); // of floats from 0.5 to 1
  for (int i = 0; i < 64; ++i) {
    const double middle = 0.5 + (i * 1000 + 0.5) * kUlp;
    for (const double step : {0.0, 1.0, 7.0, 63.0, 40001.0, 52347.0}) { // from pixel to pixel
      for (const double off : {0.0, 1e-16, -1e-16}) {
        const double left = middle - 0.5 * step * kUlp + off;
        Expect("middle " + std::to_string(i) + ", step " + std::to_string(step),
               [&](TRenderCPU& gl) { DrawSlope(gl, left, left + kWidth * step * kUlp); });
      }
    }
  }
}

// Depths of short rows in perspective that lie in the middle of two floats at every pixel, and are
// rounded to the even one.
TEST_F(SpanRows, ShortRowsInPerspectiveWithDepthsBetweenTwoFloats) {
  constexpr double kUlp = 1.0 / (1 << 24); // of floats from 0.5 to 1
  for (const unsigned int func : {GL_LESS, GL_LEQUAL}) {
    for (const double alpha : {1.0, 0.25}) {
      for (int i = 0; i < 24; ++i) {
        const double middle = 0.5 + (i * 1001 + 0.5) * kUlp;
        for (const double slope : {0.0, 1.0, 5.0}) { // in floats, from one side to the other
          const double depth[2] = {middle, middle + slope * kUlp};
          const auto draw = [&](TRenderCPU& gl) {
            gl.ClearDepth(1);
            gl.Clear(false, true, false);
            constexpr double kWIsZ[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0};
            gl.MatrixMode(GL_PROJECTION);
            gl.EnableDepthTest(true);
            gl.DepthFunc(func);
            // The vertex shader takes no z of its own here: w is z, and depth is set by the matrix.
            for (int k = 0; k < 6; ++k) {
              const double left = 10 + 22 * k;
              const double w[3] = {1, k % 2 == 0 ? 2.0 : 4.0, 2};
              gl.Begin(GL_TRIANGLES);
              for (int v = 0; v < 3; ++v) {
                const double x = zx_test::Clip(left + (v == 1 ? 17 : v == 2 ? 3 : 0), kWidth);
                const double y = zx_test::Clip(v == 2 ? 30 : 4, kHeight);
                // Clip z is w (2 depth - 1): exact, as w is a power of two.
                double matrix[16];
                std::copy(std::begin(kWIsZ), std::end(kWIsZ), matrix);
                matrix[10] = 2 * depth[v == 1 ? 1 : 0] - 1;
                gl.LoadMatrixd(matrix);
                gl.Color4d(0.1 + 0.3 * v, 0.9 - 0.2 * v, 0.4 + 0.1 * v,
                           alpha == 1.0 ? 1.0 : 0.25 + 0.1 * v);
                gl.Vertex3d(x * w[v], y * w[v], w[v]);
              }
              gl.End();
            }
          };
          Expect("middle " + std::to_string(i) + ", slope " + std::to_string(slope), draw);
          for (const char* const level : Zx3D::kSpanLevels) {
            if (!Zx3D::LimitSpanLevel(level)) {
              continue;
            }
            TScene s(kWidth, kHeight);
            draw(*s);
            if (slope == 0.0) { // half to even
              const int odd = i * 1001 % 2;
              const auto even = static_cast<float>(0.5 + (i * 1001 + odd) * kUlp);
              EXPECT_EQ(even, s.Depth(14, 8)) << level;
            }
          }
        }
      }
    }
  }
}

// Runs behind or before what is there: wholly, from some pixel on, by the last pixel alone; with
// stencils that step where depth fails.
TEST_F(SpanRows, RunsThatFailAsAWhole) {
  constexpr unsigned int kFuncs[] = {GL_LESS, GL_LEQUAL, GL_GREATER, GL_GEQUAL};
  const double ends[][2] = {{0.2, 0.3},  {0.8, 0.7},     {0.5, 0.5},        {0.2, 0.8},
                            {0.8, 0.45}, {0.5, 0.50001}, {0.4999999, 0.51}, {0.9, 0.49999}};
  for (const unsigned int func : kFuncs) {
    for (const auto& [left, right] : ends) {
      for (const int stencil : {0, 1, 2}) {
        for (const float offset : {0.0f, 1e-3f}) {
          Expect("function " + std::to_string(func) + ", from " + std::to_string(left) + " to " +
                     std::to_string(right) + ", stencil " + std::to_string(stencil),
                 [&](TRenderCPU& gl) {
                   DrawSlope(gl, 0.5, 0.5);
                   for (int y = 0; y < kHeight; ++y) {
                     for (int x = 0; x < kWidth; ++x) {
                       *TScene::At(*gl.m_StencilSurface, x, y) =
                           static_cast<std::uint8_t>(stencil == 2 ? x / 70 : x * 7 + y * 31);
                     }
                   }
                   if (stencil != 0) {
                     gl.Enable(GL_STENCIL_TEST);
                     gl.StencilFunc(stencil == 1 ? GL_LESS : GL_EQUAL, 1, 0xFF);
                     gl.StencilOp(GL_DECR, stencil == 1 ? GL_INVERT : GL_KEEP, GL_INCR);
                   }
                   gl.EnablePolygonOffsetFill(offset != 0);
                   gl.PolygonOffset(offset, 0);
                   gl.Color4d(0.2, 0.4, 0.6, 1);
                   gl.DepthFunc(func);
                   DrawQuad(gl, left, right);
                 });
        }
      }
    }
  }
}

// Tiny depths, where the margin of the proof ends, and a fragment depth of -0.
TEST_F(SpanRows, DepthsNextToZero) {
  for (const double z : {0.0, 1e-12, 1e-25, 1e-300, -1e-25, 5e-324}) {
    for (const double slope : {0.0, 1e-21, 1e-30, -1e-30, 0.25}) {
      Expect("z " + std::to_string(z), [&](TRenderCPU& gl) { DrawSlope(gl, z, z + slope); });
    }
  }
}

// Whole runs of stencil bytes: every function and operation, with masks, over a surface that holds
// all kinds of bytes and depths that let half of the pixels pass.
TEST_F(SpanRows, StencilOfWholeRuns) {
  constexpr unsigned int kOperations[] = {GL_KEEP,      GL_ZERO, GL_REPLACE,   GL_INCR,
                                          GL_INCR_WRAP, GL_DECR, GL_DECR_WRAP, GL_INVERT};
  for (unsigned int func = GL_NEVER; func <= GL_ALWAYS; ++func) {
    for (std::size_t op = 0; op < 8; ++op) {
      for (const unsigned int mask : {0xFFu, 0x5Au}) {
        Expect("function " + std::to_string(func) + ", operation " + std::to_string(op),
               [&](TRenderCPU& gl) {
                 for (int y = 0; y < kHeight; ++y) {
                   for (int x = 0; x < kWidth; ++x) {
                     *TScene::At(*gl.m_StencilSurface, x, y) =
                         static_cast<std::uint8_t>(x * 7 + y * 31);
                   }
                 }
                 gl.Enable(GL_STENCIL_TEST);
                 gl.StencilFunc(func, 0x80, mask);
                 gl.StencilMask(mask);
                 gl.StencilOp(kOperations[op], kOperations[(op + 3) % 8],
                              kOperations[(op + 5) % 8]);
                 gl.EnableDepthTest(true);
                 gl.DepthFunc(GL_LESS);
                 gl.DepthMask(1);
                 gl.Begin(GL_QUADS);
                 gl.Color4d(1, 0.5, 0.25, 1);
                 gl.Vertex3d(-1, -1, -0.9);
                 gl.Color4d(0, 1, 0.25, 1);
                 gl.Vertex3d(1, -1, 0.9);
                 gl.Vertex3d(1, 1, 0.9);
                 gl.Vertex3d(-1, 1, -0.9);
                 gl.End();
               });
      }
    }
  }
}

// Short and long rows that are set up together, the stencil leaving each row in turn the last one
// that is drawn: a row of either kind comes into the record, whichever kernel ran last.
TEST_F(SpanRows, ShortRowsBesideLongOnes) {
  constexpr int kFirst = 8;
  constexpr int kRows = 12;
  for (const bool textured : {false, true}) {
    for (const double apex : {kFirst - 0.3, kFirst + kRows - 0.7}) { // rows grow, or shrink
      for (int last = kFirst; last < kFirst + kRows; ++last) {
        Expect("row " + std::to_string(last), [&](TRenderCPU& gl) {
          for (int y = 0; y <= last; ++y) {
            std::fill_n(TScene::At(*gl.m_StencilSurface, 0, y), kWidth, std::uint8_t{1});
          }
          gl.Enable(GL_STENCIL_TEST);
          gl.StencilFunc(GL_EQUAL, 1, 0xFF);
          gl.EnableDepthTest(true);
          gl.DepthMask(1);
          if (textured) {
            const unsigned char texels[16] = {200, 3, 90, 255, 7, 180, 33, 240,
                                              90,  1, 2,  130, 5, 250, 60, 77};
            unsigned int name = 0;
            gl.GenTextures(1, &name);
            gl.BindTexture(GL_TEXTURE_2D, name);
            gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, texels);
            gl.Enable(GL_TEXTURE_2D);
          }
          const double base = kFirst + kFirst + kRows - 1 - apex;
          const double at[3][2] = {{3, apex}, {3, base}, {kWidth - 5, base}};
          gl.Begin(GL_TRIANGLES);
          for (int k = 0; k < 3; ++k) {
            gl.Color4d(0.1 + 0.4 * k, 0.9 - 0.3 * k, 0.2 * k, 0.7);
            gl.TexCoord2d(0.3 * k, 1.1 - 0.4 * k);
            gl.Vertex3d(zx_test::Clip(at[k][0], kWidth), zx_test::Clip(at[k][1], kHeight), 0.1 * k);
          }
          gl.End();
        });
      }
    }
  }
}

// An array draw leaves its last colour to the end: faces that follow without a pixel, culled or
// hidden, and the way they face, change nothing of it.
TEST_F(SpanRows, TheLastColourOfAnArrayDraw) {
  const double positions[] = {-0.9, -0.9, 0,   0.9, -0.9, 0,   0,   0.9, 0,   // drawn, in front
                              -0.5, -0.5, 0.9, 0,   0.5,  0.9, 0.5, 0,   0.9, // hidden, back
                              -0.5, -0.5, -2,  0,   0.5,  -2,  0.5, 0,   -2}; // outside
  const double colors[] = {1, 0, 0, 0, 1, 0, 0, 0, 1, 1, 1, 1, 1, 1,
                           1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  for (const int count : {3, 6, 9}) {
    for (const bool lit : {false, true}) {
      Expect("count " + std::to_string(count), [&](TRenderCPU& gl) {
        gl.EnableDepthTest(true);
        gl.DepthFunc(GL_LESS);
        gl.DepthMask(1);
        if (lit) {
          const float ambient[4] = {0.5f, 0.25f, 0.125f, 1};
          gl.Enable(GL_LIGHTING);
          gl.Enable(GL_LIGHT0);
          gl.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
          gl.Materialfv(GL_BACK, GL_AMBIENT, ambient);
        }
        gl.EnableClientState(GL_VERTEX_ARRAY);
        gl.EnableClientState(GL_COLOR_ARRAY);
        gl.VertexPointer(3, GL_DOUBLE, 0, positions);
        gl.ColorPointer(3, GL_DOUBLE, 0, colors);
        gl.DrawArrays(GL_TRIANGLES, 0, count);
      });
    }
  }
}

} // namespace
