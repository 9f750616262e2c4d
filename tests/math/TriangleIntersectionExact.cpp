// Triangle contact against exact fractions on small whole coordinates.

#include <ZxCore3D/math/TriangleIntersection.h>

#include <algorithm>
#include <cmath>
#include <random>

#include <gtest/gtest.h>

#include "math/ExactTriangles.h"

namespace {

using exact::TNumber;
using exact::TPoint3;
using exact::TSides;
using exact::TTriangle;

constexpr double kEps = 1e-9;

struct TContact {
  bool Meets;
  unsigned long Count;
  vec_t_<double, 3> Points[6];
};

TContact Contact(const TTriangle& a, const TTriangle& b) {
  vec_t_<double, 3> av[3];
  vec_t_<double, 3> bv[3];
  for (std::size_t i = 0; i < 3; ++i) {
    av[i] = ToDouble(a[i]);
    bv[i] = ToDouble(b[i]);
  }
  TContact contact;
  contact.Meets = IsIntersectTriangles(av, bv, kEps);
  contact.Count = GetIntersectTriangles(av, bv, contact.Points, kEps);
  return contact;
}

class TSource {
public:
  explicit TSource(unsigned int seed) : m_Random(seed) {}

  int Whole(int low, int high) { return std::uniform_int_distribution<int>(low, high)(m_Random); }

  TPoint3 Point(int size) { return {Whole(-size, size), Whole(-size, size), Whole(-size, size)}; }

  /// A triangle with an area.
  TTriangle Triangle(int size) {
    for (;;) {
      const TTriangle t = {Point(size), Point(size), Point(size)};
      if (!IsZero(Normal(t))) {
        return t;
      }
    }
  }

private:
  std::mt19937 m_Random;
};

bool AreParallel(const TTriangle& a, const TTriangle& b) {
  return IsZero(Cross(Normal(a), Normal(b)));
}

void ExpectSegment(const TContact& contact, const TPoint3& first, const TPoint3& last) {
  ASSERT_EQ(contact.Count, 2u);
  const vec_t_<double, 3> p = ToDouble(first);
  const vec_t_<double, 3> q = ToDouble(last);
  const double there = std::max(length(contact.Points[0] - p), length(contact.Points[1] - q));
  const double back = std::max(length(contact.Points[1] - p), length(contact.Points[0] - q));
  EXPECT_LT(std::min(there, back), 1e-12);
}

/// Left out by name, since rounding decides them: vertices on the other plane, and segments that
/// touch in one point of the common line.
TEST(TriangleIntersectionExact, TrianglesInGeneralPositionAgree) {
  TSource source(11);
  int meeting = 0;
  int missing = 0;
  for (int i = 0; i < 40000; ++i) {
    const TTriangle a = source.Triangle(4);
    const TTriangle b = source.Triangle(4);
    if (AreParallel(a, b) || TSides(a, b).On != 0 || TSides(b, a).On != 0) {
      continue;
    }
    const std::vector<TPoint3> common = exact::CommonSegment(a, b);
    if (!common.empty() && IsZero(common[1] - common[0])) {
      continue;
    }
    const TContact contact = Contact(a, b);
    ASSERT_EQ(contact.Meets, !common.empty());
    if (common.empty()) {
      ++missing;
      ASSERT_EQ(contact.Count, 0u);
    } else {
      ++meeting;
      ExpectSegment(contact, common[0], common[1]);
    }
  }
  EXPECT_GT(meeting, 2000);
  EXPECT_GT(missing, 10000);
}

/// In planes across the axes every distance is exact, so vertices on the planes are decided as
/// told: on the plane is above it, and a triangle with nothing below misses.
TEST(TriangleIntersectionExact, TouchingIsOneSided) {
  TSource source(12);
  int refused = 0;
  int found = 0;
  for (int i = 0; i < 60000; ++i) {
    TTriangle a = source.Triangle(3);
    TTriangle b = source.Triangle(3);
    a[1].z = a[2].z = a[0].z;
    b[1].x = b[2].x = b[0].x;
    if (IsZero(Normal(a)) || IsZero(Normal(b))) {
      continue;
    }
    const TSides sidesA(a, b);
    const TSides sidesB(b, a);
    const std::vector<TPoint3> common = exact::CommonSegment(a, b);
    if (!common.empty() && IsZero(common[1] - common[0])) {
      continue;
    }
    const bool goesOn = sidesA.Below != 0 && sidesB.Below != 0;
    // A segment of no length on both sides meets whatever it is compared with.
    if (sidesA.On == 1 && sidesA.Below == 2 && sidesB.On == 1 && sidesB.Below == 2) {
      EXPECT_EQ(Contact(a, b).Count, 1u);
      EXPECT_TRUE(std::isnan(Contact(a, b).Points[0].x));
      continue;
    }
    const TContact contact = Contact(a, b);
    ASSERT_EQ(contact.Meets, goesOn && !common.empty());
    if (contact.Meets) {
      found += sidesA.On + sidesB.On != 0 ? 1 : 0;
      ExpectSegment(contact, common[0], common[1]);
    } else {
      refused += common.empty() ? 0 : 1;
      ASSERT_EQ(contact.Count, 0u);
    }
  }
  EXPECT_GT(found, 1000);
  EXPECT_GT(refused, 300);
}

struct TPoint2 {
  TNumber x, y;
  bool IsWhole;
};

TNumber Side(const TPoint2& p, const TPoint2& q, const TPoint2& w) {
  return (q.x - p.x) * (w.y - p.y) - (q.y - p.y) * (w.x - p.x);
}

struct TClip {
  std::vector<TPoint2> Polygon;
  bool IsRejected = false;
  bool IsExact = true; ///< no new vertex lies on an edge's line, where rounding would decide
};

/// Clips `b` by the counter-clockwise `a`. With `isRunning` the count of outside vertices goes on
/// from edge to edge; without, this is the textbook clip, which rejects when nothing is left.
TClip Clip(const std::vector<TPoint2>& a, const std::vector<TPoint2>& b, bool isRunning) {
  TClip clip;
  clip.Polygon = b;
  std::size_t outside = 0;
  for (std::size_t t = 0; t < 3; ++t) {
    const TPoint2& p = a[t];
    const TPoint2& q = a[(t + 1) % 3];
    if (clip.Polygon.empty()) {
      continue;
    }
    std::vector<TNumber> s;
    outside = isRunning ? outside : 0;
    for (const TPoint2& w : clip.Polygon) {
      s.push_back(Side(p, q, w));
      outside += s.back() < 0 ? 1 : 0;
      clip.IsExact = clip.IsExact && (w.IsWhole || s.back() != 0);
    }
    if (outside == clip.Polygon.size()) {
      clip.IsRejected = true;
      return clip;
    }
    std::vector<TPoint2> next;
    for (std::size_t i = 0; i < s.size(); ++i) {
      const std::size_t prev = (i + s.size() - 1) % s.size();
      const TPoint2& from = clip.Polygon[prev];
      const TPoint2& to = clip.Polygon[i];
      if (s[i] * s[prev] < 0) {
        const TNumber f = s[prev] / (s[prev] - s[i]);
        next.push_back({from.x + (to.x - from.x) * f, from.y + (to.y - from.y) * f, false});
      }
      if (s[i] >= 0) {
        next.push_back(to);
      }
    }
    clip.Polygon = next;
  }
  return clip;
}

bool Touches(const std::vector<TPoint2>& a, const std::vector<TPoint2>& b) {
  const auto inside = [](const TPoint2& w, const std::vector<TPoint2>& t) {
    return Side(t[0], t[1], w) >= 0 && Side(t[1], t[2], w) >= 0 && Side(t[2], t[0], w) >= 0;
  };
  for (std::size_t i = 0; i < 3; ++i) {
    if (inside(a[i], b) || inside(b[i], a)) {
      return true;
    }
    for (std::size_t j = 0; j < 3; ++j) {
      const TPoint2& p = a[i];
      const TPoint2& q = a[(i + 1) % 3];
      const TPoint2& r = b[j];
      const TPoint2& s = b[(j + 1) % 3];
      if (Side(p, q, r) * Side(p, q, s) < 0 && Side(r, s, p) * Side(r, s, q) < 0) {
        return true;
      }
    }
  }
  return false;
}

/// Coplanar pairs in the plane z = 2 with the first edge of `a` along x, where plane coordinates
/// are the whole coordinates themselves. Both are counter-clockwise seen from above.
TEST(TriangleIntersectionExact, CoplanarTrianglesFollowTheRunningCount) {
  TSource source(13);
  int overlapping = 0;
  int rejected = 0;
  int emptied = 0;
  int bySize[7] = {};
  for (int i = 0; i < 60000; ++i) {
    const int x = source.Whole(-6, 3);
    const int y = source.Whole(-6, 5);
    std::vector<TPoint2> a = {{x, y, true},
                              {source.Whole(x + 1, 6), y, true},
                              {source.Whole(-6, 6), source.Whole(y + 1, 6), true}};
    std::vector<TPoint2> b;
    for (int k = 0; k < 3; ++k) {
      b.push_back({source.Whole(-6, 6), source.Whole(-6, 6), true});
    }
    const TNumber area = Side(b[0], b[1], b[2]);
    if (area == 0) {
      continue;
    }
    const TClip expected = Clip(a, b, true);
    if (!expected.IsExact) {
      continue;
    }
    TTriangle ta;
    TTriangle tb;
    for (std::size_t k = 0; k < 3; ++k) {
      ta[k] = {a[k].x, a[k].y, 2};
      tb[k] = {b[k].x, b[k].y, 2};
    }
    const TContact contact = Contact(ta, tb);
    ASSERT_EQ(contact.Meets, !expected.IsRejected);
    const std::size_t left = expected.IsRejected ? 0 : expected.Polygon.size();
    ASSERT_EQ(contact.Count, left);
    ++bySize[left];
    for (std::size_t k = 0; k < left; ++k) {
      const TPoint2& p = expected.Polygon[k];
      EXPECT_NEAR(contact.Points[k].x, exact::ToDouble(p.x), 1e-12);
      EXPECT_NEAR(contact.Points[k].y, exact::ToDouble(p.y), 1e-12);
      EXPECT_EQ(contact.Points[k].z, 2);
    }
    emptied += contact.Meets && left == 0 ? 1 : 0;

    if (area < 0) {
      std::swap(b[1], b[2]);
    }
    if (Touches(a, b)) {
      ++overlapping;
      rejected += contact.Meets ? 0 : 1;
    } else {
      ASSERT_EQ(contact.Count, 0u);
    }
    // The textbook clip finds what touches, and nothing else.
    EXPECT_EQ(Touches(a, b), !Clip(a, b, false).IsRejected);
  }
  EXPECT_GT(overlapping, 10000);
  EXPECT_GT(emptied, 100);
  for (const int size : {0, 1, 2, 3, 4, 5, 6}) {
    EXPECT_GT(bySize[size], 10) << size;
  }
  // About a third of all pairs that overlap is rejected.
  EXPECT_NEAR(static_cast<double>(rejected) / overlapping, 0.33, 0.06);
}

} // namespace
