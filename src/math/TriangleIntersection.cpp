#include <ZxCore3D/math/TriangleIntersection.h>

#include <cmath>
#include <utility>

#include <ZxCore3D/types/private/VectorForms.h>

namespace {

using TPoint2 = vec_t_<double, 2>;
using TPoint3 = vec_t_<double, 3>;

constexpr int p1m3[3] = {1, 2, 0};
constexpr int m1m3[3] = {2, 0, 1};

constexpr unsigned long kMaxOut = 6;

// An edge adds at most one vertex for every two that a polygon has, which only rounding can reach:
// 3, 4, 6, 9.
constexpr unsigned long kMaxVertices = 9;

TPoint3 Normalised(const TPoint3& v) {
  const double l = length(v);
  if (l == 0.0) {
    return v;
  }
  return {v.x / l, v.y / l, v.z / l};
}

/// The unit normal of a triangle, and the plane's offset along it.
struct TPlane {
  TPoint3 Normal;
  double Offset;

  explicit TPlane(const TPoint3* t)
      : Normal(Normalised(cross(t[1] - t[0], t[2] - t[0]))), Offset(dot(t[0], Normal)) {}
};

struct TSegment {
  TPoint3 P0, P1;

  double LengthSqr() const {
    const TPoint3 d = P1 - P0;
    return dot(d, d);
  }
};

/// The common part of two segments on one line, as a range of the parameter `(p - P0) . D`.
struct TContact {
  TSegment Longer;
  double Length; ///< squared length of `Longer`
  double Low, High;
};

TPoint3 CutEdge(const TPoint3* t, const double* s, int i, int j) {
  const double d = s[i];
  return t[i] + (t[j] - t[i]) * (d / (d - s[j]));
}

/// Cuts the triangle `t` by a plane; false when it lies on one side.
bool CutTriangle(const TPoint3* t, const TPlane& plane, TSegment* out) {
  double s[3];
  int negatives = 0;
  for (int i = 0; i < 3; ++i) {
    s[i] = dot(plane.Normal, t[i]) - plane.Offset;
    negatives += s[i] < 0.0 ? 1 : 0;
  }
  if (negatives == 0 || negatives == 3) {
    return false;
  }
  // The lone vertex: alone on its side of the plane.
  int i = s[2] < 0.0 ? 2 : (s[1] < 0.0 ? 1 : 0);
  if (negatives == 2) {
    i = p1m3[i];
    if (s[i] < 0.0) {
      i = p1m3[i];
    }
  }
  out->P0 = CutEdge(t, s, i, p1m3[i]);
  out->P1 = CutEdge(t, s, i, m1m3[i]);
  return true;
}

bool CrossTriangles(const TPoint3* a, const TPoint3* b, const TPlane& planeA, const TPlane& planeB,
                    TContact* out) {
  TSegment p;
  TSegment q;
  if (!CutTriangle(a, planeB, &p) || !CutTriangle(b, planeA, &q)) {
    return false;
  }
  if (q.LengthSqr() > p.LengthSqr()) {
    std::swap(p, q);
  }
  const TPoint3 d = p.P1 - p.P0;
  const double u0 = dot(q.P0 - p.P0, d);
  const double u1 = dot(q.P1 - p.P0, d);
  out->Longer = p;
  out->Length = p.LengthSqr();
  out->Low = u1 < u0 ? u1 : u0;
  out->High = u1 < u0 ? u0 : u1;
  return !(out->High < 0.0 || out->Low > out->Length);
}

unsigned long StoreContact(const TContact& contact, TPoint3* out) {
  const TPoint3 d = contact.Longer.P1 - contact.Longer.P0;
  const double low = contact.Low < 0.0 ? 0.0 : contact.Low;
  const double high = contact.High > contact.Length ? contact.Length : contact.High;
  out[0] = contact.Longer.P0 + d * (low / contact.Length);
  if (high == low) {
    return 1;
  }
  out[1] = contact.Longer.P0 + d * (high / contact.Length);
  return 2;
}

bool IsSamePlane(double c, double offsetA, double offsetB, double eps) {
  if (c > 0.0 && std::fabs(offsetB - offsetA) > eps) {
    return false;
  }
  if (c < 0.0 && std::fabs(-offsetB - offsetA) > eps) {
    return false;
  }
  return true;
}

/// Coordinates in the plane of a triangle, in which it runs counter-clockwise.
struct TFrame {
  TPoint3 Origin, E, F;

  TFrame(const TPoint3* t, const TPoint3& normal)
      : Origin(t[0]), E(Normalised(t[1] - t[0])), F(Normalised(cross(normal, E))) {}

  TPoint2 ToPlane(const TPoint3& p) const {
    const TPoint3 v = p - Origin;
    return {dot(v, E), dot(v, F)};
  }
  TPoint3 ToSpace(const TPoint2& p) const { return Origin + E * p.x + F * p.y; }
};

struct TPolygon {
  TPoint2 Vertex[kMaxVertices];
  unsigned long Count = 0;

  void Append(const TPoint2& p) { Vertex[Count++] = p; }
};

/// One edge of the clip; `s` holds the side of every vertex. A NaN counts as outside.
void ClipByEdge(const TPolygon& from, const double* s, TPolygon* to) {
  unsigned long prev = from.Count - 1;
  for (unsigned long cur = 0; cur < from.Count; prev = cur++) {
    const bool inside = s[cur] > 0.0;
    const bool leaves = !inside && s[prev] > 0.0;
    const bool enters = inside && !(s[prev] >= 0.0);
    if (s[cur] == 0.0) {
      to->Append(from.Vertex[cur]);
      continue;
    }
    if (leaves || enters) {
      const TPoint2 d = from.Vertex[cur] - from.Vertex[prev];
      to->Append(from.Vertex[prev] + d * (s[prev] / (s[prev] - s[cur])));
    }
    if (inside) {
      to->Append(from.Vertex[cur]);
    }
  }
}

/// Clips triangle `b` by the three edges of triangle `a`; false when an edge rejects. The polygon
/// that is left can be empty even so, since the count of outside vertices is never reset.
bool ClipCoplanar(const TPoint3* a, const TPoint3* b, const TFrame& frame, TPolygon* out) {
  const TPoint2 clip[3] = {frame.ToPlane(a[0]), frame.ToPlane(a[1]), frame.ToPlane(a[2])};
  TPolygon buffers[2];
  TPolygon* polygon = &buffers[0];
  TPolygon* other = &buffers[1];
  for (int i = 0; i < 3; ++i) {
    polygon->Append(frame.ToPlane(b[i]));
  }
  unsigned long negatives = 0;
  for (int t = 0; t < 3 && polygon->Count != 0; ++t) {
    const TPoint2 p = clip[t];
    const TPoint2 edge = clip[p1m3[t]] - p;
    double s[kMaxVertices];
    for (unsigned long i = 0; i < polygon->Count; ++i) {
      const TPoint2 v = polygon->Vertex[i] - p;
      s[i] = edge.x * v.y - edge.y * v.x;
      negatives += s[i] < 0.0 ? 1 : 0;
    }
    if (negatives == polygon->Count) {
      return false;
    }
    if (negatives != 0) {
      other->Count = 0;
      ClipByEdge(*polygon, s, other);
      std::swap(polygon, other);
    }
  }
  *out = *polygon;
  return true;
}

/// Whether the planes cross at an angle at which the general case is taken.
bool IsGeneral(double c, double eps) { return c >= -1.0 + eps && c <= 1.0 - eps; }

} // namespace

bool IsIntersectTriangles(const TPoint3* a, const TPoint3* b, double eps) {
  const TPlane planeA(a);
  const TPlane planeB(b);
  const double c = dot(planeA.Normal, planeB.Normal);
  if (IsGeneral(c, eps)) {
    TContact contact;
    return CrossTriangles(a, b, planeA, planeB, &contact);
  }
  if (!IsSamePlane(c, planeA.Offset, planeB.Offset, eps)) {
    return false;
  }
  TPolygon polygon;
  return ClipCoplanar(a, b, TFrame(a, planeA.Normal), &polygon);
}

bool IsIntersectTriangles(const TPoint3& a0, const TPoint3& a1, const TPoint3& a2,
                          const TPoint3& b0, const TPoint3& b1, const TPoint3& b2, double eps) {
  const TPoint3 a[3] = {a0, a1, a2};
  const TPoint3 b[3] = {b0, b1, b2};
  return IsIntersectTriangles(a, b, eps);
}

unsigned long GetIntersectTriangles(const TPoint3* a, const TPoint3* b, TPoint3* out, double eps) {
  const TPlane planeA(a);
  const TPlane planeB(b);
  const double c = dot(planeA.Normal, planeB.Normal);
  if (IsGeneral(c, eps)) {
    TContact contact;
    return CrossTriangles(a, b, planeA, planeB, &contact) ? StoreContact(contact, out) : 0;
  }
  if (!IsSamePlane(c, planeA.Offset, planeB.Offset, eps)) {
    return 0;
  }
  const TFrame frame(a, planeA.Normal);
  TPolygon polygon;
  if (!ClipCoplanar(a, b, frame, &polygon)) {
    return 0;
  }
  const unsigned long count = polygon.Count < kMaxOut ? polygon.Count : kMaxOut;
  for (unsigned long i = 0; i < count; ++i) {
    out[i] = frame.ToSpace(polygon.Vertex[i]);
  }
  return count;
}

unsigned long GetIntersectTriangles(const TPoint3& a0, const TPoint3& a1, const TPoint3& a2,
                                    const TPoint3& b0, const TPoint3& b1, const TPoint3& b2,
                                    TPoint3* out, double eps) {
  const TPoint3 a[3] = {a0, a1, a2};
  const TPoint3 b[3] = {b0, b1, b2};
  return GetIntersectTriangles(a, b, out, eps);
}
