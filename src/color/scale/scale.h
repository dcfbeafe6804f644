// SPDX-License-Identifier: MIT
// Making pictures smaller or larger by leaving out and repeating pixels.
//
// Rows follow the same rules as columns (see columns.h), except that the last row is no exception:
// going down, row k is source row trunc(k * ratio); going up, the last t source rows fill the last
// trunc(t * ratio) rows.
#pragma once

#include <cstdint>
#include <span>

#include "color/scale/columns.h"

namespace color {

struct Size {
  uint32_t width;
  uint32_t height;
};

// Scales a picture into another that lies elsewhere and is at least as large as its geometry says.
// Pixels past the end of the source are 0; an empty source, a depth without pixels and what rounding
// leaves out set nothing.
//   shrink   every height; meant for fewer rows or as many      stretch   meant for more rows
void shrink(std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth, Size from,
            Size to);
void stretch(std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth, Size from,
             Size to);

// Scales one row.
void scaleRow(Columns how, std::span<const uint8_t> source, std::span<uint8_t> destination, int16_t depth,
              uint32_t sourceWidth, uint32_t width);

}  // namespace color
