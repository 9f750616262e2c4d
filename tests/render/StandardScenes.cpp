// The standard pair of shaders against the plain formulation: random scenes, unlit and lit, with
// and without a texture. Vertices are taken from the standard vertex shader itself, texels from the
// sampler; everything between and behind them is worked out a second time.

#include <ZxCore3D/render/TRenderCPU.h>

#include <iterator>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/render/kernels/SpanJob.h>

#include "ReferenceScene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;

/// What a caller submits.
struct TInput {
  vec_t_<double, 4> Position, Color, TexCoord;
  vec_t_<double, 3> Normal;
};

void SetCurrent(TRenderCPU& r, const TInput& in) {
  r.Color4dv(&in.Color.x);
  r.TexCoord4dv(&in.TexCoord.x);
  r.Normal3dv(&in.Normal.x);
}

std::vector<TInput> RandomInputs(TDice& dice, int count) {
  std::vector<TInput> list;
  for (int i = 0; i < count; ++i) {
    TInput in;
    in.Position = {dice.Between(-3, 3), dice.Between(-3, 3), dice.Between(-12, -1), 1};
    in.Color = {dice.Between(-0.2, 1.3), dice.Between(0, 1), dice.Between(0, 1),
                dice.Between(0.1, 1)};
    if (dice.Chance(3)) {
      in.Color.y = dice.Chance(50) ? std::numeric_limits<double>::quiet_NaN()
                                   : std::numeric_limits<double>::infinity();
    }
    in.TexCoord = {dice.Between(-1.5, 2.5), dice.Between(-1.5, 2.5), 0, 1};
    in.Normal = {dice.Between(-1, 1), dice.Between(-1, 1), dice.Between(-1, 1)};
    list.push_back(in);
  }
  return list;
}

/// The vertices as the standard vertex shader makes them in this context.
std::vector<TRefVertex> Shaded(TRenderCPU& r, unsigned int mode, const std::vector<TInput>& list) {
  std::vector<TRefVertex> shaded;
  r.Begin(mode);
  for (const TInput& in : list) {
    SetCurrent(r, in);
    r.m_CurVertex = in.Position;
    TRenderCPU::VAR_DATA v = {};
    r.m_VertexShader->Execute(&v);
    TRefVertex out;
    out.Slots.resize(static_cast<std::size_t>(r.m_VarCount));
    std::memcpy(out.Slots.data(), &v, out.Slots.size() * sizeof(TRefSlot));
    shaded.push_back(out);
  }
  r.End();
  return shaded;
}

/// The fixed fragment stage, with the slot table that the last `Begin` left.
std::function<bool(const TRefVertex&, TRefFragment&)> FixedStage(TRenderCPU& r) {
  const auto slot = [](int preferred, int otherwise) {
    return static_cast<std::size_t>(preferred >= 0 ? preferred : otherwise);
  };
  const auto front = static_cast<std::size_t>(r.m_VarColor);
  const std::size_t back = slot(r.m_VarBackColor, r.m_VarColor);
  const bool lit = r.m_Lighting;
  const std::size_t frontSecondary = slot(r.m_VarSecondary, 0); // read only when lit
  const std::size_t backSecondary = slot(r.m_VarBackSecondary, lit ? r.m_VarSecondary : 0);
  const auto coord = slot(r.m_VarTexCoord, 0);
  TRenderCPU* const render = &r;
  return [=](const TRefVertex& v, TRefFragment& f) {
    const TRefSlot& primary = v[f.FrontFacing ? front : back];
    TRefSlot color = primary;
    bool addsSecondary = lit;
    const TRenderCPU::TTexUnit& unit = render->m_TexUnits[0];
    if (unit.TexEnabled) {
      const vec_t_<double, 4> st = {v[coord][0], v[coord][1], v[coord][2], v[coord][3]};
      vec_t_<double, 4> texel = {0, 0, 0, 0};
      render->m_TexUnits[0].Sampler.GetValue(st, &texel);
      const bool replaces = unit.TexEnvMode == 7681;
      for (std::size_t k = 0; k < 4; ++k) {
        color[k] = replaces ? texel[k] : primary[k] * texel[k];
      }
      addsSecondary = lit && !replaces;
    }
    if (addsSecondary) {
      for (std::size_t k = 0; k < 3; ++k) {
        color[k] += v[f.FrontFacing ? frontSecondary : backSecondary][k];
      }
    }
    for (double& c : color) {
      c = c < 0 ? 0 : c > 1 ? 1 : c;
    }
    f.Color = color;
    return true;
  };
}

/// Takes the limit on the instruction set away when a scene is done.
struct TLevelGuard {
  ~TLevelGuard() { Zx3D::LimitSpanLevel(nullptr); }
};

/// Everything behind the vertex stage, in one random state per list.
void RunScene(unsigned int seed, bool lit, bool textured) {
  TDice dice(seed);
  const TLevelGuard guard;
  constexpr unsigned int kLevels = std::size(Zx3D::kSpanLevels);
  const unsigned int level = seed % (kLevels + 2); // one that isn't there changes nothing
  Zx3D::LimitSpanLevel(level < kLevels    ? Zx3D::kSpanLevels[level]
                       : level == kLevels ? "reference"
                                          : nullptr);
  const int width = 1 + dice.Below(45);
  const int height = 1 + dice.Below(33);
  TPair pair(width, height);
  pair.Litter(dice);
  TRenderCPU& r = *pair.Scene;
  r.MatrixMode(GL_PROJECTION);
  r.Frustum(-1, 1, -1, 1, 1.5, 10);
  r.MatrixMode(GL_MODELVIEW);
  if (lit) {
    const float position[4] = {1, 2, 3, static_cast<float>(dice.Below(2))};
    const float shine[4] = {0.7f, 0.6f, 0.5f, 1.0f};
    r.Lightfv(GL_LIGHT0, GL_POSITION, position);
    r.Materialfv(GL_FRONT_AND_BACK, GL_SPECULAR, shine);
    r.Materialf(GL_FRONT_AND_BACK, GL_SHININESS, 3.0f);
    r.EnableLight(0, true);
    r.EnableLighting(true);
    r.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, dice.Below(2));
  }
  if (textured) {
    const bool floats = dice.Chance(30);
    const int components = dice.Chance(60) ? 4 : 3;
    const int w = 1 + dice.Below(9);
    const int h = 1 + dice.Below(9);
    std::vector<float> texelsF;
    std::vector<std::uint8_t> texels;
    for (int i = 0; i < w * h * components; ++i) {
      texels.push_back(static_cast<std::uint8_t>(dice.Below(256)));
      texelsF.push_back(static_cast<float>(dice.Between(-0.5, 1.5)));
    }
    unsigned int id = 0;
    r.GenTextures(1, &id);
    r.BindTexture(GL_TEXTURE_2D, id);
    r.PixelStorei(GL_UNPACK_ALIGNMENT, 1);
    r.TexImage2D(GL_TEXTURE_2D, 0, components == 4 ? GL_RGBA : GL_RGB, w, h, 0,
                 components == 4 ? GL_RGBA : GL_RGB, floats ? GL_FLOAT : GL_UNSIGNED_BYTE,
                 floats ? static_cast<const void*>(texelsF.data()) : texels.data());
    const unsigned int filter = dice.Chance(50) ? 0x2600u : 0x2601u;
    const unsigned int wraps[] = {0x2901, 0x2900, 0x812D, 0x812F};
    r.TexFilter2D(filter, filter);
    r.TexWrap2D(dice.Of(wraps), dice.Of(wraps));
    r.TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, dice.Chance(70) ? 8448 : 7681);
    r.Enable(GL_TEXTURE_2D);
  }
  EXPECT_EQ(0u, r.GetError()) << seed;

  for (int i = 0; i < 5; ++i) {
    TRefState state = RandomState(dice);
    const auto mode =
        static_cast<unsigned int>(dice.Chance(70) ? 4 + dice.Below(4) : dice.Below(4));
    const std::vector<TInput> list = RandomInputs(dice, 3 + dice.Below(10));
    Apply(state, r);
    const std::vector<TRefVertex> shaded = Shaded(r, mode, list);
    state.Shader = FixedStage(r);
    pair.Reference.State = state;
    pair.Reference.Draw(mode, shaded);
    r.Begin(mode);
    for (const TInput& in : list) {
      SetCurrent(r, in);
      r.Vertex4dv(&in.Position.x);
    }
    r.End();
    ASSERT_EQ("", pair.Difference()) << "seed " << seed << ", list " << i << ", mode " << mode;
  }
}

TEST(StandardScenes, Unlit) {
  for (unsigned int seed = 0; seed < 300 && !HasFailure(); ++seed) {
    RunScene(seed, false, false);
  }
}

TEST(StandardScenes, UnlitAndTextured) {
  for (unsigned int seed = 1000; seed < 1400 && !HasFailure(); ++seed) {
    RunScene(seed, false, true);
  }
}

TEST(StandardScenes, Lit) {
  for (unsigned int seed = 2000; seed < 2300 && !HasFailure(); ++seed) {
    RunScene(seed, true, false);
  }
}

TEST(StandardScenes, LitAndTextured) {
  for (unsigned int seed = 3000; seed < 3300 && !HasFailure(); ++seed) {
    RunScene(seed, true, true);
  }
}

} // namespace
