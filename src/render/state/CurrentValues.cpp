#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/common/Pairs.h>

namespace Zx3D {

// Each form stores by itself and calls no other: a class that overrides one sees exactly the calls
// made to it.

// --- Colour

void TRenderCPU::_Color3ub(unsigned char r, unsigned char g, unsigned char b) {
  StoreVector(&m_CurColor, UnitOfColorByte(r), UnitOfColorByte(g), UnitOfColorByte(b), 1.0);
}

void TRenderCPU::_Color3ubv(const unsigned char* v) {
  StoreVector(&m_CurColor, UnitOfColorByte(v[0]), UnitOfColorByte(v[1]), UnitOfColorByte(v[2]),
              1.0);
}

void TRenderCPU::_Color4ub(unsigned char r, unsigned char g, unsigned char b, unsigned char a) {
  StoreVector(&m_CurColor, UnitOfColorByte(r), UnitOfColorByte(g), UnitOfColorByte(b),
              UnitOfColorByte(a));
}

void TRenderCPU::_Color4ubv(const unsigned char* v) {
  StoreVector(&m_CurColor, UnitOfColorByte(v[0]), UnitOfColorByte(v[1]), UnitOfColorByte(v[2]),
              UnitOfColorByte(v[3]));
}

void TRenderCPU::_Color3f(float r, float g, float b) { StoreVector(&m_CurColor, r, g, b, 1.0); }

void TRenderCPU::_Color3fv(const float* v) { StoreVector(&m_CurColor, v[0], v[1], v[2], 1.0); }

void TRenderCPU::_Color4f(float r, float g, float b, float a) {
  StoreVector(&m_CurColor, r, g, b, a);
}

void TRenderCPU::_Color4fv(const float* v) { StoreVector(&m_CurColor, v[0], v[1], v[2], v[3]); }

void TRenderCPU::_Color3d(double r, double g, double b) { StoreVector(&m_CurColor, r, g, b, 1.0); }

void TRenderCPU::_Color3dv(const double* v) { StoreVector(&m_CurColor, v[0], v[1], v[2], 1.0); }

void TRenderCPU::_Color4d(double r, double g, double b, double a) {
  StoreVector(&m_CurColor, r, g, b, a);
}

void TRenderCPU::_Color4dv(const double* v) { StoreVector(&m_CurColor, v[0], v[1], v[2], v[3]); }

// --- Normal

// The w stays as it is.
static void SetNormal(TRenderCPU& gl, double x, double y, double z) {
  gl.m_CurNormal.x = x;
  gl.m_CurNormal.y = y;
  gl.m_CurNormal.z = z;
}

void TRenderCPU::Normal3f(float x, float y, float z) { SetNormal(*this, x, y, z); }

void TRenderCPU::Normal3fv(const float* v) { SetNormal(*this, v[0], v[1], v[2]); }

void TRenderCPU::Normal3d(double x, double y, double z) { SetNormal(*this, x, y, z); }

void TRenderCPU::Normal3dv(const double* v) { SetNormal(*this, v[0], v[1], v[2]); }

// --- Texture coordinate

void TRenderCPU::TexCoord2f(float s, float t) { StoreVector(&m_CurTexCoord, s, t, 0, 1); }

void TRenderCPU::TexCoord2fv(const float* v) { StoreVector(&m_CurTexCoord, v[0], v[1], 0, 1); }

void TRenderCPU::TexCoord2d(double s, double t) { StoreVector(&m_CurTexCoord, s, t, 0, 1); }

void TRenderCPU::TexCoord2dv(const double* v) { StoreVector(&m_CurTexCoord, v[0], v[1], 0, 1); }

void TRenderCPU::TexCoord3f(float s, float t, float r) { StoreVector(&m_CurTexCoord, s, t, r, 1); }

void TRenderCPU::TexCoord3fv(const float* v) { StoreVector(&m_CurTexCoord, v[0], v[1], v[2], 1); }

void TRenderCPU::TexCoord3d(double s, double t, double r) {
  StoreVector(&m_CurTexCoord, s, t, r, 1);
}

void TRenderCPU::TexCoord3dv(const double* v) { StoreVector(&m_CurTexCoord, v[0], v[1], v[2], 1); }

void TRenderCPU::TexCoord4f(float s, float t, float r, float q) {
  StoreVector(&m_CurTexCoord, s, t, r, q);
}

void TRenderCPU::TexCoord4fv(const float* v) {
  StoreVector(&m_CurTexCoord, v[0], v[1], v[2], v[3]);
}

void TRenderCPU::TexCoord4d(double s, double t, double r, double q) {
  StoreVector(&m_CurTexCoord, s, t, r, q);
}

void TRenderCPU::TexCoord4dv(const double* v) {
  StoreVector(&m_CurTexCoord, v[0], v[1], v[2], v[3]);
}

// There is one coordinate, whatever the unit.

void TRenderCPU::MultiTexCoord2f(unsigned int, float s, float t) {
  StoreVector(&m_CurTexCoord, s, t, 0, 1);
}

void TRenderCPU::MultiTexCoord2fv(unsigned int, const float* v) {
  StoreVector(&m_CurTexCoord, v[0], v[1], 0, 1);
}

void TRenderCPU::MultiTexCoord2d(unsigned int, double s, double t) {
  StoreVector(&m_CurTexCoord, s, t, 0, 1);
}

void TRenderCPU::MultiTexCoord2dv(unsigned int, const double* v) {
  StoreVector(&m_CurTexCoord, v[0], v[1], 0, 1);
}

void TRenderCPU::MultiTexCoord3f(unsigned int, float s, float t, float r) {
  StoreVector(&m_CurTexCoord, s, t, r, 1);
}

void TRenderCPU::MultiTexCoord3fv(unsigned int, const float* v) {
  StoreVector(&m_CurTexCoord, v[0], v[1], v[2], 1);
}

void TRenderCPU::MultiTexCoord3d(unsigned int, double s, double t, double r) {
  StoreVector(&m_CurTexCoord, s, t, r, 1);
}

void TRenderCPU::MultiTexCoord3dv(unsigned int, const double* v) {
  StoreVector(&m_CurTexCoord, v[0], v[1], v[2], 1);
}

// --- Generic attributes

static void SetAttrib(TRenderCPU& gl, int index, const vec_t_<double, 4>& value) {
  if (!IsBelow(index, kAttribs)) {
    return;
  }
  StoreVector(&gl.m_CurAttrib[index], value.x, value.y, value.z, value.w);
  if (index == 0) {
    gl.Vertex4dv(&gl.m_CurAttrib[0].x);
  }
}

void TRenderCPU::VertexAttrib(int index, float v) { SetAttrib(*this, index, {v, 0, 0, 1}); }

void TRenderCPU::VertexAttrib(int index, double v) { SetAttrib(*this, index, {v, 0, 0, 1}); }

void TRenderCPU::VertexAttrib(int index, const vec_t_<float, 2>& v) {
  SetAttrib(*this, index, {v.x, v.y, 0, 1});
}

void TRenderCPU::VertexAttrib(int index, const vec_t_<double, 2>& v) {
  SetAttrib(*this, index, {v.x, v.y, 0, 1});
}

void TRenderCPU::VertexAttrib(int index, const vec_t_<float, 3>& v) {
  SetAttrib(*this, index, {v.x, v.y, v.z, 1});
}

void TRenderCPU::VertexAttrib(int index, const vec_t_<double, 3>& v) {
  SetAttrib(*this, index, {v.x, v.y, v.z, 1});
}

void TRenderCPU::VertexAttrib(int index, const vec_t_<float, 4>& v) {
  SetAttrib(*this, index, {v.x, v.y, v.z, v.w});
}

void TRenderCPU::VertexAttrib(int index, const vec_t_<double, 4>& v) {
  SetAttrib(*this, index, {v.x, v.y, v.z, v.w});
}

} // namespace Zx3D
