#include "Page.h"

#include "Arguments.h"

namespace interface_page {

std::vector<TRow> StateRows() {
  return {
      {"Destroy", {ZX_CALL(Destroy())}},
      {"Clear", {ZX_CALL(Clear(true, true, true))}},
      {"ClearColor", {ZX_CALL(ClearColor(1.0f, 1.0f, 1.0f, 1.0f))}},
      {"ClearColor", {ZX_CALL(ClearColor(vec_t_<float, 4>{}))}},
      {"ClearColor", {ZX_CALL(ClearColor(vec_t_<double, 4>{}))}},
      {"ColorMask", {ZX_CALL(ColorMask(1, 1, 1, 1))}},
      {"ClearDepth", {ZX_CALL(ClearDepth(1.0))}},
      {"DepthFunc", {ZX_CALL(DepthFunc(GL_LEQUAL)), ZX_CALL(DepthFunc(0))}},
      {"DepthMask", {ZX_CALL(DepthMask(1))}},
      {"ClearStencil", {ZX_CALL(ClearStencil(1))}},
      {"StencilFunc", {ZX_CALL(StencilFunc(GL_EQUAL, 1, 0xFF)), ZX_CALL(StencilFunc(0, 1, 0xFF))}},
      {"StencilOp",
       {ZX_CALL(StencilOp(GL_KEEP, GL_INCR, GL_DECR)), ZX_CALL(StencilOp(GL_KEEP, 7, GL_KEEP))}},
      {"StencilMask", {ZX_CALL(StencilMask(1))}},
      {"Clear", {ZX_CALL(Clear(GL_COLOR_BUFFER_BIT))}},
      {"Begin", {ZX_CALL(Begin(GL_TRIANGLES)), ZX_CALL(Begin(GL_POLYGON))}},
      {"End", {ZX_CALL(End())}},
      {"PushAttrib", {ZX_CALL(PushAttrib(GL_ALL_ATTRIB_BITS))}},
      {"PopAttrib", {ZX_CALL(PopAttrib())}},
      {"Enable", {ZX_CALL(Enable(GL_BLEND)), ZX_CALL(Enable(GL_ALPHA_TEST))}},
      {"Disable", {ZX_CALL(Disable(GL_BLEND)), ZX_CALL(Disable(GL_ALPHA_TEST))}},
      {"IsEnabled",
       {ZX_CALL(IsEnabled(GL_BLEND)), ZX_CALL(IsEnabled(GL_VERTEX_ARRAY)),
        ZX_CALL(IsEnabled(GL_ALPHA_TEST))}},
      {"AlphaFunc", {ZX_CALL(AlphaFunc(GL_ALWAYS, 0))}},
      {"BlendFunc",
       {ZX_CALL(BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA)), ZX_CALL(BlendFunc(1, 2))}},
      {"PointSize", {ZX_CALL(PointSize(1.0f))}},
      {"LineWidth", {ZX_CALL(LineWidth(1.0f))}},
      {"LineStipple", {ZX_CALL(LineStipple(1, 1))}},
      {"PolygonMode",
       {ZX_CALL(PolygonMode(GL_FRONT, GL_LINE)), ZX_CALL(PolygonMode(0, GL_LINE)),
        ZX_CALL(PolygonMode(GL_FRONT, 0))}},
      {"LightModeli",
       {ZX_CALL(LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1)),
        ZX_CALL(LightModeli(GL_LIGHT_MODEL_AMBIENT, 1))}},
      {"LightModeliv",
       {ZX_CALL(LightModeliv(GL_LIGHT_MODEL_AMBIENT, n4)), ZX_CALL(LightModeliv(0, n4))}},
      {"LightModelf",
       {ZX_CALL(LightModelf(GL_LIGHT_MODEL_TWO_SIDE, 1)),
        ZX_CALL(LightModelf(GL_LIGHT_MODEL_AMBIENT, 1))}},
      {"LightModelfv",
       {ZX_CALL(LightModelfv(GL_LIGHT_MODEL_AMBIENT, f4)), ZX_CALL(LightModelfv(0, f4))}},
      {"Materialf",
       {ZX_CALL(Materialf(GL_FRONT_AND_BACK, GL_SHININESS, 5)),
        ZX_CALL(Materialf(GL_FRONT, GL_DIFFUSE, 5))}},
      {"Materialfv",
       {ZX_CALL(Materialfv(GL_FRONT, GL_DIFFUSE, f4)),
        ZX_CALL(Materialfv(GL_FRONT, GL_POSITION, f4))}},
      {"ColorMaterial",
       {ZX_CALL(ColorMaterial(GL_FRONT, GL_DIFFUSE)), ZX_CALL(ColorMaterial(0, 0))}},
  };
}

} // namespace interface_page
