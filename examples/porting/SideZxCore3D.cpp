// porting_zxcore3d FOLDER: draws every scene by the library, each into a PPM file of its name.

#include <ZxCore3D/ZxCore3D.h>

#include "Differences.h"
#include "NewCalls.h"
#include "WritePpm.h"

namespace {

struct TContext : Zx3D::TRenderCPU {
  static constexpr bool kOpenGL = false;
};

bool DrawScene(const porting::TScene& scene, const std::string& folder) {
  TContext gl;
  if (!gl.Create(porting::kPicture / scene.Zoom, porting::kPicture / scene.Zoom, nullptr)) {
    return false;
  }
  gl.ClearColor(0.1f, 0.1f, 0.15f, 1);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT | GL_STENCIL_BUFFER_BIT);
  gl.Normal3d(0, 0, 1); // OpenGL starts with it
  if (std::strcmp(scene.Name, "texture-matrix") == 0) {
    porting::MakeChecks(gl);
  }
  const bool known = porting::DrawDifference(gl, scene.Name) || porting::DrawNew(gl, scene.Name);
  // The one scene that is wrong on purpose.
  const unsigned int expected =
      std::strcmp(scene.Name, "texture-0") == 0 ? GL_INVALID_VALUE : GL_NO_ERROR;
  return known && gl.GetError() == expected &&
         porting::WritePpm(folder + "/" + scene.Name + ".ppm", gl.GetColorSurface()->Data,
                           gl.m_Width);
}

} // namespace

int main(int argc, char** argv) {
  Init_ZxCore3D();
  bool ok = argc == 2;
  for (const porting::TScene& scene : porting::kScenes) {
    if (ok && !DrawScene(scene, argv[1])) {
      std::fprintf(stderr, "porting_zxcore3d: %s failed\n", scene.Name);
      ok = false;
    }
  }
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
