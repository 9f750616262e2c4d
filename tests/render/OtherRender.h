#pragma once

#include <ZxCore3D/render/TRenderBase.h>

namespace zx_test {

/// A context that is none of this library's kind: every operation does nothing.
class TOtherRender final : public Zx3D::TRenderBase {
public:
  void Destroy() override {}
  void Clear(bool, bool, bool) override {}
  void ClearColor(float, float, float, float) override {}
  void ClearColor(const vec_t_<float, 4>&) override {}
  void ClearColor(const vec_t_<double, 4>&) override {}
  void ColorMask(unsigned char, unsigned char, unsigned char, unsigned char) override {}
  void ClearDepth(double) override {}
  void DepthFunc(unsigned int) override {}
  void DepthMask(unsigned char) override {}
  void ClearStencil(int) override {}
  void StencilFunc(unsigned int, int, unsigned int) override {}
  void StencilOp(unsigned int, unsigned int, unsigned int) override {}
  void StencilMask(unsigned int) override {}
  void Clear(unsigned int) override {}
  void Begin(unsigned int) override {}
  void End() override {}
  void PushAttrib(unsigned int) override {}
  void PopAttrib() override {}
  void Enable(unsigned int) override {}
  void Disable(unsigned int) override {}
  bool IsEnabled(unsigned int) override { return {}; }
  void AlphaFunc(unsigned int, float) override {}
  void BlendFunc(unsigned int, unsigned int) override {}
  void PointSize(float) override {}
  void LineWidth(float) override {}
  void LineStipple(int, unsigned short) override {}
  void PolygonMode(unsigned int, unsigned int) override {}
  void LightModeli(unsigned int, int) override {}
  void LightModeliv(unsigned int, const int*) override {}
  void LightModelf(unsigned int, float) override {}
  void LightModelfv(unsigned int, const float*) override {}
  void Materialf(unsigned int, unsigned int, float) override {}
  void Materialfv(unsigned int, unsigned int, const float*) override {}
  void ColorMaterial(unsigned int, unsigned int) override {}
  void _Color3ub(unsigned char, unsigned char, unsigned char) override {}
  void _Color3ubv(const unsigned char*) override {}
  void _Color3f(float, float, float) override {}
  void _Color3fv(const float*) override {}
  void _Color3d(double, double, double) override {}
  void _Color3dv(const double*) override {}
  void _Color4ub(unsigned char, unsigned char, unsigned char, unsigned char) override {}
  void _Color4ubv(const unsigned char*) override {}
  void _Color4f(float, float, float, float) override {}
  void _Color4fv(const float*) override {}
  void _Color4d(double, double, double, double) override {}
  void _Color4dv(const double*) override {}
  void Normal3f(float, float, float) override {}
  void Normal3fv(const float*) override {}
  void Normal3d(double, double, double) override {}
  void Normal3dv(const double*) override {}
  void TexCoord2f(float, float) override {}
  void TexCoord2fv(const float*) override {}
  void TexCoord2d(double, double) override {}
  void TexCoord2dv(const double*) override {}
  void TexCoord3f(float, float, float) override {}
  void TexCoord3fv(const float*) override {}
  void TexCoord3d(double, double, double) override {}
  void TexCoord3dv(const double*) override {}
  void TexCoord4f(float, float, float, float) override {}
  void TexCoord4fv(const float*) override {}
  void TexCoord4d(double, double, double, double) override {}
  void TexCoord4dv(const double*) override {}
  void Vertex2i(int, int) override {}
  void Vertex2iv(const int*) override {}
  void Vertex2f(float, float) override {}
  void Vertex2fv(const float*) override {}
  void Vertex2d(double, double) override {}
  void Vertex2dv(const double*) override {}
  void Vertex3i(int, int, int) override {}
  void Vertex3iv(const int*) override {}
  void Vertex3f(float, float, float) override {}
  void Vertex3fv(const float*) override {}
  void Vertex3d(double, double, double) override {}
  void Vertex3dv(const double*) override {}
  void Vertex4f(float, float, float, float) override {}
  void Vertex4fv(const float*) override {}
  void Vertex4d(double, double, double, double) override {}
  void Vertex4dv(const double*) override {}
  void Viewport(int, int, int, int) override {}
  void Scissor(int, int, int, int) override {}
  void MatrixMode(unsigned int) override {}
  void PushMatrix() override {}
  void PopMatrix() override {}
  void LoadIdentity() override {}
  void LoadMatrixf(const float*) override {}
  void LoadMatrixd(const double*) override {}
  void MultMatrixf(const float*) override {}
  void MultMatrixd(const double*) override {}
  void Ortho(double, double, double, double, double, double) override {}
  void Frustum(double, double, double, double, double, double) override {}
  void Translatef(float, float, float) override {}
  void Translated(double, double, double) override {}
  void Rotatef(float, float, float, float) override {}
  void Rotated(double, double, double, double) override {}
  void Scalef(float, float, float) override {}
  void Scaled(double, double, double) override {}
  void PushClientAttrib(unsigned int) override {}
  void PopClientAttrib() override {}
  void EnableClientState(unsigned int) override {}
  void DisableClientState(unsigned int) override {}
  void ColorPointer(int, unsigned int, int, const void*) override {}
  void NormalPointer(unsigned int, int, const void*) override {}
  void TexCoordPointer(int, unsigned int, int, const void*) override {}
  void VertexPointer(int, unsigned int, int, const void*) override {}
  void DrawArrays(unsigned int, int, int) override {}
  void DrawElements(unsigned int, int, unsigned int, const void*) override {}
  void RasterPos2i(int, int) override {}
  void RasterPos2iv(const int*) override {}
  void RasterPos2f(float, float) override {}
  void RasterPos2fv(const float*) override {}
  void RasterPos2d(double, double) override {}
  void RasterPos2dv(const double*) override {}
  void RasterPos3i(int, int, int) override {}
  void RasterPos3f(float, float, float) override {}
  void RasterPos3fv(const float*) override {}
  void RasterPos3d(double, double, double) override {}
  void RasterPos3dv(const double*) override {}
  void RasterPos(const vec_t_<double, 2>&) override {}
  void WindowPos2i(int, int) override {}
  void PixelZoom(float, float) override {}
  void DrawPixels(int, int, unsigned int, unsigned int, const void*) override {}
  void ReadPixels(int, int, int, int, unsigned int, unsigned int, void*) override {}
  void PixelStorei(unsigned int, int) override {}
  void TexParameteri(unsigned int, unsigned int, int) override {}
  void TexParameterf(unsigned int, unsigned int, float) override {}
  void TexParameterfv(unsigned int, unsigned int, const float*) override {}
  void GetTexParameteriv(unsigned int, unsigned int, int*) override {}
  void GetTexParameterfv(unsigned int, unsigned int, float*) override {}
  void GetTexLevelParameteriv(unsigned int, int, unsigned int, int*) override {}
  void GetTexLevelParameterfv(unsigned int, int, unsigned int, float*) override {}
  void TexImage2D(unsigned int, int, int, int, int, int, unsigned int, unsigned int,
                  const void*) override {}
  void TexSubImage2D(unsigned int, int, int, int, int, int, unsigned int, unsigned int,
                     const void*) override {}
  void CopyTexImage2D(unsigned int, int, unsigned int, int, int, int, int, int) override {}
  void Bitmap(int, int, float, float, float, float, const unsigned char*) override {}
  void Bitmap(const TZxGLBitmap&, float, float) override {}
  unsigned int GenLists(int) override { return {}; }
  void DeleteLists(unsigned int, int) override {}
  bool IsList(unsigned int) override { return {}; }
  void NewList(unsigned int, unsigned int) override {}
  void EndList() override {}
  void ListBase(unsigned int) override {}
  void CallList(unsigned int) override {}
  void CallLists(int, unsigned int, const void*) override {}
  void GenTextures(int, unsigned int*) override {}
  void DeleteTextures(int, const unsigned int*) override {}
  bool IsTexture(unsigned int) override { return {}; }
  void BindTexture(unsigned int, unsigned int) override {}
  void GenBuffers(int, unsigned int*) override {}
  void DeleteBuffers(int, unsigned int*) override {}
  void BindBuffer(unsigned int, unsigned int) override {}
  void BindBufferBase(unsigned int, unsigned int, unsigned int) override {}
  void BufferData(unsigned int, long, const void*, unsigned int) override {}
  void BufferSubData(unsigned int, long, long, const void*) override {}
  void* MapBuffer(unsigned int, unsigned int) override { return {}; }
  bool UnmapBuffer(unsigned int) override { return {}; }
  void GetBufferParameter(unsigned int, unsigned int, int*) override {}
  void ShadeModel(unsigned int) override {}
  void Hint(unsigned int, unsigned int) override {}
  void GetBooleanv(unsigned int, unsigned char*) override {}
  void GetIntegerv(unsigned int, int*) override {}
  void GetFloatv(unsigned int, float*) override {}
  void GetDoublev(unsigned int, double*) override {}
  void DrawBuffer(unsigned int) override {}
  void ReadBuffer(unsigned int) override {}
  void SelectBuffer(int, unsigned int*) override {}
  void InitNames() override {}
  void LoadName(unsigned int) override {}
  void PushName(unsigned int) override {}
  void PopName() override {}
  int RenderMode(unsigned int) override { return {}; }
  void BindFramebuffer(unsigned int, unsigned int) override {}
  void Flush() override {}
  void Finish() override {}
  unsigned int GetError() override { return {}; }
  const char* GetString(unsigned int) override { return {}; }
  void Polygon(const std::vector<vec_t_<double, 2>>&, const vec_t_<double, 3>&, double,
               const vec_t_<double, 3>&, double) override {}
  void Domain(const std::vector<std::vector<vec_t_<double, 2>>>&, const vec_t_<double, 3>&, double,
              const vec_t_<double, 3>&, double) override {}
  bool SwapBuffers(TZxGLSurface*) override { return {}; }
  bool DoMakeCurrent(TZxGLSurface*) override { return {}; }
  void DoDoneCurrent() override {}
  bool GetSize(vec_t_<int, 2>*) const override { return {}; }
  void EnableBlend(bool) override {}
  void Fog(unsigned int, int) override {}
  void Fog(unsigned int, float) override {}
  void Fog(unsigned int, const float*) override {}
  void EnableDepthTest(bool) override {}
  void MultiTexCoord2f(unsigned int, float, float) override {}
  void MultiTexCoord2fv(unsigned int, const float*) override {}
  void MultiTexCoord2d(unsigned int, double, double) override {}
  void MultiTexCoord2dv(unsigned int, const double*) override {}
  void MultiTexCoord3f(unsigned int, float, float, float) override {}
  void MultiTexCoord3fv(unsigned int, const float*) override {}
  void MultiTexCoord3d(unsigned int, double, double, double) override {}
  void MultiTexCoord3dv(unsigned int, const double*) override {}
  void LoadMatrix(const MAT4<float>&) override {}
  void LoadMatrix(const MAT4<double>&) override {}
  void MultMatrix(const MAT4<float>&) override {}
  void MultMatrix(const MAT4<double>&) override {}
  void CullFace(unsigned int) override {}
  void FrontFace(unsigned int) override {}
  void EnableCullFace(bool) override {}
  void EnableLight(unsigned long, bool) override {}
  void EnableLighting(bool) override {}
  void Lightf(unsigned int, unsigned int, float) override {}
  void Lightfv(unsigned int, unsigned int, const float*) override {}
  void GetLight(unsigned int, unsigned int, float*) override {}
  TDataSurface* GetColorSurface() override { return {}; }
  TDataSurface* GetDepthSurface() override { return {}; }
  TDataSurface* GetStencilSurface() override { return {}; }
  void ActiveTexture(unsigned int) override {}
  bool MoveTexImage2D(unsigned int, int, TDataSurface*) override { return {}; }
  void TexEnvi(unsigned int, unsigned int, int) override {}
  void TexEnvf(unsigned int, unsigned int, float) override {}
  void TexGeni(unsigned int, unsigned int, int) override {}
  void TexGenf(unsigned int, unsigned int, float) override {}
  void TexGend(unsigned int, unsigned int, double) override {}
  void TexFilter2D(unsigned int, unsigned int) override {}
  void TexWrap2D(unsigned int, unsigned int) override {}
  void SetPerspectiveCorrectionHint(unsigned int) override {}
  unsigned int GetPerspectiveCorrectionHint() override { return {}; }
  bool DebugMessageCallback(Zx3D::TDebugCallback, void*) override { return {}; }
  void SetProgram(Zx3D::TProgram*) override {}
  Zx3D::TProgram* GetProgram() override { return {}; }
  void Uniform(int, bool) override {}
  void Uniform(int, int) override {}
  void Uniform(int, unsigned int) override {}
  void Uniform(int, float) override {}
  void Uniform(int, double) override {}
  void Uniform(int, int, int) override {}
  void Uniform(int, float, float) override {}
  void Uniform(int, double, double) override {}
  void Uniform(int, int, int, int) override {}
  void Uniform(int, float, float, float) override {}
  void Uniform(int, double, double, double) override {}
  void Uniform(int, int, int, int, int) override {}
  void Uniform(int, float, float, float, float) override {}
  void Uniform(int, double, double, double, double) override {}
  void Uniform2(int, const float*) override {}
  void Uniform3(int, const float*) override {}
  void Uniform4(int, const float*) override {}
  void Uniform(int, const vec_t_<float, 2>&) override {}
  void Uniform(int, const vec_t_<double, 2>&) override {}
  void Uniform(int, const vec_t_<float, 3>&) override {}
  void Uniform(int, const vec_t_<double, 3>&) override {}
  void Uniform(int, const vec_t_<float, 4>&) override {}
  void Uniform(int, const vec_t_<double, 4>&) override {}
  void Uniform(int, const MAT3<float>&) override {}
  void Uniform(int, const MAT3<double>&) override {}
  void Uniform(int, const MAT4<float>&) override {}
  void Uniform(int, const MAT4<double>&) override {}
  void VertexAttrib(int, float) override {}
  void VertexAttrib(int, double) override {}
  void VertexAttrib(int, const vec_t_<float, 2>&) override {}
  void VertexAttrib(int, const vec_t_<double, 2>&) override {}
  void VertexAttrib(int, const vec_t_<float, 3>&) override {}
  void VertexAttrib(int, const vec_t_<double, 3>&) override {}
  void VertexAttrib(int, const vec_t_<float, 4>&) override {}
  void VertexAttrib(int, const vec_t_<double, 4>&) override {}
  void EnableVertexAttribArray(unsigned int) override {}
  void DisableVertexAttribArray(unsigned int) override {}
  void VertexAttribPointer(unsigned int, int, unsigned int, unsigned char, int,
                           const void*) override {}
  void GetVertexAttrib(unsigned int, unsigned int, int*) override {}
  bool IsSupport_SGIS_generate_mipmap() const override { return {}; }
};

} // namespace zx_test
