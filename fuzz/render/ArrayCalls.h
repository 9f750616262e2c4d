#pragma once

#include <cstdlib>

#include "World.h"

// Bytes as calls for vertices, arrays, buffers, and for drawing from them.

namespace fuzz_render {

inline void Vertices(TWorld& w) {
  const auto n = w.In.Numbers<3>();
  const double v[4] = {n[0], n[1], n[2], 1};
  switch (w.In.Below(16)) {
  case 0:
  case 1:
    w.R->Begin(w.In.Below(9));
    break;
  case 2:
    w.R->Begin(w.In.Enum());
    break;
  case 3:
    w.R->End();
    break;
  case 4:
    w.R->Color4d(v[0], v[1], v[2], w.In.Number());
    break;
  case 5:
    w.R->Normal3dv(v);
    break;
  case 6:
    w.R->TexCoord4dv(v);
    break;
  case 7:
    w.R->VertexAttrib(w.In.Int(), vec_t_<double, 4>{v[0], v[1], v[2], v[3]});
    break;
  case 8:
    w.R->Vertex4dv(v);
    break;
  case 9: {
    const auto i = w.In.Ints<2>();
    w.R->Vertex2i(i[0], i[1]);
    break;
  }
  default:
    w.R->Vertex3dv(v);
    break;
  }
}

inline const void* OffsetOf(std::size_t offset) { return reinterpret_cast<const void*>(offset); }

inline void Arrays(TWorld& w) {
  const int size = w.In.Int() % 6;
  const int stride = w.In.Int() % 64;
  const unsigned int type = w.In.Below(4) == 0 ? w.In.Enum() : w.In.Bool() ? 5126 : 5130;
  const void* at = w.R->m_BufferBindings[0] != 0 ? OffsetOf(w.In.Below(64)) : w.Memory();
  unsigned int ids[4] = {w.In.Below(5), w.In.Below(5), w.In.Below(5)};
  switch (w.In.Below(14)) {
  case 0:
  case 1:
    w.R->VertexPointer(size, type, stride, at);
    break;
  case 2:
    w.R->ColorPointer(size, type, stride, at);
    break;
  case 3:
    w.R->NormalPointer(type, stride, at);
    break;
  case 4:
    w.R->TexCoordPointer(size, type, stride, at);
    break;
  case 5: {
    const unsigned int index = w.In.Below(9);
    w.R->VertexAttribPointer(index, size, type, w.In.Bool(), stride, at);
    break;
  }
  case 6:
    w.R->EnableVertexAttribArray(w.In.Below(9));
    break;
  case 7:
  case 8:
    w.R->EnableClientState(32884 + w.In.Below(5));
    break;
  case 9:
    w.R->PushClientAttrib(0);
    break;
  case 10:
    w.R->PopClientAttrib();
    break;
  case 11:
    w.R->GenVertexArrays(w.In.Int() % 4, ids);
    break;
  case 12:
    w.R->BindVertexArray(ids[0]);
    break;
  default:
    w.R->DeleteVertexArrays(w.In.Int() % 4, ids);
    break;
  }
}

inline void Buffers(TWorld& w) {
  unsigned int ids[4] = {w.In.Below(5), w.In.Below(5), w.In.Below(5)};
  const unsigned int target = w.In.Below(4) == 0 ? w.In.Enum() : 34962 + w.In.Below(2);
  switch (w.In.Below(12)) {
  case 0:
    w.R->GenBuffers(w.In.Int() % 4, ids);
    break;
  case 1:
    w.R->DeleteBuffers(w.In.Int() % 4, ids);
    break;
  case 2:
  case 3:
    w.R->BindBuffer(target, ids[0]);
    break;
  case 4: {
    const unsigned int index = w.In.Below(2);
    w.R->BindBufferBase(target, index, ids[0]);
    break;
  }
  case 5:
  case 6: {
    const int size = w.In.Int() % 2048;
    w.R->BufferData(target, size, w.In.Bool() ? kMemory.data() : nullptr, 1);
    break;
  }
  case 7: {
    const auto i = w.In.Ints<2>();
    w.R->BufferSubData(target, i[0], i[1] % 2048, kMemory.data());
    break;
  }
  case 8: {
    const unsigned int id = ids[3 - w.In.Below(4)];
    w.R->NamedBufferData(id, w.In.Int() % 2048, kMemory.data(), 1);
    break;
  }
  case 9: {
    const int at = w.In.Raw<int>();
    w.R->NamedBufferSubData(ids[0], at, w.In.Int() % 2048, kMemory.data());
    break;
  }
  case 10:
    w.R->MapBuffer(target, 35000);
    break;
  default:
    w.R->UnmapNamedBuffer(ids[0]);
    break;
  }
}

inline bool Reaches(const TRenderCPU& r, const TRenderCPU::TVertexAttribPointer& p, long last) {
  const auto inside = [&](const std::uint8_t* block, std::size_t size) {
    const auto at =
        reinterpret_cast<std::intptr_t>(p.Data) - reinterpret_cast<std::intptr_t>(block);
    const std::intptr_t end = at + std::intptr_t{p.EffectiveStride} * last, bytes = 32;
    return at >= 0 && end >= 0 && (at > end ? at : end) + bytes <= static_cast<std::intptr_t>(size);
  };
  if (inside(kMemory.data(), kMemorySize)) {
    return true;
  }
  for (const TRenderCPU::TBuffer* b : r.m_Buffers) {
    if (b != nullptr && inside(b->Data.data(), b->Data.size())) {
      return true;
    }
  }
  return false;
}

/// Switches off the arrays that do not have elements 0 to `last` in memory that is there.
inline void DropDangling(TRenderCPU& r, long last) {
  for (TRenderCPU::TVertexAttribPointer* p :
       {&r.m_VertexPointer, &r.m_NormalPointer, &r.m_ColorPointer, &r.m_TexCoordPointer}) {
    p->Enabled = p->Enabled && Reaches(r, *p, last);
  }
  for (int i = 0; r.m_VertexArray != nullptr && i < 8; ++i) {
    TRenderCPU::TVertexAttribPointer& p = r.m_VertexArray->Attribs[i];
    p.Enabled = p.Enabled && Reaches(r, p, last);
  }
}

inline void Draw(TWorld& w) {
  const unsigned int mode = w.In.Below(9);
  const int count = w.In.Int() % 48;
  if (w.In.Bool()) {
    const int first = static_cast<int>(w.In.Below(16));
    DropDangling(*w.R, first + 48);
    w.R->DrawArrays(mode, first, count);
    return;
  }
  const unsigned int type = w.In.Below(8) == 0 ? w.In.Enum() : 5121;
  const std::size_t width = type == 5121 ? 1 : type == 5123 ? 2 : 4;
  const std::uint8_t* indices = kMemory.data();
  std::size_t size = kMemorySize, offset = w.In.Below(16) * width;
  const unsigned int id = w.R->m_BufferBindings[1];
  if (id != 0) {
    if (id > w.R->m_Buffers.size() || w.R->m_Buffers[id - 1] == nullptr) {
      return w.R->DrawElements(mode, count, type, nullptr); // reads nothing
    }
    indices = w.R->m_Buffers[id - 1]->Data.data();
    size = w.R->m_Buffers[id - 1]->Data.size();
  }
  if (offset + 48 * width > size) {
    return;
  }
  long last = 0;
  for (std::size_t i = 0; i < 48; ++i) {
    std::uint32_t index = 0;
    std::memcpy(&index, indices + offset + i * width, width);
    last = index > static_cast<std::uint32_t>(last) ? static_cast<long>(index) : last;
  }
  DropDangling(*w.R, last);
  w.R->DrawElements(mode, count, type, id != 0 ? OffsetOf(offset) : indices + offset);
}

} // namespace fuzz_render
