// SPDX-License-Identifier: MIT
// Error diffusion of one row.
#pragma once

#include <cstdint>
#include <span>

namespace color {

// Replaces the pixels of a row by entries of a table and spreads each pixel's error to the right and
// to the row below.
//   current, next  as many pixels of 3 bytes each; `next` is empty below the last row
//   table          3-byte entries, of which `count` are searched (at most as many as there are)
// Without entries every pixel becomes black.
void ditherLine(std::span<uint8_t> current, std::span<uint8_t> next, std::span<const uint8_t> table,
                int32_t count);

}  // namespace color
