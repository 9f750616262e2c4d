#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxBaseKit/TZxMessage.h>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/state/CurrentObjects.h>

namespace Zx3D {

[[noreturn]] static void ThrowUnknownCapability(unsigned int cap) {
  throw TZxMessage("ERROR: TRenderCPU::Enable dont support mode %1%") << cap;
}

void TRenderCPU::Enable(unsigned int cap) { _Enable(cap, true); }

void TRenderCPU::Disable(unsigned int cap) { _Enable(cap, false); }

bool TRenderCPU::IsEnabled(unsigned int cap) { return _IsEnabled(cap); }

void TRenderCPU::_Enable(unsigned int cap, bool on) {
  if (cap - GL_LIGHT0 < kLights) {
    EnableLight(cap - GL_LIGHT0, on);
    return;
  }
  switch (cap) {
  case GL_CULL_FACE:
    EnableCullFace(on);
    break;
  case GL_LIGHTING:
    EnableLighting(on);
    break;
  case GL_COLOR_MATERIAL:
    m_ColorMaterial = on;
    break;
  case GL_FOG:
    m_FogEnabled = on;
    break;
  case GL_DEPTH_TEST:
    EnableDepthTest(on);
    break;
  case GL_STENCIL_TEST:
    m_StencilTest = on;
    break;
  case GL_NORMALIZE:
    m_Normalize = on;
    break;
  case GL_BLEND:
    EnableBlend(on);
    break;
  case GL_TEXTURE_2D:
    _EnableTexture2D(m_ActiveTexture, on);
    break;
  case GL_POLYGON_OFFSET_FILL:
    m_PolygonOffsetFill = on;
    break;
  case GL_DEBUG_OUTPUT:
    m_DebugOutput = on;
    break;
  default:
    _SetError(GL_INVALID_ENUM);
    ThrowUnknownCapability(cap);
  }
}

bool TRenderCPU::_IsEnabled(unsigned int cap) {
  if (cap - GL_LIGHT0 < kLights) {
    return _IsEnableLight(static_cast<int>(cap - GL_LIGHT0));
  }
  switch (cap) {
  case GL_CULL_FACE:
    return m_CullFaceEnabled;
  case GL_LIGHTING:
    return m_Lighting;
  case GL_COLOR_MATERIAL:
    return m_ColorMaterial;
  case GL_FOG:
    return m_FogEnabled;
  case GL_DEPTH_TEST:
    return m_DepthTest;
  case GL_STENCIL_TEST:
    return m_StencilTest;
  case GL_NORMALIZE:
    return m_Normalize;
  case GL_BLEND:
    return m_BlendEnabled;
  case GL_TEXTURE_2D: {
    const TTexUnit* const unit = ActiveTexUnit(*this);
    return unit != nullptr && unit->TexEnabled;
  }
  case GL_POLYGON_OFFSET_FILL:
    return m_PolygonOffsetFill;
  case GL_DEBUG_OUTPUT:
    return m_DebugOutput;
  default:
    break;
  }
  if (const TVertexAttribPointer* const array = ClassicArray(*this, cap)) {
    return array->Enabled;
  }
  ThrowUnknownCapability(cap);
}

void TRenderCPU::Hint(unsigned int target, unsigned int mode) {
  if (target != GL_PERSPECTIVE_CORRECTION_HINT) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  SetPerspectiveCorrectionHint(mode);
}

} // namespace Zx3D
