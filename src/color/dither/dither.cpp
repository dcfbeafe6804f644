// SPDX-License-Identifier: MIT
// In silence a picture is diffused without a working copy (dither_picture.h). The diagnostics report
// each of the steps, so that they are then taken one after the other: widen to 24 bits, choose a table,
// diffuse, convert.
#include "color/dither/dither.h"

#include <cstdio>

#include "color/bitmap.h"
#include "color/debug_level.h"
#include "color/depth/row_source.h"
#include "color/dither/dither_line.h"
#include "color/dither/dither_palette.h"
#include "color/dither/dither_picture.h"
#include "color/dither/grey.h"
#include "raxel/color.h"

namespace color {

namespace {

// Depths that pictures are dithered to.
bool isDitherDepth(int16_t depth) {
  return depth == 1 || depth == 4 || depth == 8;
}

// Makes the working copy; false when it, or a picture of its own size, fits in no block.
bool makeWorkingCopy(Dithering &dithering) {
  if (!dithering.work) dithering.work = convertPicture(widening(dithering.change));
  return static_cast<bool>(dithering.work);
}

// Diffuses the working copy in place. For a bilevel destination rows are turned to grey first, each
// before the errors of the row above reach it.
void ditherRows(const Dithering &dithering) {
  const DepthChange &change = dithering.change;
  const std::span<uint8_t> rows = dithering.work.bytes();
  const auto lineBytes = static_cast<size_t>(bytesPerLine(change.width, 24));
  const size_t pixelBytes = size_t{change.width} * 3;
  const bool bilevel = change.depth == 1;
  if (printsRowMarks()) std::fputs("Dithering...each(.) represents one scan line\n", stdout);
  for (uint32_t y = 0; y < change.height; ++y) {
    const std::span<uint8_t> current = rows.subspan(y * lineBytes, pixelBytes);
    std::span<uint8_t> next;
    if (y + 1 < change.height) next = rows.subspan((y + size_t{1}) * lineBytes, pixelBytes);
    if (bilevel && y == 0) reviseRow(current, RowMode::kGrey);
    if (bilevel) reviseRow(next, RowMode::kGrey);
    ditherLine(current, next, change.table, static_cast<int16_t>(change.count));
    if (printsRowMarks()) std::fputs(".", stdout);
  }
  if (printsRowMarks()) std::fputs("\n", stdout);
}

}  // namespace

bool beginDithering(Dithering &dithering) {
  const DepthChange &change = dithering.change;
  if (!isDitherDepth(change.depth)) return false;
  // The diagnostics want to see the picture widened.
  if (printsSummaries()) return makeWorkingCopy(dithering);
  return canConvert(widening(change));
}

void takeTable(Dithering &dithering, std::span<const uint8_t> table, uint16_t count) {
  dithering.change.table = table;
  dithering.change.count = entriesWithin(table, count);
}

void chooseTable(Dithering &dithering) {
  const DepthChange &change = dithering.change;
  if (change.depth == 1) {
    dithering.made = copyMonoTable();
  } else if (dithering.work) {
    dithering.made =
        reduceWithFixedColors(dithering.work.bytes(), change.width, change.height, change.depth);
  } else if (change.sourceDepth == 24) {
    dithering.made = reduceWithFixedColors(change.bits, change.width, change.height, change.depth);
  } else {
    dithering.made = reduceBandsWithFixedColors(change);
  }
  takeTable(dithering, dithering.made.bytes(), UINT16_MAX);
}

runtime::Block dither(Dithering &dithering) {
  const DepthChange &change = dithering.change;
  if (!printsSummaries()) {
    auto out = runtime::Block::ofSize(bitmapSize(change.width, change.height, change.depth));
    if (ditherPicture(change, out.bytes())) return out;
  }
  printDitherTable(change.table, change.count);
  if (!makeWorkingCopy(dithering)) return {};
  ditherRows(dithering);
  return convertPicture({.bits = dithering.work.bytes(),
                         .width = change.width,
                         .height = change.height,
                         .sourceDepth = 24,
                         .depth = change.depth,
                         .table = change.table,
                         .count = change.count});
}

}  // namespace color

Handle rlDitherBitmap(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                      Handle sourceTable, Handle *table) {
  if (bits == 0 || table == nullptr) return 0;
  color::Dithering dithering{color::lockPicture(bits, width, height, sourceDepth, depth, sourceTable)};
  if (!color::beginDithering(dithering)) return 0;
  if (*table != 0) {
    color::takeTable(dithering, runtime::lockBytes(*table), static_cast<uint16_t>(1u << depth));
  } else {
    color::chooseTable(dithering);
  }
  runtime::Block out = color::dither(dithering);
  if (out && dithering.made) *table = dithering.made.release();
  return out.release();
}

void rlDitherGetCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                   Handle sourceTable, Handle *table, uint16_t *count) {
  if (table == nullptr || count == nullptr) return;
  *count = 0;
  if (bits == 0) return;
  color::Dithering dithering{color::lockPicture(bits, width, height, sourceDepth, depth, sourceTable)};
  if (!color::beginDithering(dithering)) return;
  // Only a bilevel picture keeps the table that the host hands in.
  if (depth == 1 && *table != 0) {
    color::takeTable(dithering, runtime::lockBytes(*table), 2);
  } else {
    color::chooseTable(dithering);
  }
  color::printDitherTable(dithering.change.table, dithering.change.count);
  *count = dithering.change.count;
  if (dithering.made) *table = dithering.made.release();
}

Handle rlDitherGivenCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                       Handle sourceTable, Handle table, uint16_t count) {
  if (bits == 0) return 0;
  color::Dithering dithering{color::lockPicture(bits, width, height, sourceDepth, depth, sourceTable)};
  if (!color::beginDithering(dithering)) return 0;
  color::takeTable(dithering, runtime::lockBytes(table), count);
  return color::dither(dithering).release();
}
