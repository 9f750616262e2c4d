#include <vector>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

bool SameMaterial(const TRenderCPU::TMaterial& a, const TRenderCPU::TMaterial& b) {
  return a.Ambient == b.Ambient && a.Diffuse == b.Diffuse && a.Specular == b.Specular &&
         a.Emission == b.Emission && a.Shininess == b.Shininess;
}

V4 Widened(const float* v) {
  return {static_cast<double>(v[0]), static_cast<double>(v[1]), static_cast<double>(v[2]),
          static_cast<double>(v[3])};
}

constexpr float kFour[4] = {0.1f, 0.2f, 0.3f, 0.4f};

} // namespace

TEST(Materials, TheLightModelFlags) {
  THeld<TRenderCPU> r;
  const struct {
    unsigned int Name;
    bool TRenderCPU::*Flag;
  } rows[] = {{2897, &TRenderCPU::m_LightModelLocalViewer},
              {2898, &TRenderCPU::m_LightModelTwoSide},
              {33272, &TRenderCPU::m_LightModelColorControl}};
  for (const auto& row : rows) {
    bool& flag = (*r).*row.Flag;
    const int two = 2, zero = 0;
    const float half = 0.5f, zerof = 0.0f;
    r->LightModeli(row.Name, -1);
    EXPECT_TRUE(flag);
    r->LightModeli(row.Name, 0);
    EXPECT_FALSE(flag);
    r->LightModelf(row.Name, half);
    EXPECT_TRUE(flag);
    r->LightModelf(row.Name, -0.0f);
    EXPECT_FALSE(flag);
    r->LightModeliv(row.Name, &two);
    EXPECT_TRUE(flag);
    r->LightModeliv(row.Name, &zero);
    EXPECT_FALSE(flag);
    r->LightModelfv(row.Name, &half);
    EXPECT_TRUE(flag) << "a half is not 0";
    r->LightModelfv(row.Name, &zerof);
    EXPECT_FALSE(flag);
  }
  r->LightModeli(GL_LIGHT_MODEL_COLOR_CONTROL, 0x81F9); // GL_SINGLE_COLOR
  EXPECT_TRUE(r->m_LightModelColorControl);
  EXPECT_EQ(0u, r->GetError());
}

TEST(Materials, TheAmbientLightOfTheScene) {
  THeld<TRenderCPU> r;
  const int ints[4] = {2147483647, -2147483647 - 1, 1, 1000000000};
  r->LightModeliv(GL_LIGHT_MODEL_AMBIENT, ints);
  V4 expected;
  for (std::size_t i = 0; i < 4; ++i) {
    expected[i] = ints[i] * 4.656612875245797e-10;
  }
  EXPECT_TRUE(SameVec(expected, r->m_LightModelAmbient));
  r->LightModelfv(GL_LIGHT_MODEL_AMBIENT, kFour);
  EXPECT_TRUE(SameVec(Widened(kFour), r->m_LightModelAmbient));
  EXPECT_EQ(0u, r->GetError());
}

TEST(Materials, NeighboursOfTheLightModelNamesAreRefused) {
  THeld<TRenderCPU> r;
  const float f[4] = {1, 1, 1, 1};
  const int n[4] = {1, 1, 1, 1};
  for (const unsigned int name : {0u, 2896u, 2899u, 2900u, 33271u, 33273u}) {
    r->LightModeli(name, 1);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
    r->LightModelf(name, 1);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
    if (name != GL_LIGHT_MODEL_AMBIENT) {
      r->LightModeliv(name, n);
      EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
      r->LightModelfv(name, f);
      EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
    }
  }
  EXPECT_FALSE(r->m_LightModelLocalViewer || r->m_LightModelTwoSide || r->m_LightModelColorControl);
  EXPECT_TRUE(SameVec(V4{0.2, 0.2, 0.2, 1}, r->m_LightModelAmbient));
}

TEST(Materials, MaterialfSetsTheShininessOfEitherFaceOrBoth) {
  THeld<TRenderCPU> r;
  r->Materialf(GL_FRONT, GL_SHININESS, 200);
  EXPECT_EQ(200, r->m_MaterialFront.Shininess);
  EXPECT_EQ(0, r->m_MaterialBack.Shininess);
  r->Materialf(GL_BACK, GL_SHININESS, -3.5f);
  EXPECT_EQ(200, r->m_MaterialFront.Shininess);
  EXPECT_EQ(-3.5, r->m_MaterialBack.Shininess);
  r->Materialf(GL_FRONT_AND_BACK, GL_SHININESS, 5);
  EXPECT_EQ(5, r->m_MaterialFront.Shininess);
  EXPECT_EQ(5, r->m_MaterialBack.Shininess);
  EXPECT_EQ(0u, r->GetError());

  for (const unsigned int face : {0u, 1027u, 1030u, 1031u, 1033u}) {
    r->Materialf(face, GL_SHININESS, 7);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << face;
  }
  for (const unsigned int name : {0u, 4608u, 4609u, 4610u, 5632u, 5634u, 5635u}) {
    r->Materialf(GL_FRONT, name, 7);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
  }
  EXPECT_EQ(5, r->m_MaterialFront.Shininess);
}

TEST(Materials, MaterialfvSetsOneRecordByFace) {
  const struct {
    unsigned int Name;
    std::vector<V4 TRenderCPU::TMaterial::*> Fields;
  } rows[] = {{4608, {&TRenderCPU::TMaterial::Ambient}},
              {4609, {&TRenderCPU::TMaterial::Diffuse}},
              {4610, {&TRenderCPU::TMaterial::Specular}},
              {5632, {&TRenderCPU::TMaterial::Emission}},
              {5634, {&TRenderCPU::TMaterial::Ambient, &TRenderCPU::TMaterial::Diffuse}}};
  for (const unsigned int face : {1028u, 1029u, 1032u}) {
    for (const auto& row : rows) {
      THeld<TRenderCPU> r;
      TRenderCPU::TMaterial expected = r->m_MaterialFront;
      const TRenderCPU::TMaterial untouched = expected;
      for (const auto field : row.Fields) {
        expected.*field = Widened(kFour);
      }
      r->Materialfv(face, row.Name, kFour);
      EXPECT_EQ(0u, r->GetError());
      EXPECT_TRUE(SameMaterial(face == 1029 ? untouched : expected, r->m_MaterialFront));
      EXPECT_TRUE(SameMaterial(face == 1029 ? expected : untouched, r->m_MaterialBack))
          << "both faces go to the front record only";
    }
    THeld<TRenderCPU> r;
    const float shininess = -7.5f;
    r->Materialfv(face, GL_SHININESS, &shininess);
    EXPECT_EQ(face == 1029 ? 0 : -7.5, r->m_MaterialFront.Shininess);
    EXPECT_EQ(face == 1029 ? -7.5 : 0, r->m_MaterialBack.Shininess);
  }
}

TEST(Materials, MaterialfvRefusesOtherFacesAndNames) {
  THeld<TRenderCPU> r;
  const TRenderCPU::TMaterial front = r->m_MaterialFront, back = r->m_MaterialBack;
  for (const unsigned int face : {0u, 1027u, 1030u, 1031u, 1033u}) {
    r->Materialfv(face, GL_DIFFUSE, kFour);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << face;
  }
  for (const unsigned int name : {0u, 4607u, 4611u, 5631u, 5635u}) {
    for (const unsigned int face : {1028u, 1029u, 1032u}) {
      r->Materialfv(face, name, kFour);
      EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << name;
    }
  }
  EXPECT_TRUE(SameMaterial(front, r->m_MaterialFront));
  EXPECT_TRUE(SameMaterial(back, r->m_MaterialBack));
}

TEST(Materials, ColorMaterialAndLightingAreStored) {
  THeld<TRenderCPU> r;
  r->ColorMaterial(77, 88); // unchecked
  EXPECT_EQ(77u, r->m_ColorMaterialFace);
  EXPECT_EQ(88u, r->m_ColorMaterialMode);
  r->EnableLighting(true);
  EXPECT_TRUE(r->m_Lighting);
  r->EnableLighting(false);
  EXPECT_FALSE(r->m_Lighting);
  EXPECT_EQ(0u, r->GetError());
}

TEST(Materials, FogIsStoredByName) {
  THeld<TRenderCPU> r;
  r->Fog(2917u, 12345);
  EXPECT_EQ(12345, r->m_Fog.Mode) << "unchecked";
  r->Fog(2917u, -9729.9f);
  EXPECT_EQ(-9729, r->m_Fog.Mode) << "truncated";
  r->Fog(2914u, 0.1f);
  r->Fog(2915u, 0.2f);
  r->Fog(2916u, -0.3f);
  EXPECT_SAME_BITS(static_cast<double>(0.1f), r->m_Fog.Density);
  EXPECT_SAME_BITS(static_cast<double>(0.2f), r->m_Fog.Start);
  EXPECT_SAME_BITS(static_cast<double>(-0.3f), r->m_Fog.End);

  const float v[4] = {0.5f, 0.6f, 0.7f, 0.8f}, mode[1] = {2048.7f};
  r->Fog(2914u, v);
  r->Fog(2915u, v + 1);
  r->Fog(2916u, v + 2);
  r->Fog(2917u, mode);
  r->Fog(2918u, v);
  EXPECT_SAME_BITS(static_cast<double>(v[0]), r->m_Fog.Density);
  EXPECT_SAME_BITS(static_cast<double>(v[1]), r->m_Fog.Start);
  EXPECT_SAME_BITS(static_cast<double>(v[2]), r->m_Fog.End);
  EXPECT_EQ(2048, r->m_Fog.Mode);
  EXPECT_TRUE(SameVec(Widened(v), r->m_Fog.Color));
  EXPECT_EQ(0u, r->GetError());
}

TEST(Materials, OtherFogNamesReportAnInvalidValue) {
  THeld<TRenderCPU> r;
  const float v[4] = {1, 1, 1, 1};
  for (unsigned int name = 2910; name < 2922; ++name) {
    if (name != 2917) {
      r->Fog(name, 3);
      EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError()) << name;
    }
    if (name < 2914 || name > 2917) {
      r->Fog(name, 3.0f);
      EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError()) << name;
    }
    if (name < 2914 || name > 2918) {
      r->Fog(name, v);
      EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError()) << name;
    }
  }
  EXPECT_EQ(2048, r->m_Fog.Mode);
  EXPECT_EQ(1, r->m_Fog.Density);
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, r->m_Fog.Color));
}

TEST(Materials, FogModeReadsBackAndDrawsTheSame) {
  TScene plain(16, 16), fogged(16, 16);
  fogged->Enable(GL_FOG);
  fogged->Fog(GL_FOG_MODE, GL_LINEAR);
  const float color[4] = {1, 0, 1, 1};
  fogged->Fog(GL_FOG_COLOR, color);
  fogged->Fog(GL_FOG_DENSITY, 100.0f);
  int mode = 0;
  fogged->GetIntegerv(GL_FOG_MODE, &mode);
  EXPECT_EQ(GL_LINEAR, mode);
  for (TScene* s : {&plain, &fogged}) {
    (*s)->Color4d(0.2, 0.4, 0.6, 0.8);
    DrawFullQuad(**s, 0.5);
  }
  EXPECT_EQ(256, plain.Painted());
  EXPECT_EQ(AllBytes(*plain), AllBytes(*fogged));
}

TEST(Materials, TheShadeModel) {
  THeld<TRenderCPU> r;
  r->ShadeModel(GL_SMOOTH);
  EXPECT_EQ(7425u, r->m_ShadeModel);
  EXPECT_EQ(0u, r->GetError());
  EXPECT_EQ("@virtual void Zx3D::TRenderCPU::ShadeModel(GLenum): Under construction!",
            Thrown([&] { r->ShadeModel(7424); }));
  EXPECT_EQ(0u, r->GetError());
  for (const unsigned int mode : {0u, 7423u, 7426u, 0xFFFFFFFFu}) {
    r->ShadeModel(mode);
    EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << mode;
  }
  EXPECT_EQ(7425u, r->m_ShadeModel);
}
