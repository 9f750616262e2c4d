#include <ZxCore3D/object/TObjectWriter.h>

#include <exception>
#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>

#include <ZxCore3D/object/TMemoryStream.h>

#include "object/Streams.h"

using namespace Zx3D;
using zx_test::Bytes;
using zx_test::Hex;
using zx_test::TPlainStream;

namespace {

// What a writer leaves in a plain stream and in a memory stream, which take different ways.
template <class Write> Bytes Written(Write&& write) {
  TPlainStream plain;
  TObjectWriter writer(&plain, false);
  EXPECT_TRUE(write(writer));

  TMemoryStream memory;
  TObjectWriter other(&memory, false);
  EXPECT_TRUE(write(other));
  Bytes grown(static_cast<std::size_t>(memory.GetSize()));
  memory.SetPos(0);
  EXPECT_TRUE(memory.ReadAll(grown.data(), grown.size()));
  EXPECT_EQ(grown, plain.Data);

  Bytes place(plain.Data.size() + 16, 0xEE);
  TMemoryStream attached(place.data(), 0, place.size(), false);
  TObjectWriter third(&attached, false);
  EXPECT_TRUE(write(third));
  EXPECT_EQ(attached.GetSize(), static_cast<long>(plain.Data.size()));
  EXPECT_EQ(attached.GetPos(), attached.GetSize());
  EXPECT_EQ(Bytes(place.begin(), place.end() - 16), plain.Data);
  EXPECT_EQ(Bytes(place.end() - 16, place.end()), Bytes(16, 0xEE));
  return plain.Data;
}

template <class T> TVariant Scalar(T number) {
  TVariant value;
  value.Set(number);
  return value;
}

TVariant Text(const std::string& text) {
  TVariant value;
  value.Set(text);
  return value;
}

Bytes Stored(const TVariant& value) {
  return Written([&](TObjectWriter& writer) { return SaveVariant(&writer, value); });
}

} // namespace

TEST(TObjectWriter, OwnsItsStreamOnRequest) {
  bool deleted = false;
  const auto make = [&deleted] {
    deleted = false;
    auto* stream = new TPlainStream;
    stream->Deleted = &deleted;
    return stream;
  };
  { TObjectWriter writer(make(), true); }
  EXPECT_TRUE(deleted);
  TPlainStream* kept = make();
  { TObjectWriter writer(kept, false); }
  EXPECT_FALSE(deleted);
  {
    TObjectWriter writer(kept, false);
    writer.SetStream(kept, true); // the same stream: it only becomes owned
    EXPECT_FALSE(deleted);
    writer.SetStream(kept, false);
  }
  EXPECT_FALSE(deleted);
  TPlainStream next;
  TObjectWriter writer(kept, true);
  writer.SetStream(&next, false);
  EXPECT_TRUE(deleted);
  EXPECT_TRUE(writer.WriteString("a", 1));
  EXPECT_EQ(next.Data.size(), 8u);
  writer.SetStream(nullptr, true);
  EXPECT_FALSE(writer.WriteString("a", 1));
}

TEST(TObjectWriter, WithoutAStreamEverythingIsFalse) {
  TObjectWriter writer;
  STORE_BLOCK block;
  block.Pos = 8;
  EXPECT_FALSE(writer.WriteBlockBegin(&block));
  EXPECT_FALSE(writer.WriteBlockEnd(&block));
  EXPECT_THROW(writer.WriteBlockBeginE(&block), std::exception);
  EXPECT_FALSE(writer.WriteStringData("a", 1));
  EXPECT_FALSE(writer.WriteStringData(L"a", 1));
  EXPECT_FALSE(writer.WriteString("a", 1));
  EXPECT_FALSE(writer.WriteString(L"a", 1));
  EXPECT_FALSE(writer.WriteString(std::string("a")));
  EXPECT_FALSE(writer.WriteString(std::wstring(L"a")));
  EXPECT_FALSE(SaveVariant(&writer, Scalar(1)));
  EXPECT_FALSE(SaveVariantData(&writer, DATA_TYPE_NONE, Scalar(1)));
  EXPECT_FALSE(SaveAttribute(&writer, "a", 1, Scalar(1)));
  EXPECT_FALSE(SaveVariant(nullptr, Scalar(1)));
}

TEST(TObjectWriter, AnEmptyBlockIsEightZeroBytes) {
  STORE_BLOCK block;
  EXPECT_EQ(Written([&](TObjectWriter& writer) {
              return writer.WriteBlockBegin(&block) && block.Pos == 8 && block.Size == 0 &&
                     writer.WriteBlockEnd(&block);
            }),
            Hex("00 00 00 00 00 00 00 00"));
  EXPECT_EQ(block.Size, 0u);
}

TEST(TObjectWriter, OuterBlocksCountTheInnerOnesSizeField) {
  STORE_BLOCK outer;
  STORE_BLOCK inner;
  EXPECT_EQ(Written([&](TObjectWriter& writer) {
              return writer.WriteBlockBegin(&outer) && writer.WriteString("a", 1) &&
                     writer.WriteBlockBegin(&inner) && writer.WriteString("bcdef", 5) &&
                     writer.WriteBlockEnd(&inner) && writer.WriteBlockEnd(&outer) &&
                     writer.WriteString("", 0);
            }),
            Hex("1C 00 00 00 00 00 00 00" // 8 + 8 + 12
                "01 00 00 00 61 00 00 00" //
                "0C 00 00 00 00 00 00 00" //
                "05 00 00 00 62 63 64 65 66 00 00 00"
                "00 00 00 00"));
  EXPECT_EQ(outer.Pos, 8u);
  EXPECT_EQ(outer.Size, 28u);
  EXPECT_EQ(inner.Pos, 24u);
  EXPECT_EQ(inner.Size, 12u);
}

TEST(TObjectWriter, ABlockNeverBegunIsRefusedWithoutTouchingTheStream) {
  TPlainStream stream(Hex("01 02 03"));
  stream.SetPos(2);
  TObjectWriter writer(&stream, false);
  for (const unsigned long position : {0UL, 7UL}) {
    STORE_BLOCK block;
    block.Pos = position;
    EXPECT_FALSE(writer.WriteBlockEnd(&block));
    EXPECT_THROW(writer.WriteBlockEndE(&block), std::exception);
  }
  EXPECT_EQ(stream.Calls, 0u);
  EXPECT_EQ(stream.GetPos(), 2);
}

TEST(TObjectWriter, AFailingSeekWritesTheCountWhereTheStreamStands) {
  TPlainStream stream;
  TObjectWriter writer(&stream, false);
  STORE_BLOCK block;
  ASSERT_TRUE(writer.WriteBlockBegin(&block));
  ASSERT_TRUE(writer.WriteString("abcd", 4));
  stream.Seeks = false;
  EXPECT_TRUE(writer.WriteBlockEnd(&block));
  EXPECT_EQ(stream.Data, Hex("00 00 00 00 00 00 00 00" // stays open
                             "04 00 00 00 61 62 63 64" //
                             "08 00 00 00 00 00 00 00"));
}

TEST(TObjectWriter, FailedWritesOfTheSizeAreFalseOrABareException) {
  TPlainStream stream;
  stream.Writable = false;
  TObjectWriter writer(&stream, false);
  STORE_BLOCK block;
  block.Size = 5;
  EXPECT_FALSE(writer.WriteBlockBegin(&block));
  EXPECT_EQ(block.Size, 0u);
  try {
    writer.WriteBlockBeginE(&block);
    FAIL();
  } catch (const std::exception& error) {
    EXPECT_EQ(typeid(error), typeid(std::exception));
  }
  stream.Writable = true;
  EXPECT_NO_THROW(writer.WriteBlockBeginE(&block));
  stream.Writable = false;
  EXPECT_FALSE(writer.WriteBlockEnd(&block));
  try {
    writer.WriteBlockEndE(&block);
    FAIL();
  } catch (const std::exception& error) {
    EXPECT_EQ(typeid(error), typeid(std::exception));
  }
  stream.Writable = true;
  EXPECT_NO_THROW(writer.WriteBlockEndE(&block));
}

TEST(TObjectWriter, NarrowStringsArePaddedToFour) {
  const struct {
    const char* Text;
    const char* Expected;
  } rows[] = {{"", "00 00 00 00"},
              {"a", "01 00 00 00 61 00 00 00"},
              {"ab", "02 00 00 00 61 62 00 00"},
              {"abc", "03 00 00 00 61 62 63 00"},
              {"abcd", "04 00 00 00 61 62 63 64"},
              {"abcde", "05 00 00 00 61 62 63 64 65 00 00 00"}};
  for (const auto& row : rows) {
    const std::string text = row.Text;
    EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteString(text); }), Hex(row.Expected));
    EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteString(row.Text, ~0UL); }),
              Hex(row.Expected));
    EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteString(row.Text, ~0UL - 1); }),
              Hex(row.Expected));
    EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteString(row.Text, text.size()); }),
              Hex(row.Expected));
    EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteStringData(row.Text, text.size()); }),
              Hex(row.Expected + 11));
  }
  EXPECT_EQ(Written([](TObjectWriter& w) { return w.WriteString("abcd", 2); }),
            Hex("02 00 00 00 61 62 00 00"));
  EXPECT_EQ(Written([](TObjectWriter& w) { return w.WriteString(std::string("a\0b", 3)); }),
            Hex("03 00 00 00 61 00 62 00"));
}

TEST(TObjectWriter, NullStringsMeasureNothing) {
  const char* const narrow = nullptr;
  const wchar_t* const wide = nullptr;
  EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteString(narrow, ~0UL); }),
            Hex("00 00 00 00"));
  EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteString(narrow, 0); }),
            Hex("00 00 00 00"));
  EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteString(wide, ~0UL); }),
            Hex("00 00 00 00"));
  TPlainStream stream;
  TObjectWriter writer(&stream, false);
  EXPECT_FALSE(writer.WriteString(narrow, 1));
  EXPECT_FALSE(writer.WriteString(wide, 1));
  EXPECT_FALSE(writer.WriteStringData(narrow, 1));
  EXPECT_EQ(stream.Data.size(), 0u);
}

TEST(TObjectWriter, WideStringsAreTheFirstBytesOfTheArray) {
  static_assert(sizeof(wchar_t) == 4);
  EXPECT_EQ(Written([](TObjectWriter& w) { return w.WriteString(L"", ~0UL); }), Hex("00 00 00 00"));
  EXPECT_EQ(Written([](TObjectWriter& w) { return w.WriteString(L"a", ~0UL); }),
            Hex("01 00 00 00 61 00 00 00"));
  EXPECT_EQ(Written([](TObjectWriter& w) { return w.WriteString(std::wstring(L"ab")); }),
            Hex("02 00 00 00 61 00 00 00"));
  EXPECT_EQ(Written([](TObjectWriter& w) { return w.WriteString(L"abc", ~0UL - 1); }),
            Hex("03 00 00 00 61 00 00 00 62 00 00 00"));
  EXPECT_EQ(Written([](TObjectWriter& w) { return w.WriteStringData(L"\x12345678z", 1); }),
            Hex("78 56 00 00"));
  for (const unsigned long measured : {~0UL, ~0UL - 1}) {
    EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteStringData(L"abc", measured); }),
              Hex("61 00 00 00 62 00 00 00"));
    EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteStringData("abc", measured); }),
              Hex("61 62 63 00"));
    const wchar_t* const none = nullptr;
    EXPECT_EQ(Written([&](TObjectWriter& w) { return w.WriteStringData(none, measured); }),
              Bytes());
  }
}

TEST(TObjectWriter, VariantsAreATagAndData) {
  EXPECT_EQ(Stored(TVariant()), Hex("00 00 00 00"));
  EXPECT_EQ(Stored(Scalar(true)), Hex("01 00 00 00 01"));
  EXPECT_EQ(Stored(Scalar<signed char>(-2)), Hex("02 00 00 00 FE"));
  EXPECT_EQ(Stored(Scalar<unsigned char>(200)), Hex("03 00 00 00 C8"));
  EXPECT_EQ(Stored(Scalar<short>(-2)), Hex("04 00 00 00 FE FF"));
  EXPECT_EQ(Stored(Scalar<unsigned short>(0x1234)), Hex("05 00 00 00 34 12"));
  EXPECT_EQ(Stored(Scalar(5)), Hex("06 00 00 00 05 00 00 00"));
  EXPECT_EQ(Stored(Scalar(0xFEDCBA98U)), Hex("07 00 00 00 98 BA DC FE"));
  EXPECT_EQ(Stored(Scalar(-2L)), Hex("08 00 00 00 FE FF FF FF FF FF FF FF"));
  EXPECT_EQ(Stored(Scalar(0x0123456789ABCDEFUL)), Hex("09 00 00 00 EF CD AB 89 67 45 23 01"));
  EXPECT_EQ(Stored(Scalar(1.0f)), Hex("0A 00 00 00 00 00 80 3F"));
  EXPECT_EQ(Stored(Scalar(1.0)), Hex("0B 00 00 00 00 00 00 00 00 00 F0 3F"));
  EXPECT_EQ(Stored(Text("")), Hex("0F 00 00 00 00 00 00 00"));
  EXPECT_EQ(Stored(Text("ab")), Hex("0F 00 00 00 02 00 00 00 61 62 00 00"));
  EXPECT_EQ(Stored(Text(std::string("a\0b", 3))), Hex("0F 00 00 00 01 00 00 00 61 00 00 00"));
  const std::string numbered = "0123456789abcdefghijklmnopqrstuvwxyz"; // on the heap
  Bytes expected = Hex("0F 00 00 00 24 00 00 00");
  expected.insert(expected.end(), numbered.begin(), numbered.end());
  EXPECT_EQ(Stored(Text(numbered)), expected);
}

TEST(TObjectWriter, VectorsAndArrays) {
  const int numbers[4] = {1, -1, 2, 3};
  TVariant value;
  value.SetVector(numbers, 2);
  EXPECT_EQ(Stored(value), Hex("26 00 00 00 01 00 00 00 FF FF FF FF"));
  value.SetVector(numbers, 3);
  EXPECT_EQ(Stored(value), Hex("46 00 00 00 01 00 00 00 FF FF FF FF 02 00 00 00"));
  value.SetVector(numbers, 4);
  EXPECT_EQ(Stored(value), Hex("66 00 00 00 01 00 00 00 FF FF FF FF 02 00 00 00 03 00 00 00"));
  const float floats[2] = {1.0f, 2.0f};
  value.SetArray(floats, 2);
  EXPECT_EQ(Stored(value), Hex("0A 01 00 00 02 00 00 00 08 00 00 00 00 00 80 3F 00 00 00 40"));
  value.SetArray(floats, 0UL);
  EXPECT_EQ(Stored(value), Hex("0A 01 00 00 00 00 00 00 00 00 00 00"));
  const unsigned char bytes[48] = {7, 8, 9};
  value.SetArray(DATA_TYPE_UINT8, 3, bytes, 3);
  EXPECT_EQ(Stored(value), Hex("03 01 00 00 03 00 00 00 03 00 00 00 07 08 09"));
  value.SetArray(DATA_TYPE_RESERVED16, 3, bytes, 48);
  Bytes expected = Hex("0D 01 00 00 03 00 00 00 30 00 00 00");
  expected.insert(expected.end(), bytes, bytes + 48);
  EXPECT_EQ(Stored(value), expected);
}

TEST(TObjectWriter, WhatHasNoStoredFormIsFalseBehindItsTag) {
  const float floats[4] = {};
  TVariant pairs;
  pairs.SetArray(floats, 2, 2);
  auto* object = new zx::TRef;
  TVariant reference(object);
  object->Release();
  TVariant reserved;
  reserved.Type = DATA_TYPE_RESERVED8;
  reserved.Count = 1;
  TVariant floatVector;
  floatVector.Type = static_cast<DATA_TYPE>(0x2A);
  TVariant five;
  five.Type = static_cast<DATA_TYPE>(0x86);
  TVariant eight;
  eight.Type = static_cast<DATA_TYPE>(0xE6);
  for (const TVariant* value : {&pairs, &reference, &reserved, &floatVector, &five, &eight}) {
    TPlainStream stream;
    TObjectWriter writer(&stream, false);
    EXPECT_FALSE(SaveVariant(&writer, *value));
    EXPECT_EQ(stream.Data.size(), 4u);
    TMemoryStream memory;
    writer.SetStream(&memory, false);
    memory.Reserve(100);
    EXPECT_FALSE(SaveVariant(&writer, *value));
    EXPECT_EQ(memory.GetSize(), 4);
  }
}

TEST(TObjectWriter, TheTagDecidesNotTheVariant) {
  const auto data = [](std::uint32_t tag, const TVariant& value) {
    return Written([&](TObjectWriter& writer) {
      return SaveVariantData(&writer, static_cast<DATA_TYPE>(tag), value);
    });
  };
  EXPECT_EQ(data(6, Scalar(true)), Hex("01 00 00 00"));
  EXPECT_EQ(data(6, Scalar(false)), Hex("00 00 00 00"));
  EXPECT_EQ(data(1, Scalar(2.5)), Hex("01"));
  EXPECT_EQ(data(2, Scalar(300)), Hex("2C"));
  EXPECT_EQ(data(11, Scalar(1)), Hex("00 00 00 00 00 00 F0 3F"));
  EXPECT_EQ(data(9, Scalar(-1)), Hex("FF FF FF FF FF FF FF FF"));
  EXPECT_EQ(data(0, Scalar(1)), Bytes());
  EXPECT_EQ(data(15, Scalar(1)), Hex("00 00 00 00")); // no string: an empty one
  EXPECT_EQ(data(15, Text("ab")), Hex("02 00 00 00 61 62 00 00"));
  // An array tag over a value without array data stores no bytes.
  EXPECT_EQ(data(0x106, Scalar(1)), Hex("01 00 00 00 00 00 00 00"));
  EXPECT_EQ(data(0x106, TVariant()), Hex("00 00 00 00 00 00 00 00"));
  const double doubles[1] = {1.0};
  TVariant array;
  array.SetArray(doubles, 1);
  EXPECT_EQ(data(0x106, array), Hex("01 00 00 00 08 00 00 00 00 00 00 00 00 00 F0 3F"));
  EXPECT_EQ(data(0x100, array), Hex("01 00 00 00 08 00 00 00 00 00 00 00 00 00 F0 3F"));
}

TEST(TObjectWriter, DataOfRefusedTagsWritesNothing) {
  const int numbers[4] = {};
  TVariant vector;
  vector.SetVector(numbers, 2);
  TPlainStream stream;
  TObjectWriter writer(&stream, false);
  for (const std::uint32_t tag : {12u, 13u, 14u, 16u, 0x46u, 0x2Au, 0x86u, 0xE6u, 0x10Eu, 0x10Fu,
                                  0x110u, 0x126u, 0x200u, 0x206u, 0x80000006u}) {
    EXPECT_FALSE(SaveVariantData(&writer, static_cast<DATA_TYPE>(tag), vector)) << tag;
  }
  EXPECT_EQ(stream.Data.size(), 0u);
  EXPECT_TRUE(SaveVariantData(&writer, static_cast<DATA_TYPE>(0x26), vector));
  for (const TVariant& value : {Text("5"), TVariant(), vector}) {
    try {
      SaveVariantData(&writer, DATA_TYPE_INT32, value);
      ADD_FAILURE();
    } catch (const TZxMessage& message) {
      EXPECT_STREQ(message.what(), "TVariant::Get failed");
    }
  }
}

TEST(TObjectWriter, AttributesAreANameAndAVariant) {
  EXPECT_EQ(Written([](TObjectWriter& w) { return SaveAttribute(&w, "ab", 2, Scalar(5)); }),
            Hex("02 00 00 00 61 62 00 00 06 00 00 00 05 00 00 00"));
  EXPECT_EQ(Written([](TObjectWriter& w) { return SaveAttribute(&w, "ab", ~0UL, Scalar(5)); }),
            Hex("02 00 00 00 61 62 00 00 06 00 00 00 05 00 00 00"));
  EXPECT_EQ(
      Written([](TObjectWriter& w) { return SaveAttribute(&w, std::string("abc"), Text("d")); }),
      Hex("03 00 00 00 61 62 63 00 0F 00 00 00 01 00 00 00 64 00 00 00"));
  EXPECT_EQ(Written([](TObjectWriter& w) { return SaveAttribute(&w, nullptr, ~0UL, TVariant()); }),
            Hex("00 00 00 00 00 00 00 00"));
  // Names of any length can be written.
  const std::string name(40, 'n');
  Bytes expected = Hex("28 00 00 00");
  expected.insert(expected.end(), 40, 'n');
  for (const unsigned char byte : Hex("01 00 00 00 01")) {
    expected.push_back(byte);
  }
  EXPECT_EQ(Written([&](TObjectWriter& w) { return SaveAttribute(&w, name, Scalar(true)); }),
            expected);
}

TEST(TObjectWriter, EveryShortPlaceHoldsWhatTheSingleWritesPutThere) {
  // A place of n bytes takes whole writes only: length, bytes, padding, tag, data.
  const std::string name = "abcde";
  const unsigned long cuts[] = {0, 4, 9, 12, 16, 20};
  for (unsigned long room = 0; room < 20; ++room) {
    Bytes place(20, 0xEE);
    TMemoryStream memory(place.data(), 0, room, false);
    TObjectWriter writer(&memory, false);
    EXPECT_FALSE(SaveAttribute(&writer, name, Scalar(5))) << room;
    unsigned long expected = 0;
    for (const unsigned long cut : cuts) {
      expected = cut <= room ? cut : expected;
    }
    EXPECT_EQ(memory.GetSize(), static_cast<long>(expected)) << room;
    EXPECT_EQ(memory.GetPos(), memory.GetSize());
  }
}

TEST(TObjectWriter, WritesInPlaceKeepWhatLiesBehind) {
  Bytes place(24, 0xEE);
  TMemoryStream memory(place.data(), place.size(), false);
  memory.SetPos(2);
  TObjectWriter writer(&memory, false);
  EXPECT_TRUE(SaveAttribute(&writer, "a", 1, Scalar<short>(1)));
  EXPECT_EQ(place, Hex("EE EE 01 00 00 00 61 00 00 00 04 00 00 00 01 00 EE EE EE EE EE EE EE EE"));
  EXPECT_EQ(memory.GetPos(), 16);
  EXPECT_EQ(memory.GetSize(), 24);
}
