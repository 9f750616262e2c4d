#pragma once

#include <xmmintrin.h>

namespace Zx3D {

/// For the time of a scope an invalid operation, a division by zero or an overflow neither traps
/// nor leaves its flag: lanes that no pixel or vertex stands in hold any numbers, and what is
/// worked out from them is dropped. Rounding stays as the host has set it.
class TQuietFloats {
public:
  TQuietFloats() : m_Before(_mm_getcsr()) {
    if ((m_Before & kMasks) != kMasks) {
      _mm_setcsr(m_Before | kMasks);
    }
    // No load moves to before this, no store to behind the end.
    __asm__ volatile("" ::: "memory");
  }
  ~TQuietFloats() {
    __asm__ volatile("" ::: "memory");
    const unsigned int after = _mm_getcsr();
    // Flags are rarely new: the write is left out then.
    if (((after ^ m_Before) & (kMasks | kFlags)) != 0) {
      _mm_setcsr((after & ~(kMasks | kFlags)) | (m_Before & (kMasks | kFlags)));
    }
  }
  TQuietFloats(const TQuietFloats&) = delete;
  TQuietFloats& operator=(const TQuietFloats&) = delete;

private:
  static constexpr unsigned int kFlags =
      _MM_EXCEPT_INVALID | _MM_EXCEPT_DIV_ZERO | _MM_EXCEPT_OVERFLOW;
  static constexpr unsigned int kMasks = _MM_MASK_INVALID | _MM_MASK_DIV_ZERO | _MM_MASK_OVERFLOW;

  unsigned int m_Before;
};

} // namespace Zx3D
