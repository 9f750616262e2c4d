#include "Shaders.h"

#include <cmath>
#include <cstring>

namespace zx_scene {

using Zx3D::TRenderCPU;

namespace {

unsigned int _Location(const char* name) {
  return std::strcmp(name, "cutoff") == 0 ? unsigned{kCutoffCell}
         : std::strcmp(name, "id") == 0   ? unsigned{kIdCell}
                                          : 0xFFFFFFFF;
}

using TSlot = vec_t_<double, 4>;

// Interpolation takes the last bits from an alpha of 1, and files write cutoffs in decimals: a
// millionth is forgiven. A NaN is none.
bool _IsKept(double alpha, double cutoff) { return alpha >= cutoff - 1e-6; }

// `v` by the upper 3x3 of `m`, and by its translation too if `w` is 1.
TSlot _Transform(const MAT4<double>& m, const TSlot& v, double w) {
  TSlot out = {0, 0, 0, 0};
  for (unsigned int i = 0; i < 3; ++i) {
    out[i] = m[i] * v.x + m[4 + i] * v.y + m[8 + i] * v.z + m[12 + i] * w;
  }
  return out;
}

} // namespace

unsigned int TCutoutShader::GetUniformLocation(const char* name) const { return _Location(name); }

bool TCutoutShader::Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) {
  TStdFragmentShaderCPU::Execute(v, f);
  if (!_IsKept(f->Color.w, m_Render->m_Uniforms[kCutoffCell].x)) {
    return false;
  }
  f->Color.w = 1;
  return true;
}

void TLayerVertexShader::Begin() {
  TStdVertexShaderCPU::Begin();
  m_Render->m_VarCount += 2;
}

void TLayerVertexShader::Execute(TRenderCPU::VAR_DATA* v) {
  TStdVertexShaderCPU::Execute(v);
  const TRenderCPU& gl = *m_Render;
  v->Slots[gl.m_VarCount - 2] = _Transform(gl.m_ModelView, gl.m_CurVertex, 1);
  v->Slots[gl.m_VarCount - 1] = _Transform(gl.m_ModelView, gl.m_CurNormal, 0);
}

unsigned int TLayerFragmentShader::GetUniformLocation(const char* name) const {
  return _Location(name);
}

bool TLayerFragmentShader::Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) {
  const TRenderCPU& gl = *m_Render;
  if (const double cutoff = gl.m_Uniforms[kCutoffCell].x; cutoff > 0) {
    TStdFragmentShaderCPU::Execute(v, f);
    if (!_IsKept(f->Color.w, cutoff)) {
      return false;
    }
  }
  if (const double id = gl.m_Uniforms[kIdCell].x; id > 0) {
    f->Color = {id, 0, 0, 0};
    return true;
  }
  const TSlot& eye = v->Slots[gl.m_VarCount - 2];
  const TSlot& normal = v->Slots[gl.m_VarCount - 1];
  double length = std::sqrt(normal.x * normal.x + normal.y * normal.y + normal.z * normal.z);
  if (!(length > 0)) { // a NaN too
    f->Color = {-eye.z, 0, 0, 0};
    return true;
  }
  // Lines and points have no sides.
  if (gl.m_PrimitiveMode == GL_TRIANGLES && !f->FrontFacing) {
    length = -length;
  }
  f->Color = {-eye.z, normal.x / length, normal.y / length, normal.z / length};
  return true;
}

} // namespace zx_scene
