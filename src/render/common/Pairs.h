#pragma once

#include <cstdint>
#include <cstring>

#include <ZxCore3D/types/vec_t_.h>

namespace Zx3D {

/// Two doubles in a vector register that every processor of this library has, and what a comparison
/// of them gives: all ones or all zeros.
using TPair = double __attribute__((vector_size(16)));
using TPairMask = std::int64_t __attribute__((vector_size(16)));

inline TPair PairAt(const double* from) {
  TPair pair;
  std::memcpy(&pair, from, sizeof pair);
  return pair;
}

inline void StorePair(double* to, TPair pair) { std::memcpy(to, &pair, sizeof pair); }

/// Stores a vector as two pairs, whatever the compiler makes of an assignment: a load of two
/// doubles that were stored one by one waits until both have reached memory, behind all stores of
/// pixels before them. Loads of single doubles need not wait.
inline void StoreVector(vec_t_<double, 4>* to, double x, double y, double z, double w) {
  StorePair(&to->x, TPair{x, y});
  StorePair(&to->z, TPair{z, w});
}

} // namespace Zx3D
