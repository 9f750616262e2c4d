#pragma once

#include <memory>

#include "Context.h"

namespace zxpy {

/// Someone's memory, which stays where it is as long as this is held.
class THeldBuffer {
public:
  explicit THeldBuffer(const py::handle& object, int flags) {
    if (PyObject_GetBuffer(object.ptr(), &View, flags) != 0) {
      throw py::error_already_set();
    }
  }
  ~THeldBuffer() {
    const py::gil_scoped_acquire lock;
    PyBuffer_Release(&View);
  }
  THeldBuffer(const THeldBuffer&) = delete;
  THeldBuffer& operator=(const THeldBuffer&) = delete;

  Py_buffer View = {};
};

/// The name of an object's type.
std::string TypeName(const py::handle& object);

/// Holds a buffer of any type and shape. Raises `TypeError`, which says what `operation` takes, for
/// anything else.
std::shared_ptr<THeldBuffer> Hold(const py::object& object, const char* operation,
                                  const char* takes);

/// Whether a buffer lies in rows without gaps.
inline bool IsContiguous(const Py_buffer& view) { return PyBuffer_IsContiguous(&view, 'C') != 0; }

/// The buffer object of a name; null if there is none.
TRenderCPU::TBuffer* BufferNamed(TRenderCPU& gl, unsigned int id);

} // namespace zxpy
