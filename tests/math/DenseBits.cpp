// Every fast way against the plain loops, bit by bit, at every instruction set.

#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/private/InverseEx.h>

#include "Fixture.h"
#include "ReferenceSolvers.h"

namespace {

using Values = std::vector<double>;

/// The sizes at which the ways change, and one less and one more.
std::vector<unsigned long> SizesAround(std::initializer_list<unsigned long> thresholds) {
  std::vector<unsigned long> sizes;
  for (const unsigned long threshold : thresholds) {
    sizes.insert(sizes.end(), {threshold - 1, threshold, threshold + 1});
  }
  return sizes;
}

template <class Check> void ForEachSizeAndFill(unsigned seed, Check check) {
  std::vector<unsigned long> sizes = SizesAround({48, 64, 128});
  sizes.push_back(97);
  for (unsigned long n = 1; n <= 40; ++n) {
    sizes.push_back(n);
  }
  AtEveryInstructionSet([&] {
    std::mt19937_64 random(seed);
    for (const unsigned long n : sizes) {
      for (const Fill kind : AllFills) {
        SCOPED_TRACE(testing::Message() << "n " << n << " " << Name(kind));
        check(n, kind, random);
        if (testing::Test::HasFailure()) {
          return;
        }
      }
    }
  });
}

/// Where plain loops take long: around 256 at every instruction set, above as the library chooses.
template <class Check> void ForLargeSizes(unsigned seed, Check check) {
  AtEveryInstructionSet([&] {
    std::mt19937_64 random(seed);
    for (const unsigned long n : SizesAround({256})) {
      for (const Fill kind : {Fill::Zeros, Fill::Special}) {
        SCOPED_TRACE(testing::Message() << "n " << n << " " << Name(kind));
        ASSERT_NO_FATAL_FAILURE(check(n, kind, random));
      }
    }
  });
  std::mt19937_64 random(seed);
  for (const unsigned long n : SizesAround({512, 1024})) {
    SCOPED_TRACE(testing::Message() << "n " << n);
    ASSERT_NO_FATAL_FAILURE(check(n, n % 2 ? Fill::Zeros : Fill::Plain, random));
  }
}

TEST(DenseBits, Product) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(1);
    for (int round = 0; round < 300; ++round) {
      const unsigned long rows = random() % 40, inner = random() % 40, columns = random() % 40;
      for (const Fill kind : AllFills) {
        Values l = RandomValues(rows * inner, kind, random);
        Values r = RandomValues(inner * columns, kind, random);
        Values expected(rows * columns), res(rows * columns, 77.0);
        reference::Mul(l.data(), r.data(), expected.data(), rows, inner, columns);
        TMatrixD ml(inner, rows, l.data()), mr(columns, inner, r.data()),
            mres(columns, rows, res.data());
        mul(ml, mr, mres);
        ASSERT_TRUE(SameBits(res, expected)) << rows << " " << inner << " " << columns;
      }
    }
  });
}

TEST(DenseBits, ProductLongerThanAPanel) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(2);
    const unsigned long rows = 19, inner = 600, columns = 37;
    for (const Fill kind : AllFills) {
      Values l = RandomValues(rows * inner, kind, random);
      Values r = RandomValues(inner * columns, kind, random);
      Values expected(rows * columns), res(rows * columns, 77.0);
      reference::Mul(l.data(), r.data(), expected.data(), rows, inner, columns);
      TMatrixD ml(inner, rows, l.data()), mr(columns, inner, r.data()),
          mres(columns, rows, res.data());
      mul(ml, mr, mres);
      ASSERT_TRUE(SameBits(res, expected)) << Name(kind);
    }
  });
}

void CheckProduct(unsigned long rows, unsigned long inner, unsigned long columns, Fill kind,
                  std::mt19937_64& random) {
  Values l = RandomValues(rows * inner, kind, random);
  Values r = RandomValues(inner * columns, kind, random);
  Values expected(rows * columns), res(rows * columns, 77.0);
  reference::Mul(l.data(), r.data(), expected.data(), rows, inner, columns);
  TMatrixD mres(columns, rows, res.data());
  mul(TMatrixD(inner, rows, l.data()), TMatrixD(columns, inner, r.data()), mres);
  ASSERT_TRUE(SameBits(res, expected)) << rows << " " << inner << " " << columns << Name(kind);
}

TEST(DenseBits, ProductOfEverySmallSize) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(11);
    for (unsigned long n = 1; n <= 40; ++n) {
      for (const Fill kind : AllFills) {
        ASSERT_NO_FATAL_FAILURE(CheckProduct(n, n, n, kind, random));
        ASSERT_NO_FATAL_FAILURE(CheckProduct(1, n, 41 - n, kind, random)) << "one row";
        ASSERT_NO_FATAL_FAILURE(CheckProduct(n, 41 - n, 1, kind, random)) << "one column";
        ASSERT_NO_FATAL_FAILURE(CheckProduct(n, 1, n, kind, random)) << "one step";
      }
    }
  });
}

TEST(DenseBits, ProductAroundTheThresholds) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(12);
    for (const unsigned long n : SizesAround({64, 128, 256, 512, 1024})) {
      for (const Fill kind : {Fill::Plain, Fill::Special}) {
        ASSERT_NO_FATAL_FAILURE(CheckProduct(n, 9, 21, kind, random));
        ASSERT_NO_FATAL_FAILURE(CheckProduct(9, n, 18, kind, random));
        ASSERT_NO_FATAL_FAILURE(CheckProduct(3, 7, n, kind, random));
        ASSERT_NO_FATAL_FAILURE(CheckProduct(n, n, 1, kind, random));
        ASSERT_NO_FATAL_FAILURE(CheckProduct(1, 5, n, kind, random));
      }
      if (n < 130) {
        ASSERT_NO_FATAL_FAILURE(CheckProduct(n, n, n, Fill::Special, random));
      }
    }
    ASSERT_NO_FATAL_FAILURE(CheckProduct(257, 257, 257, Fill::Plain, random));
  });
}

TEST(DenseBits, MatrixByVector) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(13);
    const auto check = [&](unsigned long rows, unsigned long columns, Fill kind) {
      Values m = RandomValues(rows * columns, kind, random);
      Values v = RandomValues(columns, kind, random);
      Values expected(rows), res(rows + 1, 77.0);
      reference::Mul(m.data(), v.data(), expected.data(), rows, columns, 1);
      TVectorD right, product;
      right.Create(columns, v.data());
      product.Create(rows + 1, res.data());
      mul(TMatrixD(columns, rows, m.data()), right, &product);
      ASSERT_EQ(res.back(), 77.0) << "is not the result's";
      ASSERT_TRUE(SameBits(res.data(), expected.data(), rows)) << rows << " " << columns;
    };
    for (unsigned long n = 1; n <= 40; ++n) {
      for (const unsigned long other :
           {0ul, 1ul, 2ul, 3ul, 4ul, 5ul, 7ul, 8ul, 9ul, 24ul, 31ul, n}) {
        for (const Fill kind : AllFills) {
          ASSERT_NO_FATAL_FAILURE(check(n, other, kind));
          ASSERT_NO_FATAL_FAILURE(check(other, n, kind));
        }
      }
    }
    for (const unsigned long n : SizesAround({64, 128, 256, 512, 1024})) {
      ASSERT_NO_FATAL_FAILURE(check(n, 29, Fill::Special));
      ASSERT_NO_FATAL_FAILURE(check(27, n, Fill::Special));
      for (const unsigned long few : {1ul, 2ul, 3ul, 6ul}) {
        ASSERT_NO_FATAL_FAILURE(check(n, few, Fill::Special));
        ASSERT_NO_FATAL_FAILURE(check(few, n, Fill::Special));
      }
    }
  });
}

/// `mul_mtv` of a matrix that begins at any double of a cache line, with rows of any length around
/// those where strips, blocks of rows and aligned vectors begin.
TEST(DenseBits, TransposedMatrixByVector) {
  std::vector<unsigned long> columnCounts = SizesAround({4, 8, 16, 32, 64, 72, 96, 128, 256});
  columnCounts.insert(columnCounts.end(),
                      {1, 2, 6, 12, 14, 20, 22, 24, 26, 30, 40, 45, 50, 60, 80, 88, 100, 264, 400});
  AtEveryInstructionSet([&] {
    std::mt19937_64 random(14);
    for (const unsigned long columns : columnCounts) {
      for (const unsigned long rows : {0ul, 1ul, 2ul, 31ul, 32ul, 33ul, 65ul}) {
        for (const Fill kind : {Fill::Plain, Fill::Zeros, Fill::Special}) {
          const Values a = RandomValues(rows * columns, kind, random);
          Values v = RandomValues(rows, kind, random), expected(columns);
          reference::MulMtv(a.data(), v.data(), expected.data(), rows, columns);
          for (unsigned long offset = 0; offset < 8; ++offset) {
            Values moved(offset + rows * columns + 1), res(columns + 2, 77.0);
            std::copy(a.begin(), a.end(), moved.data() + offset);
            TVectorD left, product;
            left.Create(rows, v.data());
            product.Create(columns, res.data() + 1);
            mul_mtv(TMatrixD(columns, rows, moved.data() + offset), left, &product);
            ASSERT_TRUE(SameBits(res.data() + 1, expected.data(), columns))
                << rows << " rows of " << columns << " from " << offset;
            ASSERT_EQ(res.front(), 77.0) << "is not the result's";
            ASSERT_EQ(res.back(), 77.0) << "is not the result's";
          }
        }
      }
    }
  });
}

TEST(DenseBits, InverseEx) {
  ForEachSizeAndFill(3, [](unsigned long n, Fill kind, std::mt19937_64& random) {
    const Values a = RandomValues(n * n, kind, random);
    for (const double tol : {0.0, 1e-9, 0.05}) {
      for (const bool destroy : {false, true}) {
        Values mine = a, theirs = a, inv(n * n, 5.0), expected(n * n, 5.0);
        unsigned long rank = 99, expectedRank = 99;
        const bool result =
            reference::InverseEx(theirs.data(), n, expected.data(), tol, destroy, &expectedRank);
        ASSERT_EQ(InverseEx<double>(mine.data(), n, inv.data(), tol, destroy, &rank), result);
        ASSERT_EQ(rank, expectedRank);
        if (result) {
          ASSERT_TRUE(SameBits(inv, expected));
        }
        if (!destroy) {
          ASSERT_TRUE(SameBits(mine, a));
        }
      }
    }
  });
}

TEST(DenseBits, InverseExOfLargeSizes) {
  ForLargeSizes(14, [](unsigned long n, Fill kind, std::mt19937_64& random) {
    Values a = RandomValues(n * n, kind, random), work = a, inv(n * n), expected(n * n);
    ASSERT_TRUE(reference::InverseEx(work.data(), n, expected.data(), 0.0, true, nullptr));
    ASSERT_TRUE(InverseEx<double>(a.data(), n, inv.data(), 0.0, true, nullptr));
    ASSERT_TRUE(SameBits(inv, expected));
  });
}

/// Rows whose pivots stand anywhere, with exact zeros as multipliers in the midst of panels.
TEST(DenseBits, InverseExOfBandsAndPermutations) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(4);
    for (const unsigned long n : {16ul, 50ul, 80ul, 130ul}) {
      for (const unsigned long band : {0ul, 1ul, 3ul, 20ul}) {
        Values a = RandomValues(n * n, Fill::Plain, random);
        for (unsigned long i = 0; i < n; ++i)
          for (unsigned long j = 0; j < n; ++j)
            if (i > j + band || j > i + band)
              a[i * n + j] = i % 2 ? -0.0 : 0.0;
        for (unsigned long i = n - 1; i > 0; --i) {
          const unsigned long other = random() % (i + 1);
          std::swap_ranges(&a[i * n], &a[i * n] + n, &a[other * n]);
        }
        Values work = a, inv(n * n), expected(n * n);
        ASSERT_TRUE(reference::InverseEx(work.data(), n, expected.data(), 0.0, true, nullptr));
        ASSERT_TRUE(InverseEx<double>(a.data(), n, inv.data(), 0.0, true, nullptr));
        ASSERT_TRUE(SameBits(inv, expected)) << n << " " << band;
      }
    }
  });
}

TEST(DenseBits, SolveGauss) {
  ForEachSizeAndFill(5, [](unsigned long n, Fill kind, std::mt19937_64& random) {
    const Values a = RandomValues(n * n, kind, random), b = RandomValues(n, kind, random);
    for (const double tol : {-1.0, 0.0, 0.5, 2.0}) {
      Values mineA = a, mineB = b, theirA = a, theirB = b, x(n, 3.0), expected(n, 3.0);
      unsigned long rank = 99, expectedRank = 99;
      const bool result = reference::SolveGaussInplace(theirA.data(), n, theirB.data(), tol,
                                                       expected.data(), &expectedRank);
      ASSERT_EQ(SolveGaussInplace(mineA.data(), n, mineB.data(), tol, x.data(), &rank), result);
      ASSERT_EQ(rank, expectedRank);
      ASSERT_TRUE(SameBits(x, expected));
      if (result) {
        ASSERT_TRUE(SameBits(mineA, theirA));
        ASSERT_TRUE(SameBits(mineB, theirB));
      }
      Values x2(n, 3.0);
      ASSERT_EQ(SolveGauss(a.data(), n, b.data(), tol, x2.data(), &rank), result);
      ASSERT_EQ(rank, expectedRank);
      ASSERT_TRUE(SameBits(x2, expected));
    }
  });
}

TEST(DenseBits, SolveGaussOfLargeSizes) {
  ForLargeSizes(15, [](unsigned long n, Fill kind, std::mt19937_64& random) {
    const Values a = RandomValues(n * n, kind, random), b = RandomValues(n, kind, random);
    Values mineA = a, mineB = b, theirA = a, theirB = b, x(n, 3.0), expected(n, 3.0);
    ASSERT_TRUE(reference::SolveGaussInplace(theirA.data(), n, theirB.data(), 0.0, expected.data(),
                                             nullptr));
    ASSERT_TRUE(SolveGaussInplace(mineA.data(), n, mineB.data(), 0.0, x.data(), nullptr));
    ASSERT_TRUE(SameBits(x, expected));
    ASSERT_TRUE(SameBits(mineA, theirA));
    ASSERT_TRUE(SameBits(mineB, theirB));
  });
}

/// Factors that are 0, infinite or NaN though no step is omitted, rows that omit all steps of a
/// panel, and pivots that fail within one.
TEST(DenseBits, EliminationOfExtremeFactors) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(16);
    for (const unsigned long n : {48ul, 71ul, 130ul}) {
      for (const double extreme : {5e-324, 1e-310, 1e300, -0.0, 0.0}) {
        Values a = RandomValues(n * n, Fill::Plain, random);
        const Values b = RandomValues(n, Fill::Zeros, random);
        for (unsigned long i = 0; i < n; ++i) {
          for (unsigned long j = 0; j < n; ++j) {
            if ((i + 2 * j) % 7 < 3) {
              a[i * n + j] = i % 3 == 0 ? extreme : -extreme;
            } else if (i % 5 == 1) {
              a[i * n + j] *= 1e300;
            } else if (i % 11 == 2 && j < n / 2) {
              a[i * n + j] = 0.0;
            }
          }
        }
        Values mineA = a, mineB = b, theirA = a, theirB = b, x(n, 3.0), expected(n, 3.0);
        reference::SolveGaussInplace(theirA.data(), n, theirB.data(), 0, expected.data(), nullptr);
        SolveGaussInplace(mineA.data(), n, mineB.data(), 0.0, x.data(), nullptr);
        ASSERT_TRUE(SameBits(x, expected, true)) << n << " " << extreme;
        ASSERT_TRUE(SameBits(mineA, theirA, true)) << n << " " << extreme;
        ASSERT_TRUE(SameBits(mineB, theirB, true)) << n << " " << extreme;
        mineA = theirA = a;
        mineB = theirB = b;
        const bool result = reference::LineSysGauss1(theirA.data(), n, theirB.data(), &expected[0]);
        ASSERT_EQ(LineSysGauss1(mineA.data(), n, mineB.data(), x.data()), result);
        ASSERT_TRUE(SameBits(x, expected, true)) << n << " " << extreme;
        if (result) {
          ASSERT_TRUE(SameBits(mineA, theirA, true)) << n << " " << extreme;
        }
        Values singular = a;
        for (unsigned long i = 0; i < n; ++i) {
          singular[i * n + n - 3] = 0.0;
        }
        mineB = b;
        ASSERT_FALSE(LineSysGauss1(singular.data(), n, mineB.data(), x.data()));
      }
    }
  });
}

/// Bands, whose rows omit most steps, with shares of zeros on both sides of where panels are given
/// up.
TEST(DenseBits, EliminationOfBands) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(18);
    for (const unsigned long n : {48ul, 77ul, 200ul}) {
      for (const unsigned long band : {1ul, 3ul, n / 9, n / 7, n / 3}) {
        Values a = RandomValues(n * n, Fill::Plain, random);
        const Values b = RandomValues(n, Fill::Plain, random);
        for (unsigned long i = 0; i < n; ++i) {
          for (unsigned long j = 0; j < n; ++j) {
            if (i > j + band || j > i + band) {
              a[i * n + j] = (i + j) % 2 ? -0.0 : 0.0;
            }
          }
        }
        Values mineA = a, mineB = b, theirA = a, theirB = b, x(n), expected(n);
        reference::SolveGaussInplace(theirA.data(), n, theirB.data(), 0, expected.data(), nullptr);
        SolveGaussInplace(mineA.data(), n, mineB.data(), 0.0, x.data(), nullptr);
        ASSERT_TRUE(SameBits(x, expected)) << n << " " << band;
        ASSERT_TRUE(SameBits(mineA, theirA)) << n << " " << band;
        mineA = theirA = a;
        mineB = theirB = b;
        ASSERT_TRUE(reference::LineSysGauss1(theirA.data(), n, theirB.data(), expected.data()));
        ASSERT_TRUE(LineSysGauss1(mineA.data(), n, mineB.data(), x.data()));
        ASSERT_TRUE(SameBits(x, expected)) << n << " " << band;
        ASSERT_TRUE(SameBits(mineA, theirA)) << n << " " << band;
      }
    }
  });
}

using LINE_SYS = bool (*)(double*, unsigned long, double*, double*);

template <LINE_SYS Mine, LINE_SYS Theirs>
void CheckLineSys(unsigned long n, Fill kind, std::mt19937_64& random) {
  const Values a = RandomValues(n * n, kind, random), b = RandomValues(n, kind, random);
  Values mineA = a, mineB = b, theirA = a, theirB = b, x(n, 3.0), expected(n, 3.0);
  const bool result = Theirs(theirA.data(), n, theirB.data(), expected.data());
  ASSERT_EQ(Mine(mineA.data(), n, mineB.data(), x.data()), result);
  ASSERT_TRUE(SameBits(x, expected));
  if (result) {
    ASSERT_TRUE(SameBits(mineA, theirA));
    ASSERT_TRUE(SameBits(mineB, theirB));
  }
}

TEST(DenseBits, LineSysGauss1) {
  ForEachSizeAndFill(6, CheckLineSys<LineSysGauss1, reference::LineSysGauss1>);
}

TEST(DenseBits, LineSysGauss1OfLargeSizes) {
  ForLargeSizes(17, CheckLineSys<LineSysGauss1, reference::LineSysGauss1>);
}

TEST(DenseBits, LineSysGauss2) {
  ForEachSizeAndFill(7, CheckLineSys<LineSysGauss2, reference::LineSysGauss2>);
}

TEST(DenseBits, NormalMatrixAndLeastSquares) {
  ForEachSizeAndFill(8, [](unsigned long n, Fill kind, std::mt19937_64& random) {
    for (const unsigned long rows : {0ul, 1ul, n, 2 * n + 3}) {
      Values a = RandomValues(n * rows, kind, random), b = RandomValues(rows, kind, random);
      Values res(n * n, 4.0), expected(n * n, 4.0), v(n, 4.0), expectedV(n, 4.0);
      const TMatrixD m(n, rows, a.data());
      TMatrixD mres(n, n, res.data());
      mul_mtm(m, &mres);
      reference::MulMtm(a.data(), expected.data(), rows, n);
      ASSERT_TRUE(SameBits(res, expected)) << rows;
      TVectorD right, product, x;
      right.Create(rows, b.data());
      product.Create(n, v.data());
      mul_mtv(m, right, &product);
      reference::MulMtv(a.data(), b.data(), expectedV.data(), rows, n);
      ASSERT_TRUE(SameBits(v, expectedV)) << rows;
      Values solution(n, 4.0), expectedX(n, 4.0);
      x.Create(n, solution.data());
      ASSERT_EQ(lsm(m, right, &x), reference::Lsm(a.data(), b.data(), expectedX.data(), rows, n));
      ASSERT_TRUE(SameBits(solution, expectedX)) << rows;
    }
  });
}

TEST(DenseBits, Transpose) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(9);
    std::vector<unsigned long> sizes = SizesAround({64, 128, 256, 512, 1024});
    for (unsigned long n = 1; n <= 40; ++n) {
      sizes.push_back(n);
    }
    for (const unsigned long sizeX : sizes) {
      for (const unsigned long sizeY : {1ul, 2ul, 3ul, 4ul, 5ul, 7ul, 8ul, 9ul, 30ul}) {
        for (const unsigned long stride : {sizeY, sizeY + 3}) {
          Values m = RandomValues(sizeX * sizeY, Fill::Special, random);
          Values res(sizeX * stride, 4.0), expected = res;
          TMatrixD mres(stride, sizeX, res.data());
          transpose(TMatrixD(sizeX, sizeY, m.data()), mres);
          reference::Transpose(m.data(), expected.data(), sizeX, sizeY, stride);
          ASSERT_TRUE(SameBits(res, expected)) << sizeX << " " << sizeY << " " << stride;
        }
      }
    }
  });
}

/// NaNs that carry something: which of two NaNs goes on is open, that it is a NaN is not.
TEST(DenseBits, NaNsWithPayloadStayNaNs) {
  AtEveryInstructionSet([] {
    std::mt19937_64 random(10);
    for (const unsigned long n : {5ul, 20ul, 60ul}) {
      Values l = RandomValues(n * n, Fill::Plain, random);
      Values r = RandomValues(n * n, Fill::Plain, random);
      l[n + 2] = std::bit_cast<double>(0x7FF8000000000123u);
      l[n + 3] = std::bit_cast<double>(0xFFF8000000000456u);
      r[2 * n] = std::bit_cast<double>(0x7FF8000000000789u);
      Values res(n * n), expected(n * n);
      TMatrixD mres(n, n, res.data());
      mul(TMatrixD(n, n, l.data()), TMatrixD(n, n, r.data()), mres);
      reference::Mul(l.data(), r.data(), expected.data(), n, n, n);
      ASSERT_TRUE(SameBits(res, expected, true));
      mul_mtm(TMatrixD(n, n, l.data()), &mres);
      reference::MulMtm(l.data(), expected.data(), n, n);
      ASSERT_TRUE(SameBits(res, expected, true));
      Values work = l;
      const bool result = reference::InverseEx(work.data(), n, expected.data(), 0, true, nullptr);
      ASSERT_EQ(InverseEx<double>(l.data(), n, res.data(), 0, false, nullptr), result);
      ASSERT_TRUE(SameBits(res, expected, true));
    }
  });
}

} // namespace
