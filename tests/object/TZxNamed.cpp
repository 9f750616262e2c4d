#include <ZxCore3D/object/TZxNamed.h>

#include <cstring>
#include <string>

#include <gtest/gtest.h>

using namespace Zx3D;

TEST(TZxNamed, StartsEmptyAsARecordOf40Bytes) {
  EXPECT_EQ(sizeof(TZxNamed), 40u);
  TZxNamed named;
  EXPECT_EQ(named.GetName(), "");
  EXPECT_TRUE(named.IsName(""));
  EXPECT_EQ(reinterpret_cast<const char*>(&named)[0], 0);
  unsigned long length = 9;
  std::memcpy(&length, reinterpret_cast<const char*>(&named) + 32, sizeof length);
  EXPECT_EQ(length, 0u);
}

TEST(TZxNamed, TakesUpTo31Characters) {
  TZxNamed named;
  const std::string longest(31, 'x');
  EXPECT_TRUE(named.SetName(longest));
  EXPECT_EQ(named.GetName(), longest);
  EXPECT_FALSE(named.SetName(longest + "y"));
  EXPECT_EQ(named.GetName(), longest);
  EXPECT_FALSE(named.SetName((longest + "y").c_str(), ~0UL));
  EXPECT_FALSE(named.SetName("abc", 32));
  EXPECT_FALSE(named.SetName("abc", ~0UL - 1));
  EXPECT_EQ(named.GetName(), longest);
  EXPECT_TRUE(named.SetName("abc", ~0UL));
  EXPECT_EQ(named.GetName(), "abc");
  EXPECT_TRUE(named.SetName("abc", 2));
  EXPECT_EQ(named.GetName(), "ab");
  EXPECT_TRUE(named.IsName("ab"));
  EXPECT_TRUE(named.SetName("", ~0UL));
  EXPECT_EQ(named.GetName(), "");
}

TEST(TZxNamed, ANullNameIsRefusedUnlessItIsEmpty) {
  TZxNamed named;
  named.SetName("abc", 3);
  EXPECT_FALSE(named.SetName(nullptr, ~0UL));
  EXPECT_FALSE(named.SetName(nullptr, 1));
  EXPECT_EQ(named.GetName(), "abc");
  EXPECT_TRUE(named.SetName(nullptr, 0));
  EXPECT_EQ(named.GetName(), "");
}

TEST(TZxNamed, ShortBuffersTruncateSilently) {
  TZxNamed named;
  named.SetName("abcdef", 6);
  char text[8] = "-------";
  EXPECT_EQ(named.GetName(text, 0), 0u);
  EXPECT_STREQ(text, "-------");
  EXPECT_EQ(named.GetName(text, 1), 0u);
  EXPECT_EQ(text[0], 0);
  EXPECT_EQ(text[1], '-');
  EXPECT_EQ(named.GetName(text, 4), 3u);
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(named.GetName(text, 7), 6u);
  EXPECT_STREQ(text, "abcdef");
}

TEST(TZxNamed, ComparesExactly) {
  TZxNamed named;
  named.SetName("Name", 4);
  EXPECT_TRUE(named.IsName("Name"));
  EXPECT_FALSE(named.IsName("name"));
  EXPECT_FALSE(named.IsName("Nam"));
  EXPECT_FALSE(named.IsName("Names"));
  EXPECT_FALSE(named.IsName(nullptr));
  named.SetName(std::string("a\0b", 3));
  EXPECT_EQ(named.GetName(), std::string("a\0b", 3)); // by its length
  EXPECT_TRUE(named.IsName("a"));                     // up to the terminator
}

TEST(TZxNamed, CopiesAndSwaps) {
  TZxNamed one;
  one.SetName("one", 3);
  TZxNamed two(one);
  EXPECT_EQ(two.GetName(), "one");
  two.SetName("second", 6);
  EXPECT_EQ(one.GetName(), "one");
  one.Swap(two);
  EXPECT_EQ(one.GetName(), "second");
  EXPECT_EQ(two.GetName(), "one");
  one.Swap(one);
  EXPECT_EQ(one.GetName(), "second");
  two = one;
  EXPECT_EQ(two.GetName(), "second");
  one = static_cast<TZxNamed&>(one);
  EXPECT_TRUE(one.IsName("second"));
}

TEST(TZxNamed, WithoutAPlaceNothingIsCopied) {
  TZxNamed named;
  named.SetName("name", 4);
  EXPECT_EQ(named.GetName(nullptr, 10), 0u);
  char place[5] = "kept";
  EXPECT_EQ(named.GetName(place, 0), 0u);
  EXPECT_STREQ(place, "kept");
}
