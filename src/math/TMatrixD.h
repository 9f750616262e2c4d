#pragma once

#include <string>

#include <ZxCore3D/math/TVectorD.h>
#include <ZxCore3D/types/Export.h>

/// A run-time-sized matrix of doubles, stored row after row: row y, column x is `Data[y * SizeX +
/// x]`. (`MAT3` and `MAT4` are stored the other way, column by column.) `Data` is the object's own
/// array, or a caller's buffer that it only looks at.
///
/// Except where it is said, the free functions below trust the caller about shapes, and a result
/// must already have its shape. Where a shape doesn't fit they touch nothing outside the arrays
/// they were given and leave the result as it was.
class ZX_CORE3D_API TMatrixD {
public:
  /// Columns: the length of a row.
  unsigned long SizeX = 0;
  /// Rows.
  unsigned long SizeY = 0;
  /// The elements, row after row; null when `SizeX * SizeY` is 0.
  double* Data = nullptr;
  /// True when `Data` was allocated here by array new; false for a caller's buffer or null.
  bool Owned = false;

  TMatrixD() = default;
  /// An owned array of `sizeX * sizeY` elements, which are not initialised. Both sizes are kept
  /// also when one of them is 0: 0 by 5 is another shape than 5 by 0. Throws `std::bad_alloc`, also
  /// when the product of the sizes doesn't fit 64 bits.
  TMatrixD(unsigned long sizeX, unsigned long sizeY);
  /// Attaches `p`, an array of `sizeX * sizeY` doubles in rows, which the caller keeps alive and
  /// releases. With `p` null it is the constructor above.
  TMatrixD(unsigned long sizeX, unsigned long sizeY, double* p);
  /// A deep copy into an owned array, also of an attached buffer.
  TMatrixD(const TMatrixD& other);
  /// Takes all fields and leaves `other` empty.
  TMatrixD(TMatrixD&& other) noexcept;
  ~TMatrixD() { Destroy(); }

  /// At equal shapes copies in place, also through an attached buffer, which stays attached.
  /// Otherwise releases what it has and copies into a new owned array.
  TMatrixD& operator=(const TMatrixD& other);
  /// Releases what it has, takes `other`'s fields and leaves `other` empty.
  TMatrixD& operator=(TMatrixD&& other) noexcept;

  /// Releases the array if it is owned; then data null and both sizes 0.
  void Destroy() noexcept;

  /// Gives the shape, with uninitialised elements. Does nothing when both sizes are the current
  /// ones, also over an attached buffer.
  void Create(unsigned long sizeX, unsigned long sizeY);

  /// Attaches `p` (see the constructor); with `p` null it is `Create(sizeX, sizeY)`.
  void Create(unsigned long sizeX, unsigned long sizeY, double* p);

  /// Exchanges all fields.
  void Swap(TMatrixD& other) noexcept;

  /// 1.0 on the diagonal, 0.0 elsewhere. Throws `TZxMessage` "SizeX != SizeY" if it isn't square.
  void SetIdentity();
};

/// Sets every element.
ZX_CORE3D_API void fill(TMatrixD& m, double value);

/// `res` becomes `m` with the sign bits cleared, those of NaNs too. False, with nothing written, if
/// the shapes differ.
ZX_CORE3D_API bool abs(const TMatrixD& m, TMatrixD& res);

/// `l += r` over `l`'s element count.
ZX_CORE3D_API void add(TMatrixD& l, const TMatrixD& r);

/// `res = l - r`. False, with nothing written, if any of the three shapes differs.
ZX_CORE3D_API bool diff(const TMatrixD& l, const TMatrixD& r, TMatrixD& res);

/// The matrix product; each element is added up from 0.0 in ascending order, without fused
/// multiply-add. `res` must already have the shape of the product and must be neither operand.
/// Throws `TZxMessage` before anything is written: "l.SizeX != r.SizeY", "res.SizeX != r.SizeX" or
/// "res.SizeY != l.SizeY", tested in this order.
ZX_CORE3D_API void mul(const TMatrixD& l, const TMatrixD& r, TMatrixD& res);

/// Multiplies every element of `m` by `s` **in place**, although `m` is declared const.
ZX_CORE3D_API void mul(const TMatrixD& m, double s);

/// `res[y]` becomes the dot product of row `y` and `v`, added up in ascending order from 0.0, for
/// `y` below `SizeY`, in `res`'s existing elements: `res` is not resized. `res` must not be `v`.
ZX_CORE3D_API void mul(const TMatrixD& m, const TVectorD& v, TVectorD* res);

/// The smallest element. Throws `TZxMessage` "m is empty" without elements. A NaN in element 0 is
/// the result; NaNs elsewhere are ignored.
ZX_CORE3D_API double min(const TMatrixD& m);

/// The largest element; otherwise as `min`.
ZX_CORE3D_API double max(const TMatrixD& m);

/// The sum of all elements in index order from 0.0; 0.0 for an empty matrix.
ZX_CORE3D_API double summ(const TMatrixD& m);

/// False if the shapes differ, or at the first pair with `fabs(a - b) > tol`. A NaN difference
/// doesn't exceed `tol`: a NaN equals everything here, unlike in `TVectorD::operator==`, and so do
/// two infinities of the same sign.
ZX_CORE3D_API bool equal(const TMatrixD& a, TMatrixD& b, double tol);

/// `res(x, y) = m(y, x)`, with `m`'s sizes, and `res.SizeX` as the length of a row of `res`. `res`
/// must not be `m`.
ZX_CORE3D_API void transpose(const TMatrixD& m, TMatrixD& res);

/// Makes `res` `b.Size` columns by `a.Size` rows, keeping its array if it has that shape, and
/// writes `res(y, x) = a[y] * b[x]`.
ZX_CORE3D_API void outer_dot(const TVectorD& a, const TVectorD& b, TMatrixD* res);

/// A new owned vector of `m.SizeY` elements, as the `mul` of a matrix and a vector gives it. A `v`
/// that is shorter than a row gives zeros.
ZX_CORE3D_API TVectorD operator*(const TMatrixD& m, const TVectorD& v);

/// "{", the elements row by row in "%0.16f" with ", " between columns and ",\n" between rows, "}".
/// 16 decimals are not 16 digits: 1e-17 becomes 0.0000000000000000. A matrix without elements gives
/// the single opening brace "{", unlike the vector form's "{}".
ZX_CORE3D_API std::string ToString(const TMatrixD& m);
