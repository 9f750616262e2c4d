#pragma once

#include <ZxCore3D/types/Export.h>

// File names taken apart and converted, on plain buffers; the file system is not asked. Names are
// those of drive-letter paths: / and \ both separate, a full name begins with a drive (c:\) or with
// two backslashes, and a produced separator is a backslash. A name with a single leading / is
// relative. Comparisons are byte-exact: case counts, and / does not match \.
//
// A name is a pointer with a length; `~0` measures it, and only then does it need a terminator. An
// output is a pointer with a capacity in characters, terminator included. The result of an output
// function is the length written without the terminator, or `~0` if that is not below the capacity.
// Pointers must be valid.

/// The first `c` before the terminator, or null; a `c` of 0 is not found.
ZX_CORE3D_API const char* FindChar(const char* text, char c);
ZX_CORE3D_API const wchar_t* FindChar(const wchar_t* text, wchar_t c);

/// The last `c` among the first `length` characters, or null. No length measures.
ZX_CORE3D_API const char* FindCharR(const char* text, unsigned long length, char c);
ZX_CORE3D_API const wchar_t* FindCharR(const wchar_t* text, unsigned long length, wchar_t c);

/// The first separator before the terminator, or null.
ZX_CORE3D_API const char* FindSlash(const char* text);
ZX_CORE3D_API const wchar_t* FindSlash(const wchar_t* text);

/// The last separator among the first `length` characters, or null.
ZX_CORE3D_API const char* FindSlashR(const char* text, unsigned long length);
ZX_CORE3D_API const wchar_t* FindSlashR(const wchar_t* text, unsigned long length);

/// The text behind the last separator, or all of it when there is none. A length of `~0 - 1`
/// measures too. Nothing is copied when it does not fit.
ZX_CORE3D_API unsigned long ExtractFileName(const char* name, unsigned long length, char* out,
                                            unsigned long size);
ZX_CORE3D_API unsigned long ExtractFileName(const wchar_t* name, unsigned long length, wchar_t* out,
                                            unsigned long size);

/// The text before the last separator, without it. A length of `~0 - 1` measures too. Nothing is
/// copied when it does not fit; but where there is no separator an empty text is written whatever
/// the capacity, so that `out` must have room for the terminator.
ZX_CORE3D_API unsigned long ExtractFilePath(const char* name, unsigned long length, char* out,
                                            unsigned long size);
ZX_CORE3D_API unsigned long ExtractFilePath(const wchar_t* name, unsigned long length, wchar_t* out,
                                            unsigned long size);

/// The file name without its last point and what follows. A length of `~0 - 1` measures too in the
/// narrow form; in the wide one it is refused with `~0`. Nothing is copied when it does not fit.
ZX_CORE3D_API unsigned long ExtractFileTitle(const char* name, unsigned long length, char* out,
                                             unsigned long size);
ZX_CORE3D_API unsigned long ExtractFileTitle(const wchar_t* name, unsigned long length,
                                             wchar_t* out, unsigned long size);

/// The extension with its point; empty when the last point is followed by a separator. Nothing is
/// copied when it does not fit; but an empty result is written whatever the capacity, so that `out`
/// must have room for the terminator.
ZX_CORE3D_API unsigned long ExtractFileExt(const char* name, unsigned long length, char* out,
                                           unsigned long size);
ZX_CORE3D_API unsigned long ExtractFileExt(const wchar_t* name, unsigned long length, wchar_t* out,
                                           unsigned long size);

/// Whether `c` is an ASCII letter.
ZX_CORE3D_API bool IsAlpha(char c);

/// Whether the name has at least three characters and begins with a letter, a colon and a
/// separator, or with two backslashes.
ZX_CORE3D_API bool IsFullFileName(const char* name, unsigned long length);

/// `name` relative to the directory `base`: one ..\ for each component of `base` behind the common
/// part, then the rest of `name`. Where one of the two is not full, or their first characters
/// differ, `name` as it stands. The last separator that `name` has in or just behind the equal part
/// counts as common without a look at `base`: `c:\a\b\f` relative to `c:\a\bc` is `f`. On `~0` the
/// output is not terminated.
ZX_CORE3D_API unsigned long FullToRelativeFileName(const char* name, unsigned long nameLength,
                                                   const char* base, unsigned long baseLength,
                                                   char* out, unsigned long size);

/// `name`, which must be terminated since `nameLength` is not used, resolved against the directory
/// `base`. Each ..\ or ../ drops a directory and each .\ or ./ is dropped, wherever the copy
/// arrives at its first point, inside a component too; a trailing .. is copied. `~0` also for a ..
/// that leads out of `base`. On `~0` the output is not terminated.
ZX_CORE3D_API unsigned long RelativeToFullFileName(const char* name, unsigned long nameLength,
                                                   const char* base, unsigned long baseLength,
                                                   char* out, unsigned long size);

/// A copy of `name` if it is full, otherwise what `RelativeToFullFileName` gives.
ZX_CORE3D_API unsigned long GetFullFileName(const char* name, unsigned long nameLength,
                                            const char* base, unsigned long baseLength, char* out,
                                            unsigned long size);
