#pragma once

#include <cstdint>

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace Zx3D {

/// Within its scope an invalid operation, a division by zero or an overflow neither traps nor
/// raises its flag for the host: lanes without a pixel or vertex hold arbitrary numbers, whose
/// results are discarded. Rounding stays as the host has set it.
class TQuietFloats {
public:
  enum class TScope {
    Routine, ///< writes the control word only for a host that traps, and where a flag is new
    Draw,    ///< has the flags up, so that no routine within finds a new one: a write costs it more
  };

#if defined(__x86_64__)
  explicit TQuietFloats(TScope scope = TScope::Routine) : m_Before(_mm_getcsr()) {
    const unsigned int wanted = scope == TScope::Draw ? kMasks | kFlags : kMasks;
    if ((m_Before & wanted) != wanted) {
      _mm_setcsr(m_Before | wanted);
    }
    // Keeps the compiler from moving loads above this and stores below the end.
    __asm__ volatile("" ::: "memory");
  }
  ~TQuietFloats() {
    __asm__ volatile("" ::: "memory");
    const unsigned int after = _mm_getcsr();
    if (((after ^ m_Before) & (kMasks | kFlags)) != 0) {
      _mm_setcsr((after & ~(kMasks | kFlags)) | (m_Before & (kMasks | kFlags)));
    }
  }
#elif defined(__aarch64__)
  explicit TQuietFloats(TScope = TScope::Routine) : m_Control(Control()), m_Status(Status()) {
    if ((m_Control & kTraps) != 0) {
      SetControl(m_Control & ~kTraps);
    }
    __asm__ volatile("" ::: "memory");
  }
  ~TQuietFloats() {
    __asm__ volatile("" ::: "memory");
    const std::uint64_t after = Status();
    if (((after ^ m_Status) & kFlags) != 0) {
      SetStatus((after & ~kFlags) | (m_Status & kFlags));
    }
    if ((m_Control & kTraps) != 0) {
      SetControl(m_Control);
    }
  }
#else
#error "how this processor keeps its floating point exceptions is not known"
#endif
  TQuietFloats(const TQuietFloats&) = delete;
  TQuietFloats& operator=(const TQuietFloats&) = delete;

private:
#if defined(__x86_64__)
  static constexpr unsigned int kFlags =
      _MM_EXCEPT_INVALID | _MM_EXCEPT_DIV_ZERO | _MM_EXCEPT_OVERFLOW;
  static constexpr unsigned int kMasks = _MM_MASK_INVALID | _MM_MASK_DIV_ZERO | _MM_MASK_OVERFLOW;

  unsigned int m_Before;
#elif defined(__aarch64__)
  static constexpr std::uint64_t kFlags = 7;      // invalid, division by zero, overflow
  static constexpr std::uint64_t kTraps = 7 << 8; // of the same; many processors have none

  static std::uint64_t Control() {
    std::uint64_t word;
    __asm__ volatile("mrs %0, fpcr" : "=r"(word));
    return word;
  }
  static std::uint64_t Status() {
    std::uint64_t word;
    __asm__ volatile("mrs %0, fpsr" : "=r"(word));
    return word;
  }
  static void SetControl(std::uint64_t word) { __asm__ volatile("msr fpcr, %0" : : "r"(word)); }
  static void SetStatus(std::uint64_t word) { __asm__ volatile("msr fpsr, %0" : : "r"(word)); }

  std::uint64_t m_Control;
  std::uint64_t m_Status;
#endif
};

} // namespace Zx3D
