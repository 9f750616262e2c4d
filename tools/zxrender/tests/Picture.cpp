#include "Picture.h"

#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>
#include <ZxPixelKit/TDataSurface.h>

#include "Files.h"

namespace {

std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The hash of a file by another program.
std::string Sha256Sum(const std::string& name) {
  std::FILE* pipe = popen(("sha256sum '" + name + "'").c_str(), "r");
  char text[65] = {};
  const bool done = pipe != nullptr && std::fread(text, 1, 64, pipe) == 64;
  EXPECT_TRUE(done);
  pclose(pipe);
  return text;
}

template <class T>
DATASURFACE Surface(const std::vector<T>& pixels, int width, int height, int channels,
                    DATA_TYPE type) {
  static constexpr DATA_FORMAT kFormats[] = {DATA_FORMAT_LUMINANCE, DATA_FORMAT_LUMINANCE_ALPHA,
                                             DATA_FORMAT_RGB, DATA_FORMAT_RGBA};
  DATASURFACE surface = {};
  EXPECT_TRUE(
      ds::Set(&surface, width, height, kFormats[channels - 1], type, channels, pixels.data()));
  return surface;
}

TEST(Kind, IsTheEndingInAnyCase) {
  EXPECT_EQ(KindOfName("a.png"), TImageKind::Png);
  EXPECT_EQ(KindOfName("a.b.PNG"), TImageKind::Png);
  EXPECT_EQ(KindOfName("a.jpg"), TImageKind::Jpeg);
  EXPECT_EQ(KindOfName("a.JPeG"), TImageKind::Jpeg);
  EXPECT_EQ(KindOfName("a.pfm"), TImageKind::Pfm);
  for (const char* name : {"", "png", "a.gif", "a.png.txt", "a."}) {
    EXPECT_EQ(KindOfName(name), TImageKind::Unknown) << name;
  }
}

// The text of the manual, followed by hand: a header, then rows from the top.
TEST(Digest, IsThatOfAPnmFile) {
  const TDirectory directory;
  const std::vector<std::uint8_t> rgb = {1, 2, 3, 4, 5, 6, /* upper row */ 7, 8, 9, 10, 11, 12};
  EXPECT_EQ(DigestOf(Surface(rgb, 2, 2, 3, DATA_TYPE_UINT8)),
            Sha256Sum(directory.Write("a.ppm", "P6\n2 2\n255\n"
                                               "\x7\x8\x9\xA\xB\xC\x1\x2\x3\x4\x5\x6")));
  const std::vector<std::uint8_t> rgba = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(DigestOf(Surface(rgba, 1, 2, 4, DATA_TYPE_UINT8)),
            Sha256Sum(directory.Write(
                "a.pam", "P7\nWIDTH 1\nHEIGHT 2\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n"
                         "\x5\x6\x7\x8\x1\x2\x3\x4")));
  const std::vector<std::uint16_t> grey = {0x0102, 0x0304};
  EXPECT_EQ(DigestOf(Surface(grey, 2, 1, 1, DATA_TYPE_UINT16)),
            Sha256Sum(directory.Write("a.pgm", "P5\n2 1\n65535\n\x1\x2\x3\x4")));
}

TEST(Digest, LooksAtPixelsAndNotAtGapsBetweenThem) {
  const std::vector<std::uint8_t> tight = {1, 2, 3, 4, 5, 6};
  const std::vector<std::uint8_t> wide = {1, 2, 3, 99, 4, 5, 6, 98};
  DATASURFACE surface = Surface(wide, 2, 1, 4, DATA_TYPE_UINT8);
  surface.Format = DATA_FORMAT_RGB;
  surface.Channels = 3;
  EXPECT_EQ(DigestOf(surface), DigestOf(Surface(tight, 2, 1, 3, DATA_TYPE_UINT8)));
}

TEST(Compare, CountsPixelsAndTheGreatestDifference) {
  const std::vector<std::uint8_t> a = {10, 10, 10, 20, 20, 20, 30, 30, 30, 40, 40, 40};
  std::vector<std::uint8_t> b = a;
  std::vector<std::uint8_t> apart = {77};
  EXPECT_TRUE(ComparePictures(Surface(a, 2, 2, 3, DATA_TYPE_UINT8),
                              Surface(b, 2, 2, 3, DATA_TYPE_UINT8), &apart)
                  .Same);
  EXPECT_EQ(apart.size(), 1u);
  b[3] = 25;
  b[4] = 18;
  b[11] = 39;
  const TComparison result = ComparePictures(Surface(a, 2, 2, 3, DATA_TYPE_UINT8),
                                             Surface(b, 2, 2, 3, DATA_TYPE_UINT8), &apart);
  EXPECT_FALSE(result.Same);
  EXPECT_EQ(result.Differing, 2u);
  EXPECT_EQ(result.Greatest, 5);
  // Fifths of 255.
  EXPECT_EQ(apart, (std::vector<std::uint8_t>{0, 0, 0, 255, 102, 0, 0, 0, 0, 0, 0, 51}));
}

TEST(Compare, AlphaCountsAndAMissingOneIsOpaque) {
  const std::vector<std::uint8_t> rgb = {1, 2, 3};
  const std::vector<std::uint8_t> opaque = {1, 2, 3, 255};
  const std::vector<std::uint8_t> thin = {1, 2, 3, 250};
  EXPECT_TRUE(ComparePictures(Surface(rgb, 1, 1, 3, DATA_TYPE_UINT8),
                              Surface(opaque, 1, 1, 4, DATA_TYPE_UINT8), nullptr)
                  .Same);
  const TComparison result = ComparePictures(Surface(rgb, 1, 1, 3, DATA_TYPE_UINT8),
                                             Surface(thin, 1, 1, 4, DATA_TYPE_UINT8), nullptr);
  EXPECT_EQ(result.Differing, 1u);
  EXPECT_EQ(result.Greatest, 5);
}

TEST(Compare, OtherSizesAndDepthsDiffer) {
  const std::vector<std::uint8_t> a(12);
  const std::vector<std::uint16_t> wide(6);
  const TComparison size = ComparePictures(Surface(a, 2, 2, 3, DATA_TYPE_UINT8),
                                           Surface(a, 4, 1, 3, DATA_TYPE_UINT8), nullptr);
  EXPECT_FALSE(size.Same);
  EXPECT_EQ(size.Reason, "is of 4x1 pixels, not of 2x2");
  const TComparison depth = ComparePictures(Surface(a, 2, 1, 3, DATA_TYPE_UINT8),
                                            Surface(wide, 2, 1, 3, DATA_TYPE_UINT16), nullptr);
  EXPECT_FALSE(depth.Same);
  EXPECT_EQ(depth.Reason, "has channels of 16 bits");
}

TEST(Write, PfmHoldsFloatsFromTheBottomRow) {
  const TDirectory directory;
  const std::vector<float> depth = {1.5f, -2, 3, 4e20f};
  std::string error;
  ASSERT_TRUE(WriteImage(directory / "d.pfm", TImageKind::Pfm,
                         Surface(depth, 2, 2, 1, DATA_TYPE_FLOAT), 1, &error));
  const std::string text = ReadFile(directory / "d.pfm");
  ASSERT_EQ(text.substr(0, 12), "Pf\n2 2\n-1.0\n");
  ASSERT_EQ(text.size(), 12u + 16u);
  EXPECT_EQ(std::memcmp(text.data() + 12, depth.data(), 16), 0);
  const std::vector<float> normal = {0, 0, 1};
  ASSERT_TRUE(WriteImage(directory / "n.pfm", TImageKind::Pfm,
                         Surface(normal, 1, 1, 3, DATA_TYPE_FLOAT), 1, &error));
  EXPECT_EQ(ReadFile(directory / "n.pfm").substr(0, 12), "PF\n1 1\n-1.0\n");
}

TEST(Write, JpegHasTheColoursThatItWasGiven) {
  const TDirectory directory;
  std::vector<std::uint8_t> pixels;
  for (int i = 0; i < 32 * 32; ++i) {
    // The lower half is red, the upper half green; the fourth byte is a gap.
    pixels.insert(pixels.end(), {static_cast<std::uint8_t>(i < 512 ? 200 : 20),
                                 static_cast<std::uint8_t>(i < 512 ? 30 : 180), 40, 77});
  }
  DATASURFACE surface = Surface(pixels, 32, 32, 4, DATA_TYPE_UINT8);
  surface.Format = DATA_FORMAT_RGB;
  surface.Channels = 3;
  std::string error;
  ASSERT_TRUE(WriteImage(directory / "a.jpg", TImageKind::Jpeg, surface, 1, &error)) << error;
  DATASURFACE record = {};
  ASSERT_TRUE(LoadImage(directory / "a.jpg", nullptr, &record));
  TDataSurface loaded;
  loaded.Adopt(record);
  ASSERT_EQ(loaded.Width, 32);
  const std::uint8_t* low = loaded.Data + 4 * loaded.RowStride;
  const std::uint8_t* high = loaded.Data + 28 * loaded.RowStride;
  EXPECT_NEAR(low[0], 200, 3);
  EXPECT_NEAR(low[1], 30, 3);
  EXPECT_NEAR(high[0], 20, 3);
  EXPECT_NEAR(high[1], 180, 3);
}

TEST(Write, AFileThatCantBeWrittenStaysAsItWas) {
  const TDirectory directory;
  const std::vector<std::uint8_t> pixel = {1, 2, 3};
  const DATASURFACE surface = Surface(pixel, 1, 1, 3, DATA_TYPE_UINT8);
  std::string error;
  EXPECT_FALSE(WriteImage("/nonexistent/a.png", TImageKind::Png, surface, 1, &error));
  EXPECT_EQ(error, "can't be written: No such file or directory");
  const std::string name = directory.Write("a.png", "before");
  DATASURFACE none = surface;
  none.Channels = 7;
  EXPECT_FALSE(WriteImage(name, TImageKind::Png, none, 1, &error));
  EXPECT_EQ(ReadFile(name), "before");
  EXPECT_FALSE(std::filesystem::exists(PartName(name, TImageKind::Png)));
  EXPECT_TRUE(WriteImage(name, TImageKind::Png, surface, 1, &error));
  EXPECT_EQ(ReadFile(name).substr(1, 3), "PNG");
  // A link stays a link.
  std::filesystem::create_symlink(name, directory / "link.png");
  directory.Write("a.png", "before");
  EXPECT_TRUE(WriteImage(directory / "link.png", TImageKind::Png, surface, 1, &error));
  EXPECT_TRUE(std::filesystem::is_symlink(directory / "link.png"));
  EXPECT_EQ(ReadFile(name).substr(1, 3), "PNG");
  // A device takes the bytes and stays what it is.
  EXPECT_TRUE(WriteImage("/dev/null", TImageKind::Png, surface, 1, &error));
  struct stat about = {};
  ASSERT_EQ(stat("/dev/null", &about), 0);
  EXPECT_TRUE(S_ISCHR(about.st_mode));
}

TEST(Write, MinusIsTheGivenDescriptor) {
  const TDirectory directory;
  const std::vector<std::uint8_t> pixel = {1, 2, 3};
  const DATASURFACE surface = Surface(pixel, 1, 1, 3, DATA_TYPE_UINT8);
  std::string error;
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_TRUE(WriteImage("-", TImageKind::Png, surface, ends[1], &error)) << error;
  close(ends[1]);
  char bytes[4096];
  const ssize_t count = read(ends[0], bytes, sizeof bytes);
  close(ends[0]);
  ASSERT_TRUE(WriteImage(directory / "a.png", TImageKind::Png, surface, 1, &error));
  EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(count)), ReadFile(directory / "a.png"));
}

} // namespace
