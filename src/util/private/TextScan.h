#pragma once

#include <type_traits>

// The digit loops that the number forms share. Internal to this directory.

namespace zx_text {

/// 0 to 9, or more for anything that is no decimal digit.
inline unsigned int Digit(char c) {
  return static_cast<unsigned int>(static_cast<unsigned char>(c)) - '0';
}

/// 0 to 15, or more for anything that is no hexadecimal digit.
inline unsigned int HexDigit(char c) {
  const unsigned int decimal = Digit(c);
  if (decimal <= 9) {
    return decimal;
  }
  const unsigned int letter = (static_cast<unsigned char>(c) | 0x20U) - 'a';
  return letter <= 5 ? letter + 10 : 16;
}

/// Digits up to the terminator, at least one.
template <class TAcc> inline bool ReadDecimal(const char* text, TAcc* out) {
  static_assert(std::is_unsigned_v<TAcc>, "wraps");
  TAcc value = 0;
  do {
    const unsigned int digit = Digit(*text);
    if (digit > 9) {
      return false;
    }
    value = value * 10 + digit;
  } while (*++text != '\0');
  *out = value;
  return true;
}

/// Exactly `length` digits, at least one.
template <class TAcc> inline bool ReadDecimal(const char* text, unsigned long length, TAcc* out) {
  static_assert(std::is_unsigned_v<TAcc>, "wraps");
  if (length == 0) {
    return false;
  }
  TAcc value = 0;
  for (const char* const stop = text + length; text != stop; ++text) {
    const unsigned int digit = Digit(*text);
    if (digit > 9) {
      return false;
    }
    value = value * 10 + digit;
  }
  *out = value;
  return true;
}

inline bool IsSign(char c) { return c == '-' || c == '+'; }

/// An optional sign and digits up to the terminator.
template <class TAcc, class TInt> inline bool ReadSigned(const char* text, TInt* out) {
  static_assert(sizeof(TAcc) == sizeof(TInt));
  const bool negative = *text == '-';
  TAcc value = 0;
  if (!ReadDecimal(text + (IsSign(*text) ? 1 : 0), &value)) {
    return false;
  }
  *out = static_cast<TInt>(negative ? TAcc(0) - value : value);
  return true;
}

/// An optional sign and digits in exactly `length` characters.
template <class TAcc, class TInt>
inline bool ReadSigned(const char* text, unsigned long length, TInt* out) {
  static_assert(sizeof(TAcc) == sizeof(TInt));
  if (length == 0) {
    return false;
  }
  const bool negative = *text == '-';
  const unsigned long skip = IsSign(*text) ? 1 : 0;
  TAcc value = 0;
  if (!ReadDecimal(text + skip, length - skip, &value)) {
    return false;
  }
  *out = static_cast<TInt>(negative ? TAcc(0) - value : value);
  return true;
}

/// Octal digits up to the terminator; none is 0.
template <class TAcc> inline bool ReadOctal(const char* text, TAcc* out) {
  static_assert(std::is_unsigned_v<TAcc>, "wraps");
  TAcc value = 0;
  for (; *text != '\0'; ++text) {
    const unsigned int digit = Digit(*text);
    if (digit > 7) {
      return false;
    }
    value = value * 8 + digit;
  }
  *out = value;
  return true;
}

/// Steps over a sign before `stop`; whether it was a minus.
inline bool SkipSign(const char** at, const char* stop) {
  if (*at == stop || !IsSign(**at)) {
    return false;
  }
  return *(*at)++ == '-';
}

/// Steps over the digits before `stop`; false, with nothing written, when there are none.
inline bool ReadDigits(const char** at, const char* stop, unsigned int* out) {
  const char* const start = *at;
  unsigned int value = 0;
  for (; *at != stop; ++*at) {
    const unsigned int digit = Digit(**at);
    if (digit > 9) {
      break;
    }
    value = value * 10 + digit;
  }
  if (*at == start) {
    return false;
  }
  *out = value;
  return true;
}

/// A zero in place of one character of a writable text, until the guard's end.
class TTemporaryTerminator {
public:
  explicit TTemporaryTerminator(const char* place)
      : m_Place(const_cast<char*>(place)), m_Kept(*place) {
    *m_Place = '\0';
  }
  ~TTemporaryTerminator() {
    if (m_Place != nullptr) {
      *m_Place = m_Kept;
    }
  }
  TTemporaryTerminator(const TTemporaryTerminator&) = delete;
  TTemporaryTerminator& operator=(const TTemporaryTerminator&) = delete;

  /// Leaves the zero where it is.
  void Keep() { m_Place = nullptr; }

private:
  char* m_Place;
  char m_Kept;
};

} // namespace zx_text
