// SPDX-License-Identifier: MIT
// Pixels fill bytes from the top bit down, and bits are numbered from the lowest one up.
#include "color/scale/bit_fields.h"

#include <algorithm>

namespace color {

namespace {

constexpr uint32_t kGroup = 64;      // pixels in a group, and in eight bytes of a group of fields
constexpr uint32_t kMostFields = 8;  // that a byte is put together from

// How far the eight pixels of a byte come to lie from where eight neighbours would: pixel k comes from
// the column of the first one and k and `offset`. Widening repeats columns, so that offsets fall from 0;
// narrowing leaves some out, and they rise.
int32_t offsetOf(std::span<const uint32_t> columns, size_t first, size_t k) {
  return static_cast<int32_t>(columns[first + k] - columns[first]) - static_cast<int32_t>(k);
}

// How many bytes hold the columns of some pixels.
uint32_t bytesWithin(std::span<const uint32_t> columns, size_t first, size_t n) {
  const size_t last = std::min(first + n, columns.size()) - 1;
  return columns[last] / 8 - columns[first] / 8 + 1;
}

// Bytes are put together from fields of eight neighbours, a field for each offset from the highest down.
// False for an offset that the shape does not know.
bool fillFields(uint8_t (*index)[64], const GroupShape &shape, std::span<const uint32_t> columns,
                uint32_t first) {
  // A window of eight source bytes, the first of them on top, serves eight bytes, or four of them.
  const uint32_t perWindow = kGroup / shape.windows;
  const auto fields = static_cast<int32_t>(shape.indexes - shape.windows - 1);
  uint8_t(&places)[64] = index[shape.windows];
  for (size_t i = 0; i < columns.size(); i += 8) {
    const uint32_t window = columns[i / perWindow * perWindow] / 8;
    uint8_t *bytes = index[i % kGroup / perWindow] + i / kGroup * 8;
    for (uint32_t b = 0; b < 8; ++b) {
      bytes[b] = static_cast<uint8_t>(std::min(window - first + 7 - b, shape.stretch - 1));
    }
    // Column c of the window is its bit 63 - c, and the lowest bit of its field is 56 - c.
    const auto column = static_cast<int32_t>(columns[i] - 8 * window);
    places[i / 8] = static_cast<uint8_t>((56 - column - shape.highest) & 63);
    const size_t n = std::min<size_t>(8, columns.size() - i);
    for (size_t k = 0; k < n; ++k) {
      const int32_t field = shape.highest - offsetOf(columns, i, k);
      if (field < 0 || field > fields) return false;
      if (field == 0) continue;
      uint8_t &chosen = index[shape.windows + static_cast<uint32_t>(field)][i / 8];
      chosen = static_cast<uint8_t>(chosen | 0x80u >> k);
    }
  }
  return true;
}

uint8_t bitNumber(uint32_t pixel) {
  return static_cast<uint8_t>(pixel ^ 7);
}

bool fillSixtyFour(uint8_t (&bytes)[64], uint8_t (&bits)[64], std::span<const uint32_t> columns,
                   uint32_t first, uint32_t stretch) {
  for (size_t i = 0; i < columns.size(); i += 8) {
    const uint32_t byte = columns[i] / 8;
    const size_t n = std::min<size_t>(8, columns.size() - i);
    if (columns[i + n - 1] / 8 - byte >= 8) return false;
    for (uint32_t b = 0; b < 8; ++b) {
      bytes[i + b] = static_cast<uint8_t>(std::min(byte - first + b, stretch - 1));
    }
    for (size_t k = 0; k < n; ++k) bits[(i + k) ^ 7] = bitNumber(columns[i + k] - 8 * byte);
  }
  return true;
}

}  // namespace

GroupShape shapeOfBits(std::span<const uint32_t> columns) {
  uint32_t sixtyFour = 0;  // bytes that as many pixels are taken from
  uint32_t thirtyTwo = 0;
  int32_t lowest = 0;  // offset of a byte's last pixel: the one furthest from 0
  int32_t highest = 0;
  for (size_t x = 0; x < columns.size(); x += 8) {
    sixtyFour = std::max(sixtyFour, bytesWithin(columns, x, kGroup));
    thirtyTwo = std::max(thirtyTwo, bytesWithin(columns, x, kGroup / 2));
    const int32_t offset = offsetOf(columns, x, std::min<size_t>(columns.size() - x, 8) - 1);
    lowest = std::min(lowest, offset);
    highest = std::max(highest, offset);
  }
  const uint32_t more = static_cast<uint32_t>(highest) - static_cast<uint32_t>(lowest);
  if (thirtyTwo <= 8 && more < kMostFields) {
    const uint32_t windows = sixtyFour <= 8 ? 1 : 2;
    return {1, 8, 8 * kGroup, 8, windows + 1 + more, 64 * windows, windows, highest};
  }
  return {1, 8, kGroup, kGroup, 2, sixtyFour <= 16 ? 16u : 64u};
}

bool fillBits(uint8_t (*index)[64], const GroupShape &shape, std::span<const uint32_t> columns,
              uint32_t first) {
  if (shape.windows != 0) return fillFields(index, shape, columns, first);
  return fillSixtyFour(index[0], index[1], columns, first, shape.stretch);
}

}  // namespace color
