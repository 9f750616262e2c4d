#pragma once

#include <cstddef>
#include <cstring>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>

namespace Zx3D {

struct TFromByte {
  using TElement = unsigned char;
  static double Convert(unsigned char v) { return v; }
};

struct TFromNormalizedByte {
  using TElement = unsigned char;
  static double Convert(unsigned char v) { return UnitOfArrayByte(v); }
};

struct TFromFloat {
  using TElement = float;
  static double Convert(float v) { return v; }
};

struct TFromDouble {
  using TElement = double;
  static double Convert(double v) { return v; }
};

/// The vector at an address. Components that the array lacks are 0 for y and z and 1 for w. Each is
/// loaded by itself: a copy of all would be stored first, and the loads wait for it.
template <class TFrom, int Size> inline vec_t_<double, 4> FetchAt(const unsigned char* from) {
  const auto component = [from](int i, double lacking) {
    typename TFrom::TElement v;
    if (i >= Size) {
      return lacking;
    }
    std::memcpy(&v, from + static_cast<std::size_t>(i) * sizeof v, sizeof v);
    return TFrom::Convert(v);
  };
  return {component(0, 0.0), component(1, 0.0), component(2, 0.0), component(3, 1.0)};
}

/// A function template of a family and a size, for all of them: by family, then by size.
#define ZX_BY_SIZE(fetch, from) fetch<from, 1>, fetch<from, 2>, fetch<from, 3>, fetch<from, 4>
#define ZX_BY_FAMILY(fetch)                                                                        \
  ZX_BY_SIZE(fetch, TFromByte), ZX_BY_SIZE(fetch, TFromNormalizedByte),                            \
      ZX_BY_SIZE(fetch, TFromFloat), ZX_BY_SIZE(fetch, TFromDouble)

/// The address of an element of an array.
inline const unsigned char* ElementAt(const TRenderCPU::TVertexAttribPointer& p,
                                      unsigned long index) {
  return p.Data +
         static_cast<std::ptrdiff_t>(p.EffectiveStride) * static_cast<std::ptrdiff_t>(index);
}

} // namespace Zx3D
