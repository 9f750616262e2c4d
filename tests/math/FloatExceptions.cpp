// A host may let floating point exceptions raise a signal: ordinary use of the numerics gives it
// none, not in the unused lanes of a vector either.

#include <cfenv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxXIniReader.h>
#include <ZxBaseKit/TZxXIniWriter.h>
#include <ZxCore3D/math/CubeSpline.h>
#include <ZxCore3D/math/Frusta.h>
#include <ZxCore3D/math/GeometryXIni.h>
#include <ZxCore3D/math/Polygons.h>
#include <ZxCore3D/math/ScalarFunctions.h>
#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>
#include <ZxCore3D/math/TNewtonSolver.h>
#include <ZxCore3D/math/TVectorD.h>
#include <ZxCore3D/math/TransformEstimation.h>
#include <ZxCore3D/math/TriangleIntersection.h>
#include <ZxCore3D/math/private/InverseEx.h>
#include <ZxCore3D/types/MAT4.h>
#include <ZxCore3D/types/UPLAIN.h>

#include "math/Fixture.h"

namespace {

constexpr int kTrapped = FE_INVALID | FE_DIVBYZERO | FE_OVERFLOW;

/// The names of the exceptions that `call` raised; empty for none.
template <class Call> std::string Raised(Call&& call) {
  std::feclearexcept(FE_ALL_EXCEPT);
  call();
  const int raised = std::fetestexcept(kTrapped);
  return std::string((raised & FE_INVALID) != 0 ? "invalid " : "") +
         ((raised & FE_DIVBYZERO) != 0 ? "divide " : "") +
         ((raised & FE_OVERFLOW) != 0 ? "overflow" : "");
}

/// Sizes around the lanes of every instruction set, the change to panels and the panels' ends.
const std::vector<unsigned long> s_Sizes = {1,  2,  3,  4,  5,  6,  7,  8,   9,   11,  13,
                                            15, 16, 17, 23, 31, 32, 33, 47,  48,  49,  50,
                                            63, 64, 65, 79, 95, 96, 97, 100, 127, 128, 129};

TMatrixD Matrix(unsigned long sizeX, unsigned long sizeY, Fill kind, std::mt19937_64& random) {
  TMatrixD m(sizeX, sizeY);
  const std::vector<double> values = RandomValues(sizeX * sizeY, kind, random);
  std::copy(values.begin(), values.end(), m.Data);
  return m;
}

TVectorD Vector(unsigned long n, std::mt19937_64& random) {
  TVectorD v(n);
  const std::vector<double> values = RandomValues(n, Fill::Plain, random);
  std::copy(values.begin(), values.end(), v.Data);
  return v;
}

/// What stands behind a work array is no part of it: lanes that reach it find this.
std::vector<double> Dirty(std::size_t n) { return std::vector<double>(n, -1e308); }

void DenseAlgebra(Fill kind) {
  std::mt19937_64 random(1);
  for (const unsigned long n : s_Sizes) {
    SCOPED_TRACE(n);
    const TMatrixD a = Matrix(n, n + 3, kind, random);
    const TMatrixD b = Matrix(n + 1, n, kind, random);
    TMatrixD product(n + 1, n + 3);
    TMatrixD normal(n, n);
    TMatrixD turned(n + 3, n);
    const TVectorD v = Vector(n + 3, random);
    TVectorD sums(n);
    TVectorD image(n + 3);
    const TVectorD w = Vector(n, random);
    EXPECT_EQ(Raised([&] { mul(a, b, product); }), "");
    EXPECT_EQ(Raised([&] { mul_mtm(a, &normal); }), "");
    EXPECT_EQ(Raised([&] { mul_mtv(a, v, &sums); }), "");
    EXPECT_EQ(Raised([&] { mul(a, w, &image); }), "");
    EXPECT_EQ(Raised([&] { transpose(a, turned); }), "");
    EXPECT_EQ(Raised([&] {
                min(a), max(a), summ(a), Norm(v), dot(v, v);
                outer_dot(v, w, &turned);
              }),
              "");
  }
}

void Solvers(Fill kind) {
  std::mt19937_64 random(2);
  for (const unsigned long n : s_Sizes) {
    SCOPED_TRACE(n);
    TMatrixD a = Matrix(n, n, kind, random);
    for (unsigned long i = 0; i < n; ++i) {
      a.Data[i * n + i] += 3.0 + static_cast<double>(n);
    }
    TMatrixD inverted(n, n);
    bool done = false;
    EXPECT_EQ(Raised([&] { done = inverse(a, inverted); }), "");
    EXPECT_TRUE(done);
    std::vector<double> work(a.Data, a.Data + n * n);
    EXPECT_EQ(Raised([&] { InverseEx<double>(work.data(), n, inverted.Data, 0.0, true, nullptr); }),
              "");
    const TVectorD right = Vector(n, random);
    std::vector<double> x = Dirty(n);
    EXPECT_EQ(Raised([&] { done = SolveGauss(a.Data, n, right.Data, 0.0, x.data(), nullptr); }),
              "");
    for (const auto solve : {LineSysGauss1, LineSysGauss2}) {
      work.assign(a.Data, a.Data + n * n);
      std::vector<double> b(right.Data, right.Data + n);
      EXPECT_EQ(Raised([&] { done = solve(work.data(), n, b.data(), x.data()); }), "");
      EXPECT_TRUE(done);
    }
    const TMatrixD tall = Matrix(n, 2 * n + 1, Fill::Plain, random);
    const TVectorD values = Vector(2 * n + 1, random);
    TVectorD fitted(n);
    EXPECT_EQ(Raised([&] { lsm(tall, values, &fitted); }), "");
    std::fill_n(a.Data, n * n, 0.0);
    EXPECT_EQ(Raised([&] { done = inverse(a, inverted); }), "") << "singular";
    EXPECT_FALSE(done);
  }
}

void Splines() {
  std::mt19937_64 random(3);
  for (const unsigned long n : {2ul, 3ul, 5ul, 8ul, 9ul, 33ul, 100ul}) {
    SCOPED_TRACE(n);
    const TVectorD y = Vector(2 * n, random);
    std::vector<vec_t_<double, 2>> p(n);
    for (unsigned long i = 0; i < n; ++i) {
      p[i] = {static_cast<double>(i) * 0.5, y.Data[i]};
    }
    std::vector<POLYNOM3> out(2 * n);
    for (const bool closed : {false, true}) {
      EXPECT_EQ(Raised([&] { CalcCubeSpline1D(y.Data, 0, n, closed, out.data()); }), "");
      EXPECT_EQ(Raised([&] { CalcCubeSpline2D(p.data(), 16, n, closed, out.data()); }), "");
    }
    EXPECT_EQ(Raised([&] { CalcCubeSplineXY(p.data(), n, 2, 0.0, 1, 0.5, out.data()); }), "");
    Polynom3_TransX(out[0], 2.0);
    if (n > 2) {
      p[1].x = p[0].x;
      EXPECT_EQ(Raised([&] { CalcCubeSplineXY(p.data(), n, 2, 0.0, 2, 0.0, out.data()); }), "");
    }
  }
}

void Fits() {
  std::mt19937_64 random(4);
  for (const unsigned long n : {4ul, 5ul, 7ul, 20ul}) {
    const TVectorD values = Vector(12 * n, random);
    const auto* plane = reinterpret_cast<const vec_t_<double, 2>*>(values.Data);
    const auto* space = reinterpret_cast<const vec_t_<double, 3>*>(values.Data);
    MAT3<double> m3;
    MAT4<double> m4;
    EXPECT_EQ(Raised([&] { GetProjectiveTransform(plane, plane + n, n, &m3); }), "");
    EXPECT_EQ(Raised([&] { GetProjectiveTransform(space, space + n, n, &m4); }), "");
    EXPECT_EQ(Raised([&] { GetAffineTransform(space, space + n, n, &m4); }), "");
  }
}

struct TTurn : TZx3DTransform {
  vec_t_<double, 3> TransformPoint(const vec_t_<double, 3>& p) const override {
    return {p.y + 1.0, -p.x, p.z * 2.0};
  }
};

void Geometry() {
  std::mt19937_64 random(5);
  for (int round = 0; round < 300; ++round) {
    const TVectorD values = Vector(48, random);
    const auto* p = reinterpret_cast<const vec_t_<double, 3>*>(values.Data);
    const auto* q = reinterpret_cast<const vec_t_<double, 2>*>(values.Data);
    vec_t_<double, 3> out[6];
    EXPECT_EQ(Raised([&] { GetIntersectTriangles(p, p + 3, out, 1e-9); }), "");
    EXPECT_EQ(Raised([&] { IsIntersectTriangles(p, p + 3, 1e-9); }), "");
    vec_t_<double, 3> flat[6];
    for (int i = 0; i < 6; ++i) {
      flat[i] = {p[i].x, p[i].y, 0.0};
    }
    EXPECT_EQ(Raised([&] { GetIntersectTriangles(flat, flat + 3, out, 1e-9); }), "");
    flat[2] = flat[1];
    EXPECT_EQ(Raised([&] { GetIntersectTriangles(flat, p, out, 1e-9); }), "") << "no area";
    EXPECT_EQ(Raised([&] {
                for (unsigned long n = 3; n < 20; ++n) {
                  IsSelfIntersected(q, n);
                }
              }),
              "");
    EXPECT_EQ(Raised([&] { PlainThrough(p[0], p[1], p[2]); }), "");
  }
  const TTurn turn;
  VBOX<double> box({-1, -2, -3}, {1, 2, 3});
  VBOX<double> empty;
  empty.SetEmpty();
  VRECT<double> rectangle;
  rectangle.SetEmpty();
  VBOX<double> mapped;
  EXPECT_EQ(Raised([&] {
              Transform(box, turn, &mapped);
              Transform(empty, turn, &mapped);
              mapped.Expand({1, 2, 3});
              mapped.Expand({0, 5, 3});
            }),
            "");
  VSPHERE<double> sphere = {{1, 2, 3}, 4};
  VSPHERE<double> round;
  const TFrustum_T<double> frustum = {
      {{1, 0, 0, 1}, {-1, 0, 0, 1}, {0, 1, 0, 1}, {0, -1, 0, 1}, {0, 0, 1, 1}, {0, 0, -1, 1}}, 0};
  EXPECT_EQ(Raised([&] {
              Transform(sphere, 20, turn, &round);
              sphere.SetEmpty();
              Transform(sphere, 20, turn, &round);
              TFrustum_T<double> moved;
              Transform(frustum, turn, &moved);
            }),
            "");
  EXPECT_EQ(Raised([&] {
              TZxXIniWriter writer;
              XIniSaveE(&writer, box);
              XIniSaveE(&writer, g_M4Ed);
            }),
            "");
  EXPECT_EQ(Raised([&] {
              TZxXIniWriter writer;
              XIniSaveE(&writer, empty);
            }),
            "")
      << "the mark of an empty box is a NaN";
  EXPECT_EQ(Raised([&] {
              TZxXIniWriter writer;
              XIniSaveE(&writer, rectangle);
            }),
            "");
}

struct TParabola : TFunc1 {
  bool Value(double x, double* y) override {
    *y = x * x - 2.0;
    return true;
  }
};

void Scalars() {
  EXPECT_EQ(Raised([] {
              double s = 0, c = 0;
              float sf = 0, cf = 0;
              for (double x = -20.0; x < 20.0; x += 0.37) {
                Sinex(x);
                _SinCos(x, &s, &c);
                _SinCos(static_cast<float>(x), &sf, &cf);
                FloorPow10(std::fabs(x) * 1e3);
                FloorPow10(std::fabs(x) * 1e-3);
              }
              FloorPow10(0.0);
            }),
            "");
  TParabola parabola;
  TNewtonSolver solver;
  double root = 0;
  EXPECT_EQ(Raised([&] { solver.Solve(&parabola, 1.0, 1e-12, 50, &root); }), "");
  MAT4<double> product;
  EXPECT_EQ(Raised([&] { Mat4_Mul_Mat4(g_M4Ed.m, g_M4Ed.m, product.m); }), "");
}

void Everything() {
  for (const Fill kind : {Fill::Plain, Fill::Sparse, Fill::Zeros, Fill::Integers}) {
    SCOPED_TRACE(Name(kind));
    DenseAlgebra(kind);
    Solvers(kind);
  }
  Splines();
  Fits();
  Geometry();
  Scalars();
}

TEST(FloatExceptions, OrdinaryUseRaisesNone) { AtEveryInstructionSet(Everything); }

// An infinity times what stands beside the matrix would be invalid where nothing of the matrix is.
TEST(FloatExceptions, InfinitiesRaiseNoneInUnusedLanes) {
  AtEveryInstructionSet([] {
    for (const unsigned long n : s_Sizes) {
      for (const unsigned long inner : {n, 300ul}) {
        SCOPED_TRACE(n);
        TMatrixD a(inner, n + 2);
        TMatrixD b(n, inner);
        fill(a, 0.5);
        fill(b, 2.0);
        for (unsigned long y = 0; y < a.SizeY; ++y) {
          a.Data[y * inner + y % inner] = std::numeric_limits<double>::infinity();
        }
        TMatrixD product(n, n + 2);
        EXPECT_EQ(Raised([&] { mul(a, b, product); }), "");
        EXPECT_EQ(product.Data[0], std::numeric_limits<double>::infinity());
        TMatrixD normal(inner, inner);
        EXPECT_EQ(Raised([&] { mul_mtm(a, &normal); }), "");
      }
    }
  });
}

TEST(FloatExceptionsDeathTest, AHostThatTrapsThemRunsThrough) {
  EXPECT_EXIT(
      {
        feenableexcept(kTrapped);
        AtEveryInstructionSet([] {
          DenseAlgebra(Fill::Plain);
          Solvers(Fill::Plain);
        });
        Splines();
        Fits();
        Geometry();
        Scalars();
        std::exit(testing::Test::HasFailure() ? 1 : 0);
      },
      testing::ExitedWithCode(0), "");
}

} // namespace
