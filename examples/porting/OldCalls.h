#pragma once

#include <cstring>

#include "Scenes.h"

// What old programs call, and this library refuses or doesn't do. NewCalls.h says the same to it.

namespace porting {

// --- quad strip
inline void OldQuadStrip() {
  glBegin(GL_QUAD_STRIP);
  for (int i = 0; i <= 12; ++i) {
    glColor3d(i / 12.0, 0.5, 1 - i / 12.0);
    glVertex2d(i / 8.0 - 0.75, -0.4 + 0.2 * (i % 2));
    glVertex2d(i / 8.0 - 0.75, 0.4 + 0.2 * (i % 2));
  }
  glEnd();
}

// --- polygon
inline void OldPolygon() {
  glColor3d(0.9, 0.6, 0.2);
  glBegin(GL_POLYGON);
  for (int i = 0; i < 7; ++i) {
    glVertex2d(0.8 * std::cos(i * 0.9), 0.8 * std::sin(i * 0.9));
  }
  glEnd();
}

// --- list
inline void OldList() {
  const unsigned int list = glGenLists(1);
  glNewList(list, GL_COMPILE);
  glBegin(GL_TRIANGLES);
  glColor3d(1, 0.3, 0.2), glVertex2d(-0.2, -0.2);
  glColor3d(0.2, 0.8, 0.3), glVertex2d(0.2, -0.2);
  glColor3d(0.2, 0.4, 1), glVertex2d(0, 0.2);
  glEnd();
  glEndList();
  for (int i = 0; i < 9; ++i) {
    glLoadIdentity();
    glTranslated(0.55 * (i % 3 - 1), 0.55 * (i / 3 - 1), 0);
    glCallList(list);
  }
}

// --- flat
inline void OldFlat() {
  glShadeModel(GL_FLAT); // the last vertex of a triangle gives its colour
  glBegin(GL_TRIANGLE_STRIP);
  for (int i = 0; i < 9; ++i) {
    glColor3d(0.1 * i, 0.9 - 0.1 * i, 0.5);
    glVertex2d(0.2 * i - 0.8, i % 2 ? 0.5 : -0.5);
  }
  glEnd();
}

// --- bitmap
/// The letter R, eight pixels wide and high, its lowest row first.
constexpr unsigned char kLetter[8] = {0x00, 0x66, 0x6C, 0x78, 0x7C, 0x66, 0x66, 0x7C};

inline void OldBitmap() {
  glColor3d(1, 0.9, 0.4);
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glWindowPos2i(20, 70);
  for (int i = 0; i < 12; ++i) {
    glBitmap(8, 8, 0, 0, 10, 0, kLetter);
  }
}

// --- alpha test
inline void OldAlphaTest() {
  glEnable(GL_ALPHA_TEST);
  glAlphaFunc(GL_GREATER, 0.5f);
  glBegin(GL_TRIANGLES);
  glColor4d(1, 0.4, 0.2, 0), glVertex2d(-0.8, -0.7);
  glColor4d(1, 0.4, 0.2, 1), glVertex2d(0.8, -0.7);
  glColor4d(1, 0.9, 0.2, 1), glVertex2d(0, 0.8);
  glEnd();
}

// --- scissor
inline void OldScissor() {
  glEnable(GL_SCISSOR_TEST);
  glScissor(40, 60, 80, 50);
  glColor3d(0.3, 0.7, 0.9);
  glRectd(-0.9, -0.9, 0.9, 0.9);
}

// --- viewport
inline void OldViewport() {
  glViewport(20, 40, 100, 60);
  glColor3d(0.3, 0.7, 0.9);
  glRectd(-0.8, -0.8, 0.8, 0.8);
}

// --- wire
inline void OldWire() {
  glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
  glColor3d(0.6, 0.9, 0.5);
  glBegin(GL_TRIANGLE_FAN);
  for (int i = 0; i < 7; ++i) {
    glVertex2d(0.8 * std::cos(i), 0.8 * std::sin(i));
  }
  glEnd();
}

// --- wide
inline void OldWide() {
  glColor3d(0.9, 0.5, 0.5);
  glLineWidth(6);
  glBegin(GL_LINES);
  glVertex2d(-0.75, 0.4), glVertex2d(0.75, 0.4);
  glEnd();
  glPointSize(10);
  glBegin(GL_POINTS);
  glVertex2d(0, -0.4);
  glEnd();
}

// --- stipple
inline void OldStipple() {
  glEnable(GL_LINE_STIPPLE);
  glLineStipple(4, 0x3333); // eight pixels, eight without
  glColor3d(0.9, 0.9, 0.9);
  glBegin(GL_LINES);
  glVertex2d(-0.8, 0.31), glVertex2d(0.8, 0.31);
  glEnd();
}

// --- additive
inline void OldAdditive() {
  glEnable(GL_BLEND);
  glBlendFunc(GL_ONE, GL_ONE);
  glColor3d(0.5, 0.3, 0.1);
  glRectd(-0.8, -0.8, 0.3, 0.3);
  glColor3d(0.2, 0.4, 0.6);
  glRectd(-0.3, -0.3, 0.8, 0.8);
}

// --- fog
inline void OldFog() {
  glEnable(GL_FOG);
  glFogi(GL_FOG_MODE, GL_LINEAR);
  glFogf(GL_FOG_START, 2);
  glFogf(GL_FOG_END, 12);
  const float color[4] = {0.6f, 0.65f, 0.7f, 1};
  glFogfv(GL_FOG_COLOR, color);
  glMatrixMode(GL_PROJECTION);
  glFrustum(-0.5, 0.5, -0.5, 0.5, 1, 20);
  glMatrixMode(GL_MODELVIEW);
  glColor3d(0.7, 0.3, 0.1);
  glBegin(GL_QUADS);
  glVertex3d(-1, -1, -2.5), glVertex3d(1, -1, -2.5), glVertex3d(1, 2, -10), glVertex3d(-1, 2, -10);
  glEnd();
}

// --- clip plane
inline void OldClipPlane() {
  const double plane[4] = {1, -1, 0, 0.3}; // what satisfies x - y + 0.3 >= 0 stays
  glClipPlane(GL_CLIP_PLANE0, plane);
  glEnable(GL_CLIP_PLANE0);
  glColor3d(0.5, 0.8, 0.6);
  glRectd(-0.8, -0.8, 0.8, 0.8);
}

// --- accumulation
inline void OldAccumulation() {
  for (int i = 0; i < 4; ++i) {
    glClear(GL_COLOR_BUFFER_BIT);
    glColor3d(0.8, 0.8, 0.4);
    glRectd(0.2 * i - 0.8, -0.5, 0.2 * i, 0.5);
    glAccum(i == 0 ? GL_LOAD : GL_ACCUM, 0.25f);
  }
  glAccum(GL_RETURN, 1);
}

// --- texture matrix
inline void OldTextureMatrix() {
  glMatrixMode(GL_TEXTURE);
  glScaled(3, 2, 1);
  glMatrixMode(GL_MODELVIEW);
  glBegin(GL_QUADS);
  glTexCoord2d(0, 0), glVertex2d(-0.8, -0.8);
  glTexCoord2d(1, 0), glVertex2d(0.8, -0.8);
  glTexCoord2d(1, 1), glVertex2d(0.8, 0.8);
  glTexCoord2d(0, 1), glVertex2d(-0.8, 0.8);
  glEnd();
}

// --- vertex w
inline void OldVertexW() {
  glColor3d(0.9, 0.7, 0.3);
  glBegin(GL_TRIANGLES);
  glVertex4d(-1.6, -1.2, 0, 2), glVertex4d(0.4, -0.3, 0, 0.5), glVertex4d(0, 2.1, 0, 3);
  glEnd();
}

// --- two-sided
inline void OldTwoSided() {
  const float red[4] = {0.9f, 0.2f, 0.1f, 1};
  glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, red);
  glLightModeli(GL_LIGHT_MODEL_TWO_SIDE, 1);
  glEnable(GL_LIGHTING);
  glEnable(GL_LIGHT0);
  glBegin(GL_TRIANGLES);
  glNormal3d(0, 0, -1); // the back side is seen
  glVertex2d(-0.8, -0.7), glVertex2d(0, 0.8), glVertex2d(0.8, -0.7);
  glEnd();
}

// --- look at
/// gluPerspective and gluLookAt come from another library, but every old program calls them.
inline void OldLookAt() {
  const double f = 1 / std::tan(40 * kPi / 360), n = 1, far = 20; // gluPerspective(40, 1, 1, 20)
  const double lens[16] = {
      f, 0, 0, 0, 0, f, 0, 0, 0, 0, (far + n) / (n - far), -1, 0, 0, 2 * far * n / (n - far), 0};
  glMatrixMode(GL_PROJECTION);
  glLoadMatrixd(lens);
  glMatrixMode(GL_MODELVIEW);
  // gluLookAt(3, 4, 0, 0, 0, 0, 0, 1, 0): forward (-0.6, -0.8, 0), side (0, 0, -1), up (-0.8, 0.6,
  // 0)
  const double view[16] = {0, -0.8, 0.6, 0, 0, 0.6, 0.8, 0, -1, 0, 0, 0, 0, 0, -5, 1};
  glLoadMatrixd(view);
  glColor3d(0.6, 0.7, 0.9);
  glBegin(GL_QUADS);
  glVertex3d(-1, 0, -1), glVertex3d(-1, 0, 1), glVertex3d(1, 0, 1), glVertex3d(1, 0, -1);
  glEnd();
}

// --- which

inline bool DrawOld(const char* name) {
  static constexpr struct {
    const char* Name;
    void (*Draw)();
  } kOld[] = {
      {"quad-strip", OldQuadStrip},
      {"polygon", OldPolygon},
      {"list", OldList},
      {"flat", OldFlat},
      {"bitmap", OldBitmap},
      {"alpha-test", OldAlphaTest},
      {"scissor", OldScissor},
      {"viewport", OldViewport},
      {"wire", OldWire},
      {"wide", OldWide},
      {"stipple", OldStipple},
      {"additive", OldAdditive},
      {"fog", OldFog},
      {"clip-plane", OldClipPlane},
      {"accumulation", OldAccumulation},
      {"texture-matrix", OldTextureMatrix},
      {"vertex-w", OldVertexW},
      {"two-sided", OldTwoSided},
      {"look-at", OldLookAt},
  };
  for (const auto& old : kOld) {
    if (std::strcmp(old.Name, name) == 0) {
      old.Draw();
      return true;
    }
  }
  return false;
}

} // namespace porting
