// SPDX-License-Identifier: MIT
// A whole picture dithered to a table, row by row, without a working copy of it.
#pragma once

#include <cstdint>
#include <span>

#include "color/depth/depth.h"

namespace color {

// Writes the picture, dithered to `change.table` (of which `change.count` entries are there), into
// `out`: bitmapSize(width, height, depth) zero bytes at 1, 4 or 8 bits. What comes out is what
// widening to 24 bits, ditherLine for each row and converting back would give, and silently.
// False when the picture has to go that longer way: a table of more than 256 entries, or so small a
// picture that nothing is gained.
bool ditherPicture(const DepthChange &change, std::span<uint8_t> out);

}  // namespace color
