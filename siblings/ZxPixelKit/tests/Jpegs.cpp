#include <ZxPixelKit/Image.h>

#include <algorithm>

#include <gtest/gtest.h>
#include <png.h>
#include <turbojpeg.h>

#include <ZxBaseKit/TZxMessage.h>

#include "ImageFiles.h"

namespace {

TBytes Noise(std::size_t size) {
  TBytes made(size);
  std::uint32_t state = 1;
  for (std::uint8_t& byte : made) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<std::uint8_t>(state >> 24);
  }
  return made;
}

TJpegSpec ColorSpec() {
  TJpegSpec spec;
  spec.Width = 37;
  spec.Height = 29;
  spec.Pixels = Noise(37 * 29 * 3);
  return spec;
}

// Where a marker stands. Every segment before the pixels tells its length.
std::size_t MarkerAt(const TBytes& jpeg, int marker) {
  for (std::size_t at = 2; at + 4 <= jpeg.size(); at += 2u + jpeg[at + 2] * 256u + jpeg[at + 3]) {
    if (jpeg[at + 1] == marker) {
      return at;
    }
    if (jpeg[at + 1] == 0xDA) {
      break;
    }
  }
  ADD_FAILURE() << "no marker " << marker;
  return 0;
}

TBytes Inserted(const TBytes& bytes, std::size_t at, const TBytes& more) {
  TBytes made = bytes;
  made.insert(made.begin() + static_cast<long>(at), more.begin(), more.end());
  return made;
}

void ExpectSamePicture(const TBytes& odd, const TBytes& plain) {
  const TLoaded expected(plain);
  const TLoaded image(odd);
  ASSERT_TRUE(expected.Done && image.Done);
  EXPECT_EQ(image.Surface.Width, expected.Surface.Width);
  EXPECT_EQ(image.Surface.Channels, expected.Surface.Channels);
  EXPECT_EQ(image.Pixels(), expected.Pixels());
}

TEST(OddJpeg, WithoutAnEndMarkBehindCompleteData) {
  TJpegSpec spec = ColorSpec();
  for (const bool progressive : {false, true}) {
    for (const bool separate : {false, true}) {
      spec.Progressive = progressive;
      spec.Separate = separate && !progressive;
      const TBytes whole = MakeJpeg(spec);
      ASSERT_EQ(whole[whole.size() - 2], 0xFF);
      ASSERT_EQ(whole.back(), 0xD9);
      ExpectSamePicture(TBytes(whole.begin(), whole.end() - 2), whole);
      ExpectSamePicture(TBytes(whole.begin(), whole.end() - 1), whole);
    }
  }
}

TEST(OddJpeg, WithStrayBytesBeforeTheEndMark) {
  TJpegSpec spec = ColorSpec();
  for (const bool progressive : {false, true}) {
    spec.Progressive = progressive;
    const TBytes whole = MakeJpeg(spec);
    ExpectSamePicture(Inserted(whole, whole.size() - 2, TBytes{0}), whole);
    ExpectSamePicture(Inserted(whole, whole.size() - 2, TBytes(1000, 0x55)), whole);
    ExpectSamePicture(Inserted(whole, MarkerAt(whole, 0xC4), TBytes{1, 2, 3}), whole);
  }
}

TEST(OddJpeg, OfALaterVersionOfJfif) {
  const TBytes whole = MakeJpeg(ColorSpec());
  TBytes later = whole;
  ASSERT_EQ(later[6], 'J');
  ASSERT_EQ(later[11], 1);
  later[11] = 2;
  later[12] = 1;
  ExpectSamePicture(later, whole);
}

TEST(OddJpeg, WithAnOddSpectralEnd) {
  const TBytes whole = MakeJpeg(ColorSpec());
  const std::size_t scan = MarkerAt(whole, 0xDA);
  const std::size_t end = scan + 2 + 2 + 1 + 3 * 2 + 1;
  ASSERT_EQ(whole[end], 63);
  for (const std::uint8_t odd : {0, 62, 64}) {
    TBytes changed = whole;
    changed[end] = odd;
    ExpectSamePicture(changed, whole);
  }
}

TEST(OddJpeg, WithAnUnknownColourCode) {
  TJpegSpec spec = ColorSpec();
  spec.Adobe = true;
  const TBytes whole = MakeJpeg(spec);
  const std::size_t code = MarkerAt(whole, 0xEE) + 2 + 2 + 5 + 6;
  ASSERT_EQ(whole[code], 1);
  TBytes changed = whole;
  changed[code] = 7;
  ExpectSamePicture(changed, whole);
}

TEST(OddJpeg, CutInsideItsDataIsRefusedWithAndWithoutAnEndMark) {
  TJpegSpec plain = ColorSpec();
  TJpegSpec progressive = plain;
  TJpegSpec separate = plain;
  TJpegSpec restarts = plain;
  progressive.Progressive = true;
  separate.Separate = true;
  restarts.RestartRows = 1;
  for (const TJpegSpec& spec : {plain, progressive, separate, restarts}) {
    const TBytes whole = MakeJpeg(spec);
    const std::size_t data = MarkerAt(whole, 0xDA) + 4;
    for (std::size_t size = data; size < whole.size() - 2; ++size) {
      const TBytes part(whole.begin(), whole.begin() + static_cast<long>(size));
      EXPECT_FALSE(TLoaded(part).Done) << size << " of " << whole.size();
      if (!spec.Progressive) { // whose later scans may be left out on purpose
        EXPECT_FALSE(TLoaded(part + TBytes{0xFF, 0xD9}).Done) << size << " of " << whole.size();
      }
    }
  }
}

// Blocks of 8 by 8 with one value each, which come back exactly: two columns, three rows.
constexpr std::uint8_t A = 10, B = 60, C = 110, D = 160, E = 210, F = 250;

struct TTurned {
  int Orientation;
  int Columns;
  TBytes Blocks; // as the picture is to be seen, top row first
};

// What a viewer shows of a picture stored as A B, C D, E F.
const TTurned kTurned[] = {
    {1, 2, {A, B, C, D, E, F}}, {2, 2, {B, A, D, C, F, E}}, {3, 2, {F, E, D, C, B, A}},
    {4, 2, {E, F, C, D, A, B}}, {5, 3, {A, C, E, B, D, F}}, {6, 3, {E, C, A, F, D, B}},
    {7, 3, {F, D, B, E, C, A}}, {8, 3, {B, D, F, A, C, E}},
};

TBytes ExifSegment(const TBytes& exif) { return Text(std::string("Exif\0\0", 6)) + exif; }

TJpegSpec BlockSpec() {
  TJpegSpec spec;
  spec.Width = 16;
  spec.Height = 24;
  spec.Channels = 1;
  for (int y = 0; y < 24; ++y) {
    for (int x = 0; x < 16; ++x) {
      spec.Pixels.push_back(kTurned[0].Blocks[static_cast<std::size_t>(y / 8 * 2 + x / 8)]);
    }
  }
  return spec;
}

void ExpectBlocks(const TLoaded& image, const TTurned& turned, int size) {
  ASSERT_TRUE(image.Done);
  const DATASURFACE& s = image.Surface;
  const int rows = 6 / turned.Columns;
  ASSERT_EQ(s.Width, turned.Columns * size);
  ASSERT_EQ(s.Height, rows * size);
  ASSERT_EQ(s.RowStride, s.Width * s.PixelStride);
  for (int y = 0; y < s.Height; ++y) {
    for (int x = 0; x < s.Width; ++x) {
      ASSERT_EQ(
          s.Data[y * s.RowStride + x * s.PixelStride],
          turned
              .Blocks[static_cast<std::size_t>((rows - 1 - y / size) * turned.Columns + x / size)])
          << x << " " << y;
    }
  }
}

TEST(Orientation, OfAJpegIsApplied) {
  for (const TTurned& turned : kTurned) {
    for (const char* order : {"II", "MM"}) {
      SCOPED_TRACE(turned.Orientation);
      TJpegSpec spec = BlockSpec();
      spec.App1 = {ExifSegment(ExifOf(order, turned.Orientation))};
      ExpectBlocks(TLoaded(MakeJpeg(spec)), turned, 8);
      // A segment of another kind in front of it, and a second one of the same behind.
      spec.App1 = {Text("http://ns.adobe.com/xap/1.0/"), spec.App1[0],
                   ExifSegment(ExifOf(order, 3))};
      ExpectBlocks(TLoaded(MakeJpeg(spec)), turned, 8);
    }
  }
}

TEST(Orientation, OfAPngIsApplied) {
  for (const TTurned& turned : kTurned) {
    SCOPED_TRACE(turned.Orientation);
    TPngSpec spec;
    spec.Width = 2;
    spec.Height = 3;
    spec.ColorType = PNG_COLOR_TYPE_RGB;
    for (const std::uint8_t value : kTurned[0].Blocks) {
      spec.Rows = spec.Rows + TBytes{value, 1, 2};
    }
    spec.Exif = ExifOf("II", turned.Orientation);
    const TLoaded image(MakePng(spec));
    ExpectBlocks(image, turned, 1);
    EXPECT_EQ(image.Surface.Data[1], 1);
    EXPECT_EQ(image.Surface.Data[2], 2);
  }
}

TEST(Orientation, DamagedDataTellNone) {
  const TBytes sound = ExifOf("MM", 6);
  std::vector<TBytes> damaged = {ExifOf("MM", 0), ExifOf("MM", 9), ExifOf("II", 0x600)};
  const std::size_t entry = 8 + 2 + 12;
  for (std::size_t size = 0; size < entry + 10; ++size) {
    damaged.emplace_back(sound.begin(), sound.begin() + static_cast<long>(size));
  }
  const auto change = [&](std::size_t at, std::uint8_t value) {
    damaged.push_back(sound);
    damaged.back()[at] = value;
  };
  change(0, 'X');
  change(1, 'X');
  damaged.push_back(ExifOf("IX", 6));
  change(3, 43);        // the magic number
  change(4, 0xFF);      // the directory's place
  change(9, 1);         // entries
  change(entry + 3, 9); // the type
  change(entry + 7, 2); // the count
  for (const TBytes& exif : damaged) {
    TJpegSpec spec = BlockSpec();
    spec.App1 = {ExifSegment(exif)};
    ExpectBlocks(TLoaded(MakeJpeg(spec)), kTurned[0], 8);
  }
}

// A scan takes time whatever it holds: 500 are the most that a file may have.
TEST(OddJpeg, OfMoreScansThanAreDecoded) {
  TJpegSpec spec = ColorSpec();
  spec.Separate = true;
  const TBytes jpeg = MakeJpeg(spec);
  const TBytes mark = {0xFF, 0xDA};
  const auto second = std::find_end(jpeg.begin(), jpeg.end(), mark.begin(), mark.end());
  const TBytes scan(second, jpeg.end() - 2);
  TBytes odd(jpeg.begin(), jpeg.end() - 2);
  for (int scans = 3; scans < 500; ++scans) {
    odd = odd + scan;
  }
  const TBytes end = {0xFF, 0xD9};
  ExpectSamePicture(odd + end, jpeg);
  const TBytes more = odd + scan + end;
  TBytesStream stream(more);
  DATASURFACE image = {};
  TZxMessage reason;
  EXPECT_FALSE(LoadImage(&stream, nullptr, &image, &reason));
  EXPECT_EQ(reason.GetText(), "damaged JPEG: too many scans");
}

} // namespace
