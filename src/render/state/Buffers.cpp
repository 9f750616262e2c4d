#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <climits>
#include <cstring>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/state/CurrentObjects.h>
#include <ZxCore3D/render/state/Names.h>

namespace Zx3D {

// --- Names

void TRenderCPU::GenBuffers(int n, unsigned int* ids) { GiveNames(&m_Buffers, n, ids); }

void TRenderCPU::DeleteBuffers(int n, unsigned int* ids) {
  for (int i = 0; i < n; ++i) {
    const unsigned int id = ids[i];
    for (std::uint32_t& binding : m_BufferBindings) {
      if (binding == id) {
        binding = 0;
      }
    }
    if (id != 0 && id <= m_Buffers.size()) {
      delete m_Buffers[id - 1];
      m_Buffers[id - 1] = nullptr;
    }
  }
}

void TRenderCPU::_ClearBuffers() {
  for (const TBuffer* buffer : m_Buffers) {
    delete buffer;
  }
  m_Buffers.clear();
}

TRenderCPU::TBuffer* BufferNamed(TRenderCPU& gl, unsigned int id) {
  return id != 0 && id <= gl.m_Buffers.size() ? gl.m_Buffers[id - 1] : nullptr;
}

// --- Binding points

// The place of a target in `m_BufferBindings`; -1 for another target.
static int BindingIndex(unsigned int target) {
  switch (target) {
  case GL_ARRAY_BUFFER:
    return 0;
  case GL_ELEMENT_ARRAY_BUFFER:
    return 1;
  case GL_PIXEL_PACK_BUFFER:
    return 2;
  case GL_PIXEL_UNPACK_BUFFER:
    return 3;
  case GL_ATOMIC_COUNTER_BUFFER:
    return 4;
  case GL_SHADER_STORAGE_BUFFER:
    return 5;
  default:
    return -1;
  }
}

void TRenderCPU::BindBuffer(unsigned int target, unsigned int id) {
  const int index = BindingIndex(target);
  if (index < 0 || index > 3) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  m_BufferBindings[index] = id;
}

void TRenderCPU::BindBufferBase(unsigned int target, unsigned int index, unsigned int id) {
  if (index != 0) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  const int binding = BindingIndex(target);
  if (binding < 4) {
    _SetError(GL_INVALID_ENUM);
    return;
  }
  m_BufferBindings[binding] = id;
}

// The buffer bound to a target; null, with an error reported, for another target or without one.
static TRenderCPU::TBuffer* BufferOf(TRenderCPU& gl, unsigned int target) {
  const int index = BindingIndex(target);
  TRenderCPU::TBuffer* const buffer =
      index < 0 ? nullptr : BufferNamed(gl, gl.m_BufferBindings[index]);
  if (buffer == nullptr) {
    gl._SetError(GL_INVALID_OPERATION);
  }
  return buffer;
}

// --- Contents

static void SetBufferData(TRenderCPU& gl, TRenderCPU::TBuffer* buffer, long size, const void* data,
                          unsigned int usage) {
  if (size < 0) {
    gl._SetError(GL_INVALID_VALUE);
    return;
  }
  buffer->Data.resize(static_cast<std::size_t>(size));
  buffer->Usage = usage;
  if (data != nullptr && size > 0) {
    std::memmove(buffer->Data.data(), data, static_cast<std::size_t>(size));
  }
}

static void SetBufferSubData(TRenderCPU& gl, TRenderCPU::TBuffer* buffer, long offset, long size,
                             const void* data) {
  const long whole = static_cast<long>(buffer->Data.size());
  if (data == nullptr || offset < 0 || size < 0 || offset > whole || size > whole - offset) {
    gl._SetError(GL_INVALID_VALUE);
    return;
  }
  if (size > 0) {
    std::memmove(buffer->Data.data() + offset, data, static_cast<std::size_t>(size));
  }
}

void TRenderCPU::BufferData(unsigned int target, long size, const void* data, unsigned int usage) {
  if (TBuffer* const buffer = BufferOf(*this, target)) {
    SetBufferData(*this, buffer, size, data, usage);
  }
}

void TRenderCPU::NamedBufferData(unsigned int id, int size, const void* data, unsigned int usage) {
  if (TBuffer* const buffer = BufferNamed(*this, id)) {
    SetBufferData(*this, buffer, size, data, usage);
  }
}

void TRenderCPU::BufferSubData(unsigned int target, long offset, long size, const void* data) {
  if (TBuffer* const buffer = BufferOf(*this, target)) {
    SetBufferSubData(*this, buffer, offset, size, data);
  }
}

void TRenderCPU::NamedBufferSubData(unsigned int id, long offset, int size, const void* data) {
  if (TBuffer* const buffer = BufferNamed(*this, id)) {
    SetBufferSubData(*this, buffer, offset, size, data);
  }
}

// --- Mapping

static void* MapStorage(TRenderCPU::TBuffer* buffer, unsigned int access) {
  if (buffer == nullptr) {
    return nullptr;
  }
  buffer->Access = access;
  buffer->Mapped = true;
  return buffer->Data.data();
}

static bool UnmapStorage(TRenderCPU::TBuffer* buffer) {
  if (buffer == nullptr) {
    return false;
  }
  buffer->Mapped = false;
  return true;
}

void* TRenderCPU::MapBuffer(unsigned int target, unsigned int access) {
  return MapStorage(BufferOf(*this, target), access);
}

bool TRenderCPU::UnmapBuffer(unsigned int target) { return UnmapStorage(BufferOf(*this, target)); }

void* TRenderCPU::MapNamedBuffer(unsigned int id, unsigned int access) {
  return MapStorage(BufferNamed(*this, id), access);
}

bool TRenderCPU::UnmapNamedBuffer(unsigned int id) { return UnmapStorage(BufferNamed(*this, id)); }

void TRenderCPU::GetBufferParameter(unsigned int target, unsigned int pname, int* out) {
  const TBuffer* const buffer = BufferOf(*this, target);
  if (buffer == nullptr) {
    return;
  }
  switch (pname) {
  case GL_BUFFER_SIZE:
    *out = static_cast<int>(std::min<std::size_t>(buffer->Data.size(), INT_MAX));
    break;
  case GL_BUFFER_USAGE:
    *out = static_cast<int>(buffer->Usage);
    break;
  case GL_BUFFER_ACCESS:
    *out = static_cast<int>(buffer->Access);
    break;
  case GL_BUFFER_MAPPED:
    *out = buffer->Mapped ? 1 : 0;
    break;
  default:
    _SetError(GL_INVALID_ENUM);
    break;
  }
}

} // namespace Zx3D
