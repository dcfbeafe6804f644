// SPDX-License-Identifier: MIT
// Choosing a table of at most a wanted number of colours for a 24-bit picture.
//
// With fewer distinct 15-bit colours than wanted, the table is those colours. Otherwise a median cut
// starts with one box over all of them and splits the box with the most pixels, again and again, along
// its longest side at its weighted median; each box's mean becomes an entry. README.md works an
// example through.
#pragma once

#include <cstdint>
#include <span>

#include "raxel/color.h"
#include "runtime/blocks.h"

namespace color {

// What a reduction is asked to do with its histogram.
constexpr uint16_t kBuildTable = 1;     // without it a picture is only counted
constexpr uint16_t kKeepHistogram = 2;  // without it a table's histogram is cleared afterwards

// Adds a picture to the context's histogram and, when asked to, chooses the table.
//   rows     the picture, bytesPerLine(width, 24) bytes a row; what is missing counts as black
//   count    in: the colours wanted; out: those found
//   table    3 bytes for each colour wanted
//   context  a handle from InitColorLib
// Returns 0, or -1 when there are no rows, no context, no count or no room for the table.
int32_t reduce(std::span<const uint8_t> rows, uint32_t width, int32_t height, uint16_t *count,
               uint16_t mode, std::span<uint8_t> table, Handle context);

// The table of one picture, 3 bytes for each colour wanted, those that were not found black. Prints it
// when the diagnostics level asks for that.
//   rows   as above; without any the table is black and the count stays
//   count  in: the colours wanted; out: those found
runtime::Block reducePicture(std::span<const uint8_t> rows, uint32_t width, int32_t height,
                             uint16_t &count);

}  // namespace color
