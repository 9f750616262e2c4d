#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdint>
#include <cstring>
#include <string>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Surface.h>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/common/Conversions.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/common/SurfaceBlock.h>
#include <ZxCore3D/render/state/CurrentObjects.h>

namespace Zx3D {

// --- Units

TRenderCPU::TTexUnit* ActiveTexUnit(TRenderCPU& gl) {
  return IsBelow(gl.m_ActiveTexture, kTexUnits) ? &gl.m_TexUnits[gl.m_ActiveTexture] : nullptr;
}

void TRenderCPU::ActiveTexture(unsigned int texture) {
  m_ActiveTexture = static_cast<std::int32_t>(texture - GL_TEXTURE0);
}

void TRenderCPU::_EnableTexture2D(int unit, bool on) {
  if (IsBelow(unit, kTexUnits)) {
    m_TexUnits[unit].TexEnabled = on;
  }
}

void TRenderCPU::TexEnvi(unsigned int target, unsigned int pname, int v) {
  const auto mode = static_cast<unsigned int>(v);
  if (target != GL_TEXTURE_ENV || pname != GL_TEXTURE_ENV_MODE ||
      (mode != GL_MODULATE && mode != GL_REPLACE)) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  if (TTexUnit* const unit = ActiveTexUnit(*this)) {
    unit->TexEnvMode = mode;
  }
}

void TRenderCPU::TexFilter2D(unsigned int min, unsigned int mag) {
  if (TTexSampler* const sampler = m_Engine->ActiveSampler()) {
    sampler->SetFilter(min, mag);
  }
}

void TRenderCPU::TexWrap2D(unsigned int s, unsigned int t) {
  if (TTexSampler* const sampler = m_Engine->ActiveSampler()) {
    sampler->SetWrap(s, t);
  }
}

// --- What is bound, and by whom

void TRenderEngine::DropBinding(unsigned int unit) {
  TTextureBinding& binding = TextureBindings[unit];
  if (binding.Hold != nullptr) {
    binding.Hold->Release();
    binding.Hold = nullptr;
  }
}

// A surface changed under the samplers that hold it: they choose anew.
void TRenderEngine::UpdateSamplersOf(const TDataSurface* surface) {
  for (unsigned int i = 0; i < kTexUnits; ++i) {
    TTexSampler& sampler = gl.m_TexUnits[i].Sampler;
    if (sampler.m_Surface == surface && surface != nullptr) {
      sampler.SetSurface(sampler.m_Surface);
      TextureBindings[i].Note(*surface);
    }
  }
}

void TRenderEngine::UnbindTexture(const TDataSurface* surface) {
  for (unsigned int i = 0; i < kTexUnits; ++i) {
    if (surface != nullptr && gl.m_TexUnits[i].Sampler.m_Surface == surface) {
      gl.m_TexUnits[i].Sampler.SetSurface(nullptr);
      DropBinding(i);
    }
  }
}

// --- The table

void TRenderEngine::AdoptTextures(TTextureTable* table) {
  gl.m_Textures = table;
  TextureChanges = table->Changes.load(std::memory_order_acquire);
}

void TRenderEngine::NoteTextureChange() {
  if (gl.m_Textures != nullptr) {
    gl.m_Textures->Changes.fetch_add(1, std::memory_order_release);
  }
}

static TDataSurface** EntryOf(TRenderCPU::TTextureTable* table, unsigned int id) {
  return table != nullptr && id < table->Surfaces.size() ? &table->Surfaces[id] : nullptr;
}

// The hold of a name, if it is that of the surface which stands there; null otherwise.
static TRenderCPU::TTextureHold* HoldOf(const TRenderCPU::TTextureTable& table, std::size_t id,
                                        TDataSurface* surface) {
  TRenderCPU::TTextureHold* const hold = id < table.Holds.size() ? table.Holds[id] : nullptr;
  return hold != nullptr && surface != nullptr && hold->Takes(surface) ? hold : nullptr;
}

// Frees the texture of a name but for what others still have bound.
static void FreeTexture(TRenderCPU::TTextureTable* table, std::size_t id) {
  TDataSurface* const surface = table->Surfaces[id];
  TRenderCPU::TTextureHold* const hold = HoldOf(*table, id, surface);
  table->Surfaces[id] = nullptr;
  if (hold == nullptr) {
    delete surface;
    return;
  }
  surface->Destroy();
  table->Holds[id] = nullptr;
  hold->Retire(TRenderCPU::TTextureHold::kDeleted);
}

// Makes a free name ready: what others hold it by and, if asked for, its surface.
static void FillName(TRenderCPU::TTextureTable* table, std::size_t id, bool create) {
  std::vector<TRenderCPU::TTextureHold*>& holds = table->Holds;
  if (id >= holds.size()) {
    holds.resize(table->Surfaces.size(), nullptr);
  }
  if (holds[id] != nullptr && holds[id]->Surface.load(std::memory_order_relaxed) != nullptr) {
    holds[id]->Retire(TRenderCPU::TTextureHold::kDetached); // of an entry that was emptied by hand
    holds[id] = nullptr;
  }
  if (holds[id] == nullptr) {
    holds[id] = new TRenderCPU::TTextureHold;
  }
  if (create) {
    table->Surfaces[id] = new TDataSurface;
    holds[id]->Takes(table->Surfaces[id]);
  }
}

void TRenderCPU::_GenTextures(int n, bool create, unsigned int* ids) {
  if (n < 1) {
    return;
  }
  if (m_Textures == nullptr) {
    m_Engine->AdoptTextures(new TTextureTable);
  }
  std::vector<TDataSurface*>& surfaces = m_Textures->Surfaces;
  const auto count = static_cast<std::size_t>(n);
  std::size_t given = 0;
  try {
    for (std::size_t id = 1; given < count; ++id) {
      if (id >= surfaces.size()) {
        surfaces.resize(id + count - given, nullptr);
      }
      if (surfaces[id] == nullptr) {
        FillName(m_Textures, id, create);
        ids[given++] = static_cast<unsigned int>(id);
      }
    }
  } catch (...) { // all names or none: the caller could not tell which ones it got
    while (given > 0) {
      FreeTexture(m_Textures, ids[--given]);
    }
    throw;
  }
}

void TRenderCPU::GenTextures(int n, unsigned int* ids) { _GenTextures(n, true, ids); }

void TRenderCPU::DeleteTextures(int n, const unsigned int* ids) {
  if (m_Textures == nullptr) {
    return;
  }
  for (int i = 0; i < n; ++i) {
    TDataSurface** const entry = EntryOf(m_Textures, ids[i]);
    if (ids[i] == 0 || entry == nullptr || *entry == nullptr) {
      continue;
    }
    m_Engine->UnbindTexture(*entry);
    m_Engine->ForgetTarget(*entry);
    FreeTexture(m_Textures, ids[i]);
    m_Engine->NoteTextureChange();
  }
}

bool TRenderCPU::IsTexture(unsigned int id) {
  TDataSurface** const entry = EntryOf(m_Textures, id);
  return id != 0 && entry != nullptr && *entry != nullptr;
}

unsigned int TRenderCPU::AttachTexture(TDataSurface* surface) {
  unsigned int id = 0;
  _GenTextures(1, false, &id);
  m_Textures->Surfaces[id] = surface;
  HoldOf(*m_Textures, id, surface);
  return id;
}

TDataSurface* TRenderCPU::DetachTexture(unsigned int id) {
  TDataSurface** const entry = EntryOf(m_Textures, id);
  if (entry == nullptr) {
    return nullptr;
  }
  TDataSurface* const surface = *entry;
  *entry = nullptr;
  if (TTextureHold* const hold = HoldOf(*m_Textures, id, surface)) {
    m_Textures->Holds[id] = nullptr;
    hold->Retire(TTextureHold::kDetached);
    m_Engine->NoteTextureChange();
  }
  return surface;
}

void TRenderCPU::_ClearTextures() {
  if (m_Textures == nullptr) {
    return;
  }
  // From here on the table belongs to others, if there are any, and may not even be read.
  for (unsigned int i = 0; i < kTexUnits; ++i) {
    const TTextureHold* const hold = m_Engine->TextureBindings[i].Hold;
    if (hold != nullptr && hold->Fate.load(std::memory_order_acquire) == TTextureHold::kDetached) {
      m_Engine->DetachedIsBound = true; // it stays bound
      continue;
    }
    if (hold != nullptr &&
        hold->Surface.load(std::memory_order_relaxed) == m_TexUnits[i].Sampler.m_Surface) {
      m_TexUnits[i].Sampler.SetSurface(nullptr);
    }
    m_Engine->DropBinding(i);
  }
  TTextureTable* const table = m_Textures;
  m_Textures = nullptr;
  if (table->RefCount.fetch_sub(1, std::memory_order_acq_rel) != 1) {
    return;
  }
  for (std::size_t id = 0; id < table->Surfaces.size(); ++id) {
    m_Engine->UnbindTexture(table->Surfaces[id]);
    m_Engine->ForgetTarget(table->Surfaces[id]);
    FreeTexture(table, id);
  }
  for (TTextureHold* const hold : table->Holds) { // of names that were never filled
    if (hold != nullptr) {
      hold->Retire(TTextureHold::kDetached);
    }
  }
  delete table;
}

// --- Binding and images

static void RequireTexture2D(unsigned int target) {
  if (target != GL_TEXTURE_2D) {
    throw TZxMessage("ERROR: TRenderCPU::BindTexture dont support type %1%") << target;
  }
}

// False, with an error reported, between `Begin` and `End`.
static bool MayChangeTexture(TRenderCPU& gl, unsigned int target) {
  RequireTexture2D(target);
  if (gl.m_InBeginEnd) {
    gl._SetError(GL_INVALID_OPERATION);
    return false;
  }
  return true;
}

void TRenderCPU::BindTexture(unsigned int target, unsigned int id) {
  RequireTexture2D(target);
  TDataSurface** const entry = EntryOf(m_Textures, id);
  TTexUnit* const unit = ActiveTexUnit(*this);
  if (entry == nullptr || unit == nullptr) {
    return;
  }
  TTextureHold* const hold = HoldOf(*m_Textures, id, *entry);
  if (hold != nullptr) {
    hold->Acquire();
  }
  unit->Sampler.SetSurface(*entry);
  m_Engine->DropBinding(static_cast<unsigned int>(m_ActiveTexture));
  TTextureBinding& binding = m_Engine->TextureBindings[m_ActiveTexture];
  binding.Hold = hold;
  if (hold != nullptr) {
    binding.Note(**entry);
  }
}

// The active unit's sampler, set for what other contexts made of its texture: what a new filter or
// wrap chooses is of the image that is there, and has to be known to be. Null without such a unit.
TRenderCPU::TTexSampler* TRenderEngine::ActiveSampler() {
  UpdateTextures();
  TTexUnit* const unit = ActiveTexUnit(gl);
  return unit != nullptr ? &unit->Sampler : nullptr;
}

// The surface bound to the active unit, as what it is; null if there is none, or another context
// has deleted it.
TDataSurface* TRenderEngine::BoundTexture() {
  const TTexSampler* const sampler = ActiveSampler();
  return sampler != nullptr ? static_cast<TDataSurface*>(sampler->m_Surface) : nullptr;
}

void TRenderCPU::TexImage2D(unsigned int target, int level, int internalformat, int width,
                            int height, int border, unsigned int format, unsigned int type,
                            const void* pixels) {
  if (!MayChangeTexture(*this, target)) {
    return;
  }
  TDataSurface* const surface = m_Engine->BoundTexture();
  if (surface == nullptr || width < 1 || height < 1 || level != 0 || border != 0 ||
      static_cast<unsigned int>(internalformat) != format) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  TDataSurface old; // what was there lives on while it is copied from
  const auto from = reinterpret_cast<std::uintptr_t>(pixels);
  const TBlock block = BlockOf(*surface);
  if (from >= block.Begin && from < block.End) {
    old.Swap(*surface);
  }
  const bool made = surface->Create(width, height, DataFormatFromGL(format), DataTypeFromGL(type),
                                    GetFormatComponents(format), nullptr);
  if (made && pixels != nullptr) {
    std::memcpy(surface->Data, pixels, surface->DataSize);
  }
  m_Engine->UpdateSamplersOf(surface);
  m_Engine->NoteTextureChange();
  if (!made) {
    _SetError(GL_INVALID_OPERATION);
  }
}

void TRenderCPU::TexSubImage2D(unsigned int target, int level, int xoffset, int yoffset, int width,
                               int height, unsigned int format, unsigned int type,
                               const void* pixels) {
  if (!MayChangeTexture(*this, target)) {
    return;
  }
  const TDataSurface* const surface = m_Engine->BoundTexture();
  if (surface == nullptr || xoffset < 0 || xoffset >= surface->Width || yoffset < 0 ||
      yoffset >= surface->Height || width < 1 || height < 1 || level != 0 ||
      DataTypeFromGL(type) != surface->Type || DataFormatFromGL(format) != surface->Format ||
      GetFormatComponents(format) != surface->Channels) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  DATASURFACE from;
  DATASURFACE to;
  if (pixels != nullptr &&
      ds::Set(&from, width, height, surface->Format, surface->Type, surface->Channels, pixels) &&
      ds::GetSubSurface(*surface, xoffset, yoffset, width, height, &to)) {
    ds::Copy(from, to);
  }
}

bool TRenderCPU::MoveTexImage2D(unsigned int target, int level, TDataSurface* surface) {
  static constexpr const char* kWhere =
      "@virtual bool Zx3D::TRenderCPU::MoveTexImage2D(GLenum, int, TDataSurface *): ";
  if (target != GL_TEXTURE_2D) {
    throw TZxMessage(std::string(kWhere) + "Unexpected Type %1%") << target;
  }
  if (level != 0) {
    throw TZxMessage(std::string(kWhere) + "Unexpected Level %1%") << level;
  }
  TDataSurface* const bound = m_Engine->BoundTexture();
  if (bound == nullptr || surface == nullptr) {
    _SetError(GL_INVALID_OPERATION);
    return false;
  }
  bound->Swap(*surface);
  m_Engine->UpdateSamplersOf(bound);
  m_Engine->UpdateSamplersOf(surface);
  m_Engine->NoteTextureChange();
  return true;
}

void TRenderCPU::CopyTexImage2D(unsigned int, int, unsigned int, int, int, int, int, int) {
  throw TZxMessage(std::string("@") +
                   "virtual void Zx3D::TRenderCPU::CopyTexImage2D(GLenum, GLint, GLenum, GLint, "
                   "GLint, GLsizei, GLsizei, GLint)" +
                   ": " + "TODO");
}

// --- Parameters

static void SetTexParameter(TRenderEngine& engine, unsigned int target, unsigned int pname, int v) {
  TRenderCPU& gl = engine.gl;
  if (!MayChangeTexture(gl, target)) {
    return;
  }
  const auto value = static_cast<unsigned int>(v);
  TRenderCPU::TTexSampler* const sampler = engine.ActiveSampler();
  switch (pname) {
  case GL_TEXTURE_WRAP_S:
  case GL_TEXTURE_WRAP_T:
    if (sampler != nullptr) {
      sampler->SetWrap(value, value);
    }
    break;
  case GL_TEXTURE_MIN_FILTER:
  case GL_TEXTURE_MAG_FILTER:
    if (sampler != nullptr && !sampler->SetFilter(value, value)) {
      gl._SetError(GL_INVALID_ENUM);
    }
    break;
  default:
    gl._SetError(GL_INVALID_ENUM);
    break;
  }
}

void TRenderCPU::TexParameteri(unsigned int target, unsigned int pname, int v) {
  SetTexParameter(*m_Engine, target, pname, v);
}

void TRenderCPU::TexParameterf(unsigned int target, unsigned int pname, float v) {
  SetTexParameter(*m_Engine, target, pname, TruncI32(v));
}

void TRenderCPU::TexParameterfv(unsigned int target, unsigned int pname, const float* v) {
  if (pname != GL_TEXTURE_BORDER_COLOR) {
    SetTexParameter(*m_Engine, target, pname, TruncI32(v[0]));
    return;
  }
  if (MayChangeTexture(*this, target)) {
    if (TTexSampler* const sampler = m_Engine->ActiveSampler()) {
      sampler->SetBorderColor(v);
    }
  }
}

} // namespace Zx3D
