// Tested by: tests/render/StdVertexShader.cpp (StdVertexShader.*), tests/render/Lights.cpp
// (Lights.*)

#pragma once

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/common/Pairs.h>

namespace Zx3D {

/// Products of a light with the materials of both faces, front first. Lighting starts with these
/// very products, so computing them once changes no bit.
struct TLightTerms {
  const TRenderCPU::TLight* Light;
  vec_t_<double, 4> Ambient[2];
  vec_t_<double, 4> Diffuse[2];
  vec_t_<double, 4> Specular[2];
  bool NoSpecular; ///< of the front: see `HasNoSpecular`
  bool HalfSet; ///< whether `Half` is set: for a viewer at infinity it is the same for all vertices
  vec_t_<double, 3> Half;
};

/// The lighting of a draw in which no state changes.
struct TLightingTerms {
  TLightTerms Lights[kLights]; ///< those that are on
};

void SetUpLighting(const TRenderCPU& gl, TLightingTerms* out);

/// The clip position that the standard vertex shader gives a vertex: with P the product of both
/// matrices, component i is P[i] x + P[4 + i] y + P[8 + i] z + P[12 + i].
inline void SetClipPosition(const TRenderCPU& gl, const vec_t_<double, 4>& vertex,
                            vec_t_<double, 4>* out) {
  const double* const p = gl.m_ModelViewProjection.m;
  const TPair x = {vertex.x, vertex.x};
  const TPair y = {vertex.y, vertex.y};
  const TPair z = {vertex.z, vertex.z};
  const auto rows = [&](int i) {
    return PairAt(p + i) * x + PairAt(p + 4 + i) * y + PairAt(p + 8 + i) * z + PairAt(p + 12 + i);
  };
  const TPair low = rows(0);
  const TPair high = rows(2);
  StorePair(&out->x, low);
  StorePair(&out->z, high);
}

/// Makes the current colour the material, where colour material is on.
void ApplyColorMaterial(TRenderCPU* gl);

/// What the standard vertex shader does with lights or colour material. `drawTerms` is null where
/// state may have changed since the vertex before.
void ShadeWithMaterial(TRenderCPU* gl, TRenderCPU::VAR_DATA* v, const TLightingTerms* drawTerms);

/// The standard vertex shader on the current values.
inline void ShadeVertex(TRenderCPU* gl, TRenderCPU::VAR_DATA* v, const TLightingTerms* drawTerms) {
  SetClipPosition(*gl, gl->m_CurVertex, &v->Slots[0]);
  if (gl->m_Lighting || gl->m_ColorMaterial) [[unlikely]] {
    ShadeWithMaterial(gl, v, drawTerms);
    return;
  }
  if (IsBelow(gl->m_VarColor, kSlots)) {
    v->Slots[gl->m_VarColor] = gl->m_CurColor;
  }
  if (gl->m_TexUnits[0].TexEnabled && IsBelow(gl->m_VarTexCoord, kSlots)) {
    v->Slots[gl->m_VarTexCoord] = gl->m_CurTexCoord;
  }
}

} // namespace Zx3D
