#pragma once

#include <cmath>
#include <cstring>
#include <vector>

// The scenes of docs/porting.md, drawn by ZxCore3D and by OpenGL with the same calls: `TGl` is a
// context of the library, or a class that hands each call on to OpenGL and whose `kOpenGL` is true.
// Where a program has to change when it is ported, both ways stand here.

namespace porting {

/// How the two pictures of a scene relate.
enum RELATION {
  kSame,    ///< but for a few pixels on edges, and for rounding: means within 0.2 of 255
  kDiffers, ///< plainly
  kNear,    ///< the same but for lines, which may be a pixel away
};

struct TScene {
  const char* Name;
  RELATION Relation;
  int Zoom; ///< a picture is 160 pixels wide and high; where it is drawn smaller, it is enlarged
};

constexpr TScene kScenes[] = {
    {"clamp", kDiffers, 1},
    {"clamp-dimmed", kSame, 1},
    {"highlight", kDiffers, 1},
    {"highlight-separate", kSame, 1},
    {"spot-default", kDiffers, 1},
    {"spot-length", kDiffers, 1},
    {"spot-unit", kSame, 1},
    {"half-vector", kDiffers, 1},
    {"half-vector-directional", kSame, 1},
    {"attenuation", kDiffers, 1},
    {"attenuation-matt", kSame, 1},
    {"spot-ambient", kDiffers, 1},
    {"spot-no-ambient", kSame, 1},
    {"normals", kDiffers, 1},
    {"normals-prepared", kSame, 1},
    {"lines", kNear, 4},
    {"fastest", kDiffers, 1},
    {"fastest-dropped", kSame, 1},
    {"depth", kDiffers, 1},
    {"depth-masked", kSame, 1},
    {"texture-0", kDiffers, 1},
    {"texture-named", kSame, 1},
    {"quad-strip", kSame, 1},
    {"polygon", kSame, 1},
    {"list", kSame, 1},
    {"flat", kSame, 1},
    {"bitmap", kSame, 1},
    {"alpha-test", kSame, 1},
    {"scissor", kSame, 1},
    {"viewport", kSame, 1},
    {"wire", kNear, 1},
    {"wide", kSame, 1},
    {"stipple", kSame, 1},
    {"additive", kSame, 1},
    {"fog", kSame, 1},
    {"clip-plane", kSame, 1},
    {"accumulation", kSame, 1},
    {"texture-matrix", kSame, 1},
    {"vertex-w", kSame, 1},
    {"two-sided", kSame, 1},
    {"look-at", kSame, 1},
};

constexpr double kPi = 3.141592653589793;
constexpr int kPicture = 160;

// --- What the scenes are made of

template <class TGl> void SetCamera(TGl& gl) {
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadIdentity();
  gl.Frustum(-0.25, 0.25, -0.25, 0.25, 1, 20);
  gl.MatrixMode(GL_MODELVIEW);
  gl.LoadIdentity();
  gl.Translated(0, 0, -5);
}

template <class TGl> void SetMaterial(TGl& gl, float shine) {
  const float color[4] = {0.3f, 0.6f, 0.9f, 1}, gloss[4] = {shine, shine, shine, 1};
  gl.Materialfv(GL_FRONT, GL_AMBIENT_AND_DIFFUSE, color);
  gl.Materialfv(GL_FRONT, GL_SPECULAR, gloss);
  gl.Materialf(GL_FRONT, GL_SHININESS, 20);
}

template <class TGl>
void SetLight(TGl& gl, double x, double y, double z, double w, double brightness) {
  const float at[4] = {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z),
                       static_cast<float>(w)};
  const float b = static_cast<float>(brightness);
  const float color[4] = {b, b, b, 1};
  gl.PushMatrix();
  gl.LoadIdentity(); // as seen from the eye
  gl.Lightfv(GL_LIGHT0, GL_POSITION, at);
  gl.PopMatrix();
  gl.Lightfv(GL_LIGHT0, GL_DIFFUSE, color);
  gl.Lightfv(GL_LIGHT0, GL_SPECULAR, color);
  gl.Enable(GL_LIGHTING);
  gl.Enable(GL_LIGHT0);
  gl.Enable(GL_NORMALIZE);
  gl.Enable(GL_DEPTH_TEST);
}

/// A ball of radius 1; `prepare` is a factor for each component of its normals.
template <class TGl> void Ball(TGl& gl, int around, const double (&prepare)[3] = {1, 1, 1}) {
  for (int j = 0; j < around / 2; ++j) {
    gl.Begin(GL_TRIANGLE_STRIP);
    for (int i = 0; i <= around; ++i) {
      for (int k = 1; k >= 0; --k) {
        const double a = 2 * kPi * i / around, b = kPi * (2.0 * (j + k) / around - 0.5);
        const double x = std::cos(b) * std::sin(a), y = std::sin(b), z = std::cos(b) * std::cos(a);
        gl.Normal3d(x * prepare[0], y * prepare[1], z * prepare[2]);
        gl.TexCoord2d(3.0 * i / around + 0.01, 3.0 * (j + k) / around + 0.01);
        gl.Vertex3d(x, y, z);
      }
    }
    gl.End();
  }
}

/// A wall of n by n squares across the picture, facing the eye.
template <class TGl> void Wall(TGl& gl, int n) {
  gl.Normal3d(0, 0, 1);
  for (int j = 0; j < n; ++j) {
    gl.Begin(GL_TRIANGLE_STRIP);
    for (int i = 0; i <= n; ++i) {
      for (int k = 1; k >= 0; --k) {
        gl.TexCoord2d(2.0 * i / n, 2.0 * (j + k) / n);
        gl.Vertex3d(2.2 * i / n - 1.1, 2.2 * (j + k) / n - 1.1, 0);
      }
    }
    gl.End();
  }
}

/// Eight by eight texels of two colours, for whatever texture is bound. OpenGL's filter is set to
/// what a context of the library starts with.
template <class TGl> void GiveChecks(TGl& gl) {
  std::vector<unsigned char> texels;
  for (int i = 0; i < 64; ++i) {
    const bool light = (i / 8 + i) % 2 != 0;
    texels.insert(texels.end(), {static_cast<unsigned char>(light ? 240 : 60),
                                 static_cast<unsigned char>(light ? 200 : 30),
                                 static_cast<unsigned char>(light ? 120 : 20)});
  }
  gl.TexImage2D(GL_TEXTURE_2D, 0, GL_RGB, 8, 8, 0, GL_RGB, GL_UNSIGNED_BYTE, texels.data());
  gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  gl.Enable(GL_TEXTURE_2D);
}

template <class TGl> void MakeChecks(TGl& gl) {
  unsigned int id = 0;
  gl.GenTextures(1, &id);
  gl.BindTexture(GL_TEXTURE_2D, id);
  GiveChecks(gl);
}

template <class TGl> void Rectangle(TGl& gl, double x0, double y0, double x1, double y1, double z) {
  gl.Begin(GL_QUADS);
  gl.Vertex3d(x0, y0, z);
  gl.Vertex3d(x1, y0, z);
  gl.Vertex3d(x1, y1, z);
  gl.Vertex3d(x0, y1, z);
  gl.End();
}

inline bool Is(const char* name, const char* start) {
  return std::strncmp(name, start, std::strlen(start)) == 0;
}

} // namespace porting
