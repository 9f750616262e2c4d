#pragma once

#include <ZxCore3D/types/UPLAIN.h>

/// Six planes. Planes 0 and 1 and planes 2 and 3 are the opposing pairs of sides; 4 and 5 close the
/// two ends.
template <class T> struct TFrustum_T {
  UPLAIN<T> Plains[6];
  unsigned char Flags; ///< bit 0x40 is set by `Transform`; the others are carried along
};
