#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/ProgramCPU.h>

#include "OtherRender.h"
#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;

constexpr std::uint32_t kOnes = 0xFFFFFFFF;

template <class TVec> void ExpectVec(double x, double y, double z, double w, const TVec& v) {
  EXPECT_EQ(x, v.x);
  EXPECT_EQ(y, v.y);
  EXPECT_EQ(z, v.z);
  EXPECT_EQ(w, v.w);
}

/// A context whose memory held something else before.
class FreshContext : public testing::Test {
protected:
  FreshContext() : m_Memory(sizeof(TRenderCPU) / 8 + 1, 0xA5A5A5A5A5A5A5A5u) {
    m_Render = new (m_Memory.data()) TRenderCPU;
  }
  ~FreshContext() override { m_Render->~TRenderCPU(); }

  std::vector<std::uint64_t> m_Memory;
  TRenderCPU* m_Render;
};

TEST_F(FreshContext, HasNoSurfacesAndNoShaders) {
  const TRenderCPU& r = *m_Render;
  EXPECT_FALSE(r.m_Created);
  EXPECT_EQ(0, r.m_Width);
  EXPECT_EQ(0, r.m_Height);
  EXPECT_EQ(nullptr, r.m_CurrentSurface);
  EXPECT_EQ(nullptr, r.m_FrameBuffer);
  EXPECT_EQ(nullptr, r.m_ColorSurface);
  EXPECT_EQ(nullptr, r.m_DepthSurface);
  EXPECT_EQ(nullptr, r.m_StencilSurface);
  EXPECT_EQ(nullptr, r.m_StdVertexShader);
  EXPECT_EQ(nullptr, r.m_StdFragmentShader);
  EXPECT_EQ(nullptr, r.m_VertexShader);
  EXPECT_EQ(nullptr, r.m_FragmentShader);
  EXPECT_EQ(nullptr, r.m_Program);
  EXPECT_EQ(nullptr, r.m_DefaultProgram);
  EXPECT_EQ(nullptr, r.m_DrawBuffer);
  EXPECT_EQ(nullptr, r.m_PixelWrite);
  EXPECT_EQ(nullptr, r.m_Textures);
  EXPECT_FALSE(m_Render->IsCurrent());
  EXPECT_EQ(1u, m_Render->GetRefCount());
}

TEST_F(FreshContext, HasTheDefaultSwitches) {
  const TRenderCPU& r = *m_Render;
  EXPECT_TRUE(r.m_DepthMask);
  EXPECT_FALSE(r.m_BlendEnabled);
  EXPECT_EQ(1u, r.m_BlendSrc); // GL_ONE
  EXPECT_EQ(0u, r.m_BlendDst); // GL_ZERO
  EXPECT_EQ(nullptr, r.m_BlendFunc);
  EXPECT_EQ(nullptr, r.m_BlendFuncM);
  EXPECT_EQ(1.0f, r.m_PointSize);
  EXPECT_EQ(1.0f, r.m_LineWidth);
  EXPECT_FALSE(r.m_Normalize);
  EXPECT_FALSE(r.m_CullFaceEnabled);
  EXPECT_EQ(0x405u, r.m_CullFaceMode); // GL_BACK
  EXPECT_TRUE(r.m_FrontFaceCCW);
  EXPECT_FALSE(r.m_DepthTest);
  EXPECT_EQ(0, r.m_EnabledLightCount);
  EXPECT_FALSE(r.m_Lighting);
  EXPECT_FALSE(r.m_FogEnabled);
  EXPECT_FALSE(r.m_PolygonOffsetFill);
  EXPECT_EQ(0.0f, r.m_PolygonOffsetFactor);
  EXPECT_EQ(1.0f, r.m_PolygonOffsetUnits);
  EXPECT_EQ(0x1B02u, r.m_PolygonModeFront); // GL_FILL
  EXPECT_EQ(0x1B02u, r.m_PolygonModeBack);
  EXPECT_FALSE(r.m_CalcDepth);
  EXPECT_EQ(0x1102u, r.m_PerspectiveHint); // GL_NICEST
  EXPECT_EQ(15, r.m_ColorMask);
  EXPECT_EQ(0x1700u, r.m_MatrixMode); // GL_MODELVIEW
  EXPECT_EQ(0x1D01u, r.m_ShadeModel); // GL_SMOOTH
  EXPECT_EQ(513u, r.m_DepthFunc);     // GL_LESS
  EXPECT_EQ(&Zx3D::Less1f, r.m_DepthCompare);
}

TEST_F(FreshContext, HasTheDefaultStencil) {
  const TRenderCPU& r = *m_Render;
  EXPECT_FALSE(r.m_StencilTest);
  EXPECT_EQ(519u, r.m_StencilFunc); // GL_ALWAYS
  EXPECT_EQ(0, r.m_StencilRef);
  EXPECT_EQ(kOnes, r.m_StencilValueMask);
  EXPECT_EQ(0x1E00u, r.m_StencilFail); // GL_KEEP
  EXPECT_EQ(0x1E00u, r.m_StencilZFail);
  EXPECT_EQ(0x1E00u, r.m_StencilZPass);
  EXPECT_EQ(kOnes, r.m_StencilWriteMask);
  EXPECT_EQ(&Zx3D::AlwaysM_1u8, r.m_StencilCompare);
  EXPECT_EQ(&Zx3D::KeepM_1u8, r.m_StencilFailOp);
  EXPECT_EQ(&Zx3D::KeepM_1u8, r.m_StencilZFailOp);
  EXPECT_EQ(&Zx3D::KeepM_1u8, r.m_StencilZPassOp);
}

TEST_F(FreshContext, HasTheDefaultClearValues) {
  const TRenderCPU& r = *m_Render;
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(0, r.m_ClearColor[i]);
  }
  EXPECT_EQ(1.0f, r.m_ClearDepth);
  EXPECT_EQ(0, r.m_ClearStencil);
}

TEST_F(FreshContext, HasTheDefaultCurrentValues) {
  const TRenderCPU& r = *m_Render;
  ExpectVec(0, 0, 0, 0, r.m_CurVertex);
  ExpectVec(0, 0, 0, 0, r.m_CurNormal);
  ExpectVec(1, 1, 1, 1, r.m_CurColor);
  ExpectVec(0, 0, 0, 0, r.m_CurTexCoord);
  for (const auto& attrib : r.m_CurAttrib) {
    ExpectVec(0, 0, 0, 0, attrib);
  }
  for (const auto& cell : r.m_Uniforms) {
    ExpectVec(0, 0, 0, 0, cell);
  }
}

TEST_F(FreshContext, HasItsAssemblyAtRest) {
  const TRenderCPU& r = *m_Render;
  EXPECT_FALSE(r.m_InBeginEnd);
  EXPECT_EQ(kOnes, r.m_PrimitiveMode);
  EXPECT_EQ(-1, r.m_VertexIndex);
  EXPECT_EQ(0, r.m_Pending);
  EXPECT_EQ(0, r.m_VarPosition);
  EXPECT_EQ(-1, r.m_LastPixelX);
  EXPECT_EQ(-1, r.m_LastPixelY);
  EXPECT_EQ(&TRenderCPU::UnknownVertex, r.m_VertexHandler);
  ExpectVec(0, 0, 0, 0, r.m_Fragment.Color);
  EXPECT_EQ(0, r.m_Fragment.X);
  EXPECT_EQ(0, r.m_Fragment.Y);
  EXPECT_TRUE(r.m_Fragment.FrontFacing);
}

TEST_F(FreshContext, HasItsScratchZeroed) {
  const TRenderCPU& r = *m_Render;
  const TRenderCPU::VAR_DATA* records[] = {
      &r.m_VarEdgeA,       &r.m_VarEdgeB,       &r.m_VarFragment, &r.m_VarSaved[0],
      &r.m_VarSaved[1],    &r.m_VarSaved[2],    &r.m_VarSaved[3], &r.m_VarCur[0],
      &r.m_VarCur[1],      &r.m_VarCur[2],      &r.m_VarCur[3],   &r.m_Edges[0].Delta,
      &r.m_Edges[1].Delta, &r.m_Edges[2].Delta, &r.m_Span.Delta,
  };
  for (const TRenderCPU::VAR_DATA* record : records) {
    for (std::size_t i = 0; i < 8; ++i) {
      ExpectVec(0, 0, 0, 0, (*record)[i]);
    }
  }
  for (const TRenderCPU::EDGE* e : {&r.m_Edges[0], &r.m_Edges[1], &r.m_Edges[2], &r.m_Span}) {
    EXPECT_EQ(nullptr, e->Begin);
    EXPECT_EQ(nullptr, e->End);
  }
}

TEST_F(FreshContext, HasIdentityMatricesAndEmptyStacks) {
  const TRenderCPU& r = *m_Render;
  for (std::size_t i = 0; i < 16; ++i) {
    const double expected = i % 5 == 0 ? 1.0 : 0.0;
    EXPECT_EQ(expected, r.m_ModelView[i]);
    EXPECT_EQ(expected, r.m_Projection[i]);
    EXPECT_EQ(expected, r.m_ModelViewProjection[i]);
    for (const TRenderCPU::TTexUnit& unit : r.m_TexUnits) {
      EXPECT_EQ(expected, unit.TexMatrix[i]);
    }
  }
  EXPECT_TRUE(r.m_ModelViewStack.empty());
  EXPECT_TRUE(r.m_ProjectionStack.empty());
  EXPECT_TRUE(r.m_AttribStack.empty());
  EXPECT_TRUE(r.m_ClientAttribStack.empty());
  EXPECT_TRUE(r.m_VertexArrays.empty());
  EXPECT_TRUE(r.m_Buffers.empty());
}

TEST_F(FreshContext, HasTheDefaultLightModelAndFog) {
  const TRenderCPU& r = *m_Render;
  EXPECT_EQ(0x800, r.m_Fog.Mode); // GL_EXP
  EXPECT_EQ(1.0, r.m_Fog.Density);
  EXPECT_EQ(0.0, r.m_Fog.Start);
  EXPECT_EQ(1.0, r.m_Fog.End);
  ExpectVec(0, 0, 0, 0, r.m_Fog.Color);
  EXPECT_EQ(0x408u, r.m_ColorMaterialFace);  // GL_FRONT_AND_BACK
  EXPECT_EQ(0x1602u, r.m_ColorMaterialMode); // GL_AMBIENT_AND_DIFFUSE
  EXPECT_FALSE(r.m_ColorMaterial);
  EXPECT_FALSE(r.m_LightModelLocalViewer);
  EXPECT_FALSE(r.m_LightModelTwoSide);
  EXPECT_FALSE(r.m_LightModelColorControl);
  ExpectVec(0.2, 0.2, 0.2, 1.0, r.m_LightModelAmbient);
}

TEST_F(FreshContext, HasOneZeroedTableOfArrays) {
  const TRenderCPU& r = *m_Render;
  ASSERT_NE(nullptr, r.m_DefaultVertexArray);
  EXPECT_EQ(r.m_DefaultVertexArray, r.m_VertexArray);
  EXPECT_EQ(0u, r.m_VertexArrayBinding);
  for (const std::uint32_t binding : r.m_BufferBindings) {
    EXPECT_EQ(0u, binding);
  }
  for (const TRenderCPU::TVertexAttribPointer& p : r.m_DefaultVertexArray->Attribs) {
    EXPECT_FALSE(p.Enabled);
    EXPECT_EQ(0, p.Size);
    EXPECT_EQ(0u, p.Type);
    EXPECT_EQ(nullptr, p.Pointer);
    EXPECT_EQ(nullptr, p.GetValue);
  }
  for (const auto* p :
       {&r.m_VertexPointer, &r.m_NormalPointer, &r.m_ColorPointer, &r.m_TexCoordPointer}) {
    EXPECT_FALSE(p->Enabled);
    EXPECT_EQ(nullptr, p->Pointer);
  }
}

TEST_F(FreshContext, HasNoErrorAndNoCallback) {
  EXPECT_EQ(0u, m_Render->m_Error);
  EXPECT_EQ(nullptr, m_Render->m_DebugCallback);
  EXPECT_EQ(nullptr, m_Render->m_DebugUserParam);
  EXPECT_FALSE(m_Render->m_DebugOutput);
  ExpectVec(0, 0, 0, 0, m_Render->m_RasterPos);
  EXPECT_EQ(0, m_Render->m_ActiveTexture);
}

TEST_F(FreshContext, DeclaresItsFieldsInOrder) {
  TRenderCPU& r = *m_Render;
#define AT(member) reinterpret_cast<std::uintptr_t>(&r.member)
  const std::uintptr_t fields[] = {
      AT(m_Created),
      AT(m_DepthMask),
      AT(m_BlendEnabled),
      AT(m_BlendSrc),
      AT(m_BlendDst),
      AT(m_BlendFunc),
      AT(m_BlendFuncM),
      AT(m_PointSize),
      AT(m_LineWidth),
      AT(m_Normalize),
      AT(m_CullFaceEnabled),
      AT(m_CullFaceMode),
      AT(m_FrontFaceCCW),
      AT(m_DepthTest),
      AT(m_EnabledLightCount),
      AT(m_Lighting),
      AT(m_FogEnabled),
      AT(m_PolygonOffsetFill),
      AT(m_PolygonOffsetFactor),
      AT(m_PolygonOffsetUnits),
      AT(m_PolygonModeFront),
      AT(m_PolygonModeBack),
      AT(m_CalcDepth),
      AT(m_PerspectiveHint),
      AT(m_StencilTest),
      AT(m_StencilFunc),
      AT(m_StencilRef),
      AT(m_StencilValueMask),
      AT(m_StencilFail),
      AT(m_StencilZFail),
      AT(m_StencilZPass),
      AT(m_StencilWriteMask),
      AT(m_StencilCompare),
      AT(m_StencilFailOp),
      AT(m_StencilZFailOp),
      AT(m_StencilZPassOp),
      AT(m_ColorMask),
      AT(m_InBeginEnd),
      AT(m_MatrixMode),
      AT(m_Width),
      AT(m_Height),
      AT(m_ClearColor),
      AT(m_ClearDepth),
      AT(m_ClearStencil),
      AT(m_CurrentSurface),
      AT(m_FrameBuffer),
      AT(m_ColorSurface),
      AT(m_DepthSurface),
      AT(m_StencilSurface),
      AT(m_PrimitiveMode),
      AT(m_ShadeModel),
      AT(m_Uniforms),
      AT(m_CurAttrib),
      AT(m_CurVertex),
      AT(m_CurNormal),
      AT(m_CurColor),
      AT(m_CurTexCoord),
      AT(m_VertexPointer),
      AT(m_NormalPointer),
      AT(m_ColorPointer),
      AT(m_TexCoordPointer),
      AT(m_VarEdgeA),
      AT(m_VarEdgeB),
      AT(m_VarFragment),
      AT(m_Edges),
      AT(m_Span),
      AT(m_VarSaved),
      AT(m_VarCur),
      AT(m_StripIndex),
      AT(m_VertexIndex),
      AT(m_Pending),
      AT(m_VarPosition),
      AT(m_VarColor),
      AT(m_VarSecondary),
      AT(m_VarBackColor),
      AT(m_VarBackSecondary),
      AT(m_VarTexCoord),
      AT(m_VarCount),
      AT(m_Fragment),
      AT(m_ModelView),
      AT(m_Projection),
      AT(m_ModelViewProjection),
      AT(m_Fog),
      AT(m_ColorMaterialFace),
      AT(m_ColorMaterialMode),
      AT(m_ColorMaterial),
      AT(m_MaterialFront),
      AT(m_MaterialBack),
      AT(m_LightModelLocalViewer),
      AT(m_LightModelTwoSide),
      AT(m_LightModelColorControl),
      AT(m_LightModelAmbient),
      AT(m_Lights),
      AT(m_EnabledLights),
      AT(m_ActiveTexture),
      AT(m_TexUnits),
      AT(m_DefaultVertexArray),
      AT(m_VertexArray),
      AT(m_VertexArrayBinding),
      AT(m_BufferBindings),
      AT(m_ModelViewStack),
      AT(m_ProjectionStack),
      AT(m_AttribStack),
      AT(m_ClientAttribStack),
      AT(m_VertexArrays),
      AT(m_Buffers),
      AT(m_StdVertexShader),
      AT(m_StdFragmentShader),
      AT(m_VertexShader),
      AT(m_FragmentShader),
      AT(m_Program),
      AT(m_DefaultProgram),
      AT(m_DrawBuffer),
      AT(m_PixelWrite),
      AT(m_DepthCompare),
      AT(m_DepthFunc),
      AT(m_PixelPack),
      AT(m_PixelUnpack),
      AT(m_Error),
      AT(m_RasterPos),
      AT(m_WindowPos),
      AT(m_LastPixelX),
      AT(m_LastPixelY),
      AT(m_Textures),
      AT(m_VertexHandler),
      AT(m_DebugCallback),
      AT(m_DebugUserParam),
      AT(m_DebugOutput),
  };
#undef AT
  for (std::size_t i = 1; i < std::size(fields); ++i) {
    EXPECT_LT(fields[i - 1], fields[i]) << "field " << i;
  }
  EXPECT_EQ(8u, std::size(r.m_Lights));
  EXPECT_EQ(8u, std::size(r.m_TexUnits));
  EXPECT_EQ(8u, std::size(r.m_EnabledLights));
  EXPECT_EQ(6u, std::size(r.m_BufferBindings));
}

// --- The frame buffer

TEST(FrameBuffer, StartsEmpty) {
  const TRenderCPU::TFrameBuffer fb;
  EXPECT_EQ(0, fb.Width);
  EXPECT_EQ(0, fb.Height);
  EXPECT_EQ(nullptr, fb.Color);
  EXPECT_EQ(nullptr, fb.Depth);
  EXPECT_EQ(nullptr, fb.Stencil);
}

void ExpectSurface(const DATASURFACE* s, unsigned int format, unsigned int type, int channels,
                   int pixelBytes) {
  ASSERT_NE(nullptr, s);
  EXPECT_EQ(7, s->Width);
  EXPECT_EQ(5, s->Height);
  EXPECT_EQ(format, s->Format);
  EXPECT_EQ(type, s->Type);
  EXPECT_EQ(channels, s->Channels);
  EXPECT_EQ(pixelBytes, s->PixelStride);
  EXPECT_EQ(pixelBytes * 7, s->RowStride);
  for (const std::uint8_t byte : BytesOf(s)) {
    ASSERT_EQ(0, byte);
  }
}

TEST(FrameBuffer, MakesThreeZeroedSurfaces) {
  TRenderCPU::TFrameBuffer fb;
  ASSERT_TRUE(fb.Create(7, 5));
  EXPECT_EQ(7, fb.Width);
  EXPECT_EQ(5, fb.Height);
  ExpectSurface(fb.Color, 6, 3, 4, 4);
  ExpectSurface(fb.Depth, 13, 10, 1, 4);
  ExpectSurface(fb.Stencil, 14, 3, 1, 1);
}

TEST(FrameBuffer, RefusesASizeBelowOneAndChangesNothing) {
  TRenderCPU::TFrameBuffer fb;
  ASSERT_TRUE(fb.Create(7, 5));
  const TDataSurface* const color = fb.Color;
  EXPECT_FALSE(fb.Create(0, 5));
  EXPECT_FALSE(fb.Create(7, 0));
  EXPECT_FALSE(fb.Create(-1, 5));
  EXPECT_FALSE(fb.Create(7, -2147483647 - 1));
  EXPECT_EQ(7, fb.Width);
  EXPECT_EQ(5, fb.Height);
  EXPECT_EQ(color, fb.Color);
}

TEST(FrameBuffer, IsEmptyAfterAFailure) {
  TRenderCPU::TFrameBuffer fb;
  ASSERT_TRUE(fb.Create(7, 5));
  EXPECT_FALSE(fb.Create(0x40000000, 2)); // a row of 2^32 bytes
  EXPECT_EQ(0, fb.Width);
  EXPECT_EQ(0, fb.Height);
  EXPECT_EQ(nullptr, fb.Color);
  EXPECT_EQ(nullptr, fb.Depth);
  EXPECT_EQ(nullptr, fb.Stencil);
}

TEST(FrameBuffer, DestroyEmptiesItAndCanBeRepeated) {
  TRenderCPU::TFrameBuffer fb;
  ASSERT_TRUE(fb.Create(7, 5));
  fb.Destroy();
  EXPECT_EQ(0, fb.Width);
  EXPECT_EQ(0, fb.Height);
  EXPECT_EQ(nullptr, fb.Color);
  EXPECT_EQ(nullptr, fb.Depth);
  EXPECT_EQ(nullptr, fb.Stencil);
  fb.Destroy();
  EXPECT_TRUE(fb.Create(1, 1));
}

// --- Create, SetSize, Destroy

TEST(Create, TakesTheSurfacesOfItsFrameBuffer) {
  TScene s(7, 5);
  EXPECT_TRUE(s->m_Created);
  EXPECT_EQ(7, s->m_Width);
  EXPECT_EQ(5, s->m_Height);
  ASSERT_NE(nullptr, s->m_FrameBuffer);
  EXPECT_EQ(7, s->m_FrameBuffer->Width);
  EXPECT_EQ(s->m_FrameBuffer->Color, s->m_ColorSurface);
  EXPECT_EQ(s->m_FrameBuffer->Depth, s->m_DepthSurface);
  EXPECT_EQ(s->m_FrameBuffer->Stencil, s->m_StencilSurface);
  ExpectSurface(s->m_ColorSurface, 6, 3, 4, 4);
  EXPECT_EQ(nullptr, s->m_Textures);
  EXPECT_EQ(0u, s->GetError());
}

TEST(Create, InstallsTheStandardPair) {
  TScene s;
  ASSERT_NE(nullptr, s->m_StdVertexShader);
  ASSERT_NE(nullptr, s->m_StdFragmentShader);
  ASSERT_NE(nullptr, s->m_DefaultProgram);
  EXPECT_EQ(s->m_StdVertexShader, s->m_VertexShader);
  EXPECT_EQ(s->m_StdFragmentShader, s->m_FragmentShader);
  EXPECT_EQ(s->m_DefaultProgram, s->m_Program);
  EXPECT_EQ(s->m_DefaultProgram, s->GetProgram());
  EXPECT_EQ(s->m_StdVertexShader, s->m_DefaultProgram->GetShaderV());
  EXPECT_EQ(s->m_StdFragmentShader, s->m_DefaultProgram->GetShaderF());
  EXPECT_EQ(s.Get(), s->m_StdVertexShader->m_Render);
  EXPECT_EQ(s.Get(), s->m_StdFragmentShader->m_Render);
  EXPECT_FALSE(s->m_CalcDepth);
  // One each of the context's own, of the program, and of being installed.
  EXPECT_EQ(3u, s->m_StdVertexShader->GetRefCount());
  EXPECT_EQ(3u, s->m_StdFragmentShader->GetRefCount());
  EXPECT_EQ(2u, s->m_DefaultProgram->GetRefCount());
}

TEST(Create, OnACreatedContextIsRefused) {
  TScene s(7, 5);
  const TDataSurface* const color = s->m_ColorSurface;
  const auto* const program = s->m_Program;
  EXPECT_FALSE(s->Create(3, 3, nullptr));
  EXPECT_TRUE(s->m_Created);
  EXPECT_EQ(7, s->m_Width);
  EXPECT_EQ(color, s->m_ColorSurface);
  EXPECT_EQ(program, s->m_Program);
  EXPECT_EQ(0u, s->GetError());
}

TEST(Create, WithASizeBelowOneIsRefused) {
  TRenderCPU r;
  EXPECT_FALSE(r.Create(0, 10, nullptr));
  EXPECT_FALSE(r.Create(10, 0, nullptr));
  EXPECT_FALSE(r.Create(-3, 10, nullptr));
  EXPECT_FALSE(r.m_Created);
  EXPECT_EQ(nullptr, r.m_FrameBuffer);
  EXPECT_EQ(nullptr, r.m_DefaultProgram);
  EXPECT_EQ(0u, r.GetError());
  EXPECT_NE(nullptr, r.m_DefaultVertexArray);
  EXPECT_TRUE(r.Create(10, 10, nullptr));
}

TEST(Create, OfAnImpossibleSizeLeavesNothing) {
  TRenderCPU r;
  EXPECT_FALSE(r.Create(0x40000000, 1, nullptr));
  EXPECT_FALSE(r.m_Created);
  EXPECT_EQ(nullptr, r.m_FrameBuffer);
  EXPECT_EQ(nullptr, r.m_ColorSurface);
  EXPECT_EQ(0, r.m_Width);
  EXPECT_TRUE(r.Create(2, 2, nullptr));
}

TEST(Create, WithAGiverOfAnotherKindIsRefused) {
  TOtherRender other;
  TRenderCPU r;
  EXPECT_FALSE(r.Create(4, 4, &other));
  EXPECT_FALSE(r.m_Created);
  EXPECT_EQ(nullptr, r.m_FrameBuffer);
  EXPECT_EQ(nullptr, r.m_DefaultProgram);
  EXPECT_EQ(nullptr, r.m_Textures);
  EXPECT_EQ(0u, r.GetError());
}

TEST(Create, SharesTheTableOfAnother) {
  TScene a;
  EXPECT_EQ(nullptr, a->m_Textures);
  {
    TScene b(3, 3, a.Get());
    ASSERT_NE(nullptr, a->m_Textures);
    EXPECT_EQ(a->m_Textures, b->m_Textures);
    EXPECT_EQ(2u, a->m_Textures->RefCount.load());
    TScene c(3, 3, b.Get());
    EXPECT_EQ(a->m_Textures, c->m_Textures);
    EXPECT_EQ(3u, a->m_Textures->RefCount.load());
  }
  EXPECT_EQ(1u, a->m_Textures->RefCount.load());
}

TEST(Create, WithItselfAsGiverSharesNothing) {
  TRenderCPU r;
  EXPECT_TRUE(r.Create(2, 2, &r));
  EXPECT_TRUE(r.m_Created);
  EXPECT_EQ(nullptr, r.m_Textures);
}

TEST(Create, KeepsATableThatItHasAlready) {
  TScene a;
  TScene b;
  TRenderCPU c;
  ASSERT_TRUE(a->_Share(&c)); // before it is created
  auto* const table = c.m_Textures;
  EXPECT_TRUE(c.Create(2, 2, b.Get()));
  EXPECT_EQ(table, c.m_Textures);
  EXPECT_EQ(a->m_Textures, c.m_Textures);
  EXPECT_EQ(nullptr, b->m_Textures);
  EXPECT_EQ(2u, table->RefCount.load());
}

TEST(Create, AfterDestroyGivesNewSurfacesAndShaders) {
  TRenderCPU r;
  ASSERT_TRUE(r.Create(4, 4, nullptr));
  r.Translated(1, 2, 3);
  r.EnableDepthTest(true);
  r.Destroy();
  ASSERT_TRUE(r.Create(6, 3, nullptr));
  EXPECT_EQ(6, r.m_Width);
  EXPECT_EQ(6, r.m_ColorSurface->Width);
  EXPECT_EQ(r.m_StdVertexShader, r.m_VertexShader);
  EXPECT_EQ(r.m_DefaultProgram, r.GetProgram());
  EXPECT_EQ(nullptr, r.m_DefaultVertexArray);
  EXPECT_EQ(nullptr, r.m_VertexArray);
  EXPECT_TRUE(r.m_DepthTest);
  EXPECT_EQ(1.0, r.m_ModelView[12]);

  // It serves immediate drawing.
  r.LoadIdentity();
  r.EnableDepthTest(false);
  DrawFullQuad(r);
  EXPECT_EQ(255, r.m_ColorSurface->Data[0]);

  // The generic arrays have no table and do nothing.
  const float value[4] = {0, 0, 0, 0};
  int out = 7;
  r.EnableVertexAttribArray(0);
  r.VertexAttribPointer(0, 4, GL_FLOAT, 0, 0, value);
  r.DisableVertexAttribArray(0);
  r.GetVertexAttrib(0, GL_VERTEX_ATTRIB_ARRAY_ENABLED, &out);
}

TEST(SetSize, NeedsACreatedContext) {
  TRenderCPU r;
  EXPECT_FALSE(r.SetSize(4, 4));
  EXPECT_FALSE(r.m_Created);
  EXPECT_EQ(0u, r.GetError());
}

TEST(SetSize, RefusesASizeBelowOneAndChangesNothing) {
  TScene s(7, 5);
  const TDataSurface* const color = s->m_ColorSurface;
  EXPECT_FALSE(s->SetSize(0, 4));
  EXPECT_FALSE(s->SetSize(4, 0));
  EXPECT_TRUE(s->m_Created);
  EXPECT_EQ(7, s->m_Width);
  EXPECT_EQ(5, s->m_Height);
  EXPECT_EQ(color, s->m_ColorSurface);
}

TEST(SetSize, DropsTheOldContents) {
  TScene s(7, 5);
  s->ClearColor(1.0f, 1.0f, 1.0f, 1.0f);
  s->Clear(true, true, true);
  const auto* const program = s->m_Program;
  ASSERT_TRUE(s->SetSize(3, 2));
  EXPECT_EQ(3, s->m_Width);
  EXPECT_EQ(2, s->m_Height);
  EXPECT_EQ(s->m_FrameBuffer->Color, s->m_ColorSurface);
  EXPECT_EQ(s->m_FrameBuffer->Depth, s->m_DepthSurface);
  EXPECT_EQ(s->m_FrameBuffer->Stencil, s->m_StencilSurface);
  EXPECT_EQ(3, s->m_DepthSurface->Width);
  EXPECT_EQ(0, s.Painted());
  EXPECT_EQ(program, s->m_Program);
  DrawFullQuad(*s);
  EXPECT_EQ(6, s.Painted());
}

TEST(SetSize, ThatFailsLeavesAContextThatIsNotCreated) {
  TScene s(7, 5);
  EXPECT_FALSE(s->SetSize(0x40000000, 1));
  EXPECT_FALSE(s->m_Created);
  EXPECT_EQ(nullptr, s->m_FrameBuffer);
  EXPECT_EQ(nullptr, s->m_ColorSurface);
  EXPECT_EQ(nullptr, s->m_Program);
  vec_t_<int, 2> size = {9, 9};
  EXPECT_FALSE(s->GetSize(&size));
}

TEST(SetSize, UnbindsABoundColourSurface) {
  TScene s(4, 4);
  TDataSurface bound;
  ASSERT_TRUE(bound.Create(4, 4, DATA_FORMAT(6), DATA_TYPE(3), 4));
  s->BindColorSurface(&bound);
  ASSERT_EQ(&bound, s->GetColorSurface());
  ASSERT_TRUE(s->SetSize(4, 4));
  EXPECT_EQ(s->m_FrameBuffer->Color, s->GetColorSurface());
  DrawFullQuad(*s);
  EXPECT_EQ(16, s.Painted());
  for (const std::uint8_t byte : BytesOf(&bound)) {
    ASSERT_EQ(0, byte);
  }
}

TEST(SetSize, KeepsTheDrawBuffer) {
  TScene s(4, 4);
  TDataSurface buffer;
  ASSERT_TRUE(buffer.Create(4, 4, DATA_FORMAT(6), DATA_TYPE(11), 4));
  s->SetDrawBuffer(&buffer);
  ASSERT_TRUE(s->SetSize(6, 6));
  EXPECT_EQ(&buffer, s->m_DrawBuffer);
  EXPECT_NE(nullptr, s->m_PixelWrite);
}

TEST(Destroy, GivesBackAllButState) {
  TScene s(4, 4);
  s->_SetError(GL_INVALID_VALUE);
  s->EnableBlend(true);
  s->PushMatrix();
  s->Destroy();
  EXPECT_FALSE(s->m_Created);
  EXPECT_EQ(0, s->m_Width);
  EXPECT_EQ(0, s->m_Height);
  EXPECT_EQ(nullptr, s->m_FrameBuffer);
  EXPECT_EQ(nullptr, s->m_ColorSurface);
  EXPECT_EQ(nullptr, s->m_DepthSurface);
  EXPECT_EQ(nullptr, s->m_StencilSurface);
  EXPECT_EQ(nullptr, s->m_StdVertexShader);
  EXPECT_EQ(nullptr, s->m_StdFragmentShader);
  EXPECT_EQ(nullptr, s->m_VertexShader);
  EXPECT_EQ(nullptr, s->m_FragmentShader);
  EXPECT_EQ(nullptr, s->m_Program);
  EXPECT_EQ(nullptr, s->m_DefaultProgram);
  EXPECT_EQ(nullptr, s->m_DefaultVertexArray);
  EXPECT_EQ(nullptr, s->m_VertexArray);
  EXPECT_EQ(0u, s->m_VertexArrayBinding);
  EXPECT_EQ(nullptr, s->m_Textures);
  EXPECT_TRUE(s->m_BlendEnabled);
  EXPECT_EQ(1u, s->m_ModelViewStack.size());
  EXPECT_EQ(unsigned{GL_INVALID_VALUE}, s->GetError());
}

TEST(Destroy, CanBeRepeatedAndComesBeforeCreate) {
  TRenderCPU r;
  r.Destroy();
  r.Destroy();
  EXPECT_FALSE(r.m_Created);
  EXPECT_TRUE(r.Create(2, 2, nullptr));
}

TEST(Destroy, GivesBackBuffersAndArrayObjects) {
  TScene s;
  unsigned int ids[2];
  s->GenBuffers(2, ids);
  s->BindBuffer(GL_ARRAY_BUFFER, ids[0]);
  s->BufferData(GL_ARRAY_BUFFER, 16, nullptr, GL_STATIC_DRAW);
  unsigned int arrays[1];
  s->GenVertexArrays(1, arrays);
  s->BindVertexArray(arrays[0]);
  s->Destroy();
  EXPECT_TRUE(s->m_Buffers.empty());
  EXPECT_TRUE(s->m_VertexArrays.empty());
  EXPECT_EQ(nullptr, s->m_VertexArray);
}

TEST(Destroy, EndsBeingCurrent) {
  TScene s;
  THeld<TZxGLSurface> surface;
  ASSERT_TRUE(s->MakeCurrent(surface.Get()));
  EXPECT_TRUE(s->IsCurrent());
  EXPECT_EQ(surface.Get(), s->m_CurrentSurface);
  s->Destroy();
  EXPECT_FALSE(s->IsCurrent());
  EXPECT_EQ(nullptr, s->m_CurrentSurface);
}

TEST(Destroy, LetsGoOfCustomShaders) {
  THeld<TPassVertexShader> vertex;
  THeld<TSeeingFragmentShader> fragment;
  THeld<Zx3D::TProgramCPU> program;
  program->SetShaderV(vertex.Get());
  program->SetShaderF(fragment.Get());
  TScene s;
  s->SetProgram(program.Get());
  EXPECT_EQ(s.Get(), vertex->m_Render);
  s->Destroy();
  EXPECT_EQ(nullptr, vertex->m_Render);
  EXPECT_EQ(nullptr, fragment->m_Render);
  EXPECT_EQ(1u, program->GetRefCount());
  EXPECT_EQ(2u, vertex->GetRefCount());
}

TEST(Destroy, LetsGoOfTheSharedTableOnce) {
  TScene a;
  TScene b(2, 2, a.Get());
  b->Destroy();
  EXPECT_EQ(nullptr, b->m_Textures);
  EXPECT_EQ(1u, a->m_Textures->RefCount.load());
}

TEST(Share, GivesTheTableToAnother) {
  TScene a;
  TScene b;
  EXPECT_TRUE(a->_Share(b.Get()));
  ASSERT_NE(nullptr, a->m_Textures);
  EXPECT_EQ(a->m_Textures, b->m_Textures);
  EXPECT_EQ(2u, a->m_Textures->RefCount.load());
}

TEST(Share, IsRefused) {
  TScene a;
  TScene b;
  EXPECT_FALSE(a->_Share(nullptr));
  EXPECT_FALSE(a->_Share(a.Get()));
  TOtherRender other;
  EXPECT_FALSE(a->_Share(&other));
  EXPECT_EQ(nullptr, a->m_Textures); // a refusal makes no record
  ASSERT_TRUE(a->_Share(b.Get()));
  EXPECT_FALSE(a->_Share(b.Get())); // has one already
  TScene c;
  EXPECT_FALSE(c->_Share(b.Get()));
  EXPECT_EQ(nullptr, c->m_Textures);
  EXPECT_EQ(2u, a->m_Textures->RefCount.load());
}

// --- Small operations

TEST(Context, TellsItsSize) {
  TScene s(7, 5);
  vec_t_<int, 2> size = {0, 0};
  EXPECT_TRUE(s->GetSize(&size));
  EXPECT_EQ(7, size.x);
  EXPECT_EQ(5, size.y);

  TRenderCPU none;
  size = {9, 9};
  EXPECT_FALSE(none.GetSize(&size));
  EXPECT_EQ(9, size.x);
  EXPECT_EQ(0u, none.GetError());
}

TEST(Context, BecomesCurrentOnlyWhenCreated) {
  THeld<TZxGLSurface> surface;
  TRenderCPU none;
  EXPECT_FALSE(none.DoMakeCurrent(surface.Get()));
  EXPECT_EQ(nullptr, none.m_CurrentSurface);
  EXPECT_EQ(0u, none.GetError());

  TScene s;
  EXPECT_TRUE(s->DoMakeCurrent(surface.Get()));
  EXPECT_EQ(surface.Get(), s->m_CurrentSurface);
  EXPECT_EQ(1u, surface->GetRefCount()); // not owned
  s->DoDoneCurrent();
  EXPECT_EQ(nullptr, s->m_CurrentSurface);
}

TEST(Context, HasNothingToFinishOrSwap) {
  TScene s;
  DrawFullQuad(*s);
  const auto before = AllBytes(*s);
  EXPECT_TRUE(s->SwapBuffers(nullptr));
  s->Flush();
  s->Finish();
  s->PixelZoom(3.0f, -2.0f);
  EXPECT_EQ(before, AllBytes(*s));
  EXPECT_EQ(0u, s->GetError());
}

TEST(Context, AnswersOneStringForEveryName) {
  TScene s;
  for (const unsigned int name : {0x1F00u, 0x1F01u, 0x1F02u, 0x1F03u, 0u, 0xFFFFFFFFu}) {
    EXPECT_STREQ("GL_ARB_texture_non_power_of_two", s->GetString(name));
  }
  EXPECT_EQ(0u, s->GetError());
  EXPECT_FALSE(s->IsSupport_SGIS_generate_mipmap());
}

TEST(Context, ViewportAndScissorTakeTheWholeSurface) {
  TScene s(7, 5);
  s->Viewport(0, 0, 7, 5);
  s->Scissor(0, 0, 7, 5);
  EXPECT_EQ(0u, s->GetError());
}

template <class TCall> std::string ThrownBy(TCall call) {
  try {
    call();
  } catch (const TZxMessage& message) {
    return message.what();
  }
  return "nothing thrown";
}

TEST(Context, ViewportAndScissorThrowForAnythingElse) {
  TScene s(7, 5);
  const std::string viewport =
      "@virtual void Zx3D::TRenderCPU::Viewport(int, int, int, int): Under construction!";
  const std::string scissor =
      "@virtual void Zx3D::TRenderCPU::Scissor(int, int, int, int): Under construction!";
  const int other[4][4] = {{1, 0, 7, 5}, {0, 1, 7, 5}, {0, 0, 6, 5}, {0, 0, 7, 4}};
  for (const auto& o : other) {
    EXPECT_EQ(viewport, ThrownBy([&] { s->Viewport(o[0], o[1], o[2], o[3]); }));
    EXPECT_EQ(scissor, ThrownBy([&] { s->Scissor(o[0], o[1], o[2], o[3]); }));
  }
  EXPECT_EQ(0u, s->GetError());
}

TEST(Context, ShadeModelIsSmoothOnly) {
  TScene s;
  s->ShadeModel(0x1D01);
  EXPECT_EQ(0u, s->GetError());
  EXPECT_EQ("@virtual void Zx3D::TRenderCPU::ShadeModel(GLenum): Under construction!",
            ThrownBy([&] { s->ShadeModel(0x1D00); }));
  EXPECT_EQ(0u, s->GetError());
  s->ShadeModel(7);
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError());
  EXPECT_EQ(0x1D01u, s->m_ShadeModel);
}

TEST(Context, UnknownCapabilitiesThrow) {
  TScene s;
  EXPECT_EQ("ERROR: TRenderCPU::Enable dont support mode 4660", ThrownBy([&] { s->Enable(4660); }));
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError());
  EXPECT_EQ("ERROR: TRenderCPU::Enable dont support mode 4661",
            ThrownBy([&] { s->Disable(4661); }));
  EXPECT_EQ(unsigned{GL_INVALID_ENUM}, s->GetError());
  EXPECT_EQ("ERROR: TRenderCPU::Enable dont support mode 4294967295",
            ThrownBy([&] { s->IsEnabled(0xFFFFFFFF); }));
  EXPECT_EQ(0u, s->GetError());
}

} // namespace
