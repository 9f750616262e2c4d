// Ordinary drawing raises no invalid operation, no division by zero and no overflow, through the
// reference walker and at every instruction set: a host that traps them can draw.

#include <algorithm>
#include <cfenv>
#include <functional>
#include <string>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

#include "StateChecks.h"
#include <ZxCore3D/render/kernels/SpanJob.h>

using namespace Zx3D;
using namespace zx_test;

namespace {

constexpr int kExceptions = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;
constexpr int kWidth = 61;
constexpr int kHeight = 47;

using TDraw = std::function<void(TRenderCPU&)>;

std::string NamesOf(int raised) {
  return std::string((raised & FE_INVALID) != 0 ? "invalid " : "") +
         ((raised & FE_DIVBYZERO) != 0 ? "division by zero " : "") +
         ((raised & FE_OVERFLOW) != 0 ? "overflow" : "");
}

/// Draws at all levels and looks for what was raised.
class FloatExceptions : public testing::Test {
protected:
  ~FloatExceptions() override { LimitSpanLevel(nullptr); }

  static void ExpectNone(const std::string& what, const TDraw& draw) {
    for (const char* level : Zx3D::kSpanPaths) {
      if (!LimitSpanLevel(level)) {
        continue; // not on this processor
      }
      const TScene scene(kWidth, kHeight);
      scene->Clear(true, true, true);
      std::feclearexcept(FE_ALL_EXCEPT);
      draw(*scene);
      EXPECT_EQ("", NamesOf(std::fetestexcept(kExceptions))) << level << ", " << what;
      EXPECT_GT(scene.Painted(), 0) << level << ", " << what;
    }
  }
};

/// What a caller submits, in ranges that callers use.
struct TVertex {
  double Position[3];
  double Normal[3];
  double Color[4];
  double TexCoord[2];
};

std::vector<TVertex> RandomVertices(TRandom& dice, int count, double reach) {
  std::vector<TVertex> list(static_cast<std::size_t>(count));
  for (TVertex& v : list) {
    for (double& c : v.Position) {
      c = dice.Between(-reach, reach);
    }
    v.Position[2] = dice.Between(-12, -0.5);
    for (double& c : v.Normal) {
      c = dice.Between(-1, 1);
    }
    for (double& c : v.Color) {
      c = dice.Between(0, 1);
    }
    for (double& c : v.TexCoord) {
      c = dice.Between(-1.5, 2.5);
    }
  }
  return list;
}

void Submit(TRenderCPU& r, unsigned int mode, const std::vector<TVertex>& list) {
  r.Begin(mode);
  for (const TVertex& v : list) {
    r.Normal3dv(v.Normal);
    r._Color4dv(v.Color);
    r.TexCoord2dv(v.TexCoord);
    r.Vertex3dv(v.Position);
  }
  r.End();
}

void SetArrays(TRenderCPU& r, const std::vector<TVertex>& list) {
  const int stride = sizeof(TVertex);
  r.VertexPointer(3, GL_DOUBLE, stride, list[0].Position);
  r.NormalPointer(GL_DOUBLE, stride, list[0].Normal);
  r.ColorPointer(4, GL_DOUBLE, stride, list[0].Color);
  r.TexCoordPointer(2, GL_DOUBLE, stride, list[0].TexCoord);
  for (const unsigned int array :
       {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY, GL_TEXTURE_COORD_ARRAY}) {
    r.EnableClientState(array);
  }
}

void SetPerspective(TRenderCPU& r) {
  r.MatrixMode(GL_PROJECTION);
  r.Frustum(-0.5, 0.5, -0.4, 0.4, 1, 10);
  r.MatrixMode(GL_MODELVIEW);
}

void SetTexture(TRenderCPU& r, TRandom& dice) {
  const int components = 1 + dice.Below(4);
  const int width = 1 + dice.Below(17);
  const int height = dice.Below(2) == 0 ? 8 : 1 + dice.Below(17);
  const bool floats = dice.Below(3) == 0;
  const auto count = static_cast<std::size_t>(width * height * components);
  std::vector<unsigned char> bytes(count);
  std::vector<float> numbers(count);
  for (std::size_t i = 0; i < count; ++i) {
    bytes[i] = static_cast<unsigned char>(dice.Below(256));
    numbers[i] = static_cast<float>(dice.Between(0, 1));
  }
  constexpr unsigned int kFormats[] = {GL_LUMINANCE, GL_LUMINANCE_ALPHA, GL_RGB, GL_RGBA};
  const unsigned int format = kFormats[components - 1];
  unsigned int id = 0;
  r.GenTextures(1, &id);
  r.BindTexture(GL_TEXTURE_2D, id);
  r.TexImage2D(GL_TEXTURE_2D, 0, static_cast<int>(format), width, height, 0, format,
               floats ? GL_FLOAT : GL_UNSIGNED_BYTE,
               floats ? static_cast<const void*>(numbers.data()) : bytes.data());
  const unsigned int filter = dice.Below(2) == 0 ? GL_NEAREST : GL_LINEAR;
  constexpr unsigned int kWraps[] = {GL_REPEAT, GL_CLAMP, GL_CLAMP_TO_BORDER, GL_CLAMP_TO_EDGE};
  r.TexFilter2D(filter, filter);
  r.TexWrap2D(kWraps[dice.Below(4)], kWraps[dice.Below(4)]);
  r.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE,
            static_cast<int>(dice.Below(2) == 0 ? GL_MODULATE : GL_REPLACE));
  r.Enable(GL_TEXTURE_2D);
}

void SetLights(TRenderCPU& r, TRandom& dice) {
  for (unsigned int i = 0; i < 3; ++i) {
    const float position[4] = {static_cast<float>(dice.Between(-3, 3)),
                               static_cast<float>(dice.Between(-3, 3)), 2.0f, i == 0 ? 0.0f : 1.0f};
    const float direction[3] = {0.1f, static_cast<float>(dice.Between(-0.3, 0.3)), -1.0f};
    r.Lightfv(GL_LIGHT0 + i, GL_POSITION, position);
    r.Lightfv(GL_LIGHT0 + i, GL_SPOT_DIRECTION, direction);
    r.Lightf(GL_LIGHT0 + i, GL_SPOT_CUTOFF, i == 2 ? 40.0f : 180.0f);
    r.Lightf(GL_LIGHT0 + i, GL_SPOT_EXPONENT, 2.0f);
    r.EnableLight(i, dice.Below(3) != 0);
  }
  const float shine[4] = {0.7f, 0.6f, 0.5f, 1.0f};
  r.Materialfv(GL_FRONT, GL_SPECULAR, shine);
  r.Materialf(GL_FRONT_AND_BACK, GL_SHININESS, static_cast<float>(dice.Below(128)));
  r.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, dice.Below(2));
  r.LightModeli(GL_LIGHT_MODEL_LOCAL_VIEWER, dice.Below(2));
  r.Enable(GL_NORMALIZE);
  r.EnableLighting(true);
}

void SetTests(TRenderCPU& r, TRandom& dice) {
  r.EnableDepthTest(dice.Below(2) == 0);
  r.DepthFunc(GL_NEVER + static_cast<unsigned int>(1 + dice.Below(7)));
  r.DepthMask(dice.Below(3) != 0);
  if (dice.Below(3) == 0) {
    r.Enable(GL_STENCIL_TEST);
    r.StencilFunc(GL_GEQUAL, 200, 0xFF);
    r.StencilOp(GL_KEEP, GL_INCR, GL_INVERT);
  }
  if (dice.Below(3) == 0) {
    r.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    r.Enable(GL_BLEND);
  }
  if (dice.Below(4) == 0) {
    r.Enable(GL_CULL_FACE);
  }
  if (dice.Below(4) == 0) {
    r.PolygonOffset(0.001f, 0);
    r.Enable(GL_POLYGON_OFFSET_FILL);
  }
  r.SetPerspectiveCorrectionHint(dice.Below(3) == 0 ? GL_FASTEST : GL_NICEST);
  r.ColorMask(1, dice.Below(5) != 0, 1, 1);
}

/// All modes in one random state, by vertices, arrays and elements.
void DrawScene(TRenderCPU& r, std::uint64_t seed) {
  TRandom dice(seed);
  SetPerspective(r);
  SetTests(r, dice);
  if (seed % 2 != 0) {
    SetTexture(r, dice);
  }
  if (seed % 4 >= 2) {
    SetLights(r, dice);
  }
  for (unsigned int mode = GL_POINTS; mode <= GL_QUADS; ++mode) {
    const double reach = dice.Below(3) == 0 ? 0.3 : 4;
    const std::vector<TVertex> list = RandomVertices(dice, 50 + dice.Below(60), reach);
    Submit(r, mode, list);
    SetArrays(r, list);
    r.DrawArrays(mode, 0, static_cast<int>(list.size()));
    std::vector<unsigned short> indices;
    for (std::size_t i = 0; i < list.size(); ++i) {
      indices.push_back(static_cast<unsigned short>(dice.Below(static_cast<int>(list.size()))));
    }
    r.DrawElements(mode, static_cast<int>(indices.size()), GL_UNSIGNED_SHORT, indices.data());
  }
  // Something to look at in every state: the scene is tested for having drawn at all.
  r.Disable(GL_STENCIL_TEST);
  r.EnableDepthTest(false);
  r.EnableCullFace(false);
  r.EnableLighting(false);
  r.Disable(GL_TEXTURE_2D);
  r._Color4d(1, 1, 1, 1);
  r.MatrixMode(GL_PROJECTION);
  r.LoadIdentity();
  DrawFullQuad(r);
}

TEST_F(FloatExceptions, RandomScenesRaiseNone) {
  for (std::uint64_t seed = 1; seed <= 60; ++seed) {
    ExpectNone("seed " + std::to_string(seed), [seed](TRenderCPU& r) { DrawScene(r, seed); });
    if (HasFailure()) {
      return;
    }
  }
}

// The host does not look at flags but traps: a child process would be ended by a signal.
TEST_F(FloatExceptions, AHostThatTrapsThemCanDraw) {
  feclearexcept(FE_ALL_EXCEPT);
  if (feenableexcept(kExceptions) == -1) {
    GTEST_SKIP() << "the processor cannot trap"; // which ARM leaves open
  }
  fedisableexcept(kExceptions);
  for (const char* level : Zx3D::kSpanPaths) {
    if (!LimitSpanLevel(level)) {
      continue;
    }
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      feclearexcept(FE_ALL_EXCEPT);
      feenableexcept(kExceptions);
      for (std::uint64_t seed = 100; seed < 112; ++seed) {
        TRenderCPU r;
        if (!r.Create(kWidth, kHeight, nullptr)) {
          _exit(1);
        }
        DrawScene(r, seed);
      }
      _exit(fegetexcept() == kExceptions ? 0 : 2); // and they are trapped as before
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFEXITED(status)) << level << ": signal " << WTERMSIG(status);
    EXPECT_EQ(0, WIFEXITED(status) ? WEXITSTATUS(status) : -1) << level;
  }
}

// What a host has raised before stays raised.
TEST_F(FloatExceptions, FlagsOfTheHostStay) {
  for (const char* level : Zx3D::kSpanPaths) {
    if (!LimitSpanLevel(level)) {
      continue;
    }
    const TScene scene(kWidth, kHeight);
    std::feclearexcept(FE_ALL_EXCEPT);
    std::feraiseexcept(FE_DIVBYZERO);
    DrawScene(*scene, 3);
    EXPECT_EQ(FE_DIVBYZERO, std::fetestexcept(kExceptions)) << level;
    std::feclearexcept(FE_ALL_EXCEPT);
  }
}

// A slot that nobody fills any more is still scaled by 1/w with each triangle: what a texture left
// there would grow beyond all bounds.
TEST_F(FloatExceptions, NorDoesWhatATextureLeft) {
  for (const bool arrays : {false, true}) {
    for (const unsigned int mode : {GL_TRIANGLES, GL_LINES, GL_QUADS}) {
      ExpectNone("mode " + std::to_string(mode), [arrays, mode](TRenderCPU& r) {
        TRandom dice(1);
        std::vector<TVertex> list = RandomVertices(dice, 6000, 0.4);
        for (TVertex& v : list) {
          v.Position[2] = dice.Between(-0.6, -0.3); // w below 1: near the eye
        }
        r.MatrixMode(GL_PROJECTION);
        r.Frustum(-0.1, 0.1, -0.1, 0.1, 0.1, 10);
        SetTexture(r, dice);
        Submit(r, mode, list);
        r.Disable(GL_TEXTURE_2D);
        if (arrays) {
          SetArrays(r, list);
          r.DrawArrays(mode, 0, 6000);
        } else {
          Submit(r, mode, list);
        }
      });
    }
  }
}

// Colours far outside 0 to 1 fit no byte and no integer before they are limited, the same at all
// corners or not.
TEST_F(FloatExceptions, NorDoColoursThatFitNoByte) {
  for (const unsigned int mode : {GL_POINTS, GL_LINES, GL_TRIANGLES, GL_QUADS}) {
    for (const bool arrays : {false, true}) {
      for (const bool varying : {false, true}) {
        ExpectNone("mode " + std::to_string(mode), [arrays, mode, varying](TRenderCPU& r) {
          TRandom dice(7);
          std::vector<TVertex> list = RandomVertices(dice, 120, 4);
          for (std::size_t i = 0; i < list.size(); ++i) {
            const double great = varying && i % 2 != 0 ? -1e12 : 1e12;
            const double colors[] = {great, 1e307, 3.5, 0.5};
            std::copy(std::begin(colors), std::end(colors), list[i].Color);
          }
          SetPerspective(r);
          if (arrays) {
            SetArrays(r, list);
            r.DrawArrays(mode, 0, 120);
          } else {
            Submit(r, mode, list);
          }
        });
      }
    }
  }
}

// Unit vectors of floats are longer than 1 as often as not, and the cosine then is above 1.
TEST_F(FloatExceptions, NorDoesASpotLightStraightAtAVertex) {
  ExpectNone("spot", [](TRenderCPU& r) {
    const float position[4] = {0, 0, 0, 1};
    const float direction[3] = {0.6f, 0.0f, -0.8f};
    r.Lightfv(GL_LIGHT0, GL_POSITION, position);
    r.Lightfv(GL_LIGHT0, GL_SPOT_DIRECTION, direction);
    r.Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, 30.0f);
    r.EnableLight(0, true);
    r.EnableLighting(true);
    r.Normal3d(0, 0, 1);
    for (const double z : {0.25, 0.5, 0.75, 1.0}) {
      r.Begin(GL_POINTS);
      r.Vertex3d(z * double{direction[0]}, 0, z * double{direction[2]});
      r.End();
    }
  });
}

} // namespace
