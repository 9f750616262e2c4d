#include <ZxRunKit/Format.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <locale.h>
#include <new>

#include <ZxRunKit/CLocale.h>

namespace Zentrix {

namespace {

// Switches the calling thread to the "C" locale for its lifetime. Where that locale can't be had
// the host's stays in force.
class TNumericCLocale {
public:
  TNumericCLocale() : m_Previous(CLocale() != nullptr ? uselocale(CLocale()) : nullptr) {}
  ~TNumericCLocale() {
    if (m_Previous != nullptr) {
      uselocale(m_Previous);
    }
  }
  TNumericCLocale(const TNumericCLocale&) = delete;
  TNumericCLocale& operator=(const TNumericCLocale&) = delete;

private:
  locale_t m_Previous;
};

// What `vsnprintf` returned, with exhausted memory told apart from a refused format.
std::size_t CheckedLength(int length) {
  if (length >= 0) {
    return static_cast<std::size_t>(length);
  }
  if (errno == ENOMEM) {
    throw std::bad_alloc();
  }
  return 0;
}

std::string Format(const char* format, va_list arguments, va_list again) {
  const TNumericCLocale locale;
  char local[512];
  const std::size_t size = CheckedLength(std::vsnprintf(local, sizeof local, format, arguments));
  if (size < sizeof local) {
    return std::string(local, size);
  }
  std::string text(size, '\0');
  text.resize(CheckedLength(std::vsnprintf(text.data(), size + 1, format, again)));
  return text;
}

} // namespace

std::string ssprintf(const char* format, ...) {
  if (format == nullptr) {
    return std::string();
  }
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  // va_end does nothing on x86-64, so that nothing is lost where an exception passes by it.
  std::string text = Format(format, arguments, again);
  va_end(again);
  va_end(arguments);
  return text;
}

} // namespace Zentrix
