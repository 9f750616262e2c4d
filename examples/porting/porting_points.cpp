// The smaller points in which the library differs from OpenGL, as docs/porting.md lists them, each
// tried. Prints which hold, and ends with 1 if one doesn't.

#include <cstdio>
#include <cstring>

#include <ZxCore3D/ZxCore3D.h>

namespace {

using Zx3D::TRenderCPU;

struct TPoint {
  const char* Text;
  bool (*Holds)(TRenderCPU& gl); ///< in a context of 8 by 8 pixels
};

const unsigned char* PixelAt(TRenderCPU& gl, int x, int y) {
  const TDataSurface& surface = *gl.GetColorSurface();
  return surface.Data + y * surface.RowStride + x * surface.PixelStride;
}

bool Is(const unsigned char* pixel, int r, int g, int b, int a) {
  return pixel[0] == r && pixel[1] == g && pixel[2] == b && pixel[3] == a;
}

void Fill(TRenderCPU& gl, double z = 0) {
  gl.Begin(GL_QUADS);
  gl.Vertex3d(-1, -1, z), gl.Vertex3d(1, -1, z), gl.Vertex3d(1, 1, z), gl.Vertex3d(-1, 1, z);
  gl.End();
}

float DepthOf(TRenderCPU& gl) {
  return reinterpret_cast<const float*>(gl.GetDepthSurface()->Data)[0];
}

const TPoint s_points[] = {
    {"the current normal starts as (0, 0, 0)",
     [](TRenderCPU& gl) {
       const float noAmbient[4] = {0, 0, 0, 1};
       gl.LightModelfv(GL_LIGHT_MODEL_AMBIENT, noAmbient);
       gl.Enable(GL_LIGHTING), gl.Enable(GL_LIGHT0);
       Fill(gl);
       const bool dark = Is(PixelAt(gl, 4, 4), 0, 0, 0, 255);
       gl.Normal3d(0, 0, 1);
       Fill(gl);
       return dark && PixelAt(gl, 4, 4)[0] > 200;
     }},
    {"setting one filter sets the other, and a new binding keeps both",
     [](TRenderCPU& gl) {
       const Zx3D::TRenderCPU::TTexSampler& sampler = gl.m_TexUnits[0].Sampler;
       const bool nearest = sampler.m_FilterMin == GL_NEAREST && sampler.m_FilterMag == GL_NEAREST;
       unsigned int ids[2] = {};
       gl.GenTextures(2, ids);
       gl.BindTexture(GL_TEXTURE_2D, ids[0]);
       gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
       gl.BindTexture(GL_TEXTURE_2D, ids[1]);
       return nearest && sampler.m_FilterMin == GL_LINEAR && sampler.m_FilterMag == GL_LINEAR;
     }},
    {"the standard vertex shader takes w as 1",
     [](TRenderCPU& gl) {
       gl.Begin(GL_POINTS);
       gl.Vertex4d(0.6, 0.6, 0, 4); // OpenGL: (0.15, 0.15)
       gl.End();
       return Is(PixelAt(gl, 6, 6), 255, 255, 255, 255) && Is(PixelAt(gl, 4, 4), 0, 0, 0, 0);
     }},
    {"Materialfv(GL_FRONT_AND_BACK, ...) sets the front alone",
     [](TRenderCPU& gl) {
       const float red[4] = {1, 0, 0, 1};
       gl.Materialfv(GL_FRONT_AND_BACK, GL_DIFFUSE, red);
       gl.Materialf(GL_FRONT_AND_BACK, GL_SHININESS, 5);
       return gl.m_MaterialFront.Diffuse.y == 0 && gl.m_MaterialBack.Diffuse.y == 0.8 &&
              gl.m_MaterialBack.Shininess == 5;
     }},
    {"lighting without a light is black, with alpha 0",
     [](TRenderCPU& gl) {
       const float glow[4] = {1, 1, 1, 1};
       gl.Materialfv(GL_FRONT, GL_EMISSION, glow);
       gl.ClearColor(1, 1, 1, 1);
       gl.Clear(GL_COLOR_BUFFER_BIT);
       gl.Enable(GL_LIGHTING);
       Fill(gl);
       return Is(PixelAt(gl, 4, 4), 0, 0, 0, 0);
     }},
    {"Lightfv reads attenuations from v[0], v[1] and v[2]",
     [](TRenderCPU& gl) {
       const float v[3] = {2, 3, 4};
       gl.Lightfv(GL_LIGHT0, GL_CONSTANT_ATTENUATION, v);
       gl.Lightfv(GL_LIGHT0, GL_LINEAR_ATTENUATION, v);
       gl.Lightfv(GL_LIGHT0, GL_QUADRATIC_ATTENUATION, v);
       const bool byPlace =
           gl.m_Lights[0].LinearAttenuation == 3 && gl.m_Lights[0].QuadraticAttenuation == 4;
       gl.Lightf(GL_LIGHT0, GL_LINEAR_ATTENUATION, 7);
       return byPlace && gl.m_Lights[0].LinearAttenuation == 7;
     }},
    {"other blend factors overwrite",
     [](TRenderCPU& gl) {
       gl.ClearColor(1, 0, 0, 1);
       gl.Clear(GL_COLOR_BUFFER_BIT);
       gl.Enable(GL_BLEND);
       gl.BlendFunc(GL_ONE, GL_ONE);
       gl.Color4d(0, 1, 0, 0.2);
       Fill(gl);
       return Is(PixelAt(gl, 4, 4), 0, 255, 0, 51);
     }},
    {"PolygonOffset adds its factor, whatever the slope",
     [](TRenderCPU& gl) {
       gl.PolygonOffset(0.25f, 100);
       gl.Enable(GL_POLYGON_OFFSET_FILL);
       Fill(gl);
       return DepthOf(gl) == 0.75f;
     }},
    {"GL_DECR_WRAP stops at 0",
     [](TRenderCPU& gl) {
       gl.Enable(GL_STENCIL_TEST);
       gl.StencilOp(GL_KEEP, GL_KEEP, GL_DECR_WRAP);
       Fill(gl);
       return gl.GetStencilSurface()->Data[0] == 0;
     }},
    {"ClearColor takes the low byte",
     [](TRenderCPU& gl) {
       gl.ClearColor(1.5f, 0, 0, 1);
       gl.Clear(GL_COLOR_BUFFER_BIT);
       return Is(PixelAt(gl, 0, 0), 127, 0, 0, 255);
     }},
    {"unsigned bytes in VertexPointer become 0 to 1",
     [](TRenderCPU& gl) {
       const unsigned char place[2] = {153, 153}; // 0.6, 0.6
       gl.EnableClientState(GL_VERTEX_ARRAY);
       gl.VertexPointer(2, GL_UNSIGNED_BYTE, 0, place);
       gl.DrawArrays(GL_POINTS, 0, 1);
       return Is(PixelAt(gl, 6, 6), 255, 255, 255, 255);
     }},
    {"the alignment is that of each pixel",
     [](TRenderCPU& gl) {
       const unsigned char pixels[16] = {1, 2, 3, 4, 0, 0, 0, 0, 5, 6, 7, 8, 0, 0, 0, 0};
       gl.PixelStorei(GL_UNPACK_ALIGNMENT, 8);
       gl.DrawPixels(2, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixels);
       return Is(PixelAt(gl, 0, 0), 1, 2, 3, 4) && Is(PixelAt(gl, 1, 0), 5, 6, 7, 8);
     }},
    {"WindowPos2i places DrawPixels, and RasterPos doesn't",
     [](TRenderCPU& gl) {
       const unsigned char pixel[4] = {9, 8, 7, 6};
       gl.WindowPos2i(3, 2);
       gl.RasterPos2i(0, 0);
       gl.DrawPixels(1, 1, GL_RGBA, GL_UNSIGNED_BYTE, pixel);
       return Is(PixelAt(gl, 3, 2), 9, 8, 7, 6);
     }},
    {"stacks have no depth limit, and PopMatrix on an empty one does nothing",
     [](TRenderCPU& gl) {
       for (int i = 0; i < 1000; ++i) {
         gl.PushMatrix();
       }
       gl.Scaled(2, 2, 2);
       for (int i = 0; i < 1001; ++i) {
         gl.PopMatrix();
       }
       return gl.m_ModelView[0] == 1 && gl.GetError() == GL_NO_ERROR;
     }},
};

} // namespace

int main() {
  Init_ZxCore3D();
  bool ok = true;
  for (const TPoint& point : s_points) {
    TRenderCPU gl;
    const bool holds = gl.Create(8, 8, nullptr) && point.Holds(gl);
    std::printf("%-72s %s\n", point.Text, holds ? "holds" : "DOES NOT HOLD");
    ok = ok && holds;
  }
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
