// Tested by: tests/render/StdVertexShader.cpp (StdVertexShader.*), tests/render/Lights.cpp
// (Lights.*)

#pragma once

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Limits.h>

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

/// The clip position that the standard vertex shader gives a vertex.
vec_t_<double, 4> ClipPosition(const TRenderCPU& gl, const vec_t_<double, 4>& vertex);

/// The standard vertex shader on the current values. `drawTerms` is null where state may have
/// changed since the vertex before.
void ShadeVertex(TRenderCPU* gl, TRenderCPU::VAR_DATA* v, const TLightingTerms* drawTerms);

} // namespace Zx3D
