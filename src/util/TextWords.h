#pragma once

#include <ZxCore3D/types/Export.h>

// Words out of terminated text. Pointers must be valid, unless told otherwise, and an output must
// have room for the word and its terminator.

/// a to z become A to Z; every other byte stays.
ZX_CORE3D_API char AnsiUpperCase(char c);
/// The same in place, up to the terminator.
ZX_CORE3D_API void AnsiUpperCase(char* text);

/// Replaces each `from` by `to` in place, up to the terminator.
ZX_CORE3D_API void StringCharReplace(char* text, char from, char to);

/// Copies what stands before `separator`, or before the terminator, and terminates it. `*next`, if
/// `next` is not null, becomes the place behind the separator, or the terminator itself. Returns
/// the number of characters copied; nothing is skipped, so a word may be empty.
ZX_CORE3D_API unsigned long StringGetWord(const char* text, char* out, char separator,
                                          const char** next);

/// Skips leading blanks (spaces and tabs), copies up to the next blank or the terminator, and
/// terminates the copy. `*next`, if `next` is not null, becomes the place behind the one blank that
/// ended the word, or the terminator. Returns the word's length.
ZX_CORE3D_API unsigned long StringGetWordEx(const char* text, char* out, const char** next);

/// `StringGetWordEx` without the copy.
ZX_CORE3D_API unsigned long StringSkipWordEx(const char* text, const char** next);

/// Finds the first word behind leading blanks: `*start` becomes its place and `*length` its length.
/// Returns the offset of the word's end from `text`, or 0 with nothing written when there is none.
ZX_CORE3D_API unsigned long StringFindWordEx(const char* text, const char** start,
                                             unsigned long* length);
