#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <limits>

// Where the arguments of fuzzed drawing calls come from: numbers, and memory to read.

namespace fuzz_render {

/// Takes numbers of all kinds from the front of the input; zeros when it is used up.
class TInput {
public:
  TInput(const std::uint8_t* data, std::size_t size) : m_At(data), m_End(data + size) {}

  bool IsEmpty() const { return m_At == m_End; }
  unsigned int Byte() { return m_At == m_End ? 0 : *m_At++; }
  bool Bool() { return Byte() & 1; }
  unsigned int Below(unsigned int n) { return Byte() % n; }

  template <class T> T Raw() {
    std::uint8_t bytes[sizeof(T)] = {}; // zeros where the input has ended
    const auto rest = static_cast<std::size_t>(m_End - m_At);
    const std::size_t count = rest < sizeof(T) ? rest : sizeof(T);
    std::memcpy(bytes, m_At, count);
    m_At += count;
    T value;
    std::memcpy(&value, bytes, sizeof(T));
    return value;
  }

  int Int() {
    static constexpr int kSpecial[8] = {0, 1, -1, 33, 0x7FFFFFFF, -0x7FFFFFFF - 1, 65536, -40};
    const unsigned int kind = Byte();
    return kind < 192   ? static_cast<int>(kind % 48) - 8
           : kind < 248 ? kSpecial[kind % 8]
                        : Raw<int>();
  }

  double Number() {
    using TLimits = std::numeric_limits<double>;
    static constexpr double kSpecial[16] = {0,
                                            -0.0,
                                            1,
                                            -1,
                                            TLimits::infinity(),
                                            -TLimits::infinity(),
                                            TLimits::quiet_NaN(),
                                            1e300,
                                            -1e300,
                                            1e-300,
                                            2147483648.0,
                                            -2147483649.0,
                                            0.5,
                                            1e16,
                                            TLimits::denorm_min(),
                                            4e9};
    const unsigned int kind = Byte();
    return kind < 208   ? (static_cast<double>(kind) - 104) / 52
           : kind < 248 ? kSpecial[kind % 16]
                        : Raw<double>();
  }
  float Float() { return static_cast<float>(Number()); }

  /// One of the interface's enum values, or any number.
  unsigned int Enum() {
    static constexpr std::uint16_t kEnums[] = {
        0,     1,     2,     3,     4,     5,     6,     7,     8,     9,     256,   512,   513,
        514,   515,   516,   517,   518,   519,   770,   771,   1024,  1028,  1029,  1032,  1280,
        2304,  2305,  2816,  2880,  2884,  2885,  2886,  2896,  2897,  2898,  2899,  2900,  2901,
        2902,  2903,  2912,  2914,  2915,  2916,  2917,  2918,  2929,  2930,  2931,  2960,  2961,
        2964,  2965,  2966,  2977,  2978,  2982,  2983,  2984,  3042,  3106,  3107,  3152,  3312,
        3313,  3314,  3315,  3316,  3317,  3328,  3330,  3331,  3332,  3333,  3379,  3553,  4100,
        4353,  4354,  4608,  4609,  4610,  4611,  4612,  4613,  4614,  4615,  4616,  4617,  5120,
        5121,  5123,  5125,  5126,  5130,  5386,  5632,  5633,  5634,  5888,  5889,  5890,  6403,
        6407,  6408,  6409,  6410,  6913,  6914,  7424,  7425,  7680,  7681,  7682,  7683,  8448,
        8704,  8960,  9728,  9729,  10240, 10241, 10242, 10243, 10496, 10497, 16384, 16385, 16387,
        16391, 16392, 32823, 32884, 32885, 32886, 32888, 33069, 33071, 33272, 33319, 33984, 33985,
        33991, 33992, 34055, 34056, 34338, 34339, 34340, 34341, 34660, 34661, 34922, 34962, 34963,
        34964, 34975, 35003, 35004, 35051, 35052, 35053, 37074, 37568, 37600};
    const unsigned int kind = Byte();
    constexpr unsigned int count = sizeof(kEnums) / sizeof(kEnums[0]);
    return kind < 250 ? kEnums[kind % count] : Raw<unsigned int>();
  }

  // Several at once: in which order a call's arguments are evaluated is the compiler's choice, and
  // one input has to be the same calls with each.
  template <std::size_t N> std::array<int, N> Ints() {
    return Several<int, N>([this] { return Int(); });
  }
  template <std::size_t N> std::array<double, N> Numbers() {
    return Several<double, N>([this] { return Number(); });
  }
  template <std::size_t N> std::array<float, N> Floats() {
    return Several<float, N>([this] { return Float(); });
  }
  template <std::size_t N> std::array<unsigned int, N> Enums() {
    return Several<unsigned int, N>([this] { return Enum(); });
  }
  template <std::size_t N> std::array<bool, N> Bools() {
    return Several<bool, N>([this] { return Bool(); });
  }

private:
  template <class T, std::size_t N, class TOne> static std::array<T, N> Several(TOne one) {
    std::array<T, N> all{};
    for (T& value : all) {
      value = one();
    }
    return all;
  }

  const std::uint8_t* m_At;
  const std::uint8_t* m_End;
};

/// What the callers of the calls have in memory: never written.
inline constexpr std::size_t kMemorySize = 1 << 15;
alignas(64) inline constexpr std::array<std::uint8_t, kMemorySize> kMemory = [] {
  std::array<std::uint8_t, kMemorySize> bytes{};
  std::uint32_t state = 1;
  for (std::size_t i = 0; i < kMemorySize; ++i) {
    state = state * 1664525 + 1013904223;
    bytes[i] = i % 8 == 7 ? static_cast<std::uint8_t>(0x3F | (state >> 24 & 0x80)) // doubles near 1
                          : static_cast<std::uint8_t>(state >> 24);
  }
  return bytes;
}();

} // namespace fuzz_render
