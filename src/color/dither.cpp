// Dithering of whole pictures: choose a table, widen to 24 bits, diffuse row by row, and convert to
// the depth asked for by nearest colour.
//
// In silence the picture is diffused without a working copy (dither_picture.h). The diagnostics
// report each of the steps, so that they are then taken one after the other.
#include <cstdio>

#include "color/bitmap.h"
#include "color/debug_level.h"
#include "color/dither_line.h"
#include "color/dither_palette.h"
#include "color/dither_picture.h"
#include "color/grey.h"
#include "color/row_source.h"
#include "raxel/color.h"
#include "runtime/blocks.h"

namespace color {

namespace {

// Depths that pictures are dithered to.
bool isDitherDepth(int16_t depth) {
  return depth == 1 || depth == 4 || depth == 8;
}

// A picture on its way to another depth.
struct Request {
  Handle bits;
  uint32_t width;
  uint32_t height;
  int16_t sourceDepth;
  int16_t depth;
  Handle sourceTable;
  runtime::Block work;  // the picture at 24 bits, once it is needed
};

DepthChange changeOf(const Request &request) {
  return {.bits = runtime::lockBytes(request.bits),
          .width = request.width,
          .height = request.height,
          .sourceDepth = request.sourceDepth,
          .depth = request.depth,
          .sourceTable = runtime::lockBytes(request.sourceTable)};
}

// Makes the working copy; false when it, or a picture of its own size, fits in no block.
bool makeWorkingCopy(Request &request) {
  if (!request.work) {
    request.work = runtime::Block(rlConvertBitmapDepth(request.bits, request.width, request.height,
                                                       request.sourceDepth, 24, request.sourceTable, 0, 0));
  }
  return static_cast<bool>(request.work);
}

// Whether the picture can be widened at all; the diagnostics want to see it done.
bool begin(Request &request) {
  if (printsSummaries()) return makeWorkingCopy(request);
  return runtime::fitsInBlock(bitmapSize(request.width, request.height, 24)) &&
         runtime::fitsInBlock(
             bitmapSize(request.width, request.height, readableDepth(request.sourceDepth)));
}

DitherTable chooseTable(const Request &request) {
  if (request.work) {
    return reduceWithFixedColors(request.work.handle(), request.width, request.height, request.depth);
  }
  if (request.sourceDepth == 24) {
    return reduceWithFixedColors(request.bits, request.width, request.height, request.depth);
  }
  return reduceBandsWithFixedColors(changeOf(request));
}

// Diffuses a 24-bit picture in place. For a bilevel destination rows are turned to grey first, each
// before the errors of the row above reach it.
void ditherRows(const Request &request, const DitherTable &table) {
  const std::span<const uint8_t> entries = runtime::lockBytes(table.handle);
  const auto lineBytes = static_cast<size_t>(bytesPerLine(request.width, 24));
  const size_t pixelBytes = size_t{request.width} * 3;
  const bool bilevel = request.depth == 1;
  if (printsRowMarks()) std::fputs("Dithering...each(.) represents one scan line\n", stdout);
  for (uint32_t y = 0; y < request.height; ++y) {
    uint8_t *current = request.work.data() + y * lineBytes;
    uint8_t *next = y + 1 < request.height ? current + lineBytes : nullptr;
    if (bilevel && y == 0) reviseRow({current, pixelBytes}, RowMode::kGrey);
    if (bilevel && next != nullptr) reviseRow({next, pixelBytes}, RowMode::kGrey);
    ditherLine(current, next, entries, request.width, static_cast<int16_t>(table.count));
    if (printsRowMarks()) std::fputs(".", stdout);
  }
  if (printsRowMarks()) std::fputs("\n", stdout);
}

Handle ditherTo(Request &request, const DitherTable &table) {
  if (!printsSummaries()) {
    DepthChange change = changeOf(request);
    change.table = runtime::lockBytes(table.handle);
    change.count = table.count;
    runtime::Block out = runtime::Block::ofSize(bitmapSize(request.width, request.height, request.depth));
    if (ditherPicture(change, out.bytes())) return out.release();
  }
  printDitherTable(table);
  if (!makeWorkingCopy(request)) return 0;
  ditherRows(request, table);
  return rlConvertBitmapDepth(request.work.handle(), request.width, request.height, 24, request.depth, 0,
                              table.handle, table.count);
}

}  // namespace

}  // namespace color

Handle rlDitherBitmap(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                      Handle sourceTable, Handle *table) {
  if (bits == 0 || table == nullptr || !color::isDitherDepth(depth)) return 0;
  color::Request request{bits, width, height, sourceDepth, depth, sourceTable, {}};
  if (!color::begin(request)) return 0;
  const color::DitherTable chosen = *table != 0
                                        ? color::givenTable(*table, static_cast<uint16_t>(1u << depth))
                                    : depth == 1 ? color::copyMonoTable()
                                                 : color::chooseTable(request);
  const Handle result = color::ditherTo(request, chosen);
  *table = chosen.handle;
  return result;
}

void rlDitherGetCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                   Handle sourceTable, Handle *table, uint16_t *count) {
  if (table == nullptr || count == nullptr) return;
  *count = 0;
  if (bits == 0 || !color::isDitherDepth(depth)) return;
  color::Request request{bits, width, height, sourceDepth, depth, sourceTable, {}};
  if (!color::begin(request)) return;
  // Only a bilevel picture keeps the table that the host hands in.
  const color::DitherTable chosen = depth != 1    ? color::chooseTable(request)
                                    : *table != 0 ? color::givenTable(*table, 2)
                                                  : color::copyMonoTable();
  color::printDitherTable(chosen);
  *table = chosen.handle;
  *count = chosen.count;
}

Handle rlDitherGivenCT(Handle bits, uint32_t width, uint32_t height, int16_t sourceDepth, int16_t depth,
                       Handle sourceTable, Handle table, uint16_t count) {
  if (bits == 0 || !color::isDitherDepth(depth)) return 0;
  color::Request request{bits, width, height, sourceDepth, depth, sourceTable, {}};
  if (!color::begin(request)) return 0;
  return color::ditherTo(request, color::givenTable(table, count));
}
