#pragma once

#include <cstdlib>
#include <memory>
#include <vector>

#include <ZxBaseKit/TZxMessage.h>

#include "RenderInput.h"

// Bytes as drawing calls. What stays the caller's duty is kept here: memory handed to a call
// reaches as far as the call reads or writes, arrays do not dangle, surfaces outlive their binding.

namespace fuzz_render {

/// Two contexts, and what their bindings need to outlive.
class TCalls {
public:
  TCalls(const std::uint8_t* data, std::size_t size) : m_In(data, size) {
    for (TRenderCPU*& r : m_Contexts) {
      r = new TRenderCPU;
    }
    m_Contexts[0]->Create(1 + static_cast<int>(m_In.Below(33)),
                          1 + static_cast<int>(m_In.Below(33)), nullptr);
    m_Contexts[1]->Create(7, 5, m_In.Below(4) != 0 ? m_Contexts[0] : nullptr);
  }
  ~TCalls() {
    for (TRenderCPU* r : m_Contexts) {
      r->Release();
    }
  }
  TCalls(const TCalls&) = delete;
  TCalls& operator=(const TCalls&) = delete;

  bool IsDone() const { return m_In.IsEmpty(); }

  /// One call of either context.
  void Step() {
    const unsigned int kind = m_In.Byte();
    m_R = m_Contexts[kind >= 192];
    try {
      switch (kind % 32) {
      case 0:
        Life();
        break;
      case 1:
        Targets();
        break;
      case 2:
      case 3:
      case 4:
        Switches();
        break;
      case 5:
      case 6:
        Matrices();
        break;
      case 7:
      case 8:
        Lights();
        break;
      case 9:
      case 10:
      case 11:
        Textures();
        break;
      case 12:
      case 13:
        Arrays();
        break;
      case 14:
      case 15:
        Buffers();
        break;
      case 16:
      case 17:
        Draw();
        break;
      case 18:
      case 19:
        Pixels();
        break;
      case 20:
        Queries();
        break;
      case 21:
        Programs();
        break;
      case 22:
      case 23:
        SharedMemory();
        break;
      default:
        Vertices();
        break;
      }
    } catch (const TZxMessage&) {
    }
  }

private:
  TDataSurface* NewSurface() {
    static constexpr DATA_TYPE kTypes[8] = {DATA_TYPE(3),  DATA_TYPE(3),  DATA_TYPE(3),
                                            DATA_TYPE(10), DATA_TYPE(11), DATA_TYPE(5),
                                            DATA_TYPE(1),  DATA_TYPE(9)};
    m_Kept.push_back(std::make_unique<TDataSurface>());
    const bool fits = m_In.Below(4) != 0;
    const int width = fits ? m_R->m_Width : static_cast<int>(m_In.Below(40));
    const int height = fits ? m_R->m_Height : static_cast<int>(m_In.Below(40));
    const unsigned int kind = m_In.Byte();
    m_Kept.back()->Create(width, height, DATA_FORMAT(kind % 3 != 0 ? 6 : kind % 16),
                          kTypes[kind % 8], 1 + static_cast<int>(kind / 8 % 5));
    return m_Kept.back().get();
  }
  const void* Memory() { return kMemory.data() + m_In.Below(64); }

  void Life() {
    switch (m_In.Below(10)) {
    case 0:
      m_R->Destroy();
      break;
    case 1:
      m_R->Create(1 + static_cast<int>(m_In.Below(33)), m_In.Int() % 34, nullptr);
      break;
    case 2:
      m_R->Create(4, 9, m_Contexts[m_In.Below(2)]);
      break;
    case 3:
    case 4:
    case 5:
      m_R->SetSize(1 + static_cast<int>(m_In.Below(33)), m_In.Int() % 34);
      break;
    case 6:
      m_R->_Share(m_Contexts[m_In.Below(2)]);
      break;
    case 7:
      m_R->MakeCurrent();
      break;
    case 8:
      m_R->DoneCurrent();
      break;
    default:
      m_R->_ClearTextures();
      break;
    }
  }

  void Targets() {
    switch (m_In.Below(8)) {
    case 0:
      m_R->BindColorSurface(NewSurface());
      break;
    case 1:
      m_R->BindColorSurface(nullptr);
      break;
    case 2:
      m_R->SetDrawBuffer(NewSurface());
      break;
    case 3:
      m_R->SetDrawBuffer(nullptr);
      break;
    case 4:
      m_R->Clear(m_In.Raw<unsigned int>());
      break;
    case 5:
      m_R->ClearColor(m_In.Float(), m_In.Float(), m_In.Float(), m_In.Float());
      break;
    case 6:
      m_R->ClearDepth(m_In.Number());
      break;
    default:
      m_R->Viewport(0, m_In.Int(), m_R->m_Width, m_In.Int());
      break;
    }
  }

  /// Targets and textures that are the same, overlap or change places.
  void SharedMemory() {
    if (m_R->m_FrameBuffer == nullptr) {
      return;
    }
    TDataSurface* const own[3] = {m_R->m_FrameBuffer->Color, m_R->m_FrameBuffer->Depth,
                                  m_R->m_FrameBuffer->Stencil};
    TDataSurface* const surface = own[m_In.Below(3)];
    switch (m_In.Below(8)) {
    case 0:
      m_R->BindColorSurface(surface);
      break;
    case 1:
      m_R->SetDrawBuffer(surface);
      break;
    case 2:
    case 3:
      m_R->m_TexUnits[m_In.Below(2)].Sampler.SetSurface(surface);
      break;
    case 4:
    case 5:
      m_R->MoveTexImage2D(3553, 0, surface);
      break;
    case 6:
      Exchange(surface, NewSurface());
      break;
    default:
      Overlap(own[0], surface);
      break;
    }
  }

  /// As a surface's owner may: who samples it is told.
  void Exchange(TDataSurface* surface, TDataSurface* other) {
    surface->Swap(*other);
    for (TRenderCPU::TTexUnit& unit : m_R->m_TexUnits) {
      if (unit.Sampler.m_Surface == surface || unit.Sampler.m_Surface == other) {
        unit.Sampler.SetSurface(unit.Sampler.m_Surface);
      }
    }
  }

  /// Makes both surfaces views of one block, one pixel apart. Without the last row they have the
  /// slack behind their pixels that samplers need.
  void Overlap(TDataSurface* one, TDataSurface* other) {
    m_Kept.push_back(std::make_unique<TDataSurface>());
    TDataSurface& block = *m_Kept.back();
    block.Create(m_R->m_Width, m_R->m_Height + 1, DATA_FORMAT(6), DATA_TYPE(3), 4);
    int shift = 0;
    for (TDataSurface* surface : {one, other}) {
      m_Kept.push_back(std::make_unique<TDataSurface>());
      const bool depth = surface == m_R->m_FrameBuffer->Depth;
      m_Kept.back()->Create(m_R->m_Width, m_R->m_Height, DATA_FORMAT(depth ? 13 : 6),
                            DATA_TYPE(depth ? 10 : 3), depth ? 1 : 4, block.Data + shift);
      Exchange(surface, m_Kept.back().get());
      shift += 4;
    }
  }

  void Switches() {
    switch (m_In.Below(20)) {
    case 0:
    case 1:
    case 2:
    case 3:
      m_R->Enable(m_In.Enum());
      break;
    case 4:
      m_R->Disable(m_In.Enum());
      break;
    case 5:
      m_R->PushAttrib(m_In.Raw<unsigned int>());
      break;
    case 6:
      m_R->PopAttrib();
      break;
    case 7:
      m_R->BlendFunc(m_In.Enum(), m_In.Enum());
      break;
    case 8:
      m_R->BlendFunc(770, 771);
      break;
    case 9:
      m_R->DepthFunc(m_In.Enum());
      break;
    case 10:
      m_R->StencilFunc(m_In.Enum(), m_In.Int(), m_In.Raw<unsigned int>());
      break;
    case 11:
      m_R->StencilOp(7680, m_In.Enum(), m_In.Enum());
      break;
    case 12:
      m_R->StencilMask(m_In.Byte());
      break;
    case 13:
      m_R->ColorMask(m_In.Bool(), m_In.Bool(), m_In.Bool(), m_In.Bool());
      break;
    case 14:
      m_R->DepthMask(m_In.Bool());
      break;
    case 15:
      m_R->CullFace(m_In.Enum());
      break;
    case 16:
      m_R->FrontFace(m_In.Enum());
      break;
    case 17:
      m_R->Hint(3152, m_In.Enum());
      break;
    case 18:
      m_R->PolygonOffset(m_In.Float(), m_In.Float());
      break;
    default:
      m_R->ShadeModel(m_In.Enum());
      break;
    }
  }

  void Vertices() {
    const double v[4] = {m_In.Number(), m_In.Number(), m_In.Number(), 1};
    switch (m_In.Below(16)) {
    case 0:
    case 1:
      m_R->Begin(m_In.Below(9));
      break;
    case 2:
      m_R->Begin(m_In.Enum());
      break;
    case 3:
      m_R->End();
      break;
    case 4:
      m_R->Color4d(v[0], v[1], v[2], m_In.Number());
      break;
    case 5:
      m_R->Normal3dv(v);
      break;
    case 6:
      m_R->TexCoord4dv(v);
      break;
    case 7:
      m_R->VertexAttrib(m_In.Int(), V4(v));
      break;
    case 8:
      m_R->Vertex4dv(v);
      break;
    case 9:
      m_R->Vertex2i(m_In.Int(), m_In.Int());
      break;
    default:
      m_R->Vertex3dv(v);
      break;
    }
  }

  void Matrices() {
    switch (m_In.Below(10)) {
    case 0:
      m_R->MatrixMode(m_In.Enum());
      break;
    case 1:
      m_R->MatrixMode(5888 + m_In.Below(3));
      break;
    case 2:
      m_R->PushMatrix();
      break;
    case 3:
      m_R->PopMatrix();
      break;
    case 4:
      m_R->LoadIdentity();
      break;
    case 5:
      m_R->MultMatrixd(static_cast<const double*>(static_cast<const void*>(kMemory.data())));
      break;
    case 6:
      m_R->Frustum(m_In.Number(), m_In.Number(), m_In.Number(), 1, 1, m_In.Number());
      break;
    case 7:
      m_R->Ortho(m_In.Number(), 1, m_In.Number(), 1, m_In.Number(), m_In.Number());
      break;
    case 8:
      m_R->Rotated(m_In.Number() * 90, m_In.Number(), m_In.Number(), m_In.Number());
      break;
    default:
      m_R->Translated(m_In.Number(), m_In.Number(), m_In.Number());
      break;
    }
  }

  void Lights() {
    const float v[4] = {m_In.Float(), m_In.Float(), m_In.Float(), m_In.Float()};
    switch (m_In.Below(8)) {
    case 0:
      m_R->Lightfv(16384 + m_In.Below(9), 4608 + m_In.Below(10), v);
      break;
    case 1:
      m_R->Lightf(16384 + m_In.Below(9), m_In.Enum(), v[0]);
      break;
    case 2:
      m_R->EnableLight(m_In.Below(9), m_In.Bool());
      break;
    case 3:
      m_R->EnableLighting(m_In.Bool());
      break;
    case 4:
      m_R->LightModelfv(m_In.Enum(), v);
      break;
    case 5:
      m_R->LightModeli(2898, m_In.Bool());
      break;
    case 6:
      m_R->Materialfv(1028 + m_In.Below(5), m_In.Enum(), v);
      break;
    default:
      m_R->ColorMaterial(m_In.Enum(), m_In.Enum());
      break;
    }
  }

  void Textures() {
    unsigned int ids[8] = {m_In.Below(6), m_In.Below(6), m_In.Below(6), m_In.Raw<unsigned int>()};
    switch (m_In.Below(18)) {
    case 0:
      m_R->GenTextures(m_In.Int() % 6, ids);
      break;
    case 1:
      m_R->DeleteTextures(m_In.Int() % 5, ids);
      break;
    case 2:
    case 3:
    case 4:
      m_R->BindTexture(3553, ids[0]);
      break;
    case 5:
      m_R->BindTexture(m_In.Enum(), ids[3]);
      break;
    case 6:
    case 7:
    case 8:
      Image();
      break;
    case 9:
      SubImage();
      break;
    case 10:
      m_R->MoveTexImage2D(3553, 0, NewSurface());
      break;
    case 11:
      if (TDataSurface* s = NewSurface()) {
        m_R->AttachTexture(s);
        m_Kept.back().release(); // the table's now
      }
      break;
    case 12:
      if (TDataSurface* s = m_R->DetachTexture(ids[0])) {
        m_Kept.emplace_back(s); // samplers go on reading it
      }
      break;
    case 13:
      m_R->TexParameteri(3553, m_In.Enum(), static_cast<int>(m_In.Enum()));
      break;
    case 14:
      m_R->TexFilter2D(9728 + ids[0] % 2, 9728 + ids[0] % 2);
      break;
    case 15:
      m_R->TexWrap2D(m_In.Enum(), m_In.Enum());
      break;
    case 16:
      m_R->ActiveTexture(m_In.Bool() ? 33984 : m_In.Enum());
      break;
    default:
      m_R->TexEnvi(8960, 8704, static_cast<int>(m_In.Enum()));
      break;
    }
  }

  /// Formats that are stored, among others that are not.
  unsigned int PixelFormat() { return m_In.Bool() ? 6407 + m_In.Below(4) : m_In.Enum(); }
  unsigned int PixelType() { return m_In.Bool() ? 5121 : m_In.Enum(); }

  void Image() {
    // At most 32 bytes a texel: 31 by 31 stay inside the memory.
    const unsigned int format = PixelFormat();
    const int width = m_In.Int() % 32, height = m_In.Int() % 32;
    m_R->TexImage2D(3553, m_In.Below(8) == 0, static_cast<int>(format), width, height, 0, format,
                    PixelType(), m_In.Below(4) == 0 ? nullptr : kMemory.data());
  }
  void SubImage() {
    const unsigned int format = PixelFormat();
    const int x = m_In.Int(), y = m_In.Int(), width = m_In.Int() % 32, height = m_In.Int() % 32;
    m_R->TexSubImage2D(3553, 0, x, y, width, height, format, PixelType(), kMemory.data());
  }

  void Arrays() {
    const int size = m_In.Int() % 6, stride = m_In.Int() % 64;
    const unsigned int type = m_In.Below(4) == 0 ? m_In.Enum() : m_In.Bool() ? 5126 : 5130;
    const void* at = m_R->m_BufferBindings[0] != 0 ? OffsetOf(m_In.Below(64)) : Memory();
    unsigned int ids[4] = {m_In.Below(5), m_In.Below(5), m_In.Below(5)};
    switch (m_In.Below(14)) {
    case 0:
    case 1:
      m_R->VertexPointer(size, type, stride, at);
      break;
    case 2:
      m_R->ColorPointer(size, type, stride, at);
      break;
    case 3:
      m_R->NormalPointer(type, stride, at);
      break;
    case 4:
      m_R->TexCoordPointer(size, type, stride, at);
      break;
    case 5:
      m_R->VertexAttribPointer(m_In.Below(9), size, type, m_In.Bool(), stride, at);
      break;
    case 6:
      m_R->EnableVertexAttribArray(m_In.Below(9));
      break;
    case 7:
    case 8:
      m_R->EnableClientState(32884 + m_In.Below(5));
      break;
    case 9:
      m_R->PushClientAttrib(0);
      break;
    case 10:
      m_R->PopClientAttrib();
      break;
    case 11:
      m_R->GenVertexArrays(m_In.Int() % 4, ids);
      break;
    case 12:
      m_R->BindVertexArray(ids[0]);
      break;
    default:
      m_R->DeleteVertexArrays(m_In.Int() % 4, ids);
      break;
    }
  }

  void Buffers() {
    unsigned int ids[4] = {m_In.Below(5), m_In.Below(5), m_In.Below(5)};
    const unsigned int target = m_In.Below(4) == 0 ? m_In.Enum() : 34962 + m_In.Below(2);
    switch (m_In.Below(12)) {
    case 0:
      m_R->GenBuffers(m_In.Int() % 4, ids);
      break;
    case 1:
      m_R->DeleteBuffers(m_In.Int() % 4, ids);
      break;
    case 2:
    case 3:
      m_R->BindBuffer(target, ids[0]);
      break;
    case 4:
      m_R->BindBufferBase(target, m_In.Below(2), ids[0]);
      break;
    case 5:
    case 6:
      m_R->BufferData(target, m_In.Int() % 2048, m_In.Bool() ? kMemory.data() : nullptr, 1);
      break;
    case 7:
      m_R->BufferSubData(target, m_In.Int(), m_In.Int() % 2048, kMemory.data());
      break;
    case 8:
      m_R->NamedBufferData(ids[3 - m_In.Below(4)], m_In.Int() % 2048, kMemory.data(), 1);
      break;
    case 9:
      m_R->NamedBufferSubData(ids[0], m_In.Raw<int>(), m_In.Int() % 2048, kMemory.data());
      break;
    case 10:
      m_R->MapBuffer(target, 35000);
      break;
    default:
      m_R->UnmapNamedBuffer(ids[0]);
      break;
    }
  }

  void Draw() {
    const unsigned int mode = m_In.Below(9);
    const int count = m_In.Int() % 48;
    if (m_In.Bool()) {
      const int first = static_cast<int>(m_In.Below(16));
      DropDangling(first + 48);
      m_R->DrawArrays(mode, first, count);
      return;
    }
    const unsigned int type = m_In.Below(8) == 0 ? m_In.Enum() : 5121;
    const std::size_t width = type == 5121 ? 1 : type == 5123 ? 2 : 4;
    const std::uint8_t* indices = kMemory.data();
    std::size_t size = kMemorySize, offset = m_In.Below(16) * width;
    const unsigned int id = m_R->m_BufferBindings[1];
    if (id != 0) {
      if (id > m_R->m_Buffers.size() || m_R->m_Buffers[id - 1] == nullptr) {
        return m_R->DrawElements(mode, count, type, nullptr); // reads nothing
      }
      indices = m_R->m_Buffers[id - 1]->Data.data();
      size = m_R->m_Buffers[id - 1]->Data.size();
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
    DropDangling(last);
    m_R->DrawElements(mode, count, type, id != 0 ? OffsetOf(offset) : indices + offset);
  }

  static const void* OffsetOf(std::size_t offset) { return reinterpret_cast<const void*>(offset); }

  /// Switches off the arrays that do not have elements 0 to `last` in memory that is there.
  void DropDangling(long last) {
    for (TRenderCPU::TVertexAttribPointer* p : {&m_R->m_VertexPointer, &m_R->m_NormalPointer,
                                                &m_R->m_ColorPointer, &m_R->m_TexCoordPointer}) {
      p->Enabled = p->Enabled && Reaches(*p, last);
    }
    for (int i = 0; m_R->m_VertexArray != nullptr && i < 8; ++i) {
      TRenderCPU::TVertexAttribPointer& p = m_R->m_VertexArray->Attribs[i];
      p.Enabled = p.Enabled && Reaches(p, last);
    }
  }
  bool Reaches(const TRenderCPU::TVertexAttribPointer& p, long last) const {
    const auto inside = [&](const std::uint8_t* block, std::size_t size) {
      const auto at =
          reinterpret_cast<std::intptr_t>(p.Data) - reinterpret_cast<std::intptr_t>(block);
      const std::intptr_t end = at + std::intptr_t{p.EffectiveStride} * last, bytes = 32;
      return at >= 0 && end >= 0 &&
             (at > end ? at : end) + bytes <= static_cast<std::intptr_t>(size);
    };
    if (inside(kMemory.data(), kMemorySize)) {
      return true;
    }
    for (const TRenderCPU::TBuffer* b : m_R->m_Buffers) {
      if (b != nullptr && inside(b->Data.data(), b->Data.size())) {
        return true;
      }
    }
    return false;
  }

  void Pixels() {
    static std::uint8_t s_Room[1 << 18]; // what a read may write
    const int x = m_In.Int(), y = m_In.Int(), width = m_In.Int(), height = m_In.Int();
    switch (m_In.Below(6)) {
    case 0:
      m_R->PixelStorei(3312 + m_In.Below(24), m_In.Int());
      break;
    case 1:
      m_R->WindowPos2i(x, y);
      break;
    case 2:
    case 3:
      if (Span(m_R->m_PixelUnpack, width, height, m_R->m_WindowPos.x, m_R->m_WindowPos.y, 4) <
          static_cast<double>(kMemorySize / 2)) {
        m_R->DrawPixels(width, height, PixelFormat(), PixelType(),
                        kMemory.data() + kMemorySize / 2);
      }
      break;
    default:
      if (Span(m_R->m_PixelPack, width, height, x, y, 512) <
          static_cast<double>(sizeof(s_Room) / 2)) {
        m_R->ReadPixels(x, y, width, height, 6408, 5121, s_Room + sizeof(s_Room) / 2);
      }
      break;
    }
  }
  /// A bound of how far from the given address a transfer reaches in the caller's memory; in
  /// floating point, where nothing overflows.
  static double Span(const TRenderCPU::TPixelStore& store, int width, int height, int x, int y,
                     int surfaceStep) {
    const auto abs = [](double v) { return v < 0 ? -v : v; };
    const double step = 8 + abs(store.Alignment);
    const double row = step * (abs(store.RowLength) + abs(width)) + 40.0 * 40 * surfaceStep;
    return row * (abs(height) + abs(y) + abs(store.SkipRows) + 1) +
           (step + surfaceStep) * (abs(width) + abs(x) + abs(store.SkipRows) + 1);
  }

  void Queries() {
    int ints[16];
    float floats[16];
    double doubles[16];
    const unsigned int name = m_In.Enum();
    switch (m_In.Below(8)) {
    case 0:
      m_R->GetIntegerv(name, m_In.Bool() ? ints : nullptr);
      break;
    case 1:
      m_R->GetFloatv(name, floats);
      break;
    case 2:
      m_R->GetDoublev(name, doubles);
      break;
    case 3:
      floats[0] = 45;
      m_R->GetLight(16384 + m_In.Below(9), name, floats);
      break;
    case 4:
      m_R->GetVertexAttrib(m_In.Below(9), name, ints);
      break;
    case 5:
      m_R->GetBufferParameter(34962, name, ints);
      break;
    case 6:
      m_R->IsEnabled(name);
      break;
    default:
      m_R->GetError();
      break;
    }
  }

  void Programs() {
    switch (m_In.Below(4)) {
    case 0:
      m_R->SetProgram(nullptr);
      break;
    case 1:
    case 2: {
      auto* vertex = new TWildVertexShader;
      vertex->Count = m_In.Int();
      vertex->Slot = m_In.Int() % 1000;
      auto* fragment = new TWildFragmentShader(m_In.Bool());
      auto* program = new Zx3D::TProgramCPU;
      program->SetShaderV(m_In.Bool() ? vertex : nullptr);
      program->SetShaderF(m_In.Bool() ? fragment : nullptr);
      m_R->SetProgram(program);
      program->Release();
      vertex->Release();
      fragment->Release();
      break;
    }
    default:
      m_R->Uniform(m_In.Int(), MAT4<double>{});
      break;
    }
  }

  static vec_t_<double, 4> V4(const double* v) { return {v[0], v[1], v[2], v[3]}; }

  TInput m_In;
  TRenderCPU* m_R = nullptr; ///< the context of the present call
  TRenderCPU* m_Contexts[2] = {};
  std::vector<std::unique_ptr<TDataSurface>> m_Kept;
};

} // namespace fuzz_render
