#include <ZxRunKit/Format.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <langinfo.h>
#include <locale.h>
#include <new>

#include <ZxRunKit/CLocale.h>

namespace Zentrix {

namespace {

// Whether a format converts wide characters, for which it needs the encoding of the locale: "%ls",
// "%lc", "%S", "%C".
bool HasWideCharacters(const char* format) {
  for (const char* at = std::strchr(format, '%'); at != nullptr; at = std::strchr(at + 1, '%')) {
    at += 1 + std::strspn(at + 1, "#0- +'I123456789.*$");
    const std::size_t lengths = std::strspn(at, "hlLqjzt");
    const bool isLong = std::memchr(at, 'l', lengths) != nullptr;
    at += lengths;
    if (*at == 'S' || *at == 'C' || (isLong && (*at == 's' || *at == 'c'))) {
      return true;
    }
    if (*at == '\0') {
      return false;
    }
  }
  return false;
}

// Whether the locale in force writes numbers as "C" does.
bool IsNumericC() {
  return std::strcmp(nl_langinfo(RADIXCHAR), ".") == 0 && *nl_langinfo(THOUSEP) == '\0';
}

// The locale in force, but with the numbers of "C"; null where it can't be made.
locale_t MakeNumericC() {
  const locale_t copy = duplocale(uselocale(nullptr));
  if (copy == nullptr) {
    return nullptr;
  }
  const locale_t made = newlocale(LC_NUMERIC_MASK, "C", copy);
  if (made == nullptr) {
    freelocale(copy);
  }
  return made;
}

// Switches the calling thread to numbers of the "C" locale for its lifetime. Where no such locale
// can be had the host's stays in force.
class TNumericCLocale {
public:
  explicit TNumericCLocale(const char* format) {
    locale_t wanted = CLocale();
    if (HasWideCharacters(format)) {
      m_Made = IsNumericC() ? nullptr : MakeNumericC();
      wanted = m_Made;
    }
    m_Previous = wanted != nullptr ? uselocale(wanted) : nullptr;
  }
  ~TNumericCLocale() {
    if (m_Previous != nullptr) {
      uselocale(m_Previous);
    }
    if (m_Made != nullptr) {
      freelocale(m_Made);
    }
  }
  TNumericCLocale(const TNumericCLocale&) = delete;
  TNumericCLocale& operator=(const TNumericCLocale&) = delete;

private:
  locale_t m_Made = nullptr; // of its own; most formats do without
  locale_t m_Previous = nullptr;
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
  const TNumericCLocale locale(format);
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
