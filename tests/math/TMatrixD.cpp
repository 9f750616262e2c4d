#include <ZxCore3D/math/TMatrixD.h>

#include <algorithm>
#include <utility>

#include <ZxBaseKit/TZxMessage.h>
#include <eigen3/Eigen/Dense>

#include "Fixture.h"

namespace {

TMatrixD Make(unsigned long sizeX, unsigned long sizeY, std::initializer_list<double> values) {
  TMatrixD m(sizeX, sizeY);
  std::copy(values.begin(), values.end(), m.Data);
  return m;
}

TVectorD Vector(std::initializer_list<double> values) {
  TVectorD v(values.size());
  std::copy(values.begin(), values.end(), v.Data);
  return v;
}

void ExpectShape(const TMatrixD& m, unsigned long sizeX, unsigned long sizeY) {
  EXPECT_EQ(m.SizeX, sizeX);
  EXPECT_EQ(m.SizeY, sizeY);
  EXPECT_EQ(m.Data == nullptr, sizeX * sizeY == 0);
}

void ExpectValues(const TMatrixD& m, std::initializer_list<double> values) {
  ASSERT_EQ(m.SizeX * m.SizeY, values.size());
  EXPECT_TRUE(SameBits(m.Data, values.begin(), values.size()));
}

template <class Work> std::string Thrown(Work work) {
  try {
    work();
  } catch (const TZxMessage& message) {
    return message.what();
  }
  return "nothing";
}

TEST(TMatrixD, FieldsStandInOrder) {
  static_assert(sizeof(TMatrixD) == 32);
  TMatrixD m(2, 3);
  const char* base = reinterpret_cast<char*>(&m);
  EXPECT_EQ(reinterpret_cast<char*>(&m.SizeX) - base, 0);
  EXPECT_EQ(reinterpret_cast<char*>(&m.SizeY) - base, 8);
  EXPECT_EQ(reinterpret_cast<char*>(&m.Data) - base, 16);
  EXPECT_EQ(reinterpret_cast<char*>(&m.Owned) - base, 24);
}

TEST(TMatrixD, Constructors) {
  ExpectShape(TMatrixD(), 0, 0);
  ExpectShape(TMatrixD(5, 0), 5, 0);
  ExpectShape(TMatrixD(0, 5), 0, 5);
  EXPECT_FALSE(TMatrixD(5, 0).Owned);
  EXPECT_TRUE(TMatrixD(2, 3).Owned);
  double buffer[6] = {1, 2, 3, 4, 5, 6};
  TMatrixD attached(3, 2, buffer);
  EXPECT_EQ(attached.Data, buffer);
  EXPECT_FALSE(attached.Owned);
  EXPECT_TRUE(TMatrixD(3, 2, nullptr).Owned);
  ExpectShape(TMatrixD(3, 0, buffer), 3, 0);
  TMatrixD copy(attached);
  EXPECT_TRUE(copy.Owned);
  ExpectValues(copy, {1, 2, 3, 4, 5, 6});
  ExpectShape(copy, 3, 2);
  TMatrixD moved(std::move(attached));
  EXPECT_EQ(moved.Data, buffer);
  ExpectShape(attached, 0, 0);
  const TMatrixD empty(0, 4);
  ExpectShape(TMatrixD(empty), 0, 4);
}

TEST(TMatrixD, HugeShapesFailInTheAllocator) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer's allocator ends the process";
#else
  EXPECT_THROW(TMatrixD(1UL << 61, 1), std::bad_alloc);
  EXPECT_THROW(TMatrixD(1UL << 32, 1UL << 32), std::bad_alloc);
  EXPECT_THROW(TMatrixD((1UL << 32) + 1, 1UL << 32), std::bad_alloc);
#endif
}

TEST(TMatrixD, Create) {
  double buffer[6] = {1, 2, 3, 4, 5, 6};
  TMatrixD m(3, 2, buffer);
  m.Create(3, 2);
  EXPECT_EQ(m.Data, buffer);
  m.Create(3, 2, nullptr);
  EXPECT_EQ(m.Data, buffer);
  m.Create(2, 3);
  EXPECT_NE(m.Data, buffer);
  EXPECT_TRUE(m.Owned);
  m.Create(2, 3, buffer);
  EXPECT_EQ(m.Data, buffer);
  EXPECT_FALSE(m.Owned);
  m.Create(0, 7);
  ExpectShape(m, 0, 7);
  m.Create(7, 0, buffer);
  ExpectShape(m, 7, 0);
  EXPECT_FALSE(m.Owned);
}

TEST(TMatrixD, AttachedBufferIsWrittenAndLeftAlone) {
  double buffer[4] = {1, 2, 3, 4};
  {
    TMatrixD m(2, 2, buffer);
    const TMatrixD same = Make(2, 2, {5, 6, 7, 8});
    m = same;
    EXPECT_EQ(m.Data, buffer);
    EXPECT_EQ(buffer[3], 8.0);
  }
  EXPECT_EQ(buffer[0], 5.0);
  TMatrixD m(2, 2, buffer);
  const TMatrixD other = Make(1, 2, {1, 2});
  m = other;
  EXPECT_TRUE(m.Owned);
  ExpectShape(m, 1, 2);
  ExpectValues(m, {1, 2});
  EXPECT_EQ(buffer[0], 5.0);
  // The same count in another shape is another shape.
  m.Create(2, 2, buffer);
  const TMatrixD row = Make(4, 1, {1, 2, 3, 4});
  m = row;
  EXPECT_TRUE(m.Owned);
  ExpectShape(m, 4, 1);
}

TEST(TMatrixD, MoveAndSwap) {
  TMatrixD a = Make(1, 2, {1, 2}), b = Make(2, 1, {3, 4});
  a.Swap(b);
  ExpectShape(a, 2, 1);
  ExpectValues(a, {3, 4});
  const double* data = a.Data;
  b = std::move(a);
  EXPECT_EQ(b.Data, data);
  EXPECT_TRUE(b.Owned);
  ExpectShape(b, 2, 1);
  ExpectShape(a, 0, 0);
  EXPECT_FALSE(a.Owned);
}

TEST(TMatrixD, SetIdentity) {
  TMatrixD m = Make(2, 2, {5, 6, 7, 8});
  m.SetIdentity();
  ExpectValues(m, {1, 0, 0, 1});
  TMatrixD wide(3, 2);
  EXPECT_EQ(Thrown([&] { wide.SetIdentity(); }), "SizeX != SizeY");
  TMatrixD empty;
  EXPECT_EQ(Thrown([&] { empty.SetIdentity(); }), "nothing");
}

TEST(TMatrixD, ElementwiseOperations) {
  TMatrixD m = Make(2, 2, {-1, -0.0, 2, DefaultNaN()}), res(2, 2);
  EXPECT_TRUE(abs(m, res));
  ExpectValues(res, {1, 0, 2, std::fabs(DefaultNaN())});
  EXPECT_FALSE(std::signbit(res.Data[3]));
  TMatrixD wrong = Make(4, 1, {9, 9, 9, 9});
  EXPECT_FALSE(abs(m, wrong));
  ExpectValues(wrong, {9, 9, 9, 9});

  TMatrixD l = Make(2, 1, {1, 2});
  add(l, Make(1, 2, {10, 20}));
  ExpectValues(l, {11, 22});
  add(l, Make(1, 1, {5}));
  ExpectValues(l, {11, 22});

  TMatrixD d(2, 1);
  EXPECT_TRUE(diff(l, Make(2, 1, {1, 2}), d));
  ExpectValues(d, {10, 20});
  EXPECT_FALSE(diff(l, Make(1, 2, {1, 2}), d));
  TMatrixD tall = Make(1, 2, {3, 3});
  EXPECT_FALSE(diff(l, l, tall));
  ExpectValues(tall, {3, 3});

  fill(d, 7.0);
  ExpectValues(d, {7, 7});
  const TMatrixD constant = Make(2, 1, {3, 4});
  mul(constant, 2.0);
  ExpectValues(constant, {6, 8});
}

// A matrix over the front of a caller's buffer: what lies behind it is not the operation's.
TEST(TMatrixD, ElementwiseOperationsEndWithTheMatrix) {
  const auto check = [](const char* what, const auto& operation) {
    double left[7] = {1, 2, 3, 4, 5, 6, 77};
    double right[7] = {9, 8, 7, 6, 5, 4, 88};
    double result[7] = {0, 0, 0, 0, 0, 0, 99};
    TMatrixD l, r, res;
    l.Create(2, 3, left);
    r.Create(2, 3, right);
    res.Create(2, 3, result);
    operation(l, r, res);
    EXPECT_EQ(left[6], 77) << what;
    EXPECT_EQ(right[6], 88) << what;
    EXPECT_EQ(result[6], 99) << what;
  };
  using M = TMatrixD;
  check("fill", [](M& l, M&, M&) { fill(l, 5); });
  check("abs", [](M& l, M&, M& res) { EXPECT_TRUE(abs(l, res)); });
  check("add", [](M& l, M& r, M&) { add(l, r); });
  check("diff", [](M& l, M& r, M& res) { EXPECT_TRUE(diff(l, r, res)); });
  check("mul", [](M& l, M&, M&) { mul(l, 3); });
  check("min", [](M& l, M&, M&) { EXPECT_EQ(min(l), 1); });
  check("max", [](M& l, M&, M&) { EXPECT_EQ(max(l), 6); });
}

TEST(TMatrixD, ExtremesAndSum) {
  const TMatrixD m = Make(2, 2, {3, -1, 7, 2});
  EXPECT_EQ(min(m), -1.0);
  EXPECT_EQ(max(m), 7.0);
  EXPECT_EQ(summ(m), 11.0);
  EXPECT_EQ(summ(TMatrixD(0, 3)), 0.0);
  EXPECT_EQ(Thrown([] { min(TMatrixD(0, 3)); }), "m is empty");
  EXPECT_EQ(Thrown([] { max(TMatrixD()); }), "m is empty");
  const double nan = DefaultNaN();
  EXPECT_TRUE(std::isnan(min(Make(2, 1, {nan, 1}))));
  EXPECT_TRUE(std::isnan(max(Make(2, 1, {nan, 1}))));
  EXPECT_EQ(min(Make(3, 1, {2, nan, 1})), 1.0);
  EXPECT_EQ(max(Make(3, 1, {2, nan, 1})), 2.0);
  // Only a strictly smaller or larger element replaces: the first of two zeros stays.
  EXPECT_TRUE(std::signbit(max(Make(2, 1, {-0.0, 0.0}))));
  EXPECT_FALSE(std::signbit(min(Make(2, 1, {0.0, -0.0}))));
  EXPECT_EQ(summ(Make(3, 1, {0x1p53, 1, 1})), 0x1p53);
  EXPECT_EQ(summ(Make(3, 1, {1, 1, 0x1p53})), 0x1p53 + 2);
}

TEST(TMatrixD, Equal) {
  TMatrixD a = Make(2, 1, {1, 2}), b = Make(2, 1, {1.5, 2}), c = Make(1, 2, {1, 2});
  EXPECT_TRUE(equal(a, b, 0.5));
  EXPECT_FALSE(equal(a, b, 0.25));
  EXPECT_FALSE(equal(a, c, 100));
  TMatrixD e(0, 3), f(0, 3), g(3, 0);
  EXPECT_TRUE(equal(e, f, 0));
  EXPECT_FALSE(equal(e, g, 0));
  TMatrixD n = Make(2, 1, {DefaultNaN(), 2}), n2 = n;
  EXPECT_TRUE(equal(n, n2, 0));
  EXPECT_TRUE(equal(n, a, 0));
}

TEST(TMatrixD, ProductChecksShapesInOrder) {
  TMatrixD res = Make(2, 2, {9, 9, 9, 9});
  const TMatrixD a(3, 2), b(2, 3), c(1, 3), square(2, 2);
  EXPECT_EQ(Thrown([&] { mul(a, square, res); }), "l.SizeX != r.SizeY");
  EXPECT_EQ(Thrown([&] { mul(a, c, res); }), "res.SizeX != r.SizeX");
  TMatrixD flat = Make(2, 1, {8, 8});
  EXPECT_EQ(Thrown([&] { mul(a, b, flat); }), "res.SizeY != l.SizeY");
  // All three wrong: the first test speaks.
  TMatrixD one = Make(1, 1, {7});
  EXPECT_EQ(Thrown([&] { mul(a, square, one); }), "l.SizeX != r.SizeY");
  TMatrixD thin = Make(1, 1, {7});
  EXPECT_EQ(Thrown([&] { mul(a, b, thin); }), "res.SizeX != r.SizeX");
  ExpectValues(res, {9, 9, 9, 9});
  ExpectValues(flat, {8, 8});
  ExpectValues(one, {7});
}

TEST(TMatrixD, ProductsByHand) {
  TMatrixD res(2, 2);
  mul(Make(3, 2, {1, 2, 3, 4, 5, 6}), Make(2, 3, {1, 2, 3, 4, 5, 6}), res);
  ExpectValues(res, {22, 28, 49, 64});
  // Without inner elements every sum is the 0.0 that it begins with.
  fill(res, 5.0);
  mul(TMatrixD(0, 2), TMatrixD(2, 0), res);
  ExpectValues(res, {0, 0, 0, 0});
  TMatrixD none(0, 2);
  mul(Make(1, 2, {1, 2}), TMatrixD(0, 1), none);
  ExpectShape(none, 0, 2);

  TVectorD v = Vector({0, 0, 7});
  const double* data = v.Data;
  mul(Make(3, 2, {1, 2, 3, 4, 5, 6}), Vector({1, 1, 1}), &v);
  EXPECT_EQ(v.Data, data);
  EXPECT_TRUE(v == Vector({6, 15, 7}));
  const TVectorD w = Make(3, 2, {1, 2, 3, 4, 5, 6}) * Vector({1, 10, 100});
  EXPECT_TRUE(w.Owned);
  EXPECT_TRUE(w == Vector({321, 654}));
}

TEST(TMatrixD, ProductsAgainstEigen) {
  std::mt19937_64 random(3);
  for (const unsigned long n : {3ul, 9ul, 40ul}) {
    const auto size = static_cast<Eigen::Index>(n);
    using Matrix = Eigen::Matrix<double, -1, -1, Eigen::RowMajor>;
    Matrix a = Matrix::Random(size, size + 2), b = Matrix::Random(size + 2, size + 1);
    TMatrixD res(n + 1, n);
    mul(TMatrixD(n + 2, n, a.data()), TMatrixD(n + 1, n + 2, b.data()), res);
    const Matrix expected = a * b;
    for (unsigned long i = 0; i < n * (n + 1); ++i) {
      EXPECT_NEAR(res.Data[i], expected.data()[i], 1e-13);
    }
  }
}

TEST(TMatrixD, Transpose) {
  TMatrixD res(2, 3);
  transpose(Make(3, 2, {1, 2, 3, 4, 5, 6}), res);
  ExpectValues(res, {1, 4, 2, 5, 3, 6});
  // The rows of a wider result are longer than the columns of `m`.
  TMatrixD wide(3, 2);
  fill(wide, 9.0);
  transpose(Make(2, 2, {1, 2, 3, 4}), wide);
  ExpectValues(wide, {1, 3, 9, 2, 4, 9});
  TMatrixD tiny = Make(1, 1, {9});
  transpose(Make(2, 2, {1, 2, 3, 4}), tiny);
  ExpectValues(tiny, {9});
}

TEST(TMatrixD, OuterProduct) {
  TMatrixD res(3, 2);
  const double* data = res.Data;
  outer_dot(Vector({1, 2}), Vector({3, 4, 5}), &res);
  EXPECT_EQ(res.Data, data);
  ExpectValues(res, {3, 4, 5, 6, 8, 10});
  outer_dot(Vector({1, 2, 3}), Vector({4}), &res);
  ExpectShape(res, 1, 3);
  ExpectValues(res, {4, 8, 12});
  outer_dot(TVectorD(), Vector({1, 2}), &res);
  ExpectShape(res, 2, 0);
}

TEST(TMatrixD, OperandsThatAreTooShortAreLeftAlone) {
  const TMatrixD m = Make(2, 2, {1, 2, 3, 4});
  TVectorD res = Vector({9});
  mul(m, Vector({1, 1}), &res);
  EXPECT_EQ(res.Data[0], 9.0);
  TVectorD two = Vector({9, 9});
  mul(m, Vector({1}), &two);
  EXPECT_TRUE(two == Vector({9, 9}));
  EXPECT_TRUE(m * Vector({1}) == Vector({0, 0}));
}

TEST(TMatrixD, Text) {
  EXPECT_EQ(ToString(Make(2, 2, {1, 2, 3, 4})),
            "{1.0000000000000000, 2.0000000000000000,\n3.0000000000000000, 4.0000000000000000}");
  EXPECT_EQ(ToString(Make(1, 2, {1, 2})), "{1.0000000000000000,\n2.0000000000000000}");
  EXPECT_EQ(ToString(TMatrixD()), "{");
  EXPECT_EQ(ToString(TMatrixD(0, 3)), "{");
  EXPECT_EQ(ToString(TMatrixD(3, 0)), "{");
}

} // namespace
