// The other side: OSMesa with llvmpipe on one thread.

#include <cstdlib>

#define GL_GLEXT_PROTOTYPES
#include <GL/osmesa.h>

#include <GL/glext.h> // needs what osmesa.h brings in

#include "Side.h"
#include "Workloads.h"

namespace {

struct TGl {
  void ClearColor(float r, float g, float b, float a) { glClearColor(r, g, b, a); }
  void ColorMask(unsigned char r, unsigned char g, unsigned char b, unsigned char a) {
    glColorMask(r, g, b, a);
  }
  void ClearStencil(int v) { glClearStencil(v); }
  void Clear(unsigned int mask) { glClear(mask); }
  void Hint(unsigned int target, unsigned int mode) { glHint(target, mode); }
  void DepthFunc(unsigned int func) { glDepthFunc(func); }
  void StencilFunc(unsigned int func, int ref, unsigned int mask) {
    glStencilFunc(func, ref, mask);
  }
  void StencilOp(unsigned int a, unsigned int b, unsigned int c) { glStencilOp(a, b, c); }
  void BlendFunc(unsigned int src, unsigned int dst) { glBlendFunc(src, dst); }
  void CullFace(unsigned int mode) { glCullFace(mode); }
  void MatrixMode(unsigned int mode) { glMatrixMode(mode); }
  void LoadIdentity() { glLoadIdentity(); }
  void Translatef(float x, float y, float z) { glTranslatef(x, y, z); }
  void Rotatef(float angle, float x, float y, float z) { glRotatef(angle, x, y, z); }
  void Frustum(double l, double r, double b, double t, double n, double f) {
    glFrustum(l, r, b, t, n, f);
  }
  void Ortho(double l, double r, double b, double t, double n, double f) {
    glOrtho(l, r, b, t, n, f);
  }
  void Begin(unsigned int mode) { glBegin(mode); }
  void End() { glEnd(); }
  void Color4f(float r, float g, float b, float a) { glColor4f(r, g, b, a); }
  void Color4fv(const float* v) { glColor4fv(v); }
  void Normal3fv(const float* v) { glNormal3fv(v); }
  void TexCoord2fv(const float* v) { glTexCoord2fv(v); }
  void Vertex2f(float x, float y) { glVertex2f(x, y); }
  void Vertex3fv(const float* v) { glVertex3fv(v); }
  void GenTextures(int n, unsigned int* ids) { glGenTextures(n, ids); }
  void BindTexture(unsigned int target, unsigned int id) { glBindTexture(target, id); }
  void TexParameteri(unsigned int target, unsigned int name, int v) {
    glTexParameteri(target, name, v);
  }
  void TexImage2D(unsigned int target, int level, int internal, int width, int height, int border,
                  unsigned int format, unsigned int type, const void* pixels) {
    glTexImage2D(target, level, internal, width, height, border, format, type, pixels);
  }
  void TexEnvi(unsigned int target, unsigned int name, int v) { glTexEnvi(target, name, v); }
  void Lightfv(unsigned int light, unsigned int name, const float* v) { glLightfv(light, name, v); }
  void LightModeli(unsigned int name, int v) { glLightModeli(name, v); }
  void Materialf(unsigned int face, unsigned int name, float v) { glMaterialf(face, name, v); }
  void Materialfv(unsigned int face, unsigned int name, const float* v) {
    glMaterialfv(face, name, v);
  }
  void ColorMaterial(unsigned int face, unsigned int mode) { glColorMaterial(face, mode); }
  void EnableClientState(unsigned int array) { glEnableClientState(array); }
  void VertexPointer(int size, unsigned int type, int stride, const void* p) {
    glVertexPointer(size, type, stride, p);
  }
  void NormalPointer(unsigned int type, int stride, const void* p) {
    glNormalPointer(type, stride, p);
  }
  void ColorPointer(int size, unsigned int type, int stride, const void* p) {
    glColorPointer(size, type, stride, p);
  }
  void TexCoordPointer(int size, unsigned int type, int stride, const void* p) {
    glTexCoordPointer(size, type, stride, p);
  }
  void DrawArrays(unsigned int mode, int first, int count) { glDrawArrays(mode, first, count); }
  void DrawElements(unsigned int mode, int count, unsigned int type, const void* indices) {
    glDrawElements(mode, count, type, indices);
  }
  void PixelStorei(unsigned int name, int v) { glPixelStorei(name, v); }
  void WindowPos2i(int x, int y) { glWindowPos2i(x, y); }
  void DrawPixels(int width, int height, unsigned int format, unsigned int type, const void* p) {
    glDrawPixels(width, height, format, type, p);
  }
  void ReadPixels(int x, int y, int width, int height, unsigned int format, unsigned int type,
                  void* p) {
    glReadPixels(x, y, width, height, format, type, p);
  }
  void Finish() { glFinish(); }
};

void Switch(TGl&, unsigned int cap, bool on) { on ? glEnable(cap) : glDisable(cap); }

void WriteDepth(TGl&, bool on) { glDepthMask(on ? GL_TRUE : GL_FALSE); }

class THost {
public:
  using TGl = ::TGl;

  THost() = default;
  THost(const THost&) = delete;
  THost& operator=(const THost&) = delete;
  ~THost() {
    if (m_Context != nullptr) {
      OSMesaDestroyContext(m_Context);
    }
  }

  bool Create() {
    const int attributes[] = {OSMESA_FORMAT,
                              OSMESA_RGBA,
                              OSMESA_DEPTH_BITS,
                              32,
                              OSMESA_STENCIL_BITS,
                              8,
                              OSMESA_PROFILE,
                              OSMESA_COMPAT_PROFILE,
                              0};
    m_Context = OSMesaCreateContextAttribs(attributes, nullptr);
    return m_Context != nullptr && OSMesaMakeCurrent(m_Context, m_Pixels.data(), GL_UNSIGNED_BYTE,
                                                     rivals::kSize, rivals::kSize) == GL_TRUE;
  }

  TGl& Gl() { return m_Gl; }
  unsigned int Error() { return glGetError(); }
  void StartCounters() {}
  void PrintCounters() {}
  static void List(rivals::TScene<TGl>& scene) { rivals::ListWorkloads(scene); }

private:
  TGl m_Gl;
  OSMesaContext m_Context = nullptr;
  std::vector<unsigned char> m_Pixels =
      std::vector<unsigned char>(4 * rivals::kSize * rivals::kSize);
};

} // namespace

int main(int argc, char** argv) {
  setenv("GALLIUM_DRIVER", "llvmpipe", 1);
  setenv("LP_NUM_THREADS", "0", 1);
  return rivals::RunSide<THost>(argc, argv);
}
