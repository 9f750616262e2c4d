#pragma once

#include <ZxCore3D/types/Export.h>

// Numbers out of text.
//
// The integer forms are strict: the whole text must be a number. Digits are 0 to 9 (0 to 7, or 0 to
// 9, A to F and a to f); a sign is one + or one - at the very start, in the signed forms only, and
// may not stand alone. No white space, radix prefix or thousands separator is accepted. Overflow is
// not detected: values wrap modulo the width of the accumulator, and a negative result is the
// negation of the wrapped value. The result is false, with nothing written, when the text is no
// number. The floating-point forms take what `strtod` takes, in the "C" locale whatever the host's
// is, and are always true.
//
// A length counts characters, and the text then needs no terminator. Pointers must be valid;
// nothing here allocates.

/// Decimal without sign, 32-bit accumulator of which the low 8 (16, 32) bits are stored.
ZX_CORE3D_API bool StringToUchar(const char* text, unsigned char* out);
ZX_CORE3D_API bool StringToUshort(const char* text, unsigned short* out);
ZX_CORE3D_API bool StringToUint(const char* text, unsigned int* out);
ZX_CORE3D_API bool StringToUint32(const char* text, unsigned int* out);

/// Decimal without sign, 64-bit accumulator.
ZX_CORE3D_API bool StringToUlong(const char* text, unsigned long* out);
ZX_CORE3D_API bool StringToSize_t(const char* text, unsigned long* out);

/// Decimal with optional sign, 32-bit accumulator.
ZX_CORE3D_API bool StringToInt(const char* text, int* out);
ZX_CORE3D_API bool StringToInt32(const char* text, int* out);

/// Decimal with optional sign, 64-bit accumulator.
ZX_CORE3D_API bool StringToLong(const char* text, long* out);

/// The first `length` characters as a 32-bit decimal; a terminator among them is no digit. A length
/// of `~0` or `~0 - 1` measures.
ZX_CORE3D_API bool StringToUint(const char* text, unsigned long length, unsigned int* out);
ZX_CORE3D_API bool StringToInt(const char* text, unsigned long length, int* out);

/// The first `length` characters as a 64-bit decimal; a terminator among them is no digit. Only
/// `~0` measures.
ZX_CORE3D_API bool StringToInt64(const char* text, unsigned long length, long* out);
ZX_CORE3D_API bool StringToUint64(const char* text, unsigned long length, unsigned long* out);

/// Octal without sign. The empty text is 0 here, and here alone.
ZX_CORE3D_API bool StringToOct(const char* text, unsigned int* out);
ZX_CORE3D_API bool StringToOct(const char* text, unsigned long* out);

/// Hexadecimal without sign or prefix, upper and lower case.
ZX_CORE3D_API bool StringToHex(const char* text, unsigned int* out);

/// A decimal integer with optional sign: whether its wrapped 32-bit value differs from 0. There are
/// no words such as true.
ZX_CORE3D_API bool StringToBool(const char* text, bool* out);
/// The same for the text before index `length`, where a zero stands during the call: the buffer
/// must be writable and have a character at that index, which is put back. No length measures.
ZX_CORE3D_API bool StringToBool(const char* text, unsigned long length, bool* out);

/// A decimal with optional sign at the start of the text, with anything behind it. Digits are read
/// until another character or until `length` (`~0` measures) is used up; at least one is needed.
/// `*end`, if `end` is not null, becomes the first character not consumed, on failure too: behind a
/// lone sign, otherwise the text's start.
ZX_CORE3D_API bool StringToInt(const char* text, unsigned long length, int* out, const char** end);

/// As `strtod` converts it: leading white space, exponents, hexadecimal, infinities and NaNs count,
/// trailing text is ignored, and a text that is no number gives 0.0. The float is the rounded
/// double. Always true.
ZX_CORE3D_API bool StringToFloat(const char* text, float* out);
ZX_CORE3D_API bool StringToFloat(const char* text, double* out);
/// As `wcstof` converts it; the double has single precision too. Always true.
ZX_CORE3D_API bool StringToFloat(const wchar_t* text, float* out);
ZX_CORE3D_API bool StringToFloat(const wchar_t* text, double* out);
/// The text before index `length`, where a zero stands during the call: the buffer must be writable
/// and have a character at that index, which is put back. No length measures. Always true.
ZX_CORE3D_API bool StringToFloat(const char* text, unsigned long length, double* out);

/// `count` values from a terminated text with `separator` between them; the last one takes the
/// whole rest. A zero stands in place of each separator while its element is converted, so the
/// buffer must be writable. False when a separator is missing or an element is no number; the
/// numbers before it are then written, and after a bad element its separator stays replaced by the
/// zero. A count of 0, or a separator of 0 with a count above 1, writes nothing and is false.
ZX_CORE3D_API bool StringToUchar(const char* text, char separator, unsigned char* out,
                                 unsigned long count);
ZX_CORE3D_API bool StringToInt(const char* text, char separator, int* out, unsigned long count);
/// The same; a count of 0 is true.
ZX_CORE3D_API bool StringToSize_t(const char* text, char separator, unsigned long* out,
                                  unsigned long count);
/// The same by the rule of the floating-point forms: no element fails, and every separator is put
/// back.
ZX_CORE3D_API bool StringToFloat(const char* text, char separator, float* out, unsigned long count);
ZX_CORE3D_API bool StringToFloat(const char* text, char separator, double* out,
                                 unsigned long count);

/// `count` decimals with optional sign from the first `length` characters (`~0` measures), with
/// `separator` between them and at most one behind the last. The buffer is not touched. False for
/// any other text; the numbers before the bad place are then written. A count of 0 is true.
ZX_CORE3D_API bool StringToInt(const char* text, unsigned long length, char separator, int* out,
                               unsigned long count);
