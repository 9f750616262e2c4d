#include <ZxCore3D/util/TextNumbers.h>

#include <charconv>
#include <cstdlib>
#include <cwchar>
#include <locale.h>
#include <string.h>
#include <system_error>

#include <ZxCore3D/util/private/TextScan.h>
#include <ZxRunKit/CLocale.h>

namespace {

bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

bool IsDigit(char c) { return zx_text::Digit(c) <= 9; }

// The characters that a plain decimal is made of, in whatever order.
struct TDecimalChars {
  constexpr TDecimalChars() {
    for (const char c :
         {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9', '.', 'e', 'E', '+', '-'}) {
      Is[static_cast<unsigned char>(c)] = true;
    }
  }
  bool Is[256] = {};
};
constexpr TDecimalChars kDecimal;

// How far `from_chars` may look: to the terminator when it is near, and otherwise to the end of
// what can be a decimal, so that a number at the head of a long text does not cost the text's
// length.
std::size_t DecimalLength(const char* text) {
  constexpr std::size_t near = 64;
  std::size_t length = strnlen(text, near);
  if (length == near) {
    length = 0;
    while (kDecimal.Is[static_cast<unsigned char>(text[length])]) {
      ++length;
    }
  }
  return length;
}

// What `strtod` gives in the "C" locale. `from_chars` rounds the same and is several times as fast;
// it serves plain decimals, and what it refuses or can't know goes to the C library.
double ToDouble(const char* text) {
  const char* first = text;
  while (IsSpace(*first)) {
    ++first;
  }
  const char* digits = first + (zx_text::IsSign(*first) ? 1 : 0);
  if (*first == '+') {
    first = digits;
  }
  const bool hex = digits[0] == '0' && (digits[1] | 0x20) == 'x';
  if (!hex && (IsDigit(*digits) || *digits == '.')) {
    const char* const last = digits + DecimalLength(digits);
    double value = 0.0;
    if (std::from_chars(first, last, value).ec == std::errc()) {
      return value;
    }
  }
  return strtod_l(text, nullptr, Zentrix::CLocale());
}

} // namespace

bool StringToFloat(const char* text, float* out) {
  *out = static_cast<float>(ToDouble(text));
  return true;
}

bool StringToFloat(const char* text, double* out) {
  *out = ToDouble(text);
  return true;
}

bool StringToFloat(const wchar_t* text, float* out) {
  *out = wcstof_l(text, nullptr, Zentrix::CLocale());
  return true;
}

bool StringToFloat(const wchar_t* text, double* out) {
  *out = static_cast<double>(wcstof_l(text, nullptr, Zentrix::CLocale()));
  return true;
}

bool StringToFloat(const char* text, unsigned long length, double* out) {
  const zx_text::TTemporaryTerminator cut(text + length);
  return StringToFloat(text, out);
}
