#include <ZxCore3D/object/TMemoryStream.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "object/FailingMalloc.h"
#include "object/Streams.h"

using namespace Zx3D;
using zx_test::Bytes;
using zx_test::Hex;

static Bytes Content(TMemoryStream& stream) {
  Bytes bytes(static_cast<std::size_t>(stream.GetSize()));
  const long before = stream.GetPos();
  EXPECT_TRUE(stream.SetPos(0));
  EXPECT_TRUE(stream.ReadAll(bytes.data(), bytes.size()));
  EXPECT_TRUE(stream.SetPos(before));
  return bytes;
}

static void* Copied(const Bytes& bytes) {
  void* block = std::malloc(bytes.size());
  std::memcpy(block, bytes.data(), bytes.size());
  return block;
}

TEST(TMemoryStream, StartsEmptyAndOwning) {
  TMemoryStream stream;
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_EQ(stream.GetPos(), 0);
  EXPECT_EQ(stream.GetCapacity(), 0u);
  EXPECT_TRUE(stream.IsEOS());
  unsigned char byte = 0;
  EXPECT_EQ(stream._Read(&byte, 1), 0u);
  EXPECT_FALSE(stream.ReadAll(&byte, 1));
  EXPECT_TRUE(stream.SupportMap());
}

TEST(TMemoryStream, FirstWriteOfTenAllocates1039) {
  TMemoryStream stream;
  EXPECT_TRUE(stream.WriteAll("0123456789", 10));
  EXPECT_EQ(stream.GetCapacity(), 1039u);
  EXPECT_EQ(stream.GetSize(), 10);
  EXPECT_EQ(stream.GetPos(), 10);
  EXPECT_EQ(TMemoryStream::CalcCapacity(10), 1039u);
  EXPECT_EQ(TMemoryStream::CalcCapacity(0), 1024u);
  EXPECT_EQ(TMemoryStream::CalcCapacity(7), 7u + 3u + 1024u);
}

TEST(TMemoryStream, GrowsByHalfPlus1024OfTheNewEnd) {
  TMemoryStream stream;
  Bytes block(1039, 1);
  EXPECT_EQ(stream._Write(block.data(), block.size()), 1039u);
  EXPECT_EQ(stream.GetCapacity(), 1039u + 519u + 1024u);
  EXPECT_TRUE(stream.SetPos(2580));
  EXPECT_EQ(stream._Write("abcd", 4), 4u);
  EXPECT_EQ(stream.GetCapacity(), 2584u + 1292u + 1024u);
  EXPECT_EQ(stream.GetSize(), 2584);
}

TEST(TMemoryStream, ReserveAndSetSizeAllocateExactly) {
  TMemoryStream stream;
  EXPECT_TRUE(stream.Reserve(10));
  EXPECT_EQ(stream.GetCapacity(), 10u);
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_TRUE(stream.Reserve(3));
  EXPECT_EQ(stream.GetCapacity(), 10u);
  EXPECT_TRUE(stream.SetPos(4));
  EXPECT_TRUE(stream.SetSize(20));
  EXPECT_EQ(stream.GetCapacity(), 20u);
  EXPECT_EQ(stream.GetSize(), 20);
  EXPECT_EQ(stream.GetPos(), 4);
  EXPECT_TRUE(stream.SetSize(3));
  EXPECT_EQ(stream.GetCapacity(), 20u);
  EXPECT_EQ(stream.GetPos(), 3);
  EXPECT_FALSE(stream.SetSize(-1));
  EXPECT_EQ(stream.GetSize(), 3);
  EXPECT_FALSE(stream.Reserve(~0UL));
  EXPECT_FALSE(stream.SetSize(LONG_MAX));
  EXPECT_EQ(stream.GetCapacity(), 20u);
  EXPECT_TRUE(stream.SetSize(0));
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_EQ(stream.GetPos(), 0);
  EXPECT_EQ(stream.GetCapacity(), 20u);
}

TEST(TMemoryStream, AttachedBlockIsAFixedPlace) {
  unsigned char block[20];
  std::memset(block, 0xEE, sizeof block);
  {
    TMemoryStream stream(block, 16, false);
    EXPECT_EQ(stream.GetSize(), 16);
    EXPECT_EQ(stream.GetCapacity(), 16u);
    EXPECT_TRUE(stream.WriteAll("0123456789abcdef", 16));
    EXPECT_FALSE(stream.WriteAll("g", 1));
    EXPECT_EQ(stream._Write("g", 1), 0u);
    EXPECT_EQ(stream.GetPos(), 16);
    EXPECT_TRUE(stream.SetPos(15));
    EXPECT_FALSE(stream.WriteAll("xy", 2));
    EXPECT_EQ(stream.GetPos(), 15);
    EXPECT_FALSE(stream.Reserve(17));
    EXPECT_FALSE(stream.SetSize(17));
    EXPECT_TRUE(stream.SetSize(16));
  }
  EXPECT_EQ(std::memcmp(block, "0123456789abcdef\xEE\xEE\xEE\xEE", 20), 0);
}

TEST(TMemoryStream, ConstructorsTakeSizeAndCapacity) {
  unsigned char block[8] = {1, 2, 3};
  TMemoryStream stream(block, 3, 8, false);
  EXPECT_EQ(stream.GetSize(), 3);
  EXPECT_EQ(stream.GetCapacity(), 8u);
  EXPECT_EQ(stream.GetPos(), 0);
  EXPECT_EQ(Content(stream), Hex("01 02 03"));

  TBuffer<unsigned char> buffer{block, 2, 4};
  TMemoryStream other(buffer, false);
  EXPECT_EQ(other.GetSize(), 2);
  EXPECT_EQ(other.GetCapacity(), 4u);
  EXPECT_EQ(buffer.Data, block);

  TMemoryStream owner(Copied(Hex("05 06")), 2, true);
  EXPECT_TRUE(owner.SetPos(2));
  EXPECT_TRUE(owner.WriteAll("x", 1)); // grows the block that it was given
  EXPECT_EQ(Content(owner), Hex("05 06 78"));

  TMemoryStream wrong(block, 9, 8, false);
  EXPECT_EQ(wrong.GetSize(), 8);
  TMemoryStream nothing(nullptr, 5, false);
  EXPECT_EQ(nothing.GetSize(), 0);
  EXPECT_EQ(nothing.GetCapacity(), 0u);
}

TEST(TMemoryStream, CloseEmptiesAndMakesOwning) {
  unsigned char block[4] = {1, 2, 3, 4};
  TMemoryStream stream(block, 4, false);
  stream.SetPos(2);
  stream.Close();
  EXPECT_EQ(stream.GetSize(), 0);
  EXPECT_EQ(stream.GetPos(), 0);
  EXPECT_EQ(stream.GetCapacity(), 0u);
  EXPECT_TRUE(stream.WriteAll("ab", 2)); // allocates: it owns now
  EXPECT_EQ(stream.GetCapacity(), 2u + 1u + 1024u);
  stream.Free();
  EXPECT_EQ(stream.GetCapacity(), 0u);
}

TEST(TMemoryStream, CloseWithoutABlockChangesNothing) {
  TMemoryStream stream(nullptr, 0, false);
  stream.Close();
  EXPECT_FALSE(stream.WriteAll("a", 1)); // still not owning
}

TEST(TMemoryStream, SetBufferReplacesTheBlock) {
  unsigned char block[4] = {1, 2, 3, 4};
  TMemoryStream stream;
  stream.WriteAll("abc", 3);
  stream.SetBuffer(block, 4, false);
  EXPECT_EQ(stream.GetPos(), 0);
  EXPECT_EQ(Content(stream), Hex("01 02 03 04"));
  TBuffer<unsigned char> buffer{block, 1, 3};
  stream.SetBuffer(buffer, false);
  EXPECT_EQ(stream.GetSize(), 1);
  EXPECT_EQ(stream.GetCapacity(), 3u);
  auto* owned = static_cast<unsigned char*>(Copied(Hex("07 08")));
  stream.SetBuffer(owned, 2, true);
  stream.SetBuffer(owned, 1, true); // the block that it holds isn't freed
  EXPECT_EQ(Content(stream), Hex("07"));
}

TEST(TMemoryStream, PositionsGoUpToTheCapacityAndBelowZero) {
  unsigned char block[10] = {};
  TMemoryStream stream(block, 4, 10, false);
  EXPECT_TRUE(stream.SetPos(10));
  EXPECT_FALSE(stream.SetPos(11));
  EXPECT_EQ(stream.GetPos(), 10);
  EXPECT_TRUE(stream.IsEOS());
  EXPECT_TRUE(stream.SetPos(4));
  EXPECT_TRUE(stream.IsEOS());
  EXPECT_TRUE(stream.SetPos(3));
  EXPECT_FALSE(stream.IsEOS());
  EXPECT_TRUE(stream.Skip(7));
  EXPECT_EQ(stream.GetPos(), 10);
  EXPECT_FALSE(stream.Skip(1));
  EXPECT_TRUE(stream.Skip(0));
  EXPECT_FALSE(stream.Skip(~0UL));
  EXPECT_FALSE(stream.Skip(~0UL - 9)); // 10 + (2^64 - 10) is past the last position
  EXPECT_EQ(stream.GetPos(), 10);

  unsigned char bytes[4] = {9, 9, 9, 9};
  EXPECT_TRUE(stream.SetPos(-3));
  EXPECT_EQ(stream.GetPos(), -3);
  EXPECT_FALSE(stream.IsEOS());
  EXPECT_EQ(stream._Read(bytes, 4), 0u);
  EXPECT_FALSE(stream.ReadAll(bytes, 4));
  EXPECT_EQ(stream._Write(bytes, 4), 0u);
  EXPECT_FALSE(stream.WriteAll(bytes, 4));
  EXPECT_FALSE(stream.SetEOS());
  EXPECT_EQ(stream.GetSize(), 4);
  char line[4];
  EXPECT_FALSE(stream.ReadLine(line, sizeof line, nullptr));
  EXPECT_TRUE(stream.Skip(1));
  EXPECT_EQ(stream.GetPos(), -2);
  EXPECT_FALSE(stream.Skip(13));
  EXPECT_TRUE(stream.Skip(12));
  EXPECT_EQ(stream.GetPos(), 10);
  EXPECT_TRUE(stream.SetPos(LONG_MIN));
  EXPECT_FALSE(stream.Skip(~0UL));
  EXPECT_TRUE(stream.Skip(0x8000000000000000UL));
  EXPECT_EQ(stream.GetPos(), 0);
}

TEST(TMemoryStream, SetEOSCutsOrGrowsToThePosition) {
  TMemoryStream stream;
  stream.WriteAll("abcdef", 6);
  stream.SetPos(2);
  EXPECT_TRUE(stream.SetEOS());
  EXPECT_EQ(Content(stream), Hex("61 62"));
  stream.SetPos(6);
  EXPECT_TRUE(stream.SetEOS());
  EXPECT_EQ(Content(stream), Hex("61 62 63 64 65 66"));
}

TEST(TMemoryStream, ReadsAreCutAndReadAllIsAllOrNothing) {
  TMemoryStream stream;
  stream.WriteAll("abcdef", 6);
  stream.SetPos(4);
  char text[8] = "-------";
  EXPECT_FALSE(stream.ReadAll(text, 3));
  EXPECT_STREQ(text, "-------");
  EXPECT_EQ(stream.GetPos(), 4);
  EXPECT_FALSE(stream.ReadAll(text, ~0UL));
  EXPECT_EQ(stream._Read(text, 3), 2u);
  EXPECT_STREQ(text, "ef-----");
  EXPECT_EQ(stream._Read(text, 3), 0u);
  EXPECT_EQ(stream.GetPos(), 6);
  EXPECT_TRUE(stream.ReadAll(nullptr, 0));
  stream.SetPos(100); // behind the size, within the capacity
  EXPECT_TRUE(stream.ReadAll(nullptr, 0));
  EXPECT_EQ(stream._Read(text, 1), 0u);
}

// No loop through the virtual operations, and one copy for any number of bytes.
TEST(TMemoryStream, ReadAllAndWriteAllAreOneCopy) {
  class TCounting : public TMemoryStream {
  public:
    unsigned long _Read(void* data, unsigned long size) override {
      ++Calls;
      return TMemoryStream::_Read(data, size);
    }
    unsigned long _Write(const void* data, unsigned long size) override {
      ++Calls;
      return TMemoryStream::_Write(data, size);
    }
    int Calls = 0;
  };
  TCounting stream;
  std::vector<unsigned char> bytes(100000);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    bytes[i] = static_cast<unsigned char>(i * 7 + i / 256);
  }
  ASSERT_TRUE(stream.WriteAll(bytes.data(), bytes.size()));
  ASSERT_TRUE(stream.SetPos(0));
  std::vector<unsigned char> back(bytes.size());
  ASSERT_TRUE(stream.ReadAll(back.data(), back.size()));
  EXPECT_EQ(back, bytes);
  ASSERT_TRUE(stream.SetPos(0));
  ASSERT_TRUE(stream.ReadAllE(back.data(), back.size()));
  ASSERT_TRUE(stream.WriteString("text", 4));
  ASSERT_TRUE(stream.WriteEOL());
  EXPECT_EQ(stream.Calls, 0);
  TStream& base = stream;
  EXPECT_EQ(base._Write("x", 1), 1u);
  EXPECT_EQ(stream.Calls, 1) << "the count does count";
}

TEST(TMemoryStream, OverwritingInPlaceKeepsTheSize) {
  TMemoryStream stream;
  stream.WriteAll("abcdef", 6);
  stream.SetPos(1);
  EXPECT_TRUE(stream.WriteAll("XY", 2));
  EXPECT_EQ(stream.GetPos(), 3);
  EXPECT_EQ(Content(stream), Hex("61 58 59 64 65 66"));
}

TEST(TMemoryStream, WritesBehindTheSizeFillFromThere) {
  TMemoryStream stream;
  stream.WriteAll("ab", 2);
  EXPECT_TRUE(stream.SetPos(4));
  EXPECT_TRUE(stream.WriteAll(nullptr, 0));
  EXPECT_EQ(stream.GetSize(), 2);
  EXPECT_EQ(stream._Write(nullptr, 0), 0u);
  EXPECT_EQ(stream.GetSize(), 4); // a plain write of nothing moves the size
  EXPECT_TRUE(stream.SetPos(6));
  EXPECT_TRUE(stream.WriteAll("z", 1));
  EXPECT_EQ(stream.GetSize(), 7);
}

TEST(TMemoryStream, WritesThatWrapFail) {
  TMemoryStream stream;
  stream.WriteAll("ab", 2);
  EXPECT_FALSE(stream.WriteAll("x", ~0UL));
  EXPECT_FALSE(stream.WriteAll("x", LONG_MAX));
  EXPECT_FALSE(stream.WriteAll("x", LONG_MAX - 2));
  EXPECT_EQ(stream._Write("x", ~0UL - 1), 0u);
  EXPECT_EQ(Content(stream), Hex("61 62"));
  EXPECT_EQ(stream.GetPos(), 2);
}

TEST(TMemoryStream, BytesMayComeFromTheOwnBlock) {
  TMemoryStream stream;
  ASSERT_TRUE(stream.SetSize(6));
  stream.SetPos(0);
  stream.WriteAll("abcdef", 6);
  void* data = nullptr;
  void* handle = stream.Map(0, 6, true, false, &data);
  ASSERT_NE(handle, nullptr);
  EXPECT_TRUE(stream.WriteAll(data, 6)); // grows
  EXPECT_TRUE(stream.Unmap(handle));
  EXPECT_EQ(Content(stream), Hex("61 62 63 64 65 66 61 62 63 64 65 66"));
  handle = stream.Map(0, 4, true, false, &data);
  stream.SetPos(2);
  EXPECT_TRUE(stream.WriteAll(data, 4)); // overlaps
  EXPECT_TRUE(stream.Unmap(handle));
  EXPECT_EQ(Content(stream), Hex("61 62 61 62 63 64 61 62 63 64 65 66"));

  // From the middle of a block that moves as it grows.
  TMemoryStream moving;
  std::string expected(5000, '.');
  for (std::size_t i = 0; i < expected.size(); ++i) {
    expected[i] = static_cast<char>('a' + i % 23);
  }
  ASSERT_TRUE(moving.Reserve(5000));
  ASSERT_TRUE(moving.WriteAll(expected.data(), 5000));
  handle = moving.Map(700, 4000, true, false, &data);
  moving.SetPos(5000);
  EXPECT_TRUE(moving.WriteAll(data, 4000));
  EXPECT_TRUE(moving.Unmap(handle));
  ASSERT_TRUE(moving.SetPos(0));
  std::string found(9000, '\0');
  ASSERT_TRUE(moving.ReadAll(found.data(), 9000));
  EXPECT_EQ(found, expected + expected.substr(700, 4000));
}

TEST(TMemoryStream, ViewsLieInTheBlock) {
  TMemoryStream stream;
  stream.WriteAll("abcdef", 6);
  void* data = nullptr;
  void* handle = stream.Map(1, 3, false, false, &data);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(stream.GetPos(), 6); // mapping moves nothing
  EXPECT_EQ(std::memcmp(data, "bcd", 3), 0);
  const auto* record = static_cast<TStreamMapping*>(handle);
  EXPECT_EQ(record->Offset, 1);
  EXPECT_EQ(record->Size, 3u);
  EXPECT_EQ(record->Data, data);
  EXPECT_FALSE(record->Read);
  EXPECT_FALSE(record->Write);
  EXPECT_EQ(record->Reserved, 0u);
  static_cast<char*>(data)[0] = 'B';
  EXPECT_EQ(Content(stream), Hex("61 42 63 64 65 66"));
  EXPECT_TRUE(stream.Unmap(handle));
  EXPECT_EQ(stream.GetPos(), 4);
  EXPECT_FALSE(stream.Unmap(nullptr));
  EXPECT_EQ(stream.Map(0, 0, true, true, &data), nullptr);
  EXPECT_EQ(stream.Map(0, 1, true, true, nullptr), nullptr);
  EXPECT_EQ(stream.Map(4, 3, true, true, &data), nullptr);
  EXPECT_EQ(stream.Map(-1, 2, true, true, &data), nullptr);
  EXPECT_EQ(stream.Map(1, ~0UL, true, true, &data), nullptr);
  EXPECT_EQ(stream.Map(7, ~0UL, true, true, &data), nullptr);
  EXPECT_EQ(stream.Map(LONG_MAX, 1, true, true, &data), nullptr);
  handle = stream.Map(0, 6, true, true, &data);
  ASSERT_NE(handle, nullptr);
  EXPECT_TRUE(stream.Unmap(handle));
}

TEST(TMemoryStream, LinesEndWithFeedReturnOrBoth) {
  TMemoryStream stream;
  stream.WriteAll("a\r\nb", 4);
  stream.SetPos(0);
  char line[16];
  unsigned long length = 99;
  EXPECT_TRUE(stream.ReadLine(line, sizeof line, &length));
  EXPECT_STREQ(line, "a");
  EXPECT_EQ(length, 1u);
  EXPECT_EQ(stream.GetPos(), 3);
  EXPECT_TRUE(stream.ReadLine(line, sizeof line, nullptr));
  EXPECT_STREQ(line, "b");
  length = 99;
  EXPECT_FALSE(stream.ReadLine(line, sizeof line, &length));
  EXPECT_EQ(length, 99u);

  TMemoryStream mixed;
  mixed.WriteAll("\nx\ry\n\r\n\r\rz\n", 11);
  mixed.SetPos(0);
  const char* const expected[] = {"", "x", "y", "", "", "", "z"};
  for (const char* text : expected) {
    ASSERT_TRUE(mixed.ReadLine(line, sizeof line, &length));
    EXPECT_STREQ(line, text);
    EXPECT_EQ(length, std::strlen(text));
  }
  EXPECT_EQ(mixed.GetPos(), 11);
}

TEST(TMemoryStream, ALineBufferOfTwoHidesTheFeedFromTheReturn) {
  TMemoryStream stream;
  stream.WriteAll("a\r\nb", 4);
  stream.SetPos(0);
  char line[2];
  unsigned long length = 0;
  const char* const expected[] = {"a", "", "", "b"};
  for (const char* text : expected) {
    ASSERT_TRUE(stream.ReadLine(line, 2, &length));
    EXPECT_STREQ(line, text);
    EXPECT_EQ(length, std::strlen(text));
  }
  EXPECT_FALSE(stream.ReadLine(line, 2, &length));
}

TEST(TMemoryStream, LineBuffersWithoutRoom) {
  TMemoryStream stream;
  stream.WriteAll("abc\n", 4);
  stream.SetPos(0);
  char line[4] = {'x', 'x', 'x', 'x'};
  unsigned long length = 9;
  EXPECT_FALSE(stream.ReadLine(line, 0, &length));
  EXPECT_EQ(line[0], 'x');
  EXPECT_TRUE(stream.ReadLine(line, 1, &length));
  EXPECT_EQ(line[0], 0);
  EXPECT_EQ(line[1], 'x');
  EXPECT_EQ(length, 0u);
  EXPECT_EQ(stream.GetPos(), 0);
  EXPECT_TRUE(stream.ReadLine(line, 3, &length));
  EXPECT_STREQ(line, "ab");
  EXPECT_TRUE(stream.ReadLine(line, 3, &length));
  EXPECT_STREQ(line, "c");
  EXPECT_TRUE(stream.IsEOS());
}

TEST(TMemoryStream, ALineOfJustTheRangeLeavesItsEndForTheNext) {
  TMemoryStream stream;
  stream.WriteAll("abc\nd", 5);
  stream.SetPos(0);
  char line[4];
  EXPECT_TRUE(stream.ReadLine(line, 4, nullptr));
  EXPECT_STREQ(line, "abc");
  EXPECT_EQ(stream.GetPos(), 3);
  EXPECT_TRUE(stream.ReadLine(line, 4, nullptr));
  EXPECT_STREQ(line, "");
}

TEST(TMemoryStream, WritesStringsAndLineEnds) {
  TMemoryStream stream;
  EXPECT_TRUE(stream.WriteString("ab", ~0UL));
  EXPECT_TRUE(stream.WriteEOL());
  EXPECT_TRUE(stream.WriteString("cd", ~0UL - 1));
  EXPECT_TRUE(stream.WriteString("efg", 2));
  EXPECT_TRUE(stream.WriteString(nullptr, 0));
  EXPECT_FALSE(stream.WriteString(nullptr, ~0UL));
  EXPECT_FALSE(stream.WriteString("gh", ~0UL - 2)); // a length, and no such text
  EXPECT_EQ(Content(stream), Hex("61 62 0D 0A 63 64 65 66"));
  static_assert(sizeof TMemoryStream::s_EOL == 2);
  EXPECT_EQ(TMemoryStream::s_EOL[0], 0x0D);
  EXPECT_EQ(TMemoryStream::s_EOL[1], 0x0A);
}

TEST(TMemoryStream, SwapExchangesAllFields) {
  unsigned char block[4] = {1, 2, 3, 4};
  TMemoryStream one(block, 2, 4, false);
  one.SetPos(1);
  TMemoryStream two;
  two.WriteAll("abc", 3);
  one.Swap(two);
  EXPECT_EQ(Content(one), Hex("61 62 63"));
  EXPECT_EQ(one.GetPos(), 3);
  EXPECT_EQ(one.GetCapacity(), 3u + 1u + 1024u);
  EXPECT_TRUE(one.Reserve(5000)); // owning
  EXPECT_EQ(Content(two), Hex("01 02"));
  EXPECT_EQ(two.GetPos(), 1);
  EXPECT_EQ(two.GetCapacity(), 4u);
  EXPECT_FALSE(two.Reserve(5));
}

TEST(TMemoryStream, ExhaustedMemoryKeepsBlockAndContents) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  TMemoryStream stream;
  stream.WriteAll("abc", 3);
  Bytes large(4000, 7);
  const auto failing = [&](auto&& call) {
    zx_test::TMallocWatch watch(1);
    const bool result = call();
    EXPECT_TRUE(watch.Failed());
    return result;
  };
  EXPECT_FALSE(failing([&] { return stream.WriteAll(large.data(), large.size()); }));
  EXPECT_FALSE(failing([&] { return stream._Write(large.data(), large.size()) != 0; }));
  EXPECT_FALSE(failing([&] { return stream.Reserve(5000); }));
  EXPECT_FALSE(failing([&] { return stream.SetSize(5000); }));
  void* data = nullptr;
  EXPECT_FALSE(failing([&] { return stream.Map(0, 1, true, true, &data) != nullptr; }));
  EXPECT_EQ(Content(stream), Hex("61 62 63"));
  EXPECT_EQ(stream.GetPos(), 3);
  EXPECT_EQ(stream.GetCapacity(), 1028u);
}

// What the stream owned goes when it takes another buffer, and stays when it takes the same.
TEST(TMemoryStream, AnotherBufferFreesTheOwnedOne) {
  unsigned char other[4] = {};
  const zx_test::TMallocWatch watch;
  TMemoryStream stream;
  auto* owned = static_cast<unsigned char*>(std::malloc(8));
  stream.SetBuffer(owned, 8, true);
  stream.SetBuffer(owned, 8, true);
  EXPECT_TRUE(!zx_test::kAvailable || watch.LiveBlocks() == 1);
  stream.SetBuffer(other, sizeof other, false);
  EXPECT_TRUE(!zx_test::kAvailable || watch.LiveBlocks() == 0);
}

TEST(TMemoryStream, NothingIsReadIntoNoPlace) {
  TMemoryStream stream;
  ASSERT_TRUE(stream.WriteAll("abc", 3));
  ASSERT_TRUE(stream.SetPos(1));
  EXPECT_EQ(stream._Read(nullptr, 0), 0u);
  unsigned long length = 7;
  EXPECT_FALSE(stream.ReadLine(nullptr, 10, &length));
  EXPECT_EQ(length, 7u);
  EXPECT_EQ(stream.GetPos(), 1);
}
