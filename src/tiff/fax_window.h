// SPDX-License-Identifier: MIT
// Rows as the two-dimensional coder reads them: copies in which pixel p is bit p % 8 of byte p / 8, so
// that the next pixels from anywhere are one load and one shift, and the nearest is the lowest bit.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tiff {

// Bytes behind a row's own that must be there too.
constexpr size_t kWindowSlack = 24;

inline uint64_t loadLittle(const uint8_t *from) {
  uint64_t word;
  std::memcpy(&word, from, sizeof word);
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  return word;
}

inline void storeLittle(uint8_t *to, uint64_t word) {
  if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
  std::memcpy(to, &word, sizeof word);
}

// Reverses the bits of each of eight bytes.
inline uint64_t reverseBits(uint64_t bytes) {
  constexpr uint64_t kOnes = 0x5555555555555555;
  constexpr uint64_t kTwos = 0x3333333333333333;
  constexpr uint64_t kFours = 0x0F0F0F0F0F0F0F0F;
  bytes = (bytes >> 1 & kOnes) | (bytes & kOnes) << 1;
  bytes = (bytes >> 2 & kTwos) | (bytes & kTwos) << 2;
  return (bytes >> 4 & kFours) | (bytes & kFours) << 4;
}

// Copies a row. Behind its last pixel the colours alternate, beginning with the other one: so every
// search for a change ends at most two pixels past the width, and what it finds there means the width.
//   from  (width + 7) / 8 bytes      to  kWindowSlack bytes more
inline void copyForWindows(const uint8_t *from, uint32_t width, uint8_t *to) {
  const size_t rowBytes = width / 8 + (width % 8 != 0);
  size_t at = 0;
  for (; at + 8 <= rowBytes; at += 8) storeLittle(to + at, reverseBits(loadLittle(from + at)));
  if (at < rowBytes) {
    uint8_t rest[8] = {};
    std::memcpy(rest, from + at, rowBytes - at);
    storeLittle(to + at, reverseBits(loadLittle(rest)));
  }
  const uint32_t last = uint32_t{to[(width - 1) / 8]} >> (width - 1) % 8 & 1u;
  const uint8_t alternating = ((width & 1) ^ last) != 0 ? 0xAA : 0x55;
  const auto kept = static_cast<uint8_t>((1u << width % 8) - 1);
  uint8_t *end = to + width / 8;
  *end = static_cast<uint8_t>((*end & kept) | (alternating & ~kept));
  std::memset(end + 1, alternating, kWindowSlack - 2);
}

// The pixels of a row from `at` on, nearest lowest, as bits that differ (1) or not (0) from a colour
// given as a word full of it.
inline uint64_t window(const uint8_t *row, uint64_t at, uint64_t same) {
  return (loadLittle(row + at / 8) ^ same) >> at % 8;
}

// The first pixel at or after `at` that differs from the colour; there is one, if only past the width.
inline uint64_t findOther(const uint8_t *row, uint64_t at, uint64_t same) {
  const uint64_t differ = window(row, at, same);
  if (differ != 0) return at + static_cast<uint64_t>(std::countr_zero(differ));
  for (uint64_t byte = at / 8 + 8;; byte += 8) {
    const uint64_t next = loadLittle(row + byte) ^ same;
    if (next != 0) return byte * 8 + static_cast<uint64_t>(std::countr_zero(next));
  }
}

}  // namespace tiff
