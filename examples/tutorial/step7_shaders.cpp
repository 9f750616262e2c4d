// Step 7: a shader pair with a uniform and an attribute: a flag in the wind, with a hole.

#include <cmath>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

using Zx3D::TRenderCPU;

struct TFlagVertex : Zx3D::TStdVertexShaderCPU { // the standard stage, given a vertex that sways
  unsigned GetUniformLocation(const char*) const override { return 0; } // "time", the only one
  unsigned GetAttribLocation(const char*) const override { return 1; }  // "sway", likewise
  void Execute(TRenderCPU::VAR_DATA* v) override {
    vec_t_<double, 4>& at = m_Render->m_CurVertex;
    at.y += m_Render->m_CurAttrib[1].x * std::sin(5 * at.x - m_Render->m_Uniforms[0].x);
    TStdVertexShaderCPU::Execute(v);   // slot 0 is the position, slot 1 the colour
    (*v)[2] = m_Render->m_CurTexCoord; // without a texture nothing else wants slot 2
  }
};

struct TFlagFragment : Zx3D::TFragmentShaderCPU {                         // runs for every pixel
  unsigned GetUniformLocation(const char*) const override { return ~0u; } // it has none
  void Begin() override {}
  void End() override {}
  bool IsCalcDepth() const override { return false; }
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    const vec_t_<double, 4>& at = (*v)[2]; // between those of the vertices
    f->Color = {0.9, std::fmod(5 * at.y, 2) < 1 ? 0.9 : 0.2, 0.2, 1};
    return std::hypot(1.5 * (at.x - 0.5), at.y - 0.5) > 0.2; // false leaves the pixel as it was
  }
};

static bool Draw(const char* picture) {
  TFlagVertex vertex;
  TFlagFragment fragment;
  Zx3D::TProgramCPU program;
  program.SetShaderV(&vertex), program.SetShaderF(&fragment);
  TRenderCPU gl; // behind the program, since it holds it: what is made last goes first
  if (!gl.Create(320, 240, nullptr)) {
    return false;
  }
  gl.ClearColor(0.10f, 0.10f, 0.15f, 1.0f), gl.Clear(GL_COLOR_BUFFER_BIT);
  gl.SetProgram(&program);
  gl.Uniform(int(program.GetUniformLocation("time")), 0.7);
  gl.Begin(GL_TRIANGLE_STRIP);
  for (int i = 0; i < 120; ++i) {
    const double s = i / 2 / 59.0, t = 1 - i % 2; // fixed at the pole, free at the other end
    gl.VertexAttrib(int(program.GetAttribLocation("sway")), 0.2 * s);
    gl.TexCoord2d(s, t), gl.Vertex2d(1.6 * s - 0.8, t - 0.5);
  }
  gl.End();
  return gl.GetError() == GL_NO_ERROR && SaveImage(picture, nullptr, *gl.GetColorSurface());
}

int main(int argc, char** argv) {
  Init_ZxCore3D();
  const bool ok = Draw(argc > 1 ? argv[1] : "step7_shaders.png");
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
