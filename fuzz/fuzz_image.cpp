// Bytes as an image file of whatever kind they look like: a sound record, or false and why, and the
// same pixels each time.

#include <cstddef>
#include <cstdint>

#include "ImageBytes.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size <= std::size_t{1} << 14) {
    fuzz_image::LoadTwice(data, size);
  }
  return 0;
}
