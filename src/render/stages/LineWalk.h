// Tested by: tests/render/LineBatches.cpp (LineWalks.*), tests/render/VertexBatches.cpp
// (LineWalks.*)

#pragma once

#include <algorithm>

#include <ZxCore3D/render/TRenderCPU.h>

#include <ZxCore3D/render/common/Conversions.h>

namespace Zx3D {

/// The pixels of a line. Number i, of those from `First` to `Last`, lies i steps along the axis of
/// the greater difference and floor((2 * Minor * i + Major) / (2 * Major)) along the other; all
/// of them are on the surface.
struct TLineWalk {
  /// Between two pixels, those of the ends in window coordinates. A line within one pixel has that
  /// one, at t = 0.
  static TLineWalk Between(const int (&from)[2], const int (&to)[2], const vec_t_<double, 4>& begin,
                           const vec_t_<double, 4>& end);

  int Axis;
  int From[2];
  int Step[2];
  long long Major; ///< the greater difference, at least 1: that of a kernel is below 2^22
  long long Minor; ///< the smaller one
  int First;
  int Last;
  /// t of a pixel is (coordinate along `Axis` - Begin) / Delta, limited to 0 to 1.
  double Begin = 0.0;
  double Delta = 1.0;

  double ParameterAt(int i) const {
    return Clamped01((From[Axis] + Step[Axis] * i - Begin) / Delta);
  }

  /// Steps along the minor axis at pixel i, 0 to Major - 1: floor(n / d), n = 2 Minor i + Major,
  /// d = 2 Major. As n is an integer, that is floor((n + 1/2) / d) too, a quotient that lies
  /// 1 / (2 d) > 2^-24 or more from the nearest integer. It is below 2^22, so that rounding the
  /// inverse of d and the product moves it by less than 2^-29: the floor stays.
  long long MinorStepsAt(long long i) const {
    return static_cast<long long>((static_cast<double>(2 * Minor * i) + StepsBegin()) *
                                  StepsScale());
  }
  double StepsBegin() const { return static_cast<double>(Major) + 0.5; }
  double StepsScale() const { return 1.0 / static_cast<double>(2 * Major); }
  /// The last pixel, up to `Last`, that has as many minor steps as pixel i.
  int LastAsideWith(int i) const {
    return Minor == 0 ? Last
                      : static_cast<int>(std::min<long long>(
                            Last, (Major * (2 * MinorStepsAt(i) + 1) - 1) / (2 * Minor)));
  }
  /// At both ends without a division: at Major - 1 the floor of Minor + 1/2 - Minor / Major.
  void At(int i, int* x, int* y) const {
    long long steps = 0;
    if (i > 0 && i < Major - 1) {
      steps = MinorStepsAt(i);
    } else if (i > 0) {
      steps = Minor - (2 * Minor > Major ? 1 : 0);
    }
    const int along = From[Axis] + Step[Axis] * i;
    const int across = From[1 - Axis] + Step[1 - Axis] * static_cast<int>(steps);
    *x = Axis == 0 ? along : across;
    *y = Axis == 0 ? across : along;
  }
};

} // namespace Zx3D
