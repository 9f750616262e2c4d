#include "Context.h"

namespace zxpy {

namespace {

using T = TRenderCPU;
using py::arg;

// `count` values of what Python gave, as the drawing interface reads them from a pointer.
template <class TValue>
std::array<TValue, 4> Values(const std::vector<TValue>& values, std::size_t count,
                             const char* operation) {
  if (values.size() < count || values.size() > 4) {
    throw py::value_error(std::string(operation) + " reads " + std::to_string(count) +
                          (count == 1 ? " value" : " values") + " for this name, not " +
                          std::to_string(values.size()));
  }
  std::array<TValue, 4> out = {};
  std::copy(values.begin(), values.end(), out.begin());
  return out;
}

std::size_t LightValues(unsigned int pname) {
  switch (pname) {
  case GL_AMBIENT:
  case GL_DIFFUSE:
  case GL_SPECULAR:
  case GL_POSITION:
    return 4;
  case GL_SPOT_DIRECTION:
  case GL_QUADRATIC_ATTENUATION:
    return 3;
  case GL_LINEAR_ATTENUATION:
    return 2;
  default:
    return 1;
  }
}

py::tuple Integers(const int* values, std::size_t count) {
  py::tuple out(count);
  for (std::size_t i = 0; i < count; ++i) {
    out[i] = values[i];
  }
  return out;
}

py::object GetIntegerv(TContext& self, unsigned int pname) {
  constexpr int kNone = -0x7FFFFFF1;
  int values[4] = {kNone, kNone, kNone, kNone};
  self.Read("GetIntegerv", [&] { self.GL.GetIntegerv(pname, values); });
  std::size_t count = 0;
  while (count < 4 && values[count] != kNone) {
    ++count;
  }
  if (count == 0) {
    return py::none();
  }
  return count == 1 ? py::object(py::int_(values[0])) : py::object(Integers(values, count));
}

std::size_t DoubleValues(unsigned int pname) {
  switch (pname) {
  case GL_MODELVIEW_MATRIX:
  case GL_PROJECTION_MATRIX:
  case GL_TEXTURE_MATRIX:
    return 16;
  case GL_CURRENT_COLOR:
  case GL_FOG_COLOR:
  case GL_COLOR_CLEAR_VALUE:
    return 4;
  default:
    return 1;
  }
}

// None where the name is unknown: nothing was written then.
template <class TValue>
py::object GetValues(TContext& self, unsigned int pname, const char* name,
                     void (T::*get)(unsigned int, TValue*)) {
  const std::size_t count = DoubleValues(pname);
  py::array_t<TValue> out(static_cast<py::ssize_t>(count));
  std::fill_n(out.mutable_data(), count, TValue(0));
  const unsigned int before = self.GL.m_Error;
  self.GL.m_Error = 0;
  self.Read(name, [&] { (self.GL.*get)(pname, out.mutable_data()); });
  const bool failed = self.GL.m_Error != 0;
  if (before != 0 || !failed) {
    self.GL.m_Error = before;
  }
  if (failed) {
    return py::none();
  }
  return count == 1 ? py::object(py::float_(static_cast<double>(*out.data()))) : out;
}

py::array GetLight(TContext& self, unsigned int light, unsigned int pname) {
  py::array_t<float> out(4);
  std::fill_n(out.mutable_data(), 4, 0.0F);
  self.Read("GetLight", [&] { self.GL.GetLight(light, pname, out.mutable_data()); });
  return out;
}

void BindTargets(TContextClass& c) {
  Def(c, "ClearColor", py::overload_cast<float, float, float, float>(&T::ClearColor), arg("r"),
      arg("g"), arg("b"), arg("a"));
  c.def(
      "ClearColor",
      [](TContext& self, const std::array<double, 4>& color) {
        self.Run("ClearColor", [&] {
          self.GL.ClearColor(vec_t_<double, 4>{color[0], color[1], color[2], color[3]});
        });
      },
      Doc("TRenderCPU::ClearColor"), arg("color"));
  Def(c, "ColorMask", &T::ColorMask, arg("r"), arg("g"), arg("b"), arg("a"));
  Def(c, "ClearDepth", &T::ClearDepth, arg("depth"));
  Def(c, "DepthFunc", &T::DepthFunc, arg("func"));
  c.def(
      "GetDepthFunc", [](const TContext& self) { return self.GL.GetDepthFunc(); },
      "The comparison given last.");
  Def(c, "DepthMask", &T::DepthMask, arg("on"));
  Def(c, "ClearStencil", &T::ClearStencil, arg("value"));
  Def(c, "StencilFunc", &T::StencilFunc, arg("func"), arg("ref"), arg("mask"));
  Def(c, "StencilOp", &T::StencilOp, arg("fail"), arg("zfail"), arg("zpass"));
  Def(c, "StencilMask", &T::StencilMask, arg("mask"));
  DefDraw(c, "Clear", py::overload_cast<unsigned int>(&T::Clear), arg("mask"));
  DefDraw(c, "Clear", py::overload_cast<bool, bool, bool>(&T::Clear), arg("color"), arg("depth"),
          arg("stencil"));
  Def(c, "Viewport", &T::Viewport, arg("x"), arg("y"), arg("width"), arg("height"));
  Def(c, "Scissor", &T::Scissor, arg("x"), arg("y"), arg("width"), arg("height"));
}

void BindSwitches(TContextClass& c) {
  Def(c, "PushAttrib", &T::PushAttrib, arg("mask"));
  Def(c, "PopAttrib", &T::PopAttrib);
  Def(c, "Enable", &T::Enable, arg("cap"));
  Def(c, "Disable", &T::Disable, arg("cap"));
  DefRead(c, "IsEnabled", &T::IsEnabled, arg("cap"));
  Def(c, "AlphaFunc", &T::AlphaFunc, arg("func"), arg("ref"));
  Def(c, "BlendFunc", &T::BlendFunc, arg("src"), arg("dst"));
  Def(c, "EnableBlend", &T::EnableBlend, arg("on"));
  Def(c, "EnableDepthTest", &T::EnableDepthTest, arg("on"));
  Def(c, "PointSize", &T::PointSize, arg("size"));
  Def(c, "LineWidth", &T::LineWidth, arg("width"));
  Def(c, "LineStipple", &T::LineStipple, arg("factor"), arg("pattern"));
  Def(c, "PolygonMode", &T::PolygonMode, arg("face"), arg("mode"));
  Def(c, "PolygonOffset", &T::PolygonOffset, arg("factor"), arg("units"));
  Def(c, "EnablePolygonOffsetFill", &T::EnablePolygonOffsetFill, arg("on"));
  Def(c, "CullFace", &T::CullFace, arg("mode"));
  Def(c, "FrontFace", &T::FrontFace, arg("mode"));
  Def(c, "EnableCullFace", &T::EnableCullFace, arg("on"));
  Def(c, "ShadeModel", &T::ShadeModel, arg("mode"));
  Def(c, "Hint", &T::Hint, arg("target"), arg("mode"));
  Def(c, "SetPerspectiveCorrectionHint", &T::SetPerspectiveCorrectionHint, arg("hint"));
  DefRead(c, "GetPerspectiveCorrectionHint", &T::GetPerspectiveCorrectionHint);
  Def(c, "DrawBuffer", &T::DrawBuffer, arg("buffer"));
  Def(c, "ReadBuffer", &T::ReadBuffer, arg("buffer"));
}

template <class TValue>
void DefVector(TContextClass& c, const char* name, void (T::*method)(unsigned int, const TValue*),
               unsigned int wide) {
  c.def(
      name,
      [name, method, wide](TContext& self, unsigned int pname, const std::vector<TValue>& v) {
        const auto values = Values(v, pname == wide ? 4 : 1, name);
        self.Run(name, [&] { (self.GL.*method)(pname, values.data()); });
      },
      Doc(std::string("TRenderCPU::") + name), arg("pname"), arg("v"));
}

void BindLights(TContextClass& c) {
  Def(c, "LightModeli", &T::LightModeli, arg("pname"), arg("v"));
  Def(c, "LightModelf", &T::LightModelf, arg("pname"), arg("v"));
  DefVector<int>(c, "LightModeliv", &T::LightModeliv, GL_LIGHT_MODEL_AMBIENT);
  DefVector<float>(c, "LightModelfv", &T::LightModelfv, GL_LIGHT_MODEL_AMBIENT);
  Def(c, "Materialf", &T::Materialf, arg("face"), arg("pname"), arg("v"));
  c.def(
      "Materialfv",
      [](TContext& self, unsigned int face, unsigned int pname, const std::vector<float>& v) {
        const auto values = Values(v, pname == GL_SHININESS ? 1 : 4, "Materialfv");
        self.Run("Materialfv", [&] { self.GL.Materialfv(face, pname, values.data()); });
      },
      Doc("TRenderCPU::Materialfv"), arg("face"), arg("pname"), arg("v"));
  Def(c, "ColorMaterial", &T::ColorMaterial, arg("face"), arg("mode"));
  Def(c, "EnableLight", &T::EnableLight, arg("index"), arg("on"));
  Def(c, "EnableLighting", &T::EnableLighting, arg("on"));
  Def(c, "Lightf", &T::Lightf, arg("light"), arg("pname"), arg("v"));
  c.def(
      "Lightfv",
      [](TContext& self, unsigned int light, unsigned int pname, const std::vector<float>& v) {
        const auto values = Values(v, LightValues(pname), "Lightfv");
        self.Run("Lightfv", [&] { self.GL.Lightfv(light, pname, values.data()); });
      },
      Doc("TRenderCPU::Lightfv"), arg("light"), arg("pname"), arg("v"));
  c.def("GetLight", GetLight, arg("light"), arg("pname"),
        "The stored values as an array of 4 floats, of which those that the name has are set; "
        "attenuations stand at the places where `Lightfv` reads them.");
  Def(c, "Fog", py::overload_cast<unsigned int, int>(&T::Fog), arg("pname"), arg("v"));
  Def(c, "Fog", py::overload_cast<unsigned int, float>(&T::Fog), arg("pname"), arg("v"));
  DefVector<float>(c, "Fog", py::overload_cast<unsigned int, const float*>(&T::Fog), GL_FOG_COLOR);
}

void BindQueries(TContextClass& c) {
  c.def("GetIntegerv", GetIntegerv, arg("pname"),
        "One integer, or a tuple of two or four, by name; None for an unknown name, which reports "
        "`GL_INVALID_ENUM`.");
  c.def(
      "GetFloatv",
      [](TContext& self, unsigned int pname) {
        return GetValues<float>(self, pname, "GetFloatv", &T::GetFloatv);
      },
      arg("pname"),
      "Colour, fog, clear values and matrices by name: a number, or an array of 4 or 16 floats. "
      "None for an unknown name, which reports `GL_INVALID_ENUM`.");
  c.def(
      "GetDoublev",
      [](TContext& self, unsigned int pname) {
        return GetValues<double>(self, pname, "GetDoublev", &T::GetDoublev);
      },
      arg("pname"), "`GetFloatv` in doubles.");
  c.def(
      "GetBooleanv",
      [](TContext& self, unsigned int pname) {
        unsigned char out = 0;
        self.Read("GetBooleanv", [&] { self.GL.GetBooleanv(pname, &out); });
      },
      arg("pname"), Doc("TRenderCPU::GetBooleanv"));
  c.def(
      "GetError", [](TContext& self) { return self.GL.GetError(); }, Doc("TRenderCPU::GetError"));
  DefRead(c, "GetString", &T::GetString, arg("name"));
  c.def("DebugMessageCallback", &TContext::SetDebugCallback, arg("callback").none(true),
        arg("user") = py::none(),
        "`callback(source, type, id, severity, length, text, user)` is called with an empty text "
        "on every error while `GL_DEBUG_OUTPUT` is on, inside the failing call. What it raises is "
        "raised once that call has ended. None takes it away.");
  Def(c, "Flush", &T::Flush);
  Def(c, "Finish", &T::Finish);
}

// Calls that only report: there is nothing for Python to hand in.
void BindRefused(TContextClass& c) {
  Def(c, "GenLists", &T::GenLists, arg("range"));
  Def(c, "DeleteLists", &T::DeleteLists, arg("list"), arg("range"));
  Def(c, "IsList", &T::IsList, arg("list"));
  Def(c, "NewList", &T::NewList, arg("list"), arg("mode"));
  Def(c, "EndList", &T::EndList);
  Def(c, "ListBase", &T::ListBase, arg("base"));
  Def(c, "CallList", &T::CallList, arg("list"));
  Def(c, "InitNames", &T::InitNames);
  Def(c, "LoadName", &T::LoadName, arg("name"));
  Def(c, "PushName", &T::PushName, arg("name"));
  Def(c, "PopName", &T::PopName);
  Def(c, "RenderMode", &T::RenderMode, arg("mode"));
  Def(c, "BindFramebuffer", &T::BindFramebuffer, arg("target"), arg("id"));
}

} // namespace

void BindState(TContextClass& c) {
  BindTargets(c);
  BindSwitches(c);
  BindLights(c);
  BindQueries(c);
  BindRefused(c);
}

} // namespace zxpy
