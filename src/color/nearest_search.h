// The nearest entry of one table for many pixels: the answers of color::nearest, faster.
#pragma once

#include <cstdint>
#include <span>

namespace color {

struct NearestSearch {
  std::span<const uint8_t> table;
  int32_t count;
};

void startSearch(NearestSearch &search, std::span<const uint8_t> table, uint16_t count);

// The low byte of each pixel's index; pixels are 3 or 4 bytes, of which the first 3 are looked at.
void findNearest(NearestSearch &search, const uint8_t *pixels, int pixelBytes, uint8_t *indexes,
                 uint32_t n);

}  // namespace color
