// Damaged streams: no crash, no leak, no hang, and no more memory than the input's size plus 1 MiB.

#include <ZxCore3D/object/TObjectReader.h>
#include <ZxCore3D/object/TObjectWriter.h>

#include <cstring>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/object/TMemoryStream.h>

#include "object/FailingMalloc.h"
#include "object/Streams.h"

using namespace Zx3D;
using zx_test::Bytes;
using zx_test::Hex;
using zx_test::TMallocWatch;
using zx_test::TPlainStream;

namespace {

constexpr long kSlack = 1 << 20;

// One of everything that the format has; every read in `ReadAllElements` has its element here.
bool WriteAllElements(TObjectWriter& writer) {
  const float floats[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
  const int numbers[4] = {1, 2, 3, 4};
  TVariant value;
  STORE_BLOCK block;
  bool done = writer.WriteBlockBegin(&block);
  value.Set(5);
  done = done && SaveAttribute(&writer, "int", 3, value);
  value.Set(true);
  done = done && SaveAttribute(&writer, "flag", 4, value);
  value.Set(2.5);
  done = done && SaveAttribute(&writer, "a longer name than 16 bytes", ~0UL, value);
  value.Set(std::string(40, 't'));
  done = done && SaveAttribute(&writer, "text", 4, value);
  value.SetArray(floats, 12);
  done = done && SaveAttribute(&writer, "array", 5, value);
  value.SetVector(numbers, 3);
  done = done && SaveAttribute(&writer, "vector", 6, value);
  value.Reset();
  done = done && SaveAttribute(&writer, "none", 4, value);
  return done && writer.WriteString("narrow", ~0UL) && writer.WriteString(L"wide", ~0UL) &&
         writer.WriteString("into a buffer", ~0UL) && writer.WriteString(L"wider", ~0UL) &&
         writer.WriteBlockEnd(&block);
}

struct TResult {
  std::vector<std::string> Texts;
  std::vector<std::string> Values;
  std::wstring Wide;
  unsigned long Read = 0;
  bool operator==(const TResult& other) const {
    return std::tie(Texts, Values, Wide, Read) ==
           std::tie(other.Texts, other.Values, other.Wide, other.Read);
  }
};

std::string Describe(const TVariant& value) {
  unsigned long bytes = 0;
  const void* data = value.GetArrayData(&bytes);
  std::string text = std::to_string(value.Type) + ": ";
  if (data != nullptr) {
    return text.append(static_cast<const char*>(data), bytes);
  }
  int numbers[4];
  if (value.GetVector(numbers, 3)) {
    return text.append(reinterpret_cast<const char*>(numbers), 12);
  }
  return text + value.ToString();
}

// Reads as far as it goes; true when all was there.
bool ReadAllElements(TStream& stream, TResult* result) {
  TObjectReader reader(&stream, false);
  unsigned long size = 0;
  if (!stream.ReadAll(&size, 8)) {
    return false;
  }
  for (int i = 0; i < 7; ++i) {
    std::string name;
    TVariant value;
    const bool read = LoadAttribute(&reader, name, value);
    if (result != nullptr) {
      result->Texts.push_back(name);
      result->Values.push_back(Describe(value)); // touches what a failed load leaves, too
    }
    if (!read) {
      return false;
    }
  }
  std::string text;
  std::wstring wide;
  char narrow[32] = {};
  wchar_t buffer[16] = {};
  const bool done = reader.ReadString(&text) && reader.ReadString(&wide) &&
                    reader.ReadString(narrow, sizeof narrow) && reader.ReadString(buffer, 16);
  if (result != nullptr) {
    result->Texts.push_back(text);
    result->Texts.push_back(done ? narrow : "");
    result->Wide = wide;
    result->Read = size;
  }
  return done;
}

Bytes GoodFile() {
  TPlainStream stream;
  TObjectWriter writer(&stream, false);
  EXPECT_TRUE(WriteAllElements(writer));
  return stream.Data;
}

// Reads `bytes` through a plain stream of the given chunk and through memory, within bounds.
// Returns whether all was there; both ways have to agree.
bool ReadBoth(const Bytes& bytes, unsigned long chunk) {
  bool done[2] = {};
  TResult results[2];
  for (int way = 0; way < 2; ++way) {
    Bytes place = bytes;
    TPlainStream plain(bytes);
    plain.Chunk = chunk;
    TMemoryStream memory(place.data(), place.size(), false);
    TStream& stream = way == 0 ? static_cast<TStream&>(plain) : static_cast<TStream&>(memory);
    long left = 0;
    long peak = 0;
    {
      TMallocWatch watch;
      done[way] = ReadAllElements(stream, nullptr);
      left = watch.LiveBlocks();
      peak = watch.PeakBytes();
    }
    EXPECT_EQ(left, 0);
    EXPECT_LE(peak, static_cast<long>(bytes.size()) + kSlack);
    EXPECT_LE(stream.GetPos(), static_cast<long>(bytes.size()) + 2);
    stream.SetPos(0);
    EXPECT_EQ(ReadAllElements(stream, &results[way]), done[way]);
  }
  EXPECT_EQ(done[0], done[1]);
  if (done[0] && done[1]) {
    EXPECT_TRUE(results[0] == results[1]);
  }
  return done[0];
}

} // namespace

TEST(HostileStreams, TheGoodFileIsRead) {
  const Bytes good = GoodFile();
  EXPECT_TRUE(ReadBoth(good, ~0UL));
  EXPECT_TRUE(ReadBoth(good, 1));
  TPlainStream stream(good);
  TResult result;
  ASSERT_TRUE(ReadAllElements(stream, &result));
  EXPECT_EQ(result.Read, good.size() - 8);
  EXPECT_EQ(result.Texts,
            (std::vector<std::string>{"int", "flag", "a longer name than 16 bytes", "text", "array",
                                      "vector", "none", "narrow", "into a buffer"}));
  EXPECT_EQ(result.Wide, L"wi"); // 4 units of 2 bytes are 2 elements
  EXPECT_EQ(result.Values[3], "15: \"" + std::string(40, 't') + "\"");
}

TEST(HostileStreams, EveryTruncationFails) {
  const Bytes good = GoodFile();
  for (std::size_t size = 0; size < good.size(); ++size) {
    // The last wide string's padding is passed without being read.
    const bool whole = size + 2 >= good.size();
    EXPECT_EQ(ReadBoth(Bytes(good.begin(), good.begin() + static_cast<long>(size)), ~0UL), whole)
        << size;
  }
}

TEST(HostileStreams, EveryFlippedBitIsSurvived) {
  const Bytes good = GoodFile();
  unsigned long survived = 0;
  for (std::size_t bit = 0; bit < good.size() * 8; ++bit) {
    Bytes bad = good;
    bad[bit / 8] = static_cast<unsigned char>(bad[bit / 8] ^ (1u << (bit % 8)));
    survived += ReadBoth(bad, bit % 3 == 0 ? 3 : ~0UL) ? 1 : 0;
  }
  EXPECT_GT(survived, 0u);              // flips in texts and numbers
  EXPECT_LT(survived, good.size() * 8); // flips in lengths and tags
}

TEST(HostileStreams, RandomBytesAreSurvived) {
  std::mt19937 random(1);
  for (int round = 0; round < 3000; ++round) {
    Bytes bytes(8 + random() % 200);
    for (unsigned char& byte : bytes) {
      // Small numbers make lengths and tags that mean something.
      byte = static_cast<unsigned char>(random() % 3 == 0 ? random() % 16 : 0);
    }
    ReadBoth(bytes, 1 + random() % 7);
  }
}

TEST(HostileStreams, LengthsOf4GiBAreFalseAtOnce) {
  const Bytes string = Hex("FF FF FF FF 61 62 63 64 65 66 67 68 69 6A 6B 6C 6D 6E 6F 70");
  Bytes variant = Hex("0F 00 00 00");
  variant.insert(variant.end(), string.begin(), string.begin() + 16);
  Bytes array = Hex("03 01 00 00 FF FF FF FF FF FF FF FF 01 02 03 04 05 06 07 08");
  for (const unsigned long chunk : {1UL, ~0UL}) {
    for (int way = 0; way < 2; ++way) {
      for (int what = 0; what < 4; ++what) {
        const Bytes& bytes = what < 2 ? string : what == 2 ? variant : array;
        Bytes place = bytes;
        TPlainStream plain(bytes);
        plain.Chunk = chunk;
        TMemoryStream memory(place.data(), place.size(), false);
        TStream& stream = way == 0 ? static_cast<TStream&>(plain) : static_cast<TStream&>(memory);
        bool done = true;
        long peak = 0;
        {
          TMallocWatch watch;
          TObjectReader reader(&stream, false);
          std::string text;
          std::wstring wide;
          TVariant value;
          done = what == 0   ? reader.ReadString(&text)
                 : what == 1 ? reader.ReadString(&wide)
                             : LoadVariant(&reader, value);
          peak = watch.PeakBytes();
        }
        EXPECT_FALSE(done);
        EXPECT_LE(peak, 20000) << what;
        // A stream of single bytes is read to its end; memory gives all or nothing.
        const long expected = way == 0 ? 20 : what < 2 ? 4 : what == 2 ? 8 : 12;
        EXPECT_EQ(stream.GetPos(), expected) << what;
      }
    }
  }
}

TEST(HostileStreams, LargeElementsStayWithinTheirSizePlusOneMiB) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  constexpr unsigned long size = 8UL << 20;
  // Whole and cut short; as a string, as an array, as a wide string.
  for (const bool whole : {true, false}) {
    for (int what = 0; what < 4; ++what) {
      Bytes bytes = what == 0 || what == 3 ? Hex("00 00 80 00")
                    : what == 1            ? Hex("0F 00 00 00 00 00 80 00")
                                           : Hex("03 01 00 00 00 00 80 00 00 00 80 00");
      if (what == 3) {
        bytes = Hex("00 00 40 00");
      }
      bytes.resize(bytes.size() + size - (whole ? 0 : 1), 'b');
      for (int way = 0; way < 2; ++way) {
        TPlainStream plain(bytes);
        TMemoryStream memory(bytes.data(), bytes.size(), false);
        TStream& stream = way == 0 ? static_cast<TStream&>(plain) : static_cast<TStream&>(memory);
        bool done = false;
        long peak = 0;
        long left = 0;
        {
          TMallocWatch watch;
          {
            TObjectReader reader(&stream, false);
            std::string text;
            std::wstring wide;
            TVariant value;
            done = what == 0   ? reader.ReadString(&text)
                   : what == 3 ? reader.ReadString(&wide)
                               : LoadVariant(&reader, value);
          }
          peak = watch.PeakBytes();
          left = watch.LiveBlocks();
        }
        EXPECT_EQ(done, whole) << what;
        EXPECT_LE(peak, static_cast<long>(bytes.size()) + kSlack) << what << way << whole;
        EXPECT_EQ(left, 0);
      }
    }
  }
}

TEST(HostileStreams, StreamsThatFailInTheMiddle) {
  const Bytes good = GoodFile();
  for (const unsigned long answer : {0UL, ~0UL, ~0UL - 6}) {
    for (unsigned long budget = 0;; ++budget) {
      TPlainStream stream(good);
      stream.Chunk = 5;
      stream.Budget = budget;
      stream.Answer = answer;
      if (ReadAllElements(stream, nullptr)) {
        EXPECT_GT(budget, good.size() / 5);
        break;
      }
      EXPECT_EQ(stream.Calls, budget + 1); // the first failure ends it
      ASSERT_LT(budget, good.size());
    }
  }
}

TEST(HostileStreams, WritersStopAtTheFirstFailure) {
  const Bytes good = GoodFile();
  for (const unsigned long answer : {0UL, ~0UL}) {
    for (unsigned long budget = 0;; ++budget) {
      TPlainStream stream;
      stream.Chunk = 5;
      stream.Budget = budget;
      stream.Answer = answer;
      TObjectWriter writer(&stream, false);
      if (WriteAllElements(writer)) {
        EXPECT_EQ(stream.Data, good);
        break;
      }
      EXPECT_EQ(stream.Calls, budget + 1);
      ASSERT_LT(budget, good.size());
      // What was written so far stays; the size of the block is patched last.
      EXPECT_LE(stream.Data.size(), good.size());
      for (std::size_t i = 8; i < stream.Data.size(); ++i) {
        ASSERT_EQ(stream.Data[i], good[i]);
      }
    }
  }
}

TEST(HostileStreams, EveryFailingAllocationIsFalseAndLeaksNothing) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  const Bytes good = GoodFile();
  for (int way = 0; way < 2; ++way) {
    unsigned long failures = 0;
    for (unsigned long at = 1;; ++at) {
      Bytes place = good;
      TPlainStream plain(good);
      TMemoryStream memory(place.data(), place.size(), false);
      TStream& stream = way == 0 ? static_cast<TStream&>(plain) : static_cast<TStream&>(memory);
      bool done = false;
      bool came = false;
      bool thrown = false;
      long left = 0;
      {
        TMallocWatch watch(at);
        try {
          done = ReadAllElements(stream, nullptr);
        } catch (...) {
          thrown = true;
        }
        came = watch.Failed();
        left = watch.LiveBlocks();
      }
      EXPECT_FALSE(thrown) << at;
      EXPECT_EQ(left, 0) << at;
      EXPECT_EQ(done, !came) << at;
      if (!came) {
        break;
      }
      ++failures;
    }
    EXPECT_GE(failures, 3u);
  }
}

TEST(HostileStreams, EveryFailingAllocationOfLargeElements) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  for (int what = 0; what < 4; ++what) {
    Bytes bytes = what == 0   ? Hex("00 00 10 00")
                  : what == 1 ? Hex("0F 00 00 00 00 00 10 00")
                  : what == 2 ? Hex("03 01 00 00 00 00 10 00 00 00 10 00")
                              : Hex("00 00 08 00");
    bytes.resize(bytes.size() + (1 << 20), 'b');
    for (const long reported : {-2L, -1L}) {
      for (unsigned long at = 1;; ++at) {
        TPlainStream stream(bytes);
        stream.ReportedSize = reported;
        bool done = false;
        bool came = false;
        long left = 0;
        {
          TMallocWatch watch(at);
          {
            TObjectReader reader(&stream, false);
            std::string text;
            std::wstring wide;
            TVariant value;
            done = what == 0   ? reader.ReadString(&text)
                   : what == 3 ? reader.ReadString(&wide)
                               : LoadVariant(&reader, value);
          }
          came = watch.Failed();
          left = watch.LiveBlocks();
        }
        EXPECT_EQ(left, 0);
        EXPECT_EQ(done, !came);
        if (!came) {
          break;
        }
      }
    }
  }
}
