// What functions of Vectors::kSsse3 (see kernels.h) are compiled for, and what they share.
#pragma once

#if defined(__x86_64__) || defined(__i386__)

#include <tmmintrin.h>

#include <cstdint>

#define RAXEL_HAS_SSSE3 1
#define RAXEL_SSSE3 __attribute__((target("ssse3")))

namespace color {

RAXEL_SSSE3 inline __m128i loadSixteen(const uint8_t *from) {
  return _mm_loadu_si128(static_cast<const __m128i_u *>(static_cast<const void *>(from)));
}

RAXEL_SSSE3 inline void storeSixteen(uint8_t *to, __m128i value) {
  _mm_storeu_si128(static_cast<__m128i_u *>(static_cast<void *>(to)), value);
}

}  // namespace color

#endif
