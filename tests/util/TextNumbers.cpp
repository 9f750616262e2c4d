#include <ZxCore3D/util/TextNumbers.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

constexpr unsigned long kMeasure = ~0UL;

// Runs one terminated form; 77 stands in the output where nothing was written.
template <class T> auto Form(bool (*form)(const char*, T*)) {
  return [form](const std::string& text) {
    T out = 77;
    const bool ok = form(text.c_str(), &out);
    return (ok ? "true " : "false ") + std::to_string(out);
  };
}

TEST(UnsignedForms, StoreTheLowBitsOfA32BitAccumulator) {
  const auto uchar = Form<unsigned char>(&StringToUchar);
  EXPECT_EQ(uchar("0"), "true 0");
  EXPECT_EQ(uchar("255"), "true 255");
  EXPECT_EQ(uchar("300"), "true 44");
  EXPECT_EQ(uchar("4294967297"), "true 1");
  const auto ushort_ = Form<unsigned short>(&StringToUshort);
  EXPECT_EQ(ushort_("65535"), "true 65535");
  EXPECT_EQ(ushort_("65537"), "true 1");
  EXPECT_EQ(ushort_("4294967298"), "true 2");
  for (const auto& uint :
       {Form<unsigned int>(&StringToUint), Form<unsigned int>(&StringToUint32)}) {
    EXPECT_EQ(uint("4294967295"), "true 4294967295");
    EXPECT_EQ(uint("4294967296"), "true 0");
    EXPECT_EQ(uint("00012"), "true 12");
  }
}

TEST(UnsignedForms, WrapAt64Bits) {
  for (const auto& form :
       {Form<unsigned long>(&StringToUlong), Form<unsigned long>(&StringToSize_t)}) {
    EXPECT_EQ(form("18446744073709551615"), "true 18446744073709551615");
    EXPECT_EQ(form("18446744073709551616"), "true 0");
    EXPECT_EQ(form("18446744073709551621"), "true 5");
    EXPECT_EQ(form("4294967296"), "true 4294967296");
  }
}

TEST(SignedForms, TakeOneSign) {
  for (const auto& form : {Form<int>(&StringToInt), Form<int>(&StringToInt32)}) {
    EXPECT_EQ(form("+5"), "true 5");
    EXPECT_EQ(form("-5"), "true -5");
    EXPECT_EQ(form("-0"), "true 0");
    EXPECT_EQ(form("2147483647"), "true 2147483647");
    EXPECT_EQ(form("2147483648"), "true -2147483648");
    EXPECT_EQ(form("-2147483648"), "true -2147483648");
    EXPECT_EQ(form("4294967297"), "true 1");
    EXPECT_EQ(form("-4294967297"), "true -1");
  }
  const auto big = Form<long>(&StringToLong);
  EXPECT_EQ(big("-9223372036854775808"), "true -9223372036854775808");
  EXPECT_EQ(big("+9223372036854775807"), "true 9223372036854775807");
  EXPECT_EQ(big("18446744073709551617"), "true 1");
  EXPECT_EQ(big("-18446744073709551617"), "true -1");
}

// What no strict form takes, decimal, octal and hexadecimal alike.
const char* const s_NoNumbers[] = {"+",   "-",     "+-5",  "--5",   "5-",  " 5",  "5 ",
                                   "\t5", "5x",    "0x5",  "5,0",   "5.0", "1'0", "5\n",
                                   "x",   "1_000", "\xB2", "5\xFF", "/",   ":",   "5:"};

TEST(StrictForms, RefuseEverythingElseAndWriteNothing) {
  for (const char* const text : s_NoNumbers) {
    EXPECT_EQ(Form<unsigned char>(&StringToUchar)(text), "false 77") << text;
    EXPECT_EQ(Form<unsigned short>(&StringToUshort)(text), "false 77") << text;
    EXPECT_EQ(Form<unsigned int>(&StringToUint)(text), "false 77") << text;
    EXPECT_EQ(Form<unsigned int>(&StringToUint32)(text), "false 77") << text;
    EXPECT_EQ(Form<unsigned long>(&StringToUlong)(text), "false 77") << text;
    EXPECT_EQ(Form<unsigned long>(&StringToSize_t)(text), "false 77") << text;
    EXPECT_EQ(Form<int>(&StringToInt)(text), "false 77") << text;
    EXPECT_EQ(Form<int>(&StringToInt32)(text), "false 77") << text;
    EXPECT_EQ(Form<long>(&StringToLong)(text), "false 77") << text;
    EXPECT_EQ(Form<unsigned int>(&StringToOct)(text), "false 77") << text;
    EXPECT_EQ(Form<unsigned long>(&StringToOct)(text), "false 77") << text;
    EXPECT_EQ(Form<unsigned int>(&StringToHex)(text), "false 77") << text;
  }
}

TEST(StrictForms, OnlyOctalTakesTheEmptyText) {
  EXPECT_EQ(Form<unsigned char>(&StringToUchar)(""), "false 77");
  EXPECT_EQ(Form<unsigned short>(&StringToUshort)(""), "false 77");
  EXPECT_EQ(Form<unsigned int>(&StringToUint)(""), "false 77");
  EXPECT_EQ(Form<unsigned int>(&StringToUint32)(""), "false 77");
  EXPECT_EQ(Form<unsigned long>(&StringToUlong)(""), "false 77");
  EXPECT_EQ(Form<unsigned long>(&StringToSize_t)(""), "false 77");
  EXPECT_EQ(Form<int>(&StringToInt)(""), "false 77");
  EXPECT_EQ(Form<int>(&StringToInt32)(""), "false 77");
  EXPECT_EQ(Form<long>(&StringToLong)(""), "false 77");
  EXPECT_EQ(Form<unsigned int>(&StringToHex)(""), "false 77");
  EXPECT_EQ(Form<unsigned int>(&StringToOct)(""), "true 0");
  EXPECT_EQ(Form<unsigned long>(&StringToOct)(""), "true 0");
}

TEST(UnsignedForms, RefuseSigns) {
  for (const char* const text : {"+5", "-5", "-0"}) {
    EXPECT_EQ(Form<unsigned char>(&StringToUchar)(text), "false 77");
    EXPECT_EQ(Form<unsigned short>(&StringToUshort)(text), "false 77");
    EXPECT_EQ(Form<unsigned int>(&StringToUint)(text), "false 77");
    EXPECT_EQ(Form<unsigned long>(&StringToUlong)(text), "false 77");
    EXPECT_EQ(Form<unsigned long>(&StringToSize_t)(text), "false 77");
    EXPECT_EQ(Form<unsigned int>(&StringToOct)(text), "false 77");
    EXPECT_EQ(Form<unsigned int>(&StringToHex)(text), "false 77");
  }
}

TEST(Octal, ReadsDigitsBelowEight) {
  const auto narrow = Form<unsigned int>(&StringToOct);
  EXPECT_EQ(narrow("777"), "true 511");
  EXPECT_EQ(narrow("010"), "true 8");
  EXPECT_EQ(narrow("8"), "false 77");
  EXPECT_EQ(narrow("79"), "false 77");
  EXPECT_EQ(narrow("37777777777"), "true 4294967295");
  EXPECT_EQ(narrow("40000000001"), "true 1");
  const auto wide = Form<unsigned long>(&StringToOct);
  EXPECT_EQ(wide("40000000001"), "true 4294967297");
  EXPECT_EQ(wide("1777777777777777777777"), "true 18446744073709551615");
  EXPECT_EQ(wide("2000000000000000000003"), "true 3");
}

TEST(Hexadecimal, ReadsBothCases) {
  const auto hex = Form<unsigned int>(&StringToHex);
  EXPECT_EQ(hex("ff"), "true 255");
  EXPECT_EQ(hex("FF"), "true 255");
  EXPECT_EQ(hex("0123456789"), "true 591751049");
  EXPECT_EQ(hex("aBcDeF"), "true 11259375");
  EXPECT_EQ(hex("100000002"), "true 2");
  EXPECT_EQ(hex("0x10"), "false 77");
  EXPECT_EQ(hex("10h"), "false 77");
}

// Each byte but the 22 digits is refused, wherever it stands.
TEST(Hexadecimal, RefusesEveryOtherByte) {
  for (int c = 1; c < 256; ++c) {
    const bool digit = std::strchr("0123456789abcdefABCDEF", c) != nullptr;
    for (const char* const frame : {"?", "1?", "?1"}) {
      std::string text = frame;
      text[text.find('?')] = static_cast<char>(c);
      unsigned int out = 0;
      EXPECT_EQ(StringToHex(text.c_str(), &out), digit) << c;
    }
  }
}

TEST(Boolean, IsWhetherTheWrapped32BitValueDiffersFrom0) {
  const auto read = [](const char* text) {
    bool out = true;
    if (!StringToBool(text, &out)) {
      EXPECT_TRUE(out) << "written on failure";
      out = false;
      return StringToBool(text, &out) || out ? "written" : "false";
    }
    return out ? "yes" : "no";
  };
  EXPECT_STREQ(read("0"), "no");
  EXPECT_STREQ(read("1"), "yes");
  EXPECT_STREQ(read("-1"), "yes");
  EXPECT_STREQ(read("+7"), "yes");
  EXPECT_STREQ(read("-0"), "no");
  EXPECT_STREQ(read("4294967296"), "no");
  EXPECT_STREQ(read("4294967297"), "yes");
  EXPECT_STREQ(read("true"), "false");
  EXPECT_STREQ(read(""), "false");
  EXPECT_STREQ(read("-"), "false");
}

TEST(Boolean, WithALengthPutsTheCharacterBack) {
  char text[] = "10x";
  bool out = false;
  EXPECT_TRUE(StringToBool(text, 2, &out));
  EXPECT_TRUE(out);
  EXPECT_STREQ(text, "10x");
  char zero[] = "0123";
  EXPECT_TRUE(StringToBool(zero, 1, &out));
  EXPECT_FALSE(out);
  EXPECT_STREQ(zero, "0123");
  out = true;
  EXPECT_FALSE(StringToBool(text, 3, &out));
  EXPECT_FALSE(StringToBool(text, 0, &out)) << "an empty text is no number";
  EXPECT_TRUE(out);
  EXPECT_STREQ(text, "10x");
  char cut[] = {'5', '\0', 'x', 'y'};
  EXPECT_TRUE(StringToBool(cut, 3, &out)) << "an earlier terminator ends the text";
  EXPECT_EQ(cut[3], 'y');
}

TEST(LengthForms, ReadExactlySoManyCharacters) {
  unsigned int u = 77;
  EXPECT_TRUE(StringToUint("1234x", 4UL, &u));
  EXPECT_EQ(u, 1234U);
  EXPECT_TRUE(StringToUint("1234", 2UL, &u));
  EXPECT_EQ(u, 12U);
  u = 77;
  EXPECT_FALSE(StringToUint("1234x", 5UL, &u));
  EXPECT_FALSE(StringToUint("1234", 5UL, &u)) << "the terminator is no digit";
  EXPECT_FALSE(StringToUint("+1", 2UL, &u));
  EXPECT_EQ(u, 77U);
  int i = 77;
  EXPECT_TRUE(StringToInt("-12345", 3UL, &i));
  EXPECT_EQ(i, -12);
  i = 77;
  EXPECT_FALSE(StringToInt("-1", 1UL, &i));
  EXPECT_FALSE(StringToInt("-1", 3UL, &i));
  EXPECT_EQ(i, 77);
  long l = 77;
  EXPECT_TRUE(StringToInt64("-9223372036854775808)", 20UL, &l));
  EXPECT_EQ(l, -9223372036854775807L - 1);
  l = 77;
  EXPECT_FALSE(StringToInt64("+", 1UL, &l));
  EXPECT_FALSE(StringToInt64("1\0", 2UL, &l));
  EXPECT_EQ(l, 77);
  unsigned long ul = 77;
  EXPECT_TRUE(StringToUint64("18446744073709551617", 20UL, &ul));
  EXPECT_EQ(ul, 1U);
  ul = 77;
  EXPECT_FALSE(StringToUint64("-1", 2UL, &ul));
  EXPECT_EQ(ul, 77U);
}

TEST(LengthForms, NoLengthIsNoNumber) {
  unsigned int u = 77;
  EXPECT_FALSE(StringToUint("1", 0UL, &u));
  int i = 77;
  EXPECT_FALSE(StringToInt("1", 0UL, &i));
  long l = 77;
  EXPECT_FALSE(StringToInt64("1", 0UL, &l));
  unsigned long ul = 77;
  EXPECT_FALSE(StringToUint64("1", 0UL, &ul));
  EXPECT_TRUE(u == 77 && i == 77 && l == 77 && ul == 77);
}

TEST(LengthForms, MeasureOnTheirSpecialLengths) {
  unsigned int u = 0;
  EXPECT_TRUE(StringToUint("42", kMeasure, &u));
  EXPECT_EQ(u, 42U);
  EXPECT_TRUE(StringToUint("43", kMeasure - 1, &u));
  EXPECT_EQ(u, 43U);
  int i = 0;
  EXPECT_TRUE(StringToInt("-42", kMeasure, &i));
  EXPECT_EQ(i, -42);
  EXPECT_TRUE(StringToInt("-43", kMeasure - 1, &i));
  EXPECT_EQ(i, -43);
  long l = 0;
  EXPECT_TRUE(StringToInt64("-44", kMeasure, &l));
  EXPECT_EQ(l, -44);
  unsigned long ul = 0;
  EXPECT_TRUE(StringToUint64("45", kMeasure, &ul));
  EXPECT_EQ(ul, 45U);
  EXPECT_FALSE(StringToUint("", kMeasure, &u));
  EXPECT_FALSE(StringToInt("", kMeasure - 1, &i));
  EXPECT_FALSE(StringToInt64("", kMeasure, &l));
  EXPECT_FALSE(StringToUint64("", kMeasure, &ul));
}

struct TPrefix {
  const char* Text;
  unsigned long Length;
  bool Ok;
  int Value;
  long End;
};

TEST(PrefixForm, ReadsUpToTheFirstOtherCharacter) {
  const TPrefix cases[] = {
      {"12ab", kMeasure, true, 12, 2},   {"ab", kMeasure, false, 77, 0},
      {"-12ab", kMeasure, true, -12, 3}, {"+7", kMeasure, true, 7, 2},
      {"-", kMeasure, false, 77, 1},     {"+x", kMeasure, false, 77, 1},
      {"", kMeasure, false, 77, 0},      {"12", 0, false, 77, 0},
      {"1234", 2, true, 12, 2},          {"-5", 1, false, 77, 1},
      {"--5", kMeasure, false, 77, 1},   {"4294967298;", kMeasure, true, 2, 10},
      {"12\0003", 4, true, 12, 2},       {" 1", kMeasure, false, 77, 0},
  };
  for (const TPrefix& c : cases) {
    int out = 77;
    const char* end = nullptr;
    EXPECT_EQ(StringToInt(c.Text, c.Length, &out, &end), c.Ok) << c.Text;
    EXPECT_EQ(out, c.Value) << c.Text;
    EXPECT_EQ(end - c.Text, c.End) << c.Text;
    out = 77;
    EXPECT_EQ(StringToInt(c.Text, c.Length, &out, nullptr), c.Ok) << "without an end";
    EXPECT_EQ(out, c.Value) << c.Text;
  }
}

// The terminated and the counted forms agree with a plain evaluation by wide arithmetic.
TEST(StrictForms, AgreeWithArithmeticOnRandomDigits) {
  std::mt19937 random(20260101);
  for (int round = 0; round < 2000; ++round) {
    std::string text(1 + random() % 30, '0');
    unsigned __int128 value = 0;
    for (char& c : text) {
      c = static_cast<char>('0' + random() % 10);
      value = value * 10 + static_cast<unsigned>(c - '0');
    }
    // 30 digits fit into 128 bits, and wrapping commutes with the sums.
    unsigned int u = 0;
    unsigned long ul = 0;
    long l = 0;
    ASSERT_TRUE(StringToUint(text.c_str(), &u));
    EXPECT_EQ(u, static_cast<unsigned int>(value));
    ASSERT_TRUE(StringToUlong(text.c_str(), &ul));
    EXPECT_EQ(ul, static_cast<unsigned long>(value));
    ASSERT_TRUE(StringToInt64(("-" + text).c_str(), text.size() + 1, &l));
    EXPECT_EQ(l, static_cast<long>(-static_cast<unsigned long>(value)));
  }
}

} // namespace
