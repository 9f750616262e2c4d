#pragma once

#include <ZxCore3D/math/TMatrixD.h>
#include <ZxCore3D/math/TVectorD.h>
#include <ZxCore3D/types/Export.h>

/// Linear systems, inversion and least squares over square arrays of doubles stored row by row:
/// element (i, j) of an n by n array is at `i * n + j`.
///
/// The eliminations differ on purpose in pivoting, in the test for singular input and in how they
/// scale rows; each is Gaussian elimination (Golub and Van Loan, Matrix Computations, chapter 3).
/// None of them throws. On false the arrays that they work in hold partial values.

/// Solves `a x = b` by partial pivoting. `a` (n by n) and `b` (n) are destroyed, `x` receives `n`
/// values; `rank` may be null. Up to 128 unknowns it doesn't touch the heap. `n` 0 is true with
/// rank 0.
///
/// Beware: `tol` is compared with the **position** (0 to n - 1) of the row in which the pivot was
/// found and not with the pivot's magnitude; the solve fails when `tol` is greater.
/// - With a `tol` in (0, 1] every matrix fails at once whose first row holds the largest magnitude
///   of column 0: the identity, and every diagonally dominant matrix.
/// - With a `tol` of 0 or below nothing ever fails: a singular matrix runs on through divisions by
///   zero, gives infinities and NaNs, and the result is true.
/// - With a `tol` above 1 later steps can fail too.
/// So pass 0 and look at `x`, or use `LineSysGauss1`.
///
/// `*rank` receives the number of pivot steps made, which is `n` on success and the failing step
/// otherwise: it is not the rank of `a`.
ZX_CORE3D_API bool SolveGaussInplace(double* a, unsigned long n, double* b, double tol, double* x,
                                     unsigned long* rank);

/// `SolveGaussInplace` on a copy of 8 (n^2 + n) bytes: `a` and `b` survive. False, with nothing
/// written, when there is no memory for the copy.
ZX_CORE3D_API bool SolveGauss(const double* a, unsigned long n, const double* b, double tol,
                              double* x, unsigned long* rank);

/// Solves `a x = b` by partial pivoting. `a` (n by n) and `b` (n) are destroyed, `x` receives `n`
/// values. False when a pivot column is exactly zero (or nothing but NaNs); there is no tolerance,
/// so that a nearly singular matrix passes. `n` 0 does nothing and is false. May throw
/// `std::bad_alloc` for its index vector of 8 n bytes.
ZX_CORE3D_API bool LineSysGauss1(double* a, unsigned long n, double* b, double* x);

/// `LineSysGauss1` with full pivoting: the largest magnitude of the whole remaining matrix, the
/// first in row order among equals. `x` is in the caller's order of unknowns. The index vector has
/// 16 n bytes.
ZX_CORE3D_API bool LineSysGauss2(double* a, unsigned long n, double* b, double* x);

/// The inverse of `m`, n by n with n being `m.SizeX`, by Gauss-Jordan elimination with partial
/// pivoting. `res` must already be n by n. False when a pivot's magnitude is 1e-9 or less, and also
/// when there is no memory for the work space; the two can't be told apart. `res` keeps its values
/// without memory, and without a large enough pivot it holds partial ones.
///
/// The tolerance is absolute: a well-conditioned matrix of small numbers is refused (1e-9 times
/// the identity), and a nearly singular one of large numbers passes. Only for n = 1 the test is for
/// exactly 0. A NaN passes.
///
/// The work space is more than 2 n^2 doubles: two matrices whose rows are padded to 8 doubles, from
/// n = 48 on to 32 and 32 more where a row would be a multiple of 1 KiB, and 67 doubles more a row.
/// Up to n = 16 it lies on the stack; above, it is one block.
ZX_CORE3D_API bool inverse(const TMatrixD& m, TMatrixD& res);

/// The product of the transpose of `a` with `a`, each element added up from 0.0 over the rows of
/// `a` in order. `res` must be `a.SizeX` by `a.SizeX`.
ZX_CORE3D_API void mul_mtm(const TMatrixD& a, TMatrixD* res);

/// The transpose of `a` times `v`, each element added up from 0.0 over the rows of `a` in order.
/// `res` (`a.SizeX` elements) is cleared over its own size first.
ZX_CORE3D_API void mul_mtv(const TMatrixD& a, const TVectorD& v, TVectorD* res);

/// Least squares: the `x` that minimises the length of `a x - b`. `a` has one row for each equation
/// and one column for each unknown; `b` has a value for each equation; `x` must already have
/// `a.SizeX` elements. False, with `x` untouched, when the normal matrix can't be inverted, for
/// want of memory too (see `inverse`). Throws `std::bad_alloc` when there is none for its own
/// arrays: the normal matrix and its inverse, 16 n^2 bytes for n unknowns, beside the work space of
/// `inverse`.
///
/// It goes by the normal equations, which squares the condition number of `a`: about 8 digits of
/// the input are all that can be told apart. The normal matrix is inverted with the absolute
/// tolerance of `inverse`, so that equations with small coefficients (below about 3e-5) are refused
/// whatever their condition is.
ZX_CORE3D_API bool lsm(const TMatrixD& a, const TVectorD& b, TVectorD* x);
