#include "Context.h"
#include "Matrices.h"

namespace zxpy {

namespace {

using T = TRenderCPU;
using TVec4 = vec_t_<double, 4>;
using py::arg;

// A member of the context as an array, which keeps the context alive.
template <class TMember>
void DefVectors(TContextClass& c, const char* name, TMember T::*member,
                const std::vector<py::ssize_t>& shape, const char* doc) {
  c.def_property_readonly(
      name,
      [member, shape](const py::object& self) {
        return py::array(py::dtype::of<double>(), shape, {},
                         reinterpret_cast<const double*>(&(self.cast<TContext&>().GL.*member)),
                         self);
      },
      doc);
}

void DefMatrixField(TContextClass& c, const char* name, MAT4<double> T::*member, const char* doc) {
  c.def_property_readonly(
      name,
      [member](const py::object& self) {
        py::array m = MatrixArray((self.cast<TContext&>().GL.*member).m, 4, self);
        m.attr("setflags")(arg("write") = false);
        return m;
      },
      doc);
}

void DefSlot(TContextClass& c, const char* name, int T::*member, int least, int most,
             const char* doc) {
  c.def_property(
      name, [member](const TContext& self) { return self.GL.*member; },
      [member, name, least, most](TContext& self, int value) {
        if (value < least || value > most) {
          throw py::value_error(std::string(name) + " is " + std::to_string(least) + " to " +
                                std::to_string(most));
        }
        self.GL.*member = value;
      },
      doc);
}

void BindSlots(TContextClass& c) {
  DefSlot(c, "m_VarPosition", &T::m_VarPosition, 0, 0, "Slot of the position.");
  DefSlot(c, "m_VarColor", &T::m_VarColor, -1, 7, "Slot of the front colour; -1 is none.");
  DefSlot(c, "m_VarSecondary", &T::m_VarSecondary, -1, 7,
          "Slot of the front specular colour; -1 is none.");
  DefSlot(c, "m_VarBackColor", &T::m_VarBackColor, -1, 7, "Slot of the back colour; -1 is none.");
  DefSlot(c, "m_VarBackSecondary", &T::m_VarBackSecondary, -1, 7,
          "Slot of the back specular colour; -1 is none.");
  DefSlot(c, "m_VarTexCoord", &T::m_VarTexCoord, -1, 7,
          "Slot of the texture coordinate; -1 is none.");
  DefSlot(c, "m_VarCount", &T::m_VarCount, 1, 8, "Live slots of a record.");
}

void BindValues(TContextClass& c) {
  DefVectors(c, "m_Uniforms", &T::m_Uniforms, {32, 4},
             "The cells of the uniforms, as doubles; integers stand raw at the start of a cell.");
  DefVectors(c, "m_CurAttrib", &T::m_CurAttrib, {8, 4}, "The current generic attributes.");
  DefVectors(c, "m_CurVertex", &T::m_CurVertex, {4}, "The vertex submitted last.");
  DefVectors(c, "m_CurNormal", &T::m_CurNormal, {4}, "The current normal.");
  DefVectors(c, "m_CurColor", &T::m_CurColor, {4}, "The current colour.");
  DefVectors(c, "m_CurTexCoord", &T::m_CurTexCoord, {4}, "The current texture coordinate.");
  DefMatrixField(c, "m_ModelView", &T::m_ModelView,
                 "The modelview matrix [row, column], read-only.");
  DefMatrixField(c, "m_Projection", &T::m_Projection,
                 "The projection matrix [row, column], read-only.");
  DefMatrixField(c, "m_ModelViewProjection", &T::m_ModelViewProjection,
                 "Projection times modelview [row, column], read-only.");
  c.def_property_readonly(
      "m_Width", [](const TContext& self) { return self.GL.m_Width; }, "Columns of the surfaces.");
  c.def_property_readonly(
      "m_Height", [](const TContext& self) { return self.GL.m_Height; }, "Rows of the surfaces.");
  c.def_property_readonly(
      "m_Created", [](const TContext& self) { return self.GL.m_Created; },
      "Whether the context has surfaces.");
  c.def_property_readonly(
      "m_InBeginEnd", [](const TContext& self) { return self.GL.m_InBeginEnd; },
      "Whether a primitive mode is open.");
  c.def_property_readonly(
      "m_CalcDepth", [](const TContext& self) { return self.GL.m_CalcDepth; },
      "The fragment shader's `IsCalcDepth`.");
}

// --- Surfaces

void BindColorSurface(TContext& self, const py::object& surface) {
  TDataSurface* const bound = surface.is_none() ? nullptr : surface.cast<TSurface&>().Get();
  self.CheckIdle("BindColorSurface");
  const py::object before = self.ColorSurface; // alive until the other one is bound
  self.ColorSurface = surface.is_none() ? py::object() : surface;
  self.Run("BindColorSurface", [&] { self.GL.BindColorSurface(bound); });
}

void SetDrawBuffer(TContext& self, const py::object& surface) {
  DATASURFACE* const buffer = surface.is_none() ? nullptr : surface.cast<TSurface&>().Get();
  self.Run("SetDrawBuffer", [&] { self.GL.SetDrawBuffer(buffer); });
  if (self.GL.m_DrawBuffer == buffer) {
    self.DrawBuffer = surface.is_none() ? py::object() : surface;
  }
}

void BindTargets(TContextClass& c) {
  c.def(
      "BindColorSurface", BindColorSurface,
      "Draws into a `TDataSurface` in the place of the context's own colour surface; None goes "
      "back. The context keeps it alive as long as it is bound. It is to have four bytes a pixel. "
      "One of another size reports `GL_INVALID_VALUE` and is bound all the same: pixels outside "
      "its block are then not written.",
      arg("surface").none(true));
  c.def("SetDrawBuffer", SetDrawBuffer,
        "Takes every fragment's colour, unquantised and without mask or blending, in the place of "
        "the colour surface: a `TDataSurface` of 1 or 4 floats or doubles a pixel, of the "
        "context's size; anything else is ignored. None goes back.",
        arg("surface").none(true));
  const auto surface = [&c](const char* name, TDataSurface* (T::*get)()) {
    c.def(
        name, [get](TContext& self) { return self.SurfaceOf((self.GL.*get)()); },
        "The surface drawn to, as a `TDataSurface`; None on a context that isn't created. After a "
        "resize or `Destroy` the object has the old pixels, and belongs to nobody else.");
  };
  surface("GetColorSurface", &T::GetColorSurface);
  surface("GetDepthSurface", &T::GetDepthSurface);
  surface("GetStencilSurface", &T::GetStencilSurface);
}

} // namespace

void BindFields(TContextClass& c) {
  BindTargets(c);
  BindSlots(c);
  BindValues(c);
}

} // namespace zxpy
