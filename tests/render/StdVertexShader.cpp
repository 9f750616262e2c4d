#include <ZxCore3D/render/StdVertexShader.h>

#include <cmath>
#include <limits>

#include "LightingReference.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

using TVar = TRenderCPU::VAR_DATA;
using TLight = TRenderCPU::TLight;
using TMaterial = TRenderCPU::TMaterial;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

/// Runs the shader on a record between two guards, all filled with a mark.
class TRun {
public:
  explicit TRun(TRenderCPU& r) {
    for (TVar& v : m_Vars) {
      for (V4& slot : v.Slots) {
        slot = Mark();
      }
    }
    r.m_VertexShader->Execute(&m_Vars[1]);
  }
  const V4& operator[](int slot) const { return m_Vars[1][static_cast<std::size_t>(slot)]; }
  static V4 Mark() { return {-7.25, -7.5, -7.75, -8}; }

  /// No slot but the given ones has changed, and nothing around the record.
  bool OnlySlots(unsigned int live) const {
    for (std::size_t v = 0; v < 3; ++v) {
      for (std::size_t i = 0; i < 8; ++i) {
        if (!(v == 1 && (live >> i & 1)) && m_Vars[v][i] != Mark()) {
          return false;
        }
      }
    }
    return true;
  }

private:
  TVar m_Vars[3];
};

TMaterial RandomMaterial(TRandom& random) {
  TMaterial m;
  m.Ambient = random.Vec(0, 1);
  m.Diffuse = random.Vec(0, 1);
  m.Specular = random.Vec(0, 1);
  m.Emission = random.Vec(0, 1);
  m.Shininess = random.Below(4) == 0 ? 0 : random.Between(0, 40);
  return m;
}

TLight RandomLight(TRandom& random) {
  TLight light{};
  light.Enabled = random.Below(3) != 0;
  light.Spot = random.Below(2) == 0;
  light.Position = random.Vec(-3, 3);
  if (random.Below(3) == 0) {
    light.Position.w = 0;
    const double len = Length(Xyz(light.Position));
    light.Position.x /= len;
    light.Position.y /= len;
    light.Position.z /= len;
  }
  light.Ambient = random.Vec(0, 1);
  light.Diffuse = random.Vec(0, 1);
  light.Specular = random.Vec(0, 1);
  light.SpotDirection = {random.Between(-1, 1), random.Between(-1, 1), random.Between(-1, 1)};
  light.SpotExponent = random.Between(0, 5);
  light.SpotCutoff = random.Between(20, 90);
  light.SpotCutoffRad = light.SpotCutoff * 3.141592653589793 / 180;
  light.ConstantAttenuation = random.Between(0.1, 2);
  light.LinearAttenuation = random.Between(0, 1);
  light.QuadraticAttenuation = random.Between(0, 1);
  return light;
}

void CountLights(TRenderCPU& r) {
  r.m_EnabledLightCount = 0;
  for (const TLight& light : r.m_Lights) {
    r.m_EnabledLightCount += light.Enabled;
  }
}

/// One white light of the given kind at +z, a white material, normal +z, lighting on.
void White(TRenderCPU& r) {
  r.m_MaterialFront = r.m_MaterialBack = {
      {0.25, 0.25, 0.25, 1}, {0.5, 0.5, 0.5, 0.75}, {1, 1, 1, 1}, {0, 0, 0, 1}, 1};
  r.m_LightModelAmbient = {0, 0, 0, 1};
  r.m_Lights[0].Ambient = {0.5, 0.5, 0.5, 1};
  r.m_Lights[0].Diffuse = {1, 1, 1, 1};
  r.m_Lights[0].Specular = {1, 1, 1, 1};
  r.EnableLight(0, true);
  r.EnableLighting(true);
  r.Normal3d(0, 0, 1);
}

} // namespace

TEST(StdVertexShader, IsAloneAtFirstAndKnowsNoNames) {
  THeld<TStdVertexShaderCPU> shader;
  EXPECT_EQ(nullptr, shader->m_Render);
  shader->AddRef();
  shader->Release();
  EXPECT_EQ(0xFFFFFFFFu, shader->GetAttribLocation("position"));
  EXPECT_EQ(0xFFFFFFFFu, shader->GetAttribLocation(""));
  EXPECT_EQ(0xFFFFFFFFu, shader->GetUniformLocation("matrix"));
  TScene s;
  EXPECT_EQ(s.Get(), s->m_VertexShader->m_Render);
}

TEST(StdVertexShader, BeginFillsTheSlotTable) {
  const int rows[3][7] = {{0, 1, 2, 3, 4, 5, 6}, {0, 1, 2, -1, -1, 3, 4}, {0, 1, -1, -1, -1, 2, 3}};
  for (int kind = 0; kind < 4; ++kind) {
    TScene s;
    s->EnableLighting(kind < 2);
    s->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, kind % 2 == 0); // which counts with lighting only
    s->_EnableTexture2D(0, true);
    const int* row = rows[kind < 2 ? kind : 2];
    s->Begin(GL_POINTS);
    EXPECT_EQ(row[0], s->m_VarPosition);
    EXPECT_EQ(row[1], s->m_VarColor);
    EXPECT_EQ(row[2], s->m_VarSecondary);
    EXPECT_EQ(row[3], s->m_VarBackColor);
    EXPECT_EQ(row[4], s->m_VarBackSecondary);
    EXPECT_EQ(row[5], s->m_VarTexCoord);
    EXPECT_EQ(row[6], s->m_VarCount);
    s->End();
  }
}

TEST(StdVertexShader, WithoutATextureItsSlotNumberStaysAndTheCountDoesNotShrink) {
  for (int kind = 0; kind < 3; ++kind) {
    TScene s;
    s->EnableLighting(kind < 2);
    s->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, kind == 0);
    s->_EnableTexture2D(1, true); // of another unit
    s->m_VarTexCoord = 7;
    s->Begin(GL_POINTS);
    EXPECT_EQ(7, s->m_VarTexCoord);
    EXPECT_EQ(kind == 0 ? 6 : kind == 1 ? 4 : 3, s->m_VarCount);
    s->End();
    EXPECT_EQ(7, s->m_VarTexCoord);
  }
}

TEST(StdVertexShader, TheClipPositionTakesWAsOne) {
  TScene s;
  TRandom random(31);
  s->Begin(GL_TRIANGLES);
  for (int round = 0; round < 100; ++round) {
    s->m_ModelViewProjection = random.Matrix(-2, 2);
    const V4 v = random.Vec(-5, 5);
    s->m_CurVertex = {v.x, v.y, v.z, round % 3 == 0 ? 1 : round % 3 == 1 ? 2 : kNan};
    EXPECT_TRUE(SameVec(Applied(s->m_ModelViewProjection, Xyz(v)), TRun(*s)[0]));
  }
  s->End();
}

TEST(StdVertexShader, UnlitVerticesTakeTheCurrentColourUnclamped) {
  TScene s;
  s->_Color4d(1.5, -0.25, 0.125, 2);
  s->Begin(GL_TRIANGLES);
  const TRun run(*s);
  EXPECT_TRUE(SameVec(V4{1.5, -0.25, 0.125, 2}, run[1]));
  EXPECT_TRUE(run.OnlySlots(0b11)) << "no texture, no secondary colour";
  s->End();
}

TEST(StdVertexShader, TheTextureCoordinatePassesUntouched) {
  for (int kind = 0; kind < 3; ++kind) {
    TScene s;
    s->EnableLighting(kind < 2);
    s->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, kind == 0);
    s->_EnableTexture2D(0, true);
    s->m_TexUnits[0].TexMatrix = M4{{2, 3, 4, 5, 6, 7, 8, 9, 1, 2, 3, 4, 5, 6, 7, 8}};
    s->TexCoord4d(0.1, 0.2, 0.3, 0.4);
    s->Begin(GL_TRIANGLES);
    const TRun run(*s);
    EXPECT_TRUE(SameVec(V4{0.1, 0.2, 0.3, 0.4}, run[kind == 0 ? 5 : kind == 1 ? 3 : 2]));
    EXPECT_TRUE(run.OnlySlots(kind == 0 ? 0b111111 : kind == 1 ? 0b1111 : 0b111));
    s->End();
  }
}

TEST(StdVertexShader, LightingWithoutALightIsBlackWithAlphaZero) {
  for (const bool two : {false, true}) {
    TScene s;
    const float bright[4] = {9, 9, 9, 9};
    s->Materialfv(GL_FRONT, GL_EMISSION, bright);
    s->Materialfv(GL_BACK, GL_EMISSION, bright);
    s->LightModelfv(GL_LIGHT_MODEL_AMBIENT, bright);
    s->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, two);
    s->EnableLighting(true);
    s->Begin(GL_TRIANGLES);
    const TRun run(*s);
    for (int slot = 1; slot < (two ? 5 : 3); ++slot) {
      EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, run[slot])) << slot;
    }
    EXPECT_TRUE(run.OnlySlots(two ? 0b11111 : 0b111));
    s->End();
  }
}

TEST(StdVertexShader, ColourMaterialWritesTheCurrentColourIntoTheMaterial) {
  const V4 color = {0.11, 0.22, 0.33, 0.44};
  using TField = V4 TMaterial::*;
  const TField fields[4] = {&TMaterial::Ambient, &TMaterial::Diffuse, &TMaterial::Specular,
                            &TMaterial::Emission};
  const struct {
    unsigned int Mode;
    unsigned int Fields; // bit by bit, in the order above
  } modes[] = {{4608, 1}, {4609, 2}, {4610, 4}, {5632, 8}, {5634, 3},
               {4607, 0}, {4611, 0}, {5631, 0}, {5633, 0}, {5635, 0}};
  const struct {
    unsigned int Face;
    bool Front, Back;
  } faces[] = {{1028, true, false},  {1029, false, true},  {1032, true, true},
               {1027, false, false}, {1030, false, false}, {1031, false, false},
               {1033, false, false}};
  for (const bool lit : {false, true}) {
    for (const auto& mode : modes) {
      for (const auto& face : faces) {
        TScene s;
        const TMaterial before = s->m_MaterialFront;
        s->EnableLighting(lit);
        s->Enable(GL_COLOR_MATERIAL);
        s->ColorMaterial(face.Face, mode.Mode);
        s->_Color4dv(&color.x);
        s->Begin(GL_TRIANGLES);
        EXPECT_TRUE(SameVec(before.Diffuse, s->m_MaterialFront.Diffuse)) << "not before a vertex";
        s->Vertex2i(0, 0);
        s->End();
        for (std::size_t i = 0; i < 4; ++i) {
          const bool named = mode.Fields >> i & 1;
          EXPECT_TRUE(SameVec(named && face.Front ? color : before.*fields[i],
                              s->m_MaterialFront.*fields[i]))
              << mode.Mode << " " << face.Face << " " << i;
          EXPECT_TRUE(
              SameVec(named && face.Back ? color : before.*fields[i], s->m_MaterialBack.*fields[i]))
              << mode.Mode << " " << face.Face << " " << i;
        }
        EXPECT_EQ(0, s->m_MaterialFront.Shininess);
      }
    }
  }
}

TEST(StdVertexShader, WithoutColourMaterialTheMaterialStays) {
  TScene s;
  s->_Color4d(1, 0, 0, 1);
  s->Begin(GL_TRIANGLES);
  s->Vertex2i(0, 0);
  s->End();
  EXPECT_TRUE(SameVec(V4{0.8, 0.8, 0.8, 1}, s->m_MaterialFront.Diffuse));
}

TEST(StdVertexShader, ColourMaterialActsOnTheVertexAtHand) {
  TScene s;
  White(*s);
  s->Enable(GL_COLOR_MATERIAL);
  s->ColorMaterial(GL_FRONT, GL_EMISSION);
  s->_Color4d(0.5, 0.25, 0.125, 1);
  s->Lightf(GL_LIGHT0, GL_CONSTANT_ATTENUATION, 1);
  s->m_Lights[0].Ambient = s->m_Lights[0].Diffuse = {0, 0, 0, 0};
  s->Begin(GL_TRIANGLES);
  EXPECT_TRUE(SameVec(V4{0.5, 0.25, 0.125, 0.75}, TRun(*s)[1])) << "emission plus alpha of diffuse";
  s->End();
}

TEST(StdVertexShader, ADirectionalLightInFront) {
  TScene s;
  White(*s);
  s->Begin(GL_TRIANGLES);
  const TRun run(*s);
  // ambient 0.25 * 0.5, diffuse 0.5 * 1 * 1; half vector (0, 0, 2) / 2
  EXPECT_TRUE(SameVec(V4{0.625, 0.625, 0.625, 0.75}, run[1]));
  EXPECT_TRUE(SameVec(V4{1, 1, 1, 0}, run[2]));
  s->Normal3d(0, 0, -1);
  const TRun away(*s);
  EXPECT_TRUE(SameVec(V4{0.125, 0.125, 0.125, 0.75}, away[1])) << "ambient only";
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, away[2]));
  s->End();
}

TEST(StdVertexShader, ADirectionalLightFeedsTheFaceItLights) {
  TScene s;
  White(*s);
  s->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
  s->m_MaterialBack.Diffuse = {0.25, 0.25, 0.25, 0.5};
  s->Normal3d(0, 0, -1);
  s->Begin(GL_TRIANGLES);
  const TRun run(*s);
  EXPECT_TRUE(SameVec(V4{0.125, 0.125, 0.125, 0.75}, run[1]));
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, run[2]));
  EXPECT_TRUE(SameVec(V4{0.375, 0.375, 0.375, 0.5}, run[3])) << "ambient and its own diffuse";
  EXPECT_TRUE(SameVec(V4{1, 1, 1, 0}, run[4]));
  s->End();
}

TEST(StdVertexShader, ASpotSettingIsIgnoredByADirectionalLight) {
  TScene s;
  White(*s);
  s->Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, 1);
  const float away[3] = {1, 0, 0};
  s->Lightfv(GL_LIGHT0, GL_SPOT_DIRECTION, away);
  s->Begin(GL_TRIANGLES);
  EXPECT_TRUE(SameVec(V4{0.625, 0.625, 0.625, 0.75}, TRun(*s)[1]));
  s->End();
}

TEST(StdVertexShader, APositionalLightAtTheVertexGivesAmbientOnly) {
  TScene s;
  White(*s);
  s->m_Lights[0].Position = {1, 2, 3, 1};
  s->m_Lights[0].ConstantAttenuation = 100; // which r = 0 leaves out
  s->Vertex3d(1, 2, 3);
  s->Begin(GL_TRIANGLES);
  const TRun run(*s);
  EXPECT_TRUE(SameVec(V4{0.125, 0.125, 0.125, 0.75}, run[1]));
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, run[2]));
  s->End();
}

TEST(StdVertexShader, APositionalLightIsNotDividedByItsW) {
  TScene s;
  White(*s);
  s->m_Lights[0].Position = {0, 0, 2, 2}; // 2 away and not 1
  s->m_Lights[0].ConstantAttenuation = 0;
  s->m_Lights[0].LinearAttenuation = 1;
  s->Begin(GL_TRIANGLES);
  // (ambient 0.125 + diffuse 0.5) / 2; the specular term is not attenuated
  const TRun run(*s);
  EXPECT_TRUE(SameVec(V4{0.3125, 0.3125, 0.3125, 0.75}, run[1]));
  EXPECT_TRUE(SameVec(V4{1, 1, 1, 0}, run[2]));
  s->End();
}

TEST(StdVertexShader, TwiceTheDistanceHalvesTheDiffuseTermAndLeavesTheSpecularOne) {
  TScene s;
  White(*s);
  s->m_Lights[0].Ambient = {0, 0, 0, 1};
  s->m_Lights[0].ConstantAttenuation = 0;
  s->m_Lights[0].LinearAttenuation = 1;
  s->m_MaterialFront.Shininess = 3;
  s->Normal3d(0, 0.5, 0.75);
  s->Begin(GL_TRIANGLES);
  s->m_Lights[0].Position = {0, 0, 4, 1};
  const TRun near(*s);
  s->m_Lights[0].Position = {0, 0, 8, 1};
  const TRun far(*s);
  EXPECT_GT(near[1].x, 0);
  EXPECT_EQ(near[1].x / 2, far[1].x);
  EXPECT_GT(near[2].x, 0);
  EXPECT_TRUE(SameVec(near[2], far[2]));
  s->End();
}

TEST(StdVertexShader, ASpotLightFeedsOnlyTheFaceThatItLights) {
  TScene s;
  White(*s);
  s->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
  s->m_Lights[0].Position = {0, 0, 2, 1};
  s->m_Lights[0].SpotDirection = {0, 0, -1};
  s->Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, 30);
  s->m_Lights[0].ConstantAttenuation = 4;
  s->Begin(GL_TRIANGLES);
  const TRun front(*s); // c = 1, f = 1/4
  EXPECT_TRUE(SameVec(V4{0.15625, 0.15625, 0.15625, 0.75}, front[1]));
  EXPECT_TRUE(SameVec(V4{0.25, 0.25, 0.25, 0}, front[2])) << "attenuated";
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0.75}, front[3])) << "no ambient on the other face";
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, front[4]));
  s->Normal3d(0, 0, -1);
  const TRun back(*s);
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0.75}, back[1]));
  EXPECT_TRUE(SameVec(V4{0.15625, 0.15625, 0.15625, 0.75}, back[3]));
  EXPECT_TRUE(SameVec(V4{0.25, 0.25, 0.25, 0}, back[4]));
  s->End();
}

TEST(StdVertexShader, ASpotLightAddsNothing) {
  TScene s;
  White(*s);
  s->m_Lights[0].Position = {0, 0, 2, 1};
  s->Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, 90);
  s->Begin(GL_TRIANGLES);
  const V4 nothing = {0, 0, 0, 0.75};
  s->m_Lights[0].SpotDirection = {1, 0, 0}; // c = 0
  EXPECT_TRUE(SameVec(nothing, TRun(*s)[1]));
  s->m_Lights[0].SpotDirection = {0, 0, 1}; // c = -1
  EXPECT_TRUE(SameVec(nothing, TRun(*s)[1]));
  s->m_Lights[0].SpotDirection = {0, 0, -2}; // c = 2, whose arc cosine is no number
  EXPECT_TRUE(SameVec(nothing, TRun(*s)[1]));
  s->m_Lights[0].SpotDirection = {0, 0, -1};
  EXPECT_FALSE(SameVec(nothing, TRun(*s)[1])) << "this one does";
  s->m_Lights[0].SpotCutoffRad = 0; // the angle must be below the cutoff: 0 > acos(1) is false
  EXPECT_TRUE(SameVec(nothing, TRun(*s)[1]));
  s->m_Lights[0].SpotCutoffRad = 1;
  s->Normal3d(0, 0, -1); // turned away, one-sided: not even ambient
  EXPECT_TRUE(SameVec(nothing, TRun(*s)[1]));
  s->Normal3d(0, 0, 1);
  s->Vertex3d(0, 0, 2); // at the light
  EXPECT_TRUE(SameVec(nothing, TRun(*s)[1]));
  s->End();
}

// Exactly along the surface the cosine is 0, which is not below zero: that is the back.
TEST(StdVertexShader, ASpotLightExactlyAlongASurface) {
  for (const double zero : {0.0, -0.0}) {
    TScene s;
    White(*s);
    s->m_Lights[0].Position = {-2, 0, zero, 1};
    s->m_Lights[0].SpotDirection = {1, 0, 0};
    s->Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, 30);
    s->Begin(GL_TRIANGLES);
    const TRun oneSided(*s);
    EXPECT_TRUE(SameVec(V4{0, 0, 0, 0.75}, oneSided[1])) << "not even ambient";
    EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, oneSided[2]));
    s->End();
    s->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
    s->Begin(GL_TRIANGLES);
    const TRun twoSided(*s);
    EXPECT_TRUE(SameVec(V4{0, 0, 0, 0.75}, twoSided[1]));
    EXPECT_TRUE(SameVec(V4{0.125, 0.125, 0.125, 0.75}, twoSided[3])) << "ambient alone: d is 0";
    EXPECT_TRUE(SameVec(V4{0, 0, 0, 0}, twoSided[4])) << "the half vector faces the front";
    s->End();
  }
}

// Nothing times a power: 0, or no number where the power is infinite.
TEST(StdVertexShader, ABlackHighlight) {
  const struct {
    double Normal;
    double Shininess;
    bool IsNumber;
  } cases[] = {{1, 128, true},      {1, 5000, true},    {1.75, 1260, true}, // 2^1017
               {1.75, 1400, false}, {1.9, 1200, false}, {1.9375, 2000, false},
               {2, 128, true},      {2, 1024, false},   {1000, 100, true},
               {1000, 128, false},  {0.5, -1000, true}, {0.5, -1024, false}};
  for (const auto& c : cases) {
    for (const bool directional : {true, false}) {
      SCOPED_TRACE(testing::Message() << c.Normal << ", " << c.Shininess << ", " << directional);
      TScene s;
      White(*s);
      s->m_Lights[0].Position = {0, 0, 1, directional ? 0.0 : 1.0};
      s->m_MaterialFront.Specular = {0, 0, 0, 1};
      s->m_MaterialFront.Shininess = c.Shininess;
      s->Normal3d(0, 0, c.Normal);
      s->Begin(GL_TRIANGLES);
      const TRun run(*s);
      EXPECT_EQ(c.IsNumber, SameVec(V4{0, 0, 0, 0}, run[2]));
      EXPECT_EQ(!c.IsNumber, std::isnan(run[2].x) && std::isnan(run[2].y) && std::isnan(run[2].z));
      s->End();
    }
  }
}

TEST(StdVertexShader, ACutoffOf180IsAPlainPositionalLight) {
  TScene s;
  White(*s);
  s->m_Lights[0].Position = {0, 0, 2, 1};
  s->m_Lights[0].SpotDirection = {0, 0, 1}; // away from the vertex
  s->Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, 180);
  s->Begin(GL_TRIANGLES);
  EXPECT_TRUE(SameVec(V4{0.625, 0.625, 0.625, 0.75}, TRun(*s)[1]));
  s->End();
}

TEST(StdVertexShader, AWThatIsNoNumberIsAPositionalLight) {
  TScene s;
  White(*s);
  s->m_Lights[0].Position = {0, 0, 2, kNan};
  s->m_Lights[0].ConstantAttenuation = 5; // which a directional light does not read
  s->Begin(GL_TRIANGLES);
  EXPECT_TRUE(
      SameVec(V4{0.625 * (1.0 / 5), 0.625 * (1.0 / 5), 0.625 * (1.0 / 5), 0.75}, TRun(*s)[1]));
  s->End();
}

TEST(StdVertexShader, NormalsGoThroughTheModelviewMatrixItself) {
  TScene s;
  White(*s);
  s->m_Lights[0].Ambient = {0, 0, 0, 0};
  s->m_ModelView = M4{{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 4, 0, 0, 0, 0, 1}};
  s->Begin(GL_TRIANGLES);
  EXPECT_EQ(2, TRun(*s)[1].x) << "scaled by 4, not by 1/4";
  s->Enable(GL_NORMALIZE);
  EXPECT_EQ(0.5, TRun(*s)[1].x);
  s->Normal3d(0, 0, 0);
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 0.75}, TRun(*s)[1])) << "a length of 0 divides nothing";
  s->End();
}

TEST(StdVertexShader, AnAttenuationWithoutAnythingGivesInfinities) {
  TScene s;
  White(*s);
  s->m_Lights[0].Position = {0, 0, 2, 1};
  s->m_Lights[0].ConstantAttenuation = 0;
  s->Begin(GL_TRIANGLES);
  EXPECT_EQ(std::numeric_limits<double>::infinity(), TRun(*s)[1].x);
  s->End();
}

TEST(StdVertexShader, TheWholeModelToTheLastBit) {
  TRandom random(37);
  int kinds[2][3] = {};
  for (int round = 0; round < 3000; ++round) {
    TScene s(1, 1);
    s->EnableLighting(true);
    s->m_LightModelTwoSide = random.Below(2) == 0;
    s->m_LightModelLocalViewer = random.Below(2) == 0;
    s->m_Normalize = random.Below(2) == 0;
    s->m_ModelView = random.Matrix(-1.5, 1.5);
    s->m_LightModelAmbient = random.Vec(0, 1);
    s->m_MaterialFront = RandomMaterial(random);
    s->m_MaterialBack = RandomMaterial(random);
    for (TLight& light : s->m_Lights) {
      light = RandomLight(random);
    }
    CountLights(*s);
    if (s->m_EnabledLightCount == 0) {
      continue;
    }
    s->m_CurNormal = random.Vec(-1, 1);
    s->m_CurVertex = random.Vec(-2, 2);
    if (round % 50 == 0) {
      s->m_ModelView[12] = s->m_ModelView[13] = s->m_ModelView[14] = 0;
      s->m_CurVertex = {0, 0, 0, 1}; // the eye, where no view direction is
    }
    s->Begin(GL_TRIANGLES);
    const TRun run(*s);
    const TLit lit = TLightingReference(*s).Lit();
    ASSERT_TRUE(SameVec(lit.Front, run[1])) << round;
    ASSERT_TRUE(SameVec(lit.FrontSpecular, run[2])) << round;
    if (s->m_LightModelTwoSide) {
      ASSERT_TRUE(SameVec(lit.Back, run[3])) << round;
      ASSERT_TRUE(SameVec(lit.BackSpecular, run[4])) << round;
    }
    EXPECT_TRUE(run.OnlySlots(s->m_LightModelTwoSide ? 0b11111 : 0b111));
    kinds[s->m_LightModelTwoSide][lit.FrontSpecular.x > 0 ? 0 : lit.BackSpecular.x > 0 ? 1 : 2]++;
    s->End();
  }
  EXPECT_GT(kinds[0][0], 50); // the rounds reach what they are for
  EXPECT_GT(kinds[1][0], 50);
  EXPECT_GT(kinds[1][1], 50);
}

TEST(StdVertexShader, LightsAreAddedInAscendingOrder) {
  TScene s;
  White(*s);
  s->m_Lights[0].Ambient = {4e16, 0, 0, 0}; // times 0.25
  s->m_Lights[0].Diffuse = {0, 0, 0, 0};
  s->m_Lights[3] = s->m_Lights[7] = s->m_Lights[0];
  s->m_Lights[3].Enabled = s->m_Lights[7].Enabled = false;
  s->m_Lights[3].Ambient = {4, 0, 0, 0};
  s->m_Lights[7].Ambient = {-4e16, 0, 0, 0};
  s->EnableLight(7, true);
  s->EnableLight(3, true);
  s->Begin(GL_TRIANGLES);
  EXPECT_EQ(0, TRun(*s)[1].x) << "1e16 + 1 - 1e16, not 1e16 - 1e16 + 1";
  s->End();
}

TEST(StdVertexShader, SlotsThatTheTableDoesNotHaveAreNeverFollowed) {
  TScene s;
  White(*s);
  s->EnableLighting(false);
  s->Begin(GL_TRIANGLES);
  ASSERT_EQ(-1, s->m_VarSecondary);
  s->EnableLighting(true);
  s->LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
  s->_EnableTexture2D(0, true); // its slot number is still -1
  ASSERT_EQ(-1, s->m_VarTexCoord);
  const TRun run(*s);
  EXPECT_TRUE(SameVec(V4{0.625, 0.625, 0.625, 0.75}, run[1]));
  EXPECT_TRUE(run.OnlySlots(0b11));
  s->m_VarTexCoord = 8;
  s->m_VarSecondary = 1000000;
  s->m_VarBackColor = -1000000;
  s->m_VarBackSecondary = 8;
  EXPECT_TRUE(TRun(*s).OnlySlots(0b11));
  s->End();
}

TEST(StdVertexShader, MaterialChangesHoldFromTheNextVertexOn) {
  TScene s;
  White(*s);
  s->Begin(GL_TRIANGLES);
  EXPECT_EQ(0.625, TRun(*s)[1].x);
  const float black[4] = {0, 0, 0, 1};
  s->Materialfv(GL_FRONT, GL_AMBIENT_AND_DIFFUSE, black);
  EXPECT_TRUE(SameVec(V4{0, 0, 0, 1}, TRun(*s)[1]));
  s->End();
}
