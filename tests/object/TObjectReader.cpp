#include <ZxCore3D/object/TObjectReader.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include <ZxCore3D/object/TMemoryStream.h>

#include "object/FailingMalloc.h"
#include "object/Streams.h"

using namespace Zx3D;
using zx_test::Bytes;
using zx_test::Hex;
using zx_test::TPlainStream;

namespace {

// Runs a check on a reader of a plain stream and of a memory stream, which take different ways.
template <class Check> void OnBoth(const Bytes& bytes, Check&& check) {
  TPlainStream plain(bytes);
  TObjectReader reader(&plain, false);
  check(reader, static_cast<TStream&>(plain));
  Bytes place = bytes;
  TMemoryStream memory(place.data(), place.size(), false);
  TObjectReader other(&memory, false);
  check(other, static_cast<TStream&>(memory));
}

unsigned long Answer(void* context, QUERYHDR* query) {
  *static_cast<QUERYHDR*>(context) = *query;
  return 0xABCDEF0123456789UL;
}

} // namespace

TEST(TObjectReader, OwnsItsStreamOnRequest) {
  bool deleted = false;
  const auto make = [&deleted] {
    deleted = false;
    auto* stream = new TPlainStream;
    stream->Deleted = &deleted;
    return stream;
  };
  { TObjectReader reader(make(), true); }
  EXPECT_TRUE(deleted);
  TPlainStream* kept = make();
  { TObjectReader reader(kept, false); }
  EXPECT_FALSE(deleted);
  TPlainStream next(Hex("00 00 00 00"));
  TObjectReader reader(kept, true);
  reader.SetStream(kept, true);
  EXPECT_FALSE(deleted);
  reader.SetStream(&next, false);
  EXPECT_TRUE(deleted);
  unsigned long length = 1;
  EXPECT_TRUE(reader.ReadStringLen(&length));
  EXPECT_EQ(length, 0u);
}

TEST(TObjectReader, WithoutAStreamEveryReadIsFalse) {
  TObjectReader reader;
  unsigned long length = 0;
  char narrow[4];
  wchar_t wide[4];
  std::string name = "kept";
  std::wstring text;
  TVariant value;
  value.Set(5);
  EXPECT_FALSE(reader.ReadStringLen(&length));
  EXPECT_FALSE(reader.ReadStringData(narrow, 1));
  EXPECT_FALSE(reader.ReadStringData(wide, 1));
  EXPECT_FALSE(reader.ReadString(narrow, 4));
  EXPECT_FALSE(reader.ReadString(wide, 4));
  EXPECT_FALSE(reader.ReadString(&name));
  EXPECT_FALSE(reader.ReadString(&text));
  EXPECT_FALSE(LoadVariant(&reader, value));
  EXPECT_FALSE(LoadVariantData(&reader, DATA_TYPE_NONE, value));
  EXPECT_FALSE(LoadAttribute(&reader, name, value));
  EXPECT_FALSE(LoadVariant(nullptr, value));
  EXPECT_EQ(name, "kept");
  EXPECT_EQ(value.Get<int>(), 5);
  EXPECT_TRUE(reader.ReserveTmp(0));
  EXPECT_TRUE(reader.ReserveTmp(100));
  EXPECT_TRUE(reader.ReserveTmp(10));
  EXPECT_FALSE(reader.ReserveTmp(~0UL));
}

TEST(TObjectReader, QueriesGoToTheFunctionWithTheirKind) {
  TObjectReader reader;
  EXPECT_EQ(reader.FindTextureByID(7), 0u);
  EXPECT_EQ(reader.Query(nullptr), 0u);
  QUERYHDR seen{};
  reader.SetQueryFunc(Answer, &seen);
  const struct {
    unsigned long (TObjectReader::*Find)(unsigned long);
    unsigned long Kind;
  } rows[] = {{&TObjectReader::FindObjectByID, 4},      {&TObjectReader::FindGeometryByID, 7},
              {&TObjectReader::FindControllerByID, 31}, {&TObjectReader::FindShaderByID, 32},
              {&TObjectReader::FindProgramByID, 33},    {&TObjectReader::FindTechniqueByID, 34},
              {&TObjectReader::FindMaterialByID, 35},   {&TObjectReader::FindTextureByID, 36}};
  unsigned long id = 1000;
  for (const auto& row : rows) {
    EXPECT_EQ((reader.*row.Find)(++id), 0xABCDEF0123456789UL);
    EXPECT_EQ(seen.Code, 43u);
    EXPECT_EQ(seen.Kind, row.Kind);
    EXPECT_EQ(seen.Id, id);
  }
  EXPECT_EQ(reader.FindItemByID(5, 99), 0xABCDEF0123456789UL);
  EXPECT_EQ(seen.Kind, 99u);
  QUERYHDR own{1, 2, 3};
  EXPECT_EQ(reader.Query(&own), 0xABCDEF0123456789UL);
  EXPECT_EQ(seen.Code, 1u);
  reader.SetQueryFunc(nullptr, &seen);
  EXPECT_EQ(reader.FindObjectByID(1), 0u);
}

TEST(TObjectReader, NarrowStringsIntoBuffers) {
  OnBoth(Hex("07 00 00 00 61 62 63 64 65 66 67 FF 08 00 00 00 61 62 63 64 65 66 67 68"),
         [](TObjectReader& reader, TStream& stream) {
           char text[8] = {};
           EXPECT_TRUE(reader.ReadString(text, 8));
           EXPECT_STREQ(text, "abcdefg");
           EXPECT_EQ(stream.GetPos(), 12); // the padding isn't looked at
           EXPECT_FALSE(reader.ReadString(text, 8));
           EXPECT_EQ(stream.GetPos(), 16); // just the length
           EXPECT_STREQ(text, "abcdefg");
           char more[9];
           EXPECT_TRUE(reader.ReadStringData(more, 8));
           EXPECT_STREQ(more, "abcdefgh");
           EXPECT_FALSE(reader.ReadString(text, 8));
         });
  OnBoth(Hex("00 00 00 00"), [](TObjectReader& reader, TStream&) {
    char text[1];
    EXPECT_FALSE(reader.ReadString(text, 0));
  });
}

TEST(TObjectReader, NarrowStringsIntoStrings) {
  OnBoth(Hex("05 00 00 00 61 62 00 64 65 01 02 03 00 00 00 00 01 00 00 00 7A 00 00 00"),
         [](TObjectReader& reader, TStream& stream) {
           std::string text = "old";
           EXPECT_TRUE(reader.ReadString(&text));
           EXPECT_EQ(text, "ab"); // cut at the zero byte
           EXPECT_EQ(stream.GetPos(), 12);
           EXPECT_TRUE(reader.ReadString(&text));
           EXPECT_EQ(text, "");
           EXPECT_TRUE(reader.ReadString(&text));
           EXPECT_EQ(text, "z"); // nothing of the scratch's former content
           EXPECT_FALSE(reader.ReadString(&text));
           EXPECT_EQ(text, "z");
         });
}

TEST(TObjectReader, ANarrowReadNeedsItsPaddingAWideOneDoesNot) {
  OnBoth(Hex("01 00 00 00 61 00 00"), [](TObjectReader& reader, TStream&) {
    std::string text = "old";
    EXPECT_FALSE(reader.ReadString(&text));
    EXPECT_EQ(text, "old");
  });
  OnBoth(Hex("01 00 00 00 61 00"), [](TObjectReader& reader, TStream&) {
    std::wstring text;
    EXPECT_TRUE(reader.ReadString(&text));
    EXPECT_EQ(text, L"a");
  });
}

TEST(TObjectReader, WideStringsFillTheFirstBytes) {
  const Bytes three = Hex("03 00 00 00 61 00 00 00 62 00 FF FF 02 00 00 00 78 56 34 12");
  OnBoth(three, [](TObjectReader& reader, TStream& stream) {
    std::wstring text = L"old";
    EXPECT_TRUE(reader.ReadString(&text));
    EXPECT_EQ(text, L"ab");
    EXPECT_EQ(stream.GetPos(), 12);
    EXPECT_TRUE(reader.ReadString(&text));
    EXPECT_EQ(text, std::wstring(1, static_cast<wchar_t>(0x12345678)));
  });
  OnBoth(three, [](TObjectReader& reader, TStream& stream) {
    wchar_t text[4] = {L'x', L'x', L'x', L'x'};
    EXPECT_FALSE(reader.ReadString(text, 3));
    EXPECT_EQ(stream.GetPos(), 4);
    EXPECT_TRUE(reader.ReadStringData(text, 3));
    EXPECT_EQ(text[0], L'a');
    EXPECT_EQ(static_cast<unsigned>(text[1]) & 0xFFFFu, unsigned{L'b'}); // half an element
    EXPECT_EQ(text[2], L'x');                                            // behind the bytes
    EXPECT_EQ(text[3], 0);
    EXPECT_EQ(stream.GetPos(), 12); // the padding is passed
    EXPECT_TRUE(reader.ReadString(text, 3));
    EXPECT_EQ(text[0], static_cast<wchar_t>(0x12345678));
    EXPECT_EQ(text[2], 0);
  });
}

TEST(TObjectReader, WideStringsHoldNothingOfEarlierReads) {
  // The first string fills the scratch; of the second only half of its elements come.
  OnBoth(Hex("10 00 00 00 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A"
             "7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A 7A"
             "04 00 00 00 61 00 00 00 62 00 00 00"),
         [](TObjectReader& reader, TStream&) {
           std::wstring text;
           EXPECT_TRUE(reader.ReadString(&text));
           EXPECT_EQ(text.size(), 8u);
           EXPECT_TRUE(reader.ReadString(&text));
           EXPECT_EQ(text, L"ab");
         });
}

TEST(TObjectReader, LongStringsComeWhole) {
  for (const unsigned long size : {4095UL, 4097UL, 0x3FFFEUL, 0x40000UL, 0x40001UL, 3000003UL}) {
    Bytes bytes(4);
    const auto prefix = static_cast<std::uint32_t>(size);
    std::memcpy(bytes.data(), &prefix, 4);
    std::string expected;
    for (unsigned long i = 0; i < size; ++i) {
      expected.push_back(static_cast<char>('a' + i % 23));
    }
    bytes.insert(bytes.end(), expected.begin(), expected.end());
    bytes.resize((bytes.size() + 3) / 4 * 4);
    OnBoth(bytes, [&](TObjectReader& reader, TStream& stream) {
      std::string text;
      EXPECT_TRUE(reader.ReadString(&text));
      EXPECT_TRUE(text == expected) << size;
      EXPECT_TRUE(stream.IsEOS());
      stream.SetPos(0);
      TVariant value;
      EXPECT_TRUE(LoadVariantData(&reader, DATA_TYPE_STRING, value));
      EXPECT_EQ(value.GetStringLength(), size);
      EXPECT_TRUE(value.GetStringPtr() == expected) << size;
      EXPECT_TRUE(stream.IsEOS());
    });
    // The same from a stream that says that it has nothing.
    TPlainStream shy(bytes);
    shy.ReportedSize = -1;
    TObjectReader reader(&shy, false);
    std::string text;
    EXPECT_TRUE(reader.ReadString(&text));
    EXPECT_TRUE(text == expected) << size;
    shy.SetPos(0);
    TVariant value;
    EXPECT_TRUE(LoadVariantData(&reader, DATA_TYPE_STRING, value));
    EXPECT_TRUE(value.GetStringPtr() == expected) << size;
  }
}

TEST(TObjectReader, LongStringsAreCutAtAZeroByteToo) {
  for (const unsigned long zero : {0UL, 5UL, 31UL, 32UL, 299999UL}) {
    Bytes bytes(4 + 300000, 'q');
    const std::uint32_t prefix = 300000;
    std::memcpy(bytes.data(), &prefix, 4);
    bytes[4 + zero] = 0;
    OnBoth(bytes, [&](TObjectReader& reader, TStream& stream) {
      std::string text;
      EXPECT_TRUE(reader.ReadString(&text));
      EXPECT_EQ(text, std::string(zero, 'q'));
      stream.SetPos(0);
      TVariant value;
      EXPECT_TRUE(LoadVariantData(&reader, DATA_TYPE_STRING, value));
      EXPECT_EQ(value.Count, zero);
      EXPECT_EQ(value.GetStringPtr(), std::string(zero, 'q'));
      value = TVariant(value); // copies and frees like any other
      EXPECT_EQ(value.GetStringPtr(), std::string(zero, 'q'));
    });
  }
}

// Text that is there in full, but not all bytes of its padding: false, and what was there stays.
TEST(TObjectReader, LongStringsNeedTheirPadding) {
  for (const unsigned long size : {5UL, 0x3FFFFUL, 0x40001UL, 0x40002UL, 0x40003UL, 1000001UL}) {
    const unsigned long padding = (4 - size % 4) % 4;
    for (unsigned long there = 0; there <= padding; ++there) {
      SCOPED_TRACE(testing::Message() << size << " bytes, " << there << " of " << padding);
      Bytes bytes(4 + size + there, 'p');
      const auto prefix = static_cast<std::uint32_t>(size);
      std::memcpy(bytes.data(), &prefix, 4);
      OnBoth(bytes, [&](TObjectReader& reader, TStream& stream) {
        std::string text = "old";
        EXPECT_EQ(there == padding, reader.ReadString(&text));
        EXPECT_EQ(there == padding ? size : 3, text.size());
        stream.SetPos(0);
        TVariant value;
        value.Set("old", 3);
        const zx_test::TMallocWatch watch;
        EXPECT_EQ(there == padding, LoadVariantData(&reader, DATA_TYPE_STRING, value));
        EXPECT_TRUE(there == padding || watch.LiveBlocks() == 0);
        EXPECT_EQ(there == padding ? size : 3, value.GetStringLength());
      });
    }
  }
}

TEST(TObjectReader, LongWideStringsComeWhole) {
  for (const unsigned long units : {0xFFFEUL, 0xFFFFUL, 0x10000UL, 200001UL}) {
    Bytes bytes(4);
    const auto prefix = static_cast<std::uint32_t>(units);
    std::memcpy(bytes.data(), &prefix, 4);
    bytes.resize(4 + 2 * units, 0x01);
    bytes.resize((bytes.size() + 3) / 4 * 4);
    bytes.push_back(0x77);
    OnBoth(bytes, [&](TObjectReader& reader, TStream& stream) {
      std::wstring text;
      EXPECT_TRUE(reader.ReadString(&text));
      unsigned char next = 0;
      EXPECT_TRUE(stream.ReadAll(&next, 1));
      EXPECT_EQ(next, 0x77) << "the padding is passed";
      std::wstring expected(units / 2, static_cast<wchar_t>(0x01010101));
      if (units % 2 != 0) {
        expected.push_back(static_cast<wchar_t>(0x0101));
      }
      EXPECT_TRUE(text == expected) << units;
    });
  }
}

TEST(TObjectReader, AttributeNamesHaveUpTo31Bytes) {
  for (const unsigned long size : {0UL, 1UL, 31UL}) {
    Bytes bytes(4);
    bytes[0] = static_cast<unsigned char>(size);
    bytes.insert(bytes.end(), size, 'n');
    bytes.resize((bytes.size() + 3) / 4 * 4);
    for (const unsigned char byte : Hex("06 00 00 00 05 00 00 00")) {
      bytes.push_back(byte);
    }
    OnBoth(bytes, [&](TObjectReader& reader, TStream& stream) {
      std::string name = "old";
      TVariant value;
      EXPECT_TRUE(LoadAttribute(&reader, name, value));
      EXPECT_EQ(name, std::string(size, 'n'));
      EXPECT_EQ(value.Get<int>(), 5);
      EXPECT_TRUE(stream.IsEOS());
    });
  }
  Bytes bytes = Hex("20 00 00 00");
  bytes.resize(100, 0);
  OnBoth(bytes, [](TObjectReader& reader, TStream& stream) {
    std::string name = "old";
    TVariant value;
    value.Set(7);
    EXPECT_FALSE(LoadAttribute(&reader, name, value));
    EXPECT_EQ(stream.GetPos(), 4);
    EXPECT_EQ(name, "old");
    EXPECT_EQ(value.Get<int>(), 7);
  });
}

TEST(TObjectReader, AttributeNamesAreCutAtAZeroByteAndSetBeforeTheValue) {
  OnBoth(Hex("03 00 00 00 61 00 62 00 0C 00 00 00"), [](TObjectReader& reader, TStream& stream) {
    std::string name = "old";
    TVariant value;
    value.Set(7);
    EXPECT_FALSE(LoadAttribute(&reader, name, value)); // a tag without a stored form
    EXPECT_EQ(name, "a");
    EXPECT_EQ(value.Get<int>(), 7);
    EXPECT_EQ(stream.GetPos(), 12);
  });
}

TEST(TObjectReader, NamesAndTextsEndAtTheirFirstZeroByteWhereverItIs) {
  std::string kept;
  for (std::uint32_t length = 0; length <= 31; ++length) {
    for (std::uint32_t zero = 0; zero <= length; ++zero) {
      // 0x80 and 0x01 beside a zero are where tests for a zero in a word may err.
      std::string text;
      for (std::uint32_t i = 0; i < length; ++i) {
        text += i == zero || (i == zero + 2 && i % 2 == 0) ? '\0' : i % 2 == 0 ? '\x80' : '\x01';
      }
      Bytes bytes;
      const auto put = [&bytes](const void* data, std::size_t size) {
        const auto* from = static_cast<const unsigned char*>(data);
        bytes.insert(bytes.end(), from, from + size);
        bytes.resize((bytes.size() + 3) / 4 * 4);
      };
      const std::uint32_t tag = DATA_TYPE_STRING;
      put(&length, 4);
      put(text.data(), length);
      put(&tag, 4);
      put(&length, 4);
      put(text.data(), length);
      OnBoth(bytes, [&](TObjectReader& reader, TStream& stream) {
        TVariant value;
        EXPECT_TRUE(LoadAttribute(&reader, kept, value));
        EXPECT_EQ(kept, text.substr(0, zero)) << length << " " << zero;
        EXPECT_EQ(value.GetStringLength(), zero);
        EXPECT_EQ(std::string(value.GetStringPtr()), text.substr(0, zero));
        EXPECT_TRUE(stream.IsEOS());
      });
    }
  }
}

TEST(TObjectReader, ScalarsReadTheirBytesAloneHoweverManyFollow) {
  const std::uint32_t widths[12] = {0, 1, 1, 1, 2, 2, 4, 4, 8, 8, 4, 8};
  for (std::uint32_t tag = 1; tag < 12; ++tag) {
    for (std::size_t follow = 0; follow <= 9; ++follow) {
      Bytes bytes(4 + widths[tag], 0xA5);
      std::memcpy(bytes.data(), &tag, 4);
      bytes.resize(bytes.size() + follow, 0xFF);
      OnBoth(bytes, [&](TObjectReader& reader, TStream& stream) {
        TVariant value;
        std::memset(value.Value, 0x11, sizeof value.Value);
        EXPECT_TRUE(LoadVariant(&reader, value));
        EXPECT_EQ(value.Type, tag);
        EXPECT_EQ(value.Count, 1u);
        EXPECT_EQ(stream.GetPos(), 4 + static_cast<long>(widths[tag]));
        for (std::uint32_t i = 0; i < widths[tag]; ++i) {
          EXPECT_EQ(value.Value[i], tag == DATA_TYPE_BOOL ? 1 : 0xA5) << tag << " " << follow;
        }
        EXPECT_EQ(value.Value[widths[tag]], 0x11) << tag << " " << follow;
      });
    }
  }
}
