// porting_osmesa FOLDER: draws every scene by OpenGL, in software, each into a PPM file of its
// name.

#include <cstdlib>

#define GL_GLEXT_PROTOTYPES
#include <GL/osmesa.h>

#include <GL/glext.h> // needs what osmesa.h brings in

#include "Differences.h"
#include "OldCalls.h"
#include "WritePpm.h"

namespace {

/// The calls of the scenes that both sides share.
struct TContext {
  static constexpr bool kOpenGL = true;

  void Enable(unsigned int cap) { glEnable(cap); }
  void Disable(unsigned int cap) { glDisable(cap); }
  void Hint(unsigned int target, unsigned int mode) { glHint(target, mode); }
  void DepthMask(unsigned char on) { glDepthMask(on); }
  void MatrixMode(unsigned int mode) { glMatrixMode(mode); }
  void LoadIdentity() { glLoadIdentity(); }
  void PushMatrix() { glPushMatrix(); }
  void PopMatrix() { glPopMatrix(); }
  void Translated(double x, double y, double z) { glTranslated(x, y, z); }
  void Rotated(double angle, double x, double y, double z) { glRotated(angle, x, y, z); }
  void Scaled(double x, double y, double z) { glScaled(x, y, z); }
  void Frustum(double l, double r, double b, double t, double n, double f) {
    glFrustum(l, r, b, t, n, f);
  }
  void Begin(unsigned int mode) { glBegin(mode); }
  void End() { glEnd(); }
  void Color3d(double r, double g, double b) { glColor3d(r, g, b); }
  void Normal3d(double x, double y, double z) { glNormal3d(x, y, z); }
  void TexCoord2d(double s, double t) { glTexCoord2d(s, t); }
  void Vertex2d(double x, double y) { glVertex2d(x, y); }
  void Vertex3d(double x, double y, double z) { glVertex3d(x, y, z); }
  void Lightf(unsigned int light, unsigned int name, float v) { glLightf(light, name, v); }
  void Lightfv(unsigned int light, unsigned int name, const float* v) { glLightfv(light, name, v); }
  void LightModeli(unsigned int name, int v) { glLightModeli(name, v); }
  void Materialf(unsigned int face, unsigned int name, float v) { glMaterialf(face, name, v); }
  void Materialfv(unsigned int face, unsigned int name, const float* v) {
    glMaterialfv(face, name, v);
  }
  void GenTextures(int n, unsigned int* ids) { glGenTextures(n, ids); }
  void BindTexture(unsigned int target, unsigned int id) { glBindTexture(target, id); }
  void TexParameteri(unsigned int target, unsigned int name, int v) {
    glTexParameteri(target, name, v);
  }
  void TexImage2D(unsigned int target, int level, int internal, int width, int height, int border,
                  unsigned int format, unsigned int type, const void* pixels) {
    glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
    glTexImage2D(target, level, internal, width, height, border, format, type, pixels);
  }
};

bool DrawScene(const porting::TScene& scene, const std::string& folder) {
  const int attributes[] = {OSMESA_FORMAT,
                            OSMESA_RGBA,
                            OSMESA_DEPTH_BITS,
                            24,
                            OSMESA_STENCIL_BITS,
                            8,
                            OSMESA_ACCUM_BITS,
                            16,
                            OSMESA_PROFILE,
                            OSMESA_COMPAT_PROFILE,
                            0};
  const int size = porting::kPicture / scene.Zoom;
  std::vector<unsigned char> pixels(static_cast<std::size_t>(4 * size * size));
  const OSMesaContext context = OSMesaCreateContextAttribs(attributes, nullptr);
  if (context == nullptr ||
      OSMesaMakeCurrent(context, pixels.data(), GL_UNSIGNED_BYTE, size, size) == GL_FALSE) {
    return false;
  }
  glClearColor(0.1f, 0.1f, 0.15f, 1);
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  TContext gl;
  if (std::strcmp(scene.Name, "texture-matrix") == 0) {
    porting::MakeChecks(gl);
  }
  const bool known = porting::DrawDifference(gl, scene.Name) || porting::DrawOld(scene.Name);
  const bool right = known && glGetError() == GL_NO_ERROR;
  glFinish();
  OSMesaDestroyContext(context);
  return right && porting::WritePpm(folder + "/" + scene.Name + ".ppm", pixels.data(), size);
}

} // namespace

int main(int argc, char** argv) {
  setenv("GALLIUM_DRIVER", "llvmpipe", 1);
  setenv("LP_NUM_THREADS", "0", 1);
  bool ok = argc == 2;
  for (const porting::TScene& scene : porting::kScenes) {
    if (ok && !DrawScene(scene, argv[1])) {
      std::fprintf(stderr, "porting_osmesa: %s failed\n", scene.Name);
      ok = false;
    }
  }
  return ok ? 0 : 1;
}
