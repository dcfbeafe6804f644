// Changing the depth of a picture, pixel by pixel.
#pragma once

#include <cstdint>
#include <span>

namespace color {

// One conversion: the picture, the depth to reach, and the colour tables of both sides. A table is
// missing when it has no address, and reads as black past its end.
struct DepthChange {
  std::span<const uint8_t> bits;
  uint32_t width = 0;
  uint32_t height = 0;
  int16_t sourceDepth = 0;
  int16_t depth = 0;
  std::span<const uint8_t> sourceTable = {};
  std::span<const uint8_t> table = {};
  uint16_t count = 0;  // entries of the destination's table
};

// Writes the picture at its new depth into `out`, which holds bitmapSize(width, height, depth) zero
// bytes; padding and pixels of a depth that cannot be written stay as they are. Prints the marks that
// the diagnostics level asks for.
void convertDepth(const DepthChange &change, std::span<uint8_t> out);

// At most as many entries as a block of a table holds.
uint16_t entriesWithin(std::span<const uint8_t> table, uint16_t count);

}  // namespace color
