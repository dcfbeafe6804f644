// SPDX-License-Identifier: MIT
// The colour table that a picture is dithered to.
#pragma once

#include <cstdint>
#include <span>

#include "color/depth/depth.h"
#include "runtime/blocks.h"

namespace color {

// A new copy of the eight greys of MonoTable.
runtime::Block copyMonoTable();

// A new table of 1 << depth entries for a picture at 4 or 8 bits: the colours of its median cut, then
// the eight of must_have_colors, then black.
//   rows  24 bits
runtime::Block reduceWithFixedColors(std::span<const uint8_t> rows, uint32_t width, uint32_t height,
                                     int16_t depth);
// The same for a picture of any depth, widened a band at a time. Silent.
runtime::Block reduceBandsWithFixedColors(const DepthChange &picture);

// Prints the entries on standard output when the diagnostics level asks for summaries.
void printDitherTable(std::span<const uint8_t> table, uint16_t count);

}  // namespace color
