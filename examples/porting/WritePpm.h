#pragma once

#include <cstdio>
#include <string>

namespace porting {

/// Writes pixels of red, green, blue and alpha, the lowest row first, as a binary PPM file.
inline bool WritePpm(const std::string& name, const unsigned char* pixels, int size) {
  FILE* const file = std::fopen(name.c_str(), "wb");
  if (file == nullptr) {
    return false;
  }
  std::fprintf(file, "P6\n%d %d\n255\n", size, size);
  for (int y = size - 1; y >= 0; --y) {
    for (int x = 0; x < size; ++x) {
      std::fwrite(pixels + 4 * (y * size + x), 1, 3, file);
    }
  }
  return std::fclose(file) == 0;
}

} // namespace porting
