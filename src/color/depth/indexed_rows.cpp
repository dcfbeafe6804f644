// SPDX-License-Identifier: MIT
#include "color/depth/indexed_rows.h"

#include <algorithm>
#include <cstring>

#include "color/bitmap.h"
#include "color/colormap.h"
#include "color/depth/row_source.h"
#include "color/kernels.h"
#include "color/packed_pixels.h"

namespace color {

namespace {

constexpr uint32_t kPiece = 1024;  // pixels unpacked at a time, a multiple of 8

uint8_t byteAt(std::span<const uint8_t> table, size_t at) {
  return at < table.size() ? table[at] : uint8_t{0};
}

void fillPixel(uint8_t *pixel, std::span<const uint8_t> table, size_t entry) {
  for (size_t c = 0; c < 3; ++c) pixel[c] = byteAt(table, 3 * entry + c);
}

// Pixel k of a source byte.
uint32_t pixelOf(uint32_t byte, uint32_t k, int16_t depth) {
  return depth == 1 ? byte >> (7 - k) & 1 : depth == 4 ? (k == 0 ? byte >> 4 : byte & 15) : byte;
}

void fillIndexes(const DepthChange &change, IndexedRows &rows) {
  uint32_t map[256] = {};
  fillColormap(map, change.sourceTable, change.sourceDepth, change.table, change.depth, change.count);
  const uint32_t mask = change.depth == 1 ? 1 : change.depth == 4 ? 15 : 255;
  // Only pictures of 1, 4 and 8 bits come here.
  const uint32_t colors = 1u << rows.sourceDepth;  // NOLINT(clang-analyzer-core.*)
  rows.keepsIndexes = rows.sourceDepth <= rows.depth;
  for (uint32_t i = 0; i < colors; ++i) {
    rows.index[i] = static_cast<uint8_t>(map[i] & mask);
    if (rows.index[i] != i) rows.keepsIndexes = false;
    if (change.table.data() == nullptr) {
      // Without a table for the destination a picture keeps the colours of its own, at 32 bits too,
      // where the map holds indexes.
      fillPixel(rows.pixel[i], change.sourceTable, i);
    } else if (map[i] < change.count) {
      // The map's word names an entry of the destination's table. For 24 bits it is an RGB word,
      // which names no entry unless it is small: such pixels come out black.
      fillPixel(rows.pixel[i], change.table, map[i]);
    }
  }
}

void fillBytes(IndexedRows &rows) {
  const auto bits = static_cast<uint32_t>(rows.sourceDepth);
  const uint32_t perByte = 8 / bits;
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t same = 0;
    for (uint32_t k = 0; k < perByte; ++k) {
      const uint32_t i = pixelOf(byte, k, rows.sourceDepth);
      rows.unpacked[byte][k] = rows.depth <= 8 ? rows.index[i] : static_cast<uint8_t>(i);
      same = same << bits | rows.index[i];
    }
    rows.same[byte] = static_cast<uint8_t>(same);
    if (perByte == 8) packNibbles(rows.unpacked[byte], 8, rows.nibbles[byte]);
    rows.pairs[byte] =
        static_cast<uint8_t>((rows.unpacked[byte][0] & 1) << 1 | (rows.unpacked[byte][1] & 1));
  }
}

// Unpacks whole source bytes: `pixels` is a multiple of those in a byte.
template <size_t perByte>
void unpackBytes(const IndexedRows &rows, const uint8_t *from, uint8_t *to, uint32_t pixels) {
  for (size_t i = 0; i < pixels / perByte; ++i)
    std::memcpy(to + i * perByte, rows.unpacked[from[i]], perByte);
}

// The same for indexes of 4 bits that are wanted as they are.
void splitNibbles(const uint8_t *from, uint8_t *to, uint32_t pixels) {
  for (size_t i = 0; i < pixels / 2; ++i) {
    to[2 * i] = from[i] >> 4;
    to[2 * i + 1] = from[i] & 15;
  }
}

// One byte for each of n pixels of less than a byte.
void unpack(const IndexedRows &rows, const uint8_t *from, uint8_t *to, uint32_t n) {
  const uint32_t perByte = 8u / static_cast<uint32_t>(rows.sourceDepth);
  const uint32_t whole = n - n % perByte;
  if (rows.sourceDepth == 1) {
    unpackBytes<8>(rows, from, to, whole);
  } else if (rows.depth > 8 || rows.keepsIndexes) {
    splitNibbles(from, to, whole);
  } else {
    unpackBytes<2>(rows, from, to, whole);
  }
  if (whole < n) std::memcpy(to + whole, rows.unpacked[from[whole / perByte]], n - whole);
}

// Pixels of 3 bytes are stored 4 at a time where the next one still follows.
void putPixels24(const IndexedRows &rows, const uint8_t *indexes, uint8_t *to, uint32_t n) {
  for (uint32_t x = 0; x + 1 < n; ++x) std::memcpy(to + size_t{3} * x, rows.pixel[indexes[x]], 4);
  std::memcpy(to + size_t{3} * (n - 1), rows.pixel[indexes[n - 1]], 3);
}

void putPixels32(const IndexedRows &rows, const uint8_t *indexes, uint8_t *to, uint32_t n) {
  for (uint32_t x = 0; x < n; ++x) std::memcpy(to + size_t{4} * x, rows.pixel[indexes[x]], 4);
}

// Both depths alike: a byte becomes a byte.
void convertSame(const IndexedRows &rows, const uint8_t *from, uint8_t *to, uint32_t width) {
  const uint64_t bits = uint64_t{width} * static_cast<uint64_t>(rows.depth);
  const auto whole = static_cast<size_t>(bits / 8);
  if (rows.keepsIndexes) {
    std::memcpy(to, from, whole);
  } else {
    for (size_t i = 0; i < whole; ++i) to[i] = rows.same[from[i]];
  }
  const auto left = static_cast<uint32_t>(bits % 8);
  if (left != 0) to[whole] = static_cast<uint8_t>(rows.same[from[whole]] & ~(0xFFu >> left));
}

}  // namespace

void prepareIndexedRows(const DepthChange &change, IndexedRows &rows) {
  rows = {};
  rows.sourceDepth = readableDepth(change.sourceDepth);
  rows.depth = change.depth;
  fillIndexes(change, rows);
  fillBytes(rows);
}

namespace {

// To more bits a pixel: pixels of less than a byte are unpacked piece by piece, those of 24 and 32 bits
// looked up.
void deepen(const IndexedRows &rows, const uint8_t *from, uint8_t *to, uint32_t width) {
  uint8_t values[kPiece];
  const auto sourceBits = static_cast<uint32_t>(rows.sourceDepth);
  for (uint32_t x = 0, n = 0; x < width; x += n) {
    n = std::min(kPiece, width - x);
    const uint8_t *piece = from + uint64_t{x} * sourceBits / 8;
    if (rows.depth == 8) {
      unpack(rows, piece, to + x, n);
      continue;
    }
    if (sourceBits != 8) unpack(rows, piece, values, n);
    const uint8_t *indexes = sourceBits == 8 ? piece : values;
    if (rows.depth == 24) putPixels24(rows, indexes, to + size_t{3} * x, n);
    if (rows.depth == 32) putPixels32(rows, indexes, to + size_t{4} * x, n);
  }
}

}  // namespace

void convertIndexedRow(const IndexedRows &rows, const uint8_t *from, uint8_t *to, uint32_t width) {
  if (rows.sourceDepth == rows.depth) return convertSame(rows, from, to, width);
  if (rows.depth == 4 && rows.sourceDepth == 1) {
    return kernels().bitsToNibbles(rows.nibbles, from, to, width);
  }
  if (rows.depth == 4) return kernels().bytesToNibbles(rows.index, from, to, width);
  if (rows.depth == 1 && rows.sourceDepth == 8) return kernels().bytesToBits(rows.index, from, to, width);
  if (rows.depth == 1) return kernels().nibblesToBits(rows.pairs, from, to, width);
  deepen(rows, from, to, width);
}

}  // namespace color
