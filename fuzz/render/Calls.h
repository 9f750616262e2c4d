#pragma once

#include <ZxBaseKit/TZxMessage.h>

#include "ArrayCalls.h"
#include "StateCalls.h"
#include "TargetCalls.h"
#include "TextureCalls.h"

// Bytes as drawing calls. What stays the caller's duty is kept by those who make them: memory
// handed to a call reaches as far as the call reads or writes, arrays do not dangle, surfaces
// outlive their binding.

namespace fuzz_render {

using TCalls = void (*)(TWorld& w);

/// One call of either context.
inline void Step(TWorld& w) {
  static constexpr TCalls kCalls[32] = {
      Life,     Targets,  Switches, Switches, Switches, Matrices, Matrices,     Lights,
      Lights,   Textures, Textures, Textures, Arrays,   Arrays,   Buffers,      Buffers,
      Draw,     Draw,     Pixels,   Pixels,   Queries,  Programs, SharedMemory, SharedMemory,
      Vertices, Vertices, Vertices, Vertices, Vertices, Vertices, Vertices,     Vertices};
  const unsigned int kind = w.In.Byte();
  w.R = w.Context(kind >= 192);
  try {
    kCalls[kind % 32](w);
  } catch (const TZxMessage& message) {
    w.Tell(message.what(), message.GetText().size());
  }
}

} // namespace fuzz_render
