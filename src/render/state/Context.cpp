#include <ZxCore3D/render/TRenderCPU.h>

#include <memory>
#include <new>

#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/StdFragmentShader.h>
#include <ZxCore3D/render/StdVertexShader.h>

#include <ZxCore3D/render/arrays/VertexCache.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/Limits.h>

namespace Zx3D {

static TRenderCPU::TLight DefaultLight(bool first) {
  const double full = first ? 1.0 : 0.0;
  TRenderCPU::TLight light;
  light.Enabled = false;
  light.Spot = false;
  light.Position = {0, 0, 1, 0};
  light.Ambient = {0, 0, 0, 1};
  light.Diffuse = {full, full, full, full};
  light.Specular = {full, full, full, full};
  light.SpotDirection = {0, 0, 1};
  light.SpotExponent = 0;
  light.SpotCutoff = 180;
  light.SpotCutoffRad = 3.141592653589793;
  light.ConstantAttenuation = 1;
  light.LinearAttenuation = 0;
  light.QuadraticAttenuation = 0;
  return light;
}

static constexpr TRenderCPU::TMaterial kDefaultMaterial = {
    {0.2, 0.2, 0.2, 1}, {0.8, 0.8, 0.8, 1}, {0, 0, 0, 1}, {0, 0, 0, 1}, 0};

TRenderCPU::TRenderCPU()
    : m_BlendSrc(GL_ONE), m_BlendDst(GL_ZERO), m_CullFaceMode(GL_BACK), m_PolygonModeFront(GL_FILL),
      m_PolygonModeBack(GL_FILL), m_PerspectiveHint(GL_NICEST), m_StencilFunc(GL_ALWAYS),
      m_StencilFail(GL_KEEP), m_StencilZFail(GL_KEEP), m_StencilZPass(GL_KEEP),
      m_StencilCompare(AlwaysM_1u8), m_StencilFailOp(KeepM_1u8), m_StencilZFailOp(KeepM_1u8),
      m_StencilZPassOp(KeepM_1u8), m_MatrixMode(GL_MODELVIEW),
      m_ShadeModel(GL_SMOOTH), m_Fragment{{0, 0, 0, 0}, 0, 0, true, 0.0f}, m_ModelView(g_M4Ed),
      m_Projection(g_M4Ed), m_ModelViewProjection(g_M4Ed), m_Fog{GL_EXP, 1, 0, 1, {0, 0, 0, 0}},
      m_ColorMaterialFace(GL_FRONT_AND_BACK), m_ColorMaterialMode(GL_AMBIENT_AND_DIFFUSE),
      m_MaterialFront(kDefaultMaterial), m_MaterialBack(kDefaultMaterial), m_DepthCompare(Less1f),
      m_DepthFunc(GL_LESS), m_Engine(nullptr) {
  for (unsigned int i = 0; i < kLights; ++i) {
    m_Lights[i] = DefaultLight(i == 0);
  }
  // Each is let go if the next one throws.
  auto engine = std::make_unique<TRenderEngine>(*this);
  auto vertexArray = std::make_unique<TVertexArray>();
  m_Surface = new TZxGLSurface;
  m_Engine = engine.release();
  m_DefaultVertexArray = vertexArray.release();
  m_VertexArray = m_DefaultVertexArray;
}

TRenderCPU::~TRenderCPU() {
  // What can exist in a context that was never created goes the same way.
  TRenderCPU::Destroy();
  m_Surface->Release();
  for (unsigned int i = 0; i < kTexUnits; ++i) { // those of detached textures
    m_Engine->DropBinding(i);
  }
  delete m_Engine;
}

// False if memory is exhausted.
static bool MakeDefaultProgram(TRenderCPU& gl) {
  auto* const vertexShader = new (std::nothrow) TStdVertexShaderCPU;
  gl.m_StdVertexShader = vertexShader;
  auto* const fragmentShader = new (std::nothrow) TStdFragmentShaderCPU;
  gl.m_StdFragmentShader = fragmentShader;
  gl.m_DefaultProgram = new (std::nothrow) TProgramCPU;
  if (vertexShader == nullptr || fragmentShader == nullptr || gl.m_DefaultProgram == nullptr) {
    return false;
  }
  gl.m_DefaultProgram->SetShaderV(vertexShader);
  gl.m_DefaultProgram->SetShaderF(fragmentShader);
  gl._SetProgram(gl.m_DefaultProgram);
  return true;
}

bool TRenderCPU::Create(int width, int height, TRenderBase* share) {
  auto* const giver = dynamic_cast<TRenderCPU*>(share);
  if (share != nullptr && giver == nullptr) {
    return false;
  }
  if (m_Created || width < 1 || height < 1) {
    return false;
  }
  m_FrameBuffer = new (std::nothrow) TFrameBuffer;
  m_Engine->VertexCache = new (std::nothrow) TVertexCache{};
  if (m_FrameBuffer == nullptr || m_Engine->VertexCache == nullptr ||
      !m_FrameBuffer->Create(width, height)) {
    Destroy();
    return false;
  }
  m_Engine->AdoptSurfaces();
  m_Created = true;
  const bool linked = giver == nullptr || giver == this || m_Textures != nullptr;
  if (!MakeDefaultProgram(*this) || (!linked && !giver->_Share(this))) {
    Destroy();
    return false;
  }
  return true;
}

bool TRenderCPU::_Share(TRenderBase* other) {
  auto* const taker = dynamic_cast<TRenderCPU*>(other);
  if (taker == nullptr || taker == this || taker->m_Textures != nullptr) {
    return false;
  }
  TTextureTable* table = m_Textures;
  if (table == nullptr) {
    table = new (std::nothrow) TTextureTable;
    if (table == nullptr) {
      return false;
    }
    m_Engine->AdoptTextures(table);
  }
  table->RefCount.fetch_add(1, std::memory_order_relaxed);
  taker->m_Engine->AdoptTextures(table);
  return true;
}

bool TRenderCPU::SetSize(int width, int height) {
  if (!m_Created || width < 1 || height < 1) {
    return false;
  }
  // The old surfaces go first; nothing may draw into them until the new ones are taken.
  m_Engine->ForgetOwnSurfaces();
  if (!m_FrameBuffer->Create(width, height)) {
    Destroy();
    return false;
  }
  m_Engine->AdoptSurfaces();
  return true;
}

template <class T> static void ReleaseAndForget(T*& held) {
  if (held != nullptr) {
    held->Release();
    held = nullptr;
  }
}

void TRenderCPU::Destroy() {
  if (IsCurrent()) {
    DoneCurrent();
  }
  ReleaseAndForget(m_StdVertexShader);
  ReleaseAndForget(m_StdFragmentShader);
  ReleaseAndForget(m_DefaultProgram);
  _SetProgram(nullptr);
  // Shaders can be installed without a program, before `Create` and after this.
  _SetVertexShader(nullptr);
  _SetFragmentShader(nullptr);
  // Without shaders and surfaces no vertex may be followed, should one come before the next
  // `Begin`.
  m_VertexHandler = &TRenderCPU::UnknownVertex;
  if (m_FrameBuffer != nullptr) {
    m_Width = 0;
    m_Height = 0;
    m_Engine->ForgetOwnSurfaces();
    delete m_FrameBuffer;
    m_FrameBuffer = nullptr;
  }
  delete m_Engine->VertexCache;
  m_Engine->VertexCache = nullptr;
  _ClearVertexArrays();
  _ClearTextures();
  _ClearBuffers();
  delete m_DefaultVertexArray;
  m_Created = false;
  m_DefaultVertexArray = nullptr;
  m_VertexArray = nullptr;
  m_VertexArrayBinding = 0;
}

bool TRenderCPU::GetSize(vec_t_<int, 2>* size) const {
  if (!m_Created) {
    return false;
  }
  *size = {m_Width, m_Height};
  return true;
}

bool TRenderCPU::DoMakeCurrent(TZxGLSurface* surface) {
  if (!m_Created) {
    return false;
  }
  m_CurrentSurface = surface;
  return true;
}

void TRenderCPU::DoDoneCurrent() { m_CurrentSurface = nullptr; }

bool TRenderCPU::SwapBuffers(TZxGLSurface*) { return true; }

void TRenderCPU::Flush() {}

void TRenderCPU::Finish() {}

} // namespace Zx3D
