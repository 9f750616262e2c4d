// Tested by: tests/render/Assembly.cpp (Assembly.*), tests/render/Submission.cpp (CurrentColor.*,
// CustomPair.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/arrays/ArrayDraw.h>

namespace Zx3D {

// --- Begin and End

void TRenderCPU::Begin(unsigned int mode) {
  m_PrimitiveMode = mode;
  m_StripIndex = -1;
  m_VertexIndex = -1;
  m_Pending = 0;
  if (m_VertexShader != nullptr) {
    m_VertexShader->Begin();
  }
  if (m_FragmentShader != nullptr) {
    m_FragmentShader->Begin();
  }
  m_LastPixelX = -1;
  m_LastPixelY = -1;
  if (m_EnabledLightCount > 0) {
    int count = 0;
    for (int i = 0; i < 8; ++i) {
      if (m_Lights[i].Enabled) {
        m_EnabledLights[count++] = i;
      }
    }
  }
  _RefreshState();

  static constexpr TVertexHandler s_Assembly[8] = {
      &TRenderCPU::_AssemblePoint,       &TRenderCPU::_AssembleLine,
      &TRenderCPU::_AssembleLineLoop,    &TRenderCPU::_AssembleLineStrip,
      &TRenderCPU::_AssembleTriangle,    &TRenderCPU::_AssembleTriangleStrip,
      &TRenderCPU::_AssembleTriangleFan, &TRenderCPU::_AssembleQuad,
  };
  static constexpr TVertexHandler s_Handlers[8] = {
      &TRenderCPU::PointsVertex,      &TRenderCPU::LinesVertex,
      &TRenderCPU::LineLoopVertex,    &TRenderCPU::LineStripVertex,
      &TRenderCPU::TrianglesVertex,   &TRenderCPU::TriangleStripVertex,
      &TRenderCPU::TriangleFunVertex, &TRenderCPU::QuadsVertex,
  };
  if (mode > GL_QUADS) {
    m_VertexHandler = &TRenderCPU::UnknownVertex;
    _SetError(GL_INVALID_ENUM);
  } else if (!m_Created || m_VarCount < 1 || m_VarCount > 8) {
    m_VertexHandler = &TRenderCPU::UnknownVertex;
  } else {
    m_VertexHandler = s_Handlers[mode];
    m_Assemble = s_Assembly[mode];
  }
  m_InBeginEnd = true;
}

void TRenderCPU::End() {
  _ResolveFragment();
  if (m_PrimitiveMode == GL_LINE_LOOP && m_Pending == 1) {
    CopyVar(m_VarCur[1], m_VarSaved[0]);
    m_Pending = 2;
    ClipAndRasterizeLine(m_VarCur, 0);
  }
  m_VertexHandler = &TRenderCPU::UnknownVertex;
  m_InBeginEnd = false;
  m_PrimitiveMode = 0xFFFFFFFF;
  m_Pending = 0;
  if (m_VertexShader != nullptr) {
    m_VertexShader->End();
  }
  if (m_FragmentShader != nullptr) {
    m_FragmentShader->End();
  }
}

// --- Records

void TRenderCPU::CopyVar(VAR_DATA& to, const VAR_DATA& from) { CopySlots(&to, from, m_VarCount); }

void TRenderCPU::Set(VAR_DATA& to, const VAR_DATA& from) {
  for (int i = 0; i < m_VarCount; ++i) {
    to.Slots[i] = from.Slots[i];
  }
}

// --- The modes

// Components by value: rebuilding the vertex in memory would stall on store forwarding, behind all
// stores of pixels.
void TRenderCPU::_Submit(double x, double y, double z, double w) {
  m_CurVertex = {x, y, z, w};
  (this->*m_VertexHandler)();
}

// The start of every mode: fills the next record of the primitive.
void TRenderCPU::_ShadeVertex() {
  m_VertexShader->Execute(&m_VarCur[m_Pending]);
  ++m_VertexIndex;
  ++m_Pending;
}

void TRenderCPU::UnknownVertex() {}

// --- The modes, behind the shading of the vertex

void TRenderCPU::_AssemblePoint() {
  ClipAndRasterizePoint(m_VarCur);
  m_Pending = 0;
}

void TRenderCPU::_AssembleLine() {
  if (m_Pending == 2) {
    ClipAndRasterizeLine(m_VarCur, 0);
    m_Pending = 0;
  }
}

// Draws the segment once it has both ends and keeps the newer for the next.
void TRenderCPU::_AssembleLineStrip() {
  if (m_Pending == 2) {
    CopyVar(m_VarSaved[1], m_VarCur[1]);
    ClipAndRasterizeLine(m_VarCur, 0);
    CopyVar(m_VarCur[0], m_VarSaved[1]);
    m_Pending = 1;
  }
}

void TRenderCPU::_AssembleLineLoop() {
  if (m_VertexIndex == 0) {
    CopyVar(m_VarSaved[0], m_VarCur[0]);
  }
  _AssembleLineStrip();
}

void TRenderCPU::_AssembleTriangle() {
  if (m_Pending == 3) {
    ClipAndRasterizeTriangle(m_VarCur, 0);
    m_Pending = 0;
  }
}

void TRenderCPU::_AssembleTriangleStrip() {
  static constexpr int m1m3[3] = {2, 0, 1}; // i minus one modulo three
  m_StripIndex = m_StripIndex <= 1 ? m_StripIndex + 1 : 0;
  if (m_VertexIndex > 0) {
    CopyVar(m_VarSaved[m_StripIndex], m_VarCur[m_Pending - 1]);
  }
  if (m_Pending != 3) {
    return;
  }
  if (m_VertexIndex >= 3) {
    // The two vertices before this one are placed so that the strip keeps its winding.
    const int parity = m_VertexIndex & 1;
    const int previous = m1m3[m_StripIndex];
    CopyVar(m_VarCur[parity ^ 1], m_VarSaved[previous]);
    CopyVar(m_VarCur[parity], m_VarSaved[m1m3[previous]]);
  }
  ClipAndRasterizeTriangle(m_VarCur, 0);
  m_Pending = 2;
}

void TRenderCPU::_AssembleTriangleFan() {
  if (m_VertexIndex == 0) {
    CopyVar(m_VarSaved[0], m_VarCur[0]);
  } else {
    const int parity = m_VertexIndex & 1;
    CopyVar(m_VarSaved[1 + parity], m_VarCur[2]);
    if (m_VertexIndex >= 3) {
      CopyVar(m_VarCur[0], m_VarSaved[0]);
      CopyVar(m_VarCur[1], m_VarSaved[2 - parity]);
    }
  }
  if (m_Pending == 3) {
    ClipAndRasterizeTriangle(m_VarCur, 0);
    m_Pending = 2;
  }
}

void TRenderCPU::_AssembleQuad() {
  if (m_Pending == 4) {
    CopyVar(m_VarSaved[0], m_VarCur[0]);
    CopyVar(m_VarSaved[1], m_VarCur[2]);
    CopyVar(m_VarSaved[2], m_VarCur[3]);
    ClipAndRasterizeTriangle(m_VarCur, 0);
    ClipAndRasterizeTriangle(m_VarSaved, 0);
    m_Pending = 0;
  }
}

// --- The modes as a vertex meets them

void TRenderCPU::PointsVertex() {
  _ShadeVertex();
  _AssemblePoint();
}

void TRenderCPU::LinesVertex() {
  _ShadeVertex();
  _AssembleLine();
}

void TRenderCPU::LineLoopVertex() {
  _ShadeVertex();
  _AssembleLineLoop();
}

void TRenderCPU::LineStripVertex() {
  _ShadeVertex();
  _AssembleLineStrip();
}

void TRenderCPU::TrianglesVertex() {
  _ShadeVertex();
  _AssembleTriangle();
}

void TRenderCPU::TriangleStripVertex() {
  _ShadeVertex();
  _AssembleTriangleStrip();
}

void TRenderCPU::TriangleFunVertex() {
  _ShadeVertex();
  _AssembleTriangleFan();
}

void TRenderCPU::QuadsVertex() {
  _ShadeVertex();
  _AssembleQuad();
}

} // namespace Zx3D
