#pragma once

#include <string>
#include <vector>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/TRenderCPU.h>

namespace zx_test {

using Zx3D::TDebugCallback;
using Zx3D::TProgram;

// clang-format off
/// The operations of a context: result, name, parameters, their names, and arguments of a call that
/// does what the operation is there for.
#define ZX_TEST_OPERATIONS(X)                                                                     \
  X(void, Destroy, (), (), ())                                                                    \
  X(void, Clear, (bool a, bool b, bool c), (a, b, c), (true, true, true))                         \
  X(void, ClearColor, (float a, float b, float c, float d), (a, b, c, d), (0.5f, 0.5f, 0.5f,      \
    0.5f))                                                                                        \
  X(void, ClearColor, (const vec_t_<float, 4>& a), (a), (vec_t_<float, 4>{}))                     \
  X(void, ClearColor, (const vec_t_<double, 4>& a), (a), (vec_t_<double, 4>{}))                   \
  X(void, ColorMask, (unsigned char a, unsigned char b, unsigned char c, unsigned char d), (a,    \
    b, c, d), (1, 1, 1, 1))                                                                       \
  X(void, ClearDepth, (double a), (a), (0.5))                                                     \
  X(void, DepthFunc, (unsigned int a), (a), (GL_GREATER))                                         \
  X(void, DepthMask, (unsigned char a), (a), (1))                                                 \
  X(void, ClearStencil, (int a), (a), (1))                                                        \
  X(void, StencilFunc, (unsigned int a, int b, unsigned int c), (a, b, c), (GL_LESS, 1, 1))       \
  X(void, StencilOp, (unsigned int a, unsigned int b, unsigned int c), (a, b, c), (GL_KEEP,       \
    GL_KEEP, GL_INVERT))                                                                          \
  X(void, StencilMask, (unsigned int a), (a), (1))                                                \
  X(void, Clear, (unsigned int a), (a), (1))                                                      \
  X(void, Begin, (unsigned int a), (a), (1))                                                      \
  X(void, End, (), (), ())                                                                        \
  X(void, PushAttrib, (unsigned int a), (a), (1))                                                 \
  X(void, PopAttrib, (), (), ())                                                                  \
  X(void, Enable, (unsigned int a), (a), (GL_BLEND))                                              \
  X(void, Disable, (unsigned int a), (a), (GL_LIGHTING))                                          \
  X(bool, IsEnabled, (unsigned int a), (a), (GL_BLEND))                                           \
  X(void, AlphaFunc, (unsigned int a, float b), (a, b), (1, 0.5f))                                \
  X(void, BlendFunc, (unsigned int a, unsigned int b), (a, b), (GL_SRC_ALPHA,                     \
    GL_ONE_MINUS_SRC_ALPHA))                                                                      \
  X(void, PointSize, (float a), (a), (0.5f))                                                      \
  X(void, LineWidth, (float a), (a), (0.5f))                                                      \
  X(void, LineStipple, (int a, unsigned short b), (a, b), (1, 1))                                 \
  X(void, PolygonMode, (unsigned int a, unsigned int b), (a, b), (1, 1))                          \
  X(void, LightModeli, (unsigned int a, int b), (a, b), (GL_LIGHT_MODEL_TWO_SIDE, 1))             \
  X(void, LightModeliv, (unsigned int a, const int* b), (a, b), (GL_LIGHT_MODEL_TWO_SIDE,         \
    s_Ints))                                                                                      \
  X(void, LightModelf, (unsigned int a, float b), (a, b), (GL_LIGHT_MODEL_TWO_SIDE, 1.0f))        \
  X(void, LightModelfv, (unsigned int a, const float* b), (a, b), (GL_LIGHT_MODEL_TWO_SIDE,       \
    s_Floats))                                                                                    \
  X(void, Materialf, (unsigned int a, unsigned int b, float c), (a, b, c), (GL_FRONT,             \
    GL_SHININESS, 1.0f))                                                                          \
  X(void, Materialfv, (unsigned int a, unsigned int b, const float* c), (a, b, c), (GL_FRONT,     \
    GL_AMBIENT, s_Floats))                                                                        \
  X(void, ColorMaterial, (unsigned int a, unsigned int b), (a, b), (1, 1))                        \
  X(void, _Color3ub, (unsigned char a, unsigned char b, unsigned char c), (a, b, c), (1, 1,       \
    1))                                                                                           \
  X(void, _Color3ubv, (const unsigned char* a), (a), (s_Bytes))                                   \
  X(void, _Color3f, (float a, float b, float c), (a, b, c), (0.5f, 0.5f, 0.5f))                   \
  X(void, _Color3fv, (const float* a), (a), (s_Floats))                                           \
  X(void, _Color3d, (double a, double b, double c), (a, b, c), (0.5, 0.5, 0.5))                   \
  X(void, _Color3dv, (const double* a), (a), (s_Doubles))                                         \
  X(void, _Color4ub, (unsigned char a, unsigned char b, unsigned char c, unsigned char d), (a,    \
    b, c, d), (1, 1, 1, 1))                                                                       \
  X(void, _Color4ubv, (const unsigned char* a), (a), (s_Bytes))                                   \
  X(void, _Color4f, (float a, float b, float c, float d), (a, b, c, d), (0.5f, 0.5f, 0.5f,        \
    0.5f))                                                                                        \
  X(void, _Color4fv, (const float* a), (a), (s_Floats))                                           \
  X(void, _Color4d, (double a, double b, double c, double d), (a, b, c, d), (0.5, 0.5, 0.5,       \
    0.5))                                                                                         \
  X(void, _Color4dv, (const double* a), (a), (s_Doubles))                                         \
  X(void, Normal3f, (float a, float b, float c), (a, b, c), (0.5f, 0.5f, 0.5f))                   \
  X(void, Normal3fv, (const float* a), (a), (s_Floats))                                           \
  X(void, Normal3d, (double a, double b, double c), (a, b, c), (0.5, 0.5, 0.5))                   \
  X(void, Normal3dv, (const double* a), (a), (s_Doubles))                                         \
  X(void, TexCoord2f, (float a, float b), (a, b), (0.5f, 0.5f))                                   \
  X(void, TexCoord2fv, (const float* a), (a), (s_Floats))                                         \
  X(void, TexCoord2d, (double a, double b), (a, b), (0.5, 0.5))                                   \
  X(void, TexCoord2dv, (const double* a), (a), (s_Doubles))                                       \
  X(void, TexCoord3f, (float a, float b, float c), (a, b, c), (0.5f, 0.5f, 0.5f))                 \
  X(void, TexCoord3fv, (const float* a), (a), (s_Floats))                                         \
  X(void, TexCoord3d, (double a, double b, double c), (a, b, c), (0.5, 0.5, 0.5))                 \
  X(void, TexCoord3dv, (const double* a), (a), (s_Doubles))                                       \
  X(void, TexCoord4f, (float a, float b, float c, float d), (a, b, c, d), (0.5f, 0.5f, 0.5f,      \
    0.5f))                                                                                        \
  X(void, TexCoord4fv, (const float* a), (a), (s_Floats))                                         \
  X(void, TexCoord4d, (double a, double b, double c, double d), (a, b, c, d), (0.5, 0.5, 0.5,     \
    0.5))                                                                                         \
  X(void, TexCoord4dv, (const double* a), (a), (s_Doubles))                                       \
  X(void, Vertex2i, (int a, int b), (a, b), (1, 1))                                               \
  X(void, Vertex2iv, (const int* a), (a), (s_Ints))                                               \
  X(void, Vertex2f, (float a, float b), (a, b), (0.5f, 0.5f))                                     \
  X(void, Vertex2fv, (const float* a), (a), (s_Floats))                                           \
  X(void, Vertex2d, (double a, double b), (a, b), (0.5, 0.5))                                     \
  X(void, Vertex2dv, (const double* a), (a), (s_Doubles))                                         \
  X(void, Vertex3i, (int a, int b, int c), (a, b, c), (1, 1, 1))                                  \
  X(void, Vertex3iv, (const int* a), (a), (s_Ints))                                               \
  X(void, Vertex3f, (float a, float b, float c), (a, b, c), (0.5f, 0.5f, 0.5f))                   \
  X(void, Vertex3fv, (const float* a), (a), (s_Floats))                                           \
  X(void, Vertex3d, (double a, double b, double c), (a, b, c), (0.5, 0.5, 0.5))                   \
  X(void, Vertex3dv, (const double* a), (a), (s_Doubles))                                         \
  X(void, Vertex4f, (float a, float b, float c, float d), (a, b, c, d), (0.5f, 0.5f, 0.5f,        \
    0.5f))                                                                                        \
  X(void, Vertex4fv, (const float* a), (a), (s_Floats))                                           \
  X(void, Vertex4d, (double a, double b, double c, double d), (a, b, c, d), (0.5, 0.5, 0.5,       \
    0.5))                                                                                         \
  X(void, Vertex4dv, (const double* a), (a), (s_Doubles))                                         \
  X(void, Viewport, (int a, int b, int c, int d), (a, b, c, d), (0, 0, 8, 8))                     \
  X(void, Scissor, (int a, int b, int c, int d), (a, b, c, d), (0, 0, 8, 8))                      \
  X(void, MatrixMode, (unsigned int a), (a), (GL_PROJECTION))                                     \
  X(void, PushMatrix, (), (), ())                                                                 \
  X(void, PopMatrix, (), (), ())                                                                  \
  X(void, LoadIdentity, (), (), ())                                                               \
  X(void, LoadMatrixf, (const float* a), (a), (s_Floats))                                         \
  X(void, LoadMatrixd, (const double* a), (a), (s_Doubles))                                       \
  X(void, MultMatrixf, (const float* a), (a), (s_Floats))                                         \
  X(void, MultMatrixd, (const double* a), (a), (s_Doubles))                                       \
  X(void, Ortho, (double a, double b, double c, double d, double e, double f), (a, b, c, d, e,    \
    f), (-1, 1, -1, 1, -1, 1))                                                                    \
  X(void, Frustum, (double a, double b, double c, double d, double e, double f), (a, b, c, d,     \
    e, f), (-1, 1, -1, 1, 1, 2))                                                                  \
  X(void, Translatef, (float a, float b, float c), (a, b, c), (0.5f, 0.5f, 0.5f))                 \
  X(void, Translated, (double a, double b, double c), (a, b, c), (0.5, 0.5, 0.5))                 \
  X(void, Rotatef, (float a, float b, float c, float d), (a, b, c, d), (30.0f, 0.0f, 0.0f,        \
    1.0f))                                                                                        \
  X(void, Rotated, (double a, double b, double c, double d), (a, b, c, d), (30.0, 0.0, 0.0,       \
    1.0))                                                                                         \
  X(void, Scalef, (float a, float b, float c), (a, b, c), (0.5f, 0.5f, 0.5f))                     \
  X(void, Scaled, (double a, double b, double c), (a, b, c), (0.5, 0.5, 0.5))                     \
  X(void, PushClientAttrib, (unsigned int a), (a), (1))                                           \
  X(void, PopClientAttrib, (), (), ())                                                            \
  X(void, EnableClientState, (unsigned int a), (a), (GL_VERTEX_ARRAY))                            \
  X(void, DisableClientState, (unsigned int a), (a), (GL_VERTEX_ARRAY))                           \
  X(void, ColorPointer, (int a, unsigned int b, int c, const void* d), (a, b, c, d), (3,          \
    GL_FLOAT, 0, s_Floats))                                                                       \
  X(void, NormalPointer, (unsigned int a, int b, const void* c), (a, b, c), (GL_FLOAT, 0,         \
    s_Floats))                                                                                    \
  X(void, TexCoordPointer, (int a, unsigned int b, int c, const void* d), (a, b, c, d), (2,       \
    GL_FLOAT, 0, s_Floats))                                                                       \
  X(void, VertexPointer, (int a, unsigned int b, int c, const void* d), (a, b, c, d), (2,         \
    GL_FLOAT, 0, s_Floats))                                                                       \
  X(void, DrawArrays, (unsigned int a, int b, int c), (a, b, c), (1, 1, 1))                       \
  X(void, DrawElements, (unsigned int a, int b, unsigned int c, const void* d), (a, b, c, d),     \
    (1, 1, 1, s_Bytes))                                                                           \
  X(void, RasterPos2i, (int a, int b), (a, b), (1, 1))                                            \
  X(void, RasterPos2iv, (const int* a), (a), (s_Ints))                                            \
  X(void, RasterPos2f, (float a, float b), (a, b), (0.5f, 0.5f))                                  \
  X(void, RasterPos2fv, (const float* a), (a), (s_Floats))                                        \
  X(void, RasterPos2d, (double a, double b), (a, b), (0.5, 0.5))                                  \
  X(void, RasterPos2dv, (const double* a), (a), (s_Doubles))                                      \
  X(void, RasterPos3i, (int a, int b, int c), (a, b, c), (1, 1, 1))                               \
  X(void, RasterPos3f, (float a, float b, float c), (a, b, c), (0.5f, 0.5f, 0.5f))                \
  X(void, RasterPos3fv, (const float* a), (a), (s_Floats))                                        \
  X(void, RasterPos3d, (double a, double b, double c), (a, b, c), (0.5, 0.5, 0.5))                \
  X(void, RasterPos3dv, (const double* a), (a), (s_Doubles))                                      \
  X(void, RasterPos, (const vec_t_<double, 2>& a), (a), ({1, 2}))                                 \
  X(void, WindowPos2i, (int a, int b), (a, b), (1, 1))                                            \
  X(void, PixelZoom, (float a, float b), (a, b), (0.5f, 0.5f))                                    \
  X(void, DrawPixels, (int a, int b, unsigned int c, unsigned int d, const void* e), (a, b, c,    \
    d, e), (1, 1, GL_RGBA, GL_UNSIGNED_BYTE, s_Bytes))                                            \
  X(void, ReadPixels, (int a, int b, int c, int d, unsigned int e, unsigned int f, void* g),      \
    (a, b, c, d, e, f, g), (0, 0, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, s_Bytes))                      \
  X(void, PixelStorei, (unsigned int a, int b), (a, b), (1, 1))                                   \
  X(void, TexParameteri, (unsigned int a, unsigned int b, int c), (a, b, c), (GL_TEXTURE_2D,      \
    GL_TEXTURE_WRAP_S, GL_CLAMP))                                                                 \
  X(void, TexParameterf, (unsigned int a, unsigned int b, float c), (a, b, c), (GL_TEXTURE_2D,    \
    GL_TEXTURE_WRAP_S, 10496.0f))                                                                 \
  X(void, TexParameterfv, (unsigned int a, unsigned int b, const float* c), (a, b, c),            \
    (GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, s_Floats))                                                 \
  X(void, GetTexParameteriv, (unsigned int a, unsigned int b, int* c), (a, b, c), (1, 1,          \
    s_Ints))                                                                                      \
  X(void, GetTexParameterfv, (unsigned int a, unsigned int b, float* c), (a, b, c), (1, 1,        \
    s_Floats))                                                                                    \
  X(void, GetTexLevelParameteriv, (unsigned int a, int b, unsigned int c, int* d), (a, b, c,      \
    d), (1, 1, 1, s_Ints))                                                                        \
  X(void, GetTexLevelParameterfv, (unsigned int a, int b, unsigned int c, float* d), (a, b, c,    \
    d), (1, 1, 1, s_Floats))                                                                      \
  X(void, TexImage2D, (unsigned int a, int b, int c, int d, int e, int f, unsigned int g,         \
    unsigned int h, const void* i), (a, b, c, d, e, f, g, h, i), (GL_TEXTURE_2D, 0, GL_RGBA,      \
    1, 1, 0, GL_RGBA, GL_UNSIGNED_BYTE, s_Bytes))                                                 \
  X(void, TexSubImage2D, (unsigned int a, int b, int c, int d, int e, int f, unsigned int g,      \
    unsigned int h, const void* i), (a, b, c, d, e, f, g, h, i), (GL_TEXTURE_2D, 0, 0, 0, 1,      \
    1, GL_RGBA, GL_UNSIGNED_BYTE, s_Bytes))                                                       \
  X(void, CopyTexImage2D, (unsigned int a, int b, unsigned int c, int d, int e, int f, int g,     \
    int h), (a, b, c, d, e, f, g, h), (1, 1, 1, 1, 1, 1, 1, 1))                                   \
  X(void, Bitmap, (int a, int b, float c, float d, float e, float f, const unsigned char* g),     \
    (a, b, c, d, e, f, g), (1, 1, 0.5f, 0.5f, 0.5f, 0.5f, s_Bytes))                               \
  X(void, Bitmap, (const TZxGLBitmap& a, float b, float c), (a, b, c), (TZxGLBitmap{}, 0.5f,      \
    0.5f))                                                                                        \
  X(unsigned int, GenLists, (int a), (a), (1))                                                    \
  X(void, DeleteLists, (unsigned int a, int b), (a, b), (1, 1))                                   \
  X(bool, IsList, (unsigned int a), (a), (1))                                                     \
  X(void, NewList, (unsigned int a, unsigned int b), (a, b), (1, 1))                              \
  X(void, EndList, (), (), ())                                                                    \
  X(void, ListBase, (unsigned int a), (a), (1))                                                   \
  X(void, CallList, (unsigned int a), (a), (1))                                                   \
  X(void, CallLists, (int a, unsigned int b, const void* c), (a, b, c), (1, 1, s_Bytes))          \
  X(void, GenTextures, (int a, unsigned int* b), (a, b), (1, s_Names))                            \
  X(void, DeleteTextures, (int a, const unsigned int* b), (a, b), (1, s_Names))                   \
  X(bool, IsTexture, (unsigned int a), (a), (1))                                                  \
  X(void, BindTexture, (unsigned int a, unsigned int b), (a, b), (GL_TEXTURE_2D, 1))              \
  X(void, GenBuffers, (int a, unsigned int* b), (a, b), (1, s_Names))                             \
  X(void, DeleteBuffers, (int a, unsigned int* b), (a, b), (1, s_Names))                          \
  X(void, BindBuffer, (unsigned int a, unsigned int b), (a, b), (1, 1))                           \
  X(void, BindBufferBase, (unsigned int a, unsigned int b, unsigned int c), (a, b, c), (1, 1,     \
    1))                                                                                           \
  X(void, BufferData, (unsigned int a, long b, const void* c, unsigned int d), (a, b, c, d),      \
    (1, 8, s_Bytes, 1))                                                                           \
  X(void, BufferSubData, (unsigned int a, long b, long c, const void* d), (a, b, c, d), (1, 8,    \
    8, s_Bytes))                                                                                  \
  X(void*, MapBuffer, (unsigned int a, unsigned int b), (a, b), (1, 1))                           \
  X(bool, UnmapBuffer, (unsigned int a), (a), (1))                                                \
  X(void, GetBufferParameter, (unsigned int a, unsigned int b, int* c), (a, b, c), (1, 1,         \
    s_Ints))                                                                                      \
  X(void, ShadeModel, (unsigned int a), (a), (GL_SMOOTH))                                         \
  X(void, Hint, (unsigned int a, unsigned int b), (a, b), (GL_PERSPECTIVE_CORRECTION_HINT,        \
    GL_FASTEST))                                                                                  \
  X(void, GetBooleanv, (unsigned int a, unsigned char* b), (a, b), (1, s_Bytes))                  \
  X(void, GetIntegerv, (unsigned int a, int* b), (a, b), (GL_VIEWPORT, s_Ints))                   \
  X(void, GetFloatv, (unsigned int a, float* b), (a, b), (GL_MODELVIEW_MATRIX, s_Floats))         \
  X(void, GetDoublev, (unsigned int a, double* b), (a, b), (GL_MODELVIEW_MATRIX, s_Doubles))      \
  X(void, DrawBuffer, (unsigned int a), (a), (GL_FRONT))                                          \
  X(void, ReadBuffer, (unsigned int a), (a), (GL_FRONT))                                          \
  X(void, SelectBuffer, (int a, unsigned int* b), (a, b), (1, s_Names))                           \
  X(void, InitNames, (), (), ())                                                                  \
  X(void, LoadName, (unsigned int a), (a), (1))                                                   \
  X(void, PushName, (unsigned int a), (a), (1))                                                   \
  X(void, PopName, (), (), ())                                                                    \
  X(int, RenderMode, (unsigned int a), (a), (1))                                                  \
  X(void, BindFramebuffer, (unsigned int a, unsigned int b), (a, b), (1, 1))                      \
  X(void, Flush, (), (), ())                                                                      \
  X(void, Finish, (), (), ())                                                                     \
  X(unsigned int, GetError, (), (), ())                                                           \
  X(const char*, GetString, (unsigned int a), (a), (1))                                           \
  X(void, Polygon, (const std::vector<vec_t_<double, 2>>& a, const vec_t_<double, 3>& b,          \
    double c, const vec_t_<double, 3>& d, double e), (a, b, c, d, e), (s_Outline, {1, 1, 1},      \
    1.0, {1, 1, 1}, 1.0))                                                                         \
  X(void, Domain, (const std::vector<std::vector<vec_t_<double, 2>>>& a, const vec_t_<double,     \
    3>& b, double c, const vec_t_<double, 3>& d, double e), (a, b, c, d, e), ({s_Outline,         \
    s_Outline}, {1, 1, 1}, 1.0, {1, 1, 1}, 1.0))                                                  \
  X(bool, SwapBuffers, (TZxGLSurface* a), (a), (nullptr))                                         \
  X(bool, DoMakeCurrent, (TZxGLSurface* a), (a), (nullptr))                                       \
  X(void, DoDoneCurrent, (), (), ())                                                              \
  X(void, EnableBlend, (bool a), (a), (true))                                                     \
  X(void, Fog, (unsigned int a, int b), (a, b), (GL_FOG_MODE, GL_LINEAR))                         \
  X(void, Fog, (unsigned int a, float b), (a, b), (GL_FOG_DENSITY, 1.0f))                         \
  X(void, Fog, (unsigned int a, const float* b), (a, b), (GL_FOG_DENSITY, s_Floats))              \
  X(void, EnableDepthTest, (bool a), (a), (true))                                                 \
  X(void, MultiTexCoord2f, (unsigned int a, float b, float c), (a, b, c), (1, 0.5f, 0.5f))        \
  X(void, MultiTexCoord2fv, (unsigned int a, const float* b), (a, b), (1, s_Floats))              \
  X(void, MultiTexCoord2d, (unsigned int a, double b, double c), (a, b, c), (1, 0.5, 0.5))        \
  X(void, MultiTexCoord2dv, (unsigned int a, const double* b), (a, b), (1, s_Doubles))            \
  X(void, MultiTexCoord3f, (unsigned int a, float b, float c, float d), (a, b, c, d), (1,         \
    0.5f, 0.5f, 0.5f))                                                                            \
  X(void, MultiTexCoord3fv, (unsigned int a, const float* b), (a, b), (1, s_Floats))              \
  X(void, MultiTexCoord3d, (unsigned int a, double b, double c, double d), (a, b, c, d), (1,      \
    0.5, 0.5, 0.5))                                                                               \
  X(void, MultiTexCoord3dv, (unsigned int a, const double* b), (a, b), (1, s_Doubles))            \
  X(void, LoadMatrix, (const MAT4<float>& a), (a), (MAT4<float>{}))                               \
  X(void, LoadMatrix, (const MAT4<double>& a), (a), (MAT4<double>{}))                             \
  X(void, MultMatrix, (const MAT4<float>& a), (a), (MAT4<float>{}))                               \
  X(void, MultMatrix, (const MAT4<double>& a), (a), (MAT4<double>{}))                             \
  X(void, CullFace, (unsigned int a), (a), (1))                                                   \
  X(void, FrontFace, (unsigned int a), (a), (GL_CW))                                              \
  X(void, EnableCullFace, (bool a), (a), (true))                                                  \
  X(void, EnableLight, (unsigned long a, bool b), (a, b), (1, true))                              \
  X(void, EnableLighting, (bool a), (a), (true))                                                  \
  X(void, Lightf, (unsigned int a, unsigned int b, float c), (a, b, c), (GL_LIGHT0,               \
    GL_SPOT_EXPONENT, 1.0f))                                                                      \
  X(void, Lightfv, (unsigned int a, unsigned int b, const float* c), (a, b, c), (GL_LIGHT0,       \
    GL_POSITION, s_Floats))                                                                       \
  X(void, GetLight, (unsigned int a, unsigned int b, float* c), (a, b, c), (GL_LIGHT0,            \
    GL_AMBIENT, s_Floats))                                                                        \
  X(TDataSurface*, GetColorSurface, (), (), ())                                                   \
  X(TDataSurface*, GetDepthSurface, (), (), ())                                                   \
  X(TDataSurface*, GetStencilSurface, (), (), ())                                                 \
  X(void, ActiveTexture, (unsigned int a), (a), (GL_TEXTURE1))                                    \
  X(bool, MoveTexImage2D, (unsigned int a, int b, TDataSurface* c), (a, b, c), (GL_TEXTURE_2D,    \
    0, nullptr))                                                                                  \
  X(void, TexEnvi, (unsigned int a, unsigned int b, int c), (a, b, c), (GL_TEXTURE_ENV,           \
    GL_TEXTURE_ENV_MODE, GL_REPLACE))                                                             \
  X(void, TexEnvf, (unsigned int a, unsigned int b, float c), (a, b, c), (1, 1, 0.5f))            \
  X(void, TexGeni, (unsigned int a, unsigned int b, int c), (a, b, c), (1, 1, 1))                 \
  X(void, TexGenf, (unsigned int a, unsigned int b, float c), (a, b, c), (1, 1, 0.5f))            \
  X(void, TexGend, (unsigned int a, unsigned int b, double c), (a, b, c), (1, 1, 0.5))            \
  X(void, TexFilter2D, (unsigned int a, unsigned int b), (a, b), (GL_LINEAR, GL_LINEAR))          \
  X(void, TexWrap2D, (unsigned int a, unsigned int b), (a, b), (GL_CLAMP, GL_CLAMP))              \
  X(void, SetPerspectiveCorrectionHint, (unsigned int a), (a), (1))                               \
  X(unsigned int, GetPerspectiveCorrectionHint, (), (), ())                                       \
  X(bool, DebugMessageCallback, (TDebugCallback a, void* b), (a, b), (nullptr, nullptr))          \
  X(void, SetProgram, (TProgram* a), (a), (nullptr))                                              \
  X(TProgram*, GetProgram, (), (), ())                                                            \
  X(void, Uniform, (int a, bool b), (a, b), (1, true))                                            \
  X(void, Uniform, (int a, int b), (a, b), (1, 1))                                                \
  X(void, Uniform, (int a, unsigned int b), (a, b), (1, 1u))                                       \
  X(void, Uniform, (int a, float b), (a, b), (1, 0.5f))                                           \
  X(void, Uniform, (int a, double b), (a, b), (1, 0.5))                                           \
  X(void, Uniform, (int a, int b, int c), (a, b, c), (1, 1, 1))                                   \
  X(void, Uniform, (int a, float b, float c), (a, b, c), (1, 0.5f, 0.5f))                         \
  X(void, Uniform, (int a, double b, double c), (a, b, c), (1, 0.5, 0.5))                         \
  X(void, Uniform, (int a, int b, int c, int d), (a, b, c, d), (1, 1, 1, 1))                      \
  X(void, Uniform, (int a, float b, float c, float d), (a, b, c, d), (1, 0.5f, 0.5f, 0.5f))       \
  X(void, Uniform, (int a, double b, double c, double d), (a, b, c, d), (1, 0.5, 0.5, 0.5))       \
  X(void, Uniform, (int a, int b, int c, int d, int e), (a, b, c, d, e), (1, 1, 1, 1, 1))         \
  X(void, Uniform, (int a, float b, float c, float d, float e), (a, b, c, d, e), (1, 0.5f,        \
    0.5f, 0.5f, 0.5f))                                                                            \
  X(void, Uniform, (int a, double b, double c, double d, double e), (a, b, c, d, e), (1, 0.5,     \
    0.5, 0.5, 0.5))                                                                               \
  X(void, Uniform2, (int a, const float* b), (a, b), (1, s_Floats))                               \
  X(void, Uniform3, (int a, const float* b), (a, b), (1, s_Floats))                               \
  X(void, Uniform4, (int a, const float* b), (a, b), (1, s_Floats))                               \
  X(void, Uniform, (int a, const vec_t_<float, 2>& b), (a, b), (1, vec_t_<float, 2>{}))           \
  X(void, Uniform, (int a, const vec_t_<double, 2>& b), (a, b), (1, vec_t_<double, 2>{}))         \
  X(void, Uniform, (int a, const vec_t_<float, 3>& b), (a, b), (1, vec_t_<float, 3>{}))           \
  X(void, Uniform, (int a, const vec_t_<double, 3>& b), (a, b), (1, vec_t_<double, 3>{}))         \
  X(void, Uniform, (int a, const vec_t_<float, 4>& b), (a, b), (1, vec_t_<float, 4>{}))           \
  X(void, Uniform, (int a, const vec_t_<double, 4>& b), (a, b), (1, vec_t_<double, 4>{}))         \
  X(void, Uniform, (int a, const MAT3<float>& b), (a, b), (1, MAT3<float>{}))                     \
  X(void, Uniform, (int a, const MAT3<double>& b), (a, b), (1, MAT3<double>{}))                   \
  X(void, Uniform, (int a, const MAT4<float>& b), (a, b), (1, MAT4<float>{}))                     \
  X(void, Uniform, (int a, const MAT4<double>& b), (a, b), (1, MAT4<double>{}))                   \
  X(void, VertexAttrib, (int a, float b), (a, b), (1, 0.5f))                                      \
  X(void, VertexAttrib, (int a, double b), (a, b), (1, 0.5))                                      \
  X(void, VertexAttrib, (int a, const vec_t_<float, 2>& b), (a, b), (1, vec_t_<float, 2>{}))      \
  X(void, VertexAttrib, (int a, const vec_t_<double, 2>& b), (a, b), (1, vec_t_<double, 2>{}))    \
  X(void, VertexAttrib, (int a, const vec_t_<float, 3>& b), (a, b), (1, vec_t_<float, 3>{}))      \
  X(void, VertexAttrib, (int a, const vec_t_<double, 3>& b), (a, b), (1, vec_t_<double, 3>{}))    \
  X(void, VertexAttrib, (int a, const vec_t_<float, 4>& b), (a, b), (1, vec_t_<float, 4>{}))      \
  X(void, VertexAttrib, (int a, const vec_t_<double, 4>& b), (a, b), (1, vec_t_<double, 4>{}))    \
  X(void, EnableVertexAttribArray, (unsigned int a), (a), (1))                                    \
  X(void, DisableVertexAttribArray, (unsigned int a), (a), (1))                                   \
  X(void, VertexAttribPointer, (unsigned int a, int b, unsigned int c, unsigned char d, int e,    \
    const void* f), (a, b, c, d, e, f), (1, 2, GL_FLOAT, 0, 0, s_Floats))                         \
  X(void, GetVertexAttrib, (unsigned int a, unsigned int b, int* c), (a, b, c), (1,               \
    GL_VERTEX_ATTRIB_ARRAY_SIZE, s_Ints))
// clang-format on

/// A context that keeps a list of all virtual calls that reach it.
class TCountingRender final : public Zx3D::TRenderCPU {
public:
#define ZX_TEST_COUNTED(result, name, parameters, names, arguments)                                \
  result name parameters override {                                                                \
    Seen.push_back(#name #parameters);                                                             \
    return TRenderCPU::name names;                                                                 \
  }
  ZX_TEST_OPERATIONS(ZX_TEST_COUNTED)
#undef ZX_TEST_COUNTED

  bool GetSize(vec_t_<int, 2>* size) const override {
    Seen.push_back("GetSize");
    return TRenderCPU::GetSize(size);
  }
  bool IsSupport_SGIS_generate_mipmap() const override {
    Seen.push_back("IsSupport_SGIS_generate_mipmap");
    return TRenderCPU::IsSupport_SGIS_generate_mipmap();
  }

  mutable std::vector<std::string> Seen;
};

} // namespace zx_test
