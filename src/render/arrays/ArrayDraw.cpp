#include <ZxCore3D/render/arrays/ArrayDraw.h>

#include <algorithm>
#include <cstring>
#include <typeinfo>

#include <ZxCore3D/render/GLEnums.h>

#include <ZxCore3D/render/arrays/VertexCache.h>
#include <ZxCore3D/render/common/Engine.h>
#include <ZxCore3D/render/common/Limits.h>
#include <ZxCore3D/render/common/QuietFloats.h>
#include <ZxCore3D/render/common/SlotTable.h>
#include <ZxCore3D/render/common/TypeSizes.h>
#include <ZxCore3D/render/kernels/SpanJob.h>
#include <ZxCore3D/render/stages/SlotMath.h>
#include <ZxCore3D/render/state/CurrentObjects.h>

namespace Zx3D {

// --- Arrays that are drawn from

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
  for (std::size_t i = 0; i < kAttribs && m_VertexArray != nullptr; ++i) {
    add(m_VertexArray->Attribs[i], &m_CurAttrib[i]);
  }
  return count;
}

// --- Replay

namespace {

constexpr unsigned long kMaxAttrValues = 4 + kAttribs; // the classic arrays and the generic ones

bool IsIndexType(unsigned int type) {
  return type == GL_UNSIGNED_BYTE || type == GL_UNSIGNED_SHORT || type == GL_UNSIGNED_INT;
}

} // namespace

// Whether skipping the virtual calls is unobservable: the context's own class, and the standard
// vertex shader, which writes nothing but its record and the colour material.
bool TRenderEngine::MayReplayDirectly() const {
  return GetSpanKernels() != nullptr && typeid(gl) == typeid(TRenderCPU) &&
         gl.m_VertexShader == gl.m_StdVertexShader && gl.m_VertexShader != nullptr &&
         gl.m_FragmentShader == gl.m_StdFragmentShader &&
         gl.m_VertexHandler != &TRenderCPU::UnknownVertex;
}

// The upper half of a new draw's tags.
std::uint64_t TRenderEngine::NextDraw() {
  TVertexCache& cache = *VertexCache;
  if (++cache.Draw == 0) { // the count wrapped: no old tag may match a new one
    std::memset(cache.Tags, 0, sizeof cache.Tags);
    cache.Draw = 1;
  }
  return std::uint64_t{cache.Draw} << 32;
}

// Fills a record with an element's vertex, shaded once within the draw that the tags name.
// Returns whether the element became the current one.
bool TRenderEngine::LoadShared(const TArrayDraw& draw, std::uint64_t tags, unsigned long element,
                               VAR_DATA* record) {
  TVertexCache& cache = *VertexCache;
  const std::size_t place = element % TVertexCache::kSize;
  const std::uint64_t tag = tags | static_cast<std::uint32_t>(element);
  const bool fetched = cache.Tags[place] != tag;
  if (fetched) {
    draw.Fetch(&gl, element);
    ShadeVertex(&gl, &cache.Vertices[place], draw.Lighting);
    cache.Tags[place] = tag;
  }
  CopySlots(record->Slots, cache.Vertices[place].Slots, WrittenSlots(gl));
  return fetched;
}

void TRenderEngine::ReplayDirectly(const TArrayDraw& draw, const TElements& elements, int count,
                                   int done) {
  const std::uint64_t tags = NextDraw();
  bool fetched = true;
  for (int i = done; i < count; ++i) {
    VAR_DATA& vertex = gl.m_VarCur[gl.m_Pending];
    if (elements.IsIndexed()) {
      fetched = LoadShared(draw, tags, elements.At(i), &vertex);
    } else {
      draw.Fetch(&gl, elements.At(i));
      ShadeVertex(&gl, &vertex, draw.Lighting);
    }
    ++gl.m_VertexIndex;
    ++gl.m_Pending;
    (this->*Assemble)();
  }
  if (!fetched) {
    draw.Fetch(&gl, elements.At(count - 1)); // the current values are those of the last element
    ApplyColorMaterial(&gl);
  }
}

// Replays elements through the virtual operations.
void TRenderEngine::Replay(unsigned int mode, int count, const TElements& elements) {
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
    const auto kind = mode >= GL_TRIANGLES ? TPrimitiveKind::Triangle : TPrimitiveKind::Line;
    job.Primitive.RecordColor = false; // that of the last pixel can wait for the end
    DrawJob = mode != GL_POINTS && SetUpDraw(kind, &job) == TCondition::None ? &job : nullptr;
    TLightingTerms lighting;
    SetUpLighting(gl, &lighting);
    const bool steady = !gl.m_ColorMaterial; // otherwise each vertex has a material of its own
    const TArrayDraw draw = {values, valueCount, steady ? &lighting : nullptr};
    ReplayDirectly(draw, elements, count, ReplayBatches(draw, elements, count));
  } else {
    for (int i = 0; i < count; ++i) {
      const unsigned long element = elements.At(i);
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
  m_Engine->Replay(mode, count, {nullptr, 0, first});
}

void TRenderCPU::DrawElements(unsigned int mode, int count, unsigned int type,
                              const void* indices) {
  if (count < 1) {
    return;
  }
  if (!IsIndexType(type) || (m_BufferBindings[1] == 0 && indices == nullptr)) {
    _SetError(GL_INVALID_VALUE);
    return;
  }
  const std::size_t size = SizeOfType(type);
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
  m_Engine->Replay(mode, count, {base, size, 0});
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
