#pragma once

#include <xmmintrin.h>

namespace Zx3D {

/// For the time of a scope an invalid operation, a division by zero or an overflow neither traps
/// nor leaves its flag: lanes that no pixel or vertex stands in hold any numbers, and what is
/// worked out from them is dropped. Rounding stays as the host has set it.
class TQuietFloats {
public:
  enum class TScope {
    Routine, ///< writes the control word only for a host that traps, and where a flag is new
    Draw,    ///< has the flags up, so that no routine within finds a new one: a write costs it more
  };

  explicit TQuietFloats(TScope scope = TScope::Routine) : m_Before(_mm_getcsr()) {
    const unsigned int wanted = scope == TScope::Draw ? kMasks | kFlags : kMasks;
    if ((m_Before & wanted) != wanted) {
      _mm_setcsr(m_Before | wanted);
    }
    // No load moves to before this, no store to behind the end.
    __asm__ volatile("" ::: "memory");
  }
  ~TQuietFloats() {
    __asm__ volatile("" ::: "memory");
    const unsigned int after = _mm_getcsr();
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
