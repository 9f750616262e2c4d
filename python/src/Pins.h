#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Common.h"

namespace zxpy {

/// Keeps a block of memory valid for the arrays that look at it.
///
/// Arrays are views of the library's own blocks, and the library frees a block when a surface is
/// resized or destroyed. Before that happens the block is taken out of its surface and put here if
/// an array still looks at it; the last such array frees it. A block is known by its address,
/// whichever surface, texture or buffer holds it by then. All under the interpreter's lock.
class TPin {
public:
  explicit TPin(const void* block) : m_Block(block) {}
  ~TPin();
  TPin(const TPin&) = delete;
  TPin& operator=(const TPin&) = delete;

  TDataSurface Surface;             ///< the block, once it is the pin's own
  std::vector<unsigned char> Bytes; ///< the same, of a buffer

private:
  const void* m_Block;
};

/// The pin of a block, made if there is none.
std::shared_ptr<TPin> PinOf(const void* block);

/// The pin of a block that arrays look at; null if none does.
std::shared_ptr<TPin> FindPin(const void* block);

/// To be called before a surface loses its block: saves a block that arrays look at. The surface is
/// empty afterwards; with `copy` it has the same pixels in a block of its own.
void SaveBlock(TDataSurface* surface, bool copy);

/// The same for a record with a block from `malloc`.
void SaveBlock(DATASURFACE* record, bool copy);

/// The same for a buffer; it always keeps its bytes.
void SaveBlock(std::vector<unsigned char>* bytes);

/// The pixels of a surface as an array: rows from the bottom up, columns, and channels where there
/// is more than one. Empty for a surface without pixels.
py::array PixelsOf(const DATASURFACE& surface);

/// `size` bytes at `block` as an array.
py::array BytesOf(void* block, std::size_t size);

/// Any buffer as an array in rows, without a conversion of its type. Raises `TypeError` for what is
/// no buffer.
py::array PixelArray(const py::object& object, const char* operation);

/// The NumPy type of a component. Raises `TypeError` where there is none.
py::dtype TypeOf(DATA_TYPE type);

} // namespace zxpy
