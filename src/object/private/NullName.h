#pragma once

#include <stdexcept>

namespace Zx3D {

/// Raises `std::logic_error` for a null name. The text is the same with every standard library,
/// which words the failure of `std::string(nullptr)` in its own way.
inline void CheckNameE(const char* name) {
  if (name == nullptr) {
    throw std::logic_error("basic_string::_M_construct null not valid");
  }
}

} // namespace Zx3D
