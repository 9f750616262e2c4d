#include <ZxCore3D/util/TextNumbers.h>

#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr unsigned long kMeasure = ~0UL;

// A writable text, to look at after the call: a zero inside shows as |.
class TText {
public:
  explicit TText(const char* text) : m_Chars(text, text + std::strlen(text) + 1) {}
  operator const char*() const { return m_Chars.data(); }
  std::string Shown() const {
    std::string shown(m_Chars.begin(), m_Chars.end() - 1);
    for (char& c : shown) {
      c = c == '\0' ? '|' : c;
    }
    return shown;
  }

private:
  std::vector<char> m_Chars;
};

TEST(TerminatedLists, ReadSoManyValues) {
  TText text("1,-2,+3");
  int out[3] = {};
  EXPECT_TRUE(StringToInt(text, ',', out, 3));
  EXPECT_EQ(std::vector<int>(out, out + 3), (std::vector<int>{1, -2, 3}));
  EXPECT_EQ(text.Shown(), "1,-2,+3");

  TText bytes("300;1;255");
  unsigned char low[3] = {};
  EXPECT_TRUE(StringToUchar(bytes, ';', low, 3));
  EXPECT_TRUE(low[0] == 44 && low[1] == 1 && low[2] == 255);
  EXPECT_EQ(bytes.Shown(), "300;1;255");

  TText sizes("18446744073709551615 7");
  unsigned long big[2] = {};
  EXPECT_TRUE(StringToSize_t(sizes, ' ', big, 2));
  EXPECT_TRUE(big[0] == 18446744073709551615UL && big[1] == 7);
  EXPECT_EQ(sizes.Shown(), "18446744073709551615 7");
}

TEST(TerminatedLists, AMissingSeparatorIsFalseBehindTheWrittenValues) {
  TText text("1,2");
  int out[3] = {77, 77, 77};
  EXPECT_FALSE(StringToInt(text, ',', out, 3));
  EXPECT_TRUE(out[0] == 1 && out[1] == 77 && out[2] == 77);
  EXPECT_EQ(text.Shown(), "1,2") << "no element failed";
}

TEST(TerminatedLists, TheLastValueTakesTheWholeRest) {
  TText text("1,2,3");
  int out[2] = {77, 77};
  EXPECT_FALSE(StringToInt(text, ',', out, 2)) << "2,3 is no number";
  EXPECT_TRUE(out[0] == 1 && out[1] == 77);
  EXPECT_EQ(text.Shown(), "1,2,3");
  TText trailing("1,2,");
  EXPECT_FALSE(StringToInt(trailing, ',', out, 2));
  unsigned char byte[2] = {77, 77};
  EXPECT_FALSE(StringToUchar(trailing, ',', byte, 2));
  EXPECT_TRUE(byte[0] == 1 && byte[1] == 77);
  unsigned long size[2] = {77, 77};
  EXPECT_FALSE(StringToSize_t(trailing, ',', size, 2));
  EXPECT_TRUE(size[0] == 1 && size[1] == 77);
}

TEST(TerminatedLists, ABadElementLeavesTheZeroInPlaceOfItsSeparator) {
  TText ints("1,x,3");
  int out[3] = {77, 77, 77};
  EXPECT_FALSE(StringToInt(ints, ',', out, 3));
  EXPECT_EQ(ints.Shown(), "1,x|3");
  EXPECT_TRUE(out[0] == 1 && out[1] == 77 && out[2] == 77);
  TText bytes("-1,2");
  unsigned char low[2] = {77, 77};
  EXPECT_FALSE(StringToUchar(bytes, ',', low, 2));
  EXPECT_EQ(bytes.Shown(), "-1|2");
  EXPECT_EQ(low[0], 77);
  TText sizes("5,,6");
  unsigned long big[3] = {77, 77, 77};
  EXPECT_FALSE(StringToSize_t(sizes, ',', big, 3));
  EXPECT_EQ(sizes.Shown(), "5,|6");
  EXPECT_TRUE(big[0] == 5 && big[1] == 77);
}

TEST(TerminatedLists, ACountOfOneTakesTheWholeText) {
  int i = 0;
  EXPECT_TRUE(StringToInt("-12", ',', &i, 1));
  EXPECT_EQ(i, -12);
  EXPECT_FALSE(StringToInt("1,2", ',', &i, 1));
  unsigned char c = 0;
  EXPECT_TRUE(StringToUchar("9", ',', &c, 1));
  EXPECT_EQ(c, 9);
  unsigned long l = 0;
  EXPECT_TRUE(StringToSize_t("9", ',', &l, 1));
  EXPECT_EQ(l, 9U);
  float f = 0;
  EXPECT_TRUE(StringToFloat("1.5,2", ',', &f, 1));
  EXPECT_EQ(f, 1.5F);
  double d = 0;
  EXPECT_TRUE(StringToFloat("abc", ',', &d, 1));
  EXPECT_EQ(d, 0.0);
}

TEST(TerminatedLists, WithoutACountWriteNothing) {
  TText text("1,2");
  int i = 77;
  EXPECT_FALSE(StringToInt(text, ',', &i, 0UL));
  unsigned char c = 77;
  EXPECT_FALSE(StringToUchar(text, ',', &c, 0));
  float f = 77;
  EXPECT_FALSE(StringToFloat(text, ',', &f, 0));
  double d = 77;
  EXPECT_FALSE(StringToFloat(text, ',', &d, 0));
  unsigned long l = 77;
  EXPECT_TRUE(StringToSize_t(text, ',', &l, 0));
  EXPECT_TRUE(i == 77 && c == 77 && f == 77 && d == 77 && l == 77);
  EXPECT_EQ(text.Shown(), "1,2");
}

TEST(TerminatedLists, CannotBeSeparatedByTheTerminator) {
  TText text("1");
  int i[2] = {77, 77};
  EXPECT_FALSE(StringToInt(text, '\0', i, 2));
  unsigned char c[2] = {77, 77};
  EXPECT_FALSE(StringToUchar(text, '\0', c, 2));
  unsigned long l[2] = {77, 77};
  EXPECT_FALSE(StringToSize_t(text, '\0', l, 2));
  float f[2] = {77, 77};
  EXPECT_FALSE(StringToFloat(text, '\0', f, 2));
  double d[2] = {77, 77};
  EXPECT_FALSE(StringToFloat(text, '\0', d, 2));
  EXPECT_TRUE(i[0] == 77 && c[0] == 77 && l[0] == 77 && f[0] == 77 && d[0] == 77);
}

TEST(FloatLists, FailOnlyOnAMissingSeparatorAndPutAllBack) {
  TText text("1.5;x;-2e1;rest 4");
  double d[4] = {};
  EXPECT_TRUE(StringToFloat(text, ';', d, 4));
  EXPECT_TRUE(d[0] == 1.5 && d[1] == 0.0 && d[2] == -20.0 && d[3] == 0.0);
  EXPECT_EQ(text.Shown(), "1.5;x;-2e1;rest 4");
  float f[2] = {};
  EXPECT_TRUE(StringToFloat(text, ';', f, 2));
  EXPECT_TRUE(f[0] == 1.5F && f[1] == 0.0F);
  double more[5] = {77, 77, 77, 77, 77};
  EXPECT_FALSE(StringToFloat(text, ';', more, 5));
  EXPECT_TRUE(more[0] == 1.5 && more[2] == -20.0 && more[3] == 77 && more[4] == 77);
  EXPECT_EQ(text.Shown(), "1.5;x;-2e1;rest 4");
  TText trailing("1,2,");
  EXPECT_TRUE(StringToFloat(trailing, ',', f, 2));
  EXPECT_TRUE(f[0] == 1.0F && f[1] == 2.0F);
}

// The zero in the separator's place cuts the number there, even where strtod would read on.
TEST(FloatLists, CutAtTheSeparator) {
  TText text("1.5.25");
  double d[3] = {};
  EXPECT_TRUE(StringToFloat(text, '.', d, 3));
  EXPECT_TRUE(d[0] == 1.0 && d[1] == 5.0 && d[2] == 25.0);
}

struct TCounted {
  const char* Text;
  unsigned long Length;
  unsigned long Count;
  bool Ok;
  std::vector<int> Out; // what was written; the next value keeps its 77
};

TEST(CountedLists, FollowTheRange) {
  const TCounted cases[] = {
      {"1,2,3", kMeasure, 3, true, {1, 2, 3}},
      {"1,2,", kMeasure, 2, true, {1, 2}},
      {"1,2,", kMeasure, 3, false, {1, 2}},
      {"1,2,,", kMeasure, 2, false, {1, 2}},
      {"1,2,3", kMeasure, 2, false, {1, 2}},
      {"1,2", kMeasure, 3, false, {1, 2}},
      {"1,2", kMeasure, 0, true, {}},
      {"", kMeasure, 0, true, {}},
      {"", kMeasure, 1, false, {}},
      {"1", 0, 1, false, {}},
      {"1", 0, 0, true, {}},
      {"-1,+2", kMeasure, 2, true, {-1, 2}},
      {"1,-", kMeasure, 2, false, {1}},
      {"-,1", kMeasure, 2, false, {}},
      {"1,,2", kMeasure, 3, false, {1}},
      {"1;2", kMeasure, 2, false, {1}},
      {"1,x", kMeasure, 2, false, {1}},
      {" 1", kMeasure, 1, false, {}},
      {"12,34", 4, 2, true, {12, 3}},
      {"12,34", 3, 1, true, {12}},
      {"12,34", 3, 2, false, {12}},
      {"4294967297,1", kMeasure, 2, true, {1, 1}},
      {"7", kMeasure, 1, true, {7}},
      {"7,", kMeasure, 1, true, {7}},
  };
  for (const TCounted& c : cases) {
    const std::string before = c.Text;
    TText text(c.Text);
    std::vector<int> out(c.Count + 1, 77);
    EXPECT_EQ(StringToInt(text, c.Length, ',', out.data(), c.Count), c.Ok)
        << c.Text << " " << c.Count;
    EXPECT_EQ(std::vector<int>(out.begin(), out.begin() + static_cast<long>(c.Out.size())), c.Out)
        << c.Text << " " << c.Count;
    EXPECT_EQ(out[c.Out.size()], 77) << c.Text << " " << c.Count;
    EXPECT_EQ(text.Shown(), before);
  }
}

// Read-only memory: the buffer is not touched, and a terminator may separate.
TEST(CountedLists, DoNotTouchTheText) {
  int out[2] = {};
  EXPECT_TRUE(StringToInt("1\0002", 3UL, '\0', out, 2));
  EXPECT_TRUE(out[0] == 1 && out[1] == 2);
}

// One value takes the whole text: no separator is looked for.
TEST(TerminatedLists, OneValueNeedsNoSeparator) {
  int number = 0;
  EXPECT_TRUE(StringToInt("-12", '\0', &number, 1));
  EXPECT_EQ(number, -12);
  int two[2] = {7, 7};
  EXPECT_FALSE(StringToInt("1", '\0', two, 2));
  EXPECT_EQ(two[1], 7);
}

} // namespace
