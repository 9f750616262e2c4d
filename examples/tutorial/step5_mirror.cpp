// Step 5: a mirror by the stencil buffer, and blended glass over it.

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

static void Pyramid(TZxGL& gl) {
  const double base[5][2] = {{1, 1}, {1, -1}, {-1, -1}, {-1, 1}, {1, 1}};
  gl.Begin(GL_TRIANGLES);
  for (int i = 0; i < 4; ++i) {
    gl.Color3d(0.9, 0.3 + 0.2 * i, 0.15 * i);
    gl.Vertex3d(0, 2.2, 0);
    gl.Vertex3d(base[i + 1][0], 0.2, base[i + 1][1]);
    gl.Vertex3d(base[i][0], 0.2, base[i][1]);
  }
  gl.End();
}

static void Floor(TZxGL& gl) {
  gl.Color4d(0.3, 0.5, 0.7, 0.6); // 0.6 is how much of what lies below it covers
  gl.Begin(GL_QUADS);
  gl.Vertex3d(-2, 0, 2), gl.Vertex3d(2, 0, 2), gl.Vertex3d(2, 0, -2), gl.Vertex3d(-2, 0, -2);
  gl.End();
}

static bool Draw(const char* picture) {
  Zx3D::TRenderCPU gl;
  if (!gl.Create(320, 240, nullptr)) {
    return false;
  }
  gl.ClearColor(0.10f, 0.10f, 0.15f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  gl.MatrixMode(GL_PROJECTION);
  gl.Frustum(-0.4, 0.4, -0.3, 0.3, 1, 20);
  gl.MatrixMode(GL_MODELVIEW);
  gl.Translated(0, -0.6, -7), gl.Rotated(20, 1, 0, 0), gl.Rotated(30, 0, 1, 0);
  gl.Enable(GL_DEPTH_TEST);

  gl.Enable(GL_STENCIL_TEST); // 1. write 1 into the stencil buffer where the floor is, no more
  gl.StencilFunc(GL_ALWAYS, 1, 0xFF), gl.StencilOp(GL_KEEP, GL_KEEP, GL_REPLACE);
  gl.ColorMask(0, 0, 0, 0), gl.DepthMask(0);
  Floor(gl);
  gl.ColorMask(1, 1, 1, 0), gl.DepthMask(1);

  gl.StencilFunc(GL_EQUAL, 1, 0xFF); // 2. only there, the pyramid upside down
  gl.StencilOp(GL_KEEP, GL_KEEP, GL_KEEP);
  gl.PushMatrix(), gl.Scaled(1, -1, 1), Pyramid(gl), gl.PopMatrix();
  gl.Disable(GL_STENCIL_TEST);

  gl.Enable(GL_BLEND); // 3. the floor over it, and the pyramid itself, whose alpha is 1
  gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  Floor(gl), Pyramid(gl);
  return gl.GetError() == GL_NO_ERROR && SaveImage(picture, nullptr, *gl.GetColorSurface());
}

int main(int argc, char** argv) {
  Init_ZxCore3D();
  const bool ok = Draw(argc > 1 ? argv[1] : "step5_mirror.png");
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
