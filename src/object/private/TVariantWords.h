#pragma once

#include <cstdint>
#include <cstring>

// How a variant's payload is written and read. Internal to this directory.
//
// Every write stores whole 64-bit words, merged with the bytes that stay, and every copy moves
// whole words. A processor can't forward a narrow store to a wider load that follows it: copies of
// freshly set values would wait for the store to reach the cache, 5 to 10 ns each.

namespace Zx3D::variant {

/// Bytes from which on a payload lives on the heap: a text with its terminator, or an array.
constexpr std::uint64_t kHeapFrom = 33;

template <class T> inline T Load(const void* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}

inline std::uint64_t LoadWord(const void* from) { return Load<std::uint64_t>(from); }

inline void StoreWord(void* to, std::uint64_t word) { std::memcpy(to, &word, sizeof word); }

inline void* LoadPointer(const unsigned char* value) { return Load<void*>(value); }

inline void StorePointer(unsigned char* value, const void* pointer) {
  StoreWord(value, reinterpret_cast<std::uintptr_t>(pointer));
}

/// Where a payload on the heap lies: its address in the first word, its bytes in the second, of
/// which a text has no use.
inline void StoreBlock(unsigned char* value, const void* block, std::uint64_t bytes) {
  StorePointer(value, block);
  StoreWord(value + 8, bytes);
}

/// Replaces the low `bytes` (1 to 8) bytes of the word at `to`; `word` is 0 above them.
inline void MergeWord(unsigned char* to, std::uint64_t word, std::uint64_t bytes) {
  const std::uint64_t mask = ~std::uint64_t(0) >> (8 * (8 - bytes));
  StoreWord(to, (LoadWord(to) & ~mask) | word);
}

/// The first `words` words from one payload to another. The barrier keeps the compiler from making
/// wider transfers of them, which could not be forwarded.
inline void CopyWords(unsigned char* to, const unsigned char* from, std::uint64_t words) {
  for (std::uint64_t i = 0; i < words; ++i) {
    std::uint64_t word = LoadWord(from + 8 * i);
    __asm__("" : "+r"(word));
    StoreWord(to + 8 * i, word);
  }
}

/// The last `bytes % 8` of `bytes` bytes at `at`, in the low end of a word. Reads nothing outside
/// them; loads that overlap give the same bits twice where they do.
inline std::uint64_t LoadRest(const unsigned char* at, std::uint64_t bytes) {
  const std::uint64_t rest = bytes % 8;
  if (rest == 0) {
    return 0;
  }
  if (bytes > 8) {
    return LoadWord(at + bytes - 8) >> (8 * (8 - rest));
  }
  if (rest >= 4) {
    return Load<std::uint32_t>(at) | std::uint64_t(Load<std::uint32_t>(at + rest - 4))
                                         << (8 * (rest - 4));
  }
  return at[0] | std::uint64_t(at[rest / 2]) << (8 * (rest / 2)) |
         std::uint64_t(at[rest - 1]) << (8 * (rest - 1));
}

/// Stores `bytes` (0 to 32) bytes from outside the payload.
inline void StoreBytes(unsigned char* value, const void* from, std::uint64_t bytes) {
  const unsigned char* const at = static_cast<const unsigned char*>(from);
  CopyWords(value, at, bytes / 8);
  if (bytes % 8 != 0) {
    MergeWord(value + (bytes & ~std::uint64_t(7)), LoadRest(at, bytes), bytes % 8);
  }
}

/// Stores `length` (0 to 31) characters from outside the payload, and a terminator.
inline void StoreText(unsigned char* value, const void* from, std::uint64_t length) {
  const unsigned char* const at = static_cast<const unsigned char*>(from);
  CopyWords(value, at, length / 8);
  MergeWord(value + (length & ~std::uint64_t(7)), LoadRest(at, length), length % 8 + 1);
}

/// Stores the inline text of another payload, `length` (0 to 31) characters with their terminator.
inline void CopyText(unsigned char* value, const unsigned char* from, std::uint64_t length) {
  CopyWords(value, from, length / 8);
  const std::uint64_t last = length & ~std::uint64_t(7);
  const std::uint64_t mask = ~(~std::uint64_t(0) << (8 * (length % 8)));
  MergeWord(value + last, LoadWord(from + last) & mask, length % 8 + 1);
}

/// A copy of up to 32 bytes that may vanish with what a variant is about to let go of.
struct TKeptBytes {
  TKeptBytes(const void* from, std::uint64_t bytes) {
    if (bytes != 0) {
      std::memcpy(Bytes, from, bytes);
    }
  }
  unsigned char Bytes[32];
};

} // namespace Zx3D::variant
