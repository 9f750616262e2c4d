// A surface written as a kind that its pixels fit, and read back: PNG, BMP and TGA to the byte,
// Radiance HDR within its eighth bit, JPEG within what its quality loses.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

#include "ImageBytes.h"

namespace {

using fuzz_image::Require;

// One folder a process, gone with it; in memory where the system has a place for that, since a disk
// takes longer than the writers.
class TFolder {
public:
  TFolder() {
    std::string name = "/dev/shm/fuzz_writersXXXXXX";
    if (mkdtemp(name.data()) == nullptr) {
      name = (std::filesystem::temp_directory_path() / "fuzz_writersXXXXXX").string();
      Require(mkdtemp(name.data()) != nullptr);
    }
    m_Name = name;
  }
  ~TFolder() {
    std::error_code error;
    std::filesystem::remove_all(m_Name, error);
  }
  TFolder(const TFolder&) = delete;
  TFolder& operator=(const TFolder&) = delete;
  std::string File(const char* ending) const { return m_Name + "/picture." + ending; }

private:
  std::string m_Name;
};

// The surface of the input: rows and pixels may lie apart.
struct TSubject {
  DATASURFACE Surface = {};
  TSaveImageHint Hint;
  std::vector<std::uint8_t> Block;

  const std::uint8_t* At(int x, int y) const {
    return Surface.Data + x * Surface.PixelStride + y * Surface.RowStride;
  }
  template <class T> T Sample(int x, int y, int channel) const {
    T value;
    std::memcpy(&value, At(x, y) + static_cast<std::size_t>(channel) * sizeof(T), sizeof value);
    return value;
  }
};

TSubject SubjectOf(const std::uint8_t* data, std::size_t size) {
  static constexpr DATA_TYPE kTypes[] = {DATA_TYPE_UINT8, DATA_TYPE_UINT8, DATA_TYPE_UINT16,
                                         DATA_TYPE_FLOAT};
  TSubject made;
  DATASURFACE& s = made.Surface;
  s.Width = 1 + data[0] % 20;
  s.Height = 1 + data[1] % 20;
  s.Depth = 1;
  s.Channels = static_cast<std::uint8_t>(1 + data[2] % 4);
  s.Type = kTypes[data[2] / 4 % 4];
  const int pixel = static_cast<int>(s.Channels * GetTypeSize(s.Type));
  s.PixelStride = pixel + data[3] % 4;
  s.RowStride = s.PixelStride * s.Width + data[3] / 4 % 4;
  made.Hint.Quality = data[4] % 110;
  made.Hint.Compression = data[5] % 12 - 1;
  made.Block.resize(static_cast<std::size_t>(s.RowStride) * static_cast<std::size_t>(s.Height));
  // What is missing repeats what there is.
  for (std::size_t i = 0; i < made.Block.size(); ++i) {
    made.Block[i] = size > 6 ? data[6 + i % (size - 6)] : std::uint8_t{0};
  }
  s.DataSize = made.Block.size();
  s.Data = made.Block.data();
  return made;
}

class TPicture {
public:
  TPicture(const TSubject& of, const char* ending) {
    static const TFolder s_Folder;
    const std::string name = s_Folder.File(ending);
    TSaveImageHint hint = of.Hint;
    Require(SaveImage(name, &hint, of.Surface));
    Require(LoadImage(name, nullptr, &m_Surface));
    fuzz_image::RequireSound(m_Surface);
    Require(m_Surface.Width == of.Surface.Width && m_Surface.Height == of.Surface.Height);
  }
  ~TPicture() { FreeDataSurfaceData(m_Surface); }
  TPicture(const TPicture&) = delete;
  TPicture& operator=(const TPicture&) = delete;

  const DATASURFACE& Get() const { return m_Surface; }
  const std::uint8_t* At(int x, int y) const {
    return m_Surface.Data + x * m_Surface.PixelStride + y * m_Surface.RowStride;
  }

private:
  DATASURFACE m_Surface = {};
};

template <class TPixel> void ForEachPixel(const DATASURFACE& surface, TPixel pixel) {
  for (int y = 0; y < surface.Height; ++y) {
    for (int x = 0; x < surface.Width; ++x) {
      pixel(x, y);
    }
  }
}

void RequireSame(const TSubject& subject, const char* ending) {
  const TPicture back(subject, ending);
  const DATASURFACE& s = subject.Surface;
  const bool spread =
      std::strcmp(ending, "bmp") == 0 && s.Channels <= 2; // luminance as red, green and blue
  Require(back.Get().Type == s.Type && back.Get().Channels == s.Channels + (spread ? 2 : 0));
  ForEachPixel(s, [&](int x, int y) {
    const std::uint8_t* const read = back.At(x, y);
    if (!spread) {
      Require(std::memcmp(read, subject.At(x, y),
                          static_cast<std::size_t>(back.Get().PixelStride)) == 0);
      return;
    }
    const std::uint8_t luminance = subject.At(x, y)[0];
    Require(read[0] == luminance && read[1] == luminance && read[2] == luminance);
    Require(s.Channels == 1 || read[3] == subject.At(x, y)[1]);
  });
}

// Components share the exponent of the greatest: each loses less than its 128th part.
void RequireNearHdr(const TSubject& subject) {
  const TPicture back(subject, "hdr");
  constexpr float kMost = 255.0f / 256.0f * 0x1p127f; // what the greatest exponent can tell
  Require(back.Get().Type == DATA_TYPE_FLOAT && back.Get().Channels == 3);
  ForEachPixel(subject.Surface, [&](int x, int y) {
    std::array<double, 3> sent{};
    for (int i = 0; i < 3; ++i) {
      const float value = subject.Sample<float>(x, y, subject.Surface.Channels < 3 ? 0 : i);
      sent[static_cast<std::size_t>(i)] = value > 0 ? std::min(value, kMost) : 0.0;
    }
    const double most = *std::max_element(sent.begin(), sent.end());
    std::array<float, 3> read{};
    std::memcpy(read.data(), back.At(x, y), sizeof read);
    for (std::size_t i = 0; i < 3; ++i) {
      // Below 1e-32 the format has nothing.
      const double bound = std::max(most / 128, 1e-32) * (1 + 1e-6);
      Require(std::abs(read[i] - sent[i]) <= bound);
    }
  });
}

// The norm by which an 8 by 8 block of one component may be off: half a step of the quantiser for
// each of its coefficients, the transform keeping norms; and rounding.
double QuantiserLoss(bool chroma, int quality) {
  static constexpr std::array<int, 64> kLuminance = {
      16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
      14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
      18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
      49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};
  static constexpr std::array<int, 16> kChroma = {17, 18, 24, 47, 18, 21, 26, 66,
                                                  24, 26, 56, 99, 47, 66, 99, 99};
  const int scale = quality < 50 ? 5000 / quality : 200 - 2 * quality;
  double sum = 0;
  for (std::size_t i = 0; i < 64; ++i) {
    const bool low = i / 8 < 4 && i % 8 < 4;
    const int usual = !chroma ? kLuminance[i] : low ? kChroma[i / 8 * 4 + i % 8] : 99;
    const int step = std::clamp((usual * scale + 50) / 100, 1, 255);
    const double loss = step / 2.0 + 0.5;
    sum += loss * loss;
  }
  return std::sqrt(sum) + 8 * 1.0; // and one for each value of the block
}

void RequireNearJpeg(const TSubject& subject) {
  const DATASURFACE& s = subject.Surface;
  const TPicture back(subject, "jpg");
  const int channels = s.Channels <= 2 ? 1 : 3;
  Require(back.Get().Type == DATA_TYPE_UINT8 && back.Get().Channels == channels);
  const int quality =
      subject.Hint.Quality >= 1 && subject.Hint.Quality <= 100 ? subject.Hint.Quality : 95;
  const double y = QuantiserLoss(false, quality);
  const double c = QuantiserLoss(true, quality) + 8 * 0.5;
  // Red, green and blue from luminance and chroma; roundings both ways are within one.
  const std::array<double, 3> bounds = {y + 1.402 * c + 8, y + 0.344137 * c + 0.714137 * c + 8,
                                        y + 1.772 * c + 8};
  // Blocks begin at the top row, and the surface at the bottom one.
  for (int top = s.Height - 1; top >= 0; top -= 8) {
    for (int left = 0; left < s.Width; left += 8) {
      for (int i = 0; i < channels; ++i) {
        double sum = 0;
        for (int row = top; row > top - 8 && row >= 0; --row) {
          for (int x = left; x < left + 8 && x < s.Width; ++x) {
            const double off = back.At(x, row)[i] - static_cast<double>(subject.At(x, row)[i]);
            sum += off * off;
          }
        }
        Require(std::sqrt(sum) <= (channels == 1 ? y : bounds[static_cast<std::size_t>(i)]));
      }
    }
  }
}

} // namespace

// Input: width, height, pixels and kind, strides, quality, compression, then samples.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 6 || size > 1024) {
    return 0;
  }
  const TSubject subject = SubjectOf(data, size);
  if (subject.Surface.Type == DATA_TYPE_FLOAT) {
    RequireNearHdr(subject);
    return 0;
  }
  if (subject.Surface.Type == DATA_TYPE_UINT16) {
    RequireSame(subject, "png");
    return 0;
  }
  switch (data[2] / 16 % 4) {
  case 0:
    RequireSame(subject, "png");
    break;
  case 1:
    RequireSame(subject, "bmp");
    break;
  case 2:
    RequireSame(subject, "tga");
    break;
  default:
    RequireNearJpeg(subject);
    break;
  }
  return 0;
}
