#pragma once

#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <ZxCore3D/types/private/InstructionSets.h>

#include <hwy/highway.h>

/// Runs `check` once for every instruction set that this processor has, the plain one that any
/// processor has among them, and at the end as the library would choose.
template <class Check> void AtEveryInstructionSet(Check check) {
  std::vector<int64_t> targets = hwy::SupportedAndGeneratedTargets();
  if (targets.back() != HWY_EMU128) {
    targets.push_back(HWY_EMU128);
  }
  for (const int64_t target : targets) {
    SCOPED_TRACE(hwy::TargetName(target));
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(target);
    check();
    hwy::SetSupportedTargetsForTest(0);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    if (testing::Test::HasFatalFailure()) {
      return;
    }
  }
  check();
}

/// The NaN that the processor itself makes of 0 * infinity.
inline double DefaultNaN() {
#if defined(__x86_64__)
  return std::bit_cast<double>(0xFFF8000000000000u);
#else // ARM's has no sign
  return std::bit_cast<double>(0x7FF8000000000000u);
#endif
}

/// Holds two arrays against each other bit by bit. With `anyNaN` NaNs with different bits pass:
/// which of two NaNs an operation hands on is the compiler's choice of operand order.
inline testing::AssertionResult SameBits(const double* a, const double* b, std::size_t n,
                                         bool anyNaN = false) {
  for (std::size_t i = 0; i < n; ++i) {
    const auto x = std::bit_cast<std::uint64_t>(a[i]);
    const auto y = std::bit_cast<std::uint64_t>(b[i]);
    if (x != y && !(anyNaN && std::isnan(a[i]) && std::isnan(b[i]))) {
      return testing::AssertionFailure() << "element " << i << ": " << a[i] << " (" << std::hex << x
                                         << ") is not " << b[i] << " (" << y << ")";
    }
  }
  return testing::AssertionSuccess();
}

inline testing::AssertionResult SameBits(const std::vector<double>& a, const std::vector<double>& b,
                                         bool anyNaN = false) {
  if (a.size() != b.size()) {
    return testing::AssertionFailure() << "sizes " << a.size() << " and " << b.size();
  }
  return SameBits(a.data(), b.data(), a.size(), anyNaN);
}

/// Kinds of random input.
enum class Fill { Plain, Sparse, Zeros, Special, Integers };

inline std::vector<double> RandomValues(std::size_t n, Fill kind, std::mt19937_64& random) {
  std::uniform_real_distribution<double> uniform(-1.0, 1.0);
  std::vector<double> values(n);
  for (double& v : values) {
    v = uniform(random);
    const unsigned dice = static_cast<unsigned>(random() % 1000);
    switch (kind) {
    case Fill::Plain:
      break;
    case Fill::Sparse:
      v = dice < 700 ? 0.0 : v;
      break;
    case Fill::Zeros:
      v = dice < 150 ? 0.0 : dice < 300 ? -0.0 : v;
      break;
    case Fill::Integers:
      v = static_cast<double>(dice % 5) - 2.0;
      break;
    case Fill::Special:
      v = dice < 4    ? DefaultNaN()
          : dice < 8  ? std::numeric_limits<double>::infinity()
          : dice < 12 ? -std::numeric_limits<double>::infinity()
          : dice < 20 ? -0.0
          : dice < 30 ? 0.0
          : dice < 34 ? 1e308
          : dice < 38 ? 5e-324
                      : v;
      break;
    }
  }
  return values;
}

inline const char* Name(Fill kind) {
  const char* names[] = {"Plain", "Sparse", "Zeros", "Special", "Integers"};
  return names[static_cast<int>(kind)];
}

constexpr Fill AllFills[] = {Fill::Plain, Fill::Sparse, Fill::Zeros, Fill::Special, Fill::Integers};
