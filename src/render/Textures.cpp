#include <ZxCore3D/render/TRenderCPU.h>

#include <cstring>
#include <string>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Surface.h>

#include <ZxCore3D/render/GLEnums.h>

#include "Numbers.h"

namespace Zx3D {

// --- Units

// Null for a unit that does not exist.
TRenderCPU::TTexUnit* TRenderCPU::_ActiveTexUnit() {
  return static_cast<unsigned int>(m_ActiveTexture) < 8 ? &m_TexUnits[m_ActiveTexture] : nullptr;
}

void TRenderCPU::ActiveTexture(unsigned int texture) {
  m_ActiveTexture = static_cast<std::int32_t>(texture - GL_TEXTURE0);
}

void TRenderCPU::_EnableTexture2D(int unit, bool on) {
  if (static_cast<unsigned int>(unit) < 8) {
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
  if (TTexUnit* const unit = _ActiveTexUnit()) {
    unit->TexEnvMode = mode;
  }
}

void TRenderCPU::TexFilter2D(unsigned int min, unsigned int mag) {
  if (TTexUnit* const unit = _ActiveTexUnit()) {
    unit->Sampler.SetFilter(min, mag);
  }
}

void TRenderCPU::TexWrap2D(unsigned int s, unsigned int t) {
  if (TTexUnit* const unit = _ActiveTexUnit()) {
    unit->Sampler.SetWrap(s, t);
  }
}

// A surface changed under the samplers that hold it: they choose anew.
void TRenderCPU::_UpdateSamplersOf(const TDataSurface* surface) {
  for (TTexUnit& unit : m_TexUnits) {
    if (unit.Sampler.m_Surface == surface && surface != nullptr) {
      unit.Sampler.SetSurface(unit.Sampler.m_Surface);
    }
  }
}

// Another context of the table may have emptied, resized or exchanged what is bound here.
void TRenderCPU::_RefreshSharedTextures() {
  if (m_Textures == nullptr || m_Textures->RefCount.load(std::memory_order_acquire) < 2) {
    return;
  }
  for (TTexUnit& unit : m_TexUnits) {
    unit.Sampler.SetSurface(unit.Sampler.m_Surface);
  }
}

// --- The table

void TRenderCPU::_GenTextures(int n, bool create, unsigned int* ids) {
  if (n < 1) {
    return;
  }
  if (m_Textures == nullptr) {
    m_Textures = new TTextureTable;
  }
  std::vector<TDataSurface*>& surfaces = m_Textures->Surfaces;
  auto wanted = static_cast<std::size_t>(n);
  for (std::size_t id = 1; wanted > 0; ++id) {
    if (id >= surfaces.size()) {
      surfaces.resize(id + wanted, nullptr);
    }
    if (surfaces[id] != nullptr) {
      continue;
    }
    if (create) {
      surfaces[id] = new TDataSurface;
    }
    *ids++ = static_cast<unsigned int>(id);
    --wanted;
  }
}

void TRenderCPU::GenTextures(int n, unsigned int* ids) { _GenTextures(n, true, ids); }

static TDataSurface** EntryOf(TRenderCPU::TTextureTable* table, unsigned int id) {
  return table != nullptr && id < table->Surfaces.size() ? &table->Surfaces[id] : nullptr;
}

void TRenderCPU::DeleteTextures(int n, const unsigned int* ids) {
  for (int i = 0; i < n; ++i) {
    TDataSurface** const entry = EntryOf(m_Textures, ids[i]);
    if (ids[i] == 0 || entry == nullptr || *entry == nullptr) {
      continue;
    }
    _UnbindTexture(*entry);
    if (m_Textures->RefCount.load(std::memory_order_acquire) > 1) {
      // Another context may have it bound: its next `Begin` finds the surface empty.
      m_Textures->Retired.push_back(*entry);
      (*entry)->Destroy();
    } else {
      delete *entry;
    }
    *entry = nullptr;
  }
  _PurgeRetiredTextures();
}

// Once no other context uses the table, emptied surfaces are of no use to anybody.
void TRenderCPU::_PurgeRetiredTextures() {
  if (m_Textures == nullptr || m_Textures->RefCount.load(std::memory_order_acquire) > 1) {
    return;
  }
  for (const TDataSurface* surface : m_Textures->Retired) {
    _UnbindTexture(surface);
    delete surface;
  }
  m_Textures->Retired.clear();
}

void TRenderCPU::_UnbindTexture(const TDataSurface* surface) {
  for (TTexUnit& unit : m_TexUnits) {
    if (surface != nullptr && unit.Sampler.m_Surface == surface) {
      unit.Sampler.SetSurface(nullptr);
    }
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
  return id;
}

TDataSurface* TRenderCPU::DetachTexture(unsigned int id) {
  TDataSurface** const entry = EntryOf(m_Textures, id);
  if (entry == nullptr) {
    return nullptr;
  }
  TDataSurface* const surface = *entry;
  *entry = nullptr;
  return surface;
}

void TRenderCPU::_ClearTextures() {
  if (m_Textures == nullptr) {
    return;
  }
  TTextureTable* const table = m_Textures;
  if (table->RefCount.fetch_sub(1, std::memory_order_acq_rel) == 1) {
    for (const std::vector<TDataSurface*>* list : {&table->Surfaces, &table->Retired}) {
      for (const TDataSurface* surface : *list) {
        _UnbindTexture(surface);
        delete surface;
      }
    }
    delete table;
  } else {
    // The table belongs to others from here on and may not even be read: nothing of it stays bound.
    for (TTexUnit& unit : m_TexUnits) {
      unit.Sampler.SetSurface(nullptr);
    }
  }
  m_Textures = nullptr;
}

// --- Binding and images

static void RequireTexture2D(unsigned int target) {
  if (target != GL_TEXTURE_2D) {
    throw TZxMessage("ERROR: TRenderCPU::BindTexture dont support type %1%") << target;
  }
}

void TRenderCPU::BindTexture(unsigned int target, unsigned int id) {
  RequireTexture2D(target);
  TDataSurface** const entry = EntryOf(m_Textures, id);
  TTexUnit* const unit = _ActiveTexUnit();
  if (entry != nullptr && unit != nullptr) {
    unit->Sampler.SetSurface(*entry);
  }
}

// The surface bound to the active unit, as what it is; null if there is none.
TDataSurface* TRenderCPU::_BoundTexture() {
  TTexUnit* const unit = _ActiveTexUnit();
  return unit != nullptr ? static_cast<TDataSurface*>(unit->Sampler.m_Surface) : nullptr;
}

void TRenderCPU::TexImage2D(unsigned int target, int level, int internalformat, int width,
                            int height, int border, unsigned int format, unsigned int type,
                            const void* pixels) {
  RequireTexture2D(target);
  if (m_InBeginEnd) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  TDataSurface* const surface = _BoundTexture();
  if (surface == nullptr || width < 1 || height < 1 || level != 0 || border != 0 ||
      static_cast<unsigned int>(internalformat) != format) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  const bool made = surface->Create(width, height, DataFormatFromGL(format), DataTypeFromGL(type),
                                    GetFormatComponents(format), nullptr);
  if (made && pixels != nullptr) {
    std::memcpy(surface->Data, pixels, surface->DataSize);
  }
  _UpdateSamplersOf(surface);
  if (!made) {
    _SetError(GL_INVALID_OPERATION);
  }
}

void TRenderCPU::TexSubImage2D(unsigned int target, int level, int xoffset, int yoffset, int width,
                               int height, unsigned int format, unsigned int type,
                               const void* pixels) {
  RequireTexture2D(target);
  if (m_InBeginEnd) {
    _SetError(GL_INVALID_OPERATION);
    return;
  }
  const TDataSurface* const surface = _BoundTexture();
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
  TDataSurface* const bound = _BoundTexture();
  if (bound == nullptr) {
    _SetError(GL_INVALID_OPERATION);
    return false;
  }
  if (surface != nullptr) {
    bound->Swap(*surface);
    _UpdateSamplersOf(bound);
    _UpdateSamplersOf(surface);
  }
  return surface != nullptr;
}

void TRenderCPU::CopyTexImage2D(unsigned int, int, unsigned int, int, int, int, int, int) {
  throw TZxMessage(std::string("@") +
                   "virtual void Zx3D::TRenderCPU::CopyTexImage2D(GLenum, GLint, GLenum, GLint, "
                   "GLint, GLsizei, GLsizei, GLint)" +
                   ": " + "TODO");
}

// --- Parameters

// False, with an error reported, between `Begin` and `End`.
bool TRenderCPU::_MayChangeTexture(unsigned int target) {
  RequireTexture2D(target);
  if (m_InBeginEnd) {
    _SetError(GL_INVALID_OPERATION);
    return false;
  }
  return true;
}

void TRenderCPU::TexParameteri(unsigned int target, unsigned int pname, int v) {
  if (!_MayChangeTexture(target)) {
    return;
  }
  const auto value = static_cast<unsigned int>(v);
  TTexUnit* const unit = _ActiveTexUnit();
  switch (pname) {
  case GL_TEXTURE_WRAP_S:
  case GL_TEXTURE_WRAP_T:
    if (unit != nullptr) {
      unit->Sampler.SetWrap(value, value);
    }
    break;
  case GL_TEXTURE_MIN_FILTER:
  case GL_TEXTURE_MAG_FILTER:
    if (unit != nullptr && !unit->Sampler.SetFilter(value, value)) {
      _SetError(GL_INVALID_ENUM);
    }
    break;
  default:
    _SetError(GL_INVALID_ENUM);
    break;
  }
}

void TRenderCPU::TexParameterf(unsigned int target, unsigned int pname, float v) {
  TexParameteri(target, pname, TruncI32(v));
}

void TRenderCPU::TexParameterfv(unsigned int target, unsigned int pname, const float* v) {
  if (pname != GL_TEXTURE_BORDER_COLOR) {
    TexParameteri(target, pname, TruncI32(v[0]));
    return;
  }
  if (_MayChangeTexture(target)) {
    if (TTexUnit* const unit = _ActiveTexUnit()) {
      unit->Sampler.SetBorderColor(v);
    }
  }
}

} // namespace Zx3D
