#pragma once

#include <cstdint>
#include <cstring>

// How a variant's payload is written and read. Internal to this directory.
//
// Every write stores whole 64-bit words, merged with the bytes that stay, and every copy loads
// whole words. A processor can't forward a narrow store to a wider load that follows it: copies of
// freshly set values would wait for the store to reach the cache, some 15 ns each.

namespace Zx3D::variant {

/// Bytes from which on a payload lives on the heap: a text with its terminator, or an array.
constexpr std::uint64_t s_HeapFrom = 33;

inline std::uint64_t LoadWord(const void* from) {
  std::uint64_t word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

inline void StoreWord(void* to, std::uint64_t word) { std::memcpy(to, &word, sizeof word); }

template <class T> inline T Load(const void* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

inline void* LoadPointer(const unsigned char* value) { return Load<void*>(value); }

inline void StorePointer(unsigned char* value, const void* pointer) {
  StoreWord(value, reinterpret_cast<std::uintptr_t>(pointer));
}

/// Replaces the low `bytes` (1 to 8) bytes of the word at `to`; `word` is 0 above them.
inline void MergeWord(unsigned char* to, std::uint64_t word, unsigned int bytes) {
  const std::uint64_t mask = ~std::uint64_t(0) >> (8 * (8 - bytes));
  StoreWord(to, (LoadWord(to) & ~mask) | word);
}

/// Up to 32 bytes in registers, so that source and target may overlap.
struct PAYLOAD {
  std::uint64_t Words[4];

  /// Stores the first `bytes` (0 to 32) bytes; those above them must be 0 in their word.
  void Store(unsigned char* value, std::uint64_t bytes) const {
    const std::uint64_t full = bytes / 8;
    for (std::uint64_t i = 0; i < full; ++i) {
      StoreWord(value + 8 * i, Words[i]);
    }
    if (bytes % 8 != 0) {
      MergeWord(value + 8 * full, Words[full], static_cast<unsigned int>(bytes % 8));
    }
  }
};

/// `bytes` (0 to 32) bytes from anywhere, and zeros behind them. Reads nothing else.
inline PAYLOAD LoadPayload(const void* from, std::uint64_t bytes) {
  PAYLOAD payload = {};
  const unsigned char* const at = static_cast<const unsigned char*>(from);
  const std::uint64_t full = bytes / 8;
  for (std::uint64_t i = 0; i < full; ++i) {
    payload.Words[i] = LoadWord(at + 8 * i);
  }
  const std::uint64_t rest = bytes % 8;
  if (rest != 0) {
    std::uint64_t word = 0;
    const unsigned char* const tail = at + 8 * full;
    // Two loads that may overlap give the same bits twice where they do.
    if (full != 0) {
      word = LoadWord(tail + rest - 8) >> (8 * (8 - rest));
    } else if (rest >= 4) {
      word = Load<std::uint32_t>(tail) | std::uint64_t(Load<std::uint32_t>(tail + rest - 4))
                                             << (8 * (rest - 4));
    } else {
      word = tail[0] | std::uint64_t(tail[rest / 2]) << (8 * (rest / 2)) |
             std::uint64_t(tail[rest - 1]) << (8 * (rest - 1));
    }
    payload.Words[full] = word;
  }
  return payload;
}

/// The first `bytes` (0 to 32) bytes of another variant's payload, whose words can all be read.
inline PAYLOAD LoadInline(const unsigned char* value, std::uint64_t bytes) {
  PAYLOAD payload = {};
  const std::uint64_t full = bytes / 8;
  for (std::uint64_t i = 0; i < full; ++i) {
    payload.Words[i] = LoadWord(value + 8 * i);
  }
  if (bytes % 8 != 0) {
    payload.Words[full] = LoadWord(value + 8 * full) & (~std::uint64_t(0) >> (8 * (8 - bytes % 8)));
  }
  return payload;
}

} // namespace Zx3D::variant
