#pragma once

#include <ZxCore3D/types/Export.h>

/// The largest power of two not above `n`; 1 for 0.
ZX_CORE3D_API unsigned long FloorPow2(unsigned long n);

/// `n` if it is a power of two, otherwise the next one. Above 2^63 there is none: the result is 1.
/// 1 for 0.
ZX_CORE3D_API unsigned long CeilPow2(unsigned long n);

/// The power of two nearest to `n`, on a tie the upper one; 0 for 0. From 2^63 + 2^62 the upper one
/// doesn't fit and the result is 1, as `CeilPow2` has it.
ZX_CORE3D_API unsigned long RoundPow2(unsigned long n);

/// A power of ten near `v`, found by repeated scaling in double arithmetic, whose rounding shows.
/// It isn't the largest power of ten not above `v`: values from 1 to 10 **inclusive** give 1.0;
/// 100 gives 10.0, 101 gives 99.99999999999999, 1000 gives 999.9999999999998. 0 and NaN give 1.0,
/// a negative value gives a NaN, infinity gives infinity.
ZX_CORE3D_API double FloorPow10(double v);

/// A sine stretched so that it rises all along a period: from -2 at -pi through -1, 0 and 1 to 2 at
/// pi. It orders angles without an arc function. Outside [-pi, pi) the angle is reduced first, by
/// up to 2^31 periods; angles beyond that give no meaningful value.
ZX_CORE3D_API double Sinex(double x);

/// `*s` receives the sine of `x`, then `*c` the cosine.
ZX_CORE3D_API void _SinCos(float x, float* s, float* c);
/// `*s` receives the sine of `x`, then `*c` the cosine.
ZX_CORE3D_API void _SinCos(double x, double* s, double* c);
