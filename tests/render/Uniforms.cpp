#include <ZxCore3D/render/TRenderCPU.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "Scene.h"

namespace {

using namespace zx_test;
using Zx3D::TRenderCPU;

constexpr std::size_t kCells = 32;
constexpr std::size_t kCellBytes = 32;

/// Runs a call on a storage full of marks, and holds it against the bytes that the call is to have
/// left at the cell's start and the marks everywhere else.
class Uniforms : public testing::Test {
protected:
  void Expect(int cell, const void* bytes, std::size_t size,
              const std::function<void(TRenderCPU&)>& call, const char* what) {
    std::vector<std::uint8_t> expected(kCells * kCellBytes, 0xC3);
    std::memcpy(m_Render.m_Uniforms, expected.data(), expected.size());
    if (size != 0) {
      std::memcpy(expected.data() + static_cast<std::size_t>(cell) * kCellBytes, bytes, size);
    }
    call(m_Render);
    EXPECT_EQ(0, std::memcmp(expected.data(), m_Render.m_Uniforms, expected.size())) << what;
    EXPECT_EQ(0u, m_Render.GetError());
  }
  template <class T>
  void Expect(int cell, const std::vector<T>& values, const std::function<void(TRenderCPU&)>& call,
              const char* what) {
    Expect(cell, values.data(), values.size() * sizeof(T), call, what);
  }

  TRenderCPU m_Render;
};

using TDoubles = std::vector<double>;
using TInts = std::vector<std::int32_t>;

#define STORES(cell, values, ...)                                                                  \
  Expect(                                                                                          \
      cell, values, [&](TRenderCPU& r) { r.__VA_ARGS__; }, #__VA_ARGS__)

TEST_F(Uniforms, BoolsAreOneByte) {
  STORES(0, std::vector<std::uint8_t>{1}, Uniform(0, true));
  STORES(31, std::vector<std::uint8_t>{0}, Uniform(31, false));
}

TEST_F(Uniforms, IntegersAreRawThirtyTwoBits) {
  for (const int cell : {0, 3, 31}) {
    STORES(cell, (TInts{-5}), Uniform(cell, -5));
    STORES(cell, (TInts{-1}), Uniform(cell, 0xFFFFFFFFu));
    STORES(cell, (TInts{1, -2}), Uniform(cell, 1, -2));
    STORES(cell, (TInts{1, -2, 3}), Uniform(cell, 1, -2, 3));
    STORES(cell, (TInts{1, -2, 3, -4}), Uniform(cell, 1, -2, 3, -4));
  }
}

TEST_F(Uniforms, FloatsAreWidenedToDoubles) {
  const double a = 0.1f;
  const double b = -0.2f;
  const double c = 0.3f;
  const double d = 1e30f;
  const float array[4] = {0.1f, -0.2f, 0.3f, 1e30f};
  for (const int cell : {0, 7, 31}) {
    STORES(cell, (TDoubles{a}), Uniform(cell, 0.1f));
    STORES(cell, (TDoubles{a, b}), Uniform(cell, 0.1f, -0.2f));
    STORES(cell, (TDoubles{a, b, c}), Uniform(cell, 0.1f, -0.2f, 0.3f));
    STORES(cell, (TDoubles{a, b, c, d}), Uniform(cell, 0.1f, -0.2f, 0.3f, 1e30f));
    STORES(cell, (TDoubles{a, b}), Uniform2(cell, array));
    STORES(cell, (TDoubles{a, b, c}), Uniform3(cell, array));
    STORES(cell, (TDoubles{a, b, c, d}), Uniform4(cell, array));
    STORES(cell, (TDoubles{a, b}), Uniform(cell, vec_t_<float, 2>{0.1f, -0.2f}));
    STORES(cell, (TDoubles{a, b, c}), Uniform(cell, vec_t_<float, 3>{0.1f, -0.2f, 0.3f}));
    STORES(cell, (TDoubles{a, b, c, d}), Uniform(cell, vec_t_<float, 4>{0.1f, -0.2f, 0.3f, 1e30f}));
  }
  STORES(3, (TDoubles{1.5}), Uniform(3, 1.5f));
}

TEST_F(Uniforms, DoublesAreStoredAsTheyAre) {
  for (const int cell : {0, 15, 31}) {
    STORES(cell, (TDoubles{0.1}), Uniform(cell, 0.1));
    STORES(cell, (TDoubles{0.1, -0.0}), Uniform(cell, 0.1, -0.0));
    STORES(cell, (TDoubles{0.1, -0.2, 1e300}), Uniform(cell, 0.1, -0.2, 1e300));
    STORES(cell, (TDoubles{0.1, -0.2, 0.3, 0.4}), Uniform(cell, 0.1, -0.2, 0.3, 0.4));
    STORES(cell, (TDoubles{0.1, -0.2}), Uniform(cell, vec_t_<double, 2>{0.1, -0.2}));
    STORES(cell, (TDoubles{0.1, -0.2, 0.3}), Uniform(cell, vec_t_<double, 3>{0.1, -0.2, 0.3}));
    STORES(cell, (TDoubles{0.1, -0.2, 0.3, 0.4}),
           Uniform(cell, vec_t_<double, 4>{0.1, -0.2, 0.3, 0.4}));
  }
}

template <class T, class TMatrix> TMatrix Filled(TDoubles* expected, std::size_t count) {
  TMatrix m;
  expected->clear();
  for (std::size_t i = 0; i < count; ++i) {
    m[i] = static_cast<T>(0.1 * static_cast<double>(i + 1));
    expected->push_back(static_cast<double>(m[i]));
  }
  return m;
}

TEST_F(Uniforms, MatricesRunOnIntoTheNextCells) {
  TDoubles expected;
  for (const int cell : {0, 5, 28}) {
    const auto m3f = Filled<float, MAT3<float>>(&expected, 9);
    STORES(cell, expected, Uniform(cell, m3f));
    const auto m3d = Filled<double, MAT3<double>>(&expected, 9);
    STORES(cell, expected, Uniform(cell, m3d));
    const auto m4f = Filled<float, MAT4<float>>(&expected, 16);
    STORES(cell, expected, Uniform(cell, m4f));
    const auto m4d = Filled<double, MAT4<double>>(&expected, 16);
    STORES(cell, expected, Uniform(cell, m4d));
  }
  // Nine values take two cells and a quarter: cell 29 is the last that holds them.
  const auto last = Filled<double, MAT3<double>>(&expected, 9);
  STORES(29, expected, Uniform(29, last));
}

TEST_F(Uniforms, WhatWouldRunPastTheLastCellIsNotStored) {
  const TDoubles nothing;
  const MAT3<float> m3f = {};
  const MAT3<double> m3d = {};
  const MAT4<float> m4f = {};
  const MAT4<double> m4d = {};
  for (const int cell : {30, 31, 32, -1, 1 << 30}) {
    STORES(0, nothing, Uniform(cell, m3f));
    STORES(0, nothing, Uniform(cell, m3d));
  }
  for (const int cell : {29, 30, 31, 32, -1, -2147483647 - 1}) {
    STORES(0, nothing, Uniform(cell, m4f));
    STORES(0, nothing, Uniform(cell, m4d));
  }
}

TEST_F(Uniforms, OutsideTheCellsNothingIsStored) {
  const TDoubles nothing;
  const float array[4] = {1, 2, 3, 4};
  for (const int cell : {-1, 32, 33, 2147483647, -2147483647 - 1, 1 << 27}) {
    STORES(0, nothing, Uniform(cell, true));
    STORES(0, nothing, Uniform(cell, 1));
    STORES(0, nothing, Uniform(cell, 1u));
    STORES(0, nothing, Uniform(cell, 1, 2, 3, 4));
    STORES(0, nothing, Uniform(cell, 1.0f));
    STORES(0, nothing, Uniform(cell, 1.0f, 2.0f, 3.0f));
    STORES(0, nothing, Uniform(cell, 1.0));
    STORES(0, nothing, Uniform(cell, 1.0, 2.0, 3.0, 4.0));
    STORES(0, nothing, Uniform2(cell, array));
    STORES(0, nothing, Uniform4(cell, array));
    STORES(0, nothing, Uniform(cell, vec_t_<float, 2>{1, 2}));
    STORES(0, nothing, Uniform(cell, vec_t_<double, 4>{1, 2, 3, 4}));
  }
}

} // namespace
