#include <ZxCore3D/math/LineTracing.h>

#include <cstddef>
#include <cstdint>

namespace {

using TCell = vec_t_<int, 3>;

// Coordinates move in unsigned arithmetic, where leaving the range of an int is defined.
int Moved(int coordinate, std::uint32_t by) {
  return static_cast<int>(static_cast<std::uint32_t>(coordinate) + by);
}

struct TAxis {
  std::uint32_t Distance; ///< absolute difference
  std::uint32_t Step;     ///< 1, or -1 wrapped

  TAxis(int from, int to) {
    const std::uint32_t d = static_cast<std::uint32_t>(to) - static_cast<std::uint32_t>(from);
    const bool negative = static_cast<std::int32_t>(d) < 0;
    Distance = negative ? 0u - d : d;
    Step = negative ? ~0u : 1u;
  }
};

unsigned int DominantAxis(const TAxis* axes) {
  if (axes[0].Distance < axes[1].Distance) {
    return axes[1].Distance >= axes[2].Distance ? 1 : 2;
  }
  return axes[0].Distance >= axes[2].Distance ? 0 : 2;
}

/// Walks the line along axis D and calls `emit` with every cell; P and Q are the other axes.
template <std::size_t D, std::size_t P, std::size_t Q, class TEmit>
void WalkAlong(const TCell& from, const TCell& to, const TAxis* axes, const TEmit& emit) {
  const std::int64_t a = axes[D].Distance;
  const std::uint32_t twiceP = 2 * axes[P].Distance;
  const std::uint32_t twiceQ = 2 * axes[Q].Distance;
  std::int64_t ep = -a;
  std::int64_t eq = -a;
  int d = from[D];
  int p = from[P];
  int q = from[Q];

  emit(d, p, q);
  while (d != to[D]) {
    d = Moved(d, axes[D].Step);
    ep += twiceP;
    if (ep >= 0) {
      p = Moved(p, axes[P].Step);
      ep -= 2 * a;
    }
    eq += twiceQ;
    if (eq >= 0) {
      q = Moved(q, axes[Q].Step);
      eq -= 2 * a;
    }
    emit(d, p, q);
  }
}

template <std::size_t D, std::size_t P, std::size_t Q> TCell MakeCell(int d, int p, int q) {
  TCell cell = {};
  cell[D] = d;
  cell[P] = p;
  cell[Q] = q;
  return cell;
}

/// Appends blocks of `2 h + 1` by `2 h + 1` cells.
template <std::size_t D, std::size_t P, std::size_t Q>
void DrawAlong(const TCell& from, const TCell& to, const TAxis* axes, int h,
               std::vector<TCell>& out) {
  if (h == 0) {
    WalkAlong<D, P, Q>(from, to, axes,
                       [&out](int d, int p, int q) { out.push_back(MakeCell<D, P, Q>(d, p, q)); });
    return;
  }
  const std::size_t width = h < 0 ? 0 : 2 * static_cast<std::size_t>(h) + 1;
  WalkAlong<D, P, Q>(from, to, axes, [&out, h, width](int d, int p, int q) {
    const std::size_t at = out.size();
    out.resize(at + width * width);
    TCell* next = out.data() + at;
    for (int i = -h; i <= h; ++i) {
      for (int j = -h; j <= h; ++j) {
        *next++ = MakeCell<D, P, Q>(d, Moved(p, static_cast<std::uint32_t>(i)),
                                    Moved(q, static_cast<std::uint32_t>(j)));
      }
    }
  });
}

} // namespace

void DrawLine3d(TCell from, TCell to, std::vector<TCell>& out) { DrawLine3d(from, to, 1, out); }

void DrawLine3d(TCell from, TCell to, int thickness, std::vector<TCell>& out) {
  const TAxis axes[3] = {{from.x, to.x}, {from.y, to.y}, {from.z, to.z}};
  const int h = thickness >> 1;
  switch (DominantAxis(axes)) {
  case 0:
    DrawAlong<0, 1, 2>(from, to, axes, h, out);
    break;
  case 1:
    DrawAlong<1, 0, 2>(from, to, axes, h, out);
    break;
  default:
    DrawAlong<2, 0, 1>(from, to, axes, h, out);
    break;
  }
}
