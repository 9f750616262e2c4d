#pragma once

#include <ZxCore3D/types/Export.h>
#include <ZxCore3D/types/vec_t_.h>

// A triangle is three consecutive points, or three references. `eps` decides only when two planes
// count as parallel (the cosine between their unit normals lies outside -1 + eps to 1 - eps) and
// whether parallel planes count as one (their offsets differ by at most eps). It is no distance
// tolerance: all other comparisons are exact.
//
// What a user may not expect:
// - Touching is one-sided. A vertex exactly on the other triangle's plane counts as above it, so a
//   triangle that touches the plane from above misses and one that touches it from below goes on.
//   In which direction "above" lies follows from the order of the three vertices.
// - Between coplanar triangles the count of outside vertices runs on through the three edges of `a`
//   and rejects when it happens to equal the number of vertices left. About a third of all
//   overlapping coplanar pairs is rejected so, and the answer can change when the two triangles
//   change places or `a` starts at another vertex. All six arrangements together missed none of
//   191,056 random overlapping pairs.
// - On the same coplanar pair `IsIntersectTriangles` can be true where `GetIntersectTriangles`
//   is 0.
// - A triangle with three points on a line meets nothing, as long as `eps` is below 1.
// - `eps` of 1 sends every pair to the coplanar case but those at an exact right angle.
//
// Nothing is allocated.

/// Whether the triangles `a` and `b` meet.
ZX_CORE3D_API bool IsIntersectTriangles(const vec_t_<double, 3>* a, const vec_t_<double, 3>* b,
                                        double eps);

/// The same for vertices that do not lie side by side.
ZX_CORE3D_API bool IsIntersectTriangles(const vec_t_<double, 3>& a0, const vec_t_<double, 3>& a1,
                                        const vec_t_<double, 3>& a2, const vec_t_<double, 3>& b0,
                                        const vec_t_<double, 3>& b1, const vec_t_<double, 3>& b2,
                                        double eps);

/// The common part of the triangles `a` and `b`. `out` has room for six points; only as many are
/// written as the result says.
///
/// Returns 0 for no contact. Planes that are not parallel: 1 for a contact in one point, 2 for a
/// segment given by its ends. Coplanar triangles: the 1 to 6 vertices of the common polygon in
/// order. When both triangles meet the common line in a single point, the result is 1 and the point
/// is NaN, even if the two points lie apart.
///
/// Between nearly degenerate coplanar triangles rounding can ask for a seventh vertex (about once
/// in 130,000 such pairs); the first six are given.
ZX_CORE3D_API unsigned long GetIntersectTriangles(const vec_t_<double, 3>* a,
                                                  const vec_t_<double, 3>* b,
                                                  vec_t_<double, 3>* out, double eps);

/// The same for vertices that do not lie side by side.
ZX_CORE3D_API unsigned long
GetIntersectTriangles(const vec_t_<double, 3>& a0, const vec_t_<double, 3>& a1,
                      const vec_t_<double, 3>& a2, const vec_t_<double, 3>& b0,
                      const vec_t_<double, 3>& b1, const vec_t_<double, 3>& b2,
                      vec_t_<double, 3>* out, double eps);
