#include <ZxBaseKit/ZxBaseKit.h>

#include <cfloat>
#include <climits>
#include <thread>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

TEST(TZxStream, TheBaseIsAStreamWithoutBytes) {
  TZxStream stream;
  char byte = 'x';
  EXPECT_EQ(stream.Read(&byte, 1), 0u);
  EXPECT_EQ(stream.Write(&byte, 1), 0u);
  EXPECT_EQ(stream.getSize(), 0u);
  EXPECT_FALSE(stream.setSize(0));
  EXPECT_EQ(stream.getPosition(), 0u);
  EXPECT_FALSE(stream.setPosition(0));
  EXPECT_FALSE(static_cast<bool>(stream));
  EXPECT_EQ(byte, 'x');
  static_assert(std::has_virtual_destructor_v<TZxStream>);
  static_assert(!std::is_copy_constructible_v<TZxStream>);
}

TEST(TModuleCount, CountsUsersAndStaysAtZero) {
  zx::TModuleCount users;
  EXPECT_EQ(users.Count(), 0u);
  EXPECT_EQ(users.Close(), 0u);
  EXPECT_EQ(users.Open(), 1u);
  EXPECT_EQ(users.Open(), 2u);
  EXPECT_EQ(users.Close(), 1u);
  EXPECT_EQ(users.Close(), 0u);
  EXPECT_EQ(users.Close(), 0u);
  EXPECT_EQ(users.Open(), 1u);
}

TEST(TModuleCount, CountsAcrossThreads) {
  zx::TModuleCount users;
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&users] {
      for (int round = 0; round < 10000; ++round) {
        users.Open();
        users.Close();
      }
      users.Open();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(users.Count(), 4u);
}

TEST(Module, OpensAndClosesAnyNumberOfTimes) {
  Deinit_ZxBaseKit(); // without an open one it does nothing
  Init_ZxBaseKit();
  Init_ZxBaseKit();
  Deinit_ZxBaseKit();
  Deinit_ZxBaseKit();
  Deinit_ZxBaseKit();
}

TEST(KeyStrings, AreTheFamilysKeys) {
  EXPECT_STREQ(zx::s_min, "min");
  EXPECT_STREQ(zx::s_max, "max");
  EXPECT_STREQ(zx::s_x, "x");
  EXPECT_STREQ(zx::s_y, "y");
  EXPECT_STREQ(zx::s_z, "z");
  EXPECT_STREQ(zx::s_empty, "empty");
}

TEST(Limits, AreTheFiniteOnes) {
  EXPECT_EQ(zx_max_value<double>(), DBL_MAX);
  EXPECT_EQ(zx_min_value<double>(), -DBL_MAX);
  EXPECT_EQ(zx_max_value<float>(), FLT_MAX);
  EXPECT_EQ(zx_min_value<float>(), -FLT_MAX);
  EXPECT_EQ(zx_max_value<int>(), INT_MAX);
  EXPECT_EQ(zx_min_value<int>(), INT_MIN);
  EXPECT_EQ(zx_min_value<unsigned char>(), 0);
}
