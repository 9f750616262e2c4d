// Shows a host how to see what went wrong: a debug callback that prints, a name for each error
// code, and the thrown message for what was not built. It makes its mistakes on purpose, draws what
// is right in between, and ends with 1 if a report fails to come.

#include <cstdio>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

namespace {

/// What a code of `GetError` means.
const char* ErrorName(unsigned int code) {
  switch (code) {
  case GL_NO_ERROR:
    return "GL_NO_ERROR";
  case GL_INVALID_ENUM:
    return "GL_INVALID_ENUM";
  case GL_INVALID_VALUE:
    return "GL_INVALID_VALUE";
  case GL_INVALID_OPERATION:
    return "GL_INVALID_OPERATION";
  case GL_STACK_OVERFLOW:
    return "GL_STACK_OVERFLOW";
  case GL_STACK_UNDERFLOW:
    return "GL_STACK_UNDERFLOW";
  case GL_OUT_OF_MEMORY:
    return "GL_OUT_OF_MEMORY";
  case 0xFFFFFFFF:
    return "an index out of range";
  default:
    return "an unknown code";
  }
}

/// Takes the pending error, and tells what was going on if there is one.
unsigned int GetErrorNamed(TZxGL& gl, const char* what) {
  const unsigned int code = gl.GetError();
  if (code != GL_NO_ERROR) {
    std::fprintf(stderr, "%s: %s\n", what, ErrorName(code));
  }
  return code;
}

/// What the callback below works on.
struct TErrorLog {
  TZxGL* Context;
  int Count;
};

/// A ready-made debug callback. It runs inside the failing call, so that a breakpoint here shows
/// the guilty line in the stack. The interface says that an error happened and not which; the
/// pending code does, and taking it leaves room for that of the next error.
void PrintError(unsigned int, unsigned int, unsigned int, unsigned int, int, const char*,
                const void* user) {
  TErrorLog* log = static_cast<TErrorLog*>(const_cast<void*>(user));
  ++log->Count;
  std::fprintf(stderr, "error %d: %s\n", log->Count, ErrorName(log->Context->GetError()));
}

void DrawTriangle(TZxGL& gl, float shift) {
  gl.Begin(GL_TRIANGLES);
  gl.Color3f(1.0f, 0.6f, 0.2f);
  gl.Vertex2f(shift - 0.3f, -0.4f);
  gl.Color3f(0.9f, 0.2f, 0.3f);
  gl.Vertex2f(shift + 0.3f, -0.4f);
  gl.Color3f(0.3f, 0.3f, 0.9f);
  gl.Vertex2f(shift, 0.4f);
  gl.End();
}

bool Run(Zx3D::TRenderCPU& gl) {
  gl.ClearColor(0.08f, 0.09f, 0.12f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  bool ok = true;

  // 1. Without a callback an error waits to be asked for; the first one stays.
  gl.DepthFunc(12345);
  gl.LineStipple(1, 0x5555);
  ok = GetErrorNamed(gl, "a depth comparison that does not exist") == GL_INVALID_ENUM && ok;
  DrawTriangle(gl, -0.6f);
  ok = GetErrorNamed(gl, "the first triangle") == GL_NO_ERROR && ok;

  // 2. With one, every error tells of itself.
  TErrorLog log = {&gl, 0};
  gl.DebugMessageCallback(PrintError, &log);
  gl.Enable(GL_DEBUG_OUTPUT);
  gl.LineStipple(1, 0x5555);      // there is no stipple
  gl.AlphaFunc(GL_GREATER, 0.5f); // there is no alpha test
  gl.Begin(77);                   // there is no such mode
  gl.End();
  gl.EnableLight(8, true); // lights are 0 to 7
  ok = log.Count == 4 && ok;
  DrawTriangle(gl, 0.0f);

  // 3. What was not built says so by a message, which also names the operation.
  try {
    gl.ShadeModel(GL_FLAT);
    ok = false;
  } catch (const TZxMessage& message) {
    std::fprintf(stderr, "thrown: %s\n", message.what());
  }
  DrawTriangle(gl, 0.6f);
  gl.DebugMessageCallback(nullptr, nullptr);
  return ok && gl.GetError() == GL_NO_ERROR;
}

} // namespace

int main(int argc, char** argv) {
  const char* name = argc > 1 ? argv[1] : "report_errors.png";
  Init_ZxCore3D();
  bool ok = false;
  {
    Zx3D::TRenderCPU gl;
    ok = gl.Create(480, 240, nullptr) && Run(gl) && SaveImage(name, nullptr, *gl.GetColorSurface());
  }
  Deinit_ZxCore3D();
  if (!ok) {
    std::fprintf(stderr, "report_errors: a report did not come, or %s can't be written\n", name);
  }
  return ok ? 0 : 1;
}
