#include <ZxRunKit/CLocale.h>

namespace Zentrix {

locale_t CLocale() {
  static const locale_t s_Locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return s_Locale;
}

} // namespace Zentrix
