// What a host has compiled in of the renderer's records: the order and the sizes of their fields. A
// field that is added, taken out, moved or widened makes every such host read the wrong place.
// Sizes are those of the processor's convention for the types, by hand; each field lies where the
// one before ends, rounded up to its own alignment.

#include <ZxCore3D/render/TRenderCPU.h>

#include <cstddef>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Zx3D::TRenderCPU;

struct TField {
  const char* Name;
  std::size_t Size; ///< as it is to be
  std::size_t Offset;
  std::size_t SizeOf;
  std::size_t Alignment;
};

std::size_t OffsetIn(const void* record, const void* field) {
  return static_cast<std::size_t>(static_cast<const char*>(field) -
                                  static_cast<const char*>(record));
}

constexpr std::size_t Aligned(std::size_t offset, std::size_t alignment) {
  return (offset + alignment - 1) / alignment * alignment;
}

#define FIELD(name, size)                                                                          \
  { #name, size, OffsetIn(&r, &r.name), sizeof r.name, alignof(decltype(r.name)) }

/// Holds the fields against their sizes, from the first one's offset on; returns where the last
/// ends.
std::size_t ExpectInOrder(std::size_t at, const std::vector<TField>& fields) {
  for (const TField& field : fields) {
    at = Aligned(at, field.Alignment);
    EXPECT_EQ(at, field.Offset) << field.Name;
    EXPECT_EQ(field.Size, field.SizeOf) << field.Name;
    at += field.Size;
  }
  return at;
}

// Sizes in bytes.
constexpr std::size_t kPointer = 8;
constexpr std::size_t kMethod = 2 * kPointer; ///< a pointer to a member function
constexpr std::size_t kGrowing = 3 * kPointer;
constexpr std::size_t kVector4 = 4 * 8;
constexpr std::size_t kMatrix4 = 16 * 8;
constexpr std::size_t kRecord = 8 * kVector4;
constexpr std::size_t kEdge = 2 * kPointer + kRecord;
constexpr std::size_t kPointerRecord = 24 + 3 * kPointer;
constexpr std::size_t kLight = 8 + 4 * kVector4 + 3 * 8 + 6 * 8;
constexpr std::size_t kMaterial = 4 * kVector4 + 8;
constexpr std::size_t kSampler = kPointer + kMethod + kVector4 + 2 * 8 + 4 * 4;
constexpr std::size_t kTexUnit = 8 + kSampler + kMatrix4 + kGrowing;

// The table of virtual operations, the count of references, the context's own surface, whether it
// is current.
constexpr std::size_t kBases = kPointer + 8 + kPointer + 1;

using TFields = std::vector<TField>;

TFields SwitchFields(const TRenderCPU& r) {
  return {
      FIELD(m_Created, 1),
      FIELD(m_ReservedFlag, 1),
      FIELD(m_DepthMask, 1),
      FIELD(m_BlendEnabled, 1),
      FIELD(m_BlendSrc, 4),
      FIELD(m_BlendDst, 4),
      FIELD(m_BlendFunc, kPointer),
      FIELD(m_BlendFuncM, kPointer),
      FIELD(m_PointSize, 4),
      FIELD(m_LineWidth, 4),
      FIELD(m_Normalize, 1),
      FIELD(m_CullFaceEnabled, 1),
      FIELD(m_CullFaceMode, 4),
      FIELD(m_FrontFaceCCW, 1),
      FIELD(m_DepthTest, 1),
      FIELD(m_EnabledLightCount, 4),
      FIELD(m_Lighting, 1),
      FIELD(m_FogEnabled, 1),
      FIELD(m_PolygonOffsetFill, 1),
      FIELD(m_PolygonOffsetFactor, 4),
      FIELD(m_PolygonOffsetUnits, 4),
      FIELD(m_PolygonModeFront, 4),
      FIELD(m_PolygonModeBack, 4),
      FIELD(m_CalcDepth, 1),
      FIELD(m_PerspectiveHint, 4),
      FIELD(m_StencilTest, 1),
      FIELD(m_StencilFunc, 4),
      FIELD(m_StencilRef, 4),
      FIELD(m_StencilValueMask, 4),
      FIELD(m_StencilFail, 4),
      FIELD(m_StencilZFail, 4),
      FIELD(m_StencilZPass, 4),
      FIELD(m_StencilWriteMask, 4),
      FIELD(m_StencilCompare, kPointer),
      FIELD(m_StencilFailOp, kPointer),
      FIELD(m_StencilZFailOp, kPointer),
      FIELD(m_StencilZPassOp, kPointer),
      FIELD(m_ColorMask, 1),
      FIELD(m_InBeginEnd, 1),
      FIELD(m_MatrixMode, 4),
  };
}

TFields TargetFields(const TRenderCPU& r) {
  return {
      FIELD(m_Width, 4),
      FIELD(m_Height, 4),
      FIELD(m_ClearColor, 4),
      FIELD(m_ClearDepth, 4),
      FIELD(m_ClearStencil, 1),
      FIELD(m_CurrentSurface, kPointer),
      FIELD(m_FrameBuffer, kPointer),
      FIELD(m_ColorSurface, kPointer),
      FIELD(m_DepthSurface, kPointer),
      FIELD(m_StencilSurface, kPointer),
      FIELD(m_PrimitiveMode, 4),
      FIELD(m_ShadeModel, 4),
  };
}

TFields PipelineFields(const TRenderCPU& r) {
  return {
      FIELD(m_Uniforms, 32 * kVector4),
      FIELD(m_CurAttrib, 8 * kVector4),
      FIELD(m_CurVertex, kVector4),
      FIELD(m_CurNormal, kVector4),
      FIELD(m_CurColor, kVector4),
      FIELD(m_CurTexCoord, kVector4),
      FIELD(m_VertexPointer, kPointerRecord),
      FIELD(m_NormalPointer, kPointerRecord),
      FIELD(m_ColorPointer, kPointerRecord),
      FIELD(m_TexCoordPointer, kPointerRecord),
      FIELD(m_VarEdgeA, kRecord),
      FIELD(m_VarEdgeB, kRecord),
      FIELD(m_VarFragment, kRecord),
      FIELD(m_Edges, 3 * kEdge),
      FIELD(m_Span, kEdge),
      FIELD(m_VarSaved, 4 * kRecord),
      FIELD(m_VarCur, 4 * kRecord),
      FIELD(m_StripIndex, 4),
      FIELD(m_VertexIndex, 4),
      FIELD(m_Pending, 4),
      FIELD(m_VarPosition, 4),
      FIELD(m_VarColor, 4),
      FIELD(m_VarSecondary, 4),
      FIELD(m_VarBackColor, 4),
      FIELD(m_VarBackSecondary, 4),
      FIELD(m_VarTexCoord, 4),
      FIELD(m_VarCount, 4),
      FIELD(m_Fragment, kVector4 + 16),
  };
}

TFields LightingFields(const TRenderCPU& r) {
  return {
      FIELD(m_ModelView, kMatrix4),
      FIELD(m_Projection, kMatrix4),
      FIELD(m_ModelViewProjection, kMatrix4),
      FIELD(m_Fog, 8 + 3 * 8 + kVector4),
      FIELD(m_ColorMaterialFace, 4),
      FIELD(m_ColorMaterialMode, 4),
      FIELD(m_ColorMaterial, 1),
      FIELD(m_MaterialFront, kMaterial),
      FIELD(m_MaterialBack, kMaterial),
      FIELD(m_LightModelLocalViewer, 1),
      FIELD(m_LightModelTwoSide, 1),
      FIELD(m_LightModelColorControl, 1),
      FIELD(m_LightModelAmbient, kVector4),
      FIELD(m_Lights, 8 * kLight),
      FIELD(m_EnabledLights, 8 * 4),
      FIELD(m_ActiveTexture, 4),
      FIELD(m_TexUnits, 8 * kTexUnit),
  };
}

TFields ObjectFields(const TRenderCPU& r) {
  return {
      FIELD(m_DefaultVertexArray, kPointer),
      FIELD(m_VertexArray, kPointer),
      FIELD(m_VertexArrayBinding, 4),
      FIELD(m_BufferBindings, 6 * 4),
      FIELD(m_ModelViewStack, kGrowing),
      FIELD(m_ProjectionStack, kGrowing),
      FIELD(m_AttribStack, kGrowing),
      FIELD(m_ClientAttribStack, kGrowing),
      FIELD(m_VertexArrays, kGrowing),
      FIELD(m_Buffers, kGrowing),
      FIELD(m_StdVertexShader, kPointer),
      FIELD(m_StdFragmentShader, kPointer),
      FIELD(m_VertexShader, kPointer),
      FIELD(m_FragmentShader, kPointer),
      FIELD(m_Program, kPointer),
      FIELD(m_DefaultProgram, kPointer),
      FIELD(m_DrawBuffer, kPointer),
      FIELD(m_PixelWrite, kPointer),
      FIELD(m_DepthCompare, kPointer),
      FIELD(m_DepthFunc, 4),
      FIELD(m_PixelPack, 20),
      FIELD(m_PixelUnpack, 20),
      FIELD(m_Error, 4),
      FIELD(m_RasterPos, kVector4),
      FIELD(m_WindowPos, 2 * 4),
      FIELD(m_LastPixelX, 4),
      FIELD(m_LastPixelY, 4),
      FIELD(m_Textures, kPointer),
      FIELD(m_VertexHandler, kMethod),
      FIELD(m_DebugCallback, kPointer),
      FIELD(m_DebugUserParam, kPointer),
      FIELD(m_DebugOutput, 1),
  };
}

// No size depends on what stands behind the pointer.
TEST(Layout, AContextIsItsPublicMembersAndOnePointer) {
  const TRenderCPU r;
  std::size_t end = kBases;
  for (const auto fields :
       {SwitchFields, TargetFields, PipelineFields, LightingFields, ObjectFields}) {
    end = ExpectInOrder(end, fields(r));
  }
  EXPECT_EQ(Aligned(end, kPointer) + kPointer, sizeof(TRenderCPU));
}

TEST(Layout, OfTexUnits) {
  const TRenderCPU::TTexUnit r;
  ExpectInOrder(0, {FIELD(TexEnabled, 1), FIELD(TexEnvMode, 4), FIELD(Sampler, kSampler),
                    FIELD(TexMatrix, kMatrix4), FIELD(TexMatrixStack, kGrowing)});
}

TEST(Layout, OfSamplers) {
  const TRenderCPU::TTexSampler r;
  ExpectInOrder(0, {FIELD(m_Surface, kPointer), FIELD(m_GetValue, kMethod),
                    FIELD(m_BorderColor, kVector4), FIELD(m_SurfaceWidth, 8),
                    FIELD(m_SurfaceHeight, 8), FIELD(m_FilterMin, 4), FIELD(m_FilterMag, 4),
                    FIELD(m_WrapS, 4), FIELD(m_WrapT, 4)});
}

TEST(Layout, OfLights) {
  const TRenderCPU::TLight r = {};
  ExpectInOrder(0, {FIELD(Enabled, 1), FIELD(Spot, 1), FIELD(Position, kVector4),
                    FIELD(Ambient, kVector4), FIELD(Diffuse, kVector4), FIELD(Specular, kVector4),
                    FIELD(SpotDirection, 24), FIELD(SpotExponent, 8), FIELD(SpotCutoff, 8),
                    FIELD(SpotCutoffRad, 8), FIELD(ConstantAttenuation, 8),
                    FIELD(LinearAttenuation, 8), FIELD(QuadraticAttenuation, 8)});
}

TEST(Layout, OfArraysAndBuffers) {
  const TRenderCPU::TVertexAttribPointer r = {};
  ExpectInOrder(0, {FIELD(Enabled, 1), FIELD(Size, 4), FIELD(Type, 4), FIELD(Normalized, 1),
                    FIELD(Stride, 4), FIELD(EffectiveStride, 4), FIELD(Pointer, kPointer),
                    FIELD(Data, kPointer), FIELD(GetValue, kPointer)});
  EXPECT_EQ(8u * kPointerRecord, sizeof(TRenderCPU::TVertexArray));
  EXPECT_EQ(16u + kGrowing, sizeof(TRenderCPU::TBuffer));
}

TEST(Layout, OfFrameBuffers) {
  const TRenderCPU::TFrameBuffer r;
  ExpectInOrder(0, {FIELD(Width, 4), FIELD(Height, 4), FIELD(Color, kPointer),
                    FIELD(Depth, kPointer), FIELD(Stencil, kPointer)});
}

TEST(Layout, OfTextureTables) {
  const TRenderCPU::TTextureTable r;
  ExpectInOrder(0, {FIELD(RefCount, 4), FIELD(Surfaces, kGrowing), FIELD(Changes, 8),
                    FIELD(Holds, kGrowing)});
}

TEST(Layout, OfFragments) {
  const TRenderCPU::FS_DATA r = {};
  ExpectInOrder(0, {FIELD(Color, kVector4), FIELD(X, 4), FIELD(Y, 4), FIELD(FrontFacing, 1),
                    FIELD(Depth, 4)});
}

TEST(Layout, OfEdges) {
  const TRenderCPU::EDGE r = {};
  ExpectInOrder(0, {FIELD(Begin, kPointer), FIELD(End, kPointer), FIELD(Delta, kRecord)});
}

TEST(Layout, AContextIsNeitherCopiedNorAssigned) {
  EXPECT_FALSE(std::is_copy_constructible_v<TRenderCPU>);
  EXPECT_FALSE(std::is_copy_assignable_v<TRenderCPU>);
  EXPECT_FALSE(std::is_move_constructible_v<TRenderCPU>);
  EXPECT_FALSE(std::is_move_assignable_v<TRenderCPU>);
}

} // namespace
