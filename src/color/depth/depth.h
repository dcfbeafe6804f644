// SPDX-License-Identifier: MIT
// Changing the depth of a picture, pixel by pixel.
#pragma once

#include <cstdint>
#include <span>

#include "raxel/types.h"
#include "runtime/blocks.h"

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

// A conversion of a picture that a host knows by its handles, without a table for the destination.
DepthChange lockPicture(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                        Handle sourceTable);

// The conversion of the same picture to 24 bits, each pixel to its own colour.
DepthChange widening(DepthChange change);

// Whether a block can hold the picture at its new depth. (A source too large for any block cannot exist.)
bool canConvert(const DepthChange &change);

// The picture at its new depth in a new block; none when it fits in none. Prints what the diagnostics
// level asks for.
runtime::Block convertPicture(const DepthChange &change);

// Writes the picture at its new depth into `out`, which holds bitmapSize(width, height, depth) zero
// bytes; padding and pixels of a depth that cannot be written stay as they are. Prints the marks that
// the diagnostics level asks for.
void convertDepth(const DepthChange &change, std::span<uint8_t> out);

// At most as many entries as a block of a table holds.
uint16_t entriesWithin(std::span<const uint8_t> table, uint16_t count);

}  // namespace color
