#include <ZxCore3D/math/CubeSpline.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
#include <vector>

#include <ZxCore3D/math/private/SplineElimination.h>

#include <ZxCore3D/types/InstructionSets-inl.h>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "ZxCore3D/math/CubeSpline1D.cpp"
#include <hwy/foreach_target.h>

#include <ZxCore3D/math/private/DenseTiles-inl.h>

#ifndef ZX_MATH_CUBE_SPLINE_1D_ONCE
#define ZX_MATH_CUBE_SPLINE_1D_ONCE

namespace zx_math {

/// Columns of the inverse that are made together; a multiple of the widest vector.
constexpr size_t BlockColumns = 32;

/// A value of the right side and the row that it stands in.
struct RIGHT {
  std::uint32_t row;
  double value;
};

} // namespace zx_math

#endif

HWY_BEFORE_NAMESPACE();
namespace zx_math {
namespace HWY_NAMESPACE {

/// Makes the columns of the inverse that `rights` (up to `BlockColumns`) name and adds their part
/// to `sums`. `block` holds a row of `BlockColumns` for each row of the matrix, `live` a mark for
/// each.
void AddColumns(const SPLINE_ELIMINATION& elimination, const RIGHT* rights, size_t count,
                double* block, unsigned char* live, double* sums) {
  const size_t n = elimination.order.size();
  std::fill_n(block, n * BlockColumns, 0.0);
  std::fill_n(live, n, static_cast<unsigned char>(0));
  bool finite = true;
  for (size_t c = 0; c < count; ++c) {
    block[rights[c].row * BlockColumns + c] = 1.0;
    live[rights[c].row] = 1;
    finite = finite && std::isfinite(rights[c].value);
  }
  for (const ROW_STEP& step : elimination.steps) {
    if (!live[step.source]) {
      continue;
    }
    double* target = block + step.target * BlockColumns;
    if (step.target == step.source) {
      ScaleRow(target, step.factor, BlockColumns);
    } else {
      SubtractRow(target, block + step.source * BlockColumns, step.factor, BlockColumns);
      live[step.target] = 1;
    }
  }
  for (size_t i = 0; i < n; ++i) {
    const std::uint32_t row = elimination.order[i];
    // A zero times a value that isn't finite is a NaN, which must not be left out.
    if (finite && !live[row]) {
      continue;
    }
    double sum = sums[i];
    for (size_t c = 0; c < count; ++c) {
      sum += block[row * BlockColumns + c] * rights[c].value;
    }
    sums[i] = sum;
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

constexpr double Tolerance = 1e-6;

/// The values of the right side that aren't 0, by rows.
std::vector<RIGHT> RightSide(const double* y, unsigned long stride, unsigned long n, bool closed) {
  const auto value = [&](unsigned long i) {
    double v;
    std::memcpy(&v, reinterpret_cast<const char*>(y) + i * stride, sizeof v);
    return v;
  };
  std::vector<RIGHT> rights;
  const unsigned long segments = closed ? n : n - 1;
  for (unsigned long i = 0; i < segments; ++i) {
    const double from = value(i);
    const double to = value(i + 1 == n ? 0 : i + 1);
    if (from != 0.0) {
      rights.push_back({static_cast<std::uint32_t>(4 * i), from});
    }
    if (to != 0.0) {
      rights.push_back({static_cast<std::uint32_t>(4 * i + 1), to});
    }
  }
  return rights;
}

bool Spline1D(const double* y, unsigned long stride, unsigned long n, bool closed, POLYNOM3* out) {
  const unsigned long segments = closed ? n : n - 1;
  SPLINE_ELIMINATION elimination;
  if (!EliminateSpline(segments, closed, Tolerance, &elimination)) {
    return false;
  }
  const unsigned long unknowns = 4 * segments;
  const std::vector<RIGHT> rights = RightSide(y, stride, n, closed);
  std::vector<double> block(unknowns * BlockColumns);
  std::vector<unsigned char> live(unknowns);
  std::vector<double> sums(unknowns, 0.0);
  for (size_t first = 0; first < rights.size(); first += BlockColumns) {
    HWY_DYNAMIC_DISPATCH(AddColumns)
    (elimination, rights.data() + first, std::min(BlockColumns, rights.size() - first),
     block.data(), live.data(), sums.data());
  }
  for (unsigned long i = 0; i < segments; ++i) {
    const double* s = sums.data() + 4 * i;
    out[i] = {s[0], s[1], s[2], s[3]};
  }
  return true;
}

} // namespace
} // namespace zx_math

bool CalcCubeSpline1D(const double* y, unsigned long stride, unsigned long n, bool closed,
                      POLYNOM3* out) {
  // Rows are counted in 32 bits.
  if (n < 2 || n >= 1UL << 29) {
    return false;
  }
  try {
    return zx_math::Spline1D(y, stride == 0 ? sizeof(double) : stride, n, closed, out);
  } catch (const std::bad_alloc&) {
    return false;
  }
}
#endif // HWY_ONCE
