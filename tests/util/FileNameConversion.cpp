#include <ZxCore3D/util/FileNames.h>

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr unsigned long kMeasure = ~0UL;
constexpr unsigned long kFail = ~0UL;

using TConvert = unsigned long (*)(const char*, unsigned long, const char*, unsigned long, char*,
                                   unsigned long);

std::string Converted(TConvert form, const std::string& name, const std::string& base,
                      unsigned long size) {
  std::vector<char> buffer(size + 8, '#');
  const unsigned long result =
      form(name.c_str(), kMeasure, base.c_str(), kMeasure, buffer.data() + 4, size);
  for (unsigned long i = 0; i < 4; ++i) {
    EXPECT_EQ(buffer[i], '#');
    EXPECT_EQ(buffer[size + 4 + i], '#') << "written behind the capacity";
  }
  if (result == kFail) {
    return "~";
  }
  EXPECT_LT(result, size);
  EXPECT_EQ(buffer[4 + result], '\0');
  return std::string(buffer.data() + 4, result);
}

// The result at ample capacity, and the least capacity that gives it.
void Check(TConvert form, const std::string& name, const std::string& base,
           const std::string& expected, unsigned long least) {
  EXPECT_EQ(Converted(form, name, base, 128), expected) << name << " " << base;
  if (expected == "~") {
    return;
  }
  EXPECT_EQ(Converted(form, name, base, least), expected) << name << " " << base;
  for (unsigned long size = 0; size < least; ++size) {
    EXPECT_EQ(Converted(form, name, base, size), "~") << name << " " << base << " " << size;
  }
}

TEST(IsAlpha, IsAnAsciiLetter) {
  for (int i = 0; i < 256; ++i) {
    EXPECT_EQ(IsAlpha(static_cast<char>(i)), (i >= 65 && i <= 90) || (i >= 97 && i <= 122)) << i;
  }
}

TEST(IsFullFileName, NeedsADriveOrTwoBackslashes) {
  for (const char* const name : {"c:\\x", "C:/x", "z:\\", "\\\\s\\x", "\\\\s", "\\\\\\"}) {
    EXPECT_TRUE(IsFullFileName(name, kMeasure)) << name;
  }
  for (const char* const name :
       {"c:x", "ab", "/usr/x", "", "c:", "\\\\", "1:\\x", "//s/x", "\\/s", "c;\\x", "\\x\\y"}) {
    EXPECT_FALSE(IsFullFileName(name, kMeasure)) << name;
  }
  EXPECT_TRUE(IsFullFileName("c:\\x", 3));
  EXPECT_FALSE(IsFullFileName("c:\\x", 2));
}

void CheckFull(const char* name, const char* base, const char* expected, unsigned long least = 0) {
  // The base, a separator and a terminator have to fit on the way, and each .. takes from there.
  Check(&RelativeToFullFileName, name, base, expected,
        least != 0 ? least : std::strlen(expected) + 1);
}

TEST(RelativeToFullFileName, ResolvesAgainstTheBase) {
  CheckFull("f", "c:\\a", "c:\\a\\f");
  CheckFull("..\\f", "c:\\a\\b", "c:\\a\\f", 8);
  CheckFull("../f", "c:\\a\\b\\", "c:\\a\\f", 8);
  CheckFull(".\\f", "c:\\a\\", "c:\\a\\f");
  CheckFull("./g\\./f", "c:\\a", "c:\\a\\g\\f");
  CheckFull("", "c:\\a", "c:\\a\\");
  CheckFull("", "", "");
  CheckFull("f", "", "f");
  CheckFull("f", "c:/a/", "c:/a/f");
  CheckFull("..\\..\\f", "c:\\a\\b", "c:\\f", 8);
  CheckFull("x\\..\\f", "c:\\a", "c:\\a\\f", 8);
}

TEST(RelativeToFullFileName, DoesNotLeaveTheRoot) {
  CheckFull("..\\f", "c:\\", "~");
  CheckFull("..\\..\\f", "c:\\a", "~");
  CheckFull("..\\f", "ab", "~");
  CheckFull("..\\f", "a", "~");
  CheckFull("..\\f", "", "~");
}

// The loop looks at points wherever it stands.
TEST(RelativeToFullFileName, SeesPointsInsideAComponentToo) {
  CheckFull("a.b/c", "c:\\", "c:\\a.b/c");
  CheckFull("a./b", "c:\\", "c:\\ab");
  CheckFull("a/..", "c:\\", "c:\\a/..");
  CheckFull("..", "c:\\a", "c:\\a\\..");
  CheckFull(".", "c:\\a", "c:\\a\\.");
  CheckFull("ab..\\f", "c:\\d", "c:\\d\\f", 8);
}

TEST(RelativeToFullFileName, DoesNotUseTheNamesLength) {
  char out[32];
  EXPECT_EQ(RelativeToFullFileName("abc", 1, "c:\\", 3, out, sizeof out), 6U);
  EXPECT_STREQ(out, "c:\\abc");
  EXPECT_EQ(RelativeToFullFileName("f", 0, "c:\\a\\bcd", 4, out, sizeof out), 6U);
  EXPECT_STREQ(out, "c:\\a\\f") << "but it does use the base's";
}

TEST(GetFullFileName, KeepsAFullName) {
  Check(&GetFullFileName, "c:\\a\\..\\b", "d:\\x", "c:\\a\\..\\b", 10);
  Check(&GetFullFileName, "\\\\s\\x", "d:\\x", "\\\\s\\x", 6);
  Check(&GetFullFileName, "..\\f", "c:\\a\\b", "c:\\a\\f", 8);
  Check(&GetFullFileName, "/f", "c:\\a", "c:\\a\\/f", 8);
  Check(&GetFullFileName, "c:", "d:\\", "d:\\c:", 6);
  char out[16];
  EXPECT_EQ(GetFullFileName("c:\\abc", 4, "", 0, out, sizeof out), 4U);
  EXPECT_STREQ(out, "c:\\a");
}

void CheckRelative(const char* name, const char* base, const char* expected) {
  Check(&FullToRelativeFileName, name, base, expected, std::strlen(expected) + 1);
}

TEST(FullToRelativeFileName, StepsUpForEachComponentOfTheBase) {
  CheckRelative("c:\\a\\b\\f.txt", "c:\\a\\x\\y", "..\\..\\b\\f.txt");
  CheckRelative("c:\\a\\b\\f.txt", "c:\\a\\x\\y\\", "..\\..\\b\\f.txt");
  CheckRelative("c:\\a\\b\\f.txt", "c:\\a\\b", "f.txt");
  CheckRelative("c:\\a\\b\\f.txt", "c:\\a\\b\\", "f.txt");
  CheckRelative("c:\\f", "c:\\a\\b\\c", "..\\..\\..\\f");
  CheckRelative("c:\\a\\f", "c:\\", "a\\f");
  CheckRelative("c:\\", "c:\\", "");
  CheckRelative("\\\\s\\x\\f", "\\\\s\\y", "..\\x\\f");
  CheckRelative("c:\\a\\f", "c:\\b//c", "..\\..\\..\\a\\f");
}

TEST(FullToRelativeFileName, OfTheBaseItselfIsItsLastComponentOneUp) {
  CheckRelative("c:\\a\\b", "c:\\a\\b", "..\\b");
  CheckRelative("c:\\a\\b\\", "c:\\a\\b\\", "");
}

TEST(FullToRelativeFileName, KeepsWhatCantBeRelative) {
  CheckRelative("c:\\a", "d:\\a", "c:\\a");
  CheckRelative("c:\\a", "C:\\a", "c:\\a");
  CheckRelative("a\\b", "c:\\a", "a\\b");
  CheckRelative("c:\\a\\b", "a", "c:\\a\\b");
  // The first letters agree, but one of the two is not full.
  CheckRelative("c:\\a\\b", "c", "c:\\a\\b");
  CheckRelative("c:\\a\\b", "c:a\\b", "c:\\a\\b");
  CheckRelative("c:\\a\\b", "cab\\a\\b", "c:\\a\\b");
  CheckRelative("\\\\s\\x", "\\s\\x", "\\\\s\\x");
  CheckRelative("cab\\f", "c:\\a", "cab\\f");
  CheckRelative("/usr/x", "/usr", "/usr/x");
  CheckRelative("", "c:\\", "");
}

// Case counts, and the two separators differ.
TEST(FullToRelativeFileName, ComparesBytes) {
  CheckRelative("c:\\A\\f", "c:\\a", "..\\A\\f");
  CheckRelative("c:\\a/f", "c:\\a\\b", "..\\f");
  CheckRelative("c:/a", "c:\\a", "..\\a");
}

TEST(FullToRelativeFileName, TakesTheNamesLastSeparatorAsCommon) {
  CheckRelative("c:\\a\\b\\f", "c:\\a\\bc", "f");
  CheckRelative("c:\\a\\b\\f", "c:\\a\\bc\\d", "..\\..\\f");
}

TEST(FullToRelativeFileName, TakesLengths) {
  char out[32];
  EXPECT_EQ(FullToRelativeFileName("c:\\a\\bXX", 6, "c:\\a\\YY", 4, out, sizeof out), 1U);
  EXPECT_STREQ(out, "b");
}

} // namespace
