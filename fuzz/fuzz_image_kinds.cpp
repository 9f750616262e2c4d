// Bytes as an image file whose kind the first byte chooses: the marks by which a file is told are
// put in place, and what guards a PNG's chunks is made to fit, so that no change of the bytes ends
// before a decoder.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include <zlib.h>

#include "ImageBytes.h"

namespace {

using TBytes = std::vector<std::uint8_t>;

void Put32(std::uint8_t* at, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) {
    at[i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
  }
}

void AddChunk(const char* name, const std::uint8_t* data, std::size_t size, TBytes* png) {
  const std::size_t at = png->size();
  png->resize(at + 12 + size);
  Put32(png->data() + at, static_cast<std::uint32_t>(size));
  std::memcpy(png->data() + at + 4, name, 4);
  std::copy(data, data + size, png->data() + at + 8);
  const std::size_t guarded = size + 4;
  Put32(png->data() + at + 8 + size,
        static_cast<std::uint32_t>(crc32(0, png->data() + at + 4, static_cast<uInt>(guarded))));
}

// A size of 1 to 16 either way, two bytes that choose depth, colour and interlace out of what there
// is, then chunks: one byte for the name, one for the length, the data. Picture data is compressed
// here.
TBytes Png(const std::uint8_t* data, std::size_t size) {
  static constexpr std::array<const char*, 8> kNames = {"IDAT", "IDAT", "PLTE", "tRNS",
                                                        "eXIf", "gAMA", "sBIT", "IEND"};
  static constexpr std::uint8_t kDepths[8] = {1, 2, 4, 8, 16, 8, 8, 3};
  static constexpr std::uint8_t kColors[8] = {0, 2, 3, 4, 6, 3, 0, 5};
  TBytes png = {0x89, 'P', 'N', 'G', 13, 10, 26, 10};
  const auto byte = [&](std::size_t i) { return i < size ? data[i] : std::uint8_t{0}; };
  std::uint8_t head[13] = {};
  head[3] = static_cast<std::uint8_t>(1 + byte(0) % 16);
  head[7] = static_cast<std::uint8_t>(1 + byte(1) % 16);
  head[8] = kDepths[byte(2) % 8];
  head[9] = kColors[byte(2) / 8 % 8];
  head[12] = static_cast<std::uint8_t>(byte(3) % 5 == 1);
  AddChunk("IHDR", head, sizeof head, &png);
  for (std::size_t at = 4; at + 2 <= size;) {
    const std::size_t length = std::min<std::size_t>(data[at + 1], size - at - 2);
    const char* const name = kNames[data[at] % kNames.size()];
    const std::uint8_t* const from = data + at + 2;
    if (std::strcmp(name, "IDAT") == 0 && data[at] < 128) {
      uLongf packed = compressBound(static_cast<uLong>(length));
      TBytes room(packed);
      compress2(room.data(), &packed, from, static_cast<uLong>(length), 0);
      AddChunk(name, room.data(), packed, &png);
    } else {
      AddChunk(name, from, length, &png);
    }
    at += 2 + length;
  }
  AddChunk("IEND", head, 0, &png);
  return png;
}

// A file with its mark in front of the bytes.
TBytes Marked(const std::string& mark, const std::uint8_t* data, std::size_t size) {
  TBytes file(mark.begin(), mark.end());
  file.insert(file.end(), data, data + size);
  return file;
}

// The width and the height, which would else promise millions of pixels that a few bytes can hold,
// become 0 to 63 either way; the height keeps its sign, by which rows begin at the top.
TBytes Bmp(const std::uint8_t* data, std::size_t size) {
  TBytes file = Marked("BM", data, size);
  file.resize(std::max<std::size_t>(file.size(), 26));
  const bool oldest = file[14] == 12; // 16 bits for each of the two
  const auto bound = [&file](std::size_t at, std::size_t bytes, bool isNegative) {
    const auto most = static_cast<std::uint8_t>(isNegative ? 0xFF : 0);
    file[at] = static_cast<std::uint8_t>(isNegative ? 0xC0 | file[at] : file[at] % 64);
    std::fill_n(file.begin() + static_cast<std::ptrdiff_t>(at) + 1, bytes - 1, most);
  };
  if (oldest) {
    bound(18, 2, false);
    bound(20, 2, false);
  } else {
    bound(18, 4, false);
    bound(22, 4, file[25] >= 0x80);
  }
  return file;
}

// A header that makes sense: kind, bits and a size of 1 to 64 either way out of the first bytes.
TBytes Tga(const std::uint8_t* data, std::size_t size) {
  static constexpr std::uint8_t kKinds[6] = {1, 2, 3, 9, 10, 11};
  static constexpr std::uint8_t kBits[5] = {8, 15, 16, 24, 32};
  TBytes file(data, data + size);
  file.resize(std::max<std::size_t>(file.size(), 18));
  file[2] = kKinds[file[2] % 6];
  file[1] = file[2] % 8 == 1 ? 1 : file[1] & 1;
  file[6] &= 3; // at most 1,023 entries
  file[7] = kBits[file[7] % 5];
  file[12] = static_cast<std::uint8_t>(1 + file[12] % 64);
  file[13] = 0;
  file[14] = static_cast<std::uint8_t>(1 + file[14] % 64);
  file[15] = 0;
  file[16] = file[2] % 8 == 3   ? 8
             : file[2] % 8 == 1 ? kBits[file[16] % 2 * 2]
                                : kBits[1 + file[16] % 4];
  file[17] &= 0x3F;
  return file;
}

TBytes FileOf(unsigned kind, const std::uint8_t* data, std::size_t size) {
  switch (kind) {
  case 0:
    return Png(data, size);
  case 1:
    return Marked({"\xFF\xD8\xFF", 3}, data, size);
  case 2:
    return Bmp(data, size);
  case 3:
    return Tga(data, size);
  case 4:
    return Marked("#?RADIANCE\n", data, size);
  default:
    return Marked(std::string("P") + static_cast<char>('1' + kind % 6), data, size);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1 || size > 2048) {
    return 0;
  }
  const TBytes file = FileOf(data[0] % 11, data + 1, size - 1);
  fuzz_image::LoadTwice(file.data(), file.size());
  return 0;
}
