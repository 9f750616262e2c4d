#pragma once

#include <algorithm>
#include <cstring>

#include <ZxCore3D/ZxCore3D.h>

#include "Scenes.h"

// What to call instead of OldCalls.h: the same pictures, by what the library has.

namespace porting {

using Zx3D::TRenderCPU;

/// Installs a fragment shader with the standard vertex shader for as long as it lives.
class TUsing {
public:
  TUsing(TRenderCPU& gl, Zx3D::TFragmentShaderCPU* shader, Zx3D::TVertexShaderCPU* vertex = nullptr)
      : m_Context(gl) {
    m_Program.SetShaderF(shader);
    m_Program.SetShaderV(vertex);
    gl.SetProgram(&m_Program);
  }
  ~TUsing() { m_Context.SetProgram(nullptr); }

private:
  TRenderCPU& m_Context;
  Zx3D::TProgramCPU m_Program;
};

// --- quad strip
inline void NewQuadStrip(TRenderCPU& gl) {
  gl.Begin(GL_TRIANGLE_STRIP); // the same vertices in the same order
  for (int i = 0; i <= 12; ++i) {
    gl.Color3d(i / 12.0, 0.5, 1 - i / 12.0);
    gl.Vertex2d(i / 8.0 - 0.75, -0.4 + 0.2 * (i % 2));
    gl.Vertex2d(i / 8.0 - 0.75, 0.4 + 0.2 * (i % 2));
  }
  gl.End();
}

// --- polygon
inline void NewPolygon(TRenderCPU& gl) {
  gl.Color3d(0.9, 0.6, 0.2);
  gl.Begin(GL_TRIANGLE_FAN); // GL_POLYGON is for convex outlines only, and so is this
  for (int i = 0; i < 7; ++i) {
    gl.Vertex2d(0.8 * std::cos(i * 0.9), 0.8 * std::sin(i * 0.9));
  }
  gl.End();
}

// --- list
inline void NewList(TRenderCPU& gl) {
  // A list is data that is drawn again: arrays, or a function if there are state changes in it.
  static constexpr double kVertices[] = {-0.2, -0.2, 0.2, -0.2, 0, 0.2};
  static constexpr double kColors[] = {1, 0.3, 0.2, 0.2, 0.8, 0.3, 0.2, 0.4, 1};
  gl.EnableClientState(GL_VERTEX_ARRAY);
  gl.EnableClientState(GL_COLOR_ARRAY);
  gl.VertexPointer(2, GL_DOUBLE, 0, kVertices);
  gl.ColorPointer(3, GL_DOUBLE, 0, kColors);
  for (int i = 0; i < 9; ++i) {
    gl.LoadIdentity();
    gl.Translated(0.55 * (i % 3 - 1), 0.55 * (i / 3 - 1), 0);
    gl.DrawArrays(GL_TRIANGLES, 0, 3);
  }
}

// --- flat
inline void NewFlat(TRenderCPU& gl) {
  gl.Begin(GL_TRIANGLES); // each triangle by itself, its three vertices in one colour
  for (int i = 2; i < 9; ++i) {
    gl.Color3d(0.1 * i, 0.9 - 0.1 * i, 0.5);
    for (int k = i - 2; k <= i; ++k) {
      gl.Vertex2d(0.2 * k - 0.8, k % 2 ? 0.5 : -0.5);
    }
  }
  gl.End();
}

// --- bitmap
constexpr unsigned char kGlyph[8] = {0x00, 0x66, 0x6C, 0x78, 0x7C, 0x66, 0x66, 0x7C};

inline void NewBitmap(TRenderCPU& gl) {
  unsigned char texels[64]
                      [2]; // white, and opaque where the letter is; a font is a texture of them all
  for (int i = 0; i < 64; ++i) {
    texels[i][0] = 255;
    texels[i][1] = (kGlyph[i / 8] >> (7 - i % 8)) & 1 ? 255 : 0;
  }
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_LUMINANCE_ALPHA, 8, 8, 0, GL_LUMINANCE_ALPHA, GL_UNSIGNED_BYTE,
                texels);
  gl.Enable(GL_TEXTURE_2D);
  gl.Enable(GL_BLEND);
  gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadIdentity();
  gl.Ortho(0, gl.m_Width, 0, gl.m_Height, -1, 1); // units are pixels now
  gl.Color3d(1, 0.9, 0.4);
  gl.Begin(GL_QUADS);
  for (int i = 0; i < 12; ++i) {
    const double x = 20 + 10 * i, y = 70;
    gl.TexCoord2d(0, 0), gl.Vertex2d(x, y);
    gl.TexCoord2d(1, 0), gl.Vertex2d(x + 8, y);
    gl.TexCoord2d(1, 1), gl.Vertex2d(x + 8, y + 8);
    gl.TexCoord2d(0, 1), gl.Vertex2d(x, y + 8);
  }
  gl.End();
}

// --- alpha test
struct TAlphaTest : Zx3D::TStdFragmentShaderCPU {
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    TStdFragmentShaderCPU::Execute(v, f);
    return f->Color.w > 0.5;
  }
};

inline void NewAlphaTest(TRenderCPU& gl) {
  TAlphaTest shader;
  const TUsing program(gl, &shader); // SetProgram, and SetProgram(nullptr) in the end
  gl.Begin(GL_TRIANGLES);
  gl.Color4d(1, 0.4, 0.2, 0), gl.Vertex2d(-0.8, -0.7);
  gl.Color4d(1, 0.4, 0.2, 1), gl.Vertex2d(0.8, -0.7);
  gl.Color4d(1, 0.9, 0.2, 1), gl.Vertex2d(0, 0.8);
  gl.End();
}

// --- scissor
/// Marks a rectangle of pixels in the stencil buffer, and lets drawing through there only.
inline void SetScissor(TRenderCPU& gl, int x, int y, int width, int height) {
  unsigned char* row = gl.GetStencilSurface()->Data + y * gl.GetStencilSurface()->RowStride + x;
  gl.Clear(GL_STENCIL_BUFFER_BIT);
  for (int j = 0; j < height; ++j, row += gl.GetStencilSurface()->RowStride) {
    std::memset(row, 1, static_cast<std::size_t>(width));
  }
  gl.Enable(GL_STENCIL_TEST);
  gl.StencilFunc(GL_EQUAL, 1, 0xFF);
}

inline void NewScissor(TRenderCPU& gl) {
  SetScissor(gl, 40, 60, 80, 50);
  gl.Color3d(0.3, 0.7, 0.9);
  Rectangle(gl, -0.9, -0.9, 0.9, 0.9, 0);
}

// --- viewport
/// A viewport as a matrix, which goes in front of the projection. What it doesn't do is clip:
/// SetScissor does.
inline void SetViewport(TRenderCPU& gl, int x, int y, int width, int height) {
  const double w = gl.m_Width, h = gl.m_Height;
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadIdentity();
  gl.Translated((2 * x + width) / w - 1, (2 * y + height) / h - 1, 0);
  gl.Scaled(width / w, height / h, 1);
}

inline void NewViewport(TRenderCPU& gl) {
  SetViewport(gl, 20, 40, 100, 60); // Frustum or Ortho follow here
  gl.MatrixMode(GL_MODELVIEW);
  gl.Color3d(0.3, 0.7, 0.9);
  Rectangle(gl, -0.8, -0.8, 0.8, 0.8, 0);
}

// --- wire
inline void NewWire(TRenderCPU& gl) {
  gl.Color3d(0.6, 0.9, 0.5);
  for (int i = 2; i < 7; ++i) { // the outline of each triangle
    gl.Begin(GL_LINE_LOOP);
    for (int k : {0, i - 1, i}) {
      gl.Vertex2d(0.8 * std::cos(k), 0.8 * std::sin(k));
    }
    gl.End();
  }
}

// --- wide
inline void NewWide(TRenderCPU& gl) {
  const double pixel = 2.0 / gl.m_Height;
  gl.Color3d(0.9, 0.5, 0.5);
  Rectangle(gl, -0.75, 0.4 - 3 * pixel, 0.75, 0.4 + 3 * pixel, 0);
  Rectangle(gl, -5 * pixel, -0.4 - 5 * pixel, 5 * pixel, -0.4 + 5 * pixel, 0);
}

// --- stipple
struct TStipple : Zx3D::TStdFragmentShaderCPU {
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    TStdFragmentShaderCPU::Execute(v, f);
    return (f->X - 16) % 16 < 8; // along x, counted from where the line starts
  }
};

inline void NewStipple(TRenderCPU& gl) {
  TStipple shader;
  const TUsing program(gl, &shader);
  gl.Color3d(0.9, 0.9, 0.9);
  gl.Begin(GL_LINES);
  gl.Vertex2d(-0.8, 0.31), gl.Vertex2d(0.8, 0.31);
  gl.End();
}

// --- additive
/// Any blending: a fragment shader can read the pixel that it is about to write.
struct TAdditive : Zx3D::TStdFragmentShaderCPU {
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    TStdFragmentShaderCPU::Execute(v, f);
    const TDataSurface& s = *m_Render->GetColorSurface();
    const unsigned char* old = s.Data + f->Y * s.RowStride + f->X * s.PixelStride;
    for (int i = 0; i < 4; ++i) {
      f->Color[i] = std::min(1.0, f->Color[i] + old[i] / 255.0);
    }
    return true;
  }
};

inline void NewAdditive(TRenderCPU& gl) {
  TAdditive shader;
  const TUsing program(gl, &shader);
  gl.Color3d(0.5, 0.3, 0.1);
  Rectangle(gl, -0.8, -0.8, 0.3, 0.3, 0);
  gl.Color3d(0.2, 0.4, 0.6);
  Rectangle(gl, -0.3, -0.3, 0.8, 0.8, 0);
}

// --- fog
/// The distance from the eye in a slot of its own, and the fog's colour by it. `Fog` stores its
/// values and reads them back, so that they can stay where they were set.
struct TFogVertex : Zx3D::TStdVertexShaderCPU {
  void Begin() override {
    TStdVertexShaderCPU::Begin();
    m_Render->m_VarCount = 7; // the standard stage takes six at most
  }
  void Execute(TRenderCPU::VAR_DATA* v) override {
    TStdVertexShaderCPU::Execute(v);
    const MAT4<double>& m = m_Render->m_ModelView;
    const vec_t_<double, 4>& at = m_Render->m_CurVertex;
    (*v)[6] = {-(m[2] * at.x + m[6] * at.y + m[10] * at.z + m[14]), 0, 0, 0};
  }
};

struct TFogFragment : Zx3D::TStdFragmentShaderCPU {
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    TStdFragmentShaderCPU::Execute(v, f);
    const TRenderCPU::TFog& fog = m_Render->m_Fog;
    const double clear = std::clamp((fog.End - (*v)[6].x) / (fog.End - fog.Start), 0.0, 1.0);
    for (int i = 0; i < 3; ++i) {
      f->Color[i] = f->Color[i] * clear + fog.Color[i] * (1 - clear);
    }
    return true;
  }
};

inline void NewFog(TRenderCPU& gl) {
  const float color[4] = {0.6f, 0.65f, 0.7f, 1};
  gl.Fog(GL_FOG_START, 2.0f);
  gl.Fog(GL_FOG_END, 12.0f);
  gl.Fog(GL_FOG_COLOR, color);
  TFogFragment fragment;
  TFogVertex vertex;
  const TUsing program(gl, &fragment, &vertex);
  gl.MatrixMode(GL_PROJECTION);
  gl.Frustum(-0.5, 0.5, -0.5, 0.5, 1, 20);
  gl.MatrixMode(GL_MODELVIEW);
  gl.Color3d(0.7, 0.3, 0.1);
  gl.Begin(GL_QUADS);
  gl.Vertex3d(-1, -1, -2.5), gl.Vertex3d(1, -1, -2.5);
  gl.Vertex3d(1, 2, -10), gl.Vertex3d(-1, 2, -10);
  gl.End();
}

// --- clip plane
/// The vertex's place in the plane's coordinates goes to the fragments, which leave if it is
/// negative.
struct TPlaneVertex : Zx3D::TStdVertexShaderCPU {
  void Begin() override {
    TStdVertexShaderCPU::Begin();
    m_Render->m_VarCount = 7;
  }
  void Execute(TRenderCPU::VAR_DATA* v) override {
    TStdVertexShaderCPU::Execute(v);
    const vec_t_<double, 4>& at = m_Render->m_CurVertex;
    (*v)[6] = {at.x - at.y + 0.3, 0, 0, 0};
  }
};

struct TPlaneFragment : Zx3D::TStdFragmentShaderCPU {
  bool Execute(TRenderCPU::VAR_DATA* v, TRenderCPU::FS_DATA* f) override {
    TStdFragmentShaderCPU::Execute(v, f);
    return (*v)[6].x >= 0;
  }
};

inline void NewClipPlane(TRenderCPU& gl) {
  TPlaneFragment fragment;
  TPlaneVertex vertex;
  const TUsing program(gl, &fragment, &vertex);
  gl.Color3d(0.5, 0.8, 0.6);
  Rectangle(gl, -0.8, -0.8, 0.8, 0.8, 0);
}

// --- accumulation
inline void NewAccumulation(TRenderCPU& gl) {
  TDataSurface& surface = *gl.GetColorSurface();
  std::vector<double> sum(surface.DataSize, 0.0);
  for (int i = 0; i < 4; ++i) {
    gl.Clear(GL_COLOR_BUFFER_BIT);
    gl.Color3d(0.8, 0.8, 0.4);
    Rectangle(gl, 0.2 * i - 0.8, -0.5, 0.2 * i, 0.5, 0);
    for (std::size_t k = 0; k < sum.size(); ++k) {
      sum[k] += 0.25 * surface.Data[k];
    }
  }
  for (std::size_t k = 0; k < sum.size(); ++k) {
    surface.Data[k] = static_cast<unsigned char>(sum[k] + 0.5);
  }
}

// --- texture matrix
inline void NewTextureMatrix(TRenderCPU& gl) {
  const double s = 3, t = 2; // the matrix, worked into the coordinates
  gl.Begin(GL_QUADS);
  gl.TexCoord2d(0, 0), gl.Vertex2d(-0.8, -0.8);
  gl.TexCoord2d(s, 0), gl.Vertex2d(0.8, -0.8);
  gl.TexCoord2d(s, t), gl.Vertex2d(0.8, 0.8);
  gl.TexCoord2d(0, t), gl.Vertex2d(-0.8, 0.8);
  gl.End();
}

// --- vertex w
inline void NewVertexW(TRenderCPU& gl) {
  gl.Color3d(0.9, 0.7, 0.3);
  gl.Begin(GL_TRIANGLES); // divided by w; the standard vertex shader takes it as 1
  gl.Vertex3d(-0.8, -0.6, 0), gl.Vertex3d(0.8, -0.6, 0), gl.Vertex3d(0, 0.7, 0);
  gl.End();
}

// --- two-sided
inline void NewTwoSided(TRenderCPU& gl) {
  const float red[4] = {0.9f, 0.2f, 0.1f, 1};
  gl.Materialfv(GL_FRONT, GL_AMBIENT_AND_DIFFUSE, red);
  gl.Materialfv(GL_BACK, GL_AMBIENT_AND_DIFFUSE, red); // GL_FRONT_AND_BACK sets the front alone
  gl.LightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
  gl.Enable(GL_LIGHTING);
  gl.Enable(GL_LIGHT0);
  gl.Begin(GL_TRIANGLES);
  gl.Normal3d(0, 0, -1);
  gl.Vertex2d(-0.8, -0.7), gl.Vertex2d(0, 0.8), gl.Vertex2d(0.8, -0.7);
  gl.End();
}

// --- look at
using TPoint = vec_t_<double, 3>;

/// gluPerspective: the angle from bottom to top in degrees, and width by height.
inline void Perspective(TZxGL& gl, double angle, double aspect, double nearest, double farthest) {
  const double top = nearest * std::tan(angle * kPi / 360);
  gl.Frustum(-top * aspect, top * aspect, -top, top, nearest, farthest);
}

/// gluLookAt.
inline void LookAt(TZxGL& gl, const TPoint& eye, const TPoint& center, const TPoint& up) {
  const TPoint forward = (center - eye) * (1 / length(center - eye));
  const TPoint across = cross(forward, up);
  const TPoint side = across * (1 / length(across)), top = cross(side, forward);
  const double view[16] = {side.x, top.x, -forward.x, 0, side.y, top.y, -forward.y, 0,
                           side.z, top.z, -forward.z, 0, 0,      0,     0,          1};
  gl.MultMatrixd(view);
  gl.Translated(-eye.x, -eye.y, -eye.z);
}

inline void NewLookAt(TRenderCPU& gl) {
  gl.MatrixMode(GL_PROJECTION);
  Perspective(gl, 40, 1, 1, 20);
  gl.MatrixMode(GL_MODELVIEW);
  LookAt(gl, {3, 4, 0}, {0, 0, 0}, {0, 1, 0});
  gl.Color3d(0.6, 0.7, 0.9);
  gl.Begin(GL_QUADS);
  gl.Vertex3d(-1, 0, -1), gl.Vertex3d(-1, 0, 1), gl.Vertex3d(1, 0, 1), gl.Vertex3d(1, 0, -1);
  gl.End();
}

// --- which

inline bool DrawNew(TRenderCPU& gl, const char* name) {
  static constexpr struct {
    const char* Name;
    void (*Draw)(TRenderCPU&);
  } kNew[] = {
      {"quad-strip", NewQuadStrip},
      {"polygon", NewPolygon},
      {"list", NewList},
      {"flat", NewFlat},
      {"bitmap", NewBitmap},
      {"alpha-test", NewAlphaTest},
      {"scissor", NewScissor},
      {"viewport", NewViewport},
      {"wire", NewWire},
      {"wide", NewWide},
      {"stipple", NewStipple},
      {"additive", NewAdditive},
      {"fog", NewFog},
      {"clip-plane", NewClipPlane},
      {"accumulation", NewAccumulation},
      {"texture-matrix", NewTextureMatrix},
      {"vertex-w", NewVertexW},
      {"two-sided", NewTwoSided},
      {"look-at", NewLookAt},
  };
  for (const auto& one : kNew) {
    if (std::strcmp(one.Name, name) == 0) {
      one.Draw(gl);
      return true;
    }
  }
  return false;
}

} // namespace porting
