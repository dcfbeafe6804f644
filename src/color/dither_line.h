// Error diffusion of one row.
#pragma once

#include <cstdint>
#include <span>

namespace color {

// Replaces the pixels of a row by entries of a table and spreads each pixel's error to the right and
// to the row below.
//   current, next  width pixels of 3 bytes; `next` is null below the last row
//   table          3-byte entries, of which `count` are searched (at most as many as there are)
// Without entries every pixel becomes black.
void ditherLine(uint8_t *current, uint8_t *next, std::span<const uint8_t> table, uint32_t width,
                int32_t count);

}  // namespace color
