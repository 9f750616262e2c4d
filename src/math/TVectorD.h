#pragma once

#include <string>

#include <ZxCore3D/types/Export.h>

/// A run-time-sized array of doubles. `Data` is the object's own array, or a caller's buffer that
/// it only looks at.
///
/// The free functions below trust the caller about sizes. Where a size doesn't fit they touch
/// nothing outside the arrays they were given and leave the result as it was.
class ZX_CORE3D_API TVectorD {
public:
  /// The number of elements.
  unsigned long Size = 0;
  /// The elements; null when `Size` is 0.
  double* Data = nullptr;
  /// True when `Data` was allocated here by array new; false for a caller's buffer or null.
  bool Owned = false;

  TVectorD() = default;
  /// An owned array of `n` elements, which are not initialised. Throws `std::bad_alloc`.
  explicit TVectorD(unsigned long n);
  /// A deep copy into an owned array, also of an attached buffer.
  TVectorD(const TVectorD& other);
  /// Takes all three fields and leaves `other` empty.
  TVectorD(TVectorD&& other) noexcept;
  ~TVectorD() { Destroy(); }

  /// At equal sizes copies into the existing array, also through an attached buffer, which stays
  /// attached. Otherwise releases what it has and copies into a new owned array.
  TVectorD& operator=(const TVectorD& other);
  /// Releases what it has, takes `other`'s fields and leaves `other` empty.
  TVectorD& operator=(TVectorD&& other) noexcept;

  /// Releases the array if it is owned and zeroes the fields.
  void Destroy() noexcept;

  /// Makes the size `n`, with uninitialised elements. Does nothing when `n` is the current size,
  /// also over an attached buffer: old contents and attachment stay.
  void Create(unsigned long n);

  /// Attaches `p`, an array of `n` doubles that the caller keeps alive and releases. With `p` null
  /// it is `Create(n)`. `n` 0 leaves the vector empty.
  void Create(unsigned long n, double* p);

  /// Exchanges all fields.
  void Swap(TVectorD& other) noexcept;

  /// Sets every element.
  void Fill(double value);

  /// False when sizes differ or any pair of elements compares unequal: a NaN on either side makes
  /// vectors unequal, and 0.0 equals -0.0. (`equal` of two matrices treats NaNs the other way.)
  bool operator==(const TVectorD& other) const;
  bool operator!=(const TVectorD& other) const { return !(*this == other); }
};

/// Sets every element.
ZX_CORE3D_API void fill(TVectorD& v, double value);

/// The sum of squares, added up in ascending order from 0.0.
ZX_CORE3D_API double NormSqr(const TVectorD& v);

/// The square root of `NormSqr`.
ZX_CORE3D_API double Norm(const TVectorD& v);

/// `l += r` over `l`'s size.
ZX_CORE3D_API void add(TVectorD& l, const TVectorD& r);

/// `res = l - r` over `l`'s size, written into `res`'s existing elements: `res` is not resized.
ZX_CORE3D_API void sub(const TVectorD& l, const TVectorD& r, TVectorD* res);

/// The sum of products over the first operand's size, added up in ascending order from 0.0; 0.0
/// for an empty one.
ZX_CORE3D_API double dot(const TVectorD& a, const TVectorD& b);

/// A new owned vector of `l`'s size. An `r` that is shorter than `l` gives zeros.
ZX_CORE3D_API TVectorD operator+(const TVectorD& l, const TVectorD& r);
/// A new owned vector of `l`'s size. An `r` that is shorter than `l` gives zeros.
ZX_CORE3D_API TVectorD operator-(const TVectorD& l, const TVectorD& r);

/// "{1.0000000000000000, 2.0000000000000000}": every element by "%0.16f", which is 16 decimals and
/// not 16 digits, so that 1e-17 becomes 0.0000000000000000 and 1e300 takes 318 characters. "{}" for
/// an empty vector.
ZX_CORE3D_API std::string ToString(const TVectorD& v);
