#include <cmath>

#include "Common.h"

namespace zxpy {

namespace {

using py::arg;

// --- Arrays as the library's vectors and matrices

// A vector over an array's memory, which has to outlive it.
TVectorD VectorOver(const TAnyDoubles& array, const char* name) {
  if (array.ndim() != 1) {
    throw py::type_error(std::string(name) + " is an array of one dimension");
  }
  TVectorD v;
  if (array.size() > 0) {
    v.Create(static_cast<unsigned long>(array.size()), const_cast<double*>(array.data()));
  }
  return v;
}

TMatrixD MatrixOver(const TAnyDoubles& array, const char* name) {
  if (array.ndim() != 2) {
    throw py::type_error(std::string(name) + " is an array of two dimensions");
  }
  const auto columns = static_cast<unsigned long>(array.shape(1));
  const auto rows = static_cast<unsigned long>(array.shape(0));
  if (array.size() == 0) {
    return TMatrixD(columns, rows);
  }
  return TMatrixD(columns, rows, const_cast<double*>(array.data()));
}

TDoubles NewMatrix(unsigned long rows, unsigned long columns) {
  return TDoubles(
      std::vector<py::ssize_t>{static_cast<py::ssize_t>(rows), static_cast<py::ssize_t>(columns)});
}

TDoubles NewVector(unsigned long size) {
  return TDoubles(std::vector<py::ssize_t>{static_cast<py::ssize_t>(size)});
}

bool IsMatrix(const py::array& array) { return array.ndim() == 2; }

void Require(bool holds, const char* text) {
  if (!holds) {
    throw py::value_error(text);
  }
}

// --- Elementwise and products

void Fill(TDoubles m, double value) {
  double* const data = m.mutable_data();
  if (IsMatrix(m)) {
    TMatrixD matrix = MatrixOver(m, "m");
    fill(matrix, value);
  } else if (m.size() > 0) {
    TVectorD vector(0);
    vector.Create(static_cast<unsigned long>(m.size()), data);
    fill(vector, value);
  }
}

TDoubles Absolute(const TAnyDoubles& m) {
  TDoubles out = NewMatrix(MatrixOver(m, "m").SizeY, MatrixOver(m, "m").SizeX);
  TMatrixD res = MatrixOver(out, "res");
  abs(MatrixOver(m, "m"), res);
  return out;
}

void Add(TDoubles l, const TAnyDoubles& r) {
  l.mutable_data(); // raises for an array that can't be written
  if (IsMatrix(l)) {
    TMatrixD left = MatrixOver(l, "l");
    const TMatrixD right = MatrixOver(r, "r");
    Require(left.SizeX == right.SizeX && left.SizeY == right.SizeY, "add: the shapes differ");
    add(left, right);
    return;
  }
  TVectorD left = VectorOver(l, "l");
  const TVectorD right = VectorOver(r, "r");
  Require(left.Size == right.Size, "add: the sizes differ");
  add(left, right);
}

py::object Difference(const TAnyDoubles& l, const TAnyDoubles& r) {
  const TMatrixD left = MatrixOver(l, "l");
  TDoubles out = NewMatrix(left.SizeY, left.SizeX);
  TMatrixD res = MatrixOver(out, "res");
  return diff(left, MatrixOver(r, "r"), res) ? py::object(out) : py::none();
}

TDoubles Subtract(const TAnyDoubles& l, const TAnyDoubles& r) {
  const TVectorD left = VectorOver(l, "l");
  const TVectorD right = VectorOver(r, "r");
  Require(left.Size == right.Size, "sub: the sizes differ");
  TDoubles out = NewVector(left.Size);
  TVectorD res = VectorOver(out, "res");
  sub(left, right, &res);
  return out;
}

TDoubles Multiply(const TAnyDoubles& l, const TAnyDoubles& r) {
  const TMatrixD left = MatrixOver(l, "l");
  if (!IsMatrix(r)) {
    const TVectorD v = VectorOver(r, "r");
    Require(left.SizeX == v.Size, "mul: the vector is not as long as a row");
    TDoubles out = NewVector(left.SizeY);
    TVectorD res = VectorOver(out, "res");
    mul(left, v, &res);
    return out;
  }
  const TMatrixD right = MatrixOver(r, "r");
  TDoubles out = NewMatrix(left.SizeY, right.SizeX);
  TMatrixD res = MatrixOver(out, "res");
  mul(left, right, res);
  return out;
}

TDoubles Transposed(const TAnyDoubles& m) {
  const TMatrixD matrix = MatrixOver(m, "m");
  TDoubles out = NewMatrix(matrix.SizeX, matrix.SizeY);
  TMatrixD res = MatrixOver(out, "res");
  transpose(matrix, res);
  return out;
}

TDoubles Outer(const TAnyDoubles& a, const TAnyDoubles& b) {
  const TVectorD left = VectorOver(a, "a");
  const TVectorD right = VectorOver(b, "b");
  TMatrixD res;
  outer_dot(left, right, &res);
  TDoubles out = NewMatrix(left.Size, right.Size);
  std::copy(res.Data, res.Data + res.SizeX * res.SizeY, out.mutable_data());
  return out;
}

bool Equal(const TAnyDoubles& a, const TAnyDoubles& b, double tol) {
  TMatrixD right = MatrixOver(b, "b");
  return equal(MatrixOver(a, "a"), right, tol);
}

double Dot(const TAnyDoubles& a, const TAnyDoubles& b) {
  const TVectorD left = VectorOver(a, "a");
  const TVectorD right = VectorOver(b, "b");
  Require(left.Size == right.Size, "dot: the sizes differ");
  return dot(left, right);
}

std::string Text(const TAnyDoubles& m) {
  return IsMatrix(m) ? ToString(MatrixOver(m, "m")) : ToString(VectorOver(m, "m"));
}

void BindAlgebra(py::module_& m) {
  m.def("fill", Fill, arg("m").noconvert(), arg("value"), "Sets every element, in place.");
  m.def("abs", Absolute, arg("m"), "A matrix with the sign bits cleared, those of NaNs too.");
  m.def("add", Add, arg("l").noconvert(), arg("r"),
        "`l += r`, in place: two matrices or two vectors of one shape.");
  m.def("diff", Difference, arg("l"), arg("r"), "`l - r`; None if the shapes differ.");
  m.def("sub", Subtract, arg("l"), arg("r"), "`l - r` of two vectors.");
  m.def("mul", Multiply, arg("l"), arg("r"),
        "The matrix product, or that of a matrix and a vector; each element is added up from 0.0 "
        "in ascending order, without fused multiply-add. Raises `TZxMessage` for two matrices that "
        "don't fit.");
  m.def(
      "min", [](const TAnyDoubles& a) { return min(MatrixOver(a, "m")); }, arg("m"),
      "The smallest element; raises `TZxMessage` without elements. A NaN in the first element is "
      "the result; NaNs elsewhere are ignored.");
  m.def(
      "max", [](const TAnyDoubles& a) { return max(MatrixOver(a, "m")); }, arg("m"),
      "The largest element; otherwise as `min`.");
  m.def(
      "summ", [](const TAnyDoubles& a) { return summ(MatrixOver(a, "m")); }, arg("m"),
      "The sum of all elements in index order from 0.0.");
  m.def(
      "equal", Equal, arg("a"), arg("b"), arg("tol"),
      "False if the shapes differ or a pair differs by more than `tol`; a NaN equals everything.");
  m.def("transpose", Transposed, arg("m"), "The transpose.");
  m.def("outer_dot", Outer, arg("a"), arg("b"), "The matrix of `a[y] * b[x]`.");
  m.def("dot", Dot, arg("a"), arg("b"),
        "The sum of products, added up in ascending order from 0.0.");
  m.def(
      "Norm", [](const TAnyDoubles& v) { return Norm(VectorOver(v, "v")); }, arg("v"),
      "The square root of `NormSqr`.");
  m.def(
      "NormSqr", [](const TAnyDoubles& v) { return NormSqr(VectorOver(v, "v")); }, arg("v"),
      "The sum of squares, added up in ascending order from 0.0.");
  m.def("ToString", Text, arg("m"), "A vector or a matrix as text, by 16 decimals.");
}

// --- Solvers

// A square system: copies of both sides where the solver destroys them.
struct TSystem {
  std::vector<double> A;
  std::vector<double> B;
  unsigned long N;
};

TSystem SystemOf(const TAnyDoubles& a, const TAnyDoubles& b) {
  const TMatrixD matrix = MatrixOver(a, "a");
  const TVectorD right = VectorOver(b, "b");
  Require(matrix.SizeX == matrix.SizeY && right.Size == matrix.SizeY,
          "a is a square matrix and b has a value for each of its rows");
  return {{a.data(), a.data() + a.size()}, {b.data(), b.data() + b.size()}, right.Size};
}

template <class F> py::object Solve(TSystem system, F&& solver) {
  TDoubles x = NewVector(system.N);
  return solver(system, x.mutable_data()) ? py::object(x) : py::none();
}

py::object Inverse(const TAnyDoubles& m) {
  const TMatrixD matrix = MatrixOver(m, "m");
  Require(matrix.SizeX == matrix.SizeY, "inverse: the matrix is not square");
  TDoubles out = NewMatrix(matrix.SizeY, matrix.SizeX);
  TMatrixD res = MatrixOver(out, "res");
  return inverse(matrix, res) ? py::object(out) : py::none();
}

TDoubles MulMtM(const TAnyDoubles& a) {
  const TMatrixD matrix = MatrixOver(a, "a");
  TDoubles out = NewMatrix(matrix.SizeX, matrix.SizeX);
  TMatrixD res = MatrixOver(out, "res");
  mul_mtm(matrix, &res);
  return out;
}

TDoubles MulMtV(const TAnyDoubles& a, const TAnyDoubles& v) {
  const TMatrixD matrix = MatrixOver(a, "a");
  const TVectorD vector = VectorOver(v, "v");
  Require(matrix.SizeY == vector.Size, "mul_mtv: the vector has not a value for each row");
  TDoubles out = NewVector(matrix.SizeX);
  TVectorD res = VectorOver(out, "res");
  mul_mtv(matrix, vector, &res);
  return out;
}

py::object LeastSquares(const TAnyDoubles& a, const TAnyDoubles& b) {
  const TMatrixD matrix = MatrixOver(a, "a");
  const TVectorD right = VectorOver(b, "b");
  Require(matrix.SizeY == right.Size, "lsm: b has not a value for each row of a");
  TDoubles out = NewVector(matrix.SizeX);
  TVectorD x = VectorOver(out, "x");
  return lsm(matrix, right, &x) ? py::object(out) : py::none();
}

void BindSolvers(py::module_& m) {
  m.def(
      "SolveGauss",
      [](const TAnyDoubles& a, const TAnyDoubles& b, double tol) {
        return Solve(SystemOf(a, b), [tol](TSystem& s, double* x) {
          return SolveGauss(s.A.data(), s.N, s.B.data(), tol, x, nullptr);
        });
      },
      arg("a"), arg("b"), arg("tol") = 0.0,
      "Solves `a x = b` by partial pivoting: x, or None.\n\nBeware: `tol` is compared with the "
      "position of the row in which the pivot was found and not with its magnitude. With 0 "
      "nothing ever fails: a singular matrix gives infinities and NaNs. `LineSysGauss1` tells.");
  const char* const gauss =
      "Solves `a x = b`: x, or None when a pivot column is exactly zero. There is no tolerance.";
  m.def(
      "LineSysGauss1",
      [](const TAnyDoubles& a, const TAnyDoubles& b) {
        return Solve(SystemOf(a, b), [](TSystem& s, double* x) {
          return LineSysGauss1(s.A.data(), s.N, s.B.data(), x);
        });
      },
      arg("a"), arg("b"), gauss);
  m.def(
      "LineSysGauss2",
      [](const TAnyDoubles& a, const TAnyDoubles& b) {
        return Solve(SystemOf(a, b), [](TSystem& s, double* x) {
          return LineSysGauss2(s.A.data(), s.N, s.B.data(), x);
        });
      },
      arg("a"), arg("b"), "`LineSysGauss1` with full pivoting.");
  m.def("inverse", Inverse, arg("m"),
        "The inverse by Gauss-Jordan elimination with partial pivoting; None when a pivot's "
        "magnitude is 1e-9 or less.");
  m.def("mul_mtm", MulMtM, arg("a"), "The product of the transpose of `a` with `a`.");
  m.def("mul_mtv", MulMtV, arg("a"), arg("v"), "The transpose of `a` times `v`.");
  m.def("lsm", LeastSquares, arg("a"), arg("b"),
        "Least squares by the normal equations: the x that minimises the length of `a x - b`; None "
        "when the normal matrix can't be inverted.");
}

// --- Newton, splines, scalars

class TPyFunc1 : public TFunc1 {
public:
  bool Value(double x, double* y) override {
    const py::function f = py::get_override(static_cast<const TFunc1*>(this), "Value");
    if (!f) {
      throw py::type_error("the function has no Value");
    }
    return Store(f(x), y);
  }
  bool Deriv(double x, double h, double* d) override {
    const py::function f = py::get_override(static_cast<const TFunc1*>(this), "Deriv");
    return f ? Store(f(x, h), d) : TFunc1::Deriv(x, h, d);
  }

private:
  static bool Store(const py::object& result, double* out) {
    if (result.is_none()) {
      return false;
    }
    *out = result.cast<double>();
    return true;
  }
};

void BindNewton(py::module_& m) {
  py::class_<TFunc1, TPyFunc1>(m, "TFunc1",
                               "A function of one variable: derive from it and give `Value(x)`, "
                               "which returns f(x), or None where f has no value. `Deriv(x, h)` is "
                               "the central difference unless you give it.")
      .def(py::init_alias<>())
      .def(
          "Value",
          [](TFunc1& self, double x) -> std::optional<double> {
            double y = 0;
            return self.Value(x, &y) ? std::optional(y) : std::nullopt;
          },
          arg("x"), "f(x), or None where f has no value.")
      .def(
          "Deriv",
          [](TFunc1& self, double x, double h) -> std::optional<double> {
            double d = 0;
            return self.TFunc1::Deriv(x, h, &d) ? std::optional(d) : std::nullopt;
          },
          arg("x"), arg("h"), "The central difference, or None where the function failed.");
  py::class_<TNewtonSolver>(m, "TNewtonSolver", Doc("TNewtonSolver"))
      .def(py::init<>())
      .def_readwrite("MaxHalvings", &TNewtonSolver::MaxHalvings,
                     "The largest number of halvings in one step.")
      .def(
          "Solve",
          [](TNewtonSolver& self, TFunc1& f, double x0, double eps,
             int maxIter) -> std::optional<double> {
            double root = 0;
            return self.Solve(&f, x0, eps, maxIter, &root) ? std::optional(root) : std::nullopt;
          },
          arg("f"), arg("x0"), arg("eps"), arg("maxIter"),
          "Looks for a root of `f` from `x0` on, until |f| isn't above `eps`, for `maxIter` steps. "
          "A number means only that `f` could be evaluated all along: check f of it. None when "
          "`Value` or `Deriv` failed.");
}

static_assert(sizeof(POLYNOM3) == 4 * sizeof(double));

template <unsigned long Size, class F>
py::object Spline(const TAnyDoubles& p, bool closed, F&& calc) {
  const bool shape = Size == 1 ? p.ndim() == 1 : p.ndim() == 2 && p.shape(1) == Size;
  if (!shape) {
    throw py::type_error("expected points of " + std::to_string(Size) +
                         (Size == 1 ? " coordinate" : " coordinates"));
  }
  const py::ssize_t points = p.shape(0);
  const py::ssize_t segments = std::max<py::ssize_t>(closed ? points : points - 1, 0);
  std::vector<py::ssize_t> place = {segments, 4};
  if (Size > 1) {
    place.insert(place.begin(), Size);
  }
  TDoubles out(place);
  auto* const polynomials = reinterpret_cast<POLYNOM3*>(out.mutable_data());
  return calc(p.data(), static_cast<unsigned long>(points), polynomials) ? py::object(out)
                                                                         : py::none();
}

void BindSplines(py::module_& m) {
  m.def(
      "CalcCubeSpline1D",
      [](const TAnyDoubles& y, bool closed) {
        return Spline<1>(y, closed, [closed](const double* p, unsigned long n, POLYNOM3* out) {
          return CalcCubeSpline1D(p, 8, n, closed, out);
        });
      },
      arg("y"), arg("closed"),
      "The interpolating cubic spline with uniform knots: an array of a, b, c, d for each segment, "
      "in a parameter from 0 to 1; None for fewer than 2 values.");
  m.def(
      "CalcCubeSpline2D",
      [](const TAnyDoubles& p, bool closed) {
        return Spline<2>(p, closed, [closed](const double* data, unsigned long n, POLYNOM3* out) {
          return CalcCubeSpline2D(reinterpret_cast<const vec_t_<double, 2>*>(data), 16, n, closed,
                                  out);
        });
      },
      arg("p"), arg("closed"), "The same for points of 2 coordinates: (coordinate, segment, 4).");
  m.def(
      "CalcCubeSpline3D",
      [](const TAnyDoubles& p, bool closed) {
        return Spline<3>(p, closed, [closed](const double* data, unsigned long n, POLYNOM3* out) {
          return CalcCubeSpline3D(reinterpret_cast<const vec_t_<double, 3>*>(data), 24, n, closed,
                                  out);
        });
      },
      arg("p"), arg("closed"), "The same for points of 3 coordinates: (coordinate, segment, 4).");
  m.def(
      "CalcCubeSplineXY",
      [](const TAnyDoubles& p, unsigned long startType, double startValue, unsigned long endType,
         double endValue) {
        if (p.ndim() != 2 || p.shape(1) != 2) {
          throw py::type_error("expected points of 2 coordinates");
        }
        TDoubles out =
            NewMatrix(static_cast<unsigned long>(std::max<py::ssize_t>(p.shape(0), 1)) - 1, 4);
        const bool made =
            CalcCubeSplineXY(reinterpret_cast<const vec_t_<double, 2>*>(p.data()),
                             static_cast<unsigned long>(p.shape(0)), startType, startValue, endType,
                             endValue, reinterpret_cast<POLYNOM3*>(out.mutable_data()));
        return made ? py::object(out) : py::object(py::none());
      },
      arg("p"), arg("startType"), arg("startValue"), arg("endType"), arg("endValue"),
      "The spline y(x) through the points: an array of a, b, c, d for each segment, in absolute x. "
      "A type of 1 gives the first derivative at that end, 2 the second. None for fewer than 2 "
      "points, another type, or equal neighbours in x.");
  m.def(
      "Polynom3_TransX",
      [](const std::array<double, 4>& p, double t) {
        POLYNOM3 q = {p[0], p[1], p[2], p[3]};
        Polynom3_TransX(q, t);
        return std::array<double, 4>{q.a, q.b, q.c, q.d};
      },
      arg("p"), arg("t"), "The polynomial q(x) = p(x - t).");
}

void BindScalars(py::module_& m) {
  m.def("FloorPow2", FloorPow2, arg("n"), Doc("FloorPow2"));
  m.def("CeilPow2", CeilPow2, arg("n"), Doc("CeilPow2"));
  m.def("RoundPow2", RoundPow2, arg("n"), Doc("RoundPow2"));
  m.def("FloorPow10", FloorPow10, arg("v"), Doc("FloorPow10"));
  m.def("Sinex", Sinex, arg("x"), Doc("Sinex"));
  m.def(
      "_SinCos",
      [](double x) {
        double s = 0;
        double c = 0;
        _SinCos(x, &s, &c);
        return py::make_tuple(s, c);
      },
      arg("x"), "The sine of `x` and its cosine.");
}

} // namespace

void BindDense(py::module_& m) {
  BindAlgebra(m);
  BindSolvers(m);
  BindNewton(m);
  BindSplines(m);
  BindScalars(m);
}

} // namespace zxpy
