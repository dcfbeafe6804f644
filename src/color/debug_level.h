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

// Levels above 3 print the place of each pixel that is set. Faster roads that set no single pixels
// stand aside then, so that the print is complete and in order.
inline bool printsPixels() {
  return debugLevel() > 3;
}

}  // namespace color
