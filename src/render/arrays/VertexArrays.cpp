#include <ZxCore3D/render/TRenderCPU.h>

#include <algorithm>
#include <cstring>
#include <typeinfo>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/arrays/ArrayDraw.h>
#include <ZxCore3D/render/arrays/VertexCache.h>
#include <ZxCore3D/render/arrays/VertexFetch.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/ErrorCodes.h>
#include <ZxCore3D/render/common/QuietFloats.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/state/CurrentObjects.h>

namespace Zx3D {

// --- Fetching

namespace {

using TPointer = TRenderCPU::TVertexAttribPointer;
using TVec4 = vec_t_<double, 4>;

template <class TFrom, int Size> void Fetch(const TPointer* p, unsigned long index, TVec4* out) {
  *out = FetchAt<TFrom, Size>(ElementAt(*p, index));
}

} // namespace

// By family (bytes, normalised bytes, floats, doubles), then by size.
constinit const std::array<TRenderCPU::TAttrGetVal, 16> TRenderCPU::s_AttrGetVals = {
    Fetch<TFromByte, 1>,           Fetch<TFromByte, 2>,           Fetch<TFromByte, 3>,
    Fetch<TFromByte, 4>,           Fetch<TFromNormalizedByte, 1>, Fetch<TFromNormalizedByte, 2>,
    Fetch<TFromNormalizedByte, 3>, Fetch<TFromNormalizedByte, 4>, Fetch<TFromFloat, 1>,
    Fetch<TFromFloat, 2>,          Fetch<TFromFloat, 3>,          Fetch<TFromFloat, 4>,
    Fetch<TFromDouble, 1>,         Fetch<TFromDouble, 2>,         Fetch<TFromDouble, 3>,
    Fetch<TFromDouble, 4>,
};

// --- Pointers

void TRenderCPU::_VertexAttribPointer(TVertexAttribPointer* p, int size, unsigned int type,
                                      unsigned char normalized, int stride, const void* pointer) {
  if (size < 1 || size > 4) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  int family = 0;
  int componentSize = 0;
  switch (type) {
  case GL_DOUBLE:
    family = 3;
    componentSize = 8;
    break;
  case GL_FLOAT:
    family = 2;
    componentSize = 4;
    break;
  case GL_UNSIGNED_BYTE:
    family = normalized != 0 ? 1 : 0;
    componentSize = 1;
    break;
  default:
    _SetError(GL_INVALID_VALUE);
    return;
  }
  p->Size = size;
  p->Type = type;
  p->Normalized = normalized;
  p->Stride = stride;
  p->EffectiveStride = stride != 0 ? stride : size * componentSize;
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
  if (index >= 8) {
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
  if (index < 8 && out == nullptr) {
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

void TRenderCPU::GenVertexArrays(int n, unsigned int* ids) {
  std::size_t id = 0;
  for (int i = 0; i < n; ++i, ++id) {
    while (id < m_VertexArrays.size() && m_VertexArrays[id] != nullptr) {
      ++id;
    }
    if (id == m_VertexArrays.size()) {
      m_VertexArrays.push_back(nullptr);
    }
    m_VertexArrays[id] = new TVertexArray{};
    ids[i] = static_cast<unsigned int>(id + 1);
  }
}

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

// --- Drawing

// Whether a fetching function is one of the table and not a caller's own.
static bool IsOwnFetch(TRenderCPU::TAttrGetVal getValue) {
  const auto& own = TRenderCPU::s_AttrGetVals;
  return std::find(own.begin(), own.end(), getValue) != own.end();
}

// Without data only a caller's own function has something to fetch.
static bool HasElements(const TRenderCPU::TVertexAttribPointer& p) {
  return p.Data != nullptr || (p.GetValue != nullptr && !IsOwnFetch(p.GetValue));
}

unsigned long TRenderCPU::_PrepareAttrValues(TAttrValue* out, unsigned long max) {
  unsigned long count = 0;
  const auto add = [out, max, &count](const TVertexAttribPointer& p, vec_t_<double, 4>* value) {
    if (p.Enabled && HasElements(p) && count < max) {
      out[count++] = {&p, value};
    }
  };
  add(m_VertexPointer, &m_CurAttrib[0]);
  add(m_NormalPointer, &m_CurNormal);
  add(m_ColorPointer, &m_CurColor);
  add(m_TexCoordPointer, &m_CurTexCoord);
  for (std::size_t i = 0; i < 8 && m_VertexArray != nullptr; ++i) {
    add(m_VertexArray->Attribs[i], &m_CurAttrib[i]);
  }
  return count;
}

namespace {

constexpr unsigned long kMaxAttrValues = 12;

// Bytes of an index; 0 for a type that indices don't have.
std::size_t IndexSize(unsigned int type) {
  switch (type) {
  case GL_UNSIGNED_BYTE:
    return 1;
  case GL_UNSIGNED_SHORT:
    return 2;
  case GL_UNSIGNED_INT:
    return 4;
  default:
    return 0;
  }
}

template <class TIndex> unsigned long ReadIndex(const unsigned char* base, long i) {
  TIndex index;
  std::memcpy(&index, base + static_cast<std::ptrdiff_t>(i) * static_cast<long>(sizeof index),
              sizeof index);
  return index;
}

} // namespace

// Whether skipping the virtual calls is unobservable: the context's own class, and the standard
// vertex shader, which then writes nothing but its record.
bool TRenderEngine::MayReplayDirectly() const {
  return GetSpanKernels() != nullptr && typeid(gl) == typeid(TRenderCPU) &&
         gl.m_VertexShader == gl.m_StdVertexShader && gl.m_VertexShader != nullptr &&
         gl.m_FragmentShader == gl.m_StdFragmentShader && !gl.m_ColorMaterial &&
         gl.m_VertexHandler != &TRenderCPU::UnknownVertex;
}

template <class TElementOf>
void TRenderEngine::ReplayDirectly(const TArrayDraw& draw, int count, int done, bool indexed,
                                   TElementOf elementOf) {
  TVertexCache& cache = *VertexCache;
  const std::uint64_t number = NextDraw();
  // What the shader writes; without a texture the last slot keeps what was there.
  const std::size_t written =
      static_cast<std::size_t>(gl.m_VarCount - (gl.m_TexUnits[0].TexEnabled ? 0 : 1)) *
      sizeof(vec_t_<double, 4>);
  bool fetched = true;
  for (int i = done; i < count; ++i) {
    const unsigned long element = elementOf(i);
    VAR_DATA& vertex = gl.m_VarCur[gl.m_Pending];
    const std::size_t place = element % TVertexCache::kSize;
    const std::uint64_t tag = number | static_cast<std::uint32_t>(element);
    fetched = !indexed || cache.Tags[place] != tag;
    if (!fetched) {
      std::memcpy(vertex.Slots, cache.Vertices[place].Slots, written);
    } else {
      draw.Fetch(&gl, element);
      ShadeVertex(&gl, &vertex, draw.Lighting);
      if (indexed) {
        std::memcpy(cache.Vertices[place].Slots, vertex.Slots, written);
        cache.Tags[place] = tag;
      }
    }
    ++gl.m_VertexIndex;
    ++gl.m_Pending;
    (this->*Assemble)();
  }
  if (!fetched) {
    draw.Fetch(&gl, elementOf(count - 1)); // the current values are those of the last element
  }
}

// Replays all triangles of an indexed draw but the last, which takes the reference path so that
// current values and scratch records end up as it leaves them. Returns the number of vertices
// consumed.
template <class TElementOf>
int TRenderEngine::ReplayTriangles(const TArrayDraw& arrays, int count, TElementOf elementOf) {
  const TCulling culling = {IsCulled(true), IsCulled(false), gl.m_FrontFaceCCW};
  const bool late = gl.m_Lighting && (culling.Front || culling.Back);
  const TIndexedDraw draw = {arrays, NextDraw(), late ? arrays.Positions(gl) : nullptr,
                             gl.m_VarCount - (gl.m_TexUnits[0].TexEnabled ? 0 : 1), culling};
  constexpr int kMost = 96;
  std::uint32_t elements[kMost];
  const int whole = 3 * (count / 3 - 1);
  int done = 0;
  while (done < whole) {
    const int next = std::min(whole - done, kMost);
    for (int i = 0; i < next; ++i) {
      elements[i] = static_cast<std::uint32_t>(elementOf(done + i));
    }
    ReplayIndexed(draw, elements, next / 3);
    done += next;
  }
  gl.m_VertexIndex += done;
  return done;
}

// Replays elements through the virtual operations; `elementOf` tells the element of the i-th
// vertex.
template <class TElementOf>
void TRenderEngine::Replay(unsigned int mode, int count, bool indexed, TElementOf elementOf) {
  TAttrValue values[kMaxAttrValues];
  const unsigned long valueCount = gl._PrepareAttrValues(values, kMaxAttrValues);
  if (valueCount == 0) {
    return;
  }
  gl.Begin(mode);
  // What a caller's own function does is not known: it is called for each vertex, and may change
  // any state.
  const bool ownFetches = std::all_of(values, values + valueCount, [](const TAttrValue& value) {
    return IsOwnFetch(value.Pointer->GetValue);
  });
  if (ownFetches && MayReplayDirectly()) {
    const TQuietFloats quiet(TQuietFloats::TScope::Draw);
    TSpanJob job;
    // A function that a caller installed may throw: the job must not outlive this call.
    const struct TJobScope {
      TSpanJob** Job;
      ~TJobScope() { *Job = nullptr; }
    } scope = {&DrawJob};
    DrawJob = mode >= GL_TRIANGLES && SetUpDraw(&job.Draw) == TCondition::None ? &job : nullptr;
    TLightingTerms lighting;
    SetUpLighting(gl, &lighting);
    const TArrayDraw draw = {values, valueCount, &lighting};
    const int done = !indexed               ? ReplayBatches(draw, elementOf(0), count)
                     : mode == GL_TRIANGLES ? ReplayTriangles(draw, count, elementOf)
                                            : 0;
    ReplayDirectly(draw, count, done, indexed, elementOf);
  } else {
    for (int i = 0; i < count; ++i) {
      const unsigned long element = elementOf(i);
      for (unsigned long k = 0; k < valueCount; ++k) {
        values[k].Pointer->GetValue(values[k].Pointer, element, values[k].Value);
      }
      gl.Vertex4dv(&gl.m_CurAttrib[0].x);
    }
  }
  gl.End();
}

void TRenderCPU::DrawArrays(unsigned int mode, int first, int count) {
  if (count < 1) {
    return;
  }
  m_Engine->Replay(mode, count, false, [first](int i) {
    return static_cast<unsigned long>(static_cast<long>(first) + i);
  });
}

void TRenderCPU::DrawElements(unsigned int mode, int count, unsigned int type,
                              const void* indices) {
  if (count < 1) {
    return;
  }
  const std::size_t size = IndexSize(type);
  if (size == 0 || (m_BufferBindings[1] == 0 && indices == nullptr)) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  const auto* base = static_cast<const unsigned char*>(indices);
  if (m_BufferBindings[1] != 0) {
    // A buffer that doesn't hold the indices is passed over, as arrays without data are.
    const TBuffer* const buffer = BufferNamed(*this, m_BufferBindings[1]);
    const auto offset = reinterpret_cast<std::uintptr_t>(indices);
    if (buffer == nullptr || offset > buffer->Data.size() ||
        (buffer->Data.size() - offset) / size < static_cast<std::size_t>(count)) {
      return;
    }
    base = buffer->Data.data() + offset;
  }
  switch (size) {
  case 1:
    m_Engine->Replay(mode, count, true, [base](int i) { return ReadIndex<std::uint8_t>(base, i); });
    break;
  case 2:
    m_Engine->Replay(mode, count, true,
                     [base](int i) { return ReadIndex<std::uint16_t>(base, i); });
    break;
  default:
    m_Engine->Replay(mode, count, true,
                     [base](int i) { return ReadIndex<std::uint32_t>(base, i); });
    break;
  }
}

// --- Outlines

void TRenderCPU::Polygon(const std::vector<vec_t_<double, 2>>& points,
                         const vec_t_<double, 3>& color, double, const vec_t_<double, 3>&, double) {
  TZxGL::Color(color);
  VertexPointer(2, GL_DOUBLE, 16, points.data());
  DrawArrays(GL_LINE_LOOP, 0, static_cast<int>(points.size()));
}

void TRenderCPU::Domain(const std::vector<std::vector<vec_t_<double, 2>>>& contours,
                        const vec_t_<double, 3>& color, double width, const vec_t_<double, 3>& fill,
                        double fillWidth) {
  for (const std::vector<vec_t_<double, 2>>& contour : contours) {
    Polygon(contour, color, width, fill, fillWidth);
  }
}

} // namespace Zx3D
