// SPDX-License-Identifier: MIT
#include "color/depth/row_converter.h"

#include "color/colormap.h"

namespace color {

RowConverter::RowConverter(const DepthChange &change)
    : source_(change.bits, change.width, change.sourceDepth),
      width_(change.width),
      indexed_(hasColormap(change.sourceDepth)) {
  if (indexed_) {
    prepareIndexedRows(change, indexedRows_);
  } else {
    prepareRgbRows(change, rgbRows_);
  }
}

void RowConverter::convert(uint32_t y, uint8_t *to) {
  const uint8_t *from = source_.row(y);
  if (indexed_) {
    convertIndexedRow(indexedRows_, from, to, width_);
  } else {
    convertRgbRow(rgbRows_, from, to, width_);
  }
}

}  // namespace color
