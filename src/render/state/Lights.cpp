#include <ZxCore3D/render/TRenderCPU.h>

#include <cmath>
#include <string>

#include <ZxBaseKit/TZxMessage.h>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/ErrorCodes.h>
#include <ZxCore3D/render/common/Limits.h>

namespace Zx3D {

static vec_t_<double, 4> Widened4(const float* v) { return {v[0], v[1], v[2], v[3]}; }

static void Narrow(const double* v, int count, float* out) {
  for (int i = 0; i < count; ++i) {
    out[i] = static_cast<float>(v[i]);
  }
}

static bool IsCutoff(float degrees) {
  return !(degrees < 0.0f || (degrees > 90.0f && degrees != 180.0f));
}

// --- Lights

// The light of an enum; null, with an error reported, outside GL_LIGHT0 to GL_LIGHT7.
static TRenderCPU::TLight* LightOf(TRenderCPU& gl, unsigned int light) {
  if (light - GL_LIGHT0 >= kLights) {
    gl._SetError(kIndexError);
    return nullptr;
  }
  return &gl.m_Lights[light - GL_LIGHT0];
}

// The same of a light that is to be set, which `Begin` and `End` must not enclose.
static TRenderCPU::TLight* LightToSet(TRenderCPU& gl, unsigned int light) {
  if (gl.m_InBeginEnd) {
    gl._SetError(GL_INVALID_OPERATION);
    return nullptr;
  }
  return LightOf(gl, light);
}

// The values that are one number; `pname` is GL_SPOT_EXPONENT to GL_QUADRATIC_ATTENUATION.
static void SetLightValue(TRenderCPU& gl, TRenderCPU::TLight* light, unsigned int pname, float v) {
  switch (pname) {
  case GL_SPOT_EXPONENT:
    light->SpotExponent = v;
    break;
  case GL_SPOT_CUTOFF:
    if (!IsCutoff(v)) {
      gl._SetError(GL_INVALID_VALUE);
      break;
    }
    light->SpotCutoff = v;
    light->SpotCutoffRad = v * 3.141592653589793 / 180;
    light->Spot = v != 180.0f;
    break;
  case GL_CONSTANT_ATTENUATION:
    light->ConstantAttenuation = v;
    break;
  case GL_LINEAR_ATTENUATION:
    light->LinearAttenuation = v;
    break;
  case GL_QUADRATIC_ATTENUATION:
    light->QuadraticAttenuation = v;
    break;
  default:
    break;
  }
}

void TRenderCPU::Lightf(unsigned int light, unsigned int pname, float v) {
  TLight* const target = LightToSet(*this, light);
  if (target == nullptr) {
    return;
  }
  if (pname < GL_SPOT_EXPONENT || pname > GL_QUADRATIC_ATTENUATION) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  SetLightValue(*this, target, pname, v);
}

void TRenderCPU::Lightfv(unsigned int light, unsigned int pname, const float* v) {
  TLight* const target = LightToSet(*this, light);
  if (target == nullptr) {
    return;
  }
  const MAT4<double>& m = m_ModelView;
  switch (pname) {
  case GL_AMBIENT:
    target->Ambient = Widened4(v);
    break;
  case GL_DIFFUSE:
    target->Diffuse = Widened4(v);
    break;
  case GL_SPECULAR:
    target->Specular = Widened4(v);
    break;
  case GL_POSITION: {
    const vec_t_<double, 4> p = Widened4(v);
    vec_t_<double, 4> eye;
    for (std::size_t i = 0; i < 4; ++i) {
      eye[i] = m[i] * p.x + m[4 + i] * p.y + m[8 + i] * p.z + m[12 + i] * p.w;
    }
    if (eye.w == 0.0) {
      const double len = std::sqrt(eye.x * eye.x + eye.y * eye.y + eye.z * eye.z);
      if (len != 0.0) {
        eye = {eye.x / len, eye.y / len, eye.z / len, eye.w};
      }
    }
    target->Position = eye;
    break;
  }
  case GL_SPOT_DIRECTION: {
    const vec_t_<double, 3> d = {v[0], v[1], v[2]};
    for (std::size_t i = 0; i < 3; ++i) {
      target->SpotDirection[i] = m[i] * d.x + m[4 + i] * d.y + m[8 + i] * d.z;
    }
    break;
  }
  // Each attenuation is read from its own place in the array.
  case GL_LINEAR_ATTENUATION:
    SetLightValue(*this, target, pname, v[1]);
    break;
  case GL_QUADRATIC_ATTENUATION:
    SetLightValue(*this, target, pname, v[2]);
    break;
  case GL_SPOT_EXPONENT:
  case GL_SPOT_CUTOFF:
  case GL_CONSTANT_ATTENUATION:
    SetLightValue(*this, target, pname, v[0]);
    break;
  default:
    _SetError(GL_INVALID_ENUM);
    break;
  }
}

void TRenderCPU::GetLight(unsigned int light, unsigned int pname, float* out) {
  const TLight* const from = LightOf(*this, light);
  if (from == nullptr) {
    return;
  }
  switch (pname) {
  case GL_AMBIENT:
    Narrow(&from->Ambient.x, 4, out);
    break;
  case GL_DIFFUSE:
    Narrow(&from->Diffuse.x, 4, out);
    break;
  case GL_SPECULAR:
    Narrow(&from->Specular.x, 4, out);
    break;
  case GL_POSITION:
    Narrow(&from->Position.x, 4, out);
    break;
  case GL_SPOT_DIRECTION:
    Narrow(&from->SpotDirection.x, 3, out);
    break;
  case GL_SPOT_EXPONENT:
    Narrow(&from->SpotExponent, 1, out);
    break;
  case GL_SPOT_CUTOFF:
    // The setter's test, on what the caller has put there.
    if (!IsCutoff(out[0])) {
      _SetError(GL_INVALID_VALUE);
      break;
    }
    Narrow(&from->SpotCutoff, 1, out);
    break;
  case GL_CONSTANT_ATTENUATION:
    Narrow(&from->ConstantAttenuation, 1, out);
    break;
  case GL_LINEAR_ATTENUATION:
    Narrow(&from->LinearAttenuation, 1, out + 1);
    break;
  case GL_QUADRATIC_ATTENUATION:
    Narrow(&from->QuadraticAttenuation, 1, out + 2);
    break;
  default:
    _SetError(GL_INVALID_ENUM);
    break;
  }
}

void TRenderCPU::EnableLight(unsigned long index, bool on) {
  if (m_InBeginEnd) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  if (index >= kLights) {
    _SetError(kIndexError);
    return;
  }
  if (m_Lights[index].Enabled != on) {
    m_Lights[index].Enabled = on;
    m_EnabledLightCount += on ? 1 : -1;
  }
}

bool TRenderCPU::_IsEnableLight(int index) {
  if (!IsBelow(index, kLights)) {
    _SetError(kIndexError);
    return false;
  }
  return m_Lights[index].Enabled;
}

void TRenderCPU::EnableLighting(bool on) { m_Lighting = on; }

// --- The light model

static void SetLightModelFlag(TRenderCPU& gl, unsigned int pname, bool on) {
  switch (pname) {
  case GL_LIGHT_MODEL_LOCAL_VIEWER:
    gl.m_LightModelLocalViewer = on;
    break;
  case GL_LIGHT_MODEL_TWO_SIDE:
    gl.m_LightModelTwoSide = on;
    break;
  case GL_LIGHT_MODEL_COLOR_CONTROL:
    gl.m_LightModelColorControl = on;
    break;
  default:
    gl._SetError(GL_INVALID_ENUM);
    break;
  }
}

void TRenderCPU::LightModeli(unsigned int pname, int v) { SetLightModelFlag(*this, pname, v != 0); }

void TRenderCPU::LightModelf(unsigned int pname, float v) {
  SetLightModelFlag(*this, pname, v != 0.0f);
}

void TRenderCPU::LightModeliv(unsigned int pname, const int* v) {
  if (pname != GL_LIGHT_MODEL_AMBIENT) {
    SetLightModelFlag(*this, pname, v[0] != 0);
    return;
  }
  constexpr double kScale = 4.656612875245797e-10; // 1/2147483647
  m_LightModelAmbient = {v[0] * kScale, v[1] * kScale, v[2] * kScale, v[3] * kScale};
}

void TRenderCPU::LightModelfv(unsigned int pname, const float* v) {
  if (pname != GL_LIGHT_MODEL_AMBIENT) {
    SetLightModelFlag(*this, pname, v[0] != 0.0f);
    return;
  }
  m_LightModelAmbient = Widened4(v);
}

// --- Materials

void TRenderCPU::Materialf(unsigned int face, unsigned int pname, float v) {
  if (pname != GL_SHININESS || (face != GL_FRONT && face != GL_BACK && face != GL_FRONT_AND_BACK)) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  if (face != GL_BACK) {
    m_MaterialFront.Shininess = v;
  }
  if (face != GL_FRONT) {
    m_MaterialBack.Shininess = v;
  }
}

void TRenderCPU::Materialfv(unsigned int face, unsigned int pname, const float* v) {
  if (face != GL_FRONT && face != GL_BACK && face != GL_FRONT_AND_BACK) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  // Both faces at once means the front one here.
  TMaterial& material = face == GL_BACK ? m_MaterialBack : m_MaterialFront;
  switch (pname) {
  case GL_AMBIENT:
    material.Ambient = Widened4(v);
    break;
  case GL_DIFFUSE:
    material.Diffuse = Widened4(v);
    break;
  case GL_SPECULAR:
    material.Specular = Widened4(v);
    break;
  case GL_EMISSION:
    material.Emission = Widened4(v);
    break;
  case GL_AMBIENT_AND_DIFFUSE:
    material.Ambient = Widened4(v);
    material.Diffuse = material.Ambient;
    break;
  case GL_SHININESS:
    material.Shininess = v[0];
    break;
  default:
    _SetError(GL_INVALID_ENUM);
    break;
  }
}

void TRenderCPU::ColorMaterial(unsigned int face, unsigned int mode) {
  m_ColorMaterialFace = face;
  m_ColorMaterialMode = mode;
}

// --- Fog, stored and read back

void TRenderCPU::Fog(unsigned int pname, int v) {
  if (pname != GL_FOG_MODE) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  m_Fog.Mode = v;
}

static void SetFogValue(TRenderCPU& gl, unsigned int pname, float v) {
  switch (pname) {
  case GL_FOG_MODE:
    gl.m_Fog.Mode = TruncI32(v);
    break;
  case GL_FOG_DENSITY:
    gl.m_Fog.Density = v;
    break;
  case GL_FOG_START:
    gl.m_Fog.Start = v;
    break;
  case GL_FOG_END:
    gl.m_Fog.End = v;
    break;
  default:
    gl._SetError(GL_INVALID_VALUE);
    break;
  }
}

void TRenderCPU::Fog(unsigned int pname, float v) { SetFogValue(*this, pname, v); }

void TRenderCPU::Fog(unsigned int pname, const float* v) {
  if (pname == GL_FOG_COLOR) {
    m_Fog.Color = Widened4(v);
    return;
  }
  SetFogValue(*this, pname, v[0]);
}

// --- Shading

void TRenderCPU::ShadeModel(unsigned int mode) {
  if (mode == GL_FLAT) {
    throw TZxMessage(std::string("@") + "virtual void Zx3D::TRenderCPU::ShadeModel(GLenum)" + ": " +
                     "Under construction!");
  }
  if (mode != GL_SMOOTH) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  m_ShadeModel = mode;
}

} // namespace Zx3D
