#include "color/cmyk.h"

#if defined(RAXEL_HAS_SHUFFLE)

#include <tmmintrin.h>

namespace color {

__attribute__((target("ssse3"))) void cmykToRgbSsse3(uint8_t *pixels, size_t count) {
  const __m128i black = _mm_setr_epi8(3, 3, 3, 3, 7, 7, 7, 7, 11, 11, 11, 11, 15, 15, 15, 15);
  constexpr char kNone = -128;
  const __m128i colours = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, kNone, kNone, kNone, kNone);
  const __m128i ones = _mm_set1_epi8(-1);
  uint8_t *out = pixels;
  const uint8_t *in = pixels;
  // Four pixels are stored with four bytes more. Those have been read, and two more pixels follow to
  // write them again.
  for (; count >= 6; count -= 4, in += 16, out += 12) {
    const __m128i inks = _mm_loadu_si128(static_cast<const __m128i_u *>(static_cast<const void *>(in)));
    const __m128i larger = _mm_max_epu8(inks, _mm_shuffle_epi8(inks, black));
    const __m128i rgb = _mm_shuffle_epi8(_mm_xor_si128(larger, ones), colours);
    _mm_storeu_si128(static_cast<__m128i_u *>(static_cast<void *>(out)), rgb);
  }
  cmykToRgbFrom(in, out, count);
}

}  // namespace color

#endif
