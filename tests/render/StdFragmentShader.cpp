#include <ZxCore3D/render/StdFragmentShader.h>

#include <cmath>
#include <limits>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

using TVar = TRenderCPU::VAR_DATA;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// A context between Begin and End, and a record whose slots hold colours of their own.
class TFragments {
public:
  TFragments(bool lit, bool twoSided, bool textured = false) : m_Scene(4, 4) {
    TRenderCPU& r = *m_Scene;
    r.EnableLighting(lit);
    r.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, twoSided);
    r._EnableTexture2D(0, textured);
    r.Begin(GL_TRIANGLES);
    for (std::size_t i = 0; i < 8; ++i) {
      const double d = static_cast<double>(i);
      m_Var[i] = {0.01 + d / 16, 0.02 + d / 16, 0.03 + d / 16, 0.04 + d / 16};
    }
    m_Fragment.Color = {-5, -5, -5, -5};
    m_Fragment.X = m_Fragment.Y = 0;
    m_Fragment.FrontFacing = true;
    m_Fragment.Depth = 0.125f;
  }

  TRenderCPU* operator->() { return m_Scene.Get(); }
  V4& operator[](int slot) { return m_Var[static_cast<std::size_t>(slot)]; }

  V4 Run(bool front = true) {
    const TVar before = m_Var;
    m_Fragment.FrontFacing = front;
    EXPECT_TRUE(m_Scene->m_FragmentShader->Execute(&m_Var, &m_Fragment));
    EXPECT_EQ(0.125f, m_Fragment.Depth) << "depth is never written";
    EXPECT_EQ(front, m_Fragment.FrontFacing);
    for (std::size_t i = 0; i < 8; ++i) {
      EXPECT_TRUE(SameVec(before[i], m_Var[i]) || std::isnan(before[i].x));
    }
    return m_Fragment.Color;
  }
  void SetColor(const V4& color) { m_Fragment.Color = color; }

private:
  TScene m_Scene;
  TVar m_Var;
  TRenderCPU::FS_DATA m_Fragment;
};

V4 PlusRgb(V4 a, const V4& b) {
  for (std::size_t i = 0; i < 3; ++i) {
    a[i] += b[i];
  }
  return a;
}

/// One texel of four doubles on unit 0.
class TTexel {
public:
  TTexel(TFragments& f, const V4& texel) {
    m_Surface.Create(1, 1, DATA_FORMAT_RGBA, DATA_TYPE_DOUBLE, 4);
    std::memcpy(m_Surface.Data, &texel.x, 32);
    m_Sampler = &f->m_TexUnits[0].Sampler;
    EXPECT_TRUE(m_Sampler->SetSurface(&m_Surface));
    EXPECT_TRUE(m_Sampler->SetWrap(GL_CLAMP_TO_EDGE, GL_CLAMP_TO_EDGE));
  }
  ~TTexel() { m_Sampler->SetSurface(nullptr); }

private:
  TDataSurface m_Surface;
  TRenderCPU::TTexSampler* m_Sampler;
};

} // namespace

TEST(StdFragmentShader, IsAloneAtFirstAndCalculatesNoDepth) {
  THeld<TStdFragmentShaderCPU> shader;
  EXPECT_EQ(nullptr, shader->m_Render);
  EXPECT_EQ(0xFFFFFFFFu, shader->GetUniformLocation("texture"));
  EXPECT_FALSE(shader->IsCalcDepth());
  shader->Begin(); // without a context, as they do nothing
  shader->End();
  TScene s;
  EXPECT_EQ(s.Get(), s->m_FragmentShader->m_Render);
  EXPECT_FALSE(s->m_CalcDepth);
}

TEST(StdFragmentShader, TheFaceChoosesTheColours) {
  for (const bool lit : {false, true}) {
    for (const bool two : {false, true}) {
      TFragments f(lit, two);
      const V4 front = lit ? PlusRgb(f[1], f[2]) : f[1];
      EXPECT_TRUE(SameVec(front, f.Run(true)));
      const V4 back = lit && two ? PlusRgb(f[3], f[4]) : front;
      EXPECT_TRUE(SameVec(back, f.Run(false))) << "one-sided, the back takes the front's slots";
    }
  }
}

TEST(StdFragmentShader, EachBackSlotFallsBackByItself) {
  TFragments f(true, true);
  f->m_VarBackColor = -1;
  EXPECT_TRUE(SameVec(PlusRgb(f[1], f[4]), f.Run(false)));
  f->m_VarBackColor = 3;
  f->m_VarBackSecondary = -1;
  EXPECT_TRUE(SameVec(PlusRgb(f[3], f[2]), f.Run(false)));
}

TEST(StdFragmentShader, TheSecondaryColourNeedsLighting) {
  TFragments f(true, true);
  f->EnableLighting(false);
  EXPECT_TRUE(SameVec(f[1], f.Run(true)));
  EXPECT_TRUE(SameVec(f[3], f.Run(false))) << "the slots stay those of Begin";
}

TEST(StdFragmentShader, ASlotThatIsNotThereIsNeverFollowed) {
  TFragments f(false, false);
  f->EnableLighting(true); // m_VarSecondary is -1
  EXPECT_TRUE(SameVec(f[1], f.Run(true)));
  f->m_VarSecondary = 8;
  EXPECT_TRUE(SameVec(f[1], f.Run(false)));
  f->_EnableTexture2D(0, true);
  TTexel texel(f, {0.5, 0.5, 0.5, 0.5});
  for (const int slot : {-1, 8, 1000000, -1000000}) {
    f->m_VarTexCoord = slot;
    const V4 c = f.Run(true); // whatever it samples at
    EXPECT_TRUE(c.x >= 0 && c.x <= 1) << slot;
  }
}

TEST(StdFragmentShader, Clamps) {
  TFragments f(false, false);
  f[1] = {1.5, -0.2, 1.0, 0.0};
  EXPECT_TRUE(SameVec(V4{1, 0, 1, 0}, f.Run()));
  f[1] = {std::nextafter(1.0, 2.0), -5e-324, std::nextafter(1.0, 0.0), 5e-324};
  EXPECT_TRUE(SameVec(V4{1, 0, std::nextafter(1.0, 0.0), 5e-324}, f.Run()));
  f[1] = {HUGE_VAL, -HUGE_VAL, -0.0, 0.5};
  EXPECT_TRUE(SameVec(V4{1, 0, -0.0, 0.5}, f.Run())) << "-0.0 is not below 0";
  f[1] = {kNan, 2, kNan, -1};
  const V4 c = f.Run();
  EXPECT_TRUE(std::isnan(c.x) && std::isnan(c.z)) << "no number stays no number";
  EXPECT_EQ(1, c.y);
  EXPECT_EQ(0, c.w);
}

TEST(StdFragmentShader, TheSumIsClampedAndNotItsParts) {
  TFragments f(true, false);
  f[1] = {1.5, -0.5, 0.75, 0.5};
  f[2] = {-0.75, 0.75, 0.5, 9};
  EXPECT_TRUE(SameVec(V4{0.75, 0.25, 1, 0.5}, f.Run()));
}

TEST(StdFragmentShader, ReplaceTakesTheTexelAlone) {
  TFragments f(true, true, true);
  f->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  TTexel texel(f, {0.1, 0.2, 0.3, 0.4});
  EXPECT_TRUE(SameVec(V4{0.1, 0.2, 0.3, 0.4}, f.Run(true)));
  EXPECT_TRUE(SameVec(V4{0.1, 0.2, 0.3, 0.4}, f.Run(false))) << "neither lit colour nor its alpha";
}

TEST(StdFragmentShader, ModulateMultipliesAndAddsTheSecondaryAfterwards) {
  const V4 texel = {0.9, 0.7, 0.5, 0.3};
  for (const bool lit : {false, true}) {
    for (const bool two : {false, true}) {
      TFragments f(lit, two, true);
      TTexel bound(f, texel);
      for (const bool front : {true, false}) {
        const bool back = !front && lit && two;
        V4 expected = f[back ? 3 : 1];
        for (std::size_t i = 0; i < 4; ++i) {
          expected[i] *= texel[i];
        }
        if (lit) {
          expected = PlusRgb(expected, f[back ? 4 : 2]);
        }
        EXPECT_TRUE(SameVec(expected, f.Run(front)));
      }
    }
  }
}

TEST(StdFragmentShader, ABlackTexelLeavesTheHighlightWithAlphaZero) {
  TFragments f(true, false, true);
  TTexel texel(f, {0, 0, 0, 0});
  EXPECT_TRUE(SameVec(V4{f[2].x, f[2].y, f[2].z, 0}, f.Run()));
}

TEST(StdFragmentShader, AnotherEnvironmentLeavesTheColourThatCameIn) {
  TFragments f(true, false, true);
  TTexel texel(f, {0.9, 0.7, 0.5, 0.3});
  f->m_TexUnits[0].TexEnvMode = 260; // GL_ADD, which TexEnvi does not let in
  f.SetColor({0.25, 1.25, -1, 0.5});
  EXPECT_TRUE(SameVec(V4{0.25, 1, 0, 0.5}, f.Run())) << "clamped all the same";
}

TEST(StdFragmentShader, TheCoordinateIsNotDividedByItsQ) {
  TFragments f(false, false, true);
  f->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  TDataSurface surface;
  surface.Create(2, 1, DATA_FORMAT_LUMINANCE, DATA_TYPE_DOUBLE, 1);
  const double texels[2] = {0.25, 0.75};
  std::memcpy(surface.Data, texels, sizeof(texels));
  f->m_TexUnits[0].Sampler.SetSurface(&surface);
  f[2] = {0.75, 0, 0, 4};
  EXPECT_EQ(0.75, f.Run().x);
  f->m_TexUnits[0].Sampler.SetSurface(nullptr);
}

TEST(StdFragmentShader, WithoutASurfaceTheBorderColourIsTheTexel) {
  TFragments f(false, false, true);
  f->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  f->m_TexUnits[0].Sampler.SetBorderColor(V4{0.1, 0.2, 0.3, 0.4});
  EXPECT_TRUE(SameVec(V4{0.1, 0.2, 0.3, 0.4}, f.Run()));
}

TEST(StdFragmentShader, OnlyUnitZeroIsSampled) {
  TFragments f(false, false);
  for (int unit = 1; unit < 8; ++unit) {
    f->_EnableTexture2D(unit, true);
    f->m_TexUnits[unit].Sampler.SetBorderColor(V4{0, 0, 0, 0});
  }
  EXPECT_TRUE(SameVec(f[1], f.Run()));
}

TEST(StdFragmentShader, TheSamplersOwnFunctionIsCalled) {
  TFragments f(false, false, true);
  f->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  TDataSurface surface;
  surface.Create(2, 1, DATA_FORMAT_LUMINANCE, DATA_TYPE_DOUBLE, 1);
  const double texels[2] = {0.25, 0.75};
  std::memcpy(surface.Data, texels, sizeof(texels));
  f->m_TexUnits[0].Sampler.SetSurface(&surface);
  f[2] = {0.5, 0.5, 0, 1};
  EXPECT_EQ(0.75, f.Run().x);
  f->TexFilter2D(GL_LINEAR, GL_LINEAR);
  EXPECT_EQ(0.5, f.Run().x) << "an even mix of both columns";
  f->m_TexUnits[0].Sampler.SetSurface(nullptr);
}

TEST(StdFragmentShader, ATexturedLitQuadEndsInTheSurface) {
  TScene s(4, 4);
  unsigned int id = 0;
  s->GenTextures(1, &id);
  s->BindTexture(GL_TEXTURE_2D, id);
  const unsigned char texel[4] = {51, 102, 153, 255};
  s->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, texel);
  s->Enable(GL_TEXTURE_2D);
  s->_Color4d(1, 0.5, 1, 1);
  DrawFullQuad(*s);
  // 102 * 0.00392156862745098 * 0.5 * 255 + 0.5 = 51.5, and so on
  EXPECT_EQ((TPixel{51, 51, 153, 255}), s.Color(0, 0));
  EXPECT_EQ((TPixel{51, 51, 153, 255}), s.Color(3, 3));
  EXPECT_EQ(0u, s->GetError());
}
