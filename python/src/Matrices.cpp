#include "Matrices.h"

#include "Context.h"

namespace zxpy {

namespace {

using T = TRenderCPU;
using py::arg;

constexpr const char* kShape =
    "\n\nAn array of 4 by 4 is [row, column]; sixteen values in a row stand column by column.";

template <class F> void DefMatrix(TContextClass& c, const char* name, F&& apply) {
  static_assert(std::is_invocable_v<F, T&, const MAT4<double>&>);
  const std::string doc = std::string(Doc(std::string("TRenderCPU::") + name)) + kShape;
  c.def(
      name,
      [name, apply](TContext& self, const py::object& m) {
        const auto matrix = MatrixFrom<MAT4<double>, 4>(m);
        self.Run(name, [&] { apply(self.GL, matrix); });
      },
      doc.c_str(), arg("m"));
}

template <class F> void DefMatrixF(TContextClass& c, const char* name, F&& apply) {
  DefMatrix(c, name, [apply](T& gl, const MAT4<double>& m) {
    MAT4<float> narrow;
    for (std::size_t i = 0; i < 16; ++i) {
      narrow[i] = static_cast<float>(m[i]);
    }
    apply(gl, narrow);
  });
}

// --- Uniforms

// The form for `count` values of one kind.
template <class TValue> void SetUniform(T& gl, int location, const std::vector<TValue>& v) {
  switch (v.size()) {
  case 1:
    return gl.Uniform(location, v[0]);
  case 2:
    return gl.Uniform(location, v[0], v[1]);
  case 3:
    return gl.Uniform(location, v[0], v[1], v[2]);
  case 4:
    return gl.Uniform(location, v[0], v[1], v[2], v[3]);
  default:
    throw py::type_error("Uniform takes 1 to 4 numbers, a matrix of 3 by 3 or one of 4 by 4");
  }
}

bool AreIntegers(const py::sequence& values) {
  for (const py::handle& value : values) {
    if (PyIndex_Check(value.ptr()) == 0) {
      return false;
    }
  }
  return true;
}

int Wrapped(const py::handle& value) {
  const auto wide = py::int_(py::reinterpret_borrow<py::object>(value)).cast<long>();
  if (wide < -0x80000000L || wide > 0xFFFFFFFFL) {
    throw py::value_error("an integer uniform has 32 bits");
  }
  return static_cast<int>(wide);
}

void SetNumbers(T& gl, int location, const py::sequence& values) {
  if (!AreIntegers(values)) {
    std::vector<double> numbers;
    try {
      numbers = values.cast<std::vector<double>>();
    } catch (const py::cast_error&) {
      throw py::type_error("Uniform takes numbers");
    }
    SetUniform(gl, location, numbers);
    return;
  }
  std::vector<int> integers;
  for (const py::handle& value : values) {
    integers.push_back(Wrapped(value));
  }
  SetUniform(gl, location, integers);
}

void SetArray(T& gl, int location, const py::array& array) {
  if (array.ndim() != 2) {
    SetNumbers(gl, location, py::list(array.attr("tolist")()));
  } else if (array.shape(0) == 3) {
    gl.Uniform(location, MatrixFrom<MAT3<double>, 3>(array));
  } else {
    gl.Uniform(location, MatrixFrom<MAT4<double>, 4>(array));
  }
}

void Uniform(TContext& self, long location, const py::args& values) {
  const int place = static_cast<int>(location);
  self.Run("Uniform", [&] {
    if (values.size() != 1) {
      SetNumbers(self.GL, place, values);
    } else if (py::isinstance<py::bool_>(values[0])) {
      self.GL.Uniform(place, values[0].cast<bool>());
    } else if (py::isinstance<py::array>(values[0])) {
      SetArray(self.GL, place, values[0].cast<py::array>());
    } else if (py::isinstance<py::sequence>(values[0])) {
      const auto list = values[0].cast<py::sequence>();
      const bool nested = list.size() > 0 && py::isinstance<py::sequence>(list[0]);
      if (nested) {
        SetArray(self.GL, place, py::array::ensure(list));
      } else {
        SetNumbers(self.GL, place, list);
      }
    } else {
      SetNumbers(self.GL, place, values);
    }
  });
}

template <std::size_t Size>
void DefUniformV(TContextClass& c, const char* name, void (T::*method)(int, const float*)) {
  c.def(
      name,
      [name, method](TContext& self, long location, const std::array<float, Size>& v) {
        self.Run(name, [&] { (self.GL.*method)(static_cast<int>(location), v.data()); });
      },
      Doc("TRenderCPU::Uniform"), arg("location"), arg("v"));
}

} // namespace

void BindMatrices(TContextClass& c) {
  Def(c, "MatrixMode", &T::MatrixMode, arg("mode"));
  Def(c, "PushMatrix", &T::PushMatrix);
  Def(c, "PopMatrix", &T::PopMatrix);
  Def(c, "LoadIdentity", &T::LoadIdentity);
  const auto load = [](T& gl, const auto& m) { gl.LoadMatrix(m); };
  const auto multiply = [](T& gl, const auto& m) { gl.MultMatrix(m); };
  DefMatrix(c, "LoadMatrix", load);
  DefMatrix(c, "LoadMatrixd", load);
  DefMatrixF(c, "LoadMatrixf", load);
  DefMatrix(c, "MultMatrix", multiply);
  DefMatrix(c, "MultMatrixd", multiply);
  DefMatrixF(c, "MultMatrixf", multiply);
  Def(c, "Ortho", &T::Ortho, arg("left"), arg("right"), arg("bottom"), arg("top"), arg("zNear"),
      arg("zFar"));
  Def(c, "Frustum", &T::Frustum, arg("left"), arg("right"), arg("bottom"), arg("top"), arg("zNear"),
      arg("zFar"));
  Def(c, "Translatef", &T::Translatef, arg("x"), arg("y"), arg("z"));
  Def(c, "Translated", &T::Translated, arg("x"), arg("y"), arg("z"));
  Def(c, "Rotatef", &T::Rotatef, arg("angle"), arg("x"), arg("y"), arg("z"));
  Def(c, "Rotated", &T::Rotated, arg("angle"), arg("x"), arg("y"), arg("z"));
  Def(c, "Scalef", &T::Scalef, arg("x"), arg("y"), arg("z"));
  Def(c, "Scaled", &T::Scaled, arg("x"), arg("y"), arg("z"));
  c.def("Uniform", Uniform,
        "Stores into the cell `location` of the uniforms, 32 bytes each: a bool as a byte, 1 to 4 "
        "integers as 32 bits each, 1 to 4 numbers or a vector as doubles, a matrix [row, column] "
        "of 3 by 3 or 4 by 4 column by column, running on into the next cells. A location outside "
        "the 32 cells stores nothing, nor does a matrix that would run past the last.",
        arg("location"));
  DefUniformV<2>(c, "Uniform2", &T::Uniform2);
  DefUniformV<3>(c, "Uniform3", &T::Uniform3);
  DefUniformV<4>(c, "Uniform4", &T::Uniform4);
}

} // namespace zxpy
