// Bytes as drawing calls on two contexts, in whatever order: nothing outside the surfaces and the
// memory that belongs to a call is touched.

#include <cstddef>
#include <cstdint>

#include "render/Calls.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) {
    return 0; // long inputs find nothing that short ones don't
  }
  fuzz_render::TWorld world(data, size, false);
  while (!world.In.IsEmpty()) {
    fuzz_render::Step(world);
  }
  return 0;
}
