// Moving variants, lists and the objects that own lists: nothing is copied or allocated, and what
// was moved from is empty.

#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/object/TAttributable.h>
#include <ZxCore3D/object/TAttributes.h>
#include <ZxCore3D/object/TVariant.h>

#include "object/FailingMalloc.h"

using namespace Zx3D;
using zx_test::TMallocWatch;

static_assert(std::is_nothrow_move_constructible_v<TVariant> &&
              std::is_nothrow_move_assignable_v<TVariant> && sizeof(TVariant) == 48);
static_assert(std::is_nothrow_move_constructible_v<TAttributes> &&
              std::is_nothrow_move_assignable_v<TAttributes>);
static_assert(std::is_nothrow_move_constructible_v<TAttributable> &&
              std::is_nothrow_move_assignable_v<TAttributable> && sizeof(TAttributable) == 8);

namespace {

class TCounted : public zx::TRef {
public:
  TVariant Inner;
};

const std::string s_Long(100, 'x');

/// One value of each kind of storage; the last is a reference to `ref`.
std::vector<TVariant> Values(zx::TRef* ref) {
  const int ints[] = {1, 2, 3};
  const std::vector<double> reals(20, 0.5);
  std::vector<TVariant> values(9);
  values[1].Set(-5);
  values[2].SetVector(ints, 3);
  values[3].Set("0123456789012345678901234567890", 31);
  values[4].Set(std::string("embedded\0zero", 13));
  values[5].Set(s_Long);
  values[6].SetArray(reals.data(), 4);
  values[7].SetArray(reals.data(), 20);
  values[8].Set(ref);
  return values;
}

void ExpectSame(const TVariant& moved, const TVariant& value) {
  ASSERT_EQ(moved.Type, value.Type);
  EXPECT_EQ(moved.ToString(), value.ToString());
  EXPECT_EQ(moved.GetStringLength(), value.GetStringLength());
  EXPECT_EQ(moved.GetArrayDataSize(), value.GetArrayDataSize());
  EXPECT_EQ(moved.GetRef(), value.GetRef());
  if (value.GetArrayDataSize() != 0) {
    EXPECT_EQ(std::memcmp(moved.GetArrayData(nullptr), value.GetArrayData(nullptr),
                          value.GetArrayDataSize()),
              0);
  }
}

class Moves : public testing::Test {
protected:
  /// What `call` allocates; 0 where the sanitizer keeps the count to itself.
  template <class Call> static unsigned long Allocations(Call&& call) {
    const TMallocWatch watch;
    call();
    return watch.Allocations();
  }
};

TEST_F(Moves, AVariantIsTakenAndLeftEmpty) {
  TCounted* const ref = new TCounted;
  for (const TVariant& value : Values(ref)) {
    TVariant source(value);
    const unsigned int counts = ref->GetRefCount();
    const char* const text = source.GetStringLength() > 31 ? source.GetStringPtr() : nullptr;
    EXPECT_EQ(Allocations([&] {
                TVariant moved(std::move(source));
                source = std::move(moved);
              }),
              0U);
    const TVariant moved(std::move(source));
    EXPECT_EQ(source.Type, 0U);
    EXPECT_EQ(source.GetStringPtr(), nullptr);
    EXPECT_EQ(source.GetRef(), nullptr);
    ExpectSame(moved, value);
    if (text != nullptr) {
      EXPECT_EQ(moved.GetStringPtr(), text) << "the block itself goes over";
    }
    EXPECT_EQ(ref->GetRefCount(), counts);
    source.Set(7);
    EXPECT_EQ(source.Get<int>(), 7) << "what was moved from can be used again";
  }
  EXPECT_EQ(ref->GetRefCount(), 1U);
  ref->Release();
}

TEST_F(Moves, AnAssignedVariantLetsGoOfWhatItHeld) {
  TCounted* const held = new TCounted;
  TCounted* const given = new TCounted;
  for (const TVariant& old : Values(held)) {
    for (const TVariant& value : Values(given)) {
      TVariant target(old);
      TVariant source(value);
      TVariant kept(source);
      EXPECT_EQ(Allocations([&] { target = std::move(source); }), 0U);
      ExpectSame(target, kept);
      EXPECT_EQ(source.Type, 0U);
    }
  }
  EXPECT_EQ(held->GetRefCount(), 1U);
  EXPECT_EQ(given->GetRefCount(), 1U);
  held->Release();
  given->Release();
}

TEST_F(Moves, AVariantMovedToItselfKeepsItsValue) {
  TCounted* const ref = new TCounted;
  for (TVariant& value : Values(ref)) {
    const TVariant before(value);
    TVariant& same = value;
    value = std::move(same);
    ExpectSame(value, before);
  }
  ref->Release();
}

// The source lies in the object that only the target holds, and goes with it.
TEST_F(Moves, AVariantTakesOutOfTheObjectItHolds) {
  TCounted* const other = new TCounted;
  for (const TVariant& value : Values(other)) {
    TCounted* const ref = new TCounted;
    ref->Inner = value;
    TVariant v(ref);
    ref->Release();
    v = std::move(ref->Inner);
    ExpectSame(v, value);
  }
  EXPECT_EQ(other->GetRefCount(), 1U);
  other->Release();
}

TEST_F(Moves, StdSwapAndAGrowingVectorCopyNothing) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the address sanitizer has the allocator";
  }
  std::vector<TVariant> values(3);
  values[0].Set(s_Long);
  values[1].SetArray(std::vector<float>(50, 1.5F).data(), 50);
  const char* const text = values[0].GetStringPtr();
  EXPECT_EQ(Allocations([&] { std::swap(values[0], values[1]); }), 0U);
  EXPECT_EQ(values[1].GetStringPtr(), text);
  EXPECT_EQ(Allocations([&] { values.reserve(100); }), 1U) << "the vector's own block alone";
  EXPECT_EQ(values[1].GetStringPtr(), text);
}

TEST_F(Moves, AListIsTakenAndLeftEmpty) {
  TAttributes list;
  list.SetValue("long", TVariant());
  list.FindValue("long")->Set(s_Long);
  TVariant* const place = list.FindValue("long");
  EXPECT_EQ(Allocations([&] {
              TAttributes moved(std::move(list));
              list = std::move(moved);
            }),
            0U);
  TAttributes moved(std::move(list));
  EXPECT_EQ(list.GetCount(), 0U);
  EXPECT_EQ(list.FindValue("long"), nullptr);
  EXPECT_EQ(moved.FindValue("long"), place) << "pointers to values stay valid";
  TAttributes target;
  target.SetValue("old", TVariant());
  target = std::move(moved);
  EXPECT_EQ(moved.GetCount(), 0U);
  EXPECT_EQ(target.GetCount(), 1U);
  EXPECT_EQ(target.FindValue("long"), place);
  TAttributes& same = target;
  target = std::move(same);
  EXPECT_EQ(target.FindValue("long"), place);
  list.SetValue("again", TVariant());
  EXPECT_EQ(list.GetCount(), 1U);
}

TEST_F(Moves, AValueMovesIntoAList) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the address sanitizer has the allocator";
  }
  TAttributes list;
  list.SetValue("a", TVariant());
  TVariant value;
  value.Set(s_Long);
  const char* const text = value.GetStringPtr();
  EXPECT_EQ(Allocations([&] { EXPECT_TRUE(list.SetValue("a", std::move(value))); }), 0U);
  EXPECT_EQ(value.Type, 0U);
  EXPECT_EQ(list.FindValue("a")->GetStringPtr(), text);
  EXPECT_TRUE(list.SetValue(std::string("b"), std::move(*list.FindValue("a"))));
  EXPECT_EQ(list.FindValue("b")->GetStringPtr(), text);
  EXPECT_EQ(list.FindValue("a")->Type, 0U);

  TAttributable object;
  EXPECT_TRUE(object.SetAttribute("c", std::move(*list.FindValue("b"))));
  EXPECT_EQ(object.FindAttribute("c")->GetStringPtr(), text);
  EXPECT_TRUE(object.SetAttribute(std::string("d"), std::move(*object.FindAttribute("c"))));
  EXPECT_EQ(object.FindAttribute("d")->GetStringPtr(), text);
}

TEST_F(Moves, AnObjectsListIsTakenAndNoneIsLeft) {
  TAttributable object;
  TAttributes* const list = object.QueryAttributes();
  EXPECT_EQ(Allocations([&] {
              TAttributable moved(std::move(object));
              object = std::move(moved);
            }),
            0U);
  TAttributable moved(std::move(object));
  EXPECT_EQ(object.DetachAttributes(), nullptr);
  EXPECT_EQ(moved.QueryAttributes(), list);
  TAttributable target;
  target.SetAttribute("old", TVariant());
  target = std::move(moved);
  EXPECT_EQ(moved.DetachAttributes(), nullptr);
  EXPECT_EQ(target.QueryAttributes(), list);
  EXPECT_EQ(target.FindAttribute("old"), nullptr);
  TAttributable& same = target;
  target = std::move(same);
  EXPECT_EQ(target.QueryAttributes(), list);
  target = TAttributable();
  EXPECT_EQ(target.DetachAttributes(), nullptr) << "an object without a list leaves none";
}

} // namespace
