// SPDX-License-Identifier: MIT
// What functions of Vectors::kAvx512 (see kernels.h) are compiled for, and what they share.
#pragma once

#if defined(__x86_64__)

#include <immintrin.h>

#define RAXEL_HAS_AVX512 1
#define RAXEL_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl,avx512vbmi,avx512bitalg")))

namespace color {

// Two instructions in their masked forms, of all elements: GCC 12 warns of the unset variable in its own
// unmasked ones (its bug 105593). What comes out is the same.

// Every byte that an index names.
RAXEL_AVX512 inline __m512i permute(__m512i index, __m512i bytes) {
  return _mm512_maskz_permutexvar_epi8(~__mmask64{0}, index, bytes);
}

// Sixteen bytes four times.
RAXEL_AVX512 inline __m512i spread(__m128i sixteen) {
  return _mm512_maskz_broadcast_i32x4(static_cast<__mmask16>(~0), sixteen);
}

}  // namespace color

#endif
