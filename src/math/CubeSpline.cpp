#include <ZxCore3D/math/CubeSpline.h>

#include <algorithm>
#include <memory>

#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/private/DenseStorage.h>
#include <ZxCore3D/math/private/SplineElimination.h>

bool CalcCubeSpline1D(const double* y, unsigned long stride, unsigned long n, bool closed,
                      POLYNOM3* out) {
  return zx_math::CalcCubeSplines(y, 1, stride, n, closed, out);
}

bool CalcCubeSpline2D(const vec_t_<double, 2>* p, unsigned long stride, unsigned long n,
                      bool closed, POLYNOM3* out) {
  return zx_math::CalcCubeSplines(&p->x, 2, stride, n, closed, out);
}

bool CalcCubeSpline3D(const vec_t_<double, 3>* p, unsigned long stride, unsigned long n,
                      bool closed, POLYNOM3* out) {
  return zx_math::CalcCubeSplines(&p->x, 3, stride, n, closed, out);
}

bool CalcCubeSplineXY(const vec_t_<double, 2>* p, unsigned long n, unsigned long startType,
                      double startValue, unsigned long endType, double endValue, POLYNOM3* out) {
  if (n < 2 || startType < 1 || startType > 2 || endType < 1 || endType > 2) {
    return false;
  }
  const unsigned long N = 4 * n - 4;
  const unsigned long count = zx_math::ElementCount(N, N + 2);
  const std::unique_ptr<double[]> block(zx_math::AllocateDoubles(count));
  std::fill_n(block.get(), count, 0.0);
  double* a = block.get();
  double* right = a + N * N;
  double* solution = right + N;
  const auto putValue = [&](double* row, double x) {
    row[0] = x * x * x;
    row[1] = x * x;
    row[2] = x;
    row[3] = 1.0;
  };
  const auto putFirst = [&](double* row, double x, double sign) {
    row[0] = sign * (3.0 * x * x);
    row[1] = sign * (2.0 * x);
    row[2] = sign;
  };
  const auto putSecond = [&](double* row, double x, double sign) {
    row[0] = sign * (6.0 * x);
    row[1] = sign * 2.0;
  };
  for (unsigned long i = 0; i + 1 < n; ++i) {
    putValue(a + 2 * i * N + 4 * i, p[i].x);
    right[2 * i] = p[i].y;
    putValue(a + (2 * i + 1) * N + 4 * i, p[i + 1].x);
    right[2 * i + 1] = p[i + 1].y;
  }
  unsigned long row = 2 * n - 2;
  for (unsigned long i = 1; i + 1 < n; ++i) {
    putFirst(a + row * N + 4 * (i - 1), p[i].x, 1.0);
    putFirst(a + row * N + 4 * i, p[i].x, -1.0);
    ++row;
    putSecond(a + row * N + 4 * (i - 1), p[i].x, 1.0);
    putSecond(a + row * N + 4 * i, p[i].x, -1.0);
    ++row;
  }
  const auto putEnd = [&](double* end, unsigned long type, double x) {
    if (type == 1) {
      putFirst(end, x, 1.0);
    } else {
      putSecond(end, x, 1.0);
    }
  };
  putEnd(a + (N - 2) * N, startType, p[0].x);
  right[N - 2] = startValue;
  putEnd(a + (N - 1) * N + N - 4, endType, p[n - 1].x);
  right[N - 1] = endValue;
  if (!LineSysGauss1(a, N, right, solution)) {
    return false;
  }
  for (unsigned long i = 0; i + 1 < n; ++i) {
    const double* s = solution + 4 * i;
    out[i] = {s[3], s[2], s[1], s[0]};
  }
  return true;
}

void Polynom3_TransX(POLYNOM3& p, double t) {
  const POLYNOM3 q = p;
  p.a = q.a - (q.b - (q.c - q.d * t) * t) * t;
  p.b = q.b - (2.0 * q.c - 3.0 * q.d * t) * t;
  p.c = q.c - 3.0 * q.d * t;
}
