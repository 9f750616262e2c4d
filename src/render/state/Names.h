#pragma once

#include <cstddef>
#include <vector>

namespace Zx3D {

/// Puts a new object into each of `n` free entries of a table, the lowest first, and stores their
/// names in `ids`: the place, counted from 1. Throws `std::bad_alloc`, having given out none.
template <class T> void GiveNames(std::vector<T*>* table, int n, unsigned int* ids) {
  std::size_t at = 0;
  int given = 0;
  try {
    for (; given < n; ++given, ++at) {
      while (at < table->size() && (*table)[at] != nullptr) {
        ++at;
      }
      if (at == table->size()) {
        table->push_back(nullptr);
      }
      (*table)[at] = new T{};
      ids[given] = static_cast<unsigned int>(at + 1);
    }
  } catch (...) { // the caller could not tell which ones it got
    while (given > 0) {
      T*& entry = (*table)[ids[--given] - 1];
      delete entry;
      entry = nullptr;
    }
    throw;
  }
}

} // namespace Zx3D
