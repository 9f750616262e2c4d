#pragma once

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/POLYNOM3.h>
#include <ZxCore3D/types/vec_t_.h>

/// Interpolating cubic splines (de Boor, A Practical Guide to Splines, chapter IV).
///
/// `CalcCubeSpline1D`, `2D` and `3D` give for each segment a cubic in a parameter that runs from 0
/// to 1 **on every segment**, whatever the distance of its points is: the knots are uniform, and a
/// curve through unevenly spaced points swings out beside the short segments. An open spline is
/// natural (second derivative 0 at both ends) and has `n - 1` segments; a closed one is periodic
/// and has `n`, the last of which joins the last point to the first.

/// The spline through the `n` values at `y`, `y` + `stride` bytes and so on; `stride` 0 means 8.
/// `out` receives a polynomial for each segment. False, with `out` untouched, for `n` below 2 or
/// without memory.
///
/// The result has the bits of a dense inversion of the 4 by 4 unknowns a segment; time and memory
/// don't have its size: time grows with the square of `n`, memory with `n`, up to 2,000 bytes a
/// point in one coordinate and in three. One value that isn't finite spoils all polynomials.
ZX_CORE3D_API bool CalcCubeSpline1D(const double* y, unsigned long stride, unsigned long n,
                                    bool closed, POLYNOM3* out);

/// `out` receives all polynomials of x, then all of y. `stride` is passed on as it is: pass 16 for
/// a plain array. 0 means **8** also here and steps through x and y as if they were one row of
/// values. True when every coordinate has succeeded; a coordinate that has, has written its share.
ZX_CORE3D_API bool CalcCubeSpline2D(const vec_t_<double, 2>* p, unsigned long stride,
                                    unsigned long n, bool closed, POLYNOM3* out);

/// `out` receives all polynomials of x, then of y, then of z. Pass a `stride` of 24 for a plain
/// array; see `CalcCubeSpline2D`.
ZX_CORE3D_API bool CalcCubeSpline3D(const vec_t_<double, 3>* p, unsigned long stride,
                                    unsigned long n, bool closed, POLYNOM3* out);

/// The spline y(x) through `n` points; `out` receives `n - 1` polynomials in absolute x. A type of
/// 1 gives the first derivative at that end, 2 the second. False, with `out` untouched, for `n`
/// below 2, another type, or a singular system (equal neighbours in x). The order of x isn't
/// tested: points that go back give polynomials that are no function of x.
///
/// The system holds the cubes of absolute x: for points one apart every factor of 10 in x costs
/// three to four digits (an error of 1e-7 at x = 1,000, of 1e-4 at 10,000, and nothing is right at
/// 100,000). Move the points to the origin first, and the result back with `Polynom3_TransX`.
/// Memory grows with the square of `n`, 128 n^2 bytes. Throws `std::bad_alloc`.
ZX_CORE3D_API bool CalcCubeSplineXY(const vec_t_<double, 2>* p, unsigned long n,
                                    unsigned long startType, double startValue,
                                    unsigned long endType, double endValue, POLYNOM3* out);

/// Replaces `p` by the polynomial q(x) = p(x - t), in the order a - (b - (c - d t) t) t,
/// b - (2 c - 3 d t) t, c - 3 d t.
ZX_CORE3D_API void Polynom3_TransX(POLYNOM3& p, double t);
