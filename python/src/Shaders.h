#pragma once

#include "Common.h"

namespace zxpy {

/// Holds a counted object by one of its references. Made from a pointer it takes that reference
/// over.
template <class T> class TRefPtr {
public:
  TRefPtr() = default;
  explicit TRefPtr(T* object) : m_Object(object) {}
  TRefPtr(const TRefPtr& other) : m_Object(other.m_Object) {
    if (m_Object != nullptr) {
      m_Object->AddRef();
    }
  }
  TRefPtr(TRefPtr&& other) noexcept : m_Object(std::exchange(other.m_Object, nullptr)) {}
  TRefPtr& operator=(TRefPtr other) noexcept {
    std::swap(m_Object, other.m_Object);
    return *this;
  }
  ~TRefPtr() {
    if (m_Object != nullptr) {
      m_Object->Release();
    }
  }
  T* get() const { return m_Object; }
  T& operator*() const { return *m_Object; }
  T* operator->() const { return m_Object; }

private:
  T* m_Object = nullptr;
};

/// The Python object of a shader that was made in Python; a null reference for any other, and for
/// null.
py::object PythonShader(Zx3D::TShaderCPU* shader);

/// A program as a Python object; None for null.
py::object ProgramObject(Zx3D::TProgramCPU* program);

} // namespace zxpy

PYBIND11_DECLARE_HOLDER_TYPE(T, zxpy::TRefPtr<T>)
