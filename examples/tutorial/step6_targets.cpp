// Step 6: a picture drawn into a texture, and the depth buffer read back: each on a quad.

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

static void Quad(TZxGL& gl, double left, double bottom, double right, double top, double z) {
  gl.Begin(GL_QUADS);
  gl.TexCoord2d(0, 0), gl.Vertex3d(left, bottom, z);
  gl.TexCoord2d(1, 0), gl.Vertex3d(right, bottom, z);
  gl.TexCoord2d(1, 1), gl.Vertex3d(right, top, z);
  gl.TexCoord2d(0, 1), gl.Vertex3d(left, top, z);
  gl.End();
}

static bool Draw(const char* picture) {
  const int width = 320, height = 240;
  Zx3D::TRenderCPU gl;
  TDataSurface* color = new TDataSurface; // of the context's size, as a target must be
  TDataSurface* grey = new TDataSurface;
  gl.AttachTexture(color), gl.AttachTexture(grey); // textures 1 and 2: the context owns them now
  if (!gl.Create(width, height, nullptr) ||
      !color->Create(width, height, DATA_FORMAT_RGBA, DATA_TYPE_UINT8, 4) ||
      !grey->Create(width, height, DATA_FORMAT_LUMINANCE, DATA_TYPE_UINT8, 1)) {
    return false;
  }
  gl.BindColorSurface(color);
  gl.ClearColor(0.3f, 0.2f, 0.3f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.Enable(GL_DEPTH_TEST);
  gl.MatrixMode(GL_PROJECTION);
  gl.Frustum(-0.4, 0.4, -0.3, 0.3, 1, 9);
  for (int i = 0; i < 7; ++i) {
    gl.Color3d(1 - 0.1 * i, 0.3 + 0.1 * i, 0.15 * i);
    Quad(gl, 0.5 * i - 2, -0.5, 0.5 * i - 0.4, 0.4 + 0.15 * i, -2.5 - i);
  }

  // One float a pixel, row 0 at the bottom: 0 at the near plane, 1 at the far one.
  const float* depth = reinterpret_cast<const float*>(gl.GetDepthSurface()->Data);
  for (int i = 0; i < width * height; ++i) {
    const double distance = 9 / (9 - 8 * depth[i]); // undoes the projection: 1 to 9
    grey->Data[i] = static_cast<unsigned char>(255 - 255 * (distance - 1) / 8);
  }

  gl.BindColorSurface(nullptr); // back to the context's own surface
  gl.ClearColor(0.10f, 0.10f, 0.15f, 1.0f), gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.LoadIdentity(), gl.Color3d(1, 1, 1);
  gl.Enable(GL_TEXTURE_2D);
  gl.BindTexture(GL_TEXTURE_2D, 1);
  Quad(gl, -0.95, -0.05, 0.25, 0.95, 0);
  gl.BindTexture(GL_TEXTURE_2D, 2);
  Quad(gl, -0.25, -0.95, 0.95, 0.05, -0.5);
  return gl.GetError() == GL_NO_ERROR && SaveImage(picture, nullptr, *gl.GetColorSurface());
}

int main(int argc, char** argv) {
  Init_ZxCore3D();
  const bool ok = Draw(argc > 1 ? argv[1] : "step6_targets.png");
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
