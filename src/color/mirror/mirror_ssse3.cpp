// SPDX-License-Identifier: MIT
#include "color/mirror/mirror.h"

#if defined(RAXEL_HAS_SSSE3)

namespace color {

using runtime::loadSixteen;
using runtime::storeSixteen;

RAXEL_SSSE3 void mirrorBytesSsse3(uint8_t *left, uint8_t *right, size_t n) {
  const __m128i turned = _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
  for (; n >= 16; n -= 16, left += 16) {
    right -= 16;
    const __m128i first = loadSixteen(left);
    const __m128i last = loadSixteen(right);
    storeSixteen(left, _mm_shuffle_epi8(last, turned));
    storeSixteen(right, _mm_shuffle_epi8(first, turned));
  }
  mirrorBytesPlain(left, right, n);
}

RAXEL_SSSE3 void mirrorTriplesSsse3(uint8_t *left, uint8_t *right, size_t n) {
  // Five pixels and a byte that stays: the last of the left 16, the first of the right ones. It belongs
  // to a sixth pixel of the same stretch.
  constexpr char kStays = -128;
  const __m128i toLeft = _mm_setr_epi8(13, 14, 15, 10, 11, 12, 7, 8, 9, 4, 5, 6, 1, 2, 3, kStays);
  const __m128i toRight = _mm_setr_epi8(kStays, 12, 13, 14, 9, 10, 11, 6, 7, 8, 3, 4, 5, 0, 1, 2);
  const __m128i lastByte = _mm_setr_epi8(0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -1);
  const __m128i firstByte = _mm_setr_epi8(-1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
  if (n >= 6) {
    __m128i first = loadSixteen(left);
    __m128i last = loadSixteen(right - 16);
    for (bool more = true; more; left += 15, right -= 15) {
      n -= 5;
      more = n >= 6;
      // The next bytes are loaded before these are stored: a load that meets a byte of a store just made
      // waits for it.
      const __m128i nextFirst = more ? loadSixteen(left + 15) : first;
      const __m128i nextLast = more ? loadSixteen(right - 31) : last;
      storeSixteen(left, _mm_or_si128(_mm_shuffle_epi8(last, toLeft), _mm_and_si128(first, lastByte)));
      storeSixteen(right - 16,
                   _mm_or_si128(_mm_shuffle_epi8(first, toRight), _mm_and_si128(last, firstByte)));
      first = nextFirst;
      last = nextLast;
    }
  }
  mirrorTriplesPlain(left, right, n);
}

RAXEL_SSSE3 void mirrorWordsSsse3(uint8_t *left, uint8_t *right, size_t n) {
  for (; n >= 4; n -= 4, left += 16) {
    right -= 16;
    const __m128i first = loadSixteen(left);
    const __m128i last = loadSixteen(right);
    storeSixteen(left, _mm_shuffle_epi32(last, 0x1B));
    storeSixteen(right, _mm_shuffle_epi32(first, 0x1B));
  }
  mirrorWordsPlain(left, right, n);
}

}  // namespace color

#endif
