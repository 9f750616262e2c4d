// Step 3: a texture, sampled nearest (left) and bilinear (right), on walls that recede.

#include <vector>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

static void MakeChecks(TZxGL& gl) {
  const int size = 16;
  std::vector<unsigned char> texels; // red, green, blue; the first row is the lowest
  for (int y = 0; y < size; ++y) {
    for (int x = 0; x < size; ++x) {
      const bool dark = (x / 2 + y / 2) % 2 != 0;
      texels.push_back(dark ? 60 : 250);
      texels.push_back(static_cast<unsigned char>(dark ? 70 : 255 - 8 * y));
      texels.push_back(static_cast<unsigned char>(dark ? 40 + 12 * x : 200));
    }
  }
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGB, size, size, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
}

static void Wall(TZxGL& gl, double x, double fromZ, double toZ) {
  gl.Begin(GL_QUADS);
  gl.TexCoord2d(0, 0), gl.Vertex3d(x, -1, fromZ);
  gl.TexCoord2d(3, 0), gl.Vertex3d(x, -1, toZ); // beyond 1 the texture repeats
  gl.TexCoord2d(3, 1), gl.Vertex3d(x, 1, toZ);
  gl.TexCoord2d(0, 1), gl.Vertex3d(x, 1, fromZ);
  gl.End();
}

static bool Draw(const char* picture) {
  Zx3D::TRenderCPU gl;
  if (!gl.Create(320, 240, nullptr)) {
    return false;
  }
  gl.ClearColor(0.10f, 0.10f, 0.15f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.MatrixMode(GL_PROJECTION);
  gl.Frustum(-0.4, 0.4, -0.3, 0.3, 0.5, 20);
  MakeChecks(gl);
  gl.Enable(GL_TEXTURE_2D);
  gl.TexFilter2D(GL_NEAREST, GL_NEAREST);
  Wall(gl, -1, -1, -7);
  gl.TexFilter2D(GL_LINEAR, GL_LINEAR);
  Wall(gl, 1, -7, -1);
  return gl.GetError() == GL_NO_ERROR && SaveImage(picture, nullptr, *gl.GetColorSurface());
}

int main(int argc, char** argv) {
  Init_ZxCore3D();
  const bool ok = Draw(argc > 1 ? argv[1] : "step3_texture.png");
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
