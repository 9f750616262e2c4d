#pragma once

#include <ZxCore3D/types/MAT4.h>
#include <ZxCore3D/types/SYMMAT4.h>
#include <ZxCore3D/types/vec_t_.h>

// Internal to the library: not installed, not exported.

/// The fit of the spatial `GetProjectiveTransform` by an explicit design matrix of 3 n rows and
/// `lsm`: the same equations and tolerance, other rounding, and memory that grows with `n`.
bool GetProjectiveTransform_(const vec_t_<double, 3>* src, const vec_t_<double, 3>* dst,
                             unsigned long n, MAT4<double>* m);

/// The inverse of a symmetric matrix by cofactors. False, with `res` untouched, when the
/// determinant is exactly 0. `res` may be `&a`.
///
/// Each cofactor is a 3 by 3 determinant expanded along its first row, `p (q r - s t) - ...`, and
/// the determinant is expanded along the first row, all summed left to right.
template <class T> bool inverse(const SYMMAT4<T>& a, SYMMAT4<T>* res);

template <> bool inverse<double>(const SYMMAT4<double>& a, SYMMAT4<double>* res);
