// SPDX-License-Identifier: MIT
#include "color/depth/rgb_rows.h"

#include <algorithm>
#include <cstring>

#include "color/depth/row_source.h"
#include "color/packed_pixels.h"

namespace color {

namespace {

constexpr uint32_t kPiece = 1024;  // pixels searched before they are packed, a multiple of 8

// One byte for each of n pixels: the lowest of the value to store.
void findIndexes(RgbRows &rows, const uint8_t *from, uint8_t *to, uint32_t n) {
  if (rows.hasTable) {
    findNearest(rows.search, from, rows.sourceDepth / 8, to, n);
  } else if (rows.sourceDepth == 32) {
    // With nothing to search, the value word itself is stored: its lowest byte is the fourth.
    for (uint32_t x = 0; x < n; ++x) to[x] = from[size_t{4} * x + 3];
  } else {
    std::memset(to, 0, n);  // the lowest byte of a 24-bit value word
  }
}

void convertToIndexes(RgbRows &rows, const uint8_t *from, uint8_t *to, uint32_t width) {
  uint8_t values[kPiece];
  const auto pixelBytes = static_cast<size_t>(rows.sourceDepth / 8);
  for (uint32_t x = 0, n = 0; x < width; x += n) {
    n = std::min(kPiece, width - x);
    const uint8_t *piece = from + pixelBytes * x;
    if (rows.depth == 8) {
      findIndexes(rows, piece, to + x, n);
      continue;
    }
    findIndexes(rows, piece, values, n);
    if (rows.depth == 4) {
      packNibbles(values, n, to + x / 2);
    } else {
      packBits(values, n, to + x / 8);
    }
  }
}

void convert24To32(const uint8_t *from, uint8_t *to, uint32_t width) {
  for (size_t x = 0; x < width; ++x) {
    std::memcpy(to + 4 * x, from + 3 * x, 3);
    to[4 * x + 3] = 0;
  }
}

void convert32To24(const uint8_t *from, uint8_t *to, uint32_t width) {
  for (size_t x = 0; x < width; ++x) std::memcpy(to + 3 * x, from + 4 * x, 3);
}

void clearFourthBytes(uint8_t *row, uint32_t width) {
  for (size_t x = 0; x < width; ++x) row[4 * x + 3] = 0;
}

}  // namespace

void prepareRgbRows(const DepthChange &change, RgbRows &rows) {
  rows.sourceDepth = readableDepth(change.sourceDepth);
  rows.depth = change.depth;
  rows.hasTable = change.table.data() != nullptr;
  if (rows.hasTable && rows.depth <= 8) {
    startSearch(rows.search, change.table, change.count, uint64_t{change.width} * change.height);
  }
}

void convertRgbRow(RgbRows &rows, const uint8_t *from, uint8_t *to, uint32_t width) {
  if (rows.depth == 1 || rows.depth == 4 || rows.depth == 8) {
    convertToIndexes(rows, from, to, width);
  } else if (rows.depth == 24) {
    if (rows.sourceDepth == 24) {
      std::memcpy(to, from, size_t{3} * width);
    } else {
      convert32To24(from, to, width);
    }
  } else if (rows.depth == 32) {
    if (rows.sourceDepth == 24) {
      convert24To32(from, to, width);
    } else {
      std::memcpy(to, from, size_t{4} * width);
      // The fourth byte goes over only where no table for the destination was given.
      if (rows.hasTable) clearFourthBytes(to, width);
    }
  }
}

}  // namespace color
