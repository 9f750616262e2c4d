#include <ZxBaseKit/TZxMessage.h>

#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

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
  EXPECT_STREQ((TZxMessage("%2%") << "x").what(), "%2%");
  EXPECT_STREQ((TZxMessage("%1%") << static_cast<const char*>(nullptr)).what(), "");
  EXPECT_STREQ((TZxMessage("100% of %1%") << "it").what(), "100% of it");
}

TEST(TZxMessage, AValueThatLooksLikeAPlaceholderOfItsOwnIsNotFilledForEver) {
  EXPECT_STREQ((TZxMessage("[%1%]") << "%1%").what(), "[%1%]");
}

TEST(TZxMessage, TenPlaceholdersAreTenPlaceholders) {
  TZxMessage message("%1%,%10%,%2%");
  for (int i = 1; i <= 10; ++i) {
    message.Fill(std::to_string(i * 11));
  }
  EXPECT_STREQ(message.what(), "11,110,22");
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
