#pragma once

#include "Scenes.h"

// Where the pictures differ, and what makes them the same.

namespace porting {

template <class TGl> void DrawColors(TGl& gl, const char* name) {
  SetCamera(gl);
  SetMaterial(gl, Is(name, "highlight") ? 1 : 0);
  if (Is(name, "clamp")) {
    // Four corners and a light close to one of them: that corner's colour exceeds 1, unless dimmed.
    SetLight(gl, -0.9, 0.9, -4.2, 1, std::strcmp(name, "clamp") == 0 ? 6 : 0.9);
    gl.Lightf(GL_LIGHT0, GL_QUADRATIC_ATTENUATION, 1);
    Wall(gl, 1);
    return;
  }
  SetLight(gl, -1, 1, 1.5, 0, 0.8);
  if (std::strcmp(name, "highlight-separate") == 0) {
    gl.LightModeli(GL_LIGHT_MODEL_COLOR_CONTROL, GL_SEPARATE_SPECULAR_COLOR);
  }
  MakeChecks(gl);
  gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  gl.TexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  Ball(gl, 64);
}

/// Aims the light, in eye space; the direction of a spot is an arrow from the light.
template <class TGl> void Aim(TGl& gl, double x, double y, double z, float cutoff) {
  const float direction[3] = {static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
  gl.PushMatrix();
  gl.LoadIdentity();
  gl.Lightfv(GL_LIGHT0, GL_SPOT_DIRECTION, direction);
  gl.PopMatrix();
  gl.Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, cutoff);
}

template <class TGl> void DrawSpots(TGl& gl, const char* name) {
  SetCamera(gl);
  SetMaterial(gl, 0);
  if (std::strcmp(name, "spot-ambient") == 0 || std::strcmp(name, "spot-no-ambient") == 0) {
    // The cone holds the whole ball, which turns its left half away from the light.
    const float ambient[4] = {0.6f, 0.6f, 0.6f, 1}, none[4] = {0, 0, 0, 1};
    gl.Lightfv(GL_LIGHT0, GL_AMBIENT, std::strcmp(name, "spot-ambient") == 0 ? ambient : none);
    SetLight(gl, 3, 0, -4, 1, 0.8);
    Aim(gl, -0.9486833, 0, -0.3162278, 40);
    Ball(gl, 64);
    return;
  }
  SetLight(gl, 0.2, 0.1, -2.5, 1, 1);
  if (std::strcmp(name, "spot-default") == 0) {
    gl.Lightf(GL_LIGHT0, GL_SPOT_CUTOFF, 25);
  } else {
    Aim(gl, 0, 0, std::strcmp(name, "spot-length") == 0 ? -2 : -1, 25);
  }
  Wall(gl, 60);
}

template <class TGl> void DrawHighlights(TGl& gl, const char* name) {
  SetCamera(gl);
  SetMaterial(gl, Is(name, "attenuation-matt") ? 0 : 1);
  if (Is(name, "half-vector")) {
    SetLight(gl, 0.6, 0.6, std::strcmp(name, "half-vector") == 0 ? -4 : 1,
             std::strcmp(name, "half-vector") == 0 ? 1 : 0, 0.8);
    Wall(gl, 60);
    return;
  }
  SetLight(gl, 0, 0, 40, 1, 0.9); // far away, where both half vectors agree
  gl.Lightf(GL_LIGHT0, GL_LINEAR_ATTENUATION, 0.05f);
  Ball(gl, 64);
}

template <class TGl> void DrawNormals(TGl& gl, const char* name) {
  SetCamera(gl);
  SetMaterial(gl, 0);
  SetLight(gl, -1, 1, 0.3, 0, 1);
  gl.Rotated(20, 0, 0, 1);
  gl.Scaled(1, 0.3, 1);
  // The inverse of the scale for a normal, and once more, since the scale will act on it.
  const double y = 1 / (0.3 * 0.3);
  if (!TGl::kOpenGL && std::strcmp(name, "normals-prepared") == 0) {
    Ball(gl, 64, {1, y, 1});
  } else {
    Ball(gl, 64);
  }
}

template <class TGl> void DrawLines(TGl& gl) {
  gl.Color3d(1, 0.9, 0.4);
  gl.Begin(GL_LINES);
  for (int i = 0; i < 14; ++i) {
    const double a = 2 * kPi * (i + 0.3) / 14;
    gl.Vertex2d(0.15 * std::cos(a), 0.15 * std::sin(a));
    gl.Vertex2d(0.9 * std::cos(a), 0.9 * std::sin(a));
  }
  gl.End();
}

template <class TGl> void DrawFastest(TGl& gl, const char* name) {
  SetCamera(gl);
  MakeChecks(gl);
  if (std::strcmp(name, "fastest") == 0) {
    gl.Hint(GL_PERSPECTIVE_CORRECTION_HINT, GL_FASTEST);
  }
  gl.Rotated(-65, 1, 0, 0);
  gl.Scaled(1.2, 2, 1);
  Wall(gl, 1);
}

template <class TGl> void DrawDepth(TGl& gl, const char* name) {
  SetCamera(gl);
  gl.Disable(GL_DEPTH_TEST); // a backdrop, drawn near and without the test
  if (std::strcmp(name, "depth-masked") == 0) {
    gl.DepthMask(0);
  }
  gl.Color3d(0.2, 0.4, 0.6);
  Rectangle(gl, -0.6, -0.6, 0.6, 0.6, 2);
  gl.DepthMask(1);
  gl.Enable(GL_DEPTH_TEST);
  gl.Color3d(0.9, 0.5, 0.2);
  Rectangle(gl, -0.4, -0.9, 0.9, 0.4, 0);
}

template <class TGl> void DrawTexture(TGl& gl, const char* name) {
  SetCamera(gl);
  if (std::strcmp(name, "texture-0") == 0) {
    GiveChecks(gl); // no texture was bound: OpenGL has one called 0
  } else {
    MakeChecks(gl);
  }
  Wall(gl, 1);
}

/// Whether `name` is one of these.
template <class TGl> bool DrawDifference(TGl& gl, const char* name) {
  if (Is(name, "clamp") || Is(name, "highlight")) {
    DrawColors(gl, name);
  } else if (Is(name, "spot")) {
    DrawSpots(gl, name);
  } else if (Is(name, "half-vector") || Is(name, "attenuation")) {
    DrawHighlights(gl, name);
  } else if (Is(name, "normals")) {
    DrawNormals(gl, name);
  } else if (Is(name, "lines")) {
    DrawLines(gl);
  } else if (Is(name, "fastest")) {
    DrawFastest(gl, name);
  } else if (Is(name, "depth")) {
    DrawDepth(gl, name);
  } else if (Is(name, "texture-0") || Is(name, "texture-named")) {
    DrawTexture(gl, name);
  } else {
    return false;
  }
  return true;
}

} // namespace porting
