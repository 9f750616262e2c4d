#include <ZxCore3D/math/CubeSpline.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include <ZxCore3D/math/private/InverseEx.h>
#include <ZxCore3D/math/private/SplineElimination.h>

#include <ZxCore3D/types/private/InstructionSets.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/CubeSpline1D.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/DenseTiles-inl.h>

#ifndef ZX_MATH_CUBE_SPLINE_1D_ONCE
#define ZX_MATH_CUBE_SPLINE_1D_ONCE

namespace zx_math {

/// Columns of the inverse that are made together; a multiple of the widest vector.
constexpr size_t kBlockColumns = 32;

/// Coordinates that splines are made for together.
constexpr size_t kMostCoordinates = 3;

/// The right sides of all coordinates, in the rows in which one of them isn't 0.
struct TRightSides {
  size_t coordinates;
  std::vector<std::uint32_t> rows;
  /// For each coordinate the values in these rows.
  std::vector<double> values[kMostCoordinates];
};

} // namespace zx_math

#endif

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

/// Makes the columns of the inverse that `count` (up to `kBlockColumns`) of the right sides from
/// `first` on meet, and adds their part to `sums`, of which each row has one for each coordinate.
/// `block` holds as many columns for each row of the matrix, `live` a mark for each.
void AddColumns(const TSplineElimination& elimination, const TRightSides& rights, size_t first,
                size_t count, double* block, unsigned char* live, double* sums) {
  const size_t n = elimination.order.size();
  const size_t width = hwy::RoundUpTo(count, hn::Lanes(DOUBLES()));
  std::fill_n(block, n * width, 0.0);
  std::fill_n(live, n, static_cast<unsigned char>(0));
  bool finite = true;
  for (size_t c = 0; c < count; ++c) {
    block[rights.rows[first + c] * width + c] = 1.0;
    live[rights.rows[first + c]] = 1;
    for (size_t k = 0; k < rights.coordinates; ++k) {
      finite = finite && std::isfinite(rights.values[k][first + c]);
    }
  }
  for (const TRowStep& step : elimination.steps) {
    if (!live[step.source]) {
      continue;
    }
    double* target = block + step.target * width;
    if (step.target == step.source) {
      ScaleRow(target, step.factor, width);
    } else {
      SubtractRow(target, block + step.source * width, step.factor, width);
      live[step.target] = 1;
    }
  }
  for (size_t i = 0; i < n; ++i) {
    const std::uint32_t row = elimination.order[i];
    // A zero times a value that isn't finite is a NaN, which must not be left out.
    if (finite && !live[row]) {
      continue;
    }
    for (size_t k = 0; k < rights.coordinates; ++k) {
      const double* values = rights.values[k].data() + first;
      double sum = sums[i * rights.coordinates + k];
      for (size_t c = 0; c < count; ++c) {
        sum += block[row * width + c] * values[c];
      }
      sums[i * rights.coordinates + k] = sum;
    }
  }
}

// NOLINTNEXTLINE(google-readability-namespace-comments)
} // namespace HWY_NAMESPACE
} // namespace zx_math
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace zx_math {
namespace {

HWY_EXPORT(AddColumns);

constexpr double kTolerance = 1e-6;

/// The points of splines: `coordinates` values side by side, points `stride` bytes apart.
struct TSplinePoints {
  const double* y;
  unsigned long coordinates;
  unsigned long stride;
  unsigned long n;
  bool closed;
};

TRightSides RightSides(const TSplinePoints& points) {
  TRightSides rights = {points.coordinates, {}, {}};
  const auto append = [&](unsigned long row, unsigned long point) {
    double values[kMostCoordinates] = {};
    std::memcpy(values, reinterpret_cast<const char*>(points.y) + point * points.stride,
                points.coordinates * sizeof(double));
    if (std::all_of(values, values + points.coordinates, [](double v) { return v == 0.0; })) {
      return;
    }
    rights.rows.push_back(static_cast<std::uint32_t>(row));
    for (unsigned long k = 0; k < points.coordinates; ++k) {
      rights.values[k].push_back(values[k]);
    }
  };
  const unsigned long segments = points.closed ? points.n : points.n - 1;
  rights.rows.reserve(2 * segments);
  for (unsigned long k = 0; k < points.coordinates; ++k) {
    rights.values[k].reserve(2 * segments);
  }
  for (unsigned long i = 0; i < segments; ++i) {
    append(4 * i, i);
    append(4 * i + 1, i + 1 == points.n ? 0 : i + 1);
  }
  return rights;
}

/// Up to so many unknowns the dense inverse takes less time than the list of its steps.
constexpr unsigned long DenseUnknowns = 16;

bool DenseSums(const TSplinePoints& points, unsigned long unknowns, const TRightSides& rights,
               double* sums) {
  double a[DenseUnknowns * DenseUnknowns] = {};
  double inv[DenseUnknowns * DenseUnknowns];
  double* row = a;
  ForEachSplineRow(unknowns / 4, points.closed,
                   [&](std::initializer_list<TSplineElement> elements) {
                     for (const TSplineElement& element : elements) {
                       row[element.column] = element.value;
                     }
                     row += unknowns;
                   });
  if (!InverseEx<double>(a, unknowns, inv, kTolerance, true, nullptr)) {
    return false;
  }
  for (unsigned long i = 0; i < unknowns; ++i) {
    for (unsigned long k = 0; k < rights.coordinates; ++k) {
      double sum = 0.0;
      for (size_t c = 0; c < rights.rows.size(); ++c) {
        sum += inv[i * unknowns + rights.rows[c]] * rights.values[k][c];
      }
      sums[i * rights.coordinates + k] = sum;
    }
  }
  return true;
}

bool SparseSums(const TSplinePoints& points, unsigned long unknowns, const TRightSides& rights,
                double* sums) {
  TSplineElimination elimination;
  if (!EliminateSpline(unknowns / 4, points.closed, kTolerance, &elimination)) {
    return false;
  }
  const size_t count = rights.rows.size();
  std::vector<double> block(unknowns * std::min(kBlockColumns, hwy::RoundUpTo(count, 8)));
  std::vector<unsigned char> live(unknowns);
  for (size_t first = 0; first < count; first += kBlockColumns) {
    HWY_DYNAMIC_DISPATCH(AddColumns)
    (elimination, rights, first, std::min(kBlockColumns, count - first), block.data(), live.data(),
     sums);
  }
  return true;
}

bool Splines(const TSplinePoints& points, POLYNOM3* out) {
  const unsigned long segments = points.closed ? points.n : points.n - 1;
  const unsigned long unknowns = 4 * segments;
  const TRightSides rights = RightSides(points);
  std::vector<double> sums(unknowns * points.coordinates, 0.0);
  const auto makeSums = unknowns <= DenseUnknowns ? DenseSums : SparseSums;
  if (!makeSums(points, unknowns, rights, sums.data())) {
    return false;
  }
  for (unsigned long k = 0; k < points.coordinates; ++k) {
    for (unsigned long i = 0; i < segments; ++i) {
      const double* s = sums.data() + 4 * i * points.coordinates + k;
      const unsigned long next = points.coordinates;
      *out++ = {s[0], s[next], s[2 * next], s[3 * next]};
    }
  }
  return true;
}

} // namespace

bool CalcCubeSplines(const double* y, unsigned long coordinates, unsigned long stride,
                     unsigned long n, bool closed, POLYNOM3* out) {
  // Rows are counted in 32 bits.
  if (n < 2 || n >= 1UL << 29) {
    return false;
  }
  TSplinePoints points = {y, coordinates, stride == 0 ? sizeof(double) : stride, n, closed};
  bool all = true;
  for (; points.coordinates != 0; ++points.y, --points.coordinates, out += closed ? n : n - 1) {
    try {
      return Splines(points, out) && all;
    } catch (const std::bad_alloc&) {
      all = false;
    }
  }
  return false;
}

} // namespace zx_math
#endif // HWY_ONCE
