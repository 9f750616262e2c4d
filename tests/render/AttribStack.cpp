#include <functional>
#include <string>
#include <vector>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/GLEnums.h>

#include "StateChecks.h"

using namespace Zx3D;
using namespace zx_test;

namespace {

/// One piece of state that a group saves.
struct TPiece {
  const char* Name;
  unsigned int Group;
  std::function<void(TRenderCPU&)> Change;
  std::function<double(const TRenderCPU&)> Read;
};

#define ZX_READ(expression)                                                                        \
  [](const TRenderCPU& r) -> double { return static_cast<double>(r.expression); }

const std::vector<TPiece>& Pieces() {
  static const std::vector<TPiece> s_Pieces = {
      {"color", 0x1, [](TRenderCPU& r) { r._Color4d(0.1, 0, 0, 0); }, ZX_READ(m_CurColor.x)},
      {"alpha", 0x1, [](TRenderCPU& r) { r._Color4d(1, 1, 1, 0.3); }, ZX_READ(m_CurColor.w)},
      {"normal", 0x1, [](TRenderCPU& r) { r.Normal3d(0, 0, 5); }, ZX_READ(m_CurNormal.z)},
      {"texture", 0x1, [](TRenderCPU& r) { r.TexCoord4d(0, 7, 0, 0); }, ZX_READ(m_CurTexCoord.y)},
      {"cull", 0x2008, [](TRenderCPU& r) { r.EnableCullFace(true); }, ZX_READ(m_CullFaceEnabled)},
      {"face", 0x8, [](TRenderCPU& r) { r.CullFace(1028); }, ZX_READ(m_CullFaceMode)},
      {"front", 0x8, [](TRenderCPU& r) { r.FrontFace(2304); }, ZX_READ(m_FrontFaceCCW)},
      {"offset", 0x8, [](TRenderCPU& r) { r.Enable(32823); }, ZX_READ(m_PolygonOffsetFill)},
      {"factor", 0x8, [](TRenderCPU& r) { r.PolygonOffset(0.1f, 1); },
       ZX_READ(m_PolygonOffsetFactor)},
      {"units", 0x8, [](TRenderCPU& r) { r.PolygonOffset(0, -3.3f); },
       ZX_READ(m_PolygonOffsetUnits)},
      {"material", 0x2040, [](TRenderCPU& r) { r.Enable(2903); }, ZX_READ(m_ColorMaterial)},
      {"materialface", 0x40, [](TRenderCPU& r) { r.ColorMaterial(1028, 5634); },
       ZX_READ(m_ColorMaterialFace)},
      {"twoside", 0x40, [](TRenderCPU& r) { r.LightModeli(2898, 1); },
       ZX_READ(m_LightModelTwoSide)},
      {"depth", 0x100, [](TRenderCPU& r) { r.EnableDepthTest(true); }, ZX_READ(m_DepthTest)},
      {"depthfunc", 0x100, [](TRenderCPU& r) { r.DepthFunc(516); }, ZX_READ(m_DepthFunc)},
      {"depthmask", 0x100, [](TRenderCPU& r) { r.DepthMask(0); }, ZX_READ(m_DepthMask)},
      {"cleardepth", 0x100, [](TRenderCPU& r) { r.ClearDepth(-0.7); }, ZX_READ(m_ClearDepth)},
      {"stencil", 0x400, [](TRenderCPU& r) { r.Enable(2960); }, ZX_READ(m_StencilTest)},
      {"stencilfunc", 0x400, [](TRenderCPU& r) { r.StencilFunc(514, 0, ~0u); },
       ZX_READ(m_StencilFunc)},
      {"ref", 0x400, [](TRenderCPU& r) { r.StencilFunc(519, -5, ~0u); }, ZX_READ(m_StencilRef)},
      {"valuemask", 0x400, [](TRenderCPU& r) { r.StencilFunc(519, 0, 77); },
       ZX_READ(m_StencilValueMask)},
      {"fail", 0x400, [](TRenderCPU& r) { r.StencilOp(0, 7680, 7680); }, ZX_READ(m_StencilFail)},
      {"zfail", 0x400, [](TRenderCPU& r) { r.StencilOp(7680, 0, 7680); }, ZX_READ(m_StencilZFail)},
      {"zpass", 0x400, [](TRenderCPU& r) { r.StencilOp(7680, 7680, 0); }, ZX_READ(m_StencilZPass)},
      {"clearstencil", 0x400, [](TRenderCPU& r) { r.ClearStencil(200); }, ZX_READ(m_ClearStencil)},
      {"writemask", 0x400, [](TRenderCPU& r) { r.StencilMask(0x12345678); },
       ZX_READ(m_StencilWriteMask)},
      {"blend", 0x6000, [](TRenderCPU& r) { r.EnableBlend(true); }, ZX_READ(m_BlendEnabled)},
      {"reserved", 0x2000, [](TRenderCPU& r) { r.m_ReservedFlag = true; }, ZX_READ(m_ReservedFlag)},
      {"normalize", 0x2000, [](TRenderCPU& r) { r.Enable(2977); }, ZX_READ(m_Normalize)},
      {"blendsrc", 0x4000, [](TRenderCPU& r) { r.BlendFunc(770, 0); }, ZX_READ(m_BlendSrc)},
      {"blenddst", 0x4000, [](TRenderCPU& r) { r.BlendFunc(1, 771); }, ZX_READ(m_BlendDst)},
      {"colormask", 0x4000, [](TRenderCPU& r) { r.ColorMask(1, 0, 1, 0); }, ZX_READ(m_ColorMask)},
      {"hint", 0x8000, [](TRenderCPU& r) { r.Hint(3152, 4353); }, ZX_READ(m_PerspectiveHint)}};
  return s_Pieces;
}

/// State that no group saves.
const std::vector<TPiece>& Others() {
  static const std::vector<TPiece> s_Others = {
      {"mode", 0, [](TRenderCPU& r) { r.MatrixMode(5889); }, ZX_READ(m_MatrixMode)},
      {"matrix", 0, [](TRenderCPU& r) { r.Translated(3, 0, 0); }, ZX_READ(m_ModelView[12])},
      {"light", 0, [](TRenderCPU& r) { r.EnableLight(3, true); }, ZX_READ(m_Lights[3].Enabled)},
      {"exponent", 0, [](TRenderCPU& r) { r.Lightf(16384, 4613, 9); },
       ZX_READ(m_Lights[0].SpotExponent)},
      {"shininess", 0, [](TRenderCPU& r) { r.Materialf(1028, 5633, 9); },
       ZX_READ(m_MaterialFront.Shininess)},
      {"lighting", 0, [](TRenderCPU& r) { r.EnableLighting(true); }, ZX_READ(m_Lighting)},
      {"viewer", 0, [](TRenderCPU& r) { r.LightModeli(2897, 1); },
       ZX_READ(m_LightModelLocalViewer)},
      {"materialmode", 0, [](TRenderCPU& r) { r.ColorMaterial(1032, 4608); },
       ZX_READ(m_ColorMaterialMode)},
      {"fog", 0, [](TRenderCPU& r) { r.Enable(2912); }, ZX_READ(m_FogEnabled)},
      {"density", 0, [](TRenderCPU& r) { r.Fog(2914u, 5.0f); }, ZX_READ(m_Fog.Density)},
      {"texturing", 0, [](TRenderCPU& r) { r.Enable(3553); }, ZX_READ(m_TexUnits[0].TexEnabled)},
      {"environment", 0, [](TRenderCPU& r) { r.TexEnvi(8960, 8704, 7681); },
       ZX_READ(m_TexUnits[0].TexEnvMode)},
      {"filter", 0, [](TRenderCPU& r) { r.TexFilter2D(9729, 9729); },
       ZX_READ(m_TexUnits[0].Sampler.m_FilterMin)},
      {"unit", 0, [](TRenderCPU& r) { r.ActiveTexture(33985); }, ZX_READ(m_ActiveTexture)},
      {"clearcolor", 0, [](TRenderCPU& r) { r.ClearColor(1, 1, 1, 1); }, ZX_READ(m_ClearColor[0])},
      {"polygonmode", 0, [](TRenderCPU& r) { r.PolygonMode(1028, 0x1B01); },
       ZX_READ(m_PolygonModeFront)},
      {"linewidth", 0, [](TRenderCPU& r) { r.LineWidth(3); }, ZX_READ(m_LineWidth)},
      {"pointsize", 0, [](TRenderCPU& r) { r.PointSize(3); }, ZX_READ(m_PointSize)},
      {"rowlength", 0, [](TRenderCPU& r) { r.PixelStorei(3314, 3); },
       ZX_READ(m_PixelUnpack.RowLength)},
      {"rasterpos", 0, [](TRenderCPU& r) { r.RasterPos2i(3, 3); }, ZX_READ(m_RasterPos.x)},
      {"vertex", 0, [](TRenderCPU& r) { r.Vertex2i(3, 3); }, ZX_READ(m_CurVertex.x)},
      {"debug", 0, [](TRenderCPU& r) { r.Enable(37600); }, ZX_READ(m_DebugOutput)}};
  return s_Others;
}

constexpr unsigned int kAllGroups[9] = {0x1,   0x8,    0x40,   0x100, 0x400,
                                        0x800, 0x2000, 0x4000, 0x8000};

/// Sees the virtual operations that a restore goes through.
class TRestoreSpy : public TRenderCPU {
public:
  void DepthFunc(unsigned int f) override {
    Log.append("depth ").append(std::to_string(f)).append(" ");
    TRenderCPU::DepthFunc(f);
  }
  void StencilFunc(unsigned int f, int ref, unsigned int mask) override {
    Log.append("func ").append(std::to_string(f)).append(",").append(std::to_string(ref));
    Log.append(",").append(std::to_string(mask)).append(" ");
    TRenderCPU::StencilFunc(f, ref, mask);
  }
  void StencilOp(unsigned int fail, unsigned int zfail, unsigned int zpass) override {
    Log.append("op ").append(std::to_string(fail)).append(",").append(std::to_string(zfail));
    Log.append(",").append(std::to_string(zpass)).append(" ");
    TRenderCPU::StencilOp(fail, zfail, zpass);
  }
  void EnableBlend(bool) override { Log.append("blend "); }
  void EnableCullFace(bool) override { Log.append("cull "); }
  std::string Log;
};

} // namespace

TEST(AttribStack, EachPieceIsSavedByItsGroupsAndByNoOther) {
  for (const TPiece& piece : Pieces()) {
    for (int bit = 0; bit < 32; ++bit) {
      THeld<TRenderCPU> r;
      const double before = piece.Read(*r);
      r->PushAttrib(1u << bit);
      piece.Change(*r);
      const double changed = piece.Read(*r);
      ASSERT_NE(before, changed) << piece.Name;
      r->PopAttrib();
      EXPECT_EQ(piece.Group >> bit & 1 ? before : changed, piece.Read(*r))
          << piece.Name << " with bit " << bit;
      EXPECT_EQ(0u, r->GetError());
    }
  }
}

TEST(AttribStack, TheOtherWayRoundToo) {
  for (const TPiece& piece : Pieces()) { // saved as changed, restored over the default
    THeld<TRenderCPU> r, fresh;
    piece.Change(*r);
    const double changed = piece.Read(*r);
    r->PushAttrib(piece.Group);
    for (const TPiece& other : Pieces()) {
      if (other.Group == piece.Group) {
        other.Change(*r);
      }
    }
    r->PopAttrib();
    EXPECT_EQ(changed, piece.Read(*r)) << piece.Name;
  }
}

TEST(AttribStack, WhatNoGroupSavesStays) {
  for (const TPiece& other : Others()) {
    THeld<TRenderCPU> r;
    const double before = other.Read(*r);
    r->PushAttrib(0xFFFFFFFF);
    other.Change(*r);
    const double changed = other.Read(*r);
    ASSERT_NE(before, changed) << other.Name;
    r->PopAttrib();
    EXPECT_EQ(changed, other.Read(*r)) << other.Name;
  }
}

TEST(AttribStack, AllBitsBringBackTheDepthFunctionAndNotTheLight) {
  THeld<TRenderCPU> r;
  r->PushAttrib(GL_ALL_ATTRIB_BITS);
  r->DepthFunc(GL_ALWAYS);
  r->Enable(GL_LIGHT0 + 2);
  r->Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, 30);
  r->PopAttrib();
  EXPECT_EQ(513u, r->m_DepthFunc);
  EXPECT_EQ(&Less1f, r->m_DepthCompare);
  EXPECT_TRUE(r->IsEnabled(GL_LIGHT0 + 2));
  EXPECT_EQ(30, r->m_Lights[0].SpotCutoff);
}

TEST(AttribStack, EntriesHoldTheMaskAndTheGroupsRecords) {
  const std::size_t records[9] = {3, 2, 1, 1, 2, 1, 1, 2, 1};
  THeld<TRenderCPU> r;
  for (std::size_t i = 0; i < 9; ++i) {
    r->PushAttrib(kAllGroups[i]);
    EXPECT_EQ(kAllGroups[i], r->m_AttribStack.back().Mask);
    EXPECT_EQ(records[i], r->m_AttribStack.back().Data.size()) << kAllGroups[i];
  }
  r->PushAttrib(0xFFFFFFFF);
  EXPECT_EQ(14u, r->m_AttribStack.back().Data.size());
  EXPECT_EQ(0xFFFFFFFFu, r->m_AttribStack.back().Mask);
  r->PushAttrib(0x000F3236); // bits that save nothing: GL_TRANSFORM_BIT, GL_FOG_BIT, ...
  EXPECT_EQ(0u, r->m_AttribStack.back().Data.size() - (0x2000 & 0x000F3236 ? 1 : 0));
  EXPECT_EQ(32u, sizeof(TRenderCPU::TAttribData));
}

TEST(AttribStack, BitsWithoutEffectAreStored) {
  THeld<TRenderCPU> r;
  for (const unsigned int bit : {0x2u, 0x4u, 0x10u, 0x20u, 0x80u, 0x200u, 0x1000u, 0x10000u,
                                 0x20000u, 0x40000u, 0x80000u, 0x80000000u}) {
    r->PushAttrib(bit);
    EXPECT_EQ(bit, r->m_AttribStack.back().Mask);
    EXPECT_TRUE(r->m_AttribStack.back().Data.empty());
  }
}

TEST(AttribStack, RecordsStandInTheOrderOfTheGroups) {
  TScene s(6, 5);
  s->_Color4d(0.1, 0.2, 0.3, 0.4);
  s->Normal3d(1, 2, 3);
  s->PolygonOffset(0.5f, 0.25f);
  s->StencilMask(0xABCD);
  s->ColorMask(1, 1, 0, 0);
  s->PushAttrib(0xFFFFFFFF);
  const std::vector<TRenderCPU::TAttribData>& data = s->m_AttribStack.back().Data;
  ASSERT_EQ(14u, data.size());
  EXPECT_EQ(0.4, data[0].Doubles[3]);
  EXPECT_EQ(2, data[1].Doubles[1]);
  EXPECT_EQ(0.5, data[4].Doubles[0]); // the second polygon record
  EXPECT_EQ(0.25, data[4].Doubles[1]);
  EXPECT_EQ(513u, data[6].Words[1]);    // depth
  EXPECT_EQ(519u, data[7].Words[1]);    // stencil
  EXPECT_EQ(0xABCDu, data[8].Words[0]); // stencil, second
  EXPECT_EQ(6u, data[9].Words[2]);      // viewport
  EXPECT_EQ(5u, data[9].Words[3]);
  EXPECT_EQ(1u, data[11].Words[1]);    // GL_ONE
  EXPECT_EQ(3u, data[12].Words[0]);    // colour mask
  EXPECT_EQ(4354u, data[13].Words[0]); // GL_NICEST
}

TEST(AttribStack, NestsWithoutADepthLimit) {
  THeld<TRenderCPU> r;
  for (int i = 0; i < 20000; ++i) {
    r->_Color4d(i, 0, 0, 1);
    r->PushAttrib(i % 2 == 0 ? 0x1 : 0x8001);
  }
  r->_Color4d(-1, 0, 0, 1);
  for (int i = 19999; i >= 0; --i) {
    r->PopAttrib();
    ASSERT_EQ(i, r->m_CurColor.x);
  }
  EXPECT_TRUE(r->m_AttribStack.empty());
}

TEST(AttribStack, AnEmptyStackReportsAndStops) {
  THeld<TRenderCPU> r;
  r->DepthFunc(GL_ALWAYS);
  r->PopAttrib();
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, r->GetError());
  EXPECT_EQ(519u, r->m_DepthFunc);
  EXPECT_TRUE(r->m_AttribStack.empty());
}

TEST(AttribStack, IsRefusedBetweenBeginAndEnd) {
  TScene s(4, 4);
  s->PushAttrib(0x1);
  s->Begin(GL_POINTS);
  s->_Color4d(0.1, 0.2, 0.3, 0.4);
  s->PushAttrib(0x1);
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
  EXPECT_EQ(1u, s->m_AttribStack.size());
  s->PopAttrib();
  EXPECT_EQ(unsigned{GL_INVALID_OPERATION}, s->GetError());
  EXPECT_EQ(1u, s->m_AttribStack.size());
  EXPECT_EQ(0.1, s->m_CurColor.x);
  s->End();
  s->PopAttrib();
  EXPECT_EQ(1, s->m_CurColor.x);
}

TEST(AttribStack, FunctionsComeBackThroughTheVirtualOperations) {
  THeld<TRestoreSpy> r;
  r->PushAttrib(0xFFFFFFFF);
  r->Log.clear();
  r->PopAttrib();
  EXPECT_EQ("depth 513 func 519,0,4294967295 op 7680,7680,7680 ", r->Log)
      << "and the other switches straight back";
}

TEST(AttribStack, RestoredFunctionsAreInForce) {
  THeld<TRenderCPU> r;
  r->PushAttrib(0x500);
  r->DepthFunc(GL_GREATER);
  r->StencilFunc(GL_NEVER, 3, 3);
  r->StencilOp(GL_INVERT, GL_ZERO, GL_REPLACE);
  EXPECT_EQ(&NeverM_1u8, r->m_StencilCompare);
  r->PopAttrib();
  EXPECT_EQ(&Less1f, r->m_DepthCompare);
  EXPECT_EQ(&AlwaysM_1u8, r->m_StencilCompare);
  EXPECT_EQ(&KeepM_1u8, r->m_StencilFailOp);
  EXPECT_EQ(&KeepM_1u8, r->m_StencilZFailOp);
  EXPECT_EQ(&KeepM_1u8, r->m_StencilZPassOp);
}

TEST(AttribStack, ARejectedDepthFunctionIsSavedAndReportedAgain) {
  THeld<TRenderCPU> r;
  r->DepthFunc(0);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError());
  r->PushAttrib(0x100);
  r->DepthFunc(GL_ALWAYS);
  r->PopAttrib();
  EXPECT_EQ(0u, r->m_DepthFunc);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, r->GetError());
  EXPECT_EQ(&Always1f, r->m_DepthCompare);
}

TEST(AttribStack, TheViewportIsNotRestored) {
  TScene s(6, 5);
  s->PushAttrib(GL_VIEWPORT_BIT);
  ASSERT_TRUE(s->SetSize(3, 4));
  s->PopAttrib();
  EXPECT_EQ(3, s->m_Width);
  EXPECT_EQ(4, s->m_Height);
  EXPECT_EQ(3, s->m_ColorSurface->Width);
}

TEST(AttribStack, TheEnableGroupRecalculatesTheBlendRoutines) {
  THeld<TRenderCPU> r;
  r->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  r->Enable(GL_BLEND);
  r->PushAttrib(GL_ENABLE_BIT);
  r->Disable(GL_BLEND);
  EXPECT_EQ(nullptr, r->m_BlendFunc);
  r->PopAttrib();
  EXPECT_EQ(&TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub, r->m_BlendFunc);
  EXPECT_EQ(&TRenderCPU::_BlendM_SrcA_1_SrcA_RGBAub, r->m_BlendFuncM);
}

TEST(AttribStack, TheColourGroupLooksAtTheFactorsBeforeTheyAreRestored) {
  // Saved: the blending pair. At the pop another pair stands: nothing is chosen, though the
  // restored factors would blend.
  THeld<TRenderCPU> r;
  r->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  r->Enable(GL_BLEND);
  r->PushAttrib(GL_COLOR_BUFFER_BIT);
  r->BlendFunc(GL_ONE, GL_ZERO);
  r->PopAttrib();
  EXPECT_EQ(770u, r->m_BlendSrc);
  EXPECT_EQ(771u, r->m_BlendDst);
  EXPECT_TRUE(r->m_BlendEnabled);
  EXPECT_EQ(nullptr, r->m_BlendFunc) << "out of step";
  EXPECT_EQ(nullptr, r->m_BlendFuncM);
  r->EnableBlend(true);
  EXPECT_NE(nullptr, r->m_BlendFunc) << "until the next EnableBlend";

  // And the other way round.
  THeld<TRenderCPU> q;
  q->Enable(GL_BLEND);
  q->PushAttrib(GL_COLOR_BUFFER_BIT);
  q->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  q->PopAttrib();
  EXPECT_EQ(1u, q->m_BlendSrc);
  EXPECT_EQ(0u, q->m_BlendDst);
  EXPECT_EQ(&TRenderCPU::_Blend_SrcA_1_SrcA_RGBAub, q->m_BlendFunc);
  EXPECT_EQ(&TRenderCPU::_BlendM_SrcA_1_SrcA_RGBAub, q->m_BlendFuncM);
  q->BlendFunc(GL_ONE, GL_ONE);
  EXPECT_EQ(nullptr, q->m_BlendFunc) << "until the next BlendFunc";
}

TEST(AttribStack, RoutinesOutOfStepShowInTheSurface) {
  TScene s(2, 2);
  s->Enable(GL_BLEND);
  s->PushAttrib(GL_COLOR_BUFFER_BIT);
  s->BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  s->PopAttrib();
  s.Reset();
  s->_Color4d(1, 1, 1, 0.5);
  DrawFullQuad(*s);
  EXPECT_EQ((TPixel{128, 128, 128, 64}), s.Color(0, 0)) << "(255 * 128) / 255, (128 * 128) / 255";
}

TEST(AttribStack, SurvivesDestroy) {
  TScene s(2, 2);
  s->PushAttrib(0x1);
  s->_Color4d(0, 0, 0, 0);
  s->Destroy();
  s->PopAttrib();
  EXPECT_EQ(1, s->m_CurColor.x);
  EXPECT_EQ(0u, s->GetError());
}
