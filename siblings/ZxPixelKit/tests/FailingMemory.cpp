#include <ZxPixelKit/Image.h>

#include <array>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Surface.h>
#include <ZxPixelKit/TDataSurface.h>

#include "ImageFiles.h"
#include "object/FailingMalloc.h"

// Every allocation of every operation fails once: the operation is false, says why, leaks nothing
// and changes nothing, or does without.

namespace {

using zx_test::TMallocWatch;

class TFailingMemory : public testing::Test {
protected:
  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the sanitizer has malloc to itself";
    }
  }

  // Runs `operation` with its first allocation failing, then its second, until none is left to
  // fail; `look`, which may allocate, is told what it returned. How often it was false.
  template <class TOperation, class TLook>
  static int FailEach(const char* what, const TOperation& operation, const TLook& look) {
    int failures = 0;
    for (unsigned long at = 1; at < 10000; ++at) {
      bool done = false;
      bool failed = false;
      long blocks = 0;
      {
        const TMallocWatch watch(at);
        done = operation();
        failed = watch.Failed();
        blocks = watch.LiveBlocks();
      }
      look(done);
      EXPECT_EQ(blocks, 0) << what << " leaks when allocation " << at << " fails";
      if (!failed) {
        EXPECT_TRUE(done) << what << " fails with all its memory";
        return failures;
      }
      failures += done ? 0 : 1;
    }
    ADD_FAILURE() << what << " has no end";
    return failures;
  }

  static void LookAtNothing(bool) {}
};

TEST_F(TFailingMemory, LoadImageOfEveryKind) {
  for (const TNamedFile& file : SmallFiles()) {
    const TLoaded expected(file.Bytes);
    ASSERT_TRUE(expected.Done) << file.Name;
    const int failures = FailEach(
        file.Name,
        [&] {
          TBytesStream stream(file.Bytes);
          std::array<unsigned char, sizeof(DATASURFACE)> pattern;
          pattern.fill(0xA5);
          DATASURFACE image;
          std::memcpy(&image, pattern.data(), sizeof image);
          // The reason is told in storage of its own: that it is there and not empty is looked at.
          TZxMessage reason;
          if (!LoadImage(&stream, nullptr, &image, &reason)) {
            EXPECT_EQ(std::memcmp(&image, pattern.data(), sizeof image), 0) << file.Name;
            EXPECT_STRNE(reason.what(), "") << file.Name;
            return false;
          }
          EXPECT_EQ(image.DataSize, expected.Surface.DataSize) << file.Name;
          EXPECT_EQ(std::memcmp(image.Data, expected.Surface.Data, image.DataSize), 0) << file.Name;
          FreeDataSurfaceData(image);
          return true;
        },
        LookAtNothing);
    EXPECT_GT(failures, 0) << file.Name;
  }
}

TEST_F(TFailingMemory, LoadImageIntoASurfaceThatOwns) {
  const TBytes png = SmallFiles().front().Bytes;
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(3, 2, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3, nullptr));
  const unsigned char* const before = surface.Data;
  for (unsigned long at = 1;; ++at) {
    const TMallocWatch watch(at);
    TBytesStream stream(png);
    const bool done = LoadImage(&stream, nullptr, &surface);
    if (!watch.Failed()) {
      EXPECT_TRUE(done);
      break;
    }
    if (done) {
      break; // it did without; the rest is held above
    }
    EXPECT_EQ(surface.Data, before);
    EXPECT_EQ(surface.Width, 3);
  }
}

std::ptrdiff_t OpenDescriptors() {
  const std::filesystem::directory_iterator open("/proc/self/fd");
  return std::distance(begin(open), end(open));
}

TEST_F(TFailingMemory, SaveImageOfEveryKind) {
  const struct {
    const char* Ending;
    DATA_FORMAT Format;
    DATA_TYPE Type;
    int Channels;
  } kinds[] = {{".png", DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4},
               {".png", DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT16, 1},
               {".bmp", DATA_FORMAT_LUMINANCE_ALPHA, DATA_TYPE_UINT8, 2},
               {".bmp", DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3},
               {".tga", DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4},
               {".jpg", DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3},
               {".hdr", DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3}};
  for (const auto& kind : kinds) {
    TDataSurface surface;
    ASSERT_TRUE(surface.Create(13, 7, kind.Format, kind.Type, kind.Channels, nullptr));
    const TTemporary file(kind.Ending);
    const auto descriptors = OpenDescriptors();
    bool said = false;
    const int failures = FailEach(
        kind.Ending,
        [&] {
          TZxMessage reason;
          const bool saved = SaveImage(file.Name, nullptr, surface, &reason);
          said = *reason.what() != '\0';
          return saved;
        },
        [&](bool saved) {
          EXPECT_EQ(said, !saved) << kind.Ending;
          EXPECT_EQ(OpenDescriptors(), descriptors) << kind.Ending;
          DATASURFACE back = {};
          EXPECT_EQ(LoadImage(file.Name, nullptr, &back), saved) << kind.Ending;
          FreeDataSurfaceData(back);
          EXPECT_EQ(std::filesystem::exists(file.Name), saved) << kind.Ending << ": a part stays";
          std::filesystem::remove(file.Name);
        });
    EXPECT_GT(failures, 0) << kind.Ending;
  }
}

TEST_F(TFailingMemory, Surfaces) {
  const int failures = FailEach(
      "Create",
      [] {
        TDataSurface surface;
        const bool done = surface.Create(13, 7, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, nullptr);
        EXPECT_EQ(surface.Data != nullptr, done);
        EXPECT_EQ(surface.Width, done ? 13 : 0);
        return done;
      },
      LookAtNothing);
  EXPECT_EQ(failures, 1);
}

TEST_F(TFailingMemory, LoadImageLargerThanTheFirstRead) {
  const TBytes bytes = Text("P5 700 300 255\n") + TBytes(700 * 300, 7);
  const int failures = FailEach(
      "a large file",
      [&] {
        TBytesStream stream(bytes);
        DATASURFACE image = {};
        const bool done = LoadImage(&stream, nullptr, &image);
        FreeDataSurfaceData(image);
        return done;
      },
      LookAtNothing);
  EXPECT_GT(failures, 3); // the head, its growing, what the decoder needs, the picture
}

// The reason takes memory too: without it, what is told is that there was none.
TEST_F(TFailingMemory, TheReasonWithoutMemoryForIt) {
  const TBytes bytes = Text("some text");
  int without = 0;
  for (unsigned long at = 1; at < 100; ++at) {
    TBytesStream stream(bytes);
    DATASURFACE image = {};
    TZxMessage reason;
    bool failed = false;
    {
      const TMallocWatch watch(at);
      EXPECT_FALSE(LoadImage(&stream, nullptr, &image, &reason));
      failed = watch.Failed();
    }
    if (!failed) {
      EXPECT_STREQ(reason.what(), "of no known image kind");
      break;
    }
    EXPECT_STREQ(reason.what(), "out of memory") << at;
    ++without;
  }
  EXPECT_GT(without, 1); // of the bytes, and of the reason
}

TEST_F(TFailingMemory, SaveImageToADevice) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(13, 7, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3));
  for (const char* ending : {".png", ".bmp"}) {
    const TTemporary file(ending);
    std::filesystem::create_symlink("/dev/null", file.Name);
    const int failures = FailEach(
        ending, [&] { return SaveImage(file.Name, nullptr, surface); },
        [&](bool) { EXPECT_TRUE(std::filesystem::is_symlink(file.Name)) << ending; });
    EXPECT_GT(failures, 0) << ending;
  }
}

TEST_F(TFailingMemory, CopyOfSurfacesThatOverlap) {
  std::uint8_t block[32];
  DATASURFACE from, to;
  const int failures = FailEach(
      "Copy",
      [&] {
        for (std::uint8_t i = 0; i < 32; ++i) {
          block[i] = i;
        }
        EXPECT_TRUE(ds::Set(&from, 4, 4, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, block));
        EXPECT_TRUE(ds::Set(&to, 4, 4, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, block + 1));
        to.RowStride = 5;
        const bool done = ds::Copy(from, to);
        for (std::uint8_t i = 0; i < 16; ++i) {
          EXPECT_EQ(block[1 + 5 * (i / 4) + i % 4], done ? i : 1 + 5 * (i / 4) + i % 4);
        }
        return done;
      },
      LookAtNothing);
  EXPECT_EQ(failures, 1);
}

} // namespace
