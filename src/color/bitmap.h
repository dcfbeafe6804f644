// SPDX-License-Identifier: MIT
// Rows of pixels and single pixels at every depth.
//
//   depth  pixels in a byte or bytes a pixel                        value word
//       1  8 in a byte, the leftmost in the most significant bit    the index
//       4  2 in a byte, the left one in the high nibble             the index
//       8  1 index byte                                             the index
//      24  red, green, blue                                         red << 24 | green << 16 | blue << 8
//      32  red, green, blue, fourth byte                            as 24 bits, | fourth byte
//
// Any other depth reads as 0 and writes nothing. Rows follow one another from row 0 on, each padded
// to a multiple of 4 bytes.
//
// Here a row is a span from the row's first byte to the end of its block, so that no access can
// leave the block: bytes past it read as 0 and are not written.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

namespace color {

// Bytes of one row, and of all rows. Exact: a 32-bit width needs up to 35 bits, all rows up to 67, of
// which what exceeds 64 bits is answered as the largest number. A depth below 1 has no bytes.
uint64_t bytesPerLine(uint32_t width, int16_t depth);
uint64_t bitmapSize(uint32_t width, uint32_t height, int16_t depth);

inline bool isPixelDepth(int16_t depth) {
  return depth == 1 || depth == 4 || depth == 8 || depth == 24 || depth == 32;
}

// Row y of a block, empty when it lies past the block's end.
template <class Byte>
std::span<Byte> rowAt(std::span<Byte> block, uint64_t bytesPerLine, uint64_t y) {
  uint64_t at = 0;
  if (__builtin_mul_overflow(bytesPerLine, y, &at)) return {};
  return block.subspan(static_cast<size_t>(std::min<uint64_t>(at, block.size())));
}

constexpr uint32_t packRgb(uint8_t red, uint8_t green, uint8_t blue) {
  return uint32_t{red} << 24 | uint32_t{green} << 16 | uint32_t{blue} << 8;
}

// The value word of pixel x.
uint32_t getPixel(std::span<const uint8_t> row, uint32_t x, int16_t depth);

// How value words turn into what is stored. A missing map or table has no address; a table is cut at
// its count.
struct PixelTarget {
  std::span<const uint32_t> map;   // from a value word to an index or an RGB word
  std::span<const uint8_t> table;  // 3-byte entries of the destination
  uint16_t count = 0;              // entries of the table
};

// Sets pixel x.
void setPixel(std::span<uint8_t> row, uint32_t x, int16_t depth, uint32_t value, const PixelTarget &target);

}  // namespace color
