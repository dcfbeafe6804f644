// SPDX-License-Identifier: MIT
// Error diffusion of several rows of colours at a time.
//
// A pixel depends on the one to its left, so that a single row is one long chain of look-ups. But a
// row can start before the one above it is finished: a pixel has all that reaches it from above as
// soon as the pixel above and to the right is done. So kRowsAtOnce rows are worked on together, each two
// pixels behind the one above it:
//
//        x:  0 1 2 3 4 5 6 7 8 9 10
//    row 0   . . . . . . . . . . A     the pixels A to F are done in one step; none of them needs
//    row 1   . . . . . . . . B         another's result
//    row 2   . . . . . . C
//    row 3   . . . . D
//    row 4   . . E
//    row 5   F
//
// The clamped additions to a pixel keep their order: right below, straight below, left below, and
// last the error of its own row.
#pragma once

#include <cstdint>

#include "color/dither/lanes.h"
#include "color/nearest/nearest_search.h"
#include "runtime/blocks.h"

namespace color {

constexpr uint32_t kRowsAtOnce = 6;

struct ColorDiffusion {
  NearestSearch *search = nullptr;
  uint32_t width = 0;
  PixelWord entries[256];            // the table
  uint8_t stored[256];               // what is stored for each entry
  runtime::Block memory;             // the rows below
  PixelWord *rows[kRowsAtOnce + 1];  // pixels, with what has reached them from above
  uint8_t *values[kRowsAtOnce];      // what is stored for the pixels
};

// Makes the rows; false when there is no memory for them.
//   search  has its memory of answers, and outlives the diffusion
bool startDiffusion(ColorDiffusion &diffusion, NearestSearch &search, uint32_t width);

// Diffuses the first `count` rows (at most kRowsAtOnce) into `values` and into the row after them,
// which becomes the first.
void diffuseRows(ColorDiffusion &diffusion, int count);

}  // namespace color
