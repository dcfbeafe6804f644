// SPDX-License-Identifier: MIT
// Dithering of whole pictures: choose a table or take one, diffuse row by row, and convert to the depth
// asked for by nearest colour.
#pragma once

#include <cstdint>
#include <span>

#include "color/depth/depth.h"
#include "runtime/blocks.h"

namespace color {

// A picture on its way to 1, 4 or 8 bits. The members after the first are filled on the way.
struct Dithering {
  DepthChange change;        // the picture, and the table to dither it to
  runtime::Block made = {};  // the memory of that table when it was chosen here
  runtime::Block work = {};  // the picture at 24 bits, when there is a need of it
};

// To be called first: false when pictures are not dithered to that depth, or when the picture at 24 bits
// fits in no block.
bool beginDithering(Dithering &dithering);

// Sets the table: the caller's own, as far as it has the entries that are claimed, or a new one.
void takeTable(Dithering &dithering, std::span<const uint8_t> table, uint16_t count);
void chooseTable(Dithering &dithering);

// The dithered picture.
runtime::Block dither(Dithering &dithering);

}  // namespace color
