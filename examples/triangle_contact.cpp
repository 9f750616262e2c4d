// Two triangles and what they have in common: on the left two that cut through each other, whose
// common part is a segment; on the right two in one plane, whose common part is a polygon.

#include <cmath>
#include <cstdio>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

namespace {

using TPoint = vec_t_<double, 3>;

/// How nearly parallel two planes have to be to count as parallel.
constexpr double kParallel = 1e-9;

void SetColor(TZxGL& gl, const TPoint& color, float alpha) {
  gl.Color4f(static_cast<float>(color.x), static_cast<float>(color.y), static_cast<float>(color.z),
             alpha);
}

void Fill(TZxGL& gl, const TPoint* corners, unsigned long count) {
  gl.Begin(GL_TRIANGLE_FAN);
  for (unsigned long i = 0; i < count; ++i) {
    gl.Vertex3dv(&corners[i].x);
  }
  gl.End();
}

void Outline(TZxGL& gl, const TPoint* corners, unsigned long count) {
  gl.Begin(GL_LINE_LOOP);
  for (unsigned long i = 0; i < count; ++i) {
    gl.Vertex3dv(&corners[i].x);
  }
  gl.End();
}

/// A tube around a segment: lines are one pixel wide, this can be seen.
void Tube(TZxGL& gl, const TPoint& from, const TPoint& to, double radius) {
  const TPoint along = to - from;
  TPoint u =
      cross(along, std::fabs(along.x) < 0.5 * length(along) ? TPoint{1, 0, 0} : TPoint{0, 1, 0});
  u = u * (radius / length(u));
  TPoint v = cross(along, u);
  v = v * (radius / length(v));
  gl.Begin(GL_TRIANGLE_STRIP);
  for (int i = 0; i <= 16; ++i) {
    const double angle = 2 * 3.141592653589793 * i / 16;
    const TPoint out = u * std::cos(angle) + v * std::sin(angle);
    const TPoint a = from + out;
    const TPoint b = to + out;
    gl.Vertex3dv(&a.x);
    gl.Vertex3dv(&b.x);
  }
  gl.End();
}

/// Draws the pair and returns how many points its common part has.
unsigned long DrawPair(TZxGL& gl, const TPoint* a, const TPoint* b) {
  const TPoint red = {0.85, 0.33, 0.28};
  const TPoint blue = {0.25, 0.47, 0.85};
  TPoint common[6];
  const unsigned long count = GetIntersectTriangles(a, b, common, kParallel);

  // Solid first, by depth; where both lie in one plane the first one stays, and the polygon goes on
  // top.
  gl.Enable(GL_DEPTH_TEST);
  gl.DepthFunc(GL_LESS);
  SetColor(gl, red, 1.0f);
  Fill(gl, a, 3);
  SetColor(gl, blue, 1.0f);
  Fill(gl, b, 3);

  // Then what stands behind, faintly, so that both triangles can be followed to their ends.
  gl.Disable(GL_DEPTH_TEST);
  gl.DepthMask(0);
  gl.Enable(GL_BLEND);
  gl.BlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  SetColor(gl, red, 0.25f);
  Fill(gl, a, 3);
  SetColor(gl, blue, 0.25f);
  Fill(gl, b, 3);
  gl.Disable(GL_BLEND);
  gl.Color3f(0.95f, 0.95f, 0.95f);
  Outline(gl, a, 3);
  Outline(gl, b, 3);

  gl.Color3f(1.0f, 0.85f, 0.25f);
  if (count == 2) {
    Tube(gl, common[0], common[1], 0.02);
  } else if (count > 2) {
    Fill(gl, common, count);
    gl.Color3f(0.2f, 0.15f, 0.0f);
    Outline(gl, common, count);
  }
  gl.DepthMask(1);
  return count;
}

bool Draw(TZxGL& gl) {
  gl.ClearColor(0.10f, 0.11f, 0.13f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.ColorMask(1, 1, 1, 0); // what is blended leaves the picture itself opaque
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadIdentity();
  gl.Frustum(-0.5, 0.5, -0.25, 0.25, 1.0, 20.0);
  gl.MatrixMode(GL_MODELVIEW);

  const TPoint cutA[3] = {{-1, -0.9, 0.2}, {1.1, -0.6, -0.3}, {0, 1.1, 0.1}};
  const TPoint cutB[3] = {{-0.9, 0.5, -1.0}, {1.0, 0.15, -0.8}, {0.15, -0.35, 1.2}};
  gl.LoadIdentity();
  gl.Translated(-1.25, 0, -5);
  gl.Rotated(25, 1, 0, 0);
  gl.Rotated(-30, 0, 1, 0);
  const unsigned long segment = DrawPair(gl, cutA, cutB);

  const TPoint flatA[3] = {{-1.05, -0.7, 0}, {1.05, -0.7, 0}, {0, 1.0, 0}};
  const TPoint flatB[3] = {{-0.95, 0.55, 0}, {0.1, -1.05, 0}, {1.0, 0.6, 0}};
  gl.LoadIdentity();
  gl.Translated(1.25, 0, -5);
  gl.Rotated(-20, 1, 0, 0);
  gl.Rotated(20, 0, 1, 0);
  const unsigned long polygon = DrawPair(gl, flatA, flatB);

  std::printf("cutting: %lu points, in one plane: %lu points\n", segment, polygon);
  return segment == 2 && polygon == 6;
}

} // namespace

int main(int argc, char** argv) {
  const char* name = argc > 1 ? argv[1] : "triangle_contact.png";
  Init_ZxCore3D();
  bool ok = false;
  {
    Zx3D::TRenderCPU gl;
    ok = gl.Create(1000, 500, nullptr) && Draw(gl) &&
         SaveImage(name, nullptr, *gl.GetColorSurface());
  }
  Deinit_ZxCore3D();
  if (!ok) {
    std::fprintf(stderr, "triangle_contact: no contact where there is one, or can't write %s\n",
                 name);
  }
  return ok ? 0 : 1;
}
