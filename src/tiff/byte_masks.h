// SPDX-License-Identifier: MIT
// Eight bytes at once, in a word of 64 bits.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace tiff {

// The bytes at any address as they lie in memory, of which the first is byte 0 below.
inline uint64_t bytes8(const uint8_t *from) {
  uint64_t word;
  std::memcpy(&word, from, sizeof word);
  return word;
}

// Bit i of the result is set when byte i of the word is 0. Adding 7F to the low seven bits of a byte
// carries into its eighth unless all seven are 0.
inline uint32_t zeroBytes8(uint64_t word) {
  constexpr uint64_t kLow7 = 0x7F7F7F7F7F7F7F7F;
  const uint64_t zeros = ~(((word & kLow7) + kLow7) | word | kLow7) >> 7;  // 01 for every byte that is 0
  // The multiplication moves the eight bits side by side into the top byte, byte 0 lowest.
  constexpr uint64_t kGather =
      std::endian::native == std::endian::little ? 0x0102040810204080 : 0x8040201008040201;
  return static_cast<uint32_t>(zeros * kGather >> 56);
}

}  // namespace tiff
