// SPDX-License-Identifier: MIT
#include "prepare/swap.h"

#if defined(__x86_64__) || defined(__i386__)
#define RAXEL_HAS_SSSE3 1
#include <immintrin.h>
#endif

namespace prepare {

void swapRedBluePlain(const uint8_t *in, uint8_t *out, size_t pixels) {
  for (size_t i = 0; i < pixels; ++i, in += 3, out += 3) {
    const uint8_t first = in[0];
    out[0] = in[2];
    out[1] = in[1];
    out[2] = first;
  }
}

#ifdef RAXEL_HAS_SSSE3
namespace {

// Five pixels (15 bytes) a step: 16 bytes are loaded and stored, and the next step rewrites the last.
__attribute__((target("ssse3"))) void swapFive(const uint8_t *in, uint8_t *out, size_t pixels) {
  const __m128i order = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, 15);
  // Rows of a picture lie one behind the other, where the processor's own looking ahead ends with each
  // page.
  constexpr size_t kAhead = 2048;
  size_t left = pixels;
  for (; left >= 22; left -= 20, in += 60, out += 60) {  // 22: the last load ends within the row
    _mm_prefetch(reinterpret_cast<const char *>(in) + kAhead, _MM_HINT_T0);
    for (int step = 0; step < 4; ++step) {
      const __m128i five = _mm_loadu_si128(reinterpret_cast<const __m128i_u *>(in + 15 * step));
      _mm_storeu_si128(reinterpret_cast<__m128i_u *>(out + 15 * step), _mm_shuffle_epi8(five, order));
    }
  }
  swapRedBluePlain(in, out, left);
}

}  // namespace
#endif

void swapRedBlue(const uint8_t *in, uint8_t *out, size_t pixels) {
#ifdef RAXEL_HAS_SSSE3
  if (__builtin_cpu_supports("ssse3")) return swapFive(in, out, pixels);
#endif
  swapRedBluePlain(in, out, pixels);
}

}  // namespace prepare
