#pragma once

namespace Zx3D {

/// One open block of the persistent format, held by whoever writes it.
struct STORE_BLOCK {
  unsigned long Pos = 0;  ///< stream position directly behind the block's size field
  unsigned long Size = 0; ///< bytes of payload; 0 until the block ends
};

} // namespace Zx3D
