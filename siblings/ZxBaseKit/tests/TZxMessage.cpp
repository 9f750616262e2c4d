#include <ZxBaseKit/TZxMessage.h>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "CommaLocale.h"

TEST(TZxMessage, KeepsATextWithoutPlaceholders) {
  EXPECT_STREQ(TZxMessage("plain").what(), "plain");
  EXPECT_STREQ(TZxMessage(std::string("text")).what(), "text");
  EXPECT_STREQ(TZxMessage(static_cast<const char*>(nullptr)).what(), "");
  EXPECT_STREQ(TZxMessage().what(), "");
  EXPECT_EQ(TZxMessage("plain").GetText(), "plain");
}

TEST(TZxMessage, FillsThePlaceholdersInTheirOrder) {
  EXPECT_STREQ((TZxMessage("@%1%: %2%: %3%") << "file" << 12 << std::string("f()")).what(),
               "@file: 12: f()");
  EXPECT_STREQ((TZxMessage("%2% before %1%") << "a"
                                             << "b")
                   .what(),
               "b before a");
  EXPECT_STREQ((TZxMessage("%1% and %1%") << "x").what(), "x and x");
  EXPECT_STREQ(
      (TZxMessage("%1%%2%%3%%4%") << -1 << 4000000000u << -5000000000L << 18446744073709551615UL)
          .what(),
      "-14000000000-500000000018446744073709551615");
}

TEST(TZxMessage, ValuesWithoutAPlaceholderAreIgnoredAndOpenOnesStay) {
  EXPECT_STREQ((TZxMessage("no place") << "x").what(), "no place");
  EXPECT_STREQ((TZxMessage("%1% %2%") << "x").what(), "x %2%");
  EXPECT_STREQ((TZxMessage("%1%") << static_cast<const char*>(nullptr)).what(), "");
  EXPECT_STREQ((TZxMessage("100% of %1%") << "it").what(), "100% of it");
}

TEST(TZxMessage, AValueThatLooksLikeAPlaceholderOfItsOwnIsNotFilledForEver) {
  EXPECT_STREQ((TZxMessage("[%1%]") << "%1%").what(), "[%1%]");
}

TEST(TZxMessage, AValueIsNeverTakenForAPlaceholder) {
  EXPECT_STREQ((TZxMessage("%1% %2%") << "%2%"
                                      << "x")
                   .what(),
               "%2% x");
  EXPECT_STREQ((TZxMessage("%1%1% %2%") << "%"
                                        << "x")
                   .what(),
               "%1% x");
  EXPECT_STREQ((TZxMessage("%1%%2%%3%") << "%3"
                                        << "%"
                                        << "z")
                   .what(),
               "%3%z");
  EXPECT_STREQ((TZxMessage("%2%1%") << "a").what(), "a1%");
}

TEST(TZxMessage, TheLowestOpenPlaceholderIsFilledWhateverItsNumber) {
  EXPECT_STREQ((TZxMessage("%2%") << "x").what(), "x");
  EXPECT_STREQ((TZxMessage("%7% %3% %7%") << "a"
                                          << "b"
                                          << "c")
                   .what(),
               "b a b");
  TZxMessage message("%1%,%10%,%2%,%0%");
  for (int i = 1; i <= 10; ++i) {
    message.Fill(std::to_string(i * 11));
  }
  EXPECT_STREQ(message.what(), "22,44,33,11");
}

TEST(TZxMessage, WhatIsNoNumberBetweenTwoSignsIsNoPlaceholder) {
  for (const char* text : {"%", "%%", "%%%", "% 1%", "%1 %", "%-1%", "%+1%", "%1", "1%", "%a%",
                           "%99999999999999999999%", "100%"}) {
    EXPECT_STREQ((TZxMessage(text) << "x").what(), text);
  }
  EXPECT_STREQ((TZxMessage("%%1%%") << "x").what(), "%x%");
  EXPECT_STREQ((TZxMessage("50%1%2%") << "x").what(), "50x2%");
}

// As the placeholder's text of a value of every arithmetic type.
template <class T> std::string Filled(T value) { return (TZxMessage("%1%") << value).GetText(); }

TEST(TZxMessage, EveryArithmeticTypeGoesIn) {
  EXPECT_EQ(Filled<bool>(true) + Filled<bool>(false), "10");
  EXPECT_EQ(Filled<char>('c'), "c");
  EXPECT_EQ(Filled<signed char>(-128), "-128");
  EXPECT_EQ(Filled<unsigned char>(255), "255");
  EXPECT_EQ(Filled<short>(-32768), "-32768");
  EXPECT_EQ(Filled<unsigned short>(65535), "65535");
  EXPECT_EQ(Filled<int>(-2147483647 - 1), "-2147483648");
  EXPECT_EQ(Filled<unsigned int>(4294967295u), "4294967295");
  EXPECT_EQ(Filled<long>(-9223372036854775807L - 1), "-9223372036854775808");
  EXPECT_EQ(Filled<unsigned long>(18446744073709551615UL), "18446744073709551615");
  EXPECT_EQ(Filled<long long>(-9223372036854775807LL - 1), "-9223372036854775808");
  EXPECT_EQ(Filled<unsigned long long>(18446744073709551615ULL), "18446744073709551615");
  EXPECT_EQ(Filled<wchar_t>(L'A'), "65");
  EXPECT_EQ(Filled<char16_t>(u'A'), "65");
  EXPECT_EQ(Filled<char32_t>(U'A'), "65");
  EXPECT_EQ(Filled<char8_t>(u8'A'), "65");
  EXPECT_EQ(Filled<float>(0.1f), "0.1");
  EXPECT_EQ(Filled<double>(0.1), "0.1");
  EXPECT_EQ(Filled<double>(1.0 / 3), "0.3333333333333333");
  EXPECT_EQ(Filled<double>(1e300), "1e+300");
  EXPECT_EQ(Filled<double>(-0.0), "-0");
  EXPECT_EQ(Filled<long double>(0.5L), "0.5");
  enum KIND { kKind = 3 };
  EXPECT_EQ(Filled<KIND>(kKind), "3");
}

template <class T, class = void> struct TGoesIn : std::false_type {};
template <class T>
struct TGoesIn<T, std::void_t<decltype(std::declval<const TZxMessage&>() << std::declval<T>())>>
    : std::true_type {};

// What would go in as something that it is not must not compile.
TEST(TZxMessage, OtherPointersDoNotGoIn) {
  static_assert(TGoesIn<const char*>::value && TGoesIn<char*>::value);
  static_assert(!TGoesIn<void*>::value && !TGoesIn<const int*>::value);
  static_assert(!TGoesIn<const unsigned char*>::value && !TGoesIn<const wchar_t*>::value);
}

TEST(TZxMessage, NumbersDoNotFollowTheLocale) {
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  EXPECT_EQ(Filled<double>(1.5), "1.5");
  EXPECT_EQ(Filled<long>(1234567), "1234567");
}

TEST(TZxMessage, StreamingLeavesTheTemplateAsItIs) {
  const TZxMessage pattern("%1%");
  EXPECT_STREQ((pattern << "a").what(), "a");
  EXPECT_STREQ((pattern << "b").what(), "b");
  EXPECT_STREQ(pattern.what(), "%1%");
}

TEST(TZxMessage, IsThrownByValueAsAStandardException) {
  static_assert(std::is_base_of_v<std::exception, TZxMessage>);
  static_assert(std::is_copy_constructible_v<TZxMessage> && std::is_copy_assignable_v<TZxMessage>);
  try {
    throw TZxMessage("Value \"%1%\" not found") << "name";
  } catch (const std::exception& error) {
    EXPECT_STREQ(error.what(), "Value \"name\" not found");
  }
}

TEST(TraceSink, ReceivesMessagesWithItsUser) {
  std::vector<std::string> seen;
  ZxSetTraceSink(
      [](const TZxMessage& message, void* user) {
        static_cast<std::vector<std::string>*>(user)->emplace_back(message.what());
      },
      &seen);
  ZxTraceException(TZxMessage("one"));
  ZxTraceException(TZxMessage("two"));
  ZxSetTraceSink(nullptr, nullptr);
  ZxTraceException(TZxMessage("three"));
  EXPECT_EQ(seen, (std::vector<std::string>{"one", "two"}));
}

TEST(TraceSink, WhatItThrowsIsDropped) {
  static_assert(noexcept(ZxTraceException(TZxMessage())));
  ZxSetTraceSink([](const TZxMessage&, void*) { throw std::runtime_error("sink"); }, nullptr);
  EXPECT_NO_THROW(ZxTraceException(TZxMessage("x")));
  ZxSetTraceSink(nullptr, nullptr);
}
