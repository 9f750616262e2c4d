// What the numerics ask of the allocator: how often, for how much, and what they do when there is
// nothing.

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/math/CubeSpline.h>
#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>
#include <ZxCore3D/math/TVectorD.h>
#include <ZxCore3D/math/TriangleIntersection.h>
#include <ZxCore3D/math/private/InverseEx.h>

#include "math/AllocationCount.h"
#include "math/Fixture.h"
#include "object/FailingMalloc.h"

using zx_test::TMallocWatch;

namespace {

/// Well conditioned: random values with a dominant diagonal.
std::vector<double> Dominant(unsigned long n) {
  std::mt19937_64 random(n);
  std::vector<double> a = RandomValues(n * n, Fill::Plain, random);
  for (unsigned long i = 0; i < n; ++i) {
    a[i * n + i] += 2.0 + static_cast<double>(n);
  }
  return a;
}

class NumericMemory : public testing::Test {
protected:
  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the address sanitizer has the allocator";
    }
  }

  /// The allocations of `call`, which is to leave no block behind.
  template <class Call> static unsigned long Allocations(Call&& call) {
    const TMallocWatch watch;
    call();
    EXPECT_EQ(watch.LiveBlocks(), 0);
    return watch.Allocations();
  }

  /// Lets each allocation of `call` fail in turn; `call` says whether it got through, and may throw
  /// `std::bad_alloc`. Returns how many there were.
  template <class Call> static unsigned long FailEach(Call&& call) {
    for (unsigned long at = 1;; ++at) {
      bool through = false;
      bool came = false;
      {
        const TMallocWatch watch(at);
        try {
          through = call();
        } catch (const std::bad_alloc&) {
        }
        came = watch.Failed();
        EXPECT_EQ(watch.LiveBlocks(), 0) << "the allocation of number " << at;
      }
      EXPECT_EQ(through, !came) << "the allocation of number " << at;
      if (!came || at == 1000) {
        return at - 1;
      }
    }
  }
};

TEST_F(NumericMemory, SolveGaussInplaceKeepsOffTheHeapUpTo128Unknowns) {
  for (const unsigned long n : {1ul, 2ul, 17ul, 127ul, 128ul, 129ul, 200ul}) {
    std::vector<double> a = Dominant(n);
    std::vector<double> b(n, 1.0);
    std::vector<double> x(n);
    const unsigned long own = n > 128 ? 1 : 0;
    EXPECT_EQ(Allocations([&] {
                EXPECT_TRUE(SolveGaussInplace(a.data(), n, b.data(), 0.0, x.data(), nullptr));
              }),
              own)
        << n;
    a = Dominant(n);
    const TMallocWatch watch;
    EXPECT_TRUE(SolveGauss(a.data(), n, b.data(), 0.0, x.data(), nullptr));
    EXPECT_EQ(watch.Allocations(), 1 + own) << "one block for the copies, " << n;
    const long bytes = static_cast<long>((n * n + n + (own != 0 ? n : 0)) * 8);
    EXPECT_GE(watch.PeakBytes(), bytes) << n;
    EXPECT_LT(watch.PeakBytes(), bytes + 64 + 4096) << n;
    EXPECT_EQ(watch.LiveBlocks(), 0);
  }
}

TEST_F(NumericMemory, LineSysGaussTakesOneBlockOfIndices) {
  for (const unsigned long n : {1ul, 5ul, 64ul, 200ul}) {
    for (const bool full : {false, true}) {
      std::vector<double> a = Dominant(n);
      std::vector<double> b(n, 1.0);
      std::vector<double> x(n);
      std::size_t size = 0;
      EXPECT_EQ(Allocations([&] {
                  EXPECT_TRUE(full ? LineSysGauss2(a.data(), n, b.data(), x.data())
                                   : LineSysGauss1(a.data(), n, b.data(), x.data()));
                  size = LastAllocationSize();
                }),
                1u);
      EXPECT_EQ(size, n * 8 * (full ? 2 : 1)) << "rows, and columns for full pivoting";
      std::vector<double> zeros(n * n);
      EXPECT_EQ(Allocations([&] {
                  EXPECT_FALSE(full ? LineSysGauss2(zeros.data(), n, b.data(), x.data())
                                    : LineSysGauss1(zeros.data(), n, b.data(), x.data()));
                }),
                1u)
          << "given back on failure too";
    }
  }
}

TEST_F(NumericMemory, InversionTakesOneBlockFrom17RowsOn) {
  for (const unsigned long n : {1ul, 2ul, 5ul, 6ul, 16ul, 17ul, 47ul, 48ul, 64ul, 96ul, 128ul}) {
    TMatrixD m(n, n);
    TMatrixD res(n, n);
    const std::vector<double> a = Dominant(n);
    std::copy(a.begin(), a.end(), m.Data);
    {
      const TMallocWatch watch;
      EXPECT_TRUE(inverse(m, res));
      EXPECT_EQ(watch.Allocations(), n > 16 ? 1u : 0u) << n;
      EXPECT_EQ(watch.LiveBlocks(), 0);
      if (n > 16) {
        EXPECT_GT(watch.PeakBytes(), static_cast<long>(2 * n * n * 8));
        // Two matrices of padded rows, from 48 rows on 67 doubles a row, a cache line to align.
        const unsigned long unit = n < 48 ? 8 : 32;
        const unsigned long row = (n + unit - 1) / unit * unit;
        const unsigned long stride = row % 128 == 0 ? row + 32 : row;
        const long bytes = static_cast<long>((n * (2 * stride + (n < 48 ? 0 : 67)) + 8) * 8);
        EXPECT_LT(watch.PeakBytes(), bytes + 64 + 4096) << n;
      }
    }
    if (n > 16) {
      std::fill_n(res.Data, n * n, 5.0);
      {
        const TMallocWatch watch(1);
        EXPECT_FALSE(inverse(m, res)) << "without memory";
        EXPECT_TRUE(watch.Failed());
      }
      EXPECT_EQ(std::count(res.Data, res.Data + n * n, 5.0), static_cast<long>(n * n));
      std::vector<double> work = a;
      const TMallocWatch watch(1);
      EXPECT_TRUE(InverseEx<double>(work.data(), n, res.Data, 1e-9, true, nullptr))
          << "the caller's array is work space enough";
    }
  }
}

TEST_F(NumericMemory, NormalProductsTakeNothing) {
  TMatrixD a(7, 50);
  a.Data[0] = 1;
  fill(a, 0.5);
  TVectorD v(50);
  v.Fill(2.0);
  TMatrixD product(7, 7);
  TVectorD sums(7);
  EXPECT_EQ(Allocations([&] {
              mul_mtm(a, &product);
              mul_mtv(a, v, &sums);
            }),
            0u);
}

TEST_F(NumericMemory, LeastSquaresWithoutMemoryLeavesTheResult) {
  for (const unsigned long n : {1ul, 3ul, 16ul, 17ul, 50ul}) {
    TMatrixD a(n, 2 * n);
    const std::vector<double> top = Dominant(n);
    std::copy(top.begin(), top.end(), a.Data);
    std::copy(top.rbegin(), top.rend(), a.Data + n * n);
    TVectorD b(2 * n);
    b.Fill(1.0);
    TVectorD x(n);
    x.Fill(5.0);
    bool untouched = true;
    const unsigned long count = FailEach([&] {
      untouched = untouched && std::count(x.Data, x.Data + n, 5.0) == static_cast<long>(n);
      return lsm(a, b, &x);
    });
    EXPECT_EQ(count, n > 16 ? 4u : 3u) << "the arrays of " << n << " unknowns";
    EXPECT_TRUE(untouched) << n;
  }
}

TEST_F(NumericMemory, TrianglesTakeNothing) {
  const vec_t_<double, 3> flat[3] = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}};
  const vec_t_<double, 3> upright[3] = {{1, 1, -1}, {1.5, 1, 1}, {1, 1.5, 1}};
  const vec_t_<double, 3> beside[3] = {{1, 1, 0}, {5, 1, 0}, {1, 5, 0}};
  const vec_t_<double, 3> above[3] = {{0, 0, 1}, {4, 0, 1}, {0, 4, 1}};
  const vec_t_<double, 3> point[3] = {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
  vec_t_<double, 3> out[6];
  EXPECT_EQ(Allocations([&] {
              for (const auto* other : {flat, upright, beside, above, point}) {
                IsIntersectTriangles(flat, other, 1e-9);
                GetIntersectTriangles(flat, other, out, 1e-9);
                IsIntersectTriangles(other[0], other[1], other[2], flat[0], flat[1], flat[2], 1e-9);
                GetIntersectTriangles(other[0], other[1], other[2], flat[0], flat[1], flat[2], out,
                                      1e-9);
              }
            }),
            0u);
}

TEST_F(NumericMemory, SplinesWithoutMemoryAreFalseAndLeaveTheOutput) {
  const std::vector<double> y = {1, 3, 2, 5, 4, 4, 0, 1, 7, 2};
  const unsigned long n = y.size();
  for (const bool closed : {false, true}) {
    const POLYNOM3 mark = {5, 5, 5, 5};
    std::vector<POLYNOM3> out(n, mark);
    bool untouched = true;
    const unsigned long count = FailEach([&] {
      untouched = untouched && std::all_of(out.begin(), out.end(), [&](const POLYNOM3& p) {
                    return std::memcmp(&p, &mark, sizeof p) == 0;
                  });
      return CalcCubeSpline1D(y.data(), 0, n, closed, out.data());
    });
    EXPECT_GT(count, 0u);
    EXPECT_TRUE(untouched);
    EXPECT_NE(out[0].a, 5.0);
  }
}

// A coordinate that fails doesn't keep the other from being made.
TEST_F(NumericMemory, ACoordinateWithoutMemoryLeavesTheOthers) {
  const vec_t_<double, 3> p[4] = {{1, 10, 100}, {2, 30, 500}, {4, 20, 300}, {3, 60, 200}};
  POLYNOM3 expected[9];
  ASSERT_TRUE(CalcCubeSpline3D(p, 24, 4, false, expected));
  POLYNOM3 out[9];
  std::fill_n(out, 9, POLYNOM3{5, 5, 5, 5});
  {
    const TMallocWatch watch(1);
    EXPECT_FALSE(CalcCubeSpline3D(p, 24, 4, false, out));
    EXPECT_TRUE(watch.Failed());
    EXPECT_EQ(watch.LiveBlocks(), 0);
  }
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(out[i].a, 5.0) << "x has failed";
  }
  EXPECT_TRUE(SameBits(&out[3].a, &expected[3].a, 24)) << "y and z are there";
  const vec_t_<double, 2> q[3] = {{1, 10}, {2, 30}, {4, 20}};
  POLYNOM3 flat[4] = {};
  const TMallocWatch watch(1);
  EXPECT_FALSE(CalcCubeSpline2D(q, 16, 3, false, flat));
  EXPECT_EQ(flat[0].a, 0.0);
  EXPECT_EQ(flat[2].a, 10.0);
}

TEST_F(NumericMemory, WhicheverAllocationFailsOneCoordinateDoes) {
  for (const unsigned long n : {3ul, 12ul}) {
    std::vector<vec_t_<double, 3>> p(n);
    for (unsigned long i = 0; i < n; ++i) {
      const auto t = static_cast<double>(i);
      p[i] = {t * t, 5.0 - t, 100.0 + t * t * t};
    }
    std::vector<POLYNOM3> expected(3 * n);
    ASSERT_TRUE(CalcCubeSpline3D(p.data(), 24, n, true, expected.data()));
    for (unsigned long at = 1;; ++at) {
      std::vector<POLYNOM3> out(3 * n, POLYNOM3{5, 5, 5, 5});
      bool done = true;
      bool failed = false;
      {
        const TMallocWatch watch(at);
        done = CalcCubeSpline3D(p.data(), 24, n, true, out.data());
        failed = watch.Failed();
        EXPECT_EQ(watch.LiveBlocks(), 0);
      }
      ASSERT_EQ(done, !failed) << at;
      if (!failed) {
        EXPECT_GT(at, 1u);
        EXPECT_TRUE(SameBits(&out[0].a, &expected[0].a, 12 * n));
        break;
      }
      for (unsigned long i = 0; i < n; ++i) {
        EXPECT_EQ(out[i].a, 5.0) << "x has failed with the allocation of number " << at;
      }
      EXPECT_TRUE(SameBits(&out[n].a, &expected[n].a, 8 * n)) << at;
    }
  }
}

TEST_F(NumericMemory, SplinesOfPointsThrowWithoutMemoryAndGiveTheirArrayBack) {
  const vec_t_<double, 2> p[5] = {{0, 1}, {1, 3}, {2, 2}, {3, 5}, {4, 4}};
  POLYNOM3 out[4];
  std::fill_n(out, 4, POLYNOM3{5, 5, 5, 5});
  for (const unsigned long at : {1ul, 2ul}) {
    const TMallocWatch watch(at);
    EXPECT_THROW(CalcCubeSplineXY(p, 5, 2, 0, 2, 0, out), std::bad_alloc);
    EXPECT_TRUE(watch.Failed());
    EXPECT_EQ(watch.LiveBlocks(), 0) << "the array is released when the solver throws";
  }
  EXPECT_EQ(out[0].a, 5.0);
  EXPECT_EQ(out[3].d, 5.0);
}

TEST(AllocationSize, IsEightBytesAnElement) {
  for (const unsigned long n : {1ul, 5ul, 1000ul}) {
    const TVectorD v(n);
    EXPECT_EQ(LastAllocationSize(), n * 8);
    TVectorD created;
    created.Create(n + 1);
    EXPECT_EQ(LastAllocationSize(), (n + 1) * 8);
    const TVectorD copy(v);
    EXPECT_EQ(LastAllocationSize(), n * 8);
    const TMatrixD m(n, 3);
    EXPECT_EQ(LastAllocationSize(), n * 24);
    TMatrixD shaped;
    shaped.Create(2, n);
    EXPECT_EQ(LastAllocationSize(), n * 16);
  }
}

TEST(AllocationSize, IsTheLargestValueWhereTheBytesDoNotFit) {
  // Keeps the request from the allocator, which ends the process under some sanitizers.
  SetAllocationLimit(std::size_t(1) << 40);
  constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
  for (const unsigned long n : {1ul << 61, (1ul << 61) + 1, 1ul << 62, 1ul << 63, ~0ul}) {
    EXPECT_THROW(TVectorD v(n), std::bad_alloc);
    EXPECT_EQ(LastAllocationSize(), most) << n;
    TVectorD v;
    EXPECT_THROW(v.Create(n), std::bad_alloc);
    EXPECT_EQ(LastAllocationSize(), most) << n;
    EXPECT_THROW(TMatrixD m(1, n), std::bad_alloc);
    EXPECT_EQ(LastAllocationSize(), most) << n;
  }
  EXPECT_THROW(TVectorD v((1ul << 61) - 1), std::bad_alloc);
  EXPECT_EQ(LastAllocationSize(), ((1ul << 61) - 1) * 8) << "the most that fits is asked for";
  EXPECT_THROW(TMatrixD m(1ul << 40, 1ul << 24), std::bad_alloc);
  EXPECT_EQ(LastAllocationSize(), most) << "also where the product of the sizes wraps to 0";
  SetAllocationLimit(0);
}

} // namespace
