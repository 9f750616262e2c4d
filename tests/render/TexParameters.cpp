#include <functional>
#include <vector>

#include "TexturedScene.h"

using namespace Zx3D;
using namespace zx_test;

TEST(TexParameters, EitherWrapNameSetsBothAxes) {
  TTextured t;
  const std::vector<std::function<void(unsigned int, int)>> forms = {
      [&](unsigned int name, int v) { t->TexParameteri(GL_TEXTURE_2D, name, v); },
      [&](unsigned int name, int v) {
        t->TexParameterf(GL_TEXTURE_2D, name, static_cast<float>(v) + 0.75f); // is truncated
      },
      [&](unsigned int name, int v) {
        const float one = static_cast<float>(v) + 0.75f;
        t->TexParameterfv(GL_TEXTURE_2D, name, &one);
      }};
  for (const auto& set : forms) {
    for (const unsigned int name : {10242u, 10243u}) {
      for (const int mode : {10496, 10497, 33069, 33071}) {
        set(name, mode);
        EXPECT_EQ(static_cast<unsigned int>(mode), t.Sampler().m_WrapS);
        EXPECT_EQ(static_cast<unsigned int>(mode), t.Sampler().m_WrapT);
        const std::size_t index = mode == 10497 ? 0 : mode == 10496 ? 1 : mode == 33069 ? 2 : 3;
        EXPECT_TRUE(t.Sampler().m_GetValue ==
                    TTexSampler::s_GetValueFuncs[(index * 4 + index) * 12 + 3]);
      }
      for (const int mode : {0, 10495, 10498, 33068, 33070, 33072, 33648}) {
        set(name, mode);
        EXPECT_EQ(33071u, t.Sampler().m_WrapS);
        EXPECT_EQ(0u, t->GetError()) << "ignored without a word";
      }
    }
  }
}

TEST(TexParameters, AWrapThatOneAxisHasAlreadyStillSetsTheOther) {
  TTextured t;
  t->TexWrap2D(GL_CLAMP, GL_REPEAT);
  t->TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
  EXPECT_EQ(10496u, t.Sampler().m_WrapS);
  EXPECT_EQ(10496u, t.Sampler().m_WrapT);
}

TEST(TexParameters, EitherFilterNameSetsBothFilters) {
  TTextured t;
  const std::vector<std::function<void(unsigned int, int)>> forms = {
      [&](unsigned int name, int v) { t->TexParameteri(GL_TEXTURE_2D, name, v); },
      [&](unsigned int name, int v) {
        t->TexParameterf(GL_TEXTURE_2D, name, static_cast<float>(v) + 0.5f);
      },
      [&](unsigned int name, int v) {
        const float one = static_cast<float>(v) + 0.5f;
        t->TexParameterfv(GL_TEXTURE_2D, name, &one);
      }};
  for (const auto& set : forms) {
    for (const unsigned int name : {10240u, 10241u}) {
      for (const int mode : {9728, 9729}) {
        set(name, mode);
        EXPECT_EQ(static_cast<unsigned int>(mode), t.Sampler().m_FilterMin);
        EXPECT_EQ(static_cast<unsigned int>(mode), t.Sampler().m_FilterMag);
        EXPECT_TRUE(t.Sampler().m_GetValue == TTexSampler::s_GetValueFuncs[mode == 9729 ? 195 : 3]);
        EXPECT_EQ(0u, t->GetError());
      }
      for (const int mode : {0, 9727, 9730, 9984, 9985, 9986, 9987}) {
        set(name, mode);
        EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError()) << mode;
        EXPECT_EQ(9729u, t.Sampler().m_FilterMin);
      }
    }
  }
}

TEST(TexParameters, TheBorderColourComesByTheVectorFormOnly) {
  TTextured t;
  const float color[4] = {0.1f, -2, 3, 4.5f};
  t->TexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, color);
  EXPECT_TRUE(SameVec(V4{static_cast<double>(0.1f), -2, 3, 4.5}, t.Sampler().m_BorderColor));
  EXPECT_EQ(0u, t->GetError());
  t->TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, 1);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError());
  t->TexParameterf(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, 1);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError());
  for (const unsigned int name : {0u, 4099u, 4101u, 10239u, 10244u, 32882u}) {
    t->TexParameteri(GL_TEXTURE_2D, name, 9729);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError()) << name;
    t->TexParameterf(GL_TEXTURE_2D, name, 9729);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError()) << name;
    t->TexParameterfv(GL_TEXTURE_2D, name, color);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError()) << name;
  }
}

TEST(TexParameters, ParametersAreTheActiveUnits) {
  TTextured t;
  t->ActiveTexture(GL_TEXTURE0 + 4);
  t->TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  t->TexFilter2D(GL_LINEAR, GL_LINEAR);
  t->TexWrap2D(GL_CLAMP, GL_CLAMP_TO_EDGE);
  t->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
  EXPECT_EQ(9729u, t.Sampler(4).m_FilterMag);
  EXPECT_EQ(10496u, t.Sampler(4).m_WrapS);
  EXPECT_EQ(33071u, t.Sampler(4).m_WrapT);
  EXPECT_EQ(7681u, t->m_TexUnits[4].TexEnvMode);
  EXPECT_EQ(9728u, t.Sampler(0).m_FilterMag);
  EXPECT_EQ(10497u, t.Sampler(0).m_WrapS);
  EXPECT_EQ(8448u, t->m_TexUnits[0].TexEnvMode);
}

TEST(TexParameters, TexFilterAndTexWrapIgnoreWhatTheyDoNotKnow) {
  TTextured t;
  t->TexFilter2D(GL_LINEAR, GL_LINEAR);
  t->TexFilter2D(GL_NEAREST, GL_LINEAR);
  t->TexFilter2D(9987, 9987);
  EXPECT_EQ(9729u, t.Sampler().m_FilterMin);
  t->TexWrap2D(GL_CLAMP_TO_BORDER, GL_CLAMP);
  t->TexWrap2D(GL_CLAMP_TO_BORDER, 1);
  t->TexWrap2D(1, GL_CLAMP_TO_BORDER);
  EXPECT_EQ(33069u, t.Sampler().m_WrapS);
  EXPECT_EQ(10496u, t.Sampler().m_WrapT);
  EXPECT_EQ(0u, t->GetError());
}

TEST(TexParameters, TexEnviTakesTwoModes) {
  TTextured t;
  t->TexEnvi(8960, 8704, 7681);
  EXPECT_EQ(7681u, t->m_TexUnits[0].TexEnvMode);
  const struct {
    unsigned int Target, Name;
    int Mode;
  } refused[] = {{8959, 8704, 8448}, {8961, 8704, 8448}, {8960, 8703, 8448}, {8960, 8705, 8448},
                 {8960, 8704, 8447}, {8960, 8704, 8449}, {8960, 8704, 7680}, {8960, 8704, 7682},
                 {8960, 8704, 260},  {8960, 8704, 3042}, {8960, 8704, 0}};
  for (const auto& row : refused) {
    t->TexEnvi(row.Target, row.Name, row.Mode);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, t->GetError())
        << row.Target << " " << row.Name << " " << row.Mode;
    EXPECT_EQ(7681u, t->m_TexUnits[0].TexEnvMode);
  }
  t->TexEnvi(8960, 8704, 8448);
  EXPECT_EQ(8448u, t->m_TexUnits[0].TexEnvMode);
  EXPECT_EQ(0u, t->GetError());
}

TEST(TexParameters, WhatWasNotBuiltReports) {
  TTextured t;
  int n = 55;
  float f = 55;
  t->GetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &n);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError());
  t->GetTexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, &f);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError());
  t->GetTexLevelParameteriv(GL_TEXTURE_2D, 0, 0x1000, &n);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError());
  t->GetTexLevelParameterfv(GL_TEXTURE_2D, 0, 0x1000, &f);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, t->GetError());
  EXPECT_EQ(55, n);
  EXPECT_EQ(55, f);
  t->TexEnvf(8960, 8704, 7681);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, t->GetError());
  EXPECT_EQ(8448u, t->m_TexUnits[0].TexEnvMode);
  t->TexGeni(0x2000, 0x2500, 0x2401);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, t->GetError());
  t->TexGenf(0x2000, 0x2500, 0x2401);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, t->GetError());
  t->TexGend(0x2000, 0x2500, 0x2401);
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, t->GetError());
}

TEST(TexParameters, UnitsAreEnabledByNumber) {
  THeld<TRenderCPU> r;
  r->_EnableTexture2D(6, true);
  for (int unit = 0; unit < 8; ++unit) {
    EXPECT_EQ(unit == 6, r->m_TexUnits[unit].TexEnabled);
  }
  r->_EnableTexture2D(6, false);
  r->_EnableTexture2D(-1, true);
  r->_EnableTexture2D(8, true);
  for (const TRenderCPU::TTexUnit& unit : r->m_TexUnits) {
    EXPECT_FALSE(unit.TexEnabled);
  }
}

TEST(TexParameters, AUnitThatDoesNotExistTakesNothing) {
  for (const unsigned int texture : {33983u, 33992u, 0u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    TTextured t;
    const unsigned char pixels[64] = {};
    const float four[4] = {1, 1, 1, 1};
    TDataSurface image;
    t->ActiveTexture(texture);
    EXPECT_EQ(static_cast<std::int32_t>(texture - 33984u), t->m_ActiveTexture) << "unchecked";
    t->BindTexture(GL_TEXTURE_2D, 0);
    t->TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    t->TexSubImage2D(GL_TEXTURE_2D, 0, 0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    t->TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
    t->TexParameterf(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP);
    t->TexParameterfv(GL_TEXTURE_2D, GL_TEXTURE_BORDER_COLOR, four);
    t->TexFilter2D(GL_LINEAR, GL_LINEAR);
    t->TexWrap2D(GL_CLAMP, GL_CLAMP);
    t->TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_REPLACE);
    EXPECT_FALSE(t->MoveTexImage2D(GL_TEXTURE_2D, 0, &image));
    t->Enable(GL_TEXTURE_2D);
    EXPECT_FALSE(t->IsEnabled(GL_TEXTURE_2D));
    EXPECT_TRUE(t.IsUntouched());
    for (int unit = 0; unit < 8; ++unit) {
      EXPECT_EQ(9728u, t.Sampler(unit).m_FilterMin);
      EXPECT_EQ(10497u, t.Sampler(unit).m_WrapS);
      EXPECT_EQ(0, t.Sampler(unit).m_BorderColor.x);
      EXPECT_EQ(8448u, t->m_TexUnits[unit].TexEnvMode);
      EXPECT_FALSE(t->m_TexUnits[unit].TexEnabled);
    }
    EXPECT_EQ(&t.Texture(), t.Sampler().m_Surface);
  }
}
