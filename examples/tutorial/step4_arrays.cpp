// Step 4: a model from arrays: vertices as records in memory, and indices that share them.

#include <cmath>
#include <vector>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

struct TVertex {
  double Position[3], Normal[3], Color[3];
};

static bool Draw(const char* picture) {
  Zx3D::TRenderCPU gl;
  if (!gl.Create(320, 240, nullptr)) {
    return false;
  }
  const int n = 60; // a pond of n by n vertices, 12 units wide
  std::vector<TVertex> vertices;
  std::vector<unsigned short> indices;
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) {
      const double x = 12.0 * i / (n - 1) - 6, z = 12.0 * j / (n - 1) - 6;
      const double r = std::sqrt(x * x + z * z), y = 2.5 * std::sin(2 * r) / (1 + r);
      const double slope = (5 * std::cos(2 * r) - y) / (1 + r); // of y along r
      vertices.push_back({{x, y, z},
                          {-slope * x / r, 1, -slope * z / r},
                          {0.4 + 0.3 * y, 0.55 + 0.2 * y, 0.8 - 0.2 * y}});
      for (int next : {0, n, n + 1, 0, n + 1, 1}) { // two triangles a square
        if (i + 1 < n && j + 1 < n) {
          indices.push_back(static_cast<unsigned short>(j * n + i + next));
        }
      }
    }
  }
  gl.ClearColor(0.10f, 0.10f, 0.15f, 1.0f), gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.MatrixMode(GL_PROJECTION);
  gl.Frustum(-0.4, 0.4, -0.3, 0.3, 1, 30), gl.MatrixMode(GL_MODELVIEW);
  gl.Translated(0, -0.3, -13), gl.Rotated(32, 1, 0, 0), gl.Rotated(25, 0, 1, 0);
  for (unsigned int cap :
       {GL_DEPTH_TEST, GL_NORMALIZE, GL_LIGHTING, GL_LIGHT0, GL_COLOR_MATERIAL}) {
    gl.Enable(cap);
  }
  for (unsigned int array : {GL_VERTEX_ARRAY, GL_NORMAL_ARRAY, GL_COLOR_ARRAY}) {
    gl.EnableClientState(array);
  }
  // Where each value begins, and how many bytes lie between one vertex and the next.
  gl.VertexPointer(3, GL_DOUBLE, sizeof(TVertex), vertices[0].Position);
  gl.NormalPointer(GL_DOUBLE, sizeof(TVertex), vertices[0].Normal);
  gl.ColorPointer(3, GL_DOUBLE, sizeof(TVertex), vertices[0].Color);
  gl.DrawElements(GL_TRIANGLES, int(indices.size()), GL_UNSIGNED_SHORT, indices.data());
  return gl.GetError() == GL_NO_ERROR && SaveImage(picture, nullptr, *gl.GetColorSurface());
}

int main(int argc, char** argv) {
  Init_ZxCore3D();
  const bool ok = Draw(argc > 1 ? argv[1] : "step4_arrays.png");
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
