#include <cmath>
#include <functional>
#include <vector>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

constexpr double kPi = 3.141592653589793;

bool SameLight(const TRenderCPU::TLight& a, const TRenderCPU::TLight& b) {
  return a.Enabled == b.Enabled && a.Spot == b.Spot && a.Position == b.Position &&
         a.Ambient == b.Ambient && a.Diffuse == b.Diffuse && a.Specular == b.Specular &&
         a.SpotDirection == b.SpotDirection && a.SpotExponent == b.SpotExponent &&
         a.SpotCutoff == b.SpotCutoff && a.SpotCutoffRad == b.SpotCutoffRad &&
         a.ConstantAttenuation == b.ConstantAttenuation &&
         a.LinearAttenuation == b.LinearAttenuation &&
         a.QuadraticAttenuation == b.QuadraticAttenuation;
}

/// Runs a call that must change no light, and returns the error that it leaves.
unsigned int ErrorOf(TRenderCPU& r, const std::function<void()>& call) {
  std::vector<TRenderCPU::TLight> before(r.m_Lights, r.m_Lights + 8);
  call();
  for (std::size_t i = 0; i < 8; ++i) {
    EXPECT_TRUE(SameLight(before[i], r.m_Lights[i])) << "light " << i << " changed";
  }
  return r.GetError();
}

V4 Widened(const float* v) {
  return {static_cast<double>(v[0]), static_cast<double>(v[1]), static_cast<double>(v[2]),
          static_cast<double>(v[3])};
}

constexpr float kFour[4] = {0.1f, 0.2f, 0.3f, 0.4f};

} // namespace

TEST(Lights, Defaults) {
  THeld<TRenderCPU> r;
  for (std::size_t i = 0; i < 8; ++i) {
    const TRenderCPU::TLight& light = r->m_Lights[i];
    const double c = i == 0 ? 1 : 0;
    EXPECT_FALSE(light.Enabled);
    EXPECT_FALSE(light.Spot);
    EXPECT_TRUE(SameVec(V4{0, 0, 1, 0}, light.Position));
    EXPECT_TRUE(SameVec(V4{0, 0, 0, 1}, light.Ambient));
    EXPECT_TRUE(SameVec(V4{c, c, c, c}, light.Diffuse)) << i;
    EXPECT_TRUE(SameVec(V4{c, c, c, c}, light.Specular)) << i;
    EXPECT_TRUE(SameVec(V3{0, 0, 1}, light.SpotDirection));
    EXPECT_EQ(0, light.SpotExponent);
    EXPECT_EQ(180, light.SpotCutoff);
    EXPECT_SAME_BITS(kPi, light.SpotCutoffRad);
    EXPECT_EQ(1, light.ConstantAttenuation);
    EXPECT_EQ(0, light.LinearAttenuation);
    EXPECT_EQ(0, light.QuadraticAttenuation);
  }
  for (const TRenderCPU::TMaterial* m : {&r->m_MaterialFront, &r->m_MaterialBack}) {
    EXPECT_TRUE(SameVec(V4{0.2, 0.2, 0.2, 1}, m->Ambient));
    EXPECT_TRUE(SameVec(V4{0.8, 0.8, 0.8, 1}, m->Diffuse));
    EXPECT_TRUE(SameVec(V4{0, 0, 0, 1}, m->Specular));
    EXPECT_TRUE(SameVec(V4{0, 0, 0, 1}, m->Emission));
    EXPECT_EQ(0, m->Shininess);
  }
  EXPECT_FALSE(r->m_LightModelLocalViewer);
  EXPECT_FALSE(r->m_LightModelTwoSide);
  EXPECT_FALSE(r->m_LightModelColorControl);
  EXPECT_TRUE(SameVec(V4{0.2, 0.2, 0.2, 1}, r->m_LightModelAmbient));
  EXPECT_FALSE(r->m_Lighting);
  EXPECT_EQ(0, r->m_EnabledLightCount);
  EXPECT_FALSE(r->m_ColorMaterial);
  EXPECT_EQ(1032u, r->m_ColorMaterialFace);
  EXPECT_EQ(5634u, r->m_ColorMaterialMode);
  EXPECT_EQ(7425u, r->m_ShadeModel);
  EXPECT_EQ(2048, r->m_Fog.Mode);
  EXPECT_EQ(1, r->m_Fog.Density);
  EXPECT_EQ(0, r->m_Fog.Start);
  EXPECT_EQ(1, r->m_Fog.End);
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, r->m_Fog.Color));
  EXPECT_FALSE(r->m_FogEnabled);
}

TEST(Lights, EnablingCountsEachLightOnce) {
  THeld<TRenderCPU> r;
  r->EnableLight(3, true);
  r->EnableLight(3, true);
  EXPECT_EQ(1, r->m_EnabledLightCount);
  r->EnableLight(7, true);
  EXPECT_EQ(2, r->m_EnabledLightCount);
  r->EnableLight(5, false);
  EXPECT_EQ(2, r->m_EnabledLightCount);
  r->EnableLight(3, false);
  r->EnableLight(3, false);
  EXPECT_EQ(1, r->m_EnabledLightCount);
  EXPECT_FALSE(r->_IsEnableLight(3));
  EXPECT_TRUE(r->_IsEnableLight(7));
  EXPECT_EQ(0u, r->GetError());
}

TEST(Lights, TheListOfEnabledLightsIsMadeByBeginInAscendingOrder) {
  TScene s(4, 4);
  s->EnableLight(6, true);
  s->EnableLight(1, true);
  s->EnableLight(4, true);
  s->Begin(GL_POINTS);
  EXPECT_EQ(1, s->m_EnabledLights[0]);
  EXPECT_EQ(4, s->m_EnabledLights[1]);
  EXPECT_EQ(6, s->m_EnabledLights[2]);
  s->End();
  s->EnableLight(1, false);
  EXPECT_EQ(1, s->m_EnabledLights[0]) << "the list waits for Begin";
  s->Begin(GL_POINTS);
  EXPECT_EQ(4, s->m_EnabledLights[0]);
  s->End();
}

TEST(Lights, AnIndexOutOfRangeReportsAllOnes) {
  THeld<TRenderCPU> r;
  for (const unsigned long index : {8ul, 9ul, 0xFFFFFFFFul, ~0ul}) {
    EXPECT_EQ(kNoSuchIndex, ErrorOf(*r, [&] { r->EnableLight(index, true); }));
    EXPECT_EQ(0, r->m_EnabledLightCount);
  }
  for (const int index : {-1, 8, 100}) {
    EXPECT_FALSE(r->_IsEnableLight(index));
    EXPECT_EQ(kNoSuchIndex, r->GetError());
  }
  for (int index = 0; index < 8; ++index) {
    EXPECT_FALSE(r->_IsEnableLight(index));
    EXPECT_EQ(0u, r->GetError());
  }
}

TEST(Lights, LightsAreRefusedBetweenBeginAndEnd) {
  TScene s(4, 4);
  s->Begin(GL_TRIANGLES);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, ErrorOf(*s, [&] { s->EnableLight(0, true); }));
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, ErrorOf(*s, [&] { s->EnableLight(8, true); }))
      << "before the index is looked at";
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION},
            ErrorOf(*s, [&] { s->Lightf(GL_LIGHT0, GL_SPOT_EXPONENT, 2); }));
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, ErrorOf(*s, [&] { s->Lightf(1, 1, 2); }));
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION},
            ErrorOf(*s, [&] { s->Lightfv(GL_LIGHT0, GL_AMBIENT, kFour); }));
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, ErrorOf(*s, [&] { s->Lightfv(1, 1, kFour); }));
  EXPECT_EQ(0, s->m_EnabledLightCount);
  float out[4] = {};
  s->GetLight(GL_LIGHT0, GL_DIFFUSE, out);
  EXPECT_EQ(0u, s->GetError()) << "reading is allowed";
  EXPECT_EQ(1.0f, out[0]);

  // What is not refused: materials, the light model, lighting itself.
  s->Materialf(GL_FRONT, GL_SHININESS, 3);
  s->Materialfv(GL_FRONT, GL_DIFFUSE, kFour);
  s->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
  s->EnableLighting(true);
  s->ColorMaterial(GL_FRONT, GL_DIFFUSE);
  EXPECT_EQ(0u, s->GetError());
  EXPECT_EQ(3, s->m_MaterialFront.Shininess);
  s->End();
}

TEST(Lights, ALightOutsideTheEightReportsAllOnes) {
  THeld<TRenderCPU> r;
  for (const unsigned int light : {0u, 7u, 16383u, 16392u, 16400u, 0xFFFFFFFFu}) {
    EXPECT_EQ(kNoSuchIndex, ErrorOf(*r, [&] { r->Lightf(light, GL_SPOT_CUTOFF, 45); }));
    EXPECT_EQ(kNoSuchIndex, ErrorOf(*r, [&] { r->Lightfv(light, GL_AMBIENT, kFour); }));
    EXPECT_EQ(kNoSuchIndex, ErrorOf(*r, [&] { r->Lightfv(light, 1, kFour); })) << "before pname";
    float out[4] = {9, 9, 9, 9};
    r->GetLight(light, GL_DIFFUSE, out);
    EXPECT_EQ(kNoSuchIndex, r->GetError());
    EXPECT_EQ(9.0f, out[0]);
  }
  for (unsigned int light = 16384; light < 16392; ++light) {
    r->Lightf(light, GL_SPOT_EXPONENT, static_cast<float>(light - 16380));
    EXPECT_EQ(0u, r->GetError());
    EXPECT_EQ(light - 16380.0, r->m_Lights[light - 16384].SpotExponent);
  }
}

TEST(Lights, NamesOutsideTheListAreRefused) {
  THeld<TRenderCPU> r;
  const float legal[4] = {45, 45, 45, 45};
  for (unsigned int pname = 4600; pname < 4630; ++pname) {
    const bool vector = pname >= 4608 && pname <= 4617;
    const bool scalar = pname >= 4613 && pname <= 4617;
    if (!vector) {
      EXPECT_EQ(unsigned{GL_INVALID_ENUM},
                ErrorOf(*r, [&] { r->Lightfv(GL_LIGHT2, pname, legal); }))
          << pname;
      float out[4] = {9, 9, 9, 9};
      r->GetLight(GL_LIGHT2, pname, out);
      EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError()) << pname;
      EXPECT_EQ(9.0f, out[0]);
    } else {
      r->Lightfv(GL_LIGHT2, pname, legal);
      EXPECT_EQ(0u, r->GetError()) << pname;
    }
    if (!scalar) {
      EXPECT_EQ(unsigned{GL_INVALID_ENUM}, ErrorOf(*r, [&] { r->Lightf(GL_LIGHT2, pname, 45); }))
          << pname;
    } else {
      r->Lightf(GL_LIGHT2, pname, 45);
      EXPECT_EQ(0u, r->GetError()) << pname;
    }
  }
}

TEST(Lights, ColoursAreWidened) {
  THeld<TRenderCPU> r;
  const float a[4] = {0.1f, -0.2f, 3.3f, 0.4f}, d[4] = {0.5f, 0.6f, 0.7f, 0.8f},
              s[4] = {0.9f, 1.1f, 1.2f, 1.3f};
  r->Lightfv(GL_LIGHT1, GL_AMBIENT, a);
  r->Lightfv(GL_LIGHT1, GL_DIFFUSE, d);
  r->Lightfv(GL_LIGHT1, GL_SPECULAR, s);
  EXPECT_TRUE(SameVec(Widened(a), r->m_Lights[1].Ambient));
  EXPECT_TRUE(SameVec(Widened(d), r->m_Lights[1].Diffuse));
  EXPECT_TRUE(SameVec(Widened(s), r->m_Lights[1].Specular));
  float out[5] = {9, 9, 9, 9, 9};
  r->GetLight(GL_LIGHT1, GL_AMBIENT, out);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(a[i], out[i]);
  }
  r->GetLight(GL_LIGHT1, GL_DIFFUSE, out);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(d[i], out[i]);
  }
  r->GetLight(GL_LIGHT1, GL_SPECULAR, out);
  for (std::size_t i = 0; i < 4; ++i) {
    EXPECT_EQ(s[i], out[i]);
  }
  EXPECT_EQ(9.0f, out[4]);
}

TEST(Lights, PositionsUnderTheIdentity) {
  THeld<TRenderCPU> r;
  const float direction[4] = {0, 0, 5, 0}, point[4] = {0, 0, 5, 2}, none[4] = {0, 0, 0, 0};
  r->Lightfv(GL_LIGHT0, GL_POSITION, direction);
  EXPECT_TRUE(SameVec(V4{0, 0, 1, 0}, r->m_Lights[0].Position));
  r->Lightfv(GL_LIGHT0, GL_POSITION, point);
  EXPECT_TRUE(SameVec(V4{0, 0, 5, 2}, r->m_Lights[0].Position)) << "no division by w";
  r->Lightfv(GL_LIGHT0, GL_POSITION, none);
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, r->m_Lights[0].Position)) << "a length of 0 divides nothing";
}

TEST(Lights, PositionsGoThroughAllColumnsOfTheModelviewMatrixOfTheMoment) {
  TRandom random(21);
  for (int round = 0; round < 100; ++round) {
    THeld<TRenderCPU> r;
    M4 m = random.Matrix(-2, 2);
    const bool direction = round % 2 == 0;
    if (direction) {
      m[3] = m[7] = m[11] = 0; // so that the w of the result is the w given times element 15
    }
    r->LoadMatrix(m);
    const float v[4] = {static_cast<float>(random.Between(-3, 3)),
                        static_cast<float>(random.Between(-3, 3)),
                        static_cast<float>(random.Between(-3, 3)),
                        direction ? 0.0f : static_cast<float>(random.Between(0.5, 2))};
    r->Lightfv(GL_LIGHT3, GL_POSITION, v);
    const V4 p = Widened(v);
    V4 expected;
    for (std::size_t i = 0; i < 4; ++i) {
      expected[i] = m[i] * p.x + m[4 + i] * p.y + m[8 + i] * p.z + m[12 + i] * p.w;
    }
    if (expected.w == 0) {
      const double len =
          std::sqrt(expected.x * expected.x + expected.y * expected.y + expected.z * expected.z);
      for (std::size_t i = 0; i < 3; ++i) {
        expected[i] = expected[i] / len;
      }
    }
    EXPECT_EQ(direction, expected.w == 0);
    EXPECT_TRUE(SameVec(expected, r->m_Lights[3].Position));

    const V4 stored = r->m_Lights[3].Position;
    r->Translated(1, 2, 3);
    EXPECT_TRUE(SameVec(stored, r->m_Lights[3].Position)) << "frozen in eye space";

    float out[4];
    r->GetLight(GL_LIGHT3, GL_POSITION, out);
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(static_cast<float>(stored[i]), out[i]);
    }
  }
}

TEST(Lights, TheResultingWDecidesNotTheGivenOne) {
  THeld<TRenderCPU> r;
  M4 m = kIdentity;
  m[11] = 1; // w of the result: z + w
  r->LoadMatrix(m);
  const float v[4] = {3, 4, -1, 1};
  r->Lightfv(GL_LIGHT0, GL_POSITION, v);
  const double len = std::sqrt(26.0);
  EXPECT_TRUE(SameVec(V4{3 / len, 4 / len, -1 / len, 0}, r->m_Lights[0].Position));
}

TEST(Lights, SpotDirectionsTakeTheUpperThreeByThreeAndAreNotNormalised) {
  THeld<TRenderCPU> r;
  TRandom random(23);
  const M4 m = random.Matrix(-2, 2);
  r->LoadMatrix(m);
  const float v[3] = {0.5f, -2.5f, 3.1f};
  r->Lightfv(GL_LIGHT7, GL_SPOT_DIRECTION, v);
  V3 expected;
  for (std::size_t i = 0; i < 3; ++i) {
    expected[i] = m[i] * static_cast<double>(v[0]) + m[4 + i] * static_cast<double>(v[1]) +
                  m[8 + i] * static_cast<double>(v[2]);
  }
  EXPECT_TRUE(SameVec(expected, r->m_Lights[7].SpotDirection));
  float out[4] = {9, 9, 9, 9};
  r->GetLight(GL_LIGHT7, GL_SPOT_DIRECTION, out);
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(static_cast<float>(expected[i]), out[i]);
  }
  EXPECT_EQ(9.0f, out[3]) << "three values";
}

TEST(Lights, TheCutoffRule) {
  for (const bool vector : {false, true}) {
    const auto set = [vector](TRenderCPU& r, float v) {
      if (vector) {
        r.Lightfv(GL_LIGHT0, GL_SPOT_CUTOFF, &v);
      } else {
        r.Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, v);
      }
    };
    THeld<TRenderCPU> r;
    for (const float v : {0.0f, 33.3f, 90.0f, 180.0f}) {
      set(*r, v);
      EXPECT_EQ(0u, r->GetError());
      EXPECT_EQ(static_cast<double>(v), r->m_Lights[0].SpotCutoff);
      EXPECT_SAME_BITS(static_cast<double>(v) * 3.141592653589793 / 180,
                       r->m_Lights[0].SpotCutoffRad);
      EXPECT_EQ(v != 180.0f, r->m_Lights[0].Spot);
    }
    set(*r, 45);
    for (const float v : {-0.001f, -1.0f, 90.001f, 120.0f, 179.999f, 180.001f, 360.0f}) {
      EXPECT_EQ(unsigned{GL_INVALID_VALUE}, ErrorOf(*r, [&] { set(*r, v); })) << v;
    }
  }
}

TEST(Lights, ExponentsAndAttenuationsAreStoredUnchecked) {
  THeld<TRenderCPU> r;
  r->Lightf(GL_LIGHT0, GL_SPOT_EXPONENT, 1000.5f);
  r->Lightf(GL_LIGHT0, GL_CONSTANT_ATTENUATION, -1.5f);
  r->Lightf(GL_LIGHT0, GL_LINEAR_ATTENUATION, 0.5f);
  r->Lightf(GL_LIGHT0, GL_QUADRATIC_ATTENUATION, 0.25f);
  EXPECT_EQ(1000.5, r->m_Lights[0].SpotExponent);
  EXPECT_EQ(-1.5, r->m_Lights[0].ConstantAttenuation);
  EXPECT_EQ(0.5, r->m_Lights[0].LinearAttenuation);
  EXPECT_EQ(0.25, r->m_Lights[0].QuadraticAttenuation);
  EXPECT_EQ(0u, r->GetError());
}

TEST(Lights, TheVectorFormReadsEachAttenuationFromItsOwnPlace) {
  THeld<TRenderCPU> r;
  const float v[3] = {1.5f, 2.5f, 3.5f};
  r->Lightfv(GL_LIGHT0, GL_CONSTANT_ATTENUATION, v);
  r->Lightfv(GL_LIGHT0, GL_LINEAR_ATTENUATION, v);
  r->Lightfv(GL_LIGHT0, GL_QUADRATIC_ATTENUATION, v);
  r->Lightfv(GL_LIGHT0, GL_SPOT_EXPONENT, v);
  EXPECT_EQ(1.5, r->m_Lights[0].ConstantAttenuation);
  EXPECT_EQ(2.5, r->m_Lights[0].LinearAttenuation);
  EXPECT_EQ(3.5, r->m_Lights[0].QuadraticAttenuation);
  EXPECT_EQ(1.5, r->m_Lights[0].SpotExponent);

  const struct {
    unsigned int Name;
    std::size_t Place;
  } rows[] = {
      {GL_CONSTANT_ATTENUATION, 0}, {GL_LINEAR_ATTENUATION, 1}, {GL_QUADRATIC_ATTENUATION, 2}};
  for (const auto& row : rows) {
    float out[4] = {9, 9, 9, 9};
    r->GetLight(GL_LIGHT0, row.Name, out);
    for (std::size_t i = 0; i < 4; ++i) {
      EXPECT_EQ(i == row.Place ? v[i] : 9.0f, out[i]) << row.Name << " " << i;
    }
  }
  float out[2] = {9, 9};
  r->GetLight(GL_LIGHT0, GL_SPOT_EXPONENT, out);
  EXPECT_EQ(1.5f, out[0]);
  EXPECT_EQ(9.0f, out[1]);
}

TEST(Lights, ReadingTheCutoffWantsALegalOneFirst) {
  THeld<TRenderCPU> r;
  r->Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, 30);
  for (const float first : {0.0f, 90.0f, 180.0f}) {
    float out[2] = {first, 9};
    r->GetLight(GL_LIGHT0, GL_SPOT_CUTOFF, out);
    EXPECT_EQ(0u, r->GetError());
    EXPECT_EQ(30.0f, out[0]);
    EXPECT_EQ(9.0f, out[1]);
  }
  for (const float first : {-1.0f, 91.0f, 200.0f}) {
    float out[1] = {first};
    r->GetLight(GL_LIGHT0, GL_SPOT_CUTOFF, out);
    EXPECT_EQ(unsigned{GL_INVALID_VALUE}, r->GetError());
    EXPECT_EQ(first, out[0]) << "nothing is returned";
  }
}
