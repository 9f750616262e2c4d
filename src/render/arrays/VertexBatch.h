#pragma once

#include <cstddef>
#include <cstdint>

#include <ZxCore3D/render/stages/ClipPlanes.h>

namespace Zx3D {

/// Positions of the vertices of an array draw, many at a time: first as fetched, then in clip
/// space. Corner c of shape s (a triangle, a line, ...) is entry `c * Pitch + s`.
struct TVertexBatch {
  static constexpr int kMost = 96;

  alignas(64) double X[kMost];
  alignas(64) double Y[kMost];
  alignas(64) double Z[kMost];
  alignas(64) double W[kMost];
  int Pitch; ///< a multiple of 8
};

/// The points of a batch in the window.
struct TPointBatch {
  alignas(64) std::int32_t X[TVertexBatch::kMost]; ///< -1 for a point that falls on no pixel
  alignas(64) std::int32_t Y[TVertexBatch::kMost];
  alignas(64) float Depth[TVertexBatch::kMost];
  alignas(64) unsigned char Bytes[4 * TVertexBatch::kMost]; ///< colours as they are written
  int Count;
};

/// How the clip planes and the face mode classify the shapes of a batch: bit s is shape s.
struct TShapeClasses {
  std::uint64_t Inside = 0;  ///< within all planes
  std::uint64_t Outside = 0; ///< dropped by the first plane that doesn't pass it whole
  std::uint64_t Beyond = 0;  ///< cut by a plane or two, then all pieces dropped by another
  std::uint64_t Culled = 0;  ///< inside, and taken out by its face
  std::uint64_t Front = 0;   ///< of those that are inside
};

/// Finds the shapes that are inside and those outside, by what the planes have inside of each
/// column.
TShapeClasses ClassifyShapes(const TInsideBits (&inside)[4], const TShapeColumns& columns);

/// The rows of a batch's triangles in the window: see `TRowPlan`.
struct TTriangleRows {
  static constexpr int kMost = TVertexBatch::kMost / 3;

  alignas(64) double First[2][kMost];
  alignas(64) double Count[2][kMost];
  alignas(64) double Order[kMost];
};

/// The pixels on which the vertices of a batch's lines fall.
struct TLineEnds {
  alignas(64) std::int32_t X[TVertexBatch::kMost];
  alignas(64) std::int32_t Y[TVertexBatch::kMost];
};

/// The shapes of a batch in the window: triangles, of quads in two halves, or lines.
struct TWindowShapes {
  TTriangleRows Rows[2];
  TLineEnds Ends;
};

} // namespace Zx3D
