// Bytes as drawing calls on two contexts, in whatever order: nothing outside the surfaces and the
// memory that belongs to a call is touched.

#include <cstddef>
#include <cstdint>

#include "render/Calls.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > fuzz_render::kMostBytes) {
    return 0;
  }
  fuzz_render::TWorld world(data, size, false);
  while (!world.In.IsEmpty()) {
    fuzz_render::Step(world);
  }
  return 0;
}
