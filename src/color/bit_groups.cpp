// Pixels fill bytes from the top bit down, and bits are numbered from the lowest one up.
#include <algorithm>

#include "color/group_shape.h"

namespace color {

namespace {

constexpr uint32_t kGroup = 64;  // pixels in a group, and in eight bytes of a group of fields

// How far the eight pixels of a byte come to lie from where eight neighbours would: pixel k comes from
// the column of the first one and k and `offset`. Widening repeats columns: no offset is above 0.
int32_t offsetOf(std::span<const uint32_t> columns, size_t first, size_t k) {
  return static_cast<int32_t>(columns[first + k] - columns[first]) - static_cast<int32_t>(k);
}

// Whether every column between the first and the last is taken.
bool leavesNoneOut(std::span<const uint32_t> columns) {
  uint32_t largest = 0;
  for (size_t i = 1; i < columns.size(); ++i) largest = std::max(largest, columns[i] - columns[i - 1]);
  return largest <= 1;
}

// Bytes are put together from fields of eight neighbours, a field for each offset: 0, -1 and so on.
void fillFields(uint8_t (*index)[64], std::span<const uint32_t> columns, uint32_t first) {
  for (size_t i = 0; i < columns.size(); i += 8) {
    // The window of this and seven more bytes: eight bytes, the first of them on top.
    const size_t eight = i / kGroup * 8;
    const uint32_t window = columns[i / kGroup * kGroup] / 8;
    for (uint32_t b = 0; b < 8; ++b) index[0][eight + b] = static_cast<uint8_t>(window - first + 7 - b);
    // Column c of the window is its bit 63 - c, and the lowest of its field is bit 56 - c.
    index[1][i / 8] = static_cast<uint8_t>((56 - (columns[i] - 8 * window)) & 63);
    const size_t n = std::min<size_t>(8, columns.size() - i);
    for (size_t k = 0; k < n; ++k) {
      const int32_t offset = offsetOf(columns, i, k);
      uint8_t &chosen = index[1 - offset][i / 8];
      if (offset != 0) chosen = static_cast<uint8_t>(chosen | 0x80u >> k);
    }
  }
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
  uint32_t longest = 0;  // bytes that 64 pixels are taken from
  int32_t lowest = 0;    // offset of a byte's last pixel, and so of any
  for (size_t x = 0; x < columns.size(); x += 8) {
    const size_t rest = columns.size() - x;
    const size_t last = x + std::min<size_t>(rest, kGroup) - 1;
    longest = std::max(longest, columns[last] / 8 - columns[x] / 8 + 1);
    lowest = std::min(lowest, offsetOf(columns, x, std::min<size_t>(rest, 8) - 1));
  }
  if (longest <= 8 && leavesNoneOut(columns)) {
    return {1, 8, 8 * kGroup, 8, 2 + static_cast<uint32_t>(-lowest), 64, true};
  }
  return {1, 8, kGroup, kGroup, 2, longest <= 16 ? 16u : 64u, false};
}

bool fillBits(uint8_t (*index)[64], const GroupShape &shape, std::span<const uint32_t> columns,
              uint32_t first) {
  if (!shape.fields) return fillSixtyFour(index[0], index[1], columns, first, shape.stretch);
  fillFields(index, columns, first);
  return true;
}

}  // namespace color
