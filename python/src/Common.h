#pragma once

#include <optional>
#include <string>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <ZxBaseKit/ZxBaseKit.h>
#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/ZxPixelKit.h>

namespace zxpy {

namespace py = pybind11;

/// A writable array of doubles in rows, taken as it is and never converted.
using TDoubles = py::array_t<double, py::array::c_style>;

/// Doubles in rows, converted from whatever converts.
using TAnyDoubles = py::array_t<double, py::array::c_style | py::array::forcecast>;

/// Whatever it is, as text.
inline std::string TextOf(const py::handle& object) {
  return py::cast<std::string>(py::str(object));
}

/// The library's own description of `name`, as it stands in the headers: "TRenderCPU::Begin", or a
/// function's bare name. Empty if there is none.
const char* Doc(const std::string& name);

/// Describes the arguments of an error: "GL_INVALID_ENUM", or the number in hexadecimal.
std::string ErrorName(unsigned int code);

/// Raises `GLError` for `code`, reported by `operation`.
[[noreturn]] void RaiseGLError(unsigned int code, const char* operation);

// Each adds one family to the module.
void BindGLValues(py::module_& m);
void BindSurfaces(py::module_& m);
void BindShaders(py::module_& m);
void BindRender(py::module_& m);
void BindStreams(py::module_& m);
void BindAttributes(py::module_& m);
void BindDense(py::module_& m);
void BindGeometry(py::module_& m);

} // namespace zxpy
