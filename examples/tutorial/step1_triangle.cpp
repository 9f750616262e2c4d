// Step 1: a triangle.

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

static bool Draw(const char* picture) {
  Zx3D::TRenderCPU gl; // a context, with a colour, a depth and a stencil surface once created
  if (!gl.Create(320, 240, nullptr)) {
    return false;
  }
  gl.ClearColor(0.10f, 0.10f, 0.15f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);

  // Without matrices, x and y run from -1 to 1 across the picture; y points up.
  gl.Begin(GL_TRIANGLES);
  gl.Color3d(1, 0, 0);
  gl.Vertex2d(-0.8, -0.7);
  gl.Color3d(0, 1, 0);
  gl.Vertex2d(0.8, -0.7);
  gl.Color3d(0, 0, 1);
  gl.Vertex2d(0.0, 0.8);
  gl.End();

  // The pixels stand in the surface by now. Had a call failed, its error would wait here.
  return gl.GetError() == GL_NO_ERROR && SaveImage(picture, nullptr, *gl.GetColorSurface());
}

int main(int argc, char** argv) {
  Init_ZxCore3D();
  const bool ok = Draw(argc > 1 ? argv[1] : "step1_triangle.png");
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
