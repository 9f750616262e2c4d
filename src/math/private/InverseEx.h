#pragma once

/// The inverse of the n by n array `a` (row by row) in `inv`, which must be another array of the
/// same size, by Gauss-Jordan elimination with partial pivoting. Not exported.
///
/// Fails when the largest candidate of a pivot column isn't above `tol` in magnitude: a pivot equal
/// to `tol` fails, and with `tol` 0 only an exact zero does. A NaN never fails. For `n` 1 the test
/// is for exactly 0 and `tol` is not used. `n` 0 does nothing and is false.
///
/// With `destroy` the work is done in `a`, which is overwritten; without it `a` survives, and the
/// result is false when there is no memory for the copy. `*rank` (may be null) receives the number
/// of pivot steps made: `n`, or the step that failed. On false `inv` holds partial values.
template <class T>
__attribute__((visibility("hidden"))) bool InverseEx(T* a, unsigned long n, T* inv, T tol,
                                                     bool destroy, unsigned long* rank);

template <>
__attribute__((visibility("hidden"))) bool InverseEx<double>(double* a, unsigned long n,
                                                             double* inv, double tol, bool destroy,
                                                             unsigned long* rank);
