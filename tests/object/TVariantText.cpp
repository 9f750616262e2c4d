#include <ZxCore3D/object/TVariant.h>

#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "CommaLocale.h"

namespace {

using Zx3D::TVariant;

template <class T> TVariant Make(T value) {
  TVariant v;
  v.Set(value);
  return v;
}

template <class T> std::string Text(T value) { return Make(value).ToString(); }

template <class T> std::string Shown(T value) {
  std::string text = "untouched";
  EXPECT_TRUE(Make(value).AsString(&text));
  return text;
}

// A variant of any tag over any bytes; they own nothing, and the tag is taken back at the end.
class TRaw : public TVariant {
public:
  template <class T, std::size_t N> TRaw(unsigned int tag, const T (&values)[N]) {
    static_assert(sizeof values <= sizeof Value);
    std::memset(Value, 0, sizeof Value);
    std::memcpy(Value, values, sizeof values);
    Count = 1;
    Type = static_cast<DATA_TYPE>(tag);
  }
  ~TRaw() { Type = DATA_TYPE_NONE; }
};

std::string s_Untouched = "untouched";

void ExpectNoText(const TVariant& v) {
  std::string text = s_Untouched;
  EXPECT_FALSE(v.ToString(&text)) << v.Type;
  EXPECT_EQ(text, s_Untouched);
  EXPECT_EQ(v.ToString(), "");
}

void ExpectNotShown(const TVariant& v) {
  std::string text = s_Untouched;
  EXPECT_FALSE(v.AsString(&text)) << v.Type;
  EXPECT_EQ(text, s_Untouched);
}

TEST(ToString, Scalars) {
  EXPECT_EQ(TVariant().ToString(), "<none>");
  EXPECT_EQ(Text(true), "true");
  EXPECT_EQ(Text(false), "false");
  EXPECT_EQ(Text<signed char>(-128), "int8(-128)");
  EXPECT_EQ(Text<unsigned char>(255), "uint8(255)");
  EXPECT_EQ(Text<short>(-32768), "int16(-32768)");
  EXPECT_EQ(Text<unsigned short>(65535), "uint16(65535)");
  EXPECT_EQ(Text(std::numeric_limits<int>::min()), "int32(-2147483648)");
  EXPECT_EQ(Text(2147483647U), "uint32(2147483647)");
  EXPECT_EQ(Text(2147483648U), "uint32(-2147483648)");
  EXPECT_EQ(Text(4294967295U), "uint32(-1)");
  EXPECT_EQ(Text(std::numeric_limits<long>::min()), "int64(-9223372036854775808)");
  EXPECT_EQ(Text(~0UL), "uint64(18446744073709551615)");
  EXPECT_EQ(Text(-1.5F), "float(-1.500000)");
  EXPECT_EQ(Text(0.1F), "float(0.100000)");
  EXPECT_EQ(Text(1e21), "double(1000000000000000000000.000000)");
  EXPECT_EQ(Text(0.0000005), "double(0.000000)");
  EXPECT_EQ(Text(std::numeric_limits<double>::infinity()), "double(inf)");
  std::string text = "old";
  EXPECT_TRUE(Make(5).ToString(&text));
  EXPECT_EQ(text, "int32(5)");
}

TEST(ToString, StringsStandInQuotesWithoutEscapes) {
  EXPECT_EQ(Text(std::string("plain")), "\"plain\"");
  EXPECT_EQ(Text(std::string("")), "\"\"");
  EXPECT_EQ(Text(std::string("a\"b\\")), "\"a\"b\\\"");
  EXPECT_EQ(Text(std::string("ab\0cd", 5)), "\"ab\"");
  const std::string longer(100000, 'x');
  EXPECT_EQ(Text(longer), "\"" + longer + "\"");
  std::string text = "before";
  EXPECT_TRUE(Make(std::string("new")).ToString(&text));
  EXPECT_EQ(text, "\"new\"");
}

TEST(ToString, TagsWithoutText) {
  const int nothing[] = {0};
  ExpectNoText(TRaw(12, nothing));
  ExpectNoText(TRaw(13, nothing));
  ExpectNoText(TRaw(14, nothing));
  ExpectNoText(TRaw(16, nothing));
  ExpectNoText(TRaw(0x16, nothing));
  for (const unsigned int base : {0U, 12U, 13U, 14U, 15U}) {
    for (const unsigned int components : {0x20U, 0x40U, 0x60U}) {
      ExpectNoText(TRaw(base | components, nothing));
    }
  }
  for (unsigned int components = 0x80; components <= 0xE0; components += 0x20) {
    ExpectNoText(TRaw(6 | components, nothing));
  }
  const float floats[] = {1, 2, 3};
  TVariant array;
  array.SetArray(floats, 3);
  ExpectNoText(array);
}

// One base type: the four values, and the texts of 2, 3 and 4 of them.
template <class T>
void CheckVectors(unsigned int base, const T (&values)[4], const char* two, const char* three,
                  const char* four) {
  EXPECT_EQ(TRaw(base | 0x20, values).ToString(), two);
  EXPECT_EQ(TRaw(base | 0x40, values).ToString(), three);
  EXPECT_EQ(TRaw(base | 0x60, values).ToString(), four);
  EXPECT_EQ(TRaw(base | 0x120, values).ToString(), two) << "the array flag is not looked at";
}

TEST(ToString, Vectors) {
  CheckVectors<bool>(1, {true, false, true, false}, "vec2b(true,false)", "vec3b(true,false,true)",
                     "vec4b(true,false,true,false)");
  CheckVectors<bool>(1, {false, true, false, true}, "vec2b(false,true)", "vec3b(false,true,false)",
                     "vec4b(false,true,false,true)");
  CheckVectors<std::int8_t>(2, {-1, 2, -128, 127}, "vec2i8(-1,2)", "vec3i8(-1,2,-128)",
                            "vec3i8(-1,2,-128,127)");
  CheckVectors<std::uint8_t>(3, {255, 2, 3, 4}, "vec2u8(255,2)", "vec3u8(255,2,3)",
                             "vec3u8(255,2,3,4)");
  CheckVectors<std::int16_t>(4, {-32768, 2, 3, 4}, "vec2i16(-32768,2)", "vec3i16(-32768,2,3)",
                             "vec3i16(-32768,2,3,4)");
  CheckVectors<std::uint16_t>(5, {65535, 2, 3, 4}, "vec2u16(65535,2)", "vec3u16(65535,2,3)",
                              "vec3u16(65535,2,3,4)");
  CheckVectors<std::int32_t>(6, {-1, 2, 3, 4}, "vec2i32(-1,2)", "vec3i32(-1,2,3)",
                             "vec3i32(-1,2,3,4)");
  CheckVectors<std::uint32_t>(7, {4294967295U, 2, 3, 4}, "vec2u32(4294967295,2)",
                              "vec3u32(4294967295,2,3)", "vec3u32(4294967295,2,3,4)");
  CheckVectors<std::int64_t>(8, {std::numeric_limits<std::int64_t>::min(), 2, 3, -4},
                             "vec2i64(-9223372036854775808,2)", "vec3i64(-9223372036854775808,2,3)",
                             "vec3i64(-9223372036854775808,2,3,-4)");
  CheckVectors<std::uint64_t>(9, {~0UL, 2, 3, 4}, "vec2u64(18446744073709551615,2)",
                              "vec3u64(18446744073709551615,2,3)",
                              "vec3u64(18446744073709551615,2,3,4)");
  CheckVectors<float>(10, {0.5F, -2, 3, 0.1F}, "vec2f(0.500000,-2.000000)",
                      "vec3f(0.500000,-2.000000,3.000000)",
                      "vec3f(0.5000000000000000,-2.0000000000000000,3.0000000000000000,"
                      "0.1000000014901161)");
  CheckVectors<double>(11, {0.5, -2, 3, 0.1}, "vec2d(0.500000,-2.000000)",
                       "vec3d(0.500000,-2.000000,3.000000)",
                       "vec3d(0.5000000000000000,-2.0000000000000000,3.0000000000000000,"
                       "0.1000000000000000)");
  const int ints[] = {7, -8};
  TVariant vector;
  vector.SetVector(ints, 2);
  EXPECT_EQ(vector.ToString(), "vec2i32(7,-8)");
}

TEST(AsString, IsTheValueAlone) {
  std::string none;
  EXPECT_TRUE(TVariant().AsString(&none));
  EXPECT_EQ(none, "none");
  EXPECT_EQ(Shown(true), "1");
  EXPECT_EQ(Shown(false), "0");
  EXPECT_EQ(Shown<signed char>(-5), "-5");
  EXPECT_EQ(Shown<unsigned char>(250), "250");
  EXPECT_EQ(Shown<short>(-500), "-500");
  EXPECT_EQ(Shown<unsigned short>(65000), "65000");
  EXPECT_EQ(Shown(-7), "-7");
  EXPECT_EQ(Shown(4294967295U), "-1");
  EXPECT_EQ(Shown(-9000000000L), "-9000000000");
  EXPECT_EQ(Shown(~0UL), "18446744073709551615");
  EXPECT_EQ(Shown(0.5F), "0.500000");
  EXPECT_EQ(Shown(-2.25), "-2.250000");
  EXPECT_EQ(Shown(std::string("a \"b\"")), "a \"b\"");
  EXPECT_EQ(Shown(std::string("ab\0cd", 5)), "ab");
  const int ints[] = {7, -8};
  for (const unsigned int tag : {12U, 13U, 14U, 16U, 0x26U, 0x46U, 0x66U, 0x10AU, 0x12AU}) {
    ExpectNotShown(TRaw(tag, ints));
  }
}

// The text form of what `text` stores, or "false" with the old value kept.
std::string Parse(const std::string& text) {
  TVariant v;
  v.Set("old", 3);
  if (v.FromString(text)) {
    return v.ToString();
  }
  EXPECT_STREQ(v.GetStringPtr(), "old") << text;
  return "false";
}

TEST(FromString, Words) {
  EXPECT_EQ(Parse("<none>"), "<none>");
  EXPECT_EQ(Parse("true"), "true");
  EXPECT_EQ(Parse("false"), "false");
  EXPECT_EQ(Parse("True"), "false");
  EXPECT_EQ(Parse("<None>"), "false");
  EXPECT_EQ(Parse("none"), "false");
  EXPECT_EQ(Parse(""), "false");
  EXPECT_EQ(Parse("5"), "false");
  EXPECT_EQ(Parse("42"), "false");
  TVariant v;
  EXPECT_TRUE(v.FromString("false"));
  EXPECT_EQ(v.Type, 1U);
}

TEST(FromString, Quotes) {
  EXPECT_EQ(Parse("\"\""), "\"\"");
  EXPECT_EQ(Parse("\""), "false");
  EXPECT_EQ(Parse("\"abc\""), "\"abc\"");
  EXPECT_EQ(Parse("\"a\"b\""), "\"a\"b\"");
  EXPECT_EQ(Parse("\"true\""), "\"true\"");
  EXPECT_EQ(Parse("\"abc"), "false");
  TVariant v;
  EXPECT_TRUE(v.FromString(std::string("\"a\0b\"", 5)));
  EXPECT_EQ(v.GetStringLength(), 3U);
  const std::string longer(1000, 'y');
  EXPECT_TRUE(v.FromString("\"" + longer + "\""));
  EXPECT_EQ(v.GetStringPtr(), longer);
}

TEST(FromString, IntegersAreCutToTheirWidth) {
  EXPECT_EQ(Parse("int8(300)"), "int8(44)");
  EXPECT_EQ(Parse("int8(-129)"), "int8(127)");
  EXPECT_EQ(Parse("uint8(256)"), "uint8(0)");
  EXPECT_EQ(Parse("int16(65535)"), "int16(-1)");
  EXPECT_EQ(Parse("uint16(65537)"), "uint16(1)");
  EXPECT_EQ(Parse("int32(4294967297)"), "int32(1)");
  EXPECT_EQ(Parse("uint32(7)"), "uint32(7)");
  EXPECT_EQ(Parse("int64(-9223372036854775808)"), "int64(-9223372036854775808)");
  EXPECT_EQ(Parse("uint64(18446744073709551615)"), "uint64(18446744073709551615)");
  EXPECT_EQ(Parse("uint64(18446744073709551616)"), "uint64(0)") << "wraps";
  EXPECT_EQ(Parse("int32(+5)"), "int32(5)");
  EXPECT_EQ(Parse("int32(5)trailing)"), "int32(5)");
}

TEST(FromString, TheWidthIsANumberOfItsOwn) {
  EXPECT_EQ(Parse("int+8(5)"), "int8(5)");
  EXPECT_EQ(Parse("int0016(5)"), "int16(5)");
  EXPECT_EQ(Parse("uint4294967304(5)"), "uint8(5)");
  EXPECT_EQ(Parse("int12(1)"), "false");
  EXPECT_EQ(Parse("int0(1)"), "false");
  EXPECT_EQ(Parse("int-8(1)"), "false");
  EXPECT_EQ(Parse("int(1)"), "false");
  EXPECT_EQ(Parse("uint(1)"), "false");
  EXPECT_EQ(Parse("int8 (1)"), "false");
  EXPECT_EQ(Parse("uint12(1)"), "false");
  EXPECT_EQ(Parse("intx(1)"), "false");
}

TEST(FromString, BadNumbersAreFalse) {
  for (const char* const text :
       {"int8()", "int8(x)", "int8(-)", "int8( 1)", "int8(1 )", "int8(1.5)", "uint16(-1)",
        "uint16(+1)", "uint8()", "int8(1", "int8 1)", ")int8(1", "int8)1("}) {
    EXPECT_EQ(Parse(text), "false") << text;
  }
  EXPECT_EQ(Parse(std::string("int8(1\0)", 8)), "false") << "a zero is no digit";
}

TEST(FromString, RealsNeverFail) {
  EXPECT_EQ(Parse("float(x)"), "float(0.000000)");
  EXPECT_EQ(Parse("float()"), "float(0.000000)");
  EXPECT_EQ(Parse("double(-2.5e1)"), "double(-25.000000)");
  EXPECT_EQ(Parse("double( 3)"), "double(3.000000)");
  EXPECT_EQ(Parse("double(0x10)"), "double(16.000000)");
  EXPECT_EQ(Parse("float(1e999)"), "float(inf)");
  EXPECT_EQ(Parse("float(1.5)more"), "float(1.500000)");
  EXPECT_EQ(Parse("float(1.5"), "false");
  TVariant v;
  EXPECT_TRUE(v.FromString("float(0.1)"));
  EXPECT_EQ(v.Type, 10U);
  EXPECT_EQ(v.Get<float>(), 0.1F);
  EXPECT_TRUE(v.FromString("double(0.1)"));
  EXPECT_EQ(v.Type, 11U);
  EXPECT_EQ(v.Get<double>(), 0.1);
}

TEST(FromString, OtherNamesAreFalse) {
  for (const char* const text :
       {"bool(1)", "string(a)", "vec2i32(1,2)", "vec3f(1,2,3)", "Float(1)", "floaty(1)",
        "double1(1)", "doubl(1)", "(1)", "()", "float32(1)", "int", "<none> ", " true"}) {
    EXPECT_EQ(Parse(text), "false") << text;
  }
}

template <class T> void CheckRoundTrip(T value) {
  const TVariant v = Make(value);
  TVariant back;
  ASSERT_TRUE(back.FromString(v.ToString())) << v.ToString();
  EXPECT_EQ(back.Type, v.Type);
  EXPECT_EQ(back.Get<T>(), value);
}

TEST(TextForms, GiveTheSameScalarBack) {
  CheckRoundTrip(true);
  CheckRoundTrip(false);
  for (int i = -128; i < 128; ++i) {
    CheckRoundTrip(static_cast<signed char>(i));
    CheckRoundTrip(static_cast<unsigned char>(i + 128));
  }
  for (const long value : {-9223372036854775807L - 1, -2147483649L, -32769L, -1L, 0L, 1L, 32768L,
                           2147483647L, 9223372036854775807L}) {
    CheckRoundTrip(value);
    CheckRoundTrip(static_cast<int>(value));
    CheckRoundTrip(static_cast<short>(value));
    CheckRoundTrip(static_cast<unsigned short>(value));
    CheckRoundTrip(static_cast<unsigned long>(value));
  }
  for (const unsigned int value : {0U, 1U, 65536U, 2147483647U}) {
    CheckRoundTrip(value);
  }
  for (const double value : {0.0, -0.5, 1234.015625, 1e15, -7.0}) {
    CheckRoundTrip(value);
    CheckRoundTrip(static_cast<float>(value));
  }
  TVariant empty;
  empty.Set(5);
  EXPECT_TRUE(empty.FromString(TVariant().ToString()));
  EXPECT_EQ(empty.Type, 0U);
}

TEST(TextForms, OfALargeUint32CantBeReadBack) {
  TVariant v;
  EXPECT_FALSE(v.FromString(Text(2147483648U)));
  EXPECT_FALSE(v.FromString(Text(4294967295U)));
}

TEST(TextForms, DoNotFollowTheHostsLocale) {
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  EXPECT_EQ(Text(1.5), "double(1.500000)");
  EXPECT_EQ(Shown(1.5F), "1.500000");
  const double values[] = {0.5, 1.5};
  EXPECT_EQ(TRaw(0x2B, values).ToString(), "vec2d(0.500000,1.500000)");
  TVariant v;
  EXPECT_TRUE(v.FromString("double(1.5)"));
  EXPECT_EQ(v.Get<double>(), 1.5);
}

} // namespace
