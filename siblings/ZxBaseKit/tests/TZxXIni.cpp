#include <ZxBaseKit/TZxXIniReader.h>
#include <ZxBaseKit/TZxXIniWriter.h>

#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <locale>
#include <random>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>

#include "CommaLocale.h"

namespace {

using testing::HasSubstr;
using testing::StartsWith;

std::uint64_t BitsOf(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof(bits));
  return bits;
}

double FromBits(std::uint64_t bits) {
  double value;
  std::memcpy(&value, &bits, sizeof(value));
  return value;
}

template <class T> T RoundTrip(const T& value) {
  TZxXIniWriter writer;
  EXPECT_TRUE(writer.WriteS<T>("v", &value));
  const TZxXIniReader reader(writer.GetText());
  return reader.ReadE<T>(reader.FindFE("v", 0));
}

/// The text of the message that `call` throws, or "nothing thrown".
template <class TCall> std::string MessageOf(const TCall& call) {
  try {
    call();
  } catch (const TZxMessage& message) {
    return message.what();
  }
  return "nothing thrown";
}

std::string ErrorOf(const std::string& text) {
  return MessageOf([&] { TZxXIniReader reader(text); });
}

std::string NameOf(std::size_t i) { return std::string("k").append(std::to_string(i)); }

std::string Repeat(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) {
    all += text;
  }
  return all;
}

TEST(TZxXIni, DoublesComeBackToTheBit) {
  using L = std::numeric_limits<double>;
  for (const double value :
       {0.0, -0.0, 1.0, -1.0, 0.1, 1.0 / 3.0, 1e22, 1e23, 123456789012345678.0, L::max(),
        L::lowest(), L::min(), L::denorm_min(), -L::denorm_min(), L::infinity(), -L::infinity()}) {
    EXPECT_EQ(BitsOf(RoundTrip(value)), BitsOf(value)) << value;
  }
}

TEST(TZxXIni, RandomBitPatternsComeBackToTheBit) {
  std::mt19937_64 random(1);
  TZxXIniWriter writer;
  std::vector<std::uint64_t> bits;
  for (std::size_t i = 0; i < 20000; ++i) {
    bits.push_back(random());
    const double value = FromBits(bits.back());
    ASSERT_TRUE(writer.WriteS<double>(NameOf(i), &value));
  }
  const TZxXIniReader reader(writer.GetText());
  ASSERT_EQ(reader.GetCount(), bits.size());
  for (std::size_t i = 0; i < bits.size(); ++i) {
    const double value = reader.ReadE<double>(reader.FindFE(NameOf(i), 0));
    ASSERT_EQ(BitsOf(value), bits[i]);
  }
}

std::string TextOf(double value) {
  TZxXIniWriter writer;
  EXPECT_TRUE(writer.WriteS<double>("v", &value));
  const std::string text = writer.GetText();
  EXPECT_EQ(text.substr(0, 4), "v = ");
  return text.substr(4, text.size() - 5);
}

/// The digits of a number without sign, point, exponent and the zeros at both ends.
std::string DigitsOf(const std::string& text) {
  std::string digits;
  for (const char c : text.substr(0, text.find('e'))) {
    if (c >= '0' && c <= '9' && !(digits.empty() && c == '0')) {
      digits += c;
    }
  }
  return digits.substr(0, digits.find_last_not_of('0') + 1);
}

TEST(TZxXIni, WritesTheFewestDigitsThatReadBack) {
  using L = std::numeric_limits<double>;
  EXPECT_EQ(TextOf(0.1), "0.1");
  EXPECT_EQ(TextOf(-1.1), "-1.1");
  EXPECT_EQ(TextOf(100), "100.0");
  EXPECT_EQ(TextOf(1.0 / 3), "0.3333333333333333");
  EXPECT_EQ(TextOf(5e-324), "5e-324");
  EXPECT_EQ(TextOf(1e23), "1e+23");
  EXPECT_EQ(TextOf(L::max()), "1.7976931348623157e+308");
  EXPECT_EQ(TextOf(-0.0), "-0.0");
  std::mt19937_64 random(2);
  for (int i = 0; i < 20000; ++i) {
    double value = FromBits(random());
    if (i % 2 == 0) { // as people write numbers
      value = static_cast<double>(random() % 100000) / 1000;
    }
    if (!std::isfinite(value)) {
      continue;
    }
    char text[64];
    int digits = 0;
    do {
      std::snprintf(text, sizeof text, "%.*e", digits++, value);
    } while (std::strtod(text, nullptr) != value);
    // A whole number may stand with all its digits where that is not longer than an exponent.
    const std::string written = TextOf(value);
    ASSERT_EQ(std::strtod(written.c_str(), nullptr), value);
    ASSERT_LE(written.size(), std::strlen(text) + 2) << text << " " << written; // ".0"
    if (written.find('.') != written.size() - 2) {
      ASSERT_EQ(DigitsOf(written).size(), DigitsOf(text).size()) << text << " " << written;
    }
  }
}

class TCommaPunctuation : public std::numpunct<char> {
protected:
  char do_decimal_point() const override { return ','; }
  char do_thousands_sep() const override { return '.'; }
  std::string do_grouping() const override { return "\3"; }
};

TEST(TZxXIni, NoLocaleHasASay) {
  const std::vector<double> values = {0.5, -1234567.25, 1e300, 5e-324, 1.0 / 3};
  const auto write = [&] {
    TZxXIniWriter writer;
    for (std::size_t i = 0; i < values.size(); ++i) {
      EXPECT_TRUE(writer.WriteS<double>(NameOf(i), &values[i]));
    }
    const long whole = 1234567;
    EXPECT_TRUE(writer.WriteS<long>("whole", &whole));
    return writer.GetText();
  };
  const auto check = [&](const std::string& text) {
    const TZxXIniReader reader(text);
    for (std::size_t i = 0; i < values.size(); ++i) {
      EXPECT_EQ(reader.ReadE<double>(reader.FindFE(NameOf(i), 0)), values[i]);
    }
    EXPECT_EQ(reader.ReadE<long>(reader.FindFE("whole", 0)), 1234567);
    EXPECT_THAT(MessageOf([&] { TZxXIniReader damaged("a = 1,5\n"); }),
                StartsWith("line 1, column "));
  };
  const std::string underC = write();
  EXPECT_THAT(underC, HasSubstr("k1 = -1234567.25\n"));
  EXPECT_THAT(underC, HasSubstr("whole = 1234567\n"));
  check(underC);
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  EXPECT_EQ(write(), underC);
  check(underC);
  // Streams follow a locale of their own.
  const std::locale before =
      std::locale::global(std::locale(std::locale::classic(), new TCommaPunctuation));
  EXPECT_EQ(write(), underC);
  check(underC);
  std::locale::global(before);
}

TEST(TZxXIni, NansKeepSignAndPayload) {
  for (const std::uint64_t bits :
       {0x7ff8000000000000ull, 0xfff8000000000000ull, 0x7ff8000000000001ull, 0x7ff0000000000001ull,
        0xfff0000000000001ull, 0x7fffffffffffffffull, 0xffffffffffffffffull,
        0x7ff800000badcafeull}) {
    EXPECT_EQ(BitsOf(RoundTrip(FromBits(bits))), bits) << std::hex << bits;
  }
}

TEST(TZxXIni, WritesWhatTomlHasNoWordsForAsTextOfBits) {
  const double plain = FromBits(0x7ff8000000000000ull);
  const double payload = FromBits(0xfff8000000000abcull);
  const double infinity = -std::numeric_limits<double>::infinity();
  TZxXIniWriter writer;
  ASSERT_TRUE(writer.WriteS<double>("a", &plain));
  ASSERT_TRUE(writer.WriteS<double>("b", &payload));
  ASSERT_TRUE(writer.WriteS<double>("c", &infinity));
  EXPECT_EQ(writer.GetText(), "a = nan\nb = \"0xfff8000000000abc\"\nc = -inf\n");
}

TEST(TZxXIni, OtherTypesComeBack) {
  EXPECT_EQ(RoundTrip(std::numeric_limits<long>::min()), std::numeric_limits<long>::min());
  EXPECT_EQ(RoundTrip(std::numeric_limits<long>::max()), std::numeric_limits<long>::max());
  EXPECT_EQ(RoundTrip(true), true);
  EXPECT_EQ(RoundTrip(false), false);
}

TEST(TZxXIni, TextsAndKeysOfAnyBytesOfUtf8ComeBack) {
  std::string ascii;
  for (char c = 0; c < 127; ++c) {
    ascii += c;
  }
  for (const std::string& text :
       {std::string(), ascii, ascii + '\x7f', std::string("it's \"both\""), std::string("'''"),
        std::string("\"\"\""), std::string("\n"), std::string("\r\n"), std::string("a\n'''b"),
        std::string("\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E"), std::string("0x7ff8000000000001"),
        std::string("\\u0041"), std::string(" # x"), std::string("a.b"),
        std::string("a\001\"\r\0z", 6)}) {
    EXPECT_EQ(RoundTrip(text), text);
    TZxXIniWriter writer;
    const long value = 7;
    const bool isKey = text.find_first_of("\t\n'") == std::string::npos;
    ASSERT_EQ(writer.WriteS<long>(text, &value), isKey);
    if (!isKey) {
      continue;
    }
    const TZxXIniReader reader(writer.GetText());
    EXPECT_EQ(reader.GetKeyE(0), text);
    EXPECT_EQ(reader.FindF(text, 0), 0u);
  }
}

TEST(TZxXIni, CompactSectionsAreInlineTables) {
  TZxXIniWriter writer;
  const double x = 1.5;
  const double y = -2;
  const unsigned long outer = writer.BeginSectionSE("box");
  const unsigned long token = writer.BeginSectionCompactSE("min");
  ASSERT_TRUE(writer.WriteS<double>("x", &x));
  ASSERT_TRUE(writer.WriteS<double>("y", &y));
  writer.EndSectionE(token);
  writer.EndSectionE(outer);
  EXPECT_EQ(writer.GetText(), "[box]\nmin = { x = 1.5, y = -2.0 }\n");
}

TEST(TZxXIni, SectionsNestAndReadBack) {
  TZxXIniWriter writer;
  const double value = 4;
  const unsigned long a = writer.BeginSectionSE("a");
  const unsigned long b = writer.BeginSectionSE("b");
  const unsigned long c = writer.BeginSectionCompactSE("c");
  const unsigned long d = writer.BeginSectionSE("d");
  ASSERT_TRUE(writer.WriteS<double>("v", &value));
  writer.EndSectionE(d);
  writer.EndSectionE(c);
  writer.EndSectionE(b);
  writer.EndSectionE(a);
  ASSERT_TRUE(writer.WriteS<double>("v", &value));

  TZxXIniReader reader(writer.GetText());
  EXPECT_EQ(reader.GetCount(), 2u);
  const unsigned long ra = reader.BeginSectionE(reader.FindFE("a", 0));
  const unsigned long rb = reader.BeginSectionE(reader.FindFE("b", 0));
  reader.BeginSectionE(reader.FindFE("c", 0));
  reader.BeginSectionE(reader.FindFE("d", 0));
  EXPECT_EQ(reader.ReadE<double>(reader.FindFE("v", 0)), 4.0);
  reader.EndSectionE(rb);
  EXPECT_EQ(reader.GetKeyE(0), "b");
  reader.EndSectionE(ra);
  EXPECT_EQ(reader.FindF("b", 0), ~0ul);
  EXPECT_NE(reader.FindF("v", 0), ~0ul);
}

TEST(TZxXIni, EmptySectionsComeBack) {
  TZxXIniWriter writer;
  writer.EndSectionE(writer.BeginSectionSE("plain"));
  writer.EndSectionE(writer.BeginSectionCompactSE("compact"));
  TZxXIniReader reader(writer.GetText());
  ASSERT_EQ(reader.GetCount(), 2u);
  for (const char* name : {"plain", "compact"}) {
    const unsigned long token = reader.BeginSectionE(reader.FindFE(name, 0));
    EXPECT_EQ(reader.GetCount(), 0u);
    reader.EndSectionE(token);
  }
}

TEST(TZxXIniWriter, RefusesWhatCanNotBeWrittenAndTellsWhy) {
  TZxXIniWriter writer;
  const double value = 1;
  const std::string text = "\xFF";
  EXPECT_THAT(MessageOf([&] { writer.RaiseErrorE(); }), HasSubstr("No write has failed"));
  ASSERT_TRUE(writer.WriteS<double>("k", &value));
  EXPECT_FALSE(writer.WriteS<double>("k", &value));
  EXPECT_THAT(MessageOf([&] { writer.RaiseErrorE(); }), HasSubstr("\"k\""));
  EXPECT_FALSE(writer.WriteS<double>("\xC3", &value));
  EXPECT_THAT(MessageOf([&] { writer.RaiseErrorE(); }), HasSubstr("UTF-8"));
  EXPECT_FALSE(writer.WriteS<std::string>("t", &text));
  EXPECT_FALSE(writer.WriteS<double>("n", nullptr));
  EXPECT_THAT(MessageOf([&] { writer.BeginSectionSE("k"); }), HasSubstr("\"k\""));
  EXPECT_THAT(MessageOf([&] { writer.BeginSectionCompactSE("\xED\xA0\x80"); }), HasSubstr("UTF-8"));
  EXPECT_EQ(writer.GetText(), "k = 1.0\n");
}

TEST(TZxXIniWriter, KnowsWhatIsUtf8) {
  const long value = 1;
  for (const char* bad : {"a\xE2\x82", "aa\xE2\x82", "a\x80", "\x80", "\xC0\x80", "\xC1\xBF",
                          "\xE0\x9F\xBF", "\xED\xA0\x80", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
                          "\xF5\x80\x80\x80", "\xE2\x82", "\xE2\x28\xA1", "\xC3\xC3"}) {
    TZxXIniWriter writer;
    EXPECT_FALSE(writer.WriteS<long>(bad, &value));
  }
  for (const char* good : {"\xC2\x80", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80",
                           "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF"}) {
    TZxXIniWriter writer;
    EXPECT_TRUE(writer.WriteS<long>(good, &value));
    EXPECT_EQ(ErrorOf(writer.GetText()), "nothing thrown");
  }
}

TEST(TZxXIniWriter, RefusesTokensThatAreNotOpen) {
  TZxXIniWriter writer;
  EXPECT_THROW(writer.EndSectionE(0), TZxMessage);
  const unsigned long token = writer.BeginSectionSE("a");
  writer.BeginSectionSE("b");
  EXPECT_THROW(writer.EndSectionE(token + 2), TZxMessage);
  writer.EndSectionE(token);
  EXPECT_THROW(writer.EndSectionE(token), TZxMessage);
}

TEST(TZxXIniWriter, WritesAHundredLevelsAndNoMore) {
  for (const bool isCompact : {false, true}) {
    TZxXIniWriter writer;
    const auto begin = [&] {
      return isCompact ? writer.BeginSectionCompactSE("s") : writer.BeginSectionSE("s");
    };
    for (int i = 0; i < 100; ++i) {
      begin();
    }
    const double value = 1.5;
    ASSERT_TRUE(writer.WriteS<double>("v", &value));
    EXPECT_THROW(begin(), TZxMessage);
    TZxXIniReader reader(writer.GetText());
    for (int i = 0; i < 100; ++i) {
      reader.BeginSectionE(0);
    }
    EXPECT_EQ(reader.ReadE<double>(reader.FindFE("v", 0)), 1.5);
  }
}

TEST(TZxXIniReader, CountsItemsInTheOrderOfTheText) {
  const TZxXIniReader reader("z = 1\na = 2\nm.x = 3\nb = 4\nm.y = 5\n[k.l]\nq = 1\n[c]\n");
  ASSERT_EQ(reader.GetCount(), 6u);
  const char* order[] = {"z", "a", "m", "b", "k", "c"};
  for (unsigned long i = 0; i < 6; ++i) {
    EXPECT_EQ(reader.GetKeyE(i), order[i]);
    EXPECT_EQ(reader.FindF(order[i], 0), i);
    EXPECT_EQ(reader.FindFE(order[i], i), i);
    EXPECT_EQ(reader.FindFE(std::string(order[i]), i), i);
    EXPECT_EQ(reader.FindF(order[i], i + 1), ~0ul);
    EXPECT_THROW(reader.FindFE(order[i], i + 1), TZxMessage);
  }
  EXPECT_EQ(reader.FindF("x", 0), ~0ul);
}

TEST(TZxXIniReader, ReadsNumbersAsPeopleWriteThem) {
  const TZxXIniReader reader("a = 3\nb = -0\nc = 1_000.5\nd = 5e-324\ne = +inf\nf = nan\n"
                             "g = 9007199254740993\nh = \"0x3ff8000000000000\"\n");
  const auto read = [&](const char* key) { return reader.ReadE<double>(reader.FindFE(key, 0)); };
  EXPECT_EQ(read("a"), 3.0);
  EXPECT_EQ(read("b"), 0.0);
  EXPECT_EQ(read("c"), 1000.5);
  EXPECT_EQ(read("d"), std::numeric_limits<double>::denorm_min());
  EXPECT_EQ(read("e"), std::numeric_limits<double>::infinity());
  EXPECT_NE(read("f"), read("f"));
  EXPECT_EQ(read("g"), 9007199254740992.0);
  EXPECT_EQ(read("h"), 1.5);
}

TEST(TZxXIniReader, RaisesOnOtherTypesWithThePlace) {
  TZxXIniReader reader(
      "a = 1\n\n  t = 'x'\nb = true\ns = { }\nr = [1]\n"
      "u = '0x3ff800000000000'\nv = '0x3ff800000000000g'\nw = '3ff80000000000000'\n");
  EXPECT_EQ(MessageOf([&] { reader.ReadE<double>(1); }), "line 3, column 3: \"t\" is no number");
  for (const unsigned long item : {2ul, 3ul, 4ul, 5ul, 6ul, 7ul}) {
    EXPECT_THROW(reader.ReadE<double>(item), TZxMessage) << item;
  }
  EXPECT_THAT(MessageOf([&] { reader.ReadE<long>(1); }), StartsWith("line 3, column 3: "));
  EXPECT_THAT(MessageOf([&] { reader.ReadE<bool>(0); }), StartsWith("line 1, column 1: "));
  EXPECT_THAT(MessageOf([&] { reader.ReadE<std::string>(0); }), StartsWith("line 1, column 1: "));
  EXPECT_THAT(MessageOf([&] { reader.BeginSectionE(4); }), StartsWith("line 6, column 1: "));
  EXPECT_THROW(reader.BeginSectionE(0), TZxMessage);
  EXPECT_THROW(reader.ReadE<double>(9), TZxMessage);
  EXPECT_THROW(reader.ReadE<double>(~0ul), TZxMessage);
  EXPECT_THROW(reader.BeginSectionE(~0ul), TZxMessage);
  EXPECT_THROW(reader.GetKeyE(~0ul), TZxMessage);
  EXPECT_THROW(reader.EndSectionE(0), TZxMessage);
  EXPECT_THROW(reader.EndSectionE(1), TZxMessage);
  EXPECT_THROW(reader.FindFE(static_cast<const char*>(nullptr), 0), TZxMessage);
}

TEST(TZxXIniReader, TellsWhereAKeyIsMissing) {
  TZxXIniReader reader("a = 1\nmin = { x = 1 }\n");
  reader.BeginSectionE(reader.FindFE("min", 0));
  EXPECT_EQ(MessageOf([&] { reader.FindFE("y", 0); }), "line 2, column 7: \"y\" is missing");
}

TEST(TZxXIniReader, TellsWhereATextIsDamaged) {
  EXPECT_THAT(ErrorOf("a = 1\nb = = 2\n"), StartsWith("line 2, column 5: "));
  EXPECT_THAT(ErrorOf("a = 1\na = 2\n"), StartsWith("line 2, column "));
  EXPECT_THAT(ErrorOf("a = 'x\n"), StartsWith("line 1, column "));
  EXPECT_THAT(ErrorOf("\n\na = { x = 1\n"), StartsWith("line 3, column "));
  EXPECT_THAT(ErrorOf("a = 1e999999\n"), StartsWith("line 1, column "));
  EXPECT_THAT(ErrorOf("[a]\nb = \xFF\n"), StartsWith("line 2, column "));
}

// Quotes in front of the three that end a text belong to it, and escaped ones end nothing.
TEST(TZxXIniReader, FollowsTextsToTheirEnd) {
  const std::string deep = Repeat("[", 200);
  for (const char* text : {R"(''''@'''')", R"('''''@''''')", R"('''@''')", R"(""""@\"""""")",
                           R"("""@\\""")", R"("@\\")", R"('@\')", R"("")", R"('')"}) {
    std::string value = text;
    if (const std::size_t at = value.find('@'); at != std::string::npos) {
      value.replace(at, 1, deep);
    }
    EXPECT_EQ(ErrorOf("a = " + value + "\nb = 1\n"), "nothing thrown") << text;
    EXPECT_THAT(ErrorOf("a = " + value + "\nb = " + deep), StartsWith("line 2, column 105: nested"))
        << text;
  }
}

TEST(TZxXIniReader, RaisesWhereNoKeyCanBegin) {
  for (int c = 0; c < 256; ++c) {
    const std::string text = std::string("[") + static_cast<char>(c) + "]\n";
    if (c < 128 && (std::isalnum(c) != 0 || c == '-' || c == '_')) {
      EXPECT_EQ(ErrorOf(text), "nothing thrown") << c;
    } else {
      EXPECT_THAT(ErrorOf(text), StartsWith("line ")) << c;
    }
  }
  EXPECT_THAT(ErrorOf("[a.=]\n"), StartsWith("line 1, column 4: "));
  EXPECT_THAT(ErrorOf("[[=]]\n"), StartsWith("line 1, column 3: "));
}

TEST(TZxXIniReader, LettersBeyondAsciiAreNoBlanks) {
  // U+00A1 to U+0499, and some of the other planes, behind the end of a line that goes on.
  for (const char* letter :
       {"\u00A1", "\u00E9", "\u0499", "\u0E01", "\u2070", "\uFF21", "\U00010400"}) {
    const TZxXIniReader reader(std::string("text = \"\"\"a\\\n  ") + letter + "\"\"\"\n");
    EXPECT_EQ(reader.ReadE<std::string>(0), std::string("a") + letter);
    EXPECT_THAT(ErrorOf(std::string(letter) + " = 1\n"), StartsWith("line 1, column "));
    EXPECT_THAT(ErrorOf(std::string("a ") + letter + "= 1\n"), StartsWith("line 1, column "));
    EXPECT_THAT(ErrorOf(std::string("a = ") + letter + "\n"), StartsWith("line 1, column "));
  }
}

TEST(TZxXIniReader, EveryTruncationIsReadOrRaises) {
  const std::string text = "a = 1.5\n[s]\nmin = { x = -0.0, y = '0xfff8000000000abc' }\n"
                           "\"k \\\" [[\" = \"\"\"a\n\"\"\"\n# [[[\n[[t]]\nv = [[1, 2], ['[']]\n";
  int errors = 0;
  for (std::size_t i = 0; i <= text.size(); ++i) {
    const std::string error = ErrorOf(text.substr(0, i));
    if (error != "nothing thrown") {
      EXPECT_THAT(error, testing::MatchesRegex("line [0-9]+, column [0-9]+: .+"));
      ++errors;
    }
  }
  EXPECT_GT(errors, 50);
  EXPECT_EQ(ErrorOf(text), "nothing thrown");
}

TEST(TZxXIniReader, RaisesOnEveryKindOfDeepNesting) {
  constexpr int n = 200000;
  EXPECT_THAT(ErrorOf("a = " + Repeat("[", n)), StartsWith("line 1, column "));
  EXPECT_THAT(ErrorOf("a = " + Repeat("[", n) + Repeat("]", n)), StartsWith("line 1, column "));
  EXPECT_THAT(ErrorOf("\na = " + Repeat("{ a = ", n)), StartsWith("line 2, column "));
  EXPECT_THAT(ErrorOf("a" + Repeat(".a", n) + " = 1"), StartsWith("line 1, column "));
  EXPECT_THAT(ErrorOf("\n\n[a" + Repeat(".a", n) + "]"), StartsWith("line 3, column "));
  EXPECT_THAT(ErrorOf("[[a" + Repeat(" . \"a.b\"", n) + "]]"), StartsWith("line 1, column "));
  EXPECT_THAT(ErrorOf("a = " + Repeat("{ a.a.a.a.a = ", n)), StartsWith("line 1, column "));
  EXPECT_THAT(ErrorOf("a = [" + Repeat("\n[", n)), StartsWith("line "));
  EXPECT_THAT(ErrorOf("\xEF\xBB\xBF[a" + Repeat(".a", n) + "]"), StartsWith("line 1, column "));
}

TEST(TZxXIniReader, CountsLevelsOfSectionKeyAndBracketsTogether) {
  const std::string header = "[a" + Repeat(".a", 49) + "]\n"; // 50 levels
  EXPECT_EQ(ErrorOf(header + "b" + Repeat(".b", 50) + " = 1"), "nothing thrown");
  EXPECT_THAT(ErrorOf(header + "b" + Repeat(".b", 51) + " = 1"),
              StartsWith("line 2, column 102: nested too deep"));
  EXPECT_EQ(ErrorOf(header + "b = " + Repeat("[", 50) + Repeat("]", 50)), "nothing thrown");
  EXPECT_THAT(ErrorOf(header + "b = " + Repeat("[", 51) + Repeat("]", 51)),
              HasSubstr("nested too deep"));
  // What looks deep and is not.
  EXPECT_EQ(ErrorOf(Repeat("a = [[1.5], { b.c = 2.5 }]\n", 1) + "# " + Repeat("[", 500) +
                    "\nb = '" + Repeat("[.", 500) + "'\nc = \"\\\"" + Repeat("{.", 500) +
                    "\"\nd = '''" + Repeat("[\n", 500) + "'''''\ne = \"\"\"" + Repeat("[\n", 500) +
                    "\\\"\"\"\"\nf = [" + Repeat("1.5, [], { a.b = 1 }, ", 500) + "]\n"),
            "nothing thrown");
}

TEST(TZxXIniReader, ADoubleAsTextIsSixteenDigitsOfHex) {
  const auto read = [](const std::string& text) {
    return MessageOf([&] {
      const TZxXIniReader reader("a = '" + text + "'\n");
      static_cast<void>(reader.ReadE<double>(0));
    });
  };
  EXPECT_EQ(read("0x7ff8000000000abc"), "nothing thrown");
  for (const char* text :
       {"0xg000000000000000", "0x000000000000000g", "0x-000000000000001", "1x7ff8000000000abc",
        "0y7ff8000000000abc", "0x7ff8000000000ab", "0x7ff8000000000abc0"}) {
    EXPECT_THAT(read(text), StartsWith("line 1, column ")) << text;
  }
}

TEST(TZxXIniReader, BracketsAndStringsThatDoNotEndOrBegin) {
  for (const char* text : {"]", "a = 1]", "a = [1]]", "}", "a = \"\\", "a = \"\\\"", "a = \"\\\n\"",
                           "a = \"\"\"\\", "[a]]"}) {
    EXPECT_THAT(ErrorOf(text), StartsWith("line ")) << text;
  }
  EXPECT_EQ(ErrorOf("a = \"\"\"\\\n  b\"\"\""), "nothing thrown"); // a line that goes on
}

TEST(TZxXIniWriter, WithoutAValueNothingIsWrittenOfAnyType) {
  TZxXIniWriter writer;
  const auto refused = [&](bool written) {
    EXPECT_FALSE(written);
    EXPECT_EQ(MessageOf([&] { writer.RaiseErrorE(); }), "There is no value for the key \"k\".");
  };
  refused(writer.WriteS<double>("k", nullptr));
  refused(writer.WriteS<long>("k", nullptr));
  refused(writer.WriteS<bool>("k", nullptr));
  refused(writer.WriteS<std::string>("k", nullptr));
  EXPECT_EQ(TZxXIniReader(writer.GetText()).GetCount(), 0u);
}

} // namespace
