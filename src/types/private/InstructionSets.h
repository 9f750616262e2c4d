// The instruction sets that routines are compiled for, by name, and what the routines ask of them.
// To be included before anything of Highway's in every source that includes Highway.

#ifndef ZX_TYPES_PRIVATE_INSTRUCTIONSETS_H_
#define ZX_TYPES_PRIVATE_INSTRUCTIONSETS_H_

#if defined(HWY_DISABLED_TARGETS) || defined(HIGHWAY_HWY_DETECT_TARGETS_H_)
#error "Highway was included before the list of the instruction sets that it may use"
#endif

// An allow-list, since Highway's own list grows: what the tests do not run is never chosen.
// Portable code stands for a processor that has none of these.
#define ZX_TARGETS_SSE2 HWY_SSE2
#define ZX_TARGETS_SSSE3 HWY_SSSE3
#define ZX_TARGETS_AVX2 HWY_AVX2
#define ZX_TARGETS_AVX3 HWY_AVX3
#define ZX_TARGETS_NEON (HWY_NEON | HWY_NEON_WITHOUT_AES)
#define ZX_TARGETS_PORTABLE (HWY_SCALAR | HWY_EMU128)
#define ZX_TARGETS                                                                                 \
  (ZX_TARGETS_SSE2 | ZX_TARGETS_SSSE3 | ZX_TARGETS_AVX2 | ZX_TARGETS_AVX3 | ZX_TARGETS_NEON |      \
   ZX_TARGETS_PORTABLE)
#define HWY_DISABLED_TARGETS (~(ZX_TARGETS))

#include <cstdint>

#include <hwy/detect_targets.h>

// Targets that older versions of Highway do not have: no bit.
#ifndef HWY_SSE2
#define HWY_SSE2 0
#endif
#ifndef HWY_NEON_WITHOUT_AES
#define HWY_NEON_WITHOUT_AES 0
#endif

static_assert((HWY_TARGETS & ~static_cast<std::int64_t>(ZX_TARGETS)) == 0,
              "routines are compiled for an instruction set that no test runs");

// --- What the target at hand has

// Loads and stores that touch no memory but that of the lanes a mask names, for lanes of 32 and 64
// bits.
#define ZX_HAS_MASKED_ACCESS ((HWY_TARGET & (ZX_TARGETS_AVX2 | ZX_TARGETS_AVX3)) != 0)

// Masks in registers of their own, so that masked access is as fast as any.
#define ZX_HAS_MASK_REGISTERS ((HWY_TARGET & ZX_TARGETS_AVX3) != 0)

// Vectors of one block of 16 bytes: two doubles.
#define ZX_HAS_ONE_BLOCK                                                                           \
  ((HWY_TARGET & (ZX_TARGETS_SSE2 | ZX_TARGETS_SSSE3 | ZX_TARGETS_NEON)) != 0)

// No vectors, but what the compiler makes of plain loops.
#define ZX_IS_PORTABLE ((HWY_TARGET & ZX_TARGETS_PORTABLE) != 0)

#endif
