// Tested by: tests/render/StdVertexShader.cpp (StdVertexShader.*)

#include <ZxCore3D/render/StdVertexShader.h>

#include <ZxCore3D/render/stages/VertexLighting.h>

namespace Zx3D {

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
  if (!gl.m_TexUnits[0].TexEnabled) {
    // Without a texture nothing writes the last slot, yet each primitive scales it: a stale
    // coordinate there would grow without bound.
    for (TRenderCPU::VAR_DATA* const records : {gl.m_VarCur, gl.m_VarSaved}) {
      for (int i = 0; i < 4; ++i) {
        records[i].Slots[texCoord] = {0, 0, 0, 0};
      }
    }
  }
}

void TStdVertexShaderCPU::Execute(TRenderCPU::VAR_DATA* v) { ShadeVertex(m_Render, v, nullptr); }

void TStdVertexShaderCPU::End() {}

} // namespace Zx3D
