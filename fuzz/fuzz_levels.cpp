// Bytes as drawing calls, made once with the reference walker and once with the best kernels of the
// processor: what callers can see afterwards, and what they were told on the way, has to be the
// same to the byte.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <vector>

#include <ZxCore3D/render/kernels/SpanJob.h>

#include "render/Calls.h"

namespace {

using Zx3D::TRenderCPU;
using TBytes = std::vector<std::uint8_t>;

void Require(bool holds) {
  if (!holds) {
    __builtin_trap();
  }
}

// Sign and payload of a NaN are the processor's choice, and no other float is changed.
template <class T> void AppendFloats(const void* values, std::size_t size, TBytes* to) {
  const auto* const bytes = static_cast<const std::uint8_t*>(values);
  for (std::size_t at = 0; at + sizeof(T) <= size; at += sizeof(T)) {
    T value;
    std::memcpy(&value, bytes + at, sizeof value);
    if (std::isnan(value)) {
      value = std::numeric_limits<T>::quiet_NaN();
    }
    const auto* const from = reinterpret_cast<const std::uint8_t*>(&value);
    to->insert(to->end(), from, from + sizeof value);
  }
}

template <class T> void AppendRecord(const T& record, TBytes* to) {
  AppendFloats<double>(&record, sizeof record, to);
}

template <class T> void AppendPlain(const T& value, TBytes* to) {
  const auto* const from = reinterpret_cast<const std::uint8_t*>(&value);
  to->insert(to->end(), from, from + sizeof value);
}

void AppendSurface(const TDataSurface* s, TBytes* to) {
  if (s == nullptr || s->Data == nullptr) {
    return;
  }
  if (s->Type == DATA_TYPE_DOUBLE) {
    AppendFloats<double>(s->Data, s->DataSize, to);
  } else if (s->Type == DATA_TYPE_FLOAT) {
    AppendFloats<float>(s->Data, s->DataSize, to);
  } else {
    to->insert(to->end(), s->Data, s->Data + s->DataSize);
  }
}

void AppendContext(const TRenderCPU& r, TBytes* to) {
  for (const TDataSurface* s : {r.m_ColorSurface, r.m_DepthSurface, r.m_StencilSurface}) {
    AppendSurface(s, to);
  }
  if (r.m_FrameBuffer != nullptr) { // other surfaces may be bound in their place
    for (const TDataSurface* s :
         {r.m_FrameBuffer->Color, r.m_FrameBuffer->Depth, r.m_FrameBuffer->Stencil}) {
      AppendSurface(s, to);
    }
  }
  if (r.m_Textures != nullptr) {
    for (const TDataSurface* s : r.m_Textures->Surfaces) {
      AppendSurface(s, to);
    }
  }
  AppendRecord(r.m_Fragment.Color, to);
  AppendFloats<float>(&r.m_Fragment.Depth, sizeof r.m_Fragment.Depth, to);
  AppendPlain(r.m_Fragment.X, to);
  AppendPlain(r.m_Fragment.Y, to);
  AppendPlain(r.m_Fragment.FrontFacing, to);
  if (!r.m_InBeginEnd) { // within, it is worked out when something reads it
    AppendRecord(r.m_VarFragment, to);
  }
  AppendRecord(r.m_VarCur, to);
  AppendRecord(r.m_VarSaved, to);
  AppendRecord(r.m_CurVertex, to);
  AppendRecord(r.m_CurNormal, to);
  AppendRecord(r.m_CurColor, to);
  AppendRecord(r.m_CurTexCoord, to);
  AppendRecord(r.m_CurAttrib, to);
  AppendPlain(r.m_VertexIndex, to);
  AppendPlain(r.m_StripIndex, to);
  AppendPlain(r.m_Pending, to);
  AppendPlain(r.m_Error, to);
}

struct TLeft {
  std::vector<TBytes> Contexts;
  TBytes Told;
};

TLeft RunAt(const char* level, const std::uint8_t* data, std::size_t size) {
  Require(Zx3D::LimitSpanLevel(level));
  fuzz_render::TWorld world(data, size, true);
  while (!world.In.IsEmpty()) {
    fuzz_render::Step(world);
  }
  TLeft left;
  for (const TRenderCPU* r : world.Contexts) {
    left.Contexts.emplace_back();
    AppendContext(*r, &left.Contexts.back());
  }
  for (const auto& surface : world.Kept) {
    AppendSurface(surface.get(), &left.Told);
  }
  left.Told.insert(left.Told.end(), world.Told.begin(), world.Told.end());
  return left;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) {
    return 0; // long inputs find nothing that short ones don't
  }
  const TLeft reference = RunAt("reference", data, size);
  const TLeft best = RunAt(nullptr, data, size);
  Require(reference.Contexts == best.Contexts);
  Require(reference.Told == best.Told);
  return 0;
}
