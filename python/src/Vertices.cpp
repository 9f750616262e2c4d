#include "Context.h"

namespace zxpy {

namespace {

using T = TRenderCPU;
using py::arg;

// Whether the next vertex completes a primitive, which is then drawn.
bool Completes(const T& gl) {
  switch (gl.m_PrimitiveMode) {
  case GL_LINES:
  case GL_LINE_LOOP:
  case GL_LINE_STRIP:
    return gl.m_Pending >= 1;
  case GL_TRIANGLES:
    return gl.m_Pending >= 2;
  case GL_QUADS:
    return gl.m_Pending >= 3;
  default: // a point, or a strip or fan, of which any vertex may
    return true;
  }
}

// A vertex: the lock is let go only where something is drawn.
template <class F> void Submit(TContext& self, const char* name, F&& f) {
  if (Completes(self.GL)) {
    self.Draw(name, f);
  } else {
    self.Run(name, f);
  }
}

template <class... A> void DefVertex(TContextClass& c, const char* name, void (T::*method)(A...)) {
  c.def(
      name,
      [name, method](TContext& self, A... a) {
        Submit(self, name, [&] { (self.GL.*method)(a...); });
      },
      Doc(std::string("TRenderCPU::") + name));
}

// The form that reads `Size` values from a pointer.
template <std::size_t Size, class TValue>
void DefVertexV(TContextClass& c, const char* name, void (T::*method)(const TValue*)) {
  c.def(
      name,
      [name, method](TContext& self, const std::array<TValue, Size>& v) {
        Submit(self, name, [&] { (self.GL.*method)(v.data()); });
      },
      Doc(std::string("TRenderCPU::") + name), arg("v"));
}

template <std::size_t Size, class TValue>
void DefV(TContextClass& c, const char* name, void (T::*method)(const TValue*)) {
  c.def(
      name,
      [name, method](TContext& self, const std::array<TValue, Size>& v) {
        self.Run(name, [&] { (self.GL.*method)(v.data()); });
      },
      Doc(std::string("TRenderCPU::") + name), arg("v"));
}

// The colours, which are no operations of the context's own class.
template <class... A>
void DefColor(TContextClass& c, const char* name, void (T::*method)(A...), const char* own) {
  c.def(
      name,
      [name, method](TContext& self, A... a) { self.Run(name, [&] { (self.GL.*method)(a...); }); },
      Doc(std::string("TRenderCPU::") + own));
}

template <std::size_t Size, class TValue>
void DefColorV(TContextClass& c, const char* name, void (T::*method)(const TValue*),
               const char* own) {
  c.def(
      name,
      [name, method](TContext& self, const std::array<TValue, Size>& v) {
        self.Run(name, [&] { (self.GL.*method)(v.data()); });
      },
      Doc(std::string("TRenderCPU::") + own), arg("v"));
}

void BindColors(TContextClass& c) {
  DefColor(c, "Color3ub", &T::_Color3ub, "_Color3ub");
  DefColorV<3>(c, "Color3ubv", &T::_Color3ubv, "_Color3ub");
  DefColor(c, "Color3f", &T::_Color3f, "_Color3ub");
  DefColorV<3>(c, "Color3fv", &T::_Color3fv, "_Color3ub");
  DefColor(c, "Color3d", &T::_Color3d, "_Color3ub");
  DefColorV<3>(c, "Color3dv", &T::_Color3dv, "_Color3ub");
  DefColor(c, "Color4ub", &T::_Color4ub, "_Color3ub");
  DefColorV<4>(c, "Color4ubv", &T::_Color4ubv, "_Color3ub");
  DefColor(c, "Color4f", &T::_Color4f, "_Color3ub");
  DefColorV<4>(c, "Color4fv", &T::_Color4fv, "_Color3ub");
  DefColor(c, "Color4d", &T::_Color4d, "_Color3ub");
  DefColorV<4>(c, "Color4dv", &T::_Color4dv, "_Color3ub");
}

void BindCurrent(TContextClass& c) {
  Def(c, "Normal3f", &T::Normal3f, arg("x"), arg("y"), arg("z"));
  DefV<3>(c, "Normal3fv", &T::Normal3fv);
  Def(c, "Normal3d", &T::Normal3d, arg("x"), arg("y"), arg("z"));
  DefV<3>(c, "Normal3dv", &T::Normal3dv);
  Def(c, "TexCoord2f", &T::TexCoord2f, arg("s"), arg("t"));
  DefV<2>(c, "TexCoord2fv", &T::TexCoord2fv);
  Def(c, "TexCoord2d", &T::TexCoord2d, arg("s"), arg("t"));
  DefV<2>(c, "TexCoord2dv", &T::TexCoord2dv);
  Def(c, "TexCoord3f", &T::TexCoord3f, arg("s"), arg("t"), arg("r"));
  DefV<3>(c, "TexCoord3fv", &T::TexCoord3fv);
  Def(c, "TexCoord3d", &T::TexCoord3d, arg("s"), arg("t"), arg("r"));
  DefV<3>(c, "TexCoord3dv", &T::TexCoord3dv);
  Def(c, "TexCoord4f", &T::TexCoord4f, arg("s"), arg("t"), arg("r"), arg("q"));
  DefV<4>(c, "TexCoord4fv", &T::TexCoord4fv);
  Def(c, "TexCoord4d", &T::TexCoord4d, arg("s"), arg("t"), arg("r"), arg("q"));
  DefV<4>(c, "TexCoord4dv", &T::TexCoord4dv);
  Def(c, "MultiTexCoord2f", &T::MultiTexCoord2f, arg("unit"), arg("s"), arg("t"));
  Def(c, "MultiTexCoord2d", &T::MultiTexCoord2d, arg("unit"), arg("s"), arg("t"));
  Def(c, "MultiTexCoord3f", &T::MultiTexCoord3f, arg("unit"), arg("s"), arg("t"), arg("r"));
  Def(c, "MultiTexCoord3d", &T::MultiTexCoord3d, arg("unit"), arg("s"), arg("t"), arg("r"));
}

void BindVertexForms(TContextClass& c) {
  DefVertex(c, "Vertex2i", &T::Vertex2i);
  DefVertexV<2>(c, "Vertex2iv", &T::Vertex2iv);
  DefVertex(c, "Vertex2f", &T::Vertex2f);
  DefVertexV<2>(c, "Vertex2fv", &T::Vertex2fv);
  DefVertex(c, "Vertex2d", &T::Vertex2d);
  DefVertexV<2>(c, "Vertex2dv", &T::Vertex2dv);
  DefVertex(c, "Vertex3i", &T::Vertex3i);
  DefVertexV<3>(c, "Vertex3iv", &T::Vertex3iv);
  DefVertex(c, "Vertex3f", &T::Vertex3f);
  DefVertexV<3>(c, "Vertex3fv", &T::Vertex3fv);
  DefVertex(c, "Vertex3d", &T::Vertex3d);
  DefVertexV<3>(c, "Vertex3dv", &T::Vertex3dv);
  DefVertex(c, "Vertex4f", &T::Vertex4f);
  DefVertexV<4>(c, "Vertex4fv", &T::Vertex4fv);
  DefVertex(c, "Vertex4d", &T::Vertex4d);
  DefVertexV<4>(c, "Vertex4dv", &T::Vertex4dv);
}

// --- Generic attributes

void VertexAttrib(TContext& self, long index, const std::vector<double>& v) {
  const int place = static_cast<int>(index);
  const auto set = [&] {
    switch (v.size()) {
    case 1:
      self.GL.VertexAttrib(place, v[0]);
      break;
    case 2:
      self.GL.VertexAttrib(place, vec_t_<double, 2>{v[0], v[1]});
      break;
    case 3:
      self.GL.VertexAttrib(place, vec_t_<double, 3>{v[0], v[1], v[2]});
      break;
    case 4:
      self.GL.VertexAttrib(place, vec_t_<double, 4>{v[0], v[1], v[2], v[3]});
      break;
    default:
      throw py::type_error("VertexAttrib takes 1 to 4 numbers");
    }
  };
  if (place == 0) {
    Submit(self, "VertexAttrib", set);
  } else {
    self.Run("VertexAttrib", set);
  }
}

} // namespace

void BindVertices(TContextClass& c) {
  DefDraw(c, "Begin", &T::Begin, arg("mode"));
  DefDraw(c, "End", &T::End);
  BindColors(c);
  BindCurrent(c);
  BindVertexForms(c);
  c.def(
      "VertexAttrib",
      [](TContext& self, long index, const py::args& values) {
        const bool list = values.size() == 1 && py::isinstance<py::sequence>(values[0]);
        std::vector<double> numbers;
        try {
          numbers = (list ? py::object(values[0]) : py::object(values)).cast<std::vector<double>>();
        } catch (const py::cast_error&) {
          throw py::type_error("VertexAttrib takes numbers");
        }
        VertexAttrib(self, index, numbers);
      },
      Doc("TRenderCPU::VertexAttrib"), arg("index"));
}

} // namespace zxpy
