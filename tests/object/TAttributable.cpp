#include <ZxCore3D/object/TAttributable.h>

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>

#include "object/FailingMalloc.h"
#include "object/Traces.h"

using namespace Zx3D;
using zx_test::IsTrace;
using zx_test::TTraces;

static TVariant Int(int number) {
  TVariant value;
  value.Set(number);
  return value;
}

static bool HasList(const TAttributable& object) {
  try {
    object.CheckAttributesE();
    return true;
  } catch (const TZxMessage& message) {
    EXPECT_STREQ(message.what(), "Attribute list is NULL");
    return false;
  }
}

TEST(TAttributable, CostsOnePointer) { EXPECT_EQ(sizeof(TAttributable), sizeof(void*)); }

TEST(TAttributable, ReadingNeverMakesAList) {
  TTraces traces;
  TAttributable object;
  EXPECT_FALSE(HasList(object));
  EXPECT_EQ(object.FindAttribute("a"), nullptr);
  EXPECT_EQ(object.FindAttribute(nullptr), nullptr);
  EXPECT_FALSE(object.RemoveAttribute("a"));
  EXPECT_FALSE(object.RemoveAttribute(nullptr));
  EXPECT_TRUE(traces.Texts.empty()); // checking doesn't trace
  EXPECT_THROW(object.FindAttributeE("a"), TZxMessage);
  EXPECT_FALSE(HasList(object));
}

TEST(TAttributable, WritingMakesTheList) {
  TAttributable a;
  EXPECT_TRUE(a.SetAttribute("n", Int(1)));
  EXPECT_TRUE(HasList(a));
  EXPECT_EQ(a.FindAttribute("n")->Get<int>(), 1);
  TAttributable b;
  EXPECT_TRUE(b.SetAttribute(std::string("n"), Int(2)));
  EXPECT_EQ(b.FindAttribute("n")->Get<int>(), 2);
  TAttributable c;
  EXPECT_TRUE(c.SetAttribute("t", "hello", 3));
  EXPECT_STREQ(c.FindAttribute("t")->GetStringPtr(), "hel");
  EXPECT_TRUE(c.SetAttribute("t", "hello", -1));
  EXPECT_STREQ(c.FindAttribute("t")->GetStringPtr(), "hello");
  EXPECT_FALSE(c.SetAttribute("u", "hello", -2)); // a length that no text has
  EXPECT_EQ(c.FindAttribute("u"), nullptr);
  TAttributable d;
  d.SetAttribute(std::string("t"), std::string("a\0b", 3));
  EXPECT_EQ(d.FindAttribute("t")->GetStringLength(), 3u);
  TAttributable e;
  TAttributes* list = e.QueryAttributes();
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->GetCount(), 0u);
  EXPECT_EQ(e.QueryAttributes(), list);
  TAttributable f;
  f.SetAttributes(*c.QueryAttributes());
  EXPECT_STREQ(f.FindAttribute("t")->GetStringPtr(), "hello");
  EXPECT_THROW(e.SetAttribute(static_cast<const char*>(nullptr), Int(1)), std::logic_error);
  EXPECT_THROW(e.RemoveAttribute(nullptr), std::logic_error);
}

TEST(TAttributable, SetAttributesAssignsToTheListThatIsThere) {
  TAttributable object;
  TAttributes* list = object.QueryAttributes();
  object.SetAttribute("old", Int(1));
  TAttributes other;
  other.SetValue("new", Int(2));
  object.SetAttributes(other);
  EXPECT_EQ(object.QueryAttributes(), list);
  EXPECT_EQ(object.FindAttribute("old"), nullptr);
  EXPECT_EQ(object.FindAttribute("new")->Get<int>(), 2);
  object.SetAttributes(*list);
  EXPECT_EQ(list->GetCount(), 1u);
  EXPECT_EQ(other.GetCount(), 1u);
}

TEST(TAttributable, ClearedAndDetachedObjectsHaveNoList) {
  TAttributable object;
  object.SetAttribute("n", Int(1));
  object.ClearAttributes();
  EXPECT_FALSE(HasList(object));
  object.ClearAttributes();
  object.SetAttribute("n", Int(2));
  TAttributes* list = object.DetachAttributes();
  EXPECT_FALSE(HasList(object));
  EXPECT_EQ(object.DetachAttributes(), nullptr);
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->FindValue("n")->Get<int>(), 2);
  object.AttachAttributes(list);
  object.AttachAttributes(list); // nothing is deleted
  EXPECT_EQ(object.FindAttribute("n")->Get<int>(), 2);
  object.AttachAttributes(new TAttributes); // the old one goes
  EXPECT_TRUE(HasList(object));
  EXPECT_EQ(object.FindAttribute("n"), nullptr);
  object.AttachAttributes(nullptr);
  EXPECT_FALSE(HasList(object));
}

TEST(TAttributable, CopiesAndAssignmentsAreDeep) {
  TAttributable empty;
  TAttributable copyOfEmpty(empty);
  EXPECT_FALSE(HasList(copyOfEmpty));
  TAttributable object;
  object.SetAttribute("n", Int(1));
  TAttributable copy(object);
  object.SetAttribute("n", Int(2));
  EXPECT_EQ(copy.FindAttribute("n")->Get<int>(), 1);
  copy = object;
  EXPECT_EQ(copy.FindAttribute("n")->Get<int>(), 2);
  EXPECT_NE(copy.FindAttribute("n"), object.FindAttribute("n"));
  copy = static_cast<TAttributable&>(copy);
  EXPECT_EQ(copy.FindAttribute("n")->Get<int>(), 2);
  copy = empty;
  EXPECT_FALSE(HasList(copy));
  copy.Swap(object);
  EXPECT_FALSE(HasList(object));
  EXPECT_EQ(copy.FindAttribute("n")->Get<int>(), 2);
}

TEST(TAttributable, AConstObjectsValuesCanBeChanged) {
  TAttributable object;
  object.SetAttribute("n", Int(1));
  const TAttributable& constant = object;
  constant.FindAttribute("n")->Set(5);
  EXPECT_EQ(constant.FindAttributeE("n")->Get<int>(), 5);
  EXPECT_TRUE(object.RemoveAttribute("n"));
  EXPECT_FALSE(object.RemoveAttribute("n"));
  EXPECT_TRUE(HasList(object)); // an empty list is a list
}

static const char s_Outer[] =
    "Zx3D::TVariant *Zx3D::TAttributable::FindAttributeE(const char *) const";

TEST(TAttributable, FindAttributeEThrowsAndTraces) {
  TTraces traces;
  TAttributable object;
  try {
    object.FindAttributeE("n");
    FAIL();
  } catch (const TZxMessage& message) {
    EXPECT_STREQ(message.what(), "Attribute list is NULL");
  }
  ASSERT_EQ(traces.Texts.size(), 1u);
  EXPECT_TRUE(IsTrace(traces.Texts[0], "src/Attributable", s_Outer)) << traces.Texts[0];

  traces.Texts.clear();
  object.QueryAttributes();
  try {
    object.FindAttributeE("n");
    FAIL();
  } catch (const TZxMessage& message) {
    EXPECT_STREQ(message.what(), "Value \"n\" not found");
  }
  ASSERT_EQ(traces.Texts.size(), 2u);
  EXPECT_TRUE(IsTrace(traces.Texts[0], "src/Attributes",
                      "Zx3D::TVariant *Zx3D::TAttributes::FindValueE(const char *)"))
      << traces.Texts[0];
  EXPECT_TRUE(IsTrace(traces.Texts[1], "src/Attributable", s_Outer)) << traces.Texts[1];

  traces.Texts.clear();
  try {
    object.FindAttributeE(nullptr);
    FAIL();
  } catch (const TZxMessage& message) {
    EXPECT_STREQ(message.what(), "szName is NULL");
  }
  EXPECT_EQ(traces.Texts.size(), 2u);
}

TEST(TAttributable, EveryFailingAllocationPassesThroughAndLeaksNothing) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const std::string name(40, 'n');
  const std::string text(100, 't');
  TVariant value;
  value.Set(text);
  const std::function<void(TAttributable&)> calls[] = {
      [&](TAttributable& object) { object.SetAttribute(name, value); },
      [&](TAttributable& object) { object.SetAttribute(name.c_str(), text.c_str(), -1); },
      [&](TAttributable& object) { object.SetAttribute(name, text); },
      [&](TAttributable& object) {
        object.SetAttribute("a", value);
        TAttributable copy(object);
        copy = object;
        object.SetAttributes(*copy.QueryAttributes());
      },
      [&](TAttributable& object) {
        object.QueryAttributes();
        try {
          object.FindAttributeE(name.c_str());
        } catch (const TZxMessage&) {
        }
      },
  };
  for (const auto& call : calls) {
    bool came = true;
    for (unsigned long at = 1; came; ++at) {
      long left = 0;
      {
        zx_test::TMallocWatch watch(at);
        try {
          TAttributable object;
          call(object);
        } catch (const std::bad_alloc&) {
        }
        left = watch.LiveBlocks();
        came = watch.Failed();
      }
      EXPECT_EQ(left, 0) << at;
    }
  }
}
