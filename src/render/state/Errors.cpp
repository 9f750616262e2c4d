#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/GLEnums.h>

namespace Zx3D {

void TRenderCPU::_SetError(unsigned int code) {
  if (m_Error == 0) {
    m_Error = code;
    if (code == 0) {
      return;
    }
  }
  if (m_DebugCallback != nullptr && m_DebugOutput) {
    m_DebugCallback(0, 0, 0, 0, 1, "", m_DebugUserParam);
  }
}

unsigned int TRenderCPU::GetError() {
  const unsigned int error = m_Error;
  m_Error = 0;
  return error;
}

const char* TRenderCPU::GetString(unsigned int) { return "GL_ARB_texture_non_power_of_two"; }

bool TRenderCPU::DebugMessageCallback(TDebugCallback callback, void* user) {
  m_DebugCallback = callback;
  m_DebugUserParam = user;
  return true;
}

bool TRenderCPU::IsSupport_SGIS_generate_mipmap() const { return false; }

// --- What exists only to report

void TRenderCPU::AlphaFunc(unsigned int, float) { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::LineStipple(int, unsigned short) { _SetError(GL_INVALID_OPERATION); }

unsigned int TRenderCPU::GenLists(int) {
  _SetError(GL_INVALID_OPERATION);
  return 0;
}

void TRenderCPU::DeleteLists(unsigned int, int) { _SetError(GL_INVALID_OPERATION); }

bool TRenderCPU::IsList(unsigned int) {
  _SetError(GL_INVALID_OPERATION);
  return false;
}

void TRenderCPU::NewList(unsigned int, unsigned int) { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::EndList() { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::ListBase(unsigned int) { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::CallList(unsigned int) { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::CallLists(int, unsigned int, const void*) { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::SelectBuffer(int, unsigned int*) { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::InitNames() { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::LoadName(unsigned int) { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::PushName(unsigned int) { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::PopName() { _SetError(GL_INVALID_OPERATION); }

int TRenderCPU::RenderMode(unsigned int) {
  _SetError(GL_INVALID_OPERATION);
  return 0;
}

void TRenderCPU::BindFramebuffer(unsigned int, unsigned int) { _SetError(GL_INVALID_OPERATION); }

void TRenderCPU::GetBooleanv(unsigned int, unsigned char*) { _SetError(GL_INVALID_ENUM); }

void TRenderCPU::GetTexParameteriv(unsigned int, unsigned int, int*) { _SetError(GL_INVALID_ENUM); }

void TRenderCPU::GetTexParameterfv(unsigned int, unsigned int, float*) {
  _SetError(GL_INVALID_ENUM);
}

void TRenderCPU::GetTexLevelParameteriv(unsigned int, int, unsigned int, int*) {
  _SetError(GL_INVALID_ENUM);
}

void TRenderCPU::GetTexLevelParameterfv(unsigned int, int, unsigned int, float*) {
  _SetError(GL_INVALID_ENUM);
}

void TRenderCPU::Bitmap(int, int, float, float, float, float, const unsigned char*) {
  _SetError(GL_INVALID_VALUE);
}

void TRenderCPU::Bitmap(const TZxGLBitmap&, float, float) { _SetError(GL_INVALID_VALUE); }

void TRenderCPU::TexEnvf(unsigned int, unsigned int, float) { _SetError(GL_INVALID_VALUE); }

void TRenderCPU::TexGeni(unsigned int, unsigned int, int) { _SetError(GL_INVALID_VALUE); }

void TRenderCPU::TexGenf(unsigned int, unsigned int, float) { _SetError(GL_INVALID_VALUE); }

void TRenderCPU::TexGend(unsigned int, unsigned int, double) { _SetError(GL_INVALID_VALUE); }

} // namespace Zx3D
