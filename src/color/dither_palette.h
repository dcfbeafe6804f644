// The colour table that a picture is dithered to.
#pragma once

#include <cstdint>

#include "raxel/types.h"

namespace color {

// A table by its handle, with the entries of it that are used.
struct DitherTable {
  Handle handle = 0;
  uint16_t count = 0;
};

// Depths that pictures are dithered to.
constexpr bool isDitherDepth(int16_t depth) {
  return depth == 1 || depth == 4 || depth == 8;
}

// The host's own table, as far as it has the 1 << depth entries of its depth.
DitherTable givenTable(Handle table, uint16_t count);

// A new copy of the eight greys of MonoTable.
DitherTable copyMonoTable();

// A new table of 1 << depth entries for a 24-bit picture: the colours of its median cut, then the
// eight of must_have_colors, then black.
DitherTable reduceWithFixedColors(Handle picture, uint32_t width, uint32_t height, int16_t depth);

// Prints the entries on standard output when the diagnostics level asks for summaries.
void printDitherTable(const DitherTable &table);

}  // namespace color
