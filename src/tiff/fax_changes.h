// SPDX-License-Identifier: MIT
// Which bytes of a row hold a change of colour: the others only go on with that of the pixel before.
#pragma once

#include <cstdint>
#include <cstring>

#include "tiff/byte_masks.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tiff {

constexpr uint32_t kChangeChunk = 64;  // bytes

// Bit i is set unless all pixels of chunk[i] have the colour of the last pixel of chunk[i - 1]. All of
// chunk[-1] to chunk[63] must be readable.
inline uint64_t changeMaskPlain(const uint8_t *chunk) {
  constexpr uint64_t kLastPixels = 0x0101010101010101;
  uint64_t changes = 0;
  for (uint32_t i = 0; i < kChangeChunk; i += 8) {
    const uint64_t goingOn = (bytes8(chunk + i - 1) & kLastPixels) * 0xFF;
    changes |= uint64_t{zeroBytes8(bytes8(chunk + i) ^ goingOn) ^ 0xFF} << i;
  }
  return changes;
}

#if defined(__SSE2__)

inline uint64_t changeMask(const uint8_t *chunk) {
  uint64_t old = 0;
  for (uint32_t i = 0; i < kChangeChunk; i += 16) {
    __m128i before;
    __m128i bytes;
    std::memcpy(&before, chunk + i - 1, 16);
    std::memcpy(&bytes, chunk + i, 16);
    const __m128i lastPixels = _mm_and_si128(before, _mm_set1_epi8(1));
    const __m128i goingOn = _mm_sub_epi8(_mm_setzero_si128(), lastPixels);
    const int same = _mm_movemask_epi8(_mm_cmpeq_epi8(bytes, goingOn));
    old |= uint64_t{static_cast<uint32_t>(same)} << i;
  }
  return ~old;
}

#else

inline uint64_t changeMask(const uint8_t *chunk) {
  return changeMaskPlain(chunk);
}

#endif

}  // namespace tiff
