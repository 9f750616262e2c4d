#include <ZxCore3D/math/LineTracing.h>

#include <cstdint>

namespace {

using TCell = vec_t_<int, 3>;

// Coordinates move in unsigned arithmetic, where leaving the range of an int is defined.
int Moved(int coordinate, std::uint32_t by) {
  return static_cast<int>(static_cast<std::uint32_t>(coordinate) + by);
}

struct AXIS {
  std::uint32_t Distance; ///< absolute difference
  std::uint32_t Step;     ///< 1, or -1 wrapped

  AXIS(int from, int to) {
    const std::uint32_t d = static_cast<std::uint32_t>(to) - static_cast<std::uint32_t>(from);
    const bool negative = static_cast<std::int32_t>(d) < 0;
    Distance = negative ? 0u - d : d;
    Step = negative ? ~0u : 1u;
  }
};

unsigned int DominantAxis(const AXIS* axes) {
  if (axes[0].Distance < axes[1].Distance) {
    return axes[1].Distance >= axes[2].Distance ? 1 : 2;
  }
  return axes[0].Distance >= axes[2].Distance ? 0 : 2;
}

/// Walks the line and calls `emit` with every cell and the axes: the dominant one and the others.
template <class TEmit> void WalkLine(TCell cell, const TCell& to, const TEmit& emit) {
  const AXIS axes[3] = {{cell.x, to.x}, {cell.y, to.y}, {cell.z, to.z}};
  const unsigned int d = DominantAxis(axes);
  const unsigned int p = d == 0 ? 1 : 0;
  const unsigned int q = d == 2 ? 1 : 2;
  const std::int64_t a = axes[d].Distance;
  const std::uint32_t twiceP = 2 * axes[p].Distance;
  const std::uint32_t twiceQ = 2 * axes[q].Distance;
  std::int64_t ep = -a;
  std::int64_t eq = -a;

  emit(cell, p, q);
  while (cell[d] != to[d]) {
    cell[d] = Moved(cell[d], axes[d].Step);
    ep += twiceP;
    if (ep >= 0) {
      cell[p] = Moved(cell[p], axes[p].Step);
      ep -= 2 * a;
    }
    eq += twiceQ;
    if (eq >= 0) {
      cell[q] = Moved(cell[q], axes[q].Step);
      eq -= 2 * a;
    }
    emit(cell, p, q);
  }
}

} // namespace

void DrawLine3d(TCell from, TCell to, std::vector<TCell>& out) {
  WalkLine(from, to,
           [&out](const TCell& cell, unsigned int, unsigned int) { out.push_back(cell); });
}

void DrawLine3d(TCell from, TCell to, int thickness, std::vector<TCell>& out) {
  const int h = thickness >> 1;
  WalkLine(from, to, [&out, h](const TCell& cell, unsigned int p, unsigned int q) {
    for (int i = -h; i <= h; ++i) {
      for (int j = -h; j <= h; ++j) {
        TCell moved = cell;
        moved[p] = Moved(cell[p], static_cast<std::uint32_t>(i));
        moved[q] = Moved(cell[q], static_cast<std::uint32_t>(j));
        out.push_back(moved);
      }
    }
  });
}
