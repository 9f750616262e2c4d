#include <ZxCore3D/object/TVariant.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>

namespace {

using Zx3D::TVariant;

template <class T> TVariant Make(T value) {
  TVariant v;
  v.Set(value);
  return v;
}

// One row of the table: what a value gives as each of the eleven types.
struct TRow {
  TVariant Source;
  bool Bool;
  int Schar, Uchar, Short, Ushort, Int;
  unsigned int Uint;
  long Long;
  unsigned long Ulong;
  float Float;
  double Double;
};

void Check(const TRow& row, int line) {
  SCOPED_TRACE(line);
  const TVariant& v = row.Source;
  EXPECT_EQ(v.Get<bool>(), row.Bool);
  EXPECT_EQ(v.Get<signed char>(), row.Schar);
  EXPECT_EQ(v.Get<unsigned char>(), row.Uchar);
  EXPECT_EQ(v.Get<short>(), row.Short);
  EXPECT_EQ(v.Get<unsigned short>(), row.Ushort);
  EXPECT_EQ(v.Get<int>(), row.Int);
  EXPECT_EQ(v.Get<unsigned int>(), row.Uint);
  EXPECT_EQ(v.Get<long>(), row.Long);
  EXPECT_EQ(v.Get<unsigned long>(), row.Ulong);
  EXPECT_EQ(std::bit_cast<std::uint32_t>(v.Get<float>()), std::bit_cast<std::uint32_t>(row.Float));
  EXPECT_EQ(std::bit_cast<std::uint64_t>(v.Get<double>()),
            std::bit_cast<std::uint64_t>(row.Double));
}

constexpr unsigned long kTop = 1UL << 63;
constexpr long kMin64 = std::numeric_limits<long>::min();
constexpr int kMin32 = std::numeric_limits<int>::min();

TEST(TVariantGet, Bool) {
  Check({Make(true), true, 1, 1, 1, 1, 1, 1, 1, 1, 1.0F, 1.0}, __LINE__);
  Check({Make(false), false, 0, 0, 0, 0, 0, 0, 0, 0, 0.0F, 0.0}, __LINE__);
}

TEST(TVariantGet, Int8) {
  Check({Make<signed char>(-3), true, -3, 253, -3, 65533, -3, 4294967293U, -3, ~2UL, -3.0F, -3.0},
        __LINE__);
  Check({Make<signed char>(0), false, 0, 0, 0, 0, 0, 0, 0, 0, 0.0F, 0.0}, __LINE__);
  Check({Make<signed char>(127), true, 127, 127, 127, 127, 127, 127, 127, 127, 127.0F, 127.0},
        __LINE__);
}

TEST(TVariantGet, Uint8) {
  Check({Make<unsigned char>(200), true, -56, 200, 200, 200, 200, 200, 200, 200, 200.0F, 200.0},
        __LINE__);
}

// 0xFE02 = -510
TEST(TVariantGet, Int16) {
  Check({Make<short>(-510), true, 2, 2, -510, 65026, -510, 4294966786U, -510, ~509UL, -510.0F,
         -510.0},
        __LINE__);
  Check({Make<short>(256), true, 0, 0, 256, 256, 256, 256, 256, 256, 256.0F, 256.0}, __LINE__);
}

TEST(TVariantGet, Uint16) {
  Check({Make<unsigned short>(65026), true, 2, 2, -510, 65026, 65026, 65026, 65026, 65026, 65026.0F,
         65026.0},
        __LINE__);
}

// 0x80FF01 = 8453889, 0x1000001 = 2^24 + 1, which rounds to even as a float
TEST(TVariantGet, Int32) {
  Check({Make<int>(8453889), true, 1, 1, -255, 65281, 8453889, 8453889, 8453889, 8453889,
         8453889.0F, 8453889.0},
        __LINE__);
  Check({Make<int>(-1), true, -1, 255, -1, 65535, -1, 4294967295U, -1, ~0UL, -1.0F, -1.0},
        __LINE__);
  Check({Make<int>(16777217), true, 1, 1, 1, 1, 16777217, 16777217, 16777217, 16777217, 16777216.0F,
         16777217.0},
        __LINE__);
}

TEST(TVariantGet, Uint32) {
  Check({Make<unsigned int>(0x80000080U), true, -128, 128, 128, 128, kMin32 + 128, 0x80000080U,
         0x80000080L, 0x80000080UL, 2147483648.0F, 2147483776.0},
        __LINE__);
}

// 2^60 + 2^36 + 1 lies just above the middle of two floats 2^37 apart; by way of a double it would
// be that middle, and round to even below it.
TEST(TVariantGet, Int64) {
  const long middle = (1L << 60) + (1L << 36) + 1;
  Check({Make<long>(middle), true, 1, 1, 1, 1, 1, 1, middle, static_cast<unsigned long>(middle),
         std::ldexp(1.0F, 60) + std::ldexp(1.0F, 37), 1152921573326323712.0},
        __LINE__);
  Check({Make<long>(-2), true, -2, 254, -2, 65534, -2, 4294967294U, -2, ~1UL, -2.0F, -2.0},
        __LINE__);
  Check({Make<long>(1L << 32), true, 0, 0, 0, 0, 0, 0, 1L << 32, 1UL << 32, 4294967296.0F,
         4294967296.0},
        __LINE__);
}

TEST(TVariantGet, Uint64) {
  Check({Make<unsigned long>(~0UL), true, -1, 255, -1, 65535, -1, 4294967295U, -1, ~0UL,
         18446744073709551616.0F, 18446744073709551616.0},
        __LINE__);
  // 2^63 + 2^39 + 1, above the middle of two floats
  const unsigned long middle = kTop + (1UL << 39) + 1;
  Check({Make<unsigned long>(middle), true, 1, 1, 1, 1, 1, 1, static_cast<long>(middle), middle,
         std::ldexp(1.0F, 63) + std::ldexp(1.0F, 40), std::ldexp(1.0, 63) + std::ldexp(1.0, 39)},
        __LINE__);
}

TEST(TVariantGet, RealsAreTruncated) {
  Check({Make<float>(-1.75F), true, -1, 255, -1, 65535, -1, 4294967295U, -1, ~0UL, -1.75F, -1.75},
        __LINE__);
  Check({Make<double>(300.9), true, 44, 44, 300, 300, 300, 300, 300, 300, 300.9F, 300.9}, __LINE__);
  Check({Make<double>(-0.5), true, 0, 0, 0, 0, 0, 0, 0, 0, -0.5F, -0.5}, __LINE__);
  Check({Make<double>(-0.0), false, 0, 0, 0, 0, 0, 0, 0, 0, -0.0F, -0.0}, __LINE__);
  Check({Make<double>(1e-300), true, 0, 0, 0, 0, 0, 0, 0, 0, 0.0F, 1e-300}, __LINE__);
  Check({Make<double>(65537.0), true, 1, 1, 1, 1, 65537, 65537, 65537, 65537, 65537.0F, 65537.0},
        __LINE__);
}

// Below and at the edges of the 32-bit range; outside it the 32-bit types see 0x80000000, of which
// the low 8 and 16 bits are 0, while unsigned int goes by way of 64 bits.
TEST(TVariantGet, RealsAtTheEdgesOf32Bits) {
  Check({Make<double>(2147483647.5), true, -1, 255, -1, 65535, 2147483647, 2147483647U, 2147483647L,
         2147483647UL, 2147483648.0F, 2147483647.5},
        __LINE__);
  Check({Make<double>(2147483648.0), true, 0, 0, 0, 0, kMin32, 2147483648U, 2147483648L,
         2147483648UL, 2147483648.0F, 2147483648.0},
        __LINE__);
  Check({Make<double>(-2147483648.9), true, 0, 0, 0, 0, kMin32, 2147483648U, -2147483648L,
         static_cast<unsigned long>(-2147483648L), -2147483648.0F, -2147483648.9},
        __LINE__);
  Check({Make<double>(4294967301.0), true, 0, 0, 0, 0, kMin32, 5, 4294967301L, 4294967301UL,
         4294967296.0F, 4294967301.0},
        __LINE__);
  Check({Make<double>(-4294967301.0), true, 0, 0, 0, 0, kMin32, 4294967291U, -4294967301L,
         static_cast<unsigned long>(-4294967301L), -4294967296.0F, -4294967301.0},
        __LINE__);
}

TEST(TVariantGet, RealsAtTheEdgesOf64Bits) {
  const double edge = 9223372036854775808.0;
  Check(
      {Make<double>(edge), true, 0, 0, 0, 0, kMin32, 0, kMin64, kTop, 9223372036854775808.0F, edge},
      __LINE__);
  Check({Make<double>(edge + 4096.0), true, 0, 0, 0, 0, kMin32, 0, kMin64, kTop + 4096,
         9223372036854775808.0F, edge + 4096.0},
        __LINE__);
  Check({Make<double>(-edge), true, 0, 0, 0, 0, kMin32, 0, kMin64, kTop, -9223372036854775808.0F,
         -edge},
        __LINE__);
  Check({Make<float>(18446742974197923840.0F), true, 0, 0, 0, 0, kMin32, 0, kMin64,
         18446742974197923840UL, 18446742974197923840.0F, 18446742974197923840.0},
        __LINE__);
  Check({Make<double>(18446744073709551616.0), true, 0, 0, 0, 0, kMin32, 0, kMin64, kTop,
         18446744073709551616.0F, 18446744073709551616.0},
        __LINE__);
  Check({Make<double>(-1e300), true, 0, 0, 0, 0, kMin32, 0, kMin64, kTop,
         -std::numeric_limits<float>::infinity(), -1e300},
        __LINE__);
}

TEST(TVariantGet, RealsThatAreNoNumbers) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double value : {infinity, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
    for (const TVariant& v : {Make(value), Make(static_cast<float>(value))}) {
      EXPECT_TRUE(v.Get<bool>());
      EXPECT_EQ(v.Get<signed char>(), 0);
      EXPECT_EQ(v.Get<unsigned char>(), 0);
      EXPECT_EQ(v.Get<short>(), 0);
      EXPECT_EQ(v.Get<unsigned short>(), 0);
      EXPECT_EQ(v.Get<int>(), kMin32);
      EXPECT_EQ(v.Get<unsigned int>(), 0U);
      EXPECT_EQ(v.Get<long>(), kMin64);
      EXPECT_EQ(v.Get<unsigned long>(), kTop);
      EXPECT_EQ(std::isnan(v.Get<float>()), std::isnan(value));
      EXPECT_EQ(std::isnan(v.Get<double>()), std::isnan(value));
      EXPECT_EQ(v.Get<double>() > 0, value > 0);
    }
  }
}

template <class T> void ExpectRaised(const TVariant& v) {
  try {
    v.Get<T>();
    ADD_FAILURE() << v.Type;
  } catch (const TZxMessage& message) {
    EXPECT_STREQ(message.what(), "TVariant::Get failed");
  }
}

TEST(TVariantGet, EveryOtherTagRaises) {
  TVariant v;
  std::memset(v.Value, 0, sizeof v.Value);
  v.Count = 0;
  for (const unsigned int tag :
       {0U, 12U, 13U, 14U, 15U, 16U, 0x21U, 0x26U, 0x46U, 0x66U, 0x106U, 0x10AU, 0x12AU}) {
    v.Type = static_cast<DATA_TYPE>(tag);
    ExpectRaised<bool>(v);
    ExpectRaised<signed char>(v);
    ExpectRaised<unsigned char>(v);
    ExpectRaised<short>(v);
    ExpectRaised<unsigned short>(v);
    ExpectRaised<int>(v);
    ExpectRaised<unsigned int>(v);
    ExpectRaised<long>(v);
    ExpectRaised<unsigned long>(v);
    ExpectRaised<float>(v);
    ExpectRaised<double>(v);
    v.Type = DATA_TYPE_NONE;
  }
  v.Set("5", 1);
  ExpectRaised<int>(v);
}

} // namespace
