#include <ZxCore3D/util/TextNumbers.h>

#include <cstring>

#include <ZxCore3D/util/private/TextScan.h>

namespace {

using zx_text::TTemporaryTerminator;

// `read` is one of the terminated forms.
template <class T>
bool ReadList(const char* text, char separator, T* out, unsigned long count,
              bool (*read)(const char*, T*)) {
  if (count == 0 || (separator == '\0' && count > 1)) {
    return false;
  }
  for (; count > 1; --count) {
    const char* const next = std::strchr(text, separator);
    if (next == nullptr) {
      return false;
    }
    TTemporaryTerminator cut(next);
    if (!read(text, out)) {
      cut.Keep();
      return false;
    }
    ++out;
    text = next + 1;
  }
  return read(text, out);
}

} // namespace

bool StringToUchar(const char* text, char separator, unsigned char* out, unsigned long count) {
  return ReadList<unsigned char>(text, separator, out, count, &StringToUchar);
}

bool StringToInt(const char* text, char separator, int* out, unsigned long count) {
  return ReadList<int>(text, separator, out, count, &StringToInt);
}

bool StringToSize_t(const char* text, char separator, unsigned long* out, unsigned long count) {
  return count == 0 || ReadList<unsigned long>(text, separator, out, count, &StringToSize_t);
}

bool StringToFloat(const char* text, char separator, float* out, unsigned long count) {
  return ReadList<float>(text, separator, out, count, &StringToFloat);
}

bool StringToFloat(const char* text, char separator, double* out, unsigned long count) {
  return ReadList<double>(text, separator, out, count, &StringToFloat);
}

bool StringToInt(const char* text, unsigned long length, char separator, int* out,
                 unsigned long count) {
  if (count == 0) {
    return true;
  }
  if (length == ~0UL) {
    length = std::strlen(text);
  }
  const char* const stop = text + length;
  while (text != stop) {
    const bool negative = zx_text::SkipSign(&text, stop);
    unsigned int value = 0;
    if (!zx_text::ReadDigits(&text, stop, &value)) {
      return false;
    }
    *out++ = static_cast<int>(negative ? 0U - value : value);
    --count;
    if (text == stop) {
      return count == 0;
    }
    if (*text++ != separator) {
      return false;
    }
    if (count == 0) {
      return text == stop;
    }
  }
  return false;
}
