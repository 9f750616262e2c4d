// The order of the drawing interface's virtual operations is part of what callers are compiled
// against. It is read back here from pointers to members.

#include <ZxCore3D/render/TRenderCPU.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "VirtualSlot.h"
#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/ShaderCPU.h>
#include <ZxCore3D/render/StdFragmentShader.h>
#include <ZxCore3D/render/StdVertexShader.h>

namespace {

using Zx3D::TRenderCPU;
using zx_test::SlotOf;
using TContour = std::vector<vec_t_<double, 2>>;

struct TFound {
  std::size_t Slot;
  bool Own; ///< declared by `TRenderCPU` itself
};

/// Picks the overload with these arguments.
template <class... TArgs> struct With {
  template <class TResult, class TClass> static TFound Find(TResult (TClass::*f)(TArgs...)) {
    return {SlotOf(f), std::is_same_v<TClass, TRenderCPU>};
  }
  template <class TResult, class TClass> static TFound Find(TResult (TClass::*f)(TArgs...) const) {
    return {SlotOf(f), std::is_same_v<TClass, TRenderCPU>};
  }
};

struct TSlot {
  const char* Text;
  TFound Found;
};

// clang-format off
#define OWN(name, ...) {#name "(" #__VA_ARGS__ ")", With<__VA_ARGS__>::Find(&TRenderCPU::name)}

/// The operations of the interface from its first own slot on.
std::vector<TSlot> OwnSlots() {
  return {
    OWN(Destroy),
    OWN(Clear, bool, bool, bool),
    OWN(ClearColor, float, float, float, float),
    OWN(ClearColor, const vec_t_<float, 4>&),
    OWN(ClearColor, const vec_t_<double, 4>&),
    OWN(ColorMask, unsigned char, unsigned char, unsigned char, unsigned char),
    OWN(ClearDepth, double),
    OWN(DepthFunc, unsigned int),
    OWN(DepthMask, unsigned char),
    OWN(ClearStencil, int),
    OWN(StencilFunc, unsigned int, int, unsigned int),
    OWN(StencilOp, unsigned int, unsigned int, unsigned int),
    OWN(StencilMask, unsigned int),
    OWN(Clear, unsigned int),
    OWN(Begin, unsigned int),
    OWN(End),
    OWN(PushAttrib, unsigned int),
    OWN(PopAttrib),
    OWN(Enable, unsigned int),
    OWN(Disable, unsigned int),
    OWN(IsEnabled, unsigned int),
    OWN(AlphaFunc, unsigned int, float),
    OWN(BlendFunc, unsigned int, unsigned int),
    OWN(PointSize, float),
    OWN(LineWidth, float),
    OWN(LineStipple, int, unsigned short),
    OWN(PolygonMode, unsigned int, unsigned int),
    OWN(LightModeli, unsigned int, int),
    OWN(LightModeliv, unsigned int, const int*),
    OWN(LightModelf, unsigned int, float),
    OWN(LightModelfv, unsigned int, const float*),
    OWN(Materialf, unsigned int, unsigned int, float),
    OWN(Materialfv, unsigned int, unsigned int, const float*),
    OWN(ColorMaterial, unsigned int, unsigned int),
    OWN(_Color3ub, unsigned char, unsigned char, unsigned char),
    OWN(_Color3ubv, const unsigned char*),
    OWN(_Color3f, float, float, float),
    OWN(_Color3fv, const float*),
    OWN(_Color3d, double, double, double),
    OWN(_Color3dv, const double*),
    OWN(_Color4ub, unsigned char, unsigned char, unsigned char, unsigned char),
    OWN(_Color4ubv, const unsigned char*),
    OWN(_Color4f, float, float, float, float),
    OWN(_Color4fv, const float*),
    OWN(_Color4d, double, double, double, double),
    OWN(_Color4dv, const double*),
    OWN(Normal3f, float, float, float),
    OWN(Normal3fv, const float*),
    OWN(Normal3d, double, double, double),
    OWN(Normal3dv, const double*),
    OWN(TexCoord2f, float, float),
    OWN(TexCoord2fv, const float*),
    OWN(TexCoord2d, double, double),
    OWN(TexCoord2dv, const double*),
    OWN(TexCoord3f, float, float, float),
    OWN(TexCoord3fv, const float*),
    OWN(TexCoord3d, double, double, double),
    OWN(TexCoord3dv, const double*),
    OWN(TexCoord4f, float, float, float, float),
    OWN(TexCoord4fv, const float*),
    OWN(TexCoord4d, double, double, double, double),
    OWN(TexCoord4dv, const double*),
    OWN(Vertex2i, int, int),
    OWN(Vertex2iv, const int*),
    OWN(Vertex2f, float, float),
    OWN(Vertex2fv, const float*),
    OWN(Vertex2d, double, double),
    OWN(Vertex2dv, const double*),
    OWN(Vertex3i, int, int, int),
    OWN(Vertex3iv, const int*),
    OWN(Vertex3f, float, float, float),
    OWN(Vertex3fv, const float*),
    OWN(Vertex3d, double, double, double),
    OWN(Vertex3dv, const double*),
    OWN(Vertex4f, float, float, float, float),
    OWN(Vertex4fv, const float*),
    OWN(Vertex4d, double, double, double, double),
    OWN(Vertex4dv, const double*),
    OWN(Viewport, int, int, int, int),
    OWN(Scissor, int, int, int, int),
    OWN(MatrixMode, unsigned int),
    OWN(PushMatrix),
    OWN(PopMatrix),
    OWN(LoadIdentity),
    OWN(LoadMatrixf, const float*),
    OWN(LoadMatrixd, const double*),
    OWN(MultMatrixf, const float*),
    OWN(MultMatrixd, const double*),
    OWN(Ortho, double, double, double, double, double, double),
    OWN(Frustum, double, double, double, double, double, double),
    OWN(Translatef, float, float, float),
    OWN(Translated, double, double, double),
    OWN(Rotatef, float, float, float, float),
    OWN(Rotated, double, double, double, double),
    OWN(Scalef, float, float, float),
    OWN(Scaled, double, double, double),
    OWN(PushClientAttrib, unsigned int),
    OWN(PopClientAttrib),
    OWN(EnableClientState, unsigned int),
    OWN(DisableClientState, unsigned int),
    OWN(ColorPointer, int, unsigned int, int, const void*),
    OWN(NormalPointer, unsigned int, int, const void*),
    OWN(TexCoordPointer, int, unsigned int, int, const void*),
    OWN(VertexPointer, int, unsigned int, int, const void*),
    OWN(DrawArrays, unsigned int, int, int),
    OWN(DrawElements, unsigned int, int, unsigned int, const void*),
    OWN(RasterPos2i, int, int),
    OWN(RasterPos2iv, const int*),
    OWN(RasterPos2f, float, float),
    OWN(RasterPos2fv, const float*),
    OWN(RasterPos2d, double, double),
    OWN(RasterPos2dv, const double*),
    OWN(RasterPos3i, int, int, int),
    OWN(RasterPos3f, float, float, float),
    OWN(RasterPos3fv, const float*),
    OWN(RasterPos3d, double, double, double),
    OWN(RasterPos3dv, const double*),
    OWN(RasterPos, const vec_t_<double, 2>&),
    OWN(WindowPos2i, int, int),
    OWN(PixelZoom, float, float),
    OWN(DrawPixels, int, int, unsigned int, unsigned int, const void*),
    OWN(ReadPixels, int, int, int, int, unsigned int, unsigned int, void*),
    OWN(PixelStorei, unsigned int, int),
    OWN(TexParameteri, unsigned int, unsigned int, int),
    OWN(TexParameterf, unsigned int, unsigned int, float),
    OWN(TexParameterfv, unsigned int, unsigned int, const float*),
    OWN(GetTexParameteriv, unsigned int, unsigned int, int*),
    OWN(GetTexParameterfv, unsigned int, unsigned int, float*),
    OWN(GetTexLevelParameteriv, unsigned int, int, unsigned int, int*),
    OWN(GetTexLevelParameterfv, unsigned int, int, unsigned int, float*),
    OWN(TexImage2D, unsigned int, int, int, int, int, int, unsigned int, unsigned int, const void*),
    OWN(TexSubImage2D, unsigned int, int, int, int, int, int, unsigned int, unsigned int, const void*),
    OWN(CopyTexImage2D, unsigned int, int, unsigned int, int, int, int, int, int),
    OWN(Bitmap, int, int, float, float, float, float, const unsigned char*),
    OWN(Bitmap, const TZxGLBitmap&, float, float),
    OWN(GenLists, int),
    OWN(DeleteLists, unsigned int, int),
    OWN(IsList, unsigned int),
    OWN(NewList, unsigned int, unsigned int),
    OWN(EndList),
    OWN(ListBase, unsigned int),
    OWN(CallList, unsigned int),
    OWN(CallLists, int, unsigned int, const void*),
    OWN(GenTextures, int, unsigned int*),
    OWN(DeleteTextures, int, const unsigned int*),
    OWN(IsTexture, unsigned int),
    OWN(BindTexture, unsigned int, unsigned int),
    OWN(GenBuffers, int, unsigned int*),
    OWN(DeleteBuffers, int, unsigned int*),
    OWN(BindBuffer, unsigned int, unsigned int),
    OWN(BindBufferBase, unsigned int, unsigned int, unsigned int),
    OWN(BufferData, unsigned int, long, const void*, unsigned int),
    OWN(BufferSubData, unsigned int, long, long, const void*),
    OWN(MapBuffer, unsigned int, unsigned int),
    OWN(UnmapBuffer, unsigned int),
    OWN(GetBufferParameter, unsigned int, unsigned int, int*),
    OWN(ShadeModel, unsigned int),
    OWN(Hint, unsigned int, unsigned int),
    OWN(GetBooleanv, unsigned int, unsigned char*),
    OWN(GetIntegerv, unsigned int, int*),
    OWN(GetFloatv, unsigned int, float*),
    OWN(GetDoublev, unsigned int, double*),
    OWN(DrawBuffer, unsigned int),
    OWN(ReadBuffer, unsigned int),
    OWN(SelectBuffer, int, unsigned int*),
    OWN(InitNames),
    OWN(LoadName, unsigned int),
    OWN(PushName, unsigned int),
    OWN(PopName),
    OWN(RenderMode, unsigned int),
    OWN(BindFramebuffer, unsigned int, unsigned int),
    OWN(Flush),
    OWN(Finish),
    OWN(GetError),
    OWN(GetString, unsigned int),
    OWN(Polygon, const TContour&, const vec_t_<double, 3>&, double, const vec_t_<double, 3>&, double),
    OWN(Domain, const std::vector<TContour>&, const vec_t_<double, 3>&, double, const vec_t_<double, 3>&, double),
    OWN(SwapBuffers, TZxGLSurface*),
    OWN(DoMakeCurrent, TZxGLSurface*),
    OWN(DoDoneCurrent),
    OWN(GetSize, vec_t_<int, 2>*),
    OWN(EnableBlend, bool),
    OWN(Fog, unsigned int, int),
    OWN(Fog, unsigned int, float),
    OWN(Fog, unsigned int, const float*),
    OWN(EnableDepthTest, bool),
    OWN(MultiTexCoord2f, unsigned int, float, float),
    OWN(MultiTexCoord2fv, unsigned int, const float*),
    OWN(MultiTexCoord2d, unsigned int, double, double),
    OWN(MultiTexCoord2dv, unsigned int, const double*),
    OWN(MultiTexCoord3f, unsigned int, float, float, float),
    OWN(MultiTexCoord3fv, unsigned int, const float*),
    OWN(MultiTexCoord3d, unsigned int, double, double, double),
    OWN(MultiTexCoord3dv, unsigned int, const double*),
    OWN(LoadMatrix, const MAT4<float>&),
    OWN(LoadMatrix, const MAT4<double>&),
    OWN(MultMatrix, const MAT4<float>&),
    OWN(MultMatrix, const MAT4<double>&),
    OWN(CullFace, unsigned int),
    OWN(FrontFace, unsigned int),
    OWN(EnableCullFace, bool),
    OWN(EnableLight, unsigned long, bool),
    OWN(EnableLighting, bool),
    OWN(Lightf, unsigned int, unsigned int, float),
    OWN(Lightfv, unsigned int, unsigned int, const float*),
    OWN(GetLight, unsigned int, unsigned int, float*),
    OWN(GetColorSurface),
    OWN(GetDepthSurface),
    OWN(GetStencilSurface),
    OWN(ActiveTexture, unsigned int),
    OWN(MoveTexImage2D, unsigned int, int, TDataSurface*),
    OWN(TexEnvi, unsigned int, unsigned int, int),
    OWN(TexEnvf, unsigned int, unsigned int, float),
    OWN(TexGeni, unsigned int, unsigned int, int),
    OWN(TexGenf, unsigned int, unsigned int, float),
    OWN(TexGend, unsigned int, unsigned int, double),
    OWN(TexFilter2D, unsigned int, unsigned int),
    OWN(TexWrap2D, unsigned int, unsigned int),
    OWN(SetPerspectiveCorrectionHint, unsigned int),
    OWN(GetPerspectiveCorrectionHint),
    OWN(DebugMessageCallback, void (*)(unsigned int, unsigned int, unsigned int, unsigned int, int, const char*, const void*), void*),
    OWN(SetProgram, Zx3D::TProgram*),
    OWN(GetProgram),
    OWN(Uniform, int, bool),
    OWN(Uniform, int, int),
    OWN(Uniform, int, unsigned int),
    OWN(Uniform, int, float),
    OWN(Uniform, int, double),
    OWN(Uniform, int, int, int),
    OWN(Uniform, int, float, float),
    OWN(Uniform, int, double, double),
    OWN(Uniform, int, int, int, int),
    OWN(Uniform, int, float, float, float),
    OWN(Uniform, int, double, double, double),
    OWN(Uniform, int, int, int, int, int),
    OWN(Uniform, int, float, float, float, float),
    OWN(Uniform, int, double, double, double, double),
    OWN(Uniform2, int, const float*),
    OWN(Uniform3, int, const float*),
    OWN(Uniform4, int, const float*),
    OWN(Uniform, int, const vec_t_<float, 2>&),
    OWN(Uniform, int, const vec_t_<double, 2>&),
    OWN(Uniform, int, const vec_t_<float, 3>&),
    OWN(Uniform, int, const vec_t_<double, 3>&),
    OWN(Uniform, int, const vec_t_<float, 4>&),
    OWN(Uniform, int, const vec_t_<double, 4>&),
    OWN(Uniform, int, const MAT3<float>&),
    OWN(Uniform, int, const MAT3<double>&),
    OWN(Uniform, int, const MAT4<float>&),
    OWN(Uniform, int, const MAT4<double>&),
    OWN(VertexAttrib, int, float),
    OWN(VertexAttrib, int, double),
    OWN(VertexAttrib, int, const vec_t_<float, 2>&),
    OWN(VertexAttrib, int, const vec_t_<double, 2>&),
    OWN(VertexAttrib, int, const vec_t_<float, 3>&),
    OWN(VertexAttrib, int, const vec_t_<double, 3>&),
    OWN(VertexAttrib, int, const vec_t_<float, 4>&),
    OWN(VertexAttrib, int, const vec_t_<double, 4>&),
    OWN(EnableVertexAttribArray, unsigned int),
    OWN(DisableVertexAttribArray, unsigned int),
    OWN(VertexAttribPointer, unsigned int, int, unsigned int, unsigned char, int, const void*),
    OWN(GetVertexAttrib, unsigned int, unsigned int, int*),
    OWN(IsSupport_SGIS_generate_mipmap),
  };
}

#undef OWN
// clang-format on

constexpr std::size_t kFirstOwn = 5; // two destructors and three operations of zx::TRef

TEST(Slots, HasTwoHundredAndSixtyEight) { EXPECT_EQ(268u, kFirstOwn + OwnSlots().size()); }

TEST(Slots, StandInTheirOrder) {
  std::size_t expected = kFirstOwn;
  for (const TSlot& slot : OwnSlots()) {
    EXPECT_EQ(expected, slot.Found.Slot) << slot.Text;
    EXPECT_TRUE(slot.Found.Own) << slot.Text << " is not overridden by the context";
    ++expected;
  }
}

TEST(Slots, BeginWithThoseOfTheCountedBase) {
  EXPECT_EQ(2u, With<>::Find(&TRenderCPU::AddRef).Slot);
  EXPECT_EQ(3u, With<>::Find(&TRenderCPU::Release).Slot);
  EXPECT_EQ(4u, (With<const boost::uuids::uuid&, void**>::Find(&TRenderCPU::QueryInterface).Slot));
  // They are inherited, not overridden.
  EXPECT_TRUE((std::is_same_v<decltype(&TRenderCPU::AddRef), decltype(&zx::TRef::AddRef)>));
  EXPECT_TRUE((std::is_same_v<decltype(&TRenderCPU::Release), decltype(&zx::TRef::Release)>));
  EXPECT_TRUE(
      (std::is_same_v<decltype(&TRenderCPU::QueryInterface), decltype(&zx::TRef::QueryInterface)>));
}

int s_Destroyed = 0;

/// A context with one more virtual operation, which takes the first slot behind the interface.
struct TLonger : TRenderCPU {
  ~TLonger() override { ++s_Destroyed; }
  virtual void Next() {}
};

TEST(Slots, EndWithTheQueryForMipmaps) {
  EXPECT_EQ(267u, With<>::Find(&TRenderCPU::IsSupport_SGIS_generate_mipmap).Slot);
  EXPECT_EQ(268u, SlotOf(&TLonger::Next));
}

TEST(Slots, FirstTwoAreTheDestructors) {
  using TDestructor = void (*)(void*);
  s_Destroyed = 0;

  // The second deletes the object.
  TLonger* deleted = new TLonger;
  TDestructor* table;
  std::memcpy(&table, static_cast<void*>(deleted), sizeof(table));
  table[1](deleted);
  EXPECT_EQ(1, s_Destroyed);

  // The first leaves its memory alone.
  void* memory = ::operator new(sizeof(TLonger));
  TLonger* ended = new (memory) TLonger;
  std::memcpy(&table, static_cast<void*>(ended), sizeof(table));
  table[0](ended);
  EXPECT_EQ(2, s_Destroyed);
  ::operator delete(memory);
}

TEST(Slots, IsOneLineOfBases) {
  EXPECT_TRUE((std::is_base_of_v<Zx3D::TRenderBase, TRenderCPU>));
  EXPECT_TRUE((std::is_base_of_v<Zx3D::TZxGL, Zx3D::TRenderBase>));
  EXPECT_TRUE((std::is_base_of_v<zx::TRef, Zx3D::TZxGL>));
  EXPECT_TRUE(std::is_abstract_v<Zx3D::TRenderBase>);
  EXPECT_FALSE(std::is_abstract_v<TRenderCPU>);

  TRenderCPU render;
  EXPECT_EQ(static_cast<void*>(&render), static_cast<void*>(static_cast<zx::TRef*>(&render)));
}

TEST(Slots, ResultsAreThoseThatCallersRead) {
  EXPECT_TRUE((std::is_same_v<bool, decltype(std::declval<const TRenderCPU&>().GetSize(nullptr))>));
  EXPECT_TRUE((std::is_same_v<bool, decltype(std::declval<TRenderCPU&>().DoMakeCurrent(nullptr))>));
  EXPECT_TRUE((std::is_same_v<void, decltype(std::declval<TRenderCPU&>().DoDoneCurrent())>));
  EXPECT_TRUE((std::is_same_v<bool, decltype(std::declval<TRenderCPU&>().SwapBuffers(nullptr))>));
  EXPECT_TRUE((std::is_same_v<unsigned int, decltype(std::declval<TRenderCPU&>().GetError())>));
  EXPECT_TRUE((std::is_same_v<const char*, decltype(std::declval<TRenderCPU&>().GetString(0))>));
  EXPECT_TRUE(
      (std::is_same_v<TDataSurface*, decltype(std::declval<TRenderCPU&>().GetColorSurface())>));
  EXPECT_TRUE(
      (std::is_same_v<unsigned int,
                      decltype(std::declval<TRenderCPU&>().GetPerspectiveCorrectionHint())>));
}

TEST(Slots, OfPrograms) {
  using Zx3D::TProgram;
  EXPECT_TRUE(std::is_abstract_v<TProgram>);
  EXPECT_TRUE((std::is_base_of_v<zx::TRef, TProgram>));
  EXPECT_TRUE((std::is_base_of_v<TProgram, Zx3D::TProgramCPU>));
  EXPECT_EQ(5u, SlotOf(&TProgram::GetAttribLocation));
  EXPECT_EQ(6u, SlotOf(&TProgram::GetUniformLocation));
  EXPECT_EQ(7u, SlotOf(&TProgram::GetSubroutineIndex));
  EXPECT_EQ(4u, sizeof(std::declval<TProgram&>().GetAttribLocation("")));
  EXPECT_EQ(4u, sizeof(std::declval<TProgram&>().GetUniformLocation("")));
  EXPECT_EQ(4u, sizeof(std::declval<TProgram&>().GetSubroutineIndex(0, "")));
}

TEST(Slots, OfShaders) {
  using namespace Zx3D;
  EXPECT_TRUE(std::is_abstract_v<TShaderCPU>);
  EXPECT_TRUE(std::is_abstract_v<TVertexShaderCPU>);
  EXPECT_TRUE(std::is_abstract_v<TFragmentShaderCPU>);
  EXPECT_TRUE((std::is_base_of_v<zx::TRef, TShaderCPU>));
  EXPECT_TRUE((std::is_base_of_v<TShaderCPU, TVertexShaderCPU>));
  EXPECT_TRUE((std::is_base_of_v<TShaderCPU, TFragmentShaderCPU>));
  EXPECT_TRUE((std::is_base_of_v<TVertexShaderCPU, TStdVertexShaderCPU>));
  EXPECT_TRUE((std::is_base_of_v<TFragmentShaderCPU, TStdFragmentShaderCPU>));

  EXPECT_EQ(5u, SlotOf(&TShaderCPU::GetUniformLocation));
  EXPECT_EQ(6u, SlotOf(&TShaderCPU::Begin));
  EXPECT_EQ(7u, SlotOf(&TShaderCPU::End));
  EXPECT_EQ(8u, SlotOf(&TVertexShaderCPU::Execute));
  EXPECT_EQ(9u, SlotOf(&TVertexShaderCPU::GetAttribLocation));
  EXPECT_EQ(8u, SlotOf(&TFragmentShaderCPU::Execute));
  EXPECT_EQ(9u, SlotOf(&TFragmentShaderCPU::IsCalcDepth));
}

} // namespace
