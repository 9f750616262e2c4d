#include <ZxCore3D/math/Polygons.h>

#include <cfloat>
#include <cmath>
#include <memory>

#include <ZxCore3D/types/private/VectorForms.h>

namespace {

using TPoint = vec_t_<double, 2>;

constexpr double kLimit = 1e-8;
constexpr unsigned long kLocalEdges = 8;

struct TEdgeCache {
  TPoint Direction;
  double Length = DBL_MAX; ///< DBL_MAX: not yet computed
};

/// Fills the cache of the edge from `from` to `to`; false when the edge is too short.
bool PrepareEdge(const TPoint& from, const TPoint& to, TEdgeCache* edge) {
  if (edge->Length != DBL_MAX) {
    return true;
  }
  const TPoint d = to - from;
  edge->Length = length(d);
  if (edge->Length < kLimit) {
    return false;
  }
  edge->Direction = {d.x / edge->Length, d.y / edge->Length};
  return true;
}

bool FoldsBack(const TPoint& ei, const TPoint& ej) {
  return std::fabs(ei.x * ej.y - ei.y * ej.x) < kLimit && dot(ei, ej) < 0.0;
}

/// Whether two edges that are not neighbours meet; `d` leads from the start of `j` to that of `i`.
bool Meet(const TEdgeCache& i, const TEdgeCache& j, const TPoint& d) {
  const TPoint& ei = i.Direction;
  const TPoint& ej = j.Direction;
  const double c = ej.x * ei.y - ej.y * ei.x;
  if (!(std::fabs(c) > kLimit)) {
    return false;
  }
  const double u = (ej.y * d.x - ej.x * d.y) / c;
  const double w = (ei.y * d.x - ei.x * d.y) / c;
  return u >= 0.0 && u <= i.Length && w >= 0.0 && w <= j.Length;
}

bool IsSelfIntersected(const TPoint* p, unsigned long n, TEdgeCache* edges) {
  const auto next = [n](unsigned long i) { return i + 1 == n ? 0 : i + 1; };
  for (unsigned long i = 0; i < n; ++i) {
    if (!PrepareEdge(p[i], p[next(i)], &edges[i])) {
      return true;
    }
    for (unsigned long j = i + 1; j < n; ++j) {
      if (!PrepareEdge(p[j], p[next(j)], &edges[j])) {
        return true;
      }
      if (next(i) == j || next(j) == i) {
        if (FoldsBack(edges[i].Direction, edges[j].Direction)) {
          return true;
        }
      } else if (Meet(edges[i], edges[j], p[i] - p[j])) {
        return true;
      }
    }
  }
  return false;
}

} // namespace

bool IsSelfIntersected(const TPoint* p, unsigned long n) {
  if (n < 2) {
    return false;
  }
  if (n == 2) {
    return true;
  }
  if (n <= kLocalEdges) {
    TEdgeCache edges[kLocalEdges];
    return IsSelfIntersected(p, n, edges);
  }
  const std::unique_ptr<TEdgeCache[]> edges(new TEdgeCache[n]);
  return IsSelfIntersected(p, n, edges.get());
}
