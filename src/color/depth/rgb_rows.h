// SPDX-License-Identifier: MIT
// Rows of 24 and 32 bits brought to any depth: copied, or each pixel's nearest entry of a table.
#pragma once

#include <cstdint>

#include "color/depth/depth.h"
#include "color/nearest/nearest_search.h"

namespace color {

struct RgbRows {
  int16_t sourceDepth;
  int16_t depth;
  bool hasTable;         // a table for the destination was given
  NearestSearch search;  // in that table
};

void prepareRgbRows(const DepthChange &change, RgbRows &rows);

// Converts one row; bits of the last byte past the width become 0, padding is not touched.
void convertRgbRow(RgbRows &rows, const uint8_t *from, uint8_t *to, uint32_t width);

}  // namespace color
