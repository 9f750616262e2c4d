#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/arrays/VertexFetch.h>
#include <ZxCore3D/render/common/ErrorCodes.h>
#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/common/Pairs.h>
#include <ZxCore3D/render/common/TypeSizes.h>
#include <ZxCore3D/render/state/CurrentObjects.h>
#include <ZxCore3D/render/state/Names.h>

namespace Zx3D {

// --- Fetching

namespace {

using TPointer = TRenderCPU::TVertexAttribPointer;
using TVec4 = vec_t_<double, 4>;

template <class TFrom, int Size> void Fetch(const TPointer* p, unsigned long index, TVec4* out) {
  const TVec4 v = FetchAt<TFrom, Size>(ElementAt(*p, index));
  StoreVector(out, v.x, v.y, v.z, v.w);
}

} // namespace

// By family (bytes, normalised bytes, floats, doubles), then by size.
constinit const std::array<TRenderCPU::TAttrGetVal, 16> TRenderCPU::s_AttrGetVals = {
    ZX_BY_FAMILY(Fetch)};

// --- Pointers

void TRenderCPU::_VertexAttribPointer(TVertexAttribPointer* p, int size, unsigned int type,
                                      unsigned char normalized, int stride, const void* pointer) {
  if (size < 1 || size > 4) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  int family = 0; // in `s_AttrGetVals`
  switch (type) {
  case GL_DOUBLE:
    family = 3;
    break;
  case GL_FLOAT:
    family = 2;
    break;
  case GL_UNSIGNED_BYTE:
    family = normalized != 0 ? 1 : 0;
    break;
  default:
    _SetError(GL_INVALID_VALUE);
    return;
  }
  p->Size = size;
  p->Type = type;
  p->Normalized = normalized;
  p->Stride = stride;
  p->EffectiveStride = stride != 0 ? stride : size * static_cast<int>(SizeOfType(type));
  p->Pointer = pointer;
  p->Data = static_cast<const unsigned char*>(pointer);
  if (m_BufferBindings[0] != 0) {
    // An offset into a buffer that has no contents is no address: the array has no data.
    const TBuffer* const buffer = BufferNamed(*this, m_BufferBindings[0]);
    p->Data = buffer == nullptr || buffer->Data.empty()
                  ? nullptr
                  : reinterpret_cast<const unsigned char*>(
                        reinterpret_cast<std::uintptr_t>(buffer->Data.data()) +
                        reinterpret_cast<std::uintptr_t>(pointer));
  }
  p->GetValue = s_AttrGetVals[static_cast<std::size_t>(family * 4 + size - 1)];
}

// The classic arrays normalise all integers.
static unsigned char IsIntegerType(unsigned int type) {
  return type >= GL_BYTE && type <= GL_UNSIGNED_INT ? 1 : 0;
}

void TRenderCPU::VertexPointer(int size, unsigned int type, int stride, const void* pointer) {
  _VertexAttribPointer(&m_VertexPointer, size, type, IsIntegerType(type), stride, pointer);
}

void TRenderCPU::NormalPointer(unsigned int type, int stride, const void* pointer) {
  _VertexAttribPointer(&m_NormalPointer, 3, type, IsIntegerType(type), stride, pointer);
}

void TRenderCPU::ColorPointer(int size, unsigned int type, int stride, const void* pointer) {
  _VertexAttribPointer(&m_ColorPointer, size, type, IsIntegerType(type), stride, pointer);
}

void TRenderCPU::TexCoordPointer(int size, unsigned int type, int stride, const void* pointer) {
  _VertexAttribPointer(&m_TexCoordPointer, size, type, IsIntegerType(type), stride, pointer);
}

// The generic array of an index; null, with an error reported, above 7. Without a table, after
// `Destroy`, it is null as well.
static TRenderCPU::TVertexAttribPointer* GenericArray(TRenderCPU& gl, unsigned int index) {
  if (index >= kAttribs) {
    gl._SetError(kIndexError);
    return nullptr;
  }
  return gl.m_VertexArray != nullptr ? &gl.m_VertexArray->Attribs[index] : nullptr;
}

void TRenderCPU::VertexAttribPointer(unsigned int index, int size, unsigned int type,
                                     unsigned char normalized, int stride, const void* pointer) {
  if (TVertexAttribPointer* const p = GenericArray(*this, index)) {
    _VertexAttribPointer(p, size, type, normalized, stride, pointer);
  }
}

void TRenderCPU::EnableVertexAttribArray(unsigned int index) {
  if (TVertexAttribPointer* const p = GenericArray(*this, index)) {
    p->Enabled = true;
  }
}

void TRenderCPU::DisableVertexAttribArray(unsigned int index) {
  if (TVertexAttribPointer* const p = GenericArray(*this, index)) {
    p->Enabled = false;
  }
}

void TRenderCPU::GetVertexAttrib(unsigned int index, unsigned int pname, int* out) {
  if (index < kAttribs && out == nullptr) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  const TVertexAttribPointer* const p = GenericArray(*this, index);
  if (p == nullptr) {
    return;
  }
  switch (pname) {
  case GL_VERTEX_ATTRIB_ARRAY_ENABLED:
    *out = p->Enabled ? 1 : 0;
    break;
  case GL_VERTEX_ATTRIB_ARRAY_SIZE:
    *out = p->Size;
    break;
  case GL_VERTEX_ATTRIB_ARRAY_STRIDE:
    *out = p->Stride;
    break;
  case GL_VERTEX_ATTRIB_ARRAY_TYPE:
    *out = static_cast<int>(p->Type);
    break;
  case GL_VERTEX_ATTRIB_ARRAY_NORMALIZED:
    *out = p->Normalized;
    break;
  case GL_VERTEX_ATTRIB_ARRAY_BUFFER_BINDING:
  case GL_VERTEX_ATTRIB_ARRAY_INTEGER:
  case GL_VERTEX_ATTRIB_ARRAY_DIVISOR:
    *out = 0;
    break;
  default:
    _SetError(GL_INVALID_ENUM);
    break;
  }
}

// --- Client state

TRenderCPU::TVertexAttribPointer* ClassicArray(TRenderCPU& gl, unsigned int array) {
  switch (array) {
  case GL_VERTEX_ARRAY:
    return &gl.m_VertexPointer;
  case GL_NORMAL_ARRAY:
    return &gl.m_NormalPointer;
  case GL_COLOR_ARRAY:
    return &gl.m_ColorPointer;
  case GL_TEXTURE_COORD_ARRAY:
    return &gl.m_TexCoordPointer;
  default:
    return nullptr;
  }
}

void TRenderCPU::_EnableClientState(unsigned int array, bool on) {
  TVertexAttribPointer* const p = ClassicArray(*this, array);
  if (p == nullptr) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  p->Enabled = on;
}

void TRenderCPU::EnableClientState(unsigned int array) { _EnableClientState(array, true); }

void TRenderCPU::DisableClientState(unsigned int array) { _EnableClientState(array, false); }

void TRenderCPU::PushClientAttrib(unsigned int) {
  if (m_VertexArray != nullptr) {
    m_ClientAttribStack.push_back(*m_VertexArray);
  }
}

void TRenderCPU::PopClientAttrib() {
  if (m_ClientAttribStack.empty()) {
    _SetError(GL_STACK_UNDERFLOW);
    return;
  }
  if (m_VertexArray != nullptr) {
    *m_VertexArray = m_ClientAttribStack.back();
    m_ClientAttribStack.pop_back();
  }
}

// --- Vertex array objects

void TRenderCPU::GenVertexArrays(int n, unsigned int* ids) { GiveNames(&m_VertexArrays, n, ids); }

void TRenderCPU::BindVertexArray(unsigned int id) {
  m_VertexArrayBinding = id;
  m_VertexArray = m_DefaultVertexArray;
  if (id != 0 && id <= m_VertexArrays.size() && m_VertexArrays[id - 1] != nullptr) {
    m_VertexArray = m_VertexArrays[id - 1];
  }
}

void TRenderCPU::DeleteVertexArrays(int n, unsigned int* ids) {
  for (int i = 0; i < n; ++i) {
    const unsigned int id = ids[i];
    if (id != 0 && id == m_VertexArrayBinding) {
      BindVertexArray(0);
    }
    if (id != 0 && id <= m_VertexArrays.size()) {
      delete m_VertexArrays[id - 1];
      m_VertexArrays[id - 1] = nullptr;
    }
  }
}

void TRenderCPU::_ClearVertexArrays() {
  for (const TVertexArray* array : m_VertexArrays) {
    delete array;
  }
  m_VertexArrays.clear();
}

} // namespace Zx3D
