#include <ZxCore3D/object/TStdStream.h>

#include <gtest/gtest.h>

#include <ZxCore3D/object/TMemoryStream.h>

#include "object/Streams.h"

using namespace Zx3D;

TEST(TStdStream, ForwardsToTheStream) {
  TMemoryStream memory;
  TStdStream bridge(&memory);
  TZxStream& stream = bridge;
  EXPECT_TRUE(static_cast<bool>(stream));
  EXPECT_EQ(stream.Write("abcdef", 6), 6u);
  EXPECT_EQ(memory.GetSize(), 6);
  EXPECT_EQ(stream.getSize(), 6u);
  EXPECT_EQ(stream.getPosition(), 6u);
  EXPECT_TRUE(stream.setPosition(4));
  EXPECT_EQ(memory.GetPos(), 4);
  char text[4] = {};
  EXPECT_EQ(stream.Read(text, 4), 2u);
  EXPECT_STREQ(text, "ef");
  EXPECT_TRUE(stream.setSize(3));
  EXPECT_EQ(memory.GetSize(), 3);
  EXPECT_FALSE(stream.setPosition(memory.GetCapacity() + 1));
  EXPECT_FALSE(stream.setSize(~0UL)); // no size of a stream
}

TEST(TStdStream, LeavesTheStreamAlive) {
  bool deleted = false;
  zx_test::TPlainStream plain;
  plain.Deleted = &deleted;
  { TStdStream bridge(&plain); }
  EXPECT_FALSE(deleted);
}

TEST(TStdStream, WithoutAStreamThereIsNothing) {
  TStdStream stream(nullptr);
  char byte = 0;
  EXPECT_FALSE(static_cast<bool>(stream));
  EXPECT_EQ(stream.Read(&byte, 1), 0u);
  EXPECT_EQ(stream.Write(&byte, 1), 0u);
  EXPECT_EQ(stream.getSize(), 0u);
  EXPECT_EQ(stream.getPosition(), 0u);
  EXPECT_FALSE(stream.setSize(0));
  EXPECT_FALSE(stream.setPosition(0));
}
