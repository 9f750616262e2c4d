#pragma once

#include <string>
#include <vector>

#include <ZxCore3D/types/Export.h>

/// A vector of expressions as text. Operations produce the text of the result: terms are joined as
/// they stand, nothing is simplified and no parentheses are put in, so that `a + b` times `c` is
/// `a + b * c`.
class ZX_CORE3D_API TVectorStr {
public:
  /// The texts.
  std::vector<std::string> Data;
  /// The number of elements.
  unsigned long Size;

  /// Without elements; `Size` is 0.
  TVectorStr();
  /// `n` empty texts.
  explicit TVectorStr(unsigned long n);

  /// Element `i`, unchecked.
  std::string& operator()(unsigned long i) { return Data[i]; }
  const std::string& operator()(unsigned long i) const { return Data[i]; }
};

/// A matrix of expressions as text, stored row by row. See `TVectorStr`.
class ZX_CORE3D_API TMatrixStr {
public:
  /// The texts, row after row.
  std::vector<std::string> Data;
  /// Columns.
  unsigned long SizeX;
  /// Rows.
  unsigned long SizeY;

  /// Without elements; both sizes are 0.
  TMatrixStr();
  /// `sizeX * sizeY` empty texts. Throws `std::length_error` or `std::bad_alloc`.
  TMatrixStr(unsigned long sizeX, unsigned long sizeY);

  /// Row first, column second.
  std::string& operator()(unsigned long y, unsigned long x) { return Data[y * SizeX + x]; }
  const std::string& operator()(unsigned long y, unsigned long x) const {
    return Data[y * SizeX + x];
  }
};

// A result must already have its shape: nothing is resized. Where a shape doesn't fit, nothing is
// done. Unless it is said otherwise a result must not be an operand.

/// Assigns `s` to every element.
ZX_CORE3D_API void fill(TVectorStr& v, const std::string& s);
/// Assigns `s` to every element.
ZX_CORE3D_API void fill(TMatrixStr& m, const std::string& s);

/// `res[i]` becomes `v[i]`, " * " and `s`. `res` may be `v`.
ZX_CORE3D_API void mul(const TVectorStr& v, const std::string& s, TVectorStr* res);

/// `res[y]` becomes `m(y, x)` for each row.
ZX_CORE3D_API void col(const TMatrixStr& m, unsigned long x, TVectorStr* res);
/// `res[x]` becomes `m(y, x)` for each column.
ZX_CORE3D_API void row(const TMatrixStr& m, unsigned long y, TVectorStr* res);

/// `res[y]` becomes the sum text of row `y` and `v` (see `dot`).
ZX_CORE3D_API void mul(const TMatrixStr& m, const TVectorStr& v, TVectorStr* res);

/// `res(y, x)` becomes the sum text of row `y` of `l` and column `x` of `r` (see `dot`). For square
/// operands: the columns of the result are counted by `l.SizeX`, whatever `r` has, and an `r` with
/// fewer columns gives no meaningful result.
ZX_CORE3D_API void mul(const TMatrixStr& l, const TMatrixStr& r, TMatrixStr* res);

/// The sum text over `a`'s size: "a0 * b0 + a1 * b1". An empty element still gives its " * "; an
/// empty `a` gives an empty text.
ZX_CORE3D_API std::string dot(const TVectorStr& a, const TVectorStr& b);

/// `res(i, j)` becomes `a[i]`, " * " and `b[j]`.
ZX_CORE3D_API void outer_dot(const TVectorStr& a, const TVectorStr& b, TMatrixStr* res);
