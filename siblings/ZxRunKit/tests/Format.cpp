#include <ZxRunKit/ZxRunKit.h>

#include <climits>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <locale.h>

#include "CommaLocale.h"
#include "object/FailingMalloc.h"

namespace {

thread_local bool s_NoNewLocale = false; // the calling thread gets none

} // namespace

// The program's own, which the library calls, too.
extern "C" [[gnu::visibility("default")]] locale_t newlocale(int mask, const char* name,
                                                             locale_t base) noexcept {
  static const auto s_Real = reinterpret_cast<decltype(&newlocale)>(dlsym(RTLD_NEXT, "newlocale"));
  return s_NoNewLocale ? nullptr : s_Real(mask, name, base);
}

namespace {

using Zentrix::ssprintf;

TEST(Ssprintf, WritesWhatPrintfWrites) {
  EXPECT_EQ(ssprintf("plain"), "plain");
  EXPECT_EQ(ssprintf("%s", ""), "");
  EXPECT_EQ(ssprintf("%d|%u|%lli|%llu", -5, 4294967295U, LLONG_MIN, ULLONG_MAX),
            "-5|4294967295|-9223372036854775808|18446744073709551615");
  EXPECT_EQ(ssprintf("%f %0.16f %%", 0.5, 0.25), "0.500000 0.2500000000000000 %");
  EXPECT_EQ(ssprintf("%5s|%-5s|%c", "ab", "cd", 'e'), "   ab|cd   |e");
}

// Every length around the buffers that a formatter may use inside.
TEST(Ssprintf, HasNoLimitOfLength) {
  for (const std::size_t length : {0, 1, 254, 255, 256, 257, 510, 511, 512, 513, 4095, 100000}) {
    const std::string text(length, 'x');
    EXPECT_EQ(ssprintf("<%s>", text.c_str()), "<" + text + ">") << length;
  }
}

TEST(Ssprintf, WritesTheLargestDouble) {
  const std::string text = ssprintf("%0.16f", 1.7976931348623157e308);
  ASSERT_EQ(text.size(), 309U + 1 + 16);
  EXPECT_EQ(text.substr(0, 17), "17976931348623157");
  EXPECT_EQ(text.substr(308), "8.0000000000000000");
}

TEST(Ssprintf, IsEmptyWithoutAFormat) {
  const char* const none = nullptr;
  EXPECT_EQ(ssprintf(none), "");
}

// The "C" locale has no bytes for this character.
TEST(Ssprintf, IsEmptyWhereTheLibraryRefuses) { EXPECT_EQ(ssprintf("a%lsb", L"\u0416"), ""); }

TEST(Ssprintf, DoesNotFollowTheHostsLocale) {
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  EXPECT_EQ(ssprintf("%f", 1.5), "1.500000");
  char text[8];
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  EXPECT_STREQ(text, "1,5") << "the host's locale is in force again";
}

TEST(Ssprintf, WideCharactersHaveTheEncodingOfTheLocaleAndNumbersThatOfC) {
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  unsetenv("LOCPATH"); // in whose presence the C library loses memory for each locale it makes
  EXPECT_EQ(ssprintf("%ls %.1f", L"\u0416\u20AC", 1.5), "\u0416\u20AC 1.5");
  EXPECT_EQ(ssprintf("%.1f %'d %5lc|%-3ls|", 1.5, 1234567, wchar_t{0x416}, L"\u00E9"),
            "1.5 1234567    \u0416|\u00E9 |");
  EXPECT_EQ(ssprintf("%S%C %f", L"\u0416", wchar_t{0x416}, 0.5), "\u0416\u0416 0.500000");
  EXPECT_EQ(ssprintf("%2$ls %1$.1f", 1.5, L"\u0416"), "\u0416 1.5");
  EXPECT_EQ(ssprintf("%%ls %.1f %%", 2.5), "%ls 2.5 %");
  char text[8];
  std::snprintf(text, sizeof text, "%.1f", 1.5);
  EXPECT_STREQ(text, "1,5") << "the host's locale is in force again";
}

// The thread's own locale counts, not the process's.
TEST(Ssprintf, WideCharactersInTheThreadsOwnLocale) {
  const locale_t mine = newlocale(LC_ALL_MASK, "C.utf8", nullptr);
  ASSERT_NE(mine, nullptr);
  const locale_t before = uselocale(mine);
  EXPECT_EQ(ssprintf("%ls", L"\u0416"), "\u0416");
  EXPECT_EQ(uselocale(nullptr), mine);
  uselocale(before);
  freelocale(mine);
}

TEST(Ssprintf, KeepsTheThreadsOwnLocale) {
  const locale_t mine = newlocale(LC_ALL_MASK, "C.utf8", nullptr);
  ASSERT_NE(mine, nullptr);
  const locale_t before = uselocale(mine);
  EXPECT_EQ(ssprintf("%.2f", 2.25), "2.25");
  EXPECT_EQ(uselocale(nullptr), mine);
  uselocale(before);
  freelocale(mine);
}

TEST(CLocale, IsTheSameObjectEachTime) {
  ASSERT_NE(Zentrix::CLocale(), nullptr);
  EXPECT_EQ(Zentrix::CLocale(), Zentrix::CLocale());
  EXPECT_EQ(strtod_l("1.5", nullptr, Zentrix::CLocale()), 1.5);
}

TEST(ZxRunKitModule, CountsItsUsers) {
  Deinit_ZxRunKit();
  Init_ZxRunKit();
  Init_ZxRunKit();
  Deinit_ZxRunKit();
  EXPECT_EQ(ssprintf("%d", 1), "1");
  Deinit_ZxRunKit();
  Deinit_ZxRunKit();
}

// The C library refuses a conversion without an end.
TEST(Ssprintf, IsEmptyForAFormatThatEndsWithinAConversion) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer reads such a format past its end";
  }
  for (const char* format : {"abc%", "abc%5", "abc%l", "%d%", "abc%-"}) {
    EXPECT_EQ(ssprintf(format, 1), "") << format;
  }
}

TEST(Ssprintf, WideCharactersByThemselves) {
  EXPECT_EQ(ssprintf("%C|%lc|%5C", wchar_t{'a'}, wchar_t{'b'}, wchar_t{'c'}), "a|b|    c");
}

struct TFormatted {
  std::string Text;
  bool Failed; ///< an allocation did
  bool Thrown; ///< std::bad_alloc was
};

// Formats while the allocation of that number fails.
template <class... TArguments>
TFormatted FormatFailingAt(unsigned long at, const char* format, TArguments... arguments) {
  TFormatted formatted = {};
  const zx_test::TMallocWatch watch(at);
  try {
    formatted.Text = ssprintf(format, arguments...);
  } catch (const std::bad_alloc&) {
    formatted.Thrown = true;
  }
  formatted.Failed = watch.Failed();
  return formatted;
}

// Either the whole text or bad_alloc, never a part of it.
TEST(Ssprintf, RaisesWhereMemoryIsExhausted) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const std::string expected = "1.5" + std::string(99999, '0');
  int raised = 0;
  for (unsigned long at = 1;; ++at) {
    ASSERT_LT(at, 100u);
    const auto [text, failed, thrown] = FormatFailingAt(at, "%.100000f", 1.5);
    EXPECT_EQ(text, thrown ? "" : expected) << at;
    if (!failed) {
      EXPECT_FALSE(thrown);
      break;
    }
    raised += thrown ? 1 : 0;
  }
  EXPECT_GT(raised, 1); // the C library's own memory, and the text's
}

// Where no locale can be had that writes numbers as "C" does, the host's stays in force, and is so
// afterwards.
TEST(Ssprintf, WideCharactersWhereMemoryIsExhausted) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  unsetenv("LOCPATH");
  const locale_t before = uselocale(nullptr);
  bool hosts = false;
  for (unsigned long at = 1;; ++at) {
    ASSERT_LT(at, 100u);
    const auto [text, failed, thrown] = FormatFailingAt(at, "%ls %.1f", L"\u0416", 1.5);
    EXPECT_EQ(uselocale(nullptr), before);
    if (!thrown) {
      hosts = hosts || text == "\u0416 1,5";
      EXPECT_TRUE(text == "\u0416 1.5" || text == "\u0416 1,5") << text;
    }
    if (!failed) {
      EXPECT_EQ(text, "\u0416 1.5");
      break;
    }
  }
  EXPECT_TRUE(hosts);
}

// A refused locale leaves the copy that it was to be made of with the caller.
TEST(Ssprintf, LosesNothingWhereNoLocaleCanBeMade) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  EXPECT_EQ(ssprintf("%ls %.1f", L"x", 1.5), "x 1.5"); // what is made once is there
  unsetenv("LOCPATH");
  long left = 0;
  unsigned long made = 0;
  {
    s_NoNewLocale = true;
    const zx_test::TMallocWatch watch;
    EXPECT_EQ(ssprintf("%ls %.1f", L"x", 1.5), "x 1,5");
    left = watch.LiveBlocks();
    made = watch.Allocations();
    s_NoNewLocale = false;
  }
  EXPECT_EQ(left, 0);
  EXPECT_GT(made, 0u); // the copy at the least
}

} // namespace
