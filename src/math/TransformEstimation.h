#pragma once

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/MAT3.h>
#include <ZxCore3D/types/MAT4.h>
#include <ZxCore3D/types/vec_t_.h>

// Least-squares fits of a map to the pairs `src[i]` going to `dst[i]`, `n` elements each. One
// linear solve of the normal equations of the raw coordinates: nothing is centred, scaled, weighted
// or iterated. On a false result the matrix is untouched. Memory does not grow with `n`.
//
// What a user may not expect of the projective fits (the direct linear transformation with the last
// element held at 1; Abdel-Aziz and Karara, 1971):
// - They are neither shift nor scale invariant: the same points in other units, or far from the
//   origin, give another answer and less accuracy. The normal equations hold fourth powers of the
//   coordinates, so accuracy falls with the fourth power of the distance from the origin.
// - Pivots are compared with an absolute 1e-9: coordinates of the order of 0.001 are refused,
//   however well they lie.
// - What is smallest is the algebraic error, the residual times the denominator, and not a
//   distance.
// - A map whose denominator is 0 at the origin has no such form and can not be found.

/// The plane projective map `X = (a x + b y + c) / (g x + h y + 1)`, `Y = (d x + e y + f) /
/// (g x + h y + 1)`; row 0 of `m` is a, b, c, row 1 is d, e, f, row 2 is g, h, 1. False when `n` is
/// below 4 or the normal matrix is too nearly singular, as with all points on a line. May throw
/// `std::bad_alloc`.
ZX_CORE3D_API bool GetProjectiveTransform(const vec_t_<double, 2>* src,
                                          const vec_t_<double, 2>* dst, unsigned long n,
                                          MAT3<double>* m);

/// The spatial projective map; element 15 of `m`, the constant of the denominator, is 1. False when
/// `n` is below 5 or the normal matrix is too nearly singular. May throw `std::bad_alloc`.
ZX_CORE3D_API bool GetProjectiveTransform(const vec_t_<double, 3>* src,
                                          const vec_t_<double, 3>* dst, unsigned long n,
                                          MAT4<double>* m);

/// The affine map; row 3 of `m` is 0, 0, 0, 1. There is no minimum count.
///
/// False only when the determinant of the 4 by 4 normal matrix is exactly 0. There is no tolerance:
/// of random sets of coplanar points, 98 in 100 have a determinant of rounding errors and give a
/// meaningless matrix and true.
ZX_CORE3D_API bool GetAffineTransform(const vec_t_<double, 3>* src, const vec_t_<double, 3>* dst,
                                      unsigned long n, MAT4<double>* m);
