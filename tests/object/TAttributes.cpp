#include <ZxCore3D/object/TAttributes.h>

#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>

#include "object/Traces.h"

using namespace Zx3D;
using zx_test::TTraces;

static TVariant Int(int number) {
  TVariant value;
  value.Set(number);
  return value;
}

TEST(TAttributes, AFreshListIsEmpty) {
  TAttributes list;
  EXPECT_EQ(list.GetCount(), 0u);
  EXPECT_EQ(list.FindValue("any"), nullptr);
  EXPECT_EQ(list.FindValue(std::string("any")), nullptr);
  EXPECT_EQ(list.FindValue(static_cast<const char*>(nullptr)), nullptr);
  const TAttributes& constant = list;
  EXPECT_EQ(constant.FindValue("any"), nullptr);
  EXPECT_EQ(constant.FindValue(static_cast<const char*>(nullptr)), nullptr);
  EXPECT_FALSE(list.RemoveValue("any"));
}

TEST(TAttributes, SetsFindsReplacesRemoves) {
  TAttributes list;
  EXPECT_TRUE(list.SetValue("a", Int(1)));
  EXPECT_TRUE(list.SetValue(std::string("b"), Int(2)));
  EXPECT_EQ(list.GetCount(), 2u);
  EXPECT_EQ(list.FindValue("a")->Get<int>(), 1);
  EXPECT_EQ(list.FindValue(std::string("b"))->Get<int>(), 2);
  TVariant* const place = list.FindValue("b");
  EXPECT_TRUE(list.SetValue("b", Int(3)));
  EXPECT_EQ(list.GetCount(), 2u);
  EXPECT_EQ(list.FindValue("b"), place);
  EXPECT_EQ(place->Get<int>(), 3);
  EXPECT_TRUE(list.RemoveValue("a"));
  EXPECT_FALSE(list.RemoveValue(std::string("a")));
  EXPECT_TRUE(list.RemoveValue(std::string("b")));
  EXPECT_EQ(list.GetCount(), 0u);
}

TEST(TAttributes, ValuesAreDeepCopies) {
  const std::string text(100, 't');
  TVariant value;
  value.Set(text);
  TAttributes list;
  list.SetValue("text", value);
  value.Reset();
  EXPECT_EQ(list.FindValue("text")->GetStringPtr(), text);
  EXPECT_NE(list.FindValue("text")->GetStringPtr(), text.c_str());

  TAttributes copy(list);
  list.SetValue("text", Int(1));
  EXPECT_EQ(copy.FindValue("text")->GetStringPtr(), text);
  list = copy;
  EXPECT_EQ(list.FindValue("text")->GetStringPtr(), text);
  list = static_cast<TAttributes&>(list);
  EXPECT_EQ(list.GetCount(), 1u);
  list.Clear();
  EXPECT_EQ(list.GetCount(), 0u);
  EXPECT_EQ(copy.GetCount(), 1u);
}

TEST(TAttributes, TheMapIsInByteOrder) {
  TAttributes list;
  for (const char* name : {"b", "a", "B", "\xFF", "ab", ""}) {
    list.SetValue(name, Int(0));
  }
  std::vector<std::string> names;
  const TAttributes& constant = list;
  for (const auto& entry : constant.GetValues()) {
    names.push_back(entry.first);
  }
  EXPECT_EQ(names, (std::vector<std::string>{"", "B", "a", "ab", "b", "\xFF"}));
  list.GetValues()["new"].Set(4);
  EXPECT_EQ(list.FindValue("new")->Get<int>(), 4);
}

TEST(TAttributes, TextsAreMeasuredOrGiven) {
  TAttributes list;
  EXPECT_TRUE(list.SetValue("a", "hello", ~0UL));
  EXPECT_TRUE(list.SetValue(std::string("b"), "hello", 2));
  EXPECT_TRUE(list.SetValue("c", "", 0));
  std::string text;
  EXPECT_TRUE(list.GetValue("a", &text));
  EXPECT_EQ(text, "hello");
  EXPECT_TRUE(list.GetValue(std::string("b"), &text));
  EXPECT_EQ(text, "he");
  EXPECT_TRUE(list.GetValue("c", &text));
  EXPECT_EQ(text, "");
  EXPECT_EQ(list.GetCount(), 3u);
  // The text may be the one that it replaces.
  EXPECT_TRUE(list.SetValue("a", list.FindValue("a")->GetStringPtr() + 1, 3));
  EXPECT_STREQ(list.FindValue("a")->GetStringPtr(), "ell");
  list.SetValue("n", Int(1));
  EXPECT_TRUE(list.SetValue("n", "text", ~0UL));
  EXPECT_STREQ(list.FindValue("n")->GetStringPtr(), "text");
}

TEST(TAttributes, ATextThatNoVariantTakesLeavesTheMap) {
  TAttributes list;
  list.SetValue("a", Int(1));
  EXPECT_FALSE(list.SetValue("a", "x", ~0UL - 1));
  EXPECT_FALSE(list.SetValue("new", "x", ~0UL - 1));
  EXPECT_FALSE(list.SetValue("new", nullptr, 3));
  EXPECT_EQ(list.GetCount(), 1u);
  EXPECT_EQ(list.FindValue("a")->Get<int>(), 1);
}

TEST(TAttributes, GetValueServesStringsOnly) {
  TAttributes list;
  list.SetValue("n", Int(1));
  std::string text = "kept";
  EXPECT_FALSE(list.GetValue("n", &text));
  EXPECT_FALSE(list.GetValue("missing", &text));
  EXPECT_EQ(text, "kept");
}

TEST(TAttributes, NullNamesRaiseLogicErrorWhereTheyBecomeStrings) {
  TAttributes list;
  std::string text;
  const auto raises = [](auto&& call) {
    try {
      call();
    } catch (const std::logic_error& error) {
      return std::string(error.what()) == "basic_string::_M_construct null not valid";
    }
    return false;
  };
  const char* const null = nullptr;
  EXPECT_TRUE(raises([&] { list.SetValue(null, Int(1)); }));
  EXPECT_TRUE(raises([&] { list.SetValue(null, "x", 1UL); }));
  EXPECT_TRUE(raises([&] { list.RemoveValue(null); }));
  EXPECT_TRUE(raises([&] { list.GetValue(null, &text); }));
  EXPECT_EQ(list.GetCount(), 0u);
}

TEST(TAttributes, FindValueEFinds) {
  TTraces traces;
  TAttributes list;
  list.SetValue("a", Int(1));
  const TAttributes& constant = list;
  EXPECT_EQ(list.FindValueE("a"), list.FindValue("a"));
  EXPECT_EQ(list.FindValueE(std::string("a")), list.FindValue("a"));
  EXPECT_EQ(constant.FindValueE("a"), list.FindValue("a"));
  EXPECT_EQ(constant.FindValueE(std::string("a")), list.FindValue("a"));
  EXPECT_TRUE(traces.Texts.empty());
}

template <class Call> static std::string MessageOf(Call&& call) {
  try {
    call();
  } catch (const TZxMessage& message) {
    return message.what();
  }
  return "nothing thrown";
}

TEST(TAttributes, FindValueEThrowsAndTracesOnce) {
  TAttributes list;
  const TAttributes& constant = list;
  const std::string name = "gone";
  const char* const null = nullptr;
  const struct {
    std::function<void()> Call;
    const char* Message;
    const char* Function;
  } rows[] = {
      {[&] { list.FindValueE("gone"); }, "Value \"gone\" not found",
       "Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const char *)"},
      {[&] { list.FindValueE(name); }, "Value \"gone\" not found",
       "Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const std::string &)"},
      {[&] { constant.FindValueE("gone"); }, "Value \"gone\" not found",
       "const Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const char *) const"},
      {[&] { constant.FindValueE(name); }, "Value \"gone\" not found",
       "const Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const std::string &) const"},
      {[&] { list.FindValueE(null); }, "szName is NULL",
       "Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const char *)"},
      {[&] { constant.FindValueE(null); }, "szName is NULL",
       "const Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const char *) const"},
  };
  for (const auto& row : rows) {
    TTraces traces;
    EXPECT_EQ(MessageOf(row.Call), row.Message);
    ASSERT_EQ(traces.Texts.size(), 1u);
    EXPECT_TRUE(zx_test::IsTrace(traces.Texts[0], "src/Attributes", row.Function))
        << traces.Texts[0];
  }
  EXPECT_EQ(list.GetCount(), 0u);
}

TEST(TAttributes, OnlyTheThrowingFormsTrace) {
  TTraces traces;
  TAttributes list;
  list.FindValue("gone");
  list.RemoveValue("gone");
  std::string text;
  list.GetValue("gone", &text);
  EXPECT_THROW(list.SetValue(static_cast<const char*>(nullptr), Int(1)), std::logic_error);
  EXPECT_TRUE(traces.Texts.empty());
}
