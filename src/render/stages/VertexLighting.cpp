// Tested by: tests/render/StdVertexShader.cpp (StdVertexShader.*), tests/render/Lights.cpp
// (Lights.*)

#include <ZxCore3D/render/stages/VertexLighting.h>

#include <cmath>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/types/private/VectorForms.h>

namespace Zx3D {

using TVec3 = vec_t_<double, 3>;
using TVec4 = vec_t_<double, 4>;
using TLight = TRenderCPU::TLight;
using TMaterial = TRenderCPU::TMaterial;

namespace {

// One face's material and the slots that its colours go to. A face without slots is lit into a
// spare record.
struct TFace {
  const TMaterial* Material;
  TVec4* Color;
  TVec4* Secondary;
};

TVec3 Normalized(const TVec3& v) {
  const double len = length(v);
  return len == 0.0 ? v : TVec3{v.x / len, v.y / len, v.z / len};
}

TVec4 ProductOf(const TVec4& a, const TVec4& b) { return {a.x * b.x, a.y * b.y, a.z * b.z, 0.0}; }

// color += a product, times a factor where there is one: the first three components.
void Add(TVec4* color, const TVec4& product) {
  color->x = color->x + product.x;
  color->y = color->y + product.y;
  color->z = color->z + product.z;
}

void Add(TVec4* color, const TVec4& product, double factor) {
  color->x = color->x + product.x * factor;
  color->y = color->y + product.y * factor;
  color->z = color->z + product.z * factor;
}

// The half vector for a viewer at infinity.
TVec3 FarHalfVector(const TLight& light) {
  return Normalized({light.Position.x, light.Position.y, light.Position.z + 1.0});
}

// Whether the specular term is zero for every normal shorter than 2, so that adding it changes
// nothing: all products of colours are 0, and the power of every cosine that such a normal can give
// is finite.
bool HasNoSpecular(const TVec4& product, double shininess) {
  return product.x == 0.0 && product.y == 0.0 && product.z == 0.0 && shininess >= 0.0 &&
         shininess <= 128.0;
}

// In place: a copy would wait for what was stored one by one, for each vertex between `Begin` and
// `End`.
void SetTerms(const TRenderCPU& gl, const TLight& light, TLightTerms* terms) {
  terms->Light = &light;
  const TMaterial* const faces[2] = {&gl.m_MaterialFront, &gl.m_MaterialBack};
  for (int i = 0; i < (gl.m_LightModelTwoSide ? 2 : 1); ++i) {
    terms->Ambient[i] = ProductOf(faces[i]->Ambient, light.Ambient);
    terms->Diffuse[i] = ProductOf(faces[i]->Diffuse, light.Diffuse);
    terms->Specular[i] = ProductOf(faces[i]->Specular, light.Specular);
  }
  terms->NoSpecular = HasNoSpecular(terms->Specular[0], faces[0]->Shininess);
  terms->HalfSet = false;
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

  TVec3 HalfVector(const TLightTerms& terms) const {
    const TLight& light = *terms.Light;
    if (LocalViewer) {
      return Normalized({light.Position.x - EyeDirection.x, light.Position.y - EyeDirection.y,
                         light.Position.z - EyeDirection.z});
    }
    return terms.HalfSet ? terms.Half : FarHalfVector(light);
  }

  void AddDiffuseAndSpecular(const TLightTerms& terms, double d, TVec4* front, TVec4* back) const;
  void AddDirectional(const TLightTerms& terms) const;
  void AddPositional(const TLightTerms& terms) const;
  void AddSpot(const TLightTerms& terms) const;
};

// t is the cosine between half vector and normal, turned to the side of the face.
void AddSpecular(const TFace& face, const TVec4& product, double t) {
  Add(face.Secondary, product, std::pow(t, face.Material->Shininess));
}

// d is the cosine between the light's direction and the normal; the diffuse part goes to the sum of
// its side.
void TVertexLighting::AddDiffuseAndSpecular(const TLightTerms& terms, double d, TVec4* front,
                                            TVec4* back) const {
  if (d < 0.0) {
    Add(front, terms.Diffuse[0], -d);
    if (!(terms.NoSpecular && NormalSquare < 4.0)) {
      const double t = dot(HalfVector(terms), Normal);
      if (t > 0.0) {
        AddSpecular(Front, terms.Specular[0], t);
      }
    }
  } else if (TwoSide) {
    Add(back, terms.Diffuse[1], d);
    const double t = dot(HalfVector(terms), Normal);
    if (t < 0.0) {
      AddSpecular(Back, terms.Specular[1], -t);
    }
  }
}

void TVertexLighting::AddDirectional(const TLightTerms& terms) const {
  const TLight& light = *terms.Light;
  Add(Front.Color, terms.Ambient[0]);
  if (TwoSide) {
    Add(Back.Color, terms.Ambient[1]);
  }
  const TVec3 away = {-light.Position.x, -light.Position.y, -light.Position.z};
  AddDiffuseAndSpecular(terms, dot(away, Normal), Front.Color, Back.Color);
}

double Attenuation(const TLight& light, double r) {
  return 1.0 / ((light.QuadraticAttenuation * r + light.LinearAttenuation) * r +
                light.ConstantAttenuation);
}

void TVertexLighting::AddPositional(const TLightTerms& terms) const {
  const TLight& light = *terms.Light;
  TVec3 toVertex = {Eye.x - light.Position.x, Eye.y - light.Position.y, Eye.z - light.Position.z};
  const double r = length(toVertex);
  double attenuation = 1.0;
  if (r > 0.0) {
    toVertex = {toVertex.x / r, toVertex.y / r, toVertex.z / r};
    attenuation = Attenuation(light, r);
  }
  TVec4 frontSum = terms.Ambient[0];
  TVec4 backSum = terms.Ambient[TwoSide ? 1 : 0];
  AddDiffuseAndSpecular(terms, dot(toVertex, Normal), &frontSum, &backSum);
  Add(Front.Color, frontSum, attenuation);
  if (TwoSide) {
    Add(Back.Color, backSum, attenuation);
  }
}

void TVertexLighting::AddSpot(const TLightTerms& terms) const {
  const TLight& light = *terms.Light;
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
  // A spot direction that was normalised in floats can give a cosine above 1, which has no angle.
  if (!(c > 0.0 && c <= 1.0) || !(light.SpotCutoffRad > std::acos(c))) {
    return;
  }
  const double f = attenuation * std::pow(c, light.SpotExponent);
  const int side = front ? 0 : 1;
  const TFace& face = front ? Front : Back;
  const double t = front ? dot(HalfVector(terms), Normal) : -dot(HalfVector(terms), Normal);
  if (t > 0.0) {
    Add(face.Secondary, terms.Specular[side], std::pow(t, face.Material->Shininess) * f);
  }
  const double s = front ? -d : d;
  const TVec4& ambient = terms.Ambient[side];
  const TVec4& diffuse = terms.Diffuse[side];
  face.Color->x = face.Color->x + f * (ambient.x + diffuse.x * s);
  face.Color->y = face.Color->y + f * (ambient.y + diffuse.y * s);
  face.Color->z = face.Color->z + f * (ambient.z + diffuse.z * s);
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

void SetBaseColor(const TFace& face, const TVec4& sceneAmbient) {
  const TMaterial& m = *face.Material;
  *face.Color = {m.Ambient.x * sceneAmbient.x + m.Emission.x,
                 m.Ambient.y * sceneAmbient.y + m.Emission.y,
                 m.Ambient.z * sceneAmbient.z + m.Emission.z, m.Diffuse.w};
}

} // namespace

void ApplyColorMaterial(TRenderCPU* gl) {
  if (!gl->m_ColorMaterial) {
    return;
  }
  const std::uint32_t face = gl->m_ColorMaterialFace;
  if (face == GL_FRONT_AND_BACK || face == GL_FRONT) {
    SetColorMaterial(&gl->m_MaterialFront, gl->m_ColorMaterialMode, gl->m_CurColor);
  }
  if (face == GL_FRONT_AND_BACK || face == GL_BACK) {
    SetColorMaterial(&gl->m_MaterialBack, gl->m_ColorMaterialMode, gl->m_CurColor);
  }
}

void SetUpLighting(const TRenderCPU& gl, TLightingTerms* out) {
  for (int k = 0; k < gl.m_EnabledLightCount && gl.m_Lighting; ++k) {
    TLightTerms& terms = out->Lights[k];
    SetTerms(gl, gl.m_Lights[gl.m_EnabledLights[k]], &terms);
    terms.HalfSet = true;
    terms.Half = FarHalfVector(*terms.Light);
  }
}

void ShadeWithMaterial(TRenderCPU* render, TRenderCPU::VAR_DATA* v,
                       const TLightingTerms* drawTerms) {
  TRenderCPU& gl = *render;
  const TVec4& at = gl.m_CurVertex;

  // Lighting can be switched on after `Begin` filled the slot table without it: what has no slot
  // goes to a spare record that is never read.
  TRenderCPU::VAR_DATA spare;
  const auto slot = [v, &spare](int number) {
    return IsBelow(number, kSlots) ? &v->Slots[number] : &spare.Slots[0];
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
  ApplyColorMaterial(&gl);
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
    TLightTerms fresh;
    if (drawTerms == nullptr) {
      SetTerms(gl, gl.m_Lights[gl.m_EnabledLights[k]], &fresh);
    }
    const TLightTerms& terms = drawTerms != nullptr ? drawTerms->Lights[k] : fresh;
    const TLight& light = *terms.Light;
    if (light.Position.w == 0.0) {
      vertex.AddDirectional(terms);
    } else if (!light.Spot) {
      vertex.AddPositional(terms);
    } else {
      vertex.AddSpot(terms);
    }
  }
}

} // namespace Zx3D
