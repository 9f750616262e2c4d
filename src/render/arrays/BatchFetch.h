// Tested by: tests/render/VertexBatches.cpp (VertexBatches.*)

#pragma once

#include <cstddef>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/arrays/VertexBatch.h>
#include <ZxCore3D/render/arrays/VertexFetch.h>
#include <ZxCore3D/render/common/Pairs.h>

namespace Zx3D {

/// Vertices of one array: `Count` of them, from `First` on or those of a list.
struct TFetchList {
  const TRenderCPU::TVertexAttribPointer* Pointer;
  const unsigned long* Elements; ///< null: they follow each other
  unsigned long First;
  int Count;
};

/// Calls take(i, vector) for each vertex of a list.
template <class TFrom, int Size, class TTake>
inline void FetchEach(const TFetchList& list, const TTake& take) {
  if (list.Elements != nullptr) {
    for (int i = 0; i < list.Count; ++i) {
      take(i, FetchAt<TFrom, Size>(ElementAt(*list.Pointer, list.Elements[i])));
    }
    return;
  }
  const unsigned char* from = ElementAt(*list.Pointer, list.First);
  const std::ptrdiff_t stride = list.Pointer->EffectiveStride;
  for (int i = 0; i < list.Count; ++i, from += stride) {
    take(i, FetchAt<TFrom, Size>(from));
  }
}

using TFetchVectors = void (*)(const TFetchList& list, vec_t_<double, 4>* out);

template <class TFrom, int Size> void FetchVectors(const TFetchList& list, vec_t_<double, 4>* out) {
  FetchEach<TFrom, Size>(
      list, [out](int i, const vec_t_<double, 4>& v) { StoreVector(&out[i], v.x, v.y, v.z, v.w); });
}

using TFetchPositions = void (*)(const TFetchList& list, int corners, TVertexBatch* out);

/// The w of a position takes no part in its transformation.
template <class TFrom, int Size>
void FetchPositions(const TFetchList& list, int corners, TVertexBatch* out) {
  const int next = corners * out->Pitch - 1; // from the last corner of a shape to the next shape
  int at = 0;
  int corner = 0;
  FetchEach<TFrom, Size>(list, [&](int, const vec_t_<double, 4>& v) {
    out->X[at] = v.x;
    out->Y[at] = v.y;
    out->Z[at] = v.z;
    at += out->Pitch;
    if (++corner == corners) {
      corner = 0;
      at -= next;
    }
  });
}

/// In the order of `s_AttrGetVals`.
inline constexpr TFetchVectors kFetchVectors[16] = {ZX_BY_FAMILY(FetchVectors)};
inline constexpr TFetchPositions kFetchPositions[16] = {ZX_BY_FAMILY(FetchPositions)};

} // namespace Zx3D
