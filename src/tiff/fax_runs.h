// Run lengths and changing elements in packed rows, 64 pixels at a time. Pixels are bits, the first
// of a byte in its highest bit; 1 is white and 0 is black.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

namespace tiff {

enum Colour : uint32_t { kWhite = 0, kBlack = 1 };

constexpr Colour opposite(Colour colour) {
  return colour == kWhite ? kBlack : kWhite;
}

// The 64 pixels from byte `at` on, the first in the highest bit; pixels past the row are 0.
inline uint64_t pixels64(std::span<const uint8_t> row, size_t at) {
  uint64_t word = 0;
  if (at + 8 <= row.size()) {
    std::memcpy(&word, row.data() + at, 8);
  } else if (at < row.size()) {
    std::memcpy(&word, row.data() + at, row.size() - at);
  }
  if constexpr (std::endian::native == std::endian::little) word = __builtin_bswap64(word);
  return word;
}

// The first pixel at or after `from` that has not this colour, or `width` when there is none.
inline uint32_t findOther(std::span<const uint8_t> row, uint32_t from, uint32_t width, Colour colour) {
  const uint64_t same = colour == kWhite ? ~uint64_t{0} : 0;
  uint64_t skipped = ~uint64_t{0} >> from % 8;  // clears the pixels before `from` in its byte
  for (size_t at = from / 8; at * 8 < width; at += 8) {
    const uint64_t other = (pixels64(row, at) ^ same) & skipped;
    if (other != 0) {
      const uint64_t found = at * 8 + static_cast<uint64_t>(std::countl_zero(other));
      return found < width ? static_cast<uint32_t>(found) : width;
    }
    skipped = ~uint64_t{0};
  }
  return width;
}

inline Colour colourAt(std::span<const uint8_t> row, uint32_t pixel) {
  return (row[pixel / 8] >> (7 - pixel % 8) & 1) != 0 ? kWhite : kBlack;
}

}  // namespace tiff
