#include "ImageFiles.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <cstdio>
#include <gtest/gtest.h>
#include <jpeglib.h>
#include <png.h>
#include <turbojpeg.h>
#include <unistd.h>

namespace {

void AppendBytes(png_structp png, png_bytep data, std::size_t size) {
  TBytes* to = static_cast<TBytes*>(png_get_io_ptr(png));
  to->insert(to->end(), data, data + size);
}

void NoFlush(png_structp) {}

} // namespace

TBytes MakePng(const TPngSpec& spec) {
  TBytes made;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_user_limits(png, PNG_UINT_31_MAX, PNG_UINT_31_MAX);
  png_set_write_fn(png, &made, AppendBytes, NoFlush);
  png_set_IHDR(png, info, static_cast<png_uint_32>(spec.Width),
               static_cast<png_uint_32>(spec.Height), spec.BitDepth, spec.ColorType,
               spec.Interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  std::vector<png_color> palette(spec.Palette.size() / 3);
  for (std::size_t i = 0; i < palette.size(); ++i) {
    palette[i] = {spec.Palette[3 * i], spec.Palette[3 * i + 1], spec.Palette[3 * i + 2]};
  }
  if (!palette.empty()) {
    png_set_PLTE(png, info, palette.data(), static_cast<int>(palette.size()));
  }
  if (!spec.Transparency.empty()) {
    png_set_tRNS(png, info, spec.Transparency.data(), static_cast<int>(spec.Transparency.size()),
                 nullptr);
  }
  if (spec.TransparentGrey >= 0) {
    png_color_16 color = {};
    color.gray = static_cast<png_uint_16>(spec.TransparentGrey);
    png_set_tRNS(png, info, nullptr, 0, &color);
  }
  TBytes exif = spec.Exif;
  if (!exif.empty()) {
    png_set_eXIf_1(png, info, static_cast<png_uint_32>(exif.size()), exif.data());
  }
  png_write_info(png, info);
  TBytes rows = spec.Rows;
  const std::size_t rowBytes = png_get_rowbytes(png, info);
  std::vector<png_bytep> pointers;
  for (int y = 0; y < spec.Height; ++y) {
    pointers.push_back(rows.data() + static_cast<std::size_t>(y) * rowBytes);
  }
  png_write_image(png, pointers.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return made;
}

TBytes MakeJpeg(int width, int height, int pixelFormat, int subsampling, const TBytes& pixels,
                int flags) {
  tjhandle handle = tjInitCompress();
  unsigned char* file = nullptr;
  unsigned long size = 0;
  const int failed = tjCompress2(handle, pixels.data(), width, 0, height, pixelFormat, &file, &size,
                                 subsampling, 100, TJFLAG_ACCURATEDCT | flags);
  TBytes made(file, file + size);
  tjFree(file);
  tjDestroy(handle);
  if (failed != 0) {
    throw std::runtime_error("no JPEG made");
  }
  return made;
}

TBytes MakeJpeg(const TJpegSpec& spec) {
  jpeg_compress_struct info = {};
  jpeg_error_mgr errors = {};
  info.err = jpeg_std_error(&errors);
  jpeg_create_compress(&info);
  unsigned char* file = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&info, &file, &size);
  info.image_width = static_cast<JDIMENSION>(spec.Width);
  info.image_height = static_cast<JDIMENSION>(spec.Height);
  info.input_components = spec.Channels;
  info.in_color_space = spec.Channels == 1 ? JCS_GRAYSCALE : JCS_RGB;
  jpeg_set_defaults(&info);
  jpeg_set_quality(&info, 100, TRUE);
  info.arith_code = spec.Arithmetic ? TRUE : FALSE;
  info.restart_in_rows = spec.RestartRows;
  if (spec.Progressive) {
    jpeg_simple_progression(&info);
  }
  if (spec.Adobe) {
    info.write_JFIF_header = FALSE;
    info.write_Adobe_marker = TRUE;
  }
  jpeg_scan_info scans[3] = {};
  for (int i = 0; i < 3; ++i) {
    scans[i] = {1, {i}, 0, 63, 0, 0};
  }
  if (spec.Separate) {
    info.scan_info = scans;
    info.num_scans = spec.Channels;
  }
  if (spec.MeansFirst) {
    scans[0] = {1, {0}, 0, 0, 0, 0};
    scans[1] = {1, {0}, 1, 63, 0, 0};
    info.scan_info = scans;
    info.num_scans = 2;
  }
  jpeg_start_compress(&info, TRUE);
  for (const TBytes& segment : spec.App1) {
    jpeg_write_marker(&info, JPEG_APP0 + 1, segment.data(),
                      static_cast<unsigned int>(segment.size()));
  }
  TBytes pixels = spec.Pixels;
  while (info.next_scanline < info.image_height) {
    JSAMPROW row = pixels.data() +
                   info.next_scanline * info.image_width * static_cast<unsigned int>(spec.Channels);
    jpeg_write_scanlines(&info, &row, 1);
  }
  jpeg_finish_compress(&info);
  jpeg_destroy_compress(&info);
  TBytes made(file, file + size);
  std::free(file);
  return made;
}

TBytes ExifOf(const char* order, int orientation) {
  TBytes made = Text(order);
  const bool isBig = order[0] == 'M';
  const auto put16 = [&](int value) {
    made.push_back(static_cast<std::uint8_t>(isBig ? value >> 8 : value));
    made.push_back(static_cast<std::uint8_t>(isBig ? value : value >> 8));
  };
  const auto put32 = [&](int value) {
    put16(isBig ? 0 : value);
    put16(isBig ? value : 0);
  };
  put16(42);
  put32(8);     // where the directory begins
  put16(2);     // entries
  put16(0x100); // another tag, of the same shape
  put16(3);
  put32(1);
  put16(5);
  put16(0);
  put16(0x112);
  put16(3);
  put32(1);
  put16(orientation);
  put16(0);
  put32(0); // no further directory
  return made;
}

void Put16(TBytes& bytes, std::uint32_t value) {
  bytes.push_back(static_cast<std::uint8_t>(value));
  bytes.push_back(static_cast<std::uint8_t>(value >> 8));
}

void Put32(TBytes& bytes, std::uint32_t value) {
  Put16(bytes, value & 0xFFFF);
  Put16(bytes, value >> 16);
}

TBytes TgaHeader(int kind, int width, int height, int bits, int descriptor) {
  TBytes made = {0, 0, static_cast<std::uint8_t>(kind), 0, 0, 0, 0, 0, 0, 0, 0, 0};
  Put16(made, static_cast<std::uint32_t>(width));
  Put16(made, static_cast<std::uint32_t>(height));
  made.push_back(static_cast<std::uint8_t>(bits));
  made.push_back(static_cast<std::uint8_t>(descriptor));
  return made;
}

TBytes BmpHeader(int width, int height, int bits, int compression, int paletteBytes) {
  TBytes made = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0};
  Put32(made, static_cast<std::uint32_t>(54 + paletteBytes));
  Put32(made, 40);
  Put32(made, static_cast<std::uint32_t>(width));
  Put32(made, static_cast<std::uint32_t>(height));
  Put16(made, 1);
  Put16(made, static_cast<std::uint32_t>(bits));
  Put32(made, static_cast<std::uint32_t>(compression));
  for (int i = 0; i < 5; ++i) {
    Put32(made, 0);
  }
  return made;
}

TBytes operator+(TBytes left, const TBytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

TBytes Text(const std::string& text) { return TBytes(text.begin(), text.end()); }

std::vector<TNamedFile> SmallFiles() {
  TBytes ramp;
  for (int i = 0; i < 5 * 4 * 3; ++i) {
    ramp.push_back(static_cast<std::uint8_t>(i * 4));
  }
  TPngSpec rgb;
  rgb.Width = 5;
  rgb.Height = 4;
  rgb.ColorType = PNG_COLOR_TYPE_RGB;
  rgb.Rows = ramp;
  TPngSpec laced = rgb;
  laced.Interlaced = true;
  TPngSpec indexed;
  indexed.Width = 4;
  indexed.Height = 2;
  indexed.ColorType = PNG_COLOR_TYPE_PALETTE;
  indexed.BitDepth = 4;
  indexed.Rows = {0x01, 0x20, 0x21, 0x00};
  indexed.Palette = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  indexed.Transparency = {0, 128};

  TBytes large(20 * 12 * 3);
  for (std::size_t i = 0; i < large.size(); ++i) {
    large[i] = static_cast<std::uint8_t>(i * 7);
  }
  TJpegSpec separate;
  separate.Width = 20;
  separate.Height = 12;
  separate.Pixels = large;
  TJpegSpec restarts = separate;
  TJpegSpec arithmetic = separate;
  TJpegSpec turned = separate;
  separate.Separate = true;
  restarts.RestartRows = 1;
  arithmetic.Arithmetic = true;
  turned.App1 = {Text(std::string("Exif\0\0", 6)) + ExifOf("MM", 6)};
  const TBytes hdrHead = Text("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 2 +X 8\n");
  TBytes hdrRow = {2, 2, 0, 8};
  for (int component = 0; component < 3; ++component) {
    hdrRow = hdrRow + TBytes{0x83, 200, 5, 1, 2, 3, 4, 5};
  }
  hdrRow = hdrRow + TBytes{0x88, 129};

  return {
      {"png", MakePng(rgb)},
      {"png interlaced", MakePng(laced)},
      {"png palette", MakePng(indexed)},
      {"jpeg", MakeJpeg(20, 12, TJPF_RGB, TJSAMP_420, large), 2},
      {"jpeg progressive", MakeJpeg(20, 12, TJPF_RGB, TJSAMP_444, large, TJFLAG_PROGRESSIVE), 2},
      {"jpeg grey", MakeJpeg(20, 12, TJPF_GRAY, TJSAMP_GRAY, large), 2},
      {"jpeg in a scan for each component", MakeJpeg(separate), 2},
      {"jpeg with restart marks", MakeJpeg(restarts), 2},
      {"jpeg of arithmetic coding", MakeJpeg(arithmetic)},
      {"jpeg turned", MakeJpeg(turned), 2},
      {"tga", TgaHeader(2, 5, 4, 24, 0) + ramp},
      {"tga packed", TgaHeader(10, 4, 2, 24, 0x20) +
                         TBytes{0x83, 9, 8, 7, 0x01, 1, 2, 3, 4, 5, 6, 0x81, 6, 6, 6}},
      {"tga palette", TBytes{2, 1, 1, 0, 0, 2, 0, 24, 0, 0, 0, 0, 3, 0, 1, 0, 8, 0, 'i', 'd'} +
                          TBytes{1, 2, 3, 4, 5, 6} + TBytes{1, 0, 1}},
      {"tga with an unneeded palette",
       TBytes{1, 1, 2, 0, 0, 2, 0, 24, 0, 0, 0, 0, 2, 0, 1, 0, 24, 0, 'i'} +
           TBytes{9, 9, 9, 8, 8, 8} + TBytes{1, 2, 3, 4, 5, 6}},
      {"bmp", BmpHeader(3, 2, 24, 0, 0) + TBytes(24, 77)},
      {"bmp palette", BmpHeader(5, 2, 4, 0, 8) + TBytes{1, 2, 3, 0, 4, 5, 6, 0} +
                          TBytes{0x01, 0x10, 0x10, 0, 0x11, 0x01, 0x00, 0}},
      {"bmp masks", BmpHeader(1, 2, 16, 3, 12) +
                        TBytes{0x00, 0xF8, 0, 0, 0xE0, 0x07, 0, 0, 0x1F, 0, 0, 0} +
                        TBytes{0x1F, 0, 0, 0, 0xE0, 0x07, 0, 0}},
      {"bmp packed",
       BmpHeader(5, 2, 8, 1, 8) + TBytes{1, 2, 3, 0, 4, 5, 6, 0} +
           TBytes{0, 3, 1, 0, 1, 0, 2, 0, 0, 0, 5, 1, 0, 0, 0, 1},
       4},
      {"bmp packed half bytes",
       BmpHeader(5, 2, 4, 2, 8) + TBytes{1, 2, 3, 0, 4, 5, 6, 0} +
           TBytes{0, 5, 0x01, 0x10, 0x10, 0, 0, 0, 5, 0x01, 0, 1},
       2},
      {"pgm", Text("P5 # grey\n3 2\n255\n") + TBytes{1, 2, 3, 4, 5, 6}},
      {"pbm", Text("P4\n10 2\n") + TBytes{0xA5, 0x40, 0x5A, 0x80}},
      {"pbm text", Text("P1\n# bits\n3 2\n101\n0 1 0\n"), 1},
      {"pgm text", Text("P2\n3 2\n15\n0 7 15\n1 2 3\n"), 1},
      {"ppm text 16", Text("P3 1 2 1000 1 2 3 100 1000 9\n"), 1},
      {"ppm 16", Text("P6\n1 2\n65535\n") + TBytes{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12}},
      {"hdr", hdrHead + hdrRow + hdrRow},
      {"hdr flat", Text("#?RGBE\nFORMAT=32-bit_rle_rgbe\n\n-Y 2 +X 2\n") +
                       TBytes{128, 64, 32, 129, 1, 2, 3, 130, 5, 6, 7, 120, 0, 0, 0, 1}},
      {"hdr with carriage returns",
       Text("#?RADIANCE\r\nFORMAT=32-bit_rle_rgbe\r\n\r\n-Y 1 +X 2\r\n") +
           TBytes{128, 64, 32, 129, 13, 10, 13, 130}},
  };
}

unsigned long TBytesStream::Read(void* data, unsigned long size) {
  const unsigned long count = std::min({size, m_Step, m_Bytes->size() - Position});
  if (count > 0) {
    std::memcpy(data, m_Bytes->data() + Position, count);
  }
  Position += count;
  return count;
}

TLoaded::TLoaded(const TBytes& bytes) {
  TBytesStream stream(bytes);
  Done = LoadImage(&stream, nullptr, &Surface);
}

TTemporary::TTemporary(const char* suffix)
    : Name((std::filesystem::temp_directory_path() /
            ("zx_pixel_" + std::to_string(getpid()) + suffix))
               .string()) {}

TTemporary::~TTemporary() { std::filesystem::remove(Name); }

void ExpectRecord(const DATASURFACE& s, int width, int height, DATA_FORMAT format, DATA_TYPE type,
                  int channels) {
  const int pixelStride = channels * static_cast<int>(GetTypeSize(type));
  EXPECT_EQ(s.Width, width);
  EXPECT_EQ(s.Height, height);
  EXPECT_EQ(s.Depth, 1);
  EXPECT_EQ(s.PixelStride, pixelStride);
  EXPECT_EQ(s.RowStride, pixelStride * width);
  EXPECT_EQ(s.SliceStride, pixelStride * width * height);
  EXPECT_EQ(s.Format, format);
  EXPECT_EQ(s.Type, type);
  EXPECT_EQ(s.Channels, channels);
  EXPECT_EQ(s.DataSize, static_cast<std::uint64_t>(pixelStride * width * height));
  ASSERT_NE(s.Data, nullptr);
  for (int i = 0; i < s.RowStride + s.PixelStride; ++i) {
    ASSERT_EQ(s.Data[s.DataSize + static_cast<unsigned int>(i)], 0) << "slack";
  }
}

std::uint16_t Wide(const DATASURFACE& s, int index) {
  std::uint16_t value;
  std::memcpy(&value, s.Data + 2 * index, 2);
  return value;
}

float Float(const DATASURFACE& s, int index) {
  float value;
  std::memcpy(&value, s.Data + 4 * index, 4);
  return value;
}
