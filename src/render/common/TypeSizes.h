#pragma once

#include <cstddef>

#include <ZxCore3D/render/GLEnums.h>

namespace Zx3D {

/// Bytes of a number of a type that arrays or indices may have; 0 for another type.
constexpr std::size_t SizeOfType(unsigned int type) {
  switch (type) {
  case GL_UNSIGNED_BYTE:
    return 1;
  case GL_UNSIGNED_SHORT:
    return 2;
  case GL_UNSIGNED_INT:
  case GL_FLOAT:
    return 4;
  case GL_DOUBLE:
    return 8;
  default:
    return 0;
  }
}

} // namespace Zx3D
