// A closed cubic spline through a dozen points, drawn as a road: the polynomials give its course,
// their derivatives its direction, and the renderer the picture.

#include <cmath>
#include <cstdio>
#include <iterator>
#include <vector>

#include <ZxCore3D/ZxCore3D.h>
#include <ZxPixelKit/Image.h>

namespace {

using TPoint = vec_t_<double, 2>;

constexpr double kPi = 3.141592653589793;
constexpr int kWidth = 900;
constexpr int kHeight = 600;

/// Where the path is to go through, in pixels.
const TPoint s_points[] = {{120, 120}, {330, 80},  {470, 190}, {640, 90},  {800, 150}, {810, 330},
                           {670, 400}, {760, 520}, {560, 530}, {430, 380}, {250, 520}, {90, 400}};
constexpr unsigned long kCount = std::size(s_points);

/// One cubic for each coordinate of each segment: first all of x, then all of y.
struct TPath {
  std::vector<POLYNOM3> Polynomials = std::vector<POLYNOM3>(2 * kCount);

  bool Fit() { return CalcCubeSpline2D(s_points, sizeof(TPoint), kCount, true, &Polynomials[0]); }

  TPoint At(double s) const {
    const POLYNOM3& x = Polynomials[Segment(s)];
    const POLYNOM3& y = Polynomials[kCount + Segment(s)];
    const double t = s - std::floor(s);
    return {x.a + t * (x.b + t * (x.c + t * x.d)), y.a + t * (y.b + t * (y.c + t * y.d))};
  }

  /// To the left of the direction of travel, of unit length.
  TPoint Side(double s) const {
    const POLYNOM3& x = Polynomials[Segment(s)];
    const POLYNOM3& y = Polynomials[kCount + Segment(s)];
    const double t = s - std::floor(s);
    const TPoint along = {x.b + t * (2 * x.c + t * 3 * x.d), y.b + t * (2 * y.c + t * 3 * y.d)};
    const double size = length(along);
    return {-along.y / size, along.x / size};
  }

private:
  static unsigned long Segment(double s) { return static_cast<unsigned long>(s) % kCount; }
};

void Disc(TZxGL& gl, const TPoint& centre, double radius) {
  gl.Begin(GL_TRIANGLE_FAN);
  gl.Vertex2d(centre.x, centre.y);
  for (int i = 0; i <= 32; ++i) {
    const double angle = 2 * kPi * i / 32;
    gl.Vertex2d(centre.x + radius * std::cos(angle), centre.y + radius * std::sin(angle));
  }
  gl.End();
}

/// The strip between two distances to the side, from `from` to `to` along the path.
void Ribbon(TZxGL& gl, const TPath& path, double left, double right, double from, double to) {
  const int steps = static_cast<int>(std::ceil((to - from) * 48));
  gl.Begin(GL_TRIANGLE_STRIP);
  for (int i = 0; i <= steps; ++i) {
    const double s = from + (to - from) * i / steps;
    const TPoint at = path.At(s);
    const TPoint side = path.Side(s);
    gl.Vertex2d(at.x + side.x * left, at.y + side.y * left);
    gl.Vertex2d(at.x + side.x * right, at.y + side.y * right);
  }
  gl.End();
}

void Draw(TZxGL& gl, const TPath& path) {
  gl.ClearColor(0.16f, 0.30f, 0.18f, 1.0f);
  gl.Clear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
  gl.MatrixMode(GL_PROJECTION);
  gl.LoadIdentity();
  gl.Ortho(0, kWidth, 0, kHeight, -1, 1);
  gl.MatrixMode(GL_MODELVIEW);
  gl.LoadIdentity();

  gl.Color3f(0.85f, 0.85f, 0.80f);
  Ribbon(gl, path, 27, -27, 0, kCount);
  gl.Color3f(0.24f, 0.25f, 0.28f);
  Ribbon(gl, path, 23, -23, 0, kCount);
  gl.Color3f(0.95f, 0.80f, 0.30f);
  for (int dash = 0; dash < static_cast<int>(kCount) * 5; ++dash) {
    Ribbon(gl, path, 1.5, -1.5, dash / 5.0, dash / 5.0 + 0.1);
  }

  // The straight way from point to point, to compare.
  gl.Color3f(0.55f, 0.75f, 0.60f);
  gl.Begin(GL_LINE_LOOP);
  for (const TPoint& point : s_points) {
    gl.Vertex2d(point.x, point.y);
  }
  gl.End();
  for (const TPoint& point : s_points) {
    gl.Color3f(0.1f, 0.1f, 0.1f);
    Disc(gl, point, 9);
    gl.Color3f(0.95f, 0.35f, 0.25f);
    Disc(gl, point, 6.5);
  }
}

} // namespace

int main(int argc, char** argv) {
  const char* name = argc > 1 ? argv[1] : "spline_path.png";
  TPath path;
  if (!path.Fit()) {
    std::fprintf(stderr, "spline_path: the points have no spline\n");
    return 1;
  }
  Init_ZxCore3D();
  bool saved = false;
  {
    Zx3D::TRenderCPU gl;
    if (gl.Create(kWidth, kHeight, nullptr)) {
      Draw(gl, path);
      saved = SaveImage(name, nullptr, *gl.GetColorSurface());
    }
  }
  Deinit_ZxCore3D();
  if (!saved) {
    std::fprintf(stderr, "spline_path: can't write %s\n", name);
  }
  return saved ? 0 : 1;
}
