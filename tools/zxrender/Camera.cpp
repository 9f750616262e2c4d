#include "Scene.h"

#include <algorithm>
#include <limits>

#include "Angles.h"

namespace zx_scene {

namespace {

// A little air round the model.
constexpr double kMargin = 1.06;

struct TAxes {
  TPoint Right;
  TPoint Up;
  TPoint Back; ///< from the model to the eye
};

double _Dot(const TPoint& a, const TPoint& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }

TPoint _ToZUp(const TPoint& point) { return {point[0], -point[2], point[1]}; }

TAxes _LookFrom(double azimuth, double elevation, bool zUp) {
  const double sinA = SinOfDegrees(azimuth);
  const double cosA = CosOfDegrees(azimuth);
  const double sinE = SinOfDegrees(elevation);
  const double cosE = CosOfDegrees(elevation);
  TAxes axes = {
      {cosA, 0, -sinA}, {-sinA * sinE, cosE, -cosA * sinE}, {sinA * cosE, sinE, cosA * cosE}};
  if (zUp) {
    for (TPoint* axis : {&axes.Right, &axes.Up, &axes.Back}) {
      *axis = _ToZUp(*axis);
    }
  }
  return axes;
}

// The matrix that brings points into the axes of an eye. `moves` are the coordinates of the origin
// in these axes.
void _SetView(const TAxes& axes, const double moves[3], double view[16]) {
  const TPoint* const rows[] = {&axes.Right, &axes.Up, &axes.Back};
  for (std::size_t r = 0; r < 3; ++r) {
    for (std::size_t c = 0; c < 3; ++c) {
      view[4 * c + r] = (*rows[r])[c];
    }
    view[12 + r] = moves[r];
    view[4 * r + 3] = 0;
  }
  view[15] = 1;
}

// The points that pieces use, from the middle of their bounds on.
std::vector<TPoint> _Points(const TModel& model, TPoint* center) {
  std::vector<TPoint> points;
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  TPoint low = {kInfinity, kInfinity, kInfinity};
  TPoint high = {-kInfinity, -kInfinity, -kInfinity};
  for (const TMesh& mesh : model.Meshes) {
    std::vector<bool> used(mesh.Vertices.size());
    for (const std::uint32_t index : mesh.Indices) {
      used[index] = true;
    }
    for (std::size_t i = 0; i < used.size(); ++i) {
      if (!used[i]) {
        continue;
      }
      const float* p = mesh.Vertices[i].Position;
      points.push_back({p[0], p[1], p[2]});
      for (std::size_t c = 0; c < 3; ++c) {
        low[c] = std::min(low[c], points.back()[c]);
        high[c] = std::max(high[c], points.back()[c]);
      }
    }
  }
  for (std::size_t c = 0; c < 3; ++c) {
    (*center)[c] = (low[c] + high[c]) / 2;
  }
  for (TPoint& point : points) {
    for (std::size_t c = 0; c < 3; ++c) {
      point[c] -= (*center)[c];
    }
  }
  return points;
}

// How far along each axis of the eye the picture reaches. A point (x, y, z) in these axes is seen
// from a distance d, the eye being moved by c to the side, if |x - c| <= (d - z) * t, with t the
// tangent of half the angle: so d * t + c >= x + z * t and d * t - c >= -x + z * t.
struct TReach {
  double Right = 0;
  double Left = 0;
  double Top = 0;
  double Bottom = 0;
  double Near = 0;
  double Far = 0;
};

TReach _Reach(const std::vector<TPoint>& points, const TAxes& axes, double halfWidth,
              double halfHeight) {
  constexpr double kLeast = -std::numeric_limits<double>::infinity();
  TReach reach = {kLeast, kLeast, kLeast, kLeast, kLeast, kLeast};
  for (const TPoint& point : points) {
    const double x = _Dot(point, axes.Right);
    const double y = _Dot(point, axes.Up);
    const double z = _Dot(point, axes.Back);
    reach.Right = std::max(reach.Right, x + z * halfWidth);
    reach.Left = std::max(reach.Left, -x + z * halfWidth);
    reach.Top = std::max(reach.Top, y + z * halfHeight);
    reach.Bottom = std::max(reach.Bottom, -y + z * halfHeight);
    reach.Near = std::max(reach.Near, z);
    reach.Far = std::max(reach.Far, -z);
  }
  return reach;
}

} // namespace

std::vector<TCamera> FrameModel(const TModel& model, const TView& view, int frames) {
  TPoint center;
  const std::vector<TPoint> points = _Points(model, &center);
  if (points.empty() || frames < 1) {
    return {};
  }
  const double half = SinOfDegrees(view.FieldOfView / 2) / CosOfDegrees(view.FieldOfView / 2);
  const double aspect = static_cast<double>(view.Width) / view.Height;
  const double halfWidth = aspect > 1 ? half * aspect : half;
  const double halfHeight = aspect > 1 ? half : half / aspect;
  std::vector<TAxes> sides;
  std::vector<TReach> reaches;
  TReach all = {};
  for (int i = 0; i < frames; ++i) {
    sides.push_back(_LookFrom(view.Azimuth + 360.0 * i / frames, view.Elevation, view.ZUp));
    reaches.push_back(_Reach(points, sides.back(), halfWidth / kMargin, halfHeight / kMargin));
    const TReach& one = reaches.back();
    all = i == 0 ? one : TReach{std::max(all.Right, one.Right), std::max(all.Left, one.Left),
                                std::max(all.Top, one.Top),     std::max(all.Bottom, one.Bottom),
                                std::max(all.Near, one.Near),   std::max(all.Far, one.Far)};
  }
  // Round a turntable the model stays where it is: no move to the side.
  const double right = frames > 1 ? std::max(all.Right, all.Left) : all.Right;
  const double left = frames > 1 ? right : all.Left;
  const double sideways = (right - left) / 2;
  const double upward = (all.Top - all.Bottom) / 2;
  double distance = std::max((right + left) / 2 / (halfWidth / kMargin),
                             (all.Top + all.Bottom) / 2 / (halfHeight / kMargin));
  const double size = std::max({right + left, all.Top + all.Bottom, all.Near + all.Far});
  // A single point, or all points in one line of sight, leave the distance open.
  distance = std::max(distance, all.Near + size * 0.01);
  if (!(distance > 0)) {
    distance = 1;
  }
  std::vector<TCamera> cameras;
  for (const TAxes& axes : sides) {
    TCamera camera = {};
    camera.HalfWidth = halfWidth;
    camera.HalfHeight = halfHeight;
    camera.Near = std::max((distance - all.Near) * 0.9, distance * 1e-4);
    camera.Far = (distance + all.Far) * 1.01;
    const double moves[] = {-sideways - _Dot(axes.Right, center), -upward - _Dot(axes.Up, center),
                            -distance - _Dot(axes.Back, center)};
    _SetView(axes, moves, camera.View);
    cameras.push_back(camera);
  }
  return cameras;
}

TPoint DirectionOf(double azimuth, double elevation, bool zUp) {
  return _LookFrom(azimuth, elevation, zUp).Back;
}

bool TakeFileCamera(const TModel& model, const TView& view, const std::string& name, TCamera* out,
                    std::string* error) {
  const auto found =
      std::find_if(model.Cameras.begin(), model.Cameras.end(),
                   [&](const TFileCamera& camera) { return name.empty() || camera.Name == name; });
  if (found == model.Cameras.end()) {
    *error = model.Cameras.empty() ? "the file holds no camera"
                                   : "the file holds no camera '" + name + "', but";
    for (const TFileCamera& camera : model.Cameras) {
      error->append(" '").append(camera.Name).append("'");
    }
    return false;
  }
  const TFileCamera& from = *found;
  const TAxes axes = {from.Right, from.Up, from.Back};
  const double moves[] = {-_Dot(axes.Right, from.Position), -_Dot(axes.Up, from.Position),
                          -_Dot(axes.Back, from.Position)};
  *out = {};
  _SetView(axes, moves, out->View);
  out->Orthographic = from.Orthographic;
  out->HalfHeight = from.HalfHeight;
  out->HalfWidth = from.HalfHeight * view.Width / view.Height;
  // The planes are drawn in as far as nothing is cut off by that: depth is finer between them.
  TPoint center;
  double nearest = std::numeric_limits<double>::infinity();
  double farthest = -nearest;
  for (const TPoint& point : _Points(model, &center)) {
    const double distance =
        -(_Dot(axes.Back, point) + _Dot(axes.Back, center) - _Dot(axes.Back, from.Position));
    nearest = std::min(nearest, distance);
    farthest = std::max(farthest, distance);
  }
  const double least = from.Orthographic ? 0 : std::max(farthest, 1e-30) * 1e-6;
  out->Near = std::max({from.Near, nearest * 0.9, least});
  out->Far = farthest * 1.01;
  if (from.Far > 0) {
    out->Far = std::min(out->Far, from.Far);
  }
  // Everything lies behind the eye, or before the near plane: an empty picture.
  if (!(out->Far > out->Near)) {
    out->Near = from.Near > 0 ? from.Near : 0.1;
    out->Far = from.Far > out->Near ? from.Far : 1000 * out->Near;
  }
  return true;
}

} // namespace zx_scene
