// Dithering of whole pictures: widen to 24 bits, choose a table, diffuse row by row, and convert to
// the depth asked for by nearest colour.
#include <cstdio>

#include "color/bitmap.h"
#include "color/debug_level.h"
#include "color/dither_line.h"
#include "color/dither_palette.h"
#include "color/grey.h"
#include "raxel/color.h"
#include "runtime/blocks.h"

namespace color {

namespace {

// Diffuses a 24-bit picture in place. For a bilevel destination rows are turned to grey first, each
// before the errors of the row above reach it.
void ditherRows(std::span<uint8_t> bits, uint32_t width, uint32_t height, const DitherTable &table,
                bool bilevel) {
  const std::span<const uint8_t> entries = runtime::lockBytes(table.handle);
  const auto lineBytes = static_cast<size_t>(bytesPerLine(width, 24));
  const size_t pixelBytes = size_t{width} * 3;
  if (printsRowMarks()) std::fputs("Dithering...each(.) represents one scan line\n", stdout);
  for (uint32_t y = 0; y < height; ++y) {
    uint8_t *current = bits.data() + y * lineBytes;
    uint8_t *next = y + 1 < height ? current + lineBytes : nullptr;
    if (bilevel && y == 0) reviseRow({current, pixelBytes}, RowMode::kGrey);
    if (bilevel && next != nullptr) reviseRow({next, pixelBytes}, RowMode::kGrey);
    ditherLine(current, next, entries, width, static_cast<int16_t>(table.count));
    if (printsRowMarks()) std::fputs(".", stdout);
  }
  if (printsRowMarks()) std::fputs("\n", stdout);
}

// The dithered working copy, at the depth asked for.
Handle finishDither(const runtime::Block &work, uint32_t width, uint32_t height, int16_t depth,
                    const DitherTable &table) {
  printDitherTable(table);
  ditherRows(work.bytes(), width, height, table, depth == 1);
  return rlConvertBitmapDepth(work.handle(), width, height, 24, depth, 0, table.handle, table.count);
}

}  // namespace

}  // namespace color

Handle rlDitherBitmap(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                      Handle sourceTable, Handle *table) {
  if (bits == 0 || table == nullptr || !color::isDitherDepth(depth)) return 0;
  const runtime::Block work(rlConvertBitmapDepth(bits, width, height, sourceDepth, 24, sourceTable, 0, 0));
  if (!work) return 0;
  const color::DitherTable chosen =
      *table != 0  ? color::givenTable(*table, static_cast<uint16_t>(1u << depth))
      : depth == 1 ? color::copyMonoTable()
                   : color::reduceWithFixedColors(work.handle(), width, height, depth);
  const Handle result = color::finishDither(work, width, height, depth, chosen);
  *table = chosen.handle;
  return result;
}

void rlDitherGetCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                   Handle sourceTable, Handle *table, uint16_t *count) {
  if (table == nullptr || count == nullptr) return;
  *count = 0;
  if (bits == 0 || !color::isDitherDepth(depth)) return;
  const runtime::Block work(rlConvertBitmapDepth(bits, width, height, sourceDepth, 24, sourceTable, 0, 0));
  if (!work) return;
  // Only a bilevel picture keeps the table that the host hands in.
  const color::DitherTable chosen = depth != 1
                                        ? color::reduceWithFixedColors(work.handle(), width, height, depth)
                                    : *table != 0 ? color::givenTable(*table, 2)
                                                  : color::copyMonoTable();
  color::printDitherTable(chosen);
  *table = chosen.handle;
  *count = chosen.count;
}

Handle rlDitherGivenCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                       Handle sourceTable, Handle table, uint16_t count) {
  if (bits == 0 || !color::isDitherDepth(depth)) return 0;
  const runtime::Block work(rlConvertBitmapDepth(bits, width, height, sourceDepth, 24, sourceTable, 0, 0));
  if (!work) return 0;
  return color::finishDither(work, width, height, depth, color::givenTable(table, count));
}
