#include "Render.h"
#include "Context.h"
#include "Shaders.h"

namespace zxpy {

namespace {

using py::arg;

TContext* ContextOf(PyObject* self) {
  auto* const instance = reinterpret_cast<py::detail::instance*>(self);
  const py::detail::value_and_holder v = instance->get_value_and_holder();
  return v.holder_constructed() ? v.value_ptr<TContext>() : nullptr;
}

// A context and its shaders often refer to each other: the collector has to see it.
int Traverse(PyObject* self, visitproc visit, void* arg) {
  Py_VISIT(Py_TYPE(self));
  const TContext* const context = ContextOf(self);
  return context != nullptr ? context->Traverse(visit, arg) : 0;
}

int Clear(PyObject* self) {
  if (TContext* const context = ContextOf(self)) {
    context->Clear();
  }
  return 0;
}

void Setup(PyHeapTypeObject* type) {
  type->ht_type.tp_flags |= Py_TPFLAGS_HAVE_GC;
  type->ht_type.tp_traverse = Traverse;
  type->ht_type.tp_clear = Clear;
}

void BindLife(TContextClass& c) {
  c.def(py::init([](bool raiseErrors) {
          auto context = std::make_unique<TContext>();
          context->RaiseErrors = raiseErrors;
          return context;
        }),
        arg("RaiseErrors") = false, "A context without surfaces.");
  c.def_readwrite("RaiseErrors", &TContext::RaiseErrors,
                  "Whether an operation that reports an error code raises `GLError`. The code is "
                  "then not left for `GetError`. Off at first, as the library is.");
  c.def("Create", &TContext::Create, arg("width"), arg("height"), arg("share") = nullptr,
        "Makes the surfaces, `width` by `height` pixels, all bytes 0, and installs the standard "
        "shaders. `share` is a context whose textures this one is to share. False, leaving the "
        "context as it was, if it is created already, a size is below 1, or memory is exhausted.");
  c.def("SetSize", &TContext::SetSize, arg("width"), arg("height"),
        "New surfaces of another size; a bound colour surface is unbound. What was handed out of "
        "the old ones keeps the old pixels. False if not created or a size is below 1; when "
        "memory is exhausted the context is then no longer created.");
  c.def("Destroy", &TContext::Destroy,
        "Gives back surfaces, textures, buffers and shaders; what was handed out of them stays "
        "valid. Matrices, lights, switches and the pending error survive, and `Create` can be "
        "called again.");
  c.def(
      "_Share",
      [](TContext& self, TContext& other) {
        self.CheckIdle("_Share");
        other.CheckIdle("_Share");
        return self.GL._Share(&other.GL);
      },
      arg("other"), Doc("TRenderCPU::_Share"));
  c.def(
      "GetSize",
      [](const TContext& self) -> py::object {
        vec_t_<int, 2> size = {};
        return self.GL.GetSize(&size) ? py::object(py::make_tuple(size.x, size.y)) : py::none();
      },
      "Width and height of the surfaces; None on a context that isn't created.");
  c.def(
      "MakeCurrent",
      [](TContext& self) { return self.Run("MakeCurrent", [&] { return self.GL.MakeCurrent(); }); },
      "Makes the context current; False if it isn't created. Being current gates no drawing.");
  c.def(
      "IsCurrent", [](const TContext& self) { return self.GL.IsCurrent(); },
      "Whether the context is current.");
  c.def(
      "DoneCurrent",
      [](TContext& self) { self.Run("DoneCurrent", [&] { self.GL.DoneCurrent(); }); },
      "Ends being current.");
}

void BindProgram(TContextClass& c) {
  c.def("SetProgram", &TContext::SetProgram, arg("program").none(true),
        "Installs the shaders that the program holds now, and keeps them alive; None restores the "
        "standard pair.");
  c.def(
      "GetProgram",
      [](TContext& self) {
        return self.Program.ptr() != nullptr ? self.Program : ProgramObject(self.GL.m_Program);
      },
      "The program in force; None on a context that isn't created.");
}

} // namespace

std::unique_ptr<TContextClass> DeclareContext(py::module_& m) {
  return std::make_unique<TContextClass>(m, "TRenderCPU", py::custom_type_setup(Setup),
                                         Doc("TRenderCPU"));
}

void BindContext(TContextClass& c) {
  BindLife(c);
  BindProgram(c);
  BindState(c);
  BindVertices(c);
  BindMatrices(c);
  BindArrays(c);
  BindBufferObjects(c);
  BindTextures(c);
  BindFields(c);
}

} // namespace zxpy
