// Every allocation of every operation of the numerics fails once: `std::bad_alloc` is thrown, or
// the result is false where that is stated, nothing leaks, and what was there can be used,
// destroyed and filled again. What the solvers and splines do without memory stands in Memory.cpp.

#include <functional>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxCore3D/math/Frusta.h>
#include <ZxCore3D/math/LineTracing.h>
#include <ZxCore3D/math/Polygons.h>
#include <ZxCore3D/math/Solvers.h>
#include <ZxCore3D/math/TMatrixD.h>
#include <ZxCore3D/math/TMatrixStr.h>
#include <ZxCore3D/math/TVectorD.h>
#include <ZxCore3D/math/TransformEstimation.h>

#include "object/FailingMalloc.h"

using zx_test::TMallocWatch;

namespace {

constexpr unsigned long kSize = 40;

class NumericFailures : public testing::Test {
protected:
  void SetUp() override {
    if (!zx_test::kAvailable) {
      GTEST_SKIP() << "the address sanitizer has the allocator";
    }
  }

  /// Runs `body` with its first allocation failing, then its second, until none is left to fail.
  /// `body` makes all that it needs, calls `may(call)` for what may throw, which says whether it
  /// did, and checks what is left. Returns how many allocations failed.
  template <class TBody> static unsigned long FailEach(const char* what, const TBody& body) {
    for (unsigned long at = 1; at < 10000; ++at) {
      bool failed = false;
      long left = 0;
      {
        const TMallocWatch watch(at);
        try {
          body([&watch](const auto& call) {
            const bool before = watch.Failed();
            try {
              call();
            } catch (const std::bad_alloc&) {
              EXPECT_TRUE(watch.Failed() && !before) << "thrown without a cause";
              return false;
            }
            return true;
          });
        } catch (const std::bad_alloc&) { // of the making of an operand
          EXPECT_TRUE(watch.Failed());
        }
        failed = watch.Failed();
        left = watch.LiveBlocks();
      }
      EXPECT_EQ(0, left) << what << ": blocks stay when allocation " << at << " fails";
      if (!failed) {
        return at - 1;
      }
    }
    ADD_FAILURE() << what << " has no end";
    return 0;
  }

  /// A vector is of its size and owned, or empty.
  static void ExpectWhole(const TVectorD& v, unsigned long size) {
    EXPECT_TRUE(v.Size == size || v.Size == 0) << v.Size;
    EXPECT_EQ(v.Size != 0, v.Data != nullptr);
    EXPECT_EQ(v.Size != 0, v.Owned);
  }
  static void ExpectWhole(const TMatrixD& m, unsigned long x, unsigned long y) {
    EXPECT_TRUE((m.SizeX == x && m.SizeY == y) || (m.SizeX == 0 && m.SizeY == 0));
    EXPECT_EQ(m.SizeX * m.SizeY != 0, m.Data != nullptr);
    EXPECT_EQ(m.SizeX * m.SizeY != 0, m.Owned);
  }
};

// What a vector had is released before it asks for more: without memory it is empty.
TEST_F(NumericFailures, Vectors) {
  EXPECT_EQ(5u, FailEach("vectors", [](const auto& may) {
              TVectorD v(kSize);
              v.Fill(2);
              if (!may([&] { v.Create(2 * kSize); })) {
                ExpectWhole(v, 2 * kSize);
                EXPECT_EQ(0u, v.Size);
                v.Create(kSize);
              }
              TVectorD other(3);
              other.Fill(7);
              const bool assigned = may([&] { other = v; });
              EXPECT_EQ(assigned ? v.Size : 0u, other.Size);
              if (may([&] { const TVectorD copy(v); })) {
                ExpectWhole(v, v.Size);
              }
            }));
  EXPECT_EQ(7u, FailEach("sums of vectors", [](const auto& may) {
              TVectorD a(kSize);
              TVectorD b(kSize);
              a.Fill(1);
              b.Fill(2);
              TVectorD sum(kSize);
              sum.Fill(9);
              const double* const before = sum.Data;
              if (!may([&] { sum = a + b; })) {
                EXPECT_EQ(before, sum.Data);
                EXPECT_EQ(9.0, sum.Data[kSize - 1]);
              }
              const double* const again = sum.Data;
              if (!may([&] { sum = a - b; })) {
                EXPECT_EQ(again, sum.Data);
              }
              TMatrixD m(kSize, 2);
              fill(m, 1);
              if (may([&] { sum = m * a; })) {
                EXPECT_EQ(2u, sum.Size);
              }
            }));
}

TEST_F(NumericFailures, Matrices) {
  EXPECT_EQ(7u, FailEach("matrices", [](const auto& may) {
              TMatrixD m(kSize, 3);
              fill(m, 1);
              if (!may([&] { m.Create(3, kSize); })) {
                ExpectWhole(m, 3, kSize);
                EXPECT_EQ(0u, m.SizeX);
                m.Create(kSize, 3);
              }
              TMatrixD other(2, 2);
              if (!may([&] { other = m; })) {
                ExpectWhole(other, m.SizeX, m.SizeY);
                EXPECT_EQ(nullptr, other.Data);
              }
              may([&] { const TMatrixD copy(m); });
              TVectorD v(kSize);
              v.Fill(1);
              if (!may([&] { outer_dot(v, v, &other); })) {
                ExpectWhole(other, kSize, kSize);
              }
            }));
}

// A message without memory for its text is one or the other; nothing is written before it.
TEST_F(NumericFailures, MessagesOfMatrices) {
  TMatrixD a(3, 2);
  TMatrixD b(4, 5);
  TMatrixD res(2, 2);
  fill(a, 1);
  fill(b, 1);
  fill(res, 5);
  FailEach("messages", [&](const auto&) {
    bool thrown = false;
    try {
      mul(a, b, res);
    } catch (const TZxMessage&) {
      thrown = true;
    } catch (const std::bad_alloc&) {
      thrown = true;
    }
    EXPECT_TRUE(thrown);
    EXPECT_EQ(5.0, res.Data[0]);
  });
}

TEST_F(NumericFailures, TextsOfNumbers) {
  TVectorD v(12);
  v.Fill(1e300);
  TMatrixD m(3, 4);
  fill(m, -1e200);
  const std::string ofVector = ToString(v);
  const std::string ofMatrix = ToString(m);
  EXPECT_GT(FailEach("ToString",
                     [&](const auto& may) {
                       std::string text;
                       if (may([&] { text = ToString(v); })) {
                         EXPECT_EQ(ofVector, text);
                       } else {
                         EXPECT_EQ("", text);
                       }
                       if (may([&] { text = ToString(m); })) {
                         EXPECT_EQ(ofMatrix, text);
                       }
                     }),
            2u);
}

// Expressions of text are whole, each of them, whichever could not be made.
TEST_F(NumericFailures, SymbolicMatrices) {
  const std::string one(30, 'a');
  const std::string two(30, 'b');
  const std::string product = one + " * " + two;
  const std::string sum = product + " + " + product;
  const auto isOneOf = [](const std::string& text, std::initializer_list<std::string> texts) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
  };
  EXPECT_GT(
      FailEach("expressions",
               [&](const auto& may) {
                 TVectorStr v(2);
                 TVectorStr r(2);
                 TMatrixStr m(2, 2);
                 TMatrixStr res(2, 2);
                 if (!may([&] { fill(v, two); }) || !may([&] { fill(m, one); })) {
                   for (const std::string& text : v.Data) {
                     EXPECT_TRUE(isOneOf(text, {"", two})) << text;
                   }
                   return;
                 }
                 may([&] { mul(m, v, &r); });
                 for (const std::string& text : r.Data) {
                   EXPECT_TRUE(isOneOf(text, {"", sum})) << text;
                 }
                 may([&] { mul(v, one, &r); });
                 may([&] { col(m, 1, &r); });
                 may([&] { row(m, 1, &r); });
                 may([&] { outer_dot(v, v, &res); });
                 may([&] { mul(m, m, &res); });
                 may([&] { EXPECT_EQ(two + " * " + two + " + " + two + " * " + two, dot(v, v)); });
                 EXPECT_EQ(2u, r.Data.size());
                 EXPECT_EQ(4u, res.Data.size());
                 for (const std::string& text : v.Data) {
                   EXPECT_EQ(two, text) << "an operand";
                 }
               }),
      30u);
}

// What stood in the list stays, and what was added is the beginning of the line.
TEST_F(NumericFailures, LinesOfCells) {
  std::vector<vec_t_<int, 3>> whole;
  for (const int thickness : {1, 3}) {
    whole.clear();
    DrawLine3d({0, 0, 0}, {100, 30, 7}, thickness, whole);
    EXPECT_GT(FailEach("a line",
                       [&](const auto& may) {
                         std::vector<vec_t_<int, 3>> out = {{9, 9, 9}};
                         if (may([&] { DrawLine3d({0, 0, 0}, {100, 30, 7}, thickness, out); })) {
                           EXPECT_EQ(whole.size() + 1, out.size());
                         }
                         EXPECT_EQ(9, out[0].x);
                         for (std::size_t i = 1; i < out.size(); ++i) {
                           EXPECT_TRUE(out[i] == whole[i - 1]) << i;
                         }
                       }),
              3u)
        << "the list grows several times";
  }
}

TEST_F(NumericFailures, Polygons) {
  std::vector<vec_t_<double, 2>> ring; // of more vertices than fit beside the call
  for (int i = 0; i < 30; ++i) {
    ring.push_back({i < 15 ? double(i) : double(29 - i), i < 15 ? 0.0 : 5.0});
  }
  EXPECT_EQ(1u, FailEach("a polygon", [&](const auto& may) {
              bool crosses = true;
              if (may([&] { crosses = IsSelfIntersected(ring.data(), ring.size()); })) {
                EXPECT_FALSE(crosses);
              }
            }));
  EXPECT_EQ(0u, FailEach("a small one", [&](const auto& may) {
              EXPECT_TRUE(may([&] { IsSelfIntersected(ring.data(), 8); }));
            }));
}

class TShift : public TZx3DTransform {
public:
  vec_t_<double, 3> TransformPoint(const vec_t_<double, 3>& p) const override {
    return {p.x + 10, p.y, p.z};
  }
};

TEST_F(NumericFailures, MappedSpheres) {
  const TShift shift;
  EXPECT_EQ(1u, FailEach("a sphere", [&](const auto& may) {
              VSPHERE<double> s;
              s.Center = {1, 2, 3};
              s.Radius = 2;
              if (may([&] { Transform(s, 16, shift, &s); })) {
                EXPECT_NEAR(11, s.Center.x, 1e-9);
              } else {
                EXPECT_EQ(1, s.Center.x);
                EXPECT_EQ(2, s.Radius);
              }
            }));
}

TEST_F(NumericFailures, EstimatedTransforms) {
  const vec_t_<double, 2> flat[5] = {{0, 0}, {4, 0}, {0, 4}, {4, 4}, {1, 3}};
  const vec_t_<double, 3> space[7] = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {0, 0, 4},
                                      {4, 4, 1}, {1, 3, 2}, {2, 1, 4}};
  FailEach("maps of the plane and of space", [&](const auto& may) {
    MAT3<double> plane = {{5, 5, 5, 5, 5, 5, 5, 5, 5}};
    bool found = false;
    may([&] { found = GetProjectiveTransform(flat, flat, 5, &plane); });
    EXPECT_EQ(found, plane[0] != 5.0) << "on a false result the matrix is untouched";
    MAT4<double> m = {};
    m[0] = 5;
    found = false;
    may([&] { found = GetProjectiveTransform(space, space, 7, &m); });
    EXPECT_EQ(found, m[0] != 5.0);
    m[0] = 5;
    EXPECT_TRUE(may([&] { found = GetAffineTransform(space, space, 7, &m); }))
        << "this one needs none";
    EXPECT_TRUE(found);
  });
}

TEST_F(NumericFailures, LinearSystems) {
  for (const bool full : {false, true}) {
    EXPECT_EQ(
        1u, FailEach("a system", [&](const auto& may) {
          double a[4] = {2, 1, 1, 3};
          double b[2] = {3, 4};
          double x[2] = {9, 9};
          bool solved = false;
          if (may([&] { solved = full ? LineSysGauss2(a, 2, b, x) : LineSysGauss1(a, 2, b, x); })) {
            EXPECT_TRUE(solved);
            EXPECT_NEAR(1, x[0], 1e-12);
          } else {
            EXPECT_EQ(9, x[0]);
            EXPECT_EQ(2, a[0]) << "nothing was begun";
          }
        }));
  }
  std::vector<double> a(kSize * kSize, 0.0);
  std::vector<double> b(kSize, 1.0);
  for (unsigned long i = 0; i < kSize; ++i) {
    a[i * kSize + i] = 2;
  }
  std::vector<double> x(kSize, 9.0);
  bool solved = true;
  {
    const TMallocWatch watch(1);
    solved = SolveGauss(a.data(), kSize, b.data(), 0, x.data(), nullptr);
    EXPECT_TRUE(watch.Failed());
    EXPECT_EQ(0, watch.LiveBlocks());
  }
  EXPECT_FALSE(solved) << "without memory for the copy";
  EXPECT_EQ(9.0, x[0]);
}

} // namespace
