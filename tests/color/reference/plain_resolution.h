// SPDX-License-Identifier: MIT
// A plain form of what is decided around the depth conversion and the error diffusion: which table is
// chosen, and which road a picture takes to another depth. It shares no line with the library.
#pragma once

#include "color/reference/plain_depth.h"

namespace plain {

// The table that a picture is dithered to at 1, 4 or 8 bits when the caller gives none.
Table chosenTable(const Picture &picture, int depth, const Table &source);

// What becomes of a picture and of the caller's table handle; nothing is done where it is refused.
struct Changed {
  bool done = false;
  Bytes bits;
  Table table;  // not given: the handle becomes 0
};
Changed changeResolution(const Picture &picture, int depth, const Table &source);

}  // namespace plain
