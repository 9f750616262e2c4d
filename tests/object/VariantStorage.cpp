#include <ZxCore3D/object/TObjectReader.h>
#include <ZxCore3D/object/TObjectWriter.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/object/TMemoryStream.h>

#include "object/Streams.h"

using namespace Zx3D;
using zx_test::Bytes;
using zx_test::Hex;
using zx_test::TPlainStream;

namespace {

template <class Check> void OnBoth(const Bytes& bytes, Check&& check) {
  TPlainStream plain(bytes);
  TObjectReader reader(&plain, false);
  check(reader, static_cast<TStream&>(plain));
  Bytes place = bytes;
  TMemoryStream memory(place.data(), place.size(), false);
  TObjectReader other(&memory, false);
  check(other, static_cast<TStream&>(memory));
}

TVariant RoundTrip(const TVariant& value) {
  TMemoryStream stream;
  stream.Reserve(1000);
  TObjectWriter writer(&stream, false);
  EXPECT_TRUE(SaveVariant(&writer, value));
  TPlainStream plain;
  writer.SetStream(&plain, false);
  EXPECT_TRUE(SaveVariant(&writer, value));
  TVariant back[2];
  TObjectReader reader(&plain, false);
  plain.SetPos(0);
  EXPECT_TRUE(LoadVariant(&reader, back[0]));
  EXPECT_TRUE(plain.IsEOS());
  reader.SetStream(&stream, false);
  stream.SetPos(0);
  EXPECT_TRUE(LoadVariant(&reader, back[1]));
  EXPECT_TRUE(stream.IsEOS());
  EXPECT_EQ(back[0].Type, back[1].Type);
  return back[1];
}

template <class T> void ExpectScalars(std::initializer_list<T> numbers) {
  for (const T number : numbers) {
    TVariant value;
    value.Set(number);
    const TVariant back = RoundTrip(value);
    EXPECT_EQ(back.Type, value.Type);
    EXPECT_EQ(back.Count, 1u);
    const T read = back.Get<T>();
    EXPECT_EQ(std::memcmp(&read, &number, sizeof number), 0);
  }
}

template <class T> std::vector<T> Elements(const TVariant& value) {
  unsigned long bytes = 0;
  const void* data = value.GetArrayData(&bytes);
  std::vector<T> elements(bytes / sizeof(T));
  if (!elements.empty()) {
    std::memcpy(elements.data(), data, bytes);
  }
  return elements;
}

} // namespace

TEST(VariantStorage, ScalarsComeBackBitForBit) {
  ExpectScalars<bool>({false, true});
  ExpectScalars<signed char>({SCHAR_MIN, -1, 0, SCHAR_MAX});
  ExpectScalars<unsigned char>({0, UCHAR_MAX});
  ExpectScalars<short>({SHRT_MIN, -1, SHRT_MAX});
  ExpectScalars<unsigned short>({0, USHRT_MAX});
  ExpectScalars<int>({INT_MIN, -1, INT_MAX});
  ExpectScalars<unsigned int>({0, UINT_MAX});
  ExpectScalars<long>({LONG_MIN, -1, LONG_MAX});
  ExpectScalars<unsigned long>({0, ULONG_MAX});
  ExpectScalars<float>({-0.0f, 1.5f, INFINITY, std::numeric_limits<float>::denorm_min(), NAN});
  ExpectScalars<double>({-0.0, 0.1, -INFINITY, std::numeric_limits<double>::denorm_min(), NAN});
  EXPECT_EQ(RoundTrip(TVariant()).Type, DATA_TYPE_NONE);
}

TEST(VariantStorage, StringsVectorsAndArraysComeBack) {
  for (unsigned long size = 0; size <= 70; ++size) {
    TVariant value;
    value.Set(std::string(size, 's'));
    const TVariant back = RoundTrip(value);
    EXPECT_EQ(back.Type, DATA_TYPE_STRING);
    EXPECT_EQ(back.Count, size);
    EXPECT_EQ(back.GetStringPtr(), std::string(size, 's'));
  }
  const int numbers[4] = {1, INT_MIN, 3, -4};
  for (unsigned long n = 2; n <= 4; ++n) {
    TVariant value;
    value.SetVector(numbers, n);
    int back[4] = {};
    EXPECT_TRUE(RoundTrip(value).GetVector(back, n));
    EXPECT_EQ(std::memcmp(back, numbers, n * sizeof(int)), 0);
  }
  for (std::uint32_t base = 1; base <= 13; ++base) {
    for (const unsigned long count : {1UL, 2UL, 33UL, 5000UL}) {
      const unsigned long bytes = count * TVariant::s_BaseTypeSize[base];
      Bytes data(bytes);
      for (unsigned long i = 0; i < bytes; ++i) {
        data[i] = static_cast<unsigned char>(i * 7 + base);
      }
      TVariant value;
      ASSERT_TRUE(value.SetArray(static_cast<DATA_TYPE>(base), count, data.data(), bytes));
      const TVariant back = RoundTrip(value);
      EXPECT_EQ(back.Type, value.Type);
      EXPECT_EQ(back.Count, count);
      EXPECT_EQ(Elements<unsigned char>(back), data);
    }
  }
}

TEST(VariantStorage, AnyByteButZeroIsTrue) {
  OnBoth(Hex("01 00 00 00 80 01 00 00 00 00"), [](TObjectReader& reader, TStream&) {
    TVariant value;
    EXPECT_TRUE(LoadVariant(&reader, value));
    EXPECT_EQ(value.Value[0], 1);
    EXPECT_TRUE(value.Get<bool>());
    EXPECT_TRUE(LoadVariant(&reader, value));
    EXPECT_FALSE(value.Get<bool>());
  });
}

TEST(VariantStorage, TagZeroEmptiesWithoutReading) {
  OnBoth(Bytes(), [](TObjectReader& reader, TStream&) {
    TVariant value;
    value.Set(5);
    EXPECT_TRUE(LoadVariantData(&reader, DATA_TYPE_NONE, value));
    EXPECT_EQ(value.Type, DATA_TYPE_NONE);
  });
  OnBoth(Hex("00 00 00 00"), [](TObjectReader& reader, TStream& stream) {
    TVariant value;
    value.Set(std::string(50, 'x'));
    EXPECT_TRUE(LoadVariant(&reader, value));
    EXPECT_EQ(value.Type, DATA_TYPE_NONE);
    EXPECT_EQ(stream.GetPos(), 4);
  });
}

TEST(VariantStorage, RefusedTagsReadNothingAndKeepTheValue) {
  for (const std::uint32_t tag :
       {12u,   13u,    14u,    16u,    31u,    0x2Au,  0x20u,  0x86u,  0xA6u,       0xC6u,
        0xE6u, 0x10Eu, 0x10Fu, 0x110u, 0x126u, 0x1E6u, 0x200u, 0x206u, 0x8000000Fu, 0xFFFFFFFFu}) {
    Bytes bytes(4);
    std::memcpy(bytes.data(), &tag, 4);
    bytes.resize(64, 1);
    OnBoth(bytes, [&](TObjectReader& reader, TStream& stream) {
      TVariant value;
      value.Set(5);
      EXPECT_FALSE(LoadVariant(&reader, value)) << tag;
      EXPECT_EQ(stream.GetPos(), 4) << tag;
      EXPECT_EQ(value.Get<int>(), 5) << tag;
    });
  }
}

TEST(VariantStorage, HighBitsOfAnArrayTagAreNotKept) {
  OnBoth(Hex("02 00 00 00 02 00 00 00 07 08"), [](TObjectReader& reader, TStream&) {
    TVariant value;
    EXPECT_TRUE(LoadVariantData(&reader, static_cast<DATA_TYPE>(0x80000103u), value));
    EXPECT_EQ(static_cast<std::uint32_t>(value.Type), 0x103u);
    EXPECT_EQ(Elements<unsigned char>(value), Hex("07 08"));
  });
}

TEST(VariantStorage, ArraysWithoutElementsOrTypeKeepTheValue) {
  for (const char* text : {"06 01 00 00 00 00 00 00 00 00 00 00",    // count 0
                           "06 01 00 00 00 00 00 00 04 00 00 00",    // count 0, another size
                           "00 01 00 00 01 00 00 00 00 00 00 00"}) { // base code 0
    OnBoth(Hex(text), [](TObjectReader& reader, TStream& stream) {
      TVariant value;
      value.Set(5);
      EXPECT_FALSE(LoadVariant(&reader, value));
      EXPECT_EQ(stream.GetPos(), 12);
      EXPECT_EQ(value.Get<int>(), 5);
    });
  }
}

TEST(VariantStorage, AMismatchOfSizesLeavesAnArrayOfZeros) {
  OnBoth(Hex("06 01 00 00 02 00 00 00 07 00 00 00 01 02 03 04 05 06 07 08"),
         [](TObjectReader& reader, TStream& stream) {
           TVariant value;
           value.Set(5);
           EXPECT_FALSE(LoadVariant(&reader, value));
           EXPECT_EQ(stream.GetPos(), 12);
           EXPECT_EQ(static_cast<std::uint32_t>(value.Type), 0x106u);
           EXPECT_EQ(value.Count, 2u);
           EXPECT_EQ(Elements<int>(value), (std::vector<int>{0, 0}));
         });
}

TEST(VariantStorage, AShortArrayLeavesAnArrayOfZeros) {
  OnBoth(Hex("06 01 00 00 0C 00 00 00 30 00 00 00 01 02 03 04 05 06 07 08"),
         [](TObjectReader& reader, TStream&) {
           TVariant value;
           EXPECT_FALSE(LoadVariant(&reader, value));
           EXPECT_EQ(value.Count, 12u);
           EXPECT_EQ(Elements<int>(value), std::vector<int>(12, 0));
         });
}

TEST(VariantStorage, PositionsBehindAShortArrayFollowTheStream) {
  const Bytes bytes = Hex("06 01 00 00 0C 00 00 00 30 00 00 00 01 02 03 04");
  TPlainStream plain(bytes);
  TObjectReader reader(&plain, false);
  TVariant value;
  EXPECT_FALSE(LoadVariant(&reader, value));
  EXPECT_EQ(plain.GetPos(), 16); // reads what there is
  Bytes place = bytes;
  TMemoryStream memory(place.data(), place.size(), false);
  reader.SetStream(&memory, false);
  EXPECT_FALSE(LoadVariant(&reader, value));
  EXPECT_EQ(memory.GetPos(), 12); // all or nothing
}

TEST(VariantStorage, HugeArraysThatCantComeLeaveNothing) {
  for (const char* text : {"0B 01 00 00 FF FF FF 1F F8 FF FF FF 01 02", // 4 GiB less 8 bytes
                           "0B 01 00 00 FF FF FF FF F8 FF FF FF 01 02", // another size than said
                           "03 01 00 00 FF FF FF FF FF FF FF FF 01"}) {
    OnBoth(Hex(text), [](TObjectReader& reader, TStream&) {
      TVariant value;
      value.Set(5);
      EXPECT_FALSE(LoadVariant(&reader, value));
      EXPECT_EQ(value.Type, DATA_TYPE_NONE);
    });
  }
}

TEST(VariantStorage, LargeArraysComeFromStreamsThatSayTheyHaveNothing) {
  std::vector<double> numbers(200000);
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    numbers[i] = static_cast<double>(i) * 0.5;
  }
  TVariant value;
  ASSERT_TRUE(value.SetArray(numbers.data(), numbers.size()));
  TPlainStream stream;
  TObjectWriter writer(&stream, false);
  ASSERT_TRUE(SaveVariant(&writer, value));
  stream.SetPos(0);
  stream.ReportedSize = -1;
  TObjectReader reader(&stream, false);
  TVariant back;
  EXPECT_TRUE(LoadVariant(&reader, back));
  EXPECT_EQ(back.Type, value.Type);
  EXPECT_EQ(Elements<double>(back), numbers);
  const TVariant copy(back);
  EXPECT_EQ(Elements<double>(copy), numbers);
}

TEST(VariantStorage, FailedScalarsAndStringsKeepTheValue) {
  for (const char* text :
       {"06 00 00 00 01 02 03", "0B 00 00 00 01 02 03 04 05 06 07", "01 00 00 00",
        "0F 00 00 00 02 00 00 00 61", "0F 00 00 00 02 00 00", "0F 00 00 00 01 00 00 00 61 00 00",
        "26 00 00 00 01 00 00 00 02 00 00", "06 00 00", ""}) {
    OnBoth(Hex(text), [&](TObjectReader& reader, TStream&) {
      TVariant value;
      value.Set(5);
      EXPECT_FALSE(LoadVariant(&reader, value)) << text;
      EXPECT_EQ(value.Get<int>(), 5) << text;
    });
  }
}

TEST(VariantStorage, AReferenceIsReleasedByALoad) {
  auto* object = new zx::TRef;
  TVariant value(object);
  EXPECT_EQ(object->GetRefCount(), 2u);
  OnBoth(Hex("06 00 00 00 05 00 00 00"), [&](TObjectReader& reader, TStream&) {
    TVariant mine(object);
    EXPECT_TRUE(LoadVariant(&reader, mine));
    EXPECT_EQ(mine.Get<int>(), 5);
  });
  EXPECT_EQ(object->GetRefCount(), 2u);
  object->Release();
}
