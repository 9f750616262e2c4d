#pragma once

#include <cstdint>
#include <cstring>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/stages/VertexLighting.h>

namespace Zx3D {

/// What all vertices of an array draw share: the enabled arrays and the lighting.
struct TArrayDraw {
  const TRenderCPU::TAttrValue* Values;
  unsigned long ValueCount;
  const TLightingTerms* Lighting; ///< null: not the same for all vertices

  /// Makes an element the current one.
  void Fetch(TRenderCPU* gl, unsigned long element) const {
    for (unsigned long k = 0; k < ValueCount; ++k) {
      Values[k].Pointer->GetValue(Values[k].Pointer, element, Values[k].Value);
    }
    gl->m_CurVertex = gl->m_CurAttrib[0];
  }
};

/// The elements of a draw call in their order: read from indices, or counted up from the first.
struct TElements {
  const unsigned char* Indices = nullptr;
  std::size_t IndexSize = 0; ///< 1, 2 or 4 bytes; 0: there are no indices
  long First = 0;

  bool IsIndexed() const { return IndexSize != 0; }

  /// Calls take(element) for each of `count` vertices, in order; the i-th is number vertexAt(i).
  template <class TVertexAt, class TTake>
  void ForEach(int count, const TVertexAt& vertexAt, const TTake& take) const {
    const auto all = [&](const auto& elementAt) {
      for (int i = 0; i < count; ++i) {
        take(elementAt(vertexAt(i)));
      }
    };
    switch (IndexSize) {
    case 1:
      return all([this](int i) -> unsigned long { return Indices[i]; });
    case 2:
      return all([this](int i) { return IndexAt<std::uint16_t>(i); });
    case 4:
      return all([this](int i) { return IndexAt<std::uint32_t>(i); });
    default:
      return all([this](int i) { return static_cast<unsigned long>(First + i); });
    }
  }

  unsigned long At(int vertex) const {
    unsigned long element = 0;
    ForEach(
        1, [vertex](int) { return vertex; }, [&element](unsigned long e) { element = e; });
    return element;
  }

private:
  template <class TIndex> unsigned long IndexAt(long i) const {
    TIndex index;
    std::memcpy(&index, Indices + i * static_cast<long>(sizeof index), sizeof index);
    return index;
  }
};

} // namespace Zx3D
