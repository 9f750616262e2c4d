#include <ZxBaseKit/ZxBaseKit.h>

#include <cfloat>
#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

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

// A copy in a namespace of its own binds what it exports to itself, as a library that a program
// opens.
TEST(ZxBaseKitModule, CanBeUnloaded) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer takes a second copy of a library for a mistake";
#endif
  Dl_info about = {};
  ASSERT_NE(dladdr(reinterpret_cast<void*>(&Init_ZxBaseKit), &about), 0);
  const std::filesystem::path copy =
      std::filesystem::temp_directory_path() / ("libZxBaseKit_" + std::to_string(getpid()) + ".so");
  std::filesystem::copy_file(about.dli_fname, copy,
                             std::filesystem::copy_options::overwrite_existing);
  const auto isMapped = [&] {
    std::ifstream maps("/proc/self/maps");
    const std::string text(std::istreambuf_iterator<char>(maps), {});
    return text.find(copy.string()) != std::string::npos;
  };
  void* library = dlmopen(LM_ID_NEWLM, copy.c_str(), RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
  EXPECT_TRUE(isMapped());
  EXPECT_EQ(dlclose(library), 0);
  EXPECT_FALSE(isMapped());
  std::filesystem::remove(copy);
}
