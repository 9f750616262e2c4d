#include "ImageOrientation.h"

namespace zx::image {

namespace {

// Numbers of EXIF data, in the byte order that they tell, and none beyond their end.
class TTiff {
public:
  explicit TTiff(TBytesView bytes)
      : m_Bytes(bytes), m_IsLittle(bytes.Size >= 2 && bytes.Data[0] == 'I' && bytes.Data[1] == 'I'),
        m_IsBig(bytes.Size >= 2 && bytes.Data[0] == 'M' && bytes.Data[1] == 'M') {}

  bool IsSound() const { return m_IsLittle || m_IsBig; }

  // 0 behind the end: that is neither a tag nor a count of anything.
  std::uint32_t Number16(std::size_t at) const {
    if (at > m_Bytes.Size || m_Bytes.Size - at < 2) {
      return 0;
    }
    const std::uint8_t* p = m_Bytes.Data + at;
    return m_IsBig ? static_cast<std::uint32_t>(p[0] << 8 | p[1]) : Get16(p);
  }
  std::uint32_t Number32(std::size_t at) const {
    const std::uint32_t first = Number16(at);
    const std::uint32_t second = Number16(at + 2);
    return m_IsBig ? first << 16 | second : second << 16 | first;
  }

private:
  TBytesView m_Bytes;
  bool m_IsLittle;
  bool m_IsBig;
};

constexpr std::uint32_t kTiffMagic = 42;
constexpr std::uint32_t kOrientationTag = 0x112;
constexpr std::uint32_t kShort = 3;
constexpr std::size_t kEntrySize = 12;

} // namespace

// One 16-bit number out of the first directory: count, then entries of tag, type, count and value.
int ExifOrientation(TBytesView tiff) {
  const TTiff numbers(tiff);
  if (!numbers.IsSound() || numbers.Number16(2) != kTiffMagic) {
    return 1;
  }
  const std::size_t directory = numbers.Number32(4);
  const std::size_t entries = numbers.Number16(directory);
  for (std::size_t i = 0; i < entries; ++i) {
    const std::size_t entry = directory + 2 + i * kEntrySize;
    if (numbers.Number16(entry) == kOrientationTag) {
      const std::uint32_t value = numbers.Number16(entry + 8);
      const bool isOne = numbers.Number16(entry + 2) == kShort && numbers.Number32(entry + 4) == 1;
      return isOne && value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
    }
  }
  return 1;
}

TWalk WalkOf(int width, int height, int orientation) {
  const std::ptrdiff_t w = width;
  const std::ptrdiff_t h = height;
  switch (orientation) {
  case 2: // mirrored left to right
    return {width, height, w - 1, -1, w};
  case 3: // upside down
    return {width, height, w * h - 1, -1, -w};
  case 4: // mirrored top to bottom
    return {width, height, (h - 1) * w, 1, -w};
  case 5: // mirrored at the falling diagonal
    return {height, width, 0, w, 1};
  case 6: // to be turned right
    return {height, width, (h - 1) * w, -w, 1};
  case 7: // mirrored at the rising diagonal
    return {height, width, w * h - 1, -w, -1};
  case 8: // to be turned left
    return {height, width, w - 1, w, -1};
  default:
    return {width, height, 0, 1, w};
  }
}

} // namespace zx::image
