// The colour table that a picture is dithered to.
#pragma once

#include <cstdint>

#include "color/depth.h"
#include "raxel/types.h"

namespace color {

// A table by its handle, with the entries of it that are used.
struct DitherTable {
  Handle handle = 0;
  uint16_t count = 0;
};

// The host's own table, as far as it has the entries that are claimed.
DitherTable givenTable(Handle table, uint16_t count);

// A new copy of the eight greys of MonoTable.
DitherTable copyMonoTable();

// A new table of 1 << depth entries for a picture at 4 or 8 bits: the colours of its median cut, then
// the eight of must_have_colors, then black.
//   picture  24 bits
DitherTable reduceWithFixedColors(Handle picture, uint32_t width, uint32_t height, int16_t depth);
// The same for a picture of any depth, widened a band at a time. Silent.
DitherTable reduceBandsWithFixedColors(const DepthChange &picture);

// Prints the entries on standard output when the diagnostics level asks for summaries.
void printDitherTable(const DitherTable &table);

}  // namespace color
