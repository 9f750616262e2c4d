#pragma once

namespace Zx3D {

/// The error code of an index out of range, which no OpenGL enum has.
inline constexpr unsigned int kIndexError = 0xFFFFFFFF;

} // namespace Zx3D
