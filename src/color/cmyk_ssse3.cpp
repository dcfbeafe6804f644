// SPDX-License-Identifier: MIT
#include "color/cmyk.h"

#if defined(RAXEL_HAS_SSSE3)

namespace color {

namespace {

using runtime::loadSixteen;
using runtime::storeSixteen;

// The pixels go in four at a time and are stored with four bytes more. Those have been read, and two more
// pixels follow to write them again: with fewer than these six the loops end.
constexpr size_t kLeast = 6;

RAXEL_SSSE3 inline void storeColors(uint8_t *out, __m128i four) {
  constexpr char kNone = -128;
  const __m128i colors = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, kNone, kNone, kNone, kNone);
  storeSixteen(out, _mm_shuffle_epi8(four, colors));
}

}  // namespace

RAXEL_SSSE3 void cmykToRgbSsse3(uint8_t *pixels, size_t count) {
  const __m128i black = _mm_setr_epi8(3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15);
  const __m128i ones = _mm_set1_epi8(-1);
  uint8_t *out = pixels;
  const uint8_t *in = pixels;
  for (; count >= kLeast; count -= 4, in += 16, out += 12) {
    const __m128i inks = loadSixteen(in);
    const __m128i larger = _mm_max_epu8(inks, _mm_shuffle_epi8(inks, black));
    storeColors(out, _mm_xor_si128(larger, ones));
  }
  cmykToRgbFrom(in, out, count);
}

RAXEL_SSSE3 void dropAlphaSsse3(uint8_t *pixels, size_t count) {
  uint8_t *out = pixels;
  const uint8_t *in = pixels;
  for (; count >= kLeast; count -= 4, in += 16, out += 12) storeColors(out, loadSixteen(in));
  dropAlphaFrom(in, out, count);
}

}  // namespace color

#endif
