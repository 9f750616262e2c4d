#include <ZxCore3D/math/TransformEstimation.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <eigen3/Eigen/Dense>
#include <gtest/gtest.h>

#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>
#include <ZxCore3D/math/TVectorD.h>
#include <ZxCore3D/math/private/TransformEstimation.h>

#include "math/AllocationCount.h"

namespace {

using TPoint2 = vec_t_<double, 2>;
using TPoint3 = vec_t_<double, 3>;
using TMatrix = Eigen::MatrixXd;

template <class TPoint> struct TPairs { std::vector<TPoint> Src, Dst; };

TMatrix ToEigen(const MAT3<double>& m) { return Eigen::Map<const Eigen::Matrix3d>(m.m); }
TMatrix ToEigen(const MAT4<double>& m) { return Eigen::Map<const Eigen::Matrix4d>(m.m); }

template <class TMat> TMat Marked() {
  TMat m;
  for (double& value : m.m) {
    value = -7.25;
  }
  return m;
}

template <class TMat> void ExpectMarked(const TMat& m) {
  for (const double value : m.m) {
    EXPECT_EQ(value, -7.25);
  }
}

template <class TMat> void ExpectNear(const TMat& m, const TMatrix& expected, double tolerance) {
  EXPECT_LT((ToEigen(m) - expected).cwiseAbs().maxCoeff(), tolerance) << ToEigen(m) << "\nis not\n"
                                                                      << expected;
}

/// `m * p` in homogeneous coordinates.
template <class TPoint> TPoint Mapped(const TMatrix& m, const TPoint& p) {
  constexpr int n = sizeof(TPoint) / sizeof(double);
  Eigen::VectorXd h(n + 1);
  for (int i = 0; i < n; ++i) {
    h[i] = p[static_cast<std::size_t>(i)];
  }
  h[n] = 1;
  const Eigen::VectorXd mapped = m * h;
  TPoint out;
  for (int i = 0; i < n; ++i) {
    out[static_cast<std::size_t>(i)] = mapped[i] / mapped[n];
  }
  return out;
}

class TSource {
public:
  explicit TSource(unsigned int seed) : m_Random(seed) {}

  double Real(double size) { return std::uniform_real_distribution<double>(-size, size)(m_Random); }

  /// A projective map near enough to the identity that no point comes near its horizon.
  TMatrix Map(int n, double projective) {
    TMatrix m = TMatrix::Identity(n, n);
    for (int r = 0; r < n; ++r) {
      for (int c = 0; c < n; ++c) {
        m(r, c) += Real(r + 1 < n ? 0.5 : projective);
      }
    }
    m.row(n - 1) /= m(n - 1, n - 1);
    m(n - 1, n - 1) = 1;
    return m;
  }

  template <class TPoint> TPairs<TPoint> Pairs(const TMatrix& m, std::size_t n) {
    TPairs<TPoint> pairs;
    for (std::size_t i = 0; i < n; ++i) {
      TPoint p;
      for (std::size_t k = 0; k < sizeof(TPoint) / sizeof(double); ++k) {
        p[k] = Real(1);
      }
      pairs.Src.push_back(p);
      pairs.Dst.push_back(Mapped(m, p));
    }
    return pairs;
  }

private:
  std::mt19937 m_Random;
};

template <class TPoint, class TMat> bool Project(const TPairs<TPoint>& pairs, TMat* m) {
  return GetProjectiveTransform(pairs.Src.data(), pairs.Dst.data(), pairs.Src.size(), m);
}

bool Affine(const TPairs<TPoint3>& pairs, MAT4<double>* m) {
  return GetAffineTransform(pairs.Src.data(), pairs.Dst.data(), pairs.Src.size(), m);
}

const TPairs<TPoint2> s_Square = {{{0, 0}, {1, 0}, {1, 1}, {0, 1}},
                                  {{0, 0}, {2, 0}, {4.0 / 3, 4.0 / 3}, {0, 2}}};

TEST(PlaneProjective, FourPairsGiveTheirHomography) {
  // (0,0) fixed: c = f = 0. (1,0) to (2,0): a = 2 (g + 1), d = 0. (0,1) to (0,2): e = 2 (h + 1),
  // b = 0. (1,1) to (4/3,4/3): 2 (g + 1) = 4/3 (g + h + 1) = 2 (h + 1), so g = h = 1, a = e = 4.
  TPairs<TPoint2> pairs = s_Square;
  MAT3<double> m = Marked<MAT3<double>>();
  ASSERT_TRUE(Project(pairs, &m));
  const double expected[9] = {4, 0, 1, 0, 4, 1, 0, 0, 1};
  for (std::size_t i = 0; i < 9; ++i) {
    EXPECT_NEAR(m[i], expected[i], 1e-10) << i;
  }
  EXPECT_EQ(m[8], 1.0);
}

TEST(PlaneProjective, RecoversHomographies) {
  TSource source(41);
  for (int i = 0; i < 200; ++i) {
    const TMatrix truth = source.Map(3, 0.2);
    MAT3<double> m;
    ASSERT_TRUE(Project(source.Pairs<TPoint2>(truth, 8 + static_cast<std::size_t>(i) % 20), &m));
    ExpectNear(m, truth, 1e-7);
    EXPECT_EQ(m[8], 1.0);
  }
}

TEST(PlaneProjective, ThreePairsAreTooFew) {
  for (std::size_t n = 0; n < 4; ++n) {
    TPairs<TPoint2> pairs = s_Square;
    pairs.Src.resize(n);
    pairs.Dst.resize(n);
    MAT3<double> m = Marked<MAT3<double>>();
    const std::size_t before = AllocationCount();
    EXPECT_FALSE(Project(pairs, &m));
    EXPECT_EQ(AllocationCount(), before);
    ExpectMarked(m);
  }
}

TEST(PlaneProjective, CollinearPointsAreRefused) {
  MAT3<double> m = Marked<MAT3<double>>();
  EXPECT_FALSE(
      Project<TPoint2>({{{0, 0}, {1, 1}, {2, 2}, {3, 3}}, {{0, 0}, {1, 0}, {1, 1}, {0, 1}}}, &m));
  EXPECT_FALSE(
      Project<TPoint2>({{{1, 1}, {1, 1}, {1, 1}, {1, 1}}, {{1, 1}, {1, 1}, {1, 1}, {1, 1}}}, &m));
  ExpectMarked(m);
}

TEST(PlaneProjective, SmallCoordinatesAreRefused) {
  TPairs<TPoint2> pairs = s_Square;
  for (std::size_t i = 0; i < 4; ++i) {
    pairs.Src[i] = pairs.Src[i] * 0.001;
    pairs.Dst[i] = pairs.Dst[i] * 0.001;
  }
  MAT3<double> m = Marked<MAT3<double>>();
  EXPECT_FALSE(Project(pairs, &m));
  ExpectMarked(m);
}

/// The design matrix of the fit, row by row, and its right side.
struct TDesign {
  TMatrix A;
  Eigen::VectorXd B;
};

template <class TPoint> TDesign DesignOf(const TPairs<TPoint>& pairs) {
  constexpr int n = sizeof(TPoint) / sizeof(double);
  constexpr int unknowns = n * (n + 1) + n;
  const int rows = n * static_cast<int>(pairs.Src.size());
  TDesign design = {TMatrix::Zero(rows, unknowns), Eigen::VectorXd::Zero(rows)};
  for (int row = 0; row < rows; ++row) {
    const TPoint& p = pairs.Src[static_cast<std::size_t>(row / n)];
    const int axis = row % n;
    const double target =
        pairs.Dst[static_cast<std::size_t>(row / n)][static_cast<std::size_t>(axis)];
    for (int i = 0; i < n; ++i) {
      design.A(row, axis * (n + 1) + i) = p[static_cast<std::size_t>(i)];
      design.A(row, n * (n + 1) + i) = -p[static_cast<std::size_t>(i)] * target;
    }
    design.A(row, axis * (n + 1) + n) = 1;
    design.B[row] = target;
  }
  return design;
}

TMatrix FromSolution(const Eigen::VectorXd& solution, int n) {
  TMatrix m = TMatrix::Identity(n, n);
  for (int i = 0; i < n * n - 1; ++i) {
    m(i / n, i % n) = solution[i];
  }
  return m;
}

template <class TPoint> TPairs<TPoint> Noisy(TSource* source, const TMatrix& truth, std::size_t n) {
  TPairs<TPoint> pairs = source->Pairs<TPoint>(truth, n);
  for (TPoint& p : pairs.Dst) {
    for (std::size_t k = 0; k < sizeof(TPoint) / sizeof(double); ++k) {
      p[k] += source->Real(0.02);
    }
  }
  return pairs;
}

TEST(PlaneProjective, NoisyPairsGiveTheLeastSquaresOfTheLinearEquations) {
  TSource source(42);
  for (int i = 0; i < 50; ++i) {
    const TPairs<TPoint2> pairs = Noisy<TPoint2>(&source, source.Map(3, 0.2), 30);
    const TDesign design = DesignOf(pairs);
    MAT3<double> m;
    ASSERT_TRUE(Project(pairs, &m));
    ExpectNear(m, FromSolution(design.A.colPivHouseholderQr().solve(design.B), 3), 1e-10);
  }
}

TEST(SpaceProjective, RecoversProjectiveMaps) {
  TSource source(43);
  for (int i = 0; i < 100; ++i) {
    const TMatrix truth = source.Map(4, 0.15);
    const TPairs<TPoint3> pairs =
        source.Pairs<TPoint3>(truth, 12 + static_cast<std::size_t>(i) % 20);
    MAT4<double> m;
    ASSERT_TRUE(Project(pairs, &m));
    ExpectNear(m, truth, 1e-6);
    EXPECT_EQ(m[15], 1.0);
    MAT4<double> other;
    ASSERT_TRUE(
        GetProjectiveTransform_(pairs.Src.data(), pairs.Dst.data(), pairs.Src.size(), &other));
    ExpectNear(other, truth, 1e-6);
    EXPECT_EQ(other[15], 1.0);
  }
}

TEST(SpaceProjective, FivePairsOfAnAffineMapHaveNoDenominator) {
  const std::vector<TPoint3> src = {{0, 0, 0}, {2, 0, 0}, {0, 2, 0}, {0, 0, 2}, {2, 2, 2}};
  TMatrix truth = TMatrix::Identity(4, 4);
  truth.row(0) << 1, 2, 0, 1;
  truth.row(1) << 0, 1, -1, 2;
  truth.row(2) << 3, 0, 1, -1;
  TPairs<TPoint3> pairs = {src, {}};
  for (const TPoint3& p : src) {
    pairs.Dst.push_back(Mapped(truth, p));
  }
  MAT4<double> m = Marked<MAT4<double>>();
  ASSERT_TRUE(Project(pairs, &m));
  ExpectNear(m, truth, 1e-7);
  EXPECT_NEAR(m[3], 0, 1e-7);
  EXPECT_NEAR(m[7], 0, 1e-7);
  EXPECT_NEAR(m[11], 0, 1e-7);
  EXPECT_EQ(m[15], 1.0);
}

TEST(SpaceProjective, BothFormsSolveTheSameEquations) {
  TSource source(44);
  for (int i = 0; i < 30; ++i) {
    const TPairs<TPoint3> pairs = Noisy<TPoint3>(&source, source.Map(4, 0.15), 40);
    const TDesign design = DesignOf(pairs);
    const TMatrix expected = FromSolution(design.A.colPivHouseholderQr().solve(design.B), 4);
    MAT4<double> m;
    MAT4<double> other;
    ASSERT_TRUE(Project(pairs, &m));
    ASSERT_TRUE(
        GetProjectiveTransform_(pairs.Src.data(), pairs.Dst.data(), pairs.Src.size(), &other));
    ExpectNear(m, expected, 1e-9);
    ExpectNear(other, expected, 1e-9);
  }
}

TEST(SpaceProjective, FourPairsAreTooFew) {
  const TPairs<TPoint3> pairs = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                                 {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
  MAT4<double> m = Marked<MAT4<double>>();
  const std::size_t before = AllocationCount();
  for (unsigned long n = 0; n < 5; ++n) {
    EXPECT_FALSE(GetProjectiveTransform(pairs.Src.data(), pairs.Dst.data(), n, &m));
    EXPECT_FALSE(GetProjectiveTransform_(pairs.Src.data(), pairs.Dst.data(), n, &m));
  }
  EXPECT_EQ(AllocationCount(), before);
  ExpectMarked(m);
}

TEST(SpaceProjective, DegenerateAndSmallPointsAreRefused) {
  TSource source(45);
  const auto expectRefused = [](const TPairs<TPoint3>& pairs) {
    MAT4<double> m = Marked<MAT4<double>>();
    EXPECT_FALSE(Project(pairs, &m));
    EXPECT_FALSE(GetProjectiveTransform_(pairs.Src.data(), pairs.Dst.data(), pairs.Src.size(), &m));
    ExpectMarked(m);
  };
  TPairs<TPoint3> flat = source.Pairs<TPoint3>(source.Map(4, 0.1), 10);
  for (TPoint3& p : flat.Src) {
    p.z = 0;
  }
  expectRefused(flat);
  TPairs<TPoint3> small = source.Pairs<TPoint3>(source.Map(4, 0.1), 20);
  for (std::size_t i = 0; i < 20; ++i) {
    small.Src[i] = small.Src[i] * 0.001;
    small.Dst[i] = small.Dst[i] * 0.001;
  }
  expectRefused(small);
}

/// The plain reference: both normal equations summed row by row from the whole design matrix, which
/// gives each element the same sum in the same order, but for zeros that are added.
template <class TPoint> std::vector<double> Reference(const TPairs<TPoint>& pairs) {
  constexpr std::size_t n = sizeof(TPoint) / sizeof(double);
  constexpr std::size_t unknowns = n * (n + 1) + n;
  const TDesign design = DesignOf(pairs);
  TMatrixD sum(unknowns, unknowns);
  TVectorD right(unknowns);
  fill(sum, 0.0);
  fill(right, 0.0);
  for (std::size_t axis = 0; axis < n; ++axis) {
    TMatrixD part(unknowns, unknowns);
    TVectorD partRight(unknowns);
    fill(part, 0.0);
    fill(partRight, 0.0);
    for (std::size_t point = 0; point < pairs.Src.size(); ++point) {
      const auto row = static_cast<Eigen::Index>(point * n + axis);
      for (std::size_t i = 0; i < unknowns; ++i) {
        const double a = design.A(row, static_cast<Eigen::Index>(i));
        for (std::size_t j = 0; j < unknowns; ++j) {
          part.Data[i * unknowns + j] += a * design.A(row, static_cast<Eigen::Index>(j));
        }
        partRight.Data[i] += a * design.B[row];
      }
    }
    add(sum, part);
    add(right, partRight);
  }
  TMatrixD inverted(unknowns, unknowns);
  EXPECT_TRUE(inverse(sum, inverted));
  const TVectorD solution = inverted * right;
  return std::vector<double>(solution.Data, solution.Data + unknowns);
}

TEST(TransformEstimation, BitsAreThoseOfThePlainSums) {
  TSource source(46);
  for (int round = 0; round < 20; ++round) {
    const TPairs<TPoint2> plane = Noisy<TPoint2>(&source, source.Map(3, 0.2), 25);
    MAT3<double> m3;
    ASSERT_TRUE(Project(plane, &m3));
    const std::vector<double> expected3 = Reference(plane);
    for (std::size_t i = 0; i < 8; ++i) {
      EXPECT_EQ(m3[i % 3 * 3 + i / 3], expected3[i]) << i;
    }
    const TPairs<TPoint3> space = Noisy<TPoint3>(&source, source.Map(4, 0.15), 25);
    MAT4<double> m4;
    ASSERT_TRUE(Project(space, &m4));
    const std::vector<double> expected4 = Reference(space);
    for (std::size_t i = 0; i < 15; ++i) {
      EXPECT_EQ(m4[i % 4 * 4 + i / 4], expected4[i]) << i;
    }
  }
}

TEST(TransformEstimation, PublicFormsAllocateTheSameForAnyCount) {
  TSource source(47);
  std::size_t counts[2][3];
  for (int i = 0; i < 2; ++i) {
    const std::size_t n = i == 0 ? 20 : 2000;
    const TPairs<TPoint2> plane = source.Pairs<TPoint2>(source.Map(3, 0.2), n);
    const TPairs<TPoint3> space = source.Pairs<TPoint3>(source.Map(4, 0.1), n);
    MAT3<double> m3;
    MAT4<double> m4;
    std::size_t before = AllocationCount();
    EXPECT_TRUE(Project(plane, &m3));
    counts[i][0] = AllocationCount() - before;
    before = AllocationCount();
    SetAllocationLimit(15 * 15 * 8 + 1);
    EXPECT_TRUE(Project(space, &m4));
    SetAllocationLimit(0);
    counts[i][1] = AllocationCount() - before;
    before = AllocationCount();
    EXPECT_TRUE(Affine(space, &m4));
    counts[i][2] = AllocationCount() - before;
  }
  EXPECT_EQ(counts[0][0], counts[1][0]);
  EXPECT_EQ(counts[0][1], counts[1][1]);
  EXPECT_EQ(counts[0][2], 0u);
  EXPECT_EQ(counts[1][2], 0u);
}

TEST(TransformEstimation, ExhaustedMemoryPassesOutAndLeavesTheMatrix) {
  TSource source(48);
  const TPairs<TPoint3> space = source.Pairs<TPoint3>(source.Map(4, 0.1), 20);
  MAT4<double> m = Marked<MAT4<double>>();
  SetAllocationLimit(15 * 15 * 8);
  EXPECT_THROW(Project(space, &m), std::bad_alloc);
  EXPECT_THROW(GetProjectiveTransform_(space.Src.data(), space.Dst.data(), 20, &m), std::bad_alloc);
  SetAllocationLimit(0);
  ExpectMarked(m);
}

TEST(Affine, FourPairsGiveTheMapExactly) {
  TMatrix truth = TMatrix::Identity(4, 4);
  truth.row(0) << 1, 2, 3, 4;
  truth.row(1) << -5, 6, 0.5, 8;
  truth.row(2) << 9, 0, -1, 0.25;
  // The normal matrix of this tetrahedron has the determinant 1: all sums are exact.
  TPairs<TPoint3> pairs = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {}};
  for (const TPoint3& p : pairs.Src) {
    pairs.Dst.push_back(Mapped(truth, p));
  }
  MAT4<double> m = Marked<MAT4<double>>();
  ASSERT_TRUE(Affine(pairs, &m));
  for (int r = 0; r < 4; ++r) {
    for (int c = 0; c < 4; ++c) {
      EXPECT_EQ(m[static_cast<std::size_t>(c * 4 + r)], truth(r, c));
    }
  }
}

TEST(Affine, RecoversAffineMaps) {
  TSource source(49);
  for (int i = 0; i < 200; ++i) {
    const TMatrix truth = source.Map(4, 0);
    MAT4<double> m;
    ASSERT_TRUE(Affine(source.Pairs<TPoint3>(truth, 8 + static_cast<std::size_t>(i) % 10), &m));
    ExpectNear(m, truth, 1e-9);
    EXPECT_EQ(m[3], 0.0);
    EXPECT_EQ(m[7], 0.0);
    EXPECT_EQ(m[11], 0.0);
    EXPECT_EQ(m[15], 1.0);
  }
}

TEST(Affine, NoisyPairsGiveTheLeastSquares) {
  TSource source(50);
  const TPairs<TPoint3> pairs = Noisy<TPoint3>(&source, source.Map(4, 0), 30);
  TMatrix a(30, 4);
  TMatrix b(30, 3);
  for (int i = 0; i < 30; ++i) {
    const auto at = static_cast<std::size_t>(i);
    a.row(i) << pairs.Src[at].x, pairs.Src[at].y, pairs.Src[at].z, 1;
    b.row(i) << pairs.Dst[at].x, pairs.Dst[at].y, pairs.Dst[at].z;
  }
  TMatrix expected = TMatrix::Identity(4, 4);
  expected.topRows(3) = a.colPivHouseholderQr().solve(b).transpose();
  MAT4<double> m;
  ASSERT_TRUE(Affine(pairs, &m));
  ExpectNear(m, expected, 1e-12);
}

TEST(Affine, TooFewPairsHaveNoDeterminant) {
  MAT4<double> m = Marked<MAT4<double>>();
  EXPECT_FALSE(GetAffineTransform(nullptr, nullptr, 0, &m));
  const TPairs<TPoint3> three = {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}},
                                 {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}};
  EXPECT_FALSE(Affine(three, &m));
  ExpectMarked(m);
}

TEST(Affine, OnlyAnExactZeroRefusesCoplanarPoints) {
  MAT4<double> m = Marked<MAT4<double>>();
  const std::vector<TPoint3> flat = {{0, 0, 3}, {1, 0, 3}, {0, 1, 3}, {1, 1, 3}, {2, 5, 3}};
  EXPECT_FALSE(Affine({flat, flat}, &m));
  ExpectMarked(m);
  // Pins the deviation: of random coplanar sets nearly all come through.
  TSource source(51);
  int accepted = 0;
  for (int i = 0; i < 1000; ++i) {
    TPairs<TPoint3> pairs = source.Pairs<TPoint3>(source.Map(4, 0), 8);
    const double a = source.Real(1), b = source.Real(1), c = source.Real(1);
    for (TPoint3& p : pairs.Src) {
      p.z = a * p.x + b * p.y + c;
    }
    accepted += Affine(pairs, &m) ? 1 : 0;
  }
  EXPECT_GT(accepted, 900);
}

TEST(SymmetricInverse, KeepsThePackingAndTheSigns) {
  // The full matrix is [2 1 0 0; 1 2 0 0; 0 0 1 1; 0 0 1 2], determinant 3.
  const SYMMAT4<double> a = {{2, 1, 0, 0, 2, 0, 0, 1, 1, 2}};
  SYMMAT4<double> res;
  ASSERT_TRUE(inverse<double>(a, &res));
  const double third = 1.0 / 3.0;
  const double expected[10] = {2 * third, -1 * third, 0,         0,          2 * third,
                               0,         0,          6 * third, -3 * third, 3 * third};
  for (std::size_t i = 0; i < 10; ++i) {
    EXPECT_EQ(res[i], expected[i]) << i;
  }
}

TEST(SymmetricInverse, AgreesWithADenseInverse) {
  TSource source(52);
  constexpr int at[4][4] = {{0, 1, 2, 3}, {1, 4, 5, 6}, {2, 5, 7, 8}, {3, 6, 8, 9}};
  for (int round = 0; round < 200; ++round) {
    SYMMAT4<double> a;
    for (std::size_t i = 0; i < 10; ++i) {
      a[i] = source.Real(1);
    }
    TMatrix full(4, 4);
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c) {
        full(r, c) = a[static_cast<std::size_t>(at[r][c])];
      }
    }
    if (std::fabs(full.determinant()) < 0.01) {
      continue;
    }
    SYMMAT4<double> res = a;
    ASSERT_TRUE(inverse<double>(res, &res)); // in place
    const TMatrix expected = full.inverse();
    for (int r = 0; r < 4; ++r) {
      for (int c = 0; c < 4; ++c) {
        EXPECT_NEAR(res[static_cast<std::size_t>(at[r][c])], expected(r, c), 1e-10);
      }
    }
  }
}

TEST(SymmetricInverse, HasNoTolerance) {
  SYMMAT4<double> res = {{7}};
  EXPECT_FALSE(inverse<double>(SYMMAT4<double>{}, &res));
  EXPECT_FALSE(inverse<double>({{1, 1, 0, 0, 1, 0, 0, 1, 0, 1}}, &res));
  EXPECT_EQ(res[0], 7);
  // The determinant is 1e-280.
  ASSERT_TRUE(inverse<double>({{1e-70, 0, 0, 0, 1e-70, 0, 0, 1e-70, 0, 1e-70}}, &res));
  EXPECT_NEAR(res[0], 1e70, 1e56);
}

} // namespace
