// Which neighbouring bytes are equal, as a mask of bits: what the PackBits coder finds its runs with.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

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

// Eight bits, one for each pair of the 9 bytes at `from`. Of x, the bytes of 8 pairs combined with
// exclusive or, those that are 0 stand for equal pairs: adding 7F to the low seven bits carries into
// the eighth unless all are 0.
inline uint32_t equalPairs8(const uint8_t *from) {
  constexpr uint64_t kLow7 = 0x7F7F7F7F7F7F7F7F;
  uint64_t a;
  uint64_t b;
  std::memcpy(&a, from, 8);
  std::memcpy(&b, from + 1, 8);
  const uint64_t x = a ^ b;
  const uint64_t zeros = ~(((x & kLow7) + kLow7) | x | kLow7) >> 7;  // 01 for every equal pair
  // The multiplication moves the eight bits side by side into the top byte, byte 0 lowest.
  constexpr uint64_t kGather =
      std::endian::native == std::endian::little ? 0x0102040810204080 : 0x8040201008040201;
  return static_cast<uint32_t>(zeros * kGather >> 56);
}

inline EqualMask equalMaskPlain(const uint8_t *from) {
  EqualMask mask{0, 0};
  for (uint32_t i = 0; i < 8; ++i) {
    mask.low |= uint64_t{equalPairs8(from + 8 * i)} << 8 * i;
    mask.high |= uint64_t{equalPairs8(from + 64 + 8 * i)} << 8 * i;
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
