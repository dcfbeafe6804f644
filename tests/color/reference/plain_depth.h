// SPDX-License-Identifier: MIT
// A plain form of the depth conversion and the error diffusion: one pixel at a time, every search
// over the whole table. It shares no line with the library and is what its fast roads are compared
// with.
#pragma once

#include <cstdint>
#include <vector>

namespace plain {

using Bytes = std::vector<uint8_t>;

struct Picture {
  Bytes bits;
  uint32_t width;
  uint32_t height;
  int depth;
};

// A colour table that may be missing, with the count that the caller claims.
struct Table {
  bool given = false;
  Bytes entries;
  uint32_t count = 0;
};

uint32_t lineBytes(uint32_t width, int depth);
uint32_t pixelAt(const Picture &picture, uint32_t x, uint32_t y);
int nearestIndex(int red, int green, int blue, const Bytes &table, int count);

// The picture's bits at another depth.
Bytes convert(const Picture &picture, int depth, const Table &source, const Table &table);

// One row of error diffusion; `next` is null below the last row.
void ditherLine(uint8_t *current, uint8_t *next, const Bytes &table, uint32_t width, int count);

// The bits of a picture dithered to a table: widened to 24 bits, diffused, converted.
Bytes dither(const Picture &picture, int depth, const Table &source, const Table &table);

}  // namespace plain
