// SPDX-License-Identifier: MIT
#include "tiff/swap.h"

#include <utility>

#include "runtime/ssse3.h"

namespace tiff {

void swapRedBluePlain(std::span<uint8_t> pixels) {
  uint8_t *p = pixels.data();
  for (size_t n = pixels.size() / 3; n > 0; --n, p += 3) std::swap(p[0], p[2]);
}

#if defined(RAXEL_HAS_SSSE3)
namespace {

using runtime::loadSixteen;
using runtime::storeSixteen;

// Sixteen pixels, 48 bytes, are three registers. Two pixels lie across the registers' borders: pixel
// 5 has its blue in byte 15 of the first, pixel 10 its blue and green in bytes 14 and 15 of the
// second. All the rest is a shuffle inside each register.
//
//   a  b0 g0 r0 b1 ... b4 g4 r4 b5
//   b  g5 r5 b6 g6 r6 ... r9 b10 g10
//   c  r10 b11 g11 r11 ... b15 g15 r15
//
// The pixels done, in bytes.
RAXEL_SSSE3 size_t swapBlocks(uint8_t *p, size_t n) {
  constexpr char kZ = -128;  // the shuffle puts a zero there
  const __m128i a0 = _mm_setr_epi8(2, 1, 0, 5, 4, 3, 8, 7, 6, 11, 10, 9, 14, 13, 12, kZ);
  const __m128i b0 = _mm_setr_epi8(0, kZ, 4, 3, 2, 7, 6, 5, 10, 9, 8, 13, 12, 11, kZ, 15);
  const __m128i c0 = _mm_setr_epi8(kZ, 3, 2, 1, 6, 5, 4, 9, 8, 7, 12, 11, 10, 15, 14, 13);
  const __m128i red5 = _mm_setr_epi8(kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, 1);
  const __m128i blue5 = _mm_setr_epi8(kZ, 15, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ);
  const __m128i red10 = _mm_setr_epi8(kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, 0, kZ);
  const __m128i blue10 = _mm_setr_epi8(14, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ, kZ);
  size_t done = 0;
  for (; done + 48 <= n; done += 48, p += 48) {
    const __m128i a = loadSixteen(p);
    const __m128i b = loadSixteen(p + 16);
    const __m128i c = loadSixteen(p + 32);
    storeSixteen(p, _mm_or_si128(_mm_shuffle_epi8(a, a0), _mm_shuffle_epi8(b, red5)));
    storeSixteen(p + 16, _mm_or_si128(_mm_shuffle_epi8(b, b0), _mm_or_si128(_mm_shuffle_epi8(a, blue5),
                                                                            _mm_shuffle_epi8(c, red10))));
    storeSixteen(p + 32, _mm_or_si128(_mm_shuffle_epi8(c, c0), _mm_shuffle_epi8(b, blue10)));
  }
  return done;
}

}  // namespace

void swapRedBlue(std::span<uint8_t> pixels) {
  const size_t done = __builtin_cpu_supports("ssse3") ? swapBlocks(pixels.data(), pixels.size()) : 0;
  swapRedBluePlain(pixels.subspan(done));
}
#else
void swapRedBlue(std::span<uint8_t> pixels) {
  swapRedBluePlain(pixels);
}
#endif

}  // namespace tiff
