#include <ZxRunKit/Format.h>

#include <clocale>
#include <cstdarg>
#include <cstdio>
#include <locale.h>

namespace Zentrix {

namespace {

// Switches the calling thread to the "C" locale for its lifetime. Where that locale can't be had
// the host's stays in force.
class TNumericCLocale {
public:
  TNumericCLocale() : m_Previous(Get() != nullptr ? uselocale(Get()) : nullptr) {}
  ~TNumericCLocale() {
    if (m_Previous != nullptr) {
      uselocale(m_Previous);
    }
  }
  TNumericCLocale(const TNumericCLocale&) = delete;
  TNumericCLocale& operator=(const TNumericCLocale&) = delete;

private:
  static locale_t Get() {
    static const locale_t s_C = newlocale(LC_ALL_MASK, "C", nullptr);
    return s_C;
  }

  locale_t m_Previous;
};

} // namespace

std::string ssprintf(const char* format, ...) {
  std::string text;
  if (format == nullptr) {
    return text;
  }
  const TNumericCLocale locale;
  char local[256];
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(local, sizeof local, format, arguments);
  va_end(arguments);
  if (length >= 0) {
    const auto size = static_cast<std::size_t>(length);
    if (size < sizeof local) {
      text.assign(local, size);
    } else {
      text.resize(size + 1);
      std::vsnprintf(text.data(), size + 1, format, again);
      text.resize(size);
    }
  }
  va_end(again);
  return text;
}

} // namespace Zentrix
