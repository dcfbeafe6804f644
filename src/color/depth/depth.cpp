// SPDX-License-Identifier: MIT
#include "color/depth/depth.h"

#include <algorithm>
#include <cstdio>

#include "color/bitmap.h"
#include "color/debug_level.h"
#include "color/depth/row_converter.h"
#include "raxel/color.h"
#include "runtime/blocks.h"

namespace color {

namespace {

// What the diagnostics level asks for while rows are set: places of pixels, or a mark after each row.
void printRow(uint32_t width, uint32_t y) {
  if (printsPixels()) {
    for (uint32_t x = 0; x < width; ++x) printPlace(x, y);
  }
  if (printsRowMarks()) std::fputs(".", stderr);
}

}  // namespace

void convertDepth(const DepthChange &change, std::span<uint8_t> out) {
  const bool writes = isPixelDepth(change.depth) && change.width != 0;
  if (!writes && !printsSummaries()) return;
  RowConverter rows(change);
  const auto lineBytes = static_cast<size_t>(bytesPerLine(change.width, change.depth));
  for (uint32_t y = 0; y < change.height; ++y) {
    if (writes) rows.convert(y, out.data() + y * lineBytes);
    printRow(change.width, y);
  }
}

uint16_t entriesWithin(std::span<const uint8_t> table, uint16_t count) {
  return static_cast<uint16_t>(std::min<size_t>(count, table.size() / 3));
}

DepthChange lockPicture(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                        Handle sourceTable) {
  return {.bits = runtime::lockBytes(bits),
          .width = width,
          .height = height,
          .sourceDepth = sourceDepth,
          .depth = depth,
          .sourceTable = runtime::lockBytes(sourceTable)};
}

DepthChange widening(DepthChange change) {
  change.depth = 24;
  change.table = {};
  change.count = 0;
  return change;
}

bool canConvert(const DepthChange &change) {
  return runtime::fitsInBlock(bitmapSize(change.width, change.height, change.depth)) &&
         runtime::fitsInBlock(bitmapSize(change.width, change.height, readableDepth(change.sourceDepth)));
}

runtime::Block convertPicture(const DepthChange &change) {
  const uint64_t size = bitmapSize(change.width, change.height, change.depth);
  runtime::Block out = canConvert(change) ? runtime::Block::ofSize(size) : runtime::Block();
  if (printsSummaries()) {
    std::fprintf(stderr, "Allocated %d bytes of new memory for the destination bitmap\n",
                 static_cast<int32_t>(size));
  }
  if (printsRowMarks()) std::fputs("Converted bits. Each (.) represents one scan line\n", stderr);
  if (out) convertDepth(change, out.bytes());
  if (printsSummaries()) std::fputs("\nColor resolution conversion complete\n", stderr);
  return out;
}

}  // namespace color

Handle rlConvertBitmapDepth(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth,
                            int16_t depth, Handle sourceTable, Handle table, uint16_t count) {
  if (bits == 0) return 0;
  color::DepthChange change = color::lockPicture(bits, width, height, sourceDepth, depth, sourceTable);
  change.table = runtime::lockBytes(table);
  change.count = count;
  return color::convertPicture(change).release();
}
