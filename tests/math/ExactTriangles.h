#pragma once

// Triangles with small whole coordinates, decided in exact fractions.

#include <array>
#include <cstddef>
#include <vector>

#include <ZxCore3D/types/vec_t_.h>

#include "math/Fraction.h"

namespace exact {

struct TPoint3 {
  TNumber x, y, z;
};

using TTriangle = std::array<TPoint3, 3>;

inline TPoint3 operator-(const TPoint3& a, const TPoint3& b) {
  return {a.x - b.x, a.y - b.y, a.z - b.z};
}

inline TPoint3 operator+(const TPoint3& a, const TPoint3& b) {
  return {a.x + b.x, a.y + b.y, a.z + b.z};
}

inline TPoint3 operator*(const TPoint3& a, const TNumber& s) { return {a.x * s, a.y * s, a.z * s}; }

inline TNumber Dot(const TPoint3& a, const TPoint3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

inline TPoint3 Cross(const TPoint3& a, const TPoint3& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

inline TPoint3 Normal(const TTriangle& t) { return Cross(t[1] - t[0], t[2] - t[0]); }

inline bool IsZero(const TPoint3& p) { return p.x == 0 && p.y == 0 && p.z == 0; }

inline double ToDouble(const TNumber& n) { return n.ToDouble(); }

inline vec_t_<double, 3> ToDouble(const TPoint3& p) {
  return {ToDouble(p.x), ToDouble(p.y), ToDouble(p.z)};
}

/// Whether a point of the triangle's plane lies in the closed triangle.
inline bool IsInside(const TPoint3& p, const TTriangle& t) {
  const TPoint3 n = Normal(t);
  for (std::size_t i = 0; i < 3; ++i) {
    if (Dot(Cross(t[(i + 1) % 3] - t[i], p - t[i]), n) < 0) {
      return false;
    }
  }
  return true;
}

/// Adds the points where the edges of `edges` meet the closed triangle `t`; for edges in the plane
/// of `t`, their ends in `t`.
inline void AddMeetings(const TTriangle& edges, const TTriangle& t, std::vector<TPoint3>* out) {
  const TPoint3 n = Normal(t);
  for (std::size_t i = 0; i < 3; ++i) {
    const TPoint3& p = edges[i];
    const TPoint3& q = edges[(i + 1) % 3];
    const TNumber dp = Dot(n, p - t[0]);
    const TNumber dq = Dot(n, q - t[0]);
    if (dp == 0 && dq == 0) {
      for (const TPoint3& end : {p, q}) {
        if (IsInside(end, t)) {
          out->push_back(end);
        }
      }
    } else if (dp * dq <= 0) {
      const TPoint3 meeting = p + (q - p) * (dp / (dp - dq));
      if (IsInside(meeting, t)) {
        out->push_back(meeting);
      }
    }
  }
}

/// The ends of the common part of two closed triangles in planes that are not parallel: nothing, or
/// two points, which can be the same.
inline std::vector<TPoint3> CommonSegment(const TTriangle& a, const TTriangle& b) {
  std::vector<TPoint3> meetings;
  AddMeetings(a, b, &meetings);
  AddMeetings(b, a, &meetings);
  if (meetings.empty()) {
    return {};
  }
  const TPoint3 along = Cross(Normal(a), Normal(b));
  TPoint3 first = meetings[0];
  TPoint3 last = meetings[0];
  for (const TPoint3& p : meetings) {
    if (Dot(along, p) < Dot(along, first)) {
      first = p;
    }
    if (Dot(along, p) > Dot(along, last)) {
      last = p;
    }
  }
  return {first, last};
}

/// How many vertices of `t` lie below, on and above the plane of `plane`.
struct TSides {
  int Below = 0, On = 0, Above = 0;

  TSides(const TTriangle& t, const TTriangle& plane) {
    const TPoint3 n = Normal(plane);
    for (const TPoint3& p : t) {
      const TNumber s = Dot(n, p - plane[0]);
      ++(s < 0 ? Below : s > 0 ? Above : On);
    }
  }
};

} // namespace exact
