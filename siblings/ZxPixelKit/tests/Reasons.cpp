#include <ZxPixelKit/Image.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <turbojpeg.h>
#include <unistd.h>

#include <ZxBaseKit/TZxMessage.h>

#include "FailingCalls.h"
#include "ImageFiles.h"

namespace {

using testing::StartsWith;

// Why the bytes are no image; "loads" if they are one.
std::string ReasonOf(const TBytes& bytes) {
  TBytesStream stream(bytes);
  DATASURFACE image = {};
  TZxMessage reason("as it was");
  if (LoadImage(&stream, nullptr, &image, &reason)) {
    FreeDataSurfaceData(image);
    EXPECT_STREQ(reason.what(), "as it was");
    return "loads";
  }
  return reason.GetText();
}

std::string ReasonOfFile(const std::string& name) {
  DATASURFACE image = {};
  TZxMessage reason;
  EXPECT_FALSE(LoadImage(name, nullptr, &image, &reason)) << name;
  return reason.GetText();
}

TEST(Reason, OfAFileThatCannotBeRead) {
  EXPECT_EQ(ReasonOfFile("/nonexistent/file.png"), std::strerror(ENOENT));
  EXPECT_EQ(ReasonOfFile(std::string()), std::strerror(ENOENT));
  EXPECT_EQ(ReasonOfFile("/"), std::strerror(EISDIR));
}

TEST(Reason, OfBytesThatAreNoImage) {
  EXPECT_EQ(ReasonOf({}), "is empty");
  EXPECT_EQ(ReasonOf(Text("some text")), "of no known image kind");
  DATASURFACE image = {};
  TZxMessage reason;
  EXPECT_FALSE(LoadImage(static_cast<TZxStream*>(nullptr), nullptr, &image, &reason));
  EXPECT_STREQ(reason.what(), "no stream to read from");
}

TEST(Reason, EveryRefusalHasOne) {
  for (const TNamedFile& file : SmallFiles()) {
    EXPECT_EQ(ReasonOf(file.Bytes), "loads") << file.Name;
    for (std::size_t size = 0; size + file.Spare < file.Bytes.size(); ++size) {
      const std::string reason =
          ReasonOf(TBytes(file.Bytes.begin(), file.Bytes.begin() + static_cast<long>(size)));
      EXPECT_NE(reason, "") << file.Name << ": " << size;
      EXPECT_NE(reason, "loads") << file.Name << ": " << size;
      EXPECT_NE(reason.back(), '.') << reason;
    }
  }
}

TEST(Reason, TellsTruncationFromDamageAndFromSize) {
  for (const TNamedFile& file : SmallFiles()) {
    const TBytes part(file.Bytes.begin(), file.Bytes.end() - static_cast<long>(file.Spare) - 1);
    EXPECT_EQ(ReasonOf(part), "ends inside its picture") << file.Name;
  }
  EXPECT_EQ(ReasonOf(Text("P6 99999 99999 255\n1234")), "has more than 2^28 pixels");
  EXPECT_EQ(ReasonOf(Text("P6 9999 9999 255\n1234")),
            "promises more pixels than its bytes can hold");
  EXPECT_EQ(ReasonOf(Text("P6 0 9 255\n1234")), "has no pixels");
  EXPECT_EQ(ReasonOf(Text("P6 9 9 0\n1234")), "has a header that makes no sense");
  EXPECT_EQ(ReasonOf(Text("P2 2 1 9\n1 x ")), "holds text that is no number");
  TNamedFile png = SmallFiles().front();
  png.Bytes[png.Bytes.size() - 20] ^= 1; // in the pixels
  EXPECT_THAT(ReasonOf(png.Bytes), StartsWith("damaged PNG: "));
  TBytes jpeg = MakeJpeg(8, 8, TJPF_GRAY, TJSAMP_GRAY, TBytes(64, 9));
  jpeg[jpeg.size() - 3] = 0; // in the pixels
  jpeg[3] = 0xC3;            // a marker of lossless coding
  EXPECT_THAT(ReasonOf(jpeg), StartsWith("damaged JPEG: "));
}

TEST(Reason, StandsBehindTheNameInAMessage) {
  const TBytes bytes = Text("no image");
  TBytesStream stream(bytes);
  DATASURFACE image = {};
  TZxMessage reason;
  ASSERT_FALSE(LoadImage(&stream, nullptr, &image, &reason));
  EXPECT_STREQ((TZxMessage("%1%: %2%") << "x.png" << reason.GetText()).what(),
               "x.png: of no known image kind");
}

TEST(LoadIntoASurfaceThatOwns, FreesWhatItHeldAndOwnsThePicture) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(100, 100, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
  const TBytes bytes = Text("P5 2 1 255\n") + TBytes{7, 9};
  for (int round = 0; round < 3; ++round) { // what is not freed shows under the leak checker
    TBytesStream stream(bytes);
    ASSERT_TRUE(LoadImage(&stream, nullptr, &surface));
    EXPECT_TRUE(surface.IsOwner());
    EXPECT_EQ(surface.Width, 2);
    EXPECT_EQ(surface.Data[1], 9);
  }
  std::uint8_t pixel = 5;
  ASSERT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1, &pixel));
  TBytesStream stream(bytes);
  ASSERT_TRUE(LoadImage(&stream, nullptr, &surface));
  EXPECT_TRUE(surface.IsOwner());
  EXPECT_NE(surface.Data, &pixel);
  EXPECT_EQ(pixel, 5);
}

TEST(LoadIntoASurfaceThatOwns, FromAFile) {
  const std::string name = (std::filesystem::temp_directory_path() /
                            ("zx_pixel_own_" + std::to_string(getpid()) + ".pgm"))
                               .string();
  std::ofstream(name, std::ios::binary) << "P5 2 1 255\nab";
  TDataSurface surface;
  TZxMessage reason("as it was");
  ASSERT_TRUE(LoadImage(name, nullptr, &surface, &reason));
  EXPECT_EQ(surface.Data[0], 'a');
  EXPECT_STREQ(reason.what(), "as it was");
  std::filesystem::remove(name);
}

TEST(LoadIntoASurfaceThatOwns, FalseLeavesItAsItWas) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(3, 2, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  const std::uint8_t* block = surface.Data;
  TZxMessage reason;
  EXPECT_FALSE(LoadImage(std::string("/nonexistent.png"), nullptr, &surface, &reason));
  EXPECT_EQ(reason.GetText(), std::strerror(ENOENT));
  EXPECT_FALSE(LoadImage(std::string("/nonexistent.png"), nullptr, &surface));
  const TBytes damaged = Text("P5 2 2 255\n1");
  TBytesStream stream(damaged);
  EXPECT_FALSE(LoadImage(&stream, nullptr, &surface));
  EXPECT_EQ(surface.Data, block);
  EXPECT_EQ(surface.Width, 3);
  EXPECT_TRUE(surface.IsOwner());
}

TEST(Reason, OfAFileOfNoKindAndOfADamagedOne) {
  const TTemporary file("_reason");
  const auto put = [&](const std::string& text) {
    std::ofstream(file.Name, std::ios::binary | std::ios::trunc) << text;
  };
  put("");
  EXPECT_EQ(ReasonOfFile(file.Name), "is empty");
  put("some text");
  EXPECT_EQ(ReasonOfFile(file.Name), "of no known image kind");
  put("P5 2 2 255\n123");
  EXPECT_EQ(ReasonOfFile(file.Name), "ends inside its picture");
}

TEST(Reason, OpeningGoesOnAfterASignal) {
  const TTemporary file("_signal.pgm");
  std::ofstream(file.Name, std::ios::binary) << "P5 1 1 255\na";
  TDataSurface surface;
  {
    const zx_test::TFailingOpen open(3, EINTR);
    ASSERT_TRUE(LoadImage(file.Name, nullptr, &surface));
    EXPECT_EQ(open.Left(), 0);
  }
  EXPECT_EQ(surface.Data[0], 'a');
  {
    const zx_test::TFailingOpen open(1, EMFILE);
    EXPECT_EQ(ReasonOfFile(file.Name), std::strerror(EMFILE));
  }
}

} // namespace
