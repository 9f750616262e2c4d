#include <ZxCore3D/util/TextNumbers.h>

#include <cstring>

#include <ZxCore3D/util/private/TextScan.h>

namespace {

using namespace zx_text;

constexpr unsigned long kMeasure = ~0UL;

} // namespace

bool StringToUchar(const char* text, unsigned char* out) {
  unsigned int value = 0;
  if (!ReadDecimal(text, &value)) {
    return false;
  }
  *out = static_cast<unsigned char>(value);
  return true;
}

bool StringToUshort(const char* text, unsigned short* out) {
  unsigned int value = 0;
  if (!ReadDecimal(text, &value)) {
    return false;
  }
  *out = static_cast<unsigned short>(value);
  return true;
}

bool StringToUint(const char* text, unsigned int* out) { return ReadDecimal(text, out); }

bool StringToUint32(const char* text, unsigned int* out) { return ReadDecimal(text, out); }

bool StringToUlong(const char* text, unsigned long* out) { return ReadDecimal(text, out); }

bool StringToSize_t(const char* text, unsigned long* out) { return ReadDecimal(text, out); }

bool StringToInt(const char* text, int* out) { return ReadSigned<unsigned int>(text, out); }

bool StringToInt32(const char* text, int* out) { return ReadSigned<unsigned int>(text, out); }

bool StringToLong(const char* text, long* out) { return ReadSigned<unsigned long>(text, out); }

bool StringToUint(const char* text, unsigned long length, unsigned int* out) {
  if (length >= kMeasure - 1) {
    length = std::strlen(text);
  }
  return ReadDecimal(text, length, out);
}

bool StringToInt(const char* text, unsigned long length, int* out) {
  if (length >= kMeasure - 1) {
    length = std::strlen(text);
  }
  return ReadSigned<unsigned int>(text, length, out);
}

bool StringToInt64(const char* text, unsigned long length, long* out) {
  if (length == kMeasure) {
    length = std::strlen(text);
  }
  return ReadSigned<unsigned long>(text, length, out);
}

bool StringToUint64(const char* text, unsigned long length, unsigned long* out) {
  if (length == kMeasure) {
    length = std::strlen(text);
  }
  return ReadDecimal(text, length, out);
}

bool StringToOct(const char* text, unsigned int* out) { return ReadOctal(text, out); }

bool StringToOct(const char* text, unsigned long* out) { return ReadOctal(text, out); }

bool StringToHex(const char* text, unsigned int* out) {
  unsigned int value = 0;
  do {
    const unsigned int digit = HexDigit(*text);
    if (digit > 15) {
      return false;
    }
    value = value * 16 + digit;
  } while (*++text != '\0');
  *out = value;
  return true;
}

bool StringToBool(const char* text, bool* out) {
  int value = 0;
  if (!ReadSigned<unsigned int>(text, &value)) {
    return false;
  }
  *out = value != 0;
  return true;
}

bool StringToBool(const char* text, unsigned long length, bool* out) {
  const TTemporaryTerminator cut(text + length);
  return StringToBool(text, out);
}

bool StringToInt(const char* text, unsigned long length, int* out, const char** end) {
  if (length == kMeasure) {
    length = std::strlen(text);
  }
  const char* const stop = text + length;
  const char* at = text;
  const bool negative = SkipSign(&at, stop);
  unsigned int value = 0;
  const bool found = ReadDigits(&at, stop, &value);
  if (found) {
    *out = static_cast<int>(negative ? 0U - value : value);
  }
  if (end != nullptr) {
    *end = at;
  }
  return found;
}
