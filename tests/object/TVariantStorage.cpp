#include <ZxCore3D/object/TVariant.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Zx3D::TVariant;

static_assert(offsetof(TVariant, Value) == 0 && sizeof(TVariant::Value) == 32);
static_assert(offsetof(TVariant, Count) == 32 && sizeof(TVariant::Count) == 8);
static_assert(offsetof(TVariant, Type) == 40 && sizeof(TVariant::Type) == 4);
static_assert(sizeof(TVariant) == 48);

DATA_TYPE Tag(unsigned int tag) { return static_cast<DATA_TYPE>(tag); }

void* FirstWord(const TVariant& v) {
  void* word;
  std::memcpy(&word, v.Value, sizeof word);
  return word;
}

bool IsInline(const TVariant& v, const void* place) {
  const auto* const at = static_cast<const unsigned char*>(place);
  return at >= v.Value && at < v.Value + sizeof v.Value;
}

std::string Letters(std::size_t count) {
  std::string text(count, ' ');
  for (std::size_t i = 0; i < count; ++i) {
    text[i] = static_cast<char>('!' + i % 90);
  }
  return text;
}

// Values of every kind, for walks from each to each.
std::vector<TVariant> Zoo() {
  std::vector<TVariant> zoo(12);
  const int ints[] = {1, -2, 3, -4};
  std::vector<double> reals(9, 0.5);
  zoo[1].Set(true);
  zoo[2].Set(-7L);
  zoo[3].Set(2.5);
  zoo[4].SetVector(ints, 4);
  zoo[5].Set("short", 5);
  zoo[6].Set(Letters(31));
  zoo[7].Set(Letters(32));
  zoo[8].Set(Letters(500));
  zoo[9].SetArray(reals.data(), 4);
  zoo[10].SetArray(reals.data(), 9);
  zoo[11].SetArray(reals.data(), 3, 3);
  return zoo;
}

bool Same(const TVariant& a, const TVariant& b) {
  if (a.Type != b.Type || (a.Type != 0 && a.Count != b.Count)) {
    return false;
  }
  if (a.Type == DATA_TYPE_STRING) {
    return std::memcmp(a.GetStringPtr(), b.GetStringPtr(), a.Count + 1) == 0;
  }
  if ((a.Type & 0x100) != 0) {
    unsigned long size = 0;
    const void* const data = a.GetArrayData(&size);
    return size == b.GetArrayDataSize() && std::memcmp(data, b.GetArrayData(nullptr), size) == 0;
  }
  return a.Type == 0 || std::memcmp(a.Value, b.Value, a.Type < 0x20 ? 1 : 8) == 0;
}

TEST(TVariant, BaseTypeSizes) {
  const std::uint64_t sizes[16] = {0, 1, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8, 8, 16, 8, 0};
  for (int i = 0; i < 16; ++i) {
    EXPECT_EQ(TVariant::s_BaseTypeSize[i], sizes[i]) << i;
  }
}

TEST(TVariant, TheDefaultConstructorSetsTheTagAlone) {
  alignas(TVariant) unsigned char memory[sizeof(TVariant)];
  std::memset(memory, 0xA5, sizeof memory);
  // Hidden from the optimiser, which may drop what is stored before an object begins.
  unsigned char* place = memory;
  __asm__ volatile("" : "+r"(place) : : "memory");
  const TVariant* const v = new (place) TVariant;
  __asm__ volatile("" : "+r"(place) : : "memory");
  EXPECT_EQ(v->Type, 0U);
  for (std::size_t i = 0; i < 40; ++i) {
    EXPECT_EQ(place[i], 0xA5) << i;
  }
  v->~TVariant();
}

template <class T> void CheckScalar(T value, unsigned int tag) {
  TVariant v;
  std::memset(v.Value, 0x5A, sizeof v.Value);
  v.Count = 99;
  EXPECT_TRUE(v.Set(value));
  EXPECT_EQ(v.Type, tag);
  EXPECT_EQ(v.Count, 1U);
  EXPECT_EQ(std::memcmp(v.Value, &value, sizeof value), 0);
  for (std::size_t i = sizeof value; i < sizeof v.Value; ++i) {
    EXPECT_EQ(v.Value[i], 0x5A) << "a scalar takes its own bytes alone";
  }
  EXPECT_EQ(v.Get<T>(), value);
}

TEST(TVariant, ScalarsStandAtTheStart) {
  CheckScalar(true, 1);
  CheckScalar(false, 1);
  CheckScalar(static_cast<signed char>(-128), 2);
  CheckScalar(static_cast<unsigned char>(255), 3);
  CheckScalar(static_cast<short>(-32768), 4);
  CheckScalar(static_cast<unsigned short>(65535), 5);
  CheckScalar(std::numeric_limits<int>::min(), 6);
  CheckScalar(4294967295U, 7);
  CheckScalar(std::numeric_limits<long>::min(), 8);
  CheckScalar(18446744073709551615UL, 9);
  CheckScalar(-1.5F, 10);
  CheckScalar(1e300, 11);
}

TEST(TVariant, StringsAreInlineUpTo31Characters) {
  for (const std::size_t length :
       {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 15, 16, 17, 23, 24, 25, 30, 31, 32, 33, 100}) {
    const std::string text = Letters(length);
    TVariant v;
    EXPECT_TRUE(v.Set(text.c_str(), length));
    EXPECT_EQ(v.Type, 15U);
    EXPECT_EQ(v.Count, length);
    EXPECT_EQ(v.GetStringLength(), length);
    ASSERT_NE(v.GetStringPtr(), nullptr);
    EXPECT_EQ(std::string(v.GetStringPtr(), length + 1), std::string(text.c_str(), length + 1));
    EXPECT_EQ(IsInline(v, v.GetStringPtr()), length <= 31) << length;
    if (length > 31) {
      EXPECT_EQ(FirstWord(v), v.GetStringPtr());
    }
    TVariant measured;
    EXPECT_TRUE(measured.Set(text.c_str(), ~0UL));
    EXPECT_TRUE(Same(measured, v));
    const TVariant copy(v);
    EXPECT_TRUE(Same(copy, v));
    EXPECT_NE(copy.GetStringPtr(), v.GetStringPtr());
  }
}

// Every length from every alignment of the source, out of memory that ends with the text.
TEST(TVariant, TextsAreReadToTheirLastCharacterAndNoFurther) {
  for (std::size_t length = 0; length <= 40; ++length) {
    for (std::size_t shift = 0; shift < 8; ++shift) {
      const std::string text = Letters(length);
      std::vector<char> exact(shift + length);
      std::copy(text.begin(), text.end(), exact.begin() + static_cast<std::ptrdiff_t>(shift));
      TVariant v;
      ASSERT_TRUE(v.Set(exact.data() + shift, length));
      ASSERT_EQ(v.GetStringPtr(), text) << length << " " << shift;
    }
  }
}

TEST(TVariant, TextsTakeTheirOwnBytesAlone) {
  for (std::size_t length = 0; length <= 31; ++length) {
    TVariant v;
    std::memset(v.Value, 0x5A, sizeof v.Value);
    v.Set(Letters(length));
    for (std::size_t i = length + 1; i < sizeof v.Value; ++i) {
      ASSERT_EQ(v.Value[i], 0x5A) << length << " " << i;
    }
  }
}

TEST(TVariant, StringsKeepEmbeddedZeros) {
  const std::string text("ab\0cd", 5);
  TVariant v;
  EXPECT_TRUE(v.Set(text));
  EXPECT_EQ(v.GetStringLength(), 5U);
  EXPECT_EQ(std::memcmp(v.GetStringPtr(), "ab\0cd", 6), 0);
  std::string out = "old";
  EXPECT_TRUE(v.Get(&out));
  EXPECT_EQ(out, "ab");
  char buffer[8] = "#######";
  EXPECT_FALSE(v.Get(buffer, 5)) << "the length counts, not the visible text";
  EXPECT_EQ(buffer[0], '#');
  EXPECT_TRUE(v.Get(buffer, 6));
  EXPECT_EQ(std::memcmp(buffer, "ab\0####", 7), 0);
  std::string longer = Letters(40);
  longer[3] = '\0';
  EXPECT_TRUE(v.Set(longer.data(), longer.size()));
  EXPECT_EQ(v.GetStringLength(), 40U);
  EXPECT_EQ(std::string(v.GetStringPtr(), 40), longer);
}

TEST(TVariant, OnlyStringsHaveText) {
  TVariant v;
  v.Set(5);
  std::string out = "old";
  char buffer[4] = "abc";
  EXPECT_FALSE(v.Get(&out));
  EXPECT_FALSE(v.Get(buffer, 4));
  EXPECT_EQ(out, "old");
  EXPECT_STREQ(buffer, "abc");
  EXPECT_EQ(v.GetStringPtr(), nullptr);
  EXPECT_EQ(v.GetStringLength(), 0U);
  v.Set("", 0);
  EXPECT_TRUE(v.Get(buffer, 1));
  EXPECT_STREQ(buffer, "");
  EXPECT_FALSE(v.Get(buffer, 0));
}

TEST(TVariant, RefusesATextThatIsNotThere) {
  TVariant v;
  v.Set(5);
  EXPECT_FALSE(v.Set(nullptr, 3));
  EXPECT_FALSE(v.Set(nullptr, ~0UL));
  EXPECT_EQ(v.Get<int>(), 5);
  EXPECT_FALSE(v.Set("abc", ~0UL - 1)) << "no memory holds so much, and no length but ~0 measures";
  EXPECT_EQ(v.Get<int>(), 5);
  EXPECT_TRUE(v.Set(nullptr, 0));
  EXPECT_STREQ(v.GetStringPtr(), "");
}

// The texts may lie in the variant itself: inline, in its heap block, in its array.
TEST(TVariant, TakesTextsOutOfItself) {
  for (const std::size_t length : {5, 20, 31, 40, 200}) {
    const std::string text = Letters(length);
    for (std::size_t from = 0; from <= length; ++from) {
      TVariant v;
      v.Set(text);
      ASSERT_TRUE(v.Set(v.GetStringPtr() + from, length - from));
      ASSERT_EQ(v.GetStringPtr(), text.substr(from));
      ASSERT_EQ(v.GetStringLength(), length - from);
    }
  }
  for (const std::size_t floats : {4, 8, 9, 40}) {
    std::vector<float> values(floats, 1.5F);
    TVariant v;
    ASSERT_TRUE(v.SetArray(values.data(), floats));
    ASSERT_TRUE(v.Set(static_cast<const char*>(v.GetArrayData(nullptr)), floats * 4));
    ASSERT_EQ(v.GetStringLength(), floats * 4);
    EXPECT_EQ(std::memcmp(v.GetStringPtr(), values.data(), floats * 4), 0);
  }
}

TEST(TVariant, VectorTags) {
  const int values[] = {1, -2, 3, -4};
  const unsigned int tags[] = {6, 0x26, 0x46, 0x66};
  for (unsigned long n = 1; n <= 4; ++n) {
    TVariant v;
    EXPECT_TRUE(v.SetVector(values, n));
    EXPECT_EQ(v.Type, tags[n - 1]);
    EXPECT_EQ(v.Count, 1U);
    for (unsigned long m = 0; m <= 5; ++m) {
      int out[4] = {77, 77, 77, 77};
      EXPECT_EQ(v.GetVector(out, m), m == n);
      EXPECT_EQ(v.GetVector(nullptr, m), m == n) << "a pure test";
      for (unsigned long i = 0; i < 4; ++i) {
        EXPECT_EQ(out[i], m == n && i < n ? values[i] : 77);
      }
    }
  }
  TVariant plain;
  plain.Set(9);
  int out = 0;
  EXPECT_TRUE(plain.GetVector(&out, 1));
  EXPECT_EQ(out, 9);
}

TEST(TVariant, RefusesVectorsOfOtherSizes) {
  const int values[8] = {};
  TVariant v;
  v.Set("abc", 3);
  EXPECT_FALSE(v.SetVector(values, 0));
  EXPECT_FALSE(v.SetVector(values, 5));
  EXPECT_FALSE(v.SetVector(values, ~0UL));
  EXPECT_STREQ(v.GetStringPtr(), "abc");
}

TEST(TVariant, ANullVectorKeepsTheBytes) {
  const int values[] = {1, -2, 3, -4};
  TVariant v;
  v.SetVector(values, 3);
  EXPECT_TRUE(v.SetVector(nullptr, 3));
  int out[4] = {};
  EXPECT_TRUE(v.GetVector(out, 3));
  EXPECT_TRUE(out[0] == 1 && out[1] == -2 && out[2] == 3);
  EXPECT_TRUE(v.SetVector(nullptr, 2));
  EXPECT_TRUE(v.GetVector(out, 2));
  EXPECT_TRUE(out[0] == 1 && out[1] == -2) << "old bytes of another tag";
  v.SetVector(values, 4);
  v.Set(7);
  EXPECT_TRUE(v.SetVector(nullptr, 4));
  EXPECT_TRUE(v.GetVector(out, 4));
  EXPECT_TRUE(out[0] == 7 && out[1] == -2 && out[2] == 3 && out[3] == -4);
  const std::vector<double> reals(9, 1.0);
  v.SetArray(reals.data(), 9);
  EXPECT_TRUE(v.SetVector(nullptr, 2)) << "the array's block is freed and its pointer nulled";
  EXPECT_TRUE(v.GetVector(out, 2));
  EXPECT_TRUE(out[0] == 0 && out[1] == 0);
}

TEST(TVariant, TakesVectorsOutOfItself) {
  const int values[] = {1, -2, 3, -4};
  TVariant v;
  v.SetVector(values, 4);
  EXPECT_TRUE(v.SetVector(reinterpret_cast<const int*>(v.Value) + 1, 3));
  int out[3] = {};
  EXPECT_TRUE(v.GetVector(out, 3));
  EXPECT_TRUE(out[0] == -2 && out[1] == 3 && out[2] == -4);
}

TEST(TVariant, ArraysAreInlineUpTo32Bytes) {
  for (const unsigned long n : {0UL, 1UL, 7UL, 8UL, 9UL, 100UL}) {
    std::vector<float> values(n + 1);
    for (unsigned long i = 0; i < n; ++i) {
      values[i] = static_cast<float>(i) + 0.5F;
    }
    TVariant v;
    ASSERT_TRUE(v.SetArray(values.data(), n));
    EXPECT_EQ(v.Type, 0x10AU);
    EXPECT_EQ(v.Count, n);
    EXPECT_EQ(v.GetArrayDataSize(), n * 4);
    unsigned long size = 77;
    void* const data = v.GetArrayData(&size);
    EXPECT_EQ(size, n * 4);
    ASSERT_NE(data, nullptr);
    EXPECT_EQ(static_cast<const TVariant&>(v).GetArrayData(nullptr), data);
    EXPECT_EQ(IsInline(v, data), n <= 8) << n;
    EXPECT_EQ(std::memcmp(data, values.data(), n * 4), 0);
    if (n > 8) {
      EXPECT_EQ(FirstWord(v), data);
      std::uint64_t bytes;
      std::memcpy(&bytes, v.Value + 8, sizeof bytes);
      EXPECT_EQ(bytes, n * 4);
    }
  }
  const std::vector<double> reals(5, 0.25);
  TVariant v;
  EXPECT_TRUE(v.SetArray(reals.data(), 4));
  EXPECT_TRUE(IsInline(v, v.GetArrayData(nullptr)));
  EXPECT_TRUE(v.SetArray(reals.data(), 5));
  EXPECT_FALSE(IsInline(v, v.GetArrayData(nullptr)));
  EXPECT_EQ(v.Type, 0x10BU);
}

TEST(TVariant, ArraysOfVectors) {
  const std::vector<float> floats = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  const std::vector<double> doubles(floats.begin(), floats.end());
  const unsigned int tags[] = {0x10A, 0x12A, 0x14A, 0x16A};
  for (unsigned long c = 1; c <= 4; ++c) {
    TVariant v;
    EXPECT_TRUE(v.SetArray(floats.data(), c, 3));
    EXPECT_EQ(v.Type, tags[c - 1]);
    EXPECT_EQ(v.Count, 3U);
    EXPECT_EQ(v.GetArrayDataSize(), c * 12);
    EXPECT_EQ(std::memcmp(v.GetArrayData(nullptr), floats.data(), c * 12), 0);
    float out[3];
    EXPECT_EQ(v.GetArray(out, 3), c == 1) << "arrays of vectors are not served";
    EXPECT_TRUE(v.SetArray(doubles.data(), c, 2));
    EXPECT_EQ(v.Type, tags[c - 1] + 1);
    EXPECT_EQ(v.GetArrayDataSize(), c * 16);
    EXPECT_EQ(std::memcmp(v.GetArrayData(nullptr), doubles.data(), c * 16), 0);
  }
}

TEST(TVariant, ArraysThatAreRefusedChangeNothing) {
  const float floats[8] = {};
  const double doubles[8] = {};
  TVariant v;
  v.Set("abc", 3);
  EXPECT_FALSE(v.SetArray(static_cast<const float*>(nullptr), 0));
  EXPECT_FALSE(v.SetArray(static_cast<const double*>(nullptr), 0));
  EXPECT_FALSE(v.SetArray(static_cast<const float*>(nullptr), 3));
  EXPECT_FALSE(v.SetArray(static_cast<const double*>(nullptr), 3));
  for (const unsigned long c : {0UL, 5UL, 8UL, ~0UL}) {
    EXPECT_FALSE(v.SetArray(floats, c, 1));
    EXPECT_FALSE(v.SetArray(doubles, c, 1));
  }
  EXPECT_FALSE(v.SetArray(static_cast<const float*>(nullptr), 2, 0));
  EXPECT_FALSE(v.SetArray(static_cast<const double*>(nullptr), 2, 0));
  for (const unsigned int t : {0U, 14U, 15U, 16U, 0x26U, 0x10AU, 0x8000000AU}) {
    EXPECT_FALSE(v.SetArray(Tag(t), 1, floats, sizeof floats)) << t;
  }
  EXPECT_FALSE(v.SetArray(DATA_TYPE_FLOAT, 0, floats, sizeof floats));
  EXPECT_FALSE(v.SetArray(DATA_TYPE_FLOAT, 0, nullptr, 0));
  EXPECT_FALSE(v.SetArray(DATA_TYPE_FLOAT, 9, floats, sizeof floats));
  EXPECT_FALSE(v.SetArray(DATA_TYPE_DOUBLE, 1UL << 61, doubles, sizeof doubles)) << "wraps to 0";
  EXPECT_STREQ(v.GetStringPtr(), "abc");
}

TEST(TVariant, ArraysOfEveryBaseType) {
  unsigned char data[16 * 9];
  for (std::size_t i = 0; i < sizeof data; ++i) {
    data[i] = static_cast<unsigned char>(i);
  }
  for (unsigned int t = 1; t <= 13; ++t) {
    const std::uint64_t size = TVariant::s_BaseTypeSize[t];
    for (const unsigned long n : {1UL, 2UL, 3UL, 9UL}) {
      TVariant v;
      EXPECT_FALSE(v.SetArray(Tag(t), n, data, size * n - 1));
      EXPECT_EQ(v.Type, 0U);
      EXPECT_TRUE(v.SetArray(Tag(t), n, data, size * n));
      EXPECT_EQ(v.Type, t | 0x100);
      EXPECT_EQ(v.Count, n);
      EXPECT_EQ(v.GetArrayDataSize(), size * n);
      EXPECT_EQ(std::memcmp(v.GetArrayData(nullptr), data, size * n), 0);
      EXPECT_EQ(IsInline(v, v.GetArrayData(nullptr)), size * n < 33);
      const TVariant copy(v);
      EXPECT_TRUE(Same(copy, v));
    }
  }
}

TEST(TVariant, StorageWithoutDataIsForTheCallerToFill) {
  TVariant v;
  EXPECT_TRUE(v.SetArray(DATA_TYPE_INT16, 100, nullptr, 0));
  EXPECT_EQ(v.Type, 0x104U);
  unsigned long size = 0;
  void* const data = v.GetArrayData(&size);
  EXPECT_EQ(size, 200U);
  std::memset(data, 7, size);
  EXPECT_TRUE(v.SetArray(static_cast<const float*>(nullptr), 2, 50));
  std::memset(v.GetArrayData(&size), 7, 400);
  EXPECT_EQ(size, 400U);
  EXPECT_TRUE(v.SetArray(static_cast<const double*>(nullptr), 3, 1));
  std::memset(v.GetArrayData(&size), 7, 24);
  EXPECT_EQ(size, 24U);
}

TEST(TVariant, SizesThatCantBeHadLeaveItEmpty) {
  TVariant v;
  v.Set(5);
  EXPECT_FALSE(v.SetArray(DATA_TYPE_DOUBLE, 1UL << 61, nullptr, 0)) << "the product wraps";
  EXPECT_EQ(v.Type, 0U);
  v.Set(5);
  EXPECT_FALSE(v.SetArray(static_cast<const double*>(nullptr), 4, (1UL << 59) + 1));
  EXPECT_EQ(v.Type, 0U);
  v.Set(5);
  EXPECT_FALSE(v.SetArray(DATA_TYPE_DOUBLE, 1UL << 60, nullptr, 0)) << "no memory holds so much";
  EXPECT_EQ(v.Type, 0U);
}

TEST(TVariant, ArrayGettersCopyTheFirstElements) {
  const float floats[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  const double doubles[] = {1, 2, 3};
  TVariant v;
  v.SetArray(floats, 9);
  float out[9] = {};
  EXPECT_TRUE(v.GetArray(out, 2));
  EXPECT_TRUE(out[0] == 1 && out[1] == 2 && out[2] == 0);
  EXPECT_TRUE(v.GetArray(out, 9));
  EXPECT_EQ(std::memcmp(out, floats, sizeof out), 0);
  EXPECT_FALSE(v.GetArray(out, 10));
  EXPECT_TRUE(v.GetArray(out, 0));
  double wide[3] = {};
  EXPECT_FALSE(v.GetArray(wide, 1)) << "no conversion";
  v.SetArray(doubles, 3);
  EXPECT_TRUE(v.GetArray(wide, 3));
  EXPECT_EQ(std::memcmp(wide, doubles, sizeof wide), 0);
  EXPECT_FALSE(v.GetArray(out, 1));
  EXPECT_FALSE(v.GetArray(static_cast<double*>(nullptr), 1));
  v.Set(1.0);
  EXPECT_FALSE(v.GetArray(wide, 1)) << "a scalar is no array";
}

TEST(TVariant, OnlyArraysHaveArrayData) {
  for (TVariant& v : Zoo()) {
    const bool array = (v.Type & 0x100) != 0;
    unsigned long size = 77;
    EXPECT_EQ(v.GetArrayData(&size) != nullptr, array);
    EXPECT_EQ(size != 0, array);
    EXPECT_EQ(v.GetArrayDataSize() != 0, array);
  }
  TVariant odd;
  odd.Type = Tag(0x10F);
  odd.Count = 4;
  unsigned long size = 77;
  EXPECT_EQ(odd.GetArrayData(&size), nullptr);
  EXPECT_EQ(odd.GetArrayDataSize(), 0U);
  odd.Type = DATA_TYPE_NONE;
}

TEST(TVariant, TakesArraysOutOfItself) {
  for (const unsigned long n : {4UL, 8UL, 9UL, 30UL}) {
    std::vector<float> values(n);
    for (unsigned long i = 0; i < n; ++i) {
      values[i] = static_cast<float>(i);
    }
    TVariant v;
    v.SetArray(values.data(), n);
    const float* const own = static_cast<const float*>(v.GetArrayData(nullptr));
    ASSERT_TRUE(v.SetArray(own + 1, n - 1));
    std::vector<float> out(n - 1);
    ASSERT_TRUE(v.GetArray(out.data(), n - 1));
    EXPECT_EQ(out, std::vector<float>(values.begin() + 1, values.end()));
  }
}

TEST(TVariant, CopiesEveryKindOverEveryKind) {
  const std::vector<TVariant> sources = Zoo();
  for (const TVariant& source : sources) {
    for (const TVariant& old : sources) {
      TVariant target(old);
      EXPECT_TRUE(Same(target, old));
      target = source;
      EXPECT_TRUE(Same(target, source)) << old.Type << " to " << source.Type;
      EXPECT_EQ(&(target = target), &target);
      EXPECT_TRUE(Same(target, source)) << "self-assignment";
      TVariant other(old);
      other.Swap(target);
      EXPECT_TRUE(Same(other, source) && Same(target, old));
      other.Swap(other);
      EXPECT_TRUE(Same(other, source));
      other.Reset();
      EXPECT_EQ(other.Type, 0U);
      other.Reset();
      EXPECT_EQ(other.Type, 0U);
    }
  }
}

TEST(TVariant, PlainCopiesAreBitwise) {
  TVariant v;
  for (int i = 0; i < 32; ++i) {
    v.Value[i] = static_cast<unsigned char>(i * 3);
  }
  v.Count = 0x123456789ABCDEFUL;
  for (const unsigned int tag : {0U, 1U, 6U, 11U, 12U, 13U, 0x10U, 0x2FU, 0x66U, 0x6BU}) {
    v.Type = Tag(tag);
    TVariant copy(v);
    EXPECT_EQ(std::memcmp(copy.Value, v.Value, 32), 0) << tag;
    EXPECT_EQ(copy.Count, v.Count);
    EXPECT_EQ(copy.Type, tag);
    TVariant assigned;
    assigned.Set(Letters(60));
    assigned = v;
    EXPECT_EQ(std::memcmp(assigned.Value, v.Value, 32), 0) << tag;
    EXPECT_EQ(assigned.Count, v.Count);
    EXPECT_EQ(assigned.Type, tag);
  }
}

TEST(TVariant, ArraysThatNoneOfThisMakesAreNotCopied) {
  for (const unsigned int tag : {0x10EU, 0x10FU, 0x18AU, 0x1EBU}) {
    TVariant odd;
    std::memset(odd.Value, 0, sizeof odd.Value);
    odd.Count = 1;
    odd.Type = Tag(tag);
    TVariant target;
    target.Set("kept", 4);
    try {
      target = odd;
      ADD_FAILURE() << tag;
    } catch (const std::invalid_argument& error) {
      EXPECT_STREQ(error.what(), "");
    }
    EXPECT_STREQ(target.GetStringPtr(), "kept");
    EXPECT_THROW(TVariant{odd}, std::invalid_argument);
    odd.Type = DATA_TYPE_NONE;
  }
}

} // namespace
