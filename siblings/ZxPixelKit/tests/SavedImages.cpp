#include <ZxPixelKit/Image.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#include <gtest/gtest.h>
#include <png.h>
#include <sys/resource.h>

#include <ZxBaseKit/TZxMessage.h>

#include "CommaLocale.h"
#include "FailingCalls.h"
#include "ImageFiles.h"

namespace {

struct TKind {
  DATA_TYPE Type;
  int Channels;
};

TEST(SaveImage, RoundTripOfEveryKind) {
  const TTemporary file("_round.png");
  for (DATA_TYPE type : {DATA_TYPE_UINT8, DATA_TYPE_UINT16}) {
    for (int channels = 1; channels <= 4; ++channels) {
      TDataSurface surface;
      ASSERT_TRUE(surface.Create(5, 3, DATA_FORMAT_NONE, type, channels));
      for (std::uint64_t i = 0; i < surface.DataSize; ++i) {
        surface.Data[i] = static_cast<std::uint8_t>(i * 5 + 1);
      }
      TSaveImageHint hint;
      hint.Compression = channels;
      ASSERT_TRUE(SaveImage(file.Name, channels == 2 ? nullptr : &hint, surface));
      DATASURFACE back = {};
      ASSERT_TRUE(LoadImage(file.Name, nullptr, &back));
      const DATA_FORMAT formats[] = {DATA_FORMAT_LUMINANCE, DATA_FORMAT_LUMINANCE_ALPHA,
                                     DATA_FORMAT_RGB, DATA_FORMAT_RGBA};
      ExpectRecord(back, 5, 3, formats[channels - 1], type, channels);
      EXPECT_EQ(std::memcmp(back.Data, surface.Data, surface.DataSize), 0);
      FreeDataSurfaceData(back);
    }
  }
}

TEST(SaveImage, FileHasTheTopRowFirst) {
  const TTemporary file("_order.png");
  std::uint8_t pixels[] = {1, 2, 3, 4}; // the bottom row first
  DATASURFACE surface;
  ASSERT_TRUE(ds::Set(&surface, 2, 2, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1, pixels));
  ASSERT_TRUE(SaveImage(file.Name, nullptr, surface));
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  ASSERT_NE(png_image_begin_read_from_file(&image, file.Name.c_str()), 0);
  image.format = PNG_FORMAT_GRAY;
  std::uint8_t stored[4] = {};
  ASSERT_NE(png_image_finish_read(&image, nullptr, stored, 2, nullptr), 0);
  const std::uint8_t expected[] = {3, 4, 1, 2};
  EXPECT_EQ(std::memcmp(stored, expected, 4), 0);
}

TEST(SaveImage, PartOfASurface) {
  const TTemporary file("_part.png");
  std::uint8_t pixels[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  DATASURFACE surface, part, back = {};
  ASSERT_TRUE(ds::Set(&surface, 3, 3, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1, pixels));
  ASSERT_TRUE(ds::GetSubSurface(surface, 1, 1, 2, 2, &part));
  ASSERT_TRUE(SaveImage(file.Name, nullptr, part));
  ASSERT_TRUE(LoadImage(file.Name, nullptr, &back));
  const std::uint8_t expected[] = {5, 6, 8, 9};
  EXPECT_EQ(std::memcmp(back.Data, expected, 4), 0);
  FreeDataSurfaceData(back);
  // Components in pixels that lie further apart.
  part = surface;
  part.Width = 1;
  part.PixelStride = 3;
  part.Channels = 2;
  ASSERT_TRUE(SaveImage(file.Name, nullptr, part));
  ASSERT_TRUE(LoadImage(file.Name, nullptr, &back));
  const std::uint8_t pairs[] = {1, 2, 4, 5, 7, 8};
  EXPECT_EQ(std::memcmp(back.Data, pairs, 6), 0);
  FreeDataSurfaceData(back);
}

// What a file of the kind gives back for pixels of some channels.
struct TRound {
  const char* Ending;
  int Channels;
  DATA_FORMAT Format;
  int BackChannels;
  TBytes From;
  TBytes Back;
};

TEST(SaveImage, TheEndingTellsTheKind) {
  const DATA_FORMAT L = DATA_FORMAT_LUMINANCE;
  const DATA_FORMAT LA = DATA_FORMAT_LUMINANCE_ALPHA;
  const DATA_FORMAT RGB = DATA_FORMAT_RGB;
  const DATA_FORMAT RGBA = DATA_FORMAT_RGBA;
  const TBytes one = {1, 2, 3, 4, 5, 6};
  const TBytes two = {1, 20, 2, 30, 3, 40, 4, 50, 5, 60, 6, 70};
  const TBytes three = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18};
  const TBytes four = three + TBytes{19, 20, 21, 22, 23, 24};
  const TRound rounds[] = {
      {".png", 1, L, 1, one, one},
      {".PNG", 4, RGBA, 4, four, four},
      {".tga", 1, L, 1, one, one},
      {".tga", 2, LA, 2, two, two},
      {".tga", 3, RGB, 3, three, three},
      {".Tga", 4, RGBA, 4, four, four},
      {".bmp", 1, RGB, 3, one, {1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5, 5, 5, 6, 6, 6}},
      {".bmp", 2, RGBA, 4, two, {1, 1, 1, 20, 2, 2, 2, 30, 3, 3, 3, 40,
                                 4, 4, 4, 50, 5, 5, 5, 60, 6, 6, 6, 70}},
      {".bmp", 3, RGB, 3, three, three},
      {".BMP", 4, RGBA, 4, four, four},
  };
  for (const TRound& round : rounds) {
    SCOPED_TRACE(std::string(round.Ending) + " of " + std::to_string(round.Channels));
    const TTemporary file((std::string("_kind") + round.Ending).c_str());
    DATASURFACE surface, back = {};
    ASSERT_TRUE(ds::Set(&surface, 3, 2, DATA_FORMAT_NONE, DATA_TYPE_UINT8, round.Channels,
                        round.From.data()));
    ASSERT_TRUE(SaveImage(file.Name, nullptr, surface));
    ASSERT_TRUE(LoadImage(file.Name, nullptr, &back));
    ExpectRecord(back, 3, 2, round.Format, DATA_TYPE_UINT8, round.BackChannels);
    EXPECT_EQ(TBytes(back.Data, back.Data + back.DataSize), round.Back);
    FreeDataSurfaceData(back);
  }
}

std::string FirstBytes(const std::string& name, std::size_t count) {
  std::ifstream file(name, std::ios::binary);
  std::string bytes(count, '\0');
  file.read(bytes.data(), static_cast<long>(count));
  return bytes;
}

TEST(SaveImage, FilesBeginWithTheMarkOfTheirKind) {
  TDataSurface bytes, floats;
  ASSERT_TRUE(bytes.Create(9, 9, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4));
  ASSERT_TRUE(floats.Create(9, 9, DATA_FORMAT_RGBA, DATA_TYPE_FLOAT, 4));
  const struct {
    const char* Ending;
    const char* Mark;
  } kinds[] = {{".png", "\x89PNG"},
               {".bmp", "BM"},
               {".jpg", "\xFF\xD8\xFF"},
               {".JPEG", "\xFF\xD8\xFF"},
               {".hdr", "#?RADIANCE\n"}};
  for (const auto& kind : kinds) {
    const TTemporary file((std::string("_mark.x") + kind.Ending).c_str());
    ASSERT_TRUE(SaveImage(file.Name, nullptr, kind.Mark[0] == '#' ? floats : bytes)) << kind.Ending;
    EXPECT_EQ(FirstBytes(file.Name, std::strlen(kind.Mark)), kind.Mark);
  }
  const TTemporary file("_mark.tga");
  ASSERT_TRUE(SaveImage(file.Name, nullptr, bytes));
  EXPECT_EQ(FirstBytes(file.Name, 3)[2] & 7, 2); // true colour
}

TEST(SaveImage, EndingsThatAreNotKnownAreRefusedAndNothingIsTouched) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  for (const char* ending :
       {"", ".", ".gif", ".pn", ".pngx", ".png/x", ".png.", "png", ".tiff", ".p-g", ".p{g"}) {
    const TTemporary file((std::string("_ending") + ending).c_str());
    TZxMessage reason;
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface)) << ending;
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface, &reason)) << ending;
    EXPECT_STREQ(reason.what(),
                 "the ending tells no kind that is written (png, bmp, tga, jpg, jpeg, hdr)");
    EXPECT_FALSE(std::filesystem::exists(file.Name)) << ending;
  }
}

TEST(SaveImage, JpegOfEveryChannelCountTopRowFirst) {
  // Flat blocks of 8 by 8, the lower half dark; alpha, where there is one, is left out.
  for (int channels = 1; channels <= 4; ++channels) {
    SCOPED_TRACE(channels);
    const TTemporary file("_flat.jpg");
    TDataSurface surface;
    ASSERT_TRUE(surface.Create(8, 16, DATA_FORMAT_NONE, DATA_TYPE_UINT8, channels));
    for (int i = 0; i < 8 * 16; ++i) {
      for (int c = 0; c < channels; ++c) {
        const bool isAlpha = channels % 2 == 0 && c == channels - 1;
        surface.Data[i * channels + c] =
            static_cast<std::uint8_t>(isAlpha ? 7 : (i < 64 ? 20 : 200) + 10 * c);
      }
    }
    ASSERT_TRUE(SaveImage(file.Name, nullptr, surface));
    DATASURFACE back = {};
    ASSERT_TRUE(LoadImage(file.Name, nullptr, &back));
    const int colors = channels <= 2 ? 1 : 3;
    ExpectRecord(back, 8, 16, colors == 1 ? DATA_FORMAT_LUMINANCE : DATA_FORMAT_RGB,
                 DATA_TYPE_UINT8, colors);
    for (int i = 0; i < 8 * 16; ++i) {
      for (int c = 0; c < colors; ++c) {
        ASSERT_NEAR(back.Data[i * colors + c], (i < 64 ? 20 : 200) + 10 * c, 4) << i << " " << c;
      }
    }
    FreeDataSurfaceData(back);
  }
}

TEST(SaveImage, JpegQualityIsTheHints) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(64, 64, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3));
  std::uint32_t noise = 1;
  for (std::uint64_t i = 0; i < surface.DataSize; ++i) {
    noise = noise * 1664525 + 1013904223;
    surface.Data[i] = static_cast<std::uint8_t>(noise >> 24);
  }
  const auto sizeAt = [&](int quality) {
    const TTemporary file("_quality.jpg");
    TSaveImageHint hint;
    hint.Quality = quality;
    EXPECT_TRUE(SaveImage(file.Name, &hint, surface));
    return std::filesystem::file_size(file.Name);
  };
  EXPECT_LT(sizeAt(10), sizeAt(50));
  EXPECT_LT(sizeAt(50), sizeAt(95));
  EXPECT_LT(sizeAt(95), sizeAt(100));
  for (const int odd : {-1, 0, 101, 1 << 30}) {
    EXPECT_EQ(sizeAt(odd), sizeAt(95)) << odd;
  }
}

TEST(SaveImage, HdrOfFloatSurfaces) {
  // Values that 8 bits and the greatest component's exponent hold exactly.
  const float inf = std::numeric_limits<float>::infinity();
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float pixels[] = {1,  0.5f, 0.25f, 3, 100, 2, 4, 7, // the bottom row
                          -5, 0.5f, nan,   1, inf, 0, 1, 1};
  const float most = 255.0f / 256.0f * 0x1p127f;
  const TTemporary file("_float.hdr");
  DATASURFACE surface, back = {};
  ASSERT_TRUE(ds::Set(&surface, 2, 2, DATA_FORMAT_RGBA, DATA_TYPE_FLOAT, 4, pixels));
  ASSERT_TRUE(SaveImage(file.Name, nullptr, surface));
  ASSERT_TRUE(LoadImage(file.Name, nullptr, &back));
  ExpectRecord(back, 2, 2, DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3);
  const float expected[] = {1, 0.5f, 0.25f, 100, 2, 4, 0, 0.5f, 0, most, 0, 0};
  for (int i = 0; i < 12; ++i) {
    EXPECT_EQ(Float(back, i), expected[i]) << i;
  }
  FreeDataSurfaceData(back);
  // Luminance, with and without alpha, and rows long enough to be packed.
  for (int channels = 1; channels <= 2; ++channels) {
    TDataSurface grey;
    ASSERT_TRUE(grey.Create(300, 3, DATA_FORMAT_NONE, DATA_TYPE_FLOAT, channels));
    auto* values = reinterpret_cast<float*>(grey.Data);
    for (int i = 0; i < 900; ++i) {
      values[i * channels] = static_cast<float>(i % 200 < 100 ? 64 : i % 200);
    }
    ASSERT_TRUE(SaveImage(file.Name, nullptr, grey));
    ASSERT_TRUE(LoadImage(file.Name, nullptr, &back));
    for (int i = 0; i < 2700; ++i) {
      ASSERT_EQ(Float(back, i), values[i / 3 * channels]) << i;
    }
    FreeDataSurfaceData(back);
  }
}

TEST(SaveImage, RefusesWhatAKindCannotHold) {
  const struct {
    const char* Ending;
    std::vector<DATA_TYPE> Takes;
  } kinds[] = {{".png", {DATA_TYPE_UINT8, DATA_TYPE_UINT16}},
               {".bmp", {DATA_TYPE_UINT8}},
               {".tga", {DATA_TYPE_UINT8}},
               {".jpg", {DATA_TYPE_UINT8}},
               {".hdr", {DATA_TYPE_FLOAT}}};
  for (const auto& kind : kinds) {
    const TTemporary file((std::string("_holds") + kind.Ending).c_str());
    for (unsigned int type = DATA_TYPE_BOOL; type <= DATA_TYPE_DOUBLE; ++type) {
      const bool takes = std::count(kind.Takes.begin(), kind.Takes.end(), DATA_TYPE(type)) != 0;
      TDataSurface surface;
      ASSERT_TRUE(surface.Create(2, 2, DATA_FORMAT_RED, DATA_TYPE(type), 1));
      TZxMessage reason("none");
      EXPECT_EQ(SaveImage(file.Name, nullptr, surface, &reason), takes) << kind.Ending << type;
      EXPECT_STREQ(reason.what(),
                   takes ? "none" : "such pixels can't be stored in a file of this kind");
      EXPECT_EQ(std::filesystem::remove(file.Name), takes);
    }
    TDataSurface wide;
    ASSERT_TRUE(wide.Create(1, 1, DATA_FORMAT_RED, kind.Takes[0], 5));
    EXPECT_FALSE(SaveImage(file.Name, nullptr, wide));
    EXPECT_FALSE(SaveImage(file.Name, nullptr, DATASURFACE{}));
    EXPECT_FALSE(std::filesystem::exists(file.Name));
  }
}

TEST(SaveImage, SidesThatAFileCannotTellAreRefused) {
  for (const char* ending : {".tga", ".jpg"}) {
    const TTemporary file((std::string("_side") + ending).c_str());
    TDataSurface surface;
    ASSERT_TRUE(surface.Create(65536, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface));
    surface.Width = 65500;
    EXPECT_TRUE(SaveImage(file.Name, nullptr, surface));
    ASSERT_TRUE(surface.Create(1, 65536, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface));
  }
}

// The kinds' own limits are told in the same words, before the file is touched.
TEST(SaveImage, SaysWhichSidesAreTooLarge) {
  const struct {
    const char* Ending;
    int Most;
  } kinds[] = {{".tga", 65535}, {".jpg", 65500}, {".jpeg", 65500}};
  for (const auto& kind : kinds) {
    const TTemporary file((std::string("_most") + kind.Ending).c_str());
    for (const bool wide : {true, false}) {
      TDataSurface surface;
      const int side = kind.Most + 1;
      ASSERT_TRUE(
          surface.Create(wide ? side : 1, wide ? 1 : side, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
      TZxMessage reason;
      EXPECT_FALSE(SaveImage(file.Name, nullptr, surface, &reason));
      EXPECT_EQ(reason.GetText(), "the picture is too large for a file of this kind")
          << kind.Ending;
      (wide ? surface.Width : surface.Height) = kind.Most;
      EXPECT_TRUE(SaveImage(file.Name, nullptr, surface)) << kind.Ending;
    }
  }
}

// What fits the buffers fails only when they are emptied at the end.
TEST(SaveImage, AFullDeviceIsToldEvenOfASmallFile) {
  for (const char* ending : {".png", ".bmp", ".tga", ".jpg", ".hdr"}) {
    const TTemporary file((std::string("_device") + ending).c_str());
    std::filesystem::create_symlink("/dev/full", file.Name);
    const DATA_TYPE type = std::string(ending) == ".hdr" ? DATA_TYPE_FLOAT : DATA_TYPE_UINT8;
    TDataSurface surface;
    ASSERT_TRUE(surface.Create(2, 2, DATA_FORMAT_RGB, type, 3));
    TZxMessage reason;
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface, &reason)) << ending;
    EXPECT_EQ(reason.GetText(), std::strerror(ENOSPC)) << ending;
    EXPECT_TRUE(std::filesystem::is_symlink(file.Name)) << ending; // a device is not ours to remove
  }
}

TEST(SaveImage, RefusesWhatAPngCannotHold) {
  const TTemporary file("_refused.png");
  TDataSurface surface;
  for (DATA_TYPE type : {DATA_TYPE_INT8, DATA_TYPE_BOOL, DATA_TYPE_UINT32, DATA_TYPE_FLOAT}) {
    ASSERT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, type, 1));
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface));
  }
  ASSERT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 5));
  EXPECT_FALSE(SaveImage(file.Name, nullptr, surface));
  EXPECT_FALSE(SaveImage(file.Name, nullptr, DATASURFACE{}));
  EXPECT_FALSE(std::filesystem::exists(file.Name));
  ASSERT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  EXPECT_FALSE(SaveImage("/nonexistent/file.png", nullptr, surface));
}

TEST(SaveImage, FileThatCouldNotBeCompletedIsRemoved) {
  for (const char* ending : {".png", ".bmp", ".tga", ".jpg", ".hdr"}) {
    const TTemporary file((std::string("_full") + ending).c_str());
    const bool isFloat = std::string(ending) == ".hdr";
    TDataSurface surface;
    ASSERT_TRUE(
        surface.Create(300, 300, DATA_FORMAT_RED, isFloat ? DATA_TYPE_FLOAT : DATA_TYPE_UINT8, 1));
    std::uint32_t noise = 1;
    for (std::uint64_t i = 0; i < 300 * 300; ++i) {
      noise = noise * 1664525 + 1013904223;
      if (isFloat) {
        reinterpret_cast<float*>(surface.Data)[i] = static_cast<float>(noise >> 24);
      } else {
        surface.Data[i] = static_cast<std::uint8_t>(noise >> 24);
      }
    }
    // Files of this process end at 4096 bytes for a while.
    const auto old = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit small = {4096, limit.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    TZxMessage reason;
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface, &reason)) << ending;
    EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    std::signal(SIGXFSZ, old);
    EXPECT_EQ(reason.GetText(), std::strerror(EFBIG)) << ending;
    EXPECT_FALSE(std::filesystem::exists(file.Name)) << ending;
    EXPECT_TRUE(SaveImage(file.Name, nullptr, surface)) << ending;
  }
}

TEST(SaveImage, SaysWhyTheFileCannotBeOpened) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  TZxMessage reason;
  EXPECT_FALSE(SaveImage("/nonexistent/file.png", nullptr, surface, &reason));
  EXPECT_EQ(reason.GetText(), std::strerror(ENOENT));
}

std::string Contents(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// Names are bytes, and numbers in a header those of "C".
TEST(SaveImage, NoLocaleHasASay) {
  TDataSurface floats, bytes;
  ASSERT_TRUE(floats.Create(1234, 1, DATA_FORMAT_RGB, DATA_TYPE_FLOAT, 3));
  ASSERT_TRUE(bytes.Create(1234, 1, DATA_FORMAT_RGB, DATA_TYPE_UINT8, 3));
  const auto save = [&](const char* ending, const TDataSurface& surface) {
    const TTemporary file((std::string("_gr\u00FC\u00DFe \u65E5\u672C") + ending).c_str());
    EXPECT_TRUE(SaveImage(file.Name, nullptr, surface));
    EXPECT_TRUE(std::filesystem::exists(file.Name));
    DATASURFACE back = {};
    EXPECT_TRUE(LoadImage(file.Name, nullptr, &back));
    EXPECT_EQ(back.Width, 1234);
    FreeDataSurfaceData(back);
    return Contents(file.Name);
  };
  const std::string hdr = save(".hdr", floats);
  const std::string png = save(".png", bytes);
  const zx_test::TCommaLocale locale;
  if (!locale.IsSet()) {
    GTEST_SKIP() << "no locale with a decimal comma";
  }
  EXPECT_EQ(save(".hdr", floats), hdr);
  EXPECT_EQ(save(".png", bytes), png);
  EXPECT_TRUE(TLoaded(Text("P2 2 1 1023 1 1000")).Done);
  EXPECT_TRUE(TLoaded(Text("P5 2 1 1023\n") + TBytes{0, 1, 0, 2}).Done);
}

TEST(SaveImage, RefusesWhatHasNoPixels) {
  std::uint8_t pixels[16] = {};
  DATASURFACE sound;
  ASSERT_TRUE(ds::Set(&sound, 2, 2, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4, pixels));
  const TTemporary file("_none.png");
  const auto reasonOf = [&](const DATASURFACE& surface) {
    TZxMessage reason;
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface, &reason));
    EXPECT_FALSE(std::filesystem::exists(file.Name));
    return reason.GetText();
  };
  constexpr char kNone[] = "there are no pixels to save";
  DATASURFACE surface = sound;
  surface.Data = nullptr;
  EXPECT_EQ(reasonOf(surface), kNone);
  surface = sound;
  surface.Width = 0;
  EXPECT_EQ(reasonOf(surface), kNone);
  surface = sound;
  surface.Height = 0;
  EXPECT_EQ(reasonOf(surface), kNone);
  constexpr char kOthers[] = "such pixels can't be stored in a file of this kind";
  surface = sound;
  surface.Channels = 0;
  EXPECT_EQ(reasonOf(surface), kOthers);
  surface = sound;
  surface.PixelStride = 3; // of four channels
  EXPECT_EQ(reasonOf(surface), kOthers);
  EXPECT_TRUE(SaveImage(file.Name, nullptr, sound));
}

// Rows that lie upon each other: pictures far larger than their pixels.
TEST(SaveImage, APictureBeyondTwoGiBIsRefusedByItsKind) {
  std::vector<std::uint8_t> row(30000 * 12);
  for (const char* ending : {".bmp", ".tga", ".hdr"}) {
    const bool isFloat = std::string(ending) == ".hdr";
    const TTemporary file((std::string("_huge") + ending).c_str());
    DATASURFACE surface;
    ASSERT_TRUE(ds::Set(&surface, 30000, 30000, DATA_FORMAT_RGB,
                        isFloat ? DATA_TYPE_FLOAT : DATA_TYPE_UINT8, 3, row.data()));
    surface.RowStride = 0;
    TZxMessage reason;
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface, &reason)) << ending;
    EXPECT_EQ(reason.GetText(), "the picture is too large for a file of this kind") << ending;
    EXPECT_FALSE(std::filesystem::exists(file.Name)) << ending;
  }
}

TEST(SaveImage, AnotherCompressionThanZeroToNineIsTheLibrarys) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(64, 64, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  for (std::uint64_t i = 0; i < surface.DataSize; ++i) {
    surface.Data[i] = static_cast<std::uint8_t>(i * i >> 5);
  }
  const TTemporary file("_effort.png");
  const auto bytes = [&](int compression) {
    TSaveImageHint hint;
    hint.Compression = compression;
    EXPECT_TRUE(SaveImage(file.Name, &hint, surface));
    std::ifstream stream(file.Name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(stream), {});
  };
  const std::string usual = bytes(-1);
  EXPECT_EQ(bytes(10), usual);
  EXPECT_EQ(bytes(-2), usual);
  EXPECT_NE(bytes(0), usual);
}

TEST(SaveImage, OpeningGoesOnAfterASignal) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  const TTemporary file("_signal.png");
  const zx_test::TFailingOpen open(3, EINTR);
  EXPECT_TRUE(SaveImage(file.Name, nullptr, surface));
  EXPECT_EQ(open.Left(), 0);
}

// Some file systems say only then that the bytes did not get through. After a signal the file is
// closed all the same.
TEST(SaveImage, WhatClosingSaysCounts) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  const TTemporary file("_close.png");
  TZxMessage reason("none");
  {
    const zx_test::TFailingClose close(EINTR);
    EXPECT_TRUE(SaveImage(file.Name, nullptr, surface, &reason));
    EXPECT_EQ(close.Failed(), 1);
  }
  EXPECT_TRUE(std::filesystem::exists(file.Name));
  EXPECT_STREQ(reason.what(), "none");
  {
    const zx_test::TFailingClose close(EIO);
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface, &reason));
    EXPECT_EQ(close.Failed(), 1);
  }
  EXPECT_EQ(reason.GetText(), std::strerror(EIO));
  EXPECT_FALSE(std::filesystem::exists(file.Name));
}

// A picture that was not written is told by its own reason, whatever closing says.
TEST(SaveImage, WhyItFailedIsNotWhatClosingSays) {
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(200, 200, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  const TTemporary file("_full.bmp");
  std::filesystem::create_symlink("/dev/full", file.Name);
  TZxMessage reason;
  {
    const zx_test::TFailingClose close(EIO);
    EXPECT_FALSE(SaveImage(file.Name, nullptr, surface, &reason));
  }
  EXPECT_EQ(reason.GetText(), std::strerror(ENOSPC));
  EXPECT_TRUE(std::filesystem::is_symlink(file.Name)) << "a device is not removed";
}

TEST(SaveImage, ANameWithoutAFolder) {
  const std::filesystem::path before = std::filesystem::current_path();
  const TTemporary folder("_folder");
  std::filesystem::create_directory(folder.Name);
  std::filesystem::current_path(folder.Name);
  TDataSurface surface;
  ASSERT_TRUE(surface.Create(1, 1, DATA_FORMAT_RED, DATA_TYPE_UINT8, 1));
  EXPECT_TRUE(SaveImage("x.png", nullptr, surface));
  EXPECT_FALSE(SaveImage("png", nullptr, surface));
  EXPECT_TRUE(std::filesystem::exists("x.png"));
  std::filesystem::current_path(before);
  std::filesystem::remove_all(folder.Name);
}

} // namespace
