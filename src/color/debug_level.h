// SPDX-License-Identifier: MIT
// What the library prints at each diagnostics level. The level is stored in 16 bits and compared as
// a signed number, so that a host may also use negative levels: those print as level 1 does.
#pragma once

#include <cstdint>

#include "raxel/color.h"

namespace color {

inline int16_t debugLevel() {
  return static_cast<int16_t>(_debug_color_res);
}

// Every level but 0 prints summaries: sizes, tables, closing lines.
inline bool printsSummaries() {
  return debugLevel() != 0;
}

// Levels below 3 also print a mark for each finished row.
inline bool printsRowMarks() {
  return debugLevel() != 0 && debugLevel() < 3;
}

// Levels above 3 print the place of each pixel that is set, at any depth, in the order in which single
// pixels would be set. Functions that set whole rows at once print all places first.
inline bool printsPixels() {
  return debugLevel() > 3;
}
void printPlace(uint32_t x, uint32_t y);

}  // namespace color
