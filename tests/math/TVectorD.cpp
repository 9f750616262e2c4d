#include <ZxCore3D/math/TVectorD.h>

#include <algorithm>
#include <utility>

#include "Fixture.h"

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kAllocatorAborts = true;
#else
constexpr bool kAllocatorAborts = false;
#endif

TVectorD Make(std::initializer_list<double> values) {
  TVectorD v(values.size());
  std::copy(values.begin(), values.end(), v.Data);
  return v;
}

void ExpectEmpty(const TVectorD& v) {
  EXPECT_EQ(v.Size, 0u);
  EXPECT_EQ(v.Data, nullptr);
  EXPECT_FALSE(v.Owned);
}

TEST(TVectorD, FieldsStandInOrder) {
  static_assert(sizeof(TVectorD) == 24);
  TVectorD v(3);
  EXPECT_EQ(reinterpret_cast<char*>(&v.Size) - reinterpret_cast<char*>(&v), 0);
  EXPECT_EQ(reinterpret_cast<char*>(&v.Data) - reinterpret_cast<char*>(&v), 8);
  EXPECT_EQ(reinterpret_cast<char*>(&v.Owned) - reinterpret_cast<char*>(&v), 16);
}

TEST(TVectorD, Constructors) {
  ExpectEmpty(TVectorD());
  ExpectEmpty(TVectorD(0));
  TVectorD v(3);
  EXPECT_EQ(v.Size, 3u);
  EXPECT_NE(v.Data, nullptr);
  EXPECT_TRUE(v.Owned);

  double buffer[2] = {5, 6};
  TVectorD attached;
  attached.Create(2, buffer);
  TVectorD copy(attached);
  EXPECT_TRUE(copy.Owned);
  EXPECT_NE(copy.Data, buffer);
  EXPECT_TRUE(copy == attached);

  TVectorD moved(std::move(attached));
  EXPECT_EQ(moved.Data, buffer);
  EXPECT_FALSE(moved.Owned);
  ExpectEmpty(attached);
}

TEST(TVectorD, HugeSizesFailInTheAllocator) {
  if (kAllocatorAborts) {
    GTEST_SKIP() << "the sanitizer's allocator ends the process";
  }
  EXPECT_THROW(TVectorD(1UL << 61), std::bad_alloc);
  EXPECT_THROW(TVectorD((1UL << 61) + 1), std::bad_alloc);
  EXPECT_THROW(TVectorD(~0UL), std::bad_alloc);
  TVectorD v = Make({1.0});
  EXPECT_THROW(v.Create(1UL << 63), std::bad_alloc);
  ExpectEmpty(v);
}

TEST(TVectorD, CreateAtEqualSizeKeepsAttachmentAndContents) {
  double buffer[2] = {5, 6};
  TVectorD v;
  v.Create(2, buffer);
  v.Create(2);
  EXPECT_EQ(v.Data, buffer);
  EXPECT_FALSE(v.Owned);
  EXPECT_EQ(v.Data[1], 6.0);
  v.Create(2, nullptr);
  EXPECT_EQ(v.Data, buffer);
  v.Create(3);
  EXPECT_NE(v.Data, buffer);
  EXPECT_TRUE(v.Owned);
  EXPECT_EQ(v.Size, 3u);
  EXPECT_EQ(buffer[0], 5.0);
}

TEST(TVectorD, CreateWithPointer) {
  double buffer[3] = {1, 2, 3};
  TVectorD v(3);
  v.Create(3, buffer);
  EXPECT_EQ(v.Data, buffer);
  EXPECT_FALSE(v.Owned);
  v.Create(0, buffer);
  ExpectEmpty(v);
  v.Create(4, nullptr);
  EXPECT_TRUE(v.Owned);
  EXPECT_EQ(v.Size, 4u);
  v.Create(0);
  ExpectEmpty(v);
}

TEST(TVectorD, DestroySwapFill) {
  TVectorD a = Make({1, 2}), b;
  double buffer[1] = {9};
  b.Create(1, buffer);
  a.Swap(b);
  EXPECT_EQ(a.Data, buffer);
  EXPECT_FALSE(a.Owned);
  EXPECT_TRUE(b.Owned);
  EXPECT_TRUE(b == Make({1, 2}));
  b.Fill(4.0);
  EXPECT_TRUE(b == Make({4, 4}));
  fill(b, 5.0);
  EXPECT_TRUE(b == Make({5, 5}));
  b.Destroy();
  ExpectEmpty(b);
  a.Destroy();
  ExpectEmpty(a);
  EXPECT_EQ(buffer[0], 9.0);
}

TEST(TVectorD, Equality) {
  EXPECT_TRUE(TVectorD() == TVectorD(0));
  EXPECT_FALSE(Make({1}) == Make({1, 1}));
  EXPECT_TRUE(Make({0.0, 1}) == Make({-0.0, 1}));
  EXPECT_FALSE(Make({1, 2}) == Make({1, 3}));
  EXPECT_FALSE(Make({DefaultNaN()}) == Make({DefaultNaN()}));
  EXPECT_FALSE(Make({1.0}) == Make({DefaultNaN()}));
}

TEST(TVectorD, Assignment) {
  double buffer[2] = {0, 0};
  TVectorD v;
  v.Create(2, buffer);
  v = Make({7, 8});
  // A move takes the other's array; the buffer stays as it was.
  EXPECT_TRUE(v.Owned);
  EXPECT_EQ(buffer[0], 0.0);
  v.Create(2, buffer);
  const TVectorD source = Make({7, 8});
  v = source;
  EXPECT_EQ(v.Data, buffer);
  EXPECT_FALSE(v.Owned);
  EXPECT_EQ(buffer[1], 8.0);
  const TVectorD longer = Make({1, 2, 3});
  v = longer;
  EXPECT_TRUE(v.Owned);
  EXPECT_TRUE(v == longer);
  EXPECT_EQ(buffer[1], 8.0);
  const TVectorD& self = v;
  v = self;
  EXPECT_TRUE(v == longer);
  TVectorD target = Make({1}), other = Make({2, 3});
  const double* data = other.Data;
  target = std::move(other);
  EXPECT_EQ(target.Data, data);
  ExpectEmpty(other);
}

TEST(TVectorD, NormsAndProducts) {
  EXPECT_EQ(NormSqr(Make({3, 4})), 25.0);
  EXPECT_EQ(Norm(Make({3, 4})), 5.0);
  EXPECT_EQ(NormSqr(TVectorD()), 0.0);
  EXPECT_EQ(dot(TVectorD(), Make({1})), 0.0);
  EXPECT_EQ(dot(Make({2, 3}), Make({5, 7, 100})), 31.0);
  // In ascending order the two halves are lost one by one; together they would count.
  EXPECT_EQ(dot(Make({0x1p53, 1, 1}), Make({1, 1, 1})), 0x1p53);
  EXPECT_EQ(dot(Make({1, 1, 0x1p53}), Make({1, 1, 1})), 0x1p53 + 2);
  EXPECT_EQ(NormSqr(Make({0x1p27, 1, 1})), 0x1p54);
  // From +0.0 a sum of negative zeros is +0.0.
  EXPECT_FALSE(std::signbit(dot(Make({-0.0}), Make({1.0}))));
}

TEST(TVectorD, SumsAndDifferences) {
  TVectorD l = Make({1, 2});
  add(l, Make({10, 20, 30}));
  EXPECT_TRUE(l == Make({11, 22}));
  TVectorD res = Make({0, 0, 9});
  const double* data = res.Data;
  sub(l, Make({1, 2}), &res);
  EXPECT_EQ(res.Data, data);
  EXPECT_TRUE(res == Make({10, 20, 9}));
  const TVectorD sum = Make({1, 2}) + Make({3, 4});
  EXPECT_TRUE(sum.Owned);
  EXPECT_TRUE(sum == Make({4, 6}));
  EXPECT_TRUE(Make({1, 2}) - Make({3, 5}) == Make({-2, -3}));
}

TEST(TVectorD, OperandsThatAreTooShortAreLeftAlone) {
  TVectorD l = Make({1, 2, 3});
  add(l, Make({1}));
  EXPECT_TRUE(l == Make({1, 2, 3}));
  TVectorD res = Make({5});
  sub(l, l, &res);
  EXPECT_EQ(res.Data[0], 5.0);
  EXPECT_EQ(dot(l, Make({1})), 0.0);
  EXPECT_TRUE(l + Make({1}) == Make({0, 0, 0}));
  EXPECT_TRUE(l - Make({1}) == Make({0, 0, 0}));
}

TEST(TVectorD, Text) {
  EXPECT_EQ(ToString(TVectorD()), "{}");
  EXPECT_EQ(ToString(Make({1})), "{1.0000000000000000}");
  EXPECT_EQ(ToString(Make({1, -2.5})), "{1.0000000000000000, -2.5000000000000000}");
  EXPECT_EQ(ToString(Make({1e-17})), "{0.0000000000000000}");
  EXPECT_EQ(ToString(Make({0.1})), "{0.1000000000000000}");
  EXPECT_EQ(ToString(Make({1e300})).size(), 301u + 1 + 16 + 2);
}

} // namespace
