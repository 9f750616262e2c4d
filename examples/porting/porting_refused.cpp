// The calls of old programs that the library refuses, and those that it takes and doesn't act on,
// as docs/porting.md lists them. Prints what each answers, and ends with 1 if one answers
// otherwise.

#include <cstdio>
#include <cstring>
#include <string>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/ZxCore3D.h>

// Names of OpenGL that the library has no use for.
#ifndef GL_TEXTURE_GEN_S
#define GL_TEXTURE_GEN_S 0x0C60
#endif
#ifndef GL_CLIP_PLANE0
#define GL_CLIP_PLANE0 0x3000
#endif
#ifndef GL_COLOR_LOGIC_OP
#define GL_COLOR_LOGIC_OP 0x0BF2
#endif
#ifndef GL_RESCALE_NORMAL
#define GL_RESCALE_NORMAL 0x803A
#endif
#ifndef GL_MULTISAMPLE
#define GL_MULTISAMPLE 0x809D
#endif
#ifndef GL_DITHER
#define GL_DITHER 0x0BD0
#endif
#ifndef GL_POLYGON_STIPPLE
#define GL_POLYGON_STIPPLE 0x0B42
#endif
#ifndef GL_SPHERE_MAP
#define GL_SPHERE_MAP 0x2402
#endif
#ifndef GL_DECAL
#define GL_DECAL 0x2101
#endif

namespace {

using Zx3D::TRenderCPU;

enum ANSWER { kEnum = 1280, kValue = 1281, kOperation = 1282, kThrow = 1, kThrowEnum = 2 };

struct TRefused {
  const char* Call;
  ANSWER Answer;
  void (*Make)(TRenderCPU&);
};

struct TIgnored {
  const char* Call;
  void (*Make)(TRenderCPU&); ///< before drawing
};

unsigned char s_bytes[64] = {};
unsigned int s_names[16] = {};
int s_out[16] = {};

#define REFUSE(answer, ...)                                                                        \
  TRefused {                                                                                       \
#__VA_ARGS__, answer, [](TRenderCPU & gl) { gl.__VA_ARGS__; }                                  \
  }

const TRefused s_refused[] = {
    REFUSE(kEnum, Begin(GL_QUAD_STRIP)),
    REFUSE(kEnum, Begin(GL_POLYGON)),
    REFUSE(kOperation, GenLists(1)),
    REFUSE(kOperation, NewList(1, GL_COMPILE)),
    REFUSE(kOperation, EndList()),
    REFUSE(kOperation, CallList(1)),
    REFUSE(kOperation, CallLists(1, GL_UNSIGNED_BYTE, s_bytes)),
    REFUSE(kThrow, ShadeModel(GL_FLAT)),
    REFUSE(kValue, Bitmap(8, 8, 0, 0, 8, 0, s_bytes)),
    REFUSE(kThrowEnum, Enable(GL_ALPHA_TEST)),
    REFUSE(kOperation, AlphaFunc(GL_GREATER, 0.5f)),
    REFUSE(kThrowEnum, Enable(GL_SCISSOR_TEST)),
    REFUSE(kThrow, Scissor(1, 1, 4, 4)),
    REFUSE(kThrow, Viewport(0, 0, 4, 8)),
    REFUSE(kThrowEnum, Enable(GL_LINE_STIPPLE)),
    REFUSE(kOperation, LineStipple(1, 0x5555)),
    REFUSE(kThrowEnum, Enable(GL_POLYGON_STIPPLE)),
    REFUSE(kThrowEnum, Enable(GL_LINE_SMOOTH)),
    REFUSE(kThrowEnum, Enable(GL_MULTISAMPLE)),
    REFUSE(kEnum, Hint(GL_LINE_SMOOTH_HINT, GL_NICEST)),
    REFUSE(kThrowEnum, Enable(GL_COLOR_LOGIC_OP)),
    REFUSE(kThrowEnum, Disable(GL_DITHER)),
    REFUSE(kThrowEnum, Enable(GL_RESCALE_NORMAL)),
    REFUSE(kThrowEnum, Enable(GL_CLIP_PLANE0)),
    REFUSE(kThrowEnum, Enable(GL_TEXTURE_GEN_S)),
    REFUSE(kValue, TexGeni(GL_S, GL_TEXTURE_GEN_MODE, GL_SPHERE_MAP)),
    REFUSE(kValue, TexEnvi(GL_TEXTURE_ENV, GL_TEXTURE_ENV_MODE, GL_DECAL)),
    REFUSE(kThrowEnum, Enable(GL_TEXTURE_1D)),
    REFUSE(kThrow, BindTexture(GL_TEXTURE_1D, 1)),
    REFUSE(kEnum, TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR_MIPMAP_LINEAR)),
    REFUSE(kValue,
           TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, s_bytes)),
    REFUSE(kValue, TexImage2D(GL_TEXTURE_2D, 0, 3, 2, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, s_bytes)),
    REFUSE(kValue,
           TexImage2D(GL_TEXTURE_2D, 1, GL_RGB, 2, 2, 0, GL_RGB, GL_UNSIGNED_BYTE, s_bytes)),
    REFUSE(kThrow, CopyTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 0, 0, 8, 8, 0)),
    REFUSE(kOperation, SelectBuffer(16, s_names)),
    REFUSE(kOperation, RenderMode(GL_SELECT)),
    REFUSE(kOperation, InitNames()),
    REFUSE(kOperation, PushName(1)),
    REFUSE(kOperation, BindFramebuffer(GL_FRAMEBUFFER, 1)),
    REFUSE(kValue, DrawBuffer(GL_BACK)),
    REFUSE(kEnum, GetBooleanv(GL_DEPTH_WRITEMASK, s_bytes)),
    REFUSE(kEnum, GetTexParameteriv(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, s_out)),
    REFUSE(kValue, VertexPointer(3, GL_SHORT, 0, s_bytes)),
    REFUSE(kOperation, DrawPixels(2, 2, GL_RGB, GL_UNSIGNED_BYTE, s_bytes)),
};

#define IGNORE(...)                                                                                \
  TIgnored {                                                                                       \
#__VA_ARGS__, [](TRenderCPU & gl) { gl.__VA_ARGS__; }                                          \
  }

const TIgnored s_ignored[] = {
    IGNORE(PointSize(5)),
    IGNORE(LineWidth(5)),
    IGNORE(PolygonMode(GL_FRONT_AND_BACK, GL_LINE)),
    IGNORE(Enable(GL_FOG)),
    IGNORE(LightModeli(GL_LIGHT_MODEL_COLOR_CONTROL, GL_SINGLE_COLOR)),
    IGNORE(RasterPos2i(3, 3)),
    IGNORE(PixelZoom(2, 2)),
    IGNORE(MatrixMode(GL_TEXTURE), gl.Scaled(2, 2, 2), gl.MatrixMode(GL_MODELVIEW)),
    IGNORE(Flush(), gl.Finish(), gl.SwapBuffers(nullptr)),
};

/// A triangle, a line, a point and an image, so that whatever a call changes is seen.
std::string Picture(void (*make)(TRenderCPU&)) {
  TRenderCPU gl;
  gl.Create(8, 8, nullptr);
  unsigned char texel[2][2][4] = {{{255, 0, 0, 255}, {0, 255, 0, 255}},
                                  {{0, 0, 255, 255}, {255, 255, 0, 255}}};
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGBA, 2, 2, 0, GL_RGBA, GL_UNSIGNED_BYTE, texel);
  gl.Enable(GL_TEXTURE_2D);
  if (make != nullptr) {
    make(gl);
  }
  gl.DrawPixels(2, 2, GL_RGBA, GL_UNSIGNED_BYTE, texel);
  for (const unsigned int mode : {GL_TRIANGLES, GL_LINES, GL_POINTS}) {
    gl.Begin(mode);
    gl.Color3d(1, 0.5, 0.2), gl.TexCoord2d(0, 0), gl.Vertex3d(-0.6, -0.5, 0.5);
    gl.Color3d(0.5, 1, 0.9), gl.TexCoord2d(1, 0), gl.Vertex3d(0.8, -0.3, -0.5);
    gl.Color3d(0.1, 0.5, 0.7), gl.TexCoord2d(1, 1), gl.Vertex3d(0.2, 0.9, 0);
    gl.End();
  }
  return gl.GetError() != GL_NO_ERROR
             ? "error"
             : std::string(reinterpret_cast<const char*>(gl.GetColorSurface()->Data), 8 * 8 * 4);
}

std::string Told(ANSWER answer) {
  switch (answer) {
  case kEnum:
    return "GL_INVALID_ENUM";
  case kValue:
    return "GL_INVALID_VALUE";
  case kOperation:
    return "GL_INVALID_OPERATION";
  case kThrow:
    return "throws";
  default:
    return "throws, GL_INVALID_ENUM";
  }
}

/// What the call does: the code, and whether it throws.
std::string Answer(const TRefused& refused) {
  TRenderCPU gl;
  gl.Create(8, 8, nullptr);
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  bool thrown = false;
  try {
    refused.Make(gl);
  } catch (const TZxMessage&) {
    thrown = true;
  }
  const unsigned int code = gl.GetError();
  std::string text = thrown ? "throws" : "";
  for (const ANSWER answer : {kEnum, kValue, kOperation}) {
    if (code == answer) {
      text += (thrown ? ", " : "") + Told(answer);
    }
  }
  return text;
}

} // namespace

int main() {
  Init_ZxCore3D();
  bool ok = true;
  for (const TRefused& refused : s_refused) {
    const std::string answer = Answer(refused);
    const bool right = answer == Told(refused.Answer);
    std::printf("%-75s %s%s\n", refused.Call, answer.c_str(), right ? "" : "  NOT AS TOLD");
    ok = ok && right;
  }
  const std::string plain = Picture(nullptr);
  ok = ok && plain != "error";
  for (const TIgnored& ignored : s_ignored) {
    const bool right = Picture(ignored.Make) == plain;
    std::printf("%-75s %s\n", ignored.Call, right ? "changes nothing" : "NOT AS TOLD");
    ok = ok && right;
  }
  Deinit_ZxCore3D();
  return ok ? 0 : 1;
}
