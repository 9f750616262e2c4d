#include <ZxCore3D/util/TextWords.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

namespace {

TEST(AnsiUpperCase, ChangesAToZAlone) {
  for (int i = 0; i < 256; ++i) {
    const char c = static_cast<char>(i);
    const char expected = i >= 97 && i <= 122 ? static_cast<char>(i - 32) : c;
    EXPECT_EQ(AnsiUpperCase(c), expected) << i;
  }
}

TEST(AnsiUpperCase, WorksInPlaceUpToTheTerminator) {
  char text[] = "abcXYZ{`\xE4z\0abc";
  AnsiUpperCase(text);
  EXPECT_EQ(std::memcmp(text, "ABCXYZ{`\xE4Z\0abc", sizeof text), 0);
  char empty[] = "";
  AnsiUpperCase(empty);
  EXPECT_STREQ(empty, "");
}

TEST(StringCharReplace, ReplacesEachOne) {
  char text[] = "a/b//c";
  StringCharReplace(text, '/', '\\');
  EXPECT_STREQ(text, "a\\b\\\\c");
  StringCharReplace(text, 'x', 'y');
  EXPECT_STREQ(text, "a\\b\\\\c");
  StringCharReplace(text, '\0', 'y');
  EXPECT_STREQ(text, "a\\b\\\\c");
  char cut[] = "a,b,c";
  StringCharReplace(cut, ',', '\0');
  EXPECT_EQ(std::memcmp(cut, "a\0b\0c", 6), 0);
}

struct TWord {
  const char* Text;
  char Separator;
  const char* Word;
  long Next;
};

TEST(StringGetWord, CopiesUpToTheSeparator) {
  const TWord cases[] = {
      {"a,b", ',', "a", 2},      {"a", ',', "a", 1},  {"", ',', "", 0},      {",b", ',', "", 1},
      {" a b,", ',', " a b", 5}, {"a,", ',', "a", 2}, {"ab", '\0', "ab", 2},
  };
  for (const TWord& c : cases) {
    char out[16] = "###############";
    const char* next = nullptr;
    EXPECT_EQ(StringGetWord(c.Text, out, c.Separator, &next), std::strlen(c.Word)) << c.Text;
    EXPECT_STREQ(out, c.Word) << c.Text;
    EXPECT_EQ(out[std::strlen(c.Word) + 1], '#') << c.Text;
    EXPECT_EQ(next - c.Text, c.Next) << c.Text;
  }
}

// The Ex family: word, its length, the next place, and where StringFindWordEx sees it.
struct TBlankWord {
  const char* Text;
  const char* Word;
  long Next;
  long Start;
};

TEST(WordsBetweenBlanks, SkipSpacesAndTabs) {
  const TBlankWord cases[] = {
      {"one two", "one", 4, 0}, {"  \t one\ttwo", "one", 8, 4},
      {"one", "one", 3, 0},     {"a  b", "a", 2, 0},
      {" x ", "x", 3, 1},       {"a\nb c", "a\nb", 4, 0},
  };
  for (const TBlankWord& c : cases) {
    const unsigned long length = std::strlen(c.Word);
    char out[16] = "###############";
    const char* next = nullptr;
    EXPECT_EQ(StringGetWordEx(c.Text, out, &next), length) << c.Text;
    EXPECT_STREQ(out, c.Word);
    EXPECT_EQ(out[length + 1], '#');
    EXPECT_EQ(next - c.Text, c.Next) << c.Text;
    next = nullptr;
    EXPECT_EQ(StringSkipWordEx(c.Text, &next), length) << c.Text;
    EXPECT_EQ(next - c.Text, c.Next) << c.Text;
    const char* start = nullptr;
    unsigned long found = 0;
    EXPECT_EQ(StringFindWordEx(c.Text, &start, &found),
              static_cast<unsigned long>(c.Start) + length);
    EXPECT_EQ(start - c.Text, c.Start);
    EXPECT_EQ(found, length);
  }
}

TEST(WordsBetweenBlanks, NoWordIsEmpty) {
  for (const char* const text : {"", " ", "\t  \t"}) {
    char out[4] = "###";
    const char* next = nullptr;
    EXPECT_EQ(StringGetWordEx(text, out, &next), 0U);
    EXPECT_STREQ(out, "");
    EXPECT_EQ(*next, '\0');
    EXPECT_EQ(static_cast<std::size_t>(next - text), std::strlen(text));
    next = nullptr;
    EXPECT_EQ(StringSkipWordEx(text, &next), 0U);
    EXPECT_EQ(static_cast<std::size_t>(next - text), std::strlen(text));
    const char* start = text;
    unsigned long length = 77;
    EXPECT_EQ(StringFindWordEx(text, &start, &length), 0U);
    EXPECT_EQ(start, text);
    EXPECT_EQ(length, 77U);
  }
}

TEST(WordsBetweenBlanks, OffsetsLeadFromWordToWord) {
  const char* at = "  alpha beta\tgamma ";
  std::string words;
  const char* start = nullptr;
  unsigned long length = 0;
  while (const unsigned long offset = StringFindWordEx(at, &start, &length)) {
    words += std::string(start, length) + ";";
    at += offset;
  }
  EXPECT_EQ(words, "alpha;beta;gamma;");
}

TEST(Words, WhereTheNextOneBeginsNeedNotBeTold) {
  char out[8] = "";
  EXPECT_EQ(StringGetWord("ab,c", out, ',', nullptr), 2U);
  EXPECT_STREQ(out, "ab");
  EXPECT_EQ(StringGetWordEx(" abc d", out, nullptr), 3U);
  EXPECT_STREQ(out, "abc");
  EXPECT_EQ(StringSkipWordEx(" abcd e", nullptr), 4U);
}

} // namespace
