#include "Common.h"

#include <cstdio>

#include "Render.h"

namespace zxpy {

namespace {

constexpr const char* kDoc =
    "The same picture every time: a software renderer with an OpenGL 1.x/2.x style interface in "
    "double precision, image files, attributes and streams, numerics and geometry.\n\n"
    "Names are those of the C++ library. Where C++ hands a result out through a pointer beside a "
    "bool, Python gets the result, or None in the place of false.";

// The exception's class, which lives as long as the interpreter.
PyObject*& ErrorClass() {
  static PyObject* errorClass = nullptr;
  return errorClass;
}

PyObject* NewException(py::module_& m, const char* name, PyObject* base, const char* doc) {
  const std::string full = std::string("ZxCore3D.") + name;
  PyObject* const made = PyErr_NewExceptionWithDoc(full.c_str(), doc, base, nullptr);
  if (made == nullptr) {
    throw py::error_already_set();
  }
  m.attr(name) = py::handle(made);
  return made;
}

void BindExceptions(py::module_& m) {
  static PyObject* message = nullptr;
  message = NewException(m, "TZxMessage", PyExc_Exception,
                         "What the library throws: for what was not built, and from operations "
                         "whose names end in `E`. Its text is the message's.");
  ErrorClass() = NewException(m, "GLError", PyExc_Exception,
                              "An error code that an operation reported, on a context that raises "
                              "errors. `Code` is the number.");
  py::register_exception_translator([](std::exception_ptr p) {
    try {
      if (p) {
        std::rethrow_exception(p);
      }
    } catch (const TZxMessage& e) {
      PyErr_SetString(message, e.what());
    }
  });
}

void BindTypes(py::module_& m) {
  py::enum_<DATA_TYPE> type(m, "DATA_TYPE", py::arithmetic(), "The type of a value or component.");
  static constexpr std::pair<const char*, DATA_TYPE> kTypes[] = {
      {"DATA_TYPE_NONE", DATA_TYPE_NONE},   {"DATA_TYPE_BOOL", DATA_TYPE_BOOL},
      {"DATA_TYPE_INT8", DATA_TYPE_INT8},   {"DATA_TYPE_UINT8", DATA_TYPE_UINT8},
      {"DATA_TYPE_INT16", DATA_TYPE_INT16}, {"DATA_TYPE_UINT16", DATA_TYPE_UINT16},
      {"DATA_TYPE_INT32", DATA_TYPE_INT32}, {"DATA_TYPE_UINT32", DATA_TYPE_UINT32},
      {"DATA_TYPE_INT64", DATA_TYPE_INT64}, {"DATA_TYPE_UINT64", DATA_TYPE_UINT64},
      {"DATA_TYPE_FLOAT", DATA_TYPE_FLOAT}, {"DATA_TYPE_DOUBLE", DATA_TYPE_DOUBLE},
      {"DATA_TYPE_REF", DATA_TYPE_REF},     {"DATA_TYPE_STRING", DATA_TYPE_STRING},
  };
  for (const auto& [name, value] : kTypes) {
    type.value(name, value);
  }
  type.export_values();
  py::enum_<DATA_FORMAT> format(m, "DATA_FORMAT", py::arithmetic(),
                                "What a surface's components mean.");
  static constexpr std::pair<const char*, DATA_FORMAT> kFormats[] = {
      {"DATA_FORMAT_NONE", DATA_FORMAT_NONE},
      {"DATA_FORMAT_LUMINANCE", DATA_FORMAT_LUMINANCE},
      {"DATA_FORMAT_LUMINANCE_ALPHA", DATA_FORMAT_LUMINANCE_ALPHA},
      {"DATA_FORMAT_RED", DATA_FORMAT_RED},
      {"DATA_FORMAT_RG", DATA_FORMAT_RG},
      {"DATA_FORMAT_RGB", DATA_FORMAT_RGB},
      {"DATA_FORMAT_RGBA", DATA_FORMAT_RGBA},
      {"DATA_FORMAT_DEPTH", DATA_FORMAT_DEPTH},
      {"DATA_FORMAT_STENCIL", DATA_FORMAT_STENCIL},
  };
  for (const auto& [name, value] : kFormats) {
    format.value(name, value);
  }
  format.export_values();
}

} // namespace

std::string ErrorName(unsigned int code) {
  switch (code) {
  case GL_INVALID_ENUM:
    return "GL_INVALID_ENUM";
  case GL_INVALID_VALUE:
    return "GL_INVALID_VALUE";
  case GL_INVALID_OPERATION:
    return "GL_INVALID_OPERATION";
  case GL_STACK_UNDERFLOW:
    return "GL_STACK_UNDERFLOW";
  default: {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", code);
    return text;
  }
  }
}

void RaiseGLError(unsigned int code, const char* operation) {
  const py::object error = py::handle(ErrorClass())(ErrorName(code) + " in " + operation);
  error.attr("Code") = code;
  PyErr_SetObject(ErrorClass(), error.ptr());
  throw py::error_already_set();
}

} // namespace zxpy

PYBIND11_MODULE(_ZxCore3D, m) {
  using namespace zxpy;
  m.doc() = kDoc;
  m.attr("__version__") = ZX_PYTHON_VERSION;
  // Classes and functions tell where they are found: in the package.
  const py::object own = m.attr("__name__");
  m.attr("__name__") = "ZxCore3D";
  Init_ZxCore3D();
  BindExceptions(m);
  BindTypes(m);
  BindGLValues(m);
  const auto context = DeclareContext(m);
  BindShaders(m);
  BindAttributes(m);
  BindStreams(m);
  BindSurfaces(m);
  BindContext(*context);
  BindDense(m);
  BindGeometry(m);
  m.attr("__name__") = own;
}
