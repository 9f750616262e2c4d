#include <ZxCore3D/util/FileNames.h>

#include <cstring>
#include <cwchar>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "CommaLocale.h"

namespace {

constexpr unsigned long kMeasure = ~0UL;
constexpr unsigned long kFail = ~0UL;

std::wstring Wide(const std::string& text) { return std::wstring(text.begin(), text.end()); }

template <class TChar>
using TExtract = unsigned long (*)(const TChar*, unsigned long, TChar*, unsigned long);

// Runs one form into a buffer of exactly `size` characters between guards; the text, "~" on
// failure.
template <class TChar>
std::basic_string<TChar> Extracted(TExtract<TChar> form, const std::basic_string<TChar>& name,
                                   unsigned long length, unsigned long size) {
  std::vector<TChar> buffer(size + 8, TChar('#'));
  const unsigned long result = form(name.c_str(), length, buffer.data() + 4, size);
  for (unsigned long i = 0; i < 4; ++i) {
    EXPECT_EQ(buffer[i], TChar('#'));
    EXPECT_EQ(buffer[size + 4 + i], TChar('#')) << "written behind the capacity";
  }
  if (result == kFail) {
    for (const TChar c : buffer) {
      EXPECT_EQ(c, TChar('#')) << "nothing is copied where it does not fit";
    }
    return {TChar('~')};
  }
  EXPECT_LT(result, size);
  EXPECT_EQ(buffer[4 + result], TChar(0));
  return {buffer.data() + 4, result};
}

// One case through the narrow and the wide form: measured, counted without a terminator behind, and
// with capacities that just do and just don't suffice.
void Check(TExtract<char> narrow, TExtract<wchar_t> wide, const std::string& name,
           const std::string& expected, bool emptyNeedsRoom) {
  EXPECT_EQ(Extracted(narrow, name, kMeasure, 64), expected) << name;
  EXPECT_EQ(Extracted(wide, Wide(name), kMeasure, 64), Wide(expected)) << name;
  const std::string more = name + ".zz/yy.x";
  EXPECT_EQ(Extracted(narrow, more, name.size(), 64), expected) << name;
  EXPECT_EQ(Extracted(wide, Wide(more), name.size(), 64), Wide(expected)) << name;
  EXPECT_EQ(Extracted(narrow, name, kMeasure, expected.size() + 1), expected) << name;
  EXPECT_EQ(Extracted(wide, Wide(name), kMeasure, expected.size() + 1), Wide(expected)) << name;
  if (!expected.empty() || emptyNeedsRoom) {
    EXPECT_EQ(Extracted(narrow, name, kMeasure, expected.size()), "~") << name;
    EXPECT_EQ(Extracted(wide, Wide(name), kMeasure, expected.size()), L"~") << name;
  }
}

TEST(ExtractFileName, IsBehindTheLastSeparator) {
  const auto check = [](const char* name, const char* expected) {
    Check(&ExtractFileName, &ExtractFileName, name, expected, true);
  };
  check("a/b\\c", "c");
  check("a\\b/c.d", "c.d");
  check("a/", "");
  check("a\\", "");
  check("", "");
  check("plain", "plain");
  check("/x", "x");
  EXPECT_EQ(Extracted<char>(&ExtractFileName, "a/bc", kMeasure - 1, 64), "bc");
  EXPECT_EQ(Extracted<wchar_t>(&ExtractFileName, L"a/bc", kMeasure - 1, 64), L"bc");
}

TEST(ExtractFileName, FitsBelowTheCapacity) {
  EXPECT_EQ(Extracted<char>(&ExtractFileName, "abcde", kMeasure, 5), "~");
  EXPECT_EQ(Extracted<char>(&ExtractFileName, "abcde", kMeasure, 6), "abcde");
}

TEST(ExtractFilePath, IsBeforeTheLastSeparator) {
  const auto check = [](const char* name, const char* expected, bool needsRoom = false) {
    Check(&ExtractFilePath, &ExtractFilePath, name, expected, needsRoom);
  };
  check("a/b/c", "a/b");
  check("a\\b/", "a\\b");
  check("/c", "", true);
  check("\\", "", true);
  EXPECT_EQ(Extracted<char>(&ExtractFilePath, "a/b/c", kMeasure - 1, 64), "a/b");
  EXPECT_EQ(Extracted<wchar_t>(&ExtractFilePath, L"a/b/c", kMeasure - 1, 64), L"a/b");
}

// The terminator of these empty results is written whatever the capacity.
TEST(ExtractFilePath, WithoutASeparatorIsEmptyAtAnyCapacity) {
  for (const char* const name : {"c", ""}) {
    for (const unsigned long size : {0UL, 1UL, 9UL}) {
      char out[2] = "#";
      EXPECT_EQ(ExtractFilePath(name, kMeasure, out, size), 0U);
      EXPECT_EQ(out[0], '\0');
      wchar_t wide[2] = L"#";
      EXPECT_EQ(ExtractFilePath(Wide(name).c_str(), kMeasure, wide, size), 0U);
      EXPECT_EQ(wide[0], L'\0');
    }
  }
}

TEST(ExtractFileTitle, IsTheFileNameWithoutItsLastExtension) {
  const auto check = [](const char* name, const char* expected) {
    Check(&ExtractFileTitle, &ExtractFileTitle, name, expected, true);
  };
  check("d.x/a.b.c", "a.b");
  check("d.x/a", "a");
  check("a.", "a");
  check(".profile", "");
  check("d/.profile", "");
  check("", "");
  check("d.x\\", "");
  EXPECT_EQ(Extracted<char>(&ExtractFileTitle, "a/b.c", kMeasure - 1, 64), "b");
}

TEST(ExtractFileTitle, OnlyTheNarrowFormMeasuresOnTheSecondLength) {
  EXPECT_EQ(Extracted<wchar_t>(&ExtractFileTitle, L"a/b.c", kMeasure - 1, 64), L"~");
}

TEST(ExtractFileExt, IsTheTextFromTheLastPoint) {
  const auto check = [](const char* name, const char* expected) {
    Check(&ExtractFileExt, &ExtractFileExt, name, expected, false);
  };
  check("a.b.c", ".c");
  check("d.x/a.b", ".b");
  check("a.", ".");
  check(".profile", ".profile");
}

TEST(ExtractFileExt, ItsEmptyResultsHaveNoCapacityTest) {
  for (const char* const name : {"", "a", "d.x/a", "d.x\\", "a.b/"}) {
    for (const unsigned long size : {0UL, 1UL, 9UL}) {
      char out[2] = "#";
      EXPECT_EQ(ExtractFileExt(name, kMeasure, out, size), 0U) << name;
      EXPECT_EQ(out[0], '\0');
      wchar_t wide[2] = L"#";
      EXPECT_EQ(ExtractFileExt(Wide(name).c_str(), kMeasure, wide, size), 0U);
      EXPECT_EQ(wide[0], L'\0');
    }
  }
}

TEST(FindChar, FindsTheFirstBeforeTheTerminator) {
  const char* const text = "abcabc";
  EXPECT_EQ(FindChar(text, 'b'), text + 1);
  EXPECT_EQ(FindChar(text, 'x'), nullptr);
  EXPECT_EQ(FindChar(text, '\0'), nullptr);
  EXPECT_EQ(FindChar("", 'a'), nullptr);
  const wchar_t* const wide = L"ab\x416";
  EXPECT_EQ(FindChar(wide, L'\x416'), wide + 2);
  EXPECT_EQ(FindChar(wide, L'\0'), nullptr);
}

TEST(FindCharR, FindsTheLastAmongSoMany) {
  const char text[] = "abcab\0c";
  EXPECT_EQ(FindCharR(text, 5, 'a'), text + 3);
  EXPECT_EQ(FindCharR(text, 3, 'a'), text);
  EXPECT_EQ(FindCharR(text, 0, 'a'), nullptr);
  EXPECT_EQ(FindCharR(text, 5, 'x'), nullptr);
  EXPECT_EQ(FindCharR(text, 7, 'c'), text + 6) << "a terminator does not end the range";
  EXPECT_EQ(FindCharR(text, 7, '\0'), text + 5);
  const wchar_t wide[] = L"abcab";
  EXPECT_EQ(FindCharR(wide, 5, L'b'), wide + 4);
  EXPECT_EQ(FindCharR(wide, 4, L'b'), wide + 1);
}

TEST(FindSlash, KnowsBothSeparators) {
  const char* const text = "ab\\c/d";
  EXPECT_EQ(FindSlash(text), text + 2);
  EXPECT_EQ(FindSlashR(text, kMeasure), text + 4);
  EXPECT_EQ(FindSlashR(text, 4), text + 2);
  EXPECT_EQ(FindSlashR(text, 2), nullptr);
  EXPECT_EQ(FindSlashR(text, 0), nullptr);
  EXPECT_EQ(FindSlashR("", kMeasure), nullptr);
  EXPECT_EQ(FindSlash("ab"), nullptr);
  const wchar_t* const wide = L"a/b\\";
  EXPECT_EQ(FindSlash(wide), wide + 1);
  EXPECT_EQ(FindSlashR(wide, kMeasure), wide + 3);
  EXPECT_EQ(FindSlashR(wide, 1), nullptr);
}

// Names of several bytes a character, and wide characters whose low byte alone would be a separator
// or a point: U+012F, U+015C, U+012E.
void CheckNamesBeyondAscii() {
  const std::string folder = "\u65E5\u672C.\u00FC";
  const std::string title = "gr\u00FC\u00DFe \u20AC";
  const std::string name = folder + "\\" + title + ".\u0416";
  EXPECT_EQ(Extracted<char>(ExtractFileName, name, kMeasure, 64), title + ".\u0416");
  EXPECT_EQ(Extracted<char>(ExtractFilePath, name, kMeasure, 64), folder);
  EXPECT_EQ(Extracted<char>(ExtractFileTitle, name, kMeasure, 64), title);
  EXPECT_EQ(Extracted<char>(ExtractFileExt, name, kMeasure, 64), ".\u0416");
  EXPECT_EQ(Extracted<char>(ExtractFileExt, folder + "/x", kMeasure, 64), "");
  const std::wstring wide = L"\u012F\u015C/\u012E\u012F.\u015C\u012E";
  EXPECT_EQ(Extracted<wchar_t>(ExtractFileName, wide, kMeasure, 64), L"\u012E\u012F.\u015C\u012E");
  EXPECT_EQ(Extracted<wchar_t>(ExtractFilePath, wide, kMeasure, 64), L"\u012F\u015C");
  EXPECT_EQ(Extracted<wchar_t>(ExtractFileTitle, wide, kMeasure, 64), L"\u012E\u012F");
  EXPECT_EQ(Extracted<wchar_t>(ExtractFileExt, wide, kMeasure, 64), L".\u015C\u012E");
  EXPECT_EQ(FindSlash(L"\u012F\u015C"), nullptr);
  const wchar_t text[] = L"\u0161a"; // the low byte of U+0161 is an a
  EXPECT_EQ(FindChar(text, L'a'), text + 1);
  EXPECT_FALSE(IsFullFileName("\u00E4:\\x", kMeasure));
  for (int i = 128; i < 256; ++i) {
    EXPECT_FALSE(IsAlpha(static_cast<char>(i))) << i;
  }
  char out[64];
  const unsigned long size =
      RelativeToFullFileName("..\\\u00FC.x", kMeasure, "c:\\\u65E5\\\u672C", kMeasure, out, 64);
  ASSERT_NE(size, kFail);
  EXPECT_EQ(std::string(out, size), "c:\\\u65E5\\\u00FC.x");
  // U+00E4 and U+00E5 have their first byte in common, which is no place to part a name.
  const unsigned long relative =
      FullToRelativeFileName("c:\\a\\\u00E5.x", kMeasure, "c:\\a\\\u00E4", kMeasure, out, 64);
  ASSERT_NE(relative, kFail);
  EXPECT_EQ(std::string(out, relative), "..\\\u00E5.x");
}

TEST(FileNames, BeyondAsciiInEveryLocale) {
  CheckNamesBeyondAscii();
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  CheckNamesBeyondAscii();
}

// The second special length of other functions is none here: no name is that long.
TEST(ExtractFileExt, MeasuresOnOneLengthOnly) {
  EXPECT_EQ(Extracted<char>(&ExtractFileExt, "a/b.c", kMeasure - 1, 64), "~");
  EXPECT_EQ(Extracted<wchar_t>(&ExtractFileExt, L"a/b.c", kMeasure - 1, 64), L"~");
}

} // namespace
