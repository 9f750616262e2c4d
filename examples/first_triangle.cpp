#include <ZxCore3D/ZxCore3D.h>

int main(int argc, char** argv) {
  Init_ZxCore3D();
  Zx3D::TRenderCPU gl;
  if (!gl.Create(320, 240, nullptr)) {
    return 1;
  }
  gl.ClearColor(0.1f, 0.1f, 0.15f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.Begin(GL_TRIANGLES);
  gl.Color3f(1, 0, 0), gl.Vertex2f(-0.8f, -0.7f);
  gl.Color3f(0, 1, 0), gl.Vertex2f(0.8f, -0.7f);
  gl.Color3f(0, 0, 1), gl.Vertex2f(0.0f, 0.8f);
  gl.End();
  const bool saved = SaveImage(argc > 1 ? argv[1] : "triangle.png", nullptr, *gl.GetColorSurface());
  Deinit_ZxCore3D();
  return saved ? 0 : 1;
}
