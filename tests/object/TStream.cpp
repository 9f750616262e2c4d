#include <ZxCore3D/object/TStream.h>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>

#include "object/FailingMalloc.h"
#include "object/Streams.h"

using namespace Zx3D;
using zx_test::Bytes;
using zx_test::Hex;
using zx_test::TPlainStream;

TEST(TStream, DefaultsKnowNoLinesAndMapByCopying) {
  TPlainStream stream(Hex("61 0A"));
  char line[8] = "keep";
  unsigned long length = 77;
  EXPECT_FALSE(stream.ReadLine(line, sizeof line, &length));
  EXPECT_STREQ(line, "keep");
  EXPECT_EQ(length, 77u);
  EXPECT_FALSE(stream.SupportMap());
}

TEST(TStream, ReadAllAndWriteAllPutShortCountsTogether) {
  TPlainStream stream;
  stream.Chunk = 3;
  EXPECT_TRUE(stream.WriteAll("abcdefgh", 8));
  EXPECT_EQ(stream.Calls, 3u);
  EXPECT_EQ(stream.Data, Hex("61 62 63 64 65 66 67 68"));
  stream.SetPos(1);
  stream.Calls = 0;
  char text[8] = {};
  EXPECT_TRUE(stream.ReadAll(text, 7));
  EXPECT_STREQ(text, "bcdefgh");
  EXPECT_EQ(stream.Calls, 3u);
}

TEST(TStream, NoBytesAreTrueWithoutADeviceCall) {
  TPlainStream stream;
  EXPECT_TRUE(stream.ReadAll(nullptr, 0));
  EXPECT_TRUE(stream.WriteAll(nullptr, 0));
  EXPECT_TRUE(stream.ReadAllE(nullptr, 0));
  EXPECT_EQ(stream.Calls, 0u);
}

TEST(TStream, AResultOfZeroEndsATransferWhereItStands) {
  TPlainStream stream(Hex("01 02 03 04"));
  unsigned char bytes[8] = {};
  EXPECT_FALSE(stream.ReadAll(bytes, 6));
  EXPECT_EQ(stream.GetPos(), 4);
  EXPECT_EQ(bytes[3], 4);
  stream.Chunk = 1;
  stream.Calls = 0;
  stream.Budget = 2;
  EXPECT_FALSE(stream.WriteAll("xyz", 3));
  EXPECT_EQ(stream.GetPos(), 6);
}

TEST(TStream, AResultAboveTheCountIsAFailureAndNotAStepBack) {
  for (const unsigned long answer : {~0UL, 4UL}) {
    TPlainStream stream(Hex("01 02 03 04 05 06"));
    stream.Chunk = 1;
    stream.Budget = 3;
    stream.Answer = answer;
    unsigned char bytes[6] = {};
    EXPECT_FALSE(stream.ReadAll(bytes, 6));
    EXPECT_EQ(stream.Calls, 4u);
    EXPECT_EQ(stream.GetPos(), 3);
    stream.Calls = 0;
    EXPECT_FALSE(stream.WriteAll(bytes, 6));
    EXPECT_EQ(stream.Calls, 4u);
  }
}

TEST(TStream, ThrowingFormsNameTheFailure) {
  TPlainStream stream(Hex("01"));
  unsigned char bytes[2];
  EXPECT_TRUE(stream.ReadAllE(bytes, 1));
  try {
    stream.ReadAllE(bytes, 1);
    FAIL();
  } catch (const TZxMessage& message) {
    EXPECT_STREQ(message.what(), "TStream::ReadAll failed!");
  }
  EXPECT_TRUE(stream.SetPosE(0));
  EXPECT_EQ(stream.GetPosE(), 0);
  try {
    stream.SetPosE(-1);
    FAIL();
  } catch (const TZxMessage& message) {
    EXPECT_STREQ(message.what(), "TStream::SetPosE failed!");
  }
  stream.Position = -9;
  EXPECT_EQ(stream.GetPosE(), -9);
}

TEST(TStream, MapCopiesOutAndUnmapWritesBack) {
  TPlainStream stream(Hex("00 01 02 03 04 05"));
  stream.SetPos(5);
  void* data = nullptr;
  void* handle = stream.Map(1, 3, true, true, &data);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(stream.GetPos(), 4);
  auto* bytes = static_cast<unsigned char*>(data);
  EXPECT_EQ(Bytes(bytes, bytes + 3), Hex("01 02 03"));
  const auto* record = static_cast<TStreamMapping*>(handle);
  EXPECT_EQ(record->Offset, 1);
  EXPECT_EQ(record->Size, 3u);
  EXPECT_EQ(record->Data, data);
  EXPECT_TRUE(record->Read);
  EXPECT_TRUE(record->Write);
  EXPECT_EQ(record->Reserved, 0u);
  bytes[1] = 0xAA;
  EXPECT_EQ(stream.Data[2], 2);
  stream.SetPos(0);
  EXPECT_TRUE(stream.Unmap(handle));
  EXPECT_EQ(stream.Data, Hex("00 01 AA 03 04 05"));
  EXPECT_EQ(stream.GetPos(), 4);
}

TEST(TStream, UnmapWithoutTheWriteFlagLeavesTheStream) {
  TPlainStream stream(Hex("00 01 02"));
  void* data = nullptr;
  void* handle = stream.Map(0, 2, true, false, &data);
  ASSERT_NE(handle, nullptr);
  static_cast<unsigned char*>(data)[0] = 9;
  stream.SetPos(1);
  EXPECT_TRUE(stream.Unmap(handle));
  EXPECT_EQ(stream.Data, Hex("00 01 02"));
  EXPECT_EQ(stream.GetPos(), 1);
}

TEST(TStream, MapWithoutTheReadFlagMovesToTheOffsetOnly) {
  TPlainStream stream(Hex("00 01 02 03"));
  void* data = nullptr;
  void* handle = stream.Map(2, 2, false, true, &data);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(stream.Calls, 0u);
  EXPECT_EQ(stream.GetPos(), 2);
  std::memset(data, 7, 2);
  EXPECT_TRUE(stream.Unmap(handle));
  EXPECT_EQ(stream.Data, Hex("00 01 07 07"));
}

TEST(TStream, MapRefusesWhatItCantServe) {
  TPlainStream stream(Hex("00 01 02 03"));
  stream.SetPos(3);
  void* data = &stream;
  EXPECT_EQ(stream.Map(0, 0, true, true, &data), nullptr);
  EXPECT_EQ(stream.Map(0, 1, true, true, nullptr), nullptr);
  EXPECT_EQ(stream.Map(2, 3, true, true, &data), nullptr);
  EXPECT_EQ(stream.GetPos(), 3);
  EXPECT_EQ(data, &stream);
  EXPECT_EQ(stream.Map(0, ~0UL, true, true, &data), nullptr);
  // One call has to bring all the bytes, and an error code isn't a count.
  stream.Chunk = 1;
  EXPECT_EQ(stream.Map(0, 2, true, false, &data), nullptr);
  EXPECT_EQ(stream.GetPos(), 3);
  stream.Budget = 0;
  stream.Answer = ~0UL;
  EXPECT_EQ(stream.Map(0, 2, true, false, &data), nullptr);
  EXPECT_FALSE(stream.Unmap(nullptr));
}

TEST(TStream, MapIgnoresAFailingSeek) {
  TPlainStream stream(Hex("00 01 02 03"));
  stream.Seeks = false;
  stream.Position = 1;
  void* data = nullptr;
  void* handle = stream.Map(0, 2, true, true, &data);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(static_cast<unsigned char*>(data)[0], 1);
  stream.Writable = false;
  EXPECT_FALSE(stream.Unmap(handle)); // the result of the write
}

// Without reading there is nothing to take back: the stream stands at the offset once it was
// sought.
TEST(TStream, MapSurvivesEveryFailingAllocation) {
  if (!zx_test::kAvailable) {
    GTEST_SKIP() << "the sanitizer has malloc to itself";
  }
  for (const bool reads : {true, false}) {
    for (unsigned long at = 1; at <= 2; ++at) {
      SCOPED_TRACE(testing::Message() << (reads ? "reading, " : "writing, ") << at);
      TPlainStream stream(Hex("00 01 02 03"));
      stream.SetPos(3);
      void* data = nullptr;
      void* handle = nullptr;
      long left = 0;
      bool failed = false;
      {
        const zx_test::TMallocWatch watch(at);
        handle = stream.Map(1, 2, reads, !reads, &data);
        left = watch.LiveBlocks();
        failed = watch.Failed();
      }
      EXPECT_TRUE(failed);
      EXPECT_EQ(handle, nullptr);
      EXPECT_EQ(data, nullptr);
      EXPECT_EQ(left, 0);
      EXPECT_EQ(stream.GetPos(), reads || at == 1 ? 3 : 1);
      EXPECT_EQ(stream.Data, Hex("00 01 02 03"));
    }
  }
}
