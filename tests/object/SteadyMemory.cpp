// Rounds of saving and loading take no memory that they don't give back. ZX_ROUNDS says how many;
// by default few enough for every day.

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include <gtest/gtest.h>
#include <malloc.h>
#include <unistd.h>

#include <ZxCore3D/object/TAttributes.h>
#include <ZxCore3D/object/TFileStream.h>
#include <ZxCore3D/object/TMemoryStream.h>
#include <ZxCore3D/object/TObjectReader.h>
#include <ZxCore3D/object/TObjectWriter.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/TDataSurface.h>

#include "object/FailingMalloc.h"

using namespace Zx3D;
using zx_test::TMallocWatch;
namespace fs = std::filesystem;

namespace {

class SteadyMemory : public testing::Test {
protected:
  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the sanitizer has malloc for itself, and looks for leaks by itself";
    }
    m_Name = (fs::temp_directory_path() / ("zx_steady_" + std::to_string(getpid()))).string();
  }
  void TearDown() override {
    for (const char* const ending : {"", ".png", ".jpg", ".tga"}) {
      fs::remove(m_Name + ending);
    }
  }

  /// Runs `round` some times, as what is made once is made then, and many times under watch: at
  /// the end there is not one block more.
  static void Repeat(int share, const std::function<void(int)>& round) {
    const char* const asked = std::getenv("ZX_ROUNDS");
    const int rounds = asked != nullptr ? std::atoi(asked) : 2000 / share;
    ASSERT_GT(rounds, 10);
    for (int i = 0; i < 20; ++i) {
      round(i);
    }
    const TMallocWatch watch;
    for (int i = 0; i < rounds; ++i) {
      round(i % 20);
    }
    EXPECT_EQ(0, watch.LiveBlocks()) << "after " << rounds << " rounds";
    EXPECT_LT(watch.LiveBytes(), 1024) << "but for how the allocator rounds";
  }

  static bool Save(TStream& stream, int i) {
    TObjectWriter writer(&stream, false);
    STORE_BLOCK block;
    TVariant value;
    value.Set(std::string(static_cast<std::size_t>(40 * i), 't'));
    return writer.WriteBlockBegin(&block) &&
           SaveAttribute(&writer, "a name that is long", ~0UL, value) &&
           writer.WriteString(std::string(static_cast<std::size_t>(1 + 300 * i), 's')) &&
           writer.WriteBlockEnd(&block);
  }

  static bool Load(TStream& stream, int i) {
    TObjectReader reader(&stream, false);
    unsigned long size = 0;
    std::string name;
    std::string text;
    TVariant value;
    return stream.ReadAll(&size, 8) && LoadAttribute(&reader, name, value) &&
           value.GetStringLength() == static_cast<unsigned long>(40 * i) &&
           reader.ReadString(&text) && text.size() == static_cast<std::size_t>(1 + 300 * i);
  }

  std::string m_Name;
};

TEST_F(SteadyMemory, SavingAndLoadingInMemory) {
  Repeat(1, [](int i) {
    TMemoryStream stream;
    EXPECT_TRUE(Save(stream, i));
    EXPECT_TRUE(stream.SetPos(0) && Load(stream, i));
    stream.SetPos(0);
    stream.SetSize(stream.GetSize() / 2);
    EXPECT_FALSE(Load(stream, i)) << "half of it";
  });
}

TEST_F(SteadyMemory, SavingAndLoadingInFiles) {
  Repeat(10, [this](int i) {
    {
      TFileStream stream;
      EXPECT_TRUE(stream.Create(m_Name) && Save(stream, i) && stream.Close());
    }
    TFileStream stream;
    EXPECT_TRUE(stream.Open(m_Name) && Load(stream, i) && stream.Close());
    EXPECT_FALSE(stream.Open(m_Name + " is not there"));
  });
}

TEST_F(SteadyMemory, SavingAndLoadingImages) {
  Repeat(20, [this](int i) {
    TDataSurface surface;
    EXPECT_TRUE(surface.Create(1 + i, 40 - i, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3));
    for (const char* const ending : {".png", ".jpg", ".tga"}) {
      EXPECT_TRUE(SaveImage(m_Name + ending, nullptr, surface));
      TDataSurface back;
      EXPECT_TRUE(LoadImage(m_Name + ending, nullptr, &back));
      fs::resize_file(m_Name + ending, fs::file_size(m_Name + ending) / 3);
      EXPECT_FALSE(LoadImage(m_Name + ending, nullptr, &back)) << "a third of it";
    }
  });
}

} // namespace
