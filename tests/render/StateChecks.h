#pragma once

#include <cstddef>
#include <string>

#include <ZxBaseKit/TZxMessage.h>

#include "Scene.h"

// What the tests of the renderer's state share: vectors and matrices to the last bit, and the text
// of a thrown message.

namespace zx_test {

using V2 = vec_t_<double, 2>;
using V3 = vec_t_<double, 3>;
using V4 = vec_t_<double, 4>;
using M4 = MAT4<double>;

inline constexpr unsigned int kNoSuchIndex = 0xFFFFFFFFu;

template <std::size_t N> std::string TextOf(const vec_t_<double, N>& v) {
  std::string text = "(";
  for (std::size_t i = 0; i < N; ++i) {
    text += (i == 0 ? "" : ", ") + ::testing::PrintToString(v[i]);
  }
  return text + ")";
}

template <std::size_t N>
::testing::AssertionResult SameVec(const vec_t_<double, N>& expected,
                                   const vec_t_<double, N>& actual) {
  for (std::size_t i = 0; i < N; ++i) {
    if (Bits(expected[i]) != Bits(actual[i])) {
      return ::testing::AssertionFailure() << TextOf(actual) << ", not " << TextOf(expected);
    }
  }
  return ::testing::AssertionSuccess();
}

inline ::testing::AssertionResult SameMatrix(const M4& expected, const M4& actual) {
  for (std::size_t i = 0; i < 16; ++i) {
    if (Bits(expected[i]) != Bits(actual[i])) {
      return ::testing::AssertionFailure()
             << "element " << i << " is " << actual[i] << ", not " << expected[i];
    }
  }
  return ::testing::AssertionSuccess();
}

inline constexpr M4 kIdentity = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};

/// The text of the message that a call throws; "" if it throws none.
template <class TCall> std::string Thrown(TCall call) {
  try {
    call();
  } catch (const TZxMessage& message) {
    return message.GetText();
  }
  return "";
}

/// Numbers from a fixed seed, the same everywhere.
class TRandom {
public:
  explicit TRandom(std::uint64_t seed) : m_State(seed) {}

  std::uint32_t Next() {
    m_State = m_State * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::uint32_t>(m_State >> 32);
  }
  int Below(int n) { return static_cast<int>(Next() % static_cast<std::uint32_t>(n)); }
  double Between(double low, double high) { return low + (high - low) * (Next() / 4294967296.0); }
  V4 Vec(double low, double high) {
    V4 v;
    for (std::size_t i = 0; i < 4; ++i) {
      v[i] = Between(low, high);
    }
    return v;
  }
  M4 Matrix(double low, double high) {
    M4 m;
    for (std::size_t i = 0; i < 16; ++i) {
      m[i] = Between(low, high);
    }
    return m;
  }

private:
  std::uint64_t m_State;
};

} // namespace zx_test
