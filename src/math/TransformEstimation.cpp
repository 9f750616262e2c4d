#include <ZxCore3D/math/TransformEstimation.h>

#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>
#include <ZxCore3D/math/TVectorD.h>
#include <ZxCore3D/math/private/TransformEstimation.h>

namespace {

constexpr unsigned long kPlaneUnknowns = 8;
constexpr unsigned long kSpaceUnknowns = 15;

/// Sums of normal equations: `M` collects its upper triangle only until `Mirror`.
struct TNormalEquations {
  TMatrixD M;
  TVectorD B;

  explicit TNormalEquations(unsigned long unknowns) : M(unknowns, unknowns), B(unknowns) {
    fill(M, 0.0);
    fill(B, 0.0);
  }

  double& At(unsigned long row, unsigned long column) { return M.Data[row * M.SizeX + column]; }

  /// Adds the products of the coefficients `row` of the columns from `first` on with each other.
  void AddBlock(unsigned long first, const double* row, unsigned long count) {
    for (unsigned long i = 0; i < count; ++i) {
      for (unsigned long j = i; j < count; ++j) {
        At(first + i, first + j) += row[i] * row[j];
      }
    }
  }

  /// Adds the products of two groups of columns of one row, the first group left of the second.
  void AddCross(unsigned long first, const double* row, unsigned long count, unsigned long second,
                const double* other, unsigned long otherCount) {
    for (unsigned long i = 0; i < count; ++i) {
      for (unsigned long j = 0; j < otherCount; ++j) {
        At(first + i, second + j) += row[i] * other[j];
      }
    }
  }

  void AddRight(unsigned long first, const double* row, unsigned long count, double right) {
    for (unsigned long i = 0; i < count; ++i) {
      B.Data[first + i] += row[i] * right;
    }
  }

  void Mirror() {
    for (unsigned long i = 1; i < M.SizeY; ++i) {
      for (unsigned long j = 0; j < i; ++j) {
        At(i, j) = At(j, i);
      }
    }
  }

  void Add(const TNormalEquations& other) {
    add(M, other.M);
    add(B, other.B);
  }
};

bool Solve(const TNormalEquations& equations, TVectorD* solution) {
  TMatrixD inverted(equations.M.SizeX, equations.M.SizeY);
  if (!inverse(equations.M, inverted)) {
    return false;
  }
  mul(inverted, equations.B, solution);
  return true;
}

/// The row of the target coordinate `target` in the plane; its block of `x, y, 1` starts at
/// `first`.
void AddPlaneRow(const vec_t_<double, 2>& p, double target, unsigned long first,
                 TNormalEquations* to) {
  const double linear[3] = {p.x, p.y, 1.0};
  const double tail[2] = {-p.x * target, -p.y * target};
  to->AddBlock(first, linear, 3);
  to->AddCross(first, linear, 3, 6, tail, 2);
  to->AddBlock(6, tail, 2);
  to->AddRight(first, linear, 3, target);
  to->AddRight(6, tail, 2, target);
}

/// The same in space. The block of `x, y, z, 1` with itself is the same for all three coordinates
/// and summed once, and so are its products with the right side, which stand in the matrix.
void AddSpaceRow(const vec_t_<double, 3>& p, double target, unsigned long first,
                 TNormalEquations* to) {
  const double linear[4] = {p.x, p.y, p.z, 1.0};
  const double tail[3] = {-p.x * target, -p.y * target, -p.z * target};
  to->AddCross(first, linear, 4, 12, tail, 3);
  to->AddBlock(12, tail, 3);
  to->B.Data[first + 3] += target;
  to->AddRight(12, tail, 3, target);
}

/// Completes the sums of a coordinate whose block starts at `first` from the block of `x`.
void CompleteSpace(TNormalEquations* x, unsigned long first, TNormalEquations* to) {
  for (unsigned long i = 0; i < 4; ++i) {
    for (unsigned long j = i; j < 4; ++j) {
      to->At(first + i, first + j) = x->At(i, j);
    }
  }
  for (unsigned long i = 0; i < 3; ++i) {
    to->B.Data[first + i] = -to->At(first + 3, 12 + i);
  }
  to->Mirror();
}

void StoreSpace(const double* solution, MAT4<double>* m) {
  for (unsigned long i = 0; i < kSpaceUnknowns; ++i) {
    (*m)[i % 4 * 4 + i / 4] = solution[i];
  }
  (*m)[15] = 1.0;
}

} // namespace

bool GetProjectiveTransform(const vec_t_<double, 2>* src, const vec_t_<double, 2>* dst,
                            unsigned long n, MAT3<double>* m) {
  if (n < 4) {
    return false;
  }
  TNormalEquations x(kPlaneUnknowns);
  TNormalEquations y(kPlaneUnknowns);
  for (unsigned long i = 0; i < n; ++i) {
    AddPlaneRow(src[i], dst[i].x, 0, &x);
    AddPlaneRow(src[i], dst[i].y, 3, &y);
  }
  x.At(2, 2) = static_cast<double>(n);
  y.At(5, 5) = static_cast<double>(n);
  x.Mirror();
  y.Mirror();
  x.Add(y);
  TVectorD solution(kPlaneUnknowns);
  if (!Solve(x, &solution)) {
    return false;
  }
  for (unsigned long i = 0; i < kPlaneUnknowns; ++i) {
    (*m)[i % 3 * 3 + i / 3] = solution.Data[i];
  }
  (*m)[8] = 1.0;
  return true;
}

bool GetProjectiveTransform(const vec_t_<double, 3>* src, const vec_t_<double, 3>* dst,
                            unsigned long n, MAT4<double>* m) {
  if (n < 5) {
    return false;
  }
  TNormalEquations x(kSpaceUnknowns);
  TNormalEquations y(kSpaceUnknowns);
  TNormalEquations z(kSpaceUnknowns);
  TVectorD solution(kSpaceUnknowns);
  for (unsigned long i = 0; i < n; ++i) {
    const double linear[4] = {src[i].x, src[i].y, src[i].z, 1.0};
    x.AddBlock(0, linear, 4);
    AddSpaceRow(src[i], dst[i].x, 0, &x);
    AddSpaceRow(src[i], dst[i].y, 4, &y);
    AddSpaceRow(src[i], dst[i].z, 8, &z);
  }
  x.At(3, 3) = static_cast<double>(n);
  CompleteSpace(&x, 0, &x);
  CompleteSpace(&x, 4, &y);
  CompleteSpace(&x, 8, &z);
  x.Add(y);
  x.Add(z);
  if (!Solve(x, &solution)) {
    return false;
  }
  StoreSpace(solution.Data, m);
  return true;
}

bool GetProjectiveTransform_(const vec_t_<double, 3>* src, const vec_t_<double, 3>* dst,
                             unsigned long n, MAT4<double>* m) {
  if (n < 5) {
    return false;
  }
  TMatrixD design(kSpaceUnknowns, 3 * n);
  TVectorD right(3 * n);
  TVectorD solution(kSpaceUnknowns);
  fill(design, 0.0);
  fill(right, 0.0);
  for (unsigned long i = 0; i < n; ++i) {
    const vec_t_<double, 3>& p = src[i];
    for (unsigned long axis = 0; axis < 3; ++axis) {
      const double target = dst[i][axis];
      double* row = design.Data + (3 * i + axis) * kSpaceUnknowns;
      for (unsigned long j = 0; j < 3; ++j) {
        row[4 * axis + j] = p[j];
        row[12 + j] = -p[j] * target;
      }
      row[4 * axis + 3] = 1.0;
      right.Data[3 * i + axis] = target;
    }
  }
  if (!lsm(design, right, &solution)) {
    return false;
  }
  StoreSpace(solution.Data, m);
  return true;
}

bool GetAffineTransform(const vec_t_<double, 3>* src, const vec_t_<double, 3>* dst, unsigned long n,
                        MAT4<double>* m) {
  SYMMAT4<double> sums = {};
  double right[3][4] = {};
  for (unsigned long i = 0; i < n; ++i) {
    const vec_t_<double, 3>& p = src[i];
    const double products[9] = {p.x * p.x, p.x * p.y, p.x * p.z, p.x, p.y * p.y,
                                p.y * p.z, p.y,       p.z * p.z, p.z};
    for (unsigned long j = 0; j < 9; ++j) {
      sums[j] += products[j];
    }
    for (unsigned long axis = 0; axis < 3; ++axis) {
      const double target = dst[i][axis];
      for (unsigned long j = 0; j < 3; ++j) {
        right[axis][j] += p[j] * target;
      }
      right[axis][3] += target;
    }
  }
  sums[9] = static_cast<double>(n);
  SYMMAT4<double> inverted;
  if (!inverse<double>(sums, &inverted)) {
    return false;
  }
  // Where row r, column c of the full matrix stands among the ten values.
  constexpr unsigned char at[4][4] = {{0, 1, 2, 3}, {1, 4, 5, 6}, {2, 5, 7, 8}, {3, 6, 8, 9}};
  for (unsigned long axis = 0; axis < 3; ++axis) {
    const double* v = right[axis];
    for (unsigned long r = 0; r < 4; ++r) {
      (*m)[r * 4 + axis] = inverted[at[r][0]] * v[0] + inverted[at[r][1]] * v[1] +
                           inverted[at[r][2]] * v[2] + inverted[at[r][3]] * v[3];
    }
  }
  (*m)[3] = 0.0;
  (*m)[7] = 0.0;
  (*m)[11] = 0.0;
  (*m)[15] = 1.0;
  return true;
}

static double Det3(double a, double b, double c, double d, double e, double f, double g, double h,
                   double i) {
  return a * (e * i - f * h) - b * (d * i - f * g) + c * (d * h - e * g);
}

template <> bool inverse<double>(const SYMMAT4<double>& a, SYMMAT4<double>* res) {
  const double a00 = a[0], a01 = a[1], a02 = a[2], a03 = a[3], a11 = a[4];
  const double a12 = a[5], a13 = a[6], a22 = a[7], a23 = a[8], a33 = a[9];
  const double minor00 = Det3(a11, a12, a13, a12, a22, a23, a13, a23, a33);
  const double minor01 = Det3(a01, a12, a13, a02, a22, a23, a03, a23, a33);
  const double minor02 = Det3(a01, a11, a13, a02, a12, a23, a03, a13, a33);
  const double minor03 = Det3(a01, a11, a12, a02, a12, a22, a03, a13, a23);
  const double minor11 = Det3(a00, a02, a03, a02, a22, a23, a03, a23, a33);
  const double minor12 = Det3(a00, a01, a03, a02, a12, a23, a03, a13, a33);
  const double minor13 = Det3(a00, a01, a02, a02, a12, a22, a03, a13, a23);
  const double minor22 = Det3(a00, a01, a03, a01, a11, a13, a03, a13, a33);
  const double minor23 = Det3(a00, a01, a02, a01, a11, a12, a03, a13, a23);
  const double minor33 = Det3(a00, a01, a02, a01, a11, a12, a02, a12, a22);
  const double determinant = a00 * minor00 - a01 * minor01 + a02 * minor02 - a03 * minor03;
  if (determinant == 0.0) {
    return false;
  }
  const double factor = 1.0 / determinant;
  *res = {{minor00 * factor, -minor01 * factor, minor02 * factor, -minor03 * factor,
           minor11 * factor, -minor12 * factor, minor13 * factor, minor22 * factor,
           -minor23 * factor, minor33 * factor}};
  return true;
}
