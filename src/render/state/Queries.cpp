#include <ZxCore3D/render/TRenderCPU.h>

#include <initializer_list>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/state/CurrentObjects.h>

namespace Zx3D {

// --- Integers

namespace {

// Stores values, unsigned ones and flags as the integers of the same bits.
template <class... TValues> bool Store(int* out, TValues... values) {
  ((*out++ = static_cast<int>(values)), ...);
  return true;
}

} // namespace

// What does not depend on state.
static bool GetFixedInteger(unsigned int pname, int* out) {
  switch (pname) {
  case GL_DOUBLEBUFFER:
  case GL_STEREO:
  case GL_FRAMEBUFFER_BINDING:
  case GL_READ_FRAMEBUFFER_BINDING:
    return Store(out, 0);
  case GL_RENDER_MODE:
    return Store(out, GL_RENDER);
  case GL_MAX_LIGHTS:
    return Store(out, kLights);
  case GL_MAX_VERTEX_ATTRIBS:
    return Store(out, kAttribs);
  case GL_STENCIL_BITS:
    return Store(out, 8);
  case GL_MAX_TEXTURE_SIZE:
    return Store(out, 16384);
  default:
    return false;
  }
}

static bool GetFragmentInteger(const TRenderCPU& gl, unsigned int pname, int* out) {
  switch (pname) {
  case GL_DEPTH_TEST:
    return Store(out, gl.m_DepthTest);
  case GL_DEPTH_WRITEMASK:
    return Store(out, gl.m_DepthMask);
  case GL_STENCIL_TEST:
    return Store(out, gl.m_StencilTest);
  case GL_STENCIL_CLEAR_VALUE:
    return Store(out, gl.m_ClearStencil);
  case GL_STENCIL_FAIL:
    return Store(out, gl.m_StencilFail);
  case GL_STENCIL_PASS_DEPTH_FAIL:
    return Store(out, gl.m_StencilZFail);
  case GL_STENCIL_PASS_DEPTH_PASS:
    return Store(out, gl.m_StencilZPass);
  case GL_VIEWPORT:
    return Store(out, 0, 0, gl.m_Width, gl.m_Height);
  case GL_COLOR_WRITEMASK:
    return Store(out, gl.m_ColorMask & 1, gl.m_ColorMask >> 1 & 1, gl.m_ColorMask >> 2 & 1,
                 gl.m_ColorMask >> 3 & 1);
  default:
    return false;
  }
}

static bool GetSurfaceInteger(const TRenderCPU& gl, unsigned int pname, int* out) {
  switch (pname) {
  case GL_POLYGON_MODE:
    return Store(out, gl.m_PolygonModeFront, gl.m_PolygonModeBack);
  case GL_CULL_FACE:
    return Store(out, gl.m_CullFaceEnabled);
  case GL_CULL_FACE_MODE:
    return Store(out, gl.m_CullFaceMode);
  case GL_FRONT_FACE:
    return Store(out, gl.m_FrontFaceCCW ? GL_CCW : GL_CW);
  case GL_LIGHT_MODEL_TWO_SIDE:
    return Store(out, gl.m_LightModelTwoSide);
  case GL_SHADE_MODEL:
    return Store(out, gl.m_ShadeModel);
  case GL_COLOR_MATERIAL_FACE:
    return Store(out, gl.m_ColorMaterialFace);
  case GL_COLOR_MATERIAL_PARAMETER:
    return Store(out, gl.m_ColorMaterialMode);
  case GL_COLOR_MATERIAL:
    return Store(out, gl.m_ColorMaterial);
  case GL_FOG_MODE:
    return Store(out, gl.m_Fog.Mode);
  default:
    return false;
  }
}

static bool GetArrayInteger(TRenderCPU& gl, unsigned int pname, int* out) {
  if (const TRenderCPU::TVertexAttribPointer* const array = ClassicArray(gl, pname)) {
    return Store(out, array->Enabled);
  }
  switch (pname) {
  case GL_VERTEX_ARRAY_BINDING:
    return Store(out, gl.m_VertexArrayBinding);
  case GL_ARRAY_BUFFER_BINDING:
    return Store(out, gl.m_BufferBindings[0]);
  case GL_ELEMENT_ARRAY_BUFFER_BINDING:
    return Store(out, gl.m_BufferBindings[1]);
  case GL_PIXEL_PACK_BUFFER_BINDING:
    return Store(out, gl.m_BufferBindings[2]);
  case GL_PIXEL_UNPACK_BUFFER_BINDING:
    return Store(out, gl.m_BufferBindings[3]);
  case GL_ATOMIC_COUNTER_BUFFER: // the target's own name, not that of its binding
    return Store(out, gl.m_BufferBindings[4]);
  case GL_SHADER_STORAGE_BUFFER_BINDING:
    return Store(out, gl.m_BufferBindings[5]);
  default:
    return false;
  }
}

void TRenderCPU::GetIntegerv(unsigned int pname, int* out) {
  if (out == nullptr) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  if (!GetSurfaceInteger(*this, pname, out) && !GetFragmentInteger(*this, pname, out) &&
      !GetArrayInteger(*this, pname, out) && !GetFixedInteger(pname, out)) {
    _SetError(GL_INVALID_ENUM);
  }
}

// --- Floating values

// Up to sixteen values by name; 0, with an error reported, for an unknown one.
static int GetDoubles(TRenderCPU& gl, unsigned int pname, double* out) {
  const auto store = [out](const double* values, int count) {
    for (int i = 0; i < count; ++i) {
      out[i] = values[i];
    }
    return count;
  };
  switch (pname) {
  case GL_CURRENT_COLOR:
    return store(&gl.m_CurColor.x, 4);
  case GL_FOG_DENSITY:
    return store(&gl.m_Fog.Density, 1);
  case GL_FOG_START:
    return store(&gl.m_Fog.Start, 1);
  case GL_FOG_END:
    return store(&gl.m_Fog.End, 1);
  case GL_FOG_MODE:
    out[0] = gl.m_Fog.Mode;
    return 1;
  case GL_FOG_COLOR:
    return store(&gl.m_Fog.Color.x, 4);
  case GL_DEPTH_CLEAR_VALUE:
    out[0] = gl.m_ClearDepth;
    return 1;
  case GL_MODELVIEW_MATRIX:
    return store(gl.m_ModelView.m, 16);
  case GL_PROJECTION_MATRIX:
    return store(gl.m_Projection.m, 16);
  case GL_TEXTURE_MATRIX: {
    const TRenderCPU::TTexUnit* const unit = ActiveTexUnit(gl);
    return unit != nullptr ? store(unit->TexMatrix.m, 16) : 0;
  }
  case GL_COLOR_CLEAR_VALUE:
    for (int i = 0; i < 4; ++i) {
      out[i] = UnitOfStoredByte(gl.m_ClearColor[i]);
    }
    return 4;
  default:
    gl._SetError(GL_INVALID_ENUM);
    return 0;
  }
}

void TRenderCPU::GetDoublev(unsigned int pname, double* out) {
  double values[16];
  const int count = GetDoubles(*this, pname, values);
  for (int i = 0; i < count; ++i) {
    out[i] = values[i];
  }
}

void TRenderCPU::GetFloatv(unsigned int pname, float* out) {
  double values[16];
  const int count = GetDoubles(*this, pname, values);
  for (int i = 0; i < count; ++i) {
    out[i] = static_cast<float>(values[i]);
  }
}

} // namespace Zx3D
