// SPDX-License-Identifier: MIT
// Error diffusion of one channel to black and white, several rows at a time.
//
// A bilevel picture is turned to grey before its errors spread, and a grey finds only greys: with at
// least one grey in the table all three channels stay equal, and one is enough. What a level becomes
// and what it spreads is worked out beforehand. Rows are worked on together as in diffuse_colors.h.
#pragma once

#include <cstdint>
#include <span>

#include "runtime/blocks.h"

namespace color {

// What a level does: what is stored for it, and what its error adds to its neighbours.
struct GreyStep {
  int8_t right;
  int8_t below;
  int8_t belowLeft;
  int8_t belowRight;
  uint8_t stored;
};

constexpr uint32_t kGreyRowsAtOnce = 2;

struct GreyDiffusion {
  GreyStep steps[512];  // for the sum of a level and its left neighbour's error, -128 to 383, at sum + 128
  uint8_t storedAlone;  // what is stored for a row of one pixel: entry 0
  uint32_t width;
  runtime::Block memory;               // the rows below
  uint8_t *rows[kGreyRowsAtOnce + 1];  // levels, with what has reached them from above
  uint8_t *values[kGreyRowsAtOnce];    // what is stored for the pixels
};

// Whether a table has a grey among its first entries.
bool hasGrey(std::span<const uint8_t> table, int32_t count);

// Works out the steps for a table that has one, and makes the rows; false when there is no memory.
bool startGreys(GreyDiffusion &diffusion, std::span<const uint8_t> table, int32_t count, uint32_t width);

// Diffuses the first `count` rows (at most kGreyRowsAtOnce) into `values` and into the row after
// them, which becomes the first.
void diffuseGreyRows(GreyDiffusion &diffusion, int count);

}  // namespace color
