// SPDX-License-Identifier: MIT
// Rows of indexed pictures (1, 4 and 8 bits) brought to any depth by table.
#pragma once

#include <cstdint>

#include "color/depth/depth.h"

namespace color {

// What an index and what a whole byte of a source row become; worked out once for a picture.
struct IndexedRows {
  int16_t sourceDepth;
  int16_t depth;
  bool keepsIndexes;         // every index is stored as it is
  uint8_t index[256];        // destinations of 1, 4 and 8 bits: the bits to store for an index
  uint8_t pixel[256][4];     // destinations of 24 and 32 bits: red, green, blue and fourth byte
  uint8_t unpacked[256][8];  // the pixels of a source byte: bits to store, or indexes into `pixel`
  uint8_t same[256];         // a source byte as a destination byte, where both have the same depth
  uint8_t nibbles[256][4];   // a source byte of 8 pixels as four bytes of a 4-bit destination
  uint8_t pairs[256];        // a source byte of 2 pixels as two bits of a 1-bit destination
};

// For sources that have a colour map (depths 1 to 8); those of 2, 3, 5, 6 and 7 bits are read as rows
// of 1 bit.
void prepareIndexedRows(const DepthChange &change, IndexedRows &rows);

// Converts one row; bits of the last byte past the width become 0, padding is not touched.
void convertIndexedRow(const IndexedRows &rows, const uint8_t *from, uint8_t *to, uint32_t width);

}  // namespace color
