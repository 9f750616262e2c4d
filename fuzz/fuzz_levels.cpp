// Bytes as drawing calls, made once with the reference walker and once with kernels, mostly those
// of the processor's best instruction set: what callers can see afterwards, and what they were told
// on the way, has to be the same to the byte.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <utility>
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

void AppendBytes(const void* values, std::size_t size, TBytes* to) {
  const auto* const bytes = static_cast<const std::uint8_t*>(values);
  to->insert(to->end(), bytes, bytes + size);
}

// Sign and payload of a NaN are the processor's choice, and no other float is changed.
template <class T> void AppendFloats(const void* values, std::size_t size, TBytes* to) {
  const std::size_t begin = to->size();
  AppendBytes(values, size / sizeof(T) * sizeof(T), to);
  for (std::uint8_t* at = to->data() + begin; at != to->data() + to->size(); at += sizeof(T)) {
    T value;
    std::memcpy(&value, at, sizeof value);
    if (std::isnan(value)) {
      value = std::numeric_limits<T>::quiet_NaN();
      std::memcpy(at, &value, sizeof value);
    }
  }
}

template <class T> void AppendRecord(const T& record, TBytes* to) {
  AppendFloats<double>(&record, sizeof record, to);
}

template <class T> void AppendPlain(const T& value, TBytes* to) {
  AppendBytes(&value, sizeof value, to);
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
    AppendBytes(s->Data, s->DataSize, to);
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

void AppendTextures(const TRenderCPU& r, TBytes* to) {
  if (r.m_Textures != nullptr) {
    for (const TDataSurface* s : r.m_Textures->Surfaces) {
      AppendSurface(s, to);
    }
  }
}

// The level in force, changed only where it has to be, since finding out what the processor has
// takes longer than a call.
const char* s_Level = nullptr;

void SetLevel(const char* level) {
  if (s_Level == nullptr || std::strcmp(s_Level, level) != 0) {
    Require(Zx3D::LimitSpanLevel(level));
    s_Level = level;
  }
}

TBytes RunAt(const char* level, const std::uint8_t* data, std::size_t size) {
  SetLevel(level);
  fuzz_render::TWorld world(data, size, true);
  while (!world.In.IsEmpty()) {
    fuzz_render::Step(world);
  }
  TBytes left = std::move(world.Told);
  AppendContext(*world.Contexts[0], &left);
  AppendTextures(*world.Contexts[0], &left);
  if (world.Contexts[1] != nullptr) {
    AppendContext(*world.Contexts[1], &left);
    if (world.Contexts[1]->m_Textures != world.Contexts[0]->m_Textures) {
      AppendTextures(*world.Contexts[1], &left);
    }
  }
  for (const auto& surface : world.Kept) {
    AppendSurface(surface.get(), &left);
  }
  return left;
}

constexpr char kReference[] = "reference";

// Mostly the best, and else one of those that the processor has, too.
const char* LevelOf(unsigned int byte) {
  static const std::vector<const char*> s_Levels = [] {
    std::vector<const char*> found;
    for (const char* level : {"SSE2", "SSSE3", "AVX2"}) {
      if (Zx3D::LimitSpanLevel(level)) {
        found.push_back(level);
      }
    }
    Require(Zx3D::LimitSpanLevel(nullptr));
    found.push_back(Zx3D::GetSpanLevel());
    return found;
  }();
  return byte >= 132 && byte < 231 ? s_Levels[byte % s_Levels.size()] : s_Levels.back();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > fuzz_render::kMostBytes) {
    return 0;
  }
  const char* const level = LevelOf(size != 0 ? data[0] : 0);
  const bool referenceFirst = s_Level != nullptr && std::strcmp(s_Level, kReference) == 0;
  const TBytes first = RunAt(referenceFirst ? kReference : level, data, size);
  const TBytes second = RunAt(referenceFirst ? level : kReference, data, size);
  Require(first == second);
  return 0;
}
