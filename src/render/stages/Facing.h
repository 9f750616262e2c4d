// Tested by: tests/render/Triangles.cpp (Triangles.*), tests/render/VertexBatches.cpp
// (VertexBatches.*)

#pragma once

namespace Zx3D {

/// Twice the signed area of a triangle, by the sum that facing is defined by:
///
///     (x0 y1 - x1 y0) + (x1 y2 - x2 y1) + (x2 y0 - x0 y2)
///
/// The corners are those of normalised device coordinates. A triangle faces the viewer if its area
/// is at least 0, or below 0 where clockwise is the front.
inline bool FacesFront(const double (&x)[3], const double (&y)[3], bool frontCCW) {
  const double area =
      (x[0] * y[1] - x[1] * y[0]) + (x[1] * y[2] - x[2] * y[1]) + (x[2] * y[0] - x[0] * y[2]);
  return frontCCW ? area >= 0.0 : area < 0.0;
}

} // namespace Zx3D
