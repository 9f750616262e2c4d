#include <ZxCore3D/render/ProgramCPU.h>

#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/RowShaderCPU.h>

#include <ZxCore3D/render/common/Engine.h>

namespace Zx3D {

static constexpr unsigned int kNoLocation = 0xFFFFFFFF;

// Lets `held` hold `fresh` in the place of what it held; false if that is the same object.
template <class T> static bool Replace(T*& held, T* fresh) {
  if (fresh == held) {
    return false;
  }
  if (fresh != nullptr) {
    fresh->AddRef();
  }
  T* const old = held;
  held = fresh;
  if (old != nullptr) {
    old->Release();
  }
  return true;
}

TProgram::~TProgram() = default;

TProgramCPU::~TProgramCPU() {
  SetShaderV(nullptr);
  SetShaderF(nullptr);
}

void TProgramCPU::SetShaderV(TVertexShaderCPU* shader) { Replace(m_ShaderV, shader); }

void TProgramCPU::SetShaderF(TFragmentShaderCPU* shader) { Replace(m_ShaderF, shader); }

unsigned int TProgramCPU::GetAttribLocation(const char* name) const {
  return m_ShaderV != nullptr ? m_ShaderV->GetAttribLocation(name) : kNoLocation;
}

unsigned int TProgramCPU::GetUniformLocation(const char* name) const {
  if (m_ShaderV != nullptr) {
    const unsigned int location = m_ShaderV->GetUniformLocation(name);
    if (location != kNoLocation) {
      return location;
    }
  }
  return m_ShaderF != nullptr ? m_ShaderF->GetUniformLocation(name) : kNoLocation;
}

unsigned int TProgramCPU::GetSubroutineIndex(unsigned int, const char*) const {
  return kNoLocation;
}

// --- Installing

template <class T> static void Install(TRenderCPU* render, T*& installed, T* fresh) {
  if (fresh != nullptr) {
    fresh->AddRef();
    fresh->m_Render = render;
  }
  if (installed != nullptr) {
    installed->m_Render = nullptr;
    installed->Release();
  }
  installed = fresh;
}

// The shader as one that computes rows; null if it is none. Not by its type: a host that was
// compiled without run-time type information has shaders too.
static TRowFragmentShaderCPU* RowShaderOf(TFragmentShaderCPU* shader) {
  void* found = nullptr;
  if (shader == nullptr || !shader->QueryInterface(TRowFragmentShaderCPU::s_Interface, &found) ||
      found == nullptr) {
    return nullptr;
  }
  shader->Release();
  return static_cast<TRowFragmentShaderCPU*>(found);
}

void TRenderCPU::_SetVertexShader(TVertexShaderCPU* shader) {
  TVertexShaderCPU* const fresh = shader != nullptr ? shader : m_StdVertexShader;
  if (fresh != m_VertexShader) {
    m_Engine->ResolveFragment();
    Install(this, m_VertexShader, fresh);
  }
}

void TRenderCPU::_SetFragmentShader(TFragmentShaderCPU* shader) {
  TFragmentShaderCPU* const fresh = shader != nullptr ? shader : m_StdFragmentShader;
  if (fresh != m_FragmentShader) {
    m_Engine->ResolveFragment();
    Install(this, m_FragmentShader, fresh);
    m_CalcDepth = fresh != nullptr && fresh->IsCalcDepth();
    m_Engine->RowShader = RowShaderOf(fresh);
  }
}

void TRenderCPU::_SetProgram(TProgramCPU* program) {
  TProgramCPU* const fresh = program != nullptr ? program : m_DefaultProgram;
  if (fresh == m_Program) {
    return;
  }
  // The new program is held before the old one goes: it may be all that keeps it alive.
  TProgramCPU* const old = m_Program;
  if (fresh != nullptr) {
    fresh->AddRef();
  }
  _SetVertexShader(fresh != nullptr ? fresh->GetShaderV() : nullptr);
  _SetFragmentShader(fresh != nullptr ? fresh->GetShaderF() : nullptr);
  m_Program = fresh;
  if (old != nullptr) {
    old->Release();
  }
}

void TRenderCPU::SetProgram(TProgram* program) {
  if (program == nullptr) {
    _SetProgram(nullptr);
    return;
  }
  auto* const own = dynamic_cast<TProgramCPU*>(program);
  if (own == nullptr) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  _SetProgram(own);
}

TProgram* TRenderCPU::GetProgram() { return m_Program; }

} // namespace Zx3D
