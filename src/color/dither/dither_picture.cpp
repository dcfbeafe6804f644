// SPDX-License-Identifier: MIT
#include "color/dither/dither_picture.h"

#include <algorithm>

#include "color/bitmap.h"
#include "color/depth/row_converter.h"
#include "color/dither/diffuse_colors.h"
#include "color/dither/diffuse_greys.h"
#include "color/dither/grey.h"
#include "color/nearest/nearest.h"
#include "color/packed_pixels.h"

namespace color {

namespace {

// Rows of 24 bits, read in place where the source has them.
class WideRows {
 public:
  explicit WideRows(const DepthChange &change) : rows_(widening(change)) {
    if (change.sourceDepth != 24) row_ = runtime::Block::ofSize(uint64_t{change.width} * 3);
  }

  const uint8_t *row(uint32_t y) {
    if (!row_) return rows_.sourceRow(y);
    rows_.convert(y, row_.data());
    return row_.data();
  }

 private:
  RowConverter rows_;
  runtime::Block row_;
};

// Packs rows of one byte a pixel into the picture.
struct PackedRows {
  std::span<uint8_t> out;
  uint32_t width;
  int16_t depth;

  void put(uint32_t y, const uint8_t *values) const {
    uint8_t *row = out.data() + y * static_cast<size_t>(bytesPerLine(width, depth));
    if (depth == 1) {
      packBits(values, width, row);
    } else if (depth == 4) {
      packNibbles(values, width, row);
    } else {
      std::copy(values, values + width, row);
    }
  }
};

void putGreys(const uint8_t *row, uint32_t width, uint8_t *levels) {
  for (size_t x = 0; x < width; ++x) levels[x] = greyOf(row[3 * x], row[3 * x + 1], row[3 * x + 2]);
}

bool ditherGreys(const DepthChange &change, const PackedRows &packed) {
  GreyDiffusion diffusion;
  if (!startGreys(diffusion, change.table, static_cast<int16_t>(change.count), change.width)) return false;
  WideRows wide(change);
  putGreys(wide.row(0), change.width, diffusion.rows[0]);
  for (uint32_t y = 0; y < change.height; y += kGreyRowsAtOnce) {
    const uint32_t rows = std::min(kGreyRowsAtOnce, change.height - y);
    for (uint32_t k = 1; k <= rows && k < change.height - y; ++k) {
      putGreys(wide.row(y + k), change.width, diffusion.rows[k]);
    }
    diffuseGreyRows(diffusion, static_cast<int>(rows));
    for (uint32_t k = 0; k < rows; ++k) packed.put(y + k, diffusion.values[k]);
  }
  return true;
}

void putPixels(const uint8_t *row, uint32_t width, bool bilevel, PixelWord *pixels) {
  for (size_t x = 0; x < width; ++x, row += 3) {
    const uint8_t grey = greyOf(row[0], row[1], row[2]);
    pixels[x] = bilevel ? packPixel(grey, grey, grey) : packPixel(row[0], row[1], row[2]);
  }
}

bool ditherColors(const DepthChange &change, const PackedRows &packed) {
  NearestSearch search;
  startSearch(search, change.table, change.count, uint64_t{change.width} * change.height);
  ColorDiffusion diffusion;
  if (search.cells == nullptr || !startDiffusion(diffusion, search, change.width)) return false;
  for (size_t i = 0; i < change.count; ++i) {
    const uint8_t *entry = change.table.data() + 3 * i;
    diffusion.entries[i] = packPixel(entry[0], entry[1], entry[2]);
    // Packing looks each pixel's colour up once more, and may find another entry.
    diffusion.stored[i] =
        static_cast<uint8_t>(nearest(entry[0], entry[1], entry[2], change.table, change.count));
  }
  WideRows wide(change);
  const bool bilevel = change.depth == 1;
  putPixels(wide.row(0), change.width, bilevel, diffusion.rows[0]);
  for (uint32_t y = 0; y < change.height; y += kRowsAtOnce) {
    const uint32_t rows = std::min(kRowsAtOnce, change.height - y);
    for (uint32_t k = 1; k <= rows && k < change.height - y; ++k) {
      putPixels(wide.row(y + k), change.width, bilevel, diffusion.rows[k]);
    }
    diffuseRows(diffusion, static_cast<int>(rows));
    for (uint32_t k = 0; k < rows; ++k) packed.put(y + k, diffusion.values[k]);
  }
  return true;
}

}  // namespace

bool ditherPicture(const DepthChange &change, std::span<uint8_t> out) {
  // Without entries everything is 0, and so are pictures without pixels. A count is a signed 16-bit
  // number: from 32768 on there are no entries.
  const int32_t count = static_cast<int16_t>(change.count);
  if (count <= 0 || change.width == 0 || change.height == 0) return true;
  const PackedRows packed{out, change.width, change.depth};
  if (change.depth == 1 && hasGrey(change.table, count)) {
    return ditherGreys(change, packed);
  }
  return ditherColors(change, packed);
}

}  // namespace color
