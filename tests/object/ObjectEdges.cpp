#include <ZxCore3D/object/TObjectReader.h>
#include <ZxCore3D/object/TObjectWriter.h>

#include <climits>
#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <ZxBaseKit/TRef.h>

#include <ZxCore3D/object/TMemoryStream.h>

#include "object/FailingMalloc.h"
#include "object/Streams.h"

// Readers and writers without a stream, calls without a target, lengths past what a file can hold,
// positions where nothing can be read or written.

using namespace Zx3D;
using zx_test::Bytes;
using zx_test::Hex;
using zx_test::TPlainStream;

namespace {

constexpr unsigned long kMeasure = ~0UL;

Bytes Content(TMemoryStream& stream) {
  Bytes bytes(static_cast<std::size_t>(stream.GetSize()));
  EXPECT_TRUE(stream.SetPos(0));
  EXPECT_TRUE(stream.ReadAll(bytes.data(), bytes.size()));
  return bytes;
}

} // namespace

TEST(TObjectWriter, WithoutAStreamNothingIsOwnedAndAllIsFalse) {
  TObjectWriter writer(nullptr, true);
  writer.SetStream(nullptr, true);
  STORE_BLOCK block = {8, 0};
  EXPECT_FALSE(writer.WriteBlockBegin(&block));
  EXPECT_FALSE(writer.WriteBlockEnd(&block));
  EXPECT_FALSE(writer.WriteString("a", 1));
  EXPECT_FALSE(writer.WriteString(L"a", 1));
  EXPECT_FALSE(writer.WriteStringData("a", 1));
  EXPECT_FALSE(writer.WriteStringData(L"a", 1));
  TVariant value;
  value.Set(5);
  EXPECT_FALSE(SaveVariant(&writer, value));
  EXPECT_FALSE(SaveAttribute(&writer, "a", 1, value));
  EXPECT_FALSE(SaveVariant(nullptr, value));
  // What was to be owned before a stream came is not owned afterwards.
  bool deleted = false;
  auto* stream = new TPlainStream;
  stream->Deleted = &deleted;
  writer.SetStream(stream, true);
  writer.SetStream(nullptr, true);
  EXPECT_TRUE(deleted);
}

TEST(TObjectWriter, ABlockWithoutARecordIsFalse) {
  TPlainStream stream;
  TObjectWriter writer(&stream, false);
  EXPECT_FALSE(writer.WriteBlockBegin(nullptr));
  EXPECT_FALSE(writer.WriteBlockEnd(nullptr));
  EXPECT_TRUE(stream.Data.empty());
}

TEST(TObjectWriter, StringDataAreMeasuredOnBothSpecialLengths) {
  for (const unsigned long length : {kMeasure, kMeasure - 1}) {
    TPlainStream narrow;
    TObjectWriter writer(&narrow, false);
    EXPECT_TRUE(writer.WriteStringData("abcde", length));
    EXPECT_TRUE(writer.WriteStringData(static_cast<const char*>(nullptr), length));
    EXPECT_EQ(narrow.Data, Hex("61 62 63 64 65 00 00 00"));
    // Three units of two bytes: the first character and half of the second.
    TPlainStream wide;
    writer.SetStream(&wide, false);
    EXPECT_TRUE(writer.WriteStringData(L"abc", length));
    EXPECT_TRUE(writer.WriteStringData(static_cast<const wchar_t*>(nullptr), length));
    EXPECT_EQ(wide.Data, Hex("61 00 00 00 62 00 00 00"));
  }
}

TEST(TObjectWriter, ANullTextHasNoOtherLengthThanZero) {
  const char* const narrow = nullptr;
  const wchar_t* const wide = nullptr;
  TPlainStream stream;
  TObjectWriter writer(&stream, false);
  EXPECT_FALSE(writer.WriteStringData(narrow, 3));
  EXPECT_FALSE(writer.WriteStringData(wide, 3));
  EXPECT_FALSE(writer.WriteString(narrow, 3));
  EXPECT_FALSE(writer.WriteString(wide, 3));
  EXPECT_TRUE(stream.Data.empty());
  EXPECT_TRUE(writer.WriteString(narrow, 0));
  EXPECT_TRUE(writer.WriteString(wide, 0));
  EXPECT_EQ(stream.Data, Hex("00 00 00 00 00 00 00 00"));
}

// A length whose bytes no number can count touches neither the text nor the stream.
TEST(TObjectWriter, AWideLengthWhoseBytesWrapIsFalse) {
  TPlainStream stream;
  TObjectWriter writer(&stream, false);
  for (const unsigned long length : {1UL << 63, (1UL << 62) + 1, kMeasure - 2}) {
    EXPECT_FALSE(writer.WriteStringData(L"", length));
    EXPECT_FALSE(writer.WriteString(L"", length));
  }
  EXPECT_TRUE(stream.Data.empty());
}

TEST(TObjectWriter, LongNamesAndTextsAreWrittenInParts) {
  const std::string name(5001, 'n');
  TVariant value;
  value.Set(std::string(6002, 't'));
  Bytes expected = Hex("89 13 00 00"); // 5001
  expected.insert(expected.end(), 5001, 'n');
  expected.insert(expected.end(), 3, 0);
  const Bytes head = Hex("0F 00 00 00 72 17 00 00"); // the tag, and 6002
  expected.insert(expected.end(), head.begin(), head.end());
  expected.insert(expected.end(), 6002, 't');
  expected.insert(expected.end(), 2, 0);
  TMemoryStream memory;
  TObjectWriter writer(&memory, false);
  ASSERT_TRUE(SaveAttribute(&writer, name, value));
  EXPECT_EQ(Content(memory), expected);
  // With room for all of it, where a short one would be written at once.
  TMemoryStream reserved;
  ASSERT_TRUE(reserved.Reserve(20000));
  writer.SetStream(&reserved, false);
  ASSERT_TRUE(SaveAttribute(&writer, "n", 1, value));
  expected.erase(expected.begin(), expected.begin() + 4 + 5004);
  Bytes named = Hex("01 00 00 00 6E 00 00 00");
  named.insert(named.end(), expected.begin(), expected.end());
  EXPECT_EQ(Content(reserved), named);
}

// A reference has neither elements nor bytes, whatever its count.
TEST(TObjectWriter, AReferenceUnderAnArraysTagIsAnEmptyArray) {
  auto* const object = new zx::TRef;
  {
    TPlainStream stream;
    TObjectWriter writer(&stream, false);
    const TVariant value(object);
    EXPECT_TRUE(SaveVariantData(&writer, static_cast<DATA_TYPE>(0x100 | DATA_TYPE_FLOAT), value));
    EXPECT_EQ(stream.Data, Hex("00 00 00 00 00 00 00 00"));
  }
  object->Release();
}

TEST(TObjectWriter, BelowTheStartOfAMemoryStreamNothingIsWritten) {
  TMemoryStream memory;
  ASSERT_TRUE(memory.WriteAll("abcdefgh", 8));
  ASSERT_TRUE(memory.SetPos(-4));
  TObjectWriter writer(&memory, false);
  TVariant value;
  value.Set(5);
  EXPECT_FALSE(SaveVariant(&writer, value));
  EXPECT_FALSE(SaveAttribute(&writer, "a", 1, value));
  EXPECT_EQ(memory.GetPos(), -4);
  EXPECT_EQ(Content(memory), Hex("61 62 63 64 65 66 67 68"));
}

TEST(TObjectReader, WithoutAStreamNothingIsOwnedAndAllIsFalse) {
  TObjectReader reader(nullptr, true);
  reader.SetStream(nullptr, true);
  unsigned long length = 7;
  std::string narrow = "kept";
  std::wstring wide = L"kept";
  char place[8] = "kept";
  wchar_t widePlace[8] = L"kept";
  TVariant value;
  value.Set(5);
  EXPECT_FALSE(reader.ReadStringLen(&length));
  EXPECT_FALSE(reader.ReadString(&narrow));
  EXPECT_FALSE(reader.ReadString(&wide));
  EXPECT_FALSE(reader.ReadString(place, 8));
  EXPECT_FALSE(reader.ReadString(widePlace, 8));
  EXPECT_FALSE(reader.ReadStringData(place, 4));
  EXPECT_FALSE(reader.ReadStringData(widePlace, 4));
  EXPECT_FALSE(LoadVariant(&reader, value));
  EXPECT_FALSE(LoadVariant(nullptr, value));
  EXPECT_FALSE(LoadAttribute(&reader, narrow, value));
  EXPECT_EQ(length, 7u);
  EXPECT_EQ(narrow, "kept");
  EXPECT_EQ(wide, L"kept");
  EXPECT_STREQ(place, "kept");
  EXPECT_EQ(value.Get<int>(), 5);
  bool deleted = false;
  auto* stream = new TPlainStream;
  stream->Deleted = &deleted;
  reader.SetStream(stream, true);
  reader.SetStream(nullptr, true);
  EXPECT_TRUE(deleted);
}

TEST(TObjectReader, WithoutATargetNothingIsConsumed) {
  TPlainStream stream(Hex("01 00 00 00 61 00 00 00"));
  TObjectReader reader(&stream, false);
  EXPECT_FALSE(reader.ReadStringLen(nullptr));
  EXPECT_FALSE(reader.ReadStringData(static_cast<char*>(nullptr), 4));
  EXPECT_FALSE(reader.ReadStringData(static_cast<wchar_t*>(nullptr), 2));
  EXPECT_FALSE(reader.ReadString(static_cast<std::string*>(nullptr)));
  EXPECT_FALSE(reader.ReadString(static_cast<std::wstring*>(nullptr)));
  EXPECT_EQ(stream.Position, 0);
  std::string text;
  EXPECT_TRUE(reader.ReadString(&text));
  EXPECT_EQ(text, "a");
}

TEST(TObjectReader, AWideLengthWhoseBytesWrapIsFalse) {
  TPlainStream stream(Hex("61 00 00 00"));
  TObjectReader reader(&stream, false);
  wchar_t place[2] = L"k";
  for (const unsigned long length : {1UL << 63, (1UL << 62) + 1, ~0UL}) {
    EXPECT_FALSE(reader.ReadStringData(place, length));
  }
  EXPECT_EQ(stream.Position, 0);
  EXPECT_STREQ(place, L"k");
}

TEST(TObjectReader, BelowTheStartOfAMemoryStreamNothingIsRead) {
  Bytes bytes = Hex("01 00 00 00 61 00 00 00 06 00 00 00 05 00 00 00");
  TMemoryStream memory(bytes.data(), bytes.size(), false);
  ASSERT_TRUE(memory.SetPos(-8));
  TObjectReader reader(&memory, false);
  TVariant value;
  value.Set(1.5);
  std::string name = "kept";
  EXPECT_FALSE(LoadVariant(&reader, value));
  EXPECT_FALSE(LoadAttribute(&reader, name, value));
  EXPECT_EQ(name, "kept");
  EXPECT_EQ(value.Get<double>(), 1.5);
  EXPECT_EQ(memory.GetPos(), -8);
}

// Of pipes and their like nobody knows how much will come.
TEST(TObjectReader, LongTextsFromAStreamThatKnowsNoPosition) {
  class TPipe : public TPlainStream {
  public:
    using TPlainStream::TPlainStream;
    long GetPos() const override { return -1; }
  };
  Bytes bytes = Hex("40 0D 03 00"); // 200000
  bytes.insert(bytes.end(), 200000, 'x');
  TPipe stream(bytes);
  stream.Chunk = 999;
  TObjectReader reader(&stream, false);
  std::string text;
  ASSERT_TRUE(reader.ReadString(&text));
  EXPECT_EQ(text, std::string(200000, 'x'));
  EXPECT_TRUE(stream.IsEOS());
}

// Memory that can't be made smaller stays as it is: the text is there all the same.
TEST(VariantStorage, ALongTextThatEndsEarlyNeedsNoFurtherMemory) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const std::string kept(280000, 'k');
  Bytes bytes = Hex("0F 00 00 00 E0 93 04 00"); // a text of 300000
  bytes.insert(bytes.end(), kept.begin(), kept.end());
  bytes.insert(bytes.end(), 20000, 0);
  int loads = 0;
  for (unsigned long at = 1;; ++at) {
    ASSERT_LT(at, 100u);
    TMemoryStream memory(bytes.data(), bytes.size(), false);
    TVariant value;
    value.Set(5);
    bool failed = false;
    bool loaded = false;
    {
      TObjectReader reader(&memory, false);
      const zx_test::TMallocWatch watch(at);
      loaded = LoadVariant(&reader, value);
      failed = watch.Failed();
    }
    if (loaded) {
      EXPECT_EQ(std::string(value.GetStringPtr()), kept);
      EXPECT_EQ(value.GetStringLength(), kept.size());
    } else {
      EXPECT_EQ(value.Get<int>(), 5);
    }
    if (!failed) {
      EXPECT_TRUE(loaded);
      break;
    }
    loads += loaded ? 1 : 0;
  }
  EXPECT_EQ(loads, 1); // the cut alone may fail
}
