// SPDX-License-Identifier: MIT
// The rows of a picture, each brought to another depth on demand.
#pragma once

#include <cstdint>

#include "color/depth/depth.h"
#include "color/depth/indexed_rows.h"
#include "color/depth/rgb_rows.h"
#include "color/depth/row_source.h"

namespace color {

class RowConverter {
 public:
  // The rows of the source must fit in a block.
  explicit RowConverter(const DepthChange &change);

  // Writes the pixels of row y to a row of the new depth, which must be one that can be written.
  void convert(uint32_t y, uint8_t *to);

  // Row y at its own depth; good until the next call of either.
  const uint8_t *sourceRow(uint32_t y) { return source_.row(y); }

 private:
  RowSource source_;
  uint32_t width_;
  bool indexed_;
  IndexedRows indexedRows_;
  RgbRows rgbRows_;
};

}  // namespace color
