#pragma once

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/UPLAIN.h>
#include <ZxCore3D/types/vec_t_.h>

/// Six planes. Planes 0 and 1 and planes 2 and 3 are the opposing pairs of sides; 4 and 5 close the
/// two ends.
template <class T> struct TFrustum_T {
  UPLAIN<T> Plains[6]; ///< the planes, in the order told above
  unsigned char Flags; ///< bit 0x40 is set by `Transform`; the others are carried along

  /// The eight corners, for `T` = double only. `corners` has room for eight points. The planes that
  /// meet in a corner, by index: 024, 124, 134, 034, then the same with 5 for 4. A corner whose
  /// planes have no common point is the origin.
  void GetCone(vec_t_<T, 3>* corners) const;
};

template <> ZX_CORE3D_API void TFrustum_T<double>::GetCone(vec_t_<double, 3>* corners) const;
