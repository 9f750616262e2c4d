#pragma once

#include <cstddef>
#include <string>

// What the file-name functions share. Internal to this directory.

namespace zx_filename {

/// The result of a text that does not fit.
constexpr unsigned long kFail = ~0UL;
/// Measures in some forms only; in the others no text is that long.
constexpr unsigned long kNoLength = ~0UL - 1;

template <class TChar> struct TTextRange {
  const TChar* Begin;
  unsigned long Length;
};

template <class TChar> bool IsSeparator(TChar c) { return c == '/' || c == '\\'; }

template <class TChar> unsigned long Measured(const TChar* text, unsigned long length) {
  return length == ~0UL ? std::char_traits<TChar>::length(text) : length;
}

/// `~0` and `~0 - 1` both measure.
template <class TChar> TTextRange<TChar> MeasuredEither(const TChar* text, unsigned long length) {
  return {text, Measured(text, length == kNoLength ? ~0UL : length)};
}

/// Copies and terminates; `kFail`, with nothing written, when the text does not fit. The text may
/// lie in the output.
template <class TChar>
unsigned long CopyText(TTextRange<TChar> text, TChar* out, unsigned long size) {
  if (text.Length >= size) {
    return kFail;
  }
  std::char_traits<TChar>::move(out, text.Begin, text.Length);
  out[text.Length] = 0;
  return text.Length;
}

} // namespace zx_filename
