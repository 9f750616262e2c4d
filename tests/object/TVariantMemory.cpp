#include <ZxCore3D/object/TVariant.h>

#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "object/FailingMalloc.h"

namespace {

using Zx3D::TVariant;
using zx_test::TMallocWatch;

class TVariantMemory : public testing::Test {
protected:
  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the address sanitizer has the allocator";
    }
  }
  const std::string m_Long = std::string(100, 'x');
  const std::string m_Longer = std::string(5000, 'y');
  const std::vector<float> m_Floats = std::vector<float>(50, 1.5F);
};

TEST_F(TVariantMemory, SmallValuesAllocateNothing) {
  const int ints[] = {1, 2, 3, 4};
  const TMallocWatch watch;
  TVariant v;
  v.Set(5);
  v.Set(2.5);
  v.SetVector(ints, 4);
  v.Set("0123456789012345678901234567890", 31);
  v.SetArray(m_Floats.data(), 8);
  TVariant copy(v);
  v.Set("short", 5);
  copy = v;
  copy.Swap(v);
  v.Reset();
  EXPECT_EQ(watch.Allocations(), 0U);
}

TEST_F(TVariantMemory, AHeapBlockHasNoSpareCapacity) {
  const TMallocWatch watch;
  {
    TVariant v;
    v.Set(m_Longer);
    EXPECT_EQ(watch.Allocations(), 1U);
    EXPECT_GE(watch.LiveBytes(), 5001);
    EXPECT_LT(watch.LiveBytes(), 5001 + 32);
    TVariant copy(v);
    EXPECT_EQ(watch.Allocations(), 2U);
  }
  EXPECT_EQ(watch.LiveBlocks(), 0);
}

TEST_F(TVariantMemory, ALongTextOverALongTextReallocates) {
  TVariant v;
  v.Set(m_Long);
  const TMallocWatch watch;
  v.Set(m_Longer);
  EXPECT_EQ(watch.Allocations(), 1U);
  EXPECT_EQ(watch.Reallocations(), 1U);
  v.Set(m_Long.data(), 40);
  EXPECT_EQ(watch.Reallocations(), 2U);
  v.Set("short", 5);
  EXPECT_EQ(watch.Allocations(), 2U) << "the short text needs none";
  EXPECT_EQ(watch.LiveBlocks(), -1) << "and frees the long one's block";
}

TEST_F(TVariantMemory, SwapOfTwoLargeArraysCostsThreeAllocations) {
  TVariant a;
  TVariant b;
  a.SetArray(m_Floats.data(), 50);
  b.SetArray(m_Floats.data(), 40);
  const TMallocWatch watch;
  a.Swap(b);
  EXPECT_EQ(watch.Allocations(), 3U);
  EXPECT_EQ(watch.LiveBlocks(), 0);
  EXPECT_EQ(a.Count, 40U);
  EXPECT_EQ(b.Count, 50U);
}

TEST_F(TVariantMemory, AFailedSetOfATextKeepsTheValue) {
  TVariant values[4];
  values[0].Set(5);
  values[1].Set("short", 5);
  values[2].Set(m_Long);
  values[3].SetArray(m_Floats.data(), 50);
  for (TVariant& v : values) {
    const std::string before = v.ToString();
    const DATA_TYPE type = v.Type;
    const TMallocWatch watch(1);
    EXPECT_FALSE(v.Set(m_Longer));
    EXPECT_TRUE(watch.Failed());
    EXPECT_EQ(v.Type, type);
    EXPECT_EQ(v.ToString(), before);
  }
  EXPECT_EQ(values[2].GetStringPtr(), m_Long);
  const TMallocWatch watch(1);
  EXPECT_FALSE(values[2].Set(values[2].GetStringPtr() + 10, 80)) << "out of itself";
  EXPECT_EQ(values[2].GetStringPtr(), m_Long);
}

TEST_F(TVariantMemory, AFailedSetOfAnArrayLeavesItEmpty) {
  const std::vector<double> doubles(50, 0.5);
  const auto check = [&](auto set) {
    TVariant v;
    v.Set(m_Long);
    const TMallocWatch watch(1);
    EXPECT_FALSE(set(v));
    EXPECT_TRUE(watch.Failed());
    EXPECT_EQ(v.Type, 0U);
    EXPECT_EQ(watch.LiveBlocks(), -1) << "the old text is freed";
  };
  check([&](TVariant& v) { return v.SetArray(m_Floats.data(), 50); });
  check([&](TVariant& v) { return v.SetArray(doubles.data(), 50); });
  check([&](TVariant& v) { return v.SetArray(m_Floats.data(), 2, 20); });
  check([&](TVariant& v) { return v.SetArray(doubles.data(), 3, 10); });
  check([](TVariant& v) { return v.SetArray(DATA_TYPE_INT32, 100, nullptr, 0); });
}

TEST_F(TVariantMemory, AFailedCopyRaises) {
  TVariant text;
  text.Set(m_Long);
  TVariant array;
  array.SetArray(m_Floats.data(), 50);
  TVariant target;
  target.Set(m_Longer);
  {
    const TMallocWatch watch(1);
    EXPECT_THROW(target = text, std::bad_alloc);
  }
  EXPECT_EQ(target.GetStringPtr(), m_Longer) << "a text that fails keeps the value";
  {
    const TMallocWatch watch(1);
    EXPECT_THROW(target = array, std::bad_alloc);
  }
  EXPECT_EQ(target.Type, 0U) << "an array that fails empties the target";
  {
    const TMallocWatch watch(1);
    EXPECT_THROW(TVariant{text}, std::bad_alloc);
  }
  {
    const TMallocWatch watch(1);
    EXPECT_THROW(TVariant{array}, std::bad_alloc);
  }
}

// Everything that a variant does, with the first allocation failing, then the second, and so on.
TEST_F(TVariantMemory, EveryAllocationMayFailOnce) {
  const std::string parsed = "\"" + m_Long + "\"";
  bool failed = true;
  unsigned long at = 0;
  while (failed) {
    ++at;
    ASSERT_LT(at, 100U);
    const TMallocWatch watch(at);
    try {
      TVariant a;
      a.Set(m_Long);
      a.Set(m_Longer);
      a.Set(a.GetStringPtr() + 1, 100);
      TVariant b(a);
      b.SetArray(m_Floats.data(), 50);
      a.Swap(b);
      TVariant c;
      c = a;
      c = b;
      std::string text;
      c.ToString(&text);
      c.AsString(&text);
      c.Get(&text);
      c.Set(1e300);
      c.ToString(&text);
      c.FromString(parsed);
    } catch (const std::bad_alloc&) {
      EXPECT_TRUE(watch.Failed());
    }
    EXPECT_EQ(watch.LiveBlocks(), 0) << at;
    failed = watch.Failed();
  }
  EXPECT_GT(at, 10U);
}

} // namespace
