#include <ZxCore3D/render/StdVertexShader.h>

#include <cmath>

#include <ZxCore3D/render/GLEnums.h>

namespace Zx3D {

using TVec3 = vec_t_<double, 3>;
using TVec4 = vec_t_<double, 4>;
using TLight = TRenderCPU::TLight;
using TMaterial = TRenderCPU::TMaterial;

TStdVertexShaderCPU::~TStdVertexShaderCPU() = default;

unsigned int TStdVertexShaderCPU::GetUniformLocation(const char*) const { return 0xFFFFFFFF; }

unsigned int TStdVertexShaderCPU::GetAttribLocation(const char*) const { return 0xFFFFFFFF; }

void TStdVertexShaderCPU::Begin() {
  TRenderCPU& gl = *m_Render;
  const bool twoSide = gl.m_Lighting && gl.m_LightModelTwoSide;
  gl.m_VarPosition = 0;
  gl.m_VarColor = 1;
  gl.m_VarSecondary = gl.m_Lighting ? 2 : -1;
  gl.m_VarBackColor = twoSide ? 3 : -1;
  gl.m_VarBackSecondary = twoSide ? 4 : -1;
  const int texCoord = twoSide ? 5 : gl.m_Lighting ? 3 : 2;
  if (gl.m_TexUnits[0].TexEnabled) {
    gl.m_VarTexCoord = texCoord;
  }
  gl.m_VarCount = texCoord + 1;
}

void TStdVertexShaderCPU::End() {}

namespace {

// One face's material with the slots that its colours go to. A face that has no slots is lit into
// the spare ones, which nobody reads.
struct TFace {
  const TMaterial* Material;
  TVec4* Color;
  TVec4* Secondary;
};

TVec3 Normalized(const TVec3& v) {
  const double len = length(v);
  return len == 0.0 ? v : TVec3{v.x / len, v.y / len, v.z / len};
}

// color += product of a and b, times a factor where there is one: the first three components.
void AddProduct(TVec4* color, const TVec4& a, const TVec4& b) {
  color->x = color->x + a.x * b.x;
  color->y = color->y + a.y * b.y;
  color->z = color->z + a.z * b.z;
}

void AddProduct(TVec4* color, const TVec4& a, const TVec4& b, double factor) {
  color->x = color->x + a.x * b.x * factor;
  color->y = color->y + a.y * b.y * factor;
  color->z = color->z + a.z * b.z * factor;
}

struct TVertexLighting {
  TVec3 Eye;          ///< the vertex in eye space
  TVec3 EyeDirection; ///< the same divided by its length
  TVec3 Normal;
  double NormalSquare;
  TFace Front;
  TFace Back;
  bool TwoSide;
  bool LocalViewer;

  TVec3 HalfVector(const TLight& light) const {
    const TVec3 half =
        LocalViewer ? TVec3{light.Position.x - EyeDirection.x, light.Position.y - EyeDirection.y,
                            light.Position.z - EyeDirection.z}
                    : TVec3{light.Position.x, light.Position.y, light.Position.z + 1.0};
    return Normalized(half);
  }

  void AddDirectional(const TLight& light) const;
  void AddPositional(const TLight& light) const;
  void AddSpot(const TLight& light) const;
};

// Whether the specular term of a light is a zero that need not be added: no product of colours but
// 0, and a power that stays finite for every cosine that a normal of this length can give.
bool HasNoSpecular(const TFace& face, const TLight& light, double normalSquare) {
  const TVec4& m = face.Material->Specular;
  const TVec4& l = light.Specular;
  return m.x * l.x == 0.0 && m.y * l.y == 0.0 && m.z * l.z == 0.0 &&
         face.Material->Shininess >= 0.0 && face.Material->Shininess <= 128.0 && normalSquare < 4.0;
}

// t is the cosine between half vector and normal, turned to the side of the face.
void AddSpecular(const TFace& face, const TLight& light, double t) {
  AddProduct(face.Secondary, face.Material->Specular, light.Specular,
             std::pow(t, face.Material->Shininess));
}

void TVertexLighting::AddDirectional(const TLight& light) const {
  AddProduct(Front.Color, Front.Material->Ambient, light.Ambient);
  if (TwoSide) {
    AddProduct(Back.Color, Back.Material->Ambient, light.Ambient);
  }
  const TVec3 away = {-light.Position.x, -light.Position.y, -light.Position.z};
  const double d = dot(away, Normal);
  if (d < 0.0) {
    AddProduct(Front.Color, Front.Material->Diffuse, light.Diffuse, -d);
    if (!HasNoSpecular(Front, light, NormalSquare)) {
      const double t = dot(HalfVector(light), Normal);
      if (t > 0.0) {
        AddSpecular(Front, light, t);
      }
    }
  } else if (TwoSide) {
    AddProduct(Back.Color, Back.Material->Diffuse, light.Diffuse, d);
    const double t = dot(HalfVector(light), Normal);
    if (t < 0.0) {
      AddSpecular(Back, light, -t);
    }
  }
}

double Attenuation(const TLight& light, double r) {
  return 1.0 / ((light.QuadraticAttenuation * r + light.LinearAttenuation) * r +
                light.ConstantAttenuation);
}

void TVertexLighting::AddPositional(const TLight& light) const {
  TVec3 toVertex = {Eye.x - light.Position.x, Eye.y - light.Position.y, Eye.z - light.Position.z};
  const double r = length(toVertex);
  double attenuation = 1.0;
  if (r > 0.0) {
    toVertex = {toVertex.x / r, toVertex.y / r, toVertex.z / r};
    attenuation = Attenuation(light, r);
  }
  TVec4 frontSum = {Front.Material->Ambient.x * light.Ambient.x,
                    Front.Material->Ambient.y * light.Ambient.y,
                    Front.Material->Ambient.z * light.Ambient.z, 0.0};
  TVec4 backSum = {Back.Material->Ambient.x * light.Ambient.x,
                   Back.Material->Ambient.y * light.Ambient.y,
                   Back.Material->Ambient.z * light.Ambient.z, 0.0};
  const double d = dot(toVertex, Normal);
  if (d < 0.0) {
    AddProduct(&frontSum, Front.Material->Diffuse, light.Diffuse, -d);
    if (!HasNoSpecular(Front, light, NormalSquare)) {
      const double t = dot(HalfVector(light), Normal);
      if (t > 0.0) {
        AddSpecular(Front, light, t);
      }
    }
  } else if (TwoSide) {
    AddProduct(&backSum, Back.Material->Diffuse, light.Diffuse, d);
    const double t = dot(HalfVector(light), Normal);
    if (t < 0.0) {
      AddSpecular(Back, light, -t);
    }
  }
  const TVec4 scale = {attenuation, attenuation, attenuation, 0.0};
  AddProduct(Front.Color, frontSum, scale);
  if (TwoSide) {
    AddProduct(Back.Color, backSum, scale);
  }
}

void TVertexLighting::AddSpot(const TLight& light) const {
  TVec3 toVertex = {Eye.x - light.Position.x, Eye.y - light.Position.y, Eye.z - light.Position.z};
  const double r = length(toVertex);
  if (!(r > 0.0)) {
    return;
  }
  toVertex = {toVertex.x / r, toVertex.y / r, toVertex.z / r};
  const double attenuation = Attenuation(light, r);
  const double d = dot(toVertex, Normal);
  const bool front = d < 0.0;
  if (!front && !TwoSide) {
    return;
  }
  const double c = dot(toVertex, light.SpotDirection);
  if (!(c > 0.0) || !(light.SpotCutoffRad > std::acos(c))) {
    return;
  }
  const double f = attenuation * std::pow(c, light.SpotExponent);
  const TFace& face = front ? Front : Back;
  const double t = front ? dot(HalfVector(light), Normal) : -dot(HalfVector(light), Normal);
  if (t > 0.0) {
    AddProduct(face.Secondary, face.Material->Specular, light.Specular,
               std::pow(t, face.Material->Shininess) * f);
  }
  const double s = front ? -d : d;
  const TMaterial& m = *face.Material;
  face.Color->x =
      face.Color->x + f * (m.Ambient.x * light.Ambient.x + m.Diffuse.x * light.Diffuse.x * s);
  face.Color->y =
      face.Color->y + f * (m.Ambient.y * light.Ambient.y + m.Diffuse.y * light.Diffuse.y * s);
  face.Color->z =
      face.Color->z + f * (m.Ambient.z * light.Ambient.z + m.Diffuse.z * light.Diffuse.z * s);
}

void SetColorMaterial(TMaterial* material, std::uint32_t mode, const TVec4& color) {
  switch (mode) {
  case GL_AMBIENT:
    material->Ambient = color;
    break;
  case GL_DIFFUSE:
    material->Diffuse = color;
    break;
  case GL_SPECULAR:
    material->Specular = color;
    break;
  case GL_EMISSION:
    material->Emission = color;
    break;
  case GL_AMBIENT_AND_DIFFUSE:
    material->Ambient = color;
    material->Diffuse = color;
    break;
  default:
    break;
  }
}

void ApplyColorMaterial(TRenderCPU* gl) {
  const std::uint32_t face = gl->m_ColorMaterialFace;
  if (face == GL_FRONT_AND_BACK || face == GL_FRONT) {
    SetColorMaterial(&gl->m_MaterialFront, gl->m_ColorMaterialMode, gl->m_CurColor);
  }
  if (face == GL_FRONT_AND_BACK || face == GL_BACK) {
    SetColorMaterial(&gl->m_MaterialBack, gl->m_ColorMaterialMode, gl->m_CurColor);
  }
}

void SetBaseColor(const TFace& face, const TVec4& sceneAmbient) {
  const TMaterial& m = *face.Material;
  *face.Color = {m.Ambient.x * sceneAmbient.x + m.Emission.x,
                 m.Ambient.y * sceneAmbient.y + m.Emission.y,
                 m.Ambient.z * sceneAmbient.z + m.Emission.z, m.Diffuse.w};
}

} // namespace

void TStdVertexShaderCPU::Execute(TRenderCPU::VAR_DATA* v) {
  TRenderCPU& gl = *m_Render;
  const MAT4<double>& p = gl.m_ModelViewProjection;
  const TVec4& at = gl.m_CurVertex;
  for (std::size_t i = 0; i < 4; ++i) {
    v->Slots[0][i] = p[i] * at.x + p[4 + i] * at.y + p[8 + i] * at.z + p[12 + i];
  }

  // Lighting can be switched on after `Begin` filled the slot table without it; what has no slot
  // goes to the spare record.
  TRenderCPU::VAR_DATA spare;
  const auto slot = [v, &spare](int number) {
    return static_cast<unsigned int>(number) < 8 ? &v->Slots[number] : &spare.Slots[0];
  };
  const TVec4 zero = {0, 0, 0, 0};
  if (gl.m_Lighting) {
    *slot(gl.m_VarColor) = zero;
    *slot(gl.m_VarSecondary) = zero;
    if (gl.m_LightModelTwoSide) {
      *slot(gl.m_VarBackColor) = zero;
      *slot(gl.m_VarBackSecondary) = zero;
    }
  } else {
    *slot(gl.m_VarColor) = gl.m_CurColor;
  }
  if (gl.m_ColorMaterial) {
    ApplyColorMaterial(&gl);
  }
  if (gl.m_TexUnits[0].TexEnabled) {
    *slot(gl.m_VarTexCoord) = gl.m_CurTexCoord;
  }
  if (!gl.m_Lighting || gl.m_EnabledLightCount == 0) {
    return;
  }

  TVertexLighting vertex;
  const MAT4<double>& m = gl.m_ModelView;
  const TVec4& n = gl.m_CurNormal;
  for (std::size_t i = 0; i < 3; ++i) {
    vertex.Eye[i] = m[i] * at.x + m[4 + i] * at.y + m[8 + i] * at.z + m[12 + i];
    vertex.Normal[i] = m[i] * n.x + m[4 + i] * n.y + m[8 + i] * n.z;
  }
  if (gl.m_Normalize) {
    vertex.Normal = Normalized(vertex.Normal);
  }
  vertex.NormalSquare = dot(vertex.Normal, vertex.Normal);
  vertex.LocalViewer = gl.m_LightModelLocalViewer;
  vertex.EyeDirection = vertex.LocalViewer ? Normalized(vertex.Eye) : vertex.Eye;
  vertex.TwoSide = gl.m_LightModelTwoSide;
  vertex.Front = {&gl.m_MaterialFront, slot(gl.m_VarColor), slot(gl.m_VarSecondary)};
  vertex.Back = {&gl.m_MaterialBack, slot(gl.m_VarBackColor), slot(gl.m_VarBackSecondary)};
  SetBaseColor(vertex.Front, gl.m_LightModelAmbient);
  if (vertex.TwoSide) {
    SetBaseColor(vertex.Back, gl.m_LightModelAmbient);
  }

  for (int k = 0; k < gl.m_EnabledLightCount; ++k) {
    const TLight& light = gl.m_Lights[gl.m_EnabledLights[k]];
    if (light.Position.w == 0.0) {
      vertex.AddDirectional(light);
    } else if (!light.Spot) {
      vertex.AddPositional(light);
    } else {
      vertex.AddSpot(light);
    }
  }
}

} // namespace Zx3D
