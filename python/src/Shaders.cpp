#include "Shaders.h"

#include <cstring>

#include "Context.h"

namespace zxpy {

namespace {

using Zx3D::TFragmentShaderCPU;
using Zx3D::TProgramCPU;
using Zx3D::TShaderCPU;
using Zx3D::TStdFragmentShaderCPU;
using Zx3D::TStdVertexShaderCPU;
using Zx3D::TVertexShaderCPU;
using TVarData = TRenderCPU::VAR_DATA;
using TFsData = TRenderCPU::FS_DATA;

static_assert(sizeof(TVarData) == 8 * 4 * sizeof(double));

// --- Records

// The slots of a record as an array that the shader is handed. It is used again for the next vertex
// or fragment unless the shader kept it.
class TSlots {
public:
  double* Renew() {
    if (!m_Array || m_Array.ref_count() > 1) {
      m_Array = TDoubles(std::vector<py::ssize_t>{8, 4});
    }
    return m_Array.mutable_data();
  }
  const TDoubles& Array() const { return m_Array; }

private:
  TDoubles m_Array = py::reinterpret_steal<TDoubles>(nullptr);
};

TDoubles ColorOf(const py::object& self) {
  return TDoubles(std::vector<py::ssize_t>{4}, &self.cast<TFsData&>().Color.x, self);
}

void CheckSlots(const TDoubles& slots) {
  if (slots.ndim() != 2 || slots.shape(0) != 8 || slots.shape(1) != 4) {
    throw py::type_error("a record of slots is an array of 8 by 4 doubles");
  }
}

// --- Shaders that are written in Python

[[noreturn]] void RaiseMissing(const char* name) {
  throw py::type_error(std::string("the shader has no ") + name);
}

// What Python's shaders answer by a number: -1 is no location.
unsigned int LocationOf(const py::object& answer) {
  return static_cast<unsigned int>(answer.cast<long>());
}

// `Std` tells whether the base can do all of this by itself.
template <class TBase, bool Std> class TPyShader : public TBase {
public:
  void Begin() override {
    const py::gil_scoped_acquire lock;
    if (const py::function f = py::get_override(static_cast<const TBase*>(this), "Begin")) {
      f();
    } else if constexpr (Std) {
      TBase::Begin();
    } else if constexpr (std::is_base_of_v<TVertexShaderCPU, TBase>) {
      RaiseMissing("Begin");
    }
  }
  void End() override {
    const py::gil_scoped_acquire lock;
    if (const py::function f = py::get_override(static_cast<const TBase*>(this), "End")) {
      f();
    }
  }
  unsigned int GetUniformLocation(const char* name) const override {
    return Location("GetUniformLocation", name);
  }

protected:
  unsigned int Location(const char* operation, const char* name) const {
    const py::gil_scoped_acquire lock;
    const py::function f = py::get_override(static_cast<const TBase*>(this), operation);
    return f ? LocationOf(f(name)) : 0xFFFFFFFF;
  }

  py::function Override(const char* name) const {
    return py::get_override(static_cast<const TBase*>(this), name);
  }

  TSlots m_Slots;
};

template <class TBase, bool Std> class TPyVertexShader : public TPyShader<TBase, Std> {
public:
  unsigned int GetAttribLocation(const char* name) const override {
    return this->Location("GetAttribLocation", name);
  }
  void Execute(TVarData* v) override {
    const py::gil_scoped_acquire lock;
    const py::function f = this->Override("Execute");
    if (!f) {
      if constexpr (Std) {
        TBase::Execute(v);
        return;
      } else {
        RaiseMissing("Execute");
      }
    }
    std::memcpy(this->m_Slots.Renew(), v, sizeof *v);
    f(this->m_Slots.Array());
    std::memcpy(v, this->m_Slots.Array().data(), sizeof *v);
  }
};

template <class TBase, bool Std> class TPyFragmentShader : public TPyShader<TBase, Std> {
public:
  bool IsCalcDepth() const override {
    const py::gil_scoped_acquire lock;
    const py::function f = this->Override("IsCalcDepth");
    return f && f().template cast<bool>();
  }
  bool Execute(TVarData* v, TFsData* f) override {
    const py::gil_scoped_acquire lock;
    const py::function execute = this->Override("Execute");
    if (!execute) {
      if constexpr (Std) {
        return TBase::Execute(v, f);
      } else {
        RaiseMissing("Execute");
      }
    }
    std::memcpy(this->m_Slots.Renew(), v, sizeof *v);
    if (!m_Fragment || m_Fragment.ref_count() > 1) {
      m_Fragment = py::cast(new TFsData, py::return_value_policy::take_ownership);
    }
    auto& fragment = m_Fragment.cast<TFsData&>();
    fragment = *f;
    const py::object kept = execute(this->m_Slots.Array(), m_Fragment);
    std::memcpy(v, this->m_Slots.Array().data(), sizeof *v);
    f->Color = fragment.Color;
    f->Depth = fragment.Depth;
    if (!py::isinstance<py::bool_>(kept)) {
      throw py::type_error("Execute of a fragment shader returns True, or False to discard");
    }
    return kept.cast<bool>();
  }

private:
  py::object m_Fragment;
};

// --- The standard shaders called from Python

TRenderCPU* Installed(const TShaderCPU& shader) {
  if (shader.m_Render == nullptr) {
    throw std::runtime_error("the shader is not installed in a context");
  }
  return shader.m_Render;
}

void RunVertex(TStdVertexShaderCPU& self, TDoubles slots) {
  CheckSlots(slots);
  Installed(self);
  TVarData record;
  std::memcpy(&record, slots.data(), sizeof record);
  self.TStdVertexShaderCPU::Execute(&record);
  std::memcpy(slots.mutable_data(), &record, sizeof record);
}

bool RunFragment(TStdFragmentShaderCPU& self, TDoubles slots, TFsData& fragment) {
  CheckSlots(slots);
  Installed(self);
  TVarData record;
  std::memcpy(&record, slots.data(), sizeof record);
  return self.TStdFragmentShaderCPU::Execute(&record, &fragment);
}

// --- Programs

// A program that keeps the Python halves of its shaders alive.
class TPyProgram : public TProgramCPU {
public:
  py::object V;
  py::object F;
};

template <class TShader>
void SetShader(TProgramCPU& self, const py::object& shader, py::object TPyProgram::*place,
               void (TProgramCPU::*set)(TShader*)) {
  auto* const program = dynamic_cast<TPyProgram*>(&self);
  if (program == nullptr) {
    throw std::runtime_error("a context's own program can't be changed");
  }
  (program->*set)(shader.is_none() ? nullptr : shader.cast<TShader*>());
  program->*place = shader.is_none() ? py::object() : shader;
}

template <class TShader>
py::object ShaderObject(const TProgramCPU& self, const py::object TPyProgram::*place,
                        TShader* shader) {
  const auto* const program = dynamic_cast<const TPyProgram*>(&self);
  if (program != nullptr && (program->*place).ptr() != nullptr) {
    return program->*place;
  }
  if (shader == nullptr) {
    return py::none();
  }
  shader->AddRef();
  return py::cast(TRefPtr<TShader>(shader));
}

TPyProgram* ProgramOf(PyObject* self) {
  auto* const instance = reinterpret_cast<py::detail::instance*>(self);
  const py::detail::value_and_holder v = instance->get_value_and_holder();
  return v.holder_constructed() ? dynamic_cast<TPyProgram*>(v.value_ptr<TProgramCPU>()) : nullptr;
}

int TraverseProgram(PyObject* self, visitproc visit, void* arg) {
  Py_VISIT(Py_TYPE(self));
  if (const TPyProgram* const program = ProgramOf(self)) {
    Py_VISIT(program->V.ptr());
    Py_VISIT(program->F.ptr());
  }
  return 0;
}

int ClearProgram(PyObject* self) {
  if (TPyProgram* const program = ProgramOf(self)) {
    program->SetShaderV(nullptr);
    program->SetShaderF(nullptr);
    const py::object goneV = std::exchange(program->V, py::object());
    const py::object goneF = std::exchange(program->F, py::object());
  }
  return 0;
}

py::object RenderOf(const TShaderCPU& shader) {
  return shader.m_Render != nullptr ? ContextObject(shader.m_Render) : py::none();
}

void BindRecords(py::module_& m) {
  py::class_<TFsData>(m, "FS_DATA", Doc("TRenderCPU::FS_DATA"))
      .def(py::init([] {
        return TFsData{{0, 0, 0, 0}, 0, 0, true, 0.0F};
      }))
      .def_property(
          "Color", ColorOf,
          [](TFsData& self, const std::array<double, 4>& color) {
            self.Color = {color[0], color[1], color[2], color[3]};
          },
          "Red, green, blue, alpha, written by the shader; 0 to 1 is what the colour write "
          "expects.")
      .def_readonly("X", &TFsData::X, "Pixel column.")
      .def_readonly("Y", &TFsData::Y, "Pixel row.")
      .def_readonly("FrontFacing", &TFsData::FrontFacing,
                    "Of the last triangle piece; points and lines leave it.")
      .def_readwrite("Depth", &TFsData::Depth,
                     "Window depth; written by the shader if its `IsCalcDepth` says so.");
}

void BindPrograms(py::module_& m) {
  const auto setup = [](PyHeapTypeObject* type) {
    type->ht_type.tp_flags |= Py_TPFLAGS_HAVE_GC;
    type->ht_type.tp_traverse = TraverseProgram;
    type->ht_type.tp_clear = ClearProgram;
  };
  py::class_<TProgramCPU, TRefPtr<TProgramCPU>>(m, "TProgramCPU", py::custom_type_setup(setup),
                                                Doc("TProgramCPU"))
      .def(py::init([] { return TRefPtr<TProgramCPU>(new TPyProgram); }))
      .def(
          "SetShaderV",
          [](TProgramCPU& self, const py::object& shader) {
            SetShader<TVertexShaderCPU>(self, shader, &TPyProgram::V, &TProgramCPU::SetShaderV);
          },
          py::arg("shader"), Doc("TProgramCPU::SetShaderV"))
      .def(
          "SetShaderF",
          [](TProgramCPU& self, const py::object& shader) {
            SetShader<TFragmentShaderCPU>(self, shader, &TPyProgram::F, &TProgramCPU::SetShaderF);
          },
          py::arg("shader"), Doc("TProgramCPU::SetShaderV"))
      .def(
          "GetShaderV",
          [](const TProgramCPU& self) {
            return ShaderObject(self, &TPyProgram::V, self.GetShaderV());
          },
          "The held vertex shader, or None.")
      .def(
          "GetShaderF",
          [](const TProgramCPU& self) {
            return ShaderObject(self, &TPyProgram::F, self.GetShaderF());
          },
          "The held fragment shader, or None.")
      .def("GetAttribLocation", &TProgramCPU::GetAttribLocation, py::arg("name"),
           Doc("TProgramCPU::GetAttribLocation"))
      .def("GetUniformLocation", &TProgramCPU::GetUniformLocation, py::arg("name"),
           Doc("TProgramCPU::GetUniformLocation"))
      .def("GetSubroutineIndex", &TProgramCPU::GetSubroutineIndex, py::arg("shadertype"),
           py::arg("name"), Doc("TProgramCPU::GetSubroutineIndex"));
}

// Asked by the class that Python derived from: an object is known by its address and that class.
template <class TPy, class TBase> bool TakePython(TShaderCPU* shader, py::object* out) {
  auto* const own = dynamic_cast<TPy*>(shader);
  if (own != nullptr) {
    *out = py::cast(static_cast<TBase*>(own), py::return_value_policy::reference);
  }
  return own != nullptr;
}

} // namespace

py::object PythonShader(TShaderCPU* shader) {
  py::object found;
  TakePython<TPyVertexShader<TVertexShaderCPU, false>, TVertexShaderCPU>(shader, &found) ||
      TakePython<TPyVertexShader<TStdVertexShaderCPU, true>, TStdVertexShaderCPU>(shader, &found) ||
      TakePython<TPyFragmentShader<TFragmentShaderCPU, false>, TFragmentShaderCPU>(shader,
                                                                                   &found) ||
      TakePython<TPyFragmentShader<TStdFragmentShaderCPU, true>, TStdFragmentShaderCPU>(shader,
                                                                                        &found);
  return found;
}

py::object ProgramObject(TProgramCPU* program) {
  if (program == nullptr) {
    return py::none();
  }
  program->AddRef();
  return py::cast(TRefPtr<TProgramCPU>(program));
}

void BindShaders(py::module_& m) {
  BindRecords(m);
  py::class_<TShaderCPU, TRefPtr<TShaderCPU>>(m, "TShaderCPU", Doc("TShaderCPU"))
      .def("GetUniformLocation", &TShaderCPU::GetUniformLocation, py::arg("name"),
           "A location by name; 0xFFFFFFFF is no location. A shader of yours may return -1.")
      .def_property_readonly("m_Render", RenderOf,
                             "The context in which the shader is installed; None outside.");

  using TPyV = TPyVertexShader<TVertexShaderCPU, false>;
  py::class_<TVertexShaderCPU, TShaderCPU, TPyV, TRefPtr<TVertexShaderCPU>>(
      m, "TVertexShaderCPU",
      "The vertex stage: derive from it and give `Begin` and `Execute`.\n\n`Begin()` must fill the "
      "slot table of `self.m_Render` (`m_VarColor` and so on) with `m_VarCount`, 1 to 8. "
      "`Execute(v)` must fill the live slots of the record `v`, an array of 8 by 4 doubles; slot 0 "
      "is the clip-space position. Current values (`m_CurVertex`, `m_CurAttrib`, ...) and uniforms "
      "(`m_Uniforms`) are those of `self.m_Render`. Called once a vertex from Python, it is slow.")
      .def(py::init_alias<>())
      .def("GetAttribLocation", &TVertexShaderCPU::GetAttribLocation, py::arg("name"),
           "A location by name; 0xFFFFFFFF is no location. A shader of yours may return -1.");
  using TPyStdV = TPyVertexShader<TStdVertexShaderCPU, true>;
  py::class_<TStdVertexShaderCPU, TVertexShaderCPU, TPyStdV, TRefPtr<TStdVertexShaderCPU>>(
      m, "TStdVertexShaderCPU", Doc("TStdVertexShaderCPU"))
      .def(py::init<>())
      .def(
          "Begin",
          [](TStdVertexShaderCPU& self) {
            Installed(self);
            self.TStdVertexShaderCPU::Begin();
          },
          Doc("TStdVertexShaderCPU::Begin"))
      .def("End", [](TStdVertexShaderCPU&) {})
      .def("Execute", RunVertex, py::arg("v").noconvert(), "Computes one vertex.");

  using TPyF = TPyFragmentShader<TFragmentShaderCPU, false>;
  py::class_<TFragmentShaderCPU, TShaderCPU, TPyF, TRefPtr<TFragmentShaderCPU>>(
      m, "TFragmentShaderCPU",
      "The fragment stage: derive from it and give `Execute`.\n\n`Execute(v, f)` computes "
      "`f.Color` "
      "from the interpolated slots `v`, an array of 8 by 4 doubles, and `f.Depth` if "
      "`IsCalcDepth()`, which is asked once at installation, returns True. It returns True, or "
      "False to discard the fragment. Called once a fragment from Python, it is slow.")
      .def(py::init_alias<>())
      .def("IsCalcDepth", &TFragmentShaderCPU::IsCalcDepth,
           "Whether `Execute` writes the depth; asked once, when the shader is installed.");
  using TPyStdF = TPyFragmentShader<TStdFragmentShaderCPU, true>;
  py::class_<TStdFragmentShaderCPU, TFragmentShaderCPU, TPyStdF, TRefPtr<TStdFragmentShaderCPU>>(
      m, "TStdFragmentShaderCPU", Doc("TStdFragmentShaderCPU"))
      .def(py::init<>())
      .def("Begin", [](TStdFragmentShaderCPU&) {})
      .def("End", [](TStdFragmentShaderCPU&) {})
      .def("Execute", RunFragment, py::arg("v").noconvert(), py::arg("f"),
           "Computes one fragment; always True.");
  BindPrograms(m);
}

} // namespace zxpy
