// Step 2: a camera, a light, and a ring to look at.

#include <cmath>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

static void Ring(TZxGL& gl, double radius, double thickness) {
  const double turn = 2 * 3.141592653589793;
  for (int i = 0; i < 64; ++i) {
    gl.Begin(GL_TRIANGLE_STRIP);
    for (int j = 0; j <= 32; ++j) {
      for (int side = 1; side >= 0; --side) {
        const double a = turn * (i + side) / 64, b = turn * j / 32;
        const double out = radius + thickness * std::cos(b);
        gl.Normal3d(std::cos(a) * std::cos(b), std::sin(a) * std::cos(b), std::sin(b));
        gl.Vertex3d(std::cos(a) * out, std::sin(a) * out, thickness * std::sin(b));
      }
    }
    gl.End();
  }
}

static bool Draw(const char* picture) {
  Zx3D::TRenderCPU gl;
  if (!gl.Create(320, 240, nullptr)) {
    return false;
  }
  gl.ClearColor(0.10f, 0.10f, 0.15f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.Enable(GL_DEPTH_TEST); // nearer pixels win

  gl.MatrixMode(GL_PROJECTION); // the lens: what lies 1 to 20 units in front of the camera
  gl.Frustum(-0.4, 0.4, -0.3, 0.3, 1, 20);
  gl.MatrixMode(GL_MODELVIEW);

  const float toLight[4] = {-1, 2, 3, 0}; // w = 0: a direction, here as the camera sees it
  const float color[4] = {0.9f, 0.5f, 0.2f, 1}, gloss[4] = {0.8f, 0.8f, 0.8f, 1};
  gl.Enable(GL_LIGHTING);
  gl.Enable(GL_LIGHT0);
  gl.Lightfv(GL_LIGHT0, GL_POSITION, toLight);
  gl.Materialfv(GL_FRONT, GL_AMBIENT_AND_DIFFUSE, color);
  gl.Materialfv(GL_FRONT, GL_SPECULAR, gloss);
  gl.Materialf(GL_FRONT, GL_SHININESS, 40);

  gl.Translated(0, 0, -6); // the camera looks along -z, so this moves the ring before it
  gl.Rotated(-55, 1, 0.3, 0);
  Ring(gl, 1.3, 0.5);
  return gl.GetError() == GL_NO_ERROR && SaveImage(picture, nullptr, *gl.GetColorSurface());
}

int main(int argc, char** argv) {
  Init_ZxCore3D();
  const bool ok = Draw(argc > 1 ? argv[1] : "step2_light.png");
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
