// SPDX-License-Identifier: MIT
// What functions that shuffle 16 bytes at once are compiled for. A processor is asked for it at run time,
// with __builtin_cpu_supports("ssse3").
#pragma once

#if defined(__x86_64__) || defined(__i386__)

#include <tmmintrin.h>

#include <cstdint>

#define RAXEL_HAS_SSSE3 1
#define RAXEL_SSSE3 __attribute__((target("ssse3")))

namespace runtime {

RAXEL_SSSE3 inline __m128i loadSixteen(const uint8_t *from) {
  return _mm_loadu_si128(static_cast<const __m128i_u *>(static_cast<const void *>(from)));
}

RAXEL_SSSE3 inline void storeSixteen(uint8_t *to, __m128i value) {
  _mm_storeu_si128(static_cast<__m128i_u *>(static_cast<void *>(to)), value);
}

}  // namespace runtime

#endif
