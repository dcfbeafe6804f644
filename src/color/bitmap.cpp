// SPDX-License-Identifier: MIT
#include "color/bitmap.h"

#include "color/debug_level.h"
#include "color/nearest/nearest.h"
#include "raxel/color.h"

namespace color {

uint64_t bytesPerLine(uint32_t width, int16_t depth) {
  if (depth < 1) return 0;
  const uint64_t bits = uint64_t{width} * static_cast<uint64_t>(depth);
  const uint64_t bytes = bits / 8 + (bits % 8 != 0 ? 1 : 0);
  return (bytes + 3) / 4 * 4;
}

uint64_t bitmapSize(uint32_t width, uint32_t height, int16_t depth) {
  const uint64_t line = bytesPerLine(width, depth);
  if (height != 0 && line > UINT64_MAX / height) return UINT64_MAX;
  return line * height;
}

namespace {

// A pixel's first byte in its row and the distance of its first bit from the byte's top bit.
struct Place {
  uint64_t byte;
  uint32_t bit;
};

Place placeOf(uint32_t x, int16_t depth) {
  const uint64_t bits = uint64_t{x} * static_cast<uint64_t>(depth);
  return {bits / 8, static_cast<uint32_t>(bits % 8)};
}

uint8_t byteAt(std::span<const uint8_t> row, uint64_t at) {
  return at < row.size() ? row.data()[at] : uint8_t{0};
}

void putByte(std::span<uint8_t> row, uint64_t at, uint32_t value) {
  if (at < row.size()) row.data()[at] = static_cast<uint8_t>(value);
}

// The word to store: through the map, as the nearest entry of an indexed destination's table, or as
// it came.
uint32_t storedValue(int16_t depth, uint32_t value, const PixelTarget &target) {
  if (target.map.data() != nullptr) return value < target.map.size() ? target.map[value] : 0;
  if (target.table.data() == nullptr || depth >= 24) return value;
  const auto channel = [value](int shift) { return static_cast<int16_t>(value >> shift & 255); };
  // A count is a signed 16-bit number to the search: from 32768 on there are no entries.
  return static_cast<uint32_t>(
      nearest(channel(24), channel(16), channel(8), target.table, static_cast<int16_t>(target.count)));
}

// The RGB word to store at 24 or 32 bits: an entry of the table that the map has named, black when
// the map names none of its entries; without a map the value's own bytes.
uint32_t storedRgb(uint32_t stored, const PixelTarget &target) {
  if (target.table.data() == nullptr || target.map.data() == nullptr) return stored;
  if (stored >= target.count) return 0;
  const uint64_t at = uint64_t{stored} * 3;
  return packRgb(byteAt(target.table, at), byteAt(target.table, at + 1), byteAt(target.table, at + 2));
}

}  // namespace

uint32_t getPixel(std::span<const uint8_t> row, uint32_t x, int16_t depth) {
  if (!isPixelDepth(depth)) return 0;
  const Place at = placeOf(x, depth);
  const uint8_t first = byteAt(row, at.byte);
  if (depth == 1) return first >> (7 - at.bit) & 1u;
  if (depth == 4) return at.bit == 4 ? first & 15u : first >> 4u;
  if (depth == 8) return first;
  const uint32_t rgb = packRgb(first, byteAt(row, at.byte + 1), byteAt(row, at.byte + 2));
  return depth == 24 ? rgb : rgb | byteAt(row, at.byte + 3);
}

void setPixel(std::span<uint8_t> row, uint32_t x, int16_t depth, uint32_t value,
              const PixelTarget &target) {
  if (!isPixelDepth(depth)) return;
  const Place at = placeOf(x, depth);
  const uint32_t v = storedValue(depth, value, target);
  const uint32_t first = byteAt(row, at.byte);
  if (depth == 1) {
    const uint32_t mask = 0x80u >> at.bit;
    putByte(row, at.byte, (v & 1) != 0 ? first | mask : first & ~mask);
  } else if (depth == 4) {
    putByte(row, at.byte, at.bit == 0 ? (first & 0x0Fu) | (v & 15) << 4 : (first & 0xF0u) | (v & 15));
  } else if (depth == 8) {
    putByte(row, at.byte, v);
  } else {
    const uint32_t rgb = storedRgb(v, target);
    putByte(row, at.byte, rgb >> 24);
    putByte(row, at.byte + 1, rgb >> 16);
    putByte(row, at.byte + 2, rgb >> 8);
    if (depth == 32) putByte(row, at.byte + 3, target.table.data() != nullptr ? 0 : v);
  }
}

namespace {

// The exported pixel calls know no block size: the host answers for the address.
constexpr size_t kUnbounded = SIZE_MAX / 8;

// The distance to row y, for a stride of either sign.
int64_t rowOffset(int32_t bytesPerLine, uint32_t y) {
  return int64_t{bytesPerLine} * y;
}

}  // namespace

}  // namespace color

// Both calls answer what fits in their 32-bit results: the number modulo 2^32.
int32_t rlBytesPerLine(uint32_t width, int16_t depth) {
  return static_cast<int32_t>(static_cast<uint32_t>(color::bytesPerLine(width, depth)));
}

uint32_t rlCalcNewSize(uint32_t width, uint32_t height, int16_t depth) {
  return static_cast<uint32_t>(color::bytesPerLine(width, depth)) * height;
}

uint32_t rlGetPixel(const uint8_t *bits, int32_t bytesPerLine, uint32_t x, uint32_t y, int16_t depth) {
  if (bits == nullptr) return 0;
  return color::getPixel({bits + color::rowOffset(bytesPerLine, y), color::kUnbounded}, x, depth);
}

int32_t rlSetPixel(uint8_t *bits, int32_t bytesPerLine, uint32_t x, uint32_t y, int16_t depth,
                   uint32_t value, const uint32_t *map, const uint8_t *table, uint16_t count) {
  if (bits == nullptr) return 0;
  color::PixelTarget target;
  if (map != nullptr) target.map = {map, color::kUnbounded};
  if (table != nullptr) target.table = {table, size_t{count} * 3};
  target.count = count;
  if (color::printsPixels()) color::printPlace(x, y);
  color::setPixel({bits + color::rowOffset(bytesPerLine, y), color::kUnbounded}, x, depth, value, target);
  return 0;
}
