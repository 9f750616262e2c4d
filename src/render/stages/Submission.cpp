// Tested by: tests/render/Assembly.cpp (Assembly.*), tests/render/Submission.cpp (CurrentColor.*,
// CustomPair.*)

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ShaderCPU.h>

#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/common/Pairs.h>
#include <ZxCore3D/render/stages/SlotMath.h>
#include <ZxCore3D/render/stages/VertexLighting.h>

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
    for (int i = 0; i < static_cast<int>(kLights); ++i) {
      if (m_Lights[i].Enabled) {
        m_EnabledLights[count++] = i;
      }
    }
  }
  m_Engine->UpdateDerivedState();

  static constexpr TRenderEngine::TAssemble kAssembly[] = {
      &TRenderEngine::AssemblePoint,       &TRenderEngine::AssembleLine,
      &TRenderEngine::AssembleLineLoop,    &TRenderEngine::AssembleLineStrip,
      &TRenderEngine::AssembleTriangle,    &TRenderEngine::AssembleTriangleStrip,
      &TRenderEngine::AssembleTriangleFan, &TRenderEngine::AssembleQuad,
  };
  static constexpr TVertexHandler kHandlers[] = {
      &TRenderCPU::PointsVertex,      &TRenderCPU::LinesVertex,
      &TRenderCPU::LineLoopVertex,    &TRenderCPU::LineStripVertex,
      &TRenderCPU::TrianglesVertex,   &TRenderCPU::TriangleStripVertex,
      &TRenderCPU::TriangleFunVertex, &TRenderCPU::QuadsVertex,
  };
  if (mode > GL_QUADS) {
    m_VertexHandler = &TRenderCPU::UnknownVertex;
    _SetError(GL_INVALID_ENUM);
  } else if (!m_Created || m_VarCount < 1 || !IsBelow(m_VarCount - 1, kSlots)) {
    m_VertexHandler = &TRenderCPU::UnknownVertex;
  } else {
    m_VertexHandler = kHandlers[mode];
    m_Engine->Assemble = kAssembly[mode];
  }
  m_InBeginEnd = true;
}

void TRenderCPU::End() {
  if (m_PrimitiveMode == GL_LINE_LOOP && m_Pending == 1) {
    CopyVar(m_VarCur[1], m_VarSaved[0]);
    m_Pending = 2;
    ClipAndRasterizeLine(m_VarCur, 0);
  }
  m_Engine->ResolveFragment();
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

void TRenderCPU::CopyVar(VAR_DATA& to, const VAR_DATA& from) {
  CopySlots(to.Slots, from.Slots, m_VarCount);
}

void TRenderCPU::Set(VAR_DATA& to, const VAR_DATA& from) { CopyVar(to, from); }

// --- A vertex

// Components by value: rebuilding the vertex in memory would stall on store forwarding, behind all
// stores of pixels.
static void Submit(TRenderCPU& gl, double x, double y, double z, double w) {
  StoreVector(&gl.m_CurVertex, x, y, z, w);
  (gl.*gl.m_VertexHandler)();
}

void TRenderCPU::Vertex2i(int x, int y) {
  Submit(*this, static_cast<double>(x), static_cast<double>(y), 0, 1);
}

void TRenderCPU::Vertex2iv(const int* v) {
  Submit(*this, static_cast<double>(v[0]), static_cast<double>(v[1]), 0, 1);
}

void TRenderCPU::Vertex2f(float x, float y) { Submit(*this, x, y, 0, 1); }

void TRenderCPU::Vertex2fv(const float* v) { Submit(*this, v[0], v[1], 0, 1); }

void TRenderCPU::Vertex2d(double x, double y) { Submit(*this, x, y, 0, 1); }

void TRenderCPU::Vertex2dv(const double* v) { Submit(*this, v[0], v[1], 0, 1); }

void TRenderCPU::Vertex3i(int x, int y, int z) {
  Submit(*this, static_cast<double>(x), static_cast<double>(y), static_cast<double>(z), 1);
}

void TRenderCPU::Vertex3iv(const int* v) {
  Submit(*this, static_cast<double>(v[0]), static_cast<double>(v[1]), static_cast<double>(v[2]), 1);
}

void TRenderCPU::Vertex3f(float x, float y, float z) { Submit(*this, x, y, z, 1); }

void TRenderCPU::Vertex3fv(const float* v) { Submit(*this, v[0], v[1], v[2], 1); }

void TRenderCPU::Vertex3d(double x, double y, double z) { Submit(*this, x, y, z, 1); }

void TRenderCPU::Vertex3dv(const double* v) { Submit(*this, v[0], v[1], v[2], 1); }

void TRenderCPU::Vertex4f(float x, float y, float z, float w) { Submit(*this, x, y, z, w); }

void TRenderCPU::Vertex4fv(const float* v) { Submit(*this, v[0], v[1], v[2], v[3]); }

void TRenderCPU::Vertex4d(double x, double y, double z, double w) { Submit(*this, x, y, z, w); }

void TRenderCPU::Vertex4dv(const double* v) { Submit(*this, v[0], v[1], v[2], v[3]); }

// --- The modes

// Fills the next record of the primitive, then does what is the mode's. The shader of the context
// itself needs no virtual call; its state is that of the context in which it was installed last.
template <TRenderEngine::TAssemble kAssemble> inline void TRenderEngine::Take(TRenderCPU& context) {
  VAR_DATA* const record = &context.m_VarCur[context.m_Pending];
  TVertexShaderCPU* const shader = context.m_VertexShader;
  if (shader == context.m_StdVertexShader) [[likely]] {
    ShadeVertex(shader->m_Render, record, nullptr);
  } else {
    shader->Execute(record);
  }
  // Each by itself: a load of both would wait for the store of either to reach memory.
  const volatile int* const pending = &context.m_Pending;
  ++context.m_VertexIndex;
  context.m_Pending = *pending + 1;
  (this->*kAssemble)();
}

// --- The modes, after the shading of the vertex

void TRenderEngine::AssemblePoint() {
  gl.ClipAndRasterizePoint(gl.m_VarCur);
  gl.m_Pending = 0;
}

void TRenderEngine::AssembleLine() {
  if (gl.m_Pending == 2) {
    gl.ClipAndRasterizeLine(gl.m_VarCur, 0);
    gl.m_Pending = 0;
  }
}

// Draws the segment once it has both ends and keeps the newer for the next.
void TRenderEngine::AssembleLineStrip() {
  if (gl.m_Pending == 2) {
    gl.CopyVar(gl.m_VarSaved[1], gl.m_VarCur[1]);
    gl.ClipAndRasterizeLine(gl.m_VarCur, 0);
    gl.CopyVar(gl.m_VarCur[0], gl.m_VarSaved[1]);
    gl.m_Pending = 1;
  }
}

void TRenderEngine::AssembleLineLoop() {
  if (gl.m_VertexIndex == 0) {
    gl.CopyVar(gl.m_VarSaved[0], gl.m_VarCur[0]);
  }
  AssembleLineStrip();
}

void TRenderEngine::AssembleTriangle() {
  if (gl.m_Pending == 3) {
    gl.ClipAndRasterizeTriangle(gl.m_VarCur, 0);
    gl.m_Pending = 0;
  }
}

void TRenderEngine::AssembleTriangleStrip() {
  static constexpr int kPrevious[3] = {2, 0, 1}; // i - 1 modulo 3
  gl.m_StripIndex = gl.m_StripIndex <= 1 ? gl.m_StripIndex + 1 : 0;
  if (gl.m_VertexIndex > 0) {
    gl.CopyVar(gl.m_VarSaved[gl.m_StripIndex], gl.m_VarCur[gl.m_Pending - 1]);
  }
  if (gl.m_Pending != 3) {
    return;
  }
  if (gl.m_VertexIndex >= 3) {
    // The two vertices before this one are placed so that the strip keeps its winding.
    const int parity = gl.m_VertexIndex & 1;
    const int previous = kPrevious[gl.m_StripIndex];
    gl.CopyVar(gl.m_VarCur[parity ^ 1], gl.m_VarSaved[previous]);
    gl.CopyVar(gl.m_VarCur[parity], gl.m_VarSaved[kPrevious[previous]]);
  }
  gl.ClipAndRasterizeTriangle(gl.m_VarCur, 0);
  gl.m_Pending = 2;
}

void TRenderEngine::AssembleTriangleFan() {
  if (gl.m_VertexIndex == 0) {
    gl.CopyVar(gl.m_VarSaved[0], gl.m_VarCur[0]);
  } else {
    const int parity = gl.m_VertexIndex & 1;
    gl.CopyVar(gl.m_VarSaved[1 + parity], gl.m_VarCur[2]);
    if (gl.m_VertexIndex >= 3) {
      gl.CopyVar(gl.m_VarCur[0], gl.m_VarSaved[0]);
      gl.CopyVar(gl.m_VarCur[1], gl.m_VarSaved[2 - parity]);
    }
  }
  if (gl.m_Pending == 3) {
    gl.ClipAndRasterizeTriangle(gl.m_VarCur, 0);
    gl.m_Pending = 2;
  }
}

void TRenderEngine::AssembleQuad() {
  if (gl.m_Pending == 4) {
    gl.CopyVar(gl.m_VarSaved[0], gl.m_VarCur[0]);
    gl.CopyVar(gl.m_VarSaved[1], gl.m_VarCur[2]);
    gl.CopyVar(gl.m_VarSaved[2], gl.m_VarCur[3]);
    gl.ClipAndRasterizeTriangle(gl.m_VarCur, 0);
    gl.ClipAndRasterizeTriangle(gl.m_VarSaved, 0);
    gl.m_Pending = 0;
  }
}

// --- The routines of the modes: shading, then assembly

void TRenderCPU::UnknownVertex() {}

void TRenderCPU::PointsVertex() { m_Engine->Take<&TRenderEngine::AssemblePoint>(*this); }

void TRenderCPU::LinesVertex() { m_Engine->Take<&TRenderEngine::AssembleLine>(*this); }

void TRenderCPU::LineLoopVertex() { m_Engine->Take<&TRenderEngine::AssembleLineLoop>(*this); }

void TRenderCPU::LineStripVertex() { m_Engine->Take<&TRenderEngine::AssembleLineStrip>(*this); }

void TRenderCPU::TrianglesVertex() { m_Engine->Take<&TRenderEngine::AssembleTriangle>(*this); }

void TRenderCPU::TriangleStripVertex() {
  m_Engine->Take<&TRenderEngine::AssembleTriangleStrip>(*this);
}

void TRenderCPU::TriangleFunVertex() { m_Engine->Take<&TRenderEngine::AssembleTriangleFan>(*this); }

void TRenderCPU::QuadsVertex() { m_Engine->Take<&TRenderEngine::AssembleQuad>(*this); }

} // namespace Zx3D
