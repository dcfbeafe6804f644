// SPDX-License-Identifier: MIT
// Which neighbouring bytes are equal, as a mask of bits: what the PackBits coder finds its runs with.
#pragma once

#include <cstdint>
#include <cstring>

#include "tiff/byte_masks.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tiff {

// Bit i is set when byte i equals byte i + 1: bits 0 to 63 in `low`, 64 to 127 in `high`.
struct EqualMask {
  uint64_t low;
  uint64_t high;
};

constexpr uint32_t kEqualMaskReads = 129;  // bytes, all of which must be readable

inline EqualMask equalMaskPlain(const uint8_t *from) {
  EqualMask mask{0, 0};
  for (uint32_t i = 0; i < 8; ++i) {
    const uint8_t *low = from + 8 * i;
    const uint8_t *high = low + 64;
    mask.low |= uint64_t{zeroBytes8(bytes8(low) ^ bytes8(low + 1))} << 8 * i;
    mask.high |= uint64_t{zeroBytes8(bytes8(high) ^ bytes8(high + 1))} << 8 * i;
  }
  return mask;
}

#if defined(__SSE2__)

inline uint64_t equalPairs64(const uint8_t *from) {
  uint64_t mask = 0;
  for (uint32_t i = 0; i < 4; ++i) {
    __m128i a;
    __m128i b;
    std::memcpy(&a, from + 16 * i, 16);
    std::memcpy(&b, from + 16 * i + 1, 16);
    mask |= uint64_t{static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(a, b)))} << 16 * i;
  }
  return mask;
}

inline EqualMask equalMask(const uint8_t *from) {
  return {equalPairs64(from), equalPairs64(from + 64)};
}

#else

inline EqualMask equalMask(const uint8_t *from) {
  return equalMaskPlain(from);
}

#endif

}  // namespace tiff
